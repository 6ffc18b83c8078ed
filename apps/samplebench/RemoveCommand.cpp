#include "RemoveCommand.h"

#include <algorithm>
#include <map>
#include <set>

#include "CommandError.h"
#include "CommandLine.h"
#include "Editor.h"
#include "PictureFile.h"
#include "SetLists.h"

namespace fs = std::filesystem;

namespace {

struct RemoveOptions {
  std::string project;
  std::string set;
  std::string picture;
  std::vector<std::string> pictures;
  std::vector<int> numbers;
  /// Lose the marks of what is removed, too.
  bool withMarks = false;
  /// The pictures whose records cannot be read.
  bool damaged = false;
};

constexpr auto filesStay = "; the picture files stay where they are";

// What goes, counted while it is there.
struct Removal {
  std::size_t pictures = 0;
  std::size_t marks = 0;
};

Removal countOf(const std::vector<PictureRecord>& pictures) {
  Removal removal{pictures.size(), 0};
  for (const auto& picture : pictures)
    removal.marks += static_cast<std::size_t>(picture.trainSet.getMarkCount());
  return removal;
}

// A dry run is asked how many these are.
Removal requireRemoval(const RemoveOptions& options, const std::vector<PictureRecord>& removed,
                       const Output& output) {
  const auto removal = countOf(removed);
  if (options.withMarks || output.isDryRun()) return removal;
  // How many marks it has does not show.
  if (const auto* damaged = firstDamaged(removed))
    throw CommandError(damaged->damage +
                       "; restore that file, or remove it unread, with its marks, by --with-marks");
  if (removal.marks > 0)
    throw CommandError(counted(removal.marks, "mark") +
                       " would be removed, too; --with-marks does that");
  return removal;
}

void report(const Removal& removal, const std::string& from, Output& output) {
  output.fact("pictures", static_cast<Json::UInt64>(removal.pictures));
  output.fact("marks", static_cast<Json::UInt64>(removal.marks));
  output.say(counted(removal.pictures, "picture") + " with " + counted(removal.marks, "mark") +
             std::string(output.told(" removed from ", " would be removed from ")) + from +
             filesStay);
}

void requireNumbers(const std::vector<int>& numbers, std::size_t marks,
                    const std::string& picture) {
  if (std::set<int>(numbers.begin(), numbers.end()).size() != numbers.size())
    throw CommandError("a mark is named twice", exitUsage);
  for (const auto number : numbers) {
    if (number >= 1 && static_cast<std::size_t>(number) <= marks) continue;
    throw CommandError("there is no mark " + std::to_string(number) + " on '" + picture + "', " +
                       (marks == 0 ? "which has none"
                                   : "whose marks have the numbers 1 to " + std::to_string(marks)) +
                       "; samplebench list --picture shows them");
  }
}

void runRemoveMark(const Locations& locations, const RemoveOptions& options, Output& output) {
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project, lock);
  const auto pictures = readPictures(*project, output);
  const auto place = PictureIndex(pictures, output, options.set).findOnly(options.picture);
  Editor editor(*project);
  editor.goTo(place);
  const auto marks = editor.marks.getAllMarks();
  requireNumbers(options.numbers, marks.size(), options.picture);
  for (const auto number : options.numbers)
    editor.marks.removeMark(marks[static_cast<std::size_t>(number) - 1]);
  saveProject(*project, false, output);
  const auto left = marks.size() - options.numbers.size();
  output.fact("marks", static_cast<Json::UInt64>(options.numbers.size()));
  output.fact("left", static_cast<Json::UInt64>(left));
  output.say(counted(options.numbers.size(), "mark") +
             std::string(output.told(" removed from ", " would be removed from ")) +
             options.picture + "; " + counted(left, "mark") +
             std::string(output.told(" left", " would be left")) +
             ", numbered from 1 without gaps");
}

// One call for each set: each of them goes through all the records of its set.
void takeOut(WTNVProject& project, const std::vector<PictureRecord>& removed) {
  std::map<std::string, std::vector<std::string>> pathsBySet;
  for (const auto& picture : removed)
    pathsBySet[picture.set].push_back(picture.path);
  for (const auto& [set, paths] : pathsBySet)
    project.wRemoveImagesFromImageSet(paths, set);
}

// What marks they have cannot be known.
void runRemoveDamaged(const Locations& locations, const RemoveOptions& options, Output& output) {
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project, lock);
  auto damaged = readPictures(*project, output);
  std::erase_if(damaged, [](const auto& picture) { return picture.damage.empty(); });
  if (!damaged.empty() && !options.withMarks && !output.isDryRun())
    throw CommandError("the marks of " + counted(damaged.size(), "picture") +
                       " whose records cannot be read would be lost; --with-marks does that");
  takeOut(*project, damaged);
  if (!damaged.empty()) saveProject(*project, true, output);
  output.fact("pictures", static_cast<Json::UInt64>(damaged.size()));
  output.say(counted(damaged.size(), "picture") + " whose records cannot be read" +
             std::string(output.told(" removed from project ", " would be removed from project ")) +
             options.project + filesStay);
}

void runRemovePicture(const Locations& locations, const RemoveOptions& options, Output& output) {
  if (options.damaged != options.pictures.empty())
    throw CommandError("give the pictures that are to be removed, or --damaged", exitUsage);
  if (options.damaged) return runRemoveDamaged(locations, options, output);
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project, lock);
  const auto pictures = readPictures(*project, output);
  const PictureIndex index(pictures, output, options.set);
  std::set<std::size_t> places;
  for (const auto& name : options.pictures)
    places.insert(index.findOnly(name));
  std::vector<PictureRecord> removed;
  for (const auto place : places)
    removed.push_back(pictures[place]);
  const auto removal = requireRemoval(options, removed, output);
  takeOut(*project, removed);
  saveProject(*project, true, output);
  report(removal, "project " + options.project, output);
}

// What belongs to a directory goes with it, so that all of it has to be ours.
void requireRemovable(const fs::path& directory) {
  std::vector<fs::path> directories{directory.parent_path()};
  std::vector<fs::path> waiting{directory};
  while (!waiting.empty()) {
    directories.push_back(waiting.back());
    waiting.pop_back();
    std::error_code error;
    for (fs::directory_iterator entry(directories.back(), error), end; !error && entry != end;
         entry.increment(error)) {
      std::error_code unknown;
      if (entry->is_directory(unknown) && !entry->is_symlink(unknown))
        waiting.push_back(entry->path());
    }
    if (error)
      throw CommandError("'" + directories.back().string() +
                         "' cannot be read; nothing was removed, see that it is yours");
  }
  for (const auto& each : directories)
    if (!platform::canWriteIn(each))
      throw CommandError("'" + each.string() +
                         "' cannot be written to; nothing was removed, see that it is yours");
}

// By hand where the settings do not name the set; otherwise its name has to leave them, too.
void takeOutLost(WTNVProject& project, const LostSet& set, const Output& output) {
  if (set.isNamed) {
    project.wRemoveImagesFromImageSet({}, set.name);
    return saveProject(project, true, output);
  }
  if (output.isDryRun()) return;
  fs::remove_all(setRecordsDirectory(project, set.name));
  fs::remove(setListFile(project, set.name));
}

// As a first import leaves it that was killed, or one whose list went. The others have to be whole,
// or named at least: the save of the project would remove what the settings do not name.
void removeLostSet(WTNVProject& project, const LostSet& set, const RemoveOptions& options,
                   Output& output) {
  if (set.isNamed) {
    requireOwnRecords(project);
    requireNamedSets(project);
  }
  if (!options.withMarks && !output.isDryRun())
    throw CommandError("the marks of set '" + set.name +
                       "', whose list is lost, would be lost, too: " + lostSetAdvice(project, set));
  requireRemovable(setRecordsDirectory(project, set.name));
  takeOutLost(project, set, output);
  output.fact("records", static_cast<Json::UInt64>(set.records));
  output.say(counted(set.records, "record") + " of set " + set.name + ", whose list is lost," +
             std::string(output.told(" removed", " would be removed")) + " with the marks in them" +
             filesStay);
}

void runRemoveSet(const Locations& locations, const RemoveOptions& options, Output& output) {
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project);
  for (const auto& lost : lostSets(*project))
    if (lost.name == options.set) return removeLostSet(*project, lost, options, output);
  requireOwnRecords(*project);
  requireSetLists(*project);
  requireChoice("set", options.set, project->wGetImageSets());
  auto removed = readPictures(*project, output);
  std::erase_if(removed, [&](const auto& picture) { return picture.set != options.set; });
  const auto removal = requireRemoval(options, removed, output);
  const auto records = setRecordsDirectory(*project, options.set);
  if (fs::exists(records)) requireRemovable(records);
  takeOut(*project, removed);
  saveProject(*project, true, output);
  report(removal, "project " + options.project + " with set " + options.set, output);
}

[[noreturn]] void refusePictureWithin(const std::string& picture) {
  throw CommandError("the picture '" + picture +
                     "' lies in the directory of the project, which would be removed; move it "
                     "away first");
}

// The library removes the directory of the project with all that is in it.
void requireNoPicturesWithin(const fs::path& directory,
                             const std::vector<PictureRecord>& pictures) {
  for (const auto& picture : pictures)
    if (!picture.path.empty() && liesWithin(picture.path, directory))
      refusePictureWithin(picture.path);
}

std::size_t filesBelow(const fs::path& directory) {
  std::size_t files = 0;
  std::error_code error;
  for (const auto& entry : fs::recursive_directory_iterator(directory, error))
    if (!entry.is_directory(error)) ++files;
  return files;
}

// Where pictures of the project's own making lie; persisted.
constexpr auto cutsDirectory = "validation";
constexpr auto cacheDirectory = "cache";

// Which pictures are the project's own cannot be known.
void requireNoPictureFiles(const fs::path& directory) {
  for (fs::recursive_directory_iterator entry(directory), end; entry != end; ++entry) {
    const auto name = entry->path().filename();
    if (entry.depth() == 0 && (name == cutsDirectory || name == cacheDirectory)) {
      entry.disable_recursion_pending();
    } else if (looksLikePicture(entry->path().string())) {
      refusePictureWithin(entry->path().string());
    }
  }
}

// What it is to lose is not known, nor where its pictures lie.
void removeBroken(const Locations& locations, const RemoveOptions& options,
                  const std::string& reason, Output& output) {
  if (!options.withMarks)
    throw CommandError(reason +
                       ". Or remove the project unread, with its marks: samplebench remove "
                       "project " +
                       forShell(options.project) + " --with-marks");
  const auto directory = fs::path(locations.projects) / options.project;
  requireRemovable(directory);
  requireNoPictureFiles(directory);
  const auto files = filesBelow(directory);
  const platform::InterruptCatcher catcher;
  if (!output.isDryRun()) fs::remove_all(directory);
  output.note(reason);
  output.fact("project", options.project);
  output.fact("files", static_cast<Json::UInt64>(files));
  output.say("project " + options.project + ", which cannot be read," +
             std::string(output.told(" removed", " would be removed")) + " with its directory " +
             directory.string() + " (" + counted(files, "file") + ")" + filesStay);
}

// Of sets without a list it is not known how many marks they have, nor where their pictures lie.
void requireListsOrConsent(const WTNVProject& project, const RemoveOptions& options,
                           const Output& output) {
  const auto lost = lostSets(project);
  if (lost.empty()) return;
  requireNoPictureFiles(projectDirectory(project));
  if (options.withMarks || output.isDryRun()) return;
  throw CommandError("the marks of set '" + lost.front().name +
                     "' would be lost: " + lostSetAdvice(project, lost.front()) +
                     "; or remove the project with them by --with-marks");
}

void removeWhole(WTNVProject& project, const RemoveOptions& options, Output& output) {
  requireOwnRecords(project);
  const auto directory = projectDirectory(project);
  requireRemovable(directory);
  const auto pictures = readRecords(project);
  requireNoPicturesWithin(directory, pictures);
  requireListsOrConsent(project, options, output);
  const auto removal = requireRemoval(options, pictures, output);
  const auto files = filesBelow(directory);
  const platform::InterruptCatcher catcher;
  if (!output.isDryRun() && !project.wRemove())
    throw CommandError("project '" + options.project + "' cannot be removed: " + output.cause());
  output.fact("project", options.project);
  output.fact("files", static_cast<Json::UInt64>(files));
  report(removal,
         "project " + options.project + " with its directory " + directory.string() + " (" +
             counted(files, "file") + ")",
         output);
}

// Only the link would go, with the settings behind it.
void requireNoLink(const Locations& locations, const std::string& project) {
  const auto place = fs::path(locations.projects) / project;
  std::error_code error;
  if (fs::is_symlink(fs::symlink_status(place, error)))
    throw CommandError("'" + place.string() + "' is a link to '" +
                       fs::read_symlink(place, error).string() +
                       "'; remove the project there, with --projects, and then the link");
}

void runRemoveProject(const Locations& locations, const RemoveOptions& options, Output& output) {
  requireNoLink(locations, options.project);
  const ProjectLock lock(locations, options.project, output);
  std::unique_ptr<WTNVProject> project;
  try {
    project = openProject(locations, options.project);
  } catch (const BrokenProject& broken) {
    return removeBroken(locations, options, broken.what(), output);
  }
  removeWhole(*project, options, output);
}

using RemoveRun = void (*)(const Locations&, const RemoveOptions&, Output&);

struct RemoveCommand {
  CLI::App* app;
  RemoveOptions* options;
};

RemoveCommand add(CLI::App& remove, ProgramOptions& program, const CommandHelp& help,
                  RemoveRun run) {
  const auto options = std::make_shared<RemoveOptions>();
  auto* command = addWritingCommand(
      remove, program, help,
      [&program, options, run](Output& output) { run(program.locations, *options, output); });
  addProjectArgument(*command, options->project);
  return {command, options.get()};
}

void addWithMarks(const RemoveCommand& command) {
  command.app->add_flag("--with-marks", command.options->withMarks,
                        "remove what has marks, records that cannot be read, or a lost list");
}

}  // namespace

void addRemoveCommands(CLI::App& app, ProgramOptions& program) {
  auto* remove = addCommandGroup(app, {"remove",
                                       "Removes marks, pictures, image sets and projects. Picture "
                                       "files are never touched.",
                                       "remove mark parts photo.jpg 2"});
  const auto mark = add(*remove, program,
                        {"mark",
                         "Removes marks of a picture, by the numbers that list --picture shows. "
                         "Those behind move up.",
                         "remove mark parts photo.jpg 2 3"},
                        runRemoveMark);
  addPictureArgument(*mark.app, mark.options->picture);
  mark.app->add_option("NUMBER", mark.options->numbers, "numbers of the marks, from 1")->required();
  addSetOption(*mark.app, mark.options->set);
  const auto picture = add(*remove, program,
                           {"picture", "Takes pictures out of the project; their files stay.",
                            "remove picture parts photo.jpg --with-marks"},
                           runRemovePicture);
  picture.app->add_option("PICTURE", picture.options->pictures, "paths, or file names if unique");
  picture.app->add_flag("--damaged", picture.options->damaged,
                        "those whose records cannot be read, instead");
  addSetOption(*picture.app, picture.options->set);
  addWithMarks(picture);
  const auto set = add(*remove, program,
                       {"set", "Takes an image set out of the project; the picture files stay.",
                        "remove set parts day1 --with-marks"},
                       runRemoveSet);
  set.app->add_option("SET", set.options->set, "name of the image set")->required();
  addWithMarks(set);
  addWithMarks(add(*remove, program,
                   {"project",
                    "Removes a project with its directory and all that lies in it; the pictures "
                    "stay where they are.",
                    "remove project parts --dry-run"},
                   runRemoveProject));
}
