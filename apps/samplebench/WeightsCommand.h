#pragma once

#include <string>

#include "Output.h"

struct WeightsOptions {
  std::string address;
  std::string directory;
  std::string name;
};

/// The commands about a directory of weights and the portal that offers them. All throw
/// CommandError.

/// Each file of the portal and of the directory with its state.
void runWeightsList(const WeightsOptions& options, Output& output);

/// Fetches a file, with progress, and checks what came.
void runWeightsGet(const WeightsOptions& options, Output& output);

/// Copies a file, `name`, into the directory.
void runWeightsImport(const WeightsOptions& options, Output& output);

void runWeightsRemove(const WeightsOptions& options, Output& output);
