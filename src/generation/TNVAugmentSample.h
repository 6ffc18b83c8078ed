#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

/// A region to be learned, in pixels of its sample's picture.
struct TNVAugmentEntry {
  std::vector<cv::Point2d> points;
  int classIndex = 0;  ///< number of the class in the output
  std::string gen;     ///< "ROI": the mark's own box, "POI": the box around a point of interest
  std::string form;    ///< kind of the mark
};

/// What passes from a train set through the task tree to the generator.
struct TNVAugmentSample {
  cv::Mat image;  ///< may share its pixels with the train set
  std::vector<TNVAugmentEntry> entries;
  bool special = false;
};
