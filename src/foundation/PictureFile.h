#pragma once

#include <optional>
#include <string>

#include <opencv2/core.hpp>

/// The one adapter to picture files.
namespace tnv {

/// The picture in colour: 8-bit, blue, green, red. Empty for what is no regular file (reading a
/// pipe might never end), and for what cannot be read, PNG, JPEG and BMP out of all proportion
/// among it.
cv::Mat readPicture(const std::string& path);

/// Writes the picture in the format that the path's extension names; a JPEG without a quality gets
/// the usual one. False, and no half file, for what cannot be written; a format that nobody writes,
/// and a picture without pixels, throw a `cv::Exception`.
bool writePicture(const std::string& path, const cv::Mat& picture,
                  std::optional<int> jpegQuality = std::nullopt);

}  // namespace tnv
