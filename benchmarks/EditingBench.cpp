// What happens while the mouse moves and pictures change: hit tests and navigation.

#include <limits>
#include <memory>

#include "BenchMarks.h"
#include "Compare.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
const cv::Size kSize(kWidth, kHeight);

/// A project with so many pictures, of which the first has so many marks of mixed kinds.
struct Desk {
  Desk(int pictures, int markCount, bool cached) {
    bench.add(writePhotographs(bench.temp, pictures, kSize));
    for (const auto& mark : benchMarks(kMixedKinds, markCount))
      trainSet(0).addMark(*mark);
    // Nothing but the reduced copies may be there.
    bench.project.wSetCacheImagesCount(0);
    bench.project.wSetCacheImages(cached);
    requireSame(bench.project.wUpdate(true), "the save failed");
    process = std::make_unique<WTNVMainProcess>(&bench.project, nullptr);
    marks = std::make_unique<WTNVHandlerMark>(process->getHndMark());
    trainSets = std::make_unique<WTNVHandlerTrainSet>(process->getHndTrainSet());
  }

  TNVTrainSet& trainSet(std::size_t number) const {
    return *bench.project.wGetTrainSets().at(number).getNativeTrainSet();
  }

  BenchProject bench;
  std::unique_ptr<WTNVMainProcess> process;
  std::unique_ptr<WTNVHandlerMark> marks;
  std::unique_ptr<WTNVHandlerTrainSet> trainSets;
};

// Hit tests.

using Points = std::vector<cv::Point2d>;

bool isOver(const Points& outline, double margin, cv::Point2d pixel) {
  const std::vector<cv::Point2f> narrowed(outline.begin(), outline.end());
  return cv::pointPolygonTest(narrowed, pixel, true) > -margin;
}

Points pixelsOf(const Points& points) {
  Points pixels;
  for (const cv::Point2d& point : points)
    pixels.push_back(inPixels(point, kSize));
  return pixels;
}

Points rimOf(const TNVMarkEllipse& mark) {
  const cv::RotatedRect ellipse = ellipseIn(mark, kSize);
  Points rim;
  cv::ellipse2Poly(cv::Point2d(ellipse.center), cv::Size2d(ellipse.size) / 2.0, 0, 0, 360, 4, rim);
  return rim;
}

bool isHit(const TNVMark& mark, cv::Point2d point) {
  constexpr double kNear = 19;
  const cv::Point2d pixel = inPixels(point, kSize);
  const auto distanceTo = [&](cv::Point2d other) {
    return cv::norm(inPixels(other, kSize) - pixel);
  };
  if (const auto* rect = dynamic_cast<const TNVMarkRect*>(&mark))
    return cv::Rect2d(rect->center - rect->size / 2, cv::Size2d(rect->size.x, rect->size.y))
        .contains(point);
  if (const auto* circle = dynamic_cast<const TNVMarkCircle*>(&mark))
    return distanceTo(circle->center) <=
           cv::norm(inPixels(circle->radius.front() - circle->center, kSize));
  if (const auto* line = dynamic_cast<const TNVMarkLine*>(&mark))
    return isOver(pixelsOf({line->pointA, line->pointB}), kNear, pixel);
  if (const auto* poly = dynamic_cast<const TNVMarkPolyLine*>(&mark))
    return isOver(pixelsOf(poly->polyPoints), kNear, pixel);
  if (const auto* ellipse = dynamic_cast<const TNVMarkEllipse*>(&mark))
    return isOver(rimOf(*ellipse), 5, pixel);
  return distanceTo(mark.center) < kNear;
}

const TNVMark* hitByHand(const TNVTrainSet& trainSet, cv::Point2d point) {
  const TNVMark* nearest = nullptr;
  double best = std::numeric_limits<double>::max();
  for (const auto& mark : trainSet.marks) {
    if (!isHit(*mark, point)) continue;
    const double distance = cv::norm(inPixels(mark->center - point, kSize));
    if (distance < best) nearest = mark.get();
    best = std::min(best, distance);
  }
  return nearest;
}

Points clicks() {
  cv::RNG random(3);
  Points points;
  for (int i = 0; i < 20; ++i)
    points.emplace_back(random.uniform(0.0, 1.0), random.uniform(0.0, 1.0));
  return points;
}

Pair makeHits(int marks) {
  const auto desk = std::make_shared<Desk>(1, marks, false);
  const TNVTrainSet& trainSet = desk->trainSet(0);
  for (const cv::Point2d& click : clicks()) {
    requireSame(desk->marks->getMarkMouseOver(click.x, click.y).getNativeMark() ==
                    hitByHand(trainSet, click),
                "hits");
  }
  const auto hit = [=] {
    for (const cv::Point2d& click : clicks())
      benchmark::DoNotOptimize(desk->marks->getMarkMouseOver(click.x, click.y));
  };
  const auto bareHit = [&trainSet] {
    for (const cv::Point2d& click : clicks())
      benchmark::DoNotOptimize(hitByHand(trainSet, click));
  };
  return {{hit}, {bareHit}};
}

// Navigation.

cv::Mat shownByHand(const TNVTrainSet& trainSet) {
  cv::Mat picture;
  cv::resize(cv::imread(trainSet.imageCachePath), picture, kSize);
  return picture;
}

/// Through all pictures and back again.
Pair makeWalk(int pictures) {
  const auto desk = std::make_shared<Desk>(pictures, 0, true);
  requireSame(desk->trainSet(0).hasImageCache(), "no reduced copy");
  requireSame(cv::norm(desk->trainSet(0).getImageCached(), shownByHand(desk->trainSet(0)),
                       cv::NORM_INF) == 0,
              "shown pictures");
  const auto walk = [=] {
    for (int i = 1; i < pictures; ++i)
      desk->trainSets->wSetTrainSetForward(1);
    for (int i = 1; i < pictures; ++i)
      desk->trainSets->wSetTrainSetBackward(1);
  };
  const auto bareWalk = [=] {
    const std::size_t steps = 2 * static_cast<std::size_t>(pictures) - 2;
    for (std::size_t i = 0; i < steps; ++i)
      shownByHand(desk->trainSet(i / 2));
  };
  return {{walk}, {bareWalk}};
}

}  // namespace

void addEditing(const Plan& plan) {
  for (const int marks : plan.sizes({100, 1000}))
    addComparison(plan, {"hit test, 20 clicks, marks", marks}, [=] { return makeHits(marks); });
  addComparison(plan, {"navigate, reduced copies, pictures", 10}, [] { return makeWalk(10); });
}
