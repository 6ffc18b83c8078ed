#pragma once

#include "marks/TNVMark.h"

/// The ellipse at any rotation, kept as its centre and one point for each half axis.
class TNVMarkEllipse : public TNVMark {
 public:
  TNVMarkEllipse();
  TNVMarkEllipse(const TNVMarkEllipse&) = default;
  TNVMarkEllipse(cv::Point2d centre, cv::Point2d a, cv::Point2d b);

  /// Fitted to relative points of the rim. Where they give no ellipse, the mark stays as it is made
  /// by default.
  TNVMarkEllipse(const Points& rimPoints, cv::Size imageSize);
  explicit TNVMarkEllipse(const cv::FileNode& node);

  void write(cv::FileStorage& storage) override;

  /// Moves the ellipse along with its centre; its size stays.
  void setRelSize(cv::Point2d centre, cv::Point2d newSize, cv::Size imageSize) override;

  /// Of the upright box around the ellipse.
  cv::Point2d getRelSize(cv::Size imageSize) const override;
  int getMinConstructionPoints(bool variant) const override;
  int getMaxConstructionPoints(bool variant) const override;
  void draw(cv::Mat& view, cv::Size imageSize, const TNVTypeMarkStyleSet& style,
            const TNVTypeDrawInfo& info, const Classes& classes, bool designing) override;

  /// A point hits from a little outside of the rim on. `distance` is to the centre, and told only
  /// for a hit.
  bool isMouseOver(cv::Point2d point, cv::Size imageSize,
                   double* distance = nullptr) const override;
  std::string getTypeName(bool variant) const override;
  cv::Rect getPixelRect(cv::Size imageSize) const override;
  Points getContour(cv::Size imageSize) const override;
  std::vector<std::string> getPOIModes() const override;
  bool getPOIModeSupportsValue(const std::string& mode) const override;
  Points getPOIsGenerated(const std::string& mode, cv::Size imageSize, int count) const override;
  int getPOICountForSize(cv::Size imageSize) const override;

  /// The end of the first half axis, which gives the rotation too.
  cv::Point2d pointA;

  /// Only its distance from the centre counts, as the second half axis.
  cv::Point2d pointB;
};
