#include "marks/MarkGeometry.h"

#include <algorithm>
#include <cmath>

#include <opencv2/imgproc.hpp>

#include "foundation/Numbers.h"
#include "marks/TNVContour.h"

namespace tnv {

namespace {

/// No picture has room for more points along a mark.
constexpr int kMostDivisions = 1 << 24;

/// Pixels from the origin up to which an outline is measured, so that its size fits an integer.
constexpr float kFarthest = 1 << 20;

}  // namespace

cv::Point2d toPixels(cv::Point2d relative, cv::Size size) {
  return {size.width * relative.x, size.height * relative.y};
}

Points toPixels(const Points& relative, cv::Size size) {
  Points pixels;
  pixels.reserve(relative.size());
  for (const cv::Point2d& point : relative)
    pixels.push_back(toPixels(point, size));
  return pixels;
}

cv::Point2d toRelative(cv::Point2d pixel, cv::Size size) {
  return {pixel.x / size.width, pixel.y / size.height};
}

Points toRelative(Points pixels, cv::Size size) {
  for (cv::Point2d& point : pixels)
    point = toRelative(point, size);
  return pixels;
}

std::vector<cv::Point2f> toSinglePrecision(const Points& points) {
  return {points.begin(), points.end()};
}

cv::Point2d relSizeOfPixels(const Points& pixels, cv::Size size) {
  const cv::Rect box = cv::boundingRect(TNVContour::roundedContour(pixels));
  return toRelative(cv::Point2d(box.width, box.height), size);
}

cv::Point2d relSizeOfOutline(const Points& outline, cv::Size size) {
  std::vector<cv::Point2f> touched = toSinglePrecision(outline);
  for (cv::Point2f& point : touched)
    point = {std::clamp(point.x, -kFarthest, kFarthest),
             std::clamp(point.y, -kFarthest, kFarthest)};
  const cv::Rect box = cv::boundingRect(touched);
  return toRelative(cv::Point2d(box.width, box.height), size);
}

cv::Point2d resizedAbout(cv::Point2d centre, cv::Point2d point, cv::Point2d scale,
                         cv::Point2d newCentre) {
  const cv::Point2d fromCentre = point - centre;
  const cv::Point2d scaled(fromCentre.x * scale.x, fromCentre.y * scale.y);
  return scaled + centre + (newCentre - centre);
}

Points dividedPath(const Points& path, int count) {
  if (count < 2 || count > kMostDivisions) return {};
  return TNVContour::consistentDevidePointLine(path, count);
}

Points dividedRelativePath(const Points& path, cv::Size size, int count) {
  return toRelative(dividedPath(toPixels(path, size), count), size);
}

Points dividedOutline(Points outline, int count) {
  if (outline.empty() || count > kMostDivisions) return {};
  outline.push_back(outline.front());
  Points points = TNVContour::consistentDevidePointLine(outline, addSaturated(count, 1));
  if (!points.empty()) points.pop_back();
  return points;
}

Points dividedCircle(cv::Point2d centre, double radius, int count) {
  if (count < 1 || count > kMostDivisions) return {};
  const double step = 2 * CV_PI / count;
  Points points;
  points.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i)
    points.emplace_back(std::cos(i * step) * radius + centre.x,
                        std::sin(i * step) * radius + centre.y);
  return points;
}

bool isOverOutline(const Points& outline, double margin, cv::Point2d pixel) {
  if (outline.size() < 2) return false;
  return cv::pointPolygonTest(toSinglePrecision(outline), pixel, true) > -margin;
}

}  // namespace tnv
