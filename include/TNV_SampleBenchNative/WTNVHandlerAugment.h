#pragma once

#include <string>
#include <vector>

#include "TNV_SampleBenchNative/Export.h"
#include "TNV_SampleBenchNative/TNVObserver.h"
#include "TNV_SampleBenchNative/WTNVCallback.h"
#include "TNV_SampleBenchNative/WTNVGeneration.h"
#include "TNV_SampleBenchNative/WTNVTrainSet.h"

class TNVHandlerAugment;

/// Runs generations: sends train sets through the selected tree of augmentation tasks and lets the
/// generator write what each saving task gives. The project owns the handler. The wrapper is an
/// observer registered by its address: keep it in one place, and destroy it before the project.
/// Callbacks are called on the thread that runs the generation.
class TNV_SAMPLEBENCH_API WTNVHandlerAugment : public TNVHandlerAugmentObserver {
 public:
  explicit WTNVHandlerAugment(TNVHandlerAugment* handler);

  /// Another observer of the same handler, without callbacks.
  WTNVHandlerAugment(const WTNVHandlerAugment& other);

  /// Takes over the handler and the callbacks; registers nothing.
  WTNVHandlerAugment& operator=(const WTNVHandlerAugment& other);
  ~WTNVHandlerAugment() override;

  /// One whole run on the calling thread. The Started event comes first, then an Update after each
  /// train set, then Finished. True when the set is complete; false when it was stopped or could
  /// not be written. When the generator refuses to start, no Finished event follows. What the
  /// generator writes to is deleted first. Errors of the file system and of OpenCV are thrown.
  bool wProcess(const std::vector<WTNVTrainSet>& trainSets, WTNVGeneration generation);

  /// Ends a run before its next train set. For any thread, and for the callbacks of the run.
  void wProcessStop();

  /// Whether no run is active. For any thread. After a run that could not start it stays false.
  bool wProcessIsStopped() const;

  /// File names of the task trees, in the order of the file system.
  std::vector<std::string> wGetAvailableAugmentations() const;

  /// Selects a task tree by its file name. A file that is missing, or has not exactly one root
  /// task, is selected by name only and the tree loaded before stays; one that is no XML throws.
  void wSetAugmentation(const std::string& fileName);
  std::string wGetAugmentation() const;

  /// Functions to call on events; null clears.
  void setCBGenerationStarted(void (*callback)());
  void setCBGenerationUpdate(void (*callback)());
  void setCBGenerationFinished(void (*callback)());

  void onEventGenerationStarted() override;
  void onEventGenerationUpdate() override;
  void onEventGenerationFinished() override;

 private:
  TNVHandlerAugment* native;
  WTNVCallback generationStarted;
  WTNVCallback generationUpdate;
  WTNVCallback generationFinished;
};
