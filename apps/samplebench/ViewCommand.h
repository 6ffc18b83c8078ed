#pragma once

#include <string>

#include "Output.h"

struct ViewOptions {
  std::string directory;
  std::string name;
  std::string file;
  int count = 24;
};

/// Writes a sample of a training set with the boxes of its label text, or a sheet of the first
/// samples, to a file. Throws CommandError.
void runView(const ViewOptions& options, Output& output);
