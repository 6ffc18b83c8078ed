#pragma once

#include <filesystem>

/// What POSIX and Windows call by different names.
namespace platform {

/// The directory that the running program lies in; empty if the system does not tell.
std::filesystem::path executableDirectory();

/// Whether standard error goes to a terminal.
bool errorsGoToTerminal();

/// Has the user's interrupt (Ctrl-C) end the program with that code from now on.
void endAtInterrupt(int exitCode);

/// Keeps an interrupt from ending the program while it lives, for work that would be left half
/// done; long work asks whether one came. A second interrupt ends the program all the same.
class InterruptCatcher {
 public:
  InterruptCatcher();
  ~InterruptCatcher();
  InterruptCatcher(const InterruptCatcher&) = delete;
  InterruptCatcher& operator=(const InterruptCatcher&) = delete;

  /// Whether an interrupt came.
  static bool interrupted();
};

}  // namespace platform
