#pragma once

#include <string>

#include "ProjectAccess.h"

struct CropOptions {
  std::string project;
  std::string picture;
  std::string directory;
};

/// Writes what lies under each mark of a picture to a file of its own, named after the picture, or,
/// where another picture of the project has that name, after the image set and the picture. An
/// earlier crop is replaced. A mark that cannot be cut out is a finding. Throws CommandError.
void runCrop(const Locations& locations, const CropOptions& options, Output& output);
