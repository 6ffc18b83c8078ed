#include "SetLists.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <unordered_set>

#include "ProjectAccess.h"

namespace fs = std::filesystem;

namespace {

// Of the directories of image sets; persisted.
constexpr std::string_view prefix = "is_";

std::vector<std::string> recordsIn(const fs::path& directory) {
  std::vector<std::string> records;
  std::error_code error;
  for (const auto& file : fs::directory_iterator(directory, error))
    if (file.path().extension() == ".xml") records.push_back(file.path().filename().string());
  return records;
}

std::unordered_set<std::string> listedRecords(const std::vector<WTNVTrainSet>& trainSets) {
  std::unordered_set<std::string> names;
  for (const auto& trainSet : trainSets)
    names.insert(fs::path(trainSet.wGetDataPath()).filename().string());
  return names;
}

void requireNone(const WTNVProject& project, const std::vector<LostSet>& sets) {
  if (!sets.empty())
    throw CommandError("the list of set '" + sets.front().name + "' is lost: " +
                       lostSetAdvice(project, sets.front()) + "; nothing was changed");
}

}  // namespace

std::string setListFile(const WTNVProject& project, const std::string& set) {
  return (projectDirectory(project) / (set + ".xml")).string();
}

std::string setRecordsDirectory(const WTNVProject& project, const std::string& set) {
  return (projectDirectory(project) / (std::string(prefix) + set)).string();
}

std::vector<std::string> setsOnDisk(const fs::path& directory) {
  std::vector<std::string> sets;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(directory, error)) {
    const auto name = entry.path().filename().string();
    std::error_code unknown;
    if (name.starts_with(prefix) && entry.is_directory(unknown))
      sets.push_back(name.substr(prefix.size()));
  }
  std::sort(sets.begin(), sets.end());
  return sets;
}

std::vector<LostSet> lostSets(const WTNVProject& project) {
  const auto named = project.wGetImageSets();
  std::vector<LostSet> lost;
  for (const auto& set : setsOnDisk(projectDirectory(project))) {
    const bool isNamed = std::find(named.begin(), named.end(), set) != named.end();
    if (isNamed && !project.wGetTrainSetsFromImageSet(set).empty()) continue;
    const auto records = recordsIn(setRecordsDirectory(project, set)).size();
    if (records > 0) lost.push_back({set, records, isNamed});
  }
  return lost;
}

std::string lostSetAdvice(const WTNVProject& project, const LostSet& set) {
  const auto name = project.wGetProjectName();
  return "no list of the project names the " + counted(set.records, "record") + " in " +
         setRecordsDirectory(project, set.name) + "; restore " + setListFile(project, set.name) +
         (set.isNamed ? "" : " and the set's name in the settings (Source.Images.Filelists)") +
         ", or give the records up, with their marks: samplebench remove set " + forShell(name) +
         " " + forShell(set.name) + " --with-marks";
}

void requireSetLists(const WTNVProject& project) {
  requireNone(project, lostSets(project));
}

void requireNamedSets(const WTNVProject& project) {
  auto lost = lostSets(project);
  std::erase_if(lost, [](const auto& set) { return set.isNamed; });
  requireNone(project, lost);
}

std::size_t unlistedRecords(const WTNVProject& project) {
  std::size_t count = 0;
  for (const auto& set : project.wGetImageSets()) {
    const auto listed = listedRecords(project.wGetTrainSetsFromImageSet(set));
    if (listed.empty()) continue;
    const auto records = recordsIn(setRecordsDirectory(project, set));
    count += static_cast<std::size_t>(
        std::count_if(records.begin(), records.end(),
                      [&](const auto& record) { return !listed.contains(record); }));
  }
  return count;
}
