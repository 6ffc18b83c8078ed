#include "GalleryStatistics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>

namespace {

// Where most boxes are alike the deviation is next to nothing, and a hair's breadth would count as
// far off. One per cent in size or shape is the least that counts as one deviation.
constexpr double leastDeviation = 0.01;

bool isFinite(const cv::Rect2d& box) {
  return std::isfinite(box.x) && std::isfinite(box.y) && std::isfinite(box.width) &&
         std::isfinite(box.height);
}

// A point is inside up to both edges; a stretch needs to share some length.
bool touches(double begin, double length, double end) {
  if (length == 0) return begin >= 0 && begin <= end;
  return begin < end && begin + length > 0;
}

double sharedLength(double begin, double length, double otherBegin, double otherLength) {
  return std::min(begin + length, otherBegin + otherLength) - std::max(begin, otherBegin);
}

// Median and median absolute deviation.
struct Spread {
  double centre;
  double deviation;

  double distance(double value) const { return (value - centre) / deviation; }
};

Spread spreadOf(const std::vector<double>& values) {
  const auto centre = median(values);
  auto distances = values;
  for (auto& value : distances)
    value = std::abs(value - centre);
  return {centre, std::max(leastDeviation, median(std::move(distances)))};
}

// Sums of logarithms: a product of huge sides would overflow.
double logArea(const cv::Rect2d& box) {
  return std::log(box.width) + std::log(box.height);
}

double logAspect(const cv::Rect2d& box) {
  return std::log(box.width) - std::log(box.height);
}

bool canBeCounted(double value) {
  return std::isfinite(value) && value > 0;
}

std::vector<std::size_t> firstPlaces(std::size_t count) {
  std::vector<std::size_t> places(count);
  std::iota(places.begin(), places.end(), std::size_t{0});
  return places;
}

std::vector<std::size_t> byLeftEdge(std::span<const cv::Rect2d> boxes) {
  auto places = firstPlaces(boxes.size());
  std::erase_if(places, [&](auto place) { return !isFinite(boxes[place]); });
  std::stable_sort(places.begin(), places.end(),
                   [&](auto a, auto b) { return boxes[a].x < boxes[b].x; });
  return places;
}

// How far two boxes that overlap enough may begin from each other, as a share of the width of the
// one further left, of the one further right: what sticks out counts in the union.
constexpr double reachOfLeft = 1 - repeatOverlap;
constexpr double reachOfRight = (1 - repeatOverlap) / repeatOverlap;

// In pixels; takes up the rounding of the bounds.
constexpr double reachTolerance = 1e-6;

// Looks for one earlier box that a box repeats. One is enough: a heap of equal boxes has no end of
// pairs.
class RepeatFinder {
 public:
  explicit RepeatFinder(std::span<const cv::Rect2d> all) : boxes(all), places(byLeftEdge(all)) {}

  std::vector<Repeat> findAll() const {
    std::vector<Repeat> repeats;
    for (std::size_t i = 0; i < places.size(); ++i)
      if (const auto earlier = findEarlier(i)) repeats.push_back({places[i], *earlier});
    std::sort(repeats.begin(), repeats.end(),
              [](const auto& a, const auto& b) { return a.place < b.place; });
    return repeats;
  }

 private:
  std::optional<std::size_t> findEarlier(std::size_t i) const {
    const auto& box = boxes[places[i]];
    const auto farthestLeft = box.x - reachOfRight * box.width - reachTolerance;
    const auto farthestRight = box.x + reachOfLeft * box.width + reachTolerance;
    for (auto j = i; j > 0 && boxes[places[j - 1]].x >= farthestLeft; --j)
      if (isRepeat(places[i], places[j - 1])) return places[j - 1];
    for (auto j = i + 1; j < places.size() && boxes[places[j]].x <= farthestRight; ++j)
      if (isRepeat(places[i], places[j])) return places[j];
    return std::nullopt;
  }

  bool isRepeat(std::size_t place, std::size_t other) const {
    return other < place && intersectionOverUnion(boxes[place], boxes[other]) > repeatOverlap;
  }

  std::span<const cv::Rect2d> boxes;
  std::vector<std::size_t> places;
};

}  // namespace

bool hasArea(const cv::Rect2d& box) {
  return isFinite(box) && box.width > 0 && box.height > 0;
}

bool isTiny(const cv::Rect2d& box) {
  return !(box.width >= tinySide && box.height >= tinySide);
}

bool isOutside(const cv::Rect2d& box, cv::Size picture) {
  return !touches(box.x, box.width, picture.width) || !touches(box.y, box.height, picture.height);
}

double median(std::vector<double> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  if (values.size() % 2 == 1) return *middle;
  return (*std::max_element(values.begin(), middle) + *middle) / 2;
}

std::vector<double> outlierScores(std::span<const cv::Rect2d> boxes) {
  std::vector<double> areas;
  std::vector<double> aspects;
  for (const auto& box : boxes) {
    if (!hasArea(box)) continue;
    areas.push_back(logArea(box));
    aspects.push_back(logAspect(box));
  }
  const auto area = spreadOf(areas);
  const auto aspect = spreadOf(aspects);
  std::vector<double> scores;
  for (const auto& box : boxes)
    scores.push_back(hasArea(box)
                         ? std::hypot(area.distance(logArea(box)), aspect.distance(logAspect(box)))
                         : std::numeric_limits<double>::infinity());
  return scores;
}

std::vector<std::size_t> outliersFirst(std::span<const double> scores) {
  auto places = firstPlaces(scores.size());
  std::stable_sort(places.begin(), places.end(),
                   [&](auto a, auto b) { return scores[a] > scores[b]; });
  return places;
}

double intersectionOverUnion(const cv::Rect2d& a, const cv::Rect2d& b) {
  if (!isFinite(a) || !isFinite(b)) return 0;
  if (a == b) return 1;
  const auto width = sharedLength(a.x, a.width, b.x, b.width);
  const auto height = sharedLength(a.y, a.height, b.y, b.height);
  if (!(width > 0 && height > 0)) return 0;
  const auto shared = width * height;
  const auto overlap = shared / (a.width * a.height + b.width * b.height - shared);
  return std::isfinite(overlap) ? overlap : 0;
}

std::vector<Repeat> findRepeats(std::span<const cv::Rect2d> boxes) {
  return RepeatFinder(boxes).findAll();
}

Octaves octavesAround(std::span<const double> values, Octaves least, Octaves most) {
  auto range = least;
  for (const auto value : values) {
    if (!canBeCounted(value)) continue;
    const auto octave = std::log2(value);
    range.low = std::min(range.low, static_cast<int>(std::floor(octave)));
    range.high = std::max(range.high, static_cast<int>(std::ceil(octave)));
  }
  return {std::max(range.low, most.low), std::min(range.high, most.high)};
}

std::vector<std::size_t> logBins(std::span<const double> values, Octaves range) {
  const auto count = (range.high - range.low) * binsPerOctave;
  std::vector<std::size_t> bins(static_cast<std::size_t>(std::max(count, 1)));
  for (const auto value : values) {
    if (!canBeCounted(value)) continue;
    const auto bin = std::floor((std::log2(value) - range.low) * binsPerOctave);
    const auto last = static_cast<double>(bins.size() - 1);
    ++bins[static_cast<std::size_t>(std::clamp(bin, 0.0, last))];
  }
  return bins;
}
