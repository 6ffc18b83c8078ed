#include "foundation/PictureFile.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "foundation/Files.h"
#include "foundation/JpegFile.h"
#include "foundation/PictureHead.h"

namespace tnv {

namespace {

/// What the image library takes if it is not told.
constexpr int kUsualQuality = 95;

bool isNamedJpeg(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return extension == ".jpg" || extension == ".jpeg" || extension == ".jpe";
}

/// Rows and columns that the JPEG libraries take.
constexpr int kLongestJpegSide = 65500;

/// The image library would throw, with a text that it makes in a buffer for all threads.
bool isTooLongForJpeg(const cv::Mat& picture) {
  return !picture.empty() && std::max(picture.cols, picture.rows) > kLongestJpegSide;
}

/// Empty for a picture that the format does not take.
std::vector<uchar> encoded(const std::string& path, const cv::Mat& picture,
                           const std::vector<int>& parameters) {
  CV_Assert(!picture.empty());
  if (!cv::haveImageWriter(path))
    CV_Error(cv::Error::StsBadArg, "no format of pictures is known that '" + path + "' names");
  std::vector<uchar> bytes;
  try {
    cv::imencode(path.substr(path.rfind('.')), picture, bytes, parameters);
  } catch (const cv::Exception&) {
    bytes.clear();
  }
  return bytes;
}

std::string_view asContent(const unsigned char* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

}  // namespace

cv::Mat readPicture(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return {};
  try {
    const PictureHead head = readPictureHead(path);
    // The image library might find a size where the head tells none, and claim the memory for it.
    if (head.isHollow || (head.isJpeg && head.size.empty())) return {};
    const cv::Mat picture = readPlainJpeg(path, head);
    return picture.empty() ? cv::imread(path, cv::IMREAD_COLOR) : picture;
  } catch (const std::exception&) {
    return {};
  }
}

PictureBytes encodePicture(const std::string& path, const cv::Mat& picture,
                           std::optional<int> jpegQuality) {
  const int quality = jpegQuality.value_or(kUsualQuality);
  if (isNamedJpeg(path)) {
    if (isTooLongForJpeg(picture)) return {};
    JpegBytes bytes = encodePlainJpeg(picture, quality);
    const std::shared_ptr<unsigned char[]> owner = std::move(bytes.data);
    if (bytes.size > 0) return {asContent(owner.get(), bytes.size), owner};
  }
  const auto owner = std::make_shared<const std::vector<uchar>>(
      encoded(path, picture, {cv::IMWRITE_JPEG_QUALITY, quality}));
  return {asContent(owner->data(), owner->size()), owner};
}

bool writePicture(const std::string& path, const PictureBytes& bytes) {
  return !bytes.content.empty() && writeFile(path, bytes.content);
}

bool writePicture(const std::string& path, const cv::Mat& picture, std::optional<int> jpegQuality) {
  return writePicture(path, encodePicture(path, picture, jpegQuality));
}

}  // namespace tnv
