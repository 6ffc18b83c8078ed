#include "generation/TNVAugmentResize.h"

#include <limits>
#include <memory>
#include <set>

#include <opencv2/imgproc.hpp>

#include "AugmentSupport.h"

namespace {

using ::testing::ElementsAre;

std::unique_ptr<TNVAugmentResize> toLength(int length) {
  auto task = std::make_unique<TNVAugmentResize>();
  task->maxLength = length;
  return task;
}

TEST(TNVAugmentResize, ShrinksByPyramidStepsAndALinearOne) {
  const TNVAugmentSample sample = makeSample(640, 480);
  const TNVAugmentSample result = toLength(512)->process(sample);
  cv::Mat expected;
  cv::pyrDown(sample.image, expected);
  cv::resize(expected, expected, cv::Size(512, 384), 0, 0, cv::INTER_LINEAR);
  EXPECT_TRUE(samePixels(expected, result.image));
  expectPoints(result.entries[0].points, {{8, 4}, {24, 4}, {24, 12}, {8, 12}}, 1e-9);
}

TEST(TNVAugmentResize, EnlargesDespiteTheNameOfTheLength) {
  const TNVAugmentSample sample = makeSample(640, 480);
  const TNVAugmentSample result = toLength(1024)->process(sample);
  cv::Mat expected;
  cv::pyrUp(sample.image, expected);
  cv::resize(expected, expected, cv::Size(1024, 768), 0, 0, cv::INTER_LINEAR);
  EXPECT_TRUE(samePixels(expected, result.image));
  expectPoints(result.entries[0].points, {{16, 8}, {48, 8}, {48, 24}, {16, 24}}, 1e-9);
}

TEST(TNVAugmentResize, TheLengthOfTheLongerSideGivesADeepCopy) {
  const TNVAugmentSample sample = makeSample(640, 480);
  const TNVAugmentSample result = toLength(640)->process(sample);
  EXPECT_TRUE(samePixels(sample.image, result.image));
  EXPECT_NE(result.image.data, sample.image.data);
  expectPoints(result.entries[0].points, sample.entries[0].points, 0.0);
}

TEST(TNVAugmentResize, AnUprightPictureIsMeasuredByItsRows) {
  const TNVAugmentSample result = toLength(100)->process(makeSample(100, 200));
  EXPECT_EQ(result.image.size(), cv::Size(50, 100));
  expectPoints(result.entries[1].points, {{0, 0}, {2, 0}, {2, 1}, {0, 1}}, 1e-9);
}

TEST(TNVAugmentResize, ASquareIsMeasuredByItsRows) {
  EXPECT_EQ(toLength(30)->process(makeSample(60, 60)).image.size(), cv::Size(30, 30));
}

TEST(TNVAugmentResize, WithoutALengthTheTargetSizeIsTaken) {
  TNVAugmentResize task;
  task.targetSize = {320, 60};
  const TNVAugmentSample sample = makeSample(640, 480);
  const TNVAugmentSample result = task.process(sample);
  cv::Mat expected;
  cv::resize(sample.image, expected, cv::Size(320, 60), 0, 0, cv::INTER_CUBIC);
  EXPECT_TRUE(samePixels(expected, result.image));
  expectPoints(result.entries[0].points, {{5, 0.625}, {15, 0.625}, {15, 1.875}, {5, 1.875}}, 1e-9);
}

TEST(TNVAugmentResize, KeepsTheEntriesInOrderAndLosesSpecial) {
  const TNVAugmentSample sample = makeSample(64, 48);
  const TNVAugmentSample result = toLength(32)->process(sample);
  ASSERT_EQ(result.entries.size(), 2u);
  EXPECT_EQ(result.entries[0].gen, "ROI");
  EXPECT_EQ(result.entries[1].classIndex, 7);
  EXPECT_EQ(result.entries[1].gen, "POI");
  EXPECT_EQ(result.entries[1].form, "Circle");
  EXPECT_FALSE(result.special);
  expectPoints(sample.entries[0].points, makeSample(64, 48).entries[0].points, 0.0);
}

TEST(TNVAugmentResize, RandomBoundsGoBeforeTheLength) {
  TNVAugmentResize task;
  task.maxLength = 7;
  task.maxLengthRndMin = 20;
  task.maxLengthRndMax = 22;
  const TNVAugmentSample sample = makeSample(64, 48);
  std::set<int> lengths;
  for (int i = 0; i < 100; ++i)
    lengths.insert(task.process(sample).image.cols);
  EXPECT_THAT(lengths, ElementsAre(20, 21, 22));
}

TEST(TNVAugmentResize, AnUpperBoundBelowOneDrawsNothing) {
  TNVAugmentResize task;
  task.maxLength = 32;
  task.maxLengthRndMin = -5;
  task.maxLengthRndMax = 0;
  EXPECT_EQ(task.process(makeSample(64, 48)).image.cols, 32);
}

TEST(TNVAugmentResize, ADrawnLengthBelowOneTakesTheTargetSize) {
  TNVAugmentResize task;
  task.maxLengthRndMin = -1000000000;
  task.maxLengthRndMax = 1;
  task.targetSize = {5, 6};
  // Chances are one in a thousand million that this draws the 1.
  EXPECT_EQ(task.process(makeSample(64, 48)).image.size(), cv::Size(5, 6));
}

TEST(TNVAugmentResize, BoundsTheWrongWayRoundDrawFromTheWrappedRange) {
  TNVAugmentResize task;
  task.maxLengthRndMin = std::numeric_limits<int>::max();
  task.maxLengthRndMax = 1;
  task.targetSize = {5, 6};
  // The largest integer, then the smallest and on up to 1: nearly all are negative.
  EXPECT_EQ(task.process(makeSample(64, 48)).image.size(), cv::Size(5, 6));
}

TEST(TNVAugmentResize, SizesThatNoPictureCanHaveEndInTheLibrarysException) {
  const TNVAugmentSample sample = makeSample(64, 48);
  for (const cv::Size size : {cv::Size(0, 0), cv::Size(-4, 4), cv::Size(1000000, 1000000),
                              cv::Size(2147483647, 2147483647)}) {
    TNVAugmentResize task;
    task.targetSize = size;
    EXPECT_THROW(task.process(sample), cv::Exception) << size;
  }
}

TEST(TNVAugmentResize, LengthOutOfAllMeasureEndsBeforeItFillsTheMemory) {
  const TNVAugmentSample sample = makeSample(64, 48);
  for (const int length : {100000, 2147483647}) {
    try {
      toLength(length)->process(sample);
      ADD_FAILURE() << length;
    } catch (const cv::Exception& error) {
      // Not the library's want of memory.
      EXPECT_EQ(error.code, cv::Error::StsOutOfRange) << length;
    }
  }
}

TEST(TNVAugmentResize, HasTheToldValuesAtCreation) {
  const TNVAugmentResize task;
  EXPECT_EQ(task.getName(), "Resize");
  EXPECT_EQ(task.maxLength, 0);
  EXPECT_EQ(task.maxLengthRndMin, 0);
  EXPECT_EQ(task.maxLengthRndMax, 0);
  EXPECT_EQ(task.targetSize, cv::Size(512, 512));
}

TEST(TNVAugmentResize, ReadsItsParameters) {
  TNVAugmentResize task;
  readTask(task,
           "<TargetSize>416 208</TargetSize><MaxLength>1</MaxLength>"
           "<MaxLengthRndMin>2</MaxLengthRndMin><MaxLengthRndMax>3</MaxLengthRndMax>");
  EXPECT_EQ(task.targetSize, cv::Size(416, 208));
  EXPECT_EQ(task.maxLength, 1);
  EXPECT_EQ(task.maxLengthRndMin, 2);
  EXPECT_EQ(task.maxLengthRndMax, 3);
}

TEST(TNVAugmentResize, AbsentParametersAreZero) {
  TNVAugmentResize task;
  task.maxLength = 9;
  task.maxLengthRndMin = 9;
  task.maxLengthRndMax = 9;
  readTask(task, "");
  EXPECT_EQ(task.targetSize, cv::Size(0, 0));
  EXPECT_EQ(task.maxLength, 0);
  EXPECT_EQ(task.maxLengthRndMin, 0);
  EXPECT_EQ(task.maxLengthRndMax, 0);
}

TEST(TNVAugmentResize, ATargetSizeOfAnotherLengthIsZero) {
  for (const char* text : {"416", "1 2 3", ""}) {
    TNVAugmentResize task;
    readTask(task, std::string("<TargetSize>") + text + "</TargetSize>");
    EXPECT_EQ(task.targetSize, cv::Size(0, 0)) << text;
  }
}

TEST(TNVAugmentResize, WritesWhatItReads) {
  TNVAugmentResize task;
  task.maxLength = 4;
  task.maxLengthRndMin = 5;
  task.maxLengthRndMax = 6;
  task.targetSize = {7, 8};
  TNVAugmentResize copy;
  copyByFile(task, copy);
  EXPECT_THAT(writtenKeys(task),
              ElementsAre("TargetSize", "MaxLength", "MaxLengthRndMin", "MaxLengthRndMax"));
  EXPECT_EQ(copy.maxLength, 4);
  EXPECT_EQ(copy.maxLengthRndMin, 5);
  EXPECT_EQ(copy.maxLengthRndMax, 6);
  EXPECT_EQ(copy.targetSize, cv::Size(7, 8));
}

}  // namespace
