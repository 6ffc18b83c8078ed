#pragma once

#include <exception>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/Log.h"

namespace tnv {

/// Where a piece of work leaves what has to happen in order, so that the rest of it may run ahead.
class Steps {
 public:
  virtual void add(std::function<void()> step) = 0;

 protected:
  ~Steps() = default;
};

/// For work that runs when it is its turn.
class StepsAtOnce final : public Steps {
 public:
  void add(std::function<void()> step) override { step(); }
};

/// For work that runs ahead on another thread.
class StepsForLater final : public Steps {
 public:
  void add(std::function<void()> step) override { steps.push_back(std::move(step)); }

  /// Runs the work. The lines that it logs are steps among those that it adds, and what it throws
  /// is the last one. False if it threw.
  template <class Work>
  bool record(const Work& work) {
    const DivertedLog log(
        [this](std::string_view line) { add([text = std::string(line)] { logLine(text); }); });
    try {
      work();
      return true;
    } catch (...) {
      add([error = std::current_exception()] { std::rethrow_exception(error); });
      return false;
    }
  }

  /// Does the steps, and gives up what each of them holds.
  void replay() {
    for (std::function<void()>& step : std::exchange(steps, {}))
      std::exchange(step, nullptr)();
  }

 private:
  std::vector<std::function<void()>> steps;
};

}  // namespace tnv
