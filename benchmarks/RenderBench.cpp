// Rendering of a full HD picture through the image view.

#include <memory>

#include "BenchProject.h"
#include "Compare.h"
#include "marks/TNVMarkRect.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
const std::string kClassName = "thing";
const cv::Scalar kWhite(255, 255, 255);

struct Setting {
  int marks;
  bool filled;
  bool cached;
};

class View {
 public:
  explicit View(const Setting& setting) {
    const std::string path = bench.temp / "picture.png";
    cv::imwrite(path, photograph({kWidth, kHeight}, 1));
    bench.project.wSetCacheRender(setting.cached);
    bench.project.wAddDNNClass(kClassName, 0, 0);
    bench.add({path});
    TNVTrainSet& trainSet = *bench.project.wGetTrainSets().front().getNativeTrainSet();
    for (const cv::Rect2d& box : relativeBoxes(setting.marks)) {
      TNVMarkRect mark(box.tl(), box.br(), false);
      mark.classIdx = {0};
      trainSet.addMark(mark);
    }
    process = std::make_unique<WTNVMainProcess>(&bench.project, nullptr);
    view = std::make_unique<WTNVHandlerImageView>(process->getHndImageView());
    view->wSetDrawMarkFilled(setting.filled);
    view->setMarkDrawInfo("DNN Class Name");
  }

  cv::Mat render() {
    unsigned char* data = nullptr;
    int width = 0;
    int height = 0;
    int channels = 0;
    view->wGetARImage(&data, &width, &height, &channels);
    return {height, width, CV_8UC3, data};
  }

 private:
  BenchProject bench;
  std::unique_ptr<WTNVMainProcess> process;
  std::unique_ptr<WTNVHandlerImageView> view;
};

/// The same by direct calls. Where the boxes lie in pixels is known beforehand.
class BareView {
 public:
  explicit BareView(const Setting& wanted) : setting(wanted) {
    for (const cv::Rect2d& box : relativeBoxes(setting.marks)) {
      const cv::Point2d center((box.x + box.width / 2) * kWidth,
                               (box.y + box.height / 2) * kHeight);
      const cv::Size2d size(box.width * kWidth, box.height * kHeight);
      const cv::Rect2d exact(center.x - size.width / 2, center.y - size.height / 2, size.width,
                             size.height);
      boxes.push_back({{cv::Point(exact.tl()), cv::Size(size)}, exact, center});
    }
    for (int old = 0; old < 256; ++old)
      blended[old] = static_cast<uchar>(static_cast<int>(0.6 * old) + 102);
    if (setting.cached) drawMarks(marked);
  }

  cv::Mat render() {
    if (setting.cached) {
      marked.copyTo(view);
    } else {
      drawMarks(view);
    }
    cv::line(view, {kWidth / 2, kHeight}, {kWidth / 2, 0}, kWhite, 1, cv::LINE_AA);
    cv::line(view, {kWidth, kHeight / 2}, {0, kHeight / 2}, kWhite, 1, cv::LINE_AA);
    return view;
  }

 private:
  struct Box {
    cv::Rect pixels;
    cv::Rect2d exact;
    cv::Point2d center;
  };

  void drawMarks(cv::Mat& target) const {
    picture.copyTo(target);
    for (const Box& box : boxes) {
      if (setting.filled) fill(target, box.exact);
      cv::rectangle(target, box.pixels, kWhite, 1, cv::LINE_AA, 0);
      cv::circle(target, box.center, 3, kWhite, 1, cv::LINE_AA, 0);
      const cv::Point label(static_cast<int>(box.exact.x + box.exact.width + 5),
                            static_cast<int>(box.exact.y + box.exact.height / 2));
      cv::putText(target, kClassName, label, cv::FONT_HERSHEY_COMPLEX, 0.4, kWhite, 1, cv::LINE_AA);
    }
  }

  void fill(cv::Mat& target, const cv::Rect2d& exact) const {
    const cv::Point first(exact.tl());
    const cv::Point last(exact.br());
    const cv::Rect area = cv::Rect(first, last + cv::Point(1, 1)) & cv::Rect({}, target.size());
    const std::vector<std::vector<cv::Point>> outline{
        {first, {last.x, first.y}, last, {first.x, last.y}}};
    cv::Mat mask(area.size(), CV_8UC1, cv::Scalar(0));
    cv::drawContours(mask, outline, 0, 255, cv::FILLED, cv::LINE_8, cv::noArray(), 1, -area.tl());
    for (int y = 0; y < area.height; ++y) {
      cv::Vec3b* row = target.ptr<cv::Vec3b>(area.y + y) + area.x;
      for (int x = 0; x < area.width; ++x) {
        if (mask.at<uchar>(y, x) == 0) continue;
        row[x] = {blended[row[x][0]], blended[row[x][1]], blended[row[x][2]]};
      }
    }
  }

  Setting setting;
  cv::Mat picture = photograph({kWidth, kHeight}, 1);
  std::vector<Box> boxes;
  uchar blended[256];
  cv::Mat marked;
  cv::Mat view;
};

Pair makePair(const Setting& setting) {
  const auto view = std::make_shared<View>(setting);
  const auto bare = std::make_shared<BareView>(setting);
  requireSame(cv::norm(view->render(), bare->render(), cv::NORM_INF) == 0, "rendered pictures");
  return {{[view] { view->render(); }}, {[bare] { bare->render(); }}};
}

}  // namespace

void addRenders(const Plan& plan) {
  for (const int marks : plan.sizes({0, 1000})) {
    addComparison(plan, "render from the cache", marks, 401, [=] {
      return makePair({marks, true, true});
    });
  }
  for (const bool filled : {false, true}) {
    const std::string name = filled ? "draw filled rectangles" : "draw rectangles";
    for (const int marks : plan.sizes({1, 100, 1000})) {
      addComparison(plan, name, marks, 101, [=] { return makePair({marks, filled, false}); });
    }
  }
}
