#include "marks/TNVMarkRect.h"

#include <algorithm>
#include <cmath>

#include "editing/TNVType.h"
#include "foundation/Numbers.h"
#include "foundation/XmlStorage.h"
#include "marks/MarkGeometry.h"
#include "marks/MarkNames.h"
#include "marks/TNVContour.h"

namespace {

/// Name of the node in a train set's file; persisted.
constexpr auto kSize = "Size";

/// Pixels of the view between the box and its labels.
constexpr int kLabelDistance = 5;

/// The box in pixels of a picture of that size, laid around its centre.
cv::Rect2d boxAroundCentre(const TNVMarkRect& mark, cv::Size imageSize) {
  const double width = imageSize.width * mark.size.x;
  const double height = imageSize.height * mark.size.y;
  return {imageSize.width * mark.center.x - width / 2,
          imageSize.height * mark.center.y - height / 2, width, height};
}

/// The same from its relative top left corner; the two may differ in the last digit.
cv::Rect2d boxFromCorner(const TNVMarkRect& mark, cv::Size imageSize) {
  return {(mark.center.x - mark.size.x / 2) * imageSize.width,
          (mark.center.y - mark.size.y / 2) * imageSize.height, imageSize.width * mark.size.x,
          imageSize.height * mark.size.y};
}

TNVMark::Points corners(const cv::Rect2d& box) {
  return TNVContour::rectCorners(box.x, box.y, box.width, box.height);
}

cv::Rect roundedRect(const cv::Rect2d& box) {
  return {TNVContour::rounded(box.tl()),
          cv::Size(tnv::roundToInt(box.width), tnv::roundToInt(box.height))};
}

void appendCentersAndCorners(const TNVMark::Points& outline, bool withCorners,
                             TNVMark::Points& points) {
  for (std::size_t i = 0; i < outline.size(); ++i) {
    const cv::Point2d next = outline[(i + 1) % outline.size()];
    if (withCorners) points.push_back(next);
    points.push_back((outline[i] + next) * 0.5);
  }
}

TNVMark::Points pixelPOIs(const std::string& mode, const TNVMark::Points& outline, int count) {
  if (mode == "Corners") return outline;
  if (mode == tnv::kDivided)
    return count < 2 ? TNVMark::Points() : tnv::dividedOutline(outline, count);
  TNVMark::Points points;
  if (mode == "Centers") appendCentersAndCorners(outline, false, points);
  if (mode == "Corners & Centers") appendCentersAndCorners(outline, true, points);
  return points;
}

}  // namespace

TNVMarkRect::TNVMarkRect() {
  type = "Rect";
}

TNVMarkRect::TNVMarkRect(cv::Point2d a, cv::Point2d b, bool centerVariant) {
  if (centerVariant) {
    type = "Rect Center";
    center = a;
    size = {2 * std::abs(b.x - a.x), 2 * std::abs(b.y - a.y)};
    return;
  }
  type = "Rect";
  const cv::Point2d topLeft(std::min(a.x, b.x), std::min(a.y, b.y));
  size = {std::max(a.x, b.x) - topLeft.x, std::max(a.y, b.y) - topLeft.y};
  center = topLeft + size / 2;
}

TNVMarkRect::TNVMarkRect(const cv::FileNode& node)
    : TNVMark(node), size(tnv::readPoint(tnv::child(node, kSize))) {}

void TNVMarkRect::write(cv::FileStorage& storage) {
  TNVMark::write(storage);
  tnv::writePoint(storage, kSize, size);
}

void TNVMarkRect::setRelSize(cv::Point2d /*centre*/, cv::Point2d newSize, cv::Size /*imageSize*/) {
  size = newSize;
  renewChangeTag();
}

cv::Point2d TNVMarkRect::getRelSize(cv::Size /*imageSize*/) const {
  return size;
}

int TNVMarkRect::getMinConstructionPoints(bool /*variant*/) const {
  return 2;
}

int TNVMarkRect::getMaxConstructionPoints(bool /*variant*/) const {
  return 2;
}

void TNVMarkRect::draw(cv::Mat& view, cv::Size imageSize, const TNVTypeMarkStyleSet& style,
                       const TNVTypeDrawInfo& info, const Classes& classes, bool designing) {
  TNVMark::draw(view, imageSize, style, info, classes, false);
  const MarkDrawStyle pen = resolveDrawStyle(style, classes);
  const cv::Rect2d box = boxAroundCentre(*this, view.size());
  const cv::Rect pixels = roundedRect(box);
  if (designing) {
    drawDashedEdges(view, corners(pixels), pen, true);
  } else {
    TNVContour::drawRectangle(view, pixels, pen.colour, pen.thickness);
  }
  drawRing(view, tnv::toPixels(center, view.size()), pen);
  drawLabels(view, imageSize, info, classes, box, pen.colour);
}

void TNVMarkRect::drawLabels(cv::Mat& view, cv::Size imageSize, const TNVTypeDrawInfo& info,
                             const Classes& classes, const cv::Rect2d& box,
                             const cv::Scalar& colour) const {
  const MarkLength width{tnv::roundToInt(imageSize.width * size.x), tnv::truncateToInt(box.width),
                         size.x};
  const MarkLength height{tnv::roundToInt(imageSize.height * size.y),
                          tnv::truncateToInt(box.height), size.y};
  drawLabel(view, lengthLabel(info, width),
            {tnv::truncateToInt(box.x + box.width / 2), tnv::truncateToInt(box.y - kLabelDistance)},
            colour);
  drawLabel(view, classLabel(info, classes) + lengthLabel(info, height),
            {tnv::truncateToInt(box.x + box.width + kLabelDistance),
             tnv::truncateToInt(box.y + box.height / 2)},
            colour);
}

bool TNVMarkRect::isMouseOver(cv::Point2d point, cv::Size imageSize, double* distance) const {
  if (distance != nullptr) *distance = pixelsFromCentre(point, imageSize);
  return cv::Rect2d(center.x - size.x / 2, center.y - size.y / 2, size.x, size.y).contains(point);
}

std::string TNVMarkRect::getTypeName(bool variant) const {
  return variant ? "Rect Center" : "Rect";
}

cv::Rect TNVMarkRect::getPixelRect(cv::Size imageSize) const {
  return roundedRect(boxFromCorner(*this, imageSize));
}

TNVMark::Points TNVMarkRect::getContour(cv::Size imageSize) const {
  return corners(boxFromCorner(*this, imageSize));
}

std::vector<std::string> TNVMarkRect::getPOIModes() const {
  return {"Corners", "Centers", "Corners & Centers", tnv::kDivided};
}

bool TNVMarkRect::getPOIModeSupportsValue(const std::string& mode) const {
  return mode == tnv::kDivided;
}

TNVMark::Points TNVMarkRect::getPOIsGenerated(const std::string& mode, cv::Size imageSize,
                                              int count) const {
  return tnv::toRelative(pixelPOIs(mode, corners(boxAroundCentre(*this, imageSize)), count),
                         imageSize);
}

int TNVMarkRect::getPOICountForSize(cv::Size imageSize) const {
  return poiCountAlong(2 * imageSize.height * size.y + 2 * imageSize.width * size.x, imageSize);
}
