#include "generation/TNVAugmentResize.h"

#include <opencv2/imgproc.hpp>

#include "foundation/LargePictures.h"
#include "foundation/XmlStorage.h"
#include "generation/Random.h"
#include "marks/TNVContour.h"

namespace {

// Persisted in task files.
const std::string kTargetSizeKey = "TargetSize";
const std::string kMaxLengthKey = "MaxLength";
const std::string kRandomMinKey = "MaxLengthRndMin";
const std::string kRandomMaxKey = "MaxLengthRndMax";

/// No picture for a network comes near; a damaged size must not fill the memory.
constexpr std::int64_t kMostPixels = std::int64_t{1} << 28;

/// Returns the factors of the columns and of the rows.
cv::Point2d resizeToSize(const cv::Mat& source, cv::Mat& destination, cv::Size size) {
  if (std::int64_t{size.width} * size.height > kMostPixels) {
    CV_Error(cv::Error::StsOutOfRange, "The target size is too large");
  }
  // Of no area, a size is left for the library to refuse.
  if (!size.empty()) destination = tnv::newPicture(size, source.type());
  cv::resize(source, destination, size, 0.0, 0.0, cv::INTER_CUBIC);
  return {static_cast<double>(size.width) / source.cols,
          static_cast<double>(size.height) / source.rows};
}

}  // namespace

std::string TNVAugmentResize::getName() const {
  return "Resize";
}

int TNVAugmentResize::chooseLength() const {
  if (maxLengthRndMax < 1) return std::max(maxLength, 0);
  auto twister = tnv::randomlySeeded();
  return tnv::drawBetween(twister, maxLengthRndMin, maxLengthRndMax);
}

TNVAugmentSample TNVAugmentResize::process(const TNVAugmentSample& sample) const {
  // The mark of a special sample is lost on purpose.
  TNVAugmentSample result;
  const cv::Mat& image = sample.image;
  const int length = chooseLength();
  cv::Point2d factors;
  if (length > 0) {
    factors.x = TNVContour::resizeToLength(image, result.image, length, image.cols > image.rows);
    factors.y = factors.x;
  } else {
    factors = resizeToSize(image, result.image, targetSize);
  }
  result.entries = sample.entries;
  for (TNVAugmentEntry& entry : result.entries) {
    for (cv::Point2d& point : entry.points)
      point = {point.x * factors.x, point.y * factors.y};
  }
  return result;
}

void TNVAugmentResize::write(cv::FileStorage& storage) const {
  tnv::writeSize(storage, kTargetSizeKey, targetSize);
  storage << kMaxLengthKey << maxLength;
  storage << kRandomMinKey << maxLengthRndMin;
  storage << kRandomMaxKey << maxLengthRndMax;
}

void TNVAugmentResize::read(const cv::FileNode& node) {
  targetSize = tnv::readSize(tnv::child(node, kTargetSizeKey));
  maxLength = tnv::readInt(tnv::child(node, kMaxLengthKey), 0);
  maxLengthRndMin = tnv::readInt(tnv::child(node, kRandomMinKey), 0);
  maxLengthRndMax = tnv::readInt(tnv::child(node, kRandomMaxKey), 0);
}
