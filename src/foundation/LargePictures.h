#pragma once

#include <opencv2/core.hpp>

namespace tnv {

/// Pictures of more bytes are large: the system hands out memory of that size page by page, and
/// takes it back at once, which takes longer than many a task does with the picture.
inline constexpr std::size_t kLargePicture = std::size_t{32} << 20;

/// A picture of any content. A large one is one that was let go of, while `LargePictures` keep
/// them.
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
