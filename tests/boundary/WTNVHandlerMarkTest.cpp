#include "TNV_SampleBenchNative/WTNVHandlerMark.h"

#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "editing/TNVAssistGrabCut.h"
#include "marks/MarkTools.h"
#include "marks/TNVContour.h"
#include "marks/TNVMarkRect.h"
#include "support/LogCapture.h"
#include "support/ObjectScene.h"
#include "support/OpenProject.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kDesigned = 70;
constexpr int kWidth = 320;
constexpr int kHeight = 240;

int designedEvents() {
  return CallCounter<kDesigned>::count.exchange(0);
}

/// A mark handler on a train set whose picture shows one object of 120, 80, 80 x 80 pixels.
class Assist : public testing::Test {
 protected:
  Assist() {
    trainSet.image = scene.picture.clone();
    trainSet.imageLoaded = true;
    handler.trainSet = &trainSet;
    handler.project = builder.project().getNativeProject();
    wrapper.setCBMarkDesigned(CallCounter<kDesigned>::call);
    designedEvents();
  }

  /// 96, 56, 128 x 128 pixels.
  void designRoughBox() {
    ASSERT_TRUE(wrapper.designMark({{0.3, 56.0 / kHeight}, {0.7, 184.0 / kHeight}}, "Rect", {}));
    designedEvents();
  }

  TNVMarkRect& designed() { return static_cast<TNVMarkRect&>(*handler.markDesigned); }

  void expectUnchanged(const TNVMarkRect& before, int tag) {
    EXPECT_EQ(before.center, designed().center);
    EXPECT_EQ(before.size, designed().size);
    EXPECT_EQ(tag, designed().changeTag);
    EXPECT_EQ(0, designedEvents());
  }

  const ObjectScene scene = objectScene({kWidth, kHeight}, {160, 120}, {40, 40}, 4);
  ProjectBuilder builder;
  TNVTrainSet trainSet{"a.png", ""};
  TNVHandlerMark handler;
  WTNVHandlerMark wrapper{&handler};
};

}  // namespace

TEST_F(Assist, FitsTheDesignedMarkToTheBoxOfTheOutline) {
  designRoughBox();
  const int tag = designed().changeTag;
  cv::setRNGSeed(1);
  const auto outline =
      TNVAssistGrabCut().apply({0.3, 56.0 / kHeight, 0.4, 128.0 / kHeight}, scene.picture,
                               {{96, 56}, {224, 56}, {224, 184}, {96, 184}});
  const cv::Rect2d box = TNVContour::boundingRectOfPoints(outline);
  cv::setRNGSeed(1);
  wrapper.wApplyAssistDesignMark();
  EXPECT_EQ(1, designedEvents());
  EXPECT_NEAR(box.x + box.width / 2, designed().center.x, 1e-9);
  EXPECT_NEAR(box.y + box.height / 2, designed().center.y, 1e-9);
  EXPECT_NEAR(box.width, designed().size.x, 1e-9);
  EXPECT_NEAR(box.height, designed().size.y, 1e-9);
  EXPECT_NE(tag, designed().changeTag);
  // Two reduced pixels are three of the picture.
  EXPECT_NEAR(120, designed().getPixelRect({kWidth, kHeight}).x, 3);
  EXPECT_NEAR(80, designed().getPixelRect({kWidth, kHeight}).y, 3);
  EXPECT_NEAR(80, designed().getPixelRect({kWidth, kHeight}).width, 6);
  EXPECT_NEAR(80, designed().getPixelRect({kWidth, kHeight}).height, 6);
}

TEST_F(Assist, StartsFromTheOutlineOfTheMark) {
  // 110, 70, 100 x 100 pixels, of which the core is smaller than the object.
  const cv::Rect2d tight(110.0 / kWidth, 70.0 / kHeight, 100.0 / kWidth, 100.0 / kHeight);
  const auto widthFrom = [&](const TNVAssist::Points& contour) {
    cv::setRNGSeed(1);
    const auto outline = TNVAssistGrabCut().apply(tight, scene.picture, contour);
    return TNVContour::boundingRectOfPoints(outline).width;
  };
  const double width = widthFrom({{110, 70}, {210, 70}, {210, 170}, {110, 170}});
  ASSERT_GT(widthFrom({}), width + 0.01);
  wrapper.designMark({{tight.x, tight.y}, {tight.br().x, tight.br().y}}, "Rect", {});
  cv::setRNGSeed(1);
  wrapper.wApplyAssistDesignMark();
  EXPECT_NEAR(width, designed().size.x, 1e-9);
}

TEST_F(Assist, KeepsTheClassesAndAddsTheFittedMark) {
  designRoughBox();
  designed().classIdx = {4, 2};
  wrapper.wApplyAssistDesignMark();
  const TNVMarkRect fitted = designed();
  EXPECT_EQ(handler.markDesigned.get(), trainSet.designedMark);
  ASSERT_TRUE(wrapper.addDesignedMark());
  double x = 0;
  double y = 0;
  wrapper.getAllMarks().front().wGetRelCenter(x, y);
  EXPECT_EQ(fitted.center, cv::Point2d(x, y));
  EXPECT_THAT(wrapper.getAllMarks().front().wGetClassIdx(), ElementsAre(4, 2));
}

TEST_F(Assist, FetchesThePictureOfAnOpenProject) {
  builder.withPictures({"a.png"});
  cv::imwrite(builder.temp / "pictures/a.png", scene.picture);
  OpenProject open(builder);
  WTNVHandlerMark ofProject(&open.marks());
  ASSERT_TRUE(ofProject.designMark({{0.3, 0.23}, {0.7, 0.77}}, "Rect", {}));
  designedEvents();
  ofProject.wApplyAssistDesignMark();
  EXPECT_EQ(1, designedEvents());
  const cv::Rect fitted = open.marks().markDesigned->getPixelRect({kWidth, kHeight});
  EXPECT_NEAR(80, fitted.width, 6);
  EXPECT_NEAR(80, fitted.height, 6);
}

TEST_F(Assist, NoneDoesNothing) {
  designRoughBox();
  const TNVMarkRect before = designed();
  const int tag = designed().changeTag;
  wrapper.wSetAssist("None");
  const LogCapture log;
  wrapper.wApplyAssistDesignMark();
  expectUnchanged(before, tag);
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Assist, WithoutATrainSetALineIsLoggedWhateverTheAssist) {
  handler.trainSet = nullptr;
  const LogCapture log;
  wrapper.wApplyAssistDesignMark();
  wrapper.wSetAssist("None");
  wrapper.wApplyAssistDesignMark();
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVHandlerMark::applyAssistDesignMark: TrainSet is nullptr!",
                          "TNVHandlerMark::applyAssistDesignMark: TrainSet is nullptr!"));
  EXPECT_EQ(0, designedEvents());
}

TEST_F(Assist, WithoutADesignedMarkALineIsLogged) {
  const LogCapture log;
  wrapper.wApplyAssistDesignMark();
  EXPECT_THAT(log.lines(), ElementsAre("TNVHandlerMark::applyAssistDesignMark: No mark designed!"));
  EXPECT_EQ(0, designedEvents());
}

TEST_F(Assist, WhatFindsNothingChangesNothing) {
  designRoughBox();
  // On plain ground there is no object.
  trainSet.image.setTo(cv::Scalar(80, 90, 100));
  const TNVMarkRect before = designed();
  const int tag = designed().changeTag;
  const LogCapture log;
  wrapper.wApplyAssistDesignMark();
  expectUnchanged(before, tag);
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Assist, MarkOnWhichTheLibraryThrowsStaysAsItIs) {
  struct Row {
    const char* what;
    cv::Point2d center;
    cv::Point2d size;
  };
  const double nan = std::nan("");
  const Row rows[] = {{"off the picture", {3, 0.5}, {0.2, 0.2}},
                      {"whole picture", {0.5, 0.5}, {1, 1}},
                      {"larger than the picture", {0.5, 0.5}, {50, 50}},
                      {"without size", {0.5, 0.5}, {0, 0}},
                      {"negative size", {0.5, 0.5}, {-0.2, -0.2}},
                      {"too thin for a core", {0.5, 0.5}, {0.5, 1e-4}},
                      {"no number", {nan, nan}, {nan, nan}}};
  for (const Row& row : rows) {
    designRoughBox();
    designed().center = row.center;
    designed().size = row.size;
    const int tag = designed().changeTag;
    const LogCapture log;
    wrapper.wApplyAssistDesignMark();
    EXPECT_EQ(tag, designed().changeTag) << row.what;
    EXPECT_EQ(0, designedEvents()) << row.what;
    EXPECT_THAT(
        log.lines(),
        ElementsAre("TNVHandlerMark::applyAssistDesignMark: Can not apply assist on this mark!"))
        << row.what;
  }
}

TEST_F(Assist, HostileMarksAreNoFailure) {
  for (const double number : hostileNumbers()) {
    for (const bool both : {true, false}) {
      designRoughBox();
      designed().size = {number, both ? number : 0.4};
      EXPECT_NO_THROW(wrapper.wApplyAssistDesignMark()) << number;
      designRoughBox();
      designed().center = {both ? number : 0.5, number};
      EXPECT_NO_THROW(wrapper.wApplyAssistDesignMark()) << number;
    }
  }
}

TEST_F(Assist, UnreadablePictureChangesNothing) {
  designRoughBox();
  const TNVMarkRect before = designed();
  const int tag = designed().changeTag;
  trainSet.image = cv::Mat();
  const LogCapture log;
  wrapper.wApplyAssistDesignMark();
  expectUnchanged(before, tag);
  EXPECT_THAT(
      log.lines(),
      ElementsAre("TNVHandlerMark::applyAssistDesignMark: Can not apply assist on this mark!"));
}

TEST_F(Assist, LastDesignPointOnlyCallsForAPreview) {
  designRoughBox();
  const TNVMarkRect before = designed();
  const int tag = designed().changeTag;
  const LogCapture log;
  wrapper.wApplyAssistLastDesignPoint();
  EXPECT_EQ(1, designedEvents());
  expectUnchanged(before, tag);
  wrapper.wSetAssist("None");
  handler.trainSet = nullptr;
  wrapper.wApplyAssistLastDesignPoint();
  EXPECT_EQ(1, designedEvents());
  EXPECT_THAT(log.lines(), IsEmpty());
}
