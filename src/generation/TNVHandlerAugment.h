#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "boundary/TNVNotificator.h"

class TNVAugment;
class TNVDNNClass;
class TNVGeneration;
class TNVSettings;
class TNVTrainSet;

/// Loads the selected task tree and runs whole generations.
class TNVHandlerAugment : public TNVNotificator {
 public:
  explicit TNVHandlerAugment(const std::string& augmentsPath);
  ~TNVHandlerAugment();

  /// Selects a task file below `augmentsPath`. One without exactly one root task keeps the tree.
  void setAugmentation(const std::string& fileName);
  std::vector<std::string> getAvailableAugmentations() const;

  void saveSettings(TNVSettings* settings) const;
  void loadSettings(TNVSettings* settings);

  /// One whole run, on the calling thread.
  bool process(const std::vector<TNVTrainSet*>& trainSets, TNVGeneration* generation);

  /// The same run with the same outcome, but so many threads of its own read, change and encode
  /// ahead, one for each core if none or less are asked for.
  bool processParallel(const std::vector<TNVTrainSet*>& trainSets, TNVGeneration* generation,
                       int threads);

  std::string augmentsPath;
  std::string augmentation;
  std::unique_ptr<TNVAugment> rootTask;
  std::vector<TNVDNNClass*> dnnClasses;
  std::atomic<bool> stopped{true};
  std::atomic<bool> stopRequested{false};

 private:
  class Turns;
  class TurnsAtOnce;
  class TurnsAhead;
  using MakeTurns = std::function<std::unique_ptr<Turns>()>;

  bool run(const std::vector<TNVTrainSet*>& trainSets, TNVGeneration* generation,
           const MakeTurns& makeTurns);

  /// Returns why the run ended early; an empty text if it did not.
  std::string workThrough(const std::vector<TNVTrainSet*>& trainSets, std::unique_ptr<Turns> turns);

  /// Ends a run; an empty text stands for success.
  bool finish(const std::string& failure);

  std::vector<std::unique_ptr<TNVAugment>> replacedTasks;
};
