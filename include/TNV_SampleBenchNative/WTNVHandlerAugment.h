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

  /// The same run on several threads at once: so many of its own read pictures, send them through
  /// the tree and encode, each for a train set of its own, while the calling thread numbers and
  /// writes what they made in the order of the train sets. 0, or less, takes one for each core.
  /// Events, on the calling thread, log lines, result, files and what is thrown are those of
  /// `wProcess`, with a tree that draws nothing at random byte for byte. At most two train sets a
  /// thread are in work or wait for their turn, with their pictures and encoded samples in memory.
  /// The threads have ended before the Finished event and before anything is thrown. Until then the
  /// project must not be changed, nor asked for train sets whose turn has not come, not by
  /// callbacks either; a tree that one selects counts from the next run on. A list that names a
  /// train set twice is worked through as by `wProcess`.
  bool wProcessParallel(const std::vector<WTNVTrainSet>& trainSets, WTNVGeneration generation,
                        int threads);

  /// Ends a run before its next train set, whatever was made ahead. For any thread, and for the
  /// callbacks of the run.
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
