#pragma once

#include <filesystem>

/// What POSIX and Windows call by different names.
namespace platform {

/// The directory that the running program lies in; empty if the system does not tell.
std::filesystem::path executableDirectory();

/// Whether standard error goes to a terminal.
bool errorsGoToTerminal();

/// Catches the user's interrupt (Ctrl-C) while it lives.
class InterruptCatcher {
 public:
  InterruptCatcher();
  ~InterruptCatcher();
  InterruptCatcher(const InterruptCatcher&) = delete;
  InterruptCatcher& operator=(const InterruptCatcher&) = delete;

  /// Whether an interrupt came since the last catcher was made.
  static bool interrupted();

 private:
  void (*before)(int);
};

}  // namespace platform
