#pragma once

#include <string>
#include <utility>
#include <vector>

#include "ProjectAccess.h"

namespace CLI {
class App;
}
struct ProgramOptions;

/// The command that adds the pictures of a directory to an image set.
void addImportCommand(CLI::App& app, ProgramOptions& program);

/// What a directory holds, by absolute paths, sorted.
struct FoundPictures {
  std::vector<std::string> pictures;
  /// Those that cannot be taken in, and why.
  std::vector<std::pair<std::string, std::string>> rejected;
};

/// Throws CommandError if there are no pictures that can be taken in.
FoundPictures picturesIn(const WTNVProject& project, const std::string& directory, bool recursive);

struct ImportResult {
  std::size_t added = 0;
  std::size_t alreadyThere = 0;
};

/// Adds them in memory only. Throws CommandError.
ImportResult importPictures(WTNVProject& project, const std::string& set,
                            const std::string& directory, bool recursive);

/// The same with pictures that were found already, at least one, by their absolute paths.
ImportResult addPictures(WTNVProject& project, const std::string& set,
                         const std::vector<std::string>& pictures);
