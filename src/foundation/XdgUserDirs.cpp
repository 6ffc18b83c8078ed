#include "foundation/XdgUserDirs.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "foundation/Files.h"

namespace tnv {

namespace {

constexpr std::string_view kKey = "XDG_DOCUMENTS_DIR=";
constexpr std::string_view kHome = "$HOME";
constexpr std::string_view kBlanks = " \t";

/// What a shell makes of the text between double quotes that the value starts with.
std::optional<std::string> unquoted(std::string_view value) {
  if (value.empty() || value.front() != '"') return std::nullopt;
  std::string text;
  for (std::size_t i = 1; i < value.size(); ++i) {
    if (value[i] == '"') return text;
    if (value[i] == '\\' && i + 1 < value.size()) ++i;
    text += value[i];
  }
  return std::nullopt;
}

std::string withoutSlashes(std::string path) {
  while (path.ends_with('/'))
    path.pop_back();
  return path;
}

/// Only absolute paths and those below the home directory count.
std::optional<std::string> resolved(const std::string& value, const std::string& home) {
  if (value.starts_with('/')) return withoutSlashes(value);
  if (value == kHome || value.starts_with(std::string(kHome) + "/"))
    return withoutSlashes(home + value.substr(kHome.size()));
  return std::nullopt;
}

}  // namespace

std::string xdgDocumentsDirectory(const std::string& userDirs, const std::string& home) {
  std::string directory;
  for (std::string_view line : splitLines(userDirs)) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    if (!line.starts_with(kKey)) continue;
    // As in a shell, the last assignment holds.
    if (const auto value = unquoted(line.substr(kKey.size())))
      directory = resolved(*value, home).value_or(directory);
  }
  return directory;
}

}  // namespace tnv
