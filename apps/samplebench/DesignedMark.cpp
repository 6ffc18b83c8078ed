#include "DesignedMark.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

// A form whose last point follows the cursor as soon as there are more points than that.
struct CursorForm {
  const char* name;
  std::size_t wholeUpTo;
};
constexpr std::array<CursorForm, 4> cursorForms{
    {{"Circle Multiple", 3}, {"Ellipse Multiple", 5}, {"PolyLine", 2}, {"PolyLine Closed", 2}}};

// A mark that is larger, in widths or heights of the picture, comes of points on a line.
constexpr double largestExtent = 10;

// The least extent in pixels, short of what is lost between relative coordinates and pixels.
constexpr double onePixel = 1 - 1e-6;

bool hasCursor(const std::string& form, std::size_t count) {
  return std::any_of(cursorForms.begin(), cursorForms.end(), [&](const CursorForm& row) {
    return row.name == form && count > row.wholeUpTo;
  });
}

std::vector<std::vector<double>> pairs(const std::vector<Point>& points) {
  std::vector<std::vector<double>> result;
  for (const auto& point : points)
    result.push_back({point.x, point.y});
  return result;
}

// Learns of a changed design as any front end does.
class DesignObserver : public WTNVHandlerMark {
 public:
  explicit DesignObserver(const WTNVHandlerMark& marks) : WTNVHandlerMark(marks) {}

  void onEventMarkDesigned() override { wasDesigned = true; }

  bool wasDesigned = false;
};

bool applyAssist(WTNVHandlerMark& marks) {
  DesignObserver observer(marks);
  marks.wSetAssist("GrabCut");
  marks.wApplyAssistDesignMark();
  return observer.wasDesigned;
}

// A fit that finds nothing leaves the centre there.
bool isUnset(Point center) {
  return center == Point{-1, -1};
}

bool isUsable(const WTNVMark& mark, const Editor& editor) {
  Point center;
  Point size;
  mark.wGetRelCenter(center.x, center.y);
  mark.wGetRelSize(size.x, size.y, editor.width(), editor.height());
  const auto touches = [](double middle, double extent) {
    return extent >= 0 && extent <= largestExtent && middle + extent / 2 >= 0 &&
           middle - extent / 2 <= 1;
  };
  return !isUnset(center) && touches(center.x, size.x) && touches(center.y, size.y);
}

}  // namespace

Design designFor(const std::string& form, const std::vector<Point>& points) {
  // A rectangle designed by its centre is of a type that cannot be read back from disk.
  if (form == "Rect Center") {
    const auto [center, corner] = std::pair(points.at(0), points.at(1));
    return {"Rect", {{2 * center.x - corner.x, 2 * center.y - corner.y}, corner}};
  }
  Design design{form, points};
  // The library leaves out the last point as the one that the cursor still moves.
  if (hasCursor(form, points.size())) design.points.push_back(points.back());
  return design;
}

void checkExtent(const std::string& form, const std::vector<Point>& points, PointUnit unit,
                 ExitCode code) {
  if (form == "Point" || form == "Image") return;
  const auto least = unit == PointUnit::pixels ? onePixel : 0;
  const auto refuse = [&](const char* none, const char* little, const char* advice) {
    throw CommandError(std::string("the ") + (unit == PointUnit::pixels ? little : none) + advice,
                       code);
  };
  const auto isShort = [&](double length) { return !(length > 0 && length >= least); };
  const auto corners = designFor(form, points).points;
  const auto first = corners.front();
  if (form == "Rect" || form == "Rect Center") {
    if (isShort(std::abs(corners[1].x - first.x)) || isShort(std::abs(corners[1].y - first.y)))
      refuse("points enclose no area", "points enclose less than a pixel",
             "; give two that differ in both directions");
    return;
  }
  const auto isAtFirst = [&](Point point) {
    return isShort(std::hypot(point.x - first.x, point.y - first.y));
  };
  if (form == "Ellipse" && std::any_of(points.begin() + 1, points.end(), isAtFirst))
    refuse("ellipse has an axis of no length", "ellipse has an axis shorter than a pixel",
           "; give points apart from its centre");
  if (std::all_of(points.begin(), points.end(), isAtFirst))
    refuse("points all lie at one place", "points all lie within a pixel", "");
}

bool addDesigned(Editor& editor, const Design& design, const WTNVDNNClass& dnnClass, bool assist) {
  auto& marks = editor.marks;
  const auto designed = marks.designMark(pairs(design.points), design.form, {dnnClass});
  const auto assisted = designed && (!assist || applyAssist(marks));
  if (!designed || !marks.addDesignedMark() || !isUsable(marks.getAllMarks().back(), editor))
    throw CommandError("no mark of the form '" + design.form + "' fits these points");
  return assisted;
}
