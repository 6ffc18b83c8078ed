#pragma once

#include <string>
#include <vector>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "TNV_SampleBenchNative/WTNVMainProcess.h"
#include "TNV_SampleBenchNative/WTNVProject.h"
#include "project/TNVTrainSet.h"
#include "support/TempDirectory.h"

/// A new project in a fresh directory, with the templates and task trees that ship.
struct BenchProject {
  explicit BenchProject(const std::string& trees = TNV_SOURCE_DIR "augments/") : augments(trees) {
    project.wCreate();
  }

  void add(const std::vector<std::string>& pictures, bool ofOneDirectory = false) {
    project.wAddImagesToImageSet(pictures, std::vector<bool>(pictures.size(), true), "set",
                                 ofOneDirectory);
  }

  std::string augments;
  TempDirectory temp;
  WTNVProject project{"bench", temp.path(), TNV_SOURCE_DIR "platforms/", augments};
};

/// A picture with edges, planes and noise, as costly to pack as a photograph.
inline cv::Mat photograph(cv::Size size, unsigned seed) {
  cv::RNG random(seed);
  cv::Mat picture(size.height / 8, size.width / 8, CV_8UC3);
  random.fill(picture, cv::RNG::UNIFORM, 0, 256);
  cv::resize(picture, picture, size, 0, 0, cv::INTER_CUBIC);
  cv::Mat noise(size, CV_8UC3);
  random.fill(noise, cv::RNG::UNIFORM, 0, 8);
  return picture + noise;
}

/// Writes so many pictures, each made with a seed of its own, and returns their paths.
template <class Make>
std::vector<std::string> writePictures(const TempDirectory& temp, int count, const Make& make) {
  std::vector<std::string> paths;
  for (int i = 0; i < count; ++i) {
    paths.push_back(temp / ("picture_" + std::to_string(i) + ".jpg"));
    cv::imwrite(paths.back(), make(static_cast<unsigned>(i + 1)));
  }
  return paths;
}

inline std::vector<std::string> writePhotographs(const TempDirectory& temp, int count,
                                                 cv::Size size) {
  return writePictures(temp, count, [size](unsigned seed) { return photograph(size, seed); });
}

/// Boxes of which the sides are 2 to 10 per cent of the picture, relative to it. Their numbers have
/// few binary digits, so that both sides of a comparison round alike.
inline std::vector<cv::Rect2d> relativeBoxes(int count) {
  cv::RNG random(7);
  const auto between = [&](int low, int high) { return random.uniform(low, high) / 1024.0; };
  std::vector<cv::Rect2d> boxes;
  for (int i = 0; i < count; ++i) {
    const double left = between(0, 900);
    const double top = between(50, 900);
    boxes.emplace_back(left, top, between(20, 100), between(20, 100));
  }
  return boxes;
}
