#pragma once

#include <span>
#include <vector>

#include <opencv2/core.hpp>

/// Circles through points that somebody clicked on a rim. All values are pixels of the picture.
namespace TNVCircle {

using Points = std::vector<cv::Point2d>;

/// (-1, -1, -1) stands for no result.
struct Circle {
  double x = -1.0;
  double y = -1.0;
  double r = -1.0;
};

/// The circle that most of the points agree on: triples spread over the rim vote for a centre, so
/// that stray clicks do not pull the result. No result, with a log line, for less than three
/// points; no result where no triple has a centre. The radius is no number where a circle of the
/// winning centres has none.
Circle getCircleFromContour(const Points& points);

/// The algebraic fit of all points. No result, with a log line, for less than three points. The
/// radius of points on a line may be no number.
Circle _solveCircleFromPoints(std::span<const cv::Point2d> points);

}  // namespace TNVCircle
