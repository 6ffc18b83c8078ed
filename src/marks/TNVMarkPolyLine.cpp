#include "marks/TNVMarkPolyLine.h"

#include <opencv2/imgproc.hpp>

#include "foundation/XmlStorage.h"
#include "marks/MarkGeometry.h"
#include "marks/MarkNames.h"
#include "marks/TNVContour.h"

namespace {

/// Names of the nodes in a train set's file; persisted.
constexpr auto kPolyPoints = "PolyPoints";
constexpr auto kClosed = "Closed";

/// The box around the vertices is measured in whole units of which the picture's side has so many.
constexpr double kBoxUnits = 10000.0;

cv::Point2d centreOfBox(const TNVMark::Points& vertices) {
  TNVMark::Points scaled;
  scaled.reserve(vertices.size());
  for (const cv::Point2d& vertex : vertices)
    scaled.push_back(vertex * kBoxUnits);
  const cv::Rect box = cv::boundingRect(TNVContour::roundedContour(scaled));
  // Halved as an integer, which takes away the unit that the box is larger than what it bounds.
  return {(box.x + box.width / 2) / kBoxUnits, (box.y + box.height / 2) / kBoxUnits};
}

}  // namespace

TNVMarkPolyLine::TNVMarkPolyLine() {
  type = "PolyLine";
}

TNVMarkPolyLine::TNVMarkPolyLine(const Points& vertices, bool isClosed)
    : polyPoints(vertices), closed(isClosed) {
  type = "PolyLine";
  center = centreOfBox(vertices);
}

TNVMarkPolyLine::TNVMarkPolyLine(const cv::FileNode& node)
    : TNVMark(node),
      polyPoints(tnv::readPoints(tnv::child(node, kPolyPoints))),
      closed(tnv::readInt(tnv::child(node, kClosed), 0) != 0) {}

void TNVMarkPolyLine::write(cv::FileStorage& storage) {
  TNVMark::write(storage);
  tnv::writePoints(storage, kPolyPoints, polyPoints);
  storage << kClosed << static_cast<int>(closed);
}

void TNVMarkPolyLine::fitToPoints(const Points& points, cv::Size /*imageSize*/) {
  polyPoints = points;
  renewChangeTag();
}

void TNVMarkPolyLine::setRelSize(cv::Point2d centre, cv::Point2d newSize, cv::Size imageSize) {
  polyPoints = resizedPoints(polyPoints, centre, newSize, imageSize);
  renewChangeTag();
}

cv::Point2d TNVMarkPolyLine::getRelSize(cv::Size imageSize) const {
  return tnv::relSizeOfPixels(tnv::toPixels(polyPoints, imageSize), imageSize);
}

int TNVMarkPolyLine::getMinConstructionPoints(bool /*variant*/) const {
  return 3;
}

int TNVMarkPolyLine::getMaxConstructionPoints(bool /*variant*/) const {
  return 999;
}

void TNVMarkPolyLine::draw(cv::Mat& view, cv::Size imageSize, const TNVTypeMarkStyleSet& style,
                           const TNVTypeDrawInfo& info, const Classes& classes, bool designing) {
  TNVMark::draw(view, imageSize, style, info, classes, false);
  if (polyPoints.size() < 2) return;
  const MarkDrawStyle pen = resolveDrawStyle(style, classes);
  const Points vertices = tnv::toPixels(polyPoints, view.size());
  drawRing(view, tnv::toPixels(center, view.size()), pen);
  for (const cv::Point2d& vertex : vertices)
    drawDot(view, vertex, pen.colour);
  if (designing) {
    drawDashedEdges(view, vertices, pen, closed);
    drawLineToCursor(view, vertices.back(), pen);
  } else {
    drawEdges(view, vertices, pen);
  }
  drawPathLabel(view, imageSize, info, classes, polyPoints, pen.colour);
}

bool TNVMarkPolyLine::isMouseOver(cv::Point2d point, cv::Size imageSize, double* distance) const {
  return isOverOutline(tnv::toPixels(polyPoints, imageSize), tnv::kHitDistance, point, imageSize,
                       distance);
}

std::string TNVMarkPolyLine::getTypeName(bool variant) const {
  return variant ? "PolyLine Closed" : "PolyLine";
}

cv::Rect TNVMarkPolyLine::getPixelRect(cv::Size /*imageSize*/) const {
  return {};
}

TNVMark::Points TNVMarkPolyLine::getContour(cv::Size imageSize) const {
  if (!closed) return {};
  return tnv::toPixels(polyPoints, imageSize);
}

std::vector<std::string> TNVMarkPolyLine::getPOIModes() const {
  return {"Endpoints", "Poly Points", tnv::kDivided};
}

bool TNVMarkPolyLine::getPOIModeSupportsValue(const std::string& mode) const {
  return mode == tnv::kDivided;
}

TNVMark::Points TNVMarkPolyLine::getPOIsGenerated(const std::string& mode, cv::Size imageSize,
                                                  int count) const {
  if (mode == "Endpoints" && !polyPoints.empty()) return {polyPoints.front(), polyPoints.back()};
  if (mode == "Poly Points") return polyPoints;
  // A closed path is not walked back to its start either.
  if (mode == tnv::kDivided) return tnv::dividedRelativePath(polyPoints, imageSize, count);
  return {};
}

int TNVMarkPolyLine::getPOICountForSize(cv::Size imageSize) const {
  return poiCountAlong(TNVContour::pathLength(tnv::toPixels(polyPoints, imageSize)), imageSize);
}

void TNVMarkPolyLine::drawEdges(cv::Mat& view, const Points& vertices,
                                const MarkDrawStyle& pen) const {
  const auto drawEdge = [&](const cv::Point2d& from, const cv::Point2d& to) {
    TNVContour::drawLine(view, TNVContour::rounded(from), TNVContour::rounded(to), pen.colour,
                         pen.thickness);
  };
  for (std::size_t i = 1; i < vertices.size(); ++i)
    drawEdge(vertices[i - 1], vertices[i]);
  if (closed) drawEdge(vertices.back(), vertices.front());
}
