// Rendering through the image view, and filling alone.

#include <functional>
#include <memory>

#include "BenchMarks.h"
#include "Compare.h"
#include "editing/TNVType.h"

namespace {

const std::string kClassName = "thing";
const cv::Scalar kWhite(255, 255, 255);

struct Screen {
  const char* name;
  cv::Size size;
};

const Screen kScreens[] = {{"1080p", {1920, 1080}}, {"4K", {3840, 2160}}};

struct Setting {
  cv::Size size;
  std::string kinds;
  int marks;
  bool filled;
  bool cached;
};

class View {
 public:
  explicit View(const Setting& setting) {
    const std::string path = bench.temp / "picture.png";
    cv::imwrite(path, photograph(setting.size, 1), {cv::IMWRITE_PNG_COMPRESSION, 1});
    bench.project.wSetCacheRender(setting.cached);
    bench.project.wAddDNNClass(kClassName, 0, 0);
    bench.add({path});
    TNVTrainSet& trainSet = *bench.project.wGetTrainSets().front().getNativeTrainSet();
    for (const auto& mark : benchMarks(setting.kinds, setting.marks))
      trainSet.addMark(*mark);
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

using Contour = std::vector<cv::Point>;

Contour contourOf(const TNVMark& mark, cv::Size size) {
  Contour contour;
  for (const cv::Point2d& point : mark.getContour(size))
    contour.emplace_back(point);
  return contour;
}

void drawLine(cv::Mat& view, cv::Point2d from, cv::Point2d to) {
  cv::line(view, from, to, kWhite, 1, cv::LINE_AA);
}

void drawRing(cv::Mat& view, cv::Point2d centre, int lineType = cv::LINE_AA) {
  cv::circle(view, centre, 3, kWhite, 1, lineType);
}

void drawDot(cv::Mat& view, cv::Point2d centre) {
  cv::circle(view, centre, 3, kWhite, cv::FILLED, cv::LINE_AA);
}

void drawLabel(cv::Mat& view, cv::Point at) {
  cv::putText(view, kClassName, at, cv::FONT_HERSHEY_COMPLEX, 0.4, kWhite, 1, cv::LINE_AA);
}

cv::Point truncated(cv::Point2d point) {
  return {static_cast<int>(point.x), static_cast<int>(point.y)};
}

/// A mark by direct calls. Where it lies in pixels is worked out beforehand.
using Drawing = std::function<void(cv::Mat& view)>;

Drawing drawingOf(const TNVMarkRect& mark, cv::Size size) {
  const cv::Point2d centre = inPixels(mark.center, size);
  const cv::Size2d exact(mark.size.x * size.width, mark.size.y * size.height);
  const cv::Point2d corner = centre - cv::Point2d(exact) / 2;
  return [=](cv::Mat& view) {
    cv::rectangle(view, cv::Rect(cv::Point(corner), cv::Size(exact)), kWhite, 1, cv::LINE_AA);
    drawRing(view, centre);
    drawLabel(view, truncated({corner.x + exact.width + 5, corner.y + exact.height / 2}));
  };
}

Drawing drawingOf(const TNVMarkPoint& mark, cv::Size size) {
  constexpr int kReach = 21;
  const cv::Point at = inPixels(mark.center, size);
  const cv::Point2d label = inPixels(mark.center, size) + cv::Point2d(kReach, 0);
  const cv::Rect around =
      cv::Rect(at.x - kReach, at.y - kReach, 2 * kReach + 1, 2 * kReach + 1) & cv::Rect({}, size);
  return [=](cv::Mat& view) {
    drawRing(view, at);
    cv::Mat part = view(around);
    cv::Mat ringed = part.clone();
    cv::circle(ringed, {std::min(at.x, kReach), std::min(at.y, kReach)}, 19, kWhite, 1,
               cv::LINE_AA);
    cv::addWeighted(part, 1.0 - 0.3, ringed, 0.3, 0.0, part);
    drawLabel(view, label);
  };
}

Drawing drawingOf(const TNVMarkCircle& mark, cv::Size size) {
  const cv::Point2d centre = inPixels(mark.center, size);
  const cv::Point2d rim = inPixels(mark.radius.front(), size);
  const double radius = rim.x - centre.x;
  return [=](cv::Mat& view) {
    cv::circle(view, centre, static_cast<int>(radius), kWhite, 1, cv::LINE_AA);
    drawRing(view, centre, cv::LINE_8);
    drawLine(view, centre, rim);
    drawLabel(view, truncated(centre + cv::Point2d(radius + 5, 0)));
  };
}

Drawing drawingOf(const TNVMarkLine& mark, cv::Size size) {
  const cv::Point2d centre = inPixels(mark.center, size);
  const cv::Point2d from = inPixels(mark.pointA, size);
  const cv::Point2d to = inPixels(mark.pointB, size);
  return [=](cv::Mat& view) {
    drawRing(view, centre);
    drawLine(view, from, to);
    drawDot(view, from);
    drawDot(view, to);
    drawLabel(view, centre);
  };
}

Drawing drawingOf(const TNVMarkPolyLine& mark, cv::Size size) {
  const cv::Point2d centre = inPixels(mark.center, size);
  std::vector<cv::Point2d> corners;
  for (const cv::Point2d& corner : mark.polyPoints)
    corners.push_back(inPixels(corner, size));
  return [=](cv::Mat& view) {
    drawRing(view, centre);
    for (const cv::Point2d& corner : corners)
      drawDot(view, corner);
    for (std::size_t i = 0; i < corners.size(); ++i)
      drawLine(view, corners[i], corners[(i + 1) % corners.size()]);
    drawLabel(view, centre);
  };
}

Drawing drawingOf(const TNVMarkEllipse& mark, cv::Size size) {
  const cv::RotatedRect ellipse = ellipseIn(mark, size);
  const cv::Point2d centre = inPixels(mark.center, size);
  const cv::Point2d right = inPixels(mark.pointA, size);
  const cv::Point2d top = inPixels(mark.pointB, size);
  return [=](cv::Mat& view) {
    cv::ellipse(view, ellipse, kWhite, 1, cv::LINE_AA);
    drawLine(view, centre, right);
    drawLine(view, centre, top);
    drawRing(view, centre);
  };
}

template <class... Kinds>
Drawing drawingOfAny(const TNVMark& mark, cv::Size size) {
  Drawing drawing;
  const auto attempt = [&](const auto* kind) {
    if (kind) drawing = drawingOf(*kind, size);
  };
  (attempt(dynamic_cast<const Kinds*>(&mark)), ...);
  return drawing;
}

/// Changes each pixel of the view that the contour covers.
template <class Change>
void fillByHand(cv::Mat& view, const Contour& contour, const Change& change) {
  const cv::Rect area = cv::boundingRect(contour) & cv::Rect({}, view.size());
  cv::Mat mask(area.size(), CV_8UC1, cv::Scalar(0));
  cv::drawContours(mask, std::vector<Contour>{contour}, 0, 255, cv::FILLED, cv::LINE_8,
                   cv::noArray(), 1, -area.tl());
  for (int y = 0; y < area.height; ++y) {
    for (int x = 0; x < area.width; ++x) {
      if (mask.at<uchar>(y, x) != 0) change(view.at<cv::Vec3b>(area.y + y, area.x + x));
    }
  }
}

/// The same by direct calls.
class BareView {
 public:
  explicit BareView(const Setting& wanted)
      : setting(wanted), picture(photograph(wanted.size, 1)), view(picture.clone()) {
    for (const auto& mark : benchMarks(setting.kinds, setting.marks)) {
      contours.push_back(contourOf(*mark, setting.size));
      drawings.push_back(drawingOfAny<TNVMarkRect, TNVMarkPoint, TNVMarkCircle, TNVMarkLine,
                                      TNVMarkPolyLine, TNVMarkEllipse>(*mark, setting.size));
    }
    for (int old = 0; old < 256; ++old)
      blended[old] = static_cast<uchar>(static_cast<int>(0.6 * old) + 102);
  }

  cv::Mat render() {
    picture.copyTo(view);
    for (std::size_t i = 0; i < drawings.size(); ++i) {
      if (setting.filled && !contours[i].empty()) {
        fillByHand(view, contours[i], [this](cv::Vec3b& pixel) {
          pixel = {blended[pixel[0]], blended[pixel[1]], blended[pixel[2]]};
        });
      }
      drawings[i](view);
    }
    drawLine(view, {setting.size.width * 0.5, view.rows * 1.0}, {setting.size.width * 0.5, 0});
    drawLine(view, {view.cols * 1.0, setting.size.height * 0.5}, {0, setting.size.height * 0.5});
    return view;
  }

  void copy() { picture.copyTo(view); }

 private:
  Setting setting;
  cv::Mat picture;
  cv::Mat view;
  std::vector<Contour> contours;
  std::vector<Drawing> drawings;
  uchar blended[256];
};

/// A view that is cached stands beside one copy of the picture, which is the least there is to do.
Pair makePair(const Setting& setting) {
  const auto view = std::make_shared<View>(setting);
  const auto bare = std::make_shared<BareView>(setting);
  requireSame(cv::norm(view->render(), bare->render(), cv::NORM_INF) == 0, "rendered pictures");
  const auto twin = [=] { setting.cached ? bare->copy() : void(bare->render()); };
  return {{[view] { view->render(); }}, {twin}};
}

/// The part of drawing that fills.
struct Filling : TNVMarkRect {
  using TNVMark::drawFrame;
  using TNVMarkRect::TNVMarkRect;
};

/// As it would be written straight from the formula.
void blendByFormula(cv::Vec3b& pixel) {
  for (int channel = 0; channel < 3; ++channel)
    pixel[channel] = static_cast<uchar>(static_cast<int>(0.6 * pixel[channel]) +
                                        static_cast<int>(0.4 * kWhite[channel]));
}

Pair makeFilling(cv::Size size, int count) {
  const auto fillings = std::make_shared<std::vector<Filling>>();
  const auto contours = std::make_shared<std::vector<Contour>>();
  for (const cv::Rect2d& box : relativeBoxes(count)) {
    contours->push_back(contourOf(fillings->emplace_back(box.tl(), box.br(), false), size));
  }
  const cv::Mat picture = photograph(size, 1);
  const auto view = std::make_shared<cv::Mat>(picture.clone());
  const auto bareView = std::make_shared<cv::Mat>(picture.clone());
  TNVTypeMarkStyleSet style;
  style.drawFilled = true;
  const auto fill = [=] {
    for (const Filling& filling : *fillings)
      filling.drawFrame(*view, size, style, {});
  };
  const auto bareFill = [=] {
    for (const Contour& contour : *contours)
      fillByHand(*bareView, contour, blendByFormula);
  };
  fill();
  bareFill();
  requireSame(cv::norm(*view, *bareView, cv::NORM_INF) == 0, "fillings");
  return {{fill, [=] { picture.copyTo(*view); }}, {bareFill, [=] { picture.copyTo(*bareView); }}};
}

}  // namespace

void addRenders(const Plan& plan) {
  const auto add = [&](const std::string& name, int marks, double atMost, const auto& make) {
    addComparison(plan, {name, marks, atMost}, make);
  };
  for (const auto& [screen, size] : kScreens) {
    for (const int marks : plan.sizes({1, 1000})) {
      add(std::string("render from the cache, ") + screen, marks, 1.25, [=, size = size] {
        return makePair({size, kMixedKinds, marks, true, true});
      });
    }
    for (const std::string& kinds : {kBoxesOnly, kMixedKinds}) {
      for (const bool filled : {false, true}) {
        for (const int marks : plan.sizes({1, 100, 1000})) {
          const bool isRequired = kinds == kBoxesOnly && !filled && marks == 100;
          add("render " + kinds + (filled ? " filled, " : ", ") + screen, marks,
              isRequired ? 1.1 : 0, [=, size = size] {
                return makePair({size, kinds, marks, filled, false});
              });
        }
      }
    }
    add(std::string("fill boxes, ") + screen, plan.smoke ? 1 : 100, 0.2,
        [size = size, &plan] { return makeFilling(size, plan.smoke ? 1 : 100); });
  }
}
