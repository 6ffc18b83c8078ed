#include "ViewCommand.h"

#include <algorithm>

#include "CommandError.h"
#include "CommandLine.h"
#include "ContactSheet.h"
#include "OutputFile.h"
#include "PictureFile.h"
#include "SampleSources.h"
#include "TNV_SampleBenchNative/WTNVToolDarknetViewer.h"

namespace {

struct ViewOptions {
  std::string directory;
  std::string name;
  std::string file;
  int count = 24;
};

constexpr int sheetColumns = 6;
const cv::Size sheetCell(240, 180);

std::vector<std::string> sampleNames(WTNVToolDarknetViewer& viewer, const std::string& directory) {
  if (!std::filesystem::is_directory(directory))
    throw CommandError("'" + directory + "' is no directory");
  viewer.wSetImageDirectory(directory);
  auto names = viewer.wReadImages();
  if (names.empty())
    throw CommandError("'" + directory +
                       "' holds no pictures with a label text beside them; samples lie in the "
                       "directory samples/ of a training set");
  // By length first, so that img_2 comes before img_10.
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
    return std::pair(a.size(), a) < std::pair(b.size(), b);
  });
  return names;
}

// Empty if it cannot be read; borrowed until the next one is.
cv::Mat sampleNamed(WTNVToolDarknetViewer& viewer, const std::string& name) {
  if (!viewer.wSelectImage(name)) return {};
  return pictureFrom([&](auto... parts) { viewer.wGetSelectedImage(parts...); });
}

cv::Mat cellOf(const cv::Mat& sample) {
  return sample.empty() ? cv::Mat(sheetCell, CV_8UC3, cv::Scalar()) : fitted(sample, sheetCell);
}

cv::Mat sheetOf(WTNVToolDarknetViewer& viewer, const std::vector<std::string>& names,
                Output& output) {
  std::vector<cv::Mat> cells;
  for (const auto& name : names) {
    const auto sample = sampleNamed(viewer, name);
    if (sample.empty()) output.note("sample '" + name + "' cannot be read; its cell stays blank");
    cells.push_back(cellOf(sample));
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
  requireNoSource(options.file, options.directory, locations.projects);
  WTNVToolDarknetViewer viewer;
  auto names = sampleNames(viewer, options.directory);
  if (!options.name.empty()) {
    const auto sample = sampleNamed(viewer, options.name);
    if (sample.empty())
      throw CommandError("there is no sample '" + options.name + "' that can be read");
    write(options.file, sample, "sample " + options.name, output);
    return;
  }
  const auto all = names.size();
  names.resize(std::min(all, static_cast<std::size_t>(options.count)));
  output.fact("samples", static_cast<Json::UInt64>(names.size()));
  write(options.file, sheetOf(viewer, names, output),
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
       "view set/samples -o sheet.png"},
      [&program, options](Output& output) { runView(program.locations, *options, output); });
  command->add_option("DIRECTORY", options->directory, "directory with samples")->required();
  command->add_option("NAME", options->name, "sample, like img_3; without it a sheet is drawn");
  addOutputFile(*command, options->file, "sheet.png");
  command->add_option("--count", options->count, "samples on the sheet")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
}
