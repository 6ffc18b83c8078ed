#include "foundation/PictureHead.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <string_view>

#include "foundation/PictureFile.h"

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
constexpr unsigned kNotesOfCamera = 0xE1;
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

PictureHead pngHead(Bytes& bytes) {
  PictureHead head;
  bytes.skip(4);
  if (bytes.take(4) != "IHDR") return head;
  const std::uint32_t width = bytes.takeLong();
  const std::uint32_t height = bytes.takeLong();
  head.size = checkedSize(width, height);
  bytes.skip(5 + 4);
  // A turn stands in a chunk before the pixels.
  while (bytes.good()) {
    const std::uint32_t length = bytes.takeLong();
    const std::string chunk = bytes.take(4);
    if (chunk == "IDAT") head.mayBeTurned = !bytes.good();
    if (chunk == "IDAT" || chunk == "eXIf") return head;
    bytes.skip(length);
    bytes.skip(4);
  }
  return head;
}

/// Behind the number of bits of a value.
cv::Size frameSize(std::string_view segment) {
  if (segment.size() < 5) return {};
  const auto word = [&](std::size_t at) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(segment[at]) << 8 |
                                      static_cast<unsigned char>(segment[at + 1]));
  };
  return checkedSize(word(3), word(1));
}

/// True when the notes of a camera, a TIFF file of its own, say for certain that the picture lies
/// as it is to be seen: they tell so, or nothing about it.
bool isUpright(std::string_view tiff) {
  const bool isBigEndian = tiff.starts_with(std::string_view("MM\0*", 4));
  if (!isBigEndian && !tiff.starts_with(std::string_view("II*\0", 4))) return false;
  const auto number = [&](std::size_t at, std::size_t size) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
      value = value << 8 | static_cast<unsigned char>(tiff[at + (isBigEndian ? i : size - 1 - i)]);
    return value;
  };
  constexpr std::size_t entrySize = 12;
  if (tiff.size() < 8) return false;
  const std::size_t directory = number(4, 4);
  if (tiff.size() < directory + 2) return false;
  const std::size_t count = number(directory, 2);
  if (tiff.size() < directory + 2 + count * entrySize) return false;
  constexpr std::uint32_t orientation = 0x0112;
  constexpr std::uint32_t word = 3;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t entry = directory + 2 + i * entrySize;
    const bool isAsSeen = number(entry + 2, 2) == word && number(entry + 8, 2) == 1;
    if (number(entry, 2) == orientation && !isAsSeen) return false;
  }
  return true;
}

bool mayBeTurned(std::string_view segment) {
  // The notes stand behind a name, at which the image library does not look, and it is content with
  // half of the sign that they are some.
  constexpr std::size_t nameSize = 6;
  if (segment.size() <= nameSize) return false;
  const std::string_view notes = segment.substr(nameSize);
  return notes.substr(0, 2).find_first_of("IM") != std::string_view::npos && !isUpright(notes);
}

PictureHead jpegHead(Bytes& bytes) {
  PictureHead head;
  head.isJpeg = true;
  bool isTurned = false;
  while (bytes.good() && bytes.takeByte() == 0xFF) {
    unsigned marker = bytes.takeByte();
    while (marker == 0xFF && bytes.good())
      marker = bytes.takeByte();
    const unsigned length = bytes.takeWord();
    if (marker == kStartOfScan) head.mayBeTurned = isTurned || !bytes.good();
    if (marker == kStartOfScan || marker == kEnd || length < 2) return head;
    const std::string segment = bytes.take(length - 2);
    if (marker == kNotesOfCamera) isTurned = isTurned || mayBeTurned(segment);
    if (isFrame(marker)) head.size = frameSize(segment);
  }
  return head;
}

}  // namespace

PictureHead readPictureHead(const std::string& path) {
  Bytes bytes(path);
  const std::string start = bytes.take(kJpegStart.size());
  if (start == kJpegStart) return jpegHead(bytes);
  if (start + bytes.take(kPngSignature.size() - start.size()) == kPngSignature)
    return pngHead(bytes);
  return {};
}

cv::Size pictureSize(const std::string& path) {
  const PictureHead head = readPictureHead(path);
  return head.mayBeTurned || head.size.empty() ? readPicture(path).size() : head.size;
}

}  // namespace tnv
