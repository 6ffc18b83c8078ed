#include "ErrorLines.h"

namespace {

// Back to the start of the line, and clear it.
constexpr std::string_view clearLine = "\r\x1b[K";

}  // namespace

void ErrorLines::line(std::string_view text) {
  const std::lock_guard lock(mutex);
  if (redrawn) stream << clearLine;
  redrawn = false;
  stream << text << std::endl;
}

void ErrorLines::redraw(std::string_view text) {
  const std::lock_guard lock(mutex);
  stream << clearLine << text << std::flush;
  redrawn = true;
}

void ErrorLines::keepRedrawn() {
  const std::lock_guard lock(mutex);
  if (redrawn) stream << std::endl;
  redrawn = false;
}
