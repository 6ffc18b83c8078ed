#include "foundation/PictureFile.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
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

bool writeBytes(const std::string& path, const unsigned char* data, std::size_t size) {
  return size > 0 && writeFile(path, {reinterpret_cast<const char*>(data), size});
}

}  // namespace

cv::Mat readPicture(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return {};
  const PictureHead head = readPictureHead(path);
  // The image library might find a size where the head tells none, and claim the memory for it.
  if (head.isHollow || (head.isJpeg && head.size.empty())) return {};
  try {
    const cv::Mat picture = readPlainJpeg(path, head);
    return picture.empty() ? cv::imread(path, cv::IMREAD_COLOR) : picture;
  } catch (const std::exception&) {
    return {};
  }
}

bool writePicture(const std::string& path, const cv::Mat& picture, std::optional<int> jpegQuality) {
  const int quality = jpegQuality.value_or(kUsualQuality);
  if (isNamedJpeg(path)) {
    const JpegBytes bytes = encodePlainJpeg(picture, quality);
    if (bytes.size > 0) return writeBytes(path, bytes.data.get(), bytes.size);
  }
  const std::vector<uchar> bytes = encoded(path, picture, {cv::IMWRITE_JPEG_QUALITY, quality});
  return writeBytes(path, bytes.data(), bytes.size());
}

}  // namespace tnv
