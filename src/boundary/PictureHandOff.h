#pragma once

#include <opencv2/core.hpp>

namespace tnv {

/// Gives the pixels of a picture out without copying them. The picture must be a header on a member
/// that stays alive. An empty picture gives null and zeros.
inline void handOut(const cv::Mat& picture, unsigned char** data, int* width, int* height,
                    int* channels) {
  *data = picture.empty() ? nullptr : picture.data;
  *width = picture.cols;
  *height = picture.rows;
  *channels = picture.empty() ? 0 : picture.channels();
}

}  // namespace tnv
