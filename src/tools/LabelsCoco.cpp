#include "tools/LabelsCoco.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <limits>
#include <map>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include <json/reader.h>
#include <json/value.h>
#include <json/writer.h>

#include "foundation/Files.h"
#include "foundation/JsonText.h"
#include "foundation/Log.h"
#include "foundation/PictureHead.h"
#include "tools/LabelFiles.h"
#include "tools/LabelNames.h"

namespace tnv {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kReadWho = "readCocoLabels";
constexpr std::string_view kWriteWho = "writeCocoLabels";

constexpr std::string_view kOutputFile = "annotations.json";
constexpr std::string_view kImagesDirectory = "images/";

/// What every file of labels has.
constexpr auto kCategories = "categories";
constexpr auto kImages = "images";
constexpr auto kAnnotations = "annotations";

/// What an annotation has that tells of a place; others of the family have captions.
constexpr std::string_view kPlaces[] = {"\"bbox\"", "\"segmentation\""};

constexpr int kCoordinatesOfBox = 4;
constexpr Json::ArrayIndex kFewestCoordinates = 6;

/// Deeper nesting is no label file; the parser would run out of stack.
constexpr int kDeepest = 100;

bool isJson(const std::string& path) {
  return hasExtension(path, ".json") && isFile(path);
}

bool hasKey(std::string_view text, std::string_view key) {
  return text.find("\"" + std::string(key) + "\"") != text.npos;
}

/// Whether the list of annotations has no entry.
bool hasNoAnnotations(std::string_view text) {
  const std::string key = "\"" + std::string(kAnnotations) + "\"";
  std::size_t place = text.find(key);
  if (place == text.npos) return false;
  place += key.size();
  for (const char expected : {':', '[', ']'}) {
    place = text.find_first_not_of(" \t\r\n", place);
    if (place == text.npos || text[place] != expected) return false;
    ++place;
  }
  return true;
}

bool holdsLabels(std::string_view text) {
  const auto isThere = [&](std::string_view place) { return text.find(place) != text.npos; };
  return hasKey(text, kCategories) && hasKey(text, kImages) && hasKey(text, kAnnotations) &&
         (hasNoAnnotations(text) || std::any_of(std::begin(kPlaces), std::end(kPlaces), isThere));
}

bool isLabelFile(const std::string& file) {
  const auto content = readFile(file);
  return content && holdsLabels(*content);
}

void addJsonFilesIn(const fs::path& directory, std::vector<std::string>& files) {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(directory, error)) {
    const std::string path = withForwardSlashes(entry.path().string());
    if (isJson(path)) files.push_back(path);
  }
}

/// The files at the path. What is beside labels may be labels that were cut.
std::vector<std::string> filesOf(const std::string& path) {
  if (isJson(path)) return {absolutePicturePath(path)};
  const fs::path root(absolutePicturePath(path));
  std::vector<std::string> files;
  addJsonFilesIn(root, files);
  addJsonFilesIn(root / "annotations", files);
  std::sort(files.begin(), files.end());
  dropDoubles(files);
  return files;
}

/// What is wrong with a file, and in which line.
struct Damage {
  std::string_view reason = "file cannot be read";
  std::size_t line = 0;
};

/// By what the parser tells of a file that is whole but for one thing, which would be lost.
Damage damageOf(std::string_view errors) {
  constexpr std::pair<std::string_view, std::string_view> reasons[] = {
      {"Duplicate key", "a key is there twice"},
      {"Extra non-whitespace", "several documents in one file"}};
  constexpr std::string_view line = "Line ";
  for (const auto& [told, reason] : reasons) {
    const std::size_t place = errors.find(line);
    if (errors.find(told) == errors.npos || place == errors.npos) continue;
    Damage damage{reason, 0};
    std::from_chars(errors.data() + place + line.size(), errors.data() + errors.size(),
                    damage.line);
    return damage;
  }
  return {};
}

std::optional<Json::Value> parse(const std::string& text, const std::string& file, Damage& damage) {
  Json::CharReaderBuilder builder;
  builder["stackLimit"] = kDeepest;
  builder["rejectDupKeys"] = true;
  builder["failIfExtra"] = true;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value root;
  std::string errors;
  const std::string_view plain = withoutByteOrderMark(text);
  bool parsed = false;
  try {
    parsed = parseJson(*reader, plain, root, &errors);
  } catch (const Json::Exception& error) {
    errors = error.what();
  }
  if (parsed && root.isObject()) return root;
  damage = damageOf(errors);
  logLine(std::string(kReadWho) + ": '" + file + "' is no whole JSON file! " + errors);
  return std::nullopt;
}

/// The line of an offset into a text, counted from 1.
class Lines {
 public:
  explicit Lines(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] == '\n') ends.push_back(i);
    }
  }

  std::size_t of(const Json::Value& value) const {
    const auto offset =
        static_cast<std::size_t>(std::max<std::ptrdiff_t>(value.getOffsetStart(), 0));
    const auto end = std::lower_bound(ends.begin(), ends.end(), offset);
    return static_cast<std::size_t>(end - ends.begin()) + 1;
  }

 private:
  std::vector<std::size_t> ends;
};

/// A number or a text that names something; empty for all else.
std::string idOf(const Json::Value& value) {
  if (value.isString()) return value.asString();
  // 1.0 is 1.
  if (value.isInt64()) return std::to_string(value.asInt64());
  return value.isUInt64() ? std::to_string(value.asUInt64()) : std::string();
}

bool isCrowd(const Json::Value& value) {
  return value.isBool() ? value.asBool() : value.isNumeric() && value.asDouble() != 0.0;
}

std::string textOf(const Json::Value& object, const char* key) {
  const Json::Value* value = object.find(key, key + std::string_view(key).size());
  return value != nullptr && value->isString() ? value->asString() : std::string();
}

const Json::Value& memberOf(const Json::Value& object, const char* key) {
  static const Json::Value null;
  if (!object.isObject()) return null;
  const Json::Value* value = object.find(key, key + std::string_view(key).size());
  return value != nullptr ? *value : null;
}

/// A list under a key; an empty one for all else.
const Json::Value& listOf(const Json::Value& object, const char* key) {
  static const Json::Value none(Json::arrayValue);
  const Json::Value& list = memberOf(object, key);
  return list.isArray() ? list : none;
}

int sideOf(const Json::Value& image, const char* key) {
  const Json::Value& side = memberOf(image, key);
  if (!side.isNumeric()) return 0;
  const double value = side.asDouble();
  return value >= 1 && value <= std::numeric_limits<int>::max() ? static_cast<int>(value) : 0;
}

/// The name of the part of a set that a file like "instances_train2017.json" is about.
std::string splitOf(const std::string& file) {
  const std::string stem = fs::path(file).stem().string();
  const auto underscore = stem.rfind('_');
  return underscore == stem.npos ? stem : stem.substr(underscore + 1);
}

/// Where a picture lies that a file tells of.
struct PicturePlace {
  std::string path;
  std::string told;  ///< if it was found without the directories that it is told with; or empty
};

/// Finds the pictures of a file.
class PictureFinder {
 public:
  PictureFinder(const std::string& file, const std::string& given) : pictures(given) {
    const std::string split = splitOf(file);
    if (!pictures.empty()) {
      directories = {asDirectory((fs::path(pictures) / split).string()), asDirectory(pictures)};
      return;
    }
    const fs::path here = fs::path(file).parent_path();
    for (const fs::path& base : {here, here.parent_path()}) {
      for (const fs::path& directory :
           {base, base / "images", base / split, base / "images" / split})
        directories.push_back(asDirectory(directory.string()));
    }
  }

  /// Where the picture lies; nothing if it is nowhere. A set that was made on this machine may name
  /// it by its whole path; made on another, its pictures lie where `pictures` has them.
  std::optional<PicturePlace> find(const std::string& name) const {
    const auto asTold =
        fs::path(name).is_absolute() ? pictureAt(absolutePicturePath(name)) : findBelow(name);
    if (asTold) return PicturePlace{*asTold, {}};
    if (pictures.empty()) return std::nullopt;
    const auto byEnd = findByEnd(pictures, name, pictureAt);
    return byEnd ? std::optional(PicturePlace{*byEnd, name}) : std::nullopt;
  }

 private:
  std::optional<std::string> findBelow(const std::string& name) const {
    for (const std::string& directory : directories) {
      const auto path = pathBelow(directory, name);
      if (!path) return std::nullopt;
      if (const auto found = pictureAt(*path)) return found;
    }
    return std::nullopt;
  }

  std::string pictures;
  std::vector<std::string> directories;
};

using Numbers = std::vector<double>;

/// The numbers of a list; empty if it holds anything else.
Numbers numbersOf(const Json::Value& list) {
  Numbers numbers;
  if (!list.isArray()) return numbers;
  for (const Json::Value& number : list) {
    if (!number.isNumeric()) return {};
    numbers.push_back(number.asDouble());
  }
  return numbers;
}

/// The corners of the only polygon of an annotation, in pixels; empty if it has none or several.
std::vector<cv::Point2d> outlineOf(const Json::Value& annotation) {
  const Json::Value& polygons = memberOf(annotation, "segmentation");
  if (!polygons.isArray() || polygons.size() != 1) return {};
  const Numbers numbers = numbersOf(polygons[0]);
  std::vector<cv::Point2d> corners;
  if (numbers.size() < kFewestCoordinates || numbers.size() % 2 != 0) return corners;
  for (std::size_t i = 0; i < numbers.size(); i += 2)
    corners.emplace_back(numbers[i], numbers[i + 1]);
  return corners;
}

/// Reads one file after the other into one set.
class CocoReader {
 public:
  CocoReader(LabelSet& target, ClassNumbers& numbers, const LabelReading& manner)
      : set(target), classes(numbers), reading(manner) {}

  /// What `isGiven` was asked for by its name; others of a directory may be no labels.
  void read(const std::string& path, bool isGiven) {
    const auto content = readFile(path);
    if (!content) return set.reject(path, 0, "file cannot be read");
    Damage damage;
    const auto root = parse(*content, path, damage);
    if (!root) return set.reject(path, damage.line, damage.reason);
    if (!isGiven && !holdsLabels(*content)) return logOther(path);
    file = path;
    hasRead = true;
    rejectUnlessList(*root, kCategories, "categories are no list");
    rejectUnlessList(*root, kImages, "images are no list");
    rejectUnlessList(*root, kAnnotations, "annotations are no list");
    const Lines lines(withoutByteOrderMark(*content));
    addCategories(listOf(*root, kCategories), lines);
    addImages(listOf(*root, kImages), lines);
    if (wasStopped) return;
    for (const Json::Value& annotation : listOf(*root, kAnnotations))
      addAnnotation(annotation, lines.of(annotation));
    rejectMissing();
  }

  /// When all files are read.
  void rejectAmbiguous() { set.rejectAmbiguous(told); }

  bool hasRead = false;  ///< any file of labels
  bool wasStopped = false;

 private:
  struct Picture {
    std::optional<std::size_t> place;  ///< in the set; nothing for one that is not there
    cv::Size size;
    std::size_t line = 0;
    bool isTold = false;  ///< that it is not there
  };

  static void logOther(const std::string& path) {
    logLine(std::string(kReadWho) + ": '" + path + "' has no labels, passed over");
  }

  void rejectUnlessList(const Json::Value& root, const char* key, const char* reason) {
    if (!memberOf(root, key).isArray()) set.reject(file, 0, reason);
  }

  /// Which class is meant by an id that several have is open, so that none is.
  void addCategories(const Json::Value& categories, const Lines& lines) {
    classesById.clear();
    std::map<long long, std::string> byId;
    std::vector<long long> open;
    std::unordered_set<std::string> names;
    for (const Json::Value& category : categories) {
      const auto rejectFor = [&](const char* reason) {
        set.reject(file, lines.of(category), reason);
      };
      const Json::Value& id = memberOf(category, "id");
      if (!id.isInt64()) {
        rejectFor("category without a whole number as its id");
        continue;
      }
      const std::string name = textOf(category, "name");
      const auto [known, isNew] = byId.emplace(id.asInt64(), name);
      if (!isNew) {
        rejectFor("another category has its id");
        if (known->second != name) open.push_back(id.asInt64());
      } else if (!names.insert(name).second) {
        // A class is known by its name, which takes the labels of both.
        rejectFor("another category has its name");
      }
    }
    for (const long long id : open)
      byId.erase(id);
    for (const auto& [id, name] : byId)
      classesById[id] = classes.of(name);
  }

  void addImages(const Json::Value& images, const Lines& lines) {
    pictures.clear();
    missing.clear();
    const PictureFinder finder(file, reading.pictures);
    for (const Json::Value& image : images) {
      wasStopped = wasStopped || !goesOn(reading.goOn);
      if (wasStopped) return;
      addImage(image, lines.of(image), finder);
    }
  }

  void addImage(const Json::Value& image, std::size_t line, const PictureFinder& finder) {
    if (!image.isObject()) return set.reject(file, line, "no image");
    const std::string id = idOf(memberOf(image, "id"));
    if (!id.empty() && pictures.contains(id))
      return set.reject(file, line, "another image has its id");
    Picture picture;
    picture.size = {sideOf(image, "width"), sideOf(image, "height")};
    picture.line = line;
    if (const auto found = finder.find(textOf(image, "file_name"))) {
      if (picture.size.empty()) picture.size = pictureSize(found->path);
      picture.place = placeOf(*found, picture.size);
    } else if (id.empty()) {
      set.reject(file, line, kNoPicture);
    } else {
      missing.push_back(id);
    }
    // No annotation can tell of one without an id.
    if (!id.empty()) pictures.emplace(id, picture);
  }

  /// Those that no annotation was rejected for.
  void rejectMissing() {
    for (const std::string& id : missing) {
      if (!pictures.at(id).isTold) set.reject(file, pictures.at(id).line, kNoPicture);
    }
  }

  std::size_t placeOf(const PicturePlace& picture, cv::Size size) {
    const auto [place, isNew] =
        places.emplace(picture.path + "\n" + picture.told, set.pictures.size());
    if (isNew) {
      set.pictures.push_back({picture.path, file, size, {}});
      told.push_back(picture.told);
    }
    return place->second;
  }

  void addAnnotation(const Json::Value& annotation, std::size_t line) {
    const auto rejectFor = [&](const char* reason) { set.reject(file, line, reason); };
    if (!annotation.isObject()) return rejectFor("no annotation");
    const auto picture = pictures.find(idOf(memberOf(annotation, "image_id")));
    if (picture == pictures.end()) return rejectFor("unknown picture");
    if (!picture->second.place) {
      picture->second.isTold = true;
      return rejectFor(kNoPicture);
    }
    if (picture->second.size.empty()) return rejectFor("size of the picture is unknown");
    if (isCrowd(memberOf(annotation, "iscrowd"))) return rejectFor("a crowd, no object");
    FoundLabel label;
    label.line = line;
    label.classNumber = numberOf(memberOf(annotation, "category_id"));
    if (!fillPlace(label, annotation, picture->second.size)) return rejectFor("no box");
    LabelledPicture& target = set.pictures[*picture->second.place];
    target.labelFile = file;
    set.take(target, label, reading.clip);
  }

  /// The place of the category in the set, or a number that no class has.
  long long numberOf(const Json::Value& category) const {
    if (!category.isInt64()) return -1;
    const auto place = classesById.find(category.asInt64());
    return place == classesById.end() ? -1 : place->second;
  }

  static bool fillPlace(FoundLabel& label, const Json::Value& annotation, cv::Size size) {
    const double width = size.width;
    const double height = size.height;
    for (const cv::Point2d& corner : outlineOf(annotation))
      label.outline.emplace_back(corner.x / width, corner.y / height);
    if (!label.outline.empty()) return true;
    const Numbers box = numbersOf(memberOf(annotation, "bbox"));
    if (box.size() != kCoordinatesOfBox) return false;
    label.box = {box[0] / width, box[1] / height, box[2] / width, box[3] / height};
    return true;
  }

  LabelSet& set;
  ClassNumbers& classes;
  const LabelReading& reading;
  std::string file;
  std::unordered_map<long long, long long> classesById;  ///< their numbers, by the ids of the file
  std::unordered_map<std::string, Picture> pictures;
  std::vector<std::string> missing;  ///< ids of images whose pictures are not there
  std::unordered_map<std::string, std::size_t> places;
  std::vector<std::string> told;  ///< as `LabelSet::rejectAmbiguous` takes it
};

/// A text with its quotes.
std::string quoted(const std::string& text) {
  return Json::valueToQuotedString(text.c_str());
}

std::string boxText(const cv::Rect2d& box) {
  return "[" + pixelText(box.x) + "," + pixelText(box.y) + "," + pixelText(box.width) + "," +
         pixelText(box.height) + "]";
}

cv::Point2d inPixels(cv::Point2d point, cv::Size size) {
  return {point.x * size.width, point.y * size.height};
}

double areaOf(const std::vector<cv::Point2d>& outline) {
  double doubled = 0.0;
  for (std::size_t i = 0; i < outline.size(); ++i)
    doubled += outline[i].cross(outline[(i + 1) % outline.size()]);
  return std::abs(doubled) / 2;
}

std::string annotationText(const Label& label, cv::Size size, std::size_t id, std::size_t image) {
  const cv::Point2d origin = inPixels(label.box.tl(), size);
  const cv::Rect2d box(origin.x, origin.y, label.box.width * size.width,
                       label.box.height * size.height);
  std::vector<cv::Point2d> outline;
  std::string corners;
  for (const cv::Point2d& corner : label.outline) {
    outline.push_back(inPixels(corner, size));
    corners += (corners.empty() ? "" : ",") + pixelText(outline.back().x) + "," +
               pixelText(outline.back().y);
  }
  const double area = outline.empty() ? box.area() : areaOf(outline);
  return "{\"id\":" + std::to_string(id) + ",\"image_id\":" + std::to_string(image) +
         ",\"category_id\":" + std::to_string(label.classPlace + 1) + ",\"bbox\":" + boxText(box) +
         ",\"segmentation\":" + (corners.empty() ? "[]" : "[[" + corners + "]]") +
         ",\"area\":" + pixelText(area) + ",\"iscrowd\":0}";
}

/// A list with an entry a line.
class JsonList {
 public:
  JsonList(std::string& target, std::string_view key) : text(target) {
    text += "\"" + std::string(key) + "\":[";
  }

  void add(const std::string& entry) {
    text += (isEmpty ? "\n" : ",\n") + entry;
    isEmpty = false;
  }

  void end() { text += "\n]"; }

 private:
  std::string& text;
  bool isEmpty = true;
};

std::string documentOf(const LabelSet& set, const std::vector<std::string>& fileNames) {
  std::string text = "{";
  JsonList categories(text, kCategories);
  for (std::size_t i = 0; i < set.classNames.size(); ++i)
    categories.add("{\"id\":" + std::to_string(i + 1) + ",\"name\":" + quoted(set.classNames[i]) +
                   "}");
  categories.end();
  text += ",\n";
  JsonList images(text, kImages);
  for (std::size_t i = 0; i < set.pictures.size(); ++i)
    images.add("{\"id\":" + std::to_string(i + 1) + ",\"file_name\":" + quoted(fileNames[i]) +
               ",\"width\":" + std::to_string(set.pictures[i].size.width) +
               ",\"height\":" + std::to_string(set.pictures[i].size.height) + "}");
  images.end();
  text += ",\n";
  JsonList annotations(text, kAnnotations);
  std::size_t id = 0;
  for (std::size_t i = 0; i < set.pictures.size(); ++i) {
    for (const Label& label : set.pictures[i].labels)
      annotations.add(annotationText(label, set.pictures[i].size, ++id, i + 1));
  }
  annotations.end();
  return text + "}\n";
}

}  // namespace

bool isCocoLabels(const std::string& path) {
  const std::vector<std::string> files = filesOf(path);
  return std::any_of(files.begin(), files.end(), isLabelFile);
}

std::optional<LabelSet> readCocoLabels(const std::string& path, const LabelReading& reading) {
  const std::vector<std::string> files = filesOf(path);
  LabelSet set;
  ClassNumbers classes(set);
  if (!reading.names.empty()) {
    const auto given = readGivenNames(reading.names, kReadWho);
    if (!given) return std::nullopt;
    classes.add(given->names);
  }
  CocoReader reader(set, classes, reading);
  for (const std::string& file : files) {
    reader.read(file, isJson(path));
    if (reader.wasStopped) return std::nullopt;
  }
  reader.rejectAmbiguous();
  if (reader.hasRead || !set.rejections.empty()) return set;
  logLine(std::string(kReadWho) + ": There is no COCO file at '" + path + "'!");
  return std::nullopt;
}

bool writeCocoLabels(const LabelSet& set, const std::string& directory,
                     const LabelWriting& writing) {
  const std::string root = asDirectory(directory);
  if (!makeDirectory(root, kWriteWho)) return false;
  std::vector<std::string> fileNames;
  if (writing.copy) {
    fileNames = outputNames(set);
    const std::string images = root + std::string(kImagesDirectory);
    if (!makeDirectory(images, kWriteWho) ||
        !copyPictures(set, fileNames, images, kWriteWho, writing.goOn)) {
      return false;
    }
    for (std::size_t i = 0; i < fileNames.size(); ++i)
      fileNames[i] += pictureExtension(set.pictures[i].path);
  } else {
    for (const LabelledPicture& picture : set.pictures)
      fileNames.push_back(picture.path);
  }
  if (!goesOn(writing.goOn)) return false;
  return writeWhole(root + std::string(kOutputFile), documentOf(set, fileNames), kWriteWho);
}

}  // namespace tnv
