#include "marks/MarkGeometry.h"

#include <opencv2/imgproc.hpp>

#include "foundation/Numbers.h"
#include "marks/TNVContour.h"

namespace tnv {

namespace {

/// No picture has room for more points along a mark.
constexpr int kMostDivisions = 1 << 24;

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
  if (outline.empty()) return {};
  outline.push_back(outline.front());
  Points points = dividedPath(outline, addSaturated(count, 1));
  if (!points.empty()) points.pop_back();
  return points;
}

bool isOverOutline(const Points& outline, cv::Point2d pixel) {
  if (outline.size() < 2) return false;
  return cv::pointPolygonTest(toSinglePrecision(outline), pixel, true) > -kHitDistance;
}

}  // namespace tnv
