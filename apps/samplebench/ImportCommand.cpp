#include "ImportCommand.h"

#include <algorithm>
#include <unordered_set>

#include "CommandError.h"
#include "CommandLine.h"

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

// A picture is recognised by its path, which an unread record does not know.
void readSet(const WTNVProject& project, const std::string& set) {
  if (!hasSet(project, set)) return;
  for (const auto& trainSet : project.wGetTrainSetsFromImageSet(set))
    trainSet.wLoadData();
}

}  // namespace

std::vector<std::string> picturesIn(const WTNVProject& project, const std::string& directory,
                                    bool recursive) {
  if (!std::filesystem::is_directory(directory))
    throw CommandError("there is no directory '" + directory + "'");
  // Absolute paths, so that the project works from any directory.
  auto pictures = project.wReadImagesFromDirectory(absolutePath(directory), recursive);
  if (pictures.empty())
    throw CommandError("there are no pictures (jpg, jpeg, png) in '" + directory + "'" +
                       (recursive ? "" : "; --recursive looks into its directories too"));
  std::sort(pictures.begin(), pictures.end());
  return pictures;
}

ImportResult importPictures(WTNVProject& project, const std::string& set,
                            const std::string& directory, bool recursive) {
  return addPictures(project, set, picturesIn(project, directory, recursive));
}

ImportResult addPictures(WTNVProject& project, const std::string& set,
                         const std::vector<std::string>& pictures) {
  readSet(project, set);
  const std::vector<bool> use(pictures.size(), true);
  const auto added =
      static_cast<std::size_t>(project.wAddImagesToImageSet(pictures, use, set, false));
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

void runImport(const Locations& locations, const ImportOptions& options, Output& output) {
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project, lock);
  const auto pictures = picturesIn(*project, options.directory, options.recursive);
  const auto result = addPictures(*project, options.set, pictures);
  saveProject(*project, true, output);
  const auto elsewhere = inOtherSets(*project, options.set, pictures, output);
  output.fact("set", options.set);
  output.fact("added", static_cast<Json::UInt64>(result.added));
  output.fact("alreadyThere", static_cast<Json::UInt64>(result.alreadyThere));
  output.fact("inOtherSets", static_cast<Json::UInt64>(elsewhere));
  output.say("set " + options.set + ": " + counted(result.added, "picture") +
             std::string(output.told(" added, ", " would be added, ")) +
             std::to_string(result.alreadyThere) + " already there");
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
