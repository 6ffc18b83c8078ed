#include "tools/LabelsVoc.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <sstream>
#include <string_view>
#include <unordered_map>

#include <pugixml.hpp>

#include "foundation/Files.h"
#include "foundation/Log.h"
#include "tools/LabelFiles.h"
#include "tools/LabelNames.h"

namespace tnv {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kReadWho = "readVocLabels";
constexpr std::string_view kWriteWho = "writeVocLabels";

constexpr std::string_view kClassesFile = "classes.txt";
constexpr std::string_view kLabelsDirectory = "Annotations/";
constexpr std::string_view kImagesDirectory = "JPEGImages/";

constexpr auto kRoot = "annotation";
constexpr auto kCorners = {"xmin", "ymin", "xmax", "ymax"};

bool isXml(const std::string& path) {
  return hasExtension(path, ".xml") && isFile(path);
}

/// The name of the outermost element, behind declarations and comments.
std::string_view rootOf(std::string_view text) {
  while (!text.empty()) {
    text.remove_prefix(std::min(text.find('<'), text.size()));
    if (!text.starts_with("<?") && !text.starts_with("<!")) break;
    const std::string_view end = text.starts_with("<!--") ? "-->" : ">";
    text.remove_prefix(std::min(text.find(end), text.size()));
  }
  text.remove_prefix(std::min<std::size_t>(1, text.size()));
  return text.substr(0, text.find_first_of(" \t\r\n/>"));
}

bool isAnnotation(const std::string& file) {
  return rootOf(readFile(file).value_or("")) == kRoot;
}

struct XmlFiles {
  std::vector<std::string> files;
  std::vector<std::string> unreadable;  ///< directories
  std::vector<std::string> deadLinks;
};

XmlFiles filesOf(const std::string& path) {
  if (isXml(path)) return {{absolutePicturePath(path)}, {}, {}};
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::status_known(status) && !fs::is_directory(status)) return {};
  XmlFiles found;
  TreeWalk walk = forEachFileBelow(absolutePicturePath(path), [&](const std::string& file) {
    if (isXml(file)) found.files.push_back(file);
    return false;
  });
  std::sort(found.files.begin(), found.files.end());
  if (walk.followedLinks) dropDoubles(found.files);
  found.unreadable = std::move(walk.unreadable);
  found.deadLinks = std::move(walk.deadLinks);
  return found;
}

/// The text of an element below this one, without blanks at its ends.
std::string textOf(const pugi::xml_node& node, const char* name) {
  return std::string(trimmed(node.child_value(name)));
}

std::optional<double> numberOf(const pugi::xml_node& node, const char* name) {
  const std::string text = textOf(node, name);
  double number = 0.0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
  return number;
}

cv::Size sizeOf(const pugi::xml_node& annotation) {
  const pugi::xml_node size = annotation.child("size");
  const auto width = numberOf(size, "width");
  const auto height = numberOf(size, "height");
  constexpr double most = 1e6;
  if (!width || !height || !(*width >= 1) || !(*height >= 1) || *width > most || *height > most)
    return {};
  return {static_cast<int>(*width), static_cast<int>(*height)};
}

/// Counts lines up to an offset. Offsets come in rising order.
class LineCounter {
 public:
  explicit LineCounter(std::string_view content) : text(content) {}

  std::size_t lineAt(std::ptrdiff_t offset) {
    const auto end =
        std::min(static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0)), text.size());
    for (; place < end; ++place) {
      if (text[place] == '\n') ++line;
    }
    return line;
  }

 private:
  std::string_view text;
  std::size_t place = 0;
  std::size_t line = 1;
};

/// Reads one file after the other into one set.
class VocReader {
 public:
  VocReader(LabelSet& target, const LabelReading& manner) : set(target), reading(manner) {}

  void addNames(const std::vector<std::string>& names) {
    for (const std::string& name : names)
      classNumberOf(name);
  }

  void read(const std::string& file) {
    const auto content = readFile(file);
    pugi::xml_document document;
    if (!content || !document.load_buffer(content->data(), content->size()))
      return set.reject(file, 0, "file cannot be read");
    const pugi::xml_node annotation = document.child(kRoot);
    if (!annotation) return logOther(file);
    LabelledPicture picture;
    picture.labelFile = file;
    picture.size = sizeOf(annotation);
    const auto path = pathOf(annotation, file);
    picture.path = path.value_or("");
    LineCounter lines(*content);
    for (const pugi::xml_node& object : annotation.children("object"))
      addObject(picture, object, lines.lineAt(object.offset_debug()));
    if (path) {
      set.pictures.push_back(std::move(picture));
    } else if (!annotation.child("object")) {
      set.reject(file, 0, kNoPicture);
    }
  }

 private:
  static void logOther(const std::string& file) {
    logLine(std::string(kReadWho) + ": '" + file + "' has no labels, passed over");
  }

  void addObject(LabelledPicture& picture, const pugi::xml_node& object, std::size_t line) {
    const auto rejectFor = [&](const char* reason) { set.reject(picture.labelFile, line, reason); };
    if (picture.path.empty()) return rejectFor(kNoPicture);
    if (picture.size.empty()) return rejectFor("size of the picture is unknown");
    const std::string name = textOf(object, "name");
    if (name.empty()) return rejectFor("class without a name");
    std::vector<double> corners;
    for (const char* corner : kCorners) {
      const auto number = numberOf(object.child("bndbox"), corner);
      if (!number) return rejectFor("no box");
      corners.push_back(*number);
    }
    const double left = (corners[0] - reading.base) / picture.size.width;
    const double top = (corners[1] - reading.base) / picture.size.height;
    FoundLabel label;
    label.line = line;
    label.classNumber = classNumberOf(name);
    label.box = {left, top, corners[2] / picture.size.width - left,
                 corners[3] / picture.size.height - top};
    set.take(picture, label, reading.clip);
  }

  long long classNumberOf(const std::string& name) {
    const auto [number, isNew] =
        numbers.emplace(name, static_cast<long long>(set.classNames.size()));
    if (isNew) {
      set.classNames.push_back(name);
      set.classNumbers.push_back(number->second);
    }
    return number->second;
  }

  /// Where the picture of a file lies; nothing if it is nowhere.
  std::optional<std::string> pathOf(const pugi::xml_node& annotation,
                                    const std::string& file) const {
    std::string name = textOf(annotation, "filename");
    if (name.empty()) name = fs::path(file).stem().string();
    for (const std::string& directory : directoriesFor(file)) {
      const auto path = pathBelow(directory, name);
      if (!path) break;
      if (const auto found = withType(*path)) return found;
    }
    // A set that was made on this machine may tell the whole path.
    const std::string whole = textOf(annotation, "path");
    if (!fs::path(whole).is_absolute()) return std::nullopt;
    return fileAt(absolutePicturePath(whole));
  }

  std::vector<std::string> directoriesFor(const std::string& file) const {
    if (!reading.pictures.empty()) return {asDirectory(reading.pictures)};
    const fs::path here = fs::path(file).parent_path();
    std::vector<std::string> directories{
        (here.parent_path() / kImagesDirectory).string(), asDirectory(here.string()),
        (here.parent_path() / "images/").string(), (here / kImagesDirectory).string()};
    addTreesBeside(file, directories);
    return directories;
  }

  /// Below `Annotations` there may be directories, as there may be in the tree of the pictures.
  static void addTreesBeside(const std::string& file, std::vector<std::string>& directories) {
    const std::string tree = "/" + std::string(kLabelsDirectory);
    const std::size_t place = file.rfind(tree);
    if (place == file.npos) return;
    const fs::path base = file.substr(0, place);
    const fs::path below = fs::path(file.substr(place + tree.size())).parent_path();
    for (const fs::path& inTree : {below, fs::path()}) {
      for (const std::string_view images : {kImagesDirectory, std::string_view("images/")})
        directories.push_back(asDirectory((base / images / inTree).string()));
    }
  }

  /// Some files leave the extension out.
  static std::optional<std::string> withType(const std::string& path) {
    if (!pictureExtension(path).empty()) return fileAt(path);
    for (const std::string& type : kPictureTypes) {
      if (const auto found = fileAt(path + "." + type)) return found;
    }
    return std::nullopt;
  }

  LabelSet& set;
  const LabelReading& reading;
  std::unordered_map<std::string, long long> numbers;
};

void appendText(pugi::xml_node node, const char* name, const std::string& text) {
  node.append_child(name).text().set(text.c_str());
}

void appendObject(pugi::xml_node annotation, const std::string& name, const Label& label,
                  cv::Size size, int base) {
  pugi::xml_node object = annotation.append_child("object");
  appendText(object, "name", name);
  appendText(object, "difficult", "0");
  pugi::xml_node box = object.append_child("bndbox");
  appendText(box, "xmin", pixelText(label.box.x * size.width + base));
  appendText(box, "ymin", pixelText(label.box.y * size.height + base));
  appendText(box, "xmax", pixelText((label.box.x + label.box.width) * size.width));
  appendText(box, "ymax", pixelText((label.box.y + label.box.height) * size.height));
}

std::string documentOf(const LabelSet& set, const LabelledPicture& picture,
                       const std::string& fileName, const LabelWriting& writing) {
  pugi::xml_document document;
  pugi::xml_node annotation = document.append_child(kRoot);
  appendText(annotation, "filename", fileName);
  if (!writing.copy) appendText(annotation, "path", picture.path);
  pugi::xml_node size = annotation.append_child("size");
  appendText(size, "width", std::to_string(picture.size.width));
  appendText(size, "height", std::to_string(picture.size.height));
  appendText(size, "depth", "3");
  for (const Label& label : picture.labels)
    appendObject(annotation, set.classNames[label.classPlace], label, picture.size, writing.base);
  std::ostringstream text;
  document.save(text, "  ", pugi::format_default | pugi::format_no_declaration);
  return text.str();
}

/// The class names beside a directory's files, or above the tree that they lie in.
std::vector<std::string> namesFor(const std::string& path) {
  const std::string directory =
      asDirectory(isXml(path) ? fs::path(path).parent_path().string() : path);
  const std::size_t tree = directory.rfind("/" + std::string(kLabelsDirectory));
  const std::string above = tree == directory.npos ? directory : directory.substr(0, tree + 1);
  for (const std::string& place : {directory, above}) {
    if (auto names = readNames(place + std::string(kClassesFile))) return std::move(*names);
  }
  return {};
}

}  // namespace

bool isVocLabels(const std::string& path) {
  const std::vector<std::string> files = filesOf(path).files;
  return std::any_of(files.begin(), files.end(), isAnnotation);
}

std::optional<LabelSet> readVocLabels(const std::string& path, const LabelReading& reading) {
  const auto [files, unreadable, deadLinks] = filesOf(path);
  if (files.empty() && unreadable.empty() && deadLinks.empty()) {
    logLine(std::string(kReadWho) + ": There is no Pascal VOC file at '" + path + "'!");
    return std::nullopt;
  }
  LabelSet set;
  for (const std::string& directory : unreadable)
    set.reject(directory, 0, kUnreadableDirectory);
  for (const std::string& link : deadLinks)
    set.reject(link, 0, kDeadLink);
  VocReader reader(set, reading);
  if (!reading.names.empty()) {
    const auto given = readGivenNames(reading.names, kReadWho);
    if (!given) return std::nullopt;
    reader.addNames(given->names);
  } else {
    reader.addNames(namesFor(absolutePicturePath(path)));
  }
  for (const std::string& file : files) {
    if (!goesOn(reading.goOn)) return std::nullopt;
    reader.read(file);
  }
  return set;
}

bool writeVocLabels(const LabelSet& set, const std::string& directory,
                    const LabelWriting& writing) {
  const std::string root = asDirectory(directory);
  const std::string labels = root + std::string(kLabelsDirectory);
  if (!makeDirectory(labels, kWriteWho)) return false;
  const auto names = outputNames(set);
  const std::string images = root + std::string(kImagesDirectory);
  if (writing.copy && (!makeDirectory(images, kWriteWho) ||
                       !copyPictures(set, names, images, kWriteWho, writing.goOn))) {
    return false;
  }
  for (std::size_t i = 0; i < names.size(); ++i) {
    const LabelledPicture& picture = set.pictures[i];
    const std::string fileName = writing.copy ? names[i] + pictureExtension(picture.path)
                                              : fs::path(picture.path).filename().string();
    if (!goesOn(writing.goOn) ||
        !writeWhole(labels + names[i] + ".xml", documentOf(set, picture, fileName, writing),
                    kWriteWho))
      return false;
  }
  return writeWhole(root + std::string(kClassesFile), namesText(set.classNames), kWriteWho);
}

}  // namespace tnv
