#include "ClassCommand.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "CommandError.h"
#include "CommandLine.h"
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

// Bright enough for dark pictures, and told apart also by those who see no red or no green.
constexpr std::array palette{"56b4e9", "e69f00", "cc79a7", "009e73", "f0e442",
                             "d55e00", "0072b2", "ffffff", "9467bd", "8c564b"};

// Colours without end, neighbours far apart: steps of the golden angle go round without meeting.
std::string colorOnWheel(std::size_t number) {
  constexpr double goldenAngle = 137.50776405;
  constexpr double darkest = 0.3;
  const auto channel = [&](double shift) {
    const auto hue = std::fmod(static_cast<double>(number) * goldenAngle + shift, 360.0) / 60;
    const auto strength = std::clamp(std::abs(hue - 3) - 1, 0.0, 1.0);
    return static_cast<int>(std::lround(255 * (darkest + (1 - darkest) * strength)));
  };
  char text[32];
  std::snprintf(text, sizeof text, "%02x%02x%02x", channel(0), channel(240), channel(120));
  return text;
}

// One that no class has: of the palette while it lasts.
std::string nextColor(const WTNVProject& project) {
  std::unordered_set<std::string> used;
  for (const auto& dnnClass : project.wGetDNNClasses())
    used.insert(colorText(dnnClass));
  const auto* const free = std::find_if(palette.begin(), palette.end(),
                                        [&](const char* color) { return !used.contains(color); });
  if (free != palette.end()) return *free;
  // Beyond that many the wheel has no colours left that an eye could tell.
  for (std::size_t number = 0; number < used.size(); ++number)
    if (const auto color = colorOnWheel(number); !used.contains(color)) return color;
  return colorOnWheel(used.size());
}

}  // namespace

void writeClasses(const WTNVProject& project, Output& output) {
  std::vector<TableRow> rows;
  for (const auto& dnnClass : project.wGetDNNClasses())
    rows.push_back({dnnClass.wGetDNNId(), dnnClass.wGetName(), colorText(dnnClass)});
  output.table("classes", {"number", "class", "colour"}, rows);
}

void addClass(WTNVProject& project, const std::string& name, const std::string& color) {
  const auto added = project.wAddDNNClass(name, -1, -1);
  if (!added.isValid())
    throw CommandError("class '" + name +
                       "' cannot be added; there is a class of that name already");
  const auto [red, green, blue] = parseColor(color.empty() ? nextColor(project) : color);
  project.wUpdateDNNClass(added, name, added.wGetDNNId(), "", "", red, green, blue);
}

namespace {

struct ClassAddOptions {
  std::string project;
  std::vector<std::string> names;
  std::string color;
};

struct ClassEditOptions {
  std::string project;
  /// Those to be merged, deleted or put in order.
  std::vector<std::string> names;
  /// The one to be renamed.
  std::string name;
  /// The new name, or the class that takes the marks of the others over.
  std::string target;
  /// Delete marks that have no other class, too.
  bool withMarks = false;
};

/// The project with all its marks. What cannot be read would keep a class that goes away.
class Annotations {
 public:
  Annotations(WTNVProject& project, Output& output) : pictures(readPictures(project, output)) {
    const auto unread = std::count_if(pictures.begin(), pictures.end(),
                                      [](const auto& picture) { return picture.path.empty(); });
    if (unread > 0)
      throw CommandError("nothing was changed, for the marks of " +
                         counted(static_cast<std::size_t>(unread), "picture") +
                         " cannot be read; restore those records, or take them out with: "
                         "samplebench remove picture " +
                         project.wGetProjectName() + " --damaged --with-marks");
  }

  void edit(const std::function<void(const WTNVTrainSet&)>& change) const {
    for (const auto& picture : pictures)
      change(picture.trainSet);
  }

  /// How many marks carry at least one of the classes.
  std::size_t countOf(const std::vector<WTNVDNNClass>& classes) const {
    std::size_t count = 0;
    for (const auto& picture : pictures)
      for (const auto& mark : picture.trainSet.wGetMarks())
        if (!mark.wGetDNNClasses(classes).empty()) ++count;
    return count;
  }

  std::size_t markCount() const {
    std::size_t count = 0;
    for (const auto& picture : pictures)
      count += static_cast<std::size_t>(picture.trainSet.getMarkCount());
    return count;
  }

 private:
  std::vector<PictureRecord> pictures;
};

void update(WTNVProject& project, const WTNVDNNClass& dnnClass, const std::string& name,
            int number) {
  int red = 0;
  int green = 0;
  int blue = 0;
  dnnClass.wGetColor(&red, &green, &blue);
  if (!project.wUpdateDNNClass(dnnClass, name, number, dnnClass.wGetSamplePath(),
                               dnnClass.wGetComment(), red, green, blue))
    throw CommandError(
        "class '" + dnnClass.wGetName() + "' cannot be renamed to '" + name +
        "'; there is a class of that name already, to which class merge gives marks");
}

// Gaps would keep a training set from being written.
void renumber(WTNVProject& project) {
  auto classes = project.wGetDNNClasses();
  std::stable_sort(classes.begin(), classes.end(),
                   [](const auto& a, const auto& b) { return a.wGetDNNId() < b.wGetDNNId(); });
  for (std::size_t i = 0; i < classes.size(); ++i)
    update(project, classes[i], classes[i].wGetName(), static_cast<int>(i));
}

void requireDistinct(const std::vector<std::string>& names) {
  if (std::set<std::string>(names.begin(), names.end()).size() != names.size())
    throw CommandError("a class is named twice: " + joined(names), exitUsage);
}

void report(const WTNVProject& project, const std::string& did, std::size_t marks, Output& output) {
  output.fact("marks", static_cast<Json::UInt64>(marks));
  output.say((output.isDryRun() ? "would have " : "") + did + "; " + counted(marks, "mark") +
             (output.isDryRun() ? " would change" : " changed"));
  writeClasses(project, output);
}

void runAdd(const Locations& locations, const ClassAddOptions& options, Output& output) {
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project, lock);
  for (const auto& name : options.names) {
    requireClassName(name);
    addClass(*project, name, options.color);
  }
  saveProject(*project, true, output);
  if (output.isDryRun()) output.say("would add " + joined(options.names));
  writeClasses(*project, output);
}

void runList(const Locations& locations, const std::string& project, Output& output) {
  writeClasses(*openProject(locations, project), output);
}

void runRename(const Locations& locations, const ClassEditOptions& options, Output& output) {
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project, lock);
  const auto dnnClass = findClass(*project, options.name);
  requireClassName(options.target);
  update(*project, dnnClass, options.target, dnnClass.wGetDNNId());
  saveProject(*project, true, output);
  report(*project, "renamed " + options.name + " to " + options.target, 0, output);
}

std::vector<WTNVDNNClass> classesNamed(const WTNVProject& project,
                                       const std::vector<std::string>& names) {
  std::unordered_map<std::string, WTNVDNNClass> byName;
  for (const auto& dnnClass : project.wGetDNNClasses())
    byName.emplace(dnnClass.wGetName(), dnnClass);
  std::vector<WTNVDNNClass> classes;
  for (const auto& name : names) {
    const auto found = byName.find(name);
    classes.push_back(found == byName.end() ? findClass(project, name) : found->second);
  }
  return classes;
}

// The marks that gave the classes up are saved first, so that a save which is cut off leaves
// classes without marks, which can be removed again, and never marks without a class.
void removeClasses(WTNVProject& project, const std::vector<WTNVDNNClass>& classes,
                   const Output& output) {
  saveProject(project, false, output);
  for (const auto& dnnClass : classes)
    project.wRemoveDNNClass(dnnClass);
  renumber(project);
  saveProject(project, true, output);
}

void runMerge(const Locations& locations, const ClassEditOptions& options, Output& output) {
  requireDistinct(options.names);
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project, lock);
  const Annotations annotations(*project, output);
  const auto target = findClass(*project, options.target);
  const auto classes = classesNamed(*project, options.names);
  const auto marks = annotations.countOf(classes);
  const auto before = annotations.markCount();
  for (const auto& dnnClass : classes) {
    if (dnnClass.equal(target))
      throw CommandError("class '" + options.target + "' cannot be merged into itself", exitUsage);
    annotations.edit([&](const auto& trainSet) { trainSet.wReplaceClass(dnnClass, target); });
  }
  const auto twins = before - annotations.markCount();
  removeClasses(*project, classes, output);
  output.fact("sameMarks", static_cast<Json::UInt64>(twins));
  report(
      *project,
      "merged " + joined(options.names) + " into " + options.target +
          (twins > 0 ? ", and removed " + counted(twins, "mark") + " that " +
                           (twins > 1 ? "are" : "is") + " there in " + options.target + " already"
                     : ""),
      marks, output);
}

void runDelete(const Locations& locations, const ClassEditOptions& options, Output& output) {
  requireDistinct(options.names);
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project, lock);
  const Annotations annotations(*project, output);
  const auto before = annotations.markCount();
  const auto classes = classesNamed(*project, options.names);
  const auto marks = annotations.countOf(classes);
  for (const auto& dnnClass : classes) {
    annotations.edit([&](const auto& trainSet) { trainSet.wRemoveClass(dnnClass); });
  }
  const auto deleted = before - annotations.markCount();
  if (deleted > 0 && !options.withMarks)
    throw CommandError(counted(deleted, "mark") + " would be deleted with " +
                       joined(options.names) +
                       ", having no other class; --with-marks does that, and class merge gives "
                       "them another class");
  removeClasses(*project, classes, output);
  output.fact("deletedMarks", static_cast<Json::UInt64>(deleted));
  report(*project, "deleted " + joined(options.names) + " with " + counted(deleted, "mark"), marks,
         output);
}

// All that a class is.
struct ClassContent {
  explicit ClassContent(const WTNVDNNClass& dnnClass, int uniqueIndex)
      : name(dnnClass.wGetName()),
        index(uniqueIndex),
        samplePath(dnnClass.wGetSamplePath()),
        comment(dnnClass.wGetComment()) {
    dnnClass.wGetColor(&red, &green, &blue);
  }

  std::string name;
  int index;
  std::string samplePath;
  std::string comment;
  int red = 0;
  int green = 0;
  int blue = 0;
};

// The indices that marks know the classes by. They run from 0, with gaps where classes went.
std::unordered_map<const TNVDNNClass*, int> indicesOf(const std::vector<WTNVDNNClass>& classes) {
  constexpr int mostGaps = 10000;
  const auto end = static_cast<int>(classes.size()) + mostGaps;
  std::unordered_map<const TNVDNNClass*, int> indices;
  for (int index = 0; index < end && indices.size() < classes.size(); ++index) {
    const auto dnnClass = WTNVDNNClass::wGetDNNClassByIdx(classes, index);
    if (dnnClass.isValid()) indices.emplace(dnnClass.getNativeDNNClass(), index);
  }
  return indices;
}

// Makes the classes anew in their order: to move many up one by one takes steps without end.
void rebuild(WTNVProject& project, const std::vector<WTNVDNNClass>& order,
             const std::unordered_map<const TNVDNNClass*, int>& indices) {
  std::vector<ClassContent> contents;
  for (const auto& dnnClass : order)
    contents.emplace_back(dnnClass, indices.at(dnnClass.getNativeDNNClass()));
  project.wClearDNNClasses();
  for (std::size_t i = 0; i < contents.size(); ++i) {
    const auto& each = contents[i];
    const auto number = static_cast<int>(i);
    const auto dnnClass = project.wAddDNNClass(each.name, each.index, number);
    project.wUpdateDNNClass(dnnClass, each.name, number, each.samplePath, each.comment, each.red,
                            each.green, each.blue);
  }
}

void moveUp(WTNVProject& project, const std::vector<WTNVDNNClass>& order) {
  for (std::size_t number = 0; number < order.size(); ++number)
    update(project, order[number], order[number].wGetName(), static_cast<int>(number));
  // Behind those that have found their place, which are as many as its number says.
  for (std::size_t place = 0; place < order.size(); ++place) {
    while (!project.wGetDNNClasses()[place].equal(order[place]))
      project.wOrderUpDNNClass(order[place]);
  }
}

void runOrder(const Locations& locations, const ClassEditOptions& options, Output& output) {
  requireDistinct(options.names);
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project, lock);
  const auto order = classesNamed(*project, options.names);
  if (order.size() != project->wGetDNNClasses().size())
    throw CommandError("name all " + std::to_string(project->wGetDNNClasses().size()) +
                           " classes in their new order",
                       exitUsage);
  const auto indices = indicesOf(project->wGetDNNClasses());
  if (indices.size() == order.size()) {
    rebuild(*project, order, indices);
  } else {
    moveUp(*project, order);
  }
  saveProject(*project, true, output);
  report(*project, "numbered the classes anew", 0, output);
}

void addAdd(CLI::App& classes, ProgramOptions& program) {
  const auto options = std::make_shared<ClassAddOptions>();
  auto* command = addWritingCommand(
      classes, program,
      {"add", "Adds classes; each takes the next number, from 0 on.",
       "class add parts screw nut --color ff8000"},
      [&program, options](Output& output) { runAdd(program.locations, *options, output); });
  addProjectArgument(*command, options->project);
  command->add_option("NAME", options->names, "names of the classes")->required();
  command->add_option("--color", options->color,
                      "colour for drawing, RRGGBB (default: one that no other has)");
}

void addList(CLI::App& classes, ProgramOptions& program) {
  const auto project = std::make_shared<std::string>();
  auto* command = addCommand(
      classes, program, {"list", "Lists the classes with numbers and colours.", "class list parts"},
      [&program, project](Output& output) { runList(program.locations, *project, output); });
  addProjectArgument(*command, *project);
}

using ClassEdit = void (*)(const Locations&, const ClassEditOptions&, Output&);

struct ClassEditCommand {
  CLI::App* app;
  ClassEditOptions* options;
};

ClassEditCommand addEdit(CLI::App& classes, ProgramOptions& program, const CommandHelp& help,
                         ClassEdit run) {
  const auto options = std::make_shared<ClassEditOptions>();
  auto* command = addWritingCommand(
      classes, program, help,
      [&program, options, run](Output& output) { run(program.locations, *options, output); });
  addProjectArgument(*command, options->project);
  return {command, options.get()};
}

void addNames(const ClassEditCommand& edit, const std::string& what) {
  edit.app->add_option("NAME", edit.options->names, what)->required();
}

void addEdits(CLI::App& classes, ProgramOptions& program) {
  const auto rename = addEdit(
      classes, program, {"rename", "Gives a class another name.", "class rename parts screw bolt"},
      runRename);
  rename.app->add_option("NAME", rename.options->name, "present name")->required();
  rename.app->add_option("NEW", rename.options->target, "new name")->required();
  const auto merge = addEdit(classes, program,
                             {"merge",
                              "Gives the marks of classes to another one and removes those "
                              "classes. Numbers run from 0 without gaps afterwards.",
                              "class merge parts bolt stud --into screw"},
                             runMerge);
  addNames(merge, "classes that go away");
  merge.app->add_option("--into", merge.options->target, "the class that stays")->required();
  const auto remove = addEdit(classes, program,
                              {"delete", "Removes classes, and takes them out of all marks.",
                               "class delete parts dirt --with-marks"},
                              runDelete);
  addNames(remove, "classes");
  remove.app->add_flag("--with-marks", remove.options->withMarks,
                       "delete the marks, too, that have no other class");
  addNames(addEdit(classes, program,
                   {"order", "Numbers the classes from 0 on in the order given.",
                    "class order parts nut screw"},
                   runOrder),
           "all classes");
}

}  // namespace

void addClassCommands(CLI::App& app, ProgramOptions& program) {
  auto* classes =
      addCommandGroup(app, {"class", "The classes that marks carry and a network is to learn.",
                            "class add parts screw nut"});
  addAdd(*classes, program);
  addList(*classes, program);
  addEdits(*classes, program);
}
