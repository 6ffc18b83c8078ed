#pragma once

#include <optional>
#include <string>

#include "tools/LabelSet.h"

namespace tnv {

/// Whether the path is a Pascal VOC file, or a directory with some.
bool isVocLabels(const std::string& path);

/// Reads the Pascal VOC files at the path: a file, or all in and below a directory. Classes come in
/// the order of `classes.txt` or the names file that is set, and behind those in the order in which
/// they are met. With base 1 the first pixel has the number 1, and a box from 1 to the width covers
/// the picture. Nothing, with a log line, if there is no such file.
std::optional<LabelSet> readVocLabels(const std::string& path, const LabelReading& reading);

/// Writes `Annotations/` and `classes.txt`, with the pictures in `JPEGImages/` or named by their
/// paths. The sizes of all pictures must be known. False, with a log line, if something could not
/// be written.
bool writeVocLabels(const LabelSet& set, const std::string& directory, const LabelWriting& writing);

}  // namespace tnv
