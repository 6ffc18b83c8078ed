#pragma once

#include <opencv2/core.hpp>

namespace tnv {

/// Hands a picture out without a copy: the pixels stay those of the picture. An empty one gives
/// null and zeros.
inline void handOutPicture(const cv::Mat& picture, unsigned char** data, int* width, int* height,
                           int* channels) {
  const bool empty = picture.empty();
  *data = empty ? nullptr : picture.data;
  *width = empty ? 0 : picture.cols;
  *height = empty ? 0 : picture.rows;
  *channels = empty ? 0 : picture.channels();
}

}  // namespace tnv
