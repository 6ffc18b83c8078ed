#include "marks/TNVMarkPoint.h"

#include <algorithm>

#include <opencv2/imgproc.hpp>

#include "editing/TNVType.h"
#include "foundation/Numbers.h"
#include "marks/MarkGeometry.h"
#include "marks/TNVContour.h"

namespace {

/// The ring around the point shows how near a cursor has to come.
constexpr int kRingRadius = static_cast<int>(tnv::kHitDistance);

/// How strong the ring is beside what lies under it.
constexpr double kRingStrength = 0.3;

/// Pixels on each side of the point's own pixel: of the part of the view in which the ring is
/// drawn, and of the point's box.
constexpr int kRingReach = 21;
constexpr int kBoxReach = 23;

/// The part of the view around the pixel. Empty where the pixel is too far outside.
cv::Rect ringRegion(cv::Point pixel, cv::Size viewSize) {
  const int left = std::max(tnv::subtractSaturated(pixel.x, kRingReach), 0);
  const int top = std::max(tnv::subtractSaturated(pixel.y, kRingReach), 0);
  const int right = std::min(tnv::addSaturated(pixel.x, kRingReach + 1), viewSize.width);
  const int bottom = std::min(tnv::addSaturated(pixel.y, kRingReach + 1), viewSize.height);
  return {left, top, right - left, bottom - top};
}

void drawFaintRing(cv::Mat& view, cv::Point pixel, const cv::Scalar& colour) {
  const cv::Rect region = ringRegion(pixel, view.size());
  if (region.empty()) return;
  cv::Mat part = view(region);
  cv::Mat ringed = part.clone();
  const cv::Point centre(std::min(pixel.x, kRingReach), std::min(pixel.y, kRingReach));
  TNVContour::drawCircle(ringed, centre, kRingRadius, colour, 1);
  cv::addWeighted(part, 1.0 - kRingStrength, ringed, kRingStrength, 0.0, part);
}

}  // namespace

TNVMarkPoint::TNVMarkPoint() {
  type = "Point";
}

TNVMarkPoint::TNVMarkPoint(cv::Point2d centre) {
  type = "Point";
  center = centre;
}

TNVMarkPoint::TNVMarkPoint(const cv::FileNode& node) : TNVMark(node) {}

void TNVMarkPoint::setRelSize(cv::Point2d /*centre*/, cv::Point2d /*newSize*/,
                              cv::Size /*imageSize*/) {
  renewChangeTag();
}

cv::Point2d TNVMarkPoint::getRelSize(cv::Size /*imageSize*/) const {
  return {};
}

int TNVMarkPoint::getMinConstructionPoints(bool /*variant*/) const {
  return 1;
}

int TNVMarkPoint::getMaxConstructionPoints(bool /*variant*/) const {
  return 1;
}

void TNVMarkPoint::draw(cv::Mat& view, cv::Size imageSize, const TNVTypeMarkStyleSet& style,
                        const TNVTypeDrawInfo& info, const Classes& classes, bool /*designing*/) {
  TNVMark::draw(view, imageSize, style, info, classes, false);
  const MarkDrawStyle pen = resolveDrawStyle(style, classes);
  const cv::Point2d position = tnv::toPixels(center, view.size());
  drawRing(view, position, pen);
  drawFaintRing(view, TNVContour::rounded(position), pen.colour);
  drawLabel(view, classLabel(info, classes),
            TNVContour::rounded(position + cv::Point2d(kRingReach, 0)), pen.colour);
}

bool TNVMarkPoint::isMouseOver(cv::Point2d point, cv::Size imageSize, double* distance) const {
  const double fromCentre = pixelsFromCentre(point, imageSize);
  if (distance != nullptr) *distance = fromCentre;
  return fromCentre < tnv::kHitDistance;
}

std::string TNVMarkPoint::getTypeName(bool variant) const {
  return variant ? "" : "Point";
}

cv::Rect TNVMarkPoint::getPixelRect(cv::Size imageSize) const {
  const cv::Point pixel = TNVContour::rounded(tnv::toPixels(center, imageSize));
  return {tnv::subtractSaturated(pixel.x, kBoxReach), tnv::subtractSaturated(pixel.y, kBoxReach),
          2 * kBoxReach + 1, 2 * kBoxReach + 1};
}

TNVMark::Points TNVMarkPoint::getContour(cv::Size /*imageSize*/) const {
  return {};
}

std::vector<std::string> TNVMarkPoint::getPOIModes() const {
  return {};
}

bool TNVMarkPoint::getPOIModeSupportsValue(const std::string& /*mode*/) const {
  return false;
}

TNVMark::Points TNVMarkPoint::getPOIsGenerated(const std::string& /*mode*/, cv::Size /*imageSize*/,
                                               int /*count*/) const {
  return {center};
}

int TNVMarkPoint::getPOICountForSize(cv::Size /*imageSize*/) const {
  return 0;
}
