#include "marks/Blending.h"

#include <cstring>

#include <opencv2/core/hal/intrin.hpp>

namespace tnv {

namespace {

/// Old colours keep three fifths of their strength, rounded down, which is this many of 65,536
/// parts.
constexpr unsigned kKept = 39322;

constexpr uchar keptOf(uchar old) {
  return static_cast<uchar>(old * kKept >> 16);
}

constexpr bool isKeptExact() {
  for (int old = 0; old < 256; ++old) {
    if (keptOf(static_cast<uchar>(old)) != static_cast<int>(0.6 * old)) return false;
  }
  return true;
}
static_assert(isKeptExact());

/// Adds to what is kept of each channel.
void blend(uchar* channels, const uchar* addends, int count) {
  int i = 0;
#if CV_SIMD
  using Lanes = cv::v_uint8;
  const cv::v_uint16 kept = cv::vx_setall_u16(kKept);
  for (; i + Lanes::nlanes <= count; i += Lanes::nlanes) {
    cv::v_uint16 low;
    cv::v_uint16 high;
    cv::v_expand(cv::vx_load(channels + i), low, high);
    const Lanes remaining = cv::v_pack(cv::v_mul_hi(low, kept), cv::v_mul_hi(high, kept));
    cv::v_store(channels + i, cv::v_add_wrap(remaining, cv::vx_load(addends + i)));
  }
#endif
  for (; i < count; ++i)
    channels[i] = static_cast<uchar>(keptOf(channels[i]) + addends[i]);
}

/// Rows of a box lie far apart in a picture, and a processor that reads ahead by itself does not
/// follow from one to the next.
constexpr int kRowsAhead = 4;
constexpr int kBytesAtOnce = 64;

/// Asks for what is going to be changed soon.
void fetchAhead([[maybe_unused]] const uchar* from, [[maybe_unused]] int count) {
#ifdef __GNUC__
  for (int i = 0; i < count; i += kBytesAtOnce)
    __builtin_prefetch(from + i, 1);
#endif
}

/// Blends the pixels of a row that the mask, which is 0 or 255, covers.
void blendRow(uchar* channels, const cv::Mat& addends, const uchar* mask) {
  const uchar* const end = mask + addends.cols;
  const auto next = [end](const uchar* from, int value) {
    const void* const found = std::memchr(from, value, static_cast<std::size_t>(end - from));
    return found ? static_cast<const uchar*>(found) : end;
  };
  const uchar* stop = mask;
  for (const uchar* start = next(mask, 255); start != end; start = next(stop, 255)) {
    stop = next(start, 0);
    blend(channels + 3 * (start - mask), addends.ptr(), 3 * static_cast<int>(stop - start));
  }
}

}  // namespace

void blend(cv::Mat& view, const cv::Rect& box, const cv::Mat& mask, const cv::Vec3b& filling) {
  cv::Scalar addend;
  for (int channel = 0; channel < 3; ++channel)
    addend[channel] = static_cast<int>(0.4 * filling[channel]);
  const cv::Mat addends(1, box.width, CV_8UC3, addend);
  cv::Mat part = view(box);
  for (int y = 0; y < part.rows; ++y) {
    if (y + kRowsAhead < part.rows) fetchAhead(part.ptr(y + kRowsAhead), 3 * part.cols);
    blendRow(part.ptr(y), addends, mask.ptr(y));
  }
}

}  // namespace tnv
