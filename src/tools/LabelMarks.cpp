#include "tools/LabelMarks.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <tuple>

#include "foundation/PictureHead.h"
#include "marks/TNVMarkPolyLine.h"
#include "marks/TNVMarkRect.h"
#include "project/TNVDNNClass.h"
#include "project/TNVTrainSet.h"
#include "tools/LabelFiles.h"

namespace tnv {

namespace {

/// Marks whose numbers differ by no more, relative to the picture, are the same: far below a pixel,
/// and above what writing with six digits loses.
constexpr double kSamePlace = 1e-6;

constexpr std::size_t kFewestCorners = 3;

bool isClose(cv::Point2d a, cv::Point2d b) {
  return std::abs(a.x - b.x) <= kSamePlace && std::abs(a.y - b.y) <= kSamePlace;
}

bool isClosedOutline(const TNVMarkPolyLine* line) {
  return line && line->closed && line->polyPoints.size() >= kFewestCorners;
}

cv::Point2d centreOf(const cv::Rect2d& box) {
  return {box.x + box.width / 2, box.y + box.height / 2};
}

bool isAtPlace(const TNVMark& mark, const Label& label) {
  if (label.outline.empty()) {
    const auto* box = dynamic_cast<const TNVMarkRect*>(&mark);
    return box && isClose(box->center, centreOf(label.box)) &&
           isClose(box->size, {label.box.width, label.box.height});
  }
  const auto* line = dynamic_cast<const TNVMarkPolyLine*>(&mark);
  return line && line->closed &&
         std::equal(line->polyPoints.begin(), line->polyPoints.end(), label.outline.begin(),
                    label.outline.end(), isClose);
}

MarkPlace placeOfBox(cv::Point2d centre, cv::Point2d size) {
  return {centre.x, centre.y, size.x, size.y};
}

MarkPlace placeOfOutline(const std::vector<cv::Point2d>& corners) {
  const cv::Rect2d box = boxOf(corners);
  return {box.x, box.y, box.br().x, box.br().y};
}

bool isFinite(const MarkPlace& place) {
  return std::all_of(place.begin(), place.end(),
                     [](double number) { return std::isfinite(number); });
}

/// The side of a cell, relative to the picture: few marks that differ share one, and most places
/// are further from its edges than marks that are the same may be from each other.
constexpr double kCellSide = 1e-5;

/// `kSamePlace`, with room for what calculating does to the last digits.
constexpr double kReach = 2 * kSamePlace;

double cellNumber(double number) {
  return std::floor(number / kCellSide);
}

/// One of the cells that what equals the place can lie in: each bit of `choice` takes the upper
/// end of one number's reach. Nothing if both ends are the same, and the lower was taken already.
std::optional<MarkPlace> neighbour(const MarkPlace& place, unsigned choice) {
  MarkPlace cell{};
  for (std::size_t i = 0; i < place.size(); ++i) {
    const double lower = cellNumber(place[i] - kReach);
    const double upper = cellNumber(place[i] + kReach);
    const bool isUpper = (choice >> i & 1U) != 0;
    if (isUpper && lower == upper) return std::nullopt;
    cell[i] = isUpper ? upper : lower;
  }
  return cell;
}

cv::Size knownSize(const TNVTrainSet& trainSet) {
  if (trainSet.imageWidth > 0) return {trainSet.imageWidth, trainSet.imageHeight};
  return trainSet.hasImageCache() ? trainSet.imageCacheSize : cv::Size();
}

/// False if the place depends on the size of a picture that cannot be read.
bool fillPlace(FoundLabel& label, LabelledPicture& picture, const TNVMark& mark) {
  if (const auto* line = dynamic_cast<const TNVMarkPolyLine*>(&mark); isClosedOutline(line)) {
    label.outline = line->polyPoints;
    return true;
  }
  if (!dynamic_cast<const TNVMarkRect*>(&mark) && picture.size.empty())
    picture.size = pictureSize(picture.path);
  if (!dynamic_cast<const TNVMarkRect*>(&mark) && picture.size.empty()) return false;
  const cv::Point2d size = mark.getRelSize(picture.size);
  label.box = {mark.center.x - size.x / 2, mark.center.y - size.y / 2, size.x, size.y};
  return true;
}

}  // namespace

std::unique_ptr<TNVMark> markFor(const Label& label, const TNVDNNClass& dnnClass) {
  std::unique_ptr<TNVMark> mark;
  if (label.outline.empty()) {
    mark = std::make_unique<TNVMarkRect>(label.box.tl(), label.box.br(), false);
  } else {
    mark = std::make_unique<TNVMarkPolyLine>(label.outline, true);
  }
  mark->classIdx = {dnnClass.uniqueIdx};
  return mark;
}

std::size_t MarkIndex::CellHash::operator()(const Cell& cell) const {
  constexpr std::size_t prime = 1099511628211U;
  std::size_t hash = static_cast<std::size_t>(cell.classIdx) * 2 + (cell.isOutline ? 1 : 0);
  for (const double number : cell.numbers)
    hash = hash * prime ^ std::hash<double>()(number);
  return hash;
}

MarkIndex::MarkIndex(const TNVTrainSet& trainSet) {
  for (const TNVMark* mark : trainSet.markPointers())
    add(*mark);
}

void MarkIndex::add(const TNVMark& mark) {
  if (const auto* line = dynamic_cast<const TNVMarkPolyLine*>(&mark)) {
    if (isClosedOutline(line)) add(mark, placeOfOutline(line->polyPoints), true);
  } else if (const auto* box = dynamic_cast<const TNVMarkRect*>(&mark)) {
    add(mark, placeOfBox(box->center, box->size), false);
  }
}

bool MarkIndex::holds(const Label& label, const TNVDNNClass& dnnClass) const {
  const bool isOutline = !label.outline.empty();
  const cv::Point2d size(label.box.width, label.box.height);
  const MarkPlace place =
      isOutline ? placeOfOutline(label.outline) : placeOfBox(centreOf(label.box), size);
  constexpr unsigned choices = 1U << std::tuple_size_v<MarkPlace>;
  for (unsigned choice = 0; choice < choices; ++choice) {
    const auto cell = neighbour(place, choice);
    if (cell && cellHolds({*cell, dnnClass.uniqueIdx, isOutline}, label)) return true;
  }
  return false;
}

void MarkIndex::add(const TNVMark& mark, MarkPlace place, bool isOutline) {
  // What is not a number equals nothing.
  if (!isFinite(place)) return;
  std::transform(place.begin(), place.end(), place.begin(), cellNumber);
  for (const int classIdx : mark.classIdx)
    byCell[{place, classIdx, isOutline}].push_back(&mark);
}

bool MarkIndex::cellHolds(const Cell& cell, const Label& label) const {
  const auto marks = byCell.find(cell);
  return marks != byCell.end() &&
         std::any_of(marks->second.begin(), marks->second.end(),
                     [&](const TNVMark* mark) { return isAtPlace(*mark, label); });
}

MarkReader::MarkReader(LabelSet& target, const std::vector<TNVDNNClass*>& classes) : set(target) {
  for (std::size_t i = 0; i < classes.size(); ++i) {
    set.classNames.push_back(classes[i]->name);
    set.classNumbers.push_back(static_cast<long long>(i));
    places.try_emplace(classes[i]->uniqueIdx, static_cast<long long>(i));
  }
}

void MarkReader::add(const TNVTrainSet& trainSet) {
  LabelledPicture picture;
  picture.path = absolutePicturePath(trainSet.imagePath);
  picture.labelFile = trainSet.dataPath.empty() ? picture.path : trainSet.dataPath;
  picture.size = knownSize(trainSet);
  std::size_t number = 0;
  for (const TNVMark* mark : trainSet.markPointers())
    addMark(picture, *mark, ++number);
  set.pictures.push_back(std::move(picture));
}

void MarkReader::addMark(LabelledPicture& picture, const TNVMark& mark, std::size_t number) {
  FoundLabel label;
  label.line = number;
  if (mark.classIdx.empty()) return set.reject(picture.labelFile, number, "mark without a class");
  if (!fillPlace(label, picture, mark)) {
    for (std::size_t i = 0; i < mark.classIdx.size(); ++i)
      set.reject(picture.labelFile, number, "size of the picture is unknown");
    return;
  }
  for (const int idx : mark.classIdx) {
    const auto place = places.find(idx);
    label.classNumber = place == places.end() ? -1 : place->second;
    const std::size_t before = picture.labels.size();
    set.take(picture, label, true);
    if (picture.labels.size() > before) cutAtEdges(picture.labels.back());
  }
}

}  // namespace tnv
