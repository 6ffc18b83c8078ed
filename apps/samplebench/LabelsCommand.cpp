#include "LabelsCommand.h"

#include <algorithm>
#include <optional>
#include <set>
#include <unordered_set>

#include "ClaimedDirectory.h"
#include "ClassCommand.h"
#include "CommandError.h"
#include "CommandLine.h"
#include "ImportCommand.h"
#include "OutputFile.h"
#include "PictureFile.h"
#include "Platform.h"
#include "Progress.h"
#include "SetLists.h"
#include "TNV_SampleBenchNative/WTNVToolLabelExchange.h"

namespace {

struct LabelsOptions {
  std::string project;
  std::string set;
  std::string path;
  std::string format;
  std::string names;
  std::string pictures;
  std::string workflow;
  std::string rejections;
  int base = 1;
  bool clip = false;
  bool copy = false;
};

// More would bury what went well; --rejections has them all.
constexpr std::size_t mostRejectionsShown = 20;

// Shows how far the exchange has come, and has it stop at the user's interrupt. The library's
// callback is a plain function, so that there is one such watch at a time.
class ExchangeWatch {
 public:
  // `calls` of the callback are to be expected for each picture.
  ExchangeWatch(WTNVToolLabelExchange& watched, std::size_t pictures, std::size_t calls,
                Output& output)
      : exchange(watched), progress(pictures, output), total(pictures), callsPerPicture(calls) {
    current = this;
    exchange.setCBUpdate([] { current->update(); });
  }

  ~ExchangeWatch() {
    exchange.setCBUpdate(nullptr);
    progress.finish();
  }

  ExchangeWatch(const ExchangeWatch&) = delete;
  ExchangeWatch& operator=(const ExchangeWatch&) = delete;

  bool wasStopped() const { return stopped; }

 private:
  void update() {
    progress.moveTo(std::min(++callsSeen / callsPerPicture, total));
    if (!platform::InterruptCatcher::interrupted()) return;
    stopped = true;
    exchange.wProcessStop();
  }

  static inline ExchangeWatch* current = nullptr;

  WTNVToolLabelExchange& exchange;
  Progress progress;
  std::size_t total;
  std::size_t callsPerPicture;
  std::size_t callsSeen = 0;
  bool stopped = false;
};

[[noreturn]] void endInterrupted(const std::string& outcome) {
  throw CommandError("interrupted; " + outcome, exitInterrupted);
}

void setUp(WTNVToolLabelExchange& exchange, const LabelsOptions& options) {
  if (!options.format.empty())
    requireChoice("format", options.format, WTNVToolLabelExchange::wGetAvailableFormats(),
                  exitUsage);
  if (!options.pictures.empty() && !std::filesystem::is_directory(options.pictures))
    throw CommandError("there is no directory '" + options.pictures +
                       "'; --pictures tells where the pictures lie");
  exchange.wSetFormat(options.format);
  exchange.wSetNames(options.names);
  exchange.wSetPictureDirectory(options.pictures);
  exchange.wSetBase(options.base);
  exchange.wSetClip(options.clip);
  exchange.wSetCopy(options.copy);
}

void writeRejections(const std::string& file, const std::vector<std::string>& rejections) {
  writeWhole(file, [&](std::ostream& stream) {
    for (const auto& rejection : rejections)
      stream << rejection << '\n';
  });
}

// Where labels are read from, and what they need to be understood. With a file its neighbours are
// read, too: the lists that it names, the names of the classes.
std::vector<std::filesystem::path> sourcesOf(const LabelsOptions& options) {
  std::vector<std::filesystem::path> sources;
  std::error_code error;
  if (std::filesystem::is_directory(options.path, error)) {
    sources.emplace_back(options.path);
  } else {
    sources.push_back(std::filesystem::path(absolutePath(options.path)).parent_path());
  }
  if (!options.names.empty()) sources.emplace_back(options.names);
  if (!options.pictures.empty()) sources.emplace_back(options.pictures);
  return sources;
}

void requireApart(const std::string& file, const std::vector<std::filesystem::path>& sources) {
  const auto destination = destinationOf(file);
  std::error_code error;
  for (const auto& source : sources)
    if (liesWithin(destination, source) || std::filesystem::equivalent(destination, source, error))
      throw CommandError("'" + file + "' would lie in what is read, '" + source.string() +
                         "'; choose another place for the list of rejected labels");
}

// Before anything is changed: the list must not take the place of what it tells of.
void requireRejectionsPlace(const LabelsOptions& options, const WTNVProject& project,
                            const std::vector<PictureRecord>& pictures) {
  if (!options.rejections.empty()) requireWritable(options.rejections, project, pictures);
}

// A description may lead to pictures, with labels beside them, anywhere.
void requireApartFromPictures(const std::string& file, const std::vector<std::string>& pictures) {
  std::set<std::filesystem::path> directories;
  for (const auto& picture : pictures)
    directories.insert(std::filesystem::path(picture).parent_path());
  requireApart(file, {directories.begin(), directories.end()});
}

void noteRejections(const std::vector<std::string>& rejections, Output& output) {
  const auto shown = std::min(rejections.size(), mostRejectionsShown);
  for (std::size_t i = 0; i < shown; ++i)
    output.note(rejections[i]);
  if (rejections.size() > shown)
    output.note("and " + std::to_string(rejections.size() - shown) +
                " more; --rejections FILE lists them all");
}

// Why labels were rejected, for both directions.
void reportRejections(const WTNVToolLabelExchange& exchange, const LabelsOptions& options,
                      Output& output) {
  std::vector<TableRow> rows;
  for (const auto& [reason, count] : exchange.wGetReasons())
    rows.push_back({reason, count});
  if (rows.empty()) {
    output.fact("reasons", Json::Value(Json::arrayValue));
  } else {
    output.table("reasons", {"reason", "count"}, rows);
    output.setFindings();
  }
  const auto rejections = exchange.wGetRejections();
  if (!options.rejections.empty() && !output.isDryRun())
    writeRejections(options.rejections, rejections);
  noteRejections(rejections, output);
}

// The labels of a class that is not added are rejected later on.
std::size_t addMissingClasses(WTNVProject& project, const std::vector<std::string>& names,
                              Output& output) {
  std::unordered_set<std::string> present;
  for (const auto& dnnClass : project.wGetDNNClasses())
    present.insert(dnnClass.wGetName());
  std::size_t added = 0;
  for (const auto& name : names) {
    if (name.empty() || !present.insert(name).second) continue;
    if (!isClassName(name)) {
      output.note("class '" + name +
                  "' is not added; use a name without , = { } \" \\, control characters and blanks "
                  "at its ends");
      output.setFindings();
    } else {
      addClass(project, name, "");
      ++added;
    }
  }
  return added;
}

struct ImportCounts {
  std::size_t classes = 0;
  std::size_t pictures = 0;
  std::size_t marks = 0;
};

constexpr auto nothingImported = "nothing was imported, the project is as it was";

void readLabels(WTNVToolLabelExchange& exchange, const LabelsOptions& options, Output& output) {
  // How many there are shows only when all are read.
  const ExchangeWatch watch(exchange, 0, 1, output);
  output.note("reading the labels in " + options.path);
  const bool isRead = exchange.wRead(options.path);
  if (watch.wasStopped()) endInterrupted(nothingImported);
  if (!isRead)
    throw CommandError("no labels can be read from '" + options.path + "': " + output.cause() +
                       "; --format and --names tell how to read them");
}

// In memory only.
ImportCounts addAll(WTNVProject& project, const std::string& set, WTNVToolLabelExchange& exchange,
                    Output& output) {
  ImportCounts counts;
  counts.classes = addMissingClasses(project, exchange.wGetClassNames(), output);
  const auto pictures = exchange.wGetImagePaths();
  counts.pictures = addPictures(project, set, pictures).added;
  const auto trainSets = project.wGetTrainSetsFromImageSet(set);
  // Each record is read, then each picture of the labels gets its marks.
  const ExchangeWatch watch(exchange, trainSets.size() + pictures.size(), 1, output);
  counts.marks = static_cast<std::size_t>(exchange.wAddMarks(trainSets, project.wGetDNNClasses()));
  if (watch.wasStopped()) endInterrupted(nothingImported);
  return counts;
}

void reportImport(const ImportCounts& counts, const WTNVToolLabelExchange& exchange,
                  Output& output) {
  const auto classes =
      std::to_string(counts.classes) + (counts.classes == 1 ? " class" : " classes");
  output.say(exchange.wGetReadFormat() + ": " + classes + " and " +
             counted(counts.pictures, "picture") +
             (output.isDryRun() ? " would be added" : " added"));
  output.fact("format", exchange.wGetReadFormat());
  output.fact("classesAdded", static_cast<Json::UInt64>(counts.classes));
  output.fact("picturesAdded", static_cast<Json::UInt64>(counts.pictures));
  output.properties("labels", {{"found", exchange.wGetFound()},
                               {"imported", counts.marks},
                               {"rejected", exchange.wGetRejected()},
                               {"cut", exchange.wGetCut()}});
}

// The pictures that are to go out. One whose record cannot be read is a finding.
std::vector<PictureRecord> chosenPictures(const WTNVProject& project,
                                          const std::vector<PictureRecord>& pictures,
                                          const std::string& workflow, Output& output) {
  const auto workflows = project.wGetWorkflows();
  std::vector<std::string> names;
  for (const auto& each : workflows)
    names.push_back(each.wGetName());
  if (!workflow.empty()) requireChoice("workflow", workflow, names);
  std::vector<PictureRecord> chosen;
  for (const auto& record : pictures) {
    if (record.path.empty()) {
      output.setFindings();
      continue;
    }
    const auto own = record.trainSet.wGetWorkflow(workflows);
    if (workflow.empty() || (own.isValid() && own.wGetName() == workflow)) chosen.push_back(record);
  }
  return chosen;
}

std::vector<WTNVTrainSet> trainSetsOf(const std::vector<PictureRecord>& pictures) {
  std::vector<WTNVTrainSet> trainSets;
  for (const auto& picture : pictures)
    trainSets.push_back(picture.trainSet);
  return trainSets;
}

// Those without labels have no rejected label that would tell of them.
void noteLeftOut(const std::vector<std::string>& pictures, Output& output) {
  if (pictures.empty()) return;
  output.setFindings();
  const auto shown = std::min(pictures.size(), mostRejectionsShown);
  for (std::size_t i = 0; i < shown; ++i)
    output.note("the picture '" + pictures[i] + "' " + (output.isDryRun() ? "would be" : "is") +
                " left out");
  if (pictures.size() > shown)
    output.note("and " + counted(pictures.size() - shown, "picture") + " more");
}

// What is to be known before a trainer gets the texts.
void sayUseForTraining(const LabelsOptions& options, Output& output) {
  if (options.format != "Darknet") return;
  if (!options.copy)
    output.say(
        "the pictures stay where they are, and trainers look for the texts near the pictures: to "
        "train with them, export with --copy");
  output.say(
      "nothing is divided: val of data.yaml is the same as train, so that a test tells "
      "nothing of new pictures");
}

void reportExport(const WTNVToolLabelExchange& exchange, const LabelsOptions& options,
                  Output& output) {
  const auto leftOut = exchange.wGetPicturesLeftOut();
  const auto pictures = exchange.wGetImagePaths().size() - leftOut.size();
  output.say(options.format + " labels of " + counted(pictures, "picture") +
             (output.isDryRun() ? " would go to " : " written to ") + options.path);
  output.fact("format", options.format);
  output.fact("directory", options.path);
  output.fact("pictures", static_cast<Json::UInt64>(pictures));
  output.fact("picturesLeftOut", static_cast<Json::UInt64>(leftOut.size()));
  if (!leftOut.empty())
    output.say(counted(leftOut.size(), "picture") +
               (output.isDryRun() ? " would be left out" : " left out"));
  noteLeftOut(leftOut, output);
  output.properties("labels", {{"found", exchange.wGetFound()},
                               {"exported", exchange.wGetFound() - exchange.wGetRejected()},
                               {"rejected", exchange.wGetRejected()},
                               {"cut", exchange.wGetCut()}});
  sayUseForTraining(options, output);
}

constexpr auto nothingExported = "nothing was exported, an earlier export is as it was";

void takeMarks(WTNVToolLabelExchange& exchange, const LabelsOptions& options,
               const std::vector<WTNVTrainSet>& trainSets, const std::vector<WTNVDNNClass>& classes,
               Output& output) {
  const ExchangeWatch watch(exchange, 0, 1, output);
  const bool areTaken = exchange.wReadMarks(trainSets, classes);
  if (watch.wasStopped()) endInterrupted(nothingExported);
  if (!areTaken)
    throw CommandError("the classes cannot be written: " + output.cause() +
                       "; samplebench class list " + options.project +
                       " shows them, class add, rename and order mend them");
}

void writeLabels(WTNVToolLabelExchange& exchange, const LabelsOptions& options,
                 std::size_t pictures, Output& output) {
  // A dry run keeps nobody out.
  std::optional<ClaimedDirectory> claim;
  if (!output.isDryRun())
    claim.emplace(options.path, platform::DirectoryLock::Kind::staying).requireOurs();
  // Each picture is looked at, its labels are written, and it may be copied.
  const ExchangeWatch watch(exchange, pictures, options.copy ? 3 : 2, output);
  const bool isDone =
      output.isDryRun() ? exchange.wTryWrite(options.path) : exchange.wWrite(options.path);
  if (watch.wasStopped()) endInterrupted(nothingExported);
  if (!isDone)
    throw CommandError("the labels cannot be written to '" + options.path + "': " + output.cause() +
                       "; give a new or empty directory");
}

void runImport(const Locations& locations, const LabelsOptions& options, Output& output) {
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project, lock);
  if (!options.rejections.empty()) {
    requireRejectionsPlace(options, *project, readPictures(*project, output));
    requireApart(options.rejections, sourcesOf(options));
  }
  WTNVToolLabelExchange exchange;
  setUp(exchange, options);
  const platform::InterruptCatcher catcher;
  readLabels(exchange, options, output);
  if (!options.rejections.empty())
    requireApartFromPictures(options.rejections, exchange.wGetImagePaths());
  const bool hasPictures = !exchange.wGetImagePaths().empty();
  ImportCounts counts;
  if (hasPictures) {
    counts = addAll(*project, options.set, exchange, output);
    saveProject(*project, counts.classes + counts.pictures > 0, output);
  }
  reportImport(counts, exchange, output);
  reportRejections(exchange, options, output);
  if (!hasPictures)
    throw CommandError(
        "no label has a picture that was found; the reasons above tell why, and "
        "--pictures tells where pictures lie");
}

void runExport(const Locations& locations, const LabelsOptions& options, Output& output) {
  const auto project = openProject(locations, options.project);
  const auto pictures = readPictures(*project, output);
  requireRejectionsPlace(options, *project, pictures);
  if (!options.rejections.empty()) requireApart(options.rejections, {options.path});
  WTNVToolLabelExchange exchange;
  setUp(exchange, options);
  const platform::InterruptCatcher catcher;
  const auto chosen = chosenPictures(*project, pictures, options.workflow, output);
  requireReadable(*project, pictures);
  if (!chosen.empty()) requireReadable(*project, chosen, "workflow '" + options.workflow + "'");
  const auto trainSets = trainSetsOf(chosen);
  takeMarks(exchange, options, trainSets, project->wGetDNNClasses(), output);
  // Those that stay here, too, for they may lie among the pictures of an earlier export.
  exchange.wProtect(trainSetsOf(pictures));
  if (holdsFiles(options.path)) requireSetLists(*project);
  directoryBehind(options.path);
  requireDirectoryPlace(options.path);
  writeLabels(exchange, options, trainSets.size(), output);
  reportExport(exchange, options, output);
  reportRejections(exchange, options, output);
}

CLI::Option* addFormat(CLI::App& command, ProgramOptions& program, LabelsOptions& options,
                       const std::string& more) {
  auto* format = command.add_option(
      "--format", options.format,
      "format of the labels: " + joined(WTNVToolLabelExchange::wGetAvailableFormats()) + more);
  program.choices[format] = WTNVToolLabelExchange::wGetAvailableFormats;
  return format;
}

// What both directions understand.
void addExchangeOptions(CLI::App& command, LabelsOptions& options) {
  command.add_option("--base", options.base, "number of the first pixel in VOC")
      ->check(CLI::IsMember({0, 1}))
      ->capture_default_str();
  command.add_option("--rejections", options.rejections, "file to list all labels left out in");
}

void addImport(CLI::App& labels, ProgramOptions& program) {
  const auto options = std::make_shared<LabelsOptions>();
  auto* command = addWritingCommand(
      labels, program,
      {"import",
       "Adds classes, pictures and marks from labels that were made elsewhere. What is there "
       "already is passed over.",
       "labels import parts day1 ~/labelled/ --names ~/labelled/obj.names"},
      [&program, options](Output& output) { runImport(program.locations, *options, output); });
  addProjectArgument(*command, options->project);
  command->add_option("SET", options->set, "name of the image set")->required();
  command->add_option("PATH", options->path, "directory or file of the labels")->required();
  addFormat(*command, program, *options, " (default: as it looks)");
  command->add_option("--names", options->names, "file with the names of the classes");
  command->add_option("--pictures", options->pictures, "where the pictures lie, if elsewhere");
  command->add_flag("--clip", options->clip,
                    "cut labels at the edges of the picture instead of rejecting them");
  addExchangeOptions(*command, *options);
}

void addExport(CLI::App& labels, ProgramOptions& program) {
  const auto options = std::make_shared<LabelsOptions>();
  auto* command = addWritingCommand(
      labels, program,
      {"export",
       "Writes all marks as labels for other programs. An earlier export there is replaced.",
       "labels export parts ~/for-others/ --format Darknet --copy"},
      [&program, options](Output& output) { runExport(program.locations, *options, output); });
  addProjectArgument(*command, options->project);
  command->add_option("DIRECTORY", options->path, "new or empty, or an earlier export")->required();
  addFormat(*command, program, *options, "")->required();
  command->add_flag("--copy", options->copy, "copy the pictures beside the labels");
  command->add_option("--workflow", options->workflow, "only pictures in this workflow");
  addExchangeOptions(*command, *options);
}

}  // namespace

void addLabelsCommands(CLI::App& app, ProgramOptions& program) {
  auto* labels = addCommandGroup(app, {"labels", "Labels of other programs, in and out.",
                                       "labels import parts day1 ~/labelled/"});
  addImport(*labels, program);
  addExport(*labels, program);
}
