#include "generation/TNVAugmentDefault.h"

std::string TNVAugmentDefault::getName() const {
  return "Default";
}

TNVAugmentSample TNVAugmentDefault::process(const TNVAugmentSample& sample) const {
  return sample;
}

void TNVAugmentDefault::write(cv::FileStorage&) const {}

void TNVAugmentDefault::read(const cv::FileNode&) {}
