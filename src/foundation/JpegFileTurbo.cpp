#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <type_traits>

#include <turbojpeg.h>

#include "foundation/JpegFile.h"
#include "foundation/LargePictures.h"

namespace tnv {

namespace {

struct Closer {
  void operator()(tjhandle handle) const { tjDestroy(handle); }
};

using Handle = std::unique_ptr<std::remove_pointer_t<tjhandle>, Closer>;

/// The image library refuses more, unless its environment tells it otherwise.
constexpr std::int64_t kMostPixels = std::int64_t{1} << 30;

JpegBytes readWhole(const std::string& path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  if (error) return {};
  JpegBytes bytes{std::make_unique_for_overwrite<unsigned char[]>(size), size};
  std::ifstream file(path, std::ios::binary);
  file.read(reinterpret_cast<char*>(bytes.data.get()), static_cast<std::streamsize>(size));
  if (!file) bytes.size = 0;
  return bytes;
}

bool hasColoursOfItsOwn(int colorspace) {
  return colorspace == TJCS_CMYK || colorspace == TJCS_YCCK;
}

}  // namespace

cv::Mat readPlainJpeg(const std::string& path, const PictureHead& head) {
  const cv::Size size = head.size;
  if (!head.isJpeg || head.mayBeTurned || size.empty()) return {};
  if (std::int64_t{size.width} * size.height > kMostPixels) return {};
  const JpegBytes bytes = readWhole(path);
  const Handle handle(tjInitDecompress());
  cv::Size told;
  int subsampling = 0;
  int colorspace = 0;
  if (tjDecompressHeader3(handle.get(), bytes.data.get(), bytes.size, &told.width, &told.height,
                          &subsampling, &colorspace) != 0)
    return {};
  if (told != size || hasColoursOfItsOwn(colorspace)) return {};
  cv::Mat picture = newPicture(size, CV_8UC3);
  const int result =
      tjDecompress2(handle.get(), bytes.data.get(), bytes.size, picture.data, size.width,
                    static_cast<int>(picture.step), size.height, TJPF_BGR, TJFLAG_STOPONWARNING);
  return result == 0 ? picture : cv::Mat();
}

JpegBytes encodePlainJpeg(const cv::Mat& picture, int quality) {
  if (picture.type() != CV_8UC3 || picture.empty()) return {};
  unsigned long size = tjBufSize(picture.cols, picture.rows, TJSAMP_420);
  if (size == static_cast<unsigned long>(-1)) return {};
  JpegBytes bytes{std::make_unique_for_overwrite<unsigned char[]>(size), 0};
  const Handle handle(tjInitCompress());
  unsigned char* target = bytes.data.get();
  const int result =
      tjCompress2(handle.get(), picture.data, picture.cols, static_cast<int>(picture.step),
                  picture.rows, TJPF_BGR, &target, &size, TJSAMP_420, std::clamp(quality, 1, 100),
                  TJFLAG_ACCURATEDCT | TJFLAG_NOREALLOC);
  if (result == 0) bytes.size = size;
  return bytes;
}

}  // namespace tnv
