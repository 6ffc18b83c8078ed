#include "TNV_SampleBenchNative/WTNVMark.h"

#include <memory>

#include <gtest/gtest.h>

#include "marks/TNVMarkCircle.h"
#include "marks/TNVMarkImage.h"
#include "marks/TNVMarkRect.h"
#include "project/TNVDNNClass.h"

namespace {

using Pairs = std::vector<std::vector<double>>;
using Strings = std::vector<std::string>;

/// Handles on classes with the unique indices 1, 2, 3 in that order.
struct WTNVMarkWithClasses : ::testing::Test {
  std::vector<const TNVDNNClass*> natives(const std::vector<WTNVDNNClass>& handles) {
    std::vector<const TNVDNNClass*> result;
    for (const WTNVDNNClass& dnnClass : handles)
      result.push_back(dnnClass.getNativeDNNClass());
    return result;
  }

  using Classes = std::vector<const TNVDNNClass*>;
  TNVDNNClass one{1};
  TNVDNNClass two{2};
  TNVDNNClass three{3};
  std::vector<WTNVDNNClass> all{WTNVDNNClass(&one), WTNVDNNClass(&two), WTNVDNNClass(&three)};
  TNVMarkRect mark;
  WTNVMark handle{&mark};
};

}  // namespace

TEST(WTNVMark, DefaultMadeHandleIsNull) {
  EXPECT_FALSE(WTNVMark().valid());
  EXPECT_EQ(WTNVMark().getNativeMark(), nullptr);
  EXPECT_FALSE(WTNVMark(nullptr).valid());
}

TEST(WTNVMark, CopyAndAssignmentTakeThePointerOnly) {
  TNVMarkRect mark;
  const WTNVMark handle(&mark);
  const WTNVMark copy(handle);
  WTNVMark assigned;
  assigned = handle;
  EXPECT_TRUE(handle.valid());
  EXPECT_EQ(handle.getNativeMark(), &mark);
  EXPECT_EQ(copy.getNativeMark(), &mark);
  EXPECT_EQ(assigned.getNativeMark(), &mark);
}

TEST(WTNVMark, DestroyedHandleLeavesTheMarkInPlace) {
  TNVMarkRect mark;
  auto handle = std::make_unique<WTNVMark>(&mark);
  const WTNVMark copy(*handle);
  handle.reset();
  mark.uniqueId = 5;
  EXPECT_EQ(copy.wGetUniqueId(), 5);
}

TEST(WTNVMark, TypeIsTheKindWhateverTheVariant) {
  TNVMarkRect centered({0.5, 0.5}, {0.6, 0.7}, true);
  TNVMarkImage image;
  EXPECT_EQ(WTNVMark(&centered).wGetType(), "Rect");
  EXPECT_EQ(WTNVMark(&image).wGetType(), "Image");
}

TEST(WTNVMark, GettersGiveTheFields) {
  TNVMarkRect mark({0.25, 0.5}, {0.75, 0.625}, false);
  const WTNVMark handle(&mark);
  EXPECT_EQ(handle.wGetUniqueId(), -1);
  EXPECT_FALSE(handle.wGetIsHovered());
  EXPECT_FALSE(handle.wGetIsSelected());
  mark.uniqueId = 17;
  mark.classIdx = {3, 1, 3};
  mark.poiSize = {0.125, 0.0625};
  mark.hovered = true;
  EXPECT_EQ(handle.wGetUniqueId(), 17);
  EXPECT_EQ(handle.wGetClassIdx(), (std::vector<int>{3, 1, 3}));
  EXPECT_TRUE(handle.wGetIsHovered());
  EXPECT_FALSE(handle.wGetIsSelected());
  mark.hovered = false;
  mark.selected = true;
  EXPECT_FALSE(handle.wGetIsHovered());
  EXPECT_TRUE(handle.wGetIsSelected());

  double x = 0, y = 0, w = 0, h = 0, poiWidth = 0, poiHeight = 0;
  handle.wGetRelCenter(x, y);
  handle.wGetRelSize(w, h, 640, 480);
  handle.wGetRelPOISize(poiWidth, poiHeight);
  EXPECT_EQ((std::vector{x, y, w, h, poiWidth, poiHeight}),
            (std::vector{0.5, 0.5625, 0.5, 0.125, 0.125, 0.0625}));
}

TEST(WTNVMark, PoisReplaceWhatTheListHeld) {
  TNVMarkRect mark({0.25, 0.25}, {0.75, 0.75}, false);
  const WTNVMark handle(&mark);
  Pairs points{{1, 2, 3}};
  handle.wGetPOIsGenerated("Corners", 64, 32, 0, points);
  EXPECT_EQ(points, (Pairs{{0.25, 0.25}, {0.75, 0.25}, {0.75, 0.75}, {0.25, 0.75}}));
  handle.wGetPOIsGenerated("no such mode", 64, 32, 9, points);
  EXPECT_TRUE(points.empty());
}

TEST(WTNVMark, PoiModesAreThoseOfTheKind) {
  TNVMarkRect mark({0.25, 0.25}, {0.75, 0.75}, false);
  mark.poiSize = {0.125, 0.125};
  const WTNVMark handle(&mark);
  EXPECT_EQ(handle.wGetPOIModes(), (Strings{"Corners", "Centers", "Corners & Centers", "Divided"}));
  EXPECT_TRUE(handle.wGetPOIModeSupportsValue("Divided"));
  EXPECT_FALSE(handle.wGetPOIModeSupportsValue("Corners"));
  // 2 * 32 + 2 * 16 pixels of perimeter, boxes of 4 pixels.
  EXPECT_EQ(handle.wGetPOICountForSize(64, 32), 24);
}

TEST(WTNVMark, CircleTakesWidthHeightAndCountInTheirPlaces) {
  // A radius of 20 pixels on 200 by 100.
  TNVMarkCircle mark({0.5, 0.5}, {0.6, 0.5});
  mark.poiSize = {0.05, 0.05};
  const WTNVMark handle(&mark);
  double w = 0;
  double h = 0;
  handle.wGetRelSize(w, h, 200, 100);
  EXPECT_NEAR(w, 0.2, 1e-12);
  EXPECT_NEAR(h, 0.4, 1e-12);
  Pairs points;
  handle.wGetPOIsGenerated("Divided", 200, 100, 4, points);
  const Pairs expected{{0.6, 0.5}, {0.5, 0.7}, {0.4, 0.5}, {0.5, 0.3}};
  ASSERT_EQ(points.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    ASSERT_EQ(points[i].size(), 2U);
    EXPECT_NEAR(points[i][0], expected[i][0], 1e-12) << i;
    EXPECT_NEAR(points[i][1], expected[i][1], 1e-12) << i;
  }
  // A rim of 125.7 pixels, boxes of 5.
  EXPECT_EQ(handle.wGetPOICountForSize(200, 100), 25);
}

TEST_F(WTNVMarkWithClasses, FirstClassIsThatOfTheMarksFirstIndex) {
  mark.classIdx = {3, 1};
  EXPECT_EQ(handle.wGetFirstDNNClass(all).getNativeDNNClass(), &three);
}

TEST_F(WTNVMarkWithClasses, FirstClassIsNullWhenItsIndexIsUnknown) {
  mark.classIdx = {9, 1};
  EXPECT_FALSE(handle.wGetFirstDNNClass(all).isValid());
  EXPECT_FALSE(handle.wGetFirstDNNClass({}).isValid());
}

TEST_F(WTNVMarkWithClasses, FirstClassIsNullForAMarkWithoutClasses) {
  EXPECT_FALSE(handle.wGetFirstDNNClass(all).isValid());
}

TEST_F(WTNVMarkWithClasses, ClassesFollowTheGivenList) {
  mark.classIdx = {3, 9, 1};
  EXPECT_EQ(natives(handle.wGetDNNClasses(all)), (Classes{&one, &three}));
  EXPECT_TRUE(handle.wGetDNNClasses({}).empty());
}

TEST_F(WTNVMarkWithClasses, NullHandlesAreNoClasses) {
  mark.classIdx = {3, 1};
  all.insert(all.begin() + 1, WTNVDNNClass());
  all.insert(all.begin(), WTNVDNNClass());
  EXPECT_EQ(natives(handle.wGetDNNClasses(all)), (Classes{&one, &three}));
  EXPECT_EQ(handle.wGetFirstDNNClass(all).getNativeDNNClass(), &three);
}

TEST_F(WTNVMarkWithClasses, ClassCarriedTwiceComesTwice) {
  mark.classIdx = {2, 1, 2};
  EXPECT_EQ(natives(handle.wGetDNNClasses(all)), (Classes{&one, &two, &two}));
}
