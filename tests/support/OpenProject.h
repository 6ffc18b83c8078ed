#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include "TNV_SampleBenchNative/WTNVMainProcess.h"
#include "editing/TNVHandlerImageView.h"
#include "editing/TNVHandlerMark.h"
#include "editing/TNVMainProcess.h"
#include "project/TNVDNNClass.h"
#include "project/TNVProject.h"
#include "project/TNVTrainSet.h"
#include "support/ProjectBuilder.h"

/// Waits, with a deadline far off, until another thread has made the condition true.
inline bool eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

/// Counts the calls of a plain callback; one counter for each `Tag`.
template <int Tag>
struct CallCounter {
  static void call() { ++count; }
  static inline std::atomic<int> count{0};
};

/// A project of pictures with a main process on it.
class OpenProject {
 public:
  explicit OpenProject(ProjectBuilder& builder) : process(builder.project().getNativeProject()) {}

  TNVTrainSet& current() { return *process.hndMark->trainSet; }
  TNVHandlerMark& marks() { return *process.hndMark; }
  TNVHandlerImageView& view() { return *process.hndImageView; }
  TNVHandlerTrainSet& trainSets() { return *process.hndTrainSet; }

  TNVMainProcess process;
};
