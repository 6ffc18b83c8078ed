#include "Progress.h"

#include <cmath>
#include <cstdlib>

#include "Numbers.h"
#include "Platform.h"

namespace {

std::size_t percent(const ProgressState& state) {
  return state.total == 0 ? 100 : state.done * 100 / state.total;
}

std::string countText(const ProgressState& state) {
  return std::to_string(state.done) + "/" + std::to_string(state.total) + "  " +
         std::to_string(percent(state)) + " %";
}

// Rate and time left; nothing before there is something to tell from.
std::string paceText(const ProgressState& state) {
  if (state.done == 0 || state.seconds <= 0) return "";
  const auto rate = static_cast<double>(state.done) / state.seconds;
  const auto left = static_cast<double>(state.total - state.done) / rate;
  return "  " + formatFixed(rate, 1) + "/s  " + formatFixed(std::ceil(left), 0) + " s left";
}

// Who sets NO_COLOR wants plain text, whatever the value.
bool mayDraw() {
  const auto* wish = std::getenv("NO_COLOR");
  return platform::errorsGoToTerminal() && (wish == nullptr || *wish == '\0');
}

}  // namespace

std::string progressBar(const ProgressState& state) {
  constexpr std::size_t width = 30;
  const auto filled = percent(state) * width / 100;
  return "[" + std::string(filled, '#') + std::string(width - filled, '.') + "] " +
         countText(state) + paceText(state);
}

std::string progressLine(const ProgressState& state) {
  return std::to_string(state.done) + " of " + std::to_string(state.total) + " (" +
         std::to_string(percent(state)) + " %)";
}

Progress::Progress(std::size_t total, Output& target)
    : output(target),
      state{0, total, 0},
      start(std::chrono::steady_clock::now()),
      drawsBar(mayDraw()) {}

void Progress::moveTo(std::size_t done) {
  state.done = done;
  state.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  // Of nothing there is no share.
  if (output.isQuiet() || state.total == 0) return;
  if (drawsBar) {
    output.errorLines().redraw(progressBar(state));
  } else if (percent(state) / 10 > tenths) {
    tenths = percent(state) / 10;
    output.note(progressLine(state));
  }
}

void Progress::finish() {
  if (drawsBar) output.errorLines().keepRedrawn();
}
