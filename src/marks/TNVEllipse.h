#pragma once

#include <random>
#include <vector>

#include <opencv2/core.hpp>

/// The ellipse through points that somebody clicked on a rim. All values are pixels of the picture.
class TNVEllipse {
 public:
  using Points = std::vector<cv::Point2d>;

  TNVEllipse(Points rimPoints, cv::Size pictureSize);

  /// The ellipse that most of the points agree on: random samples of five vote for centre, angle
  /// and size, so that stray clicks do not pull the result, and two calls may differ. Width and
  /// height 0 where nothing was found, with a log line for less than five points.
  const cv::RotatedRect& detectEllipse();

  /// The same with the samples that the generator draws.
  const cv::RotatedRect& detectEllipse(std::mt19937& generator);

  /// Points along the ellipse that was found last; empty without one.
  const Points& getOutline() const { return outline; }

 private:
  Points points;
  Points outline;
  cv::Size imageSize;
  cv::RotatedRect ellipse;
};
