#pragma once

#include <string>

#include "ProjectAccess.h"

struct CropOptions {
  std::string project;
  std::string picture;
  std::string directory;
};

/// Writes what lies under each mark of a picture to a file of its own. Throws CommandError.
void runCrop(const Locations& locations, const CropOptions& options, Output& output);
