#include "marks/TNVContour.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include <opencv2/imgproc.hpp>

#include "foundation/LargePictures.h"
#include "foundation/Log.h"
#include "foundation/Numbers.h"

namespace TNVContour {

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kRadiansPerDegree = 0.017453292519943295;

/// Corners that a dashed curve is drawn with at most. A rim that would need more lies far outside
/// of any picture.
constexpr int kMostCurvePoints = 1 << 16;

/// Pixels from the origin beyond which nothing is followed or drawn.
constexpr int kFarthestPixel = 1 << 20;

/// Pixels around a picture within which lines and boxes are left alone, if the picture itself is
/// not larger.
constexpr int kLeastMargin = 1 << 10;

/// Outlines of so many corners and rows are filled in about a second at most, and in less than a
/// tenth of one on any screen, however they cross themselves: a closed line drawn by hand has less
/// than a thousand corners.
constexpr std::size_t kCornersByHand = 1000;
constexpr std::int64_t kRowsOfPictures = std::int64_t{1} << 16;

/// Any other one is filled if that takes so many steps at most, which is half a second.
constexpr double kMostFillSteps = 1 << 30;

/// A crop may have this many pixels whatever the picture, or this many times those of the picture.
constexpr std::int64_t kLargestFreeCrop = std::int64_t{1} << 26;
constexpr std::int64_t kLargestCropFactor = 16;

void checkCropSize(const cv::Mat& source, cv::Size size) {
  const std::int64_t pixels = std::int64_t{size.width} * size.height;
  const std::int64_t sourcePixels = std::int64_t{source.cols} * source.rows;
  if (pixels > std::max(kLargestFreeCrop, kLargestCropFactor * sourcePixels)) {
    CV_Error(cv::Error::StsOutOfRange, "The crop is too large for its picture");
  }
}

int held(int pixel) {
  return std::clamp(pixel, -kFarthestPixel, kFarthestPixel);
}

cv::Point held(cv::Point pixel) {
  return {held(pixel.x), held(pixel.y)};
}

/// Whether the outline is filled in time. The library sorts the edges that cross a row by
/// exchanging neighbours, so that a row takes up to the square of their number.
bool isFillable(const std::vector<cv::Point>& contour) {
  const auto [top, bottom] =
      std::minmax_element(contour.begin(), contour.end(),
                          [](const cv::Point& a, const cv::Point& b) { return a.y < b.y; });
  const std::int64_t rows = std::int64_t{bottom->y} - top->y + 1;
  if (contour.size() <= kCornersByHand && rows <= kRowsOfPictures) return true;
  if (rows > 2 * std::int64_t{kFarthestPixel} + 1) return false;
  std::vector<int> change(static_cast<std::size_t>(rows));
  for (std::size_t i = 0; i < contour.size(); ++i) {
    const auto [low, high] = std::minmax(contour[i].y, contour[(i + 1) % contour.size()].y);
    ++change[static_cast<std::size_t>(low - top->y)];
    --change[static_cast<std::size_t>(high - top->y)];
  }
  double crossings = 0.0;
  double steps = 0.0;
  for (const int row : change) {
    crossings += row;
    steps += crossings * crossings;
  }
  return steps <= kMostFillSteps;
}

/// A thin picture or a huge length would fill the memory step by step.
void checkEnlarged(cv::Size size) {
  constexpr std::int64_t kMostPixels = std::int64_t{1} << 28;
  if (std::int64_t{size.width} * size.height > kMostPixels / 4) {
    CV_Error(cv::Error::StsOutOfRange, "The picture would get too large");
  }
}

/// Start and length of a crop along one axis, in the source and in the crop.
struct CropSpan {
  int source;
  int target;
  int length;
};

CropSpan clipSpan(int start, int length, int available) {
  CropSpan span{start, 0, length};
  if (start < 0) span = {0, tnv::subtractSaturated(0, start), tnv::addSaturated(length, start)};
  span.length = std::min(span.length, available - span.source);
  return span;
}

bool needsAnotherStep(cv::Size size, int length, bool byWidth, bool shrinking) {
  // No side gets shorter than one pixel, however often it is halved.
  if (shrinking) return (byWidth ? size.width : size.height) / 2 > std::max(length, 0);
  return std::int64_t{size.width} * 2 < length || std::int64_t{size.height} * 2 < length;
}

/// Cuts the pixels that it is fed one after the other into dashes.
class Dasher {
 public:
  Dasher(int on, int off) : onLength(on), offLength(off) {}

  void step(cv::Point2d pixel) {
    ++count;
    if (drawing) {
      extend(pixel);
    } else if (count > offLength) {
      start = pixel;
      toggle();
    }
  }

  std::vector<Segment> finish() {
    if (drawing && running) segments.push_back(*running);
    return std::move(segments);
  }

 private:
  void extend(cv::Point2d pixel) {
    if (start.x < 0 && start.y < 0) start = pixel;
    running = {start.x, start.y, pixel.x, pixel.y};
    if (count <= onLength) return;
    segments.push_back(*running);
    toggle();
  }

  void toggle() {
    drawing = !drawing;
    count = 0;
  }

  int onLength;
  int offLength;
  bool drawing = true;
  int count = 0;
  cv::Point2d start{-1, -1};
  std::optional<Segment> running;
  std::vector<Segment> segments;
};

/// Ramanujan's second formula.
double ellipsePerimeter(double a, double b) {
  const double sum = a + b;
  const double h = std::pow((a - b) / sum, 2);
  return kPi * sum * (1 + 3 * h / (10 + std::sqrt(4 - 3 * h)));
}

/// Half the lengths of the sides, from the corners, which are in single precision.
cv::Size2d halfAxes(const cv::RotatedRect& ellipse) {
  std::array<cv::Point2f, 4> corners;
  ellipse.points(corners.data());
  return {0.5 * distance(corners[3], corners[0]), 0.5 * distance(corners[0], corners[1])};
}

/// Whether a round shape keeps within the pixels that are drawn. False for what is no number.
bool isDrawable(cv::Point2d centre, double radius) {
  return std::abs(centre.x) + radius <= kFarthestPixel &&
         std::abs(centre.y) + radius <= kFarthestPixel;
}

/// In integers that the far ends of any box fit.
using WideRect = cv::Rect_<std::int64_t>;

/// What lies around the picture, edges that are too thick to end within it included.
WideRect surroundingsOf(cv::Size picture) {
  const std::int64_t margin = std::max({picture.width, picture.height, kLeastMargin});
  return {-margin, -margin, picture.width + 2 * margin, picture.height + 2 * margin};
}

/// Cuts the ends of the line off that lie far from the picture: a thick line would be followed
/// along its whole length. False if nothing is left.
bool cutToSurroundings(cv::Size picture, cv::Point& from, cv::Point& to) {
  const WideRect surroundings = surroundingsOf(picture);
  cv::Point2l start = cv::Point2l(from) - surroundings.tl();
  cv::Point2l end = cv::Point2l(to) - surroundings.tl();
  if (!cv::clipLine(surroundings.size(), start, end)) return false;
  from = start + surroundings.tl();
  to = end + surroundings.tl();
  return true;
}

}  // namespace

double distance(cv::Point2d a, cv::Point2d b) {
  return std::hypot(b.x - a.x, b.y - a.y);
}

double pathLength(const Points& points) {
  double length = 0.0;
  for (std::size_t i = 1; i < points.size(); ++i)
    length += distance(points[i - 1], points[i]);
  return length;
}

Points consistentDevidePointLine(const Points& points, int count) {
  if (points.size() < 2) {
    tnv::logLine(
        "TNVContour::consistentDevidePointLine: Can not devide points, line has to less points < "
        "2!");
    return {};
  }
  if (count < 2) {
    tnv::logLine(
        "TNVContour::consistentDevidePointLine: Can not devide points, target points < 2!");
    return {};
  }
  const double step = pathLength(points) / (count - 1);
  Points result{points.front()};
  double carry = 0.0;
  for (std::size_t i = 1; i < points.size(); ++i) {
    const cv::Point2d a = points[i - 1];
    const double length = distance(a, points[i]);
    if (length == 0.0) continue;  // has no direction to walk in
    const cv::Point2d direction = (points[i] - a) / length;
    const double walked = length + carry;
    const int steps = std::clamp(tnv::truncateToInt(std::floor(walked / step)), 0, count);
    for (int m = 1; m <= steps; ++m)
      result.push_back(a - carry * direction + m * step * direction);
    carry = walked - steps * step;
  }
  if (result.size() != static_cast<std::size_t>(count)) result.push_back(points.back());
  return result;
}

Points rectCorners(double x, double y, double width, double height) {
  return {{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}};
}

cv::Rect2d boundingRectOfPoints(const Points& points) {
  constexpr double largest = std::numeric_limits<double>::max();
  // The smallest positive double, so that a list of negative coordinates ends at about zero.
  constexpr double tiniest = std::numeric_limits<double>::min();
  cv::Point2d low(largest, largest);
  cv::Point2d high(tiniest, tiniest);
  for (const cv::Point2d& point : points) {
    low = {std::min(low.x, point.x), std::min(low.y, point.y)};
    high = {std::max(high.x, point.x), std::max(high.y, point.y)};
  }
  return {low, high};
}

Points ellipseOutline(const cv::RotatedRect& ellipse, int delta) {
  const cv::Size2d axes = halfAxes(ellipse);
  if (!std::isfinite(axes.width) || !std::isfinite(axes.height) || !std::isfinite(ellipse.angle))
    return {};
  Points outline;
  cv::ellipse2Poly(cv::Point2d(ellipse.center), axes, tnv::truncateToInt(ellipse.angle), 0, 360,
                   delta, outline);
  return outline;
}

std::vector<cv::Point> roundedContour(const Points& points) {
  std::vector<cv::Point> contour;
  contour.reserve(points.size());
  for (const cv::Point2d& point : points)
    contour.push_back(held(rounded(point)));
  return contour;
}

void fillContourMask(cv::Mat& mask, const std::vector<cv::Point>& contour,
                     const cv::Scalar& value) {
  if (contour.empty() || !isFillable(contour)) return;
  cv::drawContours(mask, std::vector<std::vector<cv::Point>>{contour}, 0, value, cv::FILLED,
                   cv::LINE_8, cv::noArray(), std::numeric_limits<int>::max(), cv::Point());
}

cv::Mat cropWithBorder(const cv::Mat& source, const cv::Rect& rect, const cv::Scalar& fill) {
  checkCropSize(source, rect.size());
  cv::Mat crop(rect.size(), source.type(), fill);
  if (rect.x > source.cols - 1 || rect.y > source.rows - 1) return crop;
  const CropSpan x = clipSpan(rect.x, rect.width, source.cols);
  const CropSpan y = clipSpan(rect.y, rect.height, source.rows);
  const cv::Mat part = source(cv::Rect(x.source, y.source, x.length, y.length));
  // The library refuses to copy nothing into a part.
  if (part.empty()) return crop;
  part.copyTo(crop(cv::Rect(x.target, y.target, x.length, y.length)));
  return crop;
}

cv::Mat resizedCrop(const cv::Mat& source, cv::Point centre, cv::Size target, double zoom) {
  const int width = tnv::roundToInt(target.width / zoom);
  const int height = tnv::roundToInt(target.height / zoom);
  const cv::Rect window(tnv::subtractSaturated(centre.x, width / 2),
                        tnv::subtractSaturated(centre.y, height / 2), width, height);
  checkCropSize(source, target);
  cv::Mat shown;
  cv::resize(cropWithBorder(source, window, cv::Scalar()), shown, target, 0, 0, cv::INTER_LINEAR);
  return shown;
}

double resizeToLength(const cv::Mat& source, cv::Mat& destination, int length, bool byWidth) {
  const int current = byWidth ? source.cols : source.rows;
  if (length == 0 || length == current) {
    destination = source.clone();
    return 1.0;
  }
  CV_Assert(!source.empty());  // would be enlarged for ever
  const bool shrinking = length <= current;
  cv::Mat scaled = source;
  do {
    cv::Mat next;
    if (shrinking) {
      next = tnv::newPicture((scaled.size() + cv::Size(1, 1)) / 2, scaled.type());
      cv::pyrDown(scaled, next);
    } else {
      checkEnlarged(scaled.size());
      cv::pyrUp(scaled, next);
    }
    scaled = next;
  } while (needsAnotherStep(scaled.size(), length, byWidth, shrinking));
  const double factor = static_cast<double>(length) / (byWidth ? scaled.cols : scaled.rows);
  // A buffer of its own: that of the destination may be shared with somebody.
  cv::Mat result;
  cv::resize(scaled, result,
             {tnv::roundToInt(scaled.cols * factor), tnv::roundToInt(scaled.rows * factor)}, 0, 0,
             cv::INTER_LINEAR);
  destination = result;
  return static_cast<double>(length) / current;
}

std::vector<Segment> dashSegments(const cv::Mat& image, const Points& points, int onLength,
                                  int offLength, bool closed) {
  if (points.size() < 2) return {};
  Dasher dasher(onLength, offLength);
  const std::size_t edges = closed ? points.size() : points.size() - 1;
  for (std::size_t i = 0; i < edges; ++i) {
    // The iterator keeps to the pixels of the image.
    cv::LineIterator pixel(image, rounded(points[i]), rounded(points[(i + 1) % points.size()]));
    for (int n = 0; n < pixel.count; ++n, ++pixel)
      dasher.step(pixel.pos());
  }
  return dasher.finish();
}

void drawDashedPolyline(cv::Mat& image, const Points& points, const cv::Scalar& colour,
                        int onLength, int offLength, int thickness, bool closed) {
  for (const Segment& dash : dashSegments(image, points, onLength, offLength, closed)) {
    drawLine(image, rounded({dash[0], dash[1]}), rounded({dash[2], dash[3]}), colour, thickness);
  }
}

void drawDashedCircle(cv::Mat& image, cv::Point2d centre, float radius, const cv::Scalar& colour,
                      int thickness) {
  // One point for 16 pixels of the rim.
  const int count = std::min(tnv::truncateToInt(radius * 2 * kPi * 0.0625), kMostCurvePoints);
  Points rim;
  for (int i = 0; i < count; ++i) {
    const double angle = i * (360.0 / count) * kRadiansPerDegree;
    rim.emplace_back(std::cos(angle) * radius + centre.x, std::sin(angle) * radius + centre.y);
  }
  drawDashedPolyline(image, rim, colour, kDashOn, kDashOff, thickness, true);
}

void drawDashedEllipse(cv::Mat& image, const cv::RotatedRect& ellipse, const cv::Scalar& colour,
                       int thickness) {
  const Points outline = ellipseOutline(ellipse, 1);
  if (outline.empty()) return;
  const cv::Size2d axes = halfAxes(ellipse);
  // One point for four pixels of the rim.
  const int count = std::min(tnv::truncateToInt(ellipsePerimeter(axes.width, axes.height) * 0.25),
                             kMostCurvePoints);
  drawDashedPolyline(image, consistentDevidePointLine(outline, count), colour, kDashOn, kDashOff,
                     thickness, true);
}

void drawLine(cv::Mat& image, cv::Point from, cv::Point to, const cv::Scalar& colour,
              int thickness) {
  if (!cutToSurroundings(image.size(), from, to)) return;
  cv::line(image, from, to, colour, std::max(thickness, 1), cv::LINE_AA);
}

void drawRectangle(cv::Mat& image, const cv::Rect& box, const cv::Scalar& colour, int thickness) {
  const WideRect near = WideRect(box) & surroundingsOf(image.size());
  cv::rectangle(image, cv::Rect(near), colour, thickness, cv::LINE_AA, 0);
}

void drawCircle(cv::Mat& image, cv::Point centre, int radius, const cv::Scalar& colour,
                int thickness, int lineType) {
  if (radius < 0 || !isDrawable(centre, radius)) return;
  cv::circle(image, centre, radius, colour, thickness, lineType, 0);
}

void drawEllipse(cv::Mat& image, const cv::RotatedRect& ellipse, const cv::Scalar& colour,
                 int thickness) {
  const auto [width, height] = ellipse.size;
  if (!(width >= 0 && height >= 0)) return;
  if (!isDrawable(ellipse.center, std::max(width, height) / 2)) return;
  cv::ellipse(image, ellipse, colour, thickness, cv::LINE_AA);
}

cv::Point rounded(cv::Point2d point) {
  return {tnv::roundToInt(point.x), tnv::roundToInt(point.y)};
}

}  // namespace TNVContour
