#include "marks/TNVEllipse.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <ctime>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marks/MarkTools.h"
#include "support/LogCapture.h"

namespace {

using Points = TNVEllipse::Points;

const cv::Size kImage(640, 480);

/// Points on the ellipse with these half axes.
Points onRim(cv::Point2d centre, cv::Size2d axes, double degrees, int count) {
  const double tilt = degrees * CV_PI / 180;
  Points points;
  for (int i = 0; i < count; ++i) {
    const double angle = 2 * CV_PI * i / count;
    const double x = axes.width * std::cos(angle);
    const double y = axes.height * std::sin(angle);
    points.push_back(centre + cv::Point2d(x * std::cos(tilt) - y * std::sin(tilt),
                                          x * std::sin(tilt) + y * std::cos(tilt)));
  }
  return points;
}

cv::RotatedRect detected(const Points& points, cv::Size imageSize, unsigned seed = 1) {
  std::mt19937 generator(seed);
  TNVEllipse fit(points, imageSize);
  return fit.detectEllipse(generator);
}

/// Five points with an ellipse near the one told, and that ellipse as the library fits it.
struct FivePoints {
  FivePoints(cv::Point2d centre, cv::Size2d axes, double degrees) {
    for (const cv::Point2d& point : onRim(centre, axes, degrees, 5)) {
      const cv::Point pixel(cvRound(point.x), cvRound(point.y));
      pixels.push_back(pixel);
      points.emplace_back(pixel);
    }
    ellipse = cv::fitEllipseAMS(pixels);
  }

  std::vector<cv::Point> pixels;
  Points points;
  cv::RotatedRect ellipse;
};

/// The whole detection with nothing but direct calls of the library.
cv::RotatedRect detectedByHand(const Points& points, cv::Size imageSize, std::mt19937& generator) {
  cv::Mat accumulator = cv::Mat::zeros(imageSize.height / 2, imageSize.width / 2, CV_32F);
  std::vector<cv::RotatedRect> candidates;
  for (int round = 0; round < 250; ++round) {
    std::vector<cv::Point> sample;
    for (int draw = 0; draw < 15 && sample.size() < 5; ++draw) {
      const cv::Point2d picked = points[generator() % points.size()];
      const cv::Point pixel(cvRound(picked.x), cvRound(picked.y));
      if (std::count(sample.begin(), sample.end(), pixel) == 0) sample.push_back(pixel);
    }
    if (sample.size() != 5) continue;
    candidates.push_back(cv::fitEllipseAMS(sample));
    const cv::Point cell(cvRound(candidates.back().center.x / 2),
                         cvRound(candidates.back().center.y / 2));
    if (cell.x >= 0 && cell.y >= 0 && cell.x < accumulator.cols && cell.y < accumulator.rows)
      accumulator.at<float>(cell) += 1;
  }
  cv::Point peak;
  double x = 0, y = 0;
  const auto findPeak = [&](cv::Mat& votes, int kernel) {
    cv::blur(votes, votes, {kernel, kernel}, {-1, -1}, 4);
    cv::normalize(votes, votes, 0, 1, cv::NORM_MINMAX);
    cv::minMaxLoc(votes, nullptr, nullptr, nullptr, &peak);
    if (votes.rows > 1 &&
        (peak.x - 1 < 1 || peak.x + 1 >= votes.cols || peak.y - 1 < 1 || peak.y + 1 >= votes.rows))
      return false;
    if (votes.rows == 1 && (peak.x == 0 || peak.x == votes.cols - 1)) {
      x = 1;
      return true;
    }
    double sum = 0, sumX = 0, sumY = 0;
    for (int row = 0; row < (votes.rows > 1 ? 3 : 1); ++row) {
      for (int column = 0; column < 3; ++column) {
        const int top = votes.rows > 1 ? peak.y - 1 : 0;
        const double value = votes.at<float>(top + row, peak.x - 1 + column);
        sum += value;
        sumX += value * column;
        sumY += value * row;
      }
    }
    x = sumX / sum;
    y = sumY / sum;
    return true;
  };
  if (!findPeak(accumulator, 3)) return {};
  const cv::Point2d centre(2 * (peak.x - 1 + x), 2 * (peak.y - 1 + y));
  std::vector<cv::RotatedRect> near;
  for (const cv::RotatedRect& candidate : candidates) {
    if (cv::norm(cv::Point2d(candidate.center) - centre) <= 25) near.push_back(candidate);
  }
  cv::Mat angles = cv::Mat::zeros(1, 720, CV_32F);
  for (const cv::RotatedRect& candidate : near)
    angles.at<float>(static_cast<int>(candidate.angle * 2)) += 1;
  findPeak(angles, 5);
  const double angle = (peak.x + x) / 2;
  cv::Mat sizes = cv::Mat::zeros(imageSize.height / 2, imageSize.width / 2, CV_32F);
  for (const cv::RotatedRect& candidate : near) {
    if (std::abs(candidate.angle - angle) > 6) continue;
    const int column = cvRound(candidate.size.width / 2);
    const int row = cvRound(candidate.size.height / 2);
    if (column >= 1 && row >= 1 && column < sizes.cols && row < sizes.rows)
      sizes.at<float>(row, column) += 1;
  }
  if (!findPeak(sizes, 5)) return {};
  return {centre, cv::Size2d(2 * (peak.x + x), 2 * (peak.y + y)), static_cast<float>(angle)};
}

void expectSame(const cv::RotatedRect& expected, const cv::RotatedRect& actual, float tolerance) {
  EXPECT_NEAR(expected.center.x, actual.center.x, tolerance);
  EXPECT_NEAR(expected.center.y, actual.center.y, tolerance);
  EXPECT_NEAR(expected.size.width, actual.size.width, tolerance);
  EXPECT_NEAR(expected.size.height, actual.size.height, tolerance);
  EXPECT_NEAR(expected.angle, actual.angle, tolerance);
}

/// Half a turn more or less is the same ellipse, and the library's fits have both.
cv::RotatedRect withinHalfATurn(cv::RotatedRect ellipse) {
  ellipse.angle = std::fmod(ellipse.angle, 180.0F);
  return ellipse;
}

bool failed(const cv::RotatedRect& ellipse) {
  return ellipse.size.width == 0 && ellipse.size.height == 0 && ellipse.angle == 0;
}

}  // namespace

TEST(TNVEllipse, LessThanFivePointsAreToldInTheLog) {
  for (std::size_t count = 0; count < 5; ++count) {
    const LogCapture log;
    TNVEllipse fit(Points(count, {10, 20}), kImage);
    EXPECT_TRUE(failed(fit.detectEllipse()));
    EXPECT_EQ(log.text(), "TNVEllipse::detectEllipse: Too less points (<5) to detect ellipse!\n");
  }
  const LogCapture log;
  TNVEllipse fit(onRim({320, 240}, {100, 60}, 30, 5), kImage);
  fit.detectEllipse();
  EXPECT_EQ(log.text(), "");
}

TEST(TNVEllipse, FivePointsGiveTheSameSampleInEachRound) {
  for (const FivePoints& five :
       {FivePoints({320, 240}, {100, 60}, 30), FivePoints({200, 170}, {50, 120}, 70),
        FivePoints({411, 300}, {33, 90}, 101), FivePoints({300, 200}, {90, 110}, 20)}) {
    const auto cell = [](float pixels) { return static_cast<float>(cvRound(pixels / 2)); };
    // One cell holds all votes, which smoothing spreads evenly, so that the peak is the first of
    // 3 (or 5) equal cells: 1 (or 2) before the vote, and the centroid of its neighbourhood is 1.5.
    // Only for the centre the start of the neighbourhood, 1 before the peak, counts too.
    const cv::RotatedRect& ellipse = five.ellipse;
    const cv::RotatedRect expected(
        cv::Point2f(2 * (cell(ellipse.center.x) - 2 + 1.5F),
                    2 * (cell(ellipse.center.y) - 2 + 1.5F)),
        cv::Size2f(2 * (cell(ellipse.size.width) - 2 + 1.5F),
                   2 * (cell(ellipse.size.height) - 2 + 1.5F)),
        (static_cast<float>(static_cast<int>(2 * ellipse.angle)) - 2 + 1.5F) / 2);
    for (const unsigned seed : {1U, 2U, 3U})
      expectSame(withinHalfATurn(expected), withinHalfATurn(detected(five.points, kImage, seed)),
                 1e-4F);
  }
}

TEST(TNVEllipse, PeakAtTheEndsOfTheAngles) {
  // An upright ellipse with whole axes: the votes lie in the cells 0 and 1 or at half a turn.
  for (const double degrees : {0.0, 0.4, 1.2, 90.0, 179.6}) {
    const Points points = onRim({320, 240}, {60, 120}, degrees, 40);
    std::mt19937 generator(7);
    std::mt19937 same(7);
    TNVEllipse fit(points, kImage);
    expectSame(detectedByHand(points, kImage, same), fit.detectEllipse(generator), 1e-4F);
  }
}

TEST(TNVEllipse, FollowsTheRulesDrawByDraw) {
  std::mt19937 cases(20240608);
  std::normal_distribution<double> noise(0, 1.5);
  std::uniform_real_distribution<double> share(0, 1);
  int found = 0;
  for (unsigned i = 0; i < 60; ++i) {
    const cv::Point2d centre(100 + 440 * share(cases), 100 + 280 * share(cases));
    const cv::Size2d axes(20 + 80 * share(cases), 20 + 80 * share(cases));
    Points points = onRim(centre, axes, 180 * share(cases), 5 + static_cast<int>(i));
    for (cv::Point2d& point : points)
      point += {noise(cases), noise(cases)};
    // Copies of one point use up the draws of a round.
    if (i % 3 == 0) points.resize(points.size() * 4, points.front());
    for (unsigned stray = 0; stray < i % 4; ++stray)
      points.emplace_back(640 * share(cases), 480 * share(cases));
    std::mt19937 generator(i);
    std::mt19937 same(i);
    TNVEllipse fit(points, kImage);
    const cv::RotatedRect actual = fit.detectEllipse(generator);
    expectSame(detectedByHand(points, kImage, same), actual, 1e-3F);
    EXPECT_EQ(generator, same) << "other draws in case " << i;
    found += failed(actual) ? 0 : 1;
  }
  EXPECT_GT(found, 50);
}

TEST(TNVEllipse, SizeBelowOnePixelDoesNotVote) {
  // Samples of the line have ellipses of no width, about as many as the rim has wide ones.
  int found = 0;
  for (unsigned i = 0; i < 60; ++i) {
    Points points = onRim({320, 240}, {3.0 + i % 5, 40}, 0, 8 + static_cast<int>(i % 3));
    for (int y = 0; y < 10 + static_cast<int>(i % 7); ++y)
      points.emplace_back(320, 240 + (y % 2 == 0 ? 5 * y : -5 * y));
    std::mt19937 generator(i);
    std::mt19937 same(i);
    TNVEllipse fit(points, kImage);
    const cv::RotatedRect actual = fit.detectEllipse(generator);
    expectSame(detectedByHand(points, kImage, same), actual, 1e-3F);
    found += failed(actual) ? 0 : 1;
  }
  EXPECT_GT(found, 0);
}

TEST(TNVEllipse, RoundEndsAfterFifteenDraws) {
  std::mt19937 generator(3);
  std::mt19937 same(3);
  TNVEllipse fit(Points(9, {100, 100}), kImage);
  EXPECT_TRUE(failed(fit.detectEllipse(generator)));
  same.discard(250 * 15);
  EXPECT_EQ(generator, same);
}

TEST(TNVEllipse, PointsOfOnePixelCountOnce) {
  Points points = FivePoints({320, 240}, {100, 60}, 30).points;
  EXPECT_FALSE(failed(detected(points, kImage)));
  points.back() = points.front() + cv::Point2d(0.3, -0.4);
  EXPECT_TRUE(failed(detected(points, kImage)));
}

TEST(TNVEllipse, StrayPointsDoNotPull) {
  Points points = onRim({300, 220}, {80, 130}, 25, 24);
  points.insert(points.end(), {{20, 20}, {600, 60}, {320, 230}, {580, 460}});
  const cv::RotatedRect ellipse = withinHalfATurn(detected(points, kImage));
  EXPECT_NEAR(ellipse.center.x, 300, 3);
  EXPECT_NEAR(ellipse.center.y, 220, 3);
  EXPECT_NEAR(ellipse.size.width, 160, 6);
  EXPECT_NEAR(ellipse.size.height, 260, 6);
  EXPECT_NEAR(ellipse.angle, 25, 3);
}

TEST(TNVEllipse, CentreOnTheOutermostCellsFails) {
  struct Row {
    int cell;
    bool found;
  };
  // The border mirrors: a vote next to it is counted twice on it. Of equal cells the first counts,
  // and it needs two cells before it and one behind. The votes have 320 columns.
  for (const Row& row : {Row{-1, false}, Row{0, false}, Row{1, false}, Row{2, false}, Row{3, true},
                         Row{317, true}, Row{318, false}, Row{319, true}, Row{320, false}}) {
    SCOPED_TRACE(row.cell);
    const FivePoints across({2.0 * row.cell, 240}, {60, 90}, 20);
    ASSERT_EQ(cvRound(across.ellipse.center.x / 2), row.cell);
    EXPECT_EQ(failed(detected(across.points, kImage)), !row.found);
    const FivePoints down({240, 2.0 * row.cell}, {60, 90}, 20);
    ASSERT_EQ(cvRound(down.ellipse.center.y / 2), row.cell);
    EXPECT_EQ(failed(detected(down.points, {480, 640})), !row.found);
  }
}

TEST(TNVEllipse, SizeWithoutACellFails) {
  const FivePoints five({100, 100}, {60, 90}, 20);  // 120 by 180 pixels
  EXPECT_FALSE(failed(detected(five.points, {200, 200})));
  EXPECT_TRUE(failed(detected(five.points, {200, 170})));
  EXPECT_TRUE(failed(detected(onRim({100, 100}, {2, 2}, 0, 12), {200, 200})));
}

TEST(TNVEllipse, ImageWithoutRoomForVotesFails) {
  const Points points = onRim({320, 240}, {100, 60}, 30, 12);
  for (const cv::Size size : {cv::Size(0, 0), cv::Size(1, 1), cv::Size(1, 480), cv::Size(640, 1),
                              cv::Size(-640, 480), cv::Size(-640, -480), cv::Size(2, 2),
                              cv::Size(INT_MAX, INT_MAX), cv::Size(1 << 20, (1 << 10) + 1)}) {
    EXPECT_TRUE(failed(detected(points, size))) << size;
  }
}

TEST(TNVEllipse, OutlineHasAPointForFourDegrees) {
  std::mt19937 generator(1);
  TNVEllipse fit(onRim({320, 240}, {100, 60}, 30, 12), kImage);
  EXPECT_TRUE(fit.getOutline().empty());
  const cv::RotatedRect ellipse = fit.detectEllipse(generator);
  std::array<cv::Point2f, 4> corners;
  ellipse.points(corners.data());
  Points expected;
  cv::ellipse2Poly(
      cv::Point2d(ellipse.center),
      cv::Size2d(cv::norm(corners[3] - corners[0]) / 2, cv::norm(corners[0] - corners[1]) / 2),
      static_cast<int>(ellipse.angle), 0, 360, 4, expected);
  ASSERT_EQ(fit.getOutline().size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_LT(cv::norm(fit.getOutline()[i] - expected[i]), 1e-3);
}

TEST(TNVEllipse, ReseedsTheCommonGeneratorFromTheTime) {
  TNVEllipse fit(onRim({320, 240}, {100, 60}, 30, 12), kImage);
  const std::time_t before = std::time(nullptr);
  fit.detectEllipse();
  const int drawn = std::rand();
  const std::time_t after = std::time(nullptr);
  bool matches = false;
  for (std::time_t seed = before; seed <= after; ++seed) {
    std::srand(static_cast<unsigned>(seed));
    matches = matches || std::rand() == drawn;
  }
  EXPECT_TRUE(matches);
}

TEST(TNVEllipse, TwoCallsOnTheSameDataCanDiffer) {
  std::mt19937 cases(5);
  std::normal_distribution<double> noise(0, 3);
  Points points = onRim({320, 240}, {100, 60}, 30, 25);
  for (cv::Point2d& point : points)
    point += {noise(cases), noise(cases)};
  TNVEllipse fit(points, kImage);
  const cv::RotatedRect first = fit.detectEllipse();
  bool differs = false;
  for (int call = 0; call < 20 && !differs; ++call)
    differs = fit.detectEllipse().center != first.center;
  EXPECT_TRUE(differs);
}

TEST(TNVEllipse, HostilePointsNeverRaise) {
  for (const double a : hostileNumbers()) {
    for (const double b : hostileNumbers()) {
      Points mixed = onRim({32, 24}, {20, 12}, 30, 6);
      mixed.insert(mixed.end(), {{a, b}, {b, a}, {a, 3}, {4, b}});
      const Points bare{{a, b}, {b, a}, {a, 3}, {4, b}, {a, a}, {1, 2}};
      for (const Points& points : {mixed, bare})
        EXPECT_NO_THROW(detected(points, {64, 48})) << a << ' ' << b;
    }
  }
}

TEST(TNVEllipse, PointsOnALineNeverRaise) {
  for (const cv::Point2d step : {cv::Point2d(10, 0), {0, 10}, {3, 7}, {0, 0}, {1, 0}}) {
    Points line;
    for (int i = 0; i < 20; ++i)
      line.push_back(cv::Point2d(50, 50) + i * step);
    EXPECT_NO_THROW(detected(line, {640, 480})) << step;
  }
}
