#pragma once

#include "generation/TNVAugment.h"

/// Drops entries. The picture stays, also when no entry does.
class TNVAugmentFilter final : public TNVAugment {
 public:
  std::string getName() const override;
  TNVAugmentSample process(const TNVAugmentSample& sample) const override;
  void write(cv::FileStorage& storage) const override;
  void read(const cv::FileNode& node) override;

  /// An entry is kept if both lists hold its value: empty lists keep nothing.
  std::vector<std::string> allowedGens;
  std::vector<std::string> allowedForms;
};
