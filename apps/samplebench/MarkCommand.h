#pragma once

#include <string>
#include <vector>

#include "MarkList.h"
#include "ProjectAccess.h"

struct MarkOptions {
  std::string project;
  std::string picture;
  std::string form;
  std::string className;
  std::vector<std::string> points;
  std::string list;
  bool pixels = false;
};

/// Marks one picture, or all that a list names, and saves. Nothing is saved if one mark will not
/// do. Throws CommandError.
void runMark(const Locations& locations, const MarkOptions& options, Output& output);

enum class PointUnit { relative, pixels };

/// Adds the marks in memory; all are checked first. Returns how many pictures they lie on.
std::size_t addMarks(WTNVProject& project, const std::vector<MarkRequest>& requests, PointUnit unit,
                     Output& output);

/// The form and the points to design a mark with that has the form and the points that were asked
/// for, for the two differ: see the definition.
struct Design {
  std::string form;
  std::vector<Point> points;
};
Design designFor(const std::string& form, const std::vector<Point>& points);
