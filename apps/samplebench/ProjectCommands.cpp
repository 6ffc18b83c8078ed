#include "ProjectCommands.h"

#include "ClassCommand.h"
#include "CommandLine.h"

namespace {

struct Totals {
  std::size_t pictures = 0;
  std::size_t marks = 0;
};

std::string textOf(const Totals& totals) {
  return counted(totals.pictures, "picture") + ", " + counted(totals.marks, "mark");
}

Totals writePictures(const std::string& set, const std::vector<PictureRecord>& pictures,
                     Json::Value& sets, Output& output) {
  Totals totals;
  const std::vector<std::string> columns{"marks", "picture"};
  std::vector<TableRow> rows;
  for (const auto& picture : pictures) {
    if (picture.set != set) continue;
    const auto marks = picture.trainSet.getMarkCount();
    rows.push_back({marks, picture.path.empty() ? "(unreadable)" : picture.path});
    ++totals.pictures;
    totals.marks += static_cast<std::size_t>(marks);
  }
  output.say();
  output.say("set " + set + ": " + textOf(totals));
  output.showTable(columns, rows);
  Json::Value entry;
  entry["set"] = set;
  entry["pictures"] = listOf(columns, rows);
  sets.append(entry);
  return totals;
}

void runCreate(const Locations& locations, const std::string& project, Output& output) {
  requireNewProject(locations, project);
  if (!output.isDryRun()) createProject(locations, project);
  output.fact("project", project);
  output.fact("directory", locations.projects);
  output.say(std::string(output.told("made", "would make")) + " project " + project + " in " +
             locations.projects);
}

void runList(const Locations& locations, const std::string& projectName, Output& output) {
  const auto project = openProject(locations, projectName);
  const auto pictures = readPictures(*project, output);
  writeClasses(*project, output);
  Totals totals;
  Json::Value sets(Json::arrayValue);
  for (const auto& set : project->wGetImageSets()) {
    const auto ofSet = writePictures(set, pictures, sets, output);
    totals.pictures += ofSet.pictures;
    totals.marks += ofSet.marks;
  }
  output.fact("sets", sets);
  output.fact("pictures", static_cast<Json::UInt64>(totals.pictures));
  output.fact("marks", static_cast<Json::UInt64>(totals.marks));
  output.say();
  output.say("total: " + textOf(totals));
}

}  // namespace

void addCreateCommand(CLI::App& app, ProgramOptions& program) {
  const auto project = std::make_shared<std::string>();
  auto* command = addWritingCommand(
      app, program, {"create", "Makes an empty project.", "create parts"},
      [&program, project](Output& output) { runCreate(program.locations, *project, output); });
  addProjectArgument(*command, *project);
}

void addListCommand(CLI::App& app, ProgramOptions& program) {
  const auto project = std::make_shared<std::string>();
  auto* command = addCommand(
      app, program,
      {"list", "Shows classes, pictures with the number of their marks, and totals.", "list parts"},
      [&program, project](Output& output) { runList(program.locations, *project, output); });
  addProjectArgument(*command, *project);
}
