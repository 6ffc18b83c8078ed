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

/// What a shell makes of a text between double quotes, from behind the first one.
std::optional<std::string> unquoted(std::string_view value) {
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] == '"') return text;
    if (value[i] == '\\' && i + 1 < value.size()) ++i;
    text += value[i];
  }
  return std::nullopt;
}

/// Only absolute paths and those below the home directory count.
std::optional<std::string> directoryOf(std::string_view value, const std::string& home) {
  if (!value.starts_with('"')) return std::nullopt;
  value.remove_prefix(1);
  const bool belowHome = value.starts_with(kHome);
  if (belowHome) value.remove_prefix(kHome.size());
  const auto path = unquoted(value);
  if (!path) return std::nullopt;
  if (belowHome && path->empty()) return withOneSlash(home);
  if (!path->starts_with('/')) return std::nullopt;
  return withOneSlash(belowHome ? withOneSlash(home) + path->substr(1) : *path);
}

}  // namespace

std::string xdgDocumentsDirectory(const std::string& userDirs, const std::string& home) {
  std::string directory;
  for (std::string_view line : splitLines(userDirs)) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    if (!line.starts_with(kKey)) continue;
    // As in a shell, the last assignment holds.
    directory = directoryOf(line.substr(kKey.size()), home).value_or(directory);
  }
  return directory;
}

}  // namespace tnv
