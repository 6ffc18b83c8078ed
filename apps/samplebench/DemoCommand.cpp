#include "DemoCommand.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "ClaimedDirectory.h"
#include "ClassCommand.h"
#include "CommandError.h"
#include "CommandLine.h"
#include "ContactSheet.h"
#include "DemoPictures.h"
#include "GenerateCommand.h"
#include "ImportCommand.h"
#include "Interrupt.h"
#include "MarkCommand.h"
#include "OutputFile.h"
#include "PictureFile.h"
#include "Platform.h"
#include "RenderCommand.h"

namespace fs = std::filesystem;

namespace {

struct DemoOptions {
  std::string directory;
  /// A directory of the user's own pictures; empty to draw some.
  std::string pictures;
};

constexpr auto projectName = "demo";
constexpr auto setName = "pictures";
constexpr unsigned int drawnPictures = 24;
constexpr int contactColumns = 6;
constexpr std::array<const char*, 5> entries{"contact.png", "pictures", "projects", "rendered.png",
                                             "set"};

struct DemoClass {
  std::string name;
  std::string color;
};

// What the demo works on, whether it was drawn or is the user's.
struct Material {
  std::string directory;
  std::vector<DemoClass> classes;
  std::vector<MarkRequest> marks;
};

bool isEarlierDemo(const fs::path& directory) {
  // Of a demo that was killed while it wrote the set.
  const auto lockFile = platform::lockFileOf(directory / "set").filename();
  const auto isOurs = [&](const fs::directory_entry& entry) {
    const auto name = entry.path().filename();
    return name == lockFile ||
           std::find(entries.begin(), entries.end(), name.string()) != entries.end();
  };
  return fs::is_regular_file(directory / "projects" / projectName / "demo.cfg") &&
         std::all_of(fs::directory_iterator(directory), fs::directory_iterator(), isOurs);
}

void requireFreeOrEarlier(const fs::path& directory) {
  if (fs::exists(directory) && !fs::is_empty(directory) && !isEarlierDemo(directory))
    throw CommandError("'" + directory.string() +
                       "' holds files that are no earlier demo; give a new or empty directory");
}

void clearDirectory(const fs::path& directory) {
  std::error_code error;
  for (const auto* entry : entries) {
    fs::remove_all(directory / entry, error);
    if (error)
      throw CommandError("'" + (directory / entry).string() +
                         "' of an earlier demo cannot be removed; give a directory of yours");
  }
}

// Of an earlier demo.
void sayPlan(const fs::path& directory, Output& output) {
  Json::Value removed(Json::arrayValue);
  for (const auto* entry : entries)
    if (fs::exists(directory / entry)) removed.append((directory / entry).string());
  output.fact("directory", directory.string());
  output.fact("removed", removed);
  for (const auto& each : removed)
    output.say("would remove " + each.asString());
  output.say("would write pictures, a project and a training set to " + directory.string());
}

// Clearing the directory would take the user's pictures along.
void requireApart(const std::string& pictures, const fs::path& directory) {
  if (liesWithin(pictures, directory))
    throw CommandError("'" + pictures + "' lies in '" + directory.string() +
                       "', which is cleared; give another directory");
}

std::string drawnName(unsigned int number) {
  char name[32];
  std::snprintf(name, sizeof name, "parts_%02u.jpg", number + 1);
  return name;
}

std::vector<Point> relativeCorners(const cv::Rect& box) {
  return {{1.0 * box.x / demoWidth, 1.0 * box.y / demoHeight},
          {1.0 * box.br().x / demoWidth, 1.0 * box.br().y / demoHeight}};
}

Material drawMaterial(const fs::path& directory) {
  const auto pictures = directory / "pictures";
  fs::create_directories(pictures);
  const auto& names = demoPartNames();
  Material material{
      pictures.string(), {{names[0], "ff5040"}, {names[1], "40c0ff"}, {names[2], "80ff40"}}, {}};
  std::vector<cv::Mat> cells;
  for (unsigned int number = 0; number < drawnPictures; ++number) {
    stopIfInterrupted();
    const auto picture = drawDemoPicture(number);
    const auto file = pictures / drawnName(number);
    writePicture(file.string(), picture.image);
    cells.push_back(fitted(picture.image, {demoWidth / 2, demoHeight / 2}));
    for (const auto& object : picture.objects)
      material.marks.push_back({"", absolutePath(file.string()), "Rect",
                                names[static_cast<std::size_t>(object.part)],
                                relativeCorners(object.box)});
  }
  writePicture((directory / "contact.png").string(), contactSheet(cells, contactColumns));
  return material;
}

void markAsWhole(WTNVProject& project, Material& material, Output& output) {
  for (const auto& picture : readPictures(project, output))
    material.marks.push_back({"", picture.path, "Image", "picture", {{0.5, 0.5}}});
}

// The one with the most marks has the most to show.
std::string fullestPicture(const std::vector<PictureRecord>& pictures) {
  const auto fullest = std::max_element(
      pictures.begin(), pictures.end(), [](const PictureRecord& a, const PictureRecord& b) {
        return a.trainSet.getMarkCount() < b.trainSet.getMarkCount();
      });
  return fullest->path;
}

void renderOne(WTNVProject& project, const std::string& picture, const fs::path& file,
               Output& output) {
  RenderOptions options;
  options.picture = picture;
  options.file = file.string();
  options.style = "Colored";
  options.info = "DNN Class Name";
  renderPicture(project, options, output);
}

void requireSameMarks(const std::vector<PictureRecord>& pictures, const Material& material) {
  std::size_t marks = 0;
  for (const auto& picture : pictures)
    marks += static_cast<std::size_t>(picture.trainSet.getMarkCount());
  if (marks != material.marks.size())
    throw CommandError("of " + counted(material.marks.size(), "mark") + " " +
                       std::to_string(marks) + " came back from disk");
}

void writeSummary(const Material& material, std::size_t pictures, const TrainingSetContent& content,
                  Output& output) {
  const std::vector<std::string> columns{"class", "marks", "boxes in set"};
  std::vector<TableRow> rows;
  for (std::size_t i = 0; i < material.classes.size(); ++i) {
    const auto& name = material.classes[i].name;
    const auto marks = std::count_if(material.marks.begin(), material.marks.end(),
                                     [&](const auto& mark) { return mark.className == name; });
    rows.push_back({name, marks, content.boxes[i].size()});
  }
  output.fact("classes", listOf(columns, rows));
  output.fact("pictures", static_cast<Json::UInt64>(pictures));
  output.fact("training", static_cast<Json::UInt64>(content.training));
  output.fact("test", static_cast<Json::UInt64>(content.test));
  rows.push_back({"total", material.marks.size(), content.boxCount()});
  output.say();
  output.showTable(columns, rows);
  output.say();
  output.say(counted(pictures, "picture") + " gave " + counted(content.samples(), "sample") + ": " +
             std::to_string(content.training) + " training, " + std::to_string(content.test) +
             " test; read back and consistent");
  output.say();
}

void buildProject(const Locations& locations, const DemoOptions& options, const fs::path& directory,
                  Material& material, Output& output) {
  const auto project = createProject(locations, projectName);
  material = options.pictures.empty() ? drawMaterial(directory)
                                      : Material{options.pictures, {{"picture", "40c0ff"}}, {}};
  for (const auto& [name, color] : material.classes)
    addClass(*project, name, color);
  importPictures(*project, setName, material.directory, false);
  if (!options.pictures.empty()) markAsWhole(*project, material, output);
  saveProject(*project, true, output);
  stopIfInterrupted();
  output.note("marking " + counted(material.marks.size(), "object"));
  addMarks(*project, material.marks, {}, output);
  saveProject(*project, true, output);
}

void runDemo(const Locations& locations, const DemoOptions& options, Output& output) {
  const fs::path directory = absolutePath(options.directory);
  auto places = locations;
  places.projects = (directory / "projects" / "").string();
  GenerateOptions generate;
  generate.project = projectName;
  generate.output = (directory / "set").string();
  // Near twins of one picture in both lists would be no test.
  generate.keepTogether = "source";
  generate.augmentation = "resize-quarter-turns.xml";
  requireOutputPath(generate.output);
  if (!options.pictures.empty()) {
    requireApart(options.pictures, directory);
    picturesIn(WTNVProject(projectName, "", "", ""), options.pictures, false);
  }
  requireDirectoryPlace(directory.string());
  if (output.isDryRun()) {
    requireFreeOrEarlier(directory);
    sayPlan(directory, output);
    return;
  }
  const platform::InterruptCatcher catcher;
  // What another one has written until now would look like files of the user.
  const ClaimedDirectory claim(directory, platform::DirectoryLock::Kind::staying);
  claim.requireOurs();
  makeDirectory(directory.string());
  requireFreeOrEarlier(directory);
  clearDirectory(directory);

  Material material;
  buildProject(places, options, directory, material, output);
  const auto project = openProject(places, projectName);
  const auto pictures = readPictures(*project, output);
  requireSameMarks(pictures, material);
  stopIfInterrupted();
  renderOne(*project, fullestPicture(pictures), directory / "rendered.png", output);
  const auto set = generateSet(*project, places, generate, output);
  writeSummary(material, pictures.size(), set.content, output);
  writePlaces(set.paths, output);
  output.say();
  output.say("Look around with: samplebench --projects " + places.projects + " list " +
             projectName);
}

}  // namespace

void addDemoCommand(CLI::App& app, ProgramOptions& program) {
  const auto options = std::make_shared<DemoOptions>();
  auto* command = addWritingCommand(
      app, program,
      {"demo",
       "Walks the whole road in a new directory: draws pictures, marks them, renders one, writes a "
       "training set and reads it back.",
       "demo /tmp/demo"},
      [&program, options](Output& output) { runDemo(program.locations, *options, output); });
  command->add_option("DIRECTORY", options->directory, "new or empty, or an earlier demo")
      ->required();
  command->add_option("--pictures", options->pictures,
                      "take the pictures of this directory, each marked as a whole");
}
