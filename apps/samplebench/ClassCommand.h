#pragma once

#include <string>
#include <vector>

#include "ProjectAccess.h"

struct ClassEditOptions {
  std::string project;
  /// Those to be merged, deleted or put in order.
  std::vector<std::string> names;
  /// The one to be renamed.
  std::string name;
  /// The new name, or the class that takes the marks of the others over.
  std::string target;
  /// Delete marks that have no other class, too.
  bool withMarks = false;
};

/// Work on classes across all marks of a project. Numbers run from 0 without gaps afterwards. A dry
/// run counts what would change.
void runClassRename(const Locations& locations, const ClassEditOptions& options, Output& output);
void runClassMerge(const Locations& locations, const ClassEditOptions& options, Output& output);
void runClassDelete(const Locations& locations, const ClassEditOptions& options, Output& output);
void runClassOrder(const Locations& locations, const ClassEditOptions& options, Output& output);
