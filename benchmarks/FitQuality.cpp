// How far fits to clicked points are from the circle or ellipse that the points were made from,
// beside a least-squares fit of all points, and how long both take. Seeded, so that each run prints
// the same errors.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <optional>
#include <ostream>
#include <random>

#include <opencv2/imgproc.hpp>

#include "Compare.h"
#include "marks/TNVCircle.h"
#include "marks/TNVEllipse.h"

namespace {

using Points = std::vector<cv::Point2d>;

const cv::Size kImage(1280, 960);

/// Half axes in pixels.
constexpr double kSmallest = 40;
constexpr double kLargest = 300;

constexpr int kFewestClicks = 12;
constexpr int kMostClicks = 40;

/// Pixels by which a click misses the rim, as a standard deviation along each axis.
constexpr double kNoise = 1.0;

/// Strays lie within the upright box around the object, enlarged by this.
constexpr double kStrayBox = 1.5;

constexpr int kStrayPercents[] = {0, 10, 20, 30};

constexpr int kCases = 1000;
constexpr int kSmokeCases = 20;

struct Oval {
  cv::Point2d centre;
  cv::Size2d halfAxes;
  double angle = 0;  ///< radians

  cv::Point2d onRim(double parameter) const {
    const cv::Point2d own(halfAxes.width * std::cos(parameter),
                          halfAxes.height * std::sin(parameter));
    return centre + cv::Point2d(own.x * std::cos(angle) - own.y * std::sin(angle),
                                own.x * std::sin(angle) + own.y * std::cos(angle));
  }

  /// Half the sides of the upright box around it.
  cv::Size2d reach() const {
    return {std::hypot(halfAxes.width * std::cos(angle), halfAxes.height * std::sin(angle)),
            std::hypot(halfAxes.width * std::sin(angle), halfAxes.height * std::cos(angle))};
  }
};

using Fit = std::optional<Oval> (*)(const Points& clicks, unsigned seed);

/// Distances from the truth in pixels, of the fits that gave a result, and times of all.
struct Scores {
  std::vector<double> centre;
  std::vector<double> size;
  std::vector<double> microseconds;
  int failures = 0;
};

/// Within the picture as a whole.
Oval drawOval(cv::RNG& random, bool isCircle) {
  Oval oval;
  oval.halfAxes.width = random.uniform(kSmallest, kLargest);
  oval.halfAxes.height = isCircle ? oval.halfAxes.width : random.uniform(kSmallest, kLargest);
  oval.angle = isCircle ? 0 : random.uniform(0.0, CV_PI);
  const cv::Size2d reach = oval.reach();
  oval.centre = {random.uniform(reach.width, kImage.width - reach.width),
                 random.uniform(reach.height, kImage.height - reach.height)};
  return oval;
}

/// Around the rim at about equal steps, and the strays behind them.
Points drawClicks(cv::RNG& random, const Oval& oval, int strayPercent) {
  const int count = random.uniform(kFewestClicks, kMostClicks + 1);
  const int strays = cvRound(count * strayPercent / 100.0);
  const int good = count - strays;
  Points clicks;
  for (int i = 0; i < good; ++i) {
    const cv::Point2d noise(random.gaussian(kNoise), random.gaussian(kNoise));
    clicks.push_back(oval.onRim(2 * CV_PI * (i + random.uniform(0.0, 1.0)) / good) + noise);
  }
  const cv::Size2d box = oval.reach() * kStrayBox;
  for (int i = 0; i < strays; ++i) {
    clicks.push_back(oval.centre + cv::Point2d(random.uniform(-box.width, box.width),
                                               random.uniform(-box.height, box.height)));
  }
  return clicks;
}

std::optional<Oval> voteCircle(const Points& clicks, unsigned /*seed*/) {
  const auto [x, y, r] = TNVCircle::getCircleFromContour(clicks);
  if (!(r > 0)) return std::nullopt;
  return Oval{{x, y}, {r, r}};
}

std::optional<Oval> voteEllipse(const Points& clicks, unsigned seed) {
  std::mt19937 generator(seed);
  TNVEllipse fit(clicks, kImage);
  const cv::RotatedRect& ellipse = fit.detectEllipse(generator);
  if (ellipse.size.empty()) return std::nullopt;
  return Oval{ellipse.center, cv::Size2d(ellipse.size) / 2.0};
}

/// x^2 + y^2 = 2 x0 x + 2 y0 y + (r^2 - x0^2 - y0^2) for all clicks.
std::optional<Oval> leastSquaresCircle(const Points& clicks, unsigned /*seed*/) {
  const int rows = static_cast<int>(clicks.size());
  cv::Mat_<double> factors(rows, 3);
  cv::Mat_<double> squares(rows, 1);
  for (int i = 0; i < rows; ++i) {
    const cv::Point2d& click = clicks[static_cast<std::size_t>(i)];
    factors(i, 0) = 2 * click.x;
    factors(i, 1) = 2 * click.y;
    factors(i, 2) = 1;
    squares(i) = click.dot(click);
  }
  cv::Mat_<double> solution;
  cv::solve(factors, squares, solution, cv::DECOMP_SVD);
  const cv::Point2d centre(solution(0), solution(1));
  const double r = std::sqrt(solution(2) + centre.dot(centre));
  if (!(r > 0)) return std::nullopt;
  return Oval{centre, {r, r}};
}

std::optional<Oval> leastSquaresEllipse(const Points& clicks, unsigned /*seed*/) {
  const cv::RotatedRect ellipse =
      cv::fitEllipse(std::vector<cv::Point2f>(clicks.begin(), clicks.end()));
  if (!(ellipse.size.width > 0 && ellipse.size.height > 0)) return std::nullopt;
  return Oval{ellipse.center, cv::Size2d(ellipse.size) / 2.0};
}

/// Of the longer and of the shorter half axes, the one that is further off.
double sizeError(cv::Size2d fitted, cv::Size2d truth) {
  const auto [fittedShort, fittedLong] = std::minmax({fitted.width, fitted.height});
  const auto [shorter, longer] = std::minmax({truth.width, truth.height});
  return std::max(std::abs(fittedShort - shorter), std::abs(fittedLong - longer));
}

void score(Scores& scores, const std::optional<Oval>& fitted, const Oval& truth) {
  if (!fitted) {
    ++scores.failures;
    return;
  }
  scores.centre.push_back(cv::norm(fitted->centre - truth.centre));
  scores.size.push_back(sizeError(fitted->halfAxes, truth.halfAxes));
}

void tryFit(Scores& scores, Fit fit, const Points& clicks, unsigned seed, const Oval& truth) {
  const auto start = std::chrono::steady_clock::now();
  const std::optional<Oval> fitted = fit(clicks, seed);
  const auto taken = std::chrono::steady_clock::now() - start;
  scores.microseconds.push_back(std::chrono::duration<double, std::micro>(taken).count());
  score(scores, fitted, truth);
}

struct Kind {
  const char* name;
  bool isCircle;
  Fit vote;
  Fit leastSquares;
};

constexpr Kind kKinds[] = {{"circle", true, voteCircle, leastSquaresCircle},
                           {"ellipse", false, voteEllipse, leastSquaresEllipse}};

void printScores(std::ostream& output, const Scores& scores) {
  char text[80];
  if (scores.centre.empty()) {
    std::snprintf(text, sizeof text, " %35s", "no result at all");
  } else {
    std::snprintf(text, sizeof text, " %8.2f %8.2f %8.2f %8.2f", quantile(scores.centre, 0.5),
                  quantile(scores.centre, 0.95), quantile(scores.size, 0.5),
                  quantile(scores.size, 0.95));
  }
  output << text;
  std::snprintf(text, sizeof text, " %6d %6.0f", scores.failures,
                quantile(scores.microseconds, 0.5));
  output << text;
}

void printRow(std::ostream& output, const Kind& kind, int strayPercent, int cases) {
  Scores voted;
  Scores leastSquares;
  for (int i = 1; i <= cases; ++i) {
    const auto seed = static_cast<unsigned>(i);
    cv::RNG random(seed);
    const Oval truth = drawOval(random, kind.isCircle);
    const Points clicks = drawClicks(random, truth, strayPercent);
    tryFit(voted, kind.vote, clicks, seed, truth);
    tryFit(leastSquares, kind.leastSquares, clicks, seed, truth);
  }
  char text[40];
  std::snprintf(text, sizeof text, "%-8s %5d%%", kind.name, strayPercent);
  output << text;
  printScores(output, voted);
  output << " |";
  printScores(output, leastSquares);
  output << std::endl;
}

}  // namespace

void printFitQuality(const Plan& plan, std::ostream& output) {
  const int cases = plan.smoke ? kSmokeCases : kCases;
  output << "\nError of fits in pixels over " << cases << " cases: median and 95th percentile of\n"
         << "centre and radius or half axes, the fits that gave no result, and the median time of "
            "one\n"
         << "in microseconds\n"
         << "               vote                                              | least squares\n"
         << "         strays   centre      95%     size      95%   none   time |"
         << "   centre      95%     size      95%   none   time\n";
  for (const Kind& kind : kKinds) {
    for (const int strayPercent : kStrayPercents)
      printRow(output, kind, strayPercent, cases);
  }
}
