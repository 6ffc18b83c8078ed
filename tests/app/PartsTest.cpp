#include <gmock/gmock.h>

#include <filesystem>
#include <sstream>

#include "CommandError.h"
#include "DemoPictures.h"
#include "DesignedMark.h"
#include "LogFilter.h"
#include "MarkCommand.h"
#include "MarkList.h"
#include "Numbers.h"
#include "Output.h"
#include "Platform.h"
#include "Progress.h"
#include "support/Pictures.h"
#include "support/TempDirectory.h"

namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

TEST(ProgramPlatform, TheFileOfALockLiesBesideTheDirectory) {
  for (const char* directory : {"/a/b", "/a/b/", "/a/./c/../b"})
    EXPECT_EQ(platform::lockFileOf(directory), "/a/.b.lock") << directory;
  EXPECT_EQ(platform::lockFileOf("b"), fs::current_path() / ".b.lock");
  for (const char* directory : {"", "/"})
    EXPECT_EQ(platform::lockFileOf(directory), "") << directory;
}

TEST(ProgramPlatform, ADirectoryIsLockedOnce) {
  using platform::DirectoryLock;
  const TempDirectory place;
  const fs::path directory = place / "set";
  for (const auto kind : {DirectoryLock::Kind::staying, DirectoryLock::Kind::replaced}) {
    fs::create_directory(directory);
    const DirectoryLock lock(directory, kind);
    EXPECT_TRUE(lock.isOurs());
    EXPECT_FALSE(DirectoryLock(directory, DirectoryLock::Kind::staying).isOurs());
    EXPECT_FALSE(DirectoryLock(directory, DirectoryLock::Kind::replaced).isOurs());
    EXPECT_TRUE(DirectoryLock(place / "other", kind).isOurs());
  }
  EXPECT_TRUE(DirectoryLock(directory).isOurs());
}

TEST(ProgramPlatform, ALockOutlivesTheDirectory) {
  using platform::DirectoryLock;
  const TempDirectory place;
  const fs::path directory = place / "set";
  for (const bool isNew : {true, false}) {
    if (!isNew) fs::create_directory(directory);
    {
      const DirectoryLock lock(directory, DirectoryLock::Kind::replaced);
      fs::remove(directory);
      fs::create_directory(directory);
      EXPECT_FALSE(DirectoryLock(directory, DirectoryLock::Kind::replaced).isOurs());
      EXPECT_TRUE(fs::exists(platform::lockFileOf(directory)));
    }
    EXPECT_TRUE(DirectoryLock(directory, DirectoryLock::Kind::replaced).isOurs());
    fs::remove(directory);
    EXPECT_TRUE(fs::is_empty(place.path())) << isNew;
  }
}

TEST(ProgramNumbers, OnlyWholeFiniteNumbersAreRead) {
  EXPECT_EQ(parseNumber("0.25"), 0.25);
  EXPECT_EQ(parseNumber("-1e2"), -100.0);
  for (const auto* text : {"", " 1", "1 ", "1,5", "0x1", "nan", "inf", "1e999", "+1", "abc"})
    EXPECT_FALSE(parseNumber(text)) << text;
}

TEST(ProgramNumbers, PointsArePairs) {
  EXPECT_EQ(parsePoint("0.25,3"), (Point{0.25, 3}));
  for (const auto* text : {"", ",", "1", "1,", ",1", "1,2,3", "1, 2"})
    EXPECT_THROW(parsePoint(text), CommandError) << text;
  EXPECT_THAT(parsePoints("  1,2   3,4 "), ElementsAre(Point{1, 2}, Point{3, 4}));
  EXPECT_TRUE(parsePoints("  ").empty());
}

TEST(ProgramNumbers, TheEdgesBelongToThePicture) {
  EXPECT_TRUE(isWithinPicture({0, 1}));
  EXPECT_FALSE(isWithinPicture({-0.001, 0.5}));
  EXPECT_FALSE(isWithinPicture({0.5, 1.001}));
}

TEST(ProgramNumbers, ColoursAreSixHexadecimalDigits) {
  const auto color = parseColor("ff8001");
  EXPECT_EQ(color.red, 255);
  EXPECT_EQ(color.green, 128);
  EXPECT_EQ(color.blue, 1);
  for (const auto* text : {"", "fff", "ff80011", "gg0000", "-f8001", "#ff800"})
    EXPECT_THROW(parseColor(text), CommandError) << text;
}

TEST(ProgramMarkList, GivesPlaceAndFields) {
  std::istringstream list("#x\n\nmy pic.jpg\tRect\tnut\t0,0.5 1,1\n");
  const auto requests = parseMarkList(list, "l.txt");
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_EQ(requests[0].where, "l.txt:3: ");
  EXPECT_EQ(requests[0].picture, "my pic.jpg");
  EXPECT_EQ(requests[0].form, "Rect");
  EXPECT_EQ(requests[0].className, "nut");
  EXPECT_THAT(requests[0].points, ElementsAre(Point{0, 0.5}, Point{1, 1}));
}

TEST(ProgramMarkList, TheLastLineNeedsNoLineFeed) {
  for (const auto* text :
       {"a\tPoint\tnut\t0,0", "a\tPoint\tnut\t0,0\n", "a\tPoint\tnut\t0,0\r\n"}) {
    std::istringstream list(text);
    const auto requests = parseMarkList(list, "l.txt");
    ASSERT_EQ(requests.size(), 1U) << text;
    EXPECT_THAT(requests[0].points, ElementsAre(Point{0, 0}));
  }
  std::istringstream nothing("");
  EXPECT_TRUE(parseMarkList(nothing, "l.txt").empty());
}

TEST(ProgramMarkDesign, ARectangleByItsCentreBecomesOneByItsCorners) {
  const auto design = designFor("Rect Center", {{0.5, 0.5}, {0.75, 0.625}});
  EXPECT_EQ(design.form, "Rect");
  EXPECT_THAT(design.points, ElementsAre(Point{0.25, 0.375}, Point{0.75, 0.625}));
}

TEST(ProgramLog, EqualLinesInARowCollapse) {
  std::ostringstream target;
  ErrorLines errors(target);
  LogFilter filter(errors);
  std::ostream log(&filter);
  log << "a\n";
  for (int i = 0; i < 143; ++i)
    log << "b" << std::endl;
  log << "a\na\nunfinished";
  filter.finish();
  EXPECT_EQ(target.str(), "a\nb\n... (repeated 142 times)\na\na\nunfinished\n");
}

TEST(ProgramLog, WhatSaysNothingToAUserIsLeftOutAndIsNoCause) {
  std::ostringstream target;
  ErrorLines errors(target);
  LogFilter filter(errors);
  std::ostream log(&filter);
  log << "a\nTNVTrainSet::save: Cannot save, data not loaded!\nTNVTrainSet::save: other\na\n"
      << "TNVTrainSet::save: Cannot save, data not loaded!\n";
  filter.finish();
  EXPECT_EQ(target.str(), "a\nTNVTrainSet::save: other\na\n");
  EXPECT_EQ(filter.newestLine(), "a");
}

TEST(ProgramOutput, HeadingsBecomeKeysInOneStyle) {
  EXPECT_EQ(keyOf("class"), "class");
  EXPECT_EQ(keyOf("largest side"), "largestSide");
  EXPECT_EQ(keyOf("trained weights go to"), "trainedWeightsGoTo");
}

TEST(ProgramLog, ALineTakesThePlaceOfAProgressBar) {
  std::ostringstream target;
  ErrorLines errors(target);
  errors.redraw("[##..]");
  errors.line("log");
  EXPECT_EQ(target.str(), "\r\x1b[K[##..]\r\x1b[Klog\n");
}

TEST(ProgramProgress, TheBarHasCountShareRateAndTimeLeft) {
  EXPECT_EQ(progressBar({12, 24, 4}),
            "[" + std::string(15, '#') + std::string(15, '.') + "] 12/24  50 %  3.0/s  4 s left");
  EXPECT_EQ(progressBar({0, 24, 0}), "[" + std::string(30, '.') + "] 0/24  0 %");
}

TEST(ProgramOutput, TablesAlignColumnsAndCountLettersNotBytes) {
  std::ostringstream stream;
  writeTable(stream, {{"n", "name", "x"}, {"10", "\xC3\xBC", "y"}});
  EXPECT_EQ(stream.str(), "n   name  x\n10  \xC3\xBC     y\n");
}

TEST(ProgramOutput, ControlCharactersAreShownAsQuestionMarks) {
  EXPECT_EQ(printable("a\x1b[2J\r\n\t\x7f"), "a?[2J????");
  // A terminal takes the upper control characters in UTF-8, too; letters stay.
  EXPECT_EQ(printable("\xC2\x9B"
                      "2J\xC3\x9B\xC2\xA0"),
            "?2J\xC3\x9B\xC2\xA0");
  EXPECT_EQ(printable("\xC2"), "\xC2");
  std::ostringstream stream;
  writeTable(stream, {{"a\x1b[2J", "b\nc"}, {"\xC2\x9B", "\r"}});
  EXPECT_EQ(stream.str(), "a?[2J  b?c\n?      ?\n");
}

TEST(ProgramOutput, ATerminalGetsNoControlCharactersAndAProgramGetsTheValues) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  {
    Output output;
    output.say("s\x1b");
    output.note("n\x1b");
    output.error("e\x1b");
    output.setJson();
    output.table("files", {"name"}, {{"t\x1b"}});
    output.finish();
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "n?\nsamplebench: e?\n");
  const auto out = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(out.starts_with("s?\n{")) << out;
  EXPECT_NE(out.find("\"error\" : \"e\\u001b\""), std::string::npos) << out;
  EXPECT_NE(out.find("\"name\" : \"t\\u001b\""), std::string::npos) << out;
}

TEST(ProgramProgress, OfNothingThereIsNone) {
  testing::internal::CaptureStderr();
  {
    Output output;
    Progress progress(0, output);
    progress.moveTo(0);
    progress.finish();
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ProgramDemoPictures, TheSameNumberGivesTheSamePicture) {
  const auto picture = drawDemoPicture(5);
  EXPECT_TRUE(samePixels(picture.image, drawDemoPicture(5).image));
  EXPECT_EQ(picture.image.size(), cv::Size(demoWidth, demoHeight));
}

TEST(ProgramDemoPictures, BoxesLieWithinThePicture) {
  const cv::Rect whole(0, 0, demoWidth, demoHeight);
  for (unsigned int number = 0; number < 8; ++number) {
    const auto objects = drawDemoPicture(number).objects;
    EXPECT_GE(objects.size(), 5U);
    for (std::size_t i = 0; i < objects.size(); ++i) {
      EXPECT_EQ(objects[i].box & whole, objects[i].box);
      EXPECT_GE(objects[i].box.width, 10);
      EXPECT_GE(objects[i].box.height, 10);
    }
  }
}

}  // namespace
