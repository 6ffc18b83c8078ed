#include "ContactSheet.h"

#include <algorithm>

#include <opencv2/imgproc.hpp>

cv::Mat fitted(const cv::Mat& picture, cv::Size cell) {
  const double scale = std::min(1.0 * cell.width / picture.cols, 1.0 * cell.height / picture.rows);
  const cv::Size size(std::max(1, cvRound(picture.cols * scale)),
                      std::max(1, cvRound(picture.rows * scale)));
  cv::Mat result(cell, CV_8UC3, cv::Scalar());
  const cv::Rect middle({(cell.width - size.width) / 2, (cell.height - size.height) / 2}, size);
  cv::resize(picture, result(middle), size, 0, 0, cv::INTER_AREA);
  return result;
}

cv::Mat contactSheet(const std::vector<cv::Mat>& cells, int columns) {
  if (cells.empty()) return {};
  const cv::Size cell = cells.front().size();
  const int count = static_cast<int>(cells.size());
  const int across = std::min(columns, count);
  const int rows = (count + across - 1) / across;
  cv::Mat sheet(rows * cell.height, across * cell.width, CV_8UC3, cv::Scalar());
  for (int i = 0; i < count; ++i) {
    const cv::Point corner(i % across * cell.width, i / across * cell.height);
    cells[static_cast<std::size_t>(i)].copyTo(sheet(cv::Rect(corner, cell)));
  }
  return sheet;
}
