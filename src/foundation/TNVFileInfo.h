#pragma once

#include <string>

/// The parts of a path, taken from its text alone.
class TNVFileInfo {
 public:
  explicit TNVFileInfo(const std::string& path);

  std::string fileName;   ///< last component, extension included
  std::string baseName;   ///< `fileName` up to its first dot
  std::string extension;  ///< what follows the last dot; a leading dot does not count
  std::string directory;  ///< up to the last slash, with a slash at the end
  std::string fullPath;   ///< the path with forward slashes
};
