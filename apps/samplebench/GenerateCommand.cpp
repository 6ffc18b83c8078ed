#include "GenerateCommand.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "ClaimedDirectory.h"
#include "CommandError.h"
#include "CommandLine.h"
#include "DataStatistics.h"
#include "Interrupt.h"
#include "Numbers.h"
#include "OutputFile.h"
#include "PictureFile.h"
#include "Platform.h"
#include "Progress.h"
#include "SetLists.h"
#include "TNV_SampleBenchNative/WTNVGenerationDarknet.h"
#include "TaskTree.h"
#include "TemplateValues.h"
#include "WatchedRun.h"
#include "verify/PictureCheck.h"

namespace fs = std::filesystem;

namespace {

constexpr auto usualNet = "yolov4-tiny.tmp";

std::vector<WTNVDNNClass> classesByNumber(const WTNVProject& project) {
  auto classes = project.wGetDNNClasses();
  std::stable_sort(classes.begin(), classes.end(),
                   [](const auto& a, const auto& b) { return a.wGetDNNId() < b.wGetDNNId(); });
  return classes;
}

std::string numberedNames(const std::vector<WTNVDNNClass>& classes) {
  std::vector<std::string> texts;
  for (const auto& dnnClass : classes)
    texts.push_back(std::to_string(dnnClass.wGetDNNId()) + " " + dnnClass.wGetName());
  return joined(texts);
}

void requireUsableClasses(const WTNVProject& project) {
  const auto classes = classesByNumber(project);
  if (classes.empty())
    throw CommandError("the project has no classes; add them with: samplebench class add " +
                       project.wGetProjectName() + " NAME...");
  for (std::size_t i = 0; i < classes.size(); ++i) {
    if (classes[i].wGetDNNId() != static_cast<int>(i))
      throw CommandError("the numbers of the classes must run from 0 to " +
                         std::to_string(classes.size() - 1) + " without gap or repeat; they are " +
                         numberedNames(classes) +
                         ". Give the classes new numbers in the project's settings (DNN.Ids)");
  }
}

void requirePictures(const WTNVProject& project, const std::vector<PictureRecord>& pictures,
                     Output& output) {
  requireReadable(project, pictures);
  for (const auto& picture : pictures)
    // A record that cannot be read has no path, and was told of already.
    if (!picture.path.empty() && !looksLikePicture(picture.path))
      output.note("left out, for it is no picture that can be read: " + picture.path);
}

void chooseAugmentation(WTNVHandlerAugment& handler, const Locations& locations,
                        const std::string& name) {
  requireChoice("augmentation", name, handler.wGetAvailableAugmentations());
  const auto file = (fs::path(locations.augments) / name).string();
  // The library goes first: it refuses a damaged file, which the XML reader may not survive.
  try {
    handler.wSetAugmentation(name);
  } catch (const cv::Exception&) {
    throw CommandError("the task tree '" + file + "' is damaged; restore it or choose another");
  }
  requireTaskTree(file);
}

std::string chosenNet(const std::string& asked, const std::vector<std::string>& available) {
  if (!asked.empty()) return asked;
  if (available.empty() ||
      std::find(available.begin(), available.end(), usualNet) != available.end())
    return usualNet;
  return *std::min_element(available.begin(), available.end());
}

void setTemplates(const WTNVGenerationDarknet& darknet, const WTNVGeneration& generation,
                  const GenerateOptions& options, const TrainingSetPaths& paths) {
  const auto configs = generation.wGetAvailableTemplateNames(darknet.wGetConfigDescriptor());
  const auto nets = generation.wGetAvailableTemplateNames(darknet.wGetNetDescriptor());
  const TemplateChoice config{darknet.wGetConfigDescriptor(), options.config};
  const TemplateChoice net{darknet.wGetNetDescriptor(), chosenNet(options.net, nets)};
  requireChoice("data template", config.name, configs);
  requireChoice("network template", net.name, nets);
  const TemplateValues own{{"CLASSES", "$DNN_COUNT"},
                           {"FILTERS", "$DARKNET_YOLO_FILTER_CNT"},
                           {"DATA_PATH", "$DARKNET_DATA_PATH"},
                           {"TRAIN_FILE", "$DARKNET_TRAINFILE"},
                           {"TEST_FILE", "$DARKNET_TESTFILE"},
                           {"NAMES", paths.names},
                           {"BACKUP", paths.backup}};
  const auto values = valuesFor(generation, {config, net}, parseSettings(options.settings), own);
  generation.wSetTemplateData(config.descriptor, config.name, values[0], paths.data);
  generation.wSetTemplateData(net.descriptor, net.name, values[1], paths.net);
}

void setWeights(const WTNVGenerationDarknet& darknet, const std::string& weights) {
  const auto available = darknet.wGetAvailableWeights();
  if (!weights.empty() && available.empty())
    throw CommandError("there is no weights file '" + weights + "', nor any other in " +
                       darknet.wGetWeightsDirectory() +
                       "; put one there, or fetch one with: samplebench weights get NAME "
                       "--address URL --directory " +
                       darknet.wGetWeightsDirectory());
  if (!weights.empty()) requireChoice("weights file", weights, available);
  darknet.wSetWeights(weights);
  darknet.wSetWeightsCopy(!weights.empty());
}

void setDarknet(const WTNVGenerationDarknet& darknet, const GenerateOptions& options,
                const TrainingSetPaths& paths) {
  darknet.wSetSampleDirectory(paths.samples);
  darknet.wSetDarknetDataDirectory(paths.directory);
  darknet.wSetTrainFileName(fs::path(paths.trainList).filename().string());
  darknet.wSetTestFileName(fs::path(paths.testList).filename().string());
  darknet.wSetTestRatio(options.testRatio);
  darknet.wSetAbsolutePathInFiles(!options.relativePaths);
}

// Samples without lists are of no use. The next run would clear them away, others must not take
// them for a set.
void removePartialSet(const TrainingSetPaths& paths) {
  fs::remove_all(paths.samples);
  fs::remove(paths.sources);
}

// The library clears the directory when it begins, but not if it refuses to.
bool hasEarlierSet(const TrainingSetPaths& paths) {
  return fs::exists(paths.trainList) || fs::exists(paths.sources);
}

void process(WTNVProject& project, WTNVHandlerAugment& handler, const TrainingSetPaths& paths,
             SampleSources& sources, int jobs, Output& output) {
  const auto trainSets = project.wGetTrainSets();
  const bool hadSet = fs::exists(paths.sources) || fs::exists(paths.trainList);
  Progress progress(trainSets.size(), output);
  WatchedRun<WTNVHandlerAugment> run(handler, progress, [&](std::size_t place) {
    sources.add(trainSets[place].getImagePath());
    // By this file a set is known as ours even if the run is cut short before it has its lists.
    if (place == 0) sources.write(paths.sources);
  });
  handler.setCBGenerationUpdate(run.onUpdate);
  const auto complete = run.complete(
      [&] { return handler.wProcessParallel(trainSets, project.wGetGeneration(), jobs); });
  handler.setCBGenerationUpdate(nullptr);
  progress.finish();
  if (complete) return;
  if (progress.done() > 0 || !hasEarlierSet(paths)) removePartialSet(paths);
  run.throwFailure();
  if (run.wasStopped())
    throw CommandError("interrupted after " + counted(progress.done(), "picture") +
                           "; the partial training set was removed" +
                           (hadSet ? ", and the earlier set there is gone" : "") + ": run it again",
                       exitInterrupted);
  throw CommandError("the training set could not be written to '" + paths.directory +
                     "': " + output.cause() +
                     "; see that the place can be written to and has space, or give another");
}

void writeNames(const WTNVProject& project, const std::string& file) {
  std::ofstream stream(file);
  for (const auto& dnnClass : classesByNumber(project))
    stream << dnnClass.wGetName() << '\n';
  stream.close();
  if (!stream) throw CommandError("'" + file + "' cannot be written");
}

// An expression that finds nothing is a slip of the pen, and a division by it no division by
// groups.
void requireMatches(const WTNVProject& project, const Grouping& grouping, Output& output) {
  if (grouping.kind != Grouping::Kind::pattern) return;
  const Grouper grouper(grouping);
  const auto trainSets = project.wGetTrainSets();
  const auto matched = static_cast<std::size_t>(
      std::count_if(trainSets.begin(), trainSets.end(),
                    [&](const auto& each) { return grouper.finds(each.getImagePath()); }));
  if (matched == 0)
    throw CommandError("'" + grouping.pattern + "' finds nothing in the name of any of the " +
                           counted(trainSets.size(), "picture") +
                           "; give an expression that finds what pictures have in common",
                       exitUsage);
  output.fact("matched", static_cast<Json::UInt64>(matched));
  output.note("'" + grouping.pattern + "' finds something in the names of " +
              std::to_string(matched) + " of " + counted(trainSets.size(), "picture") +
              (matched < trainSets.size() ? "; each of the others stands alone" : ""));
}

std::vector<std::string> cutPictures(const SampleSources& sources) {
  const std::set<std::string> pictures(sources.pictures().begin(), sources.pictures().end());
  std::vector<std::string> cut;
  std::copy_if(pictures.begin(), pictures.end(), std::back_inserter(cut), isCutJpeg);
  return cut;
}

std::size_t pointsOn(const WTNVProject& project, const SampleSources& sources) {
  const std::unordered_set<std::string> used(sources.pictures().begin(), sources.pictures().end());
  std::size_t points = 0;
  for (const auto& trainSet : project.wGetTrainSets()) {
    if (!used.contains(trainSet.getImagePath())) continue;
    for (const auto& mark : trainSet.wGetMarks())
      if (mark.wGetType() == "Point" && !mark.wGetClassIdx().empty()) ++points;
  }
  return points;
}

std::size_t withoutSamples(const WTNVProject& project, const SampleSources& sources) {
  const std::unordered_set<std::string> used(sources.pictures().begin(), sources.pictures().end());
  const auto trainSets = project.wGetTrainSets();
  return static_cast<std::size_t>(
      std::count_if(trainSets.begin(), trainSets.end(),
                    [&](const auto& trainSet) { return !used.contains(trainSet.getImagePath()); }));
}

void requireFilled(const std::string& file, const Output& output) {
  if (!fs::is_regular_file(file) || fs::is_empty(file))
    throw CommandError("'" + file + "' was not written: " + output.cause());
}

// A picture that is a link may lead anywhere; of the others a directory has many.
class PicturePlaces {
 public:
  explicit PicturePlaces(const std::string& place) : directory(place) {}

  bool hold(const std::string& picture) {
    std::error_code error;
    if (fs::is_symlink(fs::symlink_status(picture, error))) return liesWithin(picture, directory);
    const auto parent = fs::path(picture).parent_path();
    const auto [known, isNew] = holdsParent.emplace(parent.string(), false);
    if (isNew) known->second = liesWithin(parent, directory);
    return known->second;
  }

 private:
  std::string directory;
  std::unordered_map<std::string, bool> holdsParent;
};

// A picture of which nobody knows the path may lie there, and would be cleared away.
void requireKnownPictures(const std::string& directory, const WTNVProject& project,
                          const std::vector<PictureRecord>& pictures) {
  requireSetLists(project);
  for (const auto& picture : pictures)
    if (picture.path.empty())
      throw CommandError(picture.damage + ". Its picture may lie in '" + directory +
                         "', which a run would clear; restore that file, or give a new or empty "
                         "output directory");
}

// The library refuses to clear such a directory, but only when the run begins.
void requireNoSources(const std::string& directory, const WTNVProject& project,
                      const std::vector<PictureRecord>& pictures, const Locations& locations) {
  std::error_code error;
  if (!fs::exists(directory, error)) return;
  const auto refuse = [&](const std::string& source) {
    throw CommandError(source + " lies in '" + directory +
                       "', which a run would clear; give another output directory");
  };
  PicturePlaces places(directory);
  for (const auto& picture : pictures)
    if (!picture.path.empty() && places.hold(picture.path))
      refuse("the picture '" + picture.path + "' of the project");
  if (liesWithin(fs::current_path(error), directory)) refuse("the working directory");
  if (liesWithin(projectDirectory(project), directory)) refuse("the project");
  if (liesWithin(locations.platforms, directory)) refuse("'" + locations.platforms + "'");
  if (liesWithin(locations.augments, directory)) refuse("'" + locations.augments + "'");
}

}  // namespace

void requireOutputPath(const std::string& path) {
  if (std::any_of(path.begin(), path.end(), [](unsigned char c) { return c <= ' '; }))
    throw CommandError("the output path '" + path +
                       "' has white space, which Darknet cannot read; choose one without");
}

TrainingSetPaths prepareSet(WTNVProject& project, const Locations& locations,
                            const GenerateOptions& options, Output& output) {
  requireUsableClasses(project);
  const auto pictures = readPictures(project, output);
  requirePictures(project, pictures, output);
  const auto directory = directoryBehind(options.output);
  const auto paths = trainingSetPaths(options.relativePaths ? directory : absolutePath(directory),
                                      options.project);
  requireOutputPath(paths.directory);
  requireDirectoryPlace(paths.directory);
  requireRenewable(paths.directory);
  requireReplaceable(paths.directory);
  if (holdsFiles(paths.directory)) requireKnownPictures(paths.directory, project, pictures);
  requireNoSources(paths.directory, project, pictures, locations);
  auto handler = project.getHndAugment();
  chooseAugmentation(handler, locations, options.augmentation);
  const WTNVGenerationDarknet darknet(project.wGetGeneration());
  setWeights(darknet, options.weights);
  setDarknet(darknet, options, paths);
  setTemplates(darknet, project.wGetGeneration(), options, paths);
  requireMatches(project, parseGrouping(options.keepTogether), output);
  return paths;
}

GenerateResult generateSet(WTNVProject& project, const Locations& locations,
                           const GenerateOptions& options, Output& output) {
  // What is half done has to be cleared away.
  const platform::InterruptCatcher catcher;
  // First, for what another one has written until now looks like files of the user.
  const ClaimedDirectory claim(directoryBehind(options.output),
                               platform::DirectoryLock::Kind::replaced);
  claim.requireOurs();
  const auto paths = prepareSet(project, locations, options, output);
  stopIfInterrupted();
  auto handler = project.getHndAugment();
  const auto grouping = parseGrouping(options.keepTogether);
  const auto seed = options.seed ? options.seed : earlierSeed(paths, grouping);
  const KeptDivision kept(paths);
  SampleSources sources(paths.samples);
  process(project, handler, paths, sources, options.jobs, output);
  sources.write(paths.sources);
  std::optional<GroupedDivision> division;
  if (grouping.kind != Grouping::Kind::none)
    division = divideByGroups(paths, sources, grouping, options.testRatio, seed);
  kept.drop();
  fs::create_directories(paths.backup);
  writeNames(project, paths.names);
  requireFilled(paths.data, output);
  requireFilled(paths.net, output);
  return {paths,
          readTrainingSet(paths, project.wGetDNNClasses().size()),
          division,
          withoutSamples(project, sources),
          cutPictures(sources),
          pointsOn(project, sources)};
}

namespace {

void sayCut(const std::vector<std::string>& pictures, Output& output) {
  Json::Value list(Json::arrayValue);
  for (const auto& picture : pictures)
    list.append(picture);
  output.fact("cutPictures", list);
  if (pictures.empty()) return;
  output.say(counted(pictures.size(), "picture") +
             " without the end of the file, whose samples are grey there:");
  for (const auto& picture : pictures)
    output.say("  " + picture);
  output.setFindings();
}

void sayPoints(std::size_t points, Output& output) {
  output.fact("points", static_cast<Json::UInt64>(points));
  if (points > 0)
    output.say(points == 1 ? "1 point becomes a box of one pixel"
                           : std::to_string(points) + " points become boxes of one pixel");
}

std::string percent(double share) {
  return formatFixed(100 * share, 1) + " %";
}

void writeDivision(const GroupedDivision& division, const GenerateOptions& options,
                   Output& output) {
  output.fact("groups", static_cast<Json::UInt64>(division.groups));
  output.fact("seed", division.seed);
  output.fact("testShare", division.testShare());
  output.say("kept together by " + options.keepTogether + ": " + counted(division.groups, "group") +
             "; the test list has " + percent(division.testShare()) +
             " of the samples, asked were " + percent(options.testRatio));
  output.say("seed " + std::to_string(division.seed) +
             "; a set in the same place keeps it, --seed " + std::to_string(division.seed) +
             " gives the same division elsewhere");
}

void writeBoxes(const WTNVProject& project, const TrainingSetContent& content, Output& output) {
  std::vector<std::string> columns{"number", "class", "boxes"};
  columns.insert(columns.end(), sideColumns.begin(), sideColumns.end());
  std::vector<TableRow> rows;
  for (const auto& dnnClass : classesByNumber(project)) {
    const auto& boxes = content.boxes[static_cast<std::size_t>(dnnClass.wGetDNNId())];
    TableRow row{dnnClass.wGetDNNId(), dnnClass.wGetName(), boxes.size()};
    const auto sides = sideCells(boxes);
    row.insert(row.end(), sides.begin(), sides.end());
    rows.push_back(row);
  }
  output.table("classes", columns, rows);
  if (content.withoutBoxes > 0)
    output.say(counted(content.withoutBoxes, "sample") + " without a box");
  output.fact("samplesWithoutBoxes", static_cast<Json::UInt64>(content.withoutBoxes));
}

}  // namespace

void writePlaces(const TrainingSetPaths& paths, Output& output) {
  output.properties("places", {{"samples", paths.samples},
                               {"training list", paths.trainList},
                               {"test list", paths.testList},
                               {"data description", paths.data},
                               {"network", paths.net},
                               {"class names", paths.names},
                               {"sources of the samples", paths.sources},
                               {"trained weights go to", paths.backup}});
}

namespace {

std::size_t filesBelow(const std::string& directory) {
  std::error_code error;
  const fs::recursive_directory_iterator entries(directory, error);
  return static_cast<std::size_t>(std::count_if(
      begin(entries), end(entries), [](const auto& entry) { return !entry.is_directory(); }));
}

void sayPlan(const WTNVProject& project, const TrainingSetPaths& paths, Output& output) {
  const auto trainSets = project.wGetTrainSets();
  const auto pictures = static_cast<std::size_t>(
      std::count_if(trainSets.begin(), trainSets.end(),
                    [](const auto& each) { return looksLikePicture(each.getImagePath()); }));
  const auto replaced = filesBelow(paths.directory);
  output.fact("pictures", static_cast<Json::UInt64>(pictures));
  output.fact("replaced", static_cast<Json::UInt64>(replaced));
  output.say(
      "would write a training set of " + counted(pictures, "picture") + " to " + paths.directory +
      (replaced > 0 ? ", where " + counted(replaced, "file") + " of an earlier one would go" : ""));
  output.say();
  writePlaces(paths, output);
}

void runGenerate(const Locations& locations, const GenerateOptions& options, Output& output) {
  // First, for it is right or wrong on the command line alone.
  parseGrouping(options.keepTogether);
  const auto project = openProject(locations, options.project);
  if (output.isDryRun()) {
    sayPlan(*project, prepareSet(*project, locations, options, output), output);
    return;
  }
  const auto [paths, content, division, leftOut, cut, points] =
      generateSet(*project, locations, options, output);
  output.table("set", {"pictures", "samples", "training", "test", "boxes"},
               {{project->wGetTrainSets().size(), content.samples(), content.training, content.test,
                 content.boxCount()}});
  sayLeftOut(leftOut, output);
  sayCut(cut, output);
  sayPoints(points, output);
  if (division) writeDivision(*division, options, output);
  if (content.test == 0)
    output.note(division ? "the test list is empty, for the groups are few; a larger --test-ratio "
                           "puts one there"
                         : "the test list is empty; a larger --test-ratio puts some samples there");
  output.say();
  writeBoxes(*project, content, output);
  output.say();
  writePlaces(paths, output);
}

}  // namespace

namespace {

void addTemplates(CLI::App& command, GenerateOptions& options) {
  command.add_option("--weights", options.weights, "starting weights to lay beside the set");
  command.add_option("--config", options.config, "template of the data description")
      ->capture_default_str();
  command.add_option("--net", options.net,
                     "template of the network (default: yolov4-tiny.tmp, or else the first)");
  command.add_option("--set", options.settings, "KEY=VALUE for the templates; may be repeated")
      ->allow_extra_args(false);
}

void addDivision(CLI::App& command, GenerateOptions& options) {
  command.add_option("--test-ratio", options.testRatio, "share of the test list")
      ->check(numberBetween(0, 1))
      ->capture_default_str();
  auto* together = command.add_option(
      "--keep-together", options.keepTogether,
      "samples that go into one list: none (each for itself), source (all of one picture), or "
      "group=REGEX (all of the pictures whose file names have the part in common that it finds; "
      "without references back and looking ahead)");
  command.add_option("--seed", options.seed, "repeats a division into groups")->needs(together);
}

}  // namespace

void addGenerateCommand(CLI::App& app, ProgramOptions& program) {
  const auto options = std::make_shared<GenerateOptions>();
  auto* command = addWritingCommand(
      app, program,
      {"generate", "Writes a training set for Darknet. An earlier set there is replaced.",
       "generate parts --output set/ --test-ratio 0.1 --set WIDTH=608"},
      [&program, options](Output& output) { runGenerate(program.locations, *options, output); });
  addProjectArgument(*command, options->project);
  command->add_option("-o,--output", options->output, "directory of the set")->required();
  command->add_option("--augmentation", options->augmentation, "tree of tasks for each picture")
      ->capture_default_str();
  addTemplates(*command, *options);
  addJobs(*command, options->jobs);
  command->add_flag("--relative-paths", options->relativePaths,
                    "write paths relative to the working directory");
  addDivision(*command, *options);
}
