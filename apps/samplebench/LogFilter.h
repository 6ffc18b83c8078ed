#pragma once

#include <mutex>
#include <streambuf>
#include <string>

#include "ErrorLines.h"

/// Takes the library's log, which comes as text for a stream, and passes it on line by line, but
/// for a line that says nothing to a user. Of
/// equal lines in a row the first is passed on, and then how often it came again. Safe on any
/// thread.
class LogFilter : public std::streambuf {
 public:
  explicit LogFilter(ErrorLines& target) : errors(target) {}

  /// Swallows everything from now on.
  void silence();

  /// The last line that came, also one that was swallowed.
  std::string newestLine() const;

  /// Passes on what is held back: an unfinished line, a count of repeats.
  void finish();

 protected:
  int_type overflow(int_type character) override;
  std::streamsize xsputn(const char* text, std::streamsize count) override;

 private:
  void take(char character);
  void endLine();
  void reportRepeats();

  ErrorLines& errors;
  mutable std::mutex mutex;
  std::string current;
  std::string last;
  std::string newest;
  unsigned int repeats = 0;
  bool lastIsThere = false;
  bool silent = false;
};
