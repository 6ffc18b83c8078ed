#include "StatsCommand.h"

#include <algorithm>
#include <filesystem>

#include "CommandError.h"
#include "CommandLine.h"
#include "DataStatistics.h"
#include "GalleryStatistics.h"
#include "Numbers.h"
#include "OutputFile.h"
#include "Progress.h"

namespace {

struct StatsOptions {
  /// A project, or the directory or data file of a training set.
  std::string subject;
  /// A page to write; empty for none.
  std::string report;
};

DataStatistics counting(std::size_t pictures, Output& output,
                        const std::function<DataStatistics(const PictureStep&)>& count) {
  Progress progress(pictures, output);
  auto statistics = count([&] { progress.step(); });
  progress.finish();
  return statistics;
}

bool isProject(const Locations& locations, const std::string& name) {
  const auto names = WTNVProject::wReadAvailableProjects(locations.projects);
  return std::find(names.begin(), names.end(), name) != names.end();
}

// In a set a page would replace a sample, or keep the next run from replacing the set.
void requireOutside(const std::string& report, const std::string& set) {
  requireWritable(report);
  const std::filesystem::path path(set);
  const auto directory = std::filesystem::is_directory(path) ? path : path.parent_path();
  if (!directory.empty() && liesWithin(report, directory))
    throw CommandError("'" + report + "' lies in the training set; choose another place");
  requireNoForeignPage(report);
}

// Numbers of what is not there would all be zero.
void requireLists(const SetLayout& layout) {
  for (const auto& list : layout.lists())
    if (!readTextFile(list).readable)
      throw CommandError("the list '" + list +
                         "' of the set is missing or cannot be read; samplebench verify tells "
                         "what else is wrong");
  if (layout.trainLists.empty() && layout.pictures.empty())
    throw CommandError("'" + (layout.dataFile.empty() ? layout.description : layout.dataFile) +
                       "' names no pictures that are there (train)");
}

DataStatistics statisticsOf(const Locations& locations, const StatsOptions& options,
                            Output& output) {
  if (isProject(locations, options.subject)) {
    const auto project = openProject(locations, options.subject);
    const auto pictures = readPictures(*project, output);
    if (!options.report.empty()) {
      requireWritable(options.report, *project, pictures);
      requireNoForeignPage(options.report);
    }
    return counting(pictures.size(), output, [&](const PictureStep& step) {
      return projectStatistics(*project, pictures, step);
    });
  }
  if (!std::filesystem::exists(options.subject))
    throw CommandError("'" + options.subject + "' is neither a project in " + locations.projects +
                       " nor a training set; give a project's name, or the directory, data file or "
                       "data.yaml of a set, which samplebench generate writes");
  if (!options.report.empty()) requireOutside(options.report, options.subject);
  Findings ignored;
  const auto layout = findSet(options.subject, "", ignored);
  requireLists(layout);
  const auto pictures = picturesOf(layout);
  auto statistics = counting(pictures.size(), output, [&](const PictureStep& step) {
    return setStatistics(layout, pictures, step);
  });
  statistics.title = "Training set " + options.subject;
  return statistics;
}

void write(const DataStatistics& statistics, Output& output) {
  output.table("totals", {"pictures", "unreadable", "without boxes", "boxes", "without class"},
               {{statistics.pictures, statistics.unreadablePictures.size(), statistics.withoutBoxes,
                 statistics.boxCount(), statistics.withoutClass}});
  Json::Value unreadable(Json::arrayValue);
  for (const auto& picture : statistics.unreadablePictures) {
    unreadable.append(picture);
    output.note("cannot be read, its boxes do not count: " + picture);
  }
  output.fact("unreadablePictures", unreadable);
  output.fact("badLines", static_cast<Json::UInt64>(statistics.badLines));
  if (statistics.badLines > 0)
    output.say(counted(statistics.badLines, "line") +
               " of label texts left out as no labels; samplebench verify names them");
  output.say();
  std::vector<std::string> columns{"boxes", "pictures"};
  columns.insert(columns.end(), sideColumns.begin(), sideColumns.end());
  columns.emplace_back("class");
  std::vector<TableRow> rows;
  for (const auto& dnnClass : statistics.classes) {
    TableRow row{dnnClass.boxes.size(), dnnClass.pictures};
    const auto sides = sideCells(plainBoxes(dnnClass));
    row.insert(row.end(), sides.begin(), sides.end());
    row.emplace_back(dnnClass.name);
    rows.push_back(row);
  }
  output.table("classes", columns, rows);
}

void runStats(const Locations& locations, const StatsOptions& options, Output& output) {
  const auto statistics = statisticsOf(locations, options, output);
  write(statistics, output);
  if (options.report.empty()) return;
  output.fact("report", options.report);
  if (!output.isDryRun())
    writeWhole(options.report, [&](std::ostream& page) { writeStatisticsPage(page, statistics); });
  output.say();
  sayWritten(options.report, "", output);
}

}  // namespace

void addStatsCommand(CLI::App& app, ProgramOptions& program) {
  const auto options = std::make_shared<StatsOptions>();
  auto* command = addWritingCommand(
      app, program,
      {"stats",
       "Shows of what a project or a training set consists: pictures, boxes of each class and "
       "their sizes in pixels.",
       "stats parts --report parts.html"},
      [&program, options](Output& output) { runStats(program.locations, *options, output); });
  command
      ->add_option("SUBJECT", options->subject,
                   "project, or directory, data file or data.yaml of a training set")
      ->required();
  command->add_option("--report", options->report, "page to write, with plots of sizes and places")
      ->check(notEmpty());
}
