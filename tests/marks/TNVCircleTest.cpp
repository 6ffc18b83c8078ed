#include "marks/TNVCircle.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marks/MarkTools.h"
#include "support/LogCapture.h"

namespace {

using TNVCircle::Circle;
using TNVCircle::Points;

void expectCircle(const Circle& expected, const Circle& actual, double tolerance) {
  EXPECT_NEAR(expected.x, actual.x, tolerance);
  EXPECT_NEAR(expected.y, actual.y, tolerance);
  EXPECT_NEAR(expected.r, actual.r, tolerance);
}

/// `degrees` counts from straight below the centre toward its right.
cv::Point2d onRim(const Circle& circle, double degrees) {
  const double angle = degrees * CV_PI / 180;
  return {circle.x + circle.r * std::sin(angle), circle.y + circle.r * std::cos(angle)};
}

Points rimPoints(const Circle& circle, int count) {
  Points points;
  for (int i = 0; i < count; ++i)
    points.push_back(onRim(circle, 360.0 * i / count));
  return points;
}

/// Blocks of equal points such that each triple lies on one of the two circles whole, which gives
/// 3 `first` circles like `a` and 3 `second` - 2 like `b`.
Points twoCircles(const Circle& a, std::size_t first, const Circle& b, std::size_t second) {
  Points points;
  for (const double degrees : {170.0, 50.0, -70.0}) {
    points.insert(points.end(), first, onRim(a, degrees));
    points.insert(points.end(), second, onRim(b, degrees - 40));
  }
  return points;
}

Circle solvedByHand(const Points& points) {
  cv::Mat factors(static_cast<int>(points.size()), 3, CV_32F);
  cv::Mat right(static_cast<int>(points.size()), 1, CV_32F);
  for (int i = 0; i < factors.rows; ++i) {
    const cv::Point2d point = points[static_cast<std::size_t>(i)];
    factors.at<float>(i, 0) = 1;
    factors.at<float>(i, 1) = static_cast<float>(-point.x);
    factors.at<float>(i, 2) = static_cast<float>(-point.y);
    right.at<float>(i) = static_cast<float>(-(point.y * point.y + point.x * point.x));
  }
  cv::Mat solution;
  cv::solve(factors, right, solution, 1);
  const double x = solution.at<float>(1) / 2;
  const double y = solution.at<float>(2) / 2;
  return {x, y, std::sqrt(x * x + y * y - static_cast<double>(solution.at<float>(0)))};
}

/// The vote in whole matrices.
Circle votedInMatrices(Points points) {
  cv::Point2d centre;
  for (const cv::Point2d& point : points)
    centre += point * (1.0 / static_cast<double>(points.size()));
  std::stable_sort(points.begin(), points.end(), [&](cv::Point2d a, cv::Point2d b) {
    return std::atan2(a.x - centre.x, a.y - centre.y) > std::atan2(b.x - centre.x, b.y - centre.y);
  });
  const std::size_t n = points.size();
  const auto t = static_cast<float>(static_cast<double>(n) / 3.0);
  std::vector<Circle> circles;
  for (std::size_t k = 0; k < n - 2; ++k) {
    circles.push_back(solvedByHand({points[k], points[(static_cast<std::size_t>(t) + k) % n],
                                    points[(static_cast<std::size_t>(t * 2) + k) % n]}));
  }
  const auto bin = [](double value) { return static_cast<int>(value / 12.0); };
  int left = INT_MAX, top = INT_MAX, right = INT_MIN, bottom = INT_MIN;
  for (const Circle& circle : circles) {
    left = std::min(left, bin(circle.x));
    right = std::max(right, bin(circle.x));
    top = std::min(top, bin(circle.y));
    bottom = std::max(bottom, bin(circle.y));
  }
  const cv::Size size(right - left + 1, bottom - top + 1);
  cv::Mat votes = cv::Mat::zeros(size, CV_8U);
  cv::Mat sumX = cv::Mat::zeros(size, CV_32F);
  cv::Mat sumY = cv::Mat::zeros(size, CV_32F);
  cv::Mat sumR = cv::Mat::zeros(size, CV_32F);
  for (const Circle& circle : circles) {
    const cv::Point cell(bin(circle.x) - left, bin(circle.y) - top);
    votes.at<uchar>(cell) = static_cast<uchar>(votes.at<uchar>(cell) + 1);
    sumX.at<float>(cell) = static_cast<float>(sumX.at<float>(cell) + circle.x);
    sumY.at<float>(cell) = static_cast<float>(sumY.at<float>(cell) + circle.y);
    sumR.at<float>(cell) = static_cast<float>(sumR.at<float>(cell) + circle.r);
  }
  double most = 0;
  cv::Point winner;
  cv::minMaxLoc(votes, nullptr, &most, nullptr, &winner);
  const auto m = static_cast<float>(most);
  return {sumX.at<float>(winner) / m, sumY.at<float>(winner) / m, sumR.at<float>(winner) / m};
}

}  // namespace

TEST(TNVCircle, LessThanThreePointsAreToldInTheLog) {
  for (const Points& points : {Points{}, Points{{1, 2}}, Points{{1, 2}, {3, 4}}}) {
    const LogCapture log;
    expectCircle({-1, -1, -1}, TNVCircle::getCircleFromContour(points), 0);
    EXPECT_EQ(log.text(), "TNVCircle::getCircleFromContour: Contour points less then 3!\n");
  }
  for (const Points& points : {Points{}, Points{{1, 2}}, Points{{1, 2}, {3, 4}}}) {
    const LogCapture log;
    expectCircle({-1, -1, -1}, TNVCircle::_solveCircleFromPoints(points), 0);
    EXPECT_EQ(log.text(), "TNVCircle::_solveCircleFromPoints: Contour points less then 3!\n");
  }
}

TEST(TNVCircle, ThreeExactPointsReturnTheirCircle) {
  const LogCapture log;
  Points points{{150, 200}, {100, 250}, {60, 170}};  // 3-4-5 triangles around (100, 200)
  std::sort(points.begin(), points.end(), [](cv::Point2d a, cv::Point2d b) { return a.x < b.x; });
  do {
    expectCircle({100, 200, 50}, TNVCircle::getCircleFromContour(points), 0.01);
    expectCircle({100, 200, 50}, TNVCircle::_solveCircleFromPoints(points), 0.01);
  } while (std::next_permutation(points.begin(), points.end(),
                                 [](cv::Point2d a, cv::Point2d b) { return a.x < b.x; }));
  EXPECT_EQ(log.text(), "");
}

TEST(TNVCircle, AlgebraicFitTakesAllPoints) {
  // By symmetry about the origin r^2 is the mean of the squares: (1 + 1 + 4 + 4) / 4.
  const Points cross{{1, 0}, {-1, 0}, {0, 2}, {0, -2}};
  expectCircle({0, 0, std::sqrt(2.5)}, TNVCircle::_solveCircleFromPoints(cross), 1e-5);
}

TEST(TNVCircle, OneFarOutlierIsIgnored) {
  const Circle circle{300, 280, 120};
  for (int count = 8; count <= 30; ++count) {
    Points points = rimPoints(circle, count);
    points.emplace_back(900, 40);
    expectCircle(circle, TNVCircle::getCircleFromContour(points), 0.5);
  }
}

TEST(TNVCircle, CollinearPointsGiveTheSolutionOfLeastNorm) {
  // Along an axis, at t - 1, t, t + 1, the coordinate across is 0 and so is that of the centre; the
  // line through t^2 has the slope 2 t and meets the axis at 2/3 - t^2, so that r^2 = 2/3.
  for (const double t : {1.0, 3.0, 20.0}) {
    const Points across{{t - 1, 0}, {t, 0}, {t + 1, 0}};
    const Points down{{0, t - 1}, {0, t}, {0, t + 1}};
    for (const bool vote : {false, true}) {
      const auto solve = [&](const Points& points) {
        return vote ? TNVCircle::getCircleFromContour(points)
                    : TNVCircle::_solveCircleFromPoints(points);
      };
      expectCircle({t, 0, std::sqrt(2.0 / 3)}, solve(across), 1e-3);
      expectCircle({0, t, std::sqrt(2.0 / 3)}, solve(down), 1e-3);
    }
  }
}

TEST(TNVCircle, RadiusIsNoNumberWhereTheRootIsOfANegative) {
  // A tiny circle far out: in single precision its constant term errs by more than r^2.
  int noNumbers = 0;
  for (int i = 0; i < 200; ++i) {
    const Points points = rimPoints({1000.5 + i, 2000, 0.5}, 3);
    const Circle expected = solvedByHand(points);
    const Circle solved = TNVCircle::_solveCircleFromPoints(points);
    EXPECT_EQ(std::isnan(solved.r), std::isnan(expected.r));
    EXPECT_EQ(solved.x, expected.x);
    noNumbers += std::isnan(TNVCircle::getCircleFromContour(points).r) ? 1 : 0;
  }
  EXPECT_GT(noNumbers, 0);
}

TEST(TNVCircle, VotesWrapAt256) {
  const Circle many{306, 306, 200};
  const Circle few{342, 306, 100};
  // 255 votes are the most that count.
  expectCircle(many, TNVCircle::getCircleFromContour(twoCircles(many, 85, few, 60)), 0.1);
  // 300 votes count as 44 and lose to 46.
  expectCircle(few, TNVCircle::getCircleFromContour(twoCircles(many, 100, few, 16)), 0.1);
  // They win over 43, and 300 circles are divided by 44.
  const double factor = 300.0 / 44;
  expectCircle({factor * many.x, factor * many.y, factor * many.r},
               TNVCircle::getCircleFromContour(twoCircles(many, 100, few, 15)), 1);
}

TEST(TNVCircle, FirstRowThenFirstColumnWinsATie) {
  struct Row {
    Points points;
    Circle circle;
  };
  const double r = std::hypot(100, 130);
  // Of four points the first three and the last three make a triple. In the first two rows the
  // triples are right-angled, with centres at (300, 200) and (300, 170); in the last row the
  // centres are (325, 306) and (295, 306).
  for (const Row& row : {Row{{{400, 100}, {400, 300}, {200, 300}, {200, 40}}, {300, 170, r}},
                         Row{{{400, 40}, {400, 300}, {200, 300}, {200, 100}}, {300, 170, r}},
                         Row{{{360, 186}, {400, 206}, {400, 406}, {151, 323}}, {295, 306, 145}}}) {
    expectCircle(row.circle, TNVCircle::getCircleFromContour(row.points), 0.05);
  }
}

TEST(TNVCircle, SparseVotesElectWhatMatricesElect) {
  std::mt19937 generator(20240607);
  std::normal_distribution<double> noise(0, 2);
  std::uniform_real_distribution<double> anywhere(-100, 900);
  int compared = 0;
  for (int round = 0; round < 300; ++round) {
    const Circle circle{anywhere(generator), anywhere(generator), 30 + 0.5 * round};
    Points points = rimPoints(circle, 3 + round % 40);
    for (cv::Point2d& point : points)
      point += {noise(generator), noise(generator)};
    for (int stray = 0; stray < round % 5; ++stray)
      points.emplace_back(anywhere(generator), anywhere(generator));
    // The matrices must have room in memory.
    const bool strayed = round % 5 > 0;
    if (strayed && points.size() > 40) continue;
    Circle expected;
    try {
      expected = votedInMatrices(points);
    } catch (const cv::Exception&) {
      continue;
    }
    const Circle actual = TNVCircle::getCircleFromContour(points);
    EXPECT_EQ(actual.x, expected.x) << round;
    EXPECT_EQ(actual.y, expected.y) << round;
    EXPECT_EQ(actual.r, expected.r) << round;
    ++compared;
  }
  EXPECT_GT(compared, 200);
}

TEST(TNVCircle, NearlyStraightRimCostsNoMemory) {
  Points points;
  for (int i = 0; i < 99; ++i)
    points.emplace_back(10 * i, 300 + 0.001 * (i % 7));
  const auto start = std::chrono::steady_clock::now();
  TNVCircle::getCircleFromContour(points);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(TNVCircle, PointsThatAreNoNumbersGiveNoResult) {
  const LogCapture log;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinite = std::numeric_limits<double>::infinity();
  for (const double bad : {nan, infinite, -infinite}) {
    Points points = rimPoints({300, 300, 100}, 9);
    points[4].x = bad;
    expectCircle({-1, -1, -1}, TNVCircle::getCircleFromContour(points), 0);
    points[4] = {300, bad};
    expectCircle({-1, -1, -1}, TNVCircle::getCircleFromContour(points), 0);
  }
  // Their squares are out of range.
  expectCircle({-1, -1, -1}, TNVCircle::getCircleFromContour({{1e300, 0}, {0, 1e300}, {1, 1}}), 0);
}

TEST(TNVCircle, HostilePointsNeverRaise) {
  for (const double a : hostileNumbers()) {
    for (const double b : hostileNumbers()) {
      for (const Points& points :
           {Points{{a, b}, {b, a}, {a, a}}, Points{{a, b}, {a, b}, {a, b}, {a, b}},
            Points{{a, b}, {1, 2}, {2, 1}, {3, 3}, {b, 7}}}) {
        EXPECT_NO_THROW(TNVCircle::getCircleFromContour(points));
        EXPECT_NO_THROW(TNVCircle::_solveCircleFromPoints(points));
      }
    }
  }
}
