#pragma once

#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

/// Catches what is written to standard output while it lives.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  /// All that was written so far.
  std::string text() const { return captured.str(); }

  /// The same, line by line.
  std::vector<std::string> lines() const;

 private:
  std::ostringstream captured;
  std::streambuf* before;
};
