#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <opencv2/core.hpp>

/// The one adapter to picture files.
namespace tnv {

/// The picture in colour: 8-bit, blue, green, red. Empty for what is no regular file (reading a
/// pipe might never end), and for what cannot be read, PNG, JPEG, JPEG 2000 and BMP out of all
/// proportion among it.
cv::Mat readPicture(const std::string& path);

/// The content of a picture file. Copies share it.
struct PictureBytes {
  std::string_view content;
  std::shared_ptr<const void> owner;
};

/// The picture in the format that the path's extension names, empty if it does not take the
/// picture; a JPEG without a quality gets the usual one. A format that nobody writes, and a picture
/// without pixels, throw a `cv::Exception`.
PictureBytes encodePicture(const std::string& path, const cv::Mat& picture,
                           std::optional<int> jpegQuality = std::nullopt);

/// False, and no half file, for what cannot be written, an empty content among it.
bool writePicture(const std::string& path, const PictureBytes& bytes);

/// Encodes and writes.
bool writePicture(const std::string& path, const cv::Mat& picture,
                  std::optional<int> jpegQuality = std::nullopt);

}  // namespace tnv
