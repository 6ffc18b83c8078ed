#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "verify/Finding.h"

/// What tells a picture apart from others.
struct PictureMarks {
  std::uint64_t content = 0;  ///< a hash of the file's bytes
  std::size_t bytes = 0;

  /// A coarse look, the same for turned and mirrored copies; nothing for a picture without
  /// features.
  std::optional<std::uint64_t> look;
};

/// Checks that a picture can be read, is whole and no mere dot, and carries no orientation tag,
/// which some trainers follow and others don't. Nothing if it cannot be read.
std::optional<PictureMarks> checkPicture(const std::string& path, Findings& findings);

/// Whether the file is a JPEG that breaks off: decoders fill the rest with grey and say nothing.
bool isCutJpeg(const std::string& path);

/// Whether the pixels can be read. Those of a JPEG can, as far as they go.
bool isDecodable(const std::string& path);

/// In how many of its 64 features one look differs from another.
int lookDistance(std::uint64_t a, std::uint64_t b);

/// Whether two files have the same bytes.
bool haveSameContent(const std::string& a, const std::string& b);
