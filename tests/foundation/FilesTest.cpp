#include "foundation/Files.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

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

TEST(Files, WhatIsNoRegularFileIsNotWaitedFor) {
  const TempDirectory temp;
  const std::string pipe = temp / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(tnv::readFile(pipe), std::nullopt);
  EXPECT_EQ(tnv::readFile("/dev/zero"), std::nullopt);
}
