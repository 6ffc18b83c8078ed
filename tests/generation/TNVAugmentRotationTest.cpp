#include "generation/TNVAugmentRotation.h"

#include <memory>
#include <set>

#include <opencv2/imgproc.hpp>

#include "AugmentSupport.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Corners = std::vector<cv::Point2f>;

std::unique_ptr<TNVAugmentRotation> byAngle(int angle) {
  auto task = std::make_unique<TNVAugmentRotation>();
  task->rotate = angle;
  return task;
}

struct TurnRow {
  int angle;
  Corners target;  // of a picture of 64 by 48
  cv::Size size;
  std::vector<cv::Point2d> box;  // where (10, 5), (30, 5), (30, 15), (10, 15) go
};

class TNVAugmentRotationRows : public ::testing::TestWithParam<TurnRow> {};

TEST_P(TNVAugmentRotationRows, TurnsPictureAndEntries) {
  const TurnRow& row = GetParam();
  const TNVAugmentSample sample = makeSample(64, 48);
  const TNVAugmentSample result = byAngle(row.angle)->process(sample);
  const cv::Mat turn =
      cv::getPerspectiveTransform(Corners{{0, 0}, {64, 0}, {64, 48}, {0, 48}}, row.target);
  cv::Mat expected;
  cv::warpPerspective(sample.image, expected, turn, row.size, cv::INTER_LINEAR, cv::BORDER_REFLECT);
  EXPECT_TRUE(samePixels(expected, result.image));
  ASSERT_EQ(result.entries.size(), 2u);
  expectPoints(result.entries[0].points, row.box, 1e-6);
}

const TurnRow kUnturned{
    0, {{0, 0}, {64, 0}, {64, 48}, {0, 48}}, {64, 48}, {{10, 5}, {30, 5}, {30, 15}, {10, 15}}};

TurnRow unturned(int angle) {
  TurnRow row = kUnturned;
  row.angle = angle;
  return row;
}

INSTANTIATE_TEST_SUITE_P(Rows, TNVAugmentRotationRows,
                         ::testing::Values(TurnRow{90,
                                                   {{48, 0}, {48, 64}, {0, 64}, {0, 0}},
                                                   {48, 64},
                                                   {{43, 10}, {43, 30}, {33, 30}, {33, 10}}},
                                           TurnRow{180,
                                                   {{64, 48}, {0, 48}, {0, 0}, {64, 0}},
                                                   {64, 48},
                                                   {{54, 43}, {34, 43}, {34, 33}, {54, 33}}},
                                           TurnRow{270,
                                                   {{0, 64}, {0, 0}, {48, 0}, {48, 64}},
                                                   {48, 64},
                                                   {{5, 54}, {5, 34}, {15, 34}, {15, 54}}},
                                           unturned(0), unturned(45), unturned(-90),
                                           unturned(360)));

TEST(TNVAugmentRotation, EveryPixelIsWhereThePerspectiveOfTheCornersPutsIt) {
  cv::RNG random(20260311);
  std::vector<cv::Size> sizes{{1, 1}, {1, 2}, {2, 1}, {2, 2}, {1, 9}, {9, 1}, {1280, 3}, {3, 1023}};
  for (int i = 0; i < 40; ++i)
    sizes.emplace_back(random.uniform(1, 200), random.uniform(1, 200));
  for (const cv::Size& size : sizes) {
    TNVAugmentSample sample;
    sample.image.create(size, CV_8UC3);
    random.fill(sample.image, cv::RNG::UNIFORM, 0, 256);
    const auto width = static_cast<float>(size.width);
    const auto height = static_cast<float>(size.height);
    const Corners start{{0, 0}, {width, 0}, {width, height}, {0, height}};
    const std::vector<std::pair<int, Corners>> turns{
        {90, {{height, 0}, {height, width}, {0, width}, {0, 0}}},
        {180, {{width, height}, {0, height}, {0, 0}, {width, 0}}},
        {270, {{0, width}, {0, 0}, {height, 0}, {height, width}}}};
    for (const auto& [angle, corners] : turns) {
      cv::Mat expected;
      const cv::Size turned = angle == 180 ? size : cv::Size(size.height, size.width);
      cv::warpPerspective(sample.image, expected, cv::getPerspectiveTransform(start, corners),
                          turned, cv::INTER_LINEAR, cv::BORDER_REFLECT);
      EXPECT_TRUE(samePixels(expected, byAngle(angle)->process(sample).image)) << size << angle;
    }
  }
}

TEST(TNVAugmentRotation, AnotherAngleGivesACopyOfThePicture) {
  const TNVAugmentSample sample = makeSample(64, 48);
  const TNVAugmentSample result = byAngle(45)->process(sample);
  EXPECT_TRUE(samePixels(sample.image, result.image));
  EXPECT_NE(result.image.data, sample.image.data);
}

TEST(TNVAugmentRotation, AQuarterTurnMovesTheTopLeftToTheTopRight) {
  TNVAugmentSample sample = makeSample(64, 48);
  sample.image.setTo(cv::Scalar::all(0));
  sample.image(cv::Rect(0, 0, 20, 10)).setTo(cv::Scalar::all(255));
  const TNVAugmentSample result = byAngle(90)->process(sample);
  EXPECT_EQ(result.image.at<cv::Vec3b>(5, 43), cv::Vec3b::all(255));
  EXPECT_EQ(result.image.at<cv::Vec3b>(5, 4), cv::Vec3b::all(0));
  expectPoints(result.entries[1].points, {{48, 0}, {48, 4}, {46, 4}, {46, 0}}, 1e-6);
}

TEST(TNVAugmentRotation, KeepsWhatEntriesAreAndLosesSpecial) {
  const TNVAugmentSample result = byAngle(180)->process(makeSample(64, 48));
  EXPECT_EQ(result.entries[0].classIndex, 3);
  EXPECT_EQ(result.entries[1].classIndex, 7);
  EXPECT_EQ(result.entries[1].gen, "POI");
  EXPECT_EQ(result.entries[1].form, "Circle");
  EXPECT_FALSE(result.special);
}

TEST(TNVAugmentRotation, AnEntryWithoutPointsStays) {
  TNVAugmentSample sample = makeSample(64, 48);
  sample.entries[0].points.clear();
  EXPECT_THAT(byAngle(90)->process(sample).entries[0].points, IsEmpty());
}

TEST(TNVAugmentRotation, RandomAnglesGoBeforeTheFixedOne) {
  TNVAugmentRotation task;
  task.rotate = 180;
  task.rotateRnd = {90};
  EXPECT_EQ(task.process(makeSample(64, 48)).image.size(), cv::Size(48, 64));
}

TEST(TNVAugmentRotation, EachOfTheRandomAnglesIsDrawn) {
  TNVAugmentRotation task;
  task.rotateRnd = {0, 90, 180};
  TNVAugmentSample sample = makeSample(64, 48);
  std::set<int> seen;
  for (int i = 0; i < 200; ++i)
    seen.insert(cvRound(task.process(sample).entries[0].points[0].x));
  EXPECT_THAT(seen, ElementsAre(10, 43, 54));
}

TEST(TNVAugmentRotation, ReadsItsParameters) {
  TNVAugmentRotation task;
  EXPECT_EQ(task.getName(), "Rotation");
  EXPECT_EQ(task.rotate, 0);
  EXPECT_THAT(task.rotateRnd, IsEmpty());
  readTask(task, "<Rotate>90</Rotate><RotateRnd>0 180 270</RotateRnd>");
  EXPECT_EQ(task.rotate, 90);
  EXPECT_THAT(task.rotateRnd, ElementsAre(0, 180, 270));
}

TEST(TNVAugmentRotation, EmptyAndAbsentParametersAreTheDefaults) {
  for (const char* body : {"", "<RotateRnd></RotateRnd>"}) {
    TNVAugmentRotation task;
    task.rotate = 90;
    task.rotateRnd = {5};
    readTask(task, body);
    EXPECT_EQ(task.rotate, 0);
    EXPECT_THAT(task.rotateRnd, IsEmpty());
  }
}

TEST(TNVAugmentRotation, WritesWhatItReads) {
  for (const std::vector<int>& angles : {std::vector<int>{}, {90}, {90, 270}}) {
    TNVAugmentRotation task;
    task.rotate = 180;
    TNVAugmentRotation copy;
    task.rotateRnd = angles;
    EXPECT_THAT(writtenKeys(task), ElementsAre("Rotate", "RotateRnd"));
    copyByFile(task, copy);
    EXPECT_EQ(copy.rotate, 180);
    EXPECT_EQ(copy.rotateRnd, angles);
  }
}

}  // namespace
