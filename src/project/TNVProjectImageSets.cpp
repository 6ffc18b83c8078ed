// The image sets of a project: how pictures come into them and go out, and their lists on disk.

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "foundation/FileReplacements.h"
#include "foundation/Files.h"
#include "foundation/FirstError.h"
#include "foundation/Log.h"
#include "foundation/TNVDirectory.h"
#include "foundation/TNVSettings.h"
#include "foundation/XmlStorage.h"
#include "generation/TNVGenerationDarknet.h"
#include "project/TNVProject.h"
#include "project/TNVTrainSet.h"
#include "tools/TNVHandlerValidation.h"

namespace {

/// Marks the directory of an image set; persisted.
constexpr std::string_view kSetPrefix = "is_";

/// The node of an entry in a list; persisted.
const std::string kDataPathNode = "DataPath";

/// The directory that all pictures of one call are taken to lie in.
std::string commonDirectory(const std::string& firstImage) {
  return TNVFileInfo(TNVTrainSet(firstImage, "").imagePathAbs).directory;
}

/// The least that an entry takes in a list file. A count that asks for more entries than the file
/// has room for is a damaged one.
constexpr std::uintmax_t kShortestEntry =
    std::string_view("<id0><DataPath></DataPath></id0>").size();

/// A list that was edited by hand may count a few more.
constexpr std::uintmax_t kEntriesWithoutRoom = 16;

int plausibleCount(const std::string& list, int count) {
  std::error_code error;
  const auto size = std::filesystem::file_size(list, error);
  const auto most = error ? 0 : size / kShortestEntry + kEntriesWithoutRoom;
  if (count <= 0 || static_cast<std::uintmax_t>(count) <= most) return count;
  tnv::logLine("TNVProject::_readImageFiles: Image set list '" + list +
               "' holds less than it counts!");
  return static_cast<int>(most);
}

/// False, with a log line, if a directory is empty, which would be taken for the root.
bool isMove(const std::string& operation, const std::string& from, const std::string& to) {
  if (!from.empty() && !to.empty()) return true;
  tnv::logLine("TNVProject::" + operation + ": Directory must not be empty!");
  return false;
}

std::vector<std::string> imageSetsOnDisk(const std::string& projectDirectory) {
  std::vector<std::string> sets;
  for (const std::string& directory : TNVDirectory::readDirectories(projectDirectory)) {
    const std::string name = TNVDirectory::getLastDirectoryName(directory);
    if (name.starts_with(kSetPrefix)) sets.push_back(name.substr(kSetPrefix.size()));
  }
  return sets;
}

}  // namespace

std::string TNVProject::_imageSetDirectory(const std::string& set) const {
  return projectDirectory + std::string(kSetPrefix) + set + "/";
}

std::string TNVProject::_imageSetList(const std::string& set) const {
  return projectDirectory + set + ".xml";
}

std::vector<TNVTrainSet*> TNVProject::trainSetPointers() const {
  std::vector<TNVTrainSet*> pointers;
  for (const auto& [set, trainSets] : imageSets) {
    for (const auto& trainSet : trainSets)
      pointers.push_back(trainSet.get());
  }
  return pointers;
}

void TNVProject::_refreshImageLists() {
  imageLists.clear();
  for (const auto& [set, trainSets] : imageSets)
    imageLists.push_back(set);
}

void TNVProject::_handOverTrainSets() {
  hndValidation->trainSets = trainSetPointers();
  if (!generation) return;
  generation->trainSets = trainSetPointers();
  tnv::logLine("Set Trainsets " + std::to_string(generation->trainSets.size()));
}

void TNVProject::_dropTrainSet(std::unique_ptr<TNVTrainSet> trainSet) {
  if (!observer) return;
  trainSet->releaseImage();
  droppedTrainSets.push_back(std::move(trainSet));
}

void TNVProject::_dropAllTrainSets() {
  hndValidation->trainSets.clear();
  if (generation) generation->trainSets.clear();
  for (auto& [set, trainSets] : imageSets) {
    for (auto& trainSet : trainSets)
      _dropTrainSet(std::move(trainSet));
  }
  imageSets.clear();
}

std::vector<std::string> TNVProject::readImagesFromDirectory(const std::string& directory,
                                                             bool recursive) const {
  const std::string path = TNVDirectory::normalizePath(directory);
  if (!TNVDirectory::exists(path)) {
    tnv::logLine("TNVProject::readImagesFromDirectory: Directory '" + path + "' does not exist!");
    return {};
  }
  return TNVDirectory::readPaths(path, imageTypes, recursive);
}

int TNVProject::addImages(const std::vector<std::string>& images, const std::vector<bool>& use,
                          const std::string& set, bool sameDirectory) {
  if (images.size() != use.size()) {
    tnv::logLine("TNVProject::addImages: Size not equal!");
    return 0;
  }
  if (images.empty()) {
    tnv::logLine("TNVProject::addImages: No images to add!");
    return 0;
  }
  if (!tnv::canNameFiles(set)) {
    tnv::logLine(
        "TNVProject::addImages: Image set name must not be empty, a path or longer than 240 "
        "bytes!");
    return 0;
  }
  if (!TNVSettings::survivesInList(set)) {
    tnv::logLine("TNVProject::addImages: Image set name must not hold one of , = { } \"!");
    return 0;
  }
  const std::string basePath = sameDirectory ? commonDirectory(images.front()) : "";
  ImageSet& trainSets = imageSets[set];
  std::unordered_set<std::string_view> present;
  present.reserve(trainSets.size() + images.size());
  for (const auto& trainSet : trainSets)
    present.insert(trainSet->imagePathAbs);
  int added = 0;
  for (std::size_t i = 0; i < images.size(); ++i) {
    if (!use[i]) continue;
    auto trainSet = std::make_unique<TNVTrainSet>(images[i], basePath);
    if (!present.insert(trainSet->imagePathAbs).second) continue;
    trainSets.push_back(std::move(trainSet));
    ++added;
  }
  _refreshImageLists();
  _handOverTrainSets();
  return added;
}

int TNVProject::removeImagesFromImageSet(const std::vector<std::string>& images,
                                         const std::string& set) {
  const auto entry = imageSets.find(set);
  if (entry == imageSets.end()) {
    tnv::logLine("TNVProject::removeImagesFromImageSet: Image set not found!");
    return 0;
  }
  // How many records of each path are to go: of several with one path, the first ones.
  std::unordered_map<std::string_view, int> wanted;
  wanted.reserve(images.size());
  for (const std::string& image : images)
    ++wanted[image];
  ImageSet kept;
  int removed = 0;
  for (auto& trainSet : entry->second) {
    const auto match = wanted.find(trainSet->imagePath);
    if (match != wanted.end() && match->second > 0) {
      --match->second;
      ++removed;
      _dropTrainSet(std::move(trainSet));
    } else {
      kept.push_back(std::move(trainSet));
    }
  }
  entry->second = std::move(kept);
  if (entry->second.empty()) imageSets.erase(entry);
  _refreshImageLists();
  _handOverTrainSets();
  return removed;
}

int TNVProject::relinkPictures(const std::string& from, const std::string& to) {
  if (!isMove("relinkPictures", from, to)) return 0;
  int count = 0;
  for (TNVTrainSet* trainSet : trainSetPointers()) {
    if (!trainSet->dataLoaded) trainSet->load();
    if (trainSet->relinkPicture(from, to)) ++count;
  }
  return count;
}

int TNVProject::relinkTrainSets(const std::string& from, const std::string& to) {
  if (!isMove("relinkTrainSets", from, to)) return 0;
  int count = 0;
  for (TNVTrainSet* trainSet : trainSetPointers())
    if (trainSet->relinkRecord(from, to)) ++count;
  return count;
}

int TNVProject::clearImagesCache() {
  if (_refusePlace("clearImagesCache")) return 0;
  const auto trainSets = trainSetPointers();
  for (TNVTrainSet* trainSet : trainSets)
    trainSet->dropImageCache();
  TNVDirectory::remove(projectDirectory + cacheDirectory);
  return static_cast<int>(trainSets.size());
}

bool TNVProject::_updateImageFiles(bool full) {
  if (!full) return _saveChangedTrainSets();
  bool written = true;
  tnv::FirstError errors;
  for (const std::string& set : _staleImageSets()) {
    errors.attempt([&] { _removeImageSet(set); });
  }
  for (auto& [set, trainSets] : imageSets) {
    errors.attempt([&, &setName = set, &records = trainSets] {
      written = _saveImageSet(setName, records) && written;
    });
  }
  errors.rethrow();
  return written;
}

bool TNVProject::_saveChangedTrainSets() {
  bool written = true;
  tnv::FirstError errors;
  tnv::FileReplacements files;
  for (auto& [set, trainSets] : imageSets) {
    const std::string directory = _imageSetDirectory(set);
    for (auto& trainSet : trainSets) {
      if (!trainSet->changed) continue;
      errors.attempt([&, &record = *trainSet] {
        if (!record.dataLoaded) record.load();
        written = record.save(directory, files) && written;
      });
    }
  }
  written = files.commit() && written;
  errors.rethrow();
  return written;
}

bool TNVProject::_hasImageSetDirectories() const {
  return !imageSetsOnDisk(projectDirectory).empty();
}

std::vector<std::string> TNVProject::_staleImageSets() const {
  std::vector<std::string> sets = imageSetsOnDisk(projectDirectory);
  std::erase_if(sets, [&](const std::string& set) { return imageSets.contains(set); });
  if (setListKnown || sets.empty()) return sets;
  tnv::logLine(
      "TNVProject::_updateImageFiles(): Image sets on disk that the project does not know are "
      "kept!");
  return {};
}

void TNVProject::_removeImageSet(const std::string& set) const {
  TNVDirectory::remove(_imageSetDirectory(set));
  TNVDirectory::remove(_imageSetList(set));
}

bool TNVProject::_saveImageSet(const std::string& set, ImageSet& trainSets) {
  const std::string directory = _imageSetDirectory(set);
  if (!TNVDirectory::exists(directory)) TNVDirectory::createDirectory(directory);
  if (!TNVDirectory::exists(directory)) {
    tnv::logLine("TNVProject::_updateImageFiles(): Could not create image set directory!");
    return true;
  }
  bool written = true;
  tnv::FirstError errors;
  tnv::FileReplacements files;
  cv::FileStorage list = tnv::newXml();
  list << "Count" << static_cast<int>(trainSets.size());
  for (std::size_t i = 0; i < trainSets.size(); ++i) {
    TNVTrainSet& trainSet = *trainSets[i];
    errors.attempt([&] { _updateImageCache(trainSet); });
    list << "id" + std::to_string(i) << "{";
    tnv::writeText(list, kDataPathNode, trainSet.getDataPath(directory));
    list << "}";
    trainSet.changed = true;
    errors.attempt([&] { written = trainSet.save(directory, files) && written; });
  }
  const auto endList = [](bool isReplaced) {
    if (!isReplaced)
      tnv::logLine("TNVProject::_updateImageFiles(): Could not write image set list!");
  };
  // Last, so that the records are in their places when it names them, but for those that failed.
  const bool listWritten = files.add(_imageSetList(set), list.releaseAndGetString(), endList);
  if (!listWritten) endList(false);
  written = files.commit() && listWritten && written;
  errors.rethrow();
  return written;
}

void TNVProject::_updateImageCache(TNVTrainSet& trainSet) {
  if (!cacheImages) {
    if (trainSet.hasImageCache()) trainSet.dropImageCache();
    return;
  }
  if (!trainSet.dataLoaded) trainSet.load();
  if (trainSet.hasImageCache()) return;
  trainSet.addImageCache(projectDirectory + cacheDirectory, cacheImagesMaxSize, cacheImagesQuality);
  trainSet.releaseImage();
}

bool TNVProject::_readImageFiles() {
  const std::vector<std::string> sets = imageLists;
  for (const std::string& set : sets) {
    if (!tnv::canNameFiles(set)) {
      tnv::logLine(
          "TNVProject::_readImageFiles: Image set name must not be empty, a path or longer than "
          "240 bytes!");
    } else if (!TNVDirectory::exists(_imageSetDirectory(set))) {
      tnv::logLine("TNVProject::_readImageFiles: Image set directory not found!");
    } else {
      _readImageSet(set);
    }
  }
  _handOverTrainSets();
  return true;
}

void TNVProject::_readImageSet(const std::string& set) {
  imageSets.try_emplace(set);
  const cv::FileStorage storage = tnv::openXml(_imageSetList(set));
  if (!storage.isOpened() && TNVDirectory::exists(_imageSetList(set))) {
    // Taken for an empty set, the next save would make it one.
    CV_Error(cv::Error::StsParseError, "Empty image set list: " + _imageSetList(set));
  }
  if (!storage.isOpened()) return;
  const cv::FileNode root = storage.root();
  const int counted = tnv::readInt(tnv::child(root, "Count"), 0);
  const int count = plausibleCount(_imageSetList(set), counted);
  const auto entries = tnv::numberedChildren(root, "id", count);
  // Lists are stored in the order of their names, so this is the set just made; in a file that was
  // put out of order by hand the records go to the last set.
  ImageSet& trainSets = imageSets.rbegin()->second;
  trainSets.reserve(trainSets.size() + static_cast<std::size_t>(std::max(count, 0)));
  auto entry = entries.begin();
  for (int i = 0; i < count; ++i) {
    auto trainSet = std::make_unique<TNVTrainSet>();
    if (entry != entries.end() && entry->first == i) {
      trainSet->dataPath = tnv::readText(tnv::child(entry->second, kDataPathNode), "");
      ++entry;
    }
    trainSets.push_back(std::move(trainSet));
  }
}
