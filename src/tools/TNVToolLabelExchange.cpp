#include "tools/TNVToolLabelExchange.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string_view>
#include <system_error>
#include <tuple>
#include <unordered_map>

#include "foundation/Files.h"
#include "foundation/Log.h"
#include "foundation/PictureHead.h"
#include "foundation/Platform.h"
#include "foundation/Utf8.h"
#include "generation/RunGuard.h"
#include "marks/TNVMarkPolyLine.h"
#include "marks/TNVMarkRect.h"
#include "project/TNVDNNClass.h"
#include "project/TNVTrainSet.h"
#include "tools/ExportPlace.h"
#include "tools/LabelFiles.h"
#include "tools/LabelFormats.h"

namespace fs = std::filesystem;

namespace {

using TrainSets = TNVToolLabelExchange::TrainSets;
using Classes = TNVToolLabelExchange::Classes;

/// Marks whose numbers differ by no more, relative to the picture, are the same: far below a pixel,
/// and above what writing with six digits loses.
constexpr double kSamePlace = 1e-6;

constexpr std::size_t kFewestCorners = 3;

constexpr auto kUnreadablePicture = "picture cannot be read";

void logFrom(std::string_view operation, const std::string& text) {
  tnv::logLine("TNVToolLabelExchange::" + std::string(operation) + ": " + text);
}

/// False if it was stopped.
bool loadAll(const TrainSets& trainSets, const tnv::GoOn& goOn) {
  for (TNVTrainSet* trainSet : trainSets) {
    if (!goOn()) return false;
    if (!trainSet->dataLoaded) trainSet->load();
  }
  return true;
}

bool isClose(cv::Point2d a, cv::Point2d b) {
  return std::abs(a.x - b.x) <= kSamePlace && std::abs(a.y - b.y) <= kSamePlace;
}

bool isClosedOutline(const TNVMarkPolyLine* line) {
  return line && line->closed && line->polyPoints.size() >= kFewestCorners;
}

cv::Point2d centreOf(const cv::Rect2d& box) {
  return {box.x + box.width / 2, box.y + box.height / 2};
}

bool isAtPlace(const TNVMark& mark, const tnv::Label& label) {
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

std::unique_ptr<TNVMark> markFor(const tnv::Label& label, const TNVDNNClass& dnnClass) {
  std::unique_ptr<TNVMark> mark;
  if (label.outline.empty()) {
    mark = std::make_unique<TNVMarkRect>(label.box.tl(), label.box.br(), false);
  } else {
    mark = std::make_unique<TNVMarkPolyLine>(label.outline, true);
  }
  mark->classIdx = {dnnClass.uniqueIdx};
  return mark;
}

/// Centre and size of a box; the corners of the box around an outline.
using Place = std::array<double, 4>;

Place placeOfBox(cv::Point2d centre, cv::Point2d size) {
  return {centre.x, centre.y, size.x, size.y};
}

Place placeOfOutline(const std::vector<cv::Point2d>& corners) {
  const cv::Rect2d box = tnv::boxOf(corners);
  return {box.x, box.y, box.br().x, box.br().y};
}

bool isFinite(const Place& place) {
  return std::all_of(place.begin(), place.end(),
                     [](double number) { return std::isfinite(number); });
}

/// Where marks of one class and kind are near each other. The numbers are whole.
struct Cell {
  Place numbers{};
  int classIdx = 0;
  bool isOutline = false;

  bool operator==(const Cell&) const = default;
};

struct CellHash {
  std::size_t operator()(const Cell& cell) const {
    constexpr std::size_t prime = 1099511628211U;
    std::size_t hash = static_cast<std::size_t>(cell.classIdx) * 2 + (cell.isOutline ? 1 : 0);
    for (const double number : cell.numbers)
      hash = hash * prime ^ std::hash<double>()(number);
    return hash;
  }
};

/// The side of a cell, relative to the picture: few marks that differ share one, and most places
/// are further from its edges than marks that are the same may be from each other.
constexpr double kCellSide = 1e-5;

/// `kSamePlace`, with room for what calculating does to the last digits.
constexpr double kReach = 2 * kSamePlace;

double cellNumber(double number) {
  return std::floor(number / kCellSide);
}

/// The marks of a record that labels can equal, by where they are, so that a crowd of labels is not
/// compared with a crowd of marks.
class MarkIndex {
 public:
  explicit MarkIndex(const TNVTrainSet& trainSet) {
    for (const TNVMark* mark : trainSet.markPointers())
      add(*mark);
  }

  void add(const TNVMark& mark) {
    if (const auto* line = dynamic_cast<const TNVMarkPolyLine*>(&mark)) {
      if (isClosedOutline(line)) add(mark, placeOfOutline(line->polyPoints), true);
    } else if (const auto* box = dynamic_cast<const TNVMarkRect*>(&mark)) {
      add(mark, placeOfBox(box->center, box->size), false);
    }
  }

  bool holds(const tnv::Label& label, const TNVDNNClass& dnnClass) const {
    const bool isOutline = !label.outline.empty();
    const cv::Point2d size(label.box.width, label.box.height);
    const Place place =
        isOutline ? placeOfOutline(label.outline) : placeOfBox(centreOf(label.box), size);
    constexpr unsigned choices = 1U << std::tuple_size_v<Place>;
    for (unsigned choice = 0; choice < choices; ++choice) {
      const auto cell = neighbour(place, choice);
      if (cell && cellHolds({*cell, dnnClass.uniqueIdx, isOutline}, label)) return true;
    }
    return false;
  }

 private:
  void add(const TNVMark& mark, Place place, bool isOutline) {
    // What is not a number equals nothing.
    if (!isFinite(place)) return;
    std::transform(place.begin(), place.end(), place.begin(), cellNumber);
    for (const int classIdx : mark.classIdx)
      byCell[{place, classIdx, isOutline}].push_back(&mark);
  }

  /// One of the cells that what equals the place can lie in: each bit of `choice` takes the upper
  /// end of one number's reach. Nothing if both ends are the same, and the lower was taken already.
  static std::optional<Place> neighbour(const Place& place, unsigned choice) {
    Place cell{};
    for (std::size_t i = 0; i < place.size(); ++i) {
      const double lower = cellNumber(place[i] - kReach);
      const double upper = cellNumber(place[i] + kReach);
      const bool isUpper = (choice >> i & 1U) != 0;
      if (isUpper && lower == upper) return std::nullopt;
      cell[i] = isUpper ? upper : lower;
    }
    return cell;
  }

  bool cellHolds(const Cell& cell, const tnv::Label& label) const {
    const auto marks = byCell.find(cell);
    return marks != byCell.end() &&
           std::any_of(marks->second.begin(), marks->second.end(),
                       [&](const TNVMark* mark) { return isAtPlace(*mark, label); });
  }

  std::unordered_map<Cell, std::vector<const TNVMark*>, CellHash> byCell;
};

/// Records by the paths of their pictures. Of several records of one picture the first counts.
std::unordered_map<std::string, TNVTrainSet*> byPicture(const TrainSets& trainSets) {
  std::unordered_map<std::string, TNVTrainSet*> records;
  for (TNVTrainSet* trainSet : trainSets) {
    if (!trainSet->dataLoaded) continue;
    records.try_emplace(tnv::absolutePicturePath(trainSet->imagePath), trainSet);
    records.try_emplace(trainSet->imagePathAbs, trainSet);
  }
  return records;
}

/// The class of each name of the set; null where there is none.
Classes classesByName(const tnv::LabelSet& set, const Classes& classes) {
  std::unordered_map<std::string_view, TNVDNNClass*> named;
  for (TNVDNNClass* dnnClass : classes)
    named.try_emplace(dnnClass->name, dnnClass);
  Classes found;
  for (const std::string& name : set.classNames) {
    const auto match = named.find(name);
    found.push_back(match == named.end() ? nullptr : match->second);
  }
  return found;
}

/// Adds the labels of one picture to its record; `reject` is told of those that are not added.
template <class Reject>
int addMarksTo(TNVTrainSet& trainSet, const tnv::LabelledPicture& picture, const Classes& classes,
               const Reject& reject) {
  MarkIndex present(trainSet);
  int added = 0;
  for (const tnv::Label& label : picture.labels) {
    const TNVDNNClass* dnnClass = classes[label.classPlace];
    if (!dnnClass) {
      reject(label, "class is not in the project");
    } else if (present.holds(label, *dnnClass)) {
      reject(label, "already marked");
    } else {
      present.add(*trainSet.addMark(*markFor(label, *dnnClass)));
      ++added;
    }
  }
  if (added > 0) trainSet.changed = true;
  return added;
}

/// The classes in the order of their numbers; empty, with a log line, if they cannot go out so.
Classes classesByNumber(Classes classes) {
  std::stable_sort(classes.begin(), classes.end(),
                   [](const auto* a, const auto* b) { return a->dnnId < b->dnnId; });
  for (std::size_t i = 0; i < classes.size(); ++i) {
    if (classes[i]->dnnId != static_cast<int>(i)) {
      logFrom("readMarks", "The numbers of the classes do not run from 0 without gaps!");
      return {};
    }
    if (!tnv::isPlainClassName(classes[i]->name)) {
      logFrom("readMarks", "The name '" + classes[i]->name +
                               "' is empty, has blanks at its ends or control characters!");
      return {};
    }
  }
  if (classes.empty()) logFrom("readMarks", "There are no classes!");
  return classes;
}

/// Takes marks into a set of labels.
class MarkReader {
 public:
  MarkReader(tnv::LabelSet& target, const Classes& classes) : set(target) {
    for (std::size_t i = 0; i < classes.size(); ++i) {
      set.classNames.push_back(classes[i]->name);
      set.classNumbers.push_back(static_cast<long long>(i));
      places.try_emplace(classes[i]->uniqueIdx, static_cast<long long>(i));
    }
  }

  void add(const TNVTrainSet& trainSet) {
    tnv::LabelledPicture picture;
    picture.path = tnv::absolutePicturePath(trainSet.imagePath);
    picture.labelFile = trainSet.dataPath.empty() ? picture.path : trainSet.dataPath;
    picture.size = knownSize(trainSet);
    std::size_t number = 0;
    for (const TNVMark* mark : trainSet.markPointers())
      addMark(picture, *mark, ++number);
    set.pictures.push_back(std::move(picture));
  }

 private:
  static cv::Size knownSize(const TNVTrainSet& trainSet) {
    if (trainSet.imageWidth > 0) return {trainSet.imageWidth, trainSet.imageHeight};
    return trainSet.hasImageCache() ? trainSet.imageCacheSize : cv::Size();
  }

  void addMark(tnv::LabelledPicture& picture, const TNVMark& mark, std::size_t number) {
    tnv::FoundLabel label;
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
      if (picture.labels.size() > before) tnv::cutAtEdges(picture.labels.back());
    }
  }

  /// False if the place depends on the size of a picture that cannot be read.
  static bool fillPlace(tnv::FoundLabel& label, tnv::LabelledPicture& picture,
                        const TNVMark& mark) {
    if (const auto* line = dynamic_cast<const TNVMarkPolyLine*>(&mark); isClosedOutline(line)) {
      label.outline = line->polyPoints;
      return true;
    }
    if (!dynamic_cast<const TNVMarkRect*>(&mark) && picture.size.empty())
      picture.size = tnv::pictureSize(picture.path);
    if (!dynamic_cast<const TNVMarkRect*>(&mark) && picture.size.empty()) return false;
    const cv::Point2d size = mark.getRelSize(picture.size);
    label.box = {mark.center.x - size.x / 2, mark.center.y - size.y / 2, size.x, size.y};
    return true;
  }

  tnv::LabelSet& set;
  std::unordered_map<int, long long> places;
};

bool canBeRead(const std::string& file) {
  std::error_code error;
  return fs::is_regular_file(file, error) && std::ifstream(file).good();
}

tnv::LabelSet without(const tnv::LabelSet& set, const std::set<std::size_t>& leftOut) {
  tnv::LabelSet rest;
  rest.classNames = set.classNames;
  rest.classNumbers = set.classNumbers;
  for (std::size_t i = 0; i < set.pictures.size(); ++i) {
    if (!leftOut.contains(i)) rest.pictures.push_back(set.pictures[i]);
  }
  return rest;
}

std::string placeText(const tnv::LabelRejection& rejection) {
  const std::string line = rejection.line == 0 ? "" : ":" + std::to_string(rejection.line);
  return rejection.file + line + ": " + rejection.reason;
}

}  // namespace

std::vector<std::string> TNVToolLabelExchange::getAvailableFormats() {
  std::vector<std::string> names;
  for (const tnv::LabelFormat& each : tnv::labelFormats())
    names.emplace_back(each.name);
  std::sort(names.begin(), names.end());
  return names;
}

bool TNVToolLabelExchange::setFormat(const std::string& name) {
  if (!name.empty() && !tnv::findLabelFormat(name)) {
    logFrom("setFormat", "Unknown format '" + name + "'!");
    return false;
  }
  format = name;
  return true;
}

void TNVToolLabelExchange::clear() {
  set = {};
  readFormat.clear();
  rejectedOnWayOut = {};
  leftOut.clear();
}

/// While it lives, an operation is under way.
class TNVToolLabelExchange::Run {
 public:
  explicit Run(TNVToolLabelExchange& tool) : exchange(tool) {
    exchange.stopRequested = false;
    exchange.stopped = false;
  }
  ~Run() { exchange.stopped = true; }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

 private:
  TNVToolLabelExchange& exchange;
};

tnv::GoOn TNVToolLabelExchange::untilStopped() {
  return [this] {
    if (auto* const update = onUpdate.load()) update();
    return !stopRequested;
  };
}

bool TNVToolLabelExchange::wasStopped(std::string_view operation) const {
  if (stopRequested) logFrom(operation, "Stopped!");
  return stopRequested;
}

const tnv::LabelFormat* TNVToolLabelExchange::formatOf(const std::string& path) const {
  if (!format.empty()) return tnv::findLabelFormat(format);
  const auto found = tnv::recogniseLabelFormats(path);
  if (found.size() == 1) return found.front();
  if (found.empty()) {
    logFrom("read", "No labels of a known format at '" + path + "'!");
    return nullptr;
  }
  std::string names;
  for (const tnv::LabelFormat* each : found)
    names += (names.empty() ? "" : ", ") + std::string(each->name);
  logFrom("read", "There are labels of several formats at '" + path + "', choose one of: " + names);
  return nullptr;
}

bool TNVToolLabelExchange::read(const std::string& path) {
  const Run run(*this);
  clear();
  std::error_code error;
  if (!fs::exists(path, error)) {
    logFrom("read", error ? "'" + path + "' cannot be read: " + error.message()
                          : "There is nothing at '" + path + "'!");
    return false;
  }
  if (const std::string place = tnv::exportOf(path); tnv::wasInterrupted(place)) {
    logFrom("read",
            "An export to '" + place + "' was interrupted, export there again before reading!");
    return false;
  }
  const tnv::LabelFormat* chosen = formatOf(path);
  if (!chosen) return false;
  tnv::LabelReading manner = reading;
  manner.goOn = untilStopped();
  auto found = chosen->read(path, manner);
  if (wasStopped("read") || !found) return false;
  set = std::move(*found);
  readFormat = chosen->name;
  return true;
}

bool TNVToolLabelExchange::readMarks(const TrainSets& trainSets, const Classes& classes) {
  const Run run(*this);
  clear();
  const Classes ordered = classesByNumber(classes);
  if (ordered.empty()) return false;
  const tnv::GoOn goOn = untilStopped();
  loadAll(trainSets, goOn);
  MarkReader reader(set, ordered);
  for (const TNVTrainSet* trainSet : trainSets) {
    if (!goOn()) break;
    if (trainSet->dataLoaded) {
      reader.add(*trainSet);
    } else {
      set.reject(trainSet->dataPath, 0, "file cannot be read");
    }
  }
  if (!wasStopped("readMarks")) return true;
  clear();
  return false;
}

int TNVToolLabelExchange::addMarks(const TrainSets& trainSets, const Classes& classes) {
  const Run run(*this);
  rejectedOnWayOut = {};
  const tnv::GoOn goOn = untilStopped();
  bool goesOn = loadAll(trainSets, goOn);
  const auto records = byPicture(trainSets);
  const Classes classOfPlace = classesByName(set, classes);
  int added = 0;
  for (const tnv::LabelledPicture& picture : set.pictures) {
    const auto reject = [&](const tnv::Label& label, const char* reason) {
      rejectedOnWayOut.add(set.fileOf(label), label.line, reason);
    };
    goesOn = goesOn && goOn();
    const auto record = records.find(picture.path);
    if (goesOn && record != records.end()) {
      added += addMarksTo(*record->second, picture, classOfPlace, reject);
      continue;
    }
    for (const tnv::Label& label : picture.labels)
      reject(label, goesOn ? "picture is not among the train sets" : "stopped");
  }
  wasStopped("addMarks");
  return added;
}

bool TNVToolLabelExchange::canWrite(const std::string& directory) const {
  if (const std::string reason = tnv::whyNoDirectory(directory); !reason.empty()) {
    logFrom("write", reason);
    return false;
  }
  tnv::RunGuard guard{TrainSets()};
  for (const tnv::LabelledPicture& picture : set.pictures) {
    guard.protectExisting(picture.path, "the picture '" + picture.path + "'");
    guard.protectExisting(picture.labelFile, "the file '" + picture.labelFile + "'");
  }
  const std::string reason = guard.whyToKeep(directory);
  if (reason.empty()) return true;
  logFrom("write", "'" + directory + "' is not written to: " + reason);
  return false;
}

std::string TNVToolLabelExchange::whyLeftOut(tnv::LabelledPicture& picture,
                                             const tnv::LabelFormat& chosen) const {
  if (!canBeRead(picture.path)) return kUnreadablePicture;
  const cv::Size size = tnv::pictureSize(picture.path);
  if (size.empty()) return kUnreadablePicture;
  if (picture.size.empty()) picture.size = size;
  const std::string told = writing.copy ? fs::path(picture.path).filename().string() : picture.path;
  return chosen.keepsName(told) ? "" : "name of the picture cannot be written";
}

void TNVToolLabelExchange::leaveOut(const tnv::LabelFormat& chosen, const tnv::GoOn& goOn) {
  for (std::size_t i = 0; i < set.pictures.size() && goOn(); ++i) {
    tnv::LabelledPicture& picture = set.pictures[i];
    const std::string reason = whyLeftOut(picture, chosen);
    if (reason.empty()) continue;
    leftOut.insert(i);
    logFrom("write", "The picture '" + picture.path + "' is left out: " + reason);
    for (const tnv::Label& label : picture.labels)
      rejectedOnWayOut.add(set.fileOf(label), label.line, reason);
  }
}

const tnv::LabelFormat* TNVToolLabelExchange::prepareWriting(const std::string& directory,
                                                             const tnv::GoOn& goOn) {
  rejectedOnWayOut = {};
  leftOut.clear();
  const tnv::LabelFormat* chosen = tnv::findLabelFormat(format);
  if (!chosen) {
    logFrom("write", "No format was set!");
    return nullptr;
  }
  if (!canWrite(directory)) return nullptr;
  const auto other = std::find_if_not(set.classNames.begin(), set.classNames.end(), tnv::isUtf8);
  if (chosen->needsUtf8 && other != set.classNames.end()) {
    logFrom("write", "The class name '" + *other + "' is no UTF-8, which " + format + " needs!");
    return nullptr;
  }
  leaveOut(*chosen, goOn);
  return wasStopped("write") ? nullptr : chosen;
}

bool TNVToolLabelExchange::tryWrite(const std::string& directory) {
  const Run run(*this);
  return prepareWriting(directory, untilStopped()) != nullptr;
}

bool TNVToolLabelExchange::write(const std::string& directory) {
  const Run run(*this);
  tnv::LabelWriting manner = writing;
  manner.goOn = untilStopped();
  const tnv::LabelFormat* chosen = prepareWriting(directory, manner.goOn);
  if (!chosen) return false;
  tnv::ExportPlace place(directory);
  if (!place.prepare()) return false;
  const bool isWhole = leftOut.empty()
                           ? chosen->write(set, place.newExport(), manner)
                           : chosen->write(without(set, leftOut), place.newExport(), manner);
  return !wasStopped("write") && isWhole && place.replace(format);
}

std::vector<std::string> TNVToolLabelExchange::getImagePaths() const {
  std::vector<std::string> paths;
  for (const tnv::LabelledPicture& picture : set.pictures)
    paths.push_back(picture.path);
  return paths;
}

std::vector<std::string> TNVToolLabelExchange::getPicturesLeftOut() const {
  std::vector<std::string> paths;
  for (const std::size_t place : leftOut)
    paths.push_back(set.pictures[place].path);
  return paths;
}

std::map<std::string, int> TNVToolLabelExchange::getReasons() const {
  std::map<std::string, int> reasons;
  for (const auto* rejections : {&set.rejections, &rejectedOnWayOut})
    rejections->count(reasons);
  return reasons;
}

std::vector<std::string> TNVToolLabelExchange::getRejections() const {
  std::vector<std::string> texts;
  for (const auto* rejections : {&set.rejections, &rejectedOnWayOut}) {
    for (const tnv::LabelRejection& rejection : rejections->all())
      texts.push_back(placeText(rejection));
  }
  return texts;
}
