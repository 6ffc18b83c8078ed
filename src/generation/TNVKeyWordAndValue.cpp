#include "generation/TNVKeyWordAndValue.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "foundation/Files.h"
#include "foundation/Log.h"
#include "foundation/TNVDirectory.h"

namespace {

constexpr std::string_view kFence = "###";
constexpr std::string_view kNoDefault = "NO DEFAULT VALUE";

// Latin-1, as front ends expect these two.
constexpr std::string_view kLengthsDiffer =
    "Replace konnte nicht ausgef\xFC"
    "hrt werden. Die Listenl\xE4"
    "nge stimmt nicht \xFC"
    "berein. ";
constexpr std::string_view kDefaultMissing =
    "Replace konnte nicht ausgef\xFC"
    "hrt werden. Default Value wurde nicht gesetzt. ";

struct Keyword {
  std::string name;
  std::string value;
  std::string text;
};

Keyword parseKeyword(std::string_view text) {
  const auto equals = text.find('=');
  const auto value = equals == text.npos ? std::string_view() : text.substr(equals + 1);
  return {std::string(text.substr(0, equals)), std::string(value), std::string(text)};
}

/// Where the next fence starts that is followed by something else than a number sign.
std::size_t findOpening(std::string_view line, std::size_t from) {
  auto at = line.find(kFence, from);
  while (at != line.npos && at + kFence.size() < line.size() && line[at + kFence.size()] == '#') {
    ++at;
  }
  return at;
}

/// The texts that "(###)[^#].*?(?=###)" matches, without the fence before each. `std::regex` would
/// need a stack as deep as the line is long.
std::vector<std::string_view> findKeywords(std::string_view line) {
  std::vector<std::string_view> texts;
  auto opening = findOpening(line, 0);
  while (opening != line.npos) {
    const auto start = opening + kFence.size();
    const auto end = line.find(kFence, start + 1);
    if (end == line.npos) break;
    const std::string_view text = line.substr(start, end - start);
    // Any character but a number sign may come first, but the point matches no carriage return.
    if (text.find('\r', 1) == text.npos) texts.push_back(text);
    opening = findOpening(line, end);
  }
  return texts;
}

/// The keywords of a template whose names are not among `known`, each name once.
std::vector<Keyword> readKeywords(const std::string& file, std::unordered_set<std::string> known) {
  std::vector<Keyword> keywords;
  for (const std::string& line : TNVDirectory::readLines(file)) {
    for (const std::string_view text : findKeywords(line)) {
      Keyword keyword = parseKeyword(text);
      if (known.insert(keyword.name).second) keywords.push_back(std::move(keyword));
    }
  }
  return keywords;
}

void replaceAll(std::string& line, const std::string& search, const std::string& value) {
  for (auto at = line.find(search); at != line.npos; at = line.find(search, at)) {
    line.replace(at, search.size(), value);
  }
}

}  // namespace

void TNVKeyWordAndValue::getAvailableKeys() {
  for (Keyword& keyword : readKeywords(sourceFile, {keys.begin(), keys.end()})) {
    if (keyword.value.empty()) {
      tnv::logLine(keyword.name + " has no default value set!");
      keyword.value = kNoDefault;
    }
    keys.push_back(std::move(keyword.name));
    values.push_back(std::move(keyword.value));
    keywords.push_back(std::move(keyword.text));
  }
}

std::vector<std::string> TNVKeyWordAndValue::getAvailableKeysAndValues() const {
  std::vector<std::string> result;
  for (Keyword& keyword : readKeywords(sourceFile, {})) {
    result.push_back(std::move(keyword.name));
    result.push_back(std::move(keyword.value));
  }
  return result;
}

bool TNVKeyWordAndValue::setValueForKey(const std::string& key, const std::string& value) {
  const auto found = std::find(keys.begin(), keys.end(), key);
  if (found == keys.end()) {
    tnv::logLine("setValueForKey: " + key + " Element  Not Found");
    return false;
  }
  values.at(static_cast<std::size_t>(found - keys.begin())) = value;
  return true;
}

void TNVKeyWordAndValue::replace() const {
  if (keys.size() != values.size()) return tnv::logLine(kLengthsDiffer);
  if (std::find(values.begin(), values.end(), kNoDefault) != values.end()) {
    return tnv::logLine(kDefaultMissing);
  }
  std::vector<std::string> searches;
  for (const std::string& keyword : keywords) {
    searches.push_back(std::string(kFence) + keyword + std::string(kFence));
  }
  std::string text;
  for (std::string& line : TNVDirectory::readLines(sourceFile)) {
    for (std::size_t i = 0; i < searches.size() && line.find(kFence) != line.npos; ++i) {
      replaceAll(line, searches[i], values[i]);
    }
    text += line + '\n';
  }
  tnv::replaceFile(targetFile, text);
}
