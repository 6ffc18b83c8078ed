#include "ProjectCommands.h"

#include <cstdio>

#include "CommandError.h"
#include "Numbers.h"

namespace {

std::string colorText(const WTNVDNNClass& dnnClass) {
  int red = 0;
  int green = 0;
  int blue = 0;
  dnnClass.wGetColor(&red, &green, &blue);
  char text[32];
  std::snprintf(text, sizeof text, "%02x%02x%02x", red, green, blue);
  return text;
}

void writeClasses(const WTNVProject& project, Output& output) {
  std::vector<TableRow> rows{{"number", "class", "colour"}};
  for (const auto& dnnClass : project.wGetDNNClasses())
    rows.push_back(
        {std::to_string(dnnClass.wGetDNNId()), dnnClass.wGetName(), colorText(dnnClass)});
  writeTable(output.data(), rows);
}

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

}  // namespace

void runCreate(const Locations& locations, const std::string& project, Output& output) {
  createProject(locations, project);
  output.data() << "made project " << project << " in " << locations.projects << '\n';
}

void addClass(WTNVProject& project, const std::string& name, const std::string& color) {
  const auto added = project.wAddDNNClass(name, -1, -1);
  if (!added.isValid())
    throw CommandError("class '" + name + "' cannot be added; the name is empty or taken");
  if (color.empty()) return;
  const auto [red, green, blue] = parseColor(color);
  project.wUpdateDNNClass(added, name, added.wGetDNNId(), "", "", red, green, blue);
}

void runClassAdd(const Locations& locations, const std::string& projectName,
                 const std::vector<std::string>& names, const std::string& color, Output& output) {
  const auto project = openProject(locations, projectName);
  for (const auto& name : names) {
    // The list of names in the settings file is cut at commas, and an equals sign is lost.
    if (name.find_first_of(",=\"\n\r\t") != std::string::npos)
      throw CommandError("class '" + name +
                             "' cannot be added; use a name without comma, equals sign, quote or "
                             "tab",
                         exitUsage);
    addClass(*project, name, color);
  }
  saveProject(*project, true);
  writeClasses(*project, output);
}

void runClassList(const Locations& locations, const std::string& project, Output& output) {
  writeClasses(*openProject(locations, project), output);
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
