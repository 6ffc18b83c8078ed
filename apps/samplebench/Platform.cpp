#include "Platform.h"

#include <csignal>
#include <system_error>

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace platform {

namespace {

volatile std::sig_atomic_t interruptSeen = 0;

void rememberInterrupt(int) {
  interruptSeen = 1;
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

#else

std::filesystem::path executableDirectory() {
  std::error_code error;
  const auto path = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::filesystem::path() : path.parent_path();
}

bool errorsGoToTerminal() {
  return isatty(STDERR_FILENO) != 0;
}

#endif

InterruptCatcher::InterruptCatcher() : before(nullptr) {
  interruptSeen = 0;
  before = std::signal(SIGINT, rememberInterrupt);
}

InterruptCatcher::~InterruptCatcher() {
  if (before != SIG_ERR) std::signal(SIGINT, before);
}

bool InterruptCatcher::interrupted() {
  return interruptSeen != 0;
}

}  // namespace platform
