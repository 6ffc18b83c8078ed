#include "tools/LabelsDarknet.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

#include "foundation/Files.h"
#include "foundation/Log.h"
#include "tools/DarknetFiles.h"
#include "tools/DarknetText.h"
#include "tools/LabelFiles.h"
#include "tools/LabelNames.h"

namespace tnv {

using namespace darknet;

namespace {

constexpr std::string_view kWriteWho = "writeDarknetLabels";

constexpr std::string_view kYamlFile = "data.yaml";
constexpr std::string_view kImagesDirectory = "images/";

/// Numbers are rounded so far behind the point, which hides what adding and halving do to the last
/// digit of a double and is far below any pixel.
constexpr double kRounding = 1e12;

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
