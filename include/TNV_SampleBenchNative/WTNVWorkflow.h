#pragma once

#include <string>

#include "TNV_SampleBenchNative/Export.h"

class TNVWorkflow;

/// Handle on a workflow: a label for the state of a train set in the user's process. The project
/// owns the workflow; the handle owns nothing and dangles once the workflow was removed. For use on
/// the front end's thread.
class TNV_SAMPLEBENCH_API WTNVWorkflow {
 public:
  /// A null handle.
  WTNVWorkflow();
  explicit WTNVWorkflow(TNVWorkflow* workflow);
  WTNVWorkflow(const WTNVWorkflow& other);
  WTNVWorkflow& operator=(const WTNVWorkflow& other);
  ~WTNVWorkflow();

  /// The workflow itself, borrowed; null for a null handle.
  TNVWorkflow* getNativeWorkflow() const;

  /// Whether the handle is not null.
  bool isValid() const;

  /// The name. The handle must not be null.
  std::string wGetName() const;

 private:
  TNVWorkflow* native;
};
