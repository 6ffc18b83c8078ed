#include "RelinkCommand.h"

#include <filesystem>

#include "CommandError.h"
#include "CommandLine.h"
#include "PictureFile.h"
#include "SetLists.h"

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
  /// Of those whose path the move changed.
  std::size_t moved = 0;
  std::size_t movedFound = 0;
};

bool isDirectory(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_directory(path, error);
}

using Paths = std::vector<std::string>;

Outcome outcomeOf(int changed, const Paths& before, const Paths& after) {
  Outcome outcome;
  outcome.changed = static_cast<std::size_t>(changed);
  for (std::size_t i = 0; i < after.size(); ++i) {
    const bool isFound = isFile(after[i]);
    const bool isMoved = after[i] != before[i];
    if (isMoved) ++outcome.moved;
    if (isMoved && isFound) ++outcome.movedFound;
    if (isFound) {
      ++outcome.found;
    } else {
      outcome.missing.push_back(after[i]);
    }
  }
  return outcome;
}

Paths dataPaths(const std::vector<WTNVTrainSet>& trainSets) {
  Paths paths;
  for (const auto& trainSet : trainSets)
    paths.push_back(trainSet.wGetDataPath());
  return paths;
}

Paths picturePaths(const std::vector<WTNVTrainSet>& trainSets) {
  Paths paths;
  for (const auto& trainSet : trainSets)
    paths.push_back(trainSet.getImagePath());
  return paths;
}

Outcome relinkTrainSets(WTNVProject& project, const Move& move) {
  const auto trainSets = project.wGetTrainSets();
  const auto before = dataPaths(trainSets);
  const auto changed = project.wRelinkTrainSets(move.from, move.to);
  return outcomeOf(changed, before, dataPaths(trainSets));
}

Outcome relinkPictures(WTNVProject& project, const Move& move) {
  auto trainSets = project.wGetTrainSets();
  // A record that is not there knows no picture.
  std::erase_if(trainSets, [](const WTNVTrainSet& trainSet) { return !trainSet.wLoadData(); });
  const auto before = picturePaths(trainSets);
  const auto changed = project.wRelinkPictures(move.from, move.to);
  return outcomeOf(changed, before, picturePaths(trainSets));
}

struct Relinked {
  std::string key;
  std::string noun;
  Move move;
  Outcome outcome;
};

void report(const Relinked& relinked, Output& output) {
  const auto& outcome = relinked.outcome;
  Json::Value missing(Json::arrayValue);
  for (const auto& path : outcome.missing) {
    missing.append(path);
    output.note("not found: " + path);
  }
  Json::Value facts;
  facts["changed"] = static_cast<Json::UInt64>(outcome.changed);
  facts["found"] = static_cast<Json::UInt64>(outcome.found);
  facts["missing"] = missing;
  output.fact(relinked.key, facts);
  output.say(counted(outcome.changed, relinked.noun) +
             std::string(output.told(" now", " would be")) + " looked for in " + relinked.move.to +
             "; of all, " + std::to_string(outcome.found) + " found, " +
             std::to_string(outcome.missing.size()) + " not found");
  if (!outcome.missing.empty()) output.setFindings();
}

void requireChange(const Outcome& outcome, const std::string& what, const Move& move) {
  if (outcome.changed == 0)
    throw CommandError("no " + what + " lies below '" + move.from + "'; nothing was changed");
  // What lies elsewhere tells nothing of the move.
  if (outcome.moved > 0 && outcome.movedFound == 0)
    throw CommandError("no " + what + " is there with '" + move.to + "' for '" + move.from +
                       "'; nothing was changed");
}

void runRelink(const Locations& locations, const RelinkOptions& options, Output& output) {
  if (options.pictures.empty() && options.projectDirectory.empty())
    throw CommandError("say what was moved: --pictures OLD=NEW, --project OLD=NEW, or both",
                       exitUsage);
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project);
  // What else is lost can be told only to a project that knows where it is.
  requireNamedSets(*project);
  std::vector<Relinked> done;
  if (!options.projectDirectory.empty()) {
    const auto move = parseMove(options.projectDirectory);
    done.push_back({"trainSets", "record", move, relinkTrainSets(*project, move)});
    requireChange(done.back().outcome, "record of the project", move);
  }
  if (!options.pictures.empty()) {
    requireOwnRecords(*project);
    requireSetLists(*project);
    requireWholeRecords(*project);
    const auto move = parseMove(options.pictures);
    done.push_back({"pictures", "picture", move, relinkPictures(*project, move)});
    requireChange(done.back().outcome, "picture", move);
  }
  saveProject(*project, true, output);
  for (const auto& each : done)
    report(each, output);
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
       "itself. Names those that are not found there. Exit code 3 if there are any.",
       "relink parts --pictures /home/me/photos=/media/disk/photos"},
      [&program, options](Output& output) { runRelink(program.locations, *options, output); });
  addProjectArgument(*command, options->project);
  command->add_option("--pictures", options->pictures,
                      "OLD=NEW: where the pictures were, and where they are");
  command->add_option("--project", options->projectDirectory,
                      "OLD=NEW: the directory of the project, before and now");
}
