#include "foundation/LargePictures.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <mutex>
#include <vector>

namespace tnv {

namespace {

/// How many may lie idle: more are left over only where pictures differ in size.
constexpr int kMostIdle = 4;

struct Kept {
  std::mutex mutex;
  int users = 0;
  std::vector<cv::Mat> buffers;  ///< each one row of bytes, in use or idle, the oldest first
};

Kept& kept() {
  static Kept instance;
  return instance;
}

/// Whether nobody but the list holds the buffer. Under the lock nobody else can take it up again.
bool isIdle(const cv::Mat& buffer) {
  return std::atomic_ref<int>(buffer.u->refcount).load(std::memory_order_acquire) == 1;
}

void dropOldestIdle(std::vector<cv::Mat>& buffers) {
  if (std::count_if(buffers.begin(), buffers.end(), isIdle) < kMostIdle) return;
  buffers.erase(std::find_if(buffers.begin(), buffers.end(), isIdle));
}

/// An idle buffer of exactly that size, or a new one: a part of a larger one would show what lies
/// around it to filters.
cv::Mat takeBuffer(std::vector<cv::Mat>& buffers, int bytes) {
  const auto found = std::find_if(buffers.begin(), buffers.end(), [bytes](const cv::Mat& buffer) {
    return buffer.cols == bytes && isIdle(buffer);
  });
  if (found != buffers.end()) return *found;
  dropOldestIdle(buffers);
  return buffers.emplace_back(1, bytes, CV_8UC1);
}

}  // namespace

cv::Mat newPicture(cv::Size size, int type) {
  const std::size_t bytes = size.empty()
                                ? 0
                                : static_cast<std::size_t>(size.width) *
                                      static_cast<std::size_t>(size.height) * CV_ELEM_SIZE(type);
  const bool fitsRow = bytes <= static_cast<std::size_t>(std::numeric_limits<int>::max());
  if (bytes <= kLargePicture || !fitsRow || CV_MAT_DEPTH(type) != CV_8U) return {size, type};
  const std::lock_guard lock(kept().mutex);
  if (kept().users == 0) return {size, type};
  return takeBuffer(kept().buffers, static_cast<int>(bytes)).reshape(CV_MAT_CN(type), size.height);
}

LargePictures::LargePictures() {
  const std::lock_guard lock(kept().mutex);
  ++kept().users;
}

LargePictures::~LargePictures() {
  const std::lock_guard lock(kept().mutex);
  if (--kept().users == 0) kept().buffers.clear();
}

}  // namespace tnv
