// The assist, and the magnifier beside the picture: what they find, and what they cost.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

#include "BenchProject.h"
#include "Compare.h"
#include "editing/TNVAssistGrabCut.h"
#include "editing/TNVHandlerImageView.h"
#include "support/ObjectScene.h"

namespace {

using Points = TNVAssist::Points;
using Outline = std::vector<cv::Point>;

Points cornersOf(const cv::Rect2d& box) {
  return {box.tl(), {box.br().x, box.y}, box.br(), {box.x, box.br().y}};
}

Points scaled(Points points, double x, double y) {
  for (cv::Point2d& point : points)
    point = {point.x * x, point.y * y};
  return points;
}

/// A box around the same centre.
cv::Rect2d grown(const cv::Rect2d& box, double factor) {
  const cv::Point2d centre = (box.tl() + box.br()) * 0.5;
  const cv::Size2d size(box.width * factor, box.height * factor);
  return {centre - cv::Point2d(size) * 0.5, size};
}

/// A picture with an object and a rough mark on it.
struct Task {
  Task(cv::Size size, cv::Point centre, cv::Size axes, unsigned seed, double looseness)
      : scene(objectScene(size, centre, axes, seed)) {
    const cv::Rect2d pixels = grown(cv::Rect2d(cv::boundingRect(scene.object)), looseness);
    contour = cornersOf(pixels);
    rect = {pixels.x / size.width, pixels.y / size.height, pixels.width / size.width,
            pixels.height / size.height};
  }

  Points apply(bool withOutline) const {
    cv::setRNGSeed(1);
    return TNVAssistGrabCut().apply(rect, scene.picture, withOutline ? contour : Points());
  }

  ObjectScene scene;
  cv::Rect2d rect;
  Points contour;
};

// What the assist finds.

struct Overlaps {
  std::vector<double> values;

  std::string text() {
    std::sort(values.begin(), values.end());
    const auto at = [&](double share) {
      const double last = static_cast<double>(values.size() - 1);
      return values[static_cast<std::size_t>(std::lround(share * last))];
    };
    char line[80];
    std::snprintf(line, sizeof line, "median %.3f, 5th percentile %.3f, worst %.3f", at(0.5),
                  at(0.05), at(0));
    return line;
  }
};

/// How much of the marks' area is object, before and after. A mark that the assist leaves as it is
/// counts as it is.
std::string findOverlaps(int count, double looseness, bool withOutline) {
  constexpr int kWidth = 640;
  constexpr int kHeight = 480;
  cv::RNG random(11);
  Overlaps before;
  Overlaps after;
  int untouched = 0;
  for (int i = 0; i < count; ++i) {
    const cv::Size axes(random.uniform(30, 90), random.uniform(30, 90));
    const cv::Point centre(random.uniform(160, kWidth - 160), random.uniform(160, kHeight - 160));
    const Task task({kWidth, kHeight}, centre, axes, static_cast<unsigned>(i + 1), looseness);
    const cv::Size size = task.scene.object.size();
    const cv::Mat rough = areaWithin(cornersOf(task.rect), size);
    const Points found = task.apply(withOutline);
    if (found.empty()) ++untouched;
    before.values.push_back(overlap(task.scene.object, rough));
    after.values.push_back(found.empty() ? before.values.back()
                                         : overlap(task.scene.object, areaWithin(found, size)));
  }
  return "before: " + before.text() + "   after: " + after.text() + "   untouched " +
         std::to_string(untouched) + " of " + std::to_string(count);
}

// What it costs.

/// The same by direct calls, for a mark well inside the picture and wider than high.
Points assistByHand(const Task& task) {
  constexpr int kSide = 128;
  const cv::Size size = task.scene.picture.size();
  const cv::Rect2d pixels(task.contour[0], task.contour[2]);
  const cv::Rect2d area = grown(pixels, 1.5);
  cv::Mat small = task.scene.picture(
      {cvRound(area.x), cvRound(area.y), cvRound(area.width), cvRound(area.height)});
  const double factor = static_cast<double>(kSide) / small.cols;
  do {
    cv::Mat half;
    cv::pyrDown(small, half);
    small = half;
  } while (small.cols / 2 > kSide);
  const cv::Mat last = small;
  cv::resize(last, small, {kSide, cvRound(last.rows * (double{kSide} / last.cols))});
  Outline outline;
  for (const cv::Point2d& corner : task.contour)
    outline.push_back((corner - area.tl()) * factor);
  cv::Mat core(small.size(), CV_8UC1, cv::Scalar(0));
  cv::drawContours(core, std::vector<Outline>{outline}, 0, 255, cv::FILLED);
  const int kernel = static_cast<int>(std::min(pixels.width, pixels.height) * factor) / 3;
  cv::erode(core, core, cv::getStructuringElement(cv::MORPH_RECT, {kernel, kernel}));
  cv::Mat mask(small.size(), CV_8UC1, cv::Scalar(cv::GC_BGD));
  mask.setTo(cv::GC_PR_FGD, core);
  cv::Mat ground;
  cv::Mat object;
  cv::setRNGSeed(1);
  cv::grabCut(small, mask, {}, ground, object, 5, cv::GC_INIT_WITH_MASK);
  std::vector<Outline> outlines;
  cv::findContours(mask == cv::GC_PR_FGD, outlines, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
  Outline widest = *std::max_element(
      outlines.begin(), outlines.end(),
      [](const Outline& a, const Outline& b) { return cv::contourArea(a) < cv::contourArea(b); });
  cv::approxPolyDP(widest, widest, 0.5, true);
  Points result;
  for (const cv::Point& point : widest)
    result.push_back(cv::Point2d(point) / factor + area.tl());
  return scaled(result, 1.0 / size.width, 1.0 / size.height);
}

bool nearlySame(const Points& a, const Points& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](cv::Point2d p, cv::Point2d q) { return cv::norm(p - q) < 1e-9; });
}

cv::Size sizeOfMegapixels(int megapixels) {
  const int height = 60 * cvRound(std::sqrt(1e6 * megapixels * 3 / 4) / 60);
  return {height * 4 / 3, height};
}

Pair makeAssist(int megapixels, cv::Size axes) {
  const cv::Size size = sizeOfMegapixels(megapixels);
  const auto task =
      std::make_shared<Task>(size, cv::Point(size.width / 2, size.height / 2), axes, 3, 1.5);
  requireSame(nearlySame(task->apply(true), assistByHand(*task)), "outlines");
  return {{[task] { task->apply(true); }}, {[task] { assistByHand(*task); }}};
}

// The magnifier.

constexpr int kWindow = 256;

class Magnifier {
 public:
  Magnifier(const cv::Mat& picture, const std::string& mode) {
    trainSet.image = picture;
    trainSet.imageLoaded = true;
    view.bind(&trainSet);
    view.setHelperMode(mode);
  }

  cv::Mat render() { return view.getHelperImage(); }

 private:
  TNVTrainSet trainSet{"picture.png", ""};
  TNVHandlerImageView view;
};

cv::Mat edgesByHand(const cv::Mat& picture) {
  cv::Mat gray;
  cv::GaussianBlur(picture, gray, {3, 3}, 0);
  cv::cvtColor(gray, gray, cv::COLOR_BGR2GRAY);
  cv::Mat x;
  cv::Mat y;
  cv::Sobel(gray, x, CV_16S, 1, 0);
  cv::Sobel(gray, y, CV_16S, 0, 1);
  cv::convertScaleAbs(x, x);
  cv::convertScaleAbs(y, y);
  cv::addWeighted(x, 0.5, y, 0.5, 0, gray);
  return gray;
}

cv::Mat filteredByHand(cv::Mat picture, const std::string& mode) {
  if (mode == "Normal") return picture;
  cv::Mat gray;
  if (mode == "Gray" || mode == "Improve") cv::cvtColor(picture, gray, cv::COLOR_BGR2GRAY);
  if (mode == "Improve") cv::createCLAHE(4.0, {4, 4})->apply(gray, gray);
  if (mode == "Edge" || mode == "Edge x2") gray = edgesByHand(picture);
  if (mode == "Edge x2") gray += gray;
  cv::cvtColor(gray, picture, cv::COLOR_GRAY2BGR);
  return picture;
}

cv::Mat magnifiedByHand(const cv::Mat& picture, const std::string& mode) {
  const cv::Rect shown(picture.cols / 2 - kWindow / 4, picture.rows / 2 - kWindow / 4, kWindow / 2,
                       kWindow / 2);
  cv::Mat window;
  cv::resize(picture(shown), window, {kWindow, kWindow});
  window = filteredByHand(window, mode);
  const cv::Scalar white(255, 255, 255);
  cv::line(window, {kWindow / 2, kWindow}, {kWindow / 2, 0}, white, 1, cv::LINE_AA);
  cv::line(window, {kWindow, kWindow / 2}, {0, kWindow / 2}, white, 1, cv::LINE_AA);
  return window;
}

Pair makeMagnifier(int megapixels, const std::string& mode) {
  const cv::Mat picture = photograph(sizeOfMegapixels(megapixels), 1);
  const auto magnifier = std::make_shared<Magnifier>(picture, mode);
  requireSame(cv::norm(magnifier->render(), magnifiedByHand(picture, mode), cv::NORM_INF) == 0,
              "magnified pictures, " + mode);
  return {{[=] { magnifier->render(); }}, {[=] { magnifiedByHand(picture, mode); }}};
}

}  // namespace

void addAssists(const Plan& plan) {
  for (const double looseness : {1.0, 1.25, 1.5, 1.75, 2.0}) {
    for (const bool withOutline : {true, false}) {
      char name[80];
      std::snprintf(name, sizeof name, "assist, %s %.2f times the object",
                    withOutline ? "outline" : "box", looseness);
      addFinding(name, [=] { return findOverlaps(plan.smoke ? 2 : 50, looseness, withOutline); });
    }
  }
  for (const int megapixels : plan.sizes({1, 12})) {
    addComparison(plan, {"assist, one object, Mpx", megapixels}, [=] {
      return makeAssist(megapixels, {120, 120});
    });
  }
  for (const int megapixels : plan.sizes({1, 12, 48})) {
    addComparison(plan, {"assist, object grows, Mpx", megapixels}, [=] {
      const int radius = sizeOfMegapixels(megapixels).height / 5;
      return makeAssist(megapixels, {radius, radius});
    });
  }
  for (const std::string& mode : TNVTypeHelperMode().getNames()) {
    for (const int megapixels : plan.sizes({1, 48})) {
      addComparison(plan, {"magnify, " + mode + ", Mpx", megapixels},
                    [=] { return makeMagnifier(megapixels, mode); });
    }
  }
}
