#include "foundation/Files.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/FileLimit.h"
#include "support/TempDirectory.h"

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Files, ReadingGivesTheWholeContent) {
  const TempDirectory temp;
  const std::string content("a\0b\r\n", 5);
  EXPECT_EQ(content, tnv::readFile(temp.write("file", content)));
  EXPECT_EQ("", tnv::readFile(temp.write("empty", "")));
}

TEST(Files, WhatIsNoReadableFileHasNoContent) {
  const TempDirectory temp;
  EXPECT_EQ(std::nullopt, tnv::readFile(temp / "missing"));
  EXPECT_EQ(std::nullopt, tnv::readFile(temp.path()));
}

TEST(Files, ReplacingLeavesNothingButTheFile) {
  const TempDirectory temp;
  temp.write("file", "old and longer");
  EXPECT_TRUE(tnv::replaceFile(temp / "file", "new"));
  EXPECT_EQ("new", readFile(temp / "file"));
  EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(temp.path()), {}));
}

TEST(Files, FailedReplacementTellsAndLeavesWhatWasThere) {
  const TempDirectory temp;
  temp.write("target/inside", "kept");
  EXPECT_FALSE(tnv::replaceFile(temp / "target", "new"));
  EXPECT_EQ("kept", readFile(temp / "target/inside"));
  EXPECT_FALSE(tnv::replaceFile(temp / "missing/file", "new"));
  EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(temp.path()), {}));
}

TEST(Files, NoPathIsNoFile) {
  EXPECT_FALSE(tnv::replaceFile("", "text"));
}

TEST(Files, LinesEndAtLineFeeds) {
  EXPECT_THAT(tnv::splitLines("a\nb\n"), ElementsAre("a", "b"));
  EXPECT_THAT(tnv::splitLines("a\n\nb"), ElementsAre("a", "", "b"));
  EXPECT_THAT(tnv::splitLines("\n"), ElementsAre(""));
  EXPECT_THAT(tnv::splitLines(""), IsEmpty());
}

TEST(Files, PathsAreNoPlainNames) {
  for (const char* name : {"", ".", "..", "../x", "a/b", "a\\b", "a\nb", "\x7f"}) {
    EXPECT_FALSE(tnv::isPlainName(name)) << name;
  }
  for (const char* name : {"a", "...", "a b", ".hidden",
                           "Stra\xc3\x9f"
                           "e",
                           "a.b"}) {
    EXPECT_TRUE(tnv::isPlainName(name)) << name;
  }
}

TEST(Files, NamesThatLeaveNoRoomForEndingsNameNoFiles) {
  EXPECT_TRUE(tnv::canNameFiles(std::string(240, 'n')));
  EXPECT_FALSE(tnv::canNameFiles(std::string(241, 'n')));
  EXPECT_FALSE(tnv::canNameFiles("a/b"));
}

TEST(Files, WhatIsNoRegularFileIsNotWaitedFor) {
  const TempDirectory temp;
  const std::string pipe = temp / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(tnv::readFile(pipe), std::nullopt);
  EXPECT_EQ(tnv::readFile("/dev/zero"), std::nullopt);
}

TEST(Files, AFullDiskLeavesTheEarlierFile) {
  const TempDirectory temp;
  temp.write("file", "old");
  {
    const FileLimit limit(4);
    EXPECT_FALSE(tnv::replaceFile(temp / "file", "new and longer"));
    EXPECT_FALSE(tnv::writeFile(temp / "other", "new and longer"));
  }
  EXPECT_EQ(readFile(temp / "file"), "old");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(temp.path()), {}), 1);
}

TEST(Files, AFullDiskLeavesNothingBehindALinkThatLedNowhere) {
  const TempDirectory temp;
  std::filesystem::create_symlink("real", temp / "link");
  const FileLimit limit(4);
  EXPECT_FALSE(tnv::writeFile(temp / "link", "new and longer"));
  EXPECT_TRUE(std::filesystem::is_symlink(temp / "link"));
  EXPECT_FALSE(std::filesystem::exists(temp / "real"));
}

TEST(Files, OfALinkedFileTheFileIsReplacedAndTheLinkStays) {
  const TempDirectory temp;
  temp.write("elsewhere/file", "old");
  std::filesystem::create_symlink("elsewhere/file", temp / "link");
  EXPECT_TRUE(tnv::replaceFile(temp / "link", "new"));
  EXPECT_TRUE(std::filesystem::is_symlink(temp / "link"));
  EXPECT_EQ(readFile(temp / "elsewhere/file"), "new");
}

TEST(Files, ALinkThatLeadsNowhereGivesWayToTheFile) {
  const TempDirectory temp;
  std::filesystem::create_symlink(temp / "nowhere", temp / "link");
  EXPECT_TRUE(tnv::replaceFile(temp / "link", "new"));
  EXPECT_EQ(readFile(temp / "link"), "new");
  EXPECT_FALSE(std::filesystem::exists(temp / "nowhere"));
}

TEST(Files, WhoMayReadAFileStays) {
  const TempDirectory temp;
  temp.write("file", "old");
  using std::filesystem::perms;
  for (const perms kept : {perms::owner_read | perms::owner_write, perms::none}) {
    std::filesystem::permissions(temp / "file", kept);
    EXPECT_TRUE(tnv::replaceFile(temp / "file", "new"));
    EXPECT_EQ(std::filesystem::status(temp / "file").permissions(), kept);
  }
}

TEST(Files, AFullDiskLeavesALinkAndNothingOfWhatItLeadsTo) {
  const TempDirectory temp;
  temp.write("real", "old");
  std::filesystem::create_symlink("real", temp / "link");
  const FileLimit limit(4);
  EXPECT_FALSE(tnv::writeFile(temp / "link", "new and longer"));
  EXPECT_TRUE(std::filesystem::is_symlink(temp / "link"));
  EXPECT_FALSE(std::filesystem::exists(temp / "real"));
}

TEST(Files, APipeOrLinkOfTheTemporaryNameIsNotWrittenTo) {
  const TempDirectory temp;
  temp.write("victim", "kept");
  std::filesystem::create_symlink(temp / "victim", temp / "a.new");
  ASSERT_EQ(::mkfifo((temp / "b.new").c_str(), 0600), 0);
  for (const char* name : {"a", "b"}) {
    EXPECT_TRUE(tnv::replaceFile(temp / name, "new")) << name;
    EXPECT_EQ(readFile(temp / name), "new");
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(temp / name)));
  }
  EXPECT_EQ(readFile(temp / "victim"), "kept");
}
