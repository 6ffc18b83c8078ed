#include "generation/TNVAugmentRotation.h"

#include <opencv2/imgproc.hpp>

#include "foundation/LargePictures.h"
#include "foundation/XmlStorage.h"
#include "generation/Random.h"

namespace {

// Persisted in task files.
const std::string kRotateKey = "Rotate";
const std::string kRandomKey = "RotateRnd";

using Corners = std::vector<cv::Point2f>;

/// Where the corners of a picture go that is turned clockwise. They are top left, top right, bottom
/// right and bottom left.
Corners turnedCorners(int angle, float width, float height) {
  switch (angle) {
    case 90:
      return {{height, 0}, {height, width}, {0, width}, {0, 0}};
    case 180:
      return {{width, height}, {0, height}, {0, 0}, {width, 0}};
    case 270:
      return {{0, width}, {0, 0}, {height, 0}, {height, width}};
    default:
      return {{0, 0}, {width, 0}, {width, height}, {0, height}};
  }
}

cv::Size turnedSize(int angle, cv::Size size) {
  return angle == 90 || angle == 270 ? cv::Size(size.height, size.width) : size;
}

cv::RotateFlags rotationOf(int angle) {
  if (angle == 90) return cv::ROTATE_90_CLOCKWISE;
  return angle == 180 ? cv::ROTATE_180 : cv::ROTATE_90_COUNTERCLOCKWISE;
}

/// All but so many first rows and columns of the picture.
cv::Mat without(const cv::Mat& picture, cv::Size lines) {
  return picture(cv::Rect(cv::Point(lines), picture.size() - lines));
}

/// The picture as `cv::warpPerspective` turns it between these corners with a reflected border, in
/// a fraction of the time. The corners are the outer ones of the picture, while pixels are counted
/// from 0: against an axis the turn therefore takes the pixels from the one behind the last to the
/// second. So the last one comes twice, by reflection, and the first one is lost.
cv::Mat turned(const cv::Mat& picture, int angle) {
  if (angle != 90 && angle != 180 && angle != 270) return picture.clone();
  const cv::Size lost(angle != 90 && picture.cols > 1 ? 1 : 0,
                      angle != 270 && picture.rows > 1 ? 1 : 0);
  const cv::Size repeated = turnedSize(angle, lost);
  cv::Mat result = tnv::newPicture(turnedSize(angle, picture.size()), picture.type());
  cv::rotate(without(picture, lost), without(result, repeated), rotationOf(angle));
  if (repeated.height > 0) result.row(1).copyTo(result.row(0));
  if (repeated.width > 0) result.col(1).copyTo(result.col(0));
  return result;
}

}  // namespace

std::string TNVAugmentRotation::getName() const {
  return "Rotation";
}

int TNVAugmentRotation::chooseAngle() const {
  if (rotateRnd.empty()) return rotate;
  auto twister = tnv::randomlySeeded();
  return rotateRnd[tnv::drawUpTo(twister, static_cast<std::uint32_t>(rotateRnd.size() - 1))];
}

TNVAugmentSample TNVAugmentRotation::process(const TNVAugmentSample& sample) const {
  // The mark of a special sample is lost on purpose.
  TNVAugmentSample result;
  const int angle = chooseAngle();
  const auto width = static_cast<float>(sample.image.cols);
  const auto height = static_cast<float>(sample.image.rows);
  const cv::Mat turn = cv::getPerspectiveTransform(turnedCorners(0, width, height),
                                                   turnedCorners(angle, width, height));
  result.image = turned(sample.image, angle);
  result.entries = sample.entries;
  for (TNVAugmentEntry& entry : result.entries) {
    // The library does not take an empty list.
    if (!entry.points.empty()) cv::perspectiveTransform(entry.points, entry.points, turn);
  }
  return result;
}

void TNVAugmentRotation::write(cv::FileStorage& storage) const {
  storage << kRotateKey << rotate;
  tnv::writeInts(storage, kRandomKey, rotateRnd);
}

void TNVAugmentRotation::read(const cv::FileNode& node) {
  rotate = tnv::readInt(tnv::child(node, kRotateKey), 0);
  rotateRnd = tnv::readInts(tnv::child(node, kRandomKey));
}
