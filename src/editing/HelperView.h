#pragma once

#include <opencv2/core.hpp>

#include "editing/TNVType.h"

/// The magnifier beside the picture.
namespace tnv {

struct HelperView {
  TNVTypeHelperMode mode;

  /// Pixels of the magnifier per pixel of the picture.
  double zoom = 2.0;
  int windowWidth = 256;
  int windowHeight = 256;
  bool showCross = true;

  /// What was handed out last; a front end reads its pixels.
  cv::Mat image;
};

/// What the magnifier shows around `centre`, a pixel of `source`; black outside the source. A zoom
/// or a window size that leaves nothing to show, or is out of all proportion to the source, throws
/// a `cv::Exception`.
cv::Mat renderHelperView(const cv::Mat& source, cv::Point centre, const HelperView& view);

}  // namespace tnv
