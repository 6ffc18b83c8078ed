#include "marks/TNVCircle.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <utility>

#include "foundation/Log.h"
#include "foundation/Numbers.h"

namespace TNVCircle {

namespace {

/// Pixels of the picture within which centres count as the same.
constexpr double kBinSize = 12.0;

/// The circles whose centres share a bin.
struct Bin {
  std::uint8_t votes = 0;  ///< starts again at 0 after 255
  float x = 0.0F;
  float y = 0.0F;
  float r = 0.0F;

  void add(const Circle& circle) {
    ++votes;
    x = static_cast<float>(x + circle.x);
    y = static_cast<float>(y + circle.y);
    r = static_cast<float>(r + circle.r);
  }

  Circle mean() const {
    const float count = votes;
    return {x / count, y / count, r / count};
  }
};

/// Row and column of a bin. The triples of a nearly straight rim have centres millions of pixels
/// away, so only bins with a vote exist; they are ordered as the cells of a matrix are.
using Bins = std::map<std::pair<int, int>, Bin>;

cv::Point2d centroid(const Points& points) {
  cv::Point2d sum;
  for (const cv::Point2d& point : points)
    sum += point;
  return sum / static_cast<double>(points.size());
}

/// The points in the order in which a walk around their centroid meets them.
Points sortedAround(const Points& points, cv::Point2d centre) {
  const auto direction = [&](cv::Point2d point) {
    return std::atan2(point.x - centre.x, point.y - centre.y);
  };
  Points sorted = points;
  std::stable_sort(sorted.begin(), sorted.end(),
                   [&](cv::Point2d a, cv::Point2d b) { return direction(a) > direction(b); });
  return sorted;
}

/// What the triples vote for, each of which spans the rim in thirds.
Bins voteOfTriples(const Points& rim) {
  const std::size_t count = rim.size();
  const float third = static_cast<float>(static_cast<double>(count) / 3.0);
  const auto second = static_cast<std::size_t>(third);
  const auto last = static_cast<std::size_t>(2 * third);
  Bins bins;
  for (std::size_t k = 0; k < count - 2; ++k) {
    const std::array<cv::Point2d, 3> triple{rim[k], rim[(second + k) % count],
                                            rim[(last + k) % count]};
    const Circle circle = _solveCircleFromPoints(triple);
    if (!std::isfinite(circle.x) || !std::isfinite(circle.y)) continue;
    bins[{tnv::truncateToInt(circle.y / kBinSize), tnv::truncateToInt(circle.x / kBinSize)}].add(
        circle);
  }
  return bins;
}

}  // namespace

Circle getCircleFromContour(const Points& points) {
  if (points.size() < 3) {
    tnv::logLine("TNVCircle::getCircleFromContour: Contour points less then 3!");
    return {};
  }
  const cv::Point2d centre = centroid(points);
  if (!std::isfinite(centre.x) || !std::isfinite(centre.y)) return {};
  const Bins bins = voteOfTriples(sortedAround(points, centre));
  if (bins.empty()) return {};
  const auto fewerVotes = [](const Bins::value_type& a, const Bins::value_type& b) {
    return a.second.votes < b.second.votes;
  };
  return std::max_element(bins.begin(), bins.end(), fewerVotes)->second.mean();
}

Circle _solveCircleFromPoints(std::span<const cv::Point2d> points) {
  if (points.size() < 3) {
    tnv::logLine("TNVCircle::_solveCircleFromPoints: Contour points less then 3!");
    return {};
  }
  // x^2 + y^2 = a x + d y - c for all points, with the centre at (a / 2, d / 2).
  const int rows = static_cast<int>(points.size());
  cv::Mat_<float> factors(rows, 3);
  cv::Mat_<float> squares(rows, 1);
  for (int i = 0; i < rows; ++i) {
    const cv::Point2d& point = points[static_cast<std::size_t>(i)];
    factors(i, 0) = 1.0F;
    factors(i, 1) = static_cast<float>(-point.x);
    factors(i, 2) = static_cast<float>(-point.y);
    squares(i) = static_cast<float>(-(point.y * point.y + point.x * point.x));
  }
  cv::Mat_<float> solution;
  cv::solve(factors, squares, solution, cv::DECOMP_SVD);
  const double x = solution(1) / 2.0F;
  const double y = solution(2) / 2.0F;
  return {x, y, std::sqrt(x * x + y * y - solution(0))};
}

}  // namespace TNVCircle
