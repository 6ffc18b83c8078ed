#pragma once

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
    run = {&handler, &progress, std::move(afterPicture), false};
  }

  /// To be called after each picture.
  static void onUpdate() {
    if (run.afterPicture) run.afterPicture(run.progress->done());
    run.progress->step();
    if (!platform::InterruptCatcher::interrupted()) return;
    run.stopped = true;
    run.handler->wProcessStop();
  }

  bool wasStopped() const { return run.stopped; }

 private:
  struct State {
    Handler* handler = nullptr;
    Progress* progress = nullptr;
    std::function<void(std::size_t)> afterPicture;
    bool stopped = false;
  };
  static inline State run;
};
