#include "generation/TNVGenerationDarknet.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include <opencv2/imgproc.hpp>

#include "foundation/Files.h"
#include "foundation/Log.h"
#include "foundation/Numbers.h"
#include "foundation/PictureFile.h"
#include "foundation/Steps.h"
#include "foundation/TNVDirectory.h"
#include "foundation/TNVSettings.h"
#include "generation/Random.h"
#include "generation/RunGuard.h"
#include "generation/TNVAugmentSample.h"

namespace fs = std::filesystem;

namespace {

// Persisted in the project's settings.
const std::string kSampleDirectoryKey = "Generation.Darknet.SampleDirectory";
const std::string kDataDirectoryKey = "Generation.Darknet.DataDirectory";
const std::string kTrainFileKey = "Generation.Darknet.TrainFile";
const std::string kTestFileKey = "Generation.Darknet.TestFile";
const std::string kTestSpecialKey = "Generation.Darknet.TestSpecial";
const std::string kTestRatioKey = "Generation.Darknet.TestRatio";
const std::string kWeightsFileKey = "Generation.Darknet.WeightsFile";
const std::string kWeightsCopyKey = "Generation.Darknet.WeightsCopy";
const std::string kAbsPathInFileKey = "Generation.Darknet.AbsPathInFile";

const std::string kWeightsPath = "darknet/weights/";

constexpr const char* kLabelExtension = ".txt";
constexpr const char* kPictureExtension = ".jpg";

/// Far outside of any picture, and far enough from the ends of the 32-bit range for the library to
/// add and subtract.
constexpr double kFarthest = 1.0e9;

/// The training and the test list of a shuffled run must not change from run to run.
constexpr unsigned kShuffleSeed = 5489;

/// The box around the points as far as it lies in the picture; empty if it lies nowhere.
cv::Rect clippedBox(const std::vector<cv::Point2d>& points, cv::Size picture) {
  std::vector<cv::Point2f> narrowed;
  for (const cv::Point2d& point : points) {
    if (std::isnan(point.x) || std::isnan(point.y)) return {};
    narrowed.emplace_back(static_cast<float>(std::clamp(point.x, -kFarthest, kFarthest)),
                          static_cast<float>(std::clamp(point.y, -kFarthest, kFarthest)));
  }
  if (narrowed.empty()) return {};
  const cv::Rect box = cv::boundingRect(narrowed);
  const int x = std::max(box.x, 0);
  const int y = std::max(box.y, 0);
  const int width = std::min(picture.width, box.x + box.width) - x;
  const int height = std::min(picture.height, box.y + box.height) - y;
  return width < 1 || height < 1 ? cv::Rect() : cv::Rect(x, y, width, height);
}

std::string labelLine(int classIndex, const cv::Rect& box, cv::Size picture) {
  const double columns = picture.width;
  const double rows = picture.height;
  const double width = box.width / columns;
  const double height = box.height / rows;
  std::string line = std::to_string(classIndex);
  for (const double value :
       {box.x / columns + width * 0.5, height * 0.5 + box.y / rows, width, height}) {
    line += ' ' + tnv::formatGeneral(value, 6);
  }
  return line + '\n';
}

std::string labelText(const TNVAugmentSample& sample) {
  std::string text;
  for (const TNVAugmentEntry& entry : sample.entries) {
    const cv::Rect box = clippedBox(entry.points, sample.image.size());
    if (!box.empty()) text += labelLine(entry.classIndex, box, sample.image.size());
  }
  return text;
}

bool createDirectory(const std::string& path, const std::string& description) {
  TNVDirectory::createDirectory(path);
  if (TNVDirectory::exists(path)) return true;
  tnv::logLine("TNVGenerationDarknet::processBefore: " + description + " directory '" + path +
               "' does not exist!");
  return false;
}

bool mayBeDeleted(const tnv::RunGuard& guard, const std::string& directory) {
  const std::string reason = guard.whyToKeep(directory);
  if (reason.empty()) return true;
  tnv::logLine("TNVGenerationDarknet::processBefore: Directory '" + directory +
               "' would be deleted, but " + reason + "!");
  return false;
}

std::string absolutePath(const std::string& path) {
  std::error_code error;
  std::string result = fs::absolute(path, error).string();
  if (error) throw fs::filesystem_error("absolute", path, error);
  std::replace(result.begin(), result.end(), '\\', '/');
  return result;
}

/// Makes entries from the front test entries until there are as many as the ratio asks for.
void divide(std::vector<TNVGenerationDarknet::SampleEntry>& samples, double testRatio) {
  const auto isTest = [](const auto& entry) { return entry.isTest; };
  const int target = tnv::truncateToInt(static_cast<int>(samples.size()) * testRatio);
  auto count = std::count_if(samples.begin(), samples.end(), isTest);
  for (auto& entry : samples) {
    if (count >= target) return;
    if (entry.isTest) continue;
    entry.isTest = true;
    ++count;
  }
}

void removeDirectory(const std::string& path) {
  if (TNVDirectory::exists(path)) TNVDirectory::remove(path);
}

/// The ratio is kept in single precision.
double readRatio(const TNVSettings& settings) {
  return double{static_cast<float>(tnv::parseDouble(settings.getString(kTestRatioKey, "0.05")))};
}

}  // namespace

TNVGenerationDarknet::TNVGenerationDarknet() {
  name = "Darknet";
  templates[kConfigDescriptor].path = "darknet/configs/";
  templates[kNetDescriptor].path = "darknet/nets/";
}

std::string TNVGenerationDarknet::getName() const {
  return "Darknet";
}

void TNVGenerationDarknet::calculateVarValues() {
  TNVGeneration::calculateVarValues();
  vars["$DARKNET_SAMPLE_PATH"] = sampleDirectory;
  vars["$DARKNET_DATA_PATH"] = dataDirectory;
  vars["$DARKNET_TRAINFILE"] = trainFile;
  vars["$DARKNET_TESTFILE"] = testFile;
  vars["$DARKNET_WEIGHTS"] = weights;
  vars["$DARKNET_TESTRATIO"] = tnv::formatFixed(testRatio);
  vars["$DARKNET_YOLO_FILTER_CNT"] = std::to_string((dnnClasses.size() + 5) * 3);
  tnv::logLine("DARK");
}

void TNVGenerationDarknet::saveSettings(TNVSettings* settings) {
  TNVGeneration::saveSettings(settings);
  if (!settings) return;
  settings->setString(kSampleDirectoryKey, sampleDirectory);
  settings->setString(kDataDirectoryKey, dataDirectory);
  settings->setString(kTrainFileKey, trainFile);
  settings->setString(kTestFileKey, testFile);
  settings->setBool(kTestSpecialKey, useSpecialTest);
  settings->setFloatList(kTestRatioKey, {static_cast<float>(testRatio)});
  settings->setString(kWeightsFileKey, weights);
  settings->setBool(kWeightsCopyKey, weightsCopy);
  settings->setBool(kAbsPathInFileKey, absPathInFile);
}

void TNVGenerationDarknet::loadSettings(TNVSettings* settings) {
  TNVGeneration::loadSettings(settings);
  if (!settings) return;
  // Projects that never saved these keys rely on these values, which differ from the constructed.
  sampleDirectory =
      TNVDirectory::normalizePath(settings->getString(kSampleDirectoryKey, "./darknet/images/"));
  dataDirectory = TNVDirectory::normalizePath(settings->getString(kDataDirectoryKey, "./darknet/"));
  trainFile = settings->getString(kTrainFileKey, "./train.txt");
  testFile = settings->getString(kTestFileKey, "./test.txt");
  useSpecialTest = settings->getBool(kTestSpecialKey, false);
  testRatio = readRatio(*settings);
  weights = settings->getString(kWeightsFileKey, "");
  weightsCopy = settings->getBool(kWeightsCopyKey, false);
  absPathInFile = settings->getBool(kAbsPathInFileKey, false);
}

bool TNVGenerationDarknet::processBefore() {
  tnv::RunGuard guard(*this);
  guard.protectExisting(platformPath + kWeightsPath, "the weights");
  if (!mayBeDeleted(guard, sampleDirectory) || !mayBeDeleted(guard, dataDirectory)) return false;
  removeDirectory(sampleDirectory);
  removeDirectory(dataDirectory);
  if (!createDirectory(sampleDirectory, "Sample")) return false;
  if (!createDirectory(dataDirectory, "Data")) return false;
  samples.clear();
  sampleCounter = 0;
  return true;
}

bool TNVGenerationDarknet::process(const TNVAugmentSample& sample) {
  tnv::StepsAtOnce steps;
  prepare(sample, steps);
  return true;
}

void TNVGenerationDarknet::prepare(const TNVAugmentSample& sample, tnv::Steps& steps) {
  steps.add([this, labels = labelText(sample)] {
    tnv::replaceFile(samplePath(sampleCounter++, kLabelExtension), labels);
  });
  const auto picture = tnv::encodePicture(samplePath(0, kPictureExtension), sample.image);
  steps.add([this, picture, special = sample.special] {
    const std::string path = samplePath(sampleCounter - 1, kPictureExtension);
    tnv::writePicture(path, picture);
    samples.push_back({path, special});
  });
}

std::string TNVGenerationDarknet::samplePath(unsigned number, const char* extension) const {
  return sampleDirectory + "img_" + std::to_string(number) + extension;
}

bool TNVGenerationDarknet::processAfter() {
  writeTemplate(kConfigDescriptor);
  writeTemplate(kNetDescriptor);
  std::mt19937 twister(kShuffleSeed);
  tnv::shuffle(twister, samples);
  divide(samples, testRatio);
  std::string trainList;
  std::string testList;
  for (const SampleEntry& entry : samples) {
    const std::string path = absPathInFile ? absolutePath(entry.imagePath) : entry.imagePath;
    (entry.isTest ? testList : trainList) += path + '\n';
  }
  tnv::replaceFile(dataDirectory + trainFile, trainList);
  tnv::replaceFile(dataDirectory + testFile, testList);
  if (!weights.empty() && weightsCopy) {
    TNVDirectory::copy(platformPath + kWeightsPath + weights, dataDirectory + weights);
  }
  return true;
}

std::vector<std::string> TNVGenerationDarknet::validateConfig() const {
  const Template& config = findTemplate(kConfigDescriptor);
  const Template& net = findTemplate(kNetDescriptor);
  const std::pair<const std::string&, const char*> checks[] = {
      {sampleDirectory, "Sample directory is not set!"},
      {dataDirectory, "Darknet data directory is not set!"},
      {config.savePath, "Config save path is not set!"},
      {config.name, "Config template name not set!"},
      {net.savePath, "DNN net save path is not set!"},
      {net.name, "DNN net template name not set!"},
      {weights, "Weights file is not set!"},
  };
  std::vector<std::string> problems;
  for (const auto& [text, message] : checks) {
    if (text.empty()) problems.emplace_back(message);
  }
  return problems;
}

std::string TNVGenerationDarknet::getWeightsDirectory() const {
  const std::string directory = platformPath + kWeightsPath;
  if (!TNVDirectory::exists(directory)) TNVDirectory::createDirectory(directory);
  return directory;
}

std::vector<std::string> TNVGenerationDarknet::getAvailableWeights() const {
  const std::string directory = platformPath + kWeightsPath;
  tnv::logLine(directory);
  std::vector<std::string> names;
  for (const TNVFileInfo& file : TNVDirectory::readFiles(directory, {"weights"}, false)) {
    names.push_back(file.fileName);
  }
  return names;
}
