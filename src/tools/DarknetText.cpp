#include "tools/DarknetText.h"

#include <charconv>
#include <filesystem>
#include <vector>

#include "foundation/Files.h"
#include "foundation/Log.h"

namespace tnv::darknet {

namespace {

/// Class, centre x, centre y, width, height.
constexpr std::size_t kBoxFields = 5;

/// Class, and x and y of three corners.
constexpr std::size_t kFewestOutlineFields = 7;

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

void rejectLines(LabelSet& set, const std::string& file, std::string_view content,
                 std::string_view reason) {
  forEachLine(content,
              [&](std::string_view, std::size_t number) { set.reject(file, number, reason); });
}

}  // namespace

bool isText(const std::string& path) {
  return hasExtension(path, kTextExtension);
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

bool isClassesFile(const std::string& file) {
  return std::filesystem::path(file).filename() == kClassesFile &&
         !holdsLabels(readFile(file).value_or(""));
}

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

void rejectMissing(LabelSet& set, const LabelledPicture& picture) {
  const std::size_t before = set.found();
  if (!picture.labelFile.empty()) rejectWithoutPicture(set, picture.labelFile);
  if (set.found() == before) set.reject(picture.path, 0, kNoPicture);
}

}  // namespace tnv::darknet
