#include "marks/TNVMarkImage.h"

TNVMarkImage::TNVMarkImage(const cv::FileNode& node) : TNVMarkRect(node) {}

int TNVMarkImage::getMinConstructionPoints(bool /*variant*/) const {
  return 1;
}

int TNVMarkImage::getMaxConstructionPoints(bool /*variant*/) const {
  return 1;
}

std::string TNVMarkImage::getTypeName(bool variant) const {
  return variant ? "" : "Image";
}
