#include "tools/LabelNames.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <map>
#include <string_view>

#include "foundation/Files.h"
#include "foundation/Log.h"
#include "tools/LabelFiles.h"
#include "tools/YamlText.h"

namespace tnv {

namespace fs = std::filesystem;

namespace {

/// Where descriptions of either kind tell of pictures.
constexpr std::string_view kSources[] = {"train", "val", "valid", "test"};

NumberedNames numberedFromZero(std::vector<std::string> names) {
  NumberedNames classes{std::move(names), {}};
  for (std::size_t i = 0; i < classes.names.size(); ++i)
    classes.numbers.push_back(static_cast<long long>(i));
  return classes;
}

constexpr std::string_view kUnread =
    "Anchors, references, tags, blocks of lines and files in braces are not read, write the values "
    "out!";

void logUnread() {
  logLine("parseYaml: " + std::string(kUnread));
}

/// Names by number: of several with one number the first stays.
class NameMap {
 public:
  void append(std::string name) { add(next, std::move(name)); }

  /// False if the key is no number.
  bool add(std::string_view key, std::string name) {
    long long number = 0;
    const auto result = std::from_chars(key.data(), key.data() + key.size(), number);
    if (key.empty() || result.ec != std::errc() || result.ptr != key.data() + key.size())
      return false;
    add(number, std::move(name));
    return true;
  }

  /// There are names that cannot be read.
  void noteUnread() { unread = true; }

  /// Empty, with a log line, if they are too many for classes or some cannot be read.
  NumberedNames classes() const {
    NumberedNames result;
    if (unread) {
      logUnread();
      return result;
    }
    if (tooMany) {
      logLine("parseYaml: There are too many names for a list of classes!");
      return result;
    }
    for (const auto& [number, name] : byNumber) {
      result.numbers.push_back(number);
      result.names.push_back(name);
    }
    return result;
  }

 private:
  void add(long long number, std::string name) {
    tooMany = tooMany || byNumber.size() >= kMostClasses;
    if (tooMany) return;
    byNumber.try_emplace(number, std::move(name));
    ++next;
  }

  std::map<long long, std::string> byNumber;
  long long next = 0;
  bool tooMany = false;
  bool unread = false;
};

/// What follows the closing bracket is no part of the list.
void readInlineList(YamlText& text, NameMap& names) {
  while (!text.atEnd() && !text.accept(']')) {
    names.append(text.scalar(",]\n"));
    if (!text.accept(',')) return;
  }
}

void readInlineMap(YamlText& text, NameMap& names) {
  while (!text.atEnd() && !text.accept('}')) {
    const std::string key = text.scalar(":,}\n");
    if (!text.accept(':') || !names.add(key, text.scalar(",}\n"))) return;
    if (!text.accept(',')) return;
  }
}

bool isBlankOrComment(std::string_view line) {
  const std::string_view content = trimmed(line);
  return content.empty() || content.front() == '#';
}

/// Reads one line of a list or a map that stands below its key. False for a line of another kind.
bool readBlockLine(std::string_view line, NameMap& names) {
  YamlText text(line);
  bool isInside = true;
  if (text.accept('-')) {
    names.append(text.scalar("\n"));
  } else {
    const std::string key = text.scalar(":\n");
    isInside = text.accept(':') && names.add(key, text.scalar("\n"));
  }
  if (text.isUnread()) names.noteUnread();
  return isInside;
}

void readBlock(std::string_view text, NameMap& names) {
  for (const std::string_view line : splitLines(text)) {
    if (isBlankOrComment(line)) continue;
    const bool isInside = line.front() == ' ' || line.front() == '\t' || line.front() == '-';
    if (!isInside || !readBlockLine(line, names)) return;
  }
}

/// What a line has before the value of a key, without the colon; 0 if it has another key or none.
std::size_t sizeOfKey(std::string_view line, std::string_view key) {
  const bool isQuoted = line.starts_with('"') || line.starts_with('\'');
  const std::string_view text = line.substr(isQuoted ? 1 : 0);
  if (!text.starts_with(key)) return 0;
  if (!isQuoted) return key.size();
  return text.substr(key.size()).starts_with(line.front()) ? key.size() + 2 : 0;
}

/// What stands behind a key at the start of a line, from there to the end of the text.
std::optional<std::string_view> valueOf(std::string_view text, std::string_view key) {
  for (const std::string_view line : splitLines(text)) {
    const std::size_t size = sizeOfKey(line, key);
    if (size == 0) continue;
    const std::size_t colon = line.find_first_not_of(" \t", size);
    if (colon == line.npos || line[colon] != ':') continue;
    const auto begin = static_cast<std::size_t>(line.data() - text.data()) + colon + 1;
    return text.substr(begin);
  }
  return std::nullopt;
}

NumberedNames parseYamlNames(std::string_view value) {
  NameMap names;
  const std::size_t lineEnd = std::min(value.find('\n'), value.size());
  if (isBlankOrComment(value.substr(0, lineEnd))) {
    YamlText below(value);
    // A list in brackets may begin on the line below its key.
    if (!below.accept('[') && !below.accept('{')) {
      readBlock(value.substr(lineEnd), names);
      return names.classes();
    }
  }
  YamlText text(value);
  if (text.accept('[')) {
    readInlineList(text, names);
  } else if (text.accept('{')) {
    readInlineMap(text, names);
  } else {
    text.scalar("\n");
  }
  if (text.isUnread()) names.noteUnread();
  return names.classes();
}

/// A text, or a list of them in brackets or on lines of its own.
std::vector<std::string> yamlTexts(std::string_view text, std::string_view key) {
  const auto value = valueOf(text, key);
  if (!value) return {};
  if (auto listed = parseYamlNames(*value).names; !listed.empty()) return listed;
  YamlText single(value->substr(0, value->find('\n')));
  if (single.atEnd() || single.accept('[') || single.accept('{')) return {};
  std::string content = single.scalar("\n");
  return single.isUnread() ? std::vector<std::string>() : std::vector{std::move(content)};
}

bool namesNothing(const std::string& text) {
  return text.empty() || text == "~" || text == "null";
}

std::string yamlScalar(std::string_view text, std::string_view key) {
  const auto value = valueOf(text, key);
  if (!value) return {};
  return YamlText(value->substr(0, value->find('\n'))).scalar("\n");
}

/// One `key = value` a line.
std::string dataValue(std::string_view text, std::string_view key) {
  for (const std::string_view line : splitLines(text)) {
    const std::size_t sign = line.find('=');
    if (sign != line.npos && trimmed(line.substr(0, sign)) == key)
      return std::string(trimmed(line.substr(sign + 1)));
  }
  return {};
}

/// Darknet takes paths from where it is started, which is often one directory up; people move the
/// files together with their data file.
std::string besideOrAsWritten(const std::string& path, const fs::path& directory) {
  if (const auto found = findUpwards(path, {directory})) return *found;
  std::error_code error;
  const fs::path beside = directory / fs::path(path).filename();
  return (fs::exists(beside, error) ? beside : directory / path).string();
}

std::optional<LabelDescription> parseDarknetData(const std::string& text,
                                                 const fs::path& directory) {
  const std::string file = dataValue(text, "names");
  if (file.empty()) return std::nullopt;
  auto names = readNames(besideOrAsWritten(file, directory));
  if (!names) return std::nullopt;
  LabelDescription description{numberedFromZero(std::move(*names)), {}};
  for (const std::string_view key : kSources) {
    if (const std::string source = dataValue(text, key); !source.empty())
      description.sources.push_back(besideOrAsWritten(source, directory));
  }
  return description;
}

/// Sets that were packed for others have a `../` too many before their directories.
std::string withoutStepUp(std::string path) {
  return path.starts_with("../") ? path.substr(3) : path;
}

/// The places of pictures under one key, as they are written below the `path` of the set.
std::vector<std::string> yamlSources(std::string_view text, std::string_view key) {
  const fs::path root = yamlScalar(text, "path");
  std::vector<std::string> sources;
  for (const std::string& source : yamlTexts(text, key)) {
    if (!namesNothing(source)) sources.push_back((root / source).string());
  }
  return sources;
}

void resolveYamlSources(std::vector<std::string>& sources, const fs::path& directory) {
  for (std::string& source : sources) {
    std::error_code error;
    const fs::path asWritten = directory / source;
    source =
        (fs::exists(asWritten, error) ? asWritten : directory / withoutStepUp(source)).string();
  }
}

std::string singleQuoted(std::string_view name) {
  std::string text = "'";
  for (const char c : name)
    text += c == '\'' ? std::string("''") : std::string(1, c);
  return text + "'";
}

}  // namespace

bool isYaml(const std::string& file) {
  return hasExtension(file, ".yaml") || hasExtension(file, ".yml");
}

bool isDarknetData(const std::string& file) {
  return hasExtension(file, ".data");
}

LabelDescription parseYaml(const std::string& text) {
  const std::string_view content = withoutByteOrderMark(text);
  LabelDescription description;
  if (YamlText(content).accept('{')) logUnread();
  if (const auto names = valueOf(content, "names")) description.classes = parseYamlNames(*names);
  for (const std::string_view key : kSources) {
    for (std::string& source : yamlSources(content, key))
      description.sources.push_back(std::move(source));
  }
  return description;
}

std::optional<LabelDescription> readDescription(const std::string& file) {
  const bool hasKeys = isYaml(file) || isDarknetData(file);
  if (!hasKeys) {
    auto names = readNames(file);
    if (!names) return std::nullopt;
    return LabelDescription{numberedFromZero(std::move(*names)), {}};
  }
  const auto content = readFile(file);
  if (!content) return std::nullopt;
  const fs::path directory = fs::path(absolutePicturePath(file)).parent_path();
  if (isDarknetData(file))
    return parseDarknetData(std::string(withoutByteOrderMark(*content)), directory);
  LabelDescription description = parseYaml(*content);
  if (description.classes.names.empty()) return std::nullopt;
  resolveYamlSources(description.sources, directory);
  return description;
}

std::optional<NumberedNames> readGivenNames(const std::string& file, std::string_view who) {
  auto description = readDescription(file);
  if (description) return std::move(description->classes);
  logNoNamesIn(file, who);
  return std::nullopt;
}

void logNoNamesIn(const std::string& file, std::string_view who) {
  // Here, too, for only the last line may be looked at.
  const std::string hint = isYaml(file) ? " " + std::string(kUnread) : std::string();
  logLine(std::string(who) + ": No class names in '" + file + "'!" + hint);
}

std::vector<std::string> readYamlTexts(const std::string& file, const std::string& key) {
  const auto content = isYaml(file) ? readFile(file) : std::nullopt;
  if (!content) return {};
  const std::string_view text = withoutByteOrderMark(*content);
  if (std::find(std::begin(kSources), std::end(kSources), key) == std::end(kSources))
    return yamlTexts(text, key);
  std::vector<std::string> sources = yamlSources(text, key);
  resolveYamlSources(sources, fs::path(absolutePicturePath(file)).parent_path());
  for (std::string& source : sources)
    source = absolutePicturePath(source);
  return sources;
}

std::string yamlText(const std::vector<std::string>& names, const std::string& pictures) {
  std::string text = "train: " + pictures + "\nval: " + pictures + "\nnames:\n";
  for (std::size_t i = 0; i < names.size(); ++i)
    text += "  " + std::to_string(i) + ": " + singleQuoted(names[i]) + "\n";
  return text;
}

}  // namespace tnv
