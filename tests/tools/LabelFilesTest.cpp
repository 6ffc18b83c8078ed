#include "tools/LabelFiles.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LogCapture.h"
#include "support/SystemMessage.h"
#include "support/TempDirectory.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

tnv::LabelSet setOf(const std::vector<std::string>& paths) {
  tnv::LabelSet set;
  for (const std::string& path : paths)
    set.pictures.push_back({path, {}, {}, {}});
  return set;
}

}  // namespace

TEST(LabelFiles, PicturesOfOneNameGetNumbers) {
  EXPECT_THAT(
      tnv::outputNames(setOf({"/a/x.jpg", "/b/x.jpg", "/b/X.png", "/b/y.v2.jpg", "/c/x.jpg"})),
      ElementsAre("x", "x_2", "X_3", "y.v2", "x_4"));
}

TEST(LabelFiles, ANumberedNameGivesWayToARealOne) {
  EXPECT_THAT(tnv::outputNames(setOf({"/a/x_2.jpg", "/a/x.jpg", "/b/x.jpg"})),
              ElementsAre("x_2", "x", "x_3"));
}

TEST(LabelFiles, ANameNeverLeadsOutOfItsDirectory) {
  EXPECT_EQ(tnv::pathBelow("/set/images", "a.jpg"), "/set/images/a.jpg");
  EXPECT_EQ(tnv::pathBelow("/set/images/", "day1/./a.jpg"), "/set/images/day1/a.jpg");
  EXPECT_EQ(tnv::pathBelow("/set/images", "day1\\a.jpg"), "/set/images/day1/a.jpg");
  for (const char* name :
       {"", "/etc/a.jpg", "../a.jpg", "day1/../../a.jpg", "..\\a.jpg", "day1/", ".."})
    EXPECT_EQ(tnv::pathBelow("/set/images", name), std::nullopt) << name;
  EXPECT_EQ(tnv::pathBelow("/set/images", std::string("a\0.jpg", 6)), std::nullopt);
}

TEST(LabelFiles, NamesKeepTheirNumbersAndLoseTheirBlanks) {
  const TempDirectory temp;
  const std::string file =
      temp.write("classes.txt", "\xEF\xBB\xBF screw\r\n\r\nhex nut\t\r\nH\xFClse\n\n\n");
  EXPECT_THAT(*tnv::readNames(file), ElementsAre("screw", "", "hex nut", "H\xFClse"));
  EXPECT_EQ(tnv::readNames(temp.write("none.txt", "\n\n")), std::nullopt);
  EXPECT_EQ(tnv::readNames(temp / "missing.txt"), std::nullopt);
}

TEST(LabelFiles, WhatIsTooLongForClassesNamesNone) {
  const TempDirectory temp;
  LogCapture log;
  EXPECT_EQ(tnv::readNames(temp.write("a.txt", "screw" + std::string(100001, '\n'))), std::nullopt);
  EXPECT_THAT(log.text(), HasSubstr("a.txt' has too many lines for a list of class names!"));
  EXPECT_TRUE(tnv::readNames(temp.write("b.txt", "screw" + std::string(100000, '\n'))));
}

TEST(LabelFiles, LongNamesAreCutBetweenCharacters) {
  const std::string x229(229, 'x');
  EXPECT_THAT(tnv::outputNames(setOf({"/a/" + x229 + "\xC3\xBC.jpg", "/b/" + x229 + "yz.jpg",
                                      "/c/" + x229 + "ya.jpg"})),
              ElementsAre(x229, x229 + "y", x229 + "y_2"));
}

TEST(LabelFiles, CopiesReplaceEarlierOnesAndEndAtTheFirstFailure) {
  const TempDirectory temp;
  const auto set =
      setOf({temp.write("a.jpg", "new"), temp / "missing.jpg", temp.write("c.jpg", "")});
  const std::string target = temp.makeDirectory("images");
  temp.write("images/x.jpg", "old");
  LogCapture log;
  EXPECT_FALSE(tnv::copyPictures(set, {"x", "y", "z"}, target, "who"));
  EXPECT_EQ(readFile(target + "x.jpg"), "new");
  EXPECT_FALSE(std::filesystem::exists(target + "z.jpg"));
  EXPECT_THAT(log.lines(), ElementsAre("who: Could not copy '" + temp.path() + "missing.jpg': " +
                                       messageOf(std::errc::no_such_file_or_directory)));
}

TEST(LabelFiles, ACopyThatFailsLeavesNothing) {
  const TempDirectory temp;
  const auto set = setOf({temp.write("a.jpg", "picture")});
  const std::string target = temp.makeDirectory("images");
  temp.write("images/x.jpg/in the way", "");
  LogCapture log;
  EXPECT_FALSE(tnv::copyPictures(set, {"x"}, target, "who"));
  EXPECT_THAT(log.text(), HasSubstr("a.jpg': "));
  std::vector<std::string> left;
  for (const auto& entry : std::filesystem::directory_iterator(target))
    left.push_back(entry.path().filename().string());
  EXPECT_THAT(left, ElementsAre("x.jpg"));
}

TEST(LabelFiles, CopyingEndsBeforeTheNextPictureWhenTold) {
  const TempDirectory temp;
  const auto set = setOf({temp.write("a.jpg", "a"), temp.write("b.jpg", "b")});
  const std::string target = temp.makeDirectory("images");
  int asked = 0;
  EXPECT_FALSE(tnv::copyPictures(set, {"a", "b"}, target, "who", [&] { return ++asked < 2; }));
  EXPECT_TRUE(std::filesystem::exists(target + "a.jpg"));
  EXPECT_FALSE(std::filesystem::exists(target + "b.jpg"));
}

TEST(LabelFiles, APictureThatIsItsOwnCopyStaysWhole) {
  const TempDirectory temp;
  const auto set = setOf({temp.write("a.jpg", "picture")});
  EXPECT_TRUE(tnv::copyPictures(set, {"a"}, temp.path(), "who"));
  EXPECT_EQ(readFile(temp / "a.jpg"), "picture");
}
