#include <filesystem>
#include <map>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "TNV_SampleBenchNative/WTNVGenerationDarknet.h"
#include "TNV_SampleBenchNative/WTNVMainProcess.h"
#include "support/LogCapture.h"
#include "support/ProjectBuilder.h"

namespace fs = std::filesystem;

namespace {

using Points = std::vector<std::vector<double>>;

/// The picture as it is, twice as large, and that turned clockwise by a quarter.
constexpr auto kTree = R"(<?xml version="1.0"?>
<opencv_storage>
<TaskTree>
  <SubTasks>1</SubTasks>
  <Task_0>
    <Name>Default</Name><Save>1</Save><SubTasks>1</SubTasks>
    <Task_0>
      <Name>Resize</Name><Save>1</Save><TargetSize>200 100</TargetSize><SubTasks>1</SubTasks>
      <Task_0>
        <Name>Rotation</Name><Save>1</Save><Rotate>90</Rotate><SubTasks>0</SubTasks>
      </Task_0>
    </Task_0>
  </Task_0>
</TaskTree>
</opencv_storage>
)";

constexpr int kPictures = 4;
constexpr int kSamples = 3 * kPictures;

class Determinism : public ::testing::Test {
 protected:
  Determinism() {
    builder.temp.write("augments/tree.xml", kTree);
    builder.temp.write("platforms/darknet/configs/data.tmp", "classes = ###CLASSES###\n");
    builder.temp.write("platforms/darknet/nets/net.tmp", "width = 416\n");
    std::vector<std::string> pictures;
    for (int i = 0; i < kPictures; ++i)
      pictures.push_back(builder.picture(std::to_string(i) + ".png", 100, 50));
    const std::vector<bool> use(pictures.size(), true);
    builder.project().wAddImagesToImageSet(pictures, use, "set", false);
    builder.withClasses({"first", "second"});
    markPictures();
    configure();
    EXPECT_TRUE(builder.project().wUpdate(true));
  }

  /// A box of the first class on the first picture, one of each class on the second.
  void markPictures() {
    WTNVMainProcess process(&builder.project(), nullptr);
    WTNVHandlerMark marks = process.getHndMark();
    WTNVHandlerTrainSet trainSets = process.getHndTrainSet();
    const auto classes = builder.project().wGetDNNClasses();
    const auto draw = [&](const Points& points, const WTNVDNNClass& dnnClass) {
      EXPECT_TRUE(marks.designMark(points, "Rect", {dnnClass}));
      EXPECT_TRUE(marks.addDesignedMark());
    };
    draw({{0.25, 0.2}, {0.5, 0.6}}, classes[0]);
    trainSets.wSetTrainSetForward(1);
    draw({{0.25, 0.2}, {0.5, 0.6}}, classes[0]);
    draw({{0.9, 0.8}, {0.7, 0.4}}, classes[1]);
  }

  void configure() {
    builder.project().wSetGeneration("Darknet");
    const WTNVGeneration generation = builder.project().wGetGeneration();
    const WTNVGenerationDarknet darknet(generation);
    darknet.wSetSampleDirectory(output() + "images/");
    darknet.wSetDarknetDataDirectory(output());
    darknet.wSetTestRatio(0.25);
    generation.wSetTemplateData("configs", "data.tmp", {{"CLASSES", "$DNN_COUNT"}},
                                output() + "obj.data");
    generation.wSetTemplateData("nets", "net.tmp", {}, output() + "net.cfg");
    builder.project().getHndAugment().wSetAugmentation("tree.xml");
  }

  /// Runs and returns the content of each file that was written.
  std::map<std::string, std::string> filesOfARun() {
    WTNVHandlerAugment augment = builder.project().getHndAugment();
    EXPECT_TRUE(
        augment.wProcess(builder.project().wGetTrainSets(), builder.project().wGetGeneration()));
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(output())) {
      const std::string path = entry.path().string();
      if (entry.is_regular_file()) files[path.substr(output().size())] = readFile(path);
    }
    return files;
  }

  std::string output() const { return builder.temp / "out/"; }

  LogCapture log;
  ProjectBuilder builder;
};

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

TEST_F(Determinism, TwoRunsWriteTheSameFiles) {
  const auto first = filesOfARun();
  // A picture and a text for each sample, two lists, two filled templates.
  EXPECT_EQ(first.size(), std::size_t{2 * kSamples + 4});
  for (const auto& [name, content] : first) {
    EXPECT_EQ(name.ends_with(".jpg") && content.empty(), false) << name;
  }
  EXPECT_EQ(first.at("obj.data"), "classes = 2\n");
  EXPECT_TRUE(first == filesOfARun());
}

TEST_F(Determinism, AProjectReadFromDiskWritesTheSameFilesAgain) {
  const auto first = filesOfARun();
  builder.reopened();
  EXPECT_TRUE(first == filesOfARun());
}

TEST_F(Determinism, LabelsFollowTheMarksThroughTheTree) {
  auto files = filesOfARun();
  // In pixels of the 100 x 50 picture the first box goes from 25, 10 to 50, 30, the second from
  // 70, 20 to 90, 40. The pixel of either edge belongs to a box, so they are 26 x 21 and 21 x 21.
  // Twice as large they are 51 x 41 at 50, 20 and 41 x 41 at 140, 40. A turn takes x, y of a
  // picture that is 100 high to 100 - y, x: 41 x 51 at 40, 50 and 41 x 41 at 20, 140.
  const std::string plain = "0 0.38 0.41 0.26 0.42\n";
  const std::string large = "0 0.3775 0.405 0.255 0.41\n";
  const std::string turned = "0 0.605 0.3775 0.41 0.255\n";
  EXPECT_EQ(files["images/img_0.txt"], plain);
  EXPECT_EQ(files["images/img_1.txt"], large);
  EXPECT_EQ(files["images/img_2.txt"], turned);
  EXPECT_EQ(files["images/img_3.txt"], plain + "1 0.805 0.61 0.21 0.42\n");
  EXPECT_EQ(files["images/img_4.txt"], large + "1 0.8025 0.605 0.205 0.41\n");
  EXPECT_EQ(files["images/img_5.txt"], turned + "1 0.405 0.8025 0.41 0.205\n");
  for (int sample = 6; sample < kSamples; ++sample)
    EXPECT_EQ(files.at("images/img_" + std::to_string(sample) + ".txt"), "") << sample;
}

TEST_F(Determinism, EachSampleStandsInOneList) {
  auto files = filesOfARun();
  const auto train = linesOf(files["train.txt"]);
  const auto test = linesOf(files["test.txt"]);
  EXPECT_EQ(test.size(), std::size_t{kSamples / 4});
  std::multiset<std::string> listed(train.begin(), train.end());
  listed.insert(test.begin(), test.end());
  std::multiset<std::string> written;
  for (int sample = 0; sample < kSamples; ++sample)
    written.insert(output() + "images/img_" + std::to_string(sample) + ".jpg");
  EXPECT_EQ(listed, written);
}

}  // namespace
