#include "foundation/PictureHead.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
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

  /// So many bytes, the smallest first.
  std::uint32_t takeLittle(std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i)
      value |= std::uint32_t{takeByte()} << (8 * i);
    return value;
  }

  /// The last bytes of the file, no more than so many. Nothing can be taken after it.
  std::string takeEnd(std::size_t count) {
    file.seekg(0, std::ios::end);
    const auto size = static_cast<std::size_t>(std::max<std::streamoff>(file.tellg(), 0));
    const std::size_t length = std::min(count, size);
    file.seekg(static_cast<std::streamoff>(size - length));
    return take(length);
  }

  void skip(unsigned count) { file.seekg(count, std::ios::cur); }
  bool good() const { return file.good(); }

 private:
  std::ifstream file;
};

constexpr std::string_view kPngSignature("\x89PNG\r\n\x1a\n", 8);
constexpr std::string_view kJpegStart("\xff\xd8", 2);
constexpr std::string_view kBmpStart("BM", 2);
constexpr std::size_t kStartSize = 2;
constexpr std::string_view kJpeg2000Boxes("\0\0\0\x0cjP  \r\n\x87\n", 12);
constexpr std::string_view kJpeg2000Start("\xff\x4f\xff\x51", 4);

/// Markers of JPEG segments.
constexpr unsigned kNotesOfCamera = 0xE1;
constexpr unsigned kStartOfScan = 0xDA;
constexpr unsigned kEnd = 0xD9;

/// No more pixels come of a byte, but for an empty page by a kind of JPEG that nobody writes: PNG
/// packs an empty page in two colours into one byte for 8,000.
constexpr std::uint64_t kMostPixelsOfAByte = 10000;

/// A pixel of JPEG 2000 takes so many times the memory of others before there is a picture.
constexpr std::uint64_t kJpeg2000Weight = 10;

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
  // A turn stands in a chunk before the pixels, or behind them at the end of the file. No writer
  // makes one as large as this.
  constexpr std::size_t mostNotes = std::size_t{1} << 17;
  constexpr std::string_view notes = "eXIf";
  while (bytes.good()) {
    const std::uint32_t length = bytes.takeLong();
    const std::string chunk = bytes.take(4);
    if (chunk == "IDAT")
      head.mayBeTurned = !bytes.good() || bytes.takeEnd(mostNotes).find(notes) != std::string::npos;
    if (chunk == "IDAT" || chunk == notes) return head;
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

/// A marker that has no segment.
bool standsAlone(unsigned marker) {
  return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
}

/// Whether the frame is one of those that are refined from scan to scan.
bool isProgressive(unsigned marker) {
  return isFrame(marker) && (marker & 3U) == 2;
}

/// What stands between segments is passed over, as the image library does it.
unsigned nextMarker(Bytes& bytes) {
  unsigned marker = 0;
  while (bytes.good() && marker == 0) {
    while (bytes.good() && bytes.takeByte() != 0xFF) {
    }
    do {
      marker = bytes.takeByte();
    } while (bytes.good() && marker == 0xFF);
  }
  return marker;
}

struct JpegHead {
  PictureHead head;
  bool hasManyScans = false;
};

JpegHead jpegHead(Bytes& bytes) {
  JpegHead result;
  result.head.isJpeg = true;
  bool isTurned = false;
  unsigned components = 0;
  while (bytes.good()) {
    const unsigned marker = nextMarker(bytes);
    if (standsAlone(marker)) continue;
    if (marker == kEnd) return result;
    const unsigned length = bytes.takeWord();
    const bool isNeeded = isFrame(marker) || marker == kStartOfScan;
    if (length < 2 && isNeeded) return result;
    // Another segment without content is passed over, whatever it says of its length.
    if (length < 2) continue;
    const std::string segment = bytes.take(length - 2);
    if (marker == kNotesOfCamera) isTurned = isTurned || mayBeTurned(segment);
    if (isFrame(marker)) {
      result.head.size = frameSize(segment);
      result.hasManyScans = isProgressive(marker);
      components = segment.size() > 5 ? static_cast<unsigned char>(segment[5]) : 0;
    }
    if (marker == kStartOfScan) {
      result.head.mayBeTurned = isTurned || !bytes.good();
      if (segment.empty() || static_cast<unsigned char>(segment[0]) < components)
        result.hasManyScans = true;
      return result;
    }
  }
  return result;
}

/// The library goes through all pixels for each scan, however little it holds.
std::uint64_t scanCount(const std::string& path) {
  constexpr std::string_view start("\xff\xda", 2);
  constexpr std::size_t pieceSize = std::size_t{1} << 16;
  std::ifstream file(path, std::ios::binary);
  std::string piece;
  std::uint64_t count = 0;
  while (file) {
    // The last byte of a piece may be the first one of a marker.
    const std::size_t kept = piece.empty() ? 0 : 1;
    if (kept == 1) piece.front() = piece.back();
    piece.resize(pieceSize);
    file.read(piece.data() + kept, static_cast<std::streamsize>(pieceSize - kept));
    piece.resize(kept + static_cast<std::size_t>(file.gcount()));
    for (std::size_t at = piece.find(start); at != piece.npos; at = piece.find(start, at + 2))
      ++count;
  }
  return std::max<std::uint64_t>(count, 1);
}

PictureHead bmpHead(Bytes& bytes) {
  PictureHead head;
  bytes.skip(12);
  constexpr std::uint32_t oldest = 12;
  const bool isOldest = bytes.takeLittle(4) == oldest;
  const std::size_t size = isOldest ? 2 : 4;
  const auto width = static_cast<std::int32_t>(bytes.takeLittle(size));
  const auto height = static_cast<std::int32_t>(bytes.takeLittle(size));
  // A picture whose rows go down has a height below 0.
  if (bytes.good())
    head.size = checkedSize(static_cast<std::uint32_t>(width),
                            static_cast<std::uint32_t>(std::abs(std::int64_t{height})));
  return head;
}

/// Of the grid that stands behind the start of a code stream and two lengths.
cv::Size gridSize(Bytes& bytes) {
  const std::uint32_t right = bytes.takeLong();
  const std::uint32_t bottom = bytes.takeLong();
  const std::uint32_t left = bytes.takeLong();
  const std::uint32_t top = bytes.takeLong();
  if (!bytes.good() || left > right || top > bottom) return {};
  return checkedSize(right - left, bottom - top);
}

/// Goes through the boxes, behind the first one, to the one with the code stream.
cv::Size boxedGridSize(Bytes& bytes) {
  constexpr unsigned boxHead = 8;
  while (bytes.good()) {
    const std::uint32_t length = bytes.takeLong();
    const std::string name = bytes.take(4);
    const bool isLong = length == 1;
    if (isLong) bytes.skip(boxHead);
    if (name == "jp2c")
      return bytes.take(boxHead).starts_with(kJpeg2000Start) ? gridSize(bytes) : cv::Size();
    // One that runs to the end of the file, or that nobody would make so long.
    if (length < boxHead) return {};
    bytes.skip(length - boxHead);
  }
  return {};
}

bool isHollow(const std::string& path, cv::Size size, std::uint64_t weight) {
  std::error_code error;
  const std::uint64_t bytes = std::filesystem::file_size(path, error);
  const auto width = static_cast<std::uint64_t>(size.width);
  const auto height = static_cast<std::uint64_t>(size.height);
  return width * height * weight / kMostPixelsOfAByte > bytes;
}

/// A code stream that does not tell its size is cut, or tells it where only the image library
/// looks.
PictureHead jpeg2000Head(const std::string& path, cv::Size size) {
  PictureHead head;
  head.size = size;
  head.isHollow = size.empty() || isHollow(path, size, kJpeg2000Weight);
  return head;
}

PictureHead headOf(const std::string& path) {
  Bytes bytes(path);
  std::string start = bytes.take(kStartSize);
  if (start == kJpegStart) {
    JpegHead result = jpegHead(bytes);
    const std::uint64_t scans = result.hasManyScans ? scanCount(path) : 1;
    result.head.isHollow = isHollow(path, result.head.size, scans);
    return result.head;
  }
  PictureHead head;
  if (start == kBmpStart) head = bmpHead(bytes);
  start += bytes.take(kPngSignature.size() - kStartSize);
  if (start == kPngSignature) head = pngHead(bytes);
  if (start.starts_with(kJpeg2000Start)) return jpeg2000Head(path, gridSize(bytes));
  if (kJpeg2000Boxes.starts_with(start) && bytes.good()) {
    bytes.skip(static_cast<unsigned>(kJpeg2000Boxes.size() - start.size()));
    return jpeg2000Head(path, boxedGridSize(bytes));
  }
  head.isHollow = isHollow(path, head.size, 1);
  return head;
}

}  // namespace

PictureHead readPictureHead(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(path, error) ? headOf(path) : PictureHead();
}

cv::Size pictureSize(const std::string& path) {
  const PictureHead head = readPictureHead(path);
  if (head.isHollow) return {};
  return head.mayBeTurned || head.size.empty() ? readPicture(path).size() : head.size;
}

}  // namespace tnv
