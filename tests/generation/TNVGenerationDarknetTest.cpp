#include "generation/TNVGenerationDarknet.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "TNV_SampleBenchNative/WTNVGenerationDarknet.h"
#include "foundation/TNVSettings.h"
#include "generation/TNVAugmentSample.h"
#include "project/TNVTrainSet.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"
#include "support/TempDirectory.h"

namespace fs = std::filesystem;

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using Points = std::vector<cv::Point2d>;

std::vector<std::string> linesOf(const std::string& path) {
  std::vector<std::string> lines;
  std::istringstream stream(readFile(path));
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

TNVAugmentSample sampleOf(const Points& points, cv::Size size = {100, 50}) {
  TNVAugmentSample sample;
  sample.image = patternedPicture(size.width, size.height);
  sample.entries = {{points, 4, "ROI", "Rect"}};
  return sample;
}

class TNVGenerationDarknetFixture : public ::testing::Test {
 protected:
  TNVGenerationDarknetFixture() {
    generation.platformPath = directory.makeDirectory("platforms");
    generation.sampleDirectory = directory / "out/images/";
    generation.dataDirectory = directory / "out/";
  }

  /// A whole run of so many small samples, the first ones special.
  void run(int count, int special = 0) {
    ASSERT_TRUE(generation.processBefore());
    TNVAugmentSample sample;
    sample.image = patternedPicture(4, 4);
    for (int i = 0; i < count; ++i) {
      sample.special = i < special;
      generation.process(sample);
    }
    ASSERT_TRUE(generation.processAfter());
  }

  std::string imagePath(int number) const {
    return generation.sampleDirectory + "img_" + std::to_string(number) + ".jpg";
  }

  std::vector<std::string> trainList() const { return linesOf(directory / "out/train.txt"); }
  std::vector<std::string> testList() const { return linesOf(directory / "out/test.txt"); }

  TempDirectory directory;
  LogCapture log;
  TNVGenerationDarknet generation;
  WTNVGenerationDarknet wrapper{&generation};
};

TEST_F(TNVGenerationDarknetFixture, StartsWithTheToldValues) {
  const TNVGenerationDarknet fresh;
  EXPECT_EQ(fresh.getName(), "Darknet");
  EXPECT_EQ(fresh.name, "Darknet");
  EXPECT_EQ(fresh.sampleDirectory, "./darknet/images/");
  EXPECT_EQ(fresh.dataDirectory, "./darknet/");
  EXPECT_EQ(fresh.trainFile, "train.txt");
  EXPECT_EQ(fresh.testFile, "test.txt");
  EXPECT_FALSE(fresh.absPathInFile);
  EXPECT_EQ(fresh.weights, "");
  EXPECT_TRUE(fresh.weightsCopy);
  EXPECT_EQ(fresh.testRatio, 0.05);
  EXPECT_FALSE(fresh.useSpecialTest);
  EXPECT_EQ(fresh.sampleCounter, 0u);
  ASSERT_EQ(fresh.templates.size(), 2u);
  EXPECT_EQ(fresh.findTemplate("configs").path, "darknet/configs/");
  EXPECT_EQ(fresh.findTemplate("nets").path, "darknet/nets/");
  EXPECT_EQ(fresh.findTemplate("nets").name, "");
}

TEST_F(TNVGenerationDarknetFixture, TheHandleSetsAndGets) {
  wrapper.wSetTrainFileName("a");
  wrapper.wSetTestFileName("b");
  wrapper.wSetTestRatio(0.25);
  wrapper.wSetUseSpecialTest(true);
  wrapper.wSetAbsolutePathInFiles(true);
  wrapper.wSetWeights("c");
  wrapper.wSetWeightsCopy(false);
  EXPECT_EQ(wrapper.wGetTrainFileName(), "a");
  EXPECT_EQ(wrapper.wGetTestFileName(), "b");
  EXPECT_EQ(wrapper.wGetTestRatio(), 0.25);
  EXPECT_TRUE(wrapper.wGetUseSpecialTest());
  EXPECT_TRUE(wrapper.wGetAbsolutePathInFiles());
  EXPECT_EQ(wrapper.wGetWeights(), "c");
  EXPECT_FALSE(wrapper.wGetWeightsCopy());
  EXPECT_EQ(wrapper.wGetConfigDescriptor(), "configs");
  EXPECT_EQ(wrapper.wGetNetDescriptor(), "nets");
}

TEST_F(TNVGenerationDarknetFixture, TheHandleNormalisesDirectories) {
  const std::string plain = directory.path().substr(0, directory.path().size() - 1);
  wrapper.wSetSampleDirectory(plain);
  EXPECT_EQ(wrapper.wGetSampleDirectory(), directory.path());
  wrapper.wSetDarknetDataDirectory("absent\\one");
  EXPECT_EQ(wrapper.wGetDarknetDataDirectory(), "absent/one");
}

TEST_F(TNVGenerationDarknetFixture, TheHandleComesFromAGenerationHandle) {
  EXPECT_EQ(WTNVGenerationDarknet(WTNVGeneration(&generation)).getNativeGeneration(), &generation);
  EXPECT_FALSE(WTNVGenerationDarknet(WTNVGeneration()).isValid());
  EXPECT_FALSE(WTNVGenerationDarknet().isValid());
  WTNVGenerationDarknet copy(wrapper);
  EXPECT_TRUE(copy.isValid());
  copy = WTNVGenerationDarknet();
  EXPECT_EQ(copy.getNativeGeneration(), nullptr);
}

TEST_F(TNVGenerationDarknetFixture, TheWeightsDirectoryIsMadeWhenItIsAskedFor) {
  const std::string weights = generation.platformPath + "darknet/weights/";
  EXPECT_THAT(wrapper.wGetAvailableWeights(), IsEmpty());
  EXPECT_EQ(log.text(), weights + "\nTNVDirectory::readFiles: Path '" + weights + "' not found!\n");
  EXPECT_FALSE(fs::exists(weights));
  EXPECT_EQ(wrapper.wGetWeightsDirectory(), weights);
  EXPECT_TRUE(fs::is_directory(weights));
}

TEST_F(TNVGenerationDarknetFixture, AvailableWeightsAreTheFilesOfThatType) {
  directory.write("platforms/darknet/weights/a.weights", "");
  directory.write("platforms/darknet/weights/b.txt", "");
  directory.write("platforms/darknet/weights/deep/c.weights", "");
  EXPECT_THAT(wrapper.wGetAvailableWeights(), ElementsAre("a.weights"));
  EXPECT_EQ(log.text(), generation.platformPath + "darknet/weights/\n");
}

TEST_F(TNVGenerationDarknetFixture, TheDownloadAddressLeadsToThePortal) {
  const std::string address = wrapper.wGetWeightsDownloadAdress();
  EXPECT_THAT(address, ::testing::StartsWith("https://"));
  EXPECT_THAT(address, ::testing::EndsWith("/interface.upload_portal.php"));
  EXPECT_GT(address.size(), std::string("https:///interface.upload_portal.php").size());
}

TEST_F(TNVGenerationDarknetFixture, VariablesTellOfTheSettings) {
  generation.dnnClasses = {nullptr, nullptr};
  generation.weights = "w";
  generation.testRatio = 0.125;
  generation.calculateVarValues();
  EXPECT_EQ(generation.vars.size(), 11u);
  EXPECT_EQ(generation.vars["$DARKNET_SAMPLE_PATH"], generation.sampleDirectory);
  EXPECT_EQ(generation.vars["$DARKNET_DATA_PATH"], generation.dataDirectory);
  EXPECT_EQ(generation.vars["$DARKNET_TRAINFILE"], "train.txt");
  EXPECT_EQ(generation.vars["$DARKNET_TESTFILE"], "test.txt");
  EXPECT_EQ(generation.vars["$DARKNET_WEIGHTS"], "w");
  EXPECT_EQ(generation.vars["$DARKNET_TESTRATIO"], "0.125000");
  EXPECT_EQ(generation.vars["$DARKNET_YOLO_FILTER_CNT"], "21");
  EXPECT_EQ(generation.vars["$PLATFORM_NAME"], "Darknet");
  EXPECT_EQ(log.text(), "DARK\n");
}

TEST_F(TNVGenerationDarknetFixture, SettingsHaveTheToldKeys) {
  TNVSettings settings(directory / "p.cfg");
  generation.weights = "w";
  generation.sampleDirectory = "s/";
  generation.dataDirectory = "d/";
  generation.useSpecialTest = true;
  generation.saveSettings(&settings);
  settings.saveFile();
  const auto lines = linesOf(directory / "p.cfg");
  const std::vector<std::string> own(lines.begin(), lines.begin() + 9);
  EXPECT_THAT(
      own,
      ElementsAre(
          "Generation.Darknet.AbsPathInFile = NO", "Generation.Darknet.DataDirectory = \"d/\"",
          "Generation.Darknet.SampleDirectory = \"s/\"",
          "Generation.Darknet.TestFile = \"test.txt\"", "Generation.Darknet.TestRatio = 0.050000",
          "Generation.Darknet.TestSpecial = YES", "Generation.Darknet.TrainFile = \"train.txt\"",
          "Generation.Darknet.WeightsCopy = YES", "Generation.Darknet.WeightsFile = \"w\""));
  EXPECT_EQ(lines[9], "Generation.Tmp.Count = 2");
}

TEST_F(TNVGenerationDarknetFixture, AbsentKeysGiveOtherValuesThanTheConstructor) {
  TNVSettings settings(directory / "p.cfg");
  generation.absPathInFile = true;
  generation.useSpecialTest = true;
  generation.weights = "w";
  generation.loadSettings(&settings);
  EXPECT_EQ(generation.sampleDirectory, "./darknet/images/");
  EXPECT_EQ(generation.dataDirectory, "./darknet/");
  EXPECT_EQ(generation.trainFile, "./train.txt");
  EXPECT_EQ(generation.testFile, "./test.txt");
  EXPECT_FALSE(generation.useSpecialTest);
  EXPECT_NEAR(generation.testRatio, 0.05, 1e-8);
  EXPECT_EQ(generation.weights, "");
  EXPECT_FALSE(generation.weightsCopy);
  EXPECT_FALSE(generation.absPathInFile);
  EXPECT_EQ(generation.templates.size(), 2u);
}

TEST_F(TNVGenerationDarknetFixture, SettingsComeBackWithTheRatioInSinglePrecision) {
  TNVSettings settings(directory / "p.cfg");
  generation.sampleDirectory = directory.path().substr(0, directory.path().size() - 1);
  generation.dataDirectory = "a\\b";
  generation.trainFile = "c\\d";
  generation.testFile = "e";
  generation.absPathInFile = true;
  generation.testRatio = 0.1;
  generation.weights = "w";
  generation.saveSettings(&settings);
  TNVGenerationDarknet other;
  other.loadSettings(&settings);
  EXPECT_EQ(other.sampleDirectory, directory.path());
  EXPECT_EQ(other.dataDirectory, "a/b");
  EXPECT_EQ(other.trainFile, "c\\d");
  EXPECT_EQ(other.testFile, "e");
  EXPECT_TRUE(other.absPathInFile);
  EXPECT_TRUE(other.weightsCopy);
  EXPECT_EQ(other.weights, "w");
  EXPECT_EQ(other.testRatio, double{0.1F});
}

TEST_F(TNVGenerationDarknetFixture, NoSettingsAreNoFailure) {
  generation.saveSettings(nullptr);
  generation.loadSettings(nullptr);
  EXPECT_EQ(generation.trainFile, "train.txt");
}

TEST_F(TNVGenerationDarknetFixture, ARunStartsWithEmptyDirectories) {
  directory.write("out/images/img_7.txt", "old");
  directory.write("out/old.txt", "old");
  generation.sampleCounter = 9;
  generation.samples = {{"x", true}};
  EXPECT_TRUE(generation.processBefore());
  EXPECT_FALSE(fs::exists(directory / "out/old.txt"));
  EXPECT_TRUE(fs::is_empty(directory / "out/images"));
  EXPECT_EQ(generation.sampleCounter, 0u);
  EXPECT_THAT(generation.samples, IsEmpty());
  EXPECT_EQ(log.text(), "");
}

TEST_F(TNVGenerationDarknetFixture, ASampleDirectoryThatCannotBeMadeEndsTheRun) {
  generation.sampleDirectory = directory.write("file", "x") + "/images/";
  EXPECT_FALSE(generation.processBefore());
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVDirectory::createDirectory: Error while creating directories!",
                          "TNVGenerationDarknet::processBefore: Sample directory '" +
                              generation.sampleDirectory + "' does not exist!"));
}

TEST_F(TNVGenerationDarknetFixture, ADataDirectoryThatCannotBeMadeEndsTheRun) {
  generation.dataDirectory = directory.write("file", "x") + "/data/";
  EXPECT_FALSE(generation.processBefore());
  EXPECT_EQ(log.lines().back(), "TNVGenerationDarknet::processBefore: Data directory '" +
                                    generation.dataDirectory + "' does not exist!");
}

TEST_F(TNVGenerationDarknetFixture, AnEmptyDirectoryNameEndsTheRun) {
  generation.sampleDirectory = "";
  EXPECT_FALSE(generation.processBefore());
  EXPECT_EQ(log.lines().back(),
            "TNVGenerationDarknet::processBefore: Sample directory '' does not exist!");
}

TEST_F(TNVGenerationDarknetFixture, ARunThatWouldDeleteItsSourcesTouchesNothing) {
  generation.dataDirectory = directory.path();
  directory.write("out/images/img_7.txt", "old");
  EXPECT_FALSE(generation.processBefore());
  EXPECT_EQ(log.text(), "TNVGenerationDarknet::processBefore: Directory '" + directory.path() +
                            "' would be deleted, but it is or contains the platforms path!\n");
  EXPECT_TRUE(fs::exists(directory / "out/images/img_7.txt"));
}

struct BoxRow {
  Points points;
  const char* line;
};

class TNVGenerationDarknetBoxes : public TNVGenerationDarknetFixture,
                                  public ::testing::WithParamInterface<BoxRow> {};

// The box of the library takes in the pixel of the largest coordinate: 10 to 29 are 20 pixels.
TEST_P(TNVGenerationDarknetBoxes, AreWrittenRelativeToThePicture) {
  ASSERT_TRUE(generation.processBefore());
  EXPECT_TRUE(generation.process(sampleOf(GetParam().points)));
  EXPECT_EQ(readFile(directory / "out/images/img_0.txt"), GetParam().line);
}

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(
    Rows, TNVGenerationDarknetBoxes,
    ::testing::Values(
        // x 10 to 30, y 5 to 15, of 100 by 50: 0.1 + 0.1, 0.1 + 0.1.
        BoxRow{{{10, 5}, {29, 5}, {29, 14}, {10, 14}}, "4 0.2 0.2 0.2 0.2\n"},
        BoxRow{{{29, 14}, {10, 5}}, "4 0.2 0.2 0.2 0.2\n"},
        BoxRow{{{10.9, 5.9}, {29.9, 14.9}}, "4 0.2 0.2 0.2 0.2\n"},
        // One pixel: 0.33 + 0.005, 0.34 + 0.01.
        BoxRow{{{33, 17}}, "4 0.335 0.35 0.01 0.02\n"},
        // Clipped at each side.
        BoxRow{{{-20, -10}, {9, 9}}, "4 0.05 0.1 0.1 0.2\n"},
        BoxRow{{{90, 40}, {150, 90}}, "4 0.95 0.9 0.1 0.2\n"},
        BoxRow{{{-1e30, -1e300}, {1e30, 1e300}}, "4 0.5 0.5 1 1\n"},
        BoxRow{{{-kInfinity, -kInfinity}, {kInfinity, kInfinity}}, "4 0.5 0.5 1 1\n"},
        // Outside: the pixels 100 and -1 are the first that are.
        BoxRow{{{100, 5}, {120, 9}}, ""}, BoxRow{{{5, 50}, {9, 60}}, ""},
        BoxRow{{{-9, 5}, {-0.5, 9}}, ""}, BoxRow{{{5, -9}, {9, -0.5}}, ""},
        BoxRow{{{1e30, 1e30}, {2e30, 2e30}}, ""}, BoxRow{{{-2e30, 0}, {-1e30, 9}}, ""},
        BoxRow{{{kNan, 5}, {29, 14}}, ""}, BoxRow{{{10, 5}, {29, kNan}}, ""}, BoxRow{{}, ""}));

TEST_F(TNVGenerationDarknetFixture, NumbersHaveSixSignificantDigits) {
  generation.processBefore();
  // x 1 to 2 of 3, y 10 to 11 of 30000: 1/3 + 1/6 and 10/30000 + 1/60000.
  generation.process(sampleOf({{1, 10}}, {3, 30000}));
  EXPECT_EQ(readFile(directory / "out/images/img_0.txt"), "4 0.5 0.00035 0.333333 3.33333e-05\n");
}

TEST_F(TNVGenerationDarknetFixture, EveryEntryHasALineInOrder) {
  generation.processBefore();
  TNVAugmentSample sample = sampleOf({{10, 5}, {29, 14}});
  sample.entries.push_back({{{200, 5}, {210, 9}}, 5, "ROI", "Rect"});
  sample.entries.push_back({{{0, 0}, {99, 49}}, -1, "POI", "Circle"});
  generation.process(sample);
  EXPECT_EQ(readFile(directory / "out/images/img_0.txt"), "4 0.2 0.2 0.2 0.2\n-1 0.5 0.5 1 1\n");
}

TEST_F(TNVGenerationDarknetFixture, ASampleIsAPictureAndAText) {
  generation.processBefore();
  TNVAugmentSample sample;
  sample.image = patternedPicture(20, 10);
  sample.special = true;
  EXPECT_TRUE(generation.process(sample));
  EXPECT_EQ(readFile(directory / "out/images/img_0.txt"), "");
  EXPECT_TRUE(fs::exists(directory / "out/images/img_0.txt"));
  std::vector<uchar> encoded;
  cv::imencode(".jpg", sample.image, encoded);
  EXPECT_EQ(readFile(directory / "out/images/img_0.jpg"),
            std::string(encoded.begin(), encoded.end()));
  ASSERT_EQ(generation.samples.size(), 1u);
  EXPECT_EQ(generation.samples[0].imagePath, directory / "out/images/img_0.jpg");
  EXPECT_TRUE(generation.samples[0].isTest);
}

TEST_F(TNVGenerationDarknetFixture, NumbersRunOnWithoutPadding) {
  run(11);
  EXPECT_TRUE(fs::exists(directory / "out/images/img_9.jpg"));
  EXPECT_TRUE(fs::exists(directory / "out/images/img_10.txt"));
  TNVAugmentSample sample;
  sample.image = patternedPicture(4, 4);
  generation.process(sample);
  EXPECT_TRUE(fs::exists(directory / "out/images/img_11.jpg"));
}

/// The order of a run, worked out apart from the program: each item in turn changes places with a
/// drawn one of those up to it.
std::vector<int> shuffledNumbers(int count) {
  std::mt19937 twister;  // its default seed is the one of the program
  std::vector<int> numbers;
  for (int i = 0; i < count; ++i)
    numbers.push_back(i);
  for (int i = 1; i < count; ++i) {
    const auto choices = static_cast<std::uint64_t>(i) + 1;
    const std::uint64_t end = (std::uint64_t{1} << 32) / choices * choices;
    std::uint64_t raw = twister();
    while (raw >= end)
      raw = twister();
    std::swap(numbers[static_cast<std::size_t>(i)], numbers[raw % choices]);
  }
  return numbers;
}

TEST_F(TNVGenerationDarknetFixture, AHundredSamplesGiveFiveForTestingInAFixedOrder) {
  run(100);
  std::vector<std::string> expected;
  for (const int number : shuffledNumbers(100))
    expected.push_back(imagePath(number));
  const std::vector<std::string> test(expected.begin(), expected.begin() + 5);
  const std::vector<std::string> train(expected.begin() + 5, expected.end());
  EXPECT_EQ(testList(), test);
  EXPECT_EQ(trainList(), train);
  const std::string first = readFile(directory / "out/train.txt");
  run(100);
  EXPECT_EQ(readFile(directory / "out/train.txt"), first);
}

struct DivisionRow {
  int samples;
  int special;
  double ratio;
  std::size_t test;
};

class TNVGenerationDarknetDivision : public TNVGenerationDarknetFixture,
                                     public ::testing::WithParamInterface<DivisionRow> {};

TEST_P(TNVGenerationDarknetDivision, FollowsTheRatioAndTheSpecialSamples) {
  const DivisionRow& row = GetParam();
  generation.testRatio = row.ratio;
  run(row.samples, row.special);
  const auto test = testList();
  EXPECT_EQ(test.size(), row.test);
  EXPECT_EQ(trainList().size(), static_cast<std::size_t>(row.samples) - row.test);
  for (int i = 0; i < row.special; ++i)
    EXPECT_EQ(std::count(test.begin(), test.end(), imagePath(i)), 1);
}

INSTANTIATE_TEST_SUITE_P(Rows, TNVGenerationDarknetDivision,
                         ::testing::Values(DivisionRow{19, 0, 0.05, 0},  //
                                           DivisionRow{20, 0, 0.05, 1},  //
                                           DivisionRow{10, 3, 0.0, 3},   //
                                           DivisionRow{10, 3, 0.5, 5},   //
                                           DivisionRow{10, 6, 0.5, 6},   //
                                           DivisionRow{10, 0, 1.0, 10},  //
                                           DivisionRow{10, 0, 7.5, 10},  //
                                           DivisionRow{10, 2, -1.0, 2},  //
                                           DivisionRow{10, 2, kNan, 2},  //
                                           DivisionRow{0, 0, 0.5, 0}));

TEST_F(TNVGenerationDarknetFixture, UseSpecialTestHasNoSay) {
  run(10, 3);
  const auto with = testList();
  generation.useSpecialTest = true;
  run(10, 3);
  EXPECT_EQ(testList(), with);
}

TEST_F(TNVGenerationDarknetFixture, AnEmptyRunFillsTheTemplatesAndWritesEmptyLists) {
  directory.write("platforms/darknet/configs/c.tmp", "classes=###CLASSES###\n");
  directory.write("platforms/darknet/nets/n.tmp", "filters=###FILTERS###\n");
  generation.setTemplateData("configs", "c.tmp", {{"CLASSES", "$DNN_COUNT"}}, directory / "c.data");
  generation.setTemplateData("nets", "n.tmp", {{"FILTERS", "$DARKNET_YOLO_FILTER_CNT"}},
                             directory / "n.cfg");
  generation.dnnClasses = {nullptr};
  run(0);
  EXPECT_EQ(readFile(directory / "c.data"), "classes=1\n");
  EXPECT_EQ(readFile(directory / "n.cfg"), "filters=18\n");
  EXPECT_TRUE(fs::exists(directory / "out/train.txt"));
  EXPECT_TRUE(fs::exists(directory / "out/test.txt"));
  EXPECT_THAT(trainList(), IsEmpty());
  EXPECT_THAT(testList(), IsEmpty());
}

TEST_F(TNVGenerationDarknetFixture, AbsolutePathsHaveForwardSlashes) {
  ASSERT_TRUE(generation.processBefore());
  generation.absPathInFile = true;
  generation.samples = {{"some\\where/img_0.jpg", false}};
  generation.processAfter();
  EXPECT_THAT(trainList(), ElementsAre(fs::current_path().string() + "/some/where/img_0.jpg"));
  generation.absPathInFile = false;
  generation.samples = {{"some\\where/img_0.jpg", false}};
  generation.processAfter();
  EXPECT_THAT(trainList(), ElementsAre("some\\where/img_0.jpg"));
}

TEST_F(TNVGenerationDarknetFixture, APathThatCannotBeMadeAbsoluteIsThrown) {
  ASSERT_TRUE(generation.processBefore());
  generation.absPathInFile = true;
  generation.samples = {{"", false}};
  try {
    generation.processAfter();
    FAIL() << "nothing was thrown";
  } catch (const fs::filesystem_error& error) {
    EXPECT_THAT(error.what(), ::testing::HasSubstr("absolute"));
  }
}

TEST_F(TNVGenerationDarknetFixture, WeightsAreCopied) {
  directory.write("platforms/darknet/weights/w.weights", "numbers");
  generation.weights = "w.weights";
  run(1);
  EXPECT_EQ(readFile(directory / "out/w.weights"), "numbers");
}

TEST_F(TNVGenerationDarknetFixture, WeightsAreNotCopiedWhenNobodyWantsThem) {
  directory.write("platforms/darknet/weights/w.weights", "numbers");
  generation.weights = "w.weights";
  generation.weightsCopy = false;
  run(1);
  EXPECT_FALSE(fs::exists(directory / "out/w.weights"));
  generation.weights = "";
  generation.weightsCopy = true;
  run(1);
  EXPECT_FALSE(fs::exists(directory / "out/w.weights"));
}

TEST_F(TNVGenerationDarknetFixture, MissingWeightsAreThrownAfterTheListsWereWritten) {
  generation.weights = "absent.weights";
  generation.testRatio = 0.0;
  ASSERT_TRUE(generation.processBefore());
  generation.samples = {{"a.jpg", false}};
  EXPECT_THROW(generation.processAfter(), fs::filesystem_error);
  EXPECT_THAT(trainList(), ElementsAre("a.jpg"));
  EXPECT_TRUE(fs::exists(directory / "out/test.txt"));
}

TEST_F(TNVGenerationDarknetFixture, ValidationNamesAllThatIsMissing) {
  generation.sampleDirectory = "";
  generation.dataDirectory = "";
  const auto all = generation.validateConfig();
  EXPECT_THAT(all, ElementsAre("Sample directory is not set!", "Darknet data directory is not set!",
                               "Config save path is not set!", "Config template name not set!",
                               "DNN net save path is not set!", "DNN net template name not set!",
                               "Weights file is not set!"));
  generation.templates.clear();
  EXPECT_EQ(generation.validateConfig(), all);
}

TEST_F(TNVGenerationDarknetFixture, ValidationNamesEachThatIsMissingAlone) {
  using Setter = void (*)(TNVGenerationDarknet&);
  const std::pair<Setter, const char*> rows[] = {
      {[](auto& g) { g.sampleDirectory = ""; }, "Sample directory is not set!"},
      {[](auto& g) { g.dataDirectory = ""; }, "Darknet data directory is not set!"},
      {[](auto& g) { g.templates["configs"].savePath = ""; }, "Config save path is not set!"},
      {[](auto& g) { g.templates["configs"].name = ""; }, "Config template name not set!"},
      {[](auto& g) { g.templates["nets"].savePath = ""; }, "DNN net save path is not set!"},
      {[](auto& g) { g.templates["nets"].name = ""; }, "DNN net template name not set!"},
      {[](auto& g) { g.weights = ""; }, "Weights file is not set!"},
  };
  for (const auto& [clear, message] : rows) {
    TNVGenerationDarknet complete;
    complete.setTemplateData("configs", "c.tmp", {}, "c.data");
    complete.setTemplateData("nets", "n.tmp", {}, "n.cfg");
    complete.weights = "w";
    clear(complete);
    EXPECT_THAT(complete.validateConfig(), ElementsAre(message));
  }
}

TEST_F(TNVGenerationDarknetFixture, TheNetworkIsWrittenAfterTheDataDescription) {
  directory.write("platforms/darknet/configs/c.tmp", "config");
  directory.write("platforms/darknet/nets/n.tmp", "net");
  generation.setTemplateData("configs", "c.tmp", {}, directory / "same");
  generation.setTemplateData("nets", "n.tmp", {}, directory / "same");
  run(0);
  EXPECT_EQ(readFile(directory / "same"), "net\n");
}

TEST_F(TNVGenerationDarknetFixture, NeitherDirectoryMayHoldPictures) {
  const std::string pictures = directory.makeDirectory("pictures");
  TNVTrainSet trainSet(directory.write("pictures/a.png", ""), "");
  generation.trainSets = {&trainSet};
  generation.sampleDirectory = pictures;
  EXPECT_FALSE(generation.processBefore());
  generation.sampleDirectory = directory / "out/images/";
  generation.dataDirectory = pictures;
  EXPECT_FALSE(generation.processBefore());
  EXPECT_TRUE(fs::exists(trainSet.imagePath));
  EXPECT_FALSE(fs::exists(directory / "out"));
}

TEST_F(TNVGenerationDarknetFixture, WeightsStay) {
  const std::string weights = directory.write("platforms/darknet/weights/a.weights", "kept");
  generation.dataDirectory = directory / "platforms/darknet/weights/";
  EXPECT_FALSE(generation.processBefore());
  EXPECT_TRUE(fs::exists(weights));
}

TEST_F(TNVGenerationDarknetFixture, SampleThatCannotBeWrittenIsNotReported) {
  generation.sampleDirectory = directory / "absent/";
  EXPECT_TRUE(generation.process(sampleOf({{1, 1}, {5, 5}})));
  ASSERT_EQ(generation.samples.size(), 1u);
  EXPECT_EQ(generation.samples[0].imagePath, directory / "absent/img_0.jpg");
  EXPECT_EQ(log.text(), "");
}

TEST_F(TNVGenerationDarknetFixture, ACompleteConfigurationHasNoProblem) {
  generation.setTemplateData("configs", "c.tmp", {}, "c.data");
  generation.setTemplateData("nets", "n.tmp", {}, "n.cfg");
  EXPECT_THAT(generation.validateConfig(), ElementsAre("Weights file is not set!"));
  generation.weights = "w";
  EXPECT_THAT(generation.validateConfig(), IsEmpty());
}

}  // namespace
