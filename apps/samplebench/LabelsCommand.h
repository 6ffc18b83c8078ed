#pragma once

#include <string>

#include "ProjectAccess.h"

struct LabelsOptions {
  std::string project;
  std::string set;
  std::string path;
  std::string format;
  std::string names;
  std::string pictures;
  std::string workflow;
  std::string rejections;
  int base = 1;
  bool clip = false;
  bool copy = false;
};

/// Adds classes, pictures and marks from labels of another program and saves. Throws CommandError.
void runLabelsImport(const Locations& locations, const LabelsOptions& options, Output& output);

/// Writes the marks of a project as labels for other programs. Throws CommandError.
void runLabelsExport(const Locations& locations, const LabelsOptions& options, Output& output);
