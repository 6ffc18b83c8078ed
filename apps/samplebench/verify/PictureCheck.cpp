#include "verify/PictureCheck.h"

#include <libexif/exif-data.h>

#include <algorithm>
#include <array>
#include <bit>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>
#include <vector>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace {

/// Trainers pass over pictures below this.
constexpr int smallestSide = 10;

/// Grey values of a look must spread at least that much, or all plain pictures look alike.
constexpr double leastContrast = 8;

constexpr int lookSide = 9;

std::vector<uchar> bytesOf(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return {};
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

cv::Mat decoded(const std::vector<uchar>& bytes) {
  if (bytes.empty()) return {};
  try {
    return cv::imdecode(bytes, cv::IMREAD_COLOR);
  } catch (const cv::Exception&) {
    return {};
  }
}

bool isJpeg(const std::vector<uchar>& bytes) {
  return bytes.size() > 1 && bytes[0] == 0xff && bytes[1] == 0xd8;
}

/// Whether a JPEG has no end. What stands behind the end marker does not matter, nor what lies in
/// segments, like the whole JPEG of a thumbnail.
bool lacksEnd(const std::vector<uchar>& bytes) {
  constexpr uchar marker = 0xff;
  constexpr uchar endOfPicture = 0xd9;
  constexpr uchar startOfScan = 0xda;
  const auto at = [&](std::size_t i) { return i < bytes.size() ? bytes[i] : uchar{0}; };
  // In a scan these two follow the marker byte without ending it.
  const auto goesOn = [](uchar code) { return code == 0 || (code >= 0xd0 && code <= 0xd7); };
  if (!isJpeg(bytes)) return false;
  std::size_t i = 2;
  while (i + 1 < bytes.size()) {
    if (at(i) != marker || at(i + 1) == marker) {
      ++i;
      continue;
    }
    const auto code = at(i + 1);
    if (code == endOfPicture) return false;
    const auto length = static_cast<std::size_t>(at(i + 2)) << 8U | at(i + 3);
    i += goesOn(code) ? 2 : 2 + length;
    if (code != startOfScan) continue;
    while (i + 1 < bytes.size() && (at(i) != marker || goesOn(at(i + 1))))
      ++i;
  }
  return true;
}

// FNV-1a; whoever finds two alike compares the files.
std::uint64_t hashOf(const std::vector<uchar>& bytes) {
  std::uint64_t hash = 14695981039346656037U;
  for (const uchar byte : bytes)
    hash = (hash ^ byte) * 1099511628211U;
  return hash;
}

/// What libexif reads of a picture: a JPEG as it is, of a PNG the chunk that holds the same. Other
/// kinds have tags that no reader of pictures here follows.
std::vector<uchar> exifBytes(const std::vector<uchar>& bytes) {
  constexpr std::array<uchar, 8> png{0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
  constexpr std::size_t frame = 12;  // length, name and checksum of a chunk
  if (bytes.size() < png.size() || !std::equal(png.begin(), png.end(), bytes.begin())) return bytes;
  for (std::size_t at = png.size(); at + frame <= bytes.size();) {
    std::size_t length = 0;
    for (std::size_t i = 0; i < 4; ++i)
      length = length << 8U | bytes[at + i];
    if (length > bytes.size() - at - frame) break;
    const auto* name = &bytes[at + 4];
    at += frame + length;
    if (std::string_view(reinterpret_cast<const char*>(name), 4) != "eXIf") continue;
    std::vector<uchar> exif{'E', 'x', 'i', 'f', 0, 0};
    exif.insert(exif.end(), name + 4, name + 4 + length);
    return exif;
  }
  return {};
}

/// The orientation that the picture's tag asks for, 1 to 8; 1 without a tag.
int orientationOf(const std::vector<uchar>& picture) {
  const auto bytes = exifBytes(picture);
  const std::unique_ptr<ExifData, void (*)(ExifData*)> data(
      exif_data_new_from_data(bytes.data(), static_cast<unsigned>(bytes.size())), exif_data_unref);
  if (!data) return 1;
  const ExifEntry* entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
  if (entry == nullptr || entry->format != EXIF_FORMAT_SHORT || entry->components != 1) return 1;
  return exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
}

/// A bit for each pixel that is brighter than its neighbour to the right.
std::uint64_t gradientBits(const cv::Mat& grey) {
  std::uint64_t bits = 0;
  for (int y = 0; y + 1 < lookSide; ++y)
    for (int x = 0; x + 1 < lookSide; ++x)
      bits = bits << 1U | (grey.at<uchar>(y, x) > grey.at<uchar>(y, x + 1) ? 1U : 0U);
  return bits;
}

std::optional<std::uint64_t> lookOf(const cv::Mat& picture) {
  cv::Mat grey;
  cv::resize(picture, grey, {lookSide, lookSide}, 0, 0, cv::INTER_AREA);
  cv::cvtColor(grey, grey, cv::COLOR_BGR2GRAY);
  cv::Scalar mean;
  cv::Scalar deviation;
  cv::meanStdDev(grey, mean, deviation);
  if (deviation[0] < leastContrast) return std::nullopt;
  std::uint64_t least = ~std::uint64_t{0};
  for (int turn = 0; turn < 4; ++turn) {
    cv::rotate(grey.clone(), grey, cv::ROTATE_90_CLOCKWISE);
    cv::Mat mirrored;
    cv::flip(grey, mirrored, 1);
    least = std::min({least, gradientBits(grey), gradientBits(mirrored)});
  }
  return least;
}

}  // namespace

std::optional<PictureMarks> checkPicture(const std::string& path, Findings& findings) {
  const auto bytes = bytesOf(path);
  const cv::Mat picture = decoded(bytes);
  if (picture.empty()) {
    findings.push_back({path, 0, "unreadable-picture", "the picture cannot be read"});
    return std::nullopt;
  }
  if (lacksEnd(bytes))
    findings.push_back({path, 0, "cut-picture",
                        "the file breaks off before the picture's end; trainers see grey there"});
  if (picture.cols < smallestSide || picture.rows < smallestSide)
    findings.push_back({path, 0, "tiny-picture",
                        "the picture has " + std::to_string(picture.cols) + "x" +
                            std::to_string(picture.rows) + " pixels"});
  if (const int orientation = orientationOf(bytes); orientation != 1)
    findings.push_back({path, 0, "orientation",
                        "a tag asks to turn the picture (orientation " +
                            std::to_string(orientation) +
                            "); trainers differ in following it: turn the pixels instead"});
  return PictureMarks{hashOf(bytes), bytes.size(), lookOf(picture)};
}

bool isCutJpeg(const std::string& path) {
  return lacksEnd(bytesOf(path));
}

bool isDecodable(const std::string& path) {
  const auto bytes = bytesOf(path);
  return isJpeg(bytes) || !decoded(bytes).empty();
}

int lookDistance(std::uint64_t a, std::uint64_t b) {
  return std::popcount(a ^ b);
}

bool haveSameContent(const std::string& a, const std::string& b) {
  return bytesOf(a) == bytesOf(b);
}
