#include "StatsCommand.h"

#include <algorithm>
#include <cmath>
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

struct SideRange {
  double least = 0;
  double middle = 0;
  double most = 0;
};

SideRange rangeOf(const ClassStatistics& dnnClass) {
  std::vector<cv::Rect2d> boxes;
  for (const auto& placed : dnnClass.boxes)
    boxes.push_back(placed.box);
  const auto sides = sidesOf(boxes);
  if (sides.empty()) return {};
  const auto [least, most] = std::minmax_element(sides.begin(), sides.end());
  return {*least, median(sides), *most};
}

Cell pixels(double length) {
  return {std::round(length * 10) / 10, formatFixed(length, 1)};
}

void write(const DataStatistics& statistics, Output& output) {
  output.table("totals", {"pictures", "unreadable", "without boxes", "boxes", "without class"},
               {{statistics.pictures, statistics.unreadablePictures.size(), statistics.withoutBoxes,
                 statistics.boxCount(), statistics.withoutClass}});
  Json::Value unreadable(Json::arrayValue);
  for (const auto& picture : statistics.unreadablePictures) {
    unreadable.append(picture);
    output.note(picture.empty() ? "a picture whose record cannot be read"
                                : "cannot be read, its boxes do not count: " + picture);
  }
  output.fact("unreadablePictures", unreadable);
  output.fact("badLines", static_cast<Json::UInt64>(statistics.badLines));
  if (statistics.badLines > 0)
    output.say(counted(statistics.badLines, "line") +
               " of label texts left out as no labels; samplebench verify names them");
  output.say();
  std::vector<TableRow> rows;
  for (const auto& dnnClass : statistics.classes) {
    const auto [least, middle, most] = rangeOf(dnnClass);
    rows.push_back({dnnClass.boxes.size(), dnnClass.pictures, pixels(least), pixels(middle),
                    pixels(most), dnnClass.name});
  }
  output.table("classes",
               {"boxes", "pictures", "smallest side", "median side", "largest side", "class"},
               rows);
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
