#include "tools/TNVToolLabelExchange.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <unordered_map>

#include "foundation/Log.h"
#include "foundation/PictureHead.h"
#include "foundation/Utf8.h"
#include "generation/RunGuard.h"
#include "marks/TNVMark.h"
#include "project/TNVDNNClass.h"
#include "project/TNVTrainSet.h"
#include "tools/ExportPlace.h"
#include "tools/LabelFiles.h"
#include "tools/LabelFormats.h"
#include "tools/LabelMarks.h"

namespace fs = std::filesystem;

namespace {

using TrainSets = TNVToolLabelExchange::TrainSets;
using Classes = TNVToolLabelExchange::Classes;

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

/// False if its picture is unknown.
bool isRead(TNVTrainSet& trainSet) {
  try {
    if (!trainSet.dataLoaded) trainSet.load();
  } catch (const cv::Exception&) {
    return false;
  }
  return trainSet.dataLoaded;
}

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
  tnv::MarkIndex present(trainSet);
  int added = 0;
  for (const tnv::Label& label : picture.labels) {
    const TNVDNNClass* dnnClass = classes[label.classPlace];
    if (!dnnClass) {
      reject(label, "class is not in the project");
    } else if (present.holds(label, *dnnClass)) {
      reject(label, "already marked");
    } else {
      present.add(*trainSet.addMark(*tnv::markFor(label, *dnnClass)));
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
  tnv::MarkReader reader(set, ordered);
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

void TNVToolLabelExchange::protect(const TrainSets& trainSets) {
  protectedPaths.clear();
  unreadRecord.clear();
  for (TNVTrainSet* trainSet : trainSets) {
    if (!isRead(*trainSet)) unreadRecord = trainSet->dataPath;
    protectedPaths.insert(protectedPaths.end(),
                          {trainSet->dataPath, trainSet->imagePath, trainSet->imagePathAbs});
  }
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
  for (const std::string& path : protectedPaths)
    guard.protectExisting(path, "'" + path + "'");
  std::string reason = guard.whyToKeep(directory);
  if (reason.empty() && !unreadRecord.empty() && tnv::holdsPictures(directory))
    reason = "'" + unreadRecord + "' cannot be read, and its picture may lie there";
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
