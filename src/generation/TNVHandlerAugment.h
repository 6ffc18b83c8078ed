#pragma once

#include <atomic>
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

  std::string augmentsPath;
  std::string augmentation;
  std::unique_ptr<TNVAugment> rootTask;
  std::vector<TNVDNNClass*> dnnClasses;
  std::atomic<bool> stopped{true};
  std::atomic<bool> stopRequested{false};

 private:
  /// False when there is a picture, but no tree to send it through.
  bool processOne(TNVTrainSet* trainSet, TNVGeneration& generation);

  /// Ends a run; an empty text stands for success.
  bool finish(const std::string& failure);

  std::vector<std::unique_ptr<TNVAugment>> replacedTasks;
};
