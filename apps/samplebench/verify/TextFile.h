#pragma once

#include <string>
#include <vector>

#include "verify/Finding.h"

/// A text of a training set, cut into lines without their line ends.
struct TextFile {
  std::string path;
  bool readable = false;
  std::vector<std::string> lines;
  bool hasByteOrderMark = false;
  bool hasCarriageReturns = false;
};

/// Reads a text. A byte order mark and carriage returns are taken off and remembered.
TextFile readTextFile(const std::string& path);

/// Trainers take a byte order mark for a part of the first line.
void checkByteOrderMark(const TextFile& file, Findings& findings);

/// The text without white space at both ends.
std::string trimmed(const std::string& text);

/// The parts of the text between white space.
std::vector<std::string> fieldsOf(const std::string& text);
