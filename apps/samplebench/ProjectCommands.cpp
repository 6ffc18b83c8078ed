#include "ProjectCommands.h"

#include "ClassCommand.h"
#include "CommandLine.h"

namespace {

struct Totals {
  std::size_t pictures = 0;
  std::size_t marks = 0;
};

Totals writePictures(const std::string& set, const std::vector<PictureRecord>& pictures,
                     Output& output) {
  Totals totals;
  std::vector<TableRow> rows{{"marks", "picture"}};
  for (const auto& picture : pictures) {
    if (picture.set != set) continue;
    const auto marks = picture.trainSet.getMarkCount();
    rows.push_back({std::to_string(marks), picture.path.empty() ? "(unreadable)" : picture.path});
    ++totals.pictures;
    totals.marks += static_cast<std::size_t>(marks);
  }
  output.data() << "\nset " << set << ": " << counted(totals.pictures, "picture") << ", "
                << counted(totals.marks, "mark") << '\n';
  writeTable(output.data(), rows);
  return totals;
}

void runCreate(const Locations& locations, const std::string& project, Output& output) {
  createProject(locations, project);
  output.data() << "made project " << project << " in " << locations.projects << '\n';
}

void runList(const Locations& locations, const std::string& projectName, Output& output) {
  const auto project = openProject(locations, projectName);
  const auto pictures = readPictures(*project, output);
  writeClasses(*project, output);
  Totals totals;
  for (const auto& set : project->wGetImageSets()) {
    const auto ofSet = writePictures(set, pictures, output);
    totals.pictures += ofSet.pictures;
    totals.marks += ofSet.marks;
  }
  output.data() << "\ntotal: " << counted(totals.pictures, "picture") << ", "
                << counted(totals.marks, "mark") << '\n';
}

}  // namespace

void addCreateCommand(CLI::App& app, ProgramOptions& program) {
  const auto project = std::make_shared<std::string>();
  auto* command = addCommand(
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
