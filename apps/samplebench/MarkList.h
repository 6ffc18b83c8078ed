#pragma once

#include <istream>
#include <string>
#include <vector>

#include "Numbers.h"

/// A mark that is wanted.
struct MarkRequest {
  /// File and line that it stands in, followed by ": "; empty if it comes from the command line.
  std::string where;
  std::string picture;
  std::string form;
  std::string className;
  std::vector<Point> points;
};

/// Reads a list of marks, one a line: picture, form, class and points, parted by tabs, the points
/// "x,y" by blanks. Empty lines and lines that begin with '#' are passed over. Throws CommandError
/// with file name, line and reason for any other line, and if the list cannot be read to its end.
std::vector<MarkRequest> parseMarkList(std::istream& list, const std::string& fileName);
