#include "generation/TNVAugment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "AugmentSupport.h"
#include "generation/TNVAugmentDefault.h"
#include "generation/TNVAugmentRotation.h"
#include "generation/TNVGeneration.h"
#include "marks/TNVMarkRect.h"
#include "project/TNVDNNClass.h"
#include "project/TNVTrainSet.h"
#include "support/LogCapture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TNVMarkRect rectangle(cv::Point2d center, cv::Point2d size, std::vector<int> classIdx) {
  TNVMarkRect mark;
  mark.center = center;
  mark.size = size;
  mark.classIdx = std::move(classIdx);
  return mark;
}

class TNVAugmentSetTrainSet : public ::testing::Test {
 protected:
  TNVAugmentSetTrainSet() {
    trainSet.image = patternedPicture(200, 100);
    first.dnnId = 10;
    second.dnnId = 20;
  }

  TNVAugmentSample sample() { return TNVAugment::setTrainSet(&trainSet, {&first, &second}); }

  LogCapture log;
  TNVTrainSet trainSet{"a.png", ""};
  TNVDNNClass first{1};
  TNVDNNClass second{2};
};

TEST_F(TNVAugmentSetTrainSet, NoTrainSetGivesAnEmptySample) {
  const TNVAugmentSample sample = TNVAugment::setTrainSet(nullptr, {});
  EXPECT_TRUE(sample.image.empty());
  EXPECT_THAT(sample.entries, IsEmpty());
  EXPECT_FALSE(sample.special);
  EXPECT_EQ(log.text(), "TNVAugment::setTrainSet: TrainSet is nullptr!\n");
}

TEST_F(TNVAugmentSetTrainSet, NoPictureGivesAnEmptySample) {
  trainSet.image = cv::Mat();
  trainSet.useSpecialTest = true;
  trainSet.addMark(rectangle({0.5, 0.5}, {0.1, 0.1}, {1}));
  const TNVAugmentSample empty = sample();
  EXPECT_TRUE(empty.image.empty());
  EXPECT_THAT(empty.entries, IsEmpty());
  EXPECT_FALSE(empty.special);
  EXPECT_EQ(log.text(), "TNVAugment::setTrainSet: TrainSet image is empty!\n");
}

TEST_F(TNVAugmentSetTrainSet, SharesThePictureAndTakesSpecialOver) {
  EXPECT_EQ(sample().image.data, trainSet.image.data);
  EXPECT_FALSE(sample().special);
  trainSet.useSpecialTest = true;
  EXPECT_TRUE(sample().special);
}

TEST_F(TNVAugmentSetTrainSet, AMarkIsItsBoxInPixels) {
  trainSet.addMark(rectangle({0.5, 0.4}, {0.25, 0.5}, {2}));
  const auto entries = sample().entries;
  ASSERT_EQ(entries.size(), 1u);
  // 0.5 - 0.125 = 0.375 of 200 and 0.4 - 0.25 = 0.15 of 100; 50 by 50 pixels.
  expectPoints(entries[0].points, {{75, 15}, {125, 15}, {125, 65}, {75, 65}}, 1e-9);
  EXPECT_EQ(entries[0].classIndex, 20);
  EXPECT_EQ(entries[0].gen, "ROI");
  EXPECT_EQ(entries[0].form, "Rect");
}

TEST_F(TNVAugmentSetTrainSet, TheFormIsTheKindWithoutItsVariant) {
  TNVMarkRect mark = rectangle({0.5, 0.5}, {0.1, 0.1}, {1});
  mark.type = "Rect Center";
  trainSet.addMark(mark);
  EXPECT_EQ(sample().entries.at(0).form, "Rect");
}

TEST_F(TNVAugmentSetTrainSet, PointsOfInterestFollowTheirMarkAsBoxes) {
  TNVMarkRect mark = rectangle({0.5, 0.5}, {0.5, 0.5}, {1});
  mark.pois = {{0.25, 0.5}, {0.0, 1.0}};
  mark.poiSize = {0.1, 0.2};
  trainSet.addMark(mark);
  trainSet.addMark(rectangle({0.5, 0.5}, {0.5, 0.5}, {2}));
  const auto entries = sample().entries;
  ASSERT_EQ(entries.size(), 4u);
  EXPECT_EQ(entries[0].gen, "ROI");
  expectPoints(entries[1].points, {{40, 40}, {60, 40}, {60, 60}, {40, 60}}, 1e-9);
  expectPoints(entries[2].points, {{-10, 90}, {10, 90}, {10, 110}, {-10, 110}}, 1e-9);
  for (const int i : {1, 2}) {
    EXPECT_EQ(entries[static_cast<std::size_t>(i)].gen, "POI");
    EXPECT_EQ(entries[static_cast<std::size_t>(i)].form, "Rect");
    EXPECT_EQ(entries[static_cast<std::size_t>(i)].classIndex, 10);
  }
  EXPECT_EQ(entries[3].gen, "ROI");
  EXPECT_EQ(entries[3].classIndex, 20);
}

TEST_F(TNVAugmentSetTrainSet, OnlyTheFirstClassCounts) {
  trainSet.addMark(rectangle({0.5, 0.5}, {0.1, 0.1}, {2, 1, 99}));
  const auto entries = sample().entries;
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].classIndex, 20);
  EXPECT_EQ(log.text(), "");
}

TEST_F(TNVAugmentSetTrainSet, AMarkWithoutAClassIsPassedOverSilently) {
  trainSet.addMark(rectangle({0.5, 0.5}, {0.1, 0.1}, {}));
  EXPECT_THAT(sample().entries, IsEmpty());
  EXPECT_EQ(log.text(), "");
}

TEST_F(TNVAugmentSetTrainSet, AMarkOfAnUnknownClassIsReported) {
  trainSet.addMark(rectangle({0.5, 0.5}, {0.1, 0.1}, {99, 1}));
  trainSet.addMark(rectangle({0.5, 0.5}, {0.1, 0.1}, {1}));
  EXPECT_EQ(sample().entries.size(), 1u);
  EXPECT_EQ(log.text(), "TNVAugment::setTrainSet: Warning, DNN Class not found!\n");
}

/// Keeps what it is given.
class KeepingGeneration final : public TNVGeneration {
 public:
  std::string getName() const override { return "Keeping"; }
  bool processBefore() override { return true; }
  bool process(const TNVAugmentSample& sample) override {
    seen.push_back(sample);
    return false;
  }
  bool processAfter() override { return true; }
  std::vector<std::string> validateConfig() const override { return {}; }

  std::vector<TNVAugmentSample> seen;
};

/// Says of each sample by which tasks it went.
class NamedTask final : public TNVAugment {
 public:
  explicit NamedTask(std::string taskName, bool saving = true) : name(std::move(taskName)) {
    save = saving;
  }
  std::string getName() const override { return name; }
  TNVAugmentSample process(const TNVAugmentSample& sample) const override {
    TNVAugmentSample result = sample;
    result.entries.push_back({{}, 0, name, ""});
    return result;
  }
  void write(cv::FileStorage&) const override {}
  void read(const cv::FileNode&) override {}

  NamedTask* add(const std::string& subName, bool saving = true) {
    subTasks.push_back(std::make_unique<NamedTask>(subName, saving));
    return static_cast<NamedTask*>(subTasks.back().get());
  }

 private:
  std::string name;
};

TEST(TNVAugmentProcessTrainSet, AnEmptySampleIsReported) {
  const LogCapture log;
  KeepingGeneration generation;
  EXPECT_FALSE(TNVAugment::processTrainSet(TNVAugmentDefault(), {}, &generation));
  EXPECT_EQ(log.text(), "TNVAugment::processTrainSet: Can not process, TrainSet ist empty!\n");
  EXPECT_THAT(generation.seen, IsEmpty());
}

TEST(TNVAugmentProcessTrainSet, NoGenerationIsReported) {
  const LogCapture log;
  EXPECT_FALSE(TNVAugment::processTrainSet(TNVAugmentDefault(), makeSample(4, 4), nullptr));
  EXPECT_EQ(log.text(), "TNVAugment::processTrainSet: Can not process, Generation is nullptr!\n");
}

TEST(TNVAugmentProcessTrainSet, GoesDepthFirstFromTheParentsResult) {
  NamedTask root("root");
  NamedTask* left = root.add("left", false);
  left->add("left1");
  left->add("left2");
  root.add("right");
  KeepingGeneration generation;
  TNVAugmentSample sample;
  sample.image = patternedPicture(4, 4);
  EXPECT_TRUE(TNVAugment::processTrainSet(root, sample, &generation));
  std::vector<std::string> ways;
  for (const TNVAugmentSample& seen : generation.seen) {
    ways.emplace_back();
    for (const TNVAugmentEntry& entry : seen.entries)
      ways.back() += "/" + entry.gen;
  }
  EXPECT_THAT(ways, ElementsAre("/root", "/root/left/left1", "/root/left/left2", "/root/right"));
  EXPECT_THAT(sample.entries, IsEmpty());
}

TEST(TNVAugmentProcessTrainSet, ATaskThatDoesNotSaveShowsTheGeneratorNothing) {
  NamedTask root("root", false);
  KeepingGeneration generation;
  EXPECT_TRUE(TNVAugment::processTrainSet(root, makeSample(4, 4), &generation));
  EXPECT_THAT(generation.seen, IsEmpty());
}

}  // namespace
