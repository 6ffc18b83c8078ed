#include "TNV_SampleBenchNative/WTNVHandlerMark.h"

#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "editing/TNVAssistGrabCut.h"
#include "marks/MarkTools.h"
#include "marks/TNVContour.h"
#include "marks/TNVMarkLine.h"
#include "marks/TNVMarkPolyLine.h"
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

TEST_F(Assist, ClosedPathTakesTheOutlineAsItIs) {
  // Its box reaches from 96, 56 to 224, 184, thus over 129 pixels each way.
  const TNVAssist::Points corners{{96, 80}, {130, 56}, {224, 60}, {220, 184}, {100, 180}};
  std::vector<std::vector<double>> clicked;
  for (const cv::Point2d& corner : corners)
    clicked.push_back({corner.x / kWidth, corner.y / kHeight});
  clicked.push_back({0.9, 0.9});  // the cursor
  ASSERT_TRUE(wrapper.designMark(clicked, "PolyLine Closed", {}));
  designedEvents();
  cv::setRNGSeed(1);
  const auto outline = TNVAssistGrabCut().apply(
      {0.5 - 64.5 / kWidth, 0.5 - 64.5 / kHeight, 129.0 / kWidth, 129.0 / kHeight}, scene.picture,
      corners);
  ASSERT_GT(outline.size(), 4U);
  cv::setRNGSeed(1);
  wrapper.wApplyAssistDesignMark();
  EXPECT_EQ(1, designedEvents());
  const auto& path = dynamic_cast<TNVMarkPolyLine&>(*handler.markDesigned);
  ASSERT_EQ(outline.size(), path.polyPoints.size());
  for (std::size_t i = 0; i < outline.size(); ++i)
    EXPECT_LT(cv::norm(outline[i] - path.polyPoints[i]), 1e-12) << i;
  EXPECT_EQ(cv::Point2d(0.5, 0.5), path.center);
}

TEST_F(Assist, LineStartsFromItsBoxAlone) {
  // 96, 56 to 224, 184, thus over 129 pixels each way.
  ASSERT_TRUE(wrapper.designMark({{0.3, 56.0 / kHeight}, {0.7, 184.0 / kHeight}}, "Line", {}));
  designedEvents();
  cv::setRNGSeed(1);
  const auto outline = TNVAssistGrabCut().apply(
      {0.5 - 64.5 / kWidth, 0.5 - 64.5 / kHeight, 129.0 / kWidth, 129.0 / kHeight}, scene.picture,
      {});
  const cv::Rect2d box = TNVContour::boundingRectOfPoints(outline);
  cv::setRNGSeed(1);
  wrapper.wApplyAssistDesignMark();
  EXPECT_EQ(1, designedEvents());
  const auto& line = dynamic_cast<TNVMarkLine&>(*handler.markDesigned);
  EXPECT_NEAR(box.x + box.width / 2, line.center.x, 1e-9);
  EXPECT_NEAR(box.y + box.height / 2, line.center.y, 1e-9);
  // The ends lay 128 of 129 pixels apart and do so still, at the new size.
  EXPECT_NEAR(box.width * 128 / 129, line.pointB.x - line.pointA.x, 1e-9);
  EXPECT_NEAR(box.height * 128 / 129, line.pointB.y - line.pointA.y, 1e-9);
}

TEST_F(Assist, TwoPointsAreEnoughToFit) {
  // Neither enlarged nor reduced. Of the steps of a slanted bar no corner is off its middle line by
  // half a pixel, so that of its outline only the two ends are left.
  trainSet.image = cv::Mat(128, 128, CV_8UC3, cv::Scalar(20, 200, 20));
  for (const cv::Point& pixel : {cv::Point(60, 60), {61, 60}, {61, 61}, {62, 61}})
    trainSet.image.at<cv::Vec3b>(pixel) = {200, 20, 200};
  const double side = 128;
  cv::setRNGSeed(1);
  ASSERT_EQ(2U, TNVAssistGrabCut()
                    .apply({20.5 / side, 20.5 / side, 86 / side, 86 / side}, trainSet.image, {})
                    .size());
  ASSERT_TRUE(wrapper.designMark({{21 / side, 21 / side}, {106 / side, 106 / side}}, "Line", {}));
  designedEvents();
  cv::setRNGSeed(1);
  wrapper.wApplyAssistDesignMark();
  EXPECT_EQ(1, designedEvents());
  EXPECT_NEAR(61 / side, handler.markDesigned->center.x, 1e-9);
  EXPECT_NEAR(60.5 / side, handler.markDesigned->center.y, 1e-9);
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
