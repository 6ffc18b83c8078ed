#pragma once

#include "marks/TNVMark.h"

/// A straight line between two points.
class TNVMarkLine : public TNVMark {
 public:
  TNVMarkLine();
  TNVMarkLine(const TNVMarkLine&) = default;
  TNVMarkLine(cv::Point2d a, cv::Point2d b);
  explicit TNVMarkLine(const cv::FileNode& node);

  void write(cv::FileStorage& storage) override;
  void setRelSize(cv::Point2d centre, cv::Point2d newSize, cv::Size imageSize) override;
  cv::Point2d getRelSize(cv::Size imageSize) const override;
  int getMinConstructionPoints(bool variant) const override;
  int getMaxConstructionPoints(bool variant) const override;
  void draw(cv::Mat& view, cv::Size imageSize, const TNVTypeMarkStyleSet& style,
            const TNVTypeDrawInfo& info, const Classes& classes, bool designing) override;
  bool isMouseOver(cv::Point2d point, cv::Size imageSize,
                   double* distance = nullptr) const override;
  std::string getTypeName(bool variant) const override;
  cv::Rect getPixelRect(cv::Size imageSize) const override;
  Points getContour(cv::Size imageSize) const override;
  std::vector<std::string> getPOIModes() const override;
  bool getPOIModeSupportsValue(const std::string& mode) const override;
  Points getPOIsGenerated(const std::string& mode, cv::Size imageSize, int count) const override;
  int getPOICountForSize(cv::Size imageSize) const override;

  /// The ends. (-1, -1) while there is none.
  cv::Point2d pointA{-1.0, -1.0};
  cv::Point2d pointB{-1.0, -1.0};

 private:
  Points ends() const;
};
