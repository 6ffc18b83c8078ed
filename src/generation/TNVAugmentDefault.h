#pragma once

#include "generation/TNVAugment.h"

/// Passes the sample on as it is.
class TNVAugmentDefault final : public TNVAugment {
 public:
  std::string getName() const override;
  TNVAugmentSample process(const TNVAugmentSample& sample) const override;
  void write(cv::FileStorage& storage) const override;
  void read(const cv::FileNode& node) override;
};
