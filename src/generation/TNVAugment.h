#pragma once

#include <memory>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "generation/TNVAugmentSample.h"

class TNVDNNClass;
class TNVGeneration;
class TNVTrainSet;

namespace tnv {
class Steps;
}

/// A task of the tree that each picture is sent through.
class TNVAugment {
 public:
  TNVAugment() = default;
  virtual ~TNVAugment() = default;
  TNVAugment(const TNVAugment&) = delete;
  TNVAugment& operator=(const TNVAugment&) = delete;

  virtual std::string getName() const = 0;
  virtual TNVAugmentSample process(const TNVAugmentSample& sample) const = 0;

  /// Writes the task's own keys into the map that is open in the storage.
  virtual void write(cv::FileStorage& storage) const = 0;
  virtual void read(const cv::FileNode& node) = 0;

  /// The sample of a train set: its picture, and a box for each mark and each of its POIs.
  static TNVAugmentSample setTrainSet(TNVTrainSet* trainSet,
                                      const std::vector<TNVDNNClass*>& classes);

  /// The same with a picture that the train set need not have in memory.
  static TNVAugmentSample setTrainSet(const TNVTrainSet* trainSet, const cv::Mat& picture,
                                      const std::vector<TNVDNNClass*>& classes);

  /// Sends the sample through the task and its subtasks, depth first.
  static bool processTrainSet(const TNVAugment& task, const TNVAugmentSample& sample,
                              TNVGeneration* generation);

  /// The same, but what the generator writes may wait.
  static bool processTrainSet(const TNVAugment& task, const TNVAugmentSample& sample,
                              TNVGeneration* generation, tnv::Steps& steps);

  bool save = true;
  std::vector<std::unique_ptr<TNVAugment>> subTasks;
};
