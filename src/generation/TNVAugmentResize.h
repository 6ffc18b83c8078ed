#pragma once

#include "generation/TNVAugment.h"

/// Scales the picture and the entries: to a random or fixed length of the longer side if there is
/// one, else to a fixed size.
class TNVAugmentResize final : public TNVAugment {
 public:
  std::string getName() const override;
  TNVAugmentSample process(const TNVAugmentSample& sample) const override;
  void write(cv::FileStorage& storage) const override;
  void read(const cv::FileNode& node) override;

  int maxLength = 0;
  int maxLengthRndMin = 0;
  int maxLengthRndMax = 0;
  cv::Size targetSize{512, 512};

 private:
  int chooseLength() const;
};
