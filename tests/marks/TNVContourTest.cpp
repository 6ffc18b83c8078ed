#include "marks/TNVContour.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <cmath>
#include <limits>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "support/LogCapture.h"
#include "support/Pictures.h"

namespace {

using TNVContour::Points;
using TNVContour::Segment;
using Segments = std::vector<Segment>;
using ::testing::ElementsAre;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
const std::vector<double> kHostile{kNaN, kInfinity, -kInfinity, 1e300, -1e300, 1e9, 5e-324};

void expectNear(const Points& expected, const Points& actual) {
  ASSERT_EQ(expected.size(), actual.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_NEAR(expected[i].x, actual[i].x, 1e-9) << "x of point " << i;
    EXPECT_NEAR(expected[i].y, actual[i].y, 1e-9) << "y of point " << i;
  }
}

cv::Mat blackPicture(int width, int height) {
  return {height, width, CV_8UC3, cv::Scalar()};
}

}  // namespace

TEST(TNVContour, LineOfTwoPointsDividesEvenly) {
  const Points points = TNVContour::consistentDevidePointLine({{1, 2}, {9, 18}}, 5);
  expectNear({{1, 2}, {3, 6}, {5, 10}, {7, 14}, {9, 18}}, points);
  EXPECT_EQ(points.front(), cv::Point2d(1, 2));
  EXPECT_NEAR(points.back().y, 18, 1e-12);
}

TEST(TNVContour, ClosedSquareDividesIntoCornersAndMidpoints) {
  expectNear(
      {{0, 0}, {5, 0}, {10, 0}, {10, 5}, {10, 10}, {5, 10}, {0, 10}, {0, 5}, {0, 0}},
      TNVContour::consistentDevidePointLine({{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}}, 9));
}

TEST(TNVContour, DividedSpacingRunsAroundCorners) {
  // 10 of length in 4 steps of 2.5: the third point lies 1 behind the corner at (4, 0).
  expectNear({{0, 0}, {2.5, 0}, {4, 1}, {4, 3.5}, {4, 6}},
             TNVContour::consistentDevidePointLine({{0, 0}, {4, 0}, {4, 6}}, 5));
}

TEST(TNVContour, RepeatedPointDividesAsIfAbsent) {
  const Points once{{0, 0}, {4, 0}, {4, 6}};
  const Points repeated{{0, 0}, {0, 0}, {4, 0}, {4, 0}, {4, 0}, {4, 6}, {4, 6}};
  for (int count = 2; count < 40; ++count) {
    expectNear(TNVContour::consistentDevidePointLine(once, count),
               TNVContour::consistentDevidePointLine(repeated, count));
  }
}

TEST(TNVContour, LineWithoutLengthDividesIntoFirstAndLast) {
  EXPECT_THAT(TNVContour::consistentDevidePointLine({{3, 4}, {3, 4}, {3, 4}}, 7),
              ElementsAre(cv::Point2d(3, 4), cv::Point2d(3, 4)));
}

TEST(TNVContour, DividedLineHasTheCountAndEndsAtTheEnds) {
  std::mt19937 random(20250101);
  std::uniform_real_distribution<double> coordinate(0, 1000);
  for (int round = 0; round < 500; ++round) {
    Points line(2 + random() % 6);
    for (cv::Point2d& point : line)
      point = {coordinate(random), coordinate(random)};
    const int count = static_cast<int>(2 + random() % 60);
    const Points points = TNVContour::consistentDevidePointLine(line, count);
    ASSERT_EQ(points.size(), static_cast<std::size_t>(count)) << "round " << round;
    expectNear({line.front(), line.back()}, {points.front(), points.back()});
  }
}

TEST(TNVContour, ShortListsAndCountsAreNotDivided) {
  const std::string fewPoints =
      "TNVContour::consistentDevidePointLine: Can not devide points, line has to less points < 2!";
  const std::string fewTargets =
      "TNVContour::consistentDevidePointLine: Can not devide points, target points < 2!";
  struct Row {
    Points points;
    int count;
    std::string line;
  };
  const std::vector<Row> rows{{{}, 5, fewPoints},
                              {{{1, 1}}, 5, fewPoints},
                              {{{1, 1}}, 1, fewPoints},
                              {{{1, 1}, {2, 2}}, 1, fewTargets},
                              {{{1, 1}, {2, 2}}, 0, fewTargets},
                              {{{1, 1}, {2, 2}}, INT_MIN, fewTargets}};
  for (const Row& row : rows) {
    const LogCapture log;
    EXPECT_TRUE(TNVContour::consistentDevidePointLine(row.points, row.count).empty());
    EXPECT_THAT(log.lines(), ElementsAre(row.line));
  }
}

TEST(TNVContour, HostileLinesDivideIntoNoMoreThanTheCount) {
  for (const double a : kHostile) {
    for (const double b : kHostile) {
      const Points line{{0, 0}, {a, b}, {b, 1}, {1, 1}, {a, a}};
      for (const int count : {2, 3, 50})
        EXPECT_LE(TNVContour::consistentDevidePointLine(line, count).size(), 2U * 50U) << a << b;
    }
  }
}

TEST(TNVContour, CornersGoClockwiseFromTopLeft) {
  EXPECT_THAT(
      TNVContour::rectCorners(1, 2, 10, 20),
      ElementsAre(cv::Point2d(1, 2), cv::Point2d(11, 2), cv::Point2d(11, 22), cv::Point2d(1, 22)));
}

TEST(TNVContour, BoundingRectSpansAllPoints) {
  EXPECT_EQ(TNVContour::boundingRectOfPoints({{0.5, 0.25}, {0.75, 0.125}, {0.625, 0.5}}),
            cv::Rect2d(0.5, 0.125, 0.25, 0.375));
  EXPECT_EQ(TNVContour::boundingRectOfPoints({{0.5, 0.25}}), cv::Rect2d(0.5, 0.25, 0, 0));
}

TEST(TNVContour, BoundingRectOfNegativePointsReachesZero) {
  // The tiny positive double that stays as the maximum vanishes beside the minimum.
  EXPECT_EQ(TNVContour::boundingRectOfPoints({{-3, -5}, {-2, -4}}), cv::Rect2d(-3, -5, 3, 5));
}

TEST(TNVContour, BoundingRectOfNothingIsTheLargest) {
  const cv::Rect2d box = TNVContour::boundingRectOfPoints({});
  EXPECT_EQ(box.x, 2.2250738585072014e-308);
  EXPECT_EQ(box.y, 2.2250738585072014e-308);
  EXPECT_EQ(box.width, 1.7976931348623157e308);
  EXPECT_EQ(box.height, 1.7976931348623157e308);
}

TEST(TNVContour, RoundingGoesToTheEvenNeighbour) {
  EXPECT_EQ(TNVContour::rounded({0.5, 1.5}), cv::Point(0, 2));
  EXPECT_EQ(TNVContour::rounded({-2.5, 2.51}), cv::Point(-2, 3));
  EXPECT_EQ(TNVContour::rounded({kNaN, 1e300}), cv::Point(INT_MIN, INT_MIN));
}

TEST(TNVContour, RoundedContourStaysWithinAMillionPixels) {
  EXPECT_THAT(TNVContour::roundedContour({{0.5, 1.5}, {kNaN, 2e6}, {-1e300, -7.6}}),
              ElementsAre(cv::Point(0, 2), cv::Point(-1048576, 1048576), cv::Point(-1048576, -8)));
  EXPECT_TRUE(TNVContour::roundedContour({}).empty());
}

TEST(TNVContour, MaskIsFilledWithinTheOutline) {
  const std::vector<cv::Point> rect{{2, 3}, {7, 3}, {7, 9}, {2, 9}};
  cv::Mat mask(12, 12, CV_8UC1, cv::Scalar(1));
  TNVContour::fillContourMask(mask, rect, cv::Scalar(200));
  cv::Mat expected(12, 12, CV_8UC1, cv::Scalar(1));
  expected(cv::Rect(cv::Point(2, 3), cv::Point(8, 10))) = 200;
  EXPECT_TRUE(samePixels(expected, mask));

  const std::vector<cv::Point> triangle{{-5, 1}, {8, 2}, {3, 30}};
  cv::Mat seen(12, 12, CV_8UC1, cv::Scalar(0));
  TNVContour::fillContourMask(seen, triangle, cv::Scalar(255));
  cv::Mat drawn(12, 12, CV_8UC1, cv::Scalar(0));
  cv::drawContours(drawn, std::vector<std::vector<cv::Point>>{triangle}, 0, cv::Scalar(255), -1, 8);
  EXPECT_TRUE(samePixels(drawn, seen));
}

TEST(TNVContour, MaskStaysWithoutAnOutline) {
  cv::Mat mask(3, 3, CV_8UC1, cv::Scalar(9));
  TNVContour::fillContourMask(mask, {}, cv::Scalar(255));
  EXPECT_TRUE(samePixels(cv::Mat(3, 3, CV_8UC1, cv::Scalar(9)), mask));
}

TEST(TNVContour, CropIsFilledWhereItLeavesThePicture) {
  const cv::Mat picture = patternedPicture(20, 10);
  for (const cv::Rect& rect :
       {cv::Rect(3, 2, 5, 4), cv::Rect(0, 0, 20, 10), cv::Rect(-4, 2, 10, 4), cv::Rect(3, -2, 5, 6),
        cv::Rect(15, 2, 10, 4), cv::Rect(3, 7, 5, 10), cv::Rect(-3, -3, 40, 40),
        cv::Rect(19, 9, 1, 1), cv::Rect(20, 0, 5, 5), cv::Rect(0, 10, 5, 5),
        cv::Rect(INT_MAX, INT_MAX, 5, 5), cv::Rect(-5, 0, 5, 5),
        cv::Rect(-500, -500, 1000, 1000)}) {
    cv::Mat expected(rect.size(), CV_8UC3);
    for (int y = 0; y < rect.height; ++y) {
      for (int x = 0; x < rect.width; ++x) {
        const std::int64_t sourceX = std::int64_t{rect.x} + x;
        const std::int64_t sourceY = std::int64_t{rect.y} + y;
        const bool inside = sourceX >= 0 && sourceY >= 0 && sourceX < 20 && sourceY < 10;
        expected.at<cv::Vec3b>(y, x) =
            inside ? picture.at<cv::Vec3b>(static_cast<int>(sourceY), static_cast<int>(sourceX))
                   : cv::Vec3b(1, 2, 3);
      }
    }
    EXPECT_TRUE(samePixels(expected, TNVContour::cropWithBorder(picture, rect, {1, 2, 3}))) << rect;
  }
}

TEST(TNVContour, CropIsADeepCopy) {
  const cv::Mat picture = patternedPicture(20, 10);
  cv::Mat crop = TNVContour::cropWithBorder(picture, {0, 0, 20, 10}, {});
  crop = cv::Scalar();
  EXPECT_TRUE(samePixels(patternedPicture(20, 10), picture));
}

TEST(TNVContour, CropThatEndsBeforeThePictureIsRefused) {
  const cv::Mat picture = patternedPicture(20, 10);
  for (const cv::Rect& rect :
       {cv::Rect(-6, 0, 5, 5), cv::Rect(0, -6, 5, 5), cv::Rect(INT_MIN, 0, 5, 5),
        cv::Rect(0, INT_MIN, 5, 5), cv::Rect(0, 0, -1, 5), cv::Rect(0, 0, 5, INT_MIN)}) {
    EXPECT_THROW(TNVContour::cropWithBorder(picture, rect, {}), cv::Exception) << rect;
  }
}

namespace {

/// Of the error that the operation ends with; 0 without one.
template <class Operation>
int errorCodeOf(const Operation& operation) {
  try {
    operation();
  } catch (const cv::Exception& error) {
    return error.code;
  }
  return 0;
}

}  // namespace

TEST(TNVContour, CropOutOfAllProportionIsRefusedBeforeItIsAllocated) {
  const cv::Mat picture = patternedPicture(20, 10);
  for (const cv::Rect& rect : {cv::Rect(0, 0, INT_MAX, INT_MAX), cv::Rect(0, 0, 100000, 100000),
                               cv::Rect(INT_MIN, INT_MIN, INT_MIN, INT_MIN)}) {
    EXPECT_EQ(errorCodeOf([&] { TNVContour::cropWithBorder(picture, rect, {}); }),
              cv::Error::StsOutOfRange)
        << rect;
  }
}

TEST(TNVContour, CropMayHaveSixteenTimesThePixelsOfALargePicture) {
  // 67.2 million of 4.4 and of 4 million pixels, beyond the 67.1 million that any picture may have.
  const cv::Rect rect(-10, -10, 8200, 8200);
  const cv::Mat enough(2100, 2100, CV_8UC1, cv::Scalar(7));
  EXPECT_EQ(TNVContour::cropWithBorder(enough, rect, {}).size(), rect.size());
  const cv::Mat few(2000, 2000, CV_8UC1, cv::Scalar(7));
  EXPECT_EQ(errorCodeOf([&] { TNVContour::cropWithBorder(few, rect, {}); }),
            cv::Error::StsOutOfRange);
}

TEST(TNVContour, ResizedCropShowsTheSurroundingsOfTheCentre) {
  const cv::Mat picture = patternedPicture(40, 30);
  struct Row {
    cv::Point centre;
    cv::Size target;
    double zoom;
    cv::Rect window;
  };
  // 9 / 2 and 7 / 2 are 4.5 and 3.5, which both round to the even 4.
  const std::vector<Row> rows{{{20, 15}, {10, 8}, 1.0, {15, 11, 10, 8}},
                              {{20, 15}, {10, 8}, 2.0, {18, 13, 5, 4}},
                              {{20, 15}, {9, 7}, 2.0, {18, 13, 4, 4}},
                              {{2, 28}, {10, 8}, 0.5, {-8, 20, 20, 16}}};
  for (const Row& row : rows) {
    cv::Mat expected;
    cv::resize(TNVContour::cropWithBorder(picture, row.window, {}), expected, row.target, 0, 0,
               cv::INTER_LINEAR);
    EXPECT_TRUE(
        samePixels(expected, TNVContour::resizedCrop(picture, row.centre, row.target, row.zoom)))
        << row.window;
  }
}

TEST(TNVContour, ResizedCropWithoutAZoomIsRefused) {
  const cv::Mat picture = patternedPicture(40, 30);
  for (const double zoom : {0.0, kNaN, 1e-300, -1.0}) {
    EXPECT_THROW(TNVContour::resizedCrop(picture, {INT_MIN, INT_MAX}, {10, 8}, zoom),
                 cv::Exception);
  }
}

TEST(TNVContour, ResizedCropToAHugeWindowIsRefused) {
  const cv::Mat picture = patternedPicture(40, 30);
  for (const double zoom : {1e3, 1e4, 1e9}) {
    const int side = static_cast<int>(std::min<double>(zoom * 10, INT_MAX));
    const cv::Size window(side, side);
    EXPECT_EQ(errorCodeOf([&] {
                TNVContour::resizedCrop(picture, {20, 15}, window, zoom);
              }),
              cv::Error::StsOutOfRange)
        << side;
  }
}

namespace {

/// The picture after that many pyramid steps, down for a negative number, and a last linear step.
cv::Mat stepped(const cv::Mat& picture, int steps, cv::Size size) {
  cv::Mat result = picture;
  for (int i = 0; i < std::abs(steps); ++i) {
    cv::Mat next;
    if (steps < 0) {
      cv::pyrDown(result, next);
    } else {
      cv::pyrUp(result, next);
    }
    result = next;
  }
  cv::Mat last;
  cv::resize(result, last, size, 0, 0, cv::INTER_LINEAR);
  return last;
}

}  // namespace

TEST(TNVContour, LengthIsReachedByPyramidSteps) {
  struct Row {
    cv::Size source;
    int length;
    bool byWidth;
    int steps;
    cv::Size target;
    double factor;
  };
  const std::vector<Row> rows{
      {{640, 480}, 512, true, -1, {512, 384}, 0.8},
      {{640, 480}, 1024, true, 1, {1024, 768}, 1.6},
      // 1000, 500, 250, 125: half of 125 is no more than 100.
      {{1000, 800}, 100, true, -3, {100, 80}, 0.1},
      {{800, 1000}, 100, false, -3, {80, 100}, 0.1},
      // 125 / 2 is 62 in integers, which is not above 62.
      {{250, 10}, 62, true, -1, {62, 2}, 0.248},
      // Going up, both sides have to get beyond half of the length, the narrow one last.
      {{10, 100}, 300, false, 4, {30, 300}, 3.0},
      {{30, 20}, 61, true, 1, {61, 41}, 61.0 / 30.0}};
  for (const Row& row : rows) {
    const cv::Mat picture = patternedPicture(row.source.width, row.source.height);
    cv::Mat resized;
    EXPECT_DOUBLE_EQ(TNVContour::resizeToLength(picture, resized, row.length, row.byWidth),
                     row.factor);
    EXPECT_TRUE(samePixels(stepped(picture, row.steps, row.target), resized)) << row.source;
  }
}

TEST(TNVContour, LengthThatIsThereGivesADeepCopy) {
  const cv::Mat picture = patternedPicture(16, 12);
  struct Row {
    int length;
    bool byWidth;
  };
  for (const Row& row : {Row{16, true}, Row{12, false}, Row{0, true}, Row{0, false}}) {
    cv::Mat copy;
    EXPECT_EQ(TNVContour::resizeToLength(picture, copy, row.length, row.byWidth), 1.0);
    EXPECT_TRUE(samePixels(picture, copy));
    EXPECT_NE(copy.data, picture.data);
  }
}

TEST(TNVContour, LengthMayBeSetInPlace) {
  const cv::Mat picture = patternedPicture(64, 48);
  cv::Mat inPlace = picture;
  TNVContour::resizeToLength(inPlace, inPlace, 20, true);
  EXPECT_EQ(inPlace.size(), cv::Size(20, 15));
  EXPECT_TRUE(samePixels(patternedPicture(64, 48), picture));
}

TEST(TNVContour, ResizingLeavesTheFormerPixelsOfTheDestination) {
  const cv::Mat former(15, 20, CV_8UC3, cv::Scalar(7, 7, 7));
  cv::Mat destination = former;
  TNVContour::resizeToLength(patternedPicture(64, 48), destination, 20, true);
  EXPECT_TRUE(samePixels(cv::Mat(15, 20, CV_8UC3, cv::Scalar(7, 7, 7)), former));
}

TEST(TNVContour, ImpossibleLengthIsRefused) {
  cv::Mat resized;
  EXPECT_THROW(TNVContour::resizeToLength(patternedPicture(64, 48), resized, -1, true),
               cv::Exception);
  EXPECT_THROW(TNVContour::resizeToLength(patternedPicture(64, 48), resized, INT_MIN, false),
               cv::Exception);
  EXPECT_THROW(TNVContour::resizeToLength(cv::Mat(), resized, 5, true), cv::Exception);
}

TEST(TNVContour, DashesFollowThePixels) {
  // The pixel that ends a gap starts the dash and is not counted.
  EXPECT_EQ(TNVContour::dashSegments(blackPicture(40, 3), {{0, 1}, {29, 1}}, 7, 3, false),
            (Segments{{0, 1, 7, 1}, {11, 1, 19, 1}, {23, 1, 29, 1}}));
}

TEST(TNVContour, DashThatHasOnlyBegunRepeatsTheOneBefore) {
  EXPECT_EQ(TNVContour::dashSegments(blackPicture(40, 3), {{0, 1}, {23, 1}}, 7, 3, false),
            (Segments{{0, 1, 7, 1}, {11, 1, 19, 1}, {11, 1, 19, 1}}));
}

TEST(TNVContour, LineThatEndsInAGapAddsNoDash) {
  EXPECT_EQ(TNVContour::dashSegments(blackPicture(40, 3), {{0, 1}, {9, 1}}, 7, 3, false),
            (Segments{{0, 1, 7, 1}}));
}

TEST(TNVContour, DashesDoNotRestartAtCorners) {
  EXPECT_EQ(
      TNVContour::dashSegments(blackPicture(20, 20), {{0, 0}, {10, 0}, {10, 10}}, 7, 3, false),
      (Segments{{0, 0, 7, 0}, {10, 0, 10, 8}}));
}

TEST(TNVContour, ClosedDashesRunBackToTheStart) {
  // Back from (10, 0): its own pixel ends the gap.
  EXPECT_EQ(TNVContour::dashSegments(blackPicture(20, 20), {{0, 0}, {10, 0}}, 7, 3, true),
            (Segments{{0, 0, 7, 0}, {10, 0, 2, 0}}));
}

TEST(TNVContour, DashesKeepToTheImage) {
  const cv::Mat image = blackPicture(10, 10);
  EXPECT_EQ(TNVContour::dashSegments(image, {{-20, 4}, {30, 4}}, 7, 3, false),
            (Segments{{0, 4, 7, 4}}));
  EXPECT_TRUE(TNVContour::dashSegments(image, {{-20, -4}, {30, -4}}, 7, 3, true).empty());
  EXPECT_TRUE(TNVContour::dashSegments(cv::Mat(), {{0, 0}, {5, 5}}, 7, 3, true).empty());
}

TEST(TNVContour, DashesRoundTheirPoints) {
  EXPECT_EQ(TNVContour::dashSegments(blackPicture(10, 10), {{0.5, 1.5}, {4.5, 1.6}}, 7, 3, false),
            (Segments{{0, 2, 4, 2}}));
}

TEST(TNVContour, OnePointHasNoDashes) {
  EXPECT_TRUE(TNVContour::dashSegments(blackPicture(9, 9), {{4, 4}}, 7, 3, true).empty());
  EXPECT_TRUE(TNVContour::dashSegments(blackPicture(9, 9), {}, 7, 3, true).empty());
}

TEST(TNVContour, LineBelowThicknessOneIsDrawnWithOne) {
  for (const auto& [given, drawn] :
       std::vector<std::pair<int, int>>{{0, 1}, {-1, 1}, {INT_MIN, 1}, {1, 1}, {2, 2}, {5, 5}}) {
    cv::Mat seen = blackPicture(30, 30);
    TNVContour::drawLine(seen, {3, 4}, {25, 17}, {10, 20, 30}, given);
    cv::Mat expected = blackPicture(30, 30);
    cv::line(expected, {3, 4}, {25, 17}, {10, 20, 30}, drawn, cv::LINE_AA, 0);
    EXPECT_TRUE(samePixels(expected, seen)) << given;
  }
}

TEST(TNVContour, LineFromFarOutsideIsDrawnInNoTime) {
  const auto start = std::chrono::steady_clock::now();
  for (const int thickness : {1, 2, 7}) {
    for (const int far : {INT_MAX, INT_MIN, 1500000, -1500000}) {
      cv::Mat expected = patternedPicture(60, 40);
      cv::Mat seen = expected.clone();
      cv::line(expected, {30, 20}, {far > 0 ? 300 : -300, 20}, {10, 20, 30}, thickness,
               cv::LINE_AA);
      TNVContour::drawLine(seen, {30, 20}, {far, 20}, {10, 20, 30}, thickness);
      EXPECT_TRUE(samePixels(expected, seen)) << far;
    }
    cv::Mat seen = patternedPicture(60, 40);
    TNVContour::drawLine(seen, {INT_MIN, INT_MAX}, {INT_MIN, INT_MIN}, {10, 20, 30}, thickness);
    EXPECT_TRUE(samePixels(patternedPicture(60, 40), seen));
    for (int i = 0; i < 30; ++i)
      TNVContour::drawLine(seen, {INT_MIN, 50}, {INT_MAX, -2000000000}, {10, 20, 30}, thickness);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(TNVContour, LineThatEndsAPictureAwayIsDrawnAsItIs) {
  // Cut nearer to the picture, slanted lines would be drawn some pixels differently.
  for (const int away : {1300, 1500, 1900}) {
    for (const bool isHigh : {false, true}) {
      const cv::Point from = isHigh ? cv::Point(345, 1234) : cv::Point(1234, 345);
      const cv::Point to = isHigh ? cv::Point(777, -away) : cv::Point(-away, 777);
      cv::Mat expected = isHigh ? blackPicture(1200, 2000) : blackPicture(2000, 1200);
      cv::Mat seen = expected.clone();
      cv::line(expected, from, to, {10, 20, 30}, 1, cv::LINE_AA);
      TNVContour::drawLine(seen, from, to, {10, 20, 30}, 1);
      EXPECT_TRUE(samePixels(expected, seen)) << from << to;
    }
  }
}

TEST(TNVContour, DashedLineIsDrawnDashByDash) {
  for (const int thickness : {0, 1, 3}) {
    cv::Mat seen = blackPicture(40, 9);
    TNVContour::drawDashedPolyline(seen, {{0, 4}, {29, 4}}, {10, 20, 30}, 7, 3, thickness, false);
    cv::Mat expected = blackPicture(40, 9);
    for (const auto& [from, to] : {std::pair{0, 7}, std::pair{11, 19}, std::pair{23, 29}}) {
      cv::line(expected, {from, 4}, {to, 4}, {10, 20, 30}, std::max(thickness, 1), cv::LINE_AA);
    }
    EXPECT_TRUE(samePixels(expected, seen)) << thickness;
  }
}

TEST(TNVContour, DashedCircleIsAPolygonOfOnePointForSixteenPixels) {
  const float radius = 35.5F;
  const cv::Point2d centre(50.25, 47.5);
  // 35.5 * 2 pi / 16 is 13.94.
  Points polygon;
  for (int i = 0; i < 13; ++i) {
    const double angle = i * 2 * CV_PI / 13;
    polygon.emplace_back(50.25 + 35.5 * std::cos(angle), 47.5 + 35.5 * std::sin(angle));
  }
  cv::Mat expected = blackPicture(100, 100);
  TNVContour::drawDashedPolyline(expected, polygon, {10, 20, 30}, 7, 3, 2, true);
  cv::Mat seen = blackPicture(100, 100);
  TNVContour::drawDashedCircle(seen, centre, radius, {10, 20, 30}, 2);
  EXPECT_TRUE(samePixels(expected, seen));
  EXPECT_GT(cv::countNonZero(seen.reshape(1)), 0);
}

TEST(TNVContour, SmallDashedCircleDrawsNothing) {
  // Two points are the least that dashes can run between: from a radius of about 5.1 on.
  for (const float radius : {-20.0F, 0.0F, 2.5F, 2.54F, 2.6F, 5.0F}) {
    cv::Mat seen = blackPicture(30, 30);
    TNVContour::drawDashedCircle(seen, {15, 15}, radius, {10, 20, 30}, 1);
    EXPECT_TRUE(samePixels(blackPicture(30, 30), seen)) << radius;
  }
}

TEST(TNVContour, DashedEllipseIsAPolygonOfOnePointForFourPixels) {
  struct Case {
    cv::Size2f axes;
    int points;
    int scale = 1;
  };
  // By Ramanujan's second formula half axes 40 and 20 have a perimeter of 193.77, 40 and 22 one of
  // 198.9, 80 and 4 one of 321.54, 80 and 2 one of 320.4, 2000 and 1500 one of 11051.7.
  for (const Case& each :
       {Case{{80.0F, 40.0F}, 48}, Case{{80.0F, 44.0F}, 49}, Case{{160.0F, 8.0F}, 80},
        Case{{160.0F, 4.0F}, 80}, Case{{4000.0F, 3000.0F}, 2762, 21}}) {
    const cv::Point2f centre(static_cast<float>(100 * each.scale) + 0.5F,
                             static_cast<float>(90 * each.scale) + 0.25F);
    const cv::RotatedRect ellipse(centre, each.axes, 30.7F);
    Points outline;
    cv::Point2f corners[4];
    ellipse.points(corners);
    const double a = cv::norm(corners[3] - corners[0]) / 2;
    const double b = cv::norm(corners[0] - corners[1]) / 2;
    EXPECT_NEAR(a, each.axes.width / 2, 1e-6 * a);
    EXPECT_NEAR(b, each.axes.height / 2, 1e-6 * a);
    cv::ellipse2Poly(cv::Point2d(centre), cv::Size2d(a, b), 30, 0, 360, 1, outline);
    const Points polygon = TNVContour::consistentDevidePointLine(outline, each.points);
    cv::Mat expected = blackPicture(200 * each.scale, 180 * each.scale);
    TNVContour::drawDashedPolyline(expected, polygon, {10, 20, 30}, 7, 3, 1, true);
    cv::Mat seen = blackPicture(200 * each.scale, 180 * each.scale);
    TNVContour::drawDashedEllipse(seen, ellipse, {10, 20, 30}, 1);
    EXPECT_TRUE(samePixels(expected, seen)) << each.points;
    EXPECT_GT(cv::countNonZero(seen.reshape(1)), 0);
  }
}

TEST(TNVContour, HostileDashedFiguresAreDrawnInNoTime) {
  const LogCapture log;
  const auto start = std::chrono::steady_clock::now();
  cv::Mat image = blackPicture(60, 40);
  for (const double a : kHostile) {
    for (const double b : kHostile) {
      const auto small = static_cast<float>(std::clamp(a, -1e30, 1e30));
      TNVContour::drawDashedPolyline(image, {{a, b}, {b, a}, {3, 4}}, {1, 2, 3}, 7, 3, 1, true);
      TNVContour::drawDashedCircle(image, {a, b}, small, {1, 2, 3}, 1);
      TNVContour::drawDashedCircle(image, {5, 5}, small, {1, 2, 3}, 1);
      TNVContour::drawDashedEllipse(image, {{small, 5}, {small, small}, small}, {1, 2, 3}, 1);
      TNVContour::drawDashedEllipse(image, {{5, 5}, {1e9F, 3}, small}, {1, 2, 3}, 1);
    }
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(TNVContour, DistanceIsTheStraightOne) {
  EXPECT_EQ(TNVContour::distance({1, 2}, {4, 6}), 5);
  EXPECT_EQ(TNVContour::distance({4, 6}, {1, 2}), 5);
  EXPECT_EQ(TNVContour::distance({3, 3}, {3, 3}), 0);
  EXPECT_DOUBLE_EQ(TNVContour::distance({3e200, 0}, {0, 4e200}), 5e200);
  EXPECT_TRUE(std::isnan(TNVContour::distance({kNaN, 0}, {0, 0})));
}

TEST(TNVContour, PathLengthLeavesOutTheClosingEdge) {
  EXPECT_EQ(TNVContour::pathLength({}), 0);
  EXPECT_EQ(TNVContour::pathLength({{7, 9}}), 0);
  EXPECT_EQ(TNVContour::pathLength({{0, 0}, {3, 4}}), 5);
  EXPECT_EQ(TNVContour::pathLength({{0, 0}, {3, 4}, {3, 4}, {3, 6}}), 7);
}

TEST(TNVContour, EllipseOutlineStartsOnTheLongAxis) {
  expectNear({{90, 40}, {50, 60}, {10, 40}, {50, 20}, {90, 40}},
             TNVContour::ellipseOutline({{50, 40}, {80, 40}, 0}, 90));
  // A quarter turn leads the first axis downwards.
  const Points turned = TNVContour::ellipseOutline({{50, 40}, {80, 40}, 90}, 90);
  ASSERT_EQ(turned.size(), 5U);
  for (std::size_t i = 0; i < 5; ++i) {
    const Points wanted{{50, 80}, {30, 40}, {50, 0}, {70, 40}, {50, 80}};
    EXPECT_NEAR(turned[i].x, wanted[i].x, 1e-3);
    EXPECT_NEAR(turned[i].y, wanted[i].y, 1e-3);
  }
}

TEST(TNVContour, EllipseOutlineHasItsAngleInWholeDegrees) {
  for (const auto& [given, used] : {std::pair{30.9F, 30}, std::pair{-30.9F, -30}}) {
    Points expected;
    cv::ellipse2Poly(cv::Point2d(60.5, 50.25), cv::Size2d(40, 20), used, 0, 360, 7, expected);
    const Points seen = TNVContour::ellipseOutline({{60.5F, 50.25F}, {80, 40}, given}, 7);
    ASSERT_EQ(seen.size(), expected.size());
    for (std::size_t i = 0; i < seen.size(); ++i)
      EXPECT_LT(TNVContour::distance(seen[i], expected[i]), 1e-4);
  }
}

TEST(TNVContour, EllipseWithoutNumbersHasNoOutline) {
  const auto nan = static_cast<float>(kNaN);
  const auto infinity = static_cast<float>(kInfinity);
  for (const cv::RotatedRect& ellipse :
       {cv::RotatedRect({5, 5}, {nan, 3}, 0), cv::RotatedRect({5, 5}, {3, infinity}, 0),
        cv::RotatedRect({5, 5}, {3, 3}, nan), cv::RotatedRect({nan, 5}, {3, 3}, 0),
        cv::RotatedRect({5, infinity}, {3, 3}, 0), cv::RotatedRect({5, 5}, {3, 3}, infinity)}) {
    EXPECT_TRUE(TNVContour::ellipseOutline(ellipse, 1).empty());
  }
}

TEST(TNVContour, CircleIsDrawnSmooth) {
  for (const int radius : {0, 1, 3, 20}) {
    for (const int thickness : {-1, 0, 1, 3, INT_MIN}) {
      cv::Mat seen = blackPicture(60, 50);
      TNVContour::drawCircle(seen, {31, 22}, radius, {10, 20, 30}, thickness);
      cv::Mat expected = blackPicture(60, 50);
      cv::circle(expected, {31, 22}, radius, {10, 20, 30}, thickness, cv::LINE_AA, 0);
      EXPECT_TRUE(samePixels(expected, seen)) << radius << " " << thickness;
      EXPECT_TRUE(radius == 0 || cv::countNonZero(seen.reshape(1)) > 0);
    }
  }
}

TEST(TNVContour, CircleBelowNothingOrBeyondAMillionPixelsIsNotDrawn) {
  struct Row {
    cv::Point centre;
    int radius;
    bool drawn;
  };
  // The rim of the large ones runs through x = 30; they reach out to 1048576 and to 1048578.
  for (const Row& row :
       {Row{{30, 20}, -1, false}, Row{{30, 20}, INT_MIN, false}, Row{{-524243, 20}, 524273, true},
        Row{{-524273, 20}, 524303, true}, Row{{-524274, 20}, 524304, false},
        Row{{20, -524273}, 524303, true}, Row{{20, -524274}, 524304, false},
        Row{{INT_MIN, INT_MIN}, 3, false}, Row{{INT_MAX, 0}, INT_MAX, false}}) {
    cv::Mat seen = blackPicture(60, 50);
    TNVContour::drawCircle(seen, row.centre, row.radius, {10, 20, 30}, 1);
    EXPECT_EQ(cv::countNonZero(seen.reshape(1)) > 0, row.drawn) << row.centre;
  }
}

TEST(TNVContour, EllipseIsDrawnSmooth) {
  for (const cv::RotatedRect& ellipse :
       {cv::RotatedRect({30.4F, 22.7F}, {40, 20.5F}, 33.3F), cv::RotatedRect({30, 22}, {0, 20}, 0),
        cv::RotatedRect({55, 45}, {90, 120}, -200)}) {
    for (const int thickness : {-1, 0, 1, 3, INT_MIN}) {
      cv::Mat seen = blackPicture(60, 50);
      TNVContour::drawEllipse(seen, ellipse, {10, 20, 30}, thickness);
      cv::Mat expected = blackPicture(60, 50);
      cv::ellipse(expected, ellipse, {10, 20, 30}, thickness, cv::LINE_AA);
      EXPECT_TRUE(samePixels(expected, seen)) << thickness;
      EXPECT_GT(cv::countNonZero(seen.reshape(1)), 0);
    }
  }
}

TEST(TNVContour, EllipseBelowNothingOrBeyondAMillionPixelsIsNotDrawn) {
  struct Row {
    cv::RotatedRect ellipse;
    bool drawn;
  };
  const auto nan = static_cast<float>(kNaN);
  // The rim of the large ones runs through x = 30; they reach out to 1048576 and to 1048578.
  for (const Row& row :
       {Row{{{30, 20}, {-1, 9}, 0}, false}, Row{{{30, 20}, {9, -1}, 0}, false},
        Row{{{30, 20}, {nan, 9}, 0}, false}, Row{{{30, 20}, {9, nan}, 0}, false},
        Row{{{nan, 20}, {9, 9}, 0}, false}, Row{{{30, nan}, {9, 9}, 0}, false},
        Row{{{-524273, 20}, {1048606, 40}, 0}, true}, Row{{{-524274, 20}, {1048608, 40}, 0}, false},
        Row{{{30, -524274}, {40, 1048608}, 0}, false}, Row{{{30, 20}, {1e30F, 1e30F}, 0}, false}}) {
    cv::Mat seen = blackPicture(60, 50);
    TNVContour::drawEllipse(seen, row.ellipse, {10, 20, 30}, 1);
    EXPECT_EQ(cv::countNonZero(seen.reshape(1)) > 0, row.drawn) << row.ellipse.center;
  }
}

TEST(TNVContour, HostileRoundFiguresAreDrawnInNoTime) {
  const auto start = std::chrono::steady_clock::now();
  cv::Mat image = blackPicture(60, 40);
  for (const double a : kHostile) {
    for (const double b : kHostile) {
      const auto x = static_cast<float>(std::clamp(a, -1e30, 1e30));
      const auto y = static_cast<float>(std::clamp(b, -1e30, 1e30));
      TNVContour::drawEllipse(image, {{x, y}, {9, 9}, y}, {1, 2, 3}, 1);
      TNVContour::drawEllipse(image, {{9, 9}, {x, y}, x}, {1, 2, 3}, -1);
      TNVContour::drawCircle(image, TNVContour::rounded({a, b}), 9, {1, 2, 3}, -1);
      TNVContour::drawLine(image, TNVContour::rounded({a, b}), {5, 5}, {1, 2, 3}, 3);
    }
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(TNVContour, LineThatLeavesThePictureIsDrawnAsItIs) {
  for (const auto& [from, to] : {std::pair{cv::Point(-900, -800), cv::Point(950, 1000)},
                                 std::pair{cv::Point(3, 4), cv::Point(1010, -1000)},
                                 std::pair{cv::Point(-3, 20), cv::Point(-4, 900)}}) {
    for (const int thickness : {1, 2, 9}) {
      cv::Mat seen = blackPicture(60, 40);
      TNVContour::drawLine(seen, from, to, {10, 20, 30}, thickness);
      cv::Mat expected = blackPicture(60, 40);
      cv::line(expected, from, to, {10, 20, 30}, thickness, cv::LINE_AA);
      EXPECT_TRUE(samePixels(expected, seen)) << from << thickness;
    }
  }
}

TEST(TNVContour, LineFromFarAwayKeepsItsCourse) {
  // Upright, level and diagonal lines stay what they are wherever they are cut.
  struct Row {
    cv::Point from;
    cv::Point to;
    cv::Point nearFrom;
    cv::Point nearTo;
  };
  for (const Row& row : {Row{{30, INT_MIN}, {30, INT_MAX}, {30, -500}, {30, 500}},
                         Row{{INT_MAX, 7}, {20, 7}, {500, 7}, {20, 7}},
                         Row{{-100000, -100000}, {90000, 90000}, {-500, -500}, {500, 500}}}) {
    for (const int thickness : {1, 2, 5}) {
      cv::Mat seen = blackPicture(60, 40);
      TNVContour::drawLine(seen, row.from, row.to, {10, 20, 30}, thickness);
      cv::Mat expected = blackPicture(60, 40);
      cv::line(expected, row.nearFrom, row.nearTo, {10, 20, 30}, thickness, cv::LINE_AA);
      EXPECT_TRUE(samePixels(expected, seen)) << row.from << thickness;
    }
  }
  cv::Mat seen = blackPicture(60, 40);
  TNVContour::drawLine(seen, {-5000, 3000}, {9000, 3001}, {10, 20, 30}, 2);
  EXPECT_TRUE(samePixels(blackPicture(60, 40), seen));
}

TEST(TNVContour, ManyThickLinesFromFarAwayAreDrawnInNoTime) {
  const auto start = std::chrono::steady_clock::now();
  cv::Mat image = blackPicture(60, 40);
  for (int i = 0; i < 10000; ++i)
    TNVContour::drawLine(image, {i % 60, INT_MIN}, {5, INT_MAX}, {1, 2, 3}, 2);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(TNVContour, RectangleThatLeavesThePictureIsDrawnAsItIs) {
  for (const cv::Rect& box :
       {cv::Rect(5, 6, 20, 30), cv::Rect(-3, -2, 40, 30), cv::Rect(20, 10, 900, 800),
        cv::Rect(-900, -950, 940, 980), cv::Rect(-1022, 3, 1050, 2), cv::Rect(-4, -4, 68, 48),
        cv::Rect(-5000, -3000, 5020, 3010), cv::Rect(30, 20, 7000, 9000),
        cv::Rect(-6000, 7, 20000, 21), cv::Rect(70, 45, 9, 9), cv::Rect(63, -3, 9, 90),
        cv::Rect(9, 9, 1, 1), cv::Rect(9, 9, 0, 5), cv::Rect(9, 9, 5, -5)}) {
    for (const int thickness : {INT_MIN, -1, 0, 1, 2, 9}) {
      cv::Mat seen = patternedPicture(60, 40);
      TNVContour::drawRectangle(seen, box, {10, 20, 30}, thickness);
      cv::Mat expected = patternedPicture(60, 40);
      cv::rectangle(expected, box, {10, 20, 30}, thickness, cv::LINE_AA, 0);
      EXPECT_TRUE(samePixels(expected, seen)) << box << thickness;
    }
  }
}

TEST(TNVContour, RectangleFarAroundThePictureIsDrawnInNoTime) {
  const auto start = std::chrono::steady_clock::now();
  const int half = INT_MAX / 2;
  for (const int thickness : {-1, 1, 2}) {
    cv::Mat seen = patternedPicture(1000, 600);
    for (int i = 0; i < 200; ++i)
      TNVContour::drawRectangle(seen, {-half, -half, INT_MAX, INT_MAX}, {1, 2, 3}, thickness);
    const cv::Mat filled(600, 1000, CV_8UC3, cv::Scalar(1, 2, 3));
    EXPECT_TRUE(samePixels(thickness < 0 ? filled : patternedPicture(1000, 600), seen));
    for (const cv::Rect& box :
         {cv::Rect(INT_MAX, INT_MAX, INT_MAX, INT_MAX),
          cv::Rect(INT_MIN, INT_MIN, INT_MAX, INT_MAX), cv::Rect(INT_MAX, 5, INT_MIN, INT_MIN)}) {
      cv::Mat untouched = patternedPicture(60, 40);
      TNVContour::drawRectangle(untouched, box, {1, 2, 3}, thickness);
      EXPECT_TRUE(samePixels(patternedPicture(60, 40), untouched)) << box;
    }
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

namespace {

/// An outline that runs up and down between the two rows, at a new column each time.
std::vector<cv::Point> zigzag(int corners, int top, int bottom) {
  std::vector<cv::Point> outline;
  for (int i = 0; i < corners; ++i)
    outline.emplace_back(static_cast<int>(std::int64_t{i} * 7919 % 60), i % 2 == 0 ? top : bottom);
  return outline;
}

}  // namespace

TEST(TNVContour, OutlineThatCrossesItselfIsFilled) {
  // 4096 edges over 41 rows, which is below the half second.
  for (const int corners : {4, 100, 4096}) {
    const std::vector<cv::Point> outline = zigzag(corners, 0, 40);
    cv::Mat seen(40, 60, CV_8UC1, cv::Scalar(0));
    TNVContour::fillContourMask(seen, outline, cv::Scalar(255));
    cv::Mat expected(40, 60, CV_8UC1, cv::Scalar(0));
    cv::drawContours(expected, std::vector<std::vector<cv::Point>>{outline}, 0, cv::Scalar(255), -1,
                     8);
    EXPECT_TRUE(samePixels(expected, seen)) << corners;
  }
}

TEST(TNVContour, LongOutlineThatHardlyCrossesItselfIsFilled) {
  // The rim of a strip that winds along the rows: 200000 pixels, four edges to a row.
  std::vector<cv::Point> outline;
  for (int y = 0; y < 100000; ++y)
    outline.emplace_back(y % 2, y);
  for (int y = 100000; y-- > 0;)
    outline.emplace_back(3 + y % 2, y);
  cv::Mat mask(100000, 6, CV_8UC1, cv::Scalar(0));
  TNVContour::fillContourMask(mask, outline, cv::Scalar(255));
  EXPECT_EQ(cv::countNonZero(mask), 400000);
}

TEST(TNVContour, AsManyCornersAsADrawnLineHasAreFilledOnLargeViews) {
  for (const int height : {1080, 2160, 4320}) {
    const std::vector<cv::Point> outline = zigzag(999, 0, height - 1);
    cv::Mat seen(height, 3840, CV_8UC1, cv::Scalar(0));
    TNVContour::fillContourMask(seen, outline, cv::Scalar(255));
    cv::Mat expected(height, 3840, CV_8UC1, cv::Scalar(0));
    cv::drawContours(expected, std::vector<std::vector<cv::Point>>{outline}, 0, cv::Scalar(255), -1,
                     8);
    EXPECT_TRUE(samePixels(expected, seen)) << height;
    EXPECT_GT(cv::countNonZero(seen), 0);
  }
}

TEST(TNVContour, AsManyCornersAsADrawnLineHasAreFilledInTheTallestPicture) {
  constexpr int height = 65536;
  const std::vector<cv::Point> outline = zigzag(999, 0, height - 1);
  cv::Mat seen(height, 60, CV_8UC1, cv::Scalar(0));
  TNVContour::fillContourMask(seen, outline, cv::Scalar(255));
  cv::Mat expected(height, 60, CV_8UC1, cv::Scalar(0));
  cv::drawContours(expected, std::vector<std::vector<cv::Point>>{outline}, 0, cv::Scalar(255), -1,
                   8);
  EXPECT_TRUE(samePixels(expected, seen));
  EXPECT_GT(cv::countNonZero(seen), 0);
}

TEST(TNVContour, OutlineThatWouldTakeMinutesToFillIsLeftOut) {
  const auto start = std::chrono::steady_clock::now();
  for (const std::vector<cv::Point>& outline :
       {zigzag(1000000, 0, 40), zigzag(1000000, 20, 21), zigzag(3000, -1000000, 1000000),
        zigzag(4, INT_MIN, INT_MAX),
        // These two would take seconds: the first for its rows, the second for its corners.
        zigzag(999, -1000000, 1000000), zigzag(20000, 0, 40)}) {
    cv::Mat mask(40, 60, CV_8UC1, cv::Scalar(9));
    TNVContour::fillContourMask(mask, outline, cv::Scalar(255));
    EXPECT_TRUE(samePixels(cv::Mat(40, 60, CV_8UC1, cv::Scalar(9)), mask));
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}
