#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include <opencv2/core.hpp>

#include "foundation/PictureHead.h"

/// JPEG by its own library, without what the image library does around it. What is not plain is
/// left to that one, so that the outcome is always the same.
namespace tnv {

/// The picture of a file with this head, with exactly the pixels of `cv::imread` in colour mode.
/// Empty for every file of which that cannot be promised: no JPEG, four colours, turned, damaged,
/// or larger than the image library takes.
cv::Mat readPlainJpeg(const std::string& path, const PictureHead& head);

struct JpegBytes {
  std::unique_ptr<unsigned char[]> data;
  std::size_t size = 0;
};

/// The bytes of the file that `cv::imwrite` would write, unless the environment has variables with
/// which the JPEG library is tried out. Of size 0 for a picture that is not 8-bit
/// blue, green, red, or that this cannot encode.
JpegBytes encodePlainJpeg(const cv::Mat& picture, int quality);

}  // namespace tnv
