#pragma once

#include "marks/TNVMark.h"

/// The circle in pixels, kept as its centre and a point on its rim, so that it stays one on a
/// picture that is not square.
class TNVMarkCircle : public TNVMark {
 public:
  TNVMarkCircle();
  TNVMarkCircle(const TNVMarkCircle&) = default;
  TNVMarkCircle(cv::Point2d centre, cv::Point2d rim);

  /// Fitted to relative points of the rim. Where they give no circle, what says so is kept in
  /// place of one; without any point the mark stays as it is made by default.
  TNVMarkCircle(const Points& rimPoints, cv::Size imageSize);
  explicit TNVMarkCircle(const cv::FileNode& node);

  void write(cv::FileStorage& storage) override;

  /// Takes the width alone; the rim point keeps its direction.
  void setRelSize(cv::Point2d centre, cv::Point2d newSize, cv::Size imageSize) override;

  /// (0, 0) without a rim point.
  cv::Point2d getRelSize(cv::Size imageSize) const override;
  int getMinConstructionPoints(bool variant) const override;
  int getMaxConstructionPoints(bool variant) const override;
  void draw(cv::Mat& view, cv::Size imageSize, const TNVTypeMarkStyleSet& style,
            const TNVTypeDrawInfo& info, const Classes& classes, bool designing) override;

  /// The rim belongs to the circle. `distance` is to the centre, and not told without a rim point.
  bool isMouseOver(cv::Point2d point, cv::Size imageSize,
                   double* distance = nullptr) const override;
  std::string getTypeName(bool variant) const override;
  cv::Rect getPixelRect(cv::Size imageSize) const override;
  Points getContour(cv::Size imageSize) const override;
  std::vector<std::string> getPOIModes() const override;
  bool getPOIModeSupportsValue(const std::string& mode) const override;
  Points getPOIsGenerated(const std::string& mode, cv::Size imageSize, int count) const override;
  int getPOICountForSize(cv::Size imageSize) const override;

  /// Relative. Only the first point counts; it lies on the rim.
  Points radius;

 private:
  /// In pixels of a picture of that size. Not to be called without a rim point.
  double pixelRadius(cv::Size imageSize) const;

  /// Points along the rim in pixels; empty without a rim point.
  Points rimIn(cv::Size imageSize, int count) const;
};
