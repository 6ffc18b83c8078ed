#pragma once

#include <string>

/// A label for the state of a train set in the user's process.
class TNVWorkflow {
 public:
  explicit TNVWorkflow(int idx) : uniqueIdx(idx) {}

  int uniqueIdx;  ///< identity within the project, never changes
  std::string name = "Default Workflow";
};
