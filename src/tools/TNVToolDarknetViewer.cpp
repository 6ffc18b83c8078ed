#include "tools/TNVToolDarknetViewer.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string_view>

#include <opencv2/imgproc.hpp>

#include "foundation/Log.h"
#include "foundation/Numbers.h"
#include "foundation/PictureFile.h"
#include "foundation/TNVDirectory.h"

namespace {

const std::vector<std::string> kImageTypes{"jpg", "jpeg", "png"};
const cv::Scalar kRed(0, 0, 255, 0);

/// Class, centre x, centre y, width, height.
constexpr std::size_t kFieldCount = 5;

std::string withoutWhiteSpace(std::string text) {
  // Whatever the locale of the front end counts as white space.
  const auto isSpace = [](char character) {
    return std::string_view(" \t\n\v\f\r").find(character) != std::string_view::npos;
  };
  text.erase(std::remove_if(text.begin(), text.end(), isSpace), text.end());
  return text;
}

/// What stands between the blanks of a line, empty parts left out.
std::vector<std::string> fieldsOf(const std::string& line) {
  std::vector<std::string> fields;
  for (std::size_t begin = 0; begin <= line.size();) {
    const std::size_t end = std::min(line.find(' ', begin), line.size());
    std::string field = withoutWhiteSpace(line.substr(begin, end - begin));
    if (!field.empty()) fields.push_back(std::move(field));
    begin = end + 1;
  }
  return fields;
}

/// The box that a line of a label text tells, in pixels of a picture of that size.
std::optional<cv::Rect> boxOf(const std::string& line, cv::Size picture) {
  const auto fields = fieldsOf(line);
  if (fields.size() != kFieldCount) return std::nullopt;
  const double cx = tnv::parseDouble(fields[1]);
  const double cy = tnv::parseDouble(fields[2]);
  const double w = tnv::parseDouble(fields[3]);
  const double h = tnv::parseDouble(fields[4]);
  return cv::Rect(tnv::roundToInt((cx - w * 0.5) * picture.width),
                  tnv::roundToInt((cy - h * 0.5) * picture.height),
                  tnv::roundToInt(w * picture.width), tnv::roundToInt(h * picture.height));
}

/// A name that cannot be examined, a link in a circle say, is no file.
bool isThere(const std::string& path) {
  std::error_code error;
  return std::filesystem::exists(path, error);
}

}  // namespace

void TNVToolDarknetViewer::setImageDirectory(const std::string& directory) {
  imageDirectory = TNVDirectory::normalizePath(directory);
}

std::vector<std::string> TNVToolDarknetViewer::readImages() {
  items.clear();
  std::vector<std::string> names;
  for (const TNVFileInfo& file : TNVDirectory::readFiles(imageDirectory, kImageTypes, false)) {
    const std::string dataFile = file.baseName + ".txt";
    if (!isThere(imageDirectory + dataFile)) continue;
    items.push_back({file.baseName, file.fileName, dataFile, {}, {}});
    names.push_back(file.baseName);
  }
  return names;
}

bool TNVToolDarknetViewer::selectImage(const std::string& name) {
  const auto item =
      std::find_if(items.begin(), items.end(), [&](const Item& each) { return each.name == name; });
  if (item == items.end()) {
    tnv::logLine("TNVToolDarknetViewer::selectImage: Found no item with name!");
    return false;
  }
  selected = *item;
  selected.image = tnv::readPicture(imageDirectory + selected.imageFile);
  if (selected.image.empty()) {
    tnv::logLine("TNVToolDarknetViewer::selectImage: Could not load image!");
    return false;
  }
  for (const std::string& line : TNVDirectory::readLines(imageDirectory + selected.dataFile)) {
    if (const auto box = boxOf(line, selected.image.size()))
      cv::rectangle(selected.image, *box, kRed, 1, cv::LINE_AA, 0);
  }
  return true;
}
