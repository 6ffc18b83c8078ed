#include "GalleryCommand.h"

#include <algorithm>
#include <map>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "CommandError.h"
#include "CommandLine.h"
#include "GalleryReport.h"
#include "Interrupt.h"
#include "MarkBox.h"
#include "OutputFile.h"
#include "PictureFile.h"
#include "Platform.h"
#include "Progress.h"
#include "WatchedRun.h"

namespace fs = std::filesystem;

namespace {

struct GalleryOptions {
  std::string project;
  /// Empty for none.
  std::string report;
  /// Threads; 0 for one for each core.
  int jobs = 0;
};

// Small enough that a page of 2,000 stays around 10 MB.
constexpr int thumbnailSide = 96;
constexpr int thumbnailQuality = 85;

// How many of the pictures could be read.
std::size_t cutMarks(WTNVHandlerValidation& handler, std::size_t pictures, int jobs,
                     Output& output) {
  Progress progress(pictures, output);
  const platform::InterruptCatcher catcher;
  const WatchedRun<WTNVHandlerValidation> run(handler, progress);
  handler.setCBValidGenUpdate(run.onUpdate);
  const auto complete = handler.wProcessGenerationParallel(jobs);
  handler.setCBValidGenUpdate(nullptr);
  progress.finish();
  if (run.wasStopped())
    throw CommandError("interrupted after " + counted(progress.done(), "picture"), exitInterrupted);
  if (complete) return progress.done();
  throw CommandError("the marks could not be cut out: " + output.cause());
}

void writeCounts(const WTNVHandlerValidation& handler, Output& output) {
  std::vector<TableRow> rows;
  std::size_t total = 0;
  for (const auto& label : handler.wGetDNNClasses()) {
    const auto count = handler.wGetDNNImageIndices(label).size();
    rows.push_back({count, label});
    total += count;
  }
  output.table("classes", {"cuts", "class"}, rows);
  output.fact("cuts", static_cast<Json::UInt64>(total));
  output.say();
  output.say("total: " + counted(total, "cut"));
}

// The cut of each mark, by the place of its picture and its id there.
using Cuts = std::map<std::pair<int, int>, int>;

Cuts cutsByMark(const WTNVHandlerValidation& handler) {
  Cuts cuts;
  for (const auto& label : handler.wGetDNNClasses())
    for (const auto cut : handler.wGetDNNImageIndices(label))
      cuts[{handler.wGetTrainSetIndex(cut), handler.wGetMarkUniqueId(cut)}] = cut;
  return cuts;
}

std::string labelOf(const WTNVDNNClass& dnnClass) {
  return dnnClass.wGetName() + " (" + std::to_string(dnnClass.wGetDNNId()) + ")";
}

// Puts the marks of a project into classes.
class GalleryBuilder {
 public:
  // Of the files among the pictures all can be read, or only some.
  GalleryBuilder(const WTNVProject& project, const WTNVHandlerValidation& handler, bool allReadable)
      : classes(project.wGetDNNClasses()),
        cuts(cutsByMark(handler)),
        filesAreReadable(allReadable) {
    gallery.project = project.wGetProjectName();
    for (const auto& dnnClass : classes) {
      places[dnnClass.getNativeDNNClass()] = gallery.classes.size();
      gallery.classes.push_back({labelOf(dnnClass), {}});
    }
  }

  void add(const PictureRecord& picture) {
    const auto place = gallery.pictures++;
    const auto marks = picture.trainSet.wGetMarks();
    gallery.marks += marks.size();
    if (marks.empty()) return;
    const auto size = sizeOf(picture, place);
    const auto fileName = fs::path(picture.path).filename().string();
    if (size.empty()) gallery.unreadable.push_back(fileName);
    for (std::size_t i = 0; i < marks.size(); ++i)
      addMark(marks[i], {place, fileName, i + 1, {}, size, -1});
  }

  Gallery gallery;

 private:
  // The library knows the size of every picture that it could cut from. Of others it would wait for
  // a reader that is not there, if they cannot be read.
  cv::Size sizeOf(const PictureRecord& picture, std::size_t place) const {
    if (!isReadable(picture, place)) return {};
    cv::Size size;
    picture.trainSet.getImageSize(size.width, size.height);
    return size;
  }

  bool isReadable(const PictureRecord& picture, std::size_t place) const {
    if (!isFile(picture.path)) return false;
    return filesAreReadable || hasCut(place) || !pictureSize(picture.path).empty();
  }

  bool hasCut(std::size_t place) const {
    const std::pair first(static_cast<int>(place), 0);
    const auto cut = cuts.lower_bound(first);
    return cut != cuts.end() && cut->first.first == first.first;
  }

  void addMark(const WTNVMark& mark, GalleryMark entry) {
    const auto dnnClass = mark.wGetFirstDNNClass(classes);
    if (!dnnClass.isValid()) ++gallery.marksWithoutClass;
    if (!dnnClass.isValid() || entry.pictureSize.empty()) return;
    entry.box = boxInPixels(mark, entry.pictureSize);
    const auto cut = cuts.find({static_cast<int>(entry.picture), mark.wGetUniqueId()});
    if (cut != cuts.end()) entry.cut = cut->second;
    gallery.classes[places.at(dnnClass.getNativeDNNClass())].marks.push_back(std::move(entry));
  }

  std::vector<WTNVDNNClass> classes;
  Cuts cuts;
  bool filesAreReadable;
  std::map<const TNVDNNClass*, std::size_t> places;
};

cv::Mat reduced(const cv::Mat& cut) {
  const auto factor = static_cast<double>(thumbnailSide) / std::max(cut.cols, cut.rows);
  if (factor >= 1) return cut;
  cv::Mat small;
  const cv::Size size(std::max(1, cvRound(cut.cols * factor)),
                      std::max(1, cvRound(cut.rows * factor)));
  cv::resize(cut, small, size, 0, 0, cv::INTER_AREA);
  return small;
}

Thumbnail thumbnailOf(WTNVHandlerValidation& handler, int cut) {
  stopIfInterrupted();
  unsigned char* data = nullptr;
  cv::Size size;
  int channels = 0;
  handler.wLoadImage(cut, &data, &size.width, &size.height, &channels);
  if (data == nullptr) return {};
  const auto small = reduced({size, CV_8UC(channels), data});
  std::vector<unsigned char> packed;
  cv::imencode(".jpg", small, packed, {cv::IMWRITE_JPEG_QUALITY, thumbnailQuality});
  const auto thumbnailSize = small.size();
  handler.wUnloadImage(cut);
  return {{packed.begin(), packed.end()}, thumbnailSize};
}

void writeReport(const std::string& file, const Gallery& gallery, WTNVHandlerValidation& handler) {
  writeWhole(file, [&](std::ostream& page) {
    writeGalleryPage(page, gallery, [&](int cut) { return thumbnailOf(handler, cut); });
  });
}

std::size_t fileCount(const std::string& directory) {
  std::error_code error;
  const fs::directory_iterator entries(directory, error);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

// What would be cut out, class by class, and what would go.
void sayPlan(const WTNVProject& project, const WTNVHandlerValidation& handler,
             const GalleryOptions& options, const std::vector<PictureRecord>& pictures,
             Output& output) {
  GalleryBuilder builder(project, handler, false);
  for (const auto& picture : pictures)
    builder.add(picture);
  std::vector<TableRow> rows;
  std::size_t total = 0;
  for (const auto& dnnClass : builder.gallery.classes) {
    if (dnnClass.marks.empty()) continue;
    rows.push_back({dnnClass.marks.size(), dnnClass.label});
    total += dnnClass.marks.size();
  }
  output.table("classes", {"marks", "class"}, rows);
  const auto directory = (projectDirectory(project) / "validation" / "").string();
  const auto replaced = fileCount(directory);
  output.fact("marks", static_cast<Json::UInt64>(total));
  output.fact("replaced", static_cast<Json::UInt64>(replaced));
  output.say();
  output.say(counted(total, "mark") + " would be cut out into " + directory + ", where " +
             counted(replaced, "earlier cut") + " would be removed");
  if (options.report.empty()) return;
  output.fact("report", options.report);
  sayWritten(options.report, "", output);
}

void runGallery(const Locations& locations, const GalleryOptions& options, Output& output) {
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project);
  requireOwnRecords(*project);
  requireWholeRecords(*project);
  const auto pictures = readPictures(*project, output);
  if (!options.report.empty()) {
    requireWritable(options.report, *project, pictures);
    requireNoForeignPage(options.report);
  }
  requireReadable(*project, pictures);
  requireDirectoryPlace((projectDirectory(*project) / "validation").string());
  auto handler = project->getHndValidation();
  if (output.isDryRun()) {
    sayPlan(*project, handler, options, pictures, output);
    return;
  }
  const auto read = cutMarks(handler, pictures.size(), options.jobs, output);
  writeCounts(handler, output);
  sayLeftOut(pictures.size() - std::min(read, pictures.size()), output);
  if (options.report.empty()) return;
  const auto files = std::count_if(pictures.begin(), pictures.end(),
                                   [](const auto& picture) { return isFile(picture.path); });
  GalleryBuilder builder(*project, handler, static_cast<std::size_t>(files) == read);
  for (const auto& picture : pictures)
    builder.add(picture);
  writeReport(options.report, builder.gallery, handler);
  output.fact("report", options.report);
  sayWritten(options.report, "", output);
}

}  // namespace

void addGalleryCommand(CLI::App& app, ProgramOptions& program) {
  const auto options = std::make_shared<GalleryOptions>();
  auto* command = addWritingCommand(
      app, program,
      {"gallery",
       "Cuts every mark out of its picture, to look the marks through, and prints how many there "
       "are of each class.",
       "gallery parts --report marks.html"},
      [&program, options](Output& output) { runGallery(program.locations, *options, output); });
  addProjectArgument(*command, options->project);
  addJobs(*command, options->jobs);
  command
      ->add_option("--report", options->report,
                   "page to write, with all cuts, what looks wrong, and plots")
      ->check(notEmpty());
}
