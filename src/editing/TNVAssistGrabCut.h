#pragma once

#include "editing/TNVAssist.h"

/// Segments a small copy of the mark's neighbourhood into object and ground.
class TNVAssistGrabCut final : public TNVAssist {
 public:
  TNVAssistGrabCut();
  Points apply(const cv::Rect2d& rect, const cv::Mat& image, const Points& contour) const override;
};

namespace tnv {

/// The outline of the region with most pixels in a binary mask, where pixels that touch at a corner
/// belong together; of two equal ones that with the lower label. Empty without a region, and for
/// one that encloses no area.
std::vector<cv::Point> largestRegionOutline(const cv::Mat& mask);

}  // namespace tnv
