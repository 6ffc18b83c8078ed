#include "ViewCommand.h"

#include <algorithm>

#include <opencv2/imgproc.hpp>

#include "CommandError.h"
#include "CommandLine.h"
#include "ContactSheet.h"
#include "OutputFile.h"
#include "PictureFile.h"
#include "SampleSources.h"
#include "TNV_SampleBenchNative/WTNVToolDarknetViewer.h"
#include "verify/LabelCheck.h"

namespace {

struct ViewOptions {
  std::string directory;
  std::string name;
  std::string file;
  int count = 24;
};

constexpr int sheetColumns = 6;
const cv::Size sheetCell(240, 180);
constexpr int captionHeight = 20;
constexpr int gap = 8;

std::vector<std::string> sampleNames(WTNVToolDarknetViewer& viewer, const std::string& directory) {
  viewer.wSetImageDirectory(directory);
  auto names = viewer.wReadImages();
  // By length first, so that img_2 comes before img_10.
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
    return std::pair(a.size(), a) < std::pair(b.size(), b);
  });
  return names;
}

// Given the directory of a set, that of its samples is meant.
std::string samplesDirectory(const std::string& given) {
  if (!std::filesystem::is_directory(given)) throw CommandError("'" + given + "' is no directory");
  WTNVToolDarknetViewer viewer;
  const auto below = (std::filesystem::path(given) / "samples").string();
  for (const auto& directory : {given, below})
    if (!sampleNames(viewer, directory).empty()) return directory;
  throw CommandError("'" + given +
                     "' holds no pictures with a label text beside them; give a training set or "
                     "its directory samples/");
}

// Without the ending of a picture's file, if there is a sample of that name.
std::string nameWithoutEnding(const std::string& name, const std::vector<std::string>& names) {
  const auto stem = std::filesystem::path(name).stem().string();
  const auto isThere = [&](const std::string& each) {
    return std::find(names.begin(), names.end(), each) != names.end();
  };
  return !isThere(name) && isThere(stem) ? stem : name;
}

// Empty if it cannot be read; borrowed until the next one is.
cv::Mat sampleNamed(WTNVToolDarknetViewer& viewer, const std::string& name) {
  if (!viewer.wSelectImage(name)) return {};
  return pictureFrom([&](auto... parts) { viewer.wGetSelectedImage(parts...); });
}

const cv::Scalar boxColour(0, 0, 255);
const cv::Scalar numberColour(255, 255, 255);
const cv::Scalar nameColour(40, 40, 40);
constexpr auto font = cv::FONT_HERSHEY_SIMPLEX;
constexpr double fontScale = 0.4;
constexpr int lineWidth = 2;

// Above the box, or in it where there is no room.
void drawNumber(cv::Mat& picture, const std::string& number, cv::Point corner) {
  const auto size = cv::getTextSize(number, font, fontScale, 1, nullptr);
  corner.y -= size.height + 4;
  corner.y = std::max(corner.y, 0);
  const cv::Rect ground(corner, cv::Size(size.width + 4, size.height + 4));
  cv::rectangle(picture, ground, boxColour, cv::FILLED);
  cv::putText(picture, number, corner + cv::Point(2, size.height + 2), font, fontScale,
              numberColour, 1, cv::LINE_AA);
}

// The lines of the sample are lost where it is made smaller.
void drawBoxes(cv::Mat picture, const std::string& labels) {
  for (const auto& line : readTextFile(labels).lines) {
    const auto label = parseLabelLine(line);
    if (!label) continue;
    const cv::Rect2d box(label->box.x * picture.cols, label->box.y * picture.rows,
                         label->box.width * picture.cols, label->box.height * picture.rows);
    const auto seen = box & cv::Rect2d({}, cv::Size2d(picture.size()));
    if (seen.empty()) continue;
    cv::rectangle(picture, cv::Rect(seen), boxColour, lineWidth);
    drawNumber(picture, std::to_string(label->classNumber), cv::Rect(seen).tl());
  }
}

// A long name loses its beginning, for names of samples differ at the end.
void drawName(cv::Mat cell, std::string name) {
  const auto width = [&] { return cv::getTextSize(name, font, fontScale, 1, nullptr).width; };
  while (!name.empty() && width() > cell.cols)
    name.erase(0, 1);
  cv::putText(cell, name, {0, cell.rows - 5}, font, fontScale, nameColour, 1, cv::LINE_AA);
}

// A picture with its boxes, its name below, and room around it.
cv::Mat cellOf(const cv::Mat& sample, const std::string& labels, const std::string& name) {
  cv::Mat cell(sheetCell.height + captionHeight + gap, sheetCell.width + gap, CV_8UC3, sheetGround);
  const cv::Rect inner(gap / 2, gap / 2, sheetCell.width, sheetCell.height);
  if (!sample.empty()) {
    fitted(sample, sheetCell).copyTo(cell(inner));
    drawBoxes(cell(fittedPlace(sample.size(), sheetCell) + inner.tl()), labels);
  }
  drawName(cell(inner + cv::Size(0, captionHeight)), name);
  return cell;
}

cv::Mat sheetOf(WTNVToolDarknetViewer& viewer, const std::string& directory,
                const std::vector<std::string>& names, Output& output) {
  std::vector<cv::Mat> cells;
  for (const auto& name : names) {
    const auto sample = sampleNamed(viewer, name);
    if (sample.empty()) output.note("sample '" + name + "' cannot be read; its cell stays blank");
    const auto labels = std::filesystem::path(directory) / viewer.wGetSelectedDataFile();
    cells.push_back(cellOf(sample, labels.string(), name));
  }
  return contactSheet(cells, sheetColumns);
}

// Neither a sample nor what it was made of is to be replaced by what is drawn of it.
void requireNoSource(const std::string& file, const std::string& directory,
                     const std::string& projects) {
  std::error_code error;
  const auto destination = destinationOf(file);
  if (liesWithin(destination, projects))
    throw CommandError("'" + file + "' lies among the projects; choose another place");
  if (!std::filesystem::exists(destination, error)) return;
  if (std::filesystem::equivalent(destination.parent_path(), directory, error))
    throw CommandError("'" + file + "' lies among the samples; choose another file");
  const auto set = std::filesystem::path(absolutePath(directory + "/.."));
  for (const auto& [sample, picture] : readSampleSources((set / "sources.txt").string()))
    if (std::filesystem::equivalent(destination, picture, error))
      throw CommandError("'" + file + "' is a picture of the project; choose another file");
}

void write(const std::string& file, const cv::Mat& picture, const std::string& what,
           Output& output) {
  if (!output.isDryRun()) writePicture(file, picture);
  output.fact("file", file);
  sayWritten(file, " (" + what + ")", output);
}

void runView(const Locations& locations, const ViewOptions& options, Output& output) {
  requireWritablePicture(options.file);
  const auto directory = samplesDirectory(options.directory);
  requireNoSource(options.file, directory, locations.projects);
  WTNVToolDarknetViewer viewer;
  auto names = sampleNames(viewer, directory);
  if (!options.name.empty()) {
    const auto name = nameWithoutEnding(options.name, names);
    const auto sample = sampleNamed(viewer, name);
    if (sample.empty())
      throw CommandError("there is no sample '" + options.name + "' that can be read");
    write(options.file, sample, "sample " + name, output);
    return;
  }
  const auto all = names.size();
  names.resize(std::min(all, static_cast<std::size_t>(options.count)));
  output.fact("samples", static_cast<Json::UInt64>(names.size()));
  write(options.file, sheetOf(viewer, directory, names, output),
        std::to_string(names.size()) + " of " + counted(all, "sample"), output);
}

}  // namespace

void addViewCommand(CLI::App& app, ProgramOptions& program) {
  const auto options = std::make_shared<ViewOptions>();
  auto* command = addWritingCommand(
      app, program,
      {"view",
       "Writes a sample of a training set with its boxes to a file, or a sheet of the first "
       "samples.",
       "view set/ -o sheet.png"},
      [&program, options](Output& output) { runView(program.locations, *options, output); });
  command->add_option("DIRECTORY", options->directory, "training set, or directory with samples")
      ->required();
  command->add_option("NAME", options->name, "sample, like img_3; without it a sheet is drawn");
  addOutputFile(*command, options->file, "sheet.png");
  command->add_option("--count", options->count, "samples on the sheet")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
}
