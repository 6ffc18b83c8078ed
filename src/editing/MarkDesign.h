#pragma once

#include <memory>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

class TNVMark;

/// How marks are made from points that a person gives one after the other.
namespace tnv {

/// The mark of that form through the relative points; null if the form is unknown or the points are
/// too few or too many for it.
std::unique_ptr<TNVMark> buildMark(const std::string& form, const std::vector<cv::Point2d>& points,
                                   cv::Size imageSize);

/// The fewest and the most points that a form is constructed from; 0 for an unknown form.
int minConstructionPoints(const std::string& form);
int maxConstructionPoints(const std::string& form);

}  // namespace tnv
