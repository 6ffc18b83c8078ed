#pragma once

#include <string>

#include "ProjectAccess.h"

struct DemoOptions {
  std::string directory;
  /// A directory of the user's own pictures; empty to draw some.
  std::string pictures;
};

/// Walks the whole road in one directory: pictures, project, classes, marks, a rendered picture, a
/// training set, and reads that back. Throws CommandError.
void runDemo(const Locations& locations, const DemoOptions& options, Output& output);
