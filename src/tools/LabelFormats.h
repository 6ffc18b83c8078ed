#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/LabelSet.h"

namespace tnv {

/// A format that labels come and go in. A further one is a further row of the table.
struct LabelFormat {
  std::string_view name;
  /// True only if labels were seen, or a description that tells where they lie.
  bool (*holdsLabels)(const std::string& path);
  bool (*isSet)(const std::string& path);  ///< with labels, or at least as it looks
  std::optional<LabelSet> (*read)(const std::string& path, const LabelReading& reading);
  bool (*write)(const LabelSet& set, const std::string& directory, const LabelWriting& writing);
  /// Whether what stands for a picture in the files, its path or the name of its copy, reads back.
  bool (*keepsName)(const std::string& name);
  bool needsUtf8;  ///< other bytes cannot be told in it
};

/// The formats in the order in which sets without labels are told: those first that are easier.
std::span<const LabelFormat> labelFormats();

/// The format of that name; null if there is none.
const LabelFormat* findLabelFormat(std::string_view name);

/// The formats that what lies at the path has labels of: several if there are labels of several,
/// none if there are none. Where no labels were seen there may still be a set without any.
std::vector<const LabelFormat*> recogniseLabelFormats(const std::string& path);

}  // namespace tnv
