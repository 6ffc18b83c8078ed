#pragma once

#include <opencv2/core.hpp>

namespace tnv {

/// Colours the pixels of the box that the mask covers: three fifths of the old and two fifths of
/// the new, each channel rounded down before they are added. The box lies in the view, which has
/// three channels of bytes; the mask has its size, and holds 0 or 255.
void blend(cv::Mat& view, const cv::Rect& box, const cv::Mat& mask, const cv::Vec3b& filling);

}  // namespace tnv
