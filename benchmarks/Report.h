#pragma once

#include <string>

#include "Compare.h"

/// Writes `performance.md` and the picture in it, `performance.svg`, into the directory.
/// `fitQuality` is the table of `printFitQuality`.
void writeReport(const std::string& directory, const Table& table, const std::string& fitQuality);
