#pragma once

#include <string>

/// Throws CommandError unless the file holds a tree of augmentation tasks that a run can use: one
/// root task, all tasks of a known kind, and at least one that saves. The library passes over what
/// it does not know without a word.
void requireTaskTree(const std::string& file);
