#include "foundation/Platform.h"

#ifdef _WIN32
#include <io.h>
#include <shlobj.h>

#include "foundation/TNVDirectory.h"
#else
#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <vector>

#include "foundation/Files.h"
#include "foundation/XdgUserDirs.h"
#endif

namespace tnv {

#ifdef _WIN32

std::tm localTime(std::time_t time) {
  std::tm result{};
  localtime_s(&result, &time);
  return result;
}

std::string documentsDirectory() {
  wchar_t wide[MAX_PATH] = {};
  SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, SHGFP_TYPE_CURRENT, wide);
  std::string narrow;
  for (const wchar_t* character = wide; *character != 0; ++character)
    narrow += static_cast<char>(*character & 0xff);
  return TNVDirectory::normalizePath(narrow);
}

bool mayWriteTo(const std::string& directory) {
  constexpr int readAndWrite = 6;
  return _access(directory.c_str(), readAndWrite) == 0;
}

#else

namespace {

/// From the account database: the environment may be somebody else's.
std::string homeDirectory() {
  std::vector<char> texts(1 << 20);
  passwd account{};
  passwd* found = nullptr;
  getpwuid_r(getuid(), &account, texts.data(), texts.size(), &found);
  return found == nullptr ? "" : found->pw_dir;
}

}  // namespace

std::tm localTime(std::time_t time) {
  std::tm result{};
  localtime_r(&time, &result);
  return result;
}

std::string documentsDirectory() {
  const std::string home = homeDirectory();
  return home.empty() ? "" : documentsDirectoryOf(home);
}

std::string documentsDirectoryOf(const std::string& home) {
  const std::string userDirs = readFile(home + "/.config/user-dirs.dirs").value_or("");
  const std::string named = xdgDocumentsDirectory(userDirs, home);
  return named.empty() ? withOneSlash(home) + "Documents/" : named;
}

bool mayWriteTo(const std::string& directory) {
  return faccessat(AT_FDCWD, directory.c_str(), R_OK | W_OK | X_OK, AT_EACCESS) == 0;
}

#endif

}  // namespace tnv
