#include "Platform.h"

#include <csignal>
#include <string_view>
#include <system_error>

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#endif

namespace platform {

namespace {

volatile std::sig_atomic_t interruptSeen = 0;
volatile std::sig_atomic_t catchers = 0;
volatile std::sig_atomic_t codeOfInterrupt = 1;

// Only what is safe in a handler.
[[noreturn]] void end() {
  constexpr std::string_view message = "\nsamplebench: interrupted\n";
  [[maybe_unused]] const auto written = write(2, message.data(), message.size());
  _exit(codeOfInterrupt);
}

void onInterrupt(int number) {
  if (catchers == 0 || interruptSeen != 0) end();
  interruptSeen = 1;
  // Some systems forget the handler when they call it.
  std::signal(number, onInterrupt);
}

}  // namespace

std::filesystem::path lockFileOf(const std::filesystem::path& directory) {
  std::error_code error;
  auto path = std::filesystem::absolute(directory, error).lexically_normal();
  if (!path.has_filename()) path = path.parent_path();
  if (error || !path.has_filename()) return {};
  std::filesystem::path name(".");
  name += path.filename();
  name += ".lock";
  return path.parent_path() / name;
}

#ifdef _WIN32

std::filesystem::path executableDirectory() {
  wchar_t path[MAX_PATH];
  const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
  if (length == 0 || length == MAX_PATH) return {};
  return std::filesystem::path(path).parent_path();
}

bool errorsGoToTerminal() {
  return _isatty(_fileno(stderr)) != 0;
}

bool canWriteIn(const std::filesystem::path& directory) {
  const auto attributes = GetFileAttributesW(directory.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

struct DirectoryLock::State {
  HANDLE handle = INVALID_HANDLE_VALUE;
  bool isHeldElsewhere = false;

  ~State() {
    if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
  }
};

DirectoryLock::DirectoryLock(const std::filesystem::path& directory, Kind)
    : state(std::make_unique<State>()) {
  // A file of its own, which goes with the handle: a directory would be closed to this program,
  // too. It lies beside the directory, which is to look empty while it is, and may be removed.
  state->handle = CreateFileW(lockFileOf(directory).c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                              FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  state->isHeldElsewhere =
      state->handle == INVALID_HANDLE_VALUE && GetLastError() == ERROR_SHARING_VIOLATION;
}

#else

std::filesystem::path executableDirectory() {
  std::error_code error;
  const auto path = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::filesystem::path() : path.parent_path();
}

bool errorsGoToTerminal() {
  return isatty(STDERR_FILENO) != 0;
}

bool canWriteIn(const std::filesystem::path& directory) {
  return faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

namespace {

/// What lies at a path, locked.
class LockedPath {
 public:
  LockedPath() = default;
  ~LockedPath() { release(); }
  LockedPath(const LockedPath&) = delete;
  LockedPath& operator=(const LockedPath&) = delete;

  /// False if another program has it. Nothing is locked, which is no failure, if it cannot be
  /// opened.
  bool take(const std::filesystem::path& path, int flags) {
    // What was opened may be gone from there by the time it is locked.
    constexpr int mostTries = 10;
    for (int i = 0; i < mostTries; ++i) {
      descriptor = open(path.c_str(), flags | O_CLOEXEC, 0666);
      if (descriptor < 0) return true;
      if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return false;
      if (liesAt(path)) return true;
      release();
    }
    return true;
  }

  bool isOpen() const { return descriptor >= 0; }

 private:
  bool liesAt(const std::filesystem::path& path) const {
    struct stat opened = {};
    struct stat there = {};
    return fstat(descriptor, &opened) == 0 && stat(path.c_str(), &there) == 0 &&
           opened.st_dev == there.st_dev && opened.st_ino == there.st_ino;
  }

  void release() {
    if (descriptor >= 0) close(descriptor);
    descriptor = -1;
  }

  int descriptor = -1;
};

}  // namespace

struct DirectoryLock::State {
  LockedPath directory;
  LockedPath file;
  std::filesystem::path ownFile;
  bool isHeldElsewhere = false;

  ~State() {
    // While it is locked: who opens it from here on makes another.
    if (!ownFile.empty()) unlink(ownFile.c_str());
  }
};

DirectoryLock::DirectoryLock(const std::filesystem::path& directory, Kind kind)
    : state(std::make_unique<State>()) {
  if (kind == Kind::replaced) {
    const auto file = lockFileOf(directory);
    state->isHeldElsewhere = !state->file.take(file, O_RDWR | O_CREAT);
    if (state->isHeldElsewhere) return;
    if (state->file.isOpen()) state->ownFile = file;
  }
  state->isHeldElsewhere = !state->directory.take(directory, O_RDONLY | O_DIRECTORY);
}

#endif

DirectoryLock::~DirectoryLock() = default;

bool DirectoryLock::isOurs() const {
  return !state->isHeldElsewhere;
}

void endAtInterrupt(int exitCode) {
  codeOfInterrupt = exitCode;
  std::signal(SIGINT, onInterrupt);
  std::signal(SIGTERM, onInterrupt);
#ifdef SIGHUP
  // Who starts a program to outlive the terminal has it ignore this.
  if (std::signal(SIGHUP, onInterrupt) == SIG_IGN) std::signal(SIGHUP, SIG_IGN);
#endif
}

InterruptCatcher::InterruptCatcher() {
  catchers = catchers + 1;
}

InterruptCatcher::~InterruptCatcher() {
  catchers = catchers - 1;
}

bool InterruptCatcher::interrupted() {
  return interruptSeen != 0;
}

}  // namespace platform
