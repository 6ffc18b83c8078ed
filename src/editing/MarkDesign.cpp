#include "editing/MarkDesign.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <string_view>

#include "marks/TNVMarkCircle.h"
#include "marks/TNVMarkEllipse.h"
#include "marks/TNVMarkImage.h"
#include "marks/TNVMarkLine.h"
#include "marks/TNVMarkPoint.h"
#include "marks/TNVMarkPolyLine.h"
#include "marks/TNVMarkRect.h"

namespace tnv {

namespace {

using MarkPointer = std::unique_ptr<TNVMark>;
using Points = std::vector<cv::Point2d>;

/// A form in which a person constructs marks: what kind of mark asks for how many points.
struct Form {
  std::string_view name;
  bool variant;
  MarkPointer (*make)();
};

template <class Kind>
MarkPointer makeKind() {
  return std::make_unique<Kind>();
}

constexpr Form kForms[] = {
    {"Rect", false, makeKind<TNVMarkRect>},
    {"Rect Center", true, makeKind<TNVMarkRect>},
    {"Point", false, makeKind<TNVMarkPoint>},
    {"Image", false, makeKind<TNVMarkImage>},
    {"Circle", false, makeKind<TNVMarkCircle>},
    {"Circle Multiple", true, makeKind<TNVMarkCircle>},
    {"Line", false, makeKind<TNVMarkLine>},
    {"PolyLine", false, makeKind<TNVMarkPolyLine>},
    {"PolyLine Closed", true, makeKind<TNVMarkPolyLine>},
    {"Ellipse", false, makeKind<TNVMarkEllipse>},
    {"Ellipse Multiple", true, makeKind<TNVMarkEllipse>},
};

/// How a form with a number of points becomes a mark; the first row that fits is taken.
struct Design {
  std::string_view form;
  std::size_t fewest;
  std::size_t most;
  MarkPointer (*build)(const Points& points, cv::Size imageSize);
};

template <bool FromCenter>
MarkPointer designRect(const Points& points, cv::Size) {
  return std::make_unique<TNVMarkRect>(points[0], points[1], FromCenter);
}

/// Nearly the whole picture, wherever the point is.
MarkPointer designImage(const Points&, cv::Size) {
  auto mark = std::make_unique<TNVMarkImage>();
  mark->center = {0.5, 0.5};
  mark->size = {0.9, 0.9};
  return mark;
}

MarkPointer designPoint(const Points& points, cv::Size) {
  return std::make_unique<TNVMarkPoint>(points[0]);
}

MarkPointer designCircle(const Points& points, cv::Size) {
  return std::make_unique<TNVMarkCircle>(points[0], points[1]);
}

MarkPointer fitCircle(const Points& points, cv::Size imageSize) {
  return std::make_unique<TNVMarkCircle>(points, imageSize);
}

MarkPointer designLine(const Points& points, cv::Size) {
  return std::make_unique<TNVMarkLine>(points[0], points[1]);
}

template <bool Closed>
MarkPointer designPolyLine(const Points& points, cv::Size) {
  return std::make_unique<TNVMarkPolyLine>(points, Closed);
}

MarkPointer designEllipse(const Points& points, cv::Size) {
  return std::make_unique<TNVMarkEllipse>(points[0], points[1], points[2]);
}

MarkPointer fitEllipse(const Points& points, cv::Size imageSize) {
  return std::make_unique<TNVMarkEllipse>(points, imageSize);
}

/// The last point is where the cursor is: the mark is built from the others.
template <MarkPointer (*Build)(const Points&, cv::Size)>
MarkPointer withoutCursor(const Points& points, cv::Size imageSize) {
  MarkPointer mark = Build(Points(points.begin(), points.end() - 1), imageSize);
  mark->designPoint = points.back();
  return mark;
}

constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();

constexpr Design kDesigns[] = {
    {"Rect", 2, 2, designRect<false>},
    {"Rect Center", 2, 2, designRect<true>},
    {"Point", 1, 1, designPoint},
    {"Image", 1, 1, designImage},
    {"Circle", 2, 2, designCircle},
    {"Circle Multiple", 3, 3, fitCircle},
    {"Circle Multiple", 4, kAnyNumber, withoutCursor<fitCircle>},
    {"Line", 2, 2, designLine},
    {"PolyLine", 2, 2, designPolyLine<false>},
    {"PolyLine", 3, kAnyNumber, withoutCursor<designPolyLine<false>>},
    {"PolyLine Closed", 2, 2, designPolyLine<true>},
    {"PolyLine Closed", 3, kAnyNumber, withoutCursor<designPolyLine<true>>},
    {"Ellipse", 3, kAnyNumber, designEllipse},
    {"Ellipse Multiple", 5, 5, fitEllipse},
    {"Ellipse Multiple", 6, kAnyNumber, withoutCursor<fitEllipse>},
};

const Form* findForm(const std::string& name) {
  const auto* form = std::find_if(std::begin(kForms), std::end(kForms),
                                  [&](const Form& row) { return row.name == name; });
  return form == std::end(kForms) ? nullptr : form;
}

}  // namespace

std::unique_ptr<TNVMark> buildMark(const std::string& form, const Points& points,
                                   cv::Size imageSize) {
  for (const Design& design : kDesigns) {
    const bool fits = points.size() >= design.fewest && points.size() <= design.most;
    if (fits && design.form == form) return design.build(points, imageSize);
  }
  return nullptr;
}

int minConstructionPoints(const std::string& name) {
  const Form* form = findForm(name);
  return form ? form->make()->getMinConstructionPoints(form->variant) : 0;
}

int maxConstructionPoints(const std::string& name) {
  const Form* form = findForm(name);
  return form ? form->make()->getMaxConstructionPoints(form->variant) : 0;
}

}  // namespace tnv
