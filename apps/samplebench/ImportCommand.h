#pragma once

#include <string>

#include "ProjectAccess.h"

namespace CLI {
class App;
}
struct ProgramOptions;

/// The command that adds the pictures of a directory to an image set.
void addImportCommand(CLI::App& app, ProgramOptions& program);

/// The pictures of a directory, by their absolute paths, sorted; throws CommandError if there are
/// none.
std::vector<std::string> picturesIn(const WTNVProject& project, const std::string& directory,
                                    bool recursive);

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
