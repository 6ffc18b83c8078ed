#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "foundation/TNVFileInfo.h"

/// The one way in which the system looks at the file system. Paths are plain text with forward
/// slashes; directories end in a slash.
class TNVDirectory {
 public:
  /// Creates the directory with its parents. A failure is logged, never thrown.
  static void createDirectory(const std::string& path);

  /// True if anything is at the path. A system error other than "not found" throws.
  static bool exists(const std::string& path);

  /// Removes what is at the path with everything below it; nothing there is no failure. A failure
  /// throws a `std::filesystem::filesystem_error` named "remove_all".
  static void remove(const std::string& path);

  /// The entries of a directory, directories included, in the order of the file system. With
  /// `types`, an entry is taken once for each type that its extension equals, whatever the case.
  static std::vector<TNVFileInfo> readFiles(const std::string& path,
                                            const std::vector<std::string>& types, bool recursive);

  /// The full paths of `readFiles`, which of a long list is all that most callers need.
  static std::vector<std::string> readPaths(const std::string& path,
                                            const std::vector<std::string>& types, bool recursive);

  /// The file names of `readFiles` without recursion. A missing directory gives none, silently.
  static std::vector<std::string> readFileNames(const std::string& path,
                                                const std::vector<std::string>& types);

  /// The directories directly below `path`, each with a slash at the end.
  static std::vector<std::string> readDirectories(const std::string& path);

  /// The name of the directory that a path ending in a slash leads to.
  static std::string getLastDirectoryName(const std::string& path);

  /// Forward slashes, and one at the end of an existing directory.
  static std::string normalizePath(const std::string& path);

  /// Copies a file, or a directory with all that it holds. A failure, an existing target among
  /// them, throws a `std::filesystem::filesystem_error` named "copy".
  static void copy(const std::string& from, const std::string& to);

  static std::vector<std::string> readLines(const std::string& file);

  /// Size in bytes, -1 for a file that cannot be opened.
  static long long fileSize(const std::string& file);

  /// MD5 of the content as 32 lower-case hexadecimal digits; empty for an unreadable file.
  static std::string fileMD5(const std::string& file);
};

/// A name for a new file, made of the local time and a counter of the process.
std::string makeUniqueName();

/// The same, but a name that nothing in the directory has when `ending` stands behind it: another
/// process may have given a name in the same second.
std::string makeUniqueName(const std::string& directory, const std::string& ending);

/// The name that `makeUniqueName` gives at that time with that counter.
std::string makeUniqueName(const std::tm& time, unsigned counter);
