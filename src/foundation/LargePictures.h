#pragma once

#include <opencv2/core.hpp>

namespace tnv {

/// Pictures of more bytes are large: the system hands out memory of that size page by page, and
/// takes it back at once, which takes longer than many a task does with the picture.
inline constexpr std::size_t kLargePicture = std::size_t{32} << 20;

/// A picture whose content is undefined. While there are `LargePictures`, one with 8 bits a channel
/// that takes more than 32 MiB gets the memory of an earlier one of exactly as many bytes, if
/// nobody holds that any more.
cv::Mat newPicture(cv::Size size, int type);

/// As long as one of these is there, large pictures of `newPicture` that nobody holds any more are
/// kept for the next ones that take as much memory. May be used on any threads.
class LargePictures {
 public:
  LargePictures();
  ~LargePictures();
  LargePictures(const LargePictures&) = delete;
  LargePictures& operator=(const LargePictures&) = delete;
};

}  // namespace tnv
