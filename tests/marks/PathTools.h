#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "marks/MarkTools.h"
#include "support/Pictures.h"

/// What the tests of lines, points and polylines need. Marks are drawn on a patterned view of 200
/// by 120 pixels, which shows a picture of 1000 by 600.

inline cv::Mat emptyView() {
  return patternedPicture(200, 120);
}

inline cv::Mat viewWith(TNVMark& mark, const TNVTypeMarkStyleSet& style, int info, bool designing) {
  const ThreeClasses classes;
  cv::Mat view = emptyView();
  mark.draw(view, {1000, 600}, style, infoOf(info), classes.list(), designing);
  return view;
}

inline void expectPoints(const TNVMark::Points& expected, const TNVMark::Points& actual) {
  ASSERT_EQ(expected.size(), actual.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_NEAR(expected[i].x, actual[i].x, 1e-12) << "x of point " << i;
    EXPECT_NEAR(expected[i].y, actual[i].y, 1e-12) << "y of point " << i;
  }
}

inline void circleReference(cv::Mat& view, cv::Point centre, const cv::Scalar& colour,
                            int thickness) {
  cv::circle(view, centre, 3, colour, thickness, cv::LINE_AA, 0);
}

inline void lineReference(cv::Mat& view, cv::Point from, cv::Point to, const cv::Scalar& colour,
                          int thickness) {
  cv::line(view, from, to, colour, thickness, cv::LINE_AA, 0);
}

inline void textReference(cv::Mat& view, const std::string& text, cv::Point position,
                          const cv::Scalar& colour) {
  cv::putText(view, text, position, cv::FONT_HERSHEY_COMPLEX, 0.4, colour, 1, cv::LINE_AA, false);
}

/// Collects the pixels of the path and cuts them up: the first dash has `on` pixels beyond its
/// start, each other one more, and it starts with the pixel that ends the gap.
inline void dashedReference(cv::Mat& view, const std::vector<cv::Point>& path,
                            const cv::Scalar& colour, std::size_t on, std::size_t off,
                            int thickness) {
  std::vector<cv::Point> walk;
  for (std::size_t i = 1; i < path.size(); ++i) {
    cv::LineIterator it(view, path[i - 1], path[i], 8, false);
    for (int n = 0; n < it.count; ++n, ++it)
      walk.push_back(it.pos());
  }
  std::size_t start = 0;
  std::size_t end = 0;
  for (std::size_t next = 0; next < walk.size(); next = end + off + 1) {
    // A dash of a single pixel has not begun: the one before is drawn again.
    if (next == 0 || next + 1 < walk.size()) {
      start = next;
      end = std::min(start + on + (start == 0 ? 0 : 1), walk.size() - 1);
    }
    lineReference(view, walk[start], walk[end], colour, thickness);
    if (next > end) break;
  }
}

/// The pens of the states, and what a mark has to be for them.
struct PenState {
  std::string style;
  bool hovered;
  bool selected;
  std::vector<int> classIdx;
  cv::Scalar colour;
  int thickness;
};

inline const std::vector<PenState>& penStates() {
  static const std::vector<PenState> states{
      {"White", false, false, {12}, {255, 255, 255}, 1},
      {"Black", false, false, {}, {0, 0, 0}, 1},
      {"White", true, false, {12}, {0, 255, 0}, 2},
      {"White", false, true, {12}, {0, 0, 255}, 1},
      {"White", true, true, {12}, {0, 0, 255}, 1},
      {"Colored", false, false, {12}, {100, 101, 102}, 1},
      {"Colored", false, false, {12, 11}, {55, 60, 66}, 0},
      // No class that is known: the thickness is negative, which fills circles.
      {"Colored", false, false, {99}, {0, 0, 0}, cv::FILLED}};
  return states;
}

inline void take(TNVMark& mark, const PenState& state) {
  mark.hovered = state.hovered;
  mark.selected = state.selected;
  mark.classIdx = state.classIdx;
}

inline cv::Vec3b pixelOf(const cv::Scalar& colour) {
  return {static_cast<uchar>(colour[0]), static_cast<uchar>(colour[1]),
          static_cast<uchar>(colour[2])};
}
