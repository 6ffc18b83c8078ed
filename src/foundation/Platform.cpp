#include "foundation/Platform.h"

#ifdef _WIN32
#include <io.h>
#include <share.h>
#include <shlobj.h>
#include <sys/stat.h>

#include "foundation/TNVDirectory.h"
#else
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <set>

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

bool flushToDisk(const std::vector<std::string>& paths) {
  bool flushed = true;
  for (const auto& path : paths) {
    int file = -1;
    if (_sopen_s(&file, path.c_str(), _O_RDWR | _O_BINARY, _SH_DENYNO, _S_IREAD) != 0) return false;
    flushed = _commit(file) == 0 && flushed;
    _close(file);
  }
  return flushed;
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

class OpenFile {
 public:
  explicit OpenFile(const std::string& path) : number(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
  ~OpenFile() {
    if (number >= 0) close(number);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  bool flush() const { return isDone(fdatasync(number)); }
  bool flushItsFileSystem() const { return isDone(syncfs(number)); }

  dev_t fileSystem() const {
    struct stat status {};
    return fstat(number, &status) == 0 ? status.st_dev : 0;
  }

 private:
  // Some file systems have nothing to flush.
  bool isDone(int result) const { return number >= 0 && (result == 0 || errno == EINVAL); }

  int number;
};

bool flushFileSystems(const std::vector<std::string>& paths) {
  std::set<std::string> directories;
  for (const auto& path : paths)
    directories.insert(std::filesystem::path(path).parent_path().string());
  std::set<dev_t> flushed;
  return std::all_of(directories.begin(), directories.end(), [&](const std::string& directory) {
    const OpenFile file(directory.empty() ? "." : directory);
    return !flushed.insert(file.fileSystem()).second || file.flushItsFileSystem();
  });
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

bool flushToDisk(const std::vector<std::string>& paths) {
  // Each file flushed by itself waits for the disk; all that others have written is soon done.
  constexpr std::size_t few = 16;
  if (paths.size() > few) return flushFileSystems(paths);
  return std::all_of(paths.begin(), paths.end(),
                     [](const std::string& path) { return OpenFile(path).flush(); });
}

#endif

}  // namespace tnv
