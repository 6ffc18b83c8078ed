#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

/// Improves a mark under design by looking at the picture.
class TNVAssist {
 public:
  using Points = std::vector<cv::Point2d>;

  /// The object's outline as relative points; empty if nothing usable was found. `rect` is the
  /// mark's relative box, `image` the whole picture, `contour` the mark's outline in pixels, empty
  /// for a mark without area. A box of which nothing lies on the picture throws a `cv::Exception`,
  /// as do pixels among which object and ground cannot be told apart at all.
  virtual Points apply(const cv::Rect2d& rect, const cv::Mat& image,
                       const Points& contour) const = 0;

  std::string name = "none";

 protected:
  TNVAssist() = default;
  explicit TNVAssist(std::string assistName) : name(std::move(assistName)) {}
  TNVAssist(const TNVAssist&) = default;
  TNVAssist& operator=(const TNVAssist&) = default;
  ~TNVAssist() = default;
};
