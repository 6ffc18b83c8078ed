#include "project/TNVTrainSet.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "foundation/FileReplacements.h"
#include "foundation/Files.h"
#include "foundation/Log.h"
#include "foundation/TNVDirectory.h"
#include "foundation/XmlStorage.h"
#include "marks/TNVMarkCircle.h"
#include "marks/TNVMarkEllipse.h"
#include "marks/TNVMarkImage.h"
#include "marks/TNVMarkLine.h"
#include "marks/TNVMarkPoint.h"
#include "marks/TNVMarkPolyLine.h"
#include "marks/TNVMarkRect.h"

namespace {

using MarkPointer = std::unique_ptr<TNVMark>;

struct ReadableKind {
  std::string_view type;  ///< persisted
  MarkPointer (*read)(const cv::FileNode& node);
};

template <class Kind>
MarkPointer readKind(const cv::FileNode& node) {
  return std::make_unique<Kind>(node);
}

/// The kinds that come back from a file.
constexpr ReadableKind kReadableKinds[] = {
    {"Rect", readKind<TNVMarkRect>},       {"Point", readKind<TNVMarkPoint>},
    {"Circle", readKind<TNVMarkCircle>},   {"Image", readKind<TNVMarkImage>},
    {"Line", readKind<TNVMarkLine>},       {"PolyLine", readKind<TNVMarkPolyLine>},
    {"Ellipse", readKind<TNVMarkEllipse>},
};

using CopyKind = MarkPointer (*)(const TNVMark& source);

template <class Kind>
MarkPointer copyKind(const TNVMark& source) {
  const auto* mark = dynamic_cast<const Kind*>(&source);
  if (!mark) return nullptr;
  auto copied = std::make_unique<Kind>(*mark);
  // Only a rectangle keeps the name of the form that it was designed in.
  if (!std::is_same_v<Kind, TNVMarkRect>) copied->type = copied->getTypeName(false);
  return copied;
}

/// The kinds that a record adopts, tried in this order. A whole-image mark is a rectangle too and
/// is adopted as one.
constexpr CopyKind kAdoptedKinds[] = {
    copyKind<TNVMarkRect>, copyKind<TNVMarkPoint>,    copyKind<TNVMarkCircle>,
    copyKind<TNVMarkLine>, copyKind<TNVMarkPolyLine>, copyKind<TNVMarkEllipse>,
};

MarkPointer readMark(const cv::FileNode& node) {
  const std::string type = tnv::readText(tnv::child(node, "Type"), "");
  for (const ReadableKind& kind : kReadableKinds) {
    if (kind.type == type) return kind.read(node);
  }
  return nullptr;
}

std::vector<MarkPointer> readMarks(const cv::FileNode& root) {
  const int count = tnv::readInt(tnv::child(root, "MarkCnt"), 0);
  std::vector<MarkPointer> marks;
  for (const auto& [number, node] : tnv::numberedChildren(root, "Mark", count)) {
    if (MarkPointer mark = readMark(node)) marks.push_back(std::move(mark));
  }
  return marks;
}

/// Pictures of more pixels cannot be read, so a larger size is a damaged one.
constexpr double kMostPixels = 1 << 30;

cv::Size readCacheSize(const cv::FileNode& node) {
  const cv::Size size = tnv::readSize(node);
  return double{1.0} * size.width * size.height > kMostPixels ? cv::Size() : size;
}

std::string_view fileName(std::string_view path) {
  return path.substr(path.find_last_of("/\\") + 1);
}

/// Whether the path is absolute and surely holds no component that a normal one lacks.
bool isPlainlyAbsolute(const std::string& path) {
  return path.starts_with('/') && path.find("//") == path.npos && path.find("/.") == path.npos;
}

std::string absolutePath(const std::string& path) {
  // Taking a path to pieces costs more than all else about a record that is added.
  if (isPlainlyAbsolute(path)) return TNVDirectory::normalizePath(path);
  std::error_code error;
  const auto absolute = std::filesystem::absolute(path, error);
  return TNVDirectory::normalizePath(error ? path : absolute.lexically_normal().string());
}

}  // namespace

TNVTrainSet::TNVTrainSet() = default;

TNVTrainSet::TNVTrainSet(const std::string& path, const std::string& basePath)
    : imagePath(path),
      imagePathAbs(basePath.empty() ? absolutePath(path)
                                    : std::string(basePath).append(fileName(path))),
      dataLoaded(true) {}

TNVTrainSet::~TNVTrainSet() = default;

std::string TNVTrainSet::getDataPath(const std::string& directory) {
  if (dataPath.empty()) {
    if (uniqueName.empty()) uniqueName = makeUniqueName(directory, ".xml");
    dataPath = directory + uniqueName + ".xml";
  }
  return dataPath;
}

bool TNVTrainSet::save(const std::string& directory) {
  tnv::FileReplacements files;
  return save(directory, files) && files.commit();
}

bool TNVTrainSet::save(const std::string& directory, tnv::FileReplacements& files) {
  dataPath = getDataPath(directory);
  if (uniqueName.empty()) uniqueName = makeUniqueName();
  if (!dataLoaded) {
    tnv::logLine("TNVTrainSet::save: Cannot save, data not loaded!");
    return true;
  }
  if (!changed) return true;
  cv::FileStorage storage = tnv::newXml();
  writeNodes(storage);
  const auto end = [this](bool isReplaced) {
    if (!isReplaced) {
      tnv::logLine("TNVTrainSet::save: Could not write '" + dataPath + "'!");
    } else if (!current) {
      changed = false;
    }
  };
  const bool written = files.add(dataPath, storage.releaseAndGetString(), end);
  if (!written) end(false);
  return written;
}

void TNVTrainSet::writeNodes(cv::FileStorage& storage) {
  tnv::writeText(storage, "UniqueName", uniqueName);
  tnv::writeText(storage, "ImagePath", imagePath);
  tnv::writeText(storage, "ImagePathAbs", imagePathAbs);
  tnv::writeText(storage, "ImageCachePath", imageCachePath);
  tnv::writeSize(storage, "ImageCacheSize", imageCacheSize);
  tnv::writeText(storage, "Comment", comment);
  storage << "MarkCnt" << static_cast<int>(marks.size());
  storage << "Special" << int{useSpecialTest};
  storage << "Remove" << int{remove};
  storage << "Workflow" << workflow;
  for (std::size_t i = 0; i < marks.size(); ++i) {
    storage << "Mark" + std::to_string(i) << "{";
    marks[i]->write(storage);
    storage << "}";
  }
}

void TNVTrainSet::load() {
  if (dataPath.empty()) {
    tnv::logLine("TNVTrainSet::load: Datapath is empty!");
    return;
  }
  const cv::FileStorage storage = tnv::openXml(dataPath);
  if (!storage.isOpened()) {
    // A record of a file that lost its content must not be written over what may be restored.
    tnv::logLine(TNVDirectory::exists(dataPath) ? "TNVTrainSet::load: File is empty!"
                                                : "TNVTrainSet::load: File does not exist!");
    return;
  }
  try {
    readNodes(storage.root());
  } catch (cv::Exception& error) {
    tnv::nameFile(error, dataPath);
    throw;
  }
}

void TNVTrainSet::readNodes(const cv::FileNode& root) {
  // The marks first: what a damaged one throws must not leave a record that is half read.
  const auto readMarkList = readMarks(root);
  markIdNext = 0;
  uniqueName = tnv::readText(tnv::child(root, "UniqueName"), "");
  imagePath = tnv::readText(tnv::child(root, "ImagePath"), "");
  imagePathAbs = tnv::readText(tnv::child(root, "ImagePathAbs"), "");
  imageCachePath = tnv::readText(tnv::child(root, "ImageCachePath"), "");
  imageCacheSize = readCacheSize(tnv::child(root, "ImageCacheSize"));
  ownsImageCache = liesInCache();
  comment = tnv::readText(tnv::child(root, "Comment"), "");
  useSpecialTest = tnv::readInt(tnv::child(root, "Special"), 0) != 0;
  remove = tnv::readInt(tnv::child(root, "Remove"), 0) != 0;
  workflow = tnv::readInt(tnv::child(root, "Workflow"), 0);
  for (const MarkPointer& mark : readMarkList)
    addMark(*mark);
  changed = false;
  dataLoaded = true;
}

bool TNVTrainSet::relinkPicture(const std::string& from, const std::string& to) {
  const auto path = tnv::movedPath(imagePath, from, to);
  const auto pathAbs = tnv::movedPath(imagePathAbs, from, to);
  if (!path && !pathAbs) return false;
  // One that was told relative to a directory is found by its whole path from now on.
  imagePath = path.value_or(pathAbs.value_or(""));
  imagePathAbs = absolutePath(pathAbs.value_or(imagePath));
  releaseImage();
  changed = true;
  return true;
}

bool TNVTrainSet::relinkRecord(const std::string& from, const std::string& to) {
  const auto path = tnv::movedPath(dataPath, from, to);
  if (path) dataPath = *path;
  try {
    if (!dataLoaded) load();
  } catch (const cv::Exception& error) {
    // A damaged one moves with the others, to be restored where they are.
    tnv::logLine("TNVTrainSet::relinkRecord: " + error.err);
    return path.has_value();
  }
  const auto cachePath = tnv::movedPath(imageCachePath, from, to);
  if (cachePath) {
    imageCachePath = *cachePath;
    ownsImageCache = liesInCache();
    changed = true;
  }
  return path || cachePath;
}

TNVMark* TNVTrainSet::addMark(const TNVMark& source) {
  for (const CopyKind copy : kAdoptedKinds) {
    MarkPointer mark = copy(source);
    if (!mark) continue;
    mark->uniqueId = markIdNext++;
    mark->renewChangeTag();
    marks.push_back(std::move(mark));
    return marks.back().get();
  }
  tnv::logLine("TNVTrainSet::addMark: Mark type not compatible!");
  return nullptr;
}

void TNVTrainSet::removeMark(TNVMark* mark) {
  const auto place = std::find_if(marks.begin(), marks.end(),
                                  [&](const MarkPointer& own) { return own.get() == mark; });
  if (place == marks.end()) {
    tnv::logLine("TNVTrainSet::removeMark: Mark not found!");
    return;
  }
  removedMarks.push_back(std::move(*place));
  marks.erase(place);
}

namespace {

using MarkSet = std::unordered_set<const TNVMark*>;

/// All that is saved of the mark but its classes. Views are not to draw it anew for that.
std::string shapeOf(TNVMark& mark) {
  const int tag = mark.changeTag;
  std::vector<int> classes;
  classes.swap(mark.classIdx);
  cv::FileStorage storage = tnv::newXml();
  mark.write(storage);
  classes.swap(mark.classIdx);
  mark.changeTag = tag;
  return storage.releaseAndGetString();
}

bool areTwins(TNVMark& mark, TNVMark& other) {
  const std::vector<int>& classes = other.classIdx;
  return mark.center == other.center && mark.type == other.type &&
         std::is_permutation(mark.classIdx.begin(), mark.classIdx.end(), classes.begin(),
                             classes.end()) &&
         shapeOf(mark) == shapeOf(other);
}

/// Those of the replaced marks that are the same as one that was not replaced, or as an earlier one
/// of them.
MarkSet twinsAmong(const std::vector<MarkPointer>& marks, const MarkSet& replaced) {
  MarkSet twins;
  // Full comparisons are costly, and few marks share a centre.
  std::unordered_multimap<double, TNVMark*> keptByCentre;
  for (const MarkPointer& mark : marks)
    if (!replaced.contains(mark.get())) keptByCentre.emplace(mark->center.x, mark.get());
  for (const MarkPointer& mark : marks) {
    if (!replaced.contains(mark.get())) continue;
    const auto [first, last] = keptByCentre.equal_range(mark->center.x);
    if (std::any_of(first, last, [&](const auto& kept) { return areTwins(*mark, *kept.second); })) {
      twins.insert(mark.get());
    } else {
      keptByCentre.emplace(mark->center.x, mark.get());
    }
  }
  return twins;
}

}  // namespace

int TNVTrainSet::replaceClass(int from, int to) {
  if (from == to) return 0;
  MarkSet replaced;
  for (const MarkPointer& mark : marks) {
    std::vector<int>& classes = mark->classIdx;
    const auto first = std::find(classes.begin(), classes.end(), from);
    if (first == classes.end()) continue;
    std::replace(first, classes.end(), from, to);
    const auto kept = std::find(classes.begin(), classes.end(), to);
    classes.erase(std::remove(std::next(kept), classes.end(), to), classes.end());
    mark->renewChangeTag();
    changed = true;
    replaced.insert(mark.get());
  }
  if (replaced.empty()) return 0;
  const MarkSet twins = twinsAmong(marks, replaced);
  const auto gone = std::stable_partition(marks.begin(), marks.end(), [&](const MarkPointer& mark) {
    return !twins.contains(mark.get());
  });
  std::move(gone, marks.end(), std::back_inserter(removedMarks));
  marks.erase(gone, marks.end());
  return static_cast<int>(replaced.size());
}

int TNVTrainSet::removeClass(int idx) {
  int count = 0;
  const auto gone = std::stable_partition(marks.begin(), marks.end(), [&](const MarkPointer& mark) {
    if (std::erase(mark->classIdx, idx) == 0) return true;
    mark->renewChangeTag();
    changed = true;
    ++count;
    return !mark->classIdx.empty();
  });
  std::move(gone, marks.end(), std::back_inserter(removedMarks));
  marks.erase(gone, marks.end());
  return count;
}

std::vector<TNVMark*> TNVTrainSet::markPointers() const {
  std::vector<TNVMark*> pointers;
  pointers.reserve(marks.size());
  for (const MarkPointer& mark : marks)
    pointers.push_back(mark.get());
  return pointers;
}

bool TNVTrainSet::setComment(const std::string& newComment) {
  if (newComment.size() > tnv::kLongestXmlText) {
    tnv::logLine("TNVTrainSet::setComment: Comment is too long, " +
                 std::to_string(tnv::kLongestXmlText) + " bytes are the most!");
    return false;
  }
  comment = newComment;
  return true;
}
