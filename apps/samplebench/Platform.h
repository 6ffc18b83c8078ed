#pragma once

#include <filesystem>
#include <memory>
#include <string>

/// What POSIX and Windows call by different names.
namespace platform {

/// The directory that the running program lies in; empty if the system does not tell.
std::filesystem::path executableDirectory();

/// Whether standard error goes to a terminal.
bool errorsGoToTerminal();

/// Whether the program may make and remove files in the directory, as far as the system tells
/// without trying.
bool canWriteIn(const std::filesystem::path& directory);

/// Whether another file system begins there.
bool isMountPoint(const std::filesystem::path& directory);

/// The file that stands for a directory, beside it, while that is locked and there is need of one.
/// Empty for the root.
std::filesystem::path lockFileOf(const std::filesystem::path& directory);

/// Keeps a directory for this program while it lives. Others notice if they ask for such a lock;
/// it goes with the program, however that ends.
class DirectoryLock {
 public:
  /// One that stays is locked itself. For one that is removed and made anew meanwhile, a file
  /// beside it is locked, too: it goes with the lock, but stays behind, to no harm, when the
  /// program is killed.
  enum class Kind { staying, replaced };

  explicit DirectoryLock(const std::filesystem::path& directory, Kind kind = Kind::staying);
  ~DirectoryLock();
  DirectoryLock(const DirectoryLock&) = delete;
  DirectoryLock& operator=(const DirectoryLock&) = delete;

  /// False if another program holds it. Where the file system knows no locks this is true.
  bool isOurs() const;

  /// "process 4711, samplebench import parts": who holds it if another program does. Empty where
  /// the system does not tell.
  std::string holder() const;

 private:
  struct State;
  std::unique_ptr<State> state;
};

/// Has the user's interrupt (Ctrl-C), and a request to end or a terminal that goes away, end the
/// program with that code from now on.
void endAtInterrupt(int exitCode);

/// Keeps these from ending the program while it lives, for work that would be left half
/// done; long work asks whether one came. A second one ends the program all the same.
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
