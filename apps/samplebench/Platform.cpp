#include "Platform.h"

#include <csignal>
#include <string_view>
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
volatile std::sig_atomic_t catchers = 0;
volatile std::sig_atomic_t codeOfInterrupt = 1;

// Only what is safe in a handler.
[[noreturn]] void end() {
  constexpr std::string_view message = "\nsamplebench: interrupted\n";
  [[maybe_unused]] const auto written = write(2, message.data(), message.size());
  _exit(codeOfInterrupt);
}

void onInterrupt(int) {
  if (catchers == 0 || interruptSeen != 0) end();
  interruptSeen = 1;
  // Some systems forget the handler when they call it.
  std::signal(SIGINT, onInterrupt);
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

void endAtInterrupt(int exitCode) {
  codeOfInterrupt = exitCode;
  std::signal(SIGINT, onInterrupt);
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
