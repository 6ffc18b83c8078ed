#include "tools/LabelsVoc.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <sstream>
#include <string_view>

#include <pugixml.hpp>

#include "foundation/Files.h"
#include "foundation/Log.h"
#include "foundation/PictureHead.h"
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

/// Counts lines up to an offset into the text as the parser has it, which turns all encodings into
/// UTF-8. Offsets come in rising order.
class LineCounter {
 public:
  LineCounter(std::string_view content, pugi::xml_encoding from) : text(content), encoding(from) {}

  std::size_t lineAt(std::ptrdiff_t offset) {
    const auto end = static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0));
    while (parsed < end && place < text.size()) {
      const unsigned long code = takeUnit();
      parsed += bytesOf(code);
      if (code == '\n') ++line;
    }
    return line;
  }

 private:
  static constexpr unsigned long kOneByte = 0x80;
  static constexpr unsigned long kTwoBytes = 0x800;
  static constexpr unsigned long kThreeBytes = 0x10000;

  std::size_t unitSize() const {
    switch (encoding) {
      case pugi::encoding_utf16_le:
      case pugi::encoding_utf16_be:
        return 2;
      case pugi::encoding_utf32_le:
      case pugi::encoding_utf32_be:
        return 4;
      default:
        return 1;
    }
  }

  unsigned long takeUnit() {
    const std::size_t size = std::min(unitSize(), text.size() - place);
    const bool isBigEndian =
        encoding == pugi::encoding_utf16_be || encoding == pugi::encoding_utf32_be;
    unsigned long code = 0;
    for (std::size_t i = 0; i < size; ++i) {
      const std::size_t byte = isBigEndian ? i : size - 1 - i;
      code = code << 8 | static_cast<unsigned char>(text[place + byte]);
    }
    place += size;
    return code;
  }

  /// That a unit makes up in UTF-8; half a character of four bytes is two.
  std::size_t bytesOf(unsigned long code) const {
    if (encoding == pugi::encoding_utf8 || code < kOneByte) return 1;
    if (code < kTwoBytes || (code >= 0xD800 && code < 0xE000)) return 2;
    return code < kThreeBytes ? 3 : 4;
  }

  std::string_view text;
  pugi::xml_encoding encoding;
  std::size_t place = 0;   ///< in the text
  std::size_t parsed = 0;  ///< in the parser's
  std::size_t line = 1;
};

/// Reads one file after the other into one set.
class VocReader {
 public:
  VocReader(LabelSet& target, ClassNumbers& numbers, const LabelReading& manner,
            const std::string& directory)
      : set(target), classes(numbers), reading(manner), root(directory) {}

  void read(const std::string& file) {
    const auto content = readFile(file);
    pugi::xml_document document;
    if (!content) return set.reject(file, 0, "file cannot be read");
    const auto result = document.load_buffer(content->data(), content->size());
    if (!result) return set.reject(file, 0, "file cannot be read");
    LineCounter lines(*content, result.encoding);
    const pugi::xml_node annotation = document.child(kRoot);
    if (!annotation) return logOther(file);
    if (const auto next = annotation.next_sibling(kRoot))
      return set.reject(file, lines.lineAt(next.offset_debug()), "several documents in one file");
    LabelledPicture picture;
    picture.labelFile = file;
    picture.size = sizeOf(annotation);
    std::string toldPath;
    const auto path = pathOf(annotation, file, toldPath);
    picture.path = path.value_or("");
    if (path && picture.size.empty()) picture.size = pictureSize(*path);
    for (const pugi::xml_node& object : annotation.children("object"))
      addObject(picture, object, lines);
    if (path) {
      set.pictures.push_back(std::move(picture));
      told.push_back(std::move(toldPath));
    } else if (!annotation.child("object")) {
      set.reject(file, 0, kNoPicture);
    }
  }

  /// When all files are read.
  void rejectAmbiguous() { set.rejectAmbiguous(told); }

 private:
  static void logOther(const std::string& file) {
    logLine(std::string(kReadWho) + ": '" + file + "' has no labels, passed over");
  }

  void addObject(LabelledPicture& picture, const pugi::xml_node& object, LineCounter& lines) {
    const std::size_t line = lines.lineAt(object.offset_debug());
    const auto rejectFor = [&](const char* reason) { set.reject(picture.labelFile, line, reason); };
    if (picture.path.empty()) return rejectFor(kNoPicture);
    if (picture.size.empty()) return rejectFor("size of the picture is unknown");
    const std::string name = textOf(object, "name");
    if (name.empty()) return rejectFor("class without a name");
    const pugi::xml_node box = object.child("bndbox");
    std::vector<double> corners;
    for (const char* corner : kCorners) {
      const auto number = numberOf(box, corner);
      if (!number) return rejectFor("no box");
      corners.push_back(*number);
    }
    const double left = (corners[0] - reading.base) / picture.size.width;
    const double top = (corners[1] - reading.base) / picture.size.height;
    FoundLabel label;
    label.line = line;
    label.classNumber = classes.of(name);
    label.box = {left, top, corners[2] / picture.size.width - left,
                 corners[3] / picture.size.height - top};
    set.take(picture, label, reading.clip);
    for (auto more = box.next_sibling("bndbox"); more; more = more.next_sibling("bndbox"))
      set.reject(picture.labelFile, lines.lineAt(more.offset_debug()),
                 "the object has a box already");
  }

  /// Where the picture of a file lies; nothing if it is nowhere. `toldPath` is the path that it is
  /// told by if it was found without the directories of that, so that another may be meant.
  std::optional<std::string> pathOf(const pugi::xml_node& annotation, const std::string& file,
                                    std::string& toldPath) const {
    std::string name = textOf(annotation, "filename");
    if (name.empty()) name = fs::path(file).stem().string();
    // A set that was made on this machine may tell the whole path.
    const std::string whole = textOf(annotation, "path");
    const auto found = reading.pictures.empty() ? findBeside(file, name, toldPath)
                                                : findBelowPictures(file, name, whole, toldPath);
    if (found || !fs::path(whole).is_absolute()) return found;
    toldPath.clear();
    return pictureAt(absolutePicturePath(whole));
  }

  std::optional<std::string> findBeside(const std::string& file, const std::string& name,
                                        std::string& toldPath) const {
    const fs::path below = belowTree(file);
    for (const std::string& directory : directoriesFor(file)) {
      const auto path = pathBelow(directory, name);
      if (!path) return std::nullopt;
      if (const auto found = withType(*path)) {
        const bool isDivided = directory.ends_with("/" + asDirectory(below.string()));
        if (!below.empty() && !isDivided) toldPath = (below / name).string();
        return found;
      }
    }
    return std::nullopt;
  }

  std::optional<std::string> findBelowPictures(const std::string& file, const std::string& name,
                                               const std::string& whole,
                                               std::string& toldPath) const {
    const fs::path below = belowTree(file);
    const std::string divided = (below / name).string();
    const auto path = pathBelow(reading.pictures, divided);
    const auto atDivided = path ? withType(*path) : std::nullopt;
    if (atDivided && !below.empty()) return atDivided;
    if (fs::path(withForwardSlashes(whole)).filename() == name) {
      toldPath = (below / whole).string();
      if (const auto found = findByEnd(reading.pictures, whole, withType)) return found;
    }
    toldPath = atDivided ? std::string() : divided;
    return atDivided ? atDivided : findByEnd(reading.pictures, divided, withType);
  }

  std::vector<std::string> directoriesFor(const std::string& file) const {
    const fs::path here = fs::path(file).parent_path();
    std::vector<std::string> directories{
        (here.parent_path() / kImagesDirectory).string(), asDirectory(here.string()),
        (here.parent_path() / "images/").string(), (here / kImagesDirectory).string()};
    addTreesBeside(file, directories);
    return directories;
  }

  /// The directories between the set, or its `Annotations`, and a file.
  fs::path belowTree(const std::string& file) const {
    const std::string tree = "/" + std::string(kLabelsDirectory);
    const std::size_t place = file.rfind(tree);
    if (place != file.npos) return fs::path(file.substr(place + tree.size())).parent_path();
    return file.starts_with(root) ? fs::path(file.substr(root.size())).parent_path() : fs::path();
  }

  /// Below `Annotations` there may be directories, as there may be in the tree of the pictures.
  void addTreesBeside(const std::string& file, std::vector<std::string>& directories) const {
    const std::string tree = "/" + std::string(kLabelsDirectory);
    const std::size_t place = file.rfind(tree);
    if (place == file.npos) return;
    const fs::path base = file.substr(0, place);
    for (const fs::path& inTree : {belowTree(file), fs::path()}) {
      for (const std::string_view images : {kImagesDirectory, std::string_view("images/")})
        directories.push_back(asDirectory((base / images / inTree).string()));
    }
  }

  /// Some files leave the extension out.
  static std::optional<std::string> withType(const std::string& path) {
    if (!pictureExtension(path).empty()) return pictureAt(path);
    for (const std::string& type : kPictureTypes) {
      if (const auto found = pictureAt(path + "." + type)) return found;
    }
    return std::nullopt;
  }

  LabelSet& set;
  ClassNumbers& classes;
  const LabelReading& reading;
  std::string root;
  std::vector<std::string> told;  ///< as `LabelSet::rejectAmbiguous` takes it
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
  ClassNumbers classes(set);
  if (!reading.names.empty()) {
    const auto given = readGivenNames(reading.names, kReadWho);
    if (!given) return std::nullopt;
    classes.add(given->names);
  } else {
    classes.add(namesFor(absolutePicturePath(path)));
  }
  VocReader reader(set, classes, reading, asDirectory(absolutePicturePath(path)));
  for (const std::string& file : files) {
    if (!goesOn(reading.goOn)) return std::nullopt;
    reader.read(file);
  }
  reader.rejectAmbiguous();
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
