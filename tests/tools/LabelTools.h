#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/LabelSet.h"

/// What tests of the formats of labels look at.

/// "name of the picture: number of labels".
inline std::vector<std::string> picturesIn(const tnv::LabelSet& set) {
  std::vector<std::string> texts;
  for (const auto& picture : set.pictures)
    texts.push_back(std::filesystem::path(picture.path).filename().string() + ": " +
                    std::to_string(picture.labels.size()));
  return texts;
}

/// The same with the path of the picture below a directory.
inline std::vector<std::string> pictures(const tnv::LabelSet& set, const std::string& root) {
  std::vector<std::string> texts;
  for (const auto& picture : set.pictures)
    texts.push_back(std::filesystem::path(picture.path).lexically_relative(root).generic_string() +
                    ": " + std::to_string(picture.labels.size()));
  return texts;
}

/// "name of the file:line: reason".
inline std::vector<std::string> rejectionsIn(const tnv::LabelSet& set) {
  std::vector<std::string> texts;
  for (const auto& each : set.rejections.all())
    texts.push_back(std::filesystem::path(each.file).filename().string() + ":" +
                    std::to_string(each.line) + ": " + each.reason);
  return texts;
}

/// A set of two pictures of 640 by 480 pixels with a box and an outline that are no whole pixels.
inline tnv::LabelSet sampleSet(const std::string& first, const std::string& second) {
  tnv::LabelSet set;
  set.classNames = {"screw", "a & \"b\" <ü>"};
  set.classNumbers = {0, 1};
  tnv::LabelledPicture a{first, "", {640, 480}, {}};
  a.labels.push_back({0, {0.1, 0.2, 1.0 / 3, 1.0 / 7}, {}, 0});
  a.labels.push_back({1, {0.0, 0.0, 1.0, 1.0}, {}, 0});
  const std::vector<cv::Point2d> outline{{0.1, 0.1}, {0.7, 1.0 / 3}, {0.3, 0.9}};
  tnv::LabelledPicture b{second, "", {640, 480}, {}};
  b.labels.push_back({1, tnv::boxOf(outline), outline, 0});
  set.pictures = {a, b};
  return set;
}

/// The largest distance of an edge of the box from where it was, in pixels.
inline double moved(const cv::Rect2d& from, const cv::Rect2d& to, cv::Size size) {
  const cv::Point2d begin = from.tl() - to.tl();
  const cv::Point2d end = from.br() - to.br();
  return std::max({std::abs(begin.x) * size.width, std::abs(end.x) * size.width,
                   std::abs(begin.y) * size.height, std::abs(end.y) * size.height});
}

/// While it lives, the file system holds the rights of others against this process, even if the
/// system's own user runs it.
class WithoutRights {
 public:
  WithoutRights() : before(geteuid()) {
    constexpr uid_t nobody = 65534;
    isOther = before == 0 && seteuid(nobody) == 0;
  }
  ~WithoutRights() {
    if (isOther && seteuid(before) != 0) std::abort();
  }
  WithoutRights(const WithoutRights&) = delete;
  WithoutRights& operator=(const WithoutRights&) = delete;

 private:
  uid_t before;
  bool isOther = false;
};
