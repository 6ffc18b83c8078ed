#include "editing/TNVHandlerImageView.h"

#include <cmath>
#include <limits>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "TNV_SampleBenchNative/WTNVHandlerImageView.h"
#include "marks/TNVMarkRect.h"
#include "support/LogCapture.h"
#include "support/OpenProject.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr int kAny = 40;
constexpr int kWidth = 400;
constexpr int kHeight = 300;

const cv::Scalar kWhite(255, 255, 255);
const cv::Scalar kRed(0, 0, 255);

class TNVHandlerImageViewTest : public testing::Test {
 protected:
  TNVHandlerImageViewTest() : picture(patternedPicture(kWidth, kHeight)) {
    builder.withClasses({"a", "b"});
    view.project = builder.project().getNativeProject();
    trainSet.image = picture.clone();
    trainSet.imageLoaded = true;
    view.bind(&trainSet);
    CallCounter<kAny>::count = 0;
  }

  TNVMark* box(double x, double y, std::vector<int> classIdx = {}) {
    TNVMark* mark = trainSet.addMark(TNVMarkRect({x, y}, {x + 0.2, y + 0.2}, false));
    mark->classIdx = std::move(classIdx);
    return mark;
  }

  /// What a picture with these marks has to look like, without cross and design.
  cv::Mat drawn(cv::Size size, const std::vector<TNVMark*>& marks) {
    cv::Mat expected;
    cv::resize(picture, expected, size, 0, 0, cv::INTER_LINEAR);
    for (TNVMark* mark : marks) {
      mark->draw(expected, picture.size(), view.markStyle, view.markDrawInfo,
                 view.project->classPointers(), false);
    }
    return expected;
  }

  static void cross(cv::Mat& image, int x, int y, const cv::Scalar& colour = kWhite) {
    cv::line(image, {x, image.rows}, {x, 0}, colour, 1, cv::LINE_AA);
    cv::line(image, {image.cols, y}, {0, y}, colour, 1, cv::LINE_AA);
  }

  ProjectBuilder builder;
  cv::Mat picture;
  TNVTrainSet trainSet{"a.png", ""};
  TNVHandlerImageView view;
};

}  // namespace

TEST_F(TNVHandlerImageViewTest, StartsWithItsDefaults) {
  const TNVHandlerImageView fresh;
  EXPECT_EQ(1.0, fresh.zoomLevel);
  EXPECT_FALSE(fresh.zoomToSize);
  EXPECT_EQ(0.5, fresh.crossX);
  EXPECT_EQ(0.5, fresh.crossY);
  EXPECT_EQ("White", fresh.markStyle.name);
  EXPECT_TRUE(fresh.markStyle.drawFilled);
  EXPECT_EQ("DNN Class ID", fresh.markDrawInfo.name);
  EXPECT_EQ(1, fresh.markDrawInfo.value);
  EXPECT_EQ("White Cross", fresh.crossStyle.name);
  EXPECT_TRUE(fresh.drawMarkFilled);
  EXPECT_THAT(fresh.drawOnlyDNNs, IsEmpty());
  EXPECT_TRUE(fresh.renderCache);
  EXPECT_TRUE(fresh.cacheDirty);
  EXPECT_FALSE(fresh.reloadImage);
}

TEST_F(TNVHandlerImageViewTest, GuardsSpeakInTheirOrder) {
  TNVHandlerImageView empty;
  const LogCapture log;
  EXPECT_TRUE(empty.getARImage().empty());
  empty.project = view.project;
  EXPECT_TRUE(empty.getARImage().empty());
  empty.trainSet = &trainSet;
  EXPECT_TRUE(empty.getARImage().empty());
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVHandlerImageView::getARImage(): Current Project is null!",
                          "TNVHandlerImageView::getARImage(): Current TrainSet is null!",
                          "TNVHandlerImageView::getARImage(): Current image is empty!"));
}

TEST_F(TNVHandlerImageViewTest, NothingToRenderHandsOutNullAndZeros) {
  ProjectBuilder withoutPictures;
  OpenProject open(withoutPictures);
  WTNVHandlerImageView wrapper(&open.view());
  unsigned char byte = 0;
  unsigned char* data = &byte;
  int width = 1;
  int height = 1;
  int channels = 1;
  const LogCapture log;
  wrapper.wGetARImage(&data, &width, &height, &channels);
  EXPECT_EQ(nullptr, data);
  EXPECT_THAT((std::vector{width, height, channels}), ElementsAre(0, 0, 0));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVHandlerImageView::getARImage(): Current TrainSet is null!"));
}

TEST_F(TNVHandlerImageViewTest, PictureIsHandedOutWithoutACopy) {
  WTNVHandlerImageView wrapper(&view);
  unsigned char* data = nullptr;
  int width = 0;
  int height = 0;
  int channels = 0;
  wrapper.wGetARImage(&data, &width, &height, &channels);
  EXPECT_EQ(view.imgAR.data, data);
  EXPECT_THAT((std::vector{width, height, channels}), ElementsAre(kWidth, kHeight, 3));
  EXPECT_TRUE(view.imgAR.isContinuous());
}

TEST_F(TNVHandlerImageViewTest, PictureWithMarksAndCross) {
  TNVMark* first = box(0.1, 0.1, {0});
  TNVMark* second = box(0.2, 0.2, {1});
  cv::Mat expected = drawn({kWidth, kHeight}, {first, second});
  cross(expected, 200, 150);
  EXPECT_TRUE(samePixels(expected, view.getARImage()));
}

TEST_F(TNVHandlerImageViewTest, SourceStaysUntouched) {
  box(0.1, 0.1, {0});
  view.getARImage();
  EXPECT_TRUE(samePixels(picture, trainSet.image));
}

TEST_F(TNVHandlerImageViewTest, ZoomScalesThePictureAndTheMarks) {
  TNVMark* mark = box(0.1, 0.1);
  view.setZoomLevel(0.333);
  const cv::Size size(133, 100);
  cv::Mat expected = drawn(size, {mark});
  cross(expected, 66, 50);
  EXPECT_TRUE(samePixels(expected, view.getARImage()));
  EXPECT_EQ(size, view.getARImageSize());
}

TEST_F(TNVHandlerImageViewTest, TinyZoomIsRaisedByTheRender) {
  WTNVHandlerImageView wrapper(&view);
  int width = 0;
  int height = 0;
  for (const double zoom : {0.01, 0.0, -3.0}) {
    wrapper.wSetZoomLevel(zoom);
    wrapper.wGetARImageSize(width, height);
    EXPECT_EQ(static_cast<int>(std::lrint(kWidth * zoom)), width);
    EXPECT_EQ(zoom, wrapper.wGetZoomLevel());
    EXPECT_EQ(cv::Size(40, 30), view.getARImage().size());
    EXPECT_EQ(0.1, wrapper.wGetZoomLevel());
  }
  wrapper.wSetZoomLevel(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(cv::Size(40, 30), view.getARImage().size());
}

TEST_F(TNVHandlerImageViewTest, FittingIsBoundedByTheLargestZoom) {
  view.setZoomLevel(800, 600, 1.0);
  EXPECT_EQ(1.0, view.zoomLevel);
  EXPECT_TRUE(view.zoomToSize);
  view.setZoomLevel(800, 600, 5.0);
  EXPECT_EQ(2.0, view.zoomLevel);
  view.setZoomLevel(1.0);
  EXPECT_FALSE(view.zoomToSize);
}

TEST_F(TNVHandlerImageViewTest, FittingTakesTheTighterSide) {
  view.setZoomLevel(200, 300, 5.0);
  EXPECT_EQ(0.5, view.zoomLevel);
  view.setZoomLevel(400, 75, 5.0);
  EXPECT_EQ(0.25, view.zoomLevel);
}

TEST_F(TNVHandlerImageViewTest, FittingWithoutAPictureEnds) {
  TNVHandlerImageView empty;
  EXPECT_NO_THROW(empty.setZoomLevel(100, 100, 2.0));
  EXPECT_NO_THROW(view.setZoomLevel(0, 0, 2.0));
}

TEST_F(TNVHandlerImageViewTest, CrossIsHeldInThePicture) {
  WTNVHandlerImageView wrapper(&view);
  wrapper.wSetCrossPosition(-1, 2);
  double x = 9;
  double y = 9;
  wrapper.wGetCrossPositionRelative(x, y);
  EXPECT_EQ(0.0, x);
  EXPECT_EQ(1.0, y);
  wrapper.wSetCrossPosition(std::nan(""), 0.25);
  wrapper.wGetCrossPositionRelative(x, y);
  EXPECT_EQ(0.0, x);
  EXPECT_EQ(0.25, y);
}

TEST_F(TNVHandlerImageViewTest, CrossPositionInPixels) {
  WTNVHandlerImageView wrapper(&view);
  double x = 9;
  double y = 9;
  wrapper.wSetCrossPosition(0.251, 0.5);
  wrapper.wGetCrossPositionPixelAbsolute(x, y);
  EXPECT_DOUBLE_EQ(100.4, x);
  EXPECT_DOUBLE_EQ(150.0, y);
  wrapper.wGetCrossPositionPixelRelative(x, y);
  EXPECT_EQ(0.0, x);
  EXPECT_EQ(0.0, y);
  wrapper.wSetZoomLevel(0.5);
  view.getARImage();
  wrapper.wGetCrossPositionPixelRelative(x, y);
  EXPECT_DOUBLE_EQ(50.2, x);
  EXPECT_DOUBLE_EQ(75.0, y);
  wrapper.wGetRelativePixel(x, y);
  EXPECT_DOUBLE_EQ(1.0 / kWidth, x);
  EXPECT_DOUBLE_EQ(1.0 / kHeight, y);
}

TEST_F(TNVHandlerImageViewTest, WithoutAPicturePixelsAreZero) {
  TNVHandlerImageView empty;
  WTNVHandlerImageView wrapper(&empty);
  double x = 9;
  double y = 9;
  wrapper.wGetCrossPositionPixelAbsolute(x, y);
  EXPECT_EQ(0.0, x + y);
  x = y = 9;
  wrapper.wGetRelativePixel(x, y);
  EXPECT_EQ(0.0, x + y);
}

TEST_F(TNVHandlerImageViewTest, CrossStyles) {
  const auto rendered = [&](const char* style) {
    view.setCrossStyle(style);
    return view.getARImage().clone();
  };
  for (const auto& [style, colour] :
       {std::pair{"White Cross", kWhite}, std::pair{"Black Cross", cv::Scalar(0, 0, 0)}}) {
    cv::Mat expected = picture.clone();
    cross(expected, 200, 150, colour);
    EXPECT_TRUE(samePixels(expected, rendered(style))) << style;
  }
  for (const auto& [style, colour] :
       {std::pair{"White Circle", kWhite}, std::pair{"Black Circle", cv::Scalar(0, 0, 0)}}) {
    cv::Mat expected = picture.clone();
    cv::circle(expected, {200, 150}, 3, colour, 1, cv::LINE_AA);
    cv::circle(expected, {200, 150}, 15, colour, 1, cv::LINE_AA);
    EXPECT_TRUE(samePixels(expected, rendered(style))) << style;
  }
}

TEST_F(TNVHandlerImageViewTest, MovedCrossLeavesNoTraceAndRedrawsNoMark) {
  TNVMark* mark = box(0.6, 0.1);
  view.getARImage();
  // Moved without a new tag: a redraw would show it.
  cv::Mat expected = drawn({kWidth, kHeight}, {mark});
  mark->center = {0.2, 0.8};
  view.setCrossPosition(0.25, 0.25);
  cross(expected, 100, 75);
  EXPECT_TRUE(samePixels(expected, view.getARImage()));
}

TEST_F(TNVHandlerImageViewTest, NewTagRedraws) {
  TNVMark* mark = box(0.6, 0.1);
  view.getARImage();
  mark->hovered = true;
  mark->renewChangeTag();
  cv::Mat expected = drawn({kWidth, kHeight}, {mark});
  cross(expected, 200, 150);
  EXPECT_TRUE(samePixels(expected, view.getARImage()));
}

TEST_F(TNVHandlerImageViewTest, AddedRemovedAndExchangedMarksRedraw) {
  TNVMark* first = box(0.1, 0.1);
  view.getARImage();
  TNVMark* second = box(0.5, 0.5);
  cv::Mat expected = drawn({kWidth, kHeight}, {first, second});
  cross(expected, 200, 150);
  EXPECT_TRUE(samePixels(expected, view.getARImage()));
  trainSet.removeMark(first);
  expected = drawn({kWidth, kHeight}, {second});
  cross(expected, 200, 150);
  EXPECT_TRUE(samePixels(expected, view.getARImage()));
  trainSet.removeMark(second);
  TNVMark* third = box(0.3, 0.6);
  expected = drawn({kWidth, kHeight}, {third});
  cross(expected, 200, 150);
  EXPECT_TRUE(samePixels(expected, view.getARImage()));
}

TEST_F(TNVHandlerImageViewTest, WithoutTheCacheEveryRenderDrawsTheMarks) {
  view.renderCache = false;
  TNVMark* mark = box(0.6, 0.1);
  view.getARImage();
  mark->center = {0.2, 0.8};
  cv::Mat expected = drawn({kWidth, kHeight}, {mark});
  cross(expected, 200, 150);
  EXPECT_TRUE(samePixels(expected, view.getARImage()));
  EXPECT_TRUE(view.imgCached.empty());
  EXPECT_THAT(view.cacheTags, IsEmpty());
}

TEST_F(TNVHandlerImageViewTest, SettersThatConcernTheMarksInvalidate) {
  struct Row {
    const char* name;
    void (*set)(TNVHandlerImageView& view);
  };
  const Row rows[] = {
      {"zoom", [](TNVHandlerImageView& v) { v.setZoomLevel(1.0); }},
      {"fit", [](TNVHandlerImageView& v) { v.setZoomLevel(kWidth, kHeight, 1.0); }},
      {"style", [](TNVHandlerImageView& v) { v.setMarkStyle("White"); }},
      {"info", [](TNVHandlerImageView& v) { v.setMarkDrawInfo("DNN Class ID"); }},
      {"cross style", [](TNVHandlerImageView& v) { v.setCrossStyle("White Cross"); }},
      {"filled", [](TNVHandlerImageView& v) { v.setDrawMarkFilled(true); }},
      {"filter", [](TNVHandlerImageView& v) { v.setDrawOnlyDNNs({}); }},
  };
  TNVMark* mark = box(0.6, 0.1);
  for (const Row& row : rows) {
    view.getARImage();
    EXPECT_FALSE(view.cacheDirty) << row.name;
    row.set(view);
    EXPECT_TRUE(view.cacheDirty) << row.name;
    EXPECT_TRUE(view.imgCached.empty()) << row.name;
    mark->center.x -= 0.01;
    cv::Mat expected = drawn({kWidth, kHeight}, {mark});
    cross(expected, 200, 150);
    EXPECT_TRUE(samePixels(expected, view.getARImage())) << row.name;
  }
}

TEST_F(TNVHandlerImageViewTest, CrossPositionDoesNotInvalidate) {
  view.getARImage();
  view.setCrossPosition(0.1, 0.1);
  EXPECT_FALSE(view.cacheDirty);
}

TEST_F(TNVHandlerImageViewTest, FilterHidesOtherClassesAndMarksWithoutOne) {
  TNVMark* of0 = box(0.1, 0.1, {0});
  box(0.4, 0.1, {1});
  box(0.7, 0.1);
  TNVMark* ofBoth = box(0.1, 0.6, {1, 0});
  box(0.4, 0.6, {7});
  view.setDrawOnlyDNNs({view.project->classPointers()[0]});
  cv::Mat expected = drawn({kWidth, kHeight}, {of0, ofBoth});
  cross(expected, 200, 150);
  EXPECT_TRUE(samePixels(expected, view.getARImage()));
}

TEST_F(TNVHandlerImageViewTest, FilterOnAClassThatIsNotInTheProjectHidesAll) {
  TNVDNNClass stranger(7);
  box(0.4, 0.6, {7});
  view.setDrawOnlyDNNs({&stranger});
  cv::Mat expected = picture.clone();
  cross(expected, 200, 150);
  EXPECT_TRUE(samePixels(expected, view.getARImage()));
}

TEST_F(TNVHandlerImageViewTest, DesignIsDrawnWhateverTheFilterAndNeverCached) {
  TNVMarkRect designed({0.1, 0.1}, {0.4, 0.4}, false);
  trainSet.designedMark = &designed;
  trainSet.designPoints = {{0.1, 0.1}, {0.4, 0.4}};
  view.setDrawOnlyDNNs({view.project->classPointers()[0]});
  cv::Mat expected = picture.clone();
  designed.draw(expected, picture.size(), view.markStyle, view.markDrawInfo,
                view.project->classPointers(), true);
  cv::circle(expected, {40, 30}, 3, kRed, 1, cv::LINE_AA);
  cv::circle(expected, {160, 120}, 3, kRed, 1, cv::LINE_AA);
  cross(expected, 200, 150);
  EXPECT_TRUE(samePixels(expected, view.getARImage()));
  EXPECT_TRUE(samePixels(picture, view.imgCached));
  trainSet.designedMark = nullptr;
  trainSet.designPoints.clear();
  cv::Mat without = picture.clone();
  cross(without, 200, 150);
  EXPECT_TRUE(samePixels(without, view.getARImage()));
}

TEST_F(TNVHandlerImageViewTest, HostileDesignPointsAreNoFailure) {
  trainSet.designPoints = {{std::nan(""), 1e300}, {-1e300, 0.5}, {1e9, -1e9}};
  EXPECT_NO_THROW(view.getARImage());
}

TEST_F(TNVHandlerImageViewTest, ReloadFetchesThePictureAnewOnce) {
  view.getARImage();
  const cv::Mat other(30, 40, CV_8UC3, kWhite);
  trainSet.image = other;
  EXPECT_EQ(cv::Size(kWidth, kHeight), view.getARImage().size());
  view.reloadImage = true;
  EXPECT_EQ(other.size(), view.getARImage().size());
  EXPECT_FALSE(view.reloadImage);
}

TEST_F(TNVHandlerImageViewTest, BindingReplacesThePicture) {
  view.getARImage();
  TNVTrainSet other("b.png", "");
  other.image = cv::Mat(30, 40, CV_8UC3, kWhite);
  other.imageLoaded = true;
  view.bind(&other);
  EXPECT_TRUE(view.imgAR.empty() && view.imgScaled.empty() && view.cacheDirty);
  EXPECT_EQ(cv::Size(40, 30), view.getARImage().size());
}

TEST_F(TNVHandlerImageViewTest, FillingSurvivesTheChoiceOfAStyle) {
  view.setMarkStyle("Red");
  EXPECT_TRUE(view.markStyle.drawFilled);
  view.setDrawMarkFilled(false);
  view.setMarkStyle("Blue");
  EXPECT_FALSE(view.markStyle.drawFilled);
  EXPECT_FALSE(view.drawMarkFilled);
}

TEST_F(TNVHandlerImageViewTest, EverySetterFiresWhetherItChangesOrNot) {
  WTNVHandlerImageView wrapper(&view);
  const auto firesTwice = [&](auto setCallback, auto set) {
    (wrapper.*setCallback)(CallCounter<kAny>::call);
    set();
    set();
    (wrapper.*setCallback)(nullptr);
    return CallCounter<kAny>::count.exchange(0) == 2;
  };
  using W = WTNVHandlerImageView;
  EXPECT_TRUE(firesTwice(&W::setCBCrossPositionChanged, [&] { wrapper.wSetCrossPosition(0, 0); }));
  EXPECT_TRUE(firesTwice(&W::setCBZoomLevelChanged, [&] { wrapper.wSetZoomLevel(1.0); }));
  EXPECT_TRUE(firesTwice(&W::setCBZoomLevelChanged, [&] { wrapper.wSetZoomLevel(9, 9, 1.0); }));
  EXPECT_TRUE(firesTwice(&W::setCBMarkStyleChanged, [&] { wrapper.setMarkStyle("Red"); }));
  EXPECT_TRUE(firesTwice(&W::setCBMarkDrawInfoChanged, [&] { wrapper.setMarkDrawInfo("None"); }));
  EXPECT_TRUE(firesTwice(&W::setCBCrossStyleChanged, [&] { wrapper.setCrossStyle("x"); }));
  EXPECT_TRUE(
      firesTwice(&W::setCBDrawMarkFilledChanged, [&] { wrapper.wSetDrawMarkFilled(true); }));
  EXPECT_TRUE(firesTwice(&W::setCBDrawOnlyDNNsChanged, [&] { wrapper.wSetDrawOnlyDNNs({}); }));
}

TEST_F(TNVHandlerImageViewTest, ChoicesByName) {
  WTNVHandlerImageView wrapper(&view);
  EXPECT_THAT(wrapper.getAvailableMarkStyles(),
              ElementsAre("Colored", "White", "Black", "Blue", "Red"));
  EXPECT_THAT(wrapper.getAvailableMarkDrawInfos(), SizeIs(6));
  EXPECT_THAT(wrapper.getAvailableCrossStyles(), SizeIs(4));
  wrapper.setMarkStyle("no such style");
  wrapper.setMarkDrawInfo("no such info");
  wrapper.setCrossStyle("no such cross");
  EXPECT_EQ("Colored", wrapper.getMarkStyle());
  EXPECT_EQ("None", wrapper.getMarkDrawInfo());
  EXPECT_EQ("White Cross", wrapper.getCrossStyle());
  wrapper.wSetDrawOnlyDNNs(builder.project().wGetDNNClasses());
  EXPECT_THAT(wrapper.wGetDrawOnlyDNNs(), SizeIs(2));
  wrapper.wSetZoomLevel(9, 9, 0.5);
  EXPECT_TRUE(wrapper.wGetZoomToSize());
  EXPECT_TRUE(wrapper.wGetDrawMarkFilled());
}

TEST_F(TNVHandlerImageViewTest, ReloadedPictureThatIsEmptyIsNoFailure) {
  view.getARImage();
  trainSet.image = cv::Mat();
  view.reloadImage = true;
  const LogCapture log;
  EXPECT_TRUE(view.getARImage().empty());
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVHandlerImageView::getARImage(): Current image is empty!"));
}

TEST_F(TNVHandlerImageViewTest, ChangedZoomScalesAnew) {
  TNVMark* mark = box(0.1, 0.1);
  view.setMarkDrawInfo("Pixel");
  for (const double zoom : {1.0, 0.5, 2.0}) {
    view.setZoomLevel(zoom);
    const cv::Size size(static_cast<int>(kWidth * zoom), static_cast<int>(kHeight * zoom));
    cv::Mat expected = drawn(size, {mark});
    cross(expected, size.width / 2, size.height / 2);
    EXPECT_TRUE(samePixels(expected, view.getARImage())) << zoom;
  }
}

TEST_F(TNVHandlerImageViewTest, DesignSeesTheSizeOfThePictureAtAnyZoom) {
  TNVMarkRect designed({0.1, 0.1}, {0.4, 0.4}, false);
  trainSet.designedMark = &designed;
  view.setMarkDrawInfo("Pixel");
  view.setZoomLevel(0.5);
  cv::Mat expected = drawn({kWidth / 2, kHeight / 2}, {});
  designed.draw(expected, picture.size(), view.markStyle, view.markDrawInfo,
                view.project->classPointers(), true);
  cross(expected, kWidth / 4, kHeight / 4);
  EXPECT_TRUE(samePixels(expected, view.getARImage()));
}

TEST_F(TNVHandlerImageViewTest, TinyPictureKeepsAPixelAtTheSmallestZoom) {
  trainSet.image = cv::Mat(4, 4, CV_8UC3, kWhite);
  view.bind(&trainSet);
  view.setZoomLevel(0.1);
  EXPECT_EQ(cv::Size(1, 1), view.getARImage().size());
}
