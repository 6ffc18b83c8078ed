#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace tnv {

/// What the head of a PNG, JPEG, JPEG 2000 or BMP file tells, whatever the file is called.
struct PictureHead {
  bool isJpeg = false;

  /// As the pixels lie. Empty for other files, and if the head does not tell.
  cv::Size size;

  /// Whether no picture of that size, gone through as often as the file demands, can be in so few
  /// bytes: the file is cut, or made to fill the memory or the time.
  bool isHollow = false;

  /// Whether a turn is noted, or cannot be ruled out.
  bool mayBeTurned = true;
};

/// Of what is no regular file nothing is read.
PictureHead readPictureHead(const std::string& path);

/// The size in which the picture is seen, from the head of the file where that tells it, or else by
/// reading the picture. Empty for a file that is no picture.
cv::Size pictureSize(const std::string& path);

}  // namespace tnv
