#include "tools/PictureSize.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <string_view>

#include <opencv2/imgcodecs.hpp>

namespace tnv {

namespace {

/// Reads the file as bytes; after the end all are 0.
class Bytes {
 public:
  explicit Bytes(const std::string& path) : file(path, std::ios::binary) {}

  std::string take(std::size_t count) {
    std::string bytes(count, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(count));
    return bytes;
  }

  unsigned takeByte() { return static_cast<unsigned char>(take(1).front()); }

  /// Two bytes, the larger first.
  unsigned takeWord() {
    const unsigned high = takeByte();
    return high << 8 | takeByte();
  }

  std::uint32_t takeLong() {
    const std::uint32_t high = takeWord();
    return high << 16 | takeWord();
  }

  void skip(unsigned count) { file.seekg(count, std::ios::cur); }
  bool good() const { return file.good(); }

 private:
  std::ifstream file;
};

constexpr std::string_view kPngSignature("\x89PNG\r\n\x1a\n", 8);
constexpr std::string_view kJpegStart("\xff\xd8", 2);

/// Markers of JPEG segments.
constexpr unsigned kExif = 0xE1;
constexpr unsigned kStartOfScan = 0xDA;
constexpr unsigned kEnd = 0xD9;

/// No picture of a larger side can be read.
constexpr std::uint32_t kLargestSide = 1 << 20;

bool isFrame(unsigned marker) {
  // What lies among the frames' numbers: tables of codes, an extension, arithmetic conditioning.
  const bool isOther = marker == 0xC4 || marker == 0xC8 || marker == 0xCC;
  return marker >= 0xC0 && marker <= 0xCF && !isOther;
}

cv::Size checkedSize(std::uint32_t width, std::uint32_t height) {
  if (width == 0 || height == 0 || width > kLargestSide || height > kLargestSide) return {};
  return {static_cast<int>(width), static_cast<int>(height)};
}

cv::Size pngSize(Bytes& bytes) {
  bytes.skip(4);
  if (bytes.take(4) != "IHDR") return {};
  const std::uint32_t width = bytes.takeLong();
  const std::uint32_t height = bytes.takeLong();
  bytes.skip(5 + 4);
  // A turn stands in a chunk before the pixels.
  while (bytes.good()) {
    const std::uint32_t length = bytes.takeLong();
    const std::string chunk = bytes.take(4);
    if (chunk == "IDAT") return bytes.good() ? checkedSize(width, height) : cv::Size();
    if (chunk == "eXIf") return {};
    bytes.skip(length);
    bytes.skip(4);
  }
  return {};
}

cv::Size jpegSize(Bytes& bytes) {
  while (bytes.good() && bytes.takeByte() == 0xFF) {
    unsigned marker = bytes.takeByte();
    while (marker == 0xFF && bytes.good())
      marker = bytes.takeByte();
    const unsigned length = bytes.takeWord();
    if (marker == kExif || marker == kStartOfScan || marker == kEnd || length < 2) return {};
    if (isFrame(marker)) {
      bytes.skip(1);
      const unsigned height = bytes.takeWord();
      const unsigned width = bytes.takeWord();
      return bytes.good() ? checkedSize(width, height) : cv::Size();
    }
    bytes.skip(length - 2);
  }
  return {};
}

}  // namespace

cv::Size pictureSizeFromHead(const std::string& path) {
  Bytes bytes(path);
  const std::string start = bytes.take(kJpegStart.size());
  if (start == kJpegStart) return jpegSize(bytes);
  if (start + bytes.take(kPngSignature.size() - start.size()) == kPngSignature)
    return pngSize(bytes);
  return {};
}

cv::Size pictureSize(const std::string& path) {
  if (const cv::Size size = pictureSizeFromHead(path); !size.empty()) return size;
  try {
    return cv::imread(path, cv::IMREAD_COLOR).size();
  } catch (const cv::Exception&) {
    return {};
  }
}

}  // namespace tnv
