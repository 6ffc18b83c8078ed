#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tools/LabelSet.h"

namespace tnv {

/// A format that labels come and go in. A further one is a further row of the table.
struct LabelFormat {
  std::string_view name;
  bool (*recognise)(const std::string& path);
  std::optional<LabelSet> (*read)(const std::string& path, const LabelReading& reading);
  bool (*write)(const LabelSet& set, const std::string& directory, const LabelWriting& writing);
  /// Whether what stands for a picture in the files, its path or the name of its copy, reads back.
  bool (*keepsName)(const std::string& name);
  bool needsSizes;   ///< its positions are in pixels
  bool hasOutlines;  ///< it can be written with outlines; others get the box around them
};

/// The formats in the order in which they are tried: those first that are easier told.
std::span<const LabelFormat> labelFormats();

/// The format of that name; null if there is none.
const LabelFormat* findLabelFormat(std::string_view name);

/// The first format that recognises what lies at the path; null if none does.
const LabelFormat* recogniseLabelFormat(const std::string& path);

}  // namespace tnv
