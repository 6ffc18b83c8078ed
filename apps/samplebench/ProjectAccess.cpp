#include "ProjectAccess.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <set>
#include <string_view>

#include <opencv2/core.hpp>

#include "ClaimedDirectory.h"
#include "CommandError.h"
#include "Platform.h"
#include "SetLists.h"

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

namespace {

// Those that a directory holds settings of; no more than one by right, its own.
std::vector<std::string> settingsIn(const fs::path& directory) {
  std::vector<std::string> projects;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(directory, error))
    if (entry.path().extension() == ".cfg") projects.push_back(entry.path().stem().string());
  std::sort(projects.begin(), projects.end());
  return projects;
}

// "that directory holds ...; what to do"; empty if it holds neither settings nor image sets.
std::string othersIn(const fs::path& directory, const std::string& name) {
  const auto others = settingsIn(directory);
  const auto sets = setsOnDisk(directory);
  if (others.empty() && sets.empty()) return "";
  if (others.empty())
    return "'" + directory.string() + "' holds image sets (" + joined(sets) +
           ") and no settings; restore the settings, " + name +
           ".cfg, or move that directory away to make the project anew";
  return "'" + directory.string() + "' holds the settings of '" + joined(others) +
         "'. To rename or copy that project, rename " + others.front() + ".cfg to " + name +
         ".cfg, write Project.Name = \"" + name +
         "\" in it, and tell it where it is with: samplebench relink " + name +
         " --project OLD=NEW";
}

void requireFreePlace(const Locations& locations, const std::string& name) {
  const auto directory = fs::path(locations.projects) / name;
  std::error_code error;
  if (!fs::exists(directory, error) || fs::is_empty(directory, error)) return;
  const auto others = othersIn(directory, name);
  throw CommandError("project '" + name + "' cannot be made: " +
                     (others.empty() ? "'" + directory.string() +
                                           "' is there and holds other files; move them away, or "
                                           "choose another name"
                                     : others + "; or choose another name"));
}

void requireFreeName(const Locations& locations, const std::string& name) {
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

}  // namespace

void requireNewProject(const Locations& locations, const std::string& name) {
  requireFreeName(locations, name);
  requireFreePlace(locations, name);
}

namespace {

[[noreturn]] void refuseBusy(const std::string& project, const std::string& holder) {
  throw CommandError("another command works on project '" + project + "'" + busyText(holder));
}

}  // namespace

std::unique_ptr<WTNVProject> createProject(const Locations& locations, const std::string& name) {
  // The place belongs to whoever has its lock, and may be half filled until then.
  requireFreeName(locations, name);
  const platform::InterruptCatcher catcher;
  // Of several commands that make it at once one wins; the others meet its lock or its project.
  const ClaimedDirectory directory(fs::path(locations.projects) / name,
                                   platform::DirectoryLock::Kind::staying);
  if (!directory.isOurs()) refuseBusy(name, directory.holder());
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

namespace {

[[noreturn]] void refuseUnknown(const Locations& locations, const std::string& name,
                                const std::vector<std::string>& names) {
  std::string advice;
  if (canNameProject(name)) {
    const auto others = othersIn(fs::path(locations.projects) / name, name);
    advice = others.empty() ? ". Make it with: samplebench create " + name : "; " + others;
  }
  throw CommandError("there is no project '" + name + "' in " + locations.projects +
                     "; projects there: " + listed(names) + advice);
}

// A settings file that lost its content reads as an empty project, which the next save would make
// it.
void requireOwnSettings(const WTNVProject& project, const std::string& file,
                        const std::string& name) {
  const auto found = project.wGetProjectName();
  if (found == name) return;
  // The library's name for a project whose settings give none.
  if (found.empty() || found == "unknown")
    throw BrokenProject("the settings of project '" + name + "' are damaged: " + file +
                        "; restore that file");
  throw CommandError("'" + file + "' holds the settings of '" + found +
                     "'; restore that file, or if this is that project under a new name, write "
                     "Project.Name = \"" +
                     name + "\" in it");
}

bool isThereUnreadable(const std::string& file) {
  std::error_code error;
  const auto status = fs::status(file, error);
  return fs::exists(status) && (!fs::is_regular_file(status) || !std::ifstream(file));
}

// The library's own reason names the file, and calls all that it cannot open empty.
[[noreturn]] void refuseLists(const WTNVProject& project, const std::string& name,
                              const std::string& reason) {
  for (const auto& set : setsOnDisk(projectDirectory(project))) {
    const auto list = setListFile(project, set);
    if (isThereUnreadable(list))
      throw BrokenProject("'" + list + "' cannot be read; see that it is a file and yours");
    if (reason.find(list) == std::string::npos) continue;
    throw BrokenProject(reason +
                        "; restore that file, for it says which pictures the set has. To give them "
                        "up with their marks, delete it, and then: samplebench remove set " +
                        forShell(name) + " " + forShell(set) + " --with-marks");
  }
  throw BrokenProject(reason);
}

// Settings and lists; records are read later.
bool load(WTNVProject& project, const std::string& name) {
  try {
    return project.wLoad();
  } catch (const cv::Exception& error) {
    refuseLists(project, name, error.err);
  }
}

}  // namespace

std::unique_ptr<WTNVProject> openProject(const Locations& locations, const std::string& name) {
  const auto names = sortedProjects(locations);
  if (!contains(names, name)) refuseUnknown(locations, name, names);
  auto project = projectAt(locations, name);
  if (!load(*project, name))
    throw BrokenProject("project '" + name + "' in " + locations.projects + " cannot be read");
  requireOwnSettings(*project, locations.projects + name + "/" + name + ".cfg", name);
  return project;
}

ProjectLock::ProjectLock(const Locations& locations, const std::string& name,
                         const Output& output) {
  if (output.isDryRun()) return;
  lock = std::make_unique<platform::DirectoryLock>(fs::path(locations.projects) / name);
  if (!lock->isOurs()) refuseBusy(name, lock->holder());
}

namespace {

// Tells where records lie. Those of a set lie in one directory, so that few links are followed. The
// directory of a set may itself be a link that leads away.
class RecordPlaces {
 public:
  explicit RecordPlaces(const WTNVProject& project)
      : own(absolutePath(projectDirectory(project).string())) {}

  // One that was never saved lies nowhere yet.
  bool isElsewhere(const std::string& record) {
    if (record.empty()) return false;
    const auto directory = fs::path(absolutePath(record)).parent_path().parent_path();
    const auto [place, isNew] = known.emplace(directory.string(), false);
    if (isNew) place->second = directory != own && !liesWithin(directory, own);
    return place->second;
  }

 private:
  fs::path own;
  std::unordered_map<std::string, bool> known;
};

}  // namespace

std::string forShell(const std::string& text) {
  const auto isPlain = [](unsigned char letter) {
    return std::isalnum(letter) != 0 || letter >= 0x80 ||
           std::string_view("/._-+=:,@%").find(static_cast<char>(letter)) != std::string_view::npos;
  };
  if (std::all_of(text.begin(), text.end(), isPlain)) return text;
  std::string quoted = "'";
  for (const char letter : text)
    quoted += letter == '\'' ? "'\\''" : std::string(1, letter);
  return quoted + "'";
}

std::string moveAdvice(const WTNVProject& project) {
  RecordPlaces places(project);
  for (const auto& trainSet : project.wGetTrainSets()) {
    const auto record = trainSet.wGetDataPath();
    if (!places.isElsewhere(record)) continue;
    // It lies in the directory of its set, which lies in that of the project.
    const auto before = fs::path(absolutePath(record)).parent_path().parent_path().string();
    const auto name = project.wGetProjectName();
    return "project '" + name + "' was moved or copied: its records are looked for in " + before +
           "; tell it where they are: samplebench relink " + forShell(name) + " --project " +
           forShell(before + "=" + absolutePath(projectDirectory(project).string()));
  }
  return "";
}

void requireOwnRecords(const WTNVProject& project) {
  const auto advice = moveAdvice(project);
  if (!advice.empty()) throw CommandError(advice + "; nothing was changed");
}

std::unique_ptr<WTNVProject> openProject(const Locations& locations, const std::string& name,
                                         const ProjectLock& /*lock*/) {
  auto project = openProject(locations, name);
  requireOwnRecords(*project);
  requireSetLists(*project);
  return project;
}

namespace {

// What saving replaces lies in these, and what it removes.
void requireWritableProject(const WTNVProject& project) {
  const auto directory = projectDirectory(project);
  std::vector<std::string> directories{directory.string()};
  for (const auto& set : setsOnDisk(directory))
    directories.push_back(setRecordsDirectory(project, set));
  for (const auto& each : directories)
    if (!platform::canWriteIn(each))
      throw CommandError("project '" + project.wGetProjectName() + "' cannot be saved: '" + each +
                         "' cannot be written to; nothing was changed, see that it is yours");
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

namespace {

// Why a class cannot have the name, and which one it can have; empty if it can.
std::string objectionTo(const std::string& name) {
  const auto isRefused = [](unsigned char letter) {
    return letter < ' ' || letter == 127 ||
           std::string_view(",={}\"\\").find(static_cast<char>(letter)) != std::string_view::npos;
  };
  if (name.find_first_not_of(' ') == std::string::npos) return "use a name, not of blanks alone";
  if (std::any_of(name.begin(), name.end(), isRefused))
    return "use a name without comma, equals sign, brace, quote, backslash, tab and other control "
           "characters";
  if (name.front() == ' ' || name.back() == ' ')
    return "use a name without blanks at its ends, which labels do not give back";
  return "";
}

}  // namespace

bool isClassName(const std::string& name) {
  return objectionTo(name).empty();
}

void requireClassName(const std::string& name) {
  const auto objection = objectionTo(name);
  if (!objection.empty())
    throw CommandError("'" + name + "' cannot name a class; " + objection, exitUsage);
}

namespace {

constexpr auto whatToDo = "; restore or remove that file";
// The library does not tell why it could not read a file.
std::string stateOf(const std::string& file) {
  std::error_code error;
  const auto size = fs::file_size(file, error);
  if (error == std::errc::no_such_file_or_directory) return " is missing: " + file;
  if (!error && size == 0) return " is empty: " + file;
  return " cannot be read: " + file + "; see that it is a file and yours";
}

// A record of a set, and why it cannot be read if that is so.
PictureRecord readRecord(const std::string& set, const WTNVTrainSet& trainSet, std::size_t number) {
  const auto name = "record " + std::to_string(number) + " of set '" + set + "'";
  PictureRecord record{set, "", trainSet, ""};
  try {
    if (!trainSet.wLoadData())
      record.damage = "the file of " + name + stateOf(trainSet.wGetDataPath());
  } catch (const cv::Exception& error) {
    record.damage = name + ": " + error.err;
  }
  std::error_code error;
  record.isGone =
      !record.damage.empty() && !fs::exists(fs::symlink_status(trainSet.wGetDataPath(), error));
  record.path = trainSet.getImagePath();
  return record;
}

std::vector<PictureRecord> readSet(const WTNVProject& project, const std::string& set) {
  RecordPlaces places(project);
  std::vector<PictureRecord> records;
  for (const auto& trainSet : project.wGetTrainSetsFromImageSet(set)) {
    records.push_back(readRecord(set, trainSet, records.size() + 1));
    records.back().isElsewhere = places.isElsewhere(trainSet.wGetDataPath());
  }
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
  const auto advice = moveAdvice(project);
  if (!advice.empty()) output.note(advice);
  const auto lost = lostSets(project);
  for (const auto& set : lost)
    output.note("the list of set '" + set.name +
                "' is lost, and its pictures are left out: " + lostSetAdvice(project, set));
  output.fact("lostSets", static_cast<Json::UInt64>(lost.size()));
  if (!lost.empty()) output.setFindings();
  std::size_t unreadable = 0;
  for (const auto& picture : pictures) {
    if (picture.damage.empty()) continue;
    ++unreadable;
    if (!picture.isElsewhere) output.note(picture.damage + whatToDo);
  }
  if (unreadable > 0)
    output.note("the records of " + counted(unreadable, "picture") + " cannot be read");
  return pictures;
}

const PictureRecord* firstDamaged(const std::vector<PictureRecord>& records) {
  const auto isDamaged = [](const PictureRecord& record) {
    return !record.damage.empty() && !record.isGone;
  };
  const auto found = std::find_if(records.begin(), records.end(), isDamaged);
  return found == records.end() ? nullptr : &*found;
}

void requireWholeRecords(const WTNVProject& project) {
  const auto records = readRecords(project);
  if (const auto* damaged = firstDamaged(records)) throw CommandError(damaged->damage + whatToDo);
}

fs::path projectDirectory(const WTNVProject& project) {
  // The path ends in a slash.
  return fs::path(project.wGetProjectDirectoryPath()).parent_path();
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
  const auto first = places.front();
  if (std::any_of(places.begin(), places.end(),
                  [&](std::size_t place) { return records[place].set != records[first].set; }))
    throw CommandError("'" + name + "' is in several sets, " + candidates(places) +
                       "; choose one with --set");
  if (places.size() > 1)
    messages.note("'" + name + "' is in the set " + records[first].set + " " +
                  std::to_string(places.size()) + " times; the first one is taken");
  return first;
}

std::string PictureIndex::missing(const std::string& name) const {
  constexpr std::size_t mostNamed = 3;
  std::vector<std::string> damages;
  std::size_t damaged = 0;
  for (const auto& record : records) {
    if (record.damage.empty()) continue;
    if (++damaged <= mostNamed) damages.push_back(record.damage);
  }
  if (damaged == 0)
    return "the project has no picture '" + name + "'; samplebench list shows its pictures";
  if (damaged > mostNamed) damages.push_back(std::to_string(damaged - mostNamed) + " more");
  return "the project has no picture '" + name + "' among those that can be read; it may be in " +
         joined(damages) + ". What to do, says: samplebench check";
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
