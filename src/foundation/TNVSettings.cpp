#include "foundation/TNVSettings.h"

#include <algorithm>
#include <utility>

#include "foundation/FileReplacements.h"
#include "foundation/Files.h"
#include "foundation/Log.h"
#include "foundation/Numbers.h"
#include "foundation/TNVDirectory.h"

namespace {

/// Cuts at each separator. What follows the last one is always an item; an empty text has none.
std::vector<std::string> splitList(std::string text, char separator) {
  std::erase_if(text, [](char c) { return c == '{' || c == '}'; });
  std::vector<std::string> items;
  if (text.empty()) return items;
  std::size_t start = 0;
  for (auto end = text.find(separator); end != std::string::npos;
       end = text.find(separator, start)) {
    items.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  items.push_back(text.substr(start));
  return items;
}

template <class Items, class ToText>
std::string joinList(const Items& items, ToText toText) {
  std::string text;
  for (const auto& item : items) {
    if (&item != &*items.begin()) text += ',';
    text += toText(item);
  }
  return text;
}

std::string inQuotes(const std::string& text) {
  return '"' + text + '"';
}

std::string upperCased(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
    return static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
  });
  return text;
}

}  // namespace

TNVSettings::TNVSettings(std::string filePath) : path(std::move(filePath)), ignored{' ', '\t'} {}

bool TNVSettings::loadFile() {
  if (!TNVDirectory::exists(path)) {
    tnv::logLine("TNVSettings::loadFile: Could not find settings file at '" + path + "' !");
    return false;
  }
  const std::lock_guard lock(mutex);
  const auto content = tnv::readFile(path);
  if (!content) return true;
  values.clear();
  for (std::string_view line : tnv::splitLines(*content)) {
    // Files that were edited on another platform.
    if (line.ends_with('\r')) line.remove_suffix(1);
    readLine(line);
  }
  return true;
}

void TNVSettings::readLine(std::string_view line) {
  std::string key;
  std::string value;
  std::string* target = &key;
  bool inText = false;
  bool quoteSeen = false;
  bool separatorSeen = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    const bool escaped = i > 0 && line[i - 1] == '\\';
    if (!inText && std::find(ignored.begin(), ignored.end(), c) != ignored.end()) continue;
    if (c == '"' && !escaped) {
      inText = !inText;
      quoteSeen = true;
    } else if (inText && c == '\\') {
      if (escaped) *target += c;
    } else if (!inText && c == '/') {
      if (i + 1 < line.size() && line[i + 1] == '/') break;
    } else if (c == '=') {
      target = &value;
      separatorSeen = true;
    } else {
      *target += c;
    }
  }
  if (!separatorSeen) return;
  values.emplace(key, value);
  if (quoteSeen) quoted[key] = 1;
}

bool TNVSettings::saveFile() {
  const std::lock_guard lock(mutex);
  std::string text;
  for (const auto& [key, value] : values) {
    const auto flag = quoted.find(key);
    const bool inText = flag != quoted.end() && flag->second == 1;
    text += key + " = " + (inText ? inQuotes(value) : value) + "\n";
  }
  return tnv::replaceForGood(path, text);
}

const std::string* TNVSettings::find(const std::string& key) const {
  const auto entry = values.find(key);
  return entry == values.end() ? nullptr : &entry->second;
}

void TNVSettings::setValue(const std::string& key, const std::string& text, int quotedFlag) {
  values[key] = text;
  if (quotedFlag == 0) {
    quoted.erase(key);
  } else {
    quoted[key] = quotedFlag;
  }
}

void TNVSettings::setBare(const std::string& key, const std::string& text) {
  const std::lock_guard lock(mutex);
  setValue(key, text, 0);
}

bool TNVSettings::survivesInList(std::string_view text) {
  return text.find_first_of(",={}\"\\\n") == text.npos;
}

bool TNVSettings::contains(const std::string& key) const {
  const std::lock_guard lock(mutex);
  return find(key) != nullptr;
}

std::string TNVSettings::getString(const std::string& key, const std::string& defaultValue) const {
  const std::lock_guard lock(mutex);
  const std::string* value = find(key);
  return value ? *value : defaultValue;
}

void TNVSettings::setString(const std::string& key, const std::string& text) {
  const std::lock_guard lock(mutex);
  setValue(key, text, 1);
}

bool TNVSettings::getBool(const std::string& key, bool defaultValue) const {
  const std::lock_guard lock(mutex);
  const std::string* value = find(key);
  if (!value) return defaultValue;
  const std::string upper = upperCased(*value);
  return upper == "TRUE" || upper == "YES";
}

void TNVSettings::setBool(const std::string& key, bool value) {
  setBare(key, value ? "YES" : "NO");
}

int TNVSettings::getInt(const std::string& key, int defaultValue) const {
  const std::lock_guard lock(mutex);
  const std::string* value = find(key);
  return value ? tnv::parseInt(*value) : defaultValue;
}

void TNVSettings::setInt(const std::string& key, int value) {
  setBare(key, std::to_string(value));
}

std::vector<int> TNVSettings::getIntList(const std::string& key,
                                         const std::vector<int>& defaultValue) const {
  const std::lock_guard lock(mutex);
  const std::string* value = find(key);
  if (!value) return defaultValue;
  std::vector<int> result;
  for (const std::string& item : splitList(*value, ','))
    result.push_back(tnv::parseInt(item));
  return result;
}

void TNVSettings::setIntList(const std::string& key, const std::vector<int>& items) {
  setBare(key, joinList(items, [](int item) { return std::to_string(item); }));
}

std::vector<float> TNVSettings::getFloatList(const std::string& key,
                                             const std::vector<float>& defaultValue) const {
  const std::lock_guard lock(mutex);
  const std::string* value = find(key);
  if (!value) return defaultValue;
  std::vector<float> result;
  for (const std::string& item : splitList(*value, ',')) {
    result.push_back(static_cast<float>(tnv::parseDouble(item)));
  }
  return result;
}

void TNVSettings::setFloatList(const std::string& key, const std::vector<float>& items) {
  setBare(key, joinList(items, [](float item) { return tnv::formatFixed(double{item}); }));
}

std::vector<std::string> TNVSettings::getStringList(
    const std::string& key, const std::vector<std::string>& defaultValue) const {
  const std::lock_guard lock(mutex);
  const std::string* value = find(key);
  return value ? splitList(*value, ',') : defaultValue;
}

void TNVSettings::setStringList(const std::string& key, const std::vector<std::string>& items) {
  setBare(key, joinList(items, inQuotes));
}

std::map<std::string, std::string> TNVSettings::getStringMap(
    const std::string& key, const std::map<std::string, std::string>& defaultValue) const {
  const std::lock_guard lock(mutex);
  const std::string* value = find(key);
  if (!value) return defaultValue;
  std::map<std::string, std::string> result;
  for (const std::string& item : splitList(*value, ',')) {
    const auto parts = splitList(item, '>');
    if (parts.size() == 2) result.emplace(parts[0], parts[1]);
  }
  return result;
}

void TNVSettings::setStringMap(const std::string& key,
                               const std::map<std::string, std::string>& items) {
  setBare(key, joinList(items, [](const auto& pair) {
            return inQuotes(pair.first) + ">" + inQuotes(pair.second);
          }));
}
