#include "ImportCommand.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include <opencv2/core.hpp>

#include "CommandError.h"
#include "CommandLine.h"

namespace fs = std::filesystem;

namespace {

struct ImportOptions {
  std::string project;
  std::string set;
  std::string directory;
  bool recursive = false;
};

bool hasSet(const WTNVProject& project, const std::string& set) {
  const auto sets = project.wGetImageSets();
  return std::find(sets.begin(), sets.end(), set) != sets.end();
}

bool canBeRead(const WTNVTrainSet& record) {
  try {
    return record.wLoadData();
  } catch (const cv::Exception&) {
    return false;
  }
}

// A picture is recognised by its path, which an unread record does not know.
void readSet(const WTNVProject& project, const std::string& set) {
  if (!hasSet(project, set)) return;
  for (const auto& trainSet : project.wGetTrainSetsFromImageSet(set))
    if (!canBeRead(trainSet))
      throw CommandError(
          "a record of set '" + set + "' cannot be read: " + trainSet.wGetDataPath() +
          "; its picture would be added again. Restore that file, or take such records "
          "out with: samplebench remove picture " +
          forShell(project.wGetProjectName()) + " --damaged --with-marks");
}

constexpr auto backslashObjection =
    "a backslash in the path would be taken for a slash; rename what has it";

using Rejection = std::pair<std::string, std::string>;

// To the library a backslash separates directories, as it does on other systems.
bool separates(char letter) {
  return letter == '\\' && fs::path::preferred_separator != '\\';
}

bool holdsBackslash(const std::string& path) {
  return std::any_of(path.begin(), path.end(), separates);
}

// As the library gives the path.
std::string withSlashes(std::string path) {
  std::replace_if(path.begin(), path.end(), separates, '/');
  return path;
}

// Why the library cannot take in what lies there; empty if it can.
std::string objectionTo(const fs::directory_entry& entry) {
  std::error_code error;
  if (holdsBackslash(entry.path().string())) return backslashObjection;
  return entry.is_directory(error) ? "it is a directory" : "";
}

template <class Iterator>
std::vector<Rejection> objectionsIn(Iterator entries) {
  std::vector<Rejection> found;
  for (const fs::directory_entry& entry : entries)
    if (const auto objection = objectionTo(entry); !objection.empty())
      found.emplace_back(entry.path().string(), objection);
  return found;
}

std::vector<Rejection> objectionsIn(const std::string& directory, bool recursive) {
  if (recursive) return objectionsIn(fs::recursive_directory_iterator(directory));
  return objectionsIn(fs::directory_iterator(directory));
}

}  // namespace

FoundPictures picturesIn(const WTNVProject& project, const std::string& directory, bool recursive) {
  if (!fs::is_directory(directory)) throw CommandError("there is no directory '" + directory + "'");
  // Absolute paths, so that the project works from any directory.
  const auto place = absolutePath(directory);
  if (holdsBackslash(place))
    throw CommandError("'" + place + "' cannot be used: " + backslashObjection);
  auto pictures = project.wReadImagesFromDirectory(place, recursive);
  std::sort(pictures.begin(), pictures.end());
  FoundPictures found;
  for (const auto& [path, reason] : objectionsIn(place, recursive)) {
    // Other files are not asked for.
    const auto same = std::equal_range(pictures.begin(), pictures.end(), withSlashes(path));
    if (same.first == same.second) continue;
    pictures.erase(same.first);
    found.rejected.emplace_back(path, reason);
  }
  if (pictures.empty() && !found.rejected.empty())
    throw CommandError("no picture in '" + directory + "' can be taken in: '" +
                       found.rejected.front().first + "': " + found.rejected.front().second);
  if (pictures.empty())
    throw CommandError("there are no pictures (jpg, jpeg, png) in '" + directory + "'" +
                       (recursive ? "" : "; --recursive looks into its directories too"));
  std::sort(found.rejected.begin(), found.rejected.end());
  found.pictures = std::move(pictures);
  return found;
}

ImportResult importPictures(WTNVProject& project, const std::string& set,
                            const std::string& directory, bool recursive) {
  return addPictures(project, set, picturesIn(project, directory, recursive).pictures);
}

namespace {

// The library then looks at their directory instead of at each of them.
bool areInOneDirectory(const std::vector<std::string>& pictures) {
  const auto parent = fs::path(pictures.front()).parent_path();
  return std::all_of(pictures.begin(), pictures.end(), [&](const auto& picture) {
    return !holdsBackslash(picture) && fs::path(picture).parent_path() == parent;
  });
}

}  // namespace

ImportResult addPictures(WTNVProject& project, const std::string& set,
                         const std::vector<std::string>& pictures) {
  readSet(project, set);
  const std::vector<bool> use(pictures.size(), true);
  const auto added = static_cast<std::size_t>(
      project.wAddImagesToImageSet(pictures, use, set, areInOneDirectory(pictures)));
  if (!hasSet(project, set))
    throw CommandError(
        "'" + set + "' cannot name an image set; use a name without slashes, of at most 240 bytes",
        exitUsage);
  return {added, pictures.size() - added};
}

namespace {

// A picture in two sets is two records, and work on one is not seen in the other.
std::size_t inOtherSets(const WTNVProject& project, const std::string& set,
                        const std::vector<std::string>& pictures, Output& output) {
  if (project.wGetImageSets().size() < 2) return 0;
  std::unordered_set<std::string> others;
  for (const auto& picture : readPictures(project, output))
    if (picture.set != set && !picture.path.empty()) others.insert(absolutePath(picture.path));
  return static_cast<std::size_t>(
      std::count_if(pictures.begin(), pictures.end(),
                    [&](const auto& picture) { return others.contains(absolutePath(picture)); }));
}

void reportRejected(const std::vector<Rejection>& rejected, Output& output) {
  std::vector<TableRow> rows;
  for (const auto& [path, reason] : rejected)
    rows.push_back({path, reason});
  output.fact("rejected", listOf({"picture", "reason"}, rows));
  for (const auto& [path, reason] : rejected)
    output.say("rejected: " + path + ": " + reason);
  if (!rejected.empty()) output.setFindings();
}

void runImport(const Locations& locations, const ImportOptions& options, Output& output) {
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project, lock);
  const auto [pictures, rejected] = picturesIn(*project, options.directory, options.recursive);
  const auto result = addPictures(*project, options.set, pictures);
  saveProject(*project, true, output);
  const auto elsewhere = inOtherSets(*project, options.set, pictures, output);
  output.fact("set", options.set);
  output.fact("added", static_cast<Json::UInt64>(result.added));
  output.fact("alreadyThere", static_cast<Json::UInt64>(result.alreadyThere));
  output.fact("inOtherSets", static_cast<Json::UInt64>(elsewhere));
  output.say("set " + options.set + ": " + counted(result.added, "picture") +
             std::string(output.told(" added, ", " would be added, ")) +
             std::to_string(result.alreadyThere) + " already there" +
             (rejected.empty() ? "" : ", " + std::to_string(rejected.size()) + " rejected"));
  reportRejected(rejected, output);
  if (elsewhere > 0)
    output.say(
        counted(elsewhere, "picture") +
        " of it also in other sets: each is two pictures to the program, with marks of their "
        "own, and a training set gets samples of both");
}

}  // namespace

void addImportCommand(CLI::App& app, ProgramOptions& program) {
  const auto options = std::make_shared<ImportOptions>();
  auto* command = addWritingCommand(
      app, program,
      {"import",
       "Adds the pictures of a directory to an image set. They stay where they are; those already "
       "there are passed over.",
       "import parts day1 photos/ --recursive"},
      [&program, options](Output& output) { runImport(program.locations, *options, output); });
  addProjectArgument(*command, options->project);
  command->add_option("SET", options->set, "name of the image set")->required();
  command->add_option("DIRECTORY", options->directory, "where the pictures lie")->required();
  command->add_flag("--recursive", options->recursive, "look into directories below, too");
}
