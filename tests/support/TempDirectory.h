#pragma once

#include <string>

/// A fresh directory that goes with the object.
class TempDirectory {
 public:
  TempDirectory();
  ~TempDirectory();
  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;

  /// Ends in a slash.
  const std::string& path() const { return directory; }

  /// The path of an entry, which need not exist.
  std::string operator/(const std::string& name) const { return directory + name; }

  /// Writes a file, making the directories above it, and returns its path.
  std::string write(const std::string& name, const std::string& content) const;

  /// Makes a directory and returns its path with a slash at the end.
  std::string makeDirectory(const std::string& name) const;

 private:
  std::string directory;
};

std::string readFile(const std::string& path);
