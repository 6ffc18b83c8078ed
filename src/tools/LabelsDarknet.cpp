#include "tools/LabelsDarknet.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "foundation/Files.h"
#include "foundation/Log.h"
#include "foundation/TNVDirectory.h"
#include "tools/ExportPlace.h"
#include "tools/LabelFiles.h"
#include "tools/LabelNames.h"

namespace tnv {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kReadWho = "readDarknetLabels";
constexpr std::string_view kWriteWho = "writeDarknetLabels";

/// Names of files and directories of a set.
constexpr std::string_view kClassesFile = "classes.txt";
constexpr std::string_view kYamlFile = "data.yaml";
constexpr std::string_view kPictureList = "pictures.txt";
constexpr std::string_view kLabelsDirectory = "labels/";
constexpr std::string_view kImagesDirectory = "images/";

/// Where class names are looked for in a directory, in this order, before any file that has the
/// extension of one.
constexpr std::string_view kNamesFiles[] = {"data.yaml", "data.yml",    "obj.data",
                                            "obj.names", "classes.txt", "labels/classes.txt"};
constexpr std::string_view kNamesExtensions[] = {".yaml", ".yml", ".data", ".names"};

constexpr std::string_view kTextExtension = ".txt";

/// As the mark of an export calls what is written here.
constexpr std::string_view kExportFormat = "Darknet";

/// Class, centre x, centre y, width, height.
constexpr std::size_t kBoxFields = 5;

/// Class, and x and y of three corners.
constexpr std::size_t kFewestOutlineFields = 7;

/// Numbers are rounded so far behind the point, which hides what adding and halving do to the last
/// digit of a double and is far below any pixel.
constexpr double kRounding = 1e12;

using Fields = std::vector<std::string_view>;

void splitFields(std::string_view line, Fields& fields) {
  constexpr std::string_view blanks = " \t";
  fields.clear();
  for (std::size_t begin = line.find_first_not_of(blanks); begin != line.npos;) {
    const std::size_t end = std::min(line.find_first_of(blanks, begin), line.size());
    fields.push_back(line.substr(begin, end - begin));
    begin = line.find_first_not_of(blanks, end);
  }
}

template <class Number>
bool parseWhole(std::string_view text, Number& number) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

/// Why a line is no label; nothing if it is one, which is in `label` then. `numbers` is memory to
/// work in.
std::string_view parseLabel(const Fields& fields, std::vector<double>& numbers, FoundLabel& label) {
  const bool isOutline = fields.size() >= kFewestOutlineFields && fields.size() % 2 == 1;
  if (fields.size() != kBoxFields && !isOutline) return "neither a box nor an outline";
  if (!parseWhole(fields.front(), label.classNumber)) return "class is no whole number";
  numbers.resize(fields.size() - 1);
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (!parseWhole(fields[i + 1], numbers[i])) return "not a number";
  }
  if (!isOutline) {
    label.box = {numbers[0] - numbers[2] / 2, numbers[1] - numbers[3] / 2, numbers[2], numbers[3]};
    return {};
  }
  label.isOutline = true;
  for (std::size_t i = 0; i < numbers.size(); i += 2)
    label.outline.emplace_back(numbers[i], numbers[i + 1]);
  return {};
}

/// Calls back with each line that is not blank, and its number.
template <class Callback>
void forEachLine(std::string_view text, const Callback& callback) {
  std::size_t number = 0;
  text = withoutByteOrderMark(text);
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    ++number;
    const std::string_view line = trimmed(text.substr(0, end));
    if (!line.empty()) callback(line, number);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

void readLabels(LabelSet& set, LabelledPicture& picture, bool clip) {
  const auto content = readFile(picture.labelFile);
  if (!content) return set.reject(picture.labelFile, 0, "file cannot be read");
  Fields fields;
  std::vector<double> numbers;
  forEachLine(*content, [&](std::string_view line, std::size_t number) {
    FoundLabel label;
    label.line = number;
    splitFields(line, fields);
    const std::string_view reason = parseLabel(fields, numbers, label);
    if (!reason.empty()) return set.reject(picture.labelFile, number, std::string(reason));
    set.take(picture, label, clip);
  });
}

/// Whether any line of the text is a label, which tells label texts from lists and notes.
bool holdsLabels(std::string_view text) {
  bool found = false;
  Fields fields;
  std::vector<double> numbers;
  forEachLine(text, [&](std::string_view line, std::size_t) {
    FoundLabel label;
    splitFields(line, fields);
    found = found || parseLabel(fields, numbers, label).empty();
  });
  return found;
}

/// Whether a file has the name of class names, and is no text of a picture that is called so.
bool isClassesFile(const std::string& file) {
  return fs::path(file).filename() == kClassesFile && !holdsLabels(readFile(file).value_or(""));
}

void rejectLines(LabelSet& set, const std::string& file, std::string_view content,
                 std::string_view reason) {
  forEachLine(content,
              [&](std::string_view, std::size_t number) { set.reject(file, number, reason); });
}

/// A text that several pictures have the name of.
void rejectShared(LabelSet& set, const std::string& file) {
  const auto content = readFile(file);
  if (!content) return set.reject(file, 0, "file cannot be read");
  rejectLines(set, file, *content, "several pictures have the name of the text");
}

void rejectWithoutPicture(LabelSet& set, const std::string& file) {
  const auto content = readFile(file);
  if (!content) return set.reject(file, 0, "file cannot be read");
  if (!holdsLabels(*content)) {
    if (!trimmed(*content).empty())
      logLine(std::string(kReadWho) + ": '" + file + "' has no picture and no labels, passed over");
    return;
  }
  rejectLines(set, file, *content, kNoPicture);
}

/// A picture that a list has and nobody else.
void rejectMissing(LabelSet& set, const LabelledPicture& picture) {
  const std::size_t before = set.found();
  if (!picture.labelFile.empty()) rejectWithoutPicture(set, picture.labelFile);
  if (set.found() == before) set.reject(picture.path, 0, kNoPicture);
}

bool isText(const std::string& path) {
  return hasExtension(path, kTextExtension);
}

bool isDirectory(const std::string& path) {
  std::error_code error;
  return fs::is_directory(path, error);
}

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

/// The files of a set, before any label is read.
class DarknetFiles {
 public:
  void addDirectory(const std::string& directory) {
    for (const std::string& file : filesBelow(directory)) {
      if (hasPictureExtension(file)) addPicture(file, {});
      if (isText(file)) addText(file);
    }
  }

  /// Pictures that a text lists one a line. Relative ones count from the text's directory, or, as
  /// for who trains, from one that the set was started in: that of its description or one above.
  void addList(const std::string& list, const std::string& root) {
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

  /// A text with the pictures of its name.
  void addSingle(const std::string& text, const std::vector<std::string>& named) {
    addText(text);
    for (const std::string& picture : named)
      addPicture(picture, text);
  }

  /// The list that an export wrote, whose label texts lie in a directory of their own. False, with
  /// a log line, if the texts are not those that the export wrote for the list.
  bool addExport(const std::string& root) {
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

  void addPicture(const std::string& path, const std::string& text) {
    if (known.insert(path).second) pictures.push_back({path, text, {}, {}});
  }

  /// Texts of labels lie below `labels`, for pictures at the same place below `pictureDirectory`.
  void pairByPlace(const std::string& labels, const std::string& pictureDirectory) {
    for (LabelledPicture& picture : pictures) {
      if (!picture.path.starts_with(pictureDirectory)) continue;
      const std::string below = withTextExtension(picture.path.substr(pictureDirectory.size()));
      for (const std::string& place : {below, std::string(kLabelsDirectory) + below}) {
        if (picture.labelFile.empty() && isThere(labels + place))
          picture.labelFile = labels + place;
      }
    }
  }

  void pairByConvention() {
    for (LabelledPicture& picture : pictures) {
      if (!picture.labelFile.empty()) continue;
      const std::string beside = withTextExtension(picture.path);
      const std::string inTree = withDirectory(beside, "images", "labels");
      for (const std::string& place : {beside, inTree}) {
        if (picture.labelFile.empty() && isThere(place)) picture.labelFile = place;
      }
    }
  }

  /// A picture that was met by two paths counts once, by the one that has labels.
  void dropDoubles() {
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

  /// Texts that several pictures have, which have none then: whose labels they are is open.
  std::vector<std::string> takeShared() {
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

  void reject(const std::string& file, const std::string& reason) {
    if (rejected.insert(file).second) rejections.add(file, 0, reason);
  }

  void exclude(const std::string& file) { notLabels.insert(file); }

  bool empty() const {
    return pictures.empty() && rejections.empty() &&
           std::all_of(texts.begin(), texts.end(),
                       [this](const auto& text) { return isNoLabelText(text); });
  }

  std::vector<std::string> textsWithoutPicture() const {
    std::unordered_set<std::string> used;
    for (const LabelledPicture& picture : pictures)
      used.insert(withoutDetours(picture.labelFile));
    std::vector<std::string> left;
    for (const std::string& text : texts) {
      if (!isNoLabelText(text) && used.insert(withoutDetours(text)).second) left.push_back(text);
    }
    return left;
  }

  std::vector<LabelledPicture> pictures;
  LabelRejections rejections;  ///< of whole directories and lists

 private:
  std::vector<std::string> filesBelow(const std::string& directory) {
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

  /// What is the same for all paths of a file. Asking the file system is left out where no file can
  /// have two.
  std::string withoutDetours(const std::string& path) const {
    if (!followedLinks || path.empty()) return path;
    return realPath(path);
  }

  struct NumberedLine {
    std::string text;
    std::size_t number;
  };

  std::vector<NumberedLine> linesOf(const std::string& file) {
    std::vector<NumberedLine> lines;
    const auto content = readFile(file);
    if (!content) reject(file, "file cannot be read");
    forEachLine(content.value_or(""), [&](std::string_view line, std::size_t number) {
      lines.push_back({std::string(line), number});
    });
    return lines;
  }

  void addText(const std::string& file) {
    if (textSet.insert(file).second) texts.push_back(file);
  }

  /// Pictures of a list may lie where no directory was looked through.
  bool isThere(const std::string& file) const {
    return !file.empty() && !isNoLabelText(file) && (textSet.contains(file) || isFile(file));
  }

  bool isNoLabelText(const std::string& file) const {
    return notLabels.contains(file) || isClassesFile(file);
  }

  std::unordered_set<std::string> known;
  std::unordered_set<std::string> textSet;
  std::unordered_set<std::string> notLabels;
  std::unordered_set<std::string> rejected;
  std::vector<std::string> texts;
  bool followedLinks = false;
};

/// The file that names the classes of a directory; empty if there is none.
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

/// Where a set is and what it says of itself.
struct DarknetPlace {
  std::string root;
  LabelDescription description;
  std::string singleText;  ///< the only text that is asked for; empty for all
};

/// The pictures in the directory that have the name of the text.
std::vector<std::string> picturesNamedLike(const std::string& text, const std::string& directory) {
  const fs::path stem = fs::path(text).stem();
  std::vector<std::string> found;
  std::error_code error;
  for (auto entry = fs::directory_iterator(directory, error);
       !error && entry != fs::directory_iterator(); entry.increment(error)) {
    const std::string path = withForwardSlashes(entry->path().string());
    if (entry->path().stem() == stem && hasPictureExtension(path)) found.push_back(path);
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

/// Whether a file is the text of a picture. An empty one is only by the picture.
bool isLabelText(const std::string& file) {
  if (!isFile(file) || !isText(file)) return false;
  if (isClassesFile(file)) return false;
  return holdsLabels(readFile(file).value_or("")) ||
         !picturesOfText(absolutePicturePath(file)).empty();
}

/// The file of class names for a text: beside it, or above the tree of texts that it lies in.
std::string namesFileFor(const std::string& text) {
  const std::string directory = asDirectory(fs::path(text).parent_path().string());
  if (const std::string beside = namesFileIn(directory); !beside.empty()) return beside;
  const std::size_t tree = directory.rfind("/" + std::string(kLabelsDirectory));
  return tree == directory.npos ? std::string() : namesFileIn(directory.substr(0, tree + 1));
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
  if (!description) {
    logLine(std::string(kReadWho) + ": No class names found for '" + path + "'!");
    return std::nullopt;
  }
  return DarknetPlace{root, std::move(*description), isSingle ? absolute : std::string()};
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

double rounded(double value) {
  return std::round(value * kRounding) / kRounding;
}

void appendNumber(std::string& text, double value) {
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), rounded(value)).ptr;
  text += ' ';
  text.append(digits.data(), end);
}

std::string labelText(const LabelledPicture& picture) {
  std::string text;
  for (const Label& label : picture.labels) {
    text += std::to_string(label.classPlace);
    appendNumber(text, label.box.x + label.box.width / 2);
    appendNumber(text, label.box.y + label.box.height / 2);
    appendNumber(text, label.box.width);
    appendNumber(text, label.box.height);
    text += '\n';
  }
  return text;
}

std::string pictureList(const LabelSet& set) {
  std::string text;
  for (const LabelledPicture& picture : set.pictures)
    text += picture.path + "\n";
  return text;
}

bool writeTexts(const LabelSet& set, const std::vector<std::string>& names,
                const std::string& labels, const GoOn& goOn) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string file = labels + names[i] + std::string(kTextExtension);
    if (!goesOn(goOn) || !writeWhole(file, labelText(set.pictures[i]), kWriteWho)) return false;
  }
  return true;
}

bool writePictures(const LabelSet& set, const std::vector<std::string>& names,
                   const std::string& root, const LabelWriting& writing) {
  if (!writing.copy)
    return writeWhole(root + std::string(kPictureList), pictureList(set), kWriteWho);
  const std::string images = root + std::string(kImagesDirectory);
  return makeDirectory(images, kWriteWho) &&
         copyPictures(set, names, images, kWriteWho, writing.goOn);
}

}  // namespace

bool holdsDarknetLabels(const std::string& path) {
  const std::string root = isDirectory(path) ? asDirectory(path) : std::string();
  const std::string described = root.empty() ? path : namesFileIn(root);
  if (isYaml(described) || isDarknetData(described)) {
    const auto description = readDescription(described);
    if (description && !description->sources.empty()) return true;
  }
  if (root.empty()) return isText(path) && holdsLabels(readFile(path).value_or(""));
  bool found = false;
  forEachFileBelow(root, [&](const std::string& file) {
    found = isText(file) && holdsLabels(readFile(file).value_or(""));
    return found;
  });
  return found;
}

bool isDarknetLabels(const std::string& path) {
  if (isFile(path)) return isYaml(path) || isDarknetData(path) || isLabelText(path);
  if (!isDirectory(path)) return false;
  bool found = false;
  forEachFileBelow(asDirectory(path), [&](const std::string& file) {
    found = isText(file) || isYaml(file) || isDarknetData(file);
    return found;
  });
  return found;
}

std::optional<LabelSet> readDarknetLabels(const std::string& path, const LabelReading& reading) {
  auto place = placeOf(path, reading);
  if (!place) return std::nullopt;
  auto found = filesOf(*place, reading);
  if (!found) return std::nullopt;
  DarknetFiles& files = *found;
  if (!reading.names.empty()) files.exclude(absolutePicturePath(reading.names));
  if (files.empty()) {
    logLine(std::string(kReadWho) + ": No pictures and no label texts in '" + path + "'!");
    return std::nullopt;
  }
  LabelSet set;
  set.classNames = std::move(place->description.classes.names);
  set.classNumbers = std::move(place->description.classes.numbers);
  set.rejections = std::move(files.rejections);
  const std::vector<std::string> shared = files.takeShared();
  const std::vector<std::string> left = files.textsWithoutPicture();
  for (LabelledPicture& picture : files.pictures) {
    if (!goesOn(reading.goOn)) return std::nullopt;
    if (!isFile(picture.path)) {
      rejectMissing(set, picture);
      continue;
    }
    if (!picture.labelFile.empty()) readLabels(set, picture, reading.clip);
    set.pictures.push_back(std::move(picture));
  }
  for (const std::string& text : shared)
    rejectShared(set, text);
  for (const std::string& text : left) {
    if (!goesOn(reading.goOn)) return std::nullopt;
    rejectWithoutPicture(set, text);
  }
  return set;
}

bool writeDarknetLabels(const LabelSet& set, const std::string& directory,
                        const LabelWriting& writing) {
  const std::string root = asDirectory(directory);
  const std::string labels = root + std::string(kLabelsDirectory);
  if (!makeDirectory(labels, kWriteWho)) return false;
  const auto names = outputNames(set);
  const std::string pictures(writing.copy ? kImagesDirectory.substr(0, kImagesDirectory.size() - 1)
                                          : kPictureList);
  return writeTexts(set, names, labels, writing.goOn) && writePictures(set, names, root, writing) &&
         writeWhole(root + std::string(kClassesFile), namesText(set.classNames), kWriteWho) &&
         writeWhole(root + std::string(kYamlFile), yamlText(set.classNames, pictures), kWriteWho);
}

}  // namespace tnv
