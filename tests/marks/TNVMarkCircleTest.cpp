#include "marks/TNVMarkCircle.h"

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

Points rim(cv::Point2d centre, double radius, int count) {
  Points points;
  for (int i = 0; i < count; ++i) {
    const double angle = i * (2 * CV_PI / count);
    points.emplace_back(std::cos(angle) * radius + centre.x, std::sin(angle) * radius + centre.y);
  }
  return points;
}

}  // namespace

TEST(TNVMarkCircle, DefaultMadeCircleHasNoRim) {
  const TNVMarkCircle mark;
  EXPECT_EQ(mark.type, "Circle");
  EXPECT_EQ(mark.center, cv::Point2d(-1, -1));
  EXPECT_THAT(mark.radius, IsEmpty());
}

TEST(TNVMarkCircle, DesignedFromCentreAndRim) {
  const TNVMarkCircle mark({0.5, 0.25}, {0.75, 0.5});
  EXPECT_EQ(mark.type, "Circle");
  EXPECT_EQ(mark.center, cv::Point2d(0.5, 0.25));
  EXPECT_THAT(mark.radius, ElementsAre(cv::Point2d(0.75, 0.5)));
  EXPECT_EQ(mark.designPoint, cv::Point2d(-1, -1));
}

TEST(TNVMarkCircle, AnswersOfTheKind) {
  const TNVMarkCircle mark({0.5, 0.5}, {0.6, 0.5});
  EXPECT_EQ(mark.getMinConstructionPoints(false), 2);
  EXPECT_EQ(mark.getMaxConstructionPoints(false), 2);
  EXPECT_EQ(mark.getMinConstructionPoints(true), 3);
  EXPECT_EQ(mark.getMaxConstructionPoints(true), 99);
  EXPECT_EQ(mark.getTypeName(false), "Circle");
  EXPECT_EQ(mark.getTypeName(true), "Circle Multiple");
  EXPECT_EQ(mark.getPixelRect({640, 480}), cv::Rect());
  EXPECT_THAT(mark.getPOIModes(), ElementsAre("Divided"));
  EXPECT_TRUE(mark.getPOIModeSupportsValue("Divided"));
  for (const char* mode : {"Corners", "divided", "Divided ", ""}) {
    EXPECT_FALSE(mark.getPOIModeSupportsValue(mode)) << mode;
    EXPECT_THAT(mark.getPOIsGenerated(mode, {640, 480}, 4), IsEmpty()) << mode;
  }
}

TEST(TNVMarkCircle, CopyTakesTheRim) {
  TNVMarkCircle mark({0.5, 0.5}, {0.625, 0.75});
  mark.radius.emplace_back(0.25, 0.125);
  mark.classIdx = {4};
  const TNVMarkCircle copy(mark);
  EXPECT_EQ(copy.type, "Circle");
  EXPECT_EQ(copy.center, mark.center);
  EXPECT_EQ(copy.radius, mark.radius);
  EXPECT_THAT(copy.classIdx, ElementsAre(4));
}

TEST(TNVMarkCircle, FitPutsTheRimPointBelowTheCentre) {
  // 3-4-5 triangles around (100, 80) with r = 50, on 400 by 200 pixels.
  const Points points{
      {150 / 400.0, 80 / 200.0}, {100 / 400.0, 130 / 200.0}, {60 / 400.0, 50 / 200.0}};
  const TNVMarkCircle mark(points, {400, 200});
  EXPECT_EQ(mark.type, "Circle");
  expectPoint({0.25, 0.4}, mark.center, 1e-4);
  ASSERT_EQ(mark.radius.size(), 1U);
  expectPoint({0.25, 0.65}, mark.radius.front(), 1e-4);
  EXPECT_EQ(mark.radius.front().x, mark.center.x);
}

TEST(TNVMarkCircle, FitOfTooFewPointsKeepsWhatSaysSo) {
  for (const Points& points : {Points{{0.5, 0.5}}, Points{{0.5, 0.5}, {0.25, 0.25}}}) {
    const LogCapture log;
    const TNVMarkCircle mark(points, {100, 50});
    expectPoint({-0.01, -0.02}, mark.center);
    ASSERT_EQ(mark.radius.size(), 1U);
    expectPoint({-0.01, -0.04}, mark.radius.front());
    EXPECT_EQ(log.text(), "TNVCircle::getCircleFromContour: Contour points less then 3!\n");
  }
  const LogCapture log;
  const TNVMarkCircle mark(Points{}, {100, 50});
  EXPECT_EQ(mark.center, cv::Point2d(-1, -1));
  EXPECT_THAT(mark.radius, IsEmpty());
  EXPECT_EQ(log.text(), "");
}

TEST(TNVMarkCircle, RimOnAWideImage) {
  const TNVMarkCircle mark({0.5, 0.5}, {0.6, 0.5});
  expectPoint({0.2, 0.4}, mark.getRelSize({200, 100}));
  expectPoint({0.2, 0.2}, mark.getRelSize({100, 100}));
}

TEST(TNVMarkCircle, SizeWithoutARimPointIsZero) {
  TNVMarkCircle mark;
  EXPECT_EQ(mark.getRelSize({200, 100}), cv::Point2d(0, 0));
  mark.update({0.5, 0.5}, {0.25, 0.25}, {}, {200, 100});
  EXPECT_EQ(mark.center, cv::Point2d(0.5, 0.5));
  EXPECT_THAT(mark.radius, IsEmpty());
}

TEST(TNVMarkCircle, NewSizeTakesTheWidthAndKeepsTheDirection) {
  // (30, 40) pixels from the centre to the rim on 200 by 100; the new radius is 200 * 0.1 / 2.
  TNVMarkCircle mark({0.5, 0.25}, {0.65, 0.65});
  mark.radius.emplace_back(0.75, 0.125);
  const int tag = mark.changeTag;
  mark.setRelSize({0.75, 0.5}, {0.1, 0.9}, {200, 100});
  // (100 + 0.6 * 10, 25 + 0.8 * 10) in fractions, and the shift (0.25, 0.25).
  expectPoint({106 / 200.0 + 0.25, 33 / 100.0 + 0.25}, mark.radius.front());
  EXPECT_EQ(mark.radius[1], cv::Point2d(0.75, 0.125));
  EXPECT_EQ(mark.center, cv::Point2d(0.5, 0.25));
  EXPECT_NE(mark.changeTag, tag);
}

TEST(TNVMarkCircle, UpdateMovesTheCircleAndItsPois) {
  TNVMarkCircle mark({0.25, 0.25}, {0.5, 0.25});
  mark.pois = {{0.375, 0.125}};
  mark.update({0.5, 0.5}, {0.25, 0.25}, {}, {100, 100});
  expectPoint({0.5, 0.5}, mark.center);
  expectPoint({0.625, 0.5}, mark.radius.front());
  // Half the size: (0.375 - 0.5) / 2 + 0.5 + 0.25 and (0.125 - 0.5) / 2 + 0.5 + 0.25.
  ASSERT_EQ(mark.pois.size(), 1U);
  expectPoint({0.6875, 0.5625}, mark.pois.front());
}

TEST(TNVMarkCircle, FitsToTheBoxOfPoints) {
  TNVMarkCircle mark({0.25, 0.25}, {0.25, 0.5});
  mark.fitToPoints({{0.25, 0.5}, {0.75, 0.625}}, {100, 100});
  expectPoint({0.5, 0.5625}, mark.center);
  expectPoint({0.5, 0.8125}, mark.radius.front());
}

TEST(TNVMarkCircle, RimAtTheCentreHasNoDirection) {
  TNVMarkCircle mark({0.5, 0.5}, {0.5, 0.5});
  mark.setRelSize({0.5, 0.5}, {0.2, 0.2}, {100, 100});
  EXPECT_TRUE(std::isnan(mark.radius.front().x));
  EXPECT_TRUE(std::isnan(mark.radius.front().y));
}

TEST(TNVMarkCircle, ContourHas64Points) {
  const TNVMarkCircle mark({0.5, 0.25}, {0.65, 0.65});
  expectPoints(rim({100, 25}, 50, 64), mark.getContour({200, 100}));
  EXPECT_THAT(TNVMarkCircle().getContour({200, 100}), IsEmpty());
}

TEST(TNVMarkCircle, CursorOnTheRimHits) {
  const TNVMarkCircle mark({0.5, 0.5}, {0.75, 0.5});  // r = 50 on 200 by 100
  struct Row {
    cv::Point2d point;
    bool over;
    double distance;
  };
  for (const Row& row : {Row{{0.75, 0.5}, true, 50}, Row{{0.5, 1}, true, 50},
                         Row{{0.5, 0.5}, true, 0}, Row{{0.755, 0.5}, false, 51},
                         Row{{0.65, 0.9}, true, 50}, Row{{0.7, 0.9}, false, 56.5685}}) {
    double distance = -1;
    EXPECT_EQ(mark.isMouseOver(row.point, {200, 100}), row.over) << row.point;
    EXPECT_EQ(mark.isMouseOver(row.point, {200, 100}, &distance), row.over) << row.point;
    EXPECT_NEAR(distance, row.distance, 1e-4) << row.point;
  }
}

TEST(TNVMarkCircle, WithoutARimPointNothingHitsAndNoDistanceIsTold) {
  TNVMarkCircle mark;
  mark.center = {0.5, 0.5};
  double distance = 17;
  EXPECT_FALSE(mark.isMouseOver({0.5, 0.5}, {200, 100}, &distance));
  EXPECT_EQ(distance, 17);
}

TEST(TNVMarkCircle, DividedWalksFromTheRightClockwise) {
  const TNVMarkCircle mark({0.5, 0.5}, {0.6, 0.5});  // r = 20 on 200 by 100
  expectPoints({{0.6, 0.5}, {0.5, 0.7}, {0.4, 0.5}, {0.5, 0.3}},
               mark.getPOIsGenerated("Divided", {200, 100}, 4));
  expectPoints({{0.6, 0.5}}, mark.getPOIsGenerated("Divided", {200, 100}, 1));
  for (const int count : {0, -1, INT_MIN, INT_MAX})
    EXPECT_THAT(mark.getPOIsGenerated("Divided", {200, 100}, count), IsEmpty()) << count;
  EXPECT_THAT(TNVMarkCircle().getPOIsGenerated("Divided", {200, 100}, 4), IsEmpty());
}

TEST(TNVMarkCircle, PoiCountIsTheRimByTheSmallerSide) {
  struct Row {
    cv::Point2d poiSize;
    int count;
  };
  // r = 20 on 200 by 100: a rim of 125.66 pixels.
  for (const Row& row : {Row{{0.05, 0.05}, 25},  // by 5, the height: 25.1
                         Row{{0.02, 0.5}, 31},   // by 4, the width: 31.4
                         Row{{0.5, 0.76}, 2},    // by 76: 1.65
                         Row{{0, 0.1}, 0}, Row{{0.1, 0}, 0}}) {
    TNVMarkCircle mark({0.5, 0.5}, {0.6, 0.5});
    mark.poiSize = row.poiSize;
    EXPECT_EQ(mark.getPOICountForSize({200, 100}), row.count) << row.poiSize;
  }
  TNVMarkCircle rimless;
  rimless.poiSize = {0.1, 0.1};
  EXPECT_EQ(rimless.getPOICountForSize({200, 100}), 0);
}

TEST(TNVMarkCircle, RadiusIsWrittenBehindTheBase) {
  TNVMarkCircle mark({0.5, 0.25}, {0.125, 0.75});
  EXPECT_THAT(writtenXml(mark), HasSubstr("</ClassIdx>\n"
                                          "  <Radius>\n"
                                          "    1.2500000000000000e-01 "
                                          "7.5000000000000000e-01</Radius></Mark0>\n"));
}

TEST(TNVMarkCircle, ReadsBackBitForBit) {
  TNVMarkCircle mark({1.0 / 3, 0.5}, {0.6, 0.7});
  mark.radius.emplace_back(0.1, 0.2);
  const auto read = markFromXml<TNVMarkCircle>(writtenXml(mark));
  EXPECT_EQ(read.type, "Circle");
  EXPECT_EQ(read.center, mark.center);
  EXPECT_EQ(read.radius, mark.radius);
  TNVMarkCircle rimless;
  EXPECT_THAT(markFromXml<TNVMarkCircle>(writtenXml(rimless)).radius, IsEmpty());
  EXPECT_THAT(markFromXml<TNVMarkCircle>(xmlWithMark("<Type>Circle</Type>")).radius, IsEmpty());
}

namespace {

/// The picture has 1000 by 660 pixels, so that circles on the view and on the picture differ.
struct TNVMarkCircleOnView : ::testing::Test {
  void expectDrawn(const cv::Mat& expected, const std::string& style, bool filled, int info,
                   bool designing) {
    EXPECT_TRUE(samePixels(
        expected, viewWith(mark, styleNamed(style, filled), info, designing, {1000, 660})));
  }

  /// The circle, the ring in the middle and the line to the rim.
  void drawCircleReference(cv::Mat& view, const PenState& pen, bool designing) const {
    const int line = std::max(pen.thickness, 1);
    if (designing) {
      dashedReference(view, dashedRim(), pen.colour, 7, 3, line);
      if (cursor) dashedReference(view, {middle, {180, 30}}, pen.colour, 2, 7, line);
    } else {
      cv::circle(view, middle, 31, pen.colour, pen.thickness, cv::LINE_AA, 0);
    }
    cv::circle(view, middle, 3, pen.colour, pen.thickness);
    lineReference(view, middle, {112, 85}, pen.colour, line);
  }

  /// 31 pixels have a rim of 194.8, one corner for 16 of them.
  static std::vector<cv::Point> dashedRim() {
    std::vector<cv::Point> path = roundedPath(rim({90.7, 60.78}, 31, 12));
    path.push_back(path.front());
    return path;
  }

  /// From (90.7, 60.78) to (111.7, 84.78): (21, 24) pixels, which are 31.89.
  TNVMarkCircle mark{{0.4535, 0.5065}, {0.5585, 0.7065}};
  cv::Point middle{91, 61};
  bool cursor = false;
};

}  // namespace

TEST_F(TNVMarkCircleOnView, EachStateHasItsPen) {
  const std::vector<cv::Point> outline = roundedPath(rim({90.7, 60.78}, std::hypot(21, 24), 64));
  for (const PenState& state : penStates()) {
    for (const bool designing : {false, true}) {
      for (const bool filled : {false, true}) {
        SCOPED_TRACE(nameOf(state, designing, filled));
        take(mark, state);
        cv::Mat expected = emptyView();
        if (filled) fillReference(expected, outline, pixelOf(state.colour));
        // (105, 132) pixels of the picture are 168.67, which give a box of 0.33734 by 0.51112 from
        // (0.28483, 0.25094) to (0.62217, 0.76206): 56.97, 30.11 to 124.43, 91.45 on the view.
        if (state.selected) {
          frameReference(expected, {{56, 30}, {124, 30}, {124, 91}, {56, 91}},
                         pixelOf(state.colour));
        }
        drawCircleReference(expected, state, designing);
        expectDrawn(expected, state.style, filled, 0, designing);
      }
    }
  }
}

TEST_F(TNVMarkCircleOnView, PoisLieUnderTheCircle) {
  mark.poiVisible = true;
  mark.pois = {{0.25, 0.5}, {0.45, 0.58}};
  mark.poiSize = {0.05, 0.1};
  for (const bool designing : {false, true}) {
    cv::Mat expected = emptyView();
    // Boxes of 10 by 12: 50 - 5, 60 - 6; 90 - 5, 69.6 - 6.
    boxReference(expected, {{45, 54}, {85, 64}}, {255, 255, 255});
    drawCircleReference(expected, penStates().front(), designing);
    expectDrawn(expected, "White", false, 0, designing);
  }
}

TEST_F(TNVMarkCircleOnView, LabelOfEachInfoStandsRightOfTheRim) {
  mark.classIdx = {12, 11};
  // 168.67 pixels of the picture, 31.89 of the view, 31.89 / 200.
  const std::vector<std::string> labels{"", "0,5", "cat,dog", "168", "31", "0.16"};
  for (std::size_t info = 0; info < labels.size(); ++info) {
    for (const PenState& state : {penStates()[0], penStates()[2]}) {
      for (const bool designing : {false, true}) {
        SCOPED_TRACE(labels[info] + (designing ? ", designing" : ""));
        mark.hovered = state.hovered;
        cv::Mat expected = emptyView();
        drawCircleReference(expected, state, designing);
        // (90.7 + 31.89 + 5, 60.78), truncated.
        textReference(expected, labels[info], {127, 60}, state.colour);
        expectDrawn(expected, state.style, false, static_cast<int>(info), designing);
      }
    }
  }
}

TEST_F(TNVMarkCircleOnView, DottedLineLeadsToTheCursorWhileDesigning) {
  for (const double x : {0.9, 0.0, -1.0}) {
    mark.designPoint = {x, 0.25};
    cursor = x > 0;
    for (const PenState& state : {penStates()[0], penStates()[2]}) {
      for (const bool designing : {false, true}) {
        SCOPED_TRACE(nameOf(state, designing, false));
        mark.hovered = state.hovered;
        cv::Mat expected = emptyView();
        drawCircleReference(expected, state, designing);
        expectDrawn(expected, "White", false, 0, designing);
      }
    }
  }
}

TEST_F(TNVMarkCircleOnView, SmallDesignedCircleShowsItsMiddleOnly) {
  // 2 pixels of radius have no corner for 16 pixels of the rim.
  mark.center = {0.5, 0.5};
  mark.radius = {{0.512, 0.5}};
  cv::Mat expected = emptyView();
  cv::circle(expected, {100, 60}, 3, {255, 255, 255}, 1);
  lineReference(expected, {100, 60}, {102, 60}, {255, 255, 255}, 1);
  expectDrawn(expected, "White", false, 0, true);
}

TEST_F(TNVMarkCircleOnView, WithoutARimPointOnlyThePoisAreDrawn) {
  mark.radius.clear();
  mark.classIdx = {12};
  mark.poiVisible = true;
  mark.pois = {{0.25, 0.5}};
  mark.poiSize = {0.05, 0.1};
  cv::Mat expected = emptyView();
  boxReference(expected, {{45, 54}}, {255, 255, 255});
  for (const bool designing : {false, true})
    expectDrawn(expected, "White", true, 1, designing);
}

TEST_F(TNVMarkCircleOnView, HostileGeometryIsDrawnInNoTime) {
  expectHostileGeometryIsDrawnInNoTime(mark, [&](double a, double b, int variant) {
    mark.center = variant == 0 ? cv::Point2d(0.5, 0.5) : cv::Point2d(a, b);
    mark.radius = {variant == 1 ? cv::Point2d(0.5, 0.7) : cv::Point2d(b, a)};
  });
}

TEST(TNVMarkCircle, HostileGeometryIsAnsweredSomehow) {
  const LogCapture log;
  for (const double a : hostileNumbers()) {
    for (const double b : hostileNumbers()) {
      TNVMarkCircle mark({a, b}, {b, a});
      EXPECT_EQ(mark.getContour({640, 480}).size(), 64U);
      EXPECT_EQ(mark.getPOIsGenerated("Divided", {640, 480}, 9).size(), 9U);
      useHostileMark(mark, a, b);
      EXPECT_NO_THROW(TNVMarkCircle({{a, b}, {b, a}, {a, a}, {0.5, 0.5}}, {640, 480}));
      EXPECT_NO_THROW(TNVMarkCircle({{a, b}, {0.1, 0.2}, {0.7, 0.5}}, {0, 0}));
    }
  }
}
