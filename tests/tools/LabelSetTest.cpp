#include "tools/LabelSet.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

using tnv::FoundLabel;
using tnv::LabelledPicture;
using tnv::LabelSet;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();

/// Classes numbered with a gap.
LabelSet setOfTwo() {
  LabelSet set;
  set.classNames = {"screw", "nut"};
  set.classNumbers = {3, 90};
  return set;
}

FoundLabel box(long long number, cv::Rect2d place) {
  return {number, place, {}, 7, false};
}

FoundLabel outline(std::vector<cv::Point2d> corners) {
  return {3, {}, std::move(corners), 7, true};
}

/// The reason for which a label is rejected; empty if it is taken.
std::string reasonFor(const FoundLabel& label, bool clip = false) {
  LabelSet set = setOfTwo();
  LabelledPicture picture{"/a.jpg", "/a.txt", {}, {}};
  set.take(picture, label, clip);
  EXPECT_EQ(set.found(), 1U);
  EXPECT_EQ(picture.labels.size(), set.accepted);
  if (set.rejections.empty()) return {};
  EXPECT_EQ(set.accepted, 0U);
  EXPECT_EQ(set.rejections.front().file, "/a.txt");
  EXPECT_EQ(set.rejections.front().line, 7U);
  return set.rejections.front().reason;
}

/// The label as it is taken with cutting at the edges.
tnv::Label cut(const FoundLabel& label) {
  LabelSet set = setOfTwo();
  LabelledPicture picture;
  set.take(picture, label, true);
  EXPECT_EQ(set.cut, 1U);
  return picture.labels.empty() ? tnv::Label{} : picture.labels.front();
}

}  // namespace

TEST(LabelSet, TakesALabelUnderThePlaceOfItsClass) {
  LabelSet set = setOfTwo();
  LabelledPicture picture;
  set.take(picture, box(90, {0.25, 0.5, 0.125, 0.25}), false);
  ASSERT_EQ(picture.labels.size(), 1U);
  EXPECT_EQ(picture.labels[0].classPlace, 1U);
  EXPECT_EQ(picture.labels[0].box, cv::Rect2d(0.25, 0.5, 0.125, 0.25));
  EXPECT_EQ(picture.labels[0].line, 7U);
  EXPECT_TRUE(set.rejections.empty());
  EXPECT_EQ(set.cut, 0U);
}

TEST(LabelSet, AnOutlineHasTheBoxAroundItsCorners) {
  LabelSet set = setOfTwo();
  LabelledPicture picture;
  set.take(picture, outline({{0.5, 0.25}, {0.75, 0.5}, {0.25, 0.75}}), false);
  ASSERT_EQ(picture.labels.size(), 1U);
  EXPECT_EQ(picture.labels[0].box, cv::Rect2d(0.25, 0.25, 0.5, 0.5));
  EXPECT_EQ(picture.labels[0].outline.size(), 3U);
}

TEST(LabelSet, EachRejectionHasItsReason) {
  struct Row {
    FoundLabel label;
    const char* reason;
  };
  LabelSet unnamed;
  const Row rows[] = {
      {box(3, {0, 0, 1, 1}), ""},
      {box(0, {0, 0, 1, 1}), "unknown class"},
      {box(-1, {0, 0, 1, 1}), "unknown class"},
      {box(3, {0.5, 0.5, 0, 0.1}), "no width or no height"},
      {box(3, {0.5, 0.5, 0.1, -0.1}), "no width or no height"},
      {box(3, {kNan, 0.5, 0.1, 0.1}), "not a finite number"},
      {box(3, {0.5, 0.5, kInfinite, 0.1}), "not a finite number"},
      {box(3, {0.5, -kInfinite, 0.1, 0.1}), "not a finite number"},
      {box(3, {0.5, 0.5, 1e300, 0.1}), "reaches beyond the picture"},
      {box(3, {-1e300, 0.5, 0.1, 0.1}), "reaches beyond the picture"},
      {outline({}), "outline of fewer than 3 corners"},
      {outline({{0, 0}, {1, 1}}), "outline of fewer than 3 corners"},
      {outline({{0, 0}, {1, 1}, {kNan, 0.5}}), "not a finite number"},
      {outline({{0, 0}, {1e308, 1}, {-1e308, 0.5}}), "not a finite number"},
      {outline({{0.5, 0}, {0.5, 1}, {0.5, 0.5}}), "no width or no height"},
      {outline({{0, 0}, {1, 1}, {1.01, 0.5}}), "reaches beyond the picture"},
  };
  for (const Row& row : rows)
    EXPECT_EQ(reasonFor(row.label), row.reason);
}

TEST(LabelSet, AClassWithoutANameIsNoClass) {
  LabelSet set;
  set.classNames = {"screw", ""};
  set.classNumbers = {0, 1};
  LabelledPicture picture;
  set.take(picture, box(1, {0, 0, 1, 1}), false);
  ASSERT_EQ(set.rejections.size(), 1U);
  EXPECT_EQ(set.rejections[0].reason, "class without a name");
}

TEST(LabelSet, AClassNameThatNoFormatGivesBackIsRejected) {
  const std::string reason = "class name with blanks at its ends or control characters";
  for (const auto& [name, isPlain] : {std::pair<std::string, bool>{" screw", false},
                                      {"screw ", false},
                                      {"a\tb", false},
                                      {"a\nb", false},
                                      {"a\x7F", false},
                                      {std::string("a\0", 2), false},
                                      {"a b", true},
                                      {"H\xC3\xBClse", true}}) {
    LabelSet set;
    set.classNames = {name};
    set.classNumbers = {0};
    LabelledPicture picture;
    set.take(picture, box(0, {0, 0, 1, 1}), false);
    EXPECT_EQ(set.rejections.size(), isPlain ? 0U : 1U) << name;
    if (isPlain) continue;
    EXPECT_EQ(set.rejections[0].reason, reason);
  }
}

TEST(LabelSet, WhatRoundingLetPassIsCutAway) {
  tnv::Label label;
  label.box = {-1e-6, 0.5, 0.5, 0.5 + 1e-6};
  tnv::cutAtEdges(label);
  EXPECT_EQ(label.box, cv::Rect2d(cv::Point2d(0, 0.5), cv::Point2d(0.5 - 1e-6, 1)));
  label.outline = {{-1e-6, 0.25}, {0.5, 1 + 1e-6}, {0.75, 0.25}};
  tnv::cutAtEdges(label);
  EXPECT_EQ(label.outline, (std::vector<cv::Point2d>{{0, 0.25}, {0.5, 1}, {0.75, 0.25}}));
  EXPECT_EQ(label.box, cv::Rect2d(0, 0.25, 0.75, 0.75));
}

TEST(LabelSet, RejectionsAreTextsAgain) {
  LabelSet set;
  set.reject("/a.txt", 1, "one");
  set.reject("/b.txt", 2, "two");
  set.reject("/a.txt", 3, "one");
  std::vector<std::string> texts;
  for (const auto& each : set.rejections.all())
    texts.push_back(each.file + std::to_string(each.line) + each.reason);
  EXPECT_EQ(texts, (std::vector<std::string>{"/a.txt1one", "/b.txt2two", "/a.txt3one"}));
  std::map<std::string, int> reasons;
  set.rejections.count(reasons);
  EXPECT_EQ(reasons, (std::map<std::string, int>{{"one", 2}, {"two", 1}}));
}

TEST(LabelSet, ClassesMayComeWhileLabelsAreTaken) {
  LabelSet set = setOfTwo();
  LabelledPicture picture;
  set.take(picture, box(4, {0, 0, 1, 1}), false);
  set.classNames.push_back("bolt");
  set.classNumbers.push_back(4);
  set.take(picture, box(4, {0, 0, 1, 1}), false);
  ASSERT_EQ(picture.labels.size(), 1U);
  EXPECT_EQ(picture.labels[0].classPlace, 2U);
  EXPECT_EQ(set.found(), 2U);
}

TEST(LabelSet, RoundingMayReachATinyBitBeyondEachEdge) {
  constexpr double within = 0.9e-5;
  constexpr double beyond = 1.1e-5;
  for (const bool tooFar : {false, true}) {
    const double d = tooFar ? beyond : within;
    const std::string reason = tooFar ? "reaches beyond the picture" : "";
    EXPECT_EQ(reasonFor(box(3, {-d, 0, 0.5, 1})), reason);
    EXPECT_EQ(reasonFor(box(3, {0, -d, 0.5, 0.5})), reason);
    EXPECT_EQ(reasonFor(box(3, {0.5, 0, 0.5 + d, 0.5})), reason);
    EXPECT_EQ(reasonFor(box(3, {0, 0.5, 1, 0.5 + d})), reason);
  }
}

TEST(LabelSet, WhatIsTakenWithinTheToleranceIsNotCut) {
  LabelSet set = setOfTwo();
  LabelledPicture picture;
  set.take(picture, box(3, {-1e-6, 0, 0.5, 1}), true);
  ASSERT_EQ(picture.labels.size(), 1U);
  EXPECT_EQ(picture.labels[0].box.x, -1e-6);
  EXPECT_EQ(set.cut, 0U);
}

TEST(LabelSet, ClippingCutsABoxAtEachEdge) {
  EXPECT_EQ(cut(box(3, {-0.5, 0.25, 1, 0.5})).box, cv::Rect2d(0, 0.25, 0.5, 0.5));
  EXPECT_EQ(cut(box(3, {0.5, 0.25, 1, 0.5})).box, cv::Rect2d(0.5, 0.25, 0.5, 0.5));
  EXPECT_EQ(cut(box(3, {0.25, -0.5, 0.5, 1})).box, cv::Rect2d(0.25, 0, 0.5, 0.5));
  EXPECT_EQ(cut(box(3, {-1e300, -1e300, 1.5e300, 1.5e300})).box, cv::Rect2d(0, 0, 1, 1));
}

TEST(LabelSet, ClippingCutsAnOutlineWhereItCrossesTheEdge) {
  // A triangle whose tip is beyond the left edge: both of its sides cross the edge at its middle.
  const tnv::Label label = cut(outline({{-0.5, 0.5}, {0.5, 0.25}, {0.5, 0.75}}));
  const std::vector<cv::Point2d> expected{{0, 0.375}, {0.5, 0.25}, {0.5, 0.75}, {0, 0.625}};
  EXPECT_EQ(label.outline, expected);
  EXPECT_EQ(label.box, cv::Rect2d(0, 0.25, 0.5, 0.5));
}

TEST(LabelSet, WhatWasCutLiesWithinToTheLastDigit) {
  for (int i = 1; i < 40; ++i) {
    const double beyond = i / 37.0;
    const auto label =
        cut(outline({{-beyond, 0.3}, {0.7, -beyond}, {1 + beyond, 0.6}, {0.4, 1 + beyond}}));
    for (const cv::Point2d& corner : label.outline) {
      EXPECT_TRUE(corner.x >= 0 && corner.x <= 1 && corner.y >= 0 && corner.y <= 1) << corner;
    }
    EXPECT_EQ(label.box, cv::Rect2d(0, 0, 1, 1));
  }
}

TEST(LabelSet, ClippingRejectsWhatLiesOutside) {
  const std::string outside = "lies outside the picture";
  EXPECT_EQ(reasonFor(box(3, {1.5, 0, 0.5, 1}), true), outside);
  EXPECT_EQ(reasonFor(box(3, {0, -1, 1, 0.5}), true), outside);
  EXPECT_EQ(reasonFor(box(3, {1.7e308, 0, 1.7e308, 1}), true), outside);
  EXPECT_EQ(reasonFor(outline({{1.5, 0}, {2, 0}, {2, 1}}), true), outside);
}
