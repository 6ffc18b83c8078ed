#pragma once

#include "generation/TNVAugment.h"

/// Turns the picture and the entries by quarter turns; another angle changes nothing.
class TNVAugmentRotation final : public TNVAugment {
 public:
  std::string getName() const override;
  TNVAugmentSample process(const TNVAugmentSample& sample) const override;
  void write(cv::FileStorage& storage) const override;
  void read(const cv::FileNode& node) override;

  int rotate = 0;              ///< degrees
  std::vector<int> rotateRnd;  ///< degrees to draw from; if there are any, `rotate` does not count

 private:
  int chooseAngle() const;
};
