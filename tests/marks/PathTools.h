#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "marks/MarkTools.h"
#include "support/Pictures.h"

/// What the tests of all kinds but rectangles need. Marks are drawn on a patterned view of 200 by
/// 120 pixels, which shows a picture of 1000 by 600 unless the test says otherwise.

inline cv::Mat emptyView() {
  return patternedPicture(200, 120);
}

inline cv::Mat viewWith(TNVMark& mark, const TNVTypeMarkStyleSet& style, int info, bool designing,
                        cv::Size imageSize = {1000, 600}) {
  const ThreeClasses classes;
  cv::Mat view = emptyView();
  mark.draw(view, imageSize, style, infoOf(info), classes.list(), designing);
  return view;
}

inline void expectPoints(const TNVMark::Points& expected, const TNVMark::Points& actual,
                         double tolerance = 1e-12) {
  ASSERT_EQ(expected.size(), actual.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_NEAR(expected[i].x, actual[i].x, tolerance) << "x of point " << i;
    EXPECT_NEAR(expected[i].y, actual[i].y, tolerance) << "y of point " << i;
  }
}

inline void expectPoint(cv::Point2d expected, cv::Point2d actual, double tolerance = 1e-12) {
  expectPoints({expected}, {actual}, tolerance);
}

inline std::vector<cv::Point> roundedPath(const TNVMark::Points& points) {
  std::vector<cv::Point> path;
  for (const cv::Point2d& point : points)
    path.emplace_back(cvRound(point.x), cvRound(point.y));
  return path;
}

/// The points at whole multiples of the same share of the path's length, both ends included.
inline TNVMark::Points evenlyAlong(const TNVMark::Points& path, int count) {
  std::vector<double> walked{0.0};
  for (std::size_t i = 1; i < path.size(); ++i)
    walked.push_back(walked.back() + cv::norm(path[i] - path[i - 1]));
  TNVMark::Points points;
  for (int i = 0; i < count; ++i) {
    const double target = walked.back() * i / (count - 1);
    std::size_t edge = 1;
    while (edge + 1 < path.size() && walked[edge] < target)
      ++edge;
    const double share = (target - walked[edge - 1]) / (walked[edge] - walked[edge - 1]);
    points.push_back(path[edge - 1] + (path[edge] - path[edge - 1]) * share);
  }
  return points;
}

inline void circleReference(cv::Mat& view, cv::Point centre, const cv::Scalar& colour,
                            int thickness) {
  cv::circle(view, centre, 3, colour, thickness, cv::LINE_AA, 0);
}

inline void lineReference(cv::Mat& view, cv::Point from, cv::Point to, const cv::Scalar& colour,
                          int thickness) {
  cv::line(view, from, to, colour, thickness, cv::LINE_AA, 0);
}

/// POI boxes of 10 by 12 pixels, with thickness 1.
inline void boxReference(cv::Mat& view, const std::vector<cv::Point>& corners,
                         const cv::Scalar& colour) {
  for (const cv::Point& corner : corners)
    cv::rectangle(view, cv::Rect(corner, cv::Size(10, 12)), colour, 1, cv::LINE_AA, 0);
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

inline std::string nameOf(const PenState& state, bool designing, bool filled) {
  return state.style + (state.hovered ? ", hovered" : "") + (state.selected ? ", selected" : "") +
         (designing ? ", designing" : "") + (filled ? ", filled" : "");
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
