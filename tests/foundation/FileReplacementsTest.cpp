#include "foundation/FileReplacements.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FileLimit.h"
#include "support/TempDirectory.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class FileReplacements : public testing::Test {
 protected:
  /// Adds the file and notes how it ends.
  bool add(const std::string& name, const std::string& content) {
    return files->add(temp / name, content, [this, name](bool isReplaced) {
      endings.push_back(name + (isReplaced ? " replaced" : " kept"));
    });
  }

  std::size_t entries() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(temp.path()), {}));
  }

  TempDirectory temp;
  std::unique_ptr<tnv::FileReplacements> files = std::make_unique<tnv::FileReplacements>();
  std::vector<std::string> endings;
};

}  // namespace

TEST_F(FileReplacements, NothingTakesItsPlaceBeforeTheCommit) {
  temp.write("a", "old");
  EXPECT_TRUE(add("a", "new"));
  EXPECT_TRUE(add("b", "more"));
  EXPECT_EQ(readFile(temp / "a"), "old");
  EXPECT_FALSE(fs::exists(temp / "b"));
  EXPECT_THAT(endings, IsEmpty());
  EXPECT_TRUE(files->commit());
  EXPECT_EQ(readFile(temp / "a"), "new");
  EXPECT_EQ(readFile(temp / "b"), "more");
  EXPECT_THAT(endings, ElementsAre("a replaced", "b replaced"));
  EXPECT_EQ(entries(), 2U);
}

TEST_F(FileReplacements, WithoutACommitNothingIsLeft) {
  temp.write("a", "old");
  EXPECT_TRUE(add("a", "new"));
  EXPECT_TRUE(add("b", "more"));
  files.reset();
  EXPECT_EQ(readFile(temp / "a"), "old");
  EXPECT_EQ(entries(), 1U);
  EXPECT_THAT(endings, IsEmpty());
}

TEST_F(FileReplacements, OneThatFailsKeepsNoOtherFromItsPlace) {
  temp.write("directory/inside", "");
  EXPECT_TRUE(add("a", "1"));
  EXPECT_TRUE(add("directory", "2"));
  EXPECT_TRUE(add("b", "3"));
  EXPECT_FALSE(files->commit());
  EXPECT_THAT(endings, ElementsAre("a replaced", "directory kept", "b replaced"));
  EXPECT_TRUE(fs::exists(temp / "directory/inside"));
  EXPECT_EQ(entries(), 3U);
  // The failure is told once.
  EXPECT_TRUE(add("a", "4"));
  EXPECT_TRUE(files->commit());
}

TEST_F(FileReplacements, WhatCannotBeWrittenIsNotAdded) {
  temp.write("a", "old");
  {
    const FileLimit limit(1);
    EXPECT_FALSE(add("a", "new"));
  }
  EXPECT_FALSE(add("absent/a", "new"));
  EXPECT_FALSE(files->add("", "new"));
  EXPECT_TRUE(files->commit());
  EXPECT_EQ(readFile(temp / "a"), "old");
  EXPECT_EQ(entries(), 1U);
  EXPECT_THAT(endings, IsEmpty());
}

TEST_F(FileReplacements, OfTwoForOnePlaceTheLastOneStays) {
  fs::create_symlink(temp.write("a", "old"), temp / "link");
  EXPECT_TRUE(add("a", "1"));
  EXPECT_TRUE(add("link", "2"));
  EXPECT_TRUE(files->commit());
  EXPECT_THAT(endings, ElementsAre("a replaced", "link replaced"));
  EXPECT_EQ(readFile(temp / "a"), "2");
  EXPECT_TRUE(fs::is_symlink(temp / "link"));
}

TEST_F(FileReplacements, TooManyDoNotWaitForTheCommit) {
  constexpr int most = 10'000;
  for (int i = 0; i <= most; ++i)
    ASSERT_TRUE(add(std::to_string(i), "x"));
  EXPECT_TRUE(fs::exists(temp / std::to_string(most - 1)));
  EXPECT_FALSE(fs::exists(temp / std::to_string(most)));
  EXPECT_TRUE(files->commit());
  EXPECT_EQ(entries(), static_cast<std::size_t>(most) + 1);
}
