#pragma once

#include "Platform.h"
#include "Progress.h"

/// A run of a handler that shows its progress and ends at the user's interrupt. The library's
/// callbacks are plain functions, so that there is one such run of a kind of handler at a time.
template <class Handler>
class WatchedRun {
 public:
  WatchedRun(Handler& handler, Progress& progress) { run = {&handler, &progress, false}; }

  /// To be called after each picture.
  static void onUpdate() {
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
    bool stopped = false;
  };
  static inline State run;
};
