#include "marks/TNVMarkEllipse.h"

#include <array>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marks/PathTools.h"
#include "marks/TNVEllipse.h"
#include "support/LogCapture.h"

namespace {

using Points = TNVMark::Points;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// On 1000 by 500 pixels upright, with the half axes 100 and 50 around (500.25, 250.25).
TNVMarkEllipse upright() {
  return {{0.50025, 0.5005}, {0.60025, 0.5005}, {0.50025, 0.6005}};
}

Points scaled(Points points, double x, double y) {
  for (cv::Point2d& point : points)
    point = {point.x * x, point.y * y};
  return points;
}

/// Points of an ellipse in pixels.
Points rimPoints(cv::Point2d centre, cv::Size2d axes, double degrees, int count) {
  const double tilt = degrees * CV_PI / 180;
  Points points;
  for (int i = 0; i < count; ++i) {
    const double x = axes.width * std::cos(2 * CV_PI * i / count);
    const double y = axes.height * std::sin(2 * CV_PI * i / count);
    points.push_back(centre + cv::Point2d(x * std::cos(tilt) - y * std::sin(tilt),
                                          x * std::sin(tilt) + y * std::cos(tilt)));
  }
  return points;
}

/// The rim as a polygon, by a direct call.
Points polygon(cv::Point2d centre, cv::Point2d a, cv::Point2d b, int delta) {
  const double degrees = std::atan2(a.y, a.x) / CV_PI * 180;
  const cv::RotatedRect rect(centre, cv::Size2d(2 * cv::norm(a), 2 * cv::norm(b)),
                             static_cast<float>(degrees));
  std::array<cv::Point2f, 4> corners;
  rect.points(corners.data());
  const auto half = [&](std::size_t from, std::size_t to) {
    return cv::norm(corners[to] - corners[from]) / 2;
  };
  Points points;
  cv::ellipse2Poly(cv::Point2d(rect.center), cv::Size2d(half(3, 0), half(0, 1)),
                   static_cast<int>(rect.angle), 0, 360, delta, points);
  return points;
}

/// Points at equal distances around a closed outline.
Points evenlyAround(Points outline, int count) {
  outline.push_back(outline.front());
  Points points = evenlyAlong(outline, count + 1);
  points.pop_back();
  return points;
}

}  // namespace

TEST(TNVMarkEllipse, DefaultMadeEllipseHasNoAxes) {
  const TNVMarkEllipse mark;
  EXPECT_EQ(mark.type, "Ellipse");
  EXPECT_EQ(mark.center, cv::Point2d(-1, -1));
  EXPECT_EQ(mark.pointA, cv::Point2d(0, 0));
  EXPECT_EQ(mark.pointB, cv::Point2d(0, 0));
}

TEST(TNVMarkEllipse, DesignedFromCentreAndAxes) {
  const TNVMarkEllipse mark({0.5, 0.25}, {0.75, 0.5}, {0.125, 0.375});
  EXPECT_EQ(mark.type, "Ellipse");
  EXPECT_EQ(mark.center, cv::Point2d(0.5, 0.25));
  EXPECT_EQ(mark.pointA, cv::Point2d(0.75, 0.5));
  EXPECT_EQ(mark.pointB, cv::Point2d(0.125, 0.375));
  EXPECT_EQ(mark.designPoint, cv::Point2d(-1, -1));
}

TEST(TNVMarkEllipse, AnswersOfTheKind) {
  const TNVMarkEllipse mark = upright();
  EXPECT_EQ(mark.getMinConstructionPoints(false), 3);
  EXPECT_EQ(mark.getMaxConstructionPoints(false), 3);
  EXPECT_EQ(mark.getMinConstructionPoints(true), 5);
  EXPECT_EQ(mark.getMaxConstructionPoints(true), 99);
  EXPECT_EQ(mark.getTypeName(false), "Ellipse");
  EXPECT_EQ(mark.getTypeName(true), "Ellipse Multiple");
  EXPECT_EQ(mark.getPixelRect({640, 480}), cv::Rect());
  EXPECT_THAT(mark.getPOIModes(), ElementsAre("Divided"));
  EXPECT_TRUE(mark.getPOIModeSupportsValue("Divided"));
  for (const char* mode : {"Corners", "divided", "Divided ", ""}) {
    EXPECT_FALSE(mark.getPOIModeSupportsValue(mode)) << mode;
    EXPECT_THAT(mark.getPOIsGenerated(mode, {640, 480}, 4), IsEmpty()) << mode;
  }
}

TEST(TNVMarkEllipse, CopyTakesThePoints) {
  TNVMarkEllipse mark = upright();
  mark.classIdx = {4};
  const TNVMarkEllipse copy(mark);
  EXPECT_EQ(copy.type, "Ellipse");
  EXPECT_EQ(copy.center, mark.center);
  EXPECT_EQ(copy.pointA, mark.pointA);
  EXPECT_EQ(copy.pointB, mark.pointB);
  EXPECT_THAT(copy.classIdx, ElementsAre(4));
}

TEST(TNVMarkEllipse, FitPutsThePointsOnTheAxes) {
  // The library's rectangle has the longer side as its height.
  for (const double degrees : {20.0, 63.0, 130.0}) {
    const Points pixels = rimPoints({300, 220}, {70, 120}, degrees, 24);
    const TNVMarkEllipse mark(scaled(pixels, 1 / 640.0, 1 / 480.0), {640, 480});
    EXPECT_EQ(mark.type, "Ellipse");
    expectPoint({300, 220}, {mark.center.x * 640, mark.center.y * 480}, 2);
    const cv::Point2d a((mark.pointA.x - mark.center.x) * 640,
                        (mark.pointA.y - mark.center.y) * 480);
    const cv::Point2d b((mark.pointB.x - mark.center.x) * 640,
                        (mark.pointB.y - mark.center.y) * 480);
    EXPECT_NEAR(cv::norm(a), 70, 3);
    EXPECT_NEAR(cv::norm(b), 120, 3);
    // Half a turn is the same axis; B lies a quarter turn before A.
    const double tilt = std::atan2(a.y, a.x) * 180 / CV_PI;
    EXPECT_NEAR(std::remainder(tilt - degrees, 180), 0, 2);
    EXPECT_NEAR(a.dot(b), 0, 1e-3 * cv::norm(a) * cv::norm(b));
    EXPECT_LT(a.cross(b), 0);
  }
}

TEST(TNVMarkEllipse, FitOfFivePointsIsTheEllipseDetected) {
  // All samples are the same five points, so that two detections agree. The angles are no whole
  // degrees.
  const cv::Size imageSize(640, 480);
  for (const double degrees : {20.2, 63.1, 130.4}) {
    Points pixels = rimPoints({300, 220}, {70, 120}, degrees, 5);
    for (cv::Point2d& pixel : pixels)
      pixel = {std::round(pixel.x), std::round(pixel.y)};
    const cv::RotatedRect found = TNVEllipse(pixels, imageSize).detectEllipse();
    ASSERT_GT(found.size.area(), 0);
    ASSERT_GT(std::abs(std::remainder(found.angle, 1.0)), 0.1) << found.angle;
    const TNVMarkEllipse mark(scaled(pixels, 1 / 640.0, 1 / 480.0), imageSize);
    const double x = found.center.x, y = found.center.y;
    const double w = found.size.width, h = found.size.height, t = found.angle * CV_PI / 180;
    expectPoint({x / 640, y / 480}, mark.center, 1e-6);
    expectPoint({(x + std::cos(t) * w / 2) / 640, (y + std::sin(t) * w / 2) / 480}, mark.pointA,
                1e-6);
    expectPoint({(x + std::sin(t) * h / 2) / 640, (y - std::cos(t) * h / 2) / 480}, mark.pointB,
                1e-6);
  }
}

TEST(TNVMarkEllipse, FitOfTooFewPointsIsSilent) {
  const LogCapture log;
  for (std::size_t count = 0; count < 5; ++count) {
    const TNVMarkEllipse mark(Points(count, {0.5, 0.5}), {640, 480});
    EXPECT_EQ(mark.type, "Ellipse");
    EXPECT_EQ(mark.center, cv::Point2d(-1, -1));
    EXPECT_EQ(mark.pointA, cv::Point2d(0, 0));
  }
  EXPECT_EQ(log.text(), "");
}

TEST(TNVMarkEllipse, FailedFitLeavesTheDefaults) {
  const Points rim = scaled(rimPoints({300, 220}, {70, 120}, 20, 24), 1 / 640.0, 1 / 480.0);
  for (const TNVMarkEllipse& mark :
       {TNVMarkEllipse(Points(8, {0.5, 0.5}), {640, 480}), TNVMarkEllipse(rim, {1, 1}),
        TNVMarkEllipse(rim, {0, 0}), TNVMarkEllipse(rim, {1 << 30, 1 << 30})}) {
    EXPECT_EQ(mark.center, cv::Point2d(-1, -1));
    EXPECT_EQ(mark.pointA, cv::Point2d(0, 0));
    EXPECT_EQ(mark.pointB, cv::Point2d(0, 0));
  }
}

TEST(TNVMarkEllipse, SizeIsTheUprightBoxInWholePixels) {
  // Columns 400 to 600. Of rows, corners each 4 degrees miss the end of the axis by 2 degrees:
  // 250.25 -+ 50 cos 2 are 200.28 and 300.22, rows 200 to 300.
  expectPoint({201 / 1000.0, 101 / 500.0}, upright().getRelSize({1000, 500}));
  // At 249.98 they reach from 200.01 to 299.95, which the axis itself would leave.
  const TNVMarkEllipse higher({0.50025, 0.49996}, {0.60025, 0.49996}, {0.50025, 0.59996});
  expectPoint({201 / 1000.0, 100 / 500.0}, higher.getRelSize({1000, 500}));
  // A quarter turn: the first half axis stands upright.
  const TNVMarkEllipse turned({0.50025, 0.5005}, {0.50025, 0.7005}, {0.55025, 0.5005});
  expectPoint({101 / 1000.0, 201 / 500.0}, turned.getRelSize({1000, 500}));
  // Far out in a large picture: columns 8500 to 9500 of 9000.25 -+ 500, rows 8750.3 -+ 250 cos 2,
  // which are 8500.46 and 9000.14, thus 8500 to 9000.
  const TNVMarkEllipse far({0.900025, 0.87503}, {0.950025, 0.87503}, {0.900025, 0.90003});
  expectPoint({1001 / 10000.0, 501 / 10000.0}, far.getRelSize({10000, 10000}));
}

TEST(TNVMarkEllipse, DirectionOfTheSecondPointDoesNotCount) {
  for (const cv::Point2d b : {cv::Point2d(0.50025, 0.4005), {0.55025, 0.5005}, {0.53025, 0.5805}}) {
    const TNVMarkEllipse mark({0.50025, 0.5005}, {0.60025, 0.5005}, b);
    expectPoint({201 / 1000.0, 101 / 500.0}, mark.getRelSize({1000, 500}));
  }
}

TEST(TNVMarkEllipse, NewSizeOnlyMoves) {
  TNVMarkEllipse mark({0.5, 0.5}, {0.625, 0.5}, {0.5, 0.75});
  const int tag = mark.changeTag;
  mark.setRelSize({0.25, 0.625}, {0.9, 0.9}, {640, 480});
  EXPECT_EQ(mark.center, cv::Point2d(0.5, 0.5));
  expectPoint({0.375, 0.625}, mark.pointA);
  expectPoint({0.25, 0.875}, mark.pointB);
  EXPECT_NE(mark.changeTag, tag);
}

TEST(TNVMarkEllipse, UpdateKeepsTheSizeAndMovesPois) {
  TNVMarkEllipse mark = upright();
  mark.pois = {{0.45, 0.55}};
  // By 100 and -50 whole pixels, so that the box keeps its size.
  mark.update({0.60025, 0.4005}, {0.5, 0.5}, {}, {1000, 500});
  expectPoint({0.60025, 0.4005}, mark.center);
  expectPoint({0.70025, 0.4005}, mark.pointA);
  expectPoint({0.60025, 0.5005}, mark.pointB);
  expectPoint({201 / 1000.0, 101 / 500.0}, mark.getRelSize({1000, 500}));
  expectPoint({0.55, 0.45}, mark.pois.front());
}

TEST(TNVMarkEllipse, FitsToTheBoxOfPointsByMoving) {
  TNVMarkEllipse mark({0.25, 0.25}, {0.375, 0.25}, {0.25, 0.5});
  mark.fitToPoints({{0.25, 0.5}, {0.75, 0.625}}, {640, 480});
  expectPoint({0.5, 0.5625}, mark.center);
  expectPoint({0.625, 0.5625}, mark.pointA);
}

TEST(TNVMarkEllipse, ContourHas64EvenPoints) {
  // A tilt of 26.57 degrees, which counts as 26.
  const TNVMarkEllipse mark({0.5, 0.5}, {0.7, 0.7}, {0.55, 0.4});
  const Points contour = mark.getContour({1000, 500});
  expectPoints(evenlyAround(polygon({500, 250}, {200, 100}, {50, -50}, 1), 64), contour, 1e-3);
  const double tilt = 26 * CV_PI / 180;
  const double a = std::hypot(200, 100);
  expectPoint({500 + a * std::cos(tilt), 250 + a * std::sin(tilt)}, contour.front(), 1e-3);
}

TEST(TNVMarkEllipse, CursorHitsUpToFivePixelsOutside) {
  struct Row {
    cv::Point2d pixel;
    bool over;
    double distance;
  };
  const double untouched = -7;
  for (const Row& row :
       {Row{{500.25, 250.25}, true, 0}, Row{{604.25, 250.25}, true, 104},
        Row{{606.25, 250.25}, false, untouched}, Row{{605.15, 250.25}, true, 104.9},
        Row{{605.35, 250.25}, false, untouched}, Row{{500.25, 304.25}, true, 54},
        Row{{500.25, 306.25}, false, untouched}, Row{{396.25, 250.25}, true, 104},
        Row{{394.25, 250.25}, false, untouched}, Row{{590.25, 290.25}, false, untouched}}) {
    const cv::Point2d point(row.pixel.x / 1000, row.pixel.y / 500);
    double distance = untouched;
    EXPECT_EQ(upright().isMouseOver(point, {1000, 500}), row.over) << row.pixel;
    EXPECT_EQ(upright().isMouseOver(point, {1000, 500}, &distance), row.over) << row.pixel;
    EXPECT_NEAR(distance, row.distance, 1e-6) << row.pixel;
  }
}

TEST(TNVMarkEllipse, HitTestTakesTheRimInStepsOfFourDegrees) {
  // Half axes of 4,000 pixels: in the middle of a step the rim lies 4000 (1 - cos 2) = 2.4 further
  // in than at its ends.
  const cv::Size image(10000, 10000);
  const TNVMarkEllipse ellipse({0.5, 0.5}, {0.9, 0.5}, {0.5, 0.9});
  const auto fourOutside = [&](double degrees) {
    const double angle = degrees * CV_PI / 180;
    return cv::Point2d(0.5 + 0.4004 * std::cos(angle), 0.5 + 0.4004 * std::sin(angle));
  };
  for (const double end : {4.0, 40.0, 120.0, 300.0}) {
    EXPECT_TRUE(ellipse.isMouseOver(fourOutside(end), image)) << end;
    EXPECT_FALSE(ellipse.isMouseOver(fourOutside(end + 2), image)) << end + 2;
  }
}

TEST(TNVMarkEllipse, DividedWalksFromTheFirstAxis) {
  // A round one of 50 pixels on 1000 by 500, from its first point clockwise.
  const TNVMarkEllipse mark({0.5, 0.5}, {0.5, 0.6}, {0.55, 0.5});
  const Points four = mark.getPOIsGenerated("Divided", {1000, 500}, 4);
  const Points expected{{0.5, 0.6}, {0.45, 0.5}, {0.5, 0.4}, {0.55, 0.5}};
  ASSERT_EQ(four.size(), 4U);
  for (std::size_t i = 0; i < 4; ++i)
    expectPoint(expected[i], four[i], 1e-4);
  ASSERT_EQ(mark.getPOIsGenerated("Divided", {1000, 500}, 1).size(), 1U);
  expectPoint({0.5, 0.6}, mark.getPOIsGenerated("Divided", {1000, 500}, 1).front(), 1e-6);
  // Even along the rim of a flat one.
  const Points even = upright().getPOIsGenerated("Divided", {1000, 500}, 20);
  ASSERT_EQ(even.size(), 20U);
  const auto gap = [&](std::size_t from, std::size_t to) {
    return std::hypot((even[to].x - even[from].x) * 1000, (even[to].y - even[from].y) * 500);
  };
  EXPECT_NEAR(gap(0, 1), gap(5, 6), 0.6);
  EXPECT_NEAR(gap(0, 1), gap(19, 0), 0.6);
}

TEST(TNVMarkEllipse, DividedFollowsTheRimDegreeByDegree) {
  // Flat and tilted by 26.57 degrees, which count as 26: at its ends a coarser polygon lies inside.
  const TNVMarkEllipse mark({0.5, 0.5}, {0.7, 0.7}, {0.51, 0.48});
  const Points rim = polygon({500, 250}, {200, 100}, {10, -10}, 1);
  for (const int count : {3, 20, 101}) {
    expectPoints(scaled(evenlyAround(rim, count), 1 / 1000.0, 1 / 500.0),
                 mark.getPOIsGenerated("Divided", {1000, 500}, count), 1e-6);
  }
}

TEST(TNVMarkEllipse, DividedIntoNothingIsToldInTheLog) {
  for (const int count : {0, -1, INT_MIN}) {
    const LogCapture log;
    EXPECT_THAT(upright().getPOIsGenerated("Divided", {1000, 500}, count), IsEmpty());
    EXPECT_EQ(log.text(),
              "TNVContour::consistentDevidePointLine: Can not devide points, target points < 2!\n");
  }
  EXPECT_THAT(upright().getPOIsGenerated("Divided", {1000, 500}, INT_MAX), IsEmpty());
}

TEST(TNVMarkEllipse, PoiCountIsTheRimByTheSmallerSide) {
  struct Row {
    cv::Point2d poiSize;
    int count;
  };
  // A round one of 50 pixels: 180 edges of 2 * 50 sin 1, together 314.1433.
  for (const Row& row : {Row{{0.5, 0.02}, 31},     // by 10, the height: 31.4
                         Row{{0.02, 0.5}, 16},     // by 20, the width: 15.7
                         Row{{0.5, 0.41882}, 2},   // by 209.41: 1.50014
                         Row{{0.5, 0.418866}, 1},  // by 209.433: 1.49997
                         Row{{0, 0.1}, 0}, Row{{0.1, 0}, 0}}) {
    TNVMarkEllipse mark({0.5, 0.5}, {0.5, 0.6}, {0.55, 0.5});
    mark.poiSize = row.poiSize;
    EXPECT_EQ(mark.getPOICountForSize({1000, 500}), row.count) << row.poiSize;
  }
}

TEST(TNVMarkEllipse, PointsAreWrittenBehindTheBase) {
  TNVMarkEllipse mark({0.5, 0.25}, {0.125, 0.75}, {0.25, 0.625});
  EXPECT_THAT(writtenXml(mark), HasSubstr("</ClassIdx>\n"
                                          "  <PointA>\n"
                                          "    1.2500000000000000e-01 "
                                          "7.5000000000000000e-01</PointA>\n"
                                          "  <PointB>\n"
                                          "    2.5000000000000000e-01 "
                                          "6.2500000000000000e-01</PointB></Mark0>\n"));
}

TEST(TNVMarkEllipse, ReadsBackBitForBit) {
  TNVMarkEllipse mark({1.0 / 3, 0.5}, {0.6, 0.7}, {0.1, 0.2});
  const auto read = markFromXml<TNVMarkEllipse>(writtenXml(mark));
  EXPECT_EQ(read.type, "Ellipse");
  EXPECT_EQ(read.center, mark.center);
  EXPECT_EQ(read.pointA, mark.pointA);
  EXPECT_EQ(read.pointB, mark.pointB);
}

TEST(TNVMarkEllipse, PointOfAnotherLengthReadsAsZero) {
  for (const char* content : {"", "<PointA>1.</PointA><PointB></PointB>",
                              "<PointA>1. 2. 3.</PointA><PointB>1. 2. 3.</PointB>"}) {
    const auto mark = markFromXml<TNVMarkEllipse>(xmlWithMark(content));
    EXPECT_EQ(mark.pointA, cv::Point2d(0, 0)) << content;
    EXPECT_EQ(mark.pointB, cv::Point2d(0, 0)) << content;
  }
}

namespace {

/// The picture has 1000 by 660 pixels, so that ellipses on the view and on the picture differ.
struct TNVMarkEllipseOnView : ::testing::Test {
  void expectDrawn(const cv::Mat& expected, const std::string& style, bool filled, int info,
                   bool designing) {
    EXPECT_TRUE(samePixels(
        expected, viewWith(mark, styleNamed(style, filled), info, designing, {1000, 660})));
  }

  /// The ellipse, its half axes and the ring in the middle.
  void drawEllipseReference(cv::Mat& view, const PenState& pen, bool designing) const {
    const int line = std::max(pen.thickness, 1);
    if (designing) {
      dashedReference(view, dashedRim(), pen.colour, 7, 3, line);
      for (const cv::Point& end : endsOfAxes)
        dashedReference(view, {middle, end}, pen.colour, 7, 3, line);
      if (cursor) dashedReference(view, {middle, {180, 30}}, pen.colour, 2, 7, line);
    } else {
      cv::ellipse(view, rect, pen.colour, pen.thickness, cv::LINE_AA);
      for (const cv::Point& end : endsOfAxes)
        lineReference(view, middle, end, pen.colour, line);
    }
    circleReference(view, middle, pen.colour, pen.thickness);
  }

  /// Half axes of 32.31 and 20.59 have a rim of 168.2 pixels, one corner for four of them.
  std::vector<cv::Point> dashedRim() const {
    std::vector<cv::Point> path =
        roundedPath(evenlyAlong(polygon(rect.center, {30, 12}, {-10, -18}, 1), 42));
    path.push_back(path.front());
    return path;
  }

  /// The box counts in whole pixels of the picture.
  static std::vector<cv::Point> frame() {
    float left = 1e9F, top = 1e9F, right = 0, bottom = 0;
    for (const cv::Point2f point : polygon({453.5, 334.29}, {150, 66}, {-50, -99}, 4)) {
      left = std::min(left, point.x);
      right = std::max(right, point.x);
      top = std::min(top, point.y);
      bottom = std::max(bottom, point.y);
    }
    const double width = (std::floor(right) - std::floor(left) + 1) / 1000 * 200;
    const double height = (std::floor(bottom) - std::floor(top) + 1) / 660 * 120;
    const int x1 = static_cast<int>(90.7 - width / 2);
    const int y1 = static_cast<int>(60.78 - height / 2);
    const int x2 = static_cast<int>(90.7 - width / 2 + width);
    const int y2 = static_cast<int>(60.78 - height / 2 + height);
    return {{x1, y1}, {x2, y1}, {x2, y2}, {x1, y2}};
  }

  /// On the view (90.7, 60.78), (120.7, 72.78), (80.7, 42.78): the ways (30, 12) and (-10, -18),
  /// of which the second goes to (12, -30) with the length 20.59, thus to (98.35, 41.66).
  TNVMarkEllipse mark{{0.4535, 0.5065}, {0.6035, 0.6065}, {0.4035, 0.3565}};
  cv::Point middle{91, 61};
  std::vector<cv::Point> endsOfAxes{{121, 73}, {98, 42}};
  cv::RotatedRect rect{cv::Point2f(90.7F, 60.78F),
                       cv::Size2f(2 * std::hypot(30.0F, 12.0F), 2 * std::hypot(10.0F, 18.0F)),
                       static_cast<float>(std::atan2(12.0, 30.0) / CV_PI * 180)};
  bool cursor = false;
};

}  // namespace

TEST_F(TNVMarkEllipseOnView, EachStateHasItsPen) {
  const std::vector<cv::Point> outline =
      roundedPath(evenlyAround(polygon({90.7, 60.78}, {30, 12}, {-10, -18}, 1), 64));
  for (const PenState& state : penStates()) {
    for (const bool designing : {false, true}) {
      for (const bool filled : {false, true}) {
        SCOPED_TRACE(nameOf(state, designing, filled));
        take(mark, state);
        cv::Mat expected = emptyView();
        if (filled) fillReference(expected, outline, pixelOf(state.colour));
        if (state.selected) frameReference(expected, frame(), pixelOf(state.colour));
        drawEllipseReference(expected, state, designing);
        expectDrawn(expected, state.style, filled, 0, designing);
      }
    }
  }
}

TEST_F(TNVMarkEllipseOnView, SecondAxisIsDrawnAtARightAngle) {
  // The stored point elsewhere at the same distance changes nothing.
  mark.pointB = {0.4535 + 18 / 200.0, 0.5065 + 10 / 120.0};
  for (const bool designing : {false, true}) {
    cv::Mat expected = emptyView();
    drawEllipseReference(expected, penStates().front(), designing);
    expectDrawn(expected, "White", false, 0, designing);
  }
}

TEST_F(TNVMarkEllipseOnView, PoisLieUnderTheEllipse) {
  mark.poiVisible = true;
  mark.pois = {{0.25, 0.5}, {0.45, 0.58}};
  mark.poiSize = {0.05, 0.1};
  for (const bool designing : {false, true}) {
    cv::Mat expected = emptyView();
    // Boxes of 10 by 12: 50 - 5, 60 - 6; 90 - 5, 69.6 - 6.
    boxReference(expected, {{45, 54}, {85, 64}}, {255, 255, 255});
    drawEllipseReference(expected, penStates().front(), designing);
    expectDrawn(expected, "White", false, 0, designing);
  }
}

TEST_F(TNVMarkEllipseOnView, NoInfoShowsALabel) {
  mark.classIdx = {12, 11};
  for (int info = 0; info < 6; ++info) {
    for (const bool designing : {false, true}) {
      cv::Mat expected = emptyView();
      drawEllipseReference(expected, penStates().front(), designing);
      expectDrawn(expected, "White", false, info, designing);
    }
  }
}

TEST_F(TNVMarkEllipseOnView, DottedLineLeadsToTheCursorWhileDesigning) {
  for (const double x : {0.9, 0.0, -1.0}) {
    mark.designPoint = {x, 0.25};
    cursor = x > 0;
    for (const PenState& state : {penStates()[0], penStates()[2]}) {
      for (const bool designing : {false, true}) {
        SCOPED_TRACE(nameOf(state, designing, false));
        mark.hovered = state.hovered;
        cv::Mat expected = emptyView();
        drawEllipseReference(expected, state, designing);
        expectDrawn(expected, "White", false, 0, designing);
      }
    }
  }
}

TEST_F(TNVMarkEllipseOnView, FirstPointAtTheCentreIsDrawnSomehow) {
  mark.pointA = mark.center;
  for (const bool designing : {false, true}) {
    cv::Mat view;
    EXPECT_NO_THROW(view = viewWith(mark, styleNamed("White", true), 0, designing));
    EXPECT_FALSE(samePixels(emptyView(), view));
  }
}

TEST_F(TNVMarkEllipseOnView, HostileGeometryIsDrawnInNoTime) {
  const LogCapture log;
  expectHostileGeometryIsDrawnInNoTime(mark, [&](double a, double b, int variant) {
    mark.center = variant == 0 ? cv::Point2d(0.5, 0.5) : cv::Point2d(a, b);
    mark.pointA = variant == 1 ? cv::Point2d(0.5, 0.7) : cv::Point2d(b, a);
    mark.pointB = variant == 2 ? cv::Point2d(0.3, 0.5) : cv::Point2d(a, a);
  });
}

TEST(TNVMarkEllipse, HostileGeometryIsAnsweredSomehow) {
  const LogCapture log;
  for (const double a : hostileNumbers()) {
    for (const double b : hostileNumbers()) {
      for (TNVMarkEllipse mark : {TNVMarkEllipse({a, b}, {b, a}, {a, 0.5}),
                                  TNVMarkEllipse({0.5, 0.5}, {b, a}, {0.25, b})}) {
        const cv::Point2d size = mark.getRelSize({640, 480});
        EXPECT_TRUE(size.x >= 0 && size.y >= 0 && size.x < 1e4 && size.y < 1e4) << a << ' ' << b;
        useHostileMark(mark, a, b);
      }
      EXPECT_NO_THROW(
          TNVMarkEllipse({{a, b}, {b, a}, {a, a}, {0.5, 0.5}, {0.1, 0.7}, {0.9, b}}, {64, 48}));
    }
  }
}

TEST(TNVMarkEllipse, ACursorExactlyFivePixelsOutsideTheRimMisses) {
  // Half axes of 20 and 10 pixels; the rim's polygon has its corner at 120, 50.
  const TNVMarkEllipse ellipse({0.5, 0.5}, {0.6, 0.5}, {0.5, 0.6});
  EXPECT_FALSE(ellipse.isMouseOver({125.0 / 200, 0.5}, {200, 100}));
  EXPECT_TRUE(ellipse.isMouseOver({124.75 / 200, 0.5}, {200, 100}));
}
