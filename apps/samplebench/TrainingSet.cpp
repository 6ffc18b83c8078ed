#include "TrainingSet.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <regex>

#include "CommandError.h"
#include "PictureFile.h"
#include "verify/LabelCheck.h"

namespace fs = std::filesystem;

namespace {

constexpr auto trainName = "train.txt";
constexpr auto testName = "test.txt";
constexpr auto samplesName = "samples";
constexpr auto backupName = "backup";
constexpr auto sourcesName = "sources.txt";
constexpr auto divisionName = "division.txt";

std::string withoutBlanks(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c <= ' '; }, '_');
  return text;
}

bool isOurs(const fs::path& entry) {
  static const std::regex ours(
      R"(((train|test|sources|division)\.txt|.+\.(data|cfg|names|weights))(\.new|\.part[0-9]*)?|samples|backup)");
  return std::regex_match(entry.filename().string(), ours);
}

bool isSample(const fs::path& entry) {
  static const std::regex sample(R"(img_[0-9]+\.(jpg|txt)(\.new)?)");
  return std::regex_match(entry.filename().string(), sample);
}

template <typename Predicate>
bool holdsOnly(const fs::path& directory, Predicate predicate) {
  return std::all_of(fs::directory_iterator(directory), fs::directory_iterator(),
                     [&](const fs::directory_entry& entry) { return predicate(entry.path()); });
}

bool isEarlierSet(const fs::path& directory) {
  const bool hasLists =
      fs::is_regular_file(directory / trainName) && fs::is_regular_file(directory / testName);
  // Of a run that was cut short there is only this.
  const bool isPartial = fs::is_regular_file(directory / sourcesName);
  if (!holdsOnly(directory, isOurs)) return false;
  const auto samples = directory / samplesName;
  // The samples are the first to go when a set is replaced.
  if (!fs::exists(samples)) return isPartial;
  return (hasLists || isPartial) && fs::is_directory(samples) && holdsOnly(samples, isSample);
}

// As a run leaves them that was killed before its first file.
bool holdsDirectoriesAlone(const fs::path& directory) {
  return std::all_of(
      fs::recursive_directory_iterator(directory), fs::recursive_directory_iterator(),
      [](const fs::directory_entry& entry) { return entry.is_directory() && !entry.is_symlink(); });
}

bool hasTrainedWeights(const fs::path& directory) {
  const auto backup = directory / backupName;
  return fs::is_directory(backup) && !fs::is_empty(backup);
}

bool liesWithin(double begin, double size) {
  return size > 0 && begin >= -labelEdgeTolerance && begin + size <= 1 + labelEdgeTolerance;
}

bool isProper(const LabelLine& label, std::size_t classCount) {
  const auto& box = label.box;
  return label.classNumber < classCount && liesWithin(box.x, box.width) &&
         liesWithin(box.y, box.height);
}

cv::Rect2d scaled(const cv::Rect2d& box, cv::Size size) {
  return {box.x * size.width, box.y * size.height, box.width * size.width,
          box.height * size.height};
}

void readLabels(const fs::path& file, cv::Size size, TrainingSetContent& content) {
  std::ifstream stream(file);
  if (!stream) throw CommandError("the label text '" + file.string() + "' is missing");
  bool hasBoxes = false;
  for (std::string line; std::getline(stream, line); hasBoxes = true) {
    const auto label = parseLabelLine(line);
    if (!label || !isProper(*label, content.boxes.size()))
      throw CommandError("'" + file.string() + "' has a label that cannot be right: " + line);
    content.boxes[label->classNumber].push_back(scaled(label->box, size));
  }
  if (!hasBoxes) ++content.withoutBoxes;
}

std::size_t readList(const std::string& list, TrainingSetContent& content) {
  std::ifstream stream(list);
  if (!stream) throw CommandError("the list '" + list + "' is missing");
  std::size_t count = 0;
  for (std::string line; std::getline(stream, line); ++count) {
    fs::path picture(line);
    if (!fs::is_regular_file(picture) || fs::is_empty(picture))
      throw CommandError("'" + list + "' names a picture that is not there: " + line);
    const auto size = pictureSize(line);
    readLabels(picture.replace_extension(".txt"), size, content);
  }
  return count;
}

}  // namespace

std::size_t TrainingSetContent::boxCount() const {
  return std::accumulate(boxes.begin(), boxes.end(), std::size_t{0},
                         [](std::size_t sum, const auto& ofClass) { return sum + ofClass.size(); });
}

TrainingSetPaths trainingSetPaths(const std::string& output, const std::string& project) {
  const auto directory = (fs::path(output) / "").lexically_normal().generic_string();
  const auto stem = directory + withoutBlanks(project);
  return {directory,
          directory + samplesName + "/",
          directory + trainName,
          directory + testName,
          stem + ".data",
          stem + ".cfg",
          stem + ".names",
          directory + backupName + "/",
          directory + sourcesName,
          directory + divisionName};
}

void requireReplaceable(const std::string& path) {
  // A file with a slash behind its name would count as absent.
  const auto directory = path.ends_with('/') ? path.substr(0, path.size() - 1) : path;
  if (!fs::exists(directory)) return;
  if (!fs::is_directory(directory))
    throw CommandError("'" + directory + "' is no directory; give another output directory");
  if (holdsDirectoriesAlone(directory)) return;
  if (!isEarlierSet(directory))
    throw CommandError("'" + directory +
                       "' holds files that are no training set of ours, and a run would delete "
                       "them; give a new or empty output directory");
  if (hasTrainedWeights(directory))
    throw CommandError("'" + directory +
                       "' has trained weights in backup/, and a run would delete them; move them "
                       "away, or give another output directory");
}

TrainingSetContent readTrainingSet(const TrainingSetPaths& paths, std::size_t classCount) {
  TrainingSetContent content;
  content.boxes.resize(classCount);
  content.training = readList(paths.trainList, content);
  content.test = readList(paths.testList, content);
  return content;
}
