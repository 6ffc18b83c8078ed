#include "Arguments.h"

#include <CLI/CLI.hpp>
#include <functional>

#include <opencv2/core.hpp>

#include "ClassCommand.h"
#include "CropCommand.h"
#include "DemoCommand.h"
#include "GalleryCommand.h"
#include "GenerateCommand.h"
#include "ImportCommand.h"
#include "LabelsCommand.h"
#include "MagnifyCommand.h"
#include "MarkCommand.h"
#include "Numbers.h"
#include "ProjectCommands.h"
#include "RenderCommand.h"
#include "StatsCommand.h"
#include "TNV_SampleBenchNative/WTNVToolLabelExchange.h"
#include "UserCommand.h"
#include "VerifyCommand.h"
#include "ViewCommand.h"
#include "WeightsCommand.h"

namespace {

constexpr auto description =
    "Prepares training data for object detectors: projects of marked pictures, and training sets "
    "made of them.";

constexpr auto footer =
    "A first walk:\n"
    "  samplebench create parts\n"
    "  samplebench class add parts screw nut\n"
    "  samplebench import parts day1 photos/\n"
    "  samplebench mark parts photo.jpg Rect 0.1,0.2 0.4,0.5 --class screw\n"
    "  samplebench render parts photo.jpg -o seen.png\n"
    "  samplebench generate parts --output set/\n"
    "or all of it at once: samplebench demo /tmp/demo\n\n"
    "Data goes to standard output, everything else to standard error.\n"
    "Exit codes: 0 done, 1 the command failed (the message says what to do), 2 wrong usage, "
    "3 done, and there are findings, 130 interrupted.";

constexpr auto formsHelp =
    "Forms and their points:\n"
    "  Rect              two opposite corners\n"
    "  Rect Center       the centre and a corner\n"
    "  Circle            the centre and a point on the rim\n"
    "  Circle Multiple   3 to 99 points on the rim\n"
    "  Ellipse           the centre, the end of one half axis, a point as far off as the other\n"
    "  Ellipse Multiple  5 to 99 points on the rim\n"
    "  Line              the two ends\n"
    "  Point             the place\n"
    "  PolyLine          3 to 999 points of a path\n"
    "  PolyLine Closed   3 to 999 corners of an outline\n"
    "  Image             any point: nearly the whole picture is marked";

// All that can be given on the command line, and the command that was chosen.
struct Request {
  Locations locations;
  bool quiet = false;
  bool json = false;
  bool dryRun = false;
  std::string project;
  std::vector<std::string> classNames;
  std::string classColor;
  ClassEditOptions classEdit;
  ImportOptions import;
  MarkOptions mark;
  RenderOptions render;
  MagnifyOptions magnify;
  CropOptions crop;
  GalleryOptions gallery;
  GenerateOptions generate;
  DemoOptions demo;
  ViewOptions view;
  StatsOptions stats;
  VerifyOptions verify;
  WeightsOptions weights;
  UserOptions user;
  LabelsOptions labels;
  std::string configFile;
  std::function<void(Output&)> run;
};

CLI::Validator numberBetween(double least, double most) {
  const auto range = numberText(least) + " to " + numberText(most);
  return {[=](const std::string& text) {
            const auto number = parseNumber(text);
            const bool fits = number && *number >= least && *number <= most;
            return fits ? std::string() : "'" + text + "' is no number from " + range;
          },
          range};
}

CLI::Validator notEmpty() {
  return {[](const std::string& text) {
            return text.empty() ? std::string("the text is empty") : std::string();
          },
          ""};
}

CLI::App* addCommand(CLI::App& parent, const std::string& name, const std::string& purpose,
                     const std::string& example) {
  auto* command = parent.add_subcommand(name, purpose);
  command->footer("Example:\n  samplebench " + example);
  return command;
}

void addJson(CLI::App& command, Request& request) {
  command.add_flag("--json", request.json, "the result as one JSON object, for programs");
}

void addDryRun(CLI::App& command, Request& request) {
  command.add_flag("--dry-run", request.dryRun, "say what would be done, and change nothing");
}

void addProjectArgument(CLI::App& command, std::string& project) {
  command.add_option("PROJECT", project, "name of the project")->required();
}

void addCreate(CLI::App& app, Request& request) {
  auto* command = addCommand(app, "create", "Makes an empty project.", "create parts");
  addProjectArgument(*command, request.project);
  command->callback([&request] {
    request.run = [&](Output& output) { runCreate(request.locations, request.project, output); };
  });
}

void addClassAdd(CLI::App& classes, Request& request) {
  auto* command = addCommand(classes, "add", "Adds classes; each takes the next number, from 0 on.",
                             "class add parts screw nut --color ff8000");
  addProjectArgument(*command, request.project);
  command->add_option("NAME", request.classNames, "names of the classes")->required();
  command->add_option("--color", request.classColor, "colour for drawing, RRGGBB");
  command->callback([&request] {
    request.run = [&](Output& output) {
      runClassAdd(request.locations, request.project, request.classNames, request.classColor,
                  output);
    };
  });
}

void addClassList(CLI::App& classes, Request& request) {
  auto* command = addCommand(classes, "list", "Lists the classes with numbers and colours.",
                             "class list parts");
  addProjectArgument(*command, request.project);
  addJson(*command, request);
  command->callback([&request] {
    request.run = [&](Output& output) { runClassList(request.locations, request.project, output); };
  });
}

using ClassEdit = void (*)(const Locations&, const ClassEditOptions&, Output&);

CLI::App* addClassEdit(CLI::App& classes, Request& request, const std::string& name,
                       const std::string& purpose, const std::string& example, ClassEdit run) {
  auto* command = addCommand(classes, name, purpose, "class " + example);
  addProjectArgument(*command, request.classEdit.project);
  addJson(*command, request);
  addDryRun(*command, request);
  command->callback([&request, run] {
    request.run = [&request, run](Output& output) {
      run(request.locations, request.classEdit, output);
    };
  });
  return command;
}

void addClassEdits(CLI::App& classes, Request& request) {
  auto& options = request.classEdit;
  auto* rename = addClassEdit(classes, request, "rename", "Gives a class another name.",
                              "rename parts screw bolt", runClassRename);
  rename->add_option("NAME", options.name, "present name")->required();
  rename->add_option("NEW", options.target, "new name")->required();
  auto* merge = addClassEdit(classes, request, "merge",
                             "Gives the marks of classes to another one and removes those classes. "
                             "Numbers run from 0 without gaps afterwards.",
                             "merge parts bolt stud --into screw", runClassMerge);
  merge->add_option("NAME", options.names, "classes that go away")->required();
  merge->add_option("--into", options.target, "the class that stays")->required();
  auto* remove =
      addClassEdit(classes, request, "delete", "Removes classes, and takes them out of all marks.",
                   "delete parts dirt --with-marks", runClassDelete);
  remove->add_option("NAME", options.names, "classes")->required();
  remove->add_flag("--with-marks", options.withMarks,
                   "delete the marks, too, that have no other class");
  addClassEdit(classes, request, "order", "Numbers the classes from 0 on in the order given.",
               "order parts nut screw", runClassOrder)
      ->add_option("NAME", options.names, "all classes")
      ->required();
}

void addClass(CLI::App& app, Request& request) {
  auto* command =
      addCommand(app, "class", "The classes that marks carry and a network is to learn.",
                 "class add parts screw nut");
  command->require_subcommand(1);
  addClassAdd(*command, request);
  addClassList(*command, request);
  addClassEdits(*command, request);
}

void addImport(CLI::App& app, Request& request) {
  auto& options = request.import;
  auto* command = addCommand(app, "import",
                             "Adds the pictures of a directory to an image set. They stay where "
                             "they are; those already there are passed over.",
                             "import parts day1 photos/ --recursive");
  addProjectArgument(*command, options.project);
  addDryRun(*command, request);
  command->add_option("SET", options.set, "name of the image set")->required();
  command->add_option("DIRECTORY", options.directory, "where the pictures lie")->required();
  command->add_flag("--recursive", options.recursive, "look into directories below, too");
  command->callback([&request] {
    request.run = [&](Output& output) { runImport(request.locations, request.import, output); };
  });
}

void requireOneKindOfMark(const MarkOptions& options) {
  const bool hasAny = !options.picture.empty() || !options.className.empty();
  const bool hasAll = !options.picture.empty() && !options.form.empty() &&
                      !options.points.empty() && !options.className.empty();
  if (!options.list.empty() && hasAny)
    throw CLI::ValidationError("mark", "--list has pictures and classes of its own");
  if (options.list.empty() && !hasAll)
    throw CLI::ValidationError("mark", "give PICTURE FORM POINT... --class NAME, or --list FILE");
}

void addMark(CLI::App& app, Request& request) {
  auto& options = request.mark;
  auto* command = addCommand(
      app, "mark",
      "Marks an object on a picture, or many from a list: one mark a line, picture, form, class "
      "and points with tabs between them, the points \"x,y\" with blanks.",
      "mark parts photo.jpg Rect 0.1,0.2 0.4,0.5 --class screw\n  samplebench mark parts --list "
      "marks.txt\n\n" +
          std::string(formsHelp));
  addProjectArgument(*command, options.project);
  addDryRun(*command, request);
  command->add_option("PICTURE", options.picture, "path, or file name if there is only one");
  command->add_option("FORM", options.form, "form of the mark, see below");
  command->add_option("POINT", options.points, "points x,y, 0 to 1 from the top left");
  command->add_option("--class", options.className, "class of the mark");
  command->add_option("--list", options.list, "file with many marks")->check(notEmpty());
  command->add_flag("--pixels", options.pixels, "points are in pixels of the picture");
  command->add_flag("--assist", options.assist,
                    "let each mark snap to the outline of the object under it");
  command->callback([&request] {
    requireOneKindOfMark(request.mark);
    request.run = [&](Output& output) { runMark(request.locations, request.mark, output); };
  });
}

void addList(CLI::App& app, Request& request) {
  auto* command =
      addCommand(app, "list", "Shows classes, pictures with the number of their marks, and totals.",
                 "list parts");
  addProjectArgument(*command, request.project);
  command->callback([&request] {
    request.run = [&](Output& output) { runList(request.locations, request.project, output); };
  });
}

void addRenderLook(CLI::App& command, RenderOptions& options) {
  command.add_option("--style", options.style, "colours of the marks")->capture_default_str();
  command.add_option("--info", options.info, "text beside the marks")->capture_default_str();
  auto* cross = command.add_option("--cross", options.cross, "place of a cross, x,y from 0 to 1");
  command.add_option("--cross-style", options.crossStyle, "look of the cross")
      ->needs(cross)
      ->capture_default_str();
  command.add_flag("!--no-fill", options.filled, "do not fill marks that have an area");
}

void addRender(CLI::App& app, Request& request) {
  auto& options = request.render;
  auto* command = addCommand(app, "render", "Writes a picture with its marks to a file.",
                             "render parts photo.jpg -o seen.png --fit 800x600 --style Colored");
  addProjectArgument(*command, options.project);
  command->add_option("PICTURE", options.picture, "path, or file name if there is only one")
      ->required();
  command->add_option("-o,--output", options.file, "file to write, like seen.png")->required();
  auto* zoom = command->add_option("--zoom", options.zoom, "pixels per pixel of the picture")
                   ->check(numberBetween(smallestZoom, largestZoom));
  command->add_option("--fit", options.fit, "largest size, WIDTHxHEIGHT")->excludes(zoom);
  addRenderLook(*command, options);
  command->callback([&request] {
    request.run = [&](Output& output) { runRender(request.locations, request.render, output); };
  });
}

void addMagnify(CLI::App& app, Request& request) {
  auto& options = request.magnify;
  auto* command = addCommand(
      app, "magnify", "Writes the neighbourhood of a spot of a picture, enlarged, to a file.",
      "magnify parts photo.jpg --at 0.3,0.7 --zoom 8 -o spot.png");
  addProjectArgument(*command, options.project);
  command->add_option("PICTURE", options.picture, "path, or file name if there is only one")
      ->required();
  command->add_option("--at", options.at, "the spot, x,y from 0 to 1")->required();
  command->add_option("-o,--output", options.file, "file to write, like spot.png")->required();
  command->add_option("--zoom", options.zoom, "pixels per pixel of the picture")
      ->check(numberBetween(smallestZoom, largestMagnification))
      ->capture_default_str();
  command->add_option("--mode", options.mode, "filter: Normal, Gray, Improve, Edge or Edge x2")
      ->capture_default_str();
  command->add_option("--size", options.size, "size of the file's picture, WIDTHxHEIGHT")
      ->capture_default_str();
  command->add_flag("!--no-cross", options.cross, "do not draw the cross at the spot");
  command->callback([&request] {
    request.run = [&](Output& output) { runMagnify(request.locations, request.magnify, output); };
  });
}

void addCrop(CLI::App& app, Request& request) {
  auto& options = request.crop;
  auto* command = addCommand(app, "crop",
                             "Writes what lies under each mark of a picture to a file of its own, "
                             "and prints the files.",
                             "crop parts photo.jpg -o cut/");
  addProjectArgument(*command, options.project);
  command->add_option("PICTURE", options.picture, "path, or file name if there is only one")
      ->required();
  command->add_option("-o,--output", options.directory, "directory to write to")
      ->required()
      ->check(notEmpty());
  command->callback([&request] {
    request.run = [&](Output& output) { runCrop(request.locations, request.crop, output); };
  });
}

void addGallery(CLI::App& app, Request& request) {
  auto& options = request.gallery;
  auto* command = addCommand(app, "gallery",
                             "Cuts every mark out of its picture, to look the marks through, and "
                             "prints how many there are of each class.",
                             "gallery parts --report marks.html");
  addProjectArgument(*command, options.project);
  command
      ->add_option("--report", options.report,
                   "page to write, with all cuts, what looks wrong, and plots")
      ->check(notEmpty());
  command->callback([&request] {
    request.run = [&](Output& output) { runGallery(request.locations, request.gallery, output); };
  });
}

void addGenerateTemplates(CLI::App& command, GenerateOptions& options) {
  command.add_option("--weights", options.weights, "starting weights to lay beside the set");
  command.add_option("--config", options.config, "template of the data description")
      ->capture_default_str();
  command.add_option("--net", options.net,
                     "template of the network (default: yolov4-tiny.tmp, or else the first)");
  command.add_option("--set", options.settings, "KEY=VALUE for the templates; may be repeated")
      ->allow_extra_args(false);
}

void addGenerate(CLI::App& app, Request& request) {
  auto& options = request.generate;
  auto* command = addCommand(app, "generate",
                             "Writes a training set for Darknet. An earlier set there is replaced.",
                             "generate parts --output set/ --test-ratio 0.1 --set WIDTH=608");
  addProjectArgument(*command, options.project);
  addJson(*command, request);
  command->add_option("--output", options.output, "directory of the set")->required();
  command->add_option("--augmentation", options.augmentation, "tree of tasks for each picture")
      ->capture_default_str();
  command->add_option("--test-ratio", options.testRatio, "share of the test list")
      ->check(numberBetween(0, 1))
      ->capture_default_str();
  addGenerateTemplates(*command, options);
  command->add_flag("--relative-paths", options.relativePaths,
                    "write paths relative to the working directory");
  auto* together = command->add_option(
      "--keep-together", options.keepTogether,
      "samples that go into one list: none (each for itself), source (all of one picture), or "
      "group=REGEX (all of the pictures whose file names have the part in common that it finds)");
  command->add_option("--seed", options.seed, "repeats a division into groups")->needs(together);
  command->callback([&request] {
    parseGrouping(request.generate.keepTogether);
    request.run = [&](Output& output) { runGenerate(request.locations, request.generate, output); };
  });
}

void addDemo(CLI::App& app, Request& request) {
  auto& options = request.demo;
  auto* command = addCommand(app, "demo",
                             "Walks the whole road in a new directory: draws pictures, marks them, "
                             "renders one, writes a training set and reads it back.",
                             "demo /tmp/demo");
  command->add_option("DIRECTORY", options.directory, "new or empty, or an earlier demo")
      ->required();
  command->add_option("--pictures", options.pictures,
                      "take the pictures of this directory, each marked as a whole");
  command->callback([&request] {
    request.run = [&](Output& output) { runDemo(request.locations, request.demo, output); };
  });
}

void addView(CLI::App& app, Request& request) {
  auto& options = request.view;
  auto* command = addCommand(app, "view",
                             "Writes a sample of a training set with its boxes to a file, or a "
                             "sheet of the first samples.",
                             "view set/samples -o sheet.png");
  command->add_option("DIRECTORY", options.directory, "directory with samples")->required();
  command->add_option("NAME", options.name, "sample, like img_3; without it a sheet is drawn");
  command->add_option("-o,--output", options.file, "file to write, like sheet.png")->required();
  command->add_option("--count", options.count, "samples on the sheet")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
  command->callback(
      [&request] { request.run = [&](Output& output) { runView(request.view, output); }; });
}

void addStats(CLI::App& app, Request& request) {
  auto& options = request.stats;
  auto* command = addCommand(app, "stats",
                             "Shows of what a project or a training set consists: pictures, boxes "
                             "of each class and their sizes in pixels.",
                             "stats parts --report parts.html");
  command->add_option("SUBJECT", options.subject, "project, or directory of a training set")
      ->required();
  addJson(*command, request);
  addDryRun(*command, request);
  command->add_option("--report", options.report, "page to write, with plots of sizes and places")
      ->check(notEmpty());
  command->callback([&request] {
    request.run = [&](Output& output) { runStats(request.locations, request.stats, output); };
  });
}

void addVerify(CLI::App& app, Request& request) {
  auto& options = request.verify;
  auto* command = addCommand(
      app, "verify",
      "Checks a training set as trainers of the Darknet family and their successors read it, and "
      "says file, line and rule of each finding. Exit code 3 if there are any.",
      "verify set/");
  command->add_option("SET", options.set, "directory of the set, or its data file")->required();
  addJson(*command, request);
  command->add_option("--net", options.network, "network file (default: the one beside the set)");
  command->callback(
      [&request] { request.run = [&](Output& output) { runVerify(request.verify, output); }; });
}

std::string formatsHelp() {
  return "format of the labels: " + joined(WTNVToolLabelExchange::wGetAvailableFormats());
}

void addLabelsImport(CLI::App& labels, Request& request) {
  auto& options = request.labels;
  auto* command = addCommand(labels, "import",
                             "Adds classes, pictures and marks from labels that were made "
                             "elsewhere. What is there already is passed over.",
                             "labels import parts day1 ~/labelled/ --names ~/labelled/obj.names");
  addProjectArgument(*command, options.project);
  addJson(*command, request);
  addDryRun(*command, request);
  command->add_option("SET", options.set, "name of the image set")->required();
  command->add_option("PATH", options.path, "directory or file of the labels")->required();
  command->add_option("--format", options.format, formatsHelp() + " (default: as it looks)");
  command->add_option("--names", options.names, "file with the names of the classes");
  command->add_option("--pictures", options.pictures, "where the pictures lie, if elsewhere");
  command->add_option("--base", options.base, "number of the first pixel in VOC")
      ->check(CLI::IsMember({0, 1}))
      ->capture_default_str();
  command->add_flag("--clip", options.clip,
                    "cut labels at the edges of the picture instead of rejecting them");
  command->add_option("--rejections", options.rejections, "file to list all rejected labels in");
  command->callback([&request] {
    request.run = [&](Output& output) {
      runLabelsImport(request.locations, request.labels, output);
    };
  });
}

void addLabelsExport(CLI::App& labels, Request& request) {
  auto& options = request.labels;
  auto* command = addCommand(labels, "export",
                             "Writes all marks as labels for other programs. An earlier export "
                             "there is replaced.",
                             "labels export parts ~/for-others/ --format Darknet --copy");
  addProjectArgument(*command, options.project);
  addJson(*command, request);
  addDryRun(*command, request);
  command->add_option("DIRECTORY", options.path, "new or empty, or an earlier export")->required();
  command->add_option("--format", options.format, formatsHelp())->required();
  command->add_flag("--copy", options.copy, "copy the pictures beside the labels");
  command->add_option("--workflow", options.workflow, "only pictures in this workflow");
  command->add_option("--base", options.base, "number of the first pixel in VOC")
      ->check(CLI::IsMember({0, 1}))
      ->capture_default_str();
  command->add_option("--rejections", options.rejections, "file to list all marks left out in");
  command->callback([&request] {
    request.run = [&](Output& output) {
      runLabelsExport(request.locations, request.labels, output);
    };
  });
}

void addLabels(CLI::App& app, Request& request) {
  auto* command = addCommand(app, "labels", "Labels of other programs, in and out.",
                             "labels import parts day1 ~/labelled/");
  command->require_subcommand(1);
  addLabelsImport(*command, request);
  addLabelsExport(*command, request);
}

using WeightsRun = void (*)(const WeightsOptions&, Output&);

CLI::App* addWeightsCommand(CLI::App& weights, Request& request, const std::string& name,
                            const std::string& purpose, const std::string& example,
                            WeightsRun run) {
  auto* command = addCommand(weights, name, purpose, "weights " + example);
  command->add_option("--directory", request.weights.directory, "where the weights lie")
      ->required();
  command->callback([&request, run] {
    request.run = [&request, run](Output& output) { run(request.weights, output); };
  });
  return command;
}

void addWeights(CLI::App& app, Request& request) {
  auto& options = request.weights;
  auto* weights =
      addCommand(app, "weights", "Starting weights: what a portal offers, and what lies here.",
                 "weights list --address URL --directory weights/");
  weights->require_subcommand(1);
  const auto addAddress = [&](CLI::App* command) {
    command->add_option("--address", options.address, "address of the portal")
        ->required()
        ->check(notEmpty());
  };
  addAddress(addWeightsCommand(*weights, request, "list", "Lists the files and their states.",
                               "list --address URL --directory weights/", runWeightsList));
  auto* get =
      addWeightsCommand(*weights, request, "get", "Fetches a file and checks it.",
                        "get small.weights --address URL --directory weights/", runWeightsGet);
  get->add_option("NAME", options.name, "name of the file")->required();
  addAddress(get);
  addWeightsCommand(*weights, request, "import", "Copies a file into the directory.",
                    "import ~/small.weights --directory weights/", runWeightsImport)
      ->add_option("FILE", options.name, "the file")
      ->required();
  addWeightsCommand(*weights, request, "remove", "Deletes a file of the directory.",
                    "remove small.weights --directory weights/", runWeightsRemove)
      ->add_option("NAME", options.name, "name of the file")
      ->required();
}

using UserRun = void (*)(const UserOptions&, Output&);

CLI::App* addUserCommand(CLI::App& users, Request& request, const std::string& name,
                         const std::string& purpose, const std::string& example, UserRun run) {
  auto* command = addCommand(users, name, purpose, "user " + example);
  command->add_option("--users", request.user.users, "where users lie")->capture_default_str();
  command->callback([&request, run] {
    request.run = [&request, run](Output& output) { run(request.user, output); };
  });
  return command;
}

void addUser(CLI::App& app, Request& request) {
  auto& options = request.user;
  auto* users =
      addCommand(app, "user", "The people who work here, and the project each opened last.",
                 "user create ann");
  users->require_subcommand(1);
  addUserCommand(*users, request, "list", "Lists the users.", "list", runUserList);
  const auto addName = [&](CLI::App* command) {
    command->add_option("NAME", options.name, "name of the user")->required();
    return command;
  };
  addName(addUserCommand(*users, request, "create", "Makes a user.", "create ann", runUserCreate));
  addName(addUserCommand(*users, request, "set", "Remembers a project as the one opened last.",
                         "set ann parts", runUserSet))
      ->add_option("PROJECT", options.project, "name of the project")
      ->required();
  addName(
      addUserCommand(*users, request, "remove", "Removes a user.", "remove ann", runUserRemove));
}

void addConfig(CLI::App& app, Request& request) {
  auto* command = addCommand(app, "config",
                             "Shows where a configuration file puts projects, platforms, "
                             "augmentations and users.",
                             "config app.cfg");
  command->add_option("FILE", request.configFile, "the configuration")->required();
  command->callback(
      [&request] { request.run = [&](Output& output) { runConfig(request.configFile, output); }; });
}

// The library joins directories and names as they stand.
std::string withSlash(const std::string& directory) {
  return (std::filesystem::path(directory) / "").generic_string();
}

Locations withSlashes(const Locations& locations) {
  return {withSlash(locations.projects), withSlash(locations.platforms),
          withSlash(locations.augments)};
}

void addGlobals(CLI::App& app, Request& request) {
  request.locations = {"projects/", defaultPlatforms(), defaultAugments()};
  app.add_option("--projects", request.locations.projects, "where projects lie")
      ->capture_default_str();
  app.add_option("--platforms", request.locations.platforms,
                 "templates (default: those that came with the program)");
  app.add_option("--augments", request.locations.augments,
                 "trees of tasks (default: those that came with the program)");
  app.add_flag("--quiet", request.quiet, "only errors on standard error");
}

void addCommands(CLI::App& app, Request& request) {
  // Global options may stand behind the command.
  app.fallthrough();
  app.require_subcommand(1);
  addGlobals(app, request);
  addCreate(app, request);
  addClass(app, request);
  addImport(app, request);
  addMark(app, request);
  addList(app, request);
  addRender(app, request);
  addMagnify(app, request);
  addCrop(app, request);
  addGallery(app, request);
  addGenerate(app, request);
  addView(app, request);
  addStats(app, request);
  addVerify(app, request);
  addWeights(app, request);
  addLabels(app, request);
  addUser(app, request);
  addConfig(app, request);
  addDemo(app, request);
}

ExitCode runCommand(const Request& request, Output& output) {
  try {
    request.run(output);
    return output.hasFindings() ? exitFindings : exitOk;
  } catch (const CommandError& error) {
    output.error(error.what());
    return error.exitCode();
  } catch (const cv::Exception& error) {
    // Without the place in the source that the whole text starts with.
    output.error(error.err + "; if it is about a file of the project, restore or remove that file");
    return exitFailed;
  } catch (const std::exception& error) {
    output.error(error.what());
    return exitFailed;
  }
}

}  // namespace

int runProgram(int argc, const char* const* argv, Output& output) {
  CLI::App app(description, "samplebench");
  app.footer(footer);
  Request request;
  addCommands(app, request);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const auto unknown = app.remaining(true);
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr && !unknown.empty()) {
      output.error("there is no '" + unknown.front() + "' here; --help lists what there is");
      return exitUsage;
    }
    return app.exit(error, output.data(), std::cerr) == 0 ? exitOk : exitUsage;
  } catch (const CommandError& error) {
    output.error(error.what());
    return error.exitCode();
  }
  request.locations = withSlashes(request.locations);
  // Records are found by their paths, from whatever directory the program is run in.
  request.locations.projects = absolutePath(request.locations.projects);
  if (request.quiet) output.setQuiet();
  if (request.json) output.setJson();
  if (request.dryRun) output.setDryRun();
  const ExitCode code = runCommand(request, output);
  if (output.finish()) return code;
  output.error("standard output cannot be written to");
  return exitFailed;
}
