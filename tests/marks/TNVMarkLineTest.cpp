#include "marks/TNVMarkLine.h"

#include <climits>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marks/PathTools.h"
#include "support/LogCapture.h"

namespace {

using Points = TNVMark::Points;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

}  // namespace

TEST(TNVMarkLine, DefaultMadeLineHasNoEnds) {
  const TNVMarkLine mark;
  EXPECT_EQ(mark.type, "Line");
  EXPECT_EQ(mark.center, cv::Point2d(-1, -1));
  EXPECT_EQ(mark.pointA, cv::Point2d(-1, -1));
  EXPECT_EQ(mark.pointB, cv::Point2d(-1, -1));
}

TEST(TNVMarkLine, DesignedLineHasItsCentreInTheMiddle) {
  const TNVMarkLine mark({0.75, 0.125}, {0.25, 0.5});
  EXPECT_EQ(mark.type, "Line");
  EXPECT_EQ(mark.pointA, cv::Point2d(0.75, 0.125));
  EXPECT_EQ(mark.pointB, cv::Point2d(0.25, 0.5));
  EXPECT_EQ(mark.center, cv::Point2d(0.5, 0.3125));
  EXPECT_EQ(mark.designPoint, cv::Point2d(-1, -1));
}

TEST(TNVMarkLine, AnswersOfTheKind) {
  const TNVMarkLine mark({0.25, 0.25}, {0.5, 0.75});
  for (const bool variant : {false, true}) {
    EXPECT_EQ(mark.getMinConstructionPoints(variant), 2);
    EXPECT_EQ(mark.getMaxConstructionPoints(variant), 2);
    EXPECT_EQ(mark.getTypeName(variant), "Line");
  }
  EXPECT_THAT(mark.getPOIModes(),
              ElementsAre("Endpoints", "Center", "Endpoints & Center", "Divided"));
  EXPECT_TRUE(mark.getPOIModeSupportsValue("Divided"));
  for (const char* mode : {"Endpoints", "Center", "Endpoints & Center", "divided", "Divided ", ""})
    EXPECT_FALSE(mark.getPOIModeSupportsValue(mode)) << mode;
  EXPECT_EQ(mark.getPixelRect({640, 480}), cv::Rect(0, 0, 0, 0));
  EXPECT_THAT(mark.getContour({640, 480}), IsEmpty());
}

TEST(TNVMarkLine, CopyTakesTheEnds) {
  TNVMarkLine mark({0.75, 0.125}, {0.25, 0.5});
  mark.center = {0.25, 0.75};
  mark.classIdx = {4};
  mark.uniqueId = 9;
  const TNVMarkLine copy(mark);
  EXPECT_EQ(copy.type, "Line");
  EXPECT_EQ(copy.uniqueId, 9);
  EXPECT_EQ(copy.pointA, mark.pointA);
  EXPECT_EQ(copy.pointB, mark.pointB);
  EXPECT_EQ(copy.center, mark.center);
  EXPECT_THAT(copy.classIdx, ElementsAre(4));
}

TEST(TNVMarkLine, SizeIsOnePixelLargerThanTheDifference) {
  struct Row {
    cv::Point2d a;
    cv::Point2d b;
    cv::Point2d size;
  };
  for (const Row& row :
       {Row{{0.2, 0.2}, {0.29, 0.39}, {0.1, 0.2}}, Row{{0.29, 0.2}, {0.2, 0.39}, {0.1, 0.2}},
        // A vertical and a horizontal line, a single point.
        Row{{0.5, 0.25}, {0.5, 0.75}, {0.01, 0.51}}, Row{{0.25, 0.5}, {0.75, 0.5}, {0.51, 0.01}},
        Row{{0.5, 0.5}, {0.5, 0.5}, {0.01, 0.01}},
        // 10.4 and 20.6 round to 10 and 21.
        Row{{0.104, 0.5}, {0.206, 0.5}, {0.12, 0.01}}}) {
    const TNVMarkLine mark(row.a, row.b);
    EXPECT_NEAR(mark.getRelSize({100, 100}).x, row.size.x, 1e-12) << row.a;
    EXPECT_NEAR(mark.getRelSize({100, 100}).y, row.size.y, 1e-12) << row.a;
  }
  EXPECT_EQ(TNVMarkLine({0.25, 0.25}, {0.5, 0.75}).getRelSize({64, 32}),
            cv::Point2d(17.0 / 64, 17.0 / 32));
}

TEST(TNVMarkLine, ResizingStretchesAboutTheOldCentreAndMoves) {
  TNVMarkLine mark({0.2, 0.2}, {0.29, 0.39});
  mark.center = {0.25, 0.3};
  const int tag = mark.changeTag;
  mark.setRelSize({0.5, 0.6}, {0.2, 0.1}, {100, 100});
  // The size before was 0.1 by 0.2: (0.2 - 0.25) 2 + 0.25 + 0.25 and (0.2 - 0.3) 0.5 + 0.3 + 0.3.
  expectPoints({{0.4, 0.55}, {0.58, 0.645}}, {mark.pointA, mark.pointB});
  EXPECT_EQ(mark.center, cv::Point2d(0.25, 0.3));
  EXPECT_NE(mark.changeTag, tag);
}

TEST(TNVMarkLine, UpdateMovesEndsCentreAndPois) {
  TNVMarkLine mark({0.25, 0.25}, {0.5, 0.5});
  mark.pois = {{0.25, 0.25}};
  const cv::Point2d size = mark.getRelSize({64, 64});
  mark.update({0.5, 0.625}, size, {}, {64, 64});
  expectPoints({{0.375, 0.5}, {0.625, 0.75}}, {mark.pointA, mark.pointB});
  EXPECT_EQ(mark.center, cv::Point2d(0.5, 0.625));
  expectPoints({{0.375, 0.5}}, mark.pois);
}

TEST(TNVMarkLine, VerticalLineIsResizedToFiniteEnds) {
  TNVMarkLine mark({0.5, 0.25}, {0.5, 0.74});
  mark.update({0.5, 0.495}, {0.3, 0.25}, {}, {100, 100});
  // 50 pixels high, of which one half remains.
  expectPoints({{0.5, 0.3725}, {0.5, 0.6175}}, {mark.pointA, mark.pointB});
}

TEST(TNVMarkLine, FitsToTheBoxOfPoints) {
  TNVMarkLine mark({0.2, 0.2}, {0.29, 0.39});
  mark.fitToPoints({{0.4, 0.9}, {0.6, 0.5}, {0.5, 0.6}}, {100, 100});
  EXPECT_NEAR(mark.center.x, 0.5, 1e-12);
  EXPECT_NEAR(mark.center.y, 0.7, 1e-12);
  // Twice as large about (0.245, 0.295), which moved to (0.5, 0.7).
  expectPoints({{0.41, 0.51}, {0.59, 0.89}}, {mark.pointA, mark.pointB});
}

TEST(TNVMarkLine, CursorLessThanNineteenPixelsAwayHits) {
  // On 512 by 256 pixels: from (128, 128) to (384, 128).
  const TNVMarkLine mark({0.25, 0.5}, {0.75, 0.5});
  struct Row {
    cv::Point2d pixel;
    bool over;
  };
  for (const Row& row :
       {Row{{200, 128}, true}, Row{{200, 146}, true}, Row{{200, 110}, true}, Row{{200, 147}, false},
        Row{{200, 109}, false}, Row{{200, 146.99}, true}, Row{{402, 128}, true},
        Row{{403, 128}, false}, Row{{110, 128}, true}, Row{{109, 128}, false},
        // 13 by 13 off the end is 18.4, 14 by 14 is 19.8.
        Row{{397, 141}, true}, Row{{398, 142}, false}}) {
    const cv::Point2d cursor(row.pixel.x / 512, row.pixel.y / 256);
    EXPECT_EQ(mark.isMouseOver(cursor, {512, 256}), row.over) << row.pixel;
  }
}

TEST(TNVMarkLine, HitTellsTheDistanceToTheCentreAndAMissNone) {
  const TNVMarkLine mark({0.25, 0.5}, {0.75, 0.5});
  double distance = -5;
  // 30 to the right of (256, 128), 16 below.
  EXPECT_TRUE(mark.isMouseOver({286.0 / 512, 144.0 / 256}, {512, 256}, &distance));
  EXPECT_NEAR(distance, 34, 1e-9);
  distance = -5;
  EXPECT_FALSE(mark.isMouseOver({0.5, 0.75}, {512, 256}, &distance));
  EXPECT_EQ(distance, -5);
}

TEST(TNVMarkLine, OfCrossingLinesTheOneWithTheNearerMiddleIsNearer) {
  const TNVMarkLine level({0.125, 0.5}, {0.625, 0.5});
  const TNVMarkLine upright({0.5, 0.4375}, {0.5, 0.9375});
  double toLevel = 0;
  double toUpright = 0;
  // On the one, a few pixels beside the other.
  const cv::Point2d cursor(0.4921875, 0.5);
  EXPECT_TRUE(level.isMouseOver(cursor, {512, 512}, &toLevel));
  EXPECT_TRUE(upright.isMouseOver(cursor, {512, 512}, &toUpright));
  EXPECT_EQ(toLevel, 60);
  EXPECT_NEAR(toUpright, std::hypot(4, 96), 1e-9);
}

TEST(TNVMarkLine, PoisOfEachMode) {
  TNVMarkLine mark({0.25, 0.5}, {0.75, 0.25});
  mark.center = {0.625, 0.125};
  const cv::Point2d a(0.25, 0.5), b(0.75, 0.25), middle(0.625, 0.125);
  EXPECT_THAT(mark.getPOIsGenerated("Endpoints", {64, 32}, 7), ElementsAre(a, b));
  EXPECT_THAT(mark.getPOIsGenerated("Center", {64, 32}, 7), ElementsAre(middle));
  EXPECT_THAT(mark.getPOIsGenerated("Endpoints & Center", {64, 32}, 7), ElementsAre(a, middle, b));
  expectPoints({a, {0.375, 0.4375}, {0.5, 0.375}, {0.625, 0.3125}, b},
               mark.getPOIsGenerated("Divided", {64, 32}, 5));
  expectPoints({a, b}, mark.getPOIsGenerated("Divided", {64, 32}, 2));
  for (const char* mode : {"endpoints", "Corners", "Poly Points", ""})
    EXPECT_THAT(mark.getPOIsGenerated(mode, {64, 32}, 7), IsEmpty()) << mode;
}

TEST(TNVMarkLine, DividedNeedsACountOfTwo) {
  const LogCapture log;
  const TNVMarkLine mark({0.25, 0.5}, {0.75, 0.25});
  for (const int count : {1, 0, -1, INT_MIN})
    EXPECT_THAT(mark.getPOIsGenerated("Divided", {64, 64}, count), IsEmpty());
  EXPECT_EQ(log.text(), "");
}

TEST(TNVMarkLine, PoiCountIsTheLengthByTheSmallerSide) {
  struct Row {
    cv::Point2d poiSize;
    int count;
  };
  // 32 by 24 pixels, thus 40 long, on 64 by 32.
  for (const Row& row : {Row{{0.125, 0.125}, 10}, Row{{0.0625, 0.5}, 10}, Row{{0.5, 0.5}, 3},
                         Row{{0.25, 0.5}, 3}, Row{{1, 0.25}, 5}, Row{{1, 0.75}, 2},
                         Row{{-0.25, 1}, -3}, Row{{0, 0.1}, 0}, Row{{0.1, 0}, 0}}) {
    TNVMarkLine mark({0.25, 0.125}, {0.75, 0.875});
    mark.poiSize = row.poiSize;
    EXPECT_EQ(mark.getPOICountForSize({64, 32}), row.count) << row.poiSize;
  }
}

TEST(TNVMarkLine, EndsAreWrittenBehindTheBase) {
  TNVMarkLine mark({0.5, 0.25}, {0.125, 0.75});
  const int tag = mark.changeTag;
  EXPECT_THAT(writtenXml(mark), HasSubstr("</ClassIdx>\n"
                                          "  <PointA>\n"
                                          "    5.0000000000000000e-01 "
                                          "2.5000000000000000e-01</PointA>\n"
                                          "  <PointB>\n"
                                          "    1.2500000000000000e-01 "
                                          "7.5000000000000000e-01</PointB></Mark0>\n"));
  EXPECT_NE(mark.changeTag, tag);
}

TEST(TNVMarkLine, ReadsBackBitForBit) {
  TNVMarkLine mark({0.1, 1.0 / 3.0}, {0.6, 0.7});
  mark.pois = {{0.3, 0.4}};
  mark.classIdx = {2, 3};
  const auto read = markFromXml<TNVMarkLine>(writtenXml(mark));
  EXPECT_EQ(read.type, "Line");
  EXPECT_EQ(read.center, mark.center);
  EXPECT_EQ(read.pointA, mark.pointA);
  EXPECT_EQ(read.pointB, mark.pointB);
  EXPECT_EQ(read.pois, mark.pois);
  EXPECT_EQ(read.classIdx, mark.classIdx);
}

TEST(TNVMarkLine, EndOfAnotherLengthReadsAsZero) {
  for (const char* content :
       {"", "<PointA>1.</PointA><PointB>1. 2. 3.</PointB>", "<PointA></PointA>"}) {
    const auto read = markFromXml<TNVMarkLine>(xmlWithMark(content));
    EXPECT_EQ(read.type, "");
    EXPECT_EQ(read.pointA, cv::Point2d(0, 0)) << content;
    EXPECT_EQ(read.pointB, cv::Point2d(0, 0)) << content;
  }
}

namespace {

struct TNVMarkLineOnView : ::testing::Test {
  /// The line and its dots above what the view shows.
  void drawLineReference(cv::Mat& view, const PenState& pen, bool designing) const {
    circleReference(view, middle, pen.colour, pen.thickness);
    if (designing) {
      dashedReference(view, {a, b}, pen.colour, 7, 3, std::max(pen.thickness, 1));
    } else {
      lineReference(view, a, b, pen.colour, std::max(pen.thickness, 1));
    }
    circleReference(view, a, pen.colour, cv::FILLED);
    circleReference(view, b, pen.colour, cv::FILLED);
  }

  /// From (50.4, 32.4) to (150.4, 101.88) on the view, the middle at (100.4, 67.14).
  TNVMarkLine mark{{0.252, 0.27}, {0.752, 0.849}};
  cv::Point a{50, 32};
  cv::Point b{150, 102};
  cv::Point middle{100, 67};
};

}  // namespace

TEST_F(TNVMarkLineOnView, EachStateHasItsPen) {
  for (const PenState& state : penStates()) {
    for (const bool designing : {false, true}) {
      // Without an area there is nothing to fill.
      for (const bool filled : {false, true}) {
        SCOPED_TRACE(nameOf(state, designing, filled));
        take(mark, state);
        cv::Mat expected = emptyView();
        // In the picture 501 by 348 pixels: from (50.3, 32.34) to (150.5, 101.94) on the view.
        if (state.selected) {
          frameReference(expected, {{50, 32}, {150, 32}, {150, 101}, {50, 101}},
                         pixelOf(state.colour));
        }
        drawLineReference(expected, state, designing);
        const cv::Mat seen = viewWith(mark, styleNamed(state.style, filled), 0, designing);
        EXPECT_TRUE(samePixels(expected, seen));
      }
    }
  }
}

TEST_F(TNVMarkLineOnView, PoisLieUnderTheLine) {
  mark.poiVisible = true;
  mark.pois = {{0.25, 0.25}, {0.5, 0.55}};
  mark.poiSize = {0.05, 0.1};
  for (const bool designing : {false, true}) {
    cv::Mat expected = emptyView();
    // Boxes of 10 by 12 around (50, 30) and (100, 66).
    boxReference(expected, {{45, 24}, {95, 60}}, {255, 255, 255});
    drawLineReference(expected, penStates().front(), designing);
    EXPECT_TRUE(samePixels(expected, viewWith(mark, styleNamed("White"), 0, designing)));
  }
}

TEST_F(TNVMarkLineOnView, LabelOfEachInfoStandsAtTheCentre) {
  mark.classIdx = {12, 11};
  // 500 by 347.4 pixels in the picture, 100 by 69.48 on the view: 608.8 and 121.8 long.
  const std::vector<std::string> labels{"", "0,5", "cat,dog", "608", "121", "0.77"};
  for (std::size_t info = 0; info < labels.size(); ++info) {
    for (const PenState& state : {penStates()[0], penStates()[2]}) {
      for (const bool designing : {false, true}) {
        mark.hovered = state.hovered;
        cv::Mat expected = emptyView();
        drawLineReference(expected, state, designing);
        textReference(expected, labels[info], {100, 67}, state.colour);
        const cv::Mat seen = viewWith(mark, styleNamed("White"), static_cast<int>(info), designing);
        EXPECT_TRUE(samePixels(expected, seen)) << labels[info] << designing;
      }
    }
  }
}

TEST_F(TNVMarkLineOnView, LabelFollowsACentreThatIsNotTheMiddle) {
  mark.center = {0.1275, 0.255};
  cv::Mat expected = emptyView();
  // 25.5 goes to the even 26, 30.6 to 31.
  middle = {26, 31};
  drawLineReference(expected, penStates().front(), false);
  textReference(expected, "608", {26, 31}, {255, 255, 255});
  EXPECT_TRUE(samePixels(expected, viewWith(mark, styleNamed("White"), 3, false)));
}

TEST_F(TNVMarkLineOnView, DesignPointOfALineIsNotDrawn) {
  mark.designPoint = {0.5, 0.125};
  cv::Mat expected = emptyView();
  drawLineReference(expected, penStates().front(), true);
  EXPECT_TRUE(samePixels(expected, viewWith(mark, styleNamed("White"), 0, true)));
}

TEST_F(TNVMarkLineOnView, LineWithoutAnEndIsItsFrameAlone) {
  mark.selected = true;
  for (const auto& [first, second] :
       {std::pair<cv::Point2d, cv::Point2d>{{-1, -1}, {0.752, 0.849}}, {{0.252, 0.27}, {-1, -1}}}) {
    mark.pointA = first;
    mark.pointB = second;
    for (const bool designing : {false, true}) {
      cv::Mat expected = emptyView();
      const bool firstIsSet = first.x > 0;
      // In pixels of the picture (-1000, -600) and (752, 509), or (252, 162): 1753 by 1110 and
      // 1253 by 763. On the view left 100.4 - 175.3, top 67.14 - 111; left 100.4 - 125.3, top
      // 67.14 - 76.3.
      const std::vector<cv::Point> corners =
          firstIsSet ? std::vector<cv::Point>{{-24, -9}, {225, -9}, {225, 143}, {-24, 143}}
                     : std::vector<cv::Point>{{-74, -43}, {275, -43}, {275, 178}, {-74, 178}};
      frameReference(expected, corners, {0, 0, 255});
      EXPECT_TRUE(samePixels(expected, viewWith(mark, styleNamed("White"), 1, designing)));
    }
  }
}

TEST_F(TNVMarkLineOnView, LineWithOneUnsetCoordinateIsDrawn) {
  mark.pointA = {-1, 0.27};
  cv::Mat expected = emptyView();
  a = {-200, 32};
  drawLineReference(expected, penStates().front(), false);
  EXPECT_TRUE(samePixels(expected, viewWith(mark, styleNamed("White"), 0, false)));
}

TEST(TNVMarkLine, DefaultMadeLineDrawsNothingUnlessSelected) {
  TNVMarkLine mark;
  EXPECT_TRUE(samePixels(emptyView(), viewWith(mark, styleNamed("White", true), 3, false)));
}

TEST(TNVMarkLine, HostileGeometryIsDrawnAndAnswered) {
  const LogCapture log;
  const ThreeClasses classes;
  for (const double x : hostileNumbers()) {
    for (const double y : hostileNumbers()) {
      TNVMarkLine mark({x, y}, {0.5, x});
      mark.poiSize = {y, x};
      mark.pois = {{x, y}};
      mark.poiVisible = true;
      for (int state = 0; state < 8; ++state) {
        mark.hovered = (state & 1) != 0;
        mark.selected = (state & 2) != 0;
        for (const cv::Size size : {cv::Size(50, 30), cv::Size(1, 1)}) {
          cv::Mat view = patternedPicture(size.width, size.height);
          mark.draw(view, size, styleNamed("White", true), infoOf(3 + state % 3), classes.list(),
                    (state & 4) != 0);
        }
      }
      double distance = 0;
      mark.isMouseOver({0.5, x}, {640, 480}, &distance);
      mark.getPOICountForSize({640, 480});
      for (const std::string& mode : mark.getPOIModes())
        EXPECT_LE(mark.getPOIsGenerated(mode, {640, 480}, 9).size(), 10U);
      mark.fitToPoints({{x, y}, {y, 0.5}}, {640, 480});
      mark.update({y, x}, {x, y}, {}, {640, 480});
      mark.getRelSize({0, 0});
      EXPECT_TRUE(mark.getContour({640, 480}).empty());
    }
  }
}
