#include <cstdio>
#include <filesystem>
#include <mutex>

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "TNV_SampleBenchNative/WTNVTrainSet.h"
#include "project/TNVTrainSet.h"
#include "support/LogCapture.h"
#include "support/ProjectBuilder.h"

namespace {

/// What the process asked the system for, in order, by file names.
std::vector<std::string> calls;
std::mutex callsMutex;

void note(const std::string& call) {
  const std::lock_guard lock(callsMutex);
  calls.push_back(call);
}

template <class Function>
Function* systemsOwn(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::string fileNameOf(int number) {
  std::error_code error;
  const auto link = "/proc/self/fd/" + std::to_string(number);
  return std::filesystem::read_symlink(link, error).filename().string();
}

}  // namespace

// These stand before the system's own.
extern "C" [[gnu::visibility("default")]] int fdatasync(int file) {
  note("flush " + fileNameOf(file));
  return systemsOwn<int(int)>("fdatasync")(file);
}

extern "C" [[gnu::visibility("default")]] int syncfs(int file) noexcept {
  note("flush all");
  return systemsOwn<int(int)>("syncfs")(file);
}

extern "C" [[gnu::visibility("default")]] int rename(const char* from, const char* to) noexcept {
  note("rename " + std::filesystem::path(to).filename().string());
  return systemsOwn<int(const char*, const char*)>("rename")(from, to);
}

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::StartsWith;

class Flush : public testing::Test {
 protected:
  void addPictures(int count) {
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
      names.push_back(std::to_string(i) + ".png");
    builder.withPictures(names);
    for (const WTNVTrainSet& record : builder.project().wGetTrainSets())
      record.wLoadData();
  }

  std::string recordName(std::size_t place) {
    const auto records = builder.project().wGetTrainSets();
    return records.at(place).getNativeTrainSet()->uniqueName + ".xml";
  }

  LogCapture log;
  ProjectBuilder builder;
};

}  // namespace

TEST_F(Flush, AFewFilesAreOnTheDiskBeforeTheyTakeTheirPlaces) {
  addPictures(1);
  calls.clear();
  ASSERT_TRUE(builder.project().wUpdate(true));
  const auto record = recordName(0);
  EXPECT_THAT(calls,
              ElementsAre("flush demo.cfg.new", "rename demo.cfg", "flush " + record + ".new",
                          "flush set.xml.new", "rename " + record, "rename set.xml"));
}

TEST_F(Flush, ManyFilesAreBroughtToTheDiskInOnePass) {
  constexpr int pictures = 40;
  addPictures(pictures);
  calls.clear();
  ASSERT_TRUE(builder.project().wUpdate(true));
  ASSERT_EQ(calls.size(), 2U + 1U + pictures + 1U);
  EXPECT_EQ(calls[2], "flush all");
  const std::vector<std::string> renames(calls.begin() + 3, calls.end());
  EXPECT_THAT(renames, Each(StartsWith("rename ")));
  EXPECT_EQ(renames.front(), "rename " + recordName(0));
  EXPECT_EQ(renames.back(), "rename set.xml");
}
