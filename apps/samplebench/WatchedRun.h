#pragma once

#include <exception>
#include <functional>

#include "Platform.h"
#include "Progress.h"

/// A run of a handler that shows its progress and ends at the user's interrupt. The library's
/// callbacks are plain functions, so that there is one such run of a kind of handler at a time.
template <class Handler>
class WatchedRun {
 public:
  /// `afterPicture`, if given, is called after each picture with its place.
  WatchedRun(Handler& handler, Progress& progress,
             std::function<void(std::size_t)> afterPicture = nullptr) {
    run = {&handler, &progress, std::move(afterPicture), false, nullptr};
  }

  /// To be called after each picture. What `afterPicture` throws ends the run and is kept: nothing
  /// must be thrown through the library.
  static void onUpdate() {
    if (run.afterPicture && !run.failure)
      keepFailure([] { run.afterPicture(run.progress->done()); });
    run.progress->step();
    const bool isInterrupted = platform::InterruptCatcher::interrupted();
    if (isInterrupted) run.stopped = true;
    if (isInterrupted || run.failure) run.handler->wProcessStop();
  }

  /// Whether the handler came to its end, which `process` tells, and nothing was thrown.
  template <class Process>
  bool complete(const Process& process) {
    bool isComplete = false;
    keepFailure([&] { isComplete = process(); });
    return isComplete && !run.failure;
  }

  /// Throws on what was thrown first, if anything was.
  void throwFailure() const {
    if (run.failure) std::rethrow_exception(run.failure);
  }

  bool wasStopped() const { return run.stopped; }

 private:
  template <class Work>
  static void keepFailure(const Work& work) {
    try {
      work();
    } catch (...) {
      if (!run.failure) run.failure = std::current_exception();
    }
  }

  struct State {
    Handler* handler = nullptr;
    Progress* progress = nullptr;
    std::function<void(std::size_t)> afterPicture;
    bool stopped = false;
    std::exception_ptr failure;
  };
  static inline State run;
};
