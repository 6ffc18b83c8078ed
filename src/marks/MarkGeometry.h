#pragma once

#include <vector>

#include <opencv2/core.hpp>

/// What the kinds of marks calculate alike. Relative points are fractions of the picture's size,
/// pixels belong to a picture or view of the size handed in.
namespace tnv {

using Points = std::vector<cv::Point2d>;

/// A mark without area is hit by a cursor that is less than so many pixels away.
constexpr double kHitDistance = 19.0;

cv::Point2d toPixels(cv::Point2d relative, cv::Size size);
Points toPixels(const Points& relative, cv::Size size);
cv::Point2d toRelative(cv::Point2d pixel, cv::Size size);
Points toRelative(Points pixels, cv::Size size);

std::vector<cv::Point2f> toSinglePrecision(const Points& points);

/// The relative size of the box of whole pixels that the points touch once they are rounded. It is
/// one pixel larger than the difference of the outermost points. (0, 0) without points.
cv::Point2d relSizeOfPixels(const Points& pixels, cv::Size size);

/// The same for an outline, whose points touch the pixels that they lie in.
cv::Point2d relSizeOfOutline(const Points& outline, cv::Size size);

/// The point after a resize about `centre` by `scale` and a move of the centre to `newCentre`.
cv::Point2d resizedAbout(cv::Point2d centre, cv::Point2d point, cv::Point2d scale,
                         cv::Point2d newCentre);

/// `count` points at equal distances along an open path, both ends included. Empty for a count
/// below 2, and for one beyond 2^24, for which no picture has room; empty, with a log line, for a
/// path of less than two points.
Points dividedPath(const Points& path, int count);

/// The same for a path of relative points. The distances are equal in pixels.
Points dividedRelativePath(const Points& path, cv::Size size, int count);

/// `count` points at equal distances around a closed outline, starting with its first point, which
/// is not repeated at its end. Empty, with a log line, for a count below 1; empty without one for a
/// count beyond 2^24 and for an outline without points.
Points dividedOutline(Points outline, int count);

/// `count` points at equal distances around a circle: right, then below the centre. Empty for a
/// count below 1 or beyond 2^24.
Points dividedCircle(cv::Point2d centre, double radius, int count);

/// Whether the pixel hits the outline, which counts as closed: lies within it or less than `margin`
/// pixels away from it. Never hits less than two points.
bool isOverOutline(const Points& outline, double margin, cv::Point2d pixel);

}  // namespace tnv
