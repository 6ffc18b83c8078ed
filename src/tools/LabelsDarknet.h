#pragma once

#include <optional>
#include <string>

#include "tools/LabelSet.h"

namespace tnv {

/// Whether the path has a text with labels, or a description that tells where the pictures lie.
bool holdsDarknetLabels(const std::string& path);

/// Whether the path is a data file, a `data.yaml`, or a directory with texts or such a file.
bool isDarknetLabels(const std::string& path);

/// Reads label texts with their pictures: beside them, or in an `images` tree that has a `labels`
/// tree beside it. The path is a directory, a Darknet data file or a `data.yaml`. A picture without
/// a text belongs to the set and has no labels. Nothing, with a log line, if there is no such set.
std::optional<LabelSet> readDarknetLabels(const std::string& path, const LabelReading& reading);

/// Writes `labels/`, `classes.txt` and `data.yaml`, with the pictures in `images/` or the list of
/// them in `pictures.txt`. False, with a log line, if something could not be written.
bool writeDarknetLabels(const LabelSet& set, const std::string& directory,
                        const LabelWriting& writing);

}  // namespace tnv
