#pragma once

#include <stdexcept>

/// What the program tells the shell; the help text lists the same numbers.
enum ExitCode {
  exitOk = 0,
  exitFailed = 1,
  exitUsage = 2,
  exitFindings = 3,
  exitInterrupted = 130
};

/// A command cannot go on. What is wrong in the command line alone, whatever the project, is wrong
/// usage. The text is for the user: what is wrong, and what to do about it.
class CommandError : public std::runtime_error {
 public:
  explicit CommandError(const std::string& message, ExitCode exitCode = exitFailed)
      : std::runtime_error(message), code(exitCode) {}

  ExitCode exitCode() const { return code; }

 private:
  ExitCode code;
};
