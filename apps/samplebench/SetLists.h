#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "TNV_SampleBenchNative/WTNVProject.h"

/// An image set whose records lie in its directory while no list of the project names any of them:
/// the project looks as if it had no such pictures, and marks that nobody sees would be lost.
struct LostSet {
  std::string name;
  std::size_t records = 0;
  /// The settings name the set, so that only its list is gone. Of one that they do not name the
  /// files would go with the next save of the whole project.
  bool isNamed = false;
};

/// The sets that have a directory in that of a project.
std::vector<std::string> setsOnDisk(const std::filesystem::path& directory);

std::vector<LostSet> lostSets(const WTNVProject& project);

/// The file that lists the records of a set, and the directory in which they lie.
std::string setListFile(const WTNVProject& project, const std::string& set);
std::string setRecordsDirectory(const WTNVProject& project, const std::string& set);

/// What is lost of the set, and what to do about it.
std::string lostSetAdvice(const WTNVProject& project, const LostSet& set);

/// Throws CommandError if there are lost sets; the second, if there are such that the settings do
/// not name.
void requireSetLists(const WTNVProject& project);
void requireNamedSets(const WTNVProject& project);

/// How many records lie beside those of the lists, in sets that have one.
std::size_t unlistedRecords(const WTNVProject& project);
