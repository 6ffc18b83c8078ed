#pragma once

#include <string>
#include <vector>

#include "DesignedMark.h"
#include "MarkList.h"
#include "ProjectAccess.h"

namespace CLI {
class App;
}
struct ProgramOptions;

/// The command that marks one picture, or all that a list names. Nothing is saved if one mark will
/// not do.
void addMarkCommand(CLI::App& app, ProgramOptions& program);

struct MarkManner {
  PointUnit unit = PointUnit::relative;
  /// Whether each mark snaps to the object under it before it is added.
  bool assist = false;
  /// The set that pictures are looked for in; empty for all.
  std::string set;
};

/// Adds the marks in memory; all are checked first. Returns how many pictures they lie on. Throws
/// CommandError.
std::size_t addMarks(WTNVProject& project, const std::vector<MarkRequest>& requests,
                     const MarkManner& manner, Output& output);
