#include "editing/MarkDesign.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "marks/TNVMarkImage.h"
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
    {"Image", false, makeKind<TNVMarkImage>},
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

constexpr Design kDesigns[] = {
    {"Rect", 2, 2, designRect<false>},
    {"Rect Center", 2, 2, designRect<true>},
    {"Image", 1, 1, designImage},
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
