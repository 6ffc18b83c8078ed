#include "Platform.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
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

bool isMountPoint(const std::filesystem::path& directory) {
  const auto attributes = GetFileAttributesW(directory.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

struct DirectoryLock::State {
  HANDLE handle = INVALID_HANDLE_VALUE;
  std::string holder;
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

bool isMountPoint(const std::filesystem::path& directory) {
  struct stat here = {};
  struct stat above = {};
  return stat(directory.c_str(), &here) == 0 && stat((directory / "..").c_str(), &above) == 0 &&
         here.st_dev != above.st_dev;
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

// As the system tells it; empty if it is gone meanwhile.
std::string commandOf(const std::string& process) {
  constexpr std::size_t mostTold = 200;
  std::ifstream file("/proc/" + process + "/cmdline");
  std::string words;
  std::getline(file, words);
  std::replace(words.begin(), words.end(), '\0', ' ');
  if (words.size() > mostTold) words = words.substr(0, mostTold) + "...";
  return words.substr(0, words.find_last_not_of(' ') + 1);
}

// Who has locked what lies at the path. Only Linux tells, in a table of all locks.
std::string holderOf(const std::filesystem::path& path) {
  struct stat there = {};
  if (stat(path.c_str(), &there) != 0) return "";
  char place[64];
  std::snprintf(place, sizeof place, "%02x:%02x:%llu", major(there.st_dev), minor(there.st_dev),
                static_cast<unsigned long long>(there.st_ino));
  std::ifstream locks("/proc/locks");
  for (std::string line; std::getline(locks, line);) {
    std::istringstream words(line);
    std::string number, kind, rule, access, process, locked;
    words >> number >> kind >> rule >> access >> process >> locked;
    if (kind != "FLOCK" || locked != place) continue;
    const auto command = commandOf(process);
    return command.empty() ? "" : "process " + process + ", " + command;
  }
  return "";
}

}  // namespace

struct DirectoryLock::State {
  LockedPath directory;
  LockedPath file;
  std::filesystem::path ownFile;
  std::string holder;
  bool isHeldElsewhere = false;

  /// False if another program has it.
  bool take(LockedPath& locked, const std::filesystem::path& path, int flags) {
    isHeldElsewhere = !locked.take(path, flags);
    if (isHeldElsewhere) holder = holderOf(path);
    return !isHeldElsewhere;
  }

  ~State() {
    // While it is locked: who opens it from here on makes another.
    if (!ownFile.empty()) unlink(ownFile.c_str());
  }
};

DirectoryLock::DirectoryLock(const std::filesystem::path& directory, Kind kind)
    : state(std::make_unique<State>()) {
  if (kind == Kind::replaced) {
    const auto file = lockFileOf(directory);
    if (!state->take(state->file, file, O_RDWR | O_CREAT)) return;
    if (state->file.isOpen()) state->ownFile = file;
  }
  state->take(state->directory, directory, O_RDONLY | O_DIRECTORY);
}

#endif

DirectoryLock::~DirectoryLock() = default;

bool DirectoryLock::isOurs() const {
  return !state->isHeldElsewhere;
}

std::string DirectoryLock::holder() const {
  return state->holder;
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
