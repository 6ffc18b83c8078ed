#pragma once

#include <string>
#include <vector>

#include "DesignedMark.h"
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
  bool assist = false;
};

/// Marks one picture, or all that a list names, and saves. Nothing is saved if one mark will not
/// do. Throws CommandError.
void runMark(const Locations& locations, const MarkOptions& options, Output& output);

struct MarkManner {
  PointUnit unit = PointUnit::relative;
  /// Whether each mark snaps to the object under it before it is added.
  bool assist = false;
};

/// Adds the marks in memory; all are checked first. Returns how many pictures they lie on.
std::size_t addMarks(WTNVProject& project, const std::vector<MarkRequest>& requests,
                     const MarkManner& manner, Output& output);
