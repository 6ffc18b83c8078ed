#include <filesystem>

#include <gtest/gtest.h>

#include "TNV_SampleBenchNative/WTNVMainProcess.h"
#include "TNV_SampleBenchNative/WTNVTrainSet.h"
#include "reliability/Repeats.h"
#include "support/LogCapture.h"
#include "support/Memory.h"
#include "support/ProjectBuilder.h"

namespace {

constexpr int kWidth = 640;
constexpr int kHeight = 480;

#ifdef TNV_SANITIZED
/// Sanitizers keep what was freed for a while.
constexpr std::size_t kKept = std::size_t{512} << 20;
#else
/// As many pictures as the worker holds ahead, and what an allocator keeps.
constexpr std::size_t kKept = std::size_t{16} * kWidth * kHeight * 3;
#endif

std::ptrdiff_t openFiles() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

void lookAt(WTNVHandlerImageView& view) {
  unsigned char* pixels = nullptr;
  int width = 0;
  int height = 0;
  int channels = 0;
  view.wGetARImage(&pixels, &width, &height, &channels);
}

/// Goes once through all pictures, forward or back.
void walk(WTNVMainProcess& process, bool forward) {
  auto pictures = process.getHndTrainSet();
  auto view = process.getHndImageView();
  for (unsigned i = 0; i < pictures.wGetTrainSetCount(); ++i) {
    forward ? pictures.wSetTrainSetForward(1) : pictures.wSetTrainSetBackward(1);
    lookAt(view);
  }
}

}  // namespace

TEST(LongUse, PicturesThatWereLookedAtDoNotPileUp) {
  const LogCapture log;
  constexpr int walks = 10;
  const int pictures = repeats(16);
  ProjectBuilder builder;
  std::vector<std::string> paths;
  for (int i = 0; i < pictures; ++i)
    paths.push_back(builder.picture(std::to_string(i) + ".png", kWidth, kHeight));
  builder.project().wAddImagesToImageSet(paths, std::vector<bool>(paths.size(), true), "set",
                                         false);
  const auto files = openFiles();
  {
    WTNVMainProcess process(&builder.project(), nullptr);
    walk(process, true);
    const auto bytes = residentBytes();
    for (int i = 0; i < walks; ++i)
      walk(process, i % 2 == 1);
    EXPECT_LT(residentBytes(), bytes + kKept);
  }
  EXPECT_EQ(openFiles(), files);
  RecordProperty("steps", walks * pictures);
}
