#pragma once

#include <functional>
#include <string_view>

namespace tnv {

/// Writes one line of the system's log to standard output and flushes it. Safe on any thread.
void logLine(std::string_view line);

/// While it lives, what its thread logs goes to a function instead of standard output.
class DivertedLog {
 public:
  using Sink = std::function<void(std::string_view line)>;

  explicit DivertedLog(Sink sink);
  ~DivertedLog();
  DivertedLog(const DivertedLog&) = delete;
  DivertedLog& operator=(const DivertedLog&) = delete;

 private:
  Sink sink;
  const Sink* before;
};

}  // namespace tnv
