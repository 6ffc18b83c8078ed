#pragma once

#include "marks/TNVMark.h"

/// A single location, which is the mark's centre.
class TNVMarkPoint : public TNVMark {
 public:
  TNVMarkPoint();
  TNVMarkPoint(const TNVMarkPoint&) = default;
  explicit TNVMarkPoint(cv::Point2d centre);
  explicit TNVMarkPoint(const cv::FileNode& node);

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
};
