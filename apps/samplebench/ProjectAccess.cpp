#include "ProjectAccess.h"

#include <algorithm>
#include <iterator>
#include <set>

#include <opencv2/core.hpp>

#include "ClaimedDirectory.h"
#include "CommandError.h"
#include "Platform.h"

namespace fs = std::filesystem;

namespace {

std::string shareDirectory(const std::string& name) {
  const auto share = platform::executableDirectory() / ".." / "share" / "TNV_SampleBenchNative";
  return (share / name / "").lexically_normal().generic_string();
}

std::unique_ptr<WTNVProject> projectAt(const Locations& locations, const std::string& name) {
  return std::make_unique<WTNVProject>(name, locations.projects, locations.platforms,
                                       locations.augments);
}

std::vector<std::string> sortedProjects(const Locations& locations) {
  if (!fs::exists(locations.projects)) return {};
  auto names = WTNVProject::wReadAvailableProjects(locations.projects);
  std::sort(names.begin(), names.end());
  return names;
}

bool contains(const std::vector<std::string>& texts, const std::string& text) {
  return std::find(texts.begin(), texts.end(), text) != texts.end();
}

std::string listed(const std::vector<std::string>& names) {
  return names.empty() ? "none" : joined(names);
}

// In bytes: files are called after it, with endings behind, and file systems take 255.
constexpr std::size_t longestName = 200;

// What can name a directory, and survives in a settings file.
bool canNameProject(const std::string& name) {
  const auto isRefused = [](unsigned char letter) {
    return letter < ' ' || letter == 127 ||
           std::string_view("/\\=\"").find(static_cast<char>(letter)) != std::string_view::npos;
  };
  return !name.empty() && name.size() <= longestName && name != "." && name != ".." &&
         std::none_of(name.begin(), name.end(), isRefused);
}

}  // namespace

std::string defaultPlatforms() {
  return shareDirectory("platforms");
}

std::string defaultAugments() {
  return shareDirectory("augments");
}

void requireNewProject(const Locations& locations, const std::string& name) {
  if (!canNameProject(name))
    throw CommandError("'" + name +
                           "' cannot name a project; use a name without slashes, equals sign and "
                           "double quote, of at most 200 bytes",
                       exitUsage);
  if (contains(sortedProjects(locations), name))
    throw CommandError("project '" + name + "' is there already in " + locations.projects +
                       "; choose another name");
  requireStorable("the name of a project", name);
  if (!platform::canWriteIn(lowestExisting(locations.projects)))
    throw CommandError("project '" + name + "' cannot be made in " + locations.projects +
                       "; use a directory that can be written to");
}

namespace {

[[noreturn]] void refuseBusy(const std::string& project) {
  throw CommandError("another command works on project '" + project +
                     "'; nothing was changed, try again when it is done");
}

}  // namespace

std::unique_ptr<WTNVProject> createProject(const Locations& locations, const std::string& name) {
  requireNewProject(locations, name);
  const platform::InterruptCatcher catcher;
  // Of several commands that make it at once one wins; the others meet its lock or its project.
  const ClaimedDirectory directory(fs::path(locations.projects) / name,
                                   platform::DirectoryLock::Kind::staying);
  if (!directory.isOurs()) refuseBusy(name);
  requireNewProject(locations, name);
  auto project = projectAt(locations, name);
  if (!project->wCreate())
    throw CommandError("project '" + name + "' cannot be made in " + locations.projects +
                       "; use a directory that can be written to");
  return project;
}

void requireStorable(const std::string& what, const std::string& text) {
  if (text.find_first_of("=\"\\\n") != std::string::npos)
    throw CommandError(what + " must not hold =, a double quote, a backslash or a line break");
}

std::unique_ptr<WTNVProject> openProject(const Locations& locations, const std::string& name) {
  const auto names = sortedProjects(locations);
  if (!contains(names, name))
    throw CommandError(
        "there is no project '" + name + "' in " + locations.projects +
        "; projects there: " + listed(names) +
        (canNameProject(name) ? ". Make it with: samplebench create " + name : std::string()));
  auto project = projectAt(locations, name);
  if (!project->wLoad())
    throw CommandError("project '" + name + "' in " + locations.projects + " cannot be read");
  // A settings file that lost its content reads as an empty project, which the next save would make
  // it.
  if (project->wGetProjectName() != name)
    throw CommandError("the settings of project '" + name + "' are damaged: " + locations.projects +
                       name + "/" + name + ".cfg; restore that file");
  return project;
}

ProjectLock::ProjectLock(const Locations& locations, const std::string& name,
                         const Output& output) {
  if (output.isDryRun()) return;
  lock = std::make_unique<platform::DirectoryLock>(fs::path(locations.projects) / name);
  if (!lock->isOurs()) refuseBusy(name);
}

namespace {

// What saving replaces lies in these.
void requireWritableProject(const WTNVProject& project) {
  auto directory = projectDirectory(project);
  bool isOurs = platform::canWriteIn(directory);
  for (const auto& set : project.wGetImageSets()) {
    const auto records = directory / ("is_" + set);
    isOurs = isOurs && (!fs::exists(records) || platform::canWriteIn(records));
  }
  if (!isOurs)
    throw CommandError("project '" + project.wGetProjectName() +
                       "' cannot be saved; see that its directory can be written to");
}

}  // namespace

void saveProject(WTNVProject& project, bool full, const Output& output) {
  requireWritableProject(project);
  if (output.isDryRun()) return;
  const platform::InterruptCatcher catcher;
  if (!project.wUpdate(full))
    throw CommandError("project '" + project.wGetProjectName() +
                       "' cannot be saved; see that its directory can be written to");
}

bool isClassName(const std::string& name) {
  return name.find_first_of(",={}\"\\\n\r\t") == std::string::npos &&
         name.find_first_not_of(' ') != std::string::npos;
}

void requireClassName(const std::string& name) {
  if (!isClassName(name))
    throw CommandError(
        "class '" + name +
            "' cannot be added; use a name, not of blanks alone, without comma, equals "
            "sign, brace, quote, backslash or tab",
        exitUsage);
}

namespace {

constexpr auto whatToDo = "; restore or remove that file";
constexpr auto isMissing = " is missing or empty";

// The library does not tell which file of a set is empty.
std::string emptyFiles(const WTNVProject& project, const std::string& set) {
  std::vector<std::string> files;
  std::error_code error;
  const auto directory = projectDirectory(project) / ("is_" + set);
  for (const auto& entry : fs::directory_iterator(directory, error))
    if (entry.is_regular_file(error) && entry.file_size(error) == 0)
      files.push_back(entry.path().string());
  return files.empty() ? ""
                       : " (" + joined(files) + (files.size() == 1 ? " is" : " are") + " empty)";
}

// A record of a set, and why it cannot be read if that is so.
PictureRecord readRecord(const WTNVProject& project, const std::string& set,
                         const WTNVTrainSet& trainSet, std::size_t number) {
  const auto name = "record " + std::to_string(number) + " of set '" + set + "'";
  std::string damage;
  try {
    if (!trainSet.wLoadData())
      damage = "the file of " + name + isMissing + emptyFiles(project, set);
  } catch (const cv::Exception& error) {
    damage = name + ": " + error.err;
  }
  return {set, trainSet.getImagePath(), trainSet, damage};
}

std::vector<PictureRecord> readSet(const WTNVProject& project, const std::string& set) {
  std::vector<PictureRecord> records;
  for (const auto& trainSet : project.wGetTrainSetsFromImageSet(set))
    records.push_back(readRecord(project, set, trainSet, records.size() + 1));
  return records;
}

}  // namespace

std::vector<PictureRecord> readRecords(const WTNVProject& project) {
  std::vector<PictureRecord> records;
  for (const auto& set : project.wGetImageSets())
    for (auto& record : readSet(project, set))
      records.push_back(std::move(record));
  return records;
}

std::vector<PictureRecord> readPictures(const WTNVProject& project, Output& output) {
  auto pictures = readRecords(project);
  std::size_t unreadable = 0;
  for (const auto& picture : pictures) {
    if (picture.damage.empty()) continue;
    ++unreadable;
    output.note(picture.damage + whatToDo);
  }
  if (unreadable > 0)
    output.note("the records of " + counted(unreadable, "picture") + " cannot be read");
  return pictures;
}

const PictureRecord* firstDamaged(const std::vector<PictureRecord>& records) {
  const auto isDamaged = [](const PictureRecord& record) {
    return !record.damage.empty() && !record.damage.ends_with(isMissing);
  };
  const auto found = std::find_if(records.begin(), records.end(), isDamaged);
  return found == records.end() ? nullptr : &*found;
}

void requireWholeRecords(const WTNVProject& project) {
  const auto records = readRecords(project);
  if (const auto* damaged = firstDamaged(records)) throw CommandError(damaged->damage + whatToDo);
}

fs::path projectDirectory(const WTNVProject& project) {
  // The samples lie right in it; their path ends in a slash.
  return fs::path(project.wGetSamplesDirectoryPath()).parent_path().parent_path();
}

bool liesWithin(const fs::path& path, const fs::path& directory) {
  std::error_code error;
  const auto way =
      fs::weakly_canonical(path, error).lexically_relative(fs::weakly_canonical(directory, error));
  return !way.empty() && *way.begin() != "..";
}

std::string absolutePath(const std::string& path) {
  return fs::absolute(path).lexically_normal().generic_string();
}

fs::path lowestExisting(const std::string& place) {
  std::error_code error;
  auto path = fs::path(absolutePath(place));
  while (!fs::exists(path, error) && path.has_relative_path())
    path = path.parent_path();
  return path;
}

namespace {

void requireSet(const std::vector<PictureRecord>& records, const std::string& set) {
  if (set.empty()) return;
  std::set<std::string> sets;
  for (const auto& record : records)
    sets.insert(record.set);
  requireChoice("set", set, {sets.begin(), sets.end()});
}

}  // namespace

PictureIndex::PictureIndex(const std::vector<PictureRecord>& pictures, Output& output,
                           const std::string& set)
    : records(pictures), messages(output) {
  requireSet(records, set);
  for (std::size_t place = 0; place < records.size(); ++place) {
    const auto& path = records[place].path;
    if (path.empty() || (!set.empty() && records[place].set != set)) continue;
    byPath[absolutePath(path)].push_back(place);
    byFileName[fs::path(path).filename().string()].push_back(place);
  }
}

std::vector<std::size_t> PictureIndex::foundPlaces(const std::string& name) const {
  const auto places = placesOf(name);
  if (places.empty()) throw CommandError(missing(name));
  const auto isSame = [&](std::size_t place) {
    return absolutePath(records[place].path) == absolutePath(records[places.front()].path);
  };
  if (!std::all_of(places.begin(), places.end(), isSame))
    throw CommandError("'" + name + "' may be one of " + candidates(places) + "; give its path");
  return places;
}

std::size_t PictureIndex::find(const std::string& name) const {
  const auto places = foundPlaces(name);
  const auto first = places.front();
  if (places.size() > 1 && noted.insert(first).second)
    messages.note("'" + name + "' is in several sets, " + candidates(places) +
                  "; the first one is taken, --set chooses another");
  return first;
}

std::size_t PictureIndex::findOnly(const std::string& name) const {
  const auto places = foundPlaces(name);
  if (places.size() > 1)
    throw CommandError("'" + name + "' is in several sets, " + candidates(places) +
                       "; choose one with --set");
  return places.front();
}

std::string PictureIndex::missing(const std::string& name) const {
  std::vector<std::string> damages;
  for (const auto& record : records)
    if (!record.damage.empty()) damages.push_back(record.damage);
  if (damages.empty())
    return "the project has no picture '" + name + "'; samplebench list shows its pictures";
  return "the project has no picture '" + name + "' among those that can be read; it may be in " +
         joined(damages) + ". Restore that";
}

std::vector<std::size_t> PictureIndex::placesOf(const std::string& name) const {
  if (name.empty()) return {};
  const auto path = byPath.find(absolutePath(name));
  if (path != byPath.end()) return path->second;
  const auto fileName = byFileName.find(name);
  return fileName == byFileName.end() ? std::vector<std::size_t>() : fileName->second;
}

std::string PictureIndex::candidates(const std::vector<std::size_t>& places) const {
  std::vector<std::string> texts;
  for (const auto place : places)
    texts.push_back(records[place].path + " (set " + records[place].set + ")");
  return joined(texts);
}

void requireChoice(const std::string& what, const std::string& value,
                   const std::vector<std::string>& choices, ExitCode code) {
  if (contains(choices, value)) return;
  auto sorted = choices;
  std::sort(sorted.begin(), sorted.end());
  throw CommandError("there is no " + what + " '" + value + "'; choose from: " + listed(sorted),
                     code);
}

WTNVDNNClass findClass(const WTNVProject& project, const std::string& name) {
  std::vector<std::string> names;
  for (const auto& dnnClass : project.wGetDNNClasses()) {
    if (dnnClass.wGetName() == name) return dnnClass;
    names.push_back(dnnClass.wGetName());
  }
  throw CommandError("there is no class '" + name + "'; choose from: " + listed(names) +
                     ", or add it with: samplebench class add " + project.wGetProjectName() + " " +
                     name);
}
