#include "marks/TNVMark.h"

#include <algorithm>
#include <cstdint>
#include <random>

#include <opencv2/imgproc.hpp>

#include "editing/TNVType.h"
#include "foundation/Numbers.h"
#include "foundation/XmlStorage.h"
#include "marks/Blending.h"
#include "marks/MarkGeometry.h"
#include "marks/TNVContour.h"
#include "project/TNVDNNClass.h"

namespace {

/// The first channel of a style that takes the colour from the mark's classes.
constexpr double kColourOfClasses = -1.0;

/// Change tags lie in 1 to this.
constexpr std::uint32_t kLargestTag = 10000;

/// Pixels that are drawn, and pixels that are left out, along the selection frame.
constexpr int kFrameOn = 8;
constexpr int kFrameOff = 7;

/// Pixels of a dot and of the gap behind it, along the line to the cursor.
constexpr int kDotOn = 2;
constexpr int kDotOff = 7;

/// Radius of the ring at the centre and of the dots, in pixels of the view.
constexpr int kDotRadius = 3;

/// Names of the nodes in a train set's file; persisted.
constexpr auto kType = "Type";
constexpr auto kCenter = "Center";
constexpr auto kPOIs = "POIs";
constexpr auto kPOISize = "POISize";
constexpr auto kClassIdx = "ClassIdx";

const TNVDNNClass* findClass(const TNVMark::Classes& classes, int uniqueIdx) {
  for (const TNVDNNClass* dnnClass : classes) {
    if (dnnClass->uniqueIdx == uniqueIdx) return dnnClass;
  }
  return nullptr;
}

template <class TextOf>
std::string joinClassTexts(const TNVMark::Classes& classes, const std::vector<int>& classIdx,
                           TextOf textOf) {
  std::string joined;
  for (const TNVDNNClass* dnnClass : classes) {
    for (const int idx : classIdx) {
      if (dnnClass->uniqueIdx != idx) continue;
      if (!joined.empty()) joined += ",";
      joined += textOf(*dnnClass);
    }
  }
  return joined;
}

/// Blue, green and red as bytes. A channel out of range is cut to its low 8 bits.
cv::Vec3b toPixel(const cv::Scalar& colour) {
  cv::Vec3b pixel;
  for (int channel = 0; channel < 3; ++channel)
    pixel[channel] = static_cast<uchar>(tnv::truncateToInt(colour[channel]) & 0xff);
  return pixel;
}

/// The box of a relative size around a relative centre, in pixels.
cv::Rect roundedBox(cv::Point2d center, cv::Point2d size, cv::Size imageSize) {
  const double width = imageSize.width * size.x;
  const double height = imageSize.height * size.y;
  return {tnv::roundToInt(imageSize.width * center.x - 0.5 * width),
          tnv::roundToInt(imageSize.height * center.y - 0.5 * height), tnv::roundToInt(width),
          tnv::roundToInt(height)};
}

}  // namespace

TNVMark::TNVMark() {
  renewChangeTag();
}

TNVMark::TNVMark(const TNVMark& other)
    : uniqueId(other.uniqueId),
      type(other.type),
      center(other.center),
      classIdx(other.classIdx),
      hovered(other.hovered),
      selected(other.selected),
      pois(other.pois),
      poiSize(other.poiSize) {
  renewChangeTag();
}

TNVMark::TNVMark(const cv::FileNode& node)
    : type(tnv::readText(tnv::child(node, kType), "")),
      center(tnv::readPoint(tnv::child(node, kCenter))),
      classIdx(tnv::readInts(tnv::child(node, kClassIdx))),
      pois(tnv::readPoints(tnv::child(node, kPOIs))),
      poiSize(tnv::readPoint(tnv::child(node, kPOISize))) {
  renewChangeTag();
}

void TNVMark::write(cv::FileStorage& storage) {
  tnv::writeText(storage, kType, type);
  tnv::writePoint(storage, kCenter, center);
  tnv::writePoints(storage, kPOIs, pois);
  tnv::writePoint(storage, kPOISize, poiSize);
  tnv::writeInts(storage, kClassIdx, classIdx);
  // Views draw anew after a save.
  renewChangeTag();
}

void TNVMark::fitToPoints(const Points& points, cv::Size imageSize) {
  const cv::Rect2d box = TNVContour::boundingRectOfPoints(points);
  if (!(box.width > 0 && box.height > 0)) return;
  update({box.x + 0.5 * box.width, box.y + 0.5 * box.height}, {box.width, box.height}, {},
         imageSize);
}

void TNVMark::draw(cv::Mat& view, cv::Size imageSize, const TNVTypeMarkStyleSet& style,
                   const TNVTypeDrawInfo& /*info*/, const Classes& classes, bool /*designing*/) {
  drawFrame(view, imageSize, style, classes);
}

void TNVMark::update(cv::Point2d newCentre, cv::Point2d newSize, const Classes& classes,
                     cv::Size imageSize) {
  const cv::Point2d shift = newCentre - center;
  const cv::Point2d oldSize = getRelSize(imageSize);
  setRelSize(newCentre, newSize, imageSize);
  center = newCentre;
  if (!classes.empty()) classIdx.clear();
  for (const TNVDNNClass* dnnClass : classes)
    classIdx.push_back(dnnClass->uniqueIdx);
  // The size that the kind has made of it, which need not be the one asked for.
  const cv::Point2d size = getRelSize(imageSize);
  const cv::Point2d ratio(size.x / oldSize.x, size.y / oldSize.y);
  for (cv::Point2d& poi : pois) {
    poi.x = (poi.x - center.x) * ratio.x + center.x + shift.x;
    poi.y = (poi.y - center.y) * ratio.y + center.y + shift.y;
  }
  renewChangeTag();
}

cv::Mat TNVMark::getROIImage(const cv::Mat& image) const {
  return TNVContour::cropWithBorder(
      image, roundedBox(center, getRelSize(image.size()), image.size()), cv::Scalar());
}

int TNVMark::renewChangeTag() {
  // Seeding takes longer than writing a mark does.
  thread_local std::mt19937 generator(std::random_device{}());
  const int before = changeTag;
  do {
    const auto value = static_cast<std::uint32_t>(generator());
    // The values above the last whole multiple would make the low tags likelier.
    if (value / kLargestTag >= 429496) continue;
    changeTag = static_cast<int>(value % kLargestTag) + 1;
  } while (changeTag == before);
  return changeTag;
}

MarkDrawStyle TNVMark::resolveDrawStyle(const TNVTypeMarkStyleSet& style,
                                        const Classes& classes) const {
  MarkDrawStyle pen{style.colorNormal, style.thicknessNormal};
  if (hovered) pen = {style.colorHovered, style.thicknessHovered};
  if (selected) pen = {style.colorSelected, style.thicknessSelected};
  if (pen.colour[0] != kColourOfClasses) return pen;

  cv::Scalar sum;
  double count = 0.0;
  for (const int idx : classIdx) {
    const TNVDNNClass* dnnClass = findClass(classes, idx);
    if (dnnClass == nullptr) continue;
    sum += dnnClass->color;
    count += 1.0;
  }
  // Without a class these are no numbers, which become the smallest integer.
  const auto mean = [&](int channel) {
    return static_cast<double>(tnv::truncateToInt(sum[channel] / count));
  };
  return {{mean(0), mean(1), mean(2), 0.0}, tnv::truncateToInt(1.0 / count)};
}

std::string TNVMark::classIdText(const Classes& classes, const std::vector<int>& classIdx) {
  return joinClassTexts(classes, classIdx,
                        [](const TNVDNNClass& dnnClass) { return std::to_string(dnnClass.dnnId); });
}

std::string TNVMark::classNameText(const Classes& classes, const std::vector<int>& classIdx) {
  return joinClassTexts(classes, classIdx,
                        [](const TNVDNNClass& dnnClass) { return dnnClass.name; });
}

void TNVMark::drawFrame(cv::Mat& view, cv::Size imageSize, const TNVTypeMarkStyleSet& style,
                        const Classes& classes) const {
  const MarkDrawStyle pen = resolveDrawStyle(style, classes);
  if (style.drawFilled) drawFilling(view, pen.colour);
  if (selected) drawSelectionFrame(view, imageSize, pen.colour);
  if (poiVisible) drawPOIs(view, pen);
}

std::string TNVMark::classLabel(const TNVTypeDrawInfo& info, const Classes& classes) const {
  if (info.value == TNVTypeDrawInfo::kClassId) return classIdText(classes, classIdx);
  if (info.value == TNVTypeDrawInfo::kClassName) return classNameText(classes, classIdx);
  return {};
}

std::string TNVMark::lengthLabel(const TNVTypeDrawInfo& info, const MarkLength& length) {
  switch (info.value) {
    case TNVTypeDrawInfo::kPixel:
      return std::to_string(length.imagePixels);
    case TNVTypeDrawInfo::kPixelRelative:
      return std::to_string(length.viewPixels);
    case TNVTypeDrawInfo::kRelative:
      return tnv::formatGeneral(length.relative, 2);
    default:
      return {};
  }
}

void TNVMark::drawDashedEdges(cv::Mat& view, const Points& points, const MarkDrawStyle& pen,
                              bool closed) {
  TNVContour::drawDashedPolyline(view, points, pen.colour, TNVContour::kDashOn,
                                 TNVContour::kDashOff, pen.thickness, closed);
}

void TNVMark::drawLineToCursor(cv::Mat& view, cv::Point2d from, const MarkDrawStyle& pen) const {
  if (!(designPoint.x > 0)) return;
  TNVContour::drawDashedPolyline(view, {from, tnv::toPixels(designPoint, view.size())}, pen.colour,
                                 kDotOn, kDotOff, pen.thickness, false);
}

void TNVMark::drawRing(cv::Mat& view, cv::Point2d position, const MarkDrawStyle& pen,
                       int lineType) {
  TNVContour::drawCircle(view, TNVContour::rounded(position), kDotRadius, pen.colour, pen.thickness,
                         lineType);
}

void TNVMark::drawDot(cv::Mat& view, cv::Point2d position, const cv::Scalar& colour) {
  TNVContour::drawCircle(view, TNVContour::rounded(position), kDotRadius, colour, cv::FILLED);
}

int TNVMark::poiCountAlong(double pathLength, cv::Size imageSize) const {
  if (poiSize.x == 0.0 || poiSize.y == 0.0) return 0;
  const double pitch = std::min(imageSize.height * poiSize.y, imageSize.width * poiSize.x);
  return tnv::roundHalfAwayToInt(pathLength / pitch);
}

double TNVMark::pixelsFromCentre(cv::Point2d point, cv::Size imageSize) const {
  return TNVContour::distance(tnv::toPixels(center, imageSize), tnv::toPixels(point, imageSize));
}

TNVMark::Points TNVMark::resizedPoints(const Points& points, cv::Point2d newCentre,
                                       cv::Point2d newSize, cv::Size imageSize) const {
  const cv::Point2d size = getRelSize(imageSize);
  const cv::Point2d scale(newSize.x / size.x, newSize.y / size.y);
  Points resized;
  resized.reserve(points.size());
  for (const cv::Point2d& point : points)
    resized.push_back(tnv::resizedAbout(center, point, scale, newCentre));
  return resized;
}

bool TNVMark::isOverOutline(const Points& outline, double margin, cv::Point2d point,
                            cv::Size imageSize, double* distance) const {
  if (!tnv::isOverOutline(outline, margin, tnv::toPixels(point, imageSize))) return false;
  if (distance != nullptr) *distance = pixelsFromCentre(point, imageSize);
  return true;
}

void TNVMark::drawPathLabel(cv::Mat& view, cv::Size imageSize, const TNVTypeDrawInfo& info,
                            const Classes& classes, const Points& path,
                            const cv::Scalar& colour) const {
  const auto pixelLength = [&](cv::Size size) {
    return tnv::truncateToInt(TNVContour::pathLength(tnv::toPixels(path, size)));
  };
  const MarkLength length{pixelLength(imageSize), pixelLength(view.size()),
                          TNVContour::pathLength(path)};
  drawLabel(view, classLabel(info, classes) + lengthLabel(info, length),
            TNVContour::rounded(tnv::toPixels(center, view.size())), colour);
}

void TNVMark::drawLabel(cv::Mat& view, const std::string& label, cv::Point bottomLeft,
                        const cv::Scalar& colour) {
  cv::putText(view, label, bottomLeft, cv::FONT_HERSHEY_COMPLEX, 0.4, colour, 1, cv::LINE_AA,
              false);
}

void TNVMark::drawFilling(cv::Mat& view, const cv::Scalar& colour) const {
  std::vector<cv::Point> contour = TNVContour::roundedContour(getContour(view.size()));
  const cv::Rect box = cv::boundingRect(contour) & cv::Rect({}, view.size());
  if (box.empty()) return;
  for (cv::Point& point : contour)
    point -= box.tl();
  cv::Mat mask(box.size(), CV_8UC1, cv::Scalar(0));
  TNVContour::fillContourMask(mask, contour, cv::Scalar(255));
  tnv::blend(view, box, mask, toPixel(colour));
}

void TNVMark::drawSelectionFrame(cv::Mat& view, cv::Size imageSize,
                                 const cv::Scalar& colour) const {
  const cv::Point2d size = getRelSize(imageSize);
  const double left = (center.x - 0.5 * size.x) * view.cols;
  const double top = (center.y - 0.5 * size.y) * view.rows;
  std::vector<cv::Point> corners;
  for (const cv::Point2d& corner :
       TNVContour::rectCorners(left, top, size.x * view.cols, size.y * view.rows)) {
    corners.emplace_back(tnv::truncateToInt(corner.x), tnv::truncateToInt(corner.y));
  }
  const cv::Vec3b drawn = toPixel(colour);
  int counter = 0;
  for (std::size_t i = 0; i < corners.size(); ++i) {
    // The iterator keeps to the pixels of the view.
    cv::LineIterator pixel(view, corners[i], corners[(i + 1) % corners.size()]);
    for (int n = 0; n < pixel.count; ++n, ++pixel) {
      if (counter >= 0) view.at<cv::Vec3b>(pixel.pos()) = drawn;
      if (++counter >= kFrameOn) counter = -kFrameOff;
    }
  }
}

void TNVMark::drawPOIs(cv::Mat& view, const MarkDrawStyle& pen) const {
  for (const cv::Point2d& poi : pois) {
    TNVContour::drawRectangle(view, roundedBox(poi, poiSize, view.size()), pen.colour,
                              pen.thickness);
  }
}
