#include "ProjectCommands.h"

#include <cmath>

#include "ClassCommand.h"
#include "CommandError.h"
#include "CommandLine.h"
#include "MarkBox.h"
#include "Numbers.h"
#include "PictureFile.h"

namespace {

struct ListOptions {
  std::string project;
  /// One whose marks are to be shown; empty for all pictures.
  std::string picture;
  std::string set;
};

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
  if (output.isDryRun()) {
    requireNewProject(locations, project);
  } else {
    createProject(locations, project);
  }
  output.fact("project", project);
  output.fact("directory", locations.projects);
  output.say(std::string(output.told("made", "would make")) + " project " + project + " in " +
             locations.projects);
}

std::string classNames(const WTNVMark& mark, const std::vector<WTNVDNNClass>& classes) {
  std::vector<std::string> names;
  for (const auto& dnnClass : mark.wGetDNNClasses(classes))
    names.push_back(dnnClass.wGetName());
  return joined(names);
}

Cell pixels(double length) {
  const auto rounded = std::round(length * 10) / 10;
  return {rounded, formatFixed(rounded, 1)};
}

// The marks of one picture, as `remove mark` and the names of crops count them.
void listMarks(const WTNVProject& project, const PictureRecord& picture, Output& output) {
  const auto size = pictureSize(picture.path);
  if (size.empty()) throw CommandError("picture '" + picture.path + "' cannot be read");
  const auto classes = project.wGetDNNClasses();
  std::vector<TableRow> rows;
  for (const auto& mark : picture.trainSet.wGetMarks()) {
    const auto box = boxInPixels(mark, size);
    rows.push_back({rows.size() + 1, pixels(box.x), pixels(box.y), pixels(box.width),
                    pixels(box.height), mark.wGetType(), classNames(mark, classes)});
  }
  output.fact("picture", picture.path);
  output.fact("set", picture.set);
  output.table("marks", {"number", "x", "y", "width", "height", "form", "classes"}, rows);
}

void runList(const Locations& locations, const ListOptions& options, Output& output) {
  const auto project = openProject(locations, options.project);
  const auto pictures = readPictures(*project, output);
  if (!options.picture.empty()) {
    const auto place = PictureIndex(pictures, output, options.set).find(options.picture);
    return listMarks(*project, pictures[place], output);
  }
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
  const auto options = std::make_shared<ListOptions>();
  auto* command = addCommand(
      app, program,
      {"list",
       "Shows classes, pictures with the number of their marks, and totals; or the marks of one "
       "picture with their boxes in pixels.",
       "list parts --picture photo.jpg"},
      [&program, options](Output& output) { runList(program.locations, *options, output); });
  addProjectArgument(*command, options->project);
  auto* picture = command->add_option("--picture", options->picture,
                                      "show the marks of this one, a path or file name");
  picture->check(notEmpty());
  addSetOption(*command, options->set)->needs(picture);
}
