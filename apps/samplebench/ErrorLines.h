#pragma once

#include <mutex>
#include <ostream>
#include <string_view>

/// Standard error, line by line, with at most one line that is redrawn in place (a progress bar).
/// Safe on any thread.
class ErrorLines {
 public:
  explicit ErrorLines(std::ostream& target) : stream(target) {}

  /// Writes a whole line. A redrawn line gives way to it.
  void line(std::string_view text);

  /// Draws the line over what was redrawn last.
  void redraw(std::string_view text);

  /// Keeps the redrawn line as it stands.
  void keepRedrawn();

 private:
  std::ostream& stream;
  std::mutex mutex;
  bool redrawn = false;
};
