#include "marks/TNVMarkCircle.h"

#include "editing/TNVType.h"
#include "foundation/Numbers.h"
#include "foundation/XmlStorage.h"
#include "marks/MarkGeometry.h"
#include "marks/MarkNames.h"
#include "marks/TNVCircle.h"
#include "marks/TNVContour.h"

namespace {

/// Name of the node in a train set's file; persisted.
constexpr auto kRadius = "Radius";

/// Corners of the outline.
constexpr int kContourPoints = 64;

/// Pixels of the view between the rim and the label.
constexpr int kLabelDistance = 5;

}  // namespace

TNVMarkCircle::TNVMarkCircle() {
  type = "Circle";
}

TNVMarkCircle::TNVMarkCircle(cv::Point2d centre, cv::Point2d rim) : TNVMarkCircle() {
  center = centre;
  radius = {rim};
}

TNVMarkCircle::TNVMarkCircle(const Points& rimPoints, cv::Size imageSize) : TNVMarkCircle() {
  if (rimPoints.empty()) return;
  const auto [x, y, r] = TNVCircle::getCircleFromContour(tnv::toPixels(rimPoints, imageSize));
  center = tnv::toRelative({x, y}, imageSize);
  radius = {tnv::toRelative(cv::Point2d(x, y + r), imageSize)};
}

TNVMarkCircle::TNVMarkCircle(const cv::FileNode& node)
    : TNVMark(node), radius(tnv::readPoints(tnv::child(node, kRadius))) {}

void TNVMarkCircle::write(cv::FileStorage& storage) {
  TNVMark::write(storage);
  tnv::writePoints(storage, kRadius, radius);
}

void TNVMarkCircle::setRelSize(cv::Point2d centre, cv::Point2d newSize, cv::Size imageSize) {
  if (!radius.empty()) {
    const cv::Point2d middle = tnv::toPixels(center, imageSize);
    const cv::Point2d direction =
        (tnv::toPixels(radius.front(), imageSize) - middle) / pixelRadius(imageSize);
    const double newRadius = imageSize.width * newSize.x / 2;
    const cv::Point2d rim = tnv::toRelative(middle + direction * newRadius, imageSize);
    radius.front() = rim + (centre - center);
  }
  renewChangeTag();
}

cv::Point2d TNVMarkCircle::getRelSize(cv::Size imageSize) const {
  if (radius.empty()) return {};
  const double diameter = 2 * pixelRadius(imageSize);
  return tnv::toRelative(cv::Point2d(diameter, diameter), imageSize);
}

int TNVMarkCircle::getMinConstructionPoints(bool variant) const {
  return variant ? 3 : 2;
}

int TNVMarkCircle::getMaxConstructionPoints(bool variant) const {
  return variant ? 99 : 2;
}

void TNVMarkCircle::draw(cv::Mat& view, cv::Size imageSize, const TNVTypeMarkStyleSet& style,
                         const TNVTypeDrawInfo& info, const Classes& classes, bool designing) {
  TNVMark::draw(view, imageSize, style, info, classes, false);
  if (radius.empty()) return;
  const MarkDrawStyle pen = resolveDrawStyle(style, classes);
  const cv::Point2d middle = tnv::toPixels(center, view.size());
  const cv::Point2d rim = tnv::toPixels(radius.front(), view.size());
  const double viewRadius = pixelRadius(view.size());
  const int wholeRadius = tnv::truncateToInt(viewRadius);
  if (designing) {
    TNVContour::drawDashedCircle(view, middle, static_cast<float>(wholeRadius), pen.colour,
                                 pen.thickness);
    drawLineToCursor(view, middle, pen);
  } else {
    TNVContour::drawCircle(view, TNVContour::rounded(middle), wholeRadius, pen.colour,
                           pen.thickness);
  }
  // Its edges are not smoothed, unlike those of all that is drawn around it.
  drawRing(view, middle, pen, cv::LINE_8);
  TNVContour::drawLine(view, TNVContour::rounded(middle), TNVContour::rounded(rim), pen.colour,
                       pen.thickness);
  const MarkLength length{tnv::truncateToInt(pixelRadius(imageSize)), wholeRadius,
                          viewRadius / view.cols};
  drawLabel(
      view, classLabel(info, classes) + lengthLabel(info, length),
      {tnv::truncateToInt(middle.x + viewRadius + kLabelDistance), tnv::truncateToInt(middle.y)},
      pen.colour);
}

bool TNVMarkCircle::isMouseOver(cv::Point2d point, cv::Size imageSize, double* distance) const {
  if (radius.empty()) return false;
  const double fromCentre = pixelsFromCentre(point, imageSize);
  if (distance != nullptr) *distance = fromCentre;
  return pixelRadius(imageSize) >= fromCentre;
}

std::string TNVMarkCircle::getTypeName(bool variant) const {
  return variant ? "Circle Multiple" : "Circle";
}

cv::Rect TNVMarkCircle::getPixelRect(cv::Size /*imageSize*/) const {
  return {};
}

TNVMark::Points TNVMarkCircle::getContour(cv::Size imageSize) const {
  return rimIn(imageSize, kContourPoints);
}

std::vector<std::string> TNVMarkCircle::getPOIModes() const {
  return {tnv::kDivided};
}

bool TNVMarkCircle::getPOIModeSupportsValue(const std::string& mode) const {
  return mode == tnv::kDivided;
}

TNVMark::Points TNVMarkCircle::getPOIsGenerated(const std::string& mode, cv::Size imageSize,
                                                int count) const {
  if (mode != tnv::kDivided) return {};
  return tnv::toRelative(rimIn(imageSize, count), imageSize);
}

int TNVMarkCircle::getPOICountForSize(cv::Size imageSize) const {
  if (radius.empty()) return 0;
  return poiCountAlong(2 * CV_PI * pixelRadius(imageSize), imageSize);
}

double TNVMarkCircle::pixelRadius(cv::Size imageSize) const {
  return pixelsFromCentre(radius.front(), imageSize);
}

TNVMark::Points TNVMarkCircle::rimIn(cv::Size imageSize, int count) const {
  if (radius.empty()) return {};
  return tnv::dividedCircle(tnv::toPixels(center, imageSize), pixelRadius(imageSize), count);
}
