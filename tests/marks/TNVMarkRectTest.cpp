#include "marks/TNVMarkRect.h"

#include <chrono>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marks/MarkTools.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"

namespace {

using Points = TNVMark::Points;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TNVMarkRect rectOf(cv::Point2d center, cv::Point2d size) {
  TNVMarkRect mark;
  mark.center = center;
  mark.size = size;
  return mark;
}

void expectNear(const Points& expected, const Points& actual) {
  ASSERT_EQ(expected.size(), actual.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_NEAR(expected[i].x, actual[i].x, 1e-12) << "x of point " << i;
    EXPECT_NEAR(expected[i].y, actual[i].y, 1e-12) << "y of point " << i;
  }
}

}  // namespace

TEST(TNVMarkRect, DefaultMadeRectStandsNowhere) {
  const TNVMarkRect mark;
  EXPECT_EQ(mark.type, "Rect");
  EXPECT_EQ(mark.center, cv::Point2d(-1, -1));
  EXPECT_EQ(mark.getRelSize({640, 480}), cv::Point2d(-1, -1));
}

TEST(TNVMarkRect, TwoPointsInAnyOrderGiveTheSameBox) {
  const std::vector<std::pair<cv::Point2d, cv::Point2d>> corners{{{0.25, 0.5}, {0.75, 0.625}},
                                                                 {{0.75, 0.625}, {0.25, 0.5}},
                                                                 {{0.75, 0.5}, {0.25, 0.625}},
                                                                 {{0.25, 0.625}, {0.75, 0.5}}};
  for (const auto& [a, b] : corners) {
    const TNVMarkRect mark(a, b, false);
    EXPECT_EQ(mark.type, "Rect");
    EXPECT_EQ(mark.center, cv::Point2d(0.5, 0.5625));
    EXPECT_EQ(mark.size, cv::Point2d(0.5, 0.125));
  }
}

TEST(TNVMarkRect, CenterVariantTakesCentreAndCorner) {
  const TNVMarkRect mark({0.5, 0.5}, {0.6, 0.7}, true);
  EXPECT_EQ(mark.type, "Rect Center");
  EXPECT_EQ(mark.center, cv::Point2d(0.5, 0.5));
  EXPECT_NEAR(mark.size.x, 0.2, 1e-12);
  EXPECT_NEAR(mark.size.y, 0.4, 1e-12);
  const TNVMarkRect other({0.5, 0.5}, {0.375, 0.25}, true);
  EXPECT_EQ(other.size, cv::Point2d(0.25, 0.5));
}

TEST(TNVMarkRect, AnswersOfTheKind) {
  const TNVMarkRect mark;
  for (const bool variant : {false, true}) {
    EXPECT_EQ(mark.getMinConstructionPoints(variant), 2);
    EXPECT_EQ(mark.getMaxConstructionPoints(variant), 2);
  }
  EXPECT_EQ(mark.getTypeName(false), "Rect");
  EXPECT_EQ(mark.getTypeName(true), "Rect Center");
  EXPECT_THAT(mark.getPOIModes(),
              ElementsAre("Corners", "Centers", "Corners & Centers", "Divided"));
  EXPECT_TRUE(mark.getPOIModeSupportsValue("Divided"));
  for (const char* mode : {"Corners", "Centers", "Corners & Centers", "divided", "Divided ", ""})
    EXPECT_FALSE(mark.getPOIModeSupportsValue(mode)) << mode;
}

TEST(TNVMarkRect, CopyTakesTheSize) {
  TNVMarkRect mark({0.5, 0.5}, {0.625, 0.75}, true);
  mark.classIdx = {4};
  const TNVMarkRect copy(mark);
  EXPECT_EQ(copy.type, "Rect Center");
  EXPECT_EQ(copy.size, mark.size);
  EXPECT_EQ(copy.center, mark.center);
  EXPECT_THAT(copy.classIdx, ElementsAre(4));
}

TEST(TNVMarkRect, NewSizeRenewsTheTagAndLeavesTheCentre) {
  TNVMarkRect mark = rectOf({0.5, 0.5}, {0.25, 0.25});
  const int tag = mark.changeTag;
  mark.setRelSize({0.75, 0.75}, {0.125, 0.5}, {640, 480});
  EXPECT_EQ(mark.size, cv::Point2d(0.125, 0.5));
  EXPECT_EQ(mark.center, cv::Point2d(0.5, 0.5));
  EXPECT_NE(mark.changeTag, tag);
}

TEST(TNVMarkRect, UpdateMovesBoxAndPois) {
  TNVMarkRect mark = rectOf({0.25, 0.25}, {0.25, 0.25});
  mark.pois = {{0.375, 0.125}};
  mark.update({0.5, 0.5}, {0.5, 0.25}, {}, {640, 480});
  EXPECT_EQ(mark.center, cv::Point2d(0.5, 0.5));
  EXPECT_EQ(mark.size, cv::Point2d(0.5, 0.25));
  // (0.375 - 0.5) 2 + 0.5 + 0.25 and (0.125 - 0.5) + 0.5 + 0.25.
  EXPECT_THAT(mark.pois, ElementsAre(cv::Point2d(0.5, 0.375)));
}

TEST(TNVMarkRect, FitsToPoints) {
  TNVMarkRect mark = rectOf({0.25, 0.25}, {0.25, 0.25});
  mark.fitToPoints({{0.25, 0.5}, {0.5, 0.75}}, {640, 480});
  EXPECT_EQ(mark.center, cv::Point2d(0.375, 0.625));
  EXPECT_EQ(mark.size, cv::Point2d(0.25, 0.25));
}

TEST(TNVMarkRect, PixelRectRoundsPositionAndSizeApart) {
  EXPECT_EQ(rectOf({0.5, 0.5}, {0.25, 0.5}).getPixelRect({64, 32}), cv::Rect(24, 8, 16, 16));
  // Left (0.5 - 0.125) 10 = 3.75, top (0.5 - 0.25) 10 = 2.5 to even, width 2.5 to even.
  EXPECT_EQ(rectOf({0.5, 0.5}, {0.25, 0.5}).getPixelRect({10, 10}), cv::Rect(4, 2, 2, 5));
}

TEST(TNVMarkRect, ContourIsTheCorners) {
  EXPECT_THAT(rectOf({0.5, 0.5}, {0.25, 0.5}).getContour({10, 10}),
              ElementsAre(cv::Point2d(3.75, 2.5), cv::Point2d(6.25, 2.5), cv::Point2d(6.25, 7.5),
                          cv::Point2d(3.75, 7.5)));
}

TEST(TNVMarkRect, BoxIsHalfOpen) {
  const TNVMarkRect mark = rectOf({0.5, 0.5}, {0.5, 0.25});
  struct Row {
    cv::Point2d point;
    bool over;
  };
  for (const Row& row :
       {Row{{0.5, 0.5}, true}, Row{{0.25, 0.5}, true}, Row{{0.5, 0.375}, true},
        Row{{0.25, 0.375}, true}, Row{{0.75, 0.5}, false}, Row{{0.5, 0.625}, false},
        Row{{0.7499, 0.6249}, true}, Row{{0.2499, 0.5}, false}, Row{{0.5, 0.3749}, false}}) {
    EXPECT_EQ(mark.isMouseOver(row.point, {640, 480}), row.over) << row.point;
  }
}

TEST(TNVMarkRect, DistanceIsToTheCentreAlsoFromOutside) {
  const TNVMarkRect mark = rectOf({0.5, 0.5}, {0.125, 0.125});
  double distance = -1;
  EXPECT_FALSE(mark.isMouseOver({0.8, 0.9}, {100, 100}, &distance));
  EXPECT_NEAR(distance, 50, 1e-9);
  EXPECT_TRUE(mark.isMouseOver({0.5, 0.5}, {100, 100}, &distance));
  EXPECT_EQ(distance, 0);
  // In pixels, a step to the side counts by the width: 0.03 of 100 and 0.02 of 200.
  EXPECT_TRUE(mark.isMouseOver({0.53, 0.48}, {100, 200}, &distance));
  EXPECT_NEAR(distance, 5, 1e-9);
}

TEST(TNVMarkRect, PoisOfEachMode) {
  const TNVMarkRect mark = rectOf({0.5, 0.5}, {0.5, 0.25});
  const cv::Point2d c0(0.25, 0.375), c1(0.75, 0.375), c2(0.75, 0.625), c3(0.25, 0.625);
  const cv::Point2d top(0.5, 0.375), right(0.75, 0.5), bottom(0.5, 0.625), left(0.25, 0.5);
  struct Row {
    std::string mode;
    Points points;
  };
  for (const Row& row :
       {Row{"Corners", {c0, c1, c2, c3}}, Row{"Centers", {top, right, bottom, left}},
        Row{"Corners & Centers", {c1, top, c2, right, c3, bottom, c0, left}}, Row{"corners", {}},
        Row{"", {}}}) {
    SCOPED_TRACE(row.mode);
    expectNear(row.points, mark.getPOIsGenerated(row.mode, {64, 32}, 7));
  }
}

TEST(TNVMarkRect, DividedWalksClockwiseFromTopLeft) {
  const TNVMarkRect square = rectOf({0.5, 0.5}, {0.5, 0.5});
  expectNear({{0.25, 0.25}, {0.75, 0.25}, {0.75, 0.75}, {0.25, 0.75}},
             square.getPOIsGenerated("Divided", {64, 64}, 4));
  expectNear({{0.25, 0.25}, {0.75, 0.75}}, square.getPOIsGenerated("Divided", {64, 64}, 2));
  // 32 by 8 pixels, a point each 10: 8 below the corner is 2 beyond it.
  const TNVMarkRect flat = rectOf({0.5, 0.5}, {0.5, 0.25});
  expectNear({{0.25, 0.375},
              {0.25 + 10.0 / 64, 0.375},
              {0.25 + 20.0 / 64, 0.375},
              {0.25 + 30.0 / 64, 0.375},
              {0.75, 0.625},
              {0.75 - 10.0 / 64, 0.625},
              {0.75 - 20.0 / 64, 0.625},
              {0.75 - 30.0 / 64, 0.625}},
             flat.getPOIsGenerated("Divided", {64, 32}, 8));
}

TEST(TNVMarkRect, DividedNeedsACountOfTwo) {
  const LogCapture log;
  const TNVMarkRect mark = rectOf({0.5, 0.5}, {0.5, 0.5});
  for (const int count : {1, 0, -1, INT_MIN})
    EXPECT_THAT(mark.getPOIsGenerated("Divided", {64, 64}, count), IsEmpty());
  EXPECT_EQ(log.text(), "");
}

TEST(TNVMarkRect, PoiCountIsThePerimeterByTheSmallerSide) {
  struct Row {
    cv::Point2d size;
    cv::Point2d poiSize;
    int count;
  };
  // On 64 by 32 pixels.
  for (const Row& row : {Row{{0.5, 0.5}, {0.125, 0.125}, 24},   // 96 by 4, the height
                         Row{{0.5, 0.5}, {0.0625, 0.5}, 24},    // 96 by 4, the width
                         Row{{0.5, 0.5}, {0.5, 0.75}, 4},       // 96 by 24
                         Row{{0.25, 0.0625}, {1, 0.25}, 5},     // 36 by 8 is 4.5
                         Row{{-0.25, -0.0625}, {1, 0.25}, -5},  // and -4.5, away from zero
                         Row{{0.5, 0.5}, {0, 0.1}, 0}, Row{{0.5, 0.5}, {0.1, 0}, 0},
                         Row{{-1, -1}, {0.125, 0.125}, -48}}) {  // nothing clamps it
    TNVMarkRect mark = rectOf({0.5, 0.5}, row.size);
    mark.poiSize = row.poiSize;
    EXPECT_EQ(mark.getPOICountForSize({64, 32}), row.count);
  }
}

TEST(TNVMarkRect, SizeIsWrittenBehindTheBase) {
  TNVMarkRect mark = rectOf({0.5, 0.25}, {0.125, 0.75});
  EXPECT_THAT(writtenXml(mark), HasSubstr("</ClassIdx>\n"
                                          "  <Size>\n"
                                          "    1.2500000000000000e-01 "
                                          "7.5000000000000000e-01</Size></Mark0>\n"));
}

TEST(TNVMarkRect, ReadsBackBitForBit) {
  TNVMarkRect mark({0.5, 0.5}, {0.6, 0.7}, true);
  mark.pois = {{1.0 / 3.0, 0.1}};
  mark.classIdx = {2, 3};
  const auto read = markFromXml<TNVMarkRect>(writtenXml(mark));
  EXPECT_EQ(read.type, "Rect Center");
  EXPECT_EQ(read.center, mark.center);
  EXPECT_EQ(read.size, mark.size);
  EXPECT_EQ(read.pois, mark.pois);
  EXPECT_EQ(read.classIdx, mark.classIdx);
}

TEST(TNVMarkRect, SavedCenterVariantMatchesNoKindsName) {
  TNVMarkRect mark({0.5, 0.5}, {0.6, 0.7}, true);
  const auto read = markFromXml<TNVMarkRect>(writtenXml(mark));
  EXPECT_NE(read.type, read.getTypeName(false));
}

TEST(TNVMarkRect, SizeOfAnotherLengthReadsAsZero) {
  for (const char* content : {"", "<Size>1.</Size>", "<Size>1. 2. 3.</Size>", "<Size></Size>"}) {
    EXPECT_EQ(markFromXml<TNVMarkRect>(xmlWithMark(content)).size, cv::Point2d(0, 0)) << content;
  }
}

namespace {

/// A mark on a view of 200 by 120 pixels that shows a picture of 1000 by 600.
struct TNVMarkRectOnView : ::testing::Test {
  TNVMarkRectOnView() { mark.classIdx = {12, 11}; }

  void drawAndCompare(const TNVTypeMarkStyleSet& style, int info, bool designing,
                      const cv::Mat& expected) {
    cv::Mat seen = patternedPicture(200, 120);
    mark.draw(seen, imageSize, style, infoOf(info), classes.list(), designing);
    EXPECT_TRUE(samePixels(expected, seen));
  }

  /// The outline and the ring in the middle.
  cv::Mat withBox(const cv::Scalar& colour, int thickness, cv::Mat view) const {
    cv::rectangle(view, box, colour, thickness, cv::LINE_AA, 0);
    cv::circle(view, {90, 70}, 3, colour, thickness, cv::LINE_AA, 0);
    return view;
  }

  cv::Mat withBox(const cv::Scalar& colour, int thickness) const {
    return withBox(colour, thickness, patternedPicture(200, 120));
  }

  /// Left 90.4 - 41.3 = 49.1, top 70.2 - 18.6 = 51.6; 82.6 by 37.2 pixels.
  TNVMarkRect mark = rectOf({0.452, 0.585}, {0.413, 0.31});
  cv::Rect box{49, 52, 83, 37};
  std::vector<cv::Point> corners{{49, 52}, {132, 52}, {132, 89}, {49, 89}};
  std::vector<cv::Point> truncatedCorners{{49, 51}, {131, 51}, {131, 88}, {49, 88}};
  cv::Size imageSize{1000, 600};
  ThreeClasses classes;
};

}  // namespace

TEST_F(TNVMarkRectOnView, EachStateHasItsPen) {
  drawAndCompare(styleNamed("White"), 0, false, withBox({255, 255, 255}, 1));
  drawAndCompare(styleNamed("Black"), 0, false, withBox({0, 0, 0}, 1));
  mark.hovered = true;
  drawAndCompare(styleNamed("White"), 0, false, withBox({0, 255, 0}, 2));
}

TEST_F(TNVMarkRectOnView, SelectedMarkHasItsFrameUnderTheBox) {
  mark.selected = true;
  for (const bool hovered : {false, true}) {
    mark.hovered = hovered;
    cv::Mat view = patternedPicture(200, 120);
    frameReference(view, truncatedCorners, {0, 0, 255});
    drawAndCompare(styleNamed("White"), 0, false, withBox({0, 0, 255}, 1, view));
  }
}

TEST_F(TNVMarkRectOnView, FillingLiesUnderTheBox) {
  cv::Mat view = patternedPicture(200, 120);
  fillReference(view, corners, {64, 64, 255});
  drawAndCompare(styleNamed("Red", true), 0, false, withBox({64, 64, 255}, 1, view));
}

TEST_F(TNVMarkRectOnView, PoisLieUnderTheBox) {
  mark.poiVisible = true;
  mark.hovered = true;
  mark.pois = {{0.25, 0.5}, {0.45, 0.58}};
  mark.poiSize = {0.05, 0.1};
  cv::Mat view = patternedPicture(200, 120);
  // Boxes of 10 by 12: 50 - 5, 60 - 6; 90 - 5, 69.6 - 6.
  cv::rectangle(view, cv::Rect(45, 54, 10, 12), {32, 32, 255}, 2, cv::LINE_AA, 0);
  cv::rectangle(view, cv::Rect(85, 64, 10, 12), {32, 32, 255}, 2, cv::LINE_AA, 0);
  drawAndCompare(styleNamed("Red"), 0, false, withBox({32, 32, 255}, 2, view));
}

TEST_F(TNVMarkRectOnView, ColoredThicknessFollowsTheClasses) {
  struct Row {
    std::vector<int> classIdx;
    cv::Scalar colour;
    int thickness;
  };
  // Without a known class the thickness is negative, which fills, and the colour is black.
  for (const Row& row : {Row{{}, {0, 0, 0}, cv::FILLED}, Row{{99}, {0, 0, 0}, cv::FILLED},
                         Row{{12}, {100, 101, 102}, 1}, Row{{12, 11}, {55, 60, 66}, 0},
                         Row{{13, 12, 11}, {50, 123, 44}, 0}}) {
    mark.classIdx = row.classIdx;
    drawAndCompare(styleNamed("Colored"), 0, false, withBox(row.colour, row.thickness));
  }
}

TEST_F(TNVMarkRectOnView, LabelsOfEachInfo) {
  struct Row {
    int info;
    std::string above;
    std::string beside;
  };
  // The picture's 413 by 186 pixels, the view's 82.6 by 37.2.
  for (const Row& row : {Row{0, "", ""}, Row{1, "", "0,5"}, Row{2, "", "cat,dog"},
                         Row{3, "413", "186"}, Row{4, "82", "37"}, Row{5, "0.41", "0.31"}}) {
    cv::Mat view = withBox({255, 64, 64}, 1);
    // (49.1 + 41.3, 51.6 - 5) and (49.1 + 82.6 + 5, 51.6 + 18.6), truncated.
    cv::putText(view, row.above, {90, 46}, 3, 0.4, {255, 64, 64}, 1, cv::LINE_AA, false);
    cv::putText(view, row.beside, {136, 70}, 3, 0.4, {255, 64, 64}, 1, cv::LINE_AA, false);
    SCOPED_TRACE(row.info);
    drawAndCompare(styleNamed("Blue"), row.info, false, view);
  }
}

TEST_F(TNVMarkRectOnView, RelativeLabelIsShortenedToTwoDigits) {
  mark.center = {0.5, 0.5};
  mark.size = {0.5, 0.000012345};
  cv::Mat view = patternedPicture(200, 120);
  cv::rectangle(view, cv::Rect(50, 60, 100, 0), {255, 64, 64}, 1, cv::LINE_AA, 0);
  cv::circle(view, {100, 60}, 3, {255, 64, 64}, 1, cv::LINE_AA, 0);
  cv::putText(view, "0.5", {100, 54}, 3, 0.4, {255, 64, 64}, 1, cv::LINE_AA, false);
  cv::putText(view, "1.2e-05", {155, 60}, 3, 0.4, {255, 64, 64}, 1, cv::LINE_AA, false);
  drawAndCompare(styleNamed("Blue"), 5, false, view);
}

TEST_F(TNVMarkRectOnView, TextStaysThinOnAThickMark) {
  mark.hovered = true;
  cv::Mat view = withBox({0, 255, 0}, 2);
  cv::putText(view, "0,5", {136, 70}, 3, 0.4, {0, 255, 0}, 1, cv::LINE_AA, false);
  drawAndCompare(styleNamed("White"), 1, false, view);
}

TEST_F(TNVMarkRectOnView, DesignedBoxIsDashed) {
  // The dashes are worked out by an own walk: 8 pixels, then 9 after each gap of 3.
  for (const auto& [styleName, thickness] : {std::pair{"White", 1}, std::pair{"Colored", 0}}) {
    const bool white = thickness == 1;
    const cv::Scalar colour = white ? cv::Scalar(255, 255, 255) : cv::Scalar(55, 60, 66);
    std::vector<cv::Point> walk;
    const std::vector<cv::Point> ends{{49, 52}, {132, 52}, {132, 89}, {49, 89}, {49, 52}};
    for (std::size_t i = 0; i + 1 < ends.size(); ++i) {
      const cv::Point step((ends[i + 1].x > ends[i].x) - (ends[i + 1].x < ends[i].x),
                           (ends[i + 1].y > ends[i].y) - (ends[i + 1].y < ends[i].y));
      for (cv::Point p = ends[i]; p != ends[i + 1]; p += step)
        walk.push_back(p);
      walk.push_back(ends[i + 1]);
    }
    cv::Mat view = patternedPicture(200, 120);
    for (std::size_t from = 0; from < walk.size();) {
      const std::size_t to = std::min(from + (from == 0 ? 7 : 8), walk.size() - 1);
      cv::line(view, walk[from], walk[to], colour, 1, cv::LINE_AA, 0);
      from = to + 4;
    }
    cv::circle(view, {90, 70}, 3, colour, thickness, cv::LINE_AA, 0);
    drawAndCompare(styleNamed(styleName), 0, true, view);
  }
}

TEST_F(TNVMarkRectOnView, HostileGeometryIsDrawnInNoTime) {
  expectHostileGeometryIsDrawnInNoTime(mark, [&](double a, double b, int /*variant*/) {
    mark.center = {a, b};
    mark.size = {b, a};
  });
}

TEST_F(TNVMarkRectOnView, BoxFarLargerThanTheViewIsDrawnInNoTime) {
  const auto start = std::chrono::steady_clock::now();
  mark.center = {0.5, 0.5};
  mark.size = {1.4e6, 1.4e6};
  mark.classIdx.clear();
  cv::Mat view = patternedPicture(1000, 600);
  // Without a known class the box is filled.
  for (int i = 0; i < 200; ++i)
    mark.draw(view, imageSize, styleNamed("Colored"), infoOf(0), classes.list(), false);
  EXPECT_TRUE(samePixels(cv::Mat(600, 1000, CV_8UC3, cv::Scalar()), view));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(TNVMarkRect, HostileGeometryIsAnsweredSomehow) {
  const LogCapture log;
  for (const double a : hostileNumbers()) {
    for (const double b : hostileNumbers()) {
      TNVMarkRect mark = rectOf({a, b}, {b, a});
      EXPECT_EQ(mark.getContour({640, 480}).size(), 4U);
      useHostileMark(mark, a, b);
    }
  }
}
