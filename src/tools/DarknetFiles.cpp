#include "tools/DarknetFiles.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>

#include "foundation/Files.h"
#include "foundation/Log.h"
#include "tools/DarknetText.h"
#include "tools/ExportPlace.h"
#include "tools/LabelFiles.h"

namespace tnv::darknet {

namespace fs = std::filesystem;

namespace {

/// Where class names are looked for in a directory, in this order, before any file that has the
/// extension of one.
constexpr std::string_view kNamesFiles[] = {"data.yaml", "data.yml",    "obj.data",
                                            "obj.names", "classes.txt", "labels/classes.txt"};
constexpr std::string_view kNamesExtensions[] = {".yaml", ".yml", ".data", ".names"};

/// As the mark of an export calls what is written here.
constexpr std::string_view kExportFormat = "Darknet";

std::string withTextExtension(const std::string& path) {
  return fs::path(path).replace_extension(kTextExtension).string();
}

/// The path with the last directory of that name renamed; empty if there is none.
std::string withDirectory(const std::string& path, std::string_view from, std::string_view to) {
  const std::string whole = "/" + std::string(from) + "/";
  const std::size_t place = path.rfind(whole);
  if (place == path.npos) return {};
  return path.substr(0, place) + "/" + std::string(to) + "/" + path.substr(place + whole.size());
}

/// The pictures in the directory that have the name of the text.
std::vector<std::string> picturesNamedLike(const std::string& text, const std::string& directory) {
  const fs::path stem = fs::path(text).stem();
  std::vector<std::string> found;
  std::error_code error;
  for (auto entry = fs::directory_iterator(directory, error);
       !error && entry != fs::directory_iterator(); entry.increment(error)) {
    const std::string path = withForwardSlashes(entry->path().string());
    if (entry->path().stem() == stem && !isText(path) && looksLikePicture(path))
      found.push_back(path);
  }
  std::sort(found.begin(), found.end());
  return found;
}

/// The pictures of a text's name, beside it or in the tree of pictures.
std::vector<std::string> picturesOfText(const std::string& text) {
  const std::string directory = asDirectory(fs::path(text).parent_path().string());
  auto beside = picturesNamedLike(text, directory);
  const std::string inTree = withDirectory(directory, "labels", "images");
  return beside.empty() && !inTree.empty() ? picturesNamedLike(text, inTree) : beside;
}

/// The file of class names for a text: beside it, or above the tree of texts that it lies in.
std::string namesFileFor(const std::string& text) {
  const std::string directory = asDirectory(fs::path(text).parent_path().string());
  if (const std::string beside = namesFileIn(directory); !beside.empty()) return beside;
  const std::size_t tree = directory.rfind("/" + std::string(kLabelsDirectory));
  return tree == directory.npos ? std::string() : namesFileIn(directory.substr(0, tree + 1));
}

/// False if there is nothing at the place.
bool addSource(DarknetFiles& files, const std::string& place, const std::string& root) {
  if (isFile(place)) {
    files.addList(place, root);
    return true;
  }
  if (!isDirectory(place)) return false;
  const std::string directory = asDirectory(place);
  files.addDirectory(directory);
  if (const auto labels = withDirectory(directory, "images", "labels"); isDirectory(labels))
    files.addDirectory(labels);
  return true;
}

/// The pictures that the description tells of. False if none of the places exists: then the set was
/// moved away from where its description has it.
bool addSources(DarknetFiles& files, const DarknetPlace& place) {
  const std::vector<std::string>& sources = place.description.sources;
  std::vector<std::string> missing;
  for (const std::string& source : sources) {
    const std::string path = absolutePicturePath(source);
    if (!addSource(files, path, place.root)) missing.push_back(path);
  }
  if (missing.size() == sources.size()) {
    for (const std::string& path : missing)
      logLine(std::string(kReadWho) + ": There is nothing at '" + path + "', '" + place.root +
              "' is looked through");
    return false;
  }
  for (const std::string& path : missing)
    files.reject(path, "no such file or directory");
  return true;
}

/// A `labels` tree that is read by itself has its pictures beside it.
std::string picturesBeside(const std::string& root) {
  const std::string images = withDirectory(root, "labels", "images");
  return isDirectory(images) ? images : std::string();
}

}  // namespace

void DarknetFiles::addDirectory(const std::string& directory) {
  for (const std::string& file : filesBelow(directory)) {
    if (isText(file)) {
      addText(file);
    } else if (looksLikePicture(file)) {
      addPicture(file, {});
    }
  }
}

void DarknetFiles::addList(const std::string& list, const std::string& root) {
  const fs::path directory = fs::path(list).parent_path();
  notLabels.insert(list);
  // Its lines may lead through links.
  followedLinks = true;
  const auto find = [&](const std::string& line) {
    return findUpwards(line, {directory, fs::path(root).parent_path()});
  };
  for (const auto& [line, number] : linesOf(list)) {
    auto found = find(line);
    if (!found) found = find(withForwardSlashes(line));
    const std::string path =
        absolutePicturePath(found.value_or((directory / withForwardSlashes(line)).string()));
    if (found && !isPictureFile(path)) {
      rejections.add(list, number, "no picture file");
    } else {
      addPicture(path, {});
    }
  }
}

void DarknetFiles::addSingle(const std::string& text, const std::vector<std::string>& named) {
  addText(text);
  for (const std::string& picture : named)
    addPicture(picture, text);
}

bool DarknetFiles::addExport(const std::string& root) {
  const std::string list = root + std::string(kPictureList);
  LabelSet listed;
  for (const auto& [line, number] : linesOf(list))
    listed.pictures.push_back({absolutePicturePath(line), {}, {}, {}});
  const auto names = outputNames(listed);
  const std::string labels = root + std::string(kLabelsDirectory);
  std::unordered_set<std::string> expected;
  for (std::size_t i = 0; i < names.size(); ++i) {
    addPicture(listed.pictures[i].path, labels + names[i] + std::string(kTextExtension));
    expected.insert(labels + names[i] + std::string(kTextExtension));
  }
  auto found = filesBelow(labels);
  std::erase_if(found, [&](const std::string& file) {
    return !expected.contains(file) && (!isText(file) || isClassesFile(file));
  });
  if (found.size() != expected.size() ||
      !std::all_of(found.begin(), found.end(),
                   [&](const auto& file) { return expected.contains(file); })) {
    logLine(std::string(kReadWho) + ": The texts in '" + labels + "' are not those for '" + list +
            "', export the labels anew!");
    return false;
  }
  for (const std::string& file : found)
    addText(file);
  return true;
}

void DarknetFiles::addPicture(const std::string& path, const std::string& text) {
  if (known.insert(path).second) pictures.push_back({path, text, {}, {}});
}

void DarknetFiles::pairByPlace(const std::string& labels, const std::string& pictureDirectory) {
  for (LabelledPicture& picture : pictures) {
    if (!picture.path.starts_with(pictureDirectory)) continue;
    const std::string below = withTextExtension(picture.path.substr(pictureDirectory.size()));
    for (const std::string& place : {below, std::string(kLabelsDirectory) + below}) {
      if (picture.labelFile.empty() && isThere(labels + place)) picture.labelFile = labels + place;
    }
  }
}

void DarknetFiles::pairByConvention() {
  for (LabelledPicture& picture : pictures) {
    if (!picture.labelFile.empty()) continue;
    const std::string beside = withTextExtension(picture.path);
    const std::string inTree = withDirectory(beside, "images", "labels");
    for (const std::string& place : {beside, inTree}) {
      if (picture.labelFile.empty() && isThere(place)) picture.labelFile = place;
    }
  }
}

void DarknetFiles::dropDoubles() {
  if (!followedLinks) return;
  std::unordered_map<std::string, std::size_t> placeOf;
  std::vector<LabelledPicture> kept;
  for (LabelledPicture& picture : pictures) {
    const auto [place, isNew] = placeOf.emplace(withoutDetours(picture.path), kept.size());
    if (isNew) {
      kept.push_back(std::move(picture));
    } else if (kept[place->second].labelFile.empty() && !picture.labelFile.empty()) {
      kept[place->second] = std::move(picture);
    }
  }
  pictures = std::move(kept);
}

std::vector<std::string> DarknetFiles::takeShared() {
  std::unordered_map<std::string, std::size_t> uses;
  for (const LabelledPicture& picture : pictures)
    ++uses[withoutDetours(picture.labelFile)];
  std::vector<std::string> shared;
  for (LabelledPicture& picture : pictures) {
    const std::string text = withoutDetours(picture.labelFile);
    if (text.empty() || uses[text] < 2) continue;
    if (notLabels.insert(picture.labelFile).second) shared.push_back(picture.labelFile);
    picture.labelFile.clear();
  }
  tnv::dropDoubles(shared);
  return shared;
}

void DarknetFiles::reject(const std::string& file, const std::string& reason) {
  if (rejected.insert(file).second) rejections.add(file, 0, reason);
}

bool DarknetFiles::empty() const {
  return pictures.empty() && rejections.empty() &&
         std::all_of(texts.begin(), texts.end(),
                     [this](const auto& text) { return isNoLabelText(text); });
}

std::vector<std::string> DarknetFiles::textsWithoutPicture() const {
  std::unordered_set<std::string> used;
  for (const LabelledPicture& picture : pictures)
    used.insert(withoutDetours(picture.labelFile));
  std::vector<std::string> left;
  for (const std::string& text : texts) {
    if (!isNoLabelText(text) && used.insert(withoutDetours(text)).second) left.push_back(text);
  }
  return left;
}

std::vector<std::string> DarknetFiles::filesBelow(const std::string& directory) {
  std::vector<std::string> files;
  const TreeWalk walk = forEachFileBelow(directory, [&](const std::string& file) {
    files.push_back(file);
    return false;
  });
  followedLinks = followedLinks || walk.followedLinks;
  for (const std::string& unreadable : walk.unreadable)
    reject(unreadable, kUnreadableDirectory);
  for (const std::string& link : walk.deadLinks)
    reject(link, kDeadLink);
  std::sort(files.begin(), files.end());
  return files;
}

std::string DarknetFiles::withoutDetours(const std::string& path) const {
  if (!followedLinks || path.empty()) return path;
  return realPath(path);
}

std::vector<DarknetFiles::NumberedLine> DarknetFiles::linesOf(const std::string& file) {
  std::vector<NumberedLine> lines;
  const auto content = readFile(file);
  if (!content) reject(file, "file cannot be read");
  forEachLine(content.value_or(""), [&](std::string_view line, std::size_t number) {
    lines.push_back({std::string(line), number});
  });
  return lines;
}

void DarknetFiles::addText(const std::string& file) {
  if (textSet.insert(file).second) texts.push_back(file);
}

bool DarknetFiles::isThere(const std::string& file) const {
  return !file.empty() && !isNoLabelText(file) && (textSet.contains(file) || isFile(file));
}

bool DarknetFiles::isNoLabelText(const std::string& file) const {
  return notLabels.contains(file) || isClassesFile(file);
}

std::string namesFileIn(const std::string& root) {
  for (const std::string_view name : kNamesFiles) {
    const std::string file = root + std::string(name);
    if (isFile(file) && (!isText(file) || isClassesFile(file))) return file;
  }
  std::vector<std::string> named;
  for (const std::string_view extension : kNamesExtensions) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(root, error)) {
      if (hasExtension(entry.path().string(), extension)) named.push_back(entry.path().string());
    }
    std::sort(named.begin(), named.end());
    if (!named.empty()) return named.front();
  }
  return {};
}

bool isLabelText(const std::string& file) {
  if (!isFile(file) || !isText(file)) return false;
  if (isClassesFile(file)) return false;
  return holdsLabels(readFile(file).value_or("")) ||
         !picturesOfText(absolutePicturePath(file)).empty();
}

std::optional<DarknetPlace> placeOf(const std::string& path, const LabelReading& reading) {
  const std::string absolute = absolutePicturePath(path);
  const bool isRoot = isDirectory(absolute);
  if (!isRoot && !isFile(absolute)) {
    logLine(std::string(kReadWho) + ": There is nothing at '" + path + "'!");
    return std::nullopt;
  }
  const std::string root =
      asDirectory(isRoot ? absolute : fs::path(absolute).parent_path().string());
  const bool isSingle = isLabelText(absolute);
  const std::string described = isRoot     ? namesFileIn(root)
                                : isSingle ? namesFileFor(absolute)
                                           : absolute;
  auto description = readDescription(described);
  if (!reading.names.empty()) {
    auto given = readGivenNames(reading.names, kReadWho);
    if (!given) return std::nullopt;
    if (!description) description.emplace();
    description->classes = std::move(*given);
  }
  if (!description && isYaml(described)) {
    logNoNamesIn(described, kReadWho);
    return std::nullopt;
  }
  if (!description) {
    logLine(std::string(kReadWho) + ": No class names found for '" + path + "'!");
    return std::nullopt;
  }
  return DarknetPlace{root, std::move(*description), isSingle ? absolute : std::string()};
}

std::optional<DarknetFiles> filesOf(const DarknetPlace& place, const LabelReading& reading) {
  DarknetFiles files;
  if (const std::string& text = place.singleText; !text.empty()) {
    files.addSingle(
        text, reading.pictures.empty()
                  ? picturesOfText(text)
                  : picturesNamedLike(text, asDirectory(absolutePicturePath(reading.pictures))));
    return files;
  }
  if (!reading.pictures.empty()) {
    const std::string pictures = asDirectory(absolutePicturePath(reading.pictures));
    files.addDirectory(pictures);
    files.addDirectory(place.root);
    files.pairByPlace(place.root, pictures);
  } else if (exportedFormat(place.root) == kExportFormat &&
             isFile(place.root + std::string(kPictureList))) {
    if (!files.addExport(place.root)) return std::nullopt;
    return files;
  } else if (!addSources(files, place)) {
    files.addDirectory(place.root);
    const std::string beside = picturesBeside(place.root);
    if (files.pictures.empty() && !beside.empty()) files.addDirectory(beside);
  }
  files.pairByConvention();
  files.dropDoubles();
  return files;
}

}  // namespace tnv::darknet
