#include "ContactSheet.h"

#include <algorithm>

#include <opencv2/imgproc.hpp>

cv::Rect fittedPlace(cv::Size picture, cv::Size cell) {
  const double scale =
      std::min(1.0 * cell.width / picture.width, 1.0 * cell.height / picture.height);
  const cv::Size size(std::max(1, cvRound(picture.width * scale)),
                      std::max(1, cvRound(picture.height * scale)));
  return {{(cell.width - size.width) / 2, (cell.height - size.height) / 2}, size};
}

cv::Mat fitted(const cv::Mat& picture, cv::Size cell) {
  cv::Mat result(cell, CV_8UC3, sheetGround);
  const auto middle = fittedPlace(picture.size(), cell);
  cv::resize(picture, result(middle), middle.size(), 0, 0, cv::INTER_AREA);
  return result;
}

cv::Mat contactSheet(const std::vector<cv::Mat>& cells, int columns) {
  if (cells.empty()) return {};
  const cv::Size cell = cells.front().size();
  const int count = static_cast<int>(cells.size());
  const int across = std::min(columns, count);
  const int rows = (count + across - 1) / across;
  cv::Mat sheet(rows * cell.height, across * cell.width, CV_8UC3, sheetGround);
  for (int i = 0; i < count; ++i) {
    const cv::Point corner(i % across * cell.width, i / across * cell.height);
    cells[static_cast<std::size_t>(i)].copyTo(sheet(cv::Rect(corner, cell)));
  }
  return sheet;
}
