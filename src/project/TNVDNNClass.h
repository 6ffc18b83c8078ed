#pragma once

#include <string>

#include <opencv2/core.hpp>

/// A label that a network is to learn.
class TNVDNNClass {
 public:
  explicit TNVDNNClass(int idx) : uniqueIdx(idx) {}

  int uniqueIdx;  ///< identity within the project, never changes
  std::string name = "Default DNN Class";
  int dnnId = -1;  ///< the class's number towards the network
  std::string samplePath;
  std::string comment;
  cv::Mat sampleImage;
  cv::Scalar color{35, 196, 157};  ///< blue, green, red
};
