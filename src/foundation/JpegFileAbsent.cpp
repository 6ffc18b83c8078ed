#include "foundation/JpegFile.h"

// For builds without the JPEG library: the image library does it all.
namespace tnv {

cv::Mat readPlainJpeg(const std::string& /*path*/, const PictureHead& /*head*/) {
  return {};
}

JpegBytes encodePlainJpeg(const cv::Mat& /*picture*/, int /*quality*/) {
  return {};
}

}  // namespace tnv
