#pragma once

#include <cstddef>
#include <optional>

#include <opencv2/core/types.hpp>

#include "Numbers.h"
#include "verify/TextFile.h"

/// A line of a label text: a class number and a box, relative to the picture.
struct LabelLine {
  std::size_t classNumber = 0;
  cv::Rect2d box;
};

/// Nothing for a line that is no five fields of that kind. What they say may be wrong nevertheless.
std::optional<LabelLine> parseLabelLine(const std::string& line);

/// How far a box may pass the edge of the picture: by what six written digits leave out.
constexpr double labelEdgeTolerance = 1e-5;

/// What is known of a set when its labels are looked at.
struct LabelRules {
  std::optional<std::size_t> classCount;
  std::optional<Size> networkInput;  ///< pixels
};

/// Checks a label text: a line for each box with its class number, centre and size, the latter
/// relative to the picture. Returns the number of lines that are labels.
std::size_t checkLabels(const TextFile& file, const LabelRules& rules, Findings& findings);
