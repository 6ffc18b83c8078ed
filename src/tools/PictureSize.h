#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace tnv {

/// The size that reading the picture would give, from the head of the file where that tells it, or
/// else by reading the picture. Empty for a file that is no picture.
cv::Size pictureSize(const std::string& path);

/// The size that the head of a PNG or JPEG file tells. Empty for other files, and for those that
/// may have to be turned before they are seen.
cv::Size pictureSizeFromHead(const std::string& path);

}  // namespace tnv
