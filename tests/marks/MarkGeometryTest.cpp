#include "marks/MarkGeometry.h"

#include <climits>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marks/PathTools.h"
#include "support/LogCapture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tnv::Points;

const Points kSquare{{0, 0}, {10, 0}, {10, 10}, {0, 10}};

}  // namespace

TEST(MarkGeometry, PixelsAreFractionsOfWidthAndHeight) {
  EXPECT_EQ(tnv::toPixels(cv::Point2d(0.25, 0.75), {200, 100}), cv::Point2d(50, 75));
  EXPECT_THAT(tnv::toPixels(Points{{0, 1}, {-0.5, 1.5}}, {200, 100}),
              ElementsAre(cv::Point2d(0, 100), cv::Point2d(-100, 150)));
  EXPECT_EQ(tnv::toRelative(cv::Point2d(50, 75), {200, 100}), cv::Point2d(0.25, 0.75));
  EXPECT_THAT(tnv::toRelative(Points{{0, 100}, {-100, 150}}, {200, 100}),
              ElementsAre(cv::Point2d(0, 1), cv::Point2d(-0.5, 1.5)));
  EXPECT_THAT(tnv::toPixels(Points{}, {200, 100}), IsEmpty());
  EXPECT_THAT(tnv::toRelative(Points{}, {200, 100}), IsEmpty());
}

TEST(MarkGeometry, SinglePrecisionIsTheNearest) {
  EXPECT_THAT(tnv::toSinglePrecision({{0.1, 1.0 / 3.0}, {16777217, -2}}),
              ElementsAre(cv::Point2f(0.1F, 1.0F / 3.0F), cv::Point2f(16777216, -2)));
  EXPECT_THAT(tnv::toSinglePrecision({}), IsEmpty());
}

TEST(MarkGeometry, SizeOfPixelsCountsTheOnesTouched) {
  struct Row {
    Points pixels;
    cv::Point2d size;
  };
  for (const Row& row : {Row{{}, {0, 0}}, Row{{{5, 5}}, {1.0 / 64, 1.0 / 32}},
                         Row{{{5, 5}, {5, 8}, {6, 7}}, {2.0 / 64, 4.0 / 32}},
                         // 4.5 to 4, 10.6 to 11, -2.4 to -2, 3.5 to 4.
                         Row{{{4.5, -2.4}, {10.6, 3.5}}, {8.0 / 64, 7.0 / 32}}}) {
    EXPECT_EQ(tnv::relSizeOfPixels(row.pixels, {64, 32}), row.size);
  }
}

TEST(MarkGeometry, ResizedPointMovesWithTheCentre) {
  // (3 - 2) 2 + 2 + 8 and (5 - 4) 0.5 + 4 - 1.
  EXPECT_EQ(tnv::resizedAbout({2, 4}, {3, 5}, {2, 0.5}, {10, 3}), cv::Point2d(12, 3.5));
  EXPECT_EQ(tnv::resizedAbout({2, 4}, {2, 4}, {9, 9}, {10, 3}), cv::Point2d(10, 3));
  EXPECT_EQ(tnv::resizedAbout({2, 4}, {3, 5}, {-1, 1}, {2, 4}), cv::Point2d(1, 5));
}

TEST(MarkGeometry, PathIsDividedWithBothEnds) {
  expectPoints({{0, 0}, {5, 0}, {10, 0}, {10, 5}, {10, 10}},
               tnv::dividedPath({{0, 0}, {10, 0}, {10, 10}}, 5));
  expectPoints({{0, 0}, {10, 10}}, tnv::dividedPath({{0, 0}, {10, 0}, {10, 10}}, 2));
}

TEST(MarkGeometry, CountsBelowTwoAndBeyondAllPicturesDivideNothing) {
  const LogCapture log;
  for (const int count : {1, 0, -1, INT_MIN, (1 << 24) + 1, INT_MAX}) {
    EXPECT_THAT(tnv::dividedPath(kSquare, count), IsEmpty()) << count;
    EXPECT_THAT(tnv::dividedRelativePath(kSquare, {64, 64}, count), IsEmpty()) << count;
  }
  for (const int count : {(1 << 24) + 1, INT_MAX})
    EXPECT_THAT(tnv::dividedOutline(kSquare, count), IsEmpty()) << count;
  EXPECT_EQ(log.text(), "");
  for (const int count : {0, -1, INT_MIN})
    EXPECT_THAT(tnv::dividedOutline(kSquare, count), IsEmpty()) << count;
  EXPECT_EQ(log.lines().size(), 3U) << "a line each, from the division";
}

TEST(MarkGeometry, PathOfLessThanTwoPointsIsToldInTheLog) {
  for (const Points& path : {Points{}, Points{{3, 4}}}) {
    const LogCapture log;
    EXPECT_THAT(tnv::dividedPath(path, 5), IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre("TNVContour::consistentDevidePointLine: Can not devide "
                                         "points, line has to less points < 2!"));
  }
}

TEST(MarkGeometry, RelativePathIsDividedByPixels) {
  // 32 pixels to the right and 16 down, a point each 16.
  expectPoints({{0.25, 0.25}, {0.5, 0.25}, {0.75, 0.25}, {0.75, 0.75}},
               tnv::dividedRelativePath({{0.25, 0.25}, {0.75, 0.25}, {0.75, 0.75}}, {64, 32}, 4));
}

TEST(MarkGeometry, OutlineIsDividedWithoutItsEnd) {
  expectPoints(kSquare, tnv::dividedOutline(kSquare, 4));
  expectPoints({{0, 0}, {10, 10}}, tnv::dividedOutline(kSquare, 2));
  expectPoints({{0, 0}}, tnv::dividedOutline(kSquare, 1));
  expectPoints({{0, 0}, {5, 0}, {10, 0}, {10, 5}, {10, 10}, {5, 10}, {0, 10}, {0, 5}},
               tnv::dividedOutline(kSquare, 8));
  const LogCapture log;
  EXPECT_THAT(tnv::dividedOutline({}, 8), IsEmpty());
  EXPECT_EQ(log.text(), "");
}

TEST(MarkGeometry, DividedOutlineHasTheCountWhateverItsShape) {
  std::mt19937 random(20250101);
  std::uniform_real_distribution<double> coordinate(0, 1000);
  for (int round = 0; round < 200; ++round) {
    Points outline(3 + random() % 6);
    for (cv::Point2d& point : outline)
      point = {coordinate(random), coordinate(random)};
    const int count = static_cast<int>(2 + random() % 60);
    const Points points = tnv::dividedOutline(outline, count);
    ASSERT_EQ(points.size(), static_cast<std::size_t>(count)) << "round " << round;
    EXPECT_EQ(points.front(), outline.front());
  }
}

TEST(MarkGeometry, OutlineIsHitWithinAndLessThanNineteenPixelsAway) {
  const Points triangle{{100, 100}, {200, 100}, {100, 200}};
  const Points segment{{100, 100}, {200, 100}};
  struct Row {
    Points outline;
    cv::Point2d pixel;
    bool over;
  };
  for (const Row& row :
       {Row{triangle, {130, 130}, true}, Row{triangle, {100, 100}, true},
        // Beside the slanted edge, which closes the outline: 18.4 and 19.8.
        Row{triangle, {163, 163}, true}, Row{triangle, {164, 164}, false},
        Row{triangle, {150, 81.01}, true}, Row{triangle, {150, 81}, false},
        Row{segment, {150, 118}, true}, Row{segment, {150, 119}, false},
        Row{segment, {82, 100}, true}, Row{segment, {81, 100}, false}, Row{{}, {0, 0}, false},
        Row{{{5, 5}}, {5, 5}, false}, Row{{{5, 5}, {5, 5}}, {5, 23}, true},
        Row{{{5, 5}, {5, 5}}, {5, 24}, false}}) {
    EXPECT_EQ(tnv::isOverOutline(row.outline, 19, row.pixel), row.over) << row.pixel;
  }
}

TEST(MarkGeometry, OutlineIsHitWithinItsMargin) {
  const Points triangle{{100, 100}, {200, 100}, {100, 200}};
  for (const double margin : {0.5, 5.0, 40.0}) {
    EXPECT_TRUE(tnv::isOverOutline(triangle, margin, {150, 100.25 - margin})) << margin;
    EXPECT_FALSE(tnv::isOverOutline(triangle, margin, {150, 99.75 - margin})) << margin;
  }
}

TEST(MarkGeometry, HostileNumbersAreAnswered) {
  const LogCapture log;
  for (const double x : hostileNumbers()) {
    for (const double y : hostileNumbers()) {
      const Points points{{x, y}, {1, x}, {y, 2}};
      tnv::isOverOutline(points, y, {y, x});
      const cv::Point2d size = tnv::relSizeOfPixels(points, {1, 1});
      EXPECT_GE(size.x, 1.0);
      EXPECT_LE(size.x, 2.0 * (1 << 20) + 1);
      EXPECT_LE(tnv::dividedPath(points, 9).size(), 10U);
      EXPECT_LE(tnv::dividedOutline(points, 9).size(), 10U);
      tnv::dividedRelativePath(points, {0, 0}, 9);
    }
  }
}
