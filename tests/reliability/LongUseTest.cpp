#include <filesystem>

#include <gtest/gtest.h>

#include "TNV_SampleBenchNative/WTNVMainProcess.h"
#include "TNV_SampleBenchNative/WTNVTrainSet.h"
#include "reliability/Repeats.h"
#include "support/LogCapture.h"
#include "support/Memory.h"
#include "support/ProjectBuilder.h"

namespace {

constexpr int kWidth = 1600;
constexpr int kHeight = 1200;
constexpr std::size_t kPictureBytes = std::size_t{3} * kWidth * kHeight;

/// The worker holds so many; the others are what an allocator keeps for a while.
constexpr std::size_t kHeld = 10 + 4;

#ifdef TNV_SANITIZED
/// Sanitizers keep what was freed until it is so much.
constexpr std::size_t kKept = kHeld * kPictureBytes + (std::size_t{256} << 20);
#else
constexpr std::size_t kKept = kHeld * kPictureBytes;
#endif

/// Were they all held, they would take half as much again as may be kept.
constexpr int kPictures = static_cast<int>(kKept / kPictureBytes) * 3 / 2;

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

/// Goes so many pictures forward or back.
void walk(WTNVMainProcess& process, bool forward, int steps) {
  auto pictures = process.getHndTrainSet();
  auto view = process.getHndImageView();
  for (int i = 0; i < steps; ++i) {
    forward ? pictures.wSetTrainSetForward(1) : pictures.wSetTrainSetBackward(1);
    lookAt(view);
  }
}

/// Makes a project of so many pictures, which are copies of one.
void addPictures(ProjectBuilder& builder, int count) {
  const std::string first = builder.picture("first.jpg", kWidth, kHeight);
  std::vector<std::string> paths;
  for (int i = 0; i < count; ++i) {
    paths.push_back(builder.temp / ("pictures/" + std::to_string(i) + ".jpg"));
    std::filesystem::copy_file(first, paths.back());
  }
  builder.project().wAddImagesToImageSet(paths, std::vector<bool>(paths.size(), true), "set",
                                         false);
}

}  // namespace

TEST(LongUse, PicturesThatWereLookedAtDoNotPileUp) {
  const LogCapture log;
  const int pictures = repeats(kPictures);
  const int walks = pictures > kPictures ? 10 : 2;
  ProjectBuilder builder;
  addPictures(builder, pictures);
  const auto files = openFiles();
  {
    WTNVMainProcess process(&builder.project(), nullptr);
    // The views are made, and most pictures were not looked at yet.
    walk(process, true, 3);
    const auto bytes = residentBytes();
    for (int i = 0; i < walks; ++i) {
      walk(process, i % 2 == 0, pictures);
      EXPECT_LT(residentBytes(), bytes + kKept) << "after walk " << i;
    }
  }
  EXPECT_EQ(openFiles(), files);
  RecordProperty("steps", walks * pictures);
}
