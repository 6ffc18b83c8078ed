#pragma once

#include <string>
#include <vector>

#include "TNV_SampleBenchNative/Export.h"
#include "TNV_SampleBenchNative/TNVObserver.h"
#include "TNV_SampleBenchNative/WTNVCallback.h"
#include "TNV_SampleBenchNative/WTNVTrainSet.h"
#include "TNV_SampleBenchNative/WTNVWorkflow.h"

class TNVHandlerTrainSet;

/// Navigation through all train sets of a project, and the fields of the current one. The main
/// process owns the handler. The wrapper is an observer registered by its address: keep it in one
/// place, and destroy it before the main process. All calls belong to the front end's thread;
/// callbacks arrive on it too, but for that of ImageLoaded, which arrives on the worker thread. The
/// destructor waits for a callback that is running there, so that callback must not wait for the
/// front end's thread.
class TNV_SAMPLEBENCH_API WTNVHandlerTrainSet : public TNVHandlerTrainSetObserver {
 public:
  explicit WTNVHandlerTrainSet(TNVHandlerTrainSet* handler);

  /// Another observer of the same handler, without callbacks.
  WTNVHandlerTrainSet(const WTNVHandlerTrainSet& other);

  /// Takes over the handler and the callbacks; registers nothing.
  WTNVHandlerTrainSet& operator=(const WTNVHandlerTrainSet& other);
  ~WTNVHandlerTrainSet() override;

  unsigned int wGetTrainSetCount() const;

  /// Zero-based place of the current train set.
  unsigned int wGetTrainSetCurIdx() const;

  /// The current train set; a null handle if the project has none.
  WTNVTrainSet wGetTrainSetCur() const;

  /// Moves by `step` train sets, held at the ends of the list, and returns the one arrived at. Its
  /// marks are read at once, its picture by the worker. A step of 0 binds the current one anew.
  /// What was being designed on the train set that is left is forgotten.
  WTNVTrainSet wSetTrainSetForward(unsigned int step);
  WTNVTrainSet wSetTrainSetBackward(unsigned int step);

  /// The comment of the current train set. One of 4096 bytes or more is refused with a line in the
  /// log: the old one stays.
  void wSetComment(const std::string& comment);
  std::string wGetComment() const;

  /// Whether samples of the current train set belong into the test list.
  void wSetUseSpecialTest(bool use);
  bool wGetUseSpecialTest() const;

  /// A flag that marks the current train set for removal.
  void wSetRemove(bool remove);
  bool wGetRemove() const;

  /// The workflow of the current train set; a null handle stands for none. Of the workflows given,
  /// null handles are passed over.
  void wSetWorkflow(WTNVWorkflow workflow);
  WTNVWorkflow wGetWorkflow(std::vector<WTNVWorkflow> workflows) const;

  /// Functions to call on events; null clears.
  void setCBTrainSetChanged(void (*callback)());
  void setCBCommentUpdated(void (*callback)());
  void setCBUseSpecialTestUpdated(void (*callback)());
  void setCBProjectOpened(void (*callback)());
  void setCBProjectClosed(void (*callback)());
  void setCBProjectSaved(void (*callback)());
  void setCBImageLoaded(void (*callback)());
  void setCBRemoveChanged(void (*callback)());
  void setCBWorkflowChanged(void (*callback)());

  void onEventTrainSetChanged() override;
  void onEventCommentUpdated() override;
  void onEventUseSpecialTestUpdated() override;
  void onEventProjectOpened() override;
  void onEventProjectClosed() override;
  void onEventProjectSaved() override;
  void onEventImageLoaded() override;
  void onEventRemoveChanged() override;
  void onEventWorkflowChanged() override;

 private:
  TNVHandlerTrainSet* native;
  WTNVCallback trainSetChanged;
  WTNVCallback commentUpdated;
  WTNVCallback useSpecialTestUpdated;
  WTNVCallback projectOpened;
  WTNVCallback projectClosed;
  WTNVCallback projectSaved;
  WTNVCallback imageLoaded;
  WTNVCallback removeChanged;
  WTNVCallback workflowChanged;
};
