#include "editing/HelperView.h"

#include <opencv2/imgproc.hpp>

#include "marks/TNVContour.h"

namespace tnv {

namespace {

const cv::Scalar kWhite(255, 255, 255);

cv::Mat inGray(const cv::Mat& picture) {
  cv::Mat gray;
  cv::cvtColor(picture, gray, cv::COLOR_BGR2GRAY);
  return gray;
}

cv::Mat inThreeChannels(const cv::Mat& gray) {
  cv::Mat picture;
  cv::cvtColor(gray, picture, cv::COLOR_GRAY2BGR);
  return picture;
}

/// Evens out the contrast tile by tile, so that detail in the dark becomes visible.
cv::Mat improved(const cv::Mat& picture) {
  cv::Mat gray = inGray(picture);
  cv::createCLAHE(4.0, cv::Size(4, 4))->apply(gray, gray);
  return gray;
}

/// How much the picture changes along one axis, as bytes.
cv::Mat slope(const cv::Mat& gray, int orderX, int orderY) {
  cv::Mat signedSlope;
  cv::Sobel(gray, signedSlope, CV_16S, orderX, orderY, 3, 1.0, 0.0, cv::BORDER_DEFAULT);
  cv::Mat result;
  cv::convertScaleAbs(signedSlope, result, 1.0, 0.0);
  return result;
}

cv::Mat edges(const cv::Mat& picture) {
  cv::Mat smooth;
  cv::GaussianBlur(picture, smooth, cv::Size(3, 3), 0, 0, cv::BORDER_DEFAULT);
  const cv::Mat gray = inGray(smooth);
  cv::Mat result;
  cv::addWeighted(slope(gray, 1, 0), 0.5, slope(gray, 0, 1), 0.5, 0.0, result);
  return result;
}

cv::Mat doubled(const cv::Mat& gray) {
  cv::Mat result;
  // Held at 255 by the library.
  cv::add(gray, gray, result);
  return result;
}

cv::Mat filtered(const cv::Mat& picture, const TNVTypeHelperMode& mode) {
  switch (mode.value) {
    case TNVTypeHelperMode::kGray:
      return inThreeChannels(inGray(picture));
    case TNVTypeHelperMode::kImprove:
      return inThreeChannels(improved(picture));
    case TNVTypeHelperMode::kEdge:
      return inThreeChannels(edges(picture));
    case TNVTypeHelperMode::kEdgeDoubled:
      return inThreeChannels(doubled(edges(picture)));
    default:
      return picture;
  }
}

void drawCross(cv::Mat& picture) {
  const cv::Point middle(picture.cols / 2, picture.rows / 2);
  cv::line(picture, {middle.x, picture.rows}, {middle.x, 0}, kWhite, 1, cv::LINE_AA);
  cv::line(picture, {picture.cols, middle.y}, {0, middle.y}, kWhite, 1, cv::LINE_AA);
}

}  // namespace

cv::Mat renderHelperView(const cv::Mat& source, cv::Point centre, const HelperView& view) {
  const cv::Size window(view.windowWidth, view.windowHeight);
  cv::Mat picture = filtered(TNVContour::resizedCrop(source, centre, window, view.zoom), view.mode);
  if (view.showCross) drawCross(picture);
  return picture;
}

}  // namespace tnv
