#include "foundation/PictureFile.h"

#include <filesystem>
#include <vector>

#include <opencv2/imgcodecs.hpp>

namespace tnv {

cv::Mat readPicture(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return {};
  try {
    return cv::imread(path, cv::IMREAD_COLOR);
  } catch (const std::exception&) {
    return {};
  }
}

bool writePicture(const std::string& path, const cv::Mat& picture, std::optional<int> jpegQuality) {
  std::vector<int> parameters;
  if (jpegQuality) parameters = {cv::IMWRITE_JPEG_QUALITY, *jpegQuality};
  return cv::imwrite(path, picture, parameters);
}

}  // namespace tnv
