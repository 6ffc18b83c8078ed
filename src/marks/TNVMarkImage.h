#pragma once

#include "marks/TNVMarkRect.h"

/// A box that stands for the whole picture. It is a kind of its own only until a train set adopts
/// it, which makes it a plain rectangle; its type text is a rectangle's from the start.
class TNVMarkImage : public TNVMarkRect {
 public:
  TNVMarkImage() = default;
  explicit TNVMarkImage(const cv::FileNode& node);

  int getMinConstructionPoints(bool variant) const override;
  int getMaxConstructionPoints(bool variant) const override;
  std::string getTypeName(bool variant) const override;
};
