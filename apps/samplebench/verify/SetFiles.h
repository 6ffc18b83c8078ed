#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "verify/LabelCheck.h"

/// The file that tells Darknet where a set lies: lines "key = value".
struct DataFile {
  std::map<std::string, std::string> values;
};

/// Reads and checks a data file: its values hold no white space, and name what must be there.
DataFile checkDataFile(const std::string& path, Findings& findings);

/// Reads and checks a file of class names, a name a line. Nothing if it cannot be read.
std::optional<std::size_t> checkNames(const std::string& path, Findings& findings);

/// Checks the class names of a `data.yaml`, and that they are as many as it says and numbered from
/// 0 without gaps. Nothing if it has none.
std::optional<std::size_t> checkDescription(const std::string& path, Findings& findings);

/// Checks that as many classes are declared as there are names.
void checkDeclaredClasses(const std::string& path, const DataFile& data, std::size_t nameCount,
                          Findings& findings);

/// Reads a network file, checks its output layers against the number of classes if that is known,
/// and gives the size of its input.
std::optional<Size> checkNetwork(const std::string& path, std::optional<std::size_t> classCount,
                                 Findings& findings);

/// One entry of a list of pictures.
struct ListEntry {
  std::string picture;  ///< absolute
  std::size_t line = 0;
};

/// Reads and checks a list of pictures. Relative paths are looked for below the working directory,
/// as Darknet does, and beside the list, as others do.
std::vector<ListEntry> checkList(const std::string& path, Findings& findings);
