#pragma once

#include <string>

#include "ProjectAccess.h"

struct StatsOptions {
  /// A project, or the directory or data file of a training set.
  std::string subject;
  /// A page to write; empty for none.
  std::string report;
};

/// Shows how many pictures, marks and boxes of which sizes there are.
void runStats(const Locations& locations, const StatsOptions& options, Output& output);
