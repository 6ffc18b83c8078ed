#pragma once

#include <string>

#include "ProjectAccess.h"

struct ImportOptions {
  std::string project;
  std::string set;
  std::string directory;
  bool recursive = false;
};

/// Adds the pictures of a directory to an image set and saves. Throws CommandError.
void runImport(const Locations& locations, const ImportOptions& options, Output& output);

struct ImportResult {
  std::size_t added = 0;
  std::size_t alreadyThere = 0;
};

/// The same in memory only.
ImportResult importPictures(WTNVProject& project, const std::string& set,
                            const std::string& directory, bool recursive);

/// The same with pictures that were found already, at least one, by their absolute paths.
ImportResult addPictures(WTNVProject& project, const std::string& set,
                         const std::vector<std::string>& pictures);
