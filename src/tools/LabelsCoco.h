#pragma once

#include <optional>
#include <string>

#include "tools/LabelSet.h"

namespace tnv {

/// Whether the path is a COCO file of boxes, or a directory with some.
bool isCocoLabels(const std::string& path);

/// Reads the COCO files at the path: a file, or all that lie in a directory and in `annotations`
/// below it; those of one name in several files are one class. Classes come in the order of the
/// names file that is set, and behind those in the order of their ids, which may have gaps. An
/// annotation of one polygon is an outline; one of several polygons or with a mask is its box.
/// Those of a crowd stand for no single object and are rejected. Nothing, with a log line, if there
/// is no such file.
std::optional<LabelSet> readCocoLabels(const std::string& path, const LabelReading& reading);

/// Writes `annotations.json`, which names the pictures by their paths or, copied, as they lie in
/// `images/`. The sizes of all pictures must be known. False, with a log line, if something could
/// not be written.
bool writeCocoLabels(const LabelSet& set, const std::string& directory,
                     const LabelWriting& writing);

}  // namespace tnv
