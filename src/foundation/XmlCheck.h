#pragma once

#include <string_view>

namespace tnv {

/// Whether a document is whole: a prolog, and elements without attributes of which each is closed,
/// of moderate depth. The parser of `cv::FileStorage` takes some cut files for whole ones, reads
/// past the end of others, and calls itself for each level.
bool isWholeXml(std::string_view document);

}  // namespace tnv
