#pragma once

#include <memory>
#include <string>
#include <vector>

#include "BenchProject.h"
#include "marks/TNVMarkCircle.h"
#include "marks/TNVMarkEllipse.h"
#include "marks/TNVMarkLine.h"
#include "marks/TNVMarkPoint.h"
#include "marks/TNVMarkPolyLine.h"
#include "marks/TNVMarkRect.h"

inline const std::string kBoxesOnly = "boxes";
inline const std::string kMixedKinds = "mixed marks";

/// A mark of the kinds in turn, within the box or about it.
inline std::unique_ptr<TNVMark> mixedMark(int number, const cv::Rect2d& box) {
  const cv::Point2d centre = (box.tl() + box.br()) * 0.5;
  const cv::Point2d right(box.br().x, centre.y);
  switch (number % 6) {
    case 1:
      return std::make_unique<TNVMarkPoint>(centre);
    case 2:
      return std::make_unique<TNVMarkCircle>(centre, right);
    case 3:
      return std::make_unique<TNVMarkLine>(box.tl(), box.br());
    case 4:
      return std::make_unique<TNVMarkPolyLine>(
          TNVMark::Points{box.tl(), right, {centre.x, box.br().y}}, true);
    case 5:
      return std::make_unique<TNVMarkEllipse>(centre, right, cv::Point2d(centre.x, box.y));
    default:
      return std::make_unique<TNVMarkRect>(box.tl(), box.br(), false);
  }
}

/// So many marks, of all kinds or rectangles alone, of the class 0.
inline std::vector<std::unique_ptr<TNVMark>> benchMarks(const std::string& kinds, int count) {
  std::vector<std::unique_ptr<TNVMark>> marks;
  for (const cv::Rect2d& box : relativeBoxes(count)) {
    marks.push_back(mixedMark(kinds == kMixedKinds ? static_cast<int>(marks.size()) : 0, box));
    marks.back()->classIdx = {0};
  }
  return marks;
}

inline cv::Point2d inPixels(cv::Point2d relative, cv::Size size) {
  return {size.width * relative.x, size.height * relative.y};
}

/// The rectangle around an ellipse of which the half axes lie along the sides of the picture.
inline cv::RotatedRect ellipseIn(const TNVMarkEllipse& mark, cv::Size size) {
  const cv::Point2d centre = inPixels(mark.center, size);
  const cv::Size2d halfAxes(inPixels(mark.pointA, size).x - centre.x,
                            centre.y - inPixels(mark.pointB, size).y);
  return {centre, halfAxes * 2.0, 0.0F};
}
