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

DirectoryLock::DirectoryLock(const std::filesystem::path& directory)
    : state(std::make_unique<State>()) {
  // A file of its own, which goes with the handle: a directory would be closed to this program,
  // too.
  state->handle = CreateFileW((directory / ".lock").c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
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

struct DirectoryLock::State {
  int descriptor = -1;
  bool isHeldElsewhere = false;

  ~State() {
    if (descriptor >= 0) close(descriptor);
  }
};

DirectoryLock::DirectoryLock(const std::filesystem::path& directory)
    : state(std::make_unique<State>()) {
  state->descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (state->descriptor < 0) return;
  state->isHeldElsewhere = flock(state->descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
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
