#include "marks/TNVMarkLine.h"

#include "foundation/XmlStorage.h"
#include "marks/MarkGeometry.h"
#include "marks/MarkNames.h"
#include "marks/TNVContour.h"

namespace {

/// What both coordinates of an end are that has not been set.
const cv::Point2d kNowhere(-1.0, -1.0);

}  // namespace

TNVMarkLine::TNVMarkLine() {
  type = "Line";
}

TNVMarkLine::TNVMarkLine(cv::Point2d a, cv::Point2d b) : pointA(a), pointB(b) {
  type = "Line";
  center = (a + b) * 0.5;
}

TNVMarkLine::TNVMarkLine(const cv::FileNode& node)
    : TNVMark(node),
      pointA(tnv::readPoint(tnv::child(node, tnv::kPointA))),
      pointB(tnv::readPoint(tnv::child(node, tnv::kPointB))) {}

void TNVMarkLine::write(cv::FileStorage& storage) {
  TNVMark::write(storage);
  tnv::writePointPair(storage, pointA, pointB);
}

void TNVMarkLine::setRelSize(cv::Point2d centre, cv::Point2d newSize, cv::Size imageSize) {
  const Points resized = resizedPoints(ends(), centre, newSize, imageSize);
  pointA = resized.front();
  pointB = resized.back();
  renewChangeTag();
}

cv::Point2d TNVMarkLine::getRelSize(cv::Size imageSize) const {
  return tnv::relSizeOfPixels(tnv::toPixels(ends(), imageSize), imageSize);
}

int TNVMarkLine::getMinConstructionPoints(bool /*variant*/) const {
  return 2;
}

int TNVMarkLine::getMaxConstructionPoints(bool /*variant*/) const {
  return 2;
}

void TNVMarkLine::draw(cv::Mat& view, cv::Size imageSize, const TNVTypeMarkStyleSet& style,
                       const TNVTypeDrawInfo& info, const Classes& classes, bool designing) {
  TNVMark::draw(view, imageSize, style, info, classes, false);
  if (pointA == kNowhere || pointB == kNowhere) return;
  const MarkDrawStyle pen = resolveDrawStyle(style, classes);
  const Points pixels = tnv::toPixels(ends(), view.size());
  drawRing(view, tnv::toPixels(center, view.size()), pen);
  if (designing) {
    drawDashedEdges(view, pixels, pen, false);
  } else {
    TNVContour::drawLine(view, TNVContour::rounded(pixels.front()),
                         TNVContour::rounded(pixels.back()), pen.colour, pen.thickness);
  }
  for (const cv::Point2d& end : pixels)
    drawDot(view, end, pen.colour);
  drawPathLabel(view, imageSize, info, classes, ends(), pen.colour);
}

bool TNVMarkLine::isMouseOver(cv::Point2d point, cv::Size imageSize, double* distance) const {
  return isOverOutline(tnv::toPixels(ends(), imageSize), tnv::kHitDistance, point, imageSize,
                       distance);
}

std::string TNVMarkLine::getTypeName(bool /*variant*/) const {
  return "Line";
}

cv::Rect TNVMarkLine::getPixelRect(cv::Size /*imageSize*/) const {
  return {};
}

TNVMark::Points TNVMarkLine::getContour(cv::Size /*imageSize*/) const {
  return {};
}

std::vector<std::string> TNVMarkLine::getPOIModes() const {
  return {"Endpoints", "Center", "Endpoints & Center", tnv::kDivided};
}

bool TNVMarkLine::getPOIModeSupportsValue(const std::string& mode) const {
  return mode == tnv::kDivided;
}

TNVMark::Points TNVMarkLine::getPOIsGenerated(const std::string& mode, cv::Size imageSize,
                                              int count) const {
  if (mode == "Endpoints") return ends();
  if (mode == "Center") return {center};
  if (mode == "Endpoints & Center") return {pointA, center, pointB};
  if (mode == tnv::kDivided) return tnv::dividedRelativePath(ends(), imageSize, count);
  return {};
}

int TNVMarkLine::getPOICountForSize(cv::Size imageSize) const {
  return poiCountAlong(TNVContour::pathLength(tnv::toPixels(ends(), imageSize)), imageSize);
}

TNVMark::Points TNVMarkLine::ends() const {
  return {pointA, pointB};
}
