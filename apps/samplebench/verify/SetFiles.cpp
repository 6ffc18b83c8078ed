#include "verify/SetFiles.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <unordered_map>

#include "TNV_SampleBenchNative/WTNVToolLabelExchange.h"

namespace fs = std::filesystem;

namespace {

constexpr auto whiteSpace = " \t";

/// Networks of the family halve their input five times.
constexpr std::size_t gridStep = 32;

/// The text as a whole number, if it is one.
std::optional<std::size_t> wholeNumber(const std::string& text) {
  std::size_t number = 0;
  const auto* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end) return std::nullopt;
  return number;
}

bool isComment(const std::string& line) {
  return line.empty() || line.front() == '#' || line.front() == ';';
}

/// "key = value"; an empty key for a line that is none.
std::pair<std::string, std::string> keyAndValue(const std::string& line) {
  const auto equals = line.find('=');
  if (equals == std::string::npos) return {};
  return {trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1))};
}

void reportUnreadable(const std::string& path, const std::string& what, Findings& findings) {
  findings.push_back({path, 0, "missing-file", "the " + what + " is missing or cannot be read"});
}

struct Section {
  std::string name;
  std::size_t line = 0;
  std::map<std::string, std::string> values;

  std::optional<std::size_t> number(const std::string& key) const {
    const auto value = values.find(key);
    return value == values.end() ? std::nullopt : wholeNumber(value->second);
  }
};

std::vector<Section> sectionsOf(const TextFile& file) {
  std::vector<Section> sections;
  for (std::size_t i = 0; i < file.lines.size(); ++i) {
    const auto line = trimmed(file.lines[i]);
    if (isComment(line)) continue;
    if (line.front() == '[') {
      sections.push_back({line.substr(1, line.find(']') - 1), i + 1, {}});
    } else if (!sections.empty()) {
      sections.back().values.insert(keyAndValue(line));
    }
  }
  return sections;
}

/// How many boxes each place of an output layer has.
std::size_t boxesPerPlace(const Section& output) {
  const auto mask = output.values.find("mask");
  if (mask != output.values.end())
    return static_cast<std::size_t>(std::count(mask->second.begin(), mask->second.end(), ',')) + 1;
  return output.number("num").value_or(1);
}

bool isOutput(const Section& section) {
  return section.name == "yolo" || section.name == "region" || section.name == "Gaussian_yolo";
}

/// Numbers for each box besides those of the classes: place, size and confidence, with their
/// deviations in a layer that has them.
std::size_t numbersPerBox(const Section& output) {
  return output.name == "Gaussian_yolo" ? 9 : 5;
}

void checkOutput(const std::string& path, const Section& output, const Section& before,
                 std::size_t classCount, Findings& findings) {
  if (output.number("classes") != classCount)
    findings.push_back({path, output.line, "network-classes",
                        "the layer [" + output.name + "] must have classes=" +
                            std::to_string(classCount) + ", the number of names"});
  const auto wanted = (classCount + numbersPerBox(output)) * boxesPerPlace(output);
  if (before.number("filters") != wanted)
    findings.push_back(
        {path, before.line, "network-filters",
         "the layer before [" + output.name + "] must have filters=" + std::to_string(wanted)});
}

/// Checks names that stand one a line or, if there are `numbers`, have these instead.
void checkSpelling(const std::string& path, const std::vector<std::string>& names,
                   const std::vector<int>& numbers, Findings& findings) {
  const bool haveLines = numbers.empty();
  std::unordered_map<std::string, std::size_t> earlier;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const auto line = haveLines ? i + 1 : 0;
    const auto name = trimmed(names[i]);
    if (name.empty()) {
      findings.push_back({path, line, "blank-name", "a class has no name"});
      continue;
    }
    if (name != names[i])
      findings.push_back({path, line, "name-space",
                          "white space around '" + name + "' is taken for a part of the name"});
    const auto [same, isNew] = earlier.emplace(name, i);
    if (isNew) continue;
    const auto place = haveLines ? "stands in line " + std::to_string(same->second + 1)
                                 : "is class " + std::to_string(numbers[same->second]);
    findings.push_back({path, line, "same-name", "'" + name + "' " + place + ", too"});
  }
}

std::string existing(const std::string& path, const fs::path& list) {
  std::error_code error;
  const auto beside = list.parent_path() / path;
  if (!fs::exists(path, error) && fs::exists(beside, error))
    return fs::absolute(beside).lexically_normal().generic_string();
  return fs::absolute(path).lexically_normal().generic_string();
}

}  // namespace

DataFile checkDataFile(const std::string& path, Findings& findings) {
  const auto file = readTextFile(path);
  if (!file.readable) reportUnreadable(path, "data file", findings);
  checkByteOrderMark(file, findings);
  DataFile data;
  for (std::size_t i = 0; i < file.lines.size(); ++i) {
    const auto line = trimmed(file.lines[i]);
    if (isComment(line)) continue;
    const auto [key, value] = keyAndValue(line);
    if (key.empty()) {
      findings.push_back({path, i + 1, "data-line", "a line must read key = value"});
      continue;
    }
    if (value.find_first_of(whiteSpace) != std::string::npos)
      findings.push_back({path, i + 1, "data-space",
                          "the value of " + key + " holds white space, which Darknet takes out"});
    if (value.empty()) continue;
    const auto [first, isNew] = data.values.emplace(key, value);
    if (!isNew)
      findings.push_back({path, i + 1, "data-key",
                          key + " is given twice; the first one counts, " + first->second});
  }
  for (const auto* key : {"train", "valid", "names"})
    if (file.readable && !data.values.contains(key))
      findings.push_back(
          {path, 0, "data-key", "there is no " + std::string(key) + " = ... with a value"});
  return data;
}

std::optional<std::size_t> checkNames(const std::string& path, Findings& findings) {
  const auto file = readTextFile(path);
  if (!file.readable) {
    reportUnreadable(path, "file of class names", findings);
    return std::nullopt;
  }
  checkByteOrderMark(file, findings);
  if (file.hasCarriageReturns)
    findings.push_back({path, 0, "line-end",
                        "lines end with a carriage return, which Darknet takes for a part of the "
                        "name; save the file with line feeds alone"});
  checkSpelling(path, file.lines, {}, findings);
  if (file.lines.empty()) findings.push_back({path, 0, "blank-name", "there are no class names"});
  return file.lines.size();
}

std::optional<std::size_t> checkDescription(const std::string& path, Findings& findings) {
  std::vector<std::string> names;
  std::vector<int> numbers;
  if (!WTNVToolLabelExchange::wReadClassNames(path, names, numbers)) {
    findings.push_back({path, 0, "missing-names", "there are no class names (names: ...)"});
    return std::nullopt;
  }
  checkSpelling(path, names, numbers, findings);
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (numbers[i] == static_cast<int>(i)) continue;
    findings.push_back(
        {path, 0, "class-count",
         "the numbers of the names must run from 0 without gaps; there is no name for " +
             std::to_string(i)});
    break;
  }
  // Newer trainers count the names themselves.
  const auto declared = WTNVToolLabelExchange::wReadDescription(path, "nc");
  if (!declared.empty() && wholeNumber(declared.front()) != names.size())
    findings.push_back(
        {path, 0, "class-count",
         "nc: " + declared.front() + ", but there are " + std::to_string(names.size()) + " names"});
  return names.size();
}

void checkDeclaredClasses(const std::string& path, const DataFile& data, std::size_t nameCount,
                          Findings& findings) {
  const auto declared = data.values.find("classes");
  if (declared == data.values.end()) {
    findings.push_back({path, 0, "data-key", "there is no classes = ..."});
  } else if (wholeNumber(declared->second) != nameCount) {
    findings.push_back({path, 0, "class-count",
                        "classes = " + declared->second + ", but there are " +
                            std::to_string(nameCount) + " names"});
  }
}

std::optional<Size> checkNetwork(const std::string& path, std::optional<std::size_t> classCount,
                                 Findings& findings) {
  const auto file = readTextFile(path);
  if (!file.readable) {
    reportUnreadable(path, "network file", findings);
    return std::nullopt;
  }
  checkByteOrderMark(file, findings);
  const auto sections = sectionsOf(file);
  for (std::size_t i = 1; classCount && i < sections.size(); ++i)
    if (isOutput(sections[i]))
      checkOutput(path, sections[i], sections[i - 1], *classCount, findings);
  if (std::none_of(sections.begin(), sections.end(), isOutput))
    findings.push_back({path, 0, "network-output", "there is no layer [yolo] or [region]"});
  if (sections.empty()) return std::nullopt;
  const auto width = sections.front().number("width");
  const auto height = sections.front().number("height");
  constexpr std::size_t most = 1U << 20U;
  if (!width || !height || *width == 0 || *height == 0 || *width > most || *height > most) {
    findings.push_back({path, sections.front().line, "network-input",
                        "the first section must give width and height of the input"});
    return std::nullopt;
  }
  if (*width % gridStep != 0 || *height % gridStep != 0)
    findings.push_back({path, sections.front().line, "network-input",
                        "width and height of the input must be multiples of 32"});
  return Size{static_cast<int>(*width), static_cast<int>(*height)};
}

std::vector<ListEntry> checkList(const std::string& path, Findings& findings) {
  const auto file = readTextFile(path);
  if (!file.readable) reportUnreadable(path, "list of pictures", findings);
  checkByteOrderMark(file, findings);
  if (file.hasCarriageReturns)
    findings.push_back({path, 0, "line-end",
                        "lines end with a carriage return, which Darknet takes for a part of the "
                        "path; save the file with line feeds alone"});
  std::vector<ListEntry> entries;
  for (std::size_t i = 0; i < file.lines.size(); ++i) {
    const auto& line = file.lines[i];
    const auto picture = trimmed(line);
    if (picture.empty()) {
      findings.push_back({path, i + 1, "empty-line", "an empty line is taken for a picture"});
      continue;
    }
    if (picture != line)
      findings.push_back(
          {path, i + 1, "list-space", "white space around the path is taken for a part of it"});
    entries.push_back({existing(picture, path), i + 1});
  }
  return entries;
}
