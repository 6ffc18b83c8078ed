#include "ClassCommand.h"

#include <algorithm>
#include <functional>
#include <set>

#include "CommandError.h"
#include "ProjectCommands.h"

namespace {

/// The project with all its marks. What cannot be read would keep a class that goes away.
class Annotations {
 public:
  Annotations(WTNVProject& project, Output& output) : pictures(readPictures(project, output)) {
    const auto unread = std::count_if(pictures.begin(), pictures.end(),
                                      [](const auto& picture) { return picture.path.empty(); });
    if (unread > 0)
      throw CommandError("nothing was changed, for the marks of " +
                         counted(static_cast<std::size_t>(unread), "picture") +
                         " cannot be read; restore those records, or remove the pictures");
  }

  /// Calls the edit, which gives the number of marks that it touched, for each picture.
  std::size_t edit(const std::function<int(const WTNVTrainSet&)>& change) const {
    std::size_t marks = 0;
    for (const auto& picture : pictures)
      marks += static_cast<std::size_t>(change(picture.trainSet));
    return marks;
  }

  std::size_t markCount() const {
    return edit([](const auto& trainSet) { return trainSet.getMarkCount(); });
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
    throw CommandError("class '" + dnnClass.wGetName() + "' cannot be named '" + name +
                       "'; the name is empty or another class's");
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

}  // namespace

void runClassRename(const Locations& locations, const ClassEditOptions& options, Output& output) {
  const auto project = openProject(locations, options.project);
  const auto dnnClass = findClass(*project, options.name);
  requireClassName(options.target);
  update(*project, dnnClass, options.target, dnnClass.wGetDNNId());
  saveProject(*project, true, output);
  report(*project, "renamed " + options.name + " to " + options.target, 0, output);
}

void runClassMerge(const Locations& locations, const ClassEditOptions& options, Output& output) {
  requireDistinct(options.names);
  const auto project = openProject(locations, options.project);
  const Annotations annotations(*project, output);
  const auto target = findClass(*project, options.target);
  std::size_t marks = 0;
  for (const auto& name : options.names) {
    const auto dnnClass = findClass(*project, name);
    if (dnnClass.equal(target))
      throw CommandError("class '" + name + "' cannot be merged into itself", exitUsage);
    marks += annotations.edit(
        [&](const auto& trainSet) { return trainSet.wReplaceClass(dnnClass, target); });
    project->wRemoveDNNClass(dnnClass);
  }
  renumber(*project);
  saveProject(*project, true, output);
  report(*project, "merged " + joined(options.names) + " into " + options.target, marks, output);
}

void runClassDelete(const Locations& locations, const ClassEditOptions& options, Output& output) {
  requireDistinct(options.names);
  const auto project = openProject(locations, options.project);
  const Annotations annotations(*project, output);
  const auto before = annotations.markCount();
  std::size_t marks = 0;
  for (const auto& name : options.names) {
    const auto dnnClass = findClass(*project, name);
    marks +=
        annotations.edit([&](const auto& trainSet) { return trainSet.wRemoveClass(dnnClass); });
    project->wRemoveDNNClass(dnnClass);
  }
  const auto deleted = before - annotations.markCount();
  if (deleted > 0 && !options.withMarks && !output.isDryRun())
    throw CommandError(counted(deleted, "mark") + " would be deleted with " +
                       joined(options.names) +
                       ", having no other class; --with-marks does that, and class merge gives "
                       "them another class");
  renumber(*project);
  saveProject(*project, true, output);
  output.fact("deletedMarks", static_cast<Json::UInt64>(deleted));
  report(*project, "deleted " + joined(options.names) + " with " + counted(deleted, "mark"), marks,
         output);
}

void runClassOrder(const Locations& locations, const ClassEditOptions& options, Output& output) {
  requireDistinct(options.names);
  const auto project = openProject(locations, options.project);
  std::vector<WTNVDNNClass> order;
  for (const auto& name : options.names)
    order.push_back(findClass(*project, name));
  if (order.size() != project->wGetDNNClasses().size())
    throw CommandError("name all " + std::to_string(project->wGetDNNClasses().size()) +
                           " classes in their new order",
                       exitUsage);
  for (std::size_t number = 0; number < order.size(); ++number)
    update(*project, order[number], options.names[number], static_cast<int>(number));
  // Behind those that have found their place, which are as many as its number says.
  for (std::size_t place = 0; place < order.size(); ++place) {
    while (!project->wGetDNNClasses()[place].equal(order[place]))
      project->wOrderUpDNNClass(order[place]);
  }
  saveProject(*project, true, output);
  report(*project, "numbered the classes anew", 0, output);
}
