#include "RelinkCommand.h"

#include <filesystem>

#include "CommandError.h"
#include "CommandLine.h"
#include "PictureFile.h"

namespace {

struct RelinkOptions {
  std::string project;
  /// OLD=NEW; empty if it stays.
  std::string pictures;
  std::string projectDirectory;
};

struct Outcome {
  std::size_t changed = 0;
  std::size_t found = 0;
  std::vector<std::string> missing;
};

bool isDirectory(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_directory(path, error);
}

void count(const std::string& path, Outcome& outcome) {
  if (isFile(path)) {
    ++outcome.found;
  } else {
    outcome.missing.push_back(path);
  }
}

Outcome relinkTrainSets(WTNVProject& project, const Move& move) {
  Outcome outcome;
  outcome.changed = static_cast<std::size_t>(project.wRelinkTrainSets(move.from, move.to));
  for (const auto& trainSet : project.wGetTrainSets())
    count(trainSet.wGetDataPath(), outcome);
  return outcome;
}

Outcome relinkPictures(WTNVProject& project, const Move& move) {
  Outcome outcome;
  outcome.changed = static_cast<std::size_t>(project.wRelinkPictures(move.from, move.to));
  for (const auto& trainSet : project.wGetTrainSets())
    if (trainSet.wLoadData()) count(trainSet.getImagePath(), outcome);
  return outcome;
}

void report(const std::string& key, const std::string& noun, const Move& move,
            const Outcome& outcome, Output& output) {
  Json::Value missing(Json::arrayValue);
  for (const auto& path : outcome.missing) {
    missing.append(path);
    output.note("not found: " + path);
  }
  Json::Value facts;
  facts["changed"] = static_cast<Json::UInt64>(outcome.changed);
  facts["found"] = static_cast<Json::UInt64>(outcome.found);
  facts["missing"] = missing;
  output.fact(key, facts);
  output.say(counted(outcome.changed, noun) + std::string(output.told(" now", " would be")) +
             " looked for in " + move.to + "; of all, " + std::to_string(outcome.found) +
             " found, " + std::to_string(outcome.missing.size()) + " not found");
  if (!outcome.missing.empty()) output.setFindings();
}

void requireChange(const Outcome& outcome, const std::string& what, const Move& move) {
  if (outcome.changed == 0)
    throw CommandError("no " + what + " lies below '" + move.from + "'; nothing was changed");
  if (outcome.found == 0)
    throw CommandError("no " + what + " is there with '" + move.to + "' for '" + move.from +
                       "'; nothing was changed");
}

void runRelink(const Locations& locations, const RelinkOptions& options, Output& output) {
  if (options.pictures.empty() && options.projectDirectory.empty())
    throw CommandError("say what was moved: --pictures OLD=NEW, --project OLD=NEW, or both",
                       exitUsage);
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project);
  if (!options.projectDirectory.empty()) {
    const auto move = parseMove(options.projectDirectory);
    const auto outcome = relinkTrainSets(*project, move);
    requireChange(outcome, "record of the project", move);
    report("trainSets", "record", move, outcome, output);
  }
  if (!options.pictures.empty()) {
    requireOwnRecords(*project);
    requireWholeRecords(*project);
    const auto move = parseMove(options.pictures);
    const auto outcome = relinkPictures(*project, move);
    requireChange(outcome, "picture", move);
    report("pictures", "picture", move, outcome, output);
  }
  saveProject(*project, true, output);
}

}  // namespace

Move parseMove(const std::string& option) {
  for (auto sign = option.find('='); sign != option.npos; sign = option.find('=', sign + 1)) {
    const auto from = option.substr(0, sign);
    const auto to = option.substr(sign + 1);
    if (!from.empty() && isDirectory(to)) return {absolutePath(from), absolutePath(to)};
  }
  throw CommandError("'" + option + "' names no directory behind a '='; write it as OLD=NEW",
                     exitUsage);
}

void addRelinkCommand(CLI::App& app, ProgramOptions& program) {
  const auto options = std::make_shared<RelinkOptions>();
  auto* command = addWritingCommand(
      app, program,
      {"relink",
       "Tells a project where its pictures are after their directory was moved, or where it is "
       "itself. "
       "Names those that are not found there. Exit code 3 if there are any.",
       "relink parts --pictures /home/me/photos=/media/disk/photos"},
      [&program, options](Output& output) { runRelink(program.locations, *options, output); });
  addProjectArgument(*command, options->project);
  command->add_option("--pictures", options->pictures,
                      "OLD=NEW: where the pictures were, and where they are");
  command->add_option("--project", options->projectDirectory,
                      "OLD=NEW: the directory of the project, before and now");
}
