#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "Output.h"

/// How far a run has come.
struct ProgressState {
  std::size_t done = 0;
  std::size_t total = 0;
  double seconds = 0;
};

/// "[#####.....] 12/24  50 %  8.0/s  2 s left"
std::string progressBar(const ProgressState& state);

/// "12 of 24 (50 %)"
std::string progressLine(const ProgressState& state);

/// Shows on standard error how far a run has come: a bar on a terminal, unless NO_COLOR is
/// set, otherwise a line for every
/// tenth of the way.
class Progress {
 public:
  Progress(std::size_t total, Output& output);

  void step() { moveTo(state.done + 1); }

  /// To that many of all.
  void moveTo(std::size_t done);

  /// Leaves the bar as it stands.
  void finish();

  std::size_t done() const { return state.done; }

 private:
  Output& output;
  ProgressState state;
  std::chrono::steady_clock::time_point start;
  bool drawsBar;
  std::size_t tenths = 0;
};
