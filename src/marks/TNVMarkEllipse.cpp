#include "marks/TNVMarkEllipse.h"

#include <cmath>
#include <utility>

#include "foundation/XmlStorage.h"
#include "marks/MarkGeometry.h"
#include "marks/MarkNames.h"
#include "marks/TNVContour.h"
#include "marks/TNVEllipse.h"

namespace {

/// A fit takes as many points as an ellipse has degrees of freedom.
constexpr std::size_t kFewestRimPoints = 5;

/// Points of the outline for filling and for assists.
constexpr int kContourPoints = 64;

/// Degrees between the corners of the polygon that stands for the rim: where points are placed
/// along it, where its length is measured, and where a coarse one will do.
constexpr int kFineDelta = 1;
constexpr int kLengthDelta = 2;
constexpr int kCoarseDelta = 4;

/// Pixels outside of the rim up to which the cursor still hits.
constexpr double kHitMargin = 5.0;

/// What an ellipse is made of, in pixels of a picture or view: where it stands, and the way from
/// there to the two points.
struct Axes {
  cv::Point2d centre;
  cv::Point2d a;
  cv::Point2d b;

  cv::RotatedRect rectangle() const {
    const double angle = std::atan2(a.y, a.x) / CV_PI * 180;
    return {centre, cv::Size2d(2 * cv::norm(a), 2 * cv::norm(b)), static_cast<float>(angle)};
  }

  cv::Point2d endOfA() const { return centre + a; }

  /// The end of the second half axis where it belongs, at a right angle to the first.
  cv::Point2d endOfB() const { return centre + cv::Point2d(a.y, -a.x) / cv::norm(a) * cv::norm(b); }
};

Axes axesIn(const TNVMarkEllipse& mark, cv::Size size) {
  const cv::Point2d centre = tnv::toPixels(mark.center, size);
  return {centre, tnv::toPixels(mark.pointA, size) - centre,
          tnv::toPixels(mark.pointB, size) - centre};
}

TNVMark::Points rimIn(const TNVMarkEllipse& mark, cv::Size size, int delta) {
  return TNVContour::ellipseOutline(axesIn(mark, size).rectangle(), delta);
}

}  // namespace

TNVMarkEllipse::TNVMarkEllipse() {
  type = "Ellipse";
}

TNVMarkEllipse::TNVMarkEllipse(cv::Point2d centre, cv::Point2d a, cv::Point2d b)
    : TNVMarkEllipse() {
  center = centre;
  pointA = a;
  pointB = b;
}

TNVMarkEllipse::TNVMarkEllipse(const Points& rimPoints, cv::Size imageSize) : TNVMarkEllipse() {
  if (rimPoints.size() < kFewestRimPoints) return;
  TNVEllipse fit(tnv::toPixels(rimPoints, imageSize), imageSize);
  const cv::RotatedRect& found = fit.detectEllipse();
  const cv::Point2d middle = found.center;
  const double width = found.size.width;
  const double height = found.size.height;
  if (!(middle.x > 0 && middle.y > 0 && width > 0 && height > 0)) return;
  const double angle = found.angle * CV_PI / 180;
  const cv::Point2d axis(std::cos(angle), std::sin(angle));
  center = tnv::toRelative(middle, imageSize);
  pointA = tnv::toRelative(middle + axis * width / 2, imageSize);
  pointB = tnv::toRelative(middle + cv::Point2d(axis.y, -axis.x) * height / 2, imageSize);
}

TNVMarkEllipse::TNVMarkEllipse(const cv::FileNode& node)
    : TNVMark(node),
      pointA(tnv::readPoint(tnv::child(node, tnv::kPointA))),
      pointB(tnv::readPoint(tnv::child(node, tnv::kPointB))) {}

void TNVMarkEllipse::write(cv::FileStorage& storage) {
  TNVMark::write(storage);
  tnv::writePointPair(storage, pointA, pointB);
}

void TNVMarkEllipse::setRelSize(cv::Point2d centre, cv::Point2d /*newSize*/, cv::Size imageSize) {
  const cv::Point2d shift = tnv::toPixels(centre - center, imageSize);
  for (cv::Point2d* point : {&pointA, &pointB})
    *point = tnv::toRelative(tnv::toPixels(*point, imageSize) + shift, imageSize);
  renewChangeTag();
}

cv::Point2d TNVMarkEllipse::getRelSize(cv::Size imageSize) const {
  return tnv::relSizeOfOutline(rimIn(*this, imageSize, kCoarseDelta), imageSize);
}

int TNVMarkEllipse::getMinConstructionPoints(bool variant) const {
  return variant ? 5 : 3;
}

int TNVMarkEllipse::getMaxConstructionPoints(bool variant) const {
  return variant ? 99 : 3;
}

void TNVMarkEllipse::draw(cv::Mat& view, cv::Size imageSize, const TNVTypeMarkStyleSet& style,
                          const TNVTypeDrawInfo& info, const Classes& classes, bool designing) {
  TNVMark::draw(view, imageSize, style, info, classes, false);
  const Axes axes = axesIn(*this, view.size());
  const MarkDrawStyle pen = resolveDrawStyle(style, classes);
  if (designing) {
    TNVContour::drawDashedEllipse(view, axes.rectangle(), pen.colour, pen.thickness);
    drawDashedEdges(view, {axes.centre, axes.endOfA()}, pen, false);
    drawDashedEdges(view, {axes.centre, axes.endOfB()}, pen, false);
    drawLineToCursor(view, axes.centre, pen);
  } else {
    TNVContour::drawEllipse(view, axes.rectangle(), pen.colour, pen.thickness);
    const cv::Point middle = TNVContour::rounded(axes.centre);
    for (const cv::Point2d& end : {axes.endOfA(), axes.endOfB()})
      TNVContour::drawLine(view, middle, TNVContour::rounded(end), pen.colour, pen.thickness);
  }
  drawRing(view, axes.centre, pen);
}

bool TNVMarkEllipse::isMouseOver(cv::Point2d point, cv::Size imageSize, double* distance) const {
  return isOverOutline(rimIn(*this, imageSize, kCoarseDelta), kHitMargin, point, imageSize,
                       distance);
}

std::string TNVMarkEllipse::getTypeName(bool variant) const {
  return variant ? "Ellipse Multiple" : "Ellipse";
}

cv::Rect TNVMarkEllipse::getPixelRect(cv::Size /*imageSize*/) const {
  return {};
}

TNVMark::Points TNVMarkEllipse::getContour(cv::Size imageSize) const {
  return tnv::dividedOutline(rimIn(*this, imageSize, kFineDelta), kContourPoints);
}

std::vector<std::string> TNVMarkEllipse::getPOIModes() const {
  return {tnv::kDivided};
}

bool TNVMarkEllipse::getPOIModeSupportsValue(const std::string& mode) const {
  return mode == tnv::kDivided;
}

TNVMark::Points TNVMarkEllipse::getPOIsGenerated(const std::string& mode, cv::Size imageSize,
                                                 int count) const {
  if (mode != tnv::kDivided) return {};
  return tnv::toRelative(tnv::dividedOutline(rimIn(*this, imageSize, kFineDelta), count),
                         imageSize);
}

int TNVMarkEllipse::getPOICountForSize(cv::Size imageSize) const {
  // The rim ends with its first point again.
  return poiCountAlong(TNVContour::pathLength(rimIn(*this, imageSize, kLengthDelta)), imageSize);
}
