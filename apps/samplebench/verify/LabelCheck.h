#pragma once

#include <cstddef>
#include <optional>

#include "Numbers.h"
#include "verify/TextFile.h"

/// What is known of a set when its labels are looked at.
struct LabelRules {
  std::optional<std::size_t> classCount;
  std::optional<Size> networkInput;  ///< pixels
};

/// Checks a label text: a line for each box with its class number, centre and size, the latter
/// relative to the picture. Returns the number of lines that are labels.
std::size_t checkLabels(const TextFile& file, const LabelRules& rules, Findings& findings);
