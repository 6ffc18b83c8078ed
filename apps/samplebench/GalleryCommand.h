#pragma once

#include <string>

#include "ProjectAccess.h"

struct GalleryOptions {
  std::string project;
  /// Empty for none.
  std::string report;
};

/// Cuts all marks out and counts the cuts of each class; writes a page of them if wanted. Throws
/// CommandError, with the exit code of an interrupt if the user stops the run.
void runGallery(const Locations& locations, const GalleryOptions& options, Output& output);
