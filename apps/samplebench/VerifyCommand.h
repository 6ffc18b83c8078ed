#pragma once

#include <string>

#include "Output.h"

struct VerifyOptions {
  /// Directory or data file of a training set.
  std::string set;
  /// Network file; empty for the one beside the set.
  std::string network;
};

/// Shows all that a trainer would stumble over, and marks the run as one with findings if there is
/// anything. Throws CommandError if there is no set.
void runVerify(const VerifyOptions& options, Output& output);
