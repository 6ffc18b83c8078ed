#include "TNV_SampleBenchNative/WTNVHandlerImageView.h"

#include <climits>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "foundation/TNVDirectory.h"
#include "marks/MarkTools.h"
#include "marks/TNVMarkRect.h"
#include "support/LogCapture.h"
#include "support/OpenProject.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const cv::Scalar kWhite(255, 255, 255);

constexpr int kFired = 60;

/// What `wGetHelperImage` gives.
struct HandedOut {
  unsigned char* data = nullptr;
  int width = -1;
  int height = -1;
  int channels = -1;

  cv::Mat picture() const { return cv::Mat(height, width, CV_8UC3, data); }
  bool isNothing() const { return !data && width == 0 && height == 0 && channels == 0; }
};

class HelperOfTheView : public testing::Test {
 protected:
  HelperOfTheView() {
    trainSet.image = picture.clone();
    trainSet.imageLoaded = true;
    view.bind(&trainSet);
    CallCounter<kFired>::count = 0;
  }

  HandedOut handedOut() {
    unsigned char byte = 0;
    HandedOut out{&byte, -1, -1, -1};
    wrapper.wGetHelperImage(&out.data, &out.width, &out.height, &out.channels);
    return out;
  }

  const cv::Mat picture = patternedPicture(400, 300);
  TNVTrainSet trainSet{"a.png", ""};
  TNVHandlerImageView view;
  WTNVHandlerImageView wrapper{&view};
  TempDirectory temp;
};

}  // namespace

TEST_F(HelperOfTheView, ShowsTheSurroundingsOfTheCross) {
  wrapper.wSetCrossPosition(0.401, 0.6);  // 160.4 and 180
  const HandedOut seen = handedOut();
  cv::Mat expected;
  cv::resize(picture({96, 116, 128, 128}), expected, {256, 256}, 0, 0, cv::INTER_LINEAR);
  cv::line(expected, {128, 256}, {128, 0}, kWhite, 1, cv::LINE_AA);
  cv::line(expected, {256, 128}, {0, 128}, kWhite, 1, cv::LINE_AA);
  EXPECT_EQ(3, seen.channels);
  EXPECT_TRUE(samePixels(expected, seen.picture()));
  EXPECT_EQ(view.helper.image.data, seen.data);
  EXPECT_TRUE(samePixels(picture, trainSet.image));
}

TEST_F(HelperOfTheView, CentreIsRoundedToTheNearestEven) {
  wrapper.setHelperShowCross(false);
  wrapper.setHelperWindowSize(10, 10);
  wrapper.setHelperZoomLevel(1.0);
  wrapper.wSetCrossPosition(0.25, 0.5);
  // 100.5, 101.5 and 100.75.
  for (const auto& [width, column] : {std::pair{402, 100}, {406, 102}, {403, 101}}) {
    const cv::Mat wide = patternedPicture(width, 300);
    trainSet.image = wide;
    view.bind(&trainSet);
    EXPECT_TRUE(samePixels(wide({column - 5, 145, 10, 10}).clone(), handedOut().picture()))
        << width;
  }
  for (const auto& [height, row] : {std::pair{302, 151}, {306, 153}, {303, 152}, {301, 150}}) {
    const cv::Mat high = patternedPicture(400, height);
    trainSet.image = high;
    view.bind(&trainSet);
    EXPECT_TRUE(samePixels(high({95, row - 5, 10, 10}).clone(), handedOut().picture())) << height;
  }
}

TEST_F(HelperOfTheView, CornerOfThePictureLiesInTheMiddleOfBlack) {
  wrapper.wSetCrossPosition(0, 0);
  wrapper.setHelperShowCross(false);
  const cv::Mat seen = handedOut().picture();
  ASSERT_EQ(cv::Size(256, 256), seen.size());
  // The picture starts at 128; one pixel before it, interpolation mixes the two.
  EXPECT_EQ(0, cv::norm(seen({0, 0, 256, 127}), cv::NORM_INF));
  EXPECT_EQ(0, cv::norm(seen({0, 0, 127, 256}), cv::NORM_INF));
  cv::Mat expected(128, 128, CV_8UC3, cv::Scalar());
  picture({0, 0, 64, 64}).copyTo(expected({64, 64, 64, 64}));
  cv::resize(expected, expected, {256, 256}, 0, 0, cv::INTER_LINEAR);
  EXPECT_TRUE(samePixels(expected, seen));
}

TEST_F(HelperOfTheView, FarCornerLiesInTheMiddleToo) {
  wrapper.wSetCrossPosition(1, 1);
  wrapper.setHelperShowCross(false);
  const cv::Mat seen = handedOut().picture();
  cv::Mat expected(128, 128, CV_8UC3, cv::Scalar());
  picture({336, 236, 64, 64}).copyTo(expected({0, 0, 64, 64}));
  cv::resize(expected, expected, {256, 256}, 0, 0, cv::INTER_LINEAR);
  EXPECT_TRUE(samePixels(expected, seen));
}

TEST_F(HelperOfTheView, CrossKeepsItsColourWhateverTheStyle) {
  wrapper.setHelperShowCross(true);
  const cv::Mat before = handedOut().picture().clone();
  wrapper.setCrossStyle("Black Circle");
  EXPECT_TRUE(samePixels(before, handedOut().picture()));
  // Smoothed, so that a little of the picture shines through.
  for (int channel = 0; channel < 3; ++channel)
    EXPECT_GT(before.at<cv::Vec3b>(10, 128)[channel], 230);
}

TEST_F(HelperOfTheView, ModesByName) {
  EXPECT_THAT(wrapper.getHelperModes(),
              ElementsAre("Normal", "Gray", "Improve", "Edge", "Edge x2"));
  for (const std::string& mode : wrapper.getHelperModes()) {
    wrapper.setHelperMode(mode);
    EXPECT_EQ(mode, wrapper.getHelperMode());
  }
  for (const char* unknown : {"Improved", "gray", ""}) {
    wrapper.setHelperMode("Gray");
    wrapper.setHelperMode(unknown);
    EXPECT_EQ("Normal", wrapper.getHelperMode()) << unknown;
    EXPECT_EQ(1, view.helper.mode.value);
  }
}

TEST_F(HelperOfTheView, ModeIsThatOfThePicture) {
  wrapper.setHelperMode("Gray");
  wrapper.setHelperShowCross(false);
  wrapper.setHelperZoomLevel(1.0);
  cv::Mat expected;
  cv::cvtColor(picture({72, 22, 256, 256}), expected, cv::COLOR_BGR2GRAY);
  cv::cvtColor(expected, expected, cv::COLOR_GRAY2BGR);
  EXPECT_TRUE(samePixels(expected, handedOut().picture()));
}

TEST_F(HelperOfTheView, GettersGiveWhatWasSet) {
  int width = 0;
  int height = 0;
  wrapper.getHelperWindowSize(width, height);
  EXPECT_THAT((std::vector{width, height}), ElementsAre(256, 256));
  EXPECT_EQ(2.0, wrapper.getHelperZoomLevel());
  EXPECT_TRUE(wrapper.getHelperShowCross());
  EXPECT_EQ("Normal", wrapper.getHelperMode());
  wrapper.setHelperWindowSize(-3, 0);
  wrapper.setHelperZoomLevel(-1.5);
  wrapper.setHelperShowCross(false);
  wrapper.getHelperWindowSize(width, height);
  EXPECT_THAT((std::vector{width, height}), ElementsAre(-3, 0));
  EXPECT_EQ(-1.5, wrapper.getHelperZoomLevel());
  EXPECT_FALSE(wrapper.getHelperShowCross());
  wrapper.setHelperZoomLevel(std::nan(""));
  EXPECT_TRUE(std::isnan(wrapper.getHelperZoomLevel()));
}

TEST_F(HelperOfTheView, EverySetterFiresItsEventAlone) {
  using W = WTNVHandlerImageView;
  struct Row {
    const char* name;
    void (W::*setCallback)(void (*)());
    void (*set)(W& wrapper);
  };
  const Row rows[] = {
      {"zoom", &W::setCBHelperZoomLevelChanged, [](W& w) { w.setHelperZoomLevel(2.0); }},
      {"mode", &W::setCBHelperModeChanged, [](W& w) { w.setHelperMode("Normal"); }},
      {"window", &W::setCBHelperWndSizeChanged, [](W& w) { w.setHelperWindowSize(256, 256); }},
      {"cross", &W::setCBHelperShowCrossChanged, [](W& w) { w.setHelperShowCross(true); }},
  };
  for (const Row& heard : rows) {
    (wrapper.*heard.setCallback)(CallCounter<kFired>::call);
    for (const Row& row : rows) {
      row.set(wrapper);
      EXPECT_EQ(row.name == heard.name ? 1 : 0, CallCounter<kFired>::count.exchange(0)) << row.name;
    }
    (wrapper.*heard.setCallback)(nullptr);
  }
}

TEST_F(HelperOfTheView, SettersAndRenderingLeaveTheMarksCached) {
  view.project = nullptr;
  view.cacheDirty = false;
  wrapper.setHelperMode("Edge");
  wrapper.setHelperZoomLevel(3);
  handedOut();
  EXPECT_FALSE(view.cacheDirty);
}

TEST_F(HelperOfTheView, GuardsSpeakInTheirOrder) {
  const LogCapture log;
  TNVHandlerImageView empty;
  empty.crossX = 1.5;
  EXPECT_TRUE(empty.getHelperImage().empty());
  empty.crossX = 0.5;
  empty.crossY = -0.1;
  EXPECT_TRUE(empty.getHelperImage().empty());
  empty.crossY = std::nan("");
  EXPECT_TRUE(empty.getHelperImage().empty());
  EXPECT_THAT(log.lines(), IsEmpty());
  empty.crossY = 0.5;
  EXPECT_TRUE(empty.getHelperImage().empty());
  empty.trainSet = &trainSet;
  EXPECT_TRUE(empty.getHelperImage().empty());
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVHandlerImageView::getZoomImage(): Current TrainSet is null!",
                          "TNVHandlerImageView::getZoomImage(): Current image is empty!"));
}

TEST_F(HelperOfTheView, UnusableZoomAndWindowGiveNothingAndALine) {
  std::vector<double> zooms = hostileNumbers();
  std::erase(zooms, 5e-324);
  zooms.insert(zooms.end(), {-2.0, 1e-9, 1e-300, 5e-324});
  const std::pair<int, int> windows[] = {{0, 10},      {10, 0},           {0, 0},
                                         {-5, 10},     {-5, -5},          {INT_MIN, INT_MIN},
                                         {100, -9999}, {INT_MAX, INT_MAX}};
  for (const double zoom : zooms) {
    const LogCapture log;
    wrapper.setHelperZoomLevel(zoom);
    EXPECT_TRUE(handedOut().isNothing()) << zoom;
    EXPECT_THAT(log.lines(), testing::SizeIs(1)) << zoom;
  }
  for (const double zoom : {1.0, 2.0, 1e6}) {
    for (const auto& [width, height] : windows) {
      const LogCapture log;
      wrapper.setHelperZoomLevel(zoom);
      wrapper.setHelperWindowSize(width, height);
      EXPECT_TRUE(handedOut().isNothing()) << width << " " << height;
      EXPECT_THAT(log.lines(),
                  ElementsAre("TNVHandlerImageView::getZoomImage(): Can not render, zoom or window "
                              "size is not usable!"));
    }
  }
  wrapper.setHelperZoomLevel(2.0);
  wrapper.setHelperWindowSize(20, 30);
  EXPECT_EQ(cv::Size(20, 30), handedOut().picture().size());
}

TEST_F(HelperOfTheView, HugeWindowAtAHugeZoomIsRefusedBeforeItFillsTheMemory) {
  wrapper.setHelperWindowSize(100'000, 100'000);
  wrapper.setHelperZoomLevel(1000);
  const LogCapture log;
  EXPECT_TRUE(handedOut().isNothing());
}

TEST_F(HelperOfTheView, SavesTheRegionOfAMark) {
  // 80, 150, 80 x 60 pixels.
  TNVMarkRect mark({0.2, 0.5}, {0.4, 0.7}, false);
  const std::string directory = temp.path() + "deep/regions/";
  EXPECT_EQ(directory + "one.png", wrapper.wSaveROIImage(WTNVMark(&mark), directory, "one.png"));
  EXPECT_TRUE(samePixels(picture({80, 150, 80, 60}).clone(), cv::imread(directory + "one.png")));
  EXPECT_EQ(temp.path() + "two.png",
            wrapper.wSaveROIImage(WTNVMark(&mark), temp.path(), "two.png"));
  EXPECT_TRUE(samePixels(picture({80, 150, 80, 60}).clone(), cv::imread(temp.path() + "two.png")));
}

TEST_F(HelperOfTheView, SavedRegionIsBlackOutsideThePicture) {
  TNVMarkRect mark({-0.1, 0.5}, {0.1, 0.7}, false);
  const std::string path = wrapper.wSaveROIImage(WTNVMark(&mark), temp.path(), "one.png");
  cv::Mat expected(60, 80, CV_8UC3, cv::Scalar());
  picture({0, 150, 40, 60}).copyTo(expected({40, 0, 40, 60}));
  EXPECT_TRUE(samePixels(expected, cv::imread(path)));
}

TEST_F(HelperOfTheView, DirectoryIsFollowedByTheNameDirectly) {
  TNVMarkRect mark({0.2, 0.5}, {0.4, 0.7}, false);
  temp.makeDirectory("a");
  EXPECT_EQ(temp.path() + "ab.png", wrapper.wSaveROIImage(WTNVMark(&mark), temp / "a", "b.png"));
  EXPECT_FALSE(cv::imread(temp / "ab.png").empty());
}

TEST_F(HelperOfTheView, SavedRegionWithoutANameGetsAUniqueOne) {
  TNVMarkRect mark({0.2, 0.5}, {0.4, 0.7}, false);
  const std::string first = wrapper.wSaveROIImage(WTNVMark(&mark), temp.path(), "");
  const std::string second = wrapper.wSaveROIImage(WTNVMark(&mark), temp.path(), "");
  EXPECT_NE(first, second);
  for (const std::string& path : {first, second}) {
    EXPECT_TRUE(path.starts_with(temp.path()) && path.ends_with(".jpg")) << path;
    EXPECT_EQ(cv::Size(80, 60), cv::imread(path).size()) << path;
  }
}

TEST_F(HelperOfTheView, SavingWithoutAMarkIsLogged) {
  const LogCapture log;
  EXPECT_EQ("", wrapper.wSaveROIImage(WTNVMark(), temp / "not made/", "one.png"));
  EXPECT_THAT(log.lines(), ElementsAre("saveROIImage::getROIImage: Mark is nullptr!"));
  EXPECT_FALSE(TNVDirectory::exists(temp / "not made/"));
}

TEST_F(HelperOfTheView, SavingWhereNoDirectoryCanBeIsLogged) {
  TNVMarkRect mark({0.2, 0.5}, {0.4, 0.7}, false);
  const std::string below = temp.write("file", "") + "/below/";
  const LogCapture log;
  EXPECT_EQ("", wrapper.wSaveROIImage(WTNVMark(&mark), below, "one.png"));
  EXPECT_THAT(
      log.lines(),
      ElementsAre("TNVDirectory::createDirectory: Error while creating directories!",
                  "TNVProject::saveROIImage: Can not create directory at '" + below + "'!"));
}

TEST_F(HelperOfTheView, WhatCannotBeWrittenIsLoggedAndNotThrown) {
  const TNVMarkRect mark({0.2, 0.5}, {0.4, 0.7}, false);
  struct Row {
    const char* what;
    TNVMarkRect mark;
    std::string name;
  };
  std::vector<Row> rows{{"unknown extension", mark, "one.nothing"},
                        {"no extension", mark, "one"},
                        {"no pixel", TNVMarkRect({0.2, 0.5}, {0.2, 0.7}, false), "one.png"},
                        {"name too long", mark, std::string(5000, 'x') + ".nothing"}};
  for (const double number : hostileNumbers()) {
    TNVMarkRect hostile({0.2, 0.5}, {0.4, 0.7}, false);
    hostile.size = {number, number};
    rows.push_back({"hostile size", hostile, "one.png"});
  }
  for (Row& row : rows) {
    const LogCapture log;
    EXPECT_EQ("", wrapper.wSaveROIImage(WTNVMark(&row.mark), temp.path(), row.name)) << row.what;
    EXPECT_THAT(log.lines(),
                ElementsAre("TNVHandlerImageView::saveROIImage: Can not save the region to '" +
                            temp.path() + row.name + "'!"))
        << row.what;
  }
  EXPECT_THAT(TNVDirectory::readFileNames(temp.path(), {}), IsEmpty());
}

TEST_F(HelperOfTheView, WhetherTheDiskTookTheRegionIsNotChecked) {
  TNVMarkRect mark({0.2, 0.5}, {0.4, 0.7}, false);
  for (const std::string name : {"missing/one.png", "missing/one.jpg"}) {
    EXPECT_EQ(temp.path() + name, wrapper.wSaveROIImage(WTNVMark(&mark), temp.path(), name));
    EXPECT_FALSE(TNVDirectory::exists(temp.path() + name));
  }
}
