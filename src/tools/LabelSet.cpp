#include "tools/LabelSet.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>
#include <utility>

namespace tnv {

namespace {

using Outline = std::vector<cv::Point2d>;

/// How far, relative to the picture, a label may reach beyond the edges and be taken as it is: what
/// the rounding to six digits of centre and size adds up to, with room to spare.
constexpr double kBeyondTolerance = 1e-5;

constexpr std::size_t kFewestCorners = 3;

bool isFinite(cv::Point2d point) {
  return std::isfinite(point.x) && std::isfinite(point.y);
}

bool isFinite(const cv::Rect2d& box) {
  return isFinite(box.tl()) && std::isfinite(box.width) && std::isfinite(box.height);
}

bool hasArea(const cv::Rect2d& box) {
  return box.width > 0.0 && box.height > 0.0;
}

bool liesWithin(const cv::Rect2d& box) {
  return box.x >= -kBeyondTolerance && box.y >= -kBeyondTolerance &&
         box.x + box.width <= 1.0 + kBeyondTolerance &&
         box.y + box.height <= 1.0 + kBeyondTolerance;
}

cv::Rect2d clipped(const cv::Rect2d& box) {
  const cv::Point2d begin(std::max(box.x, 0.0), std::max(box.y, 0.0));
  const cv::Point2d end(std::min(box.x + box.width, 1.0), std::min(box.y + box.height, 1.0));
  return {begin.x, begin.y, end.x - begin.x, end.y - begin.y};
}

/// One edge of the picture: points whose `coordinate` times `side` is below `limit` times `side`
/// lie beyond it.
struct Edge {
  double cv::Point2d::*coordinate;
  double limit;
  double side;

  bool holds(cv::Point2d point) const { return (point.*coordinate - limit) * side >= 0.0; }

  /// Where the line between two points, one of which lies beyond, crosses the edge.
  cv::Point2d crossing(cv::Point2d a, cv::Point2d b) const {
    const double part = (limit - a.*coordinate) / (b.*coordinate - a.*coordinate);
    cv::Point2d point = a + (b - a) * part;
    point.*coordinate = limit;
    return point;
  }
};

constexpr Edge kEdges[] = {{&cv::Point2d::x, 0.0, 1.0},
                           {&cv::Point2d::x, 1.0, -1.0},
                           {&cv::Point2d::y, 0.0, 1.0},
                           {&cv::Point2d::y, 1.0, -1.0}};

Outline clippedAt(const Edge& edge, const Outline& outline) {
  Outline kept;
  for (std::size_t i = 0; i < outline.size(); ++i) {
    const cv::Point2d from = outline[i];
    const cv::Point2d to = outline[(i + 1) % outline.size()];
    if (edge.holds(from)) kept.push_back(from);
    if (edge.holds(from) != edge.holds(to)) kept.push_back(edge.crossing(from, to));
  }
  return kept;
}

/// Edge after edge. Parts of a concave outline stay joined along the edges that they were cut at.
Outline clipped(Outline outline) {
  for (const Edge& edge : kEdges)
    outline = clippedAt(edge, outline);
  return outline;
}

/// Why a label of a known class cannot be taken; empty if it can.
std::string reasonAgainst(const Label& label, bool isOutline) {
  if (isOutline && label.outline.size() < kFewestCorners) return "outline of fewer than 3 corners";
  if (!std::all_of(label.outline.begin(), label.outline.end(),
                   [](cv::Point2d corner) { return isFinite(corner); }) ||
      !isFinite(label.box)) {
    return "not a finite number";
  }
  if (!hasArea(label.box)) return "no width or no height";
  return {};
}

}  // namespace

cv::Rect2d boxOf(const std::vector<cv::Point2d>& points) {
  if (points.empty()) return {};
  cv::Point2d least = points.front();
  cv::Point2d most = points.front();
  for (const cv::Point2d& point : points) {
    least = {std::min(least.x, point.x), std::min(least.y, point.y)};
    most = {std::max(most.x, point.x), std::max(most.y, point.y)};
  }
  return {least.x, least.y, most.x - least.x, most.y - least.y};
}

bool isPlainClassName(std::string_view name) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; };
  return !name.empty() && name.front() != ' ' && name.back() != ' ' &&
         std::none_of(name.begin(), name.end(), isControl);
}

std::uint32_t TextTable::numberOf(std::string_view text) {
  // Most often the text is that of the label before.
  if (!texts.empty() && texts.back() == text) return static_cast<std::uint32_t>(texts.size() - 1);
  const auto next = static_cast<std::uint32_t>(texts.size());
  const auto [number, isNew] = numbers.try_emplace(std::string(text), next);
  if (isNew) texts.emplace_back(text);
  return number->second;
}

const std::string& TextTable::operator[](std::uint32_t number) const {
  static const std::string none;
  return number < texts.size() ? texts[number] : none;
}

void LabelRejections::add(std::string_view file, std::size_t line, std::string_view reason) {
  entries.push_back(
      {files.numberOf(file), static_cast<std::uint32_t>(line), reasons.numberOf(reason)});
}

LabelRejection LabelRejections::operator[](std::size_t place) const {
  const Entry& entry = entries[place];
  return {files[entry.file], entry.line, reasons[entry.reason]};
}

std::vector<LabelRejection> LabelRejections::all() const {
  std::vector<LabelRejection> list;
  list.reserve(size());
  for (std::size_t i = 0; i < size(); ++i)
    list.push_back((*this)[i]);
  return list;
}

void LabelRejections::count(std::map<std::string, int>& counts) const {
  for (const Entry& entry : entries)
    ++counts[reasons[entry.reason]];
}

void cutAtEdges(Label& label) {
  for (cv::Point2d& corner : label.outline)
    corner = {std::clamp(corner.x, 0.0, 1.0), std::clamp(corner.y, 0.0, 1.0)};
  label.box = label.outline.empty() ? clipped(label.box) : boxOf(label.outline);
}

void LabelSet::take(LabelledPicture& picture, const FoundLabel& found, bool clip) {
  const auto rejectFor = [&](const std::string& reason) {
    reject(picture.labelFile, found.line, reason);
  };
  const auto classPlace = classPlaceOf(found.classNumber);
  if (!classPlace) return rejectFor("unknown class");
  if (classNames[*classPlace].empty()) return rejectFor("class without a name");
  if (!isPlainClassName(classNames[*classPlace]))
    return rejectFor("class name with blanks at its ends or control characters");
  const bool isOutline = found.isOutline || !found.outline.empty();
  Label label{*classPlace, isOutline ? boxOf(found.outline) : found.box, found.outline, found.line,
              files.numberOf(picture.labelFile)};
  if (const std::string reason = reasonAgainst(label, isOutline); !reason.empty()) {
    return rejectFor(reason);
  }
  if (!liesWithin(label.box)) {
    if (!clip) return rejectFor("reaches beyond the picture");
    label.outline = clipped(std::move(label.outline));
    label.box = isOutline ? boxOf(label.outline) : clipped(label.box);
    if (!hasArea(label.box)) return rejectFor("lies outside the picture");
    label.isCut = true;
    ++cut;
  }
  picture.labels.push_back(std::move(label));
  ++accepted;
}

void LabelSet::reject(std::string_view file, std::size_t line, std::string_view reason) {
  rejections.add(file, line, reason);
}

void LabelSet::rejectAmbiguous(const std::vector<std::string>& told) {
  std::unordered_map<std::string_view, std::string_view> toldBefore;
  std::unordered_set<std::string> open;
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    const auto [first, isNew] = toldBefore.emplace(pictures[i].path, told[i]);
    if (!isNew && first->second != told[i]) open.insert(pictures[i].path);
  }
  if (open.empty()) return;
  std::vector<LabelledPicture> kept;
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    if (!told[i].empty() && open.contains(pictures[i].path)) {
      withdraw(pictures[i], "several pictures have the name of the one found");
    } else {
      kept.push_back(std::move(pictures[i]));
    }
  }
  pictures = std::move(kept);
}

void LabelSet::withdraw(const LabelledPicture& picture, std::string_view reason) {
  if (picture.labels.empty()) reject(picture.labelFile, 0, reason);
  for (const Label& label : picture.labels) {
    reject(fileOf(label), label.line, reason);
    if (label.isCut) --cut;
  }
  accepted -= picture.labels.size();
}

std::optional<std::size_t> LabelSet::classPlaceOf(long long number) {
  for (; classesKnown < classNumbers.size() && classesKnown < classNames.size(); ++classesKnown)
    classPlaces.try_emplace(classNumbers[classesKnown], classesKnown);
  const auto place = classPlaces.find(number);
  if (place == classPlaces.end()) return std::nullopt;
  return place->second;
}

void ClassNumbers::add(const std::vector<std::string>& names) {
  for (const std::string& name : names)
    of(name);
}

long long ClassNumbers::of(const std::string& name) {
  const auto next = static_cast<long long>(set.classNames.size());
  const auto [number, isNew] = numbers.emplace(name, next);
  if (isNew) {
    set.classNames.push_back(name);
    set.classNumbers.push_back(next);
  }
  return number->second;
}

}  // namespace tnv
