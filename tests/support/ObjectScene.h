#pragma once

#include <vector>

#include <opencv2/imgproc.hpp>

/// A picture of one object whose pixels are known.
struct ObjectScene {
  cv::Mat picture;
  cv::Mat object;  ///< 255 where the object is
};

/// An ellipse on textured ground. Both have colours of their own and noise; neither is plain.
inline ObjectScene objectScene(cv::Size size, cv::Point centre, cv::Size axes, unsigned seed) {
  cv::RNG random(seed);
  const auto textured = [&](cv::Scalar colour, int contrast) {
    cv::Mat coarse(size.height / 6 + 1, size.width / 6 + 1, CV_8UC3);
    random.fill(coarse, cv::RNG::UNIFORM, 0, contrast);
    cv::Mat texture;
    cv::resize(coarse, texture, size, 0, 0, cv::INTER_LINEAR);
    cv::Mat noise(size, CV_8UC3);
    random.fill(noise, cv::RNG::UNIFORM, 0, 12);
    return cv::Mat(texture + noise + colour);
  };
  const double dark = random.uniform(20, 60);
  const double bright = random.uniform(110, 150);
  ObjectScene scene;
  scene.picture = textured({dark, bright, dark + 20}, 60);
  scene.object = cv::Mat(size, CV_8UC1, cv::Scalar(0));
  cv::ellipse(scene.object, centre, axes, random.uniform(0.0, 180.0), 0, 360, 255, cv::FILLED);
  textured({dark + 10, dark, bright}, 50).copyTo(scene.picture, scene.object);
  return scene;
}

/// The area within an outline of relative points.
inline cv::Mat areaWithin(const std::vector<cv::Point2d>& relative, cv::Size size) {
  std::vector<cv::Point> outline;
  for (const cv::Point2d& point : relative)
    outline.emplace_back(cvRound(point.x * size.width), cvRound(point.y * size.height));
  cv::Mat area(size, CV_8UC1, cv::Scalar(0));
  if (!outline.empty()) cv::fillPoly(area, std::vector<std::vector<cv::Point>>{outline}, 255);
  return area;
}

/// Pixels in both areas as a share of those in one of them; 1 for equal areas.
inline double overlap(const cv::Mat& a, const cv::Mat& b) {
  return static_cast<double>(cv::countNonZero(a & b)) / cv::countNonZero(a | b);
}
