#include "foundation/TNVSettings.h"

#include <locale>
#include <map>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LogCapture.h"
#include "support/TempDirectory.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

class TNVSettingsTest : public testing::Test {
 protected:
  /// The settings of a file with that content.
  TNVSettings& loaded(const std::string& content) {
    temp.write("file.cfg", content);
    EXPECT_TRUE(settings.loadFile());
    return settings;
  }

  /// What the file holds after saving.
  std::string saved() {
    EXPECT_TRUE(settings.saveFile());
    return readFile(path);
  }

  TempDirectory temp;
  std::string path = temp / "file.cfg";
  TNVSettings settings{path};
};

}  // namespace

TEST_F(TNVSettingsTest, ValuesReadBackAsTheGrammarHasIt) {
  struct Row {
    const char* line;
    const char* value;
  };
  const Row rows[] = {
      {"Key = \"a=b\"", "ab"},
      {"Key = \"C:\\dir\"", "C:dir"},
      {"Key = \"C:\\\\dir\"", "C:\\dir"},
      {"Key = a/b", "ab"},
      {"Key = a//b", "a"},
      {"Key = a/", "a"},
      {"Key = 1 2", "12"},
      {"\tKey\t=\t1\t", "1"},
      {"Key = \" 1 2\t\"", " 1 2\t"},
      {"Key = \"a//b\"", "a//b"},
      {"Key = \"say \\\"x\\\"\"", "say \"x\""},
      {"Key = \"a\"b\"c\"", "abc"},
      {"Key = a=b=c", "abc"},
      {"Key = a\\b", "a\\b"},
      {"Key =", ""},
      {"Key = \"\"", ""},
      {"\"Key\" = x", "x"},
      {"K ey = x // note", "x"},
      {"Key = x\r", "x"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(row.value, loaded(row.line).getString("Key", "absent")) << row.line;
  }
}

TEST_F(TNVSettingsTest, LinesWithoutAnEntryCarryNothing) {
  for (const char* line : {"// Key = 1", "Key", "", "  // Key = 1", "Key // = 1"}) {
    EXPECT_EQ("absent", loaded(line).getString("Key", "absent")) << line;
  }
}

TEST_F(TNVSettingsTest, FirstOfTwoLinesWithOneKeyWins) {
  EXPECT_EQ(1, loaded("Key = 1\nKey = 2\n").getInt("Key", 0));
}

TEST_F(TNVSettingsTest, MissingFileIsLogged) {
  const LogCapture log;
  EXPECT_FALSE(settings.loadFile());
  EXPECT_THAT(log.lines(), ElementsAre("TNVSettings::loadFile: Could not find settings file at '" +
                                       path + "' !"));
}

TEST_F(TNVSettingsTest, FileThatCannotBeOpenedLeavesTheValues) {
  const TempDirectory other;
  TNVSettings directory(other.path());
  directory.setInt("Key", 5);
  EXPECT_TRUE(directory.loadFile());
  EXPECT_EQ(5, directory.getInt("Key", 0));
}

TEST_F(TNVSettingsTest, LoadingReplacesTheValues) {
  settings.setInt("Old", 1);
  loaded("New = 2");
  EXPECT_EQ(0, settings.getInt("Old", 0));
  EXPECT_EQ(2, settings.getInt("New", 0));
}

TEST_F(TNVSettingsTest, LoadingKeepsWhichKeysAreQuoted) {
  settings.setString("Key", "x");
  loaded("Key = 5");
  EXPECT_EQ("Key = \"5\"\n", saved());
}

TEST_F(TNVSettingsTest, QuotedLinesAreWrittenQuoted) {
  loaded("A = \"1\"\nB = 1\n");
  EXPECT_EQ("A = \"1\"\nB = 1\n", saved());
}

TEST_F(TNVSettingsTest, SavesSortedByTheBytesOfTheKeys) {
  settings.setInt("b", 1);
  settings.setString("B", "x y");
  settings.setBool("a", true);
  EXPECT_EQ("B = \"x y\"\na = YES\nb = 1\n", saved());
}

TEST_F(TNVSettingsTest, SavingReplacesTheFile) {
  temp.write("file.cfg", "Old = 1\n");
  settings.setInt("New", 2);
  EXPECT_EQ("New = 2\n", saved());
}

TEST_F(TNVSettingsTest, NothingIsEscapedOnSaving) {
  settings.setString("Key", "a\"b\\c=d");
  EXPECT_EQ("Key = \"a\"b\\c=d\"\n", saved());
}

TEST_F(TNVSettingsTest, FileThatCannotBeWrittenIsNotLogged) {
  TNVSettings nowhere(temp / "missing/file.cfg");
  nowhere.setInt("Key", 1);
  const LogCapture log;
  EXPECT_FALSE(nowhere.saveFile());
  EXPECT_EQ("", log.text());
}

TEST_F(TNVSettingsTest, LastSetterDecidesWhetherTheKeyIsQuoted) {
  settings.setString("Key", "x");
  settings.setBool("Key", true);
  EXPECT_EQ("Key = YES\n", saved());
}

TEST_F(TNVSettingsTest, SetValueQuotesByItsFlag) {
  settings.setValue("A", "x", 1);
  settings.setValue("B", "x", 0);
  EXPECT_EQ("A = \"x\"\nB = x\n", saved());
}

TEST_F(TNVSettingsTest, BooleansReadTrueAndYesInAnyCase) {
  for (const char* text : {"yes", "Yes", "YES", "TRUE", "true", "\"yes\""}) {
    EXPECT_TRUE(loaded(std::string("Key = ") + text).getBool("Key", false)) << text;
  }
  for (const char* text : {"1", "on", "NO", "", "yess"}) {
    EXPECT_FALSE(loaded(std::string("Key = ") + text).getBool("Key", true)) << text;
  }
}

TEST_F(TNVSettingsTest, IntegersOfNoNumberAreZero) {
  EXPECT_EQ(0, loaded("Key = abc").getInt("Key", 7));
  EXPECT_EQ(-3, loaded("Key = -3x").getInt("Key", 7));
}

TEST_F(TNVSettingsTest, AbsentKeysGiveTheDefaultAndAreNotAdded) {
  EXPECT_EQ("d", settings.getString("K", "d"));
  EXPECT_TRUE(settings.getBool("K", true));
  EXPECT_EQ(7, settings.getInt("K", 7));
  EXPECT_THAT(settings.getIntList("K", {7}), ElementsAre(7));
  EXPECT_THAT(settings.getFloatList("K", {7.5f}), ElementsAre(7.5f));
  EXPECT_THAT(settings.getStringList("K", {"d"}), ElementsAre("d"));
  EXPECT_THAT(settings.getStringMap("K", {{"k", "v"}}), ElementsAre(Pair("k", "v")));
  EXPECT_EQ("", saved());
}

TEST_F(TNVSettingsTest, ListsAreWrittenOnOneLine) {
  settings.setIntList("Ids", {0, 1, -2});
  settings.setFloatList("Sizes", {0.01f, 20.0f});
  settings.setStringList("Types", {"jpg", "jpeg", "png"});
  settings.setStringMap("Words", {{"a", "1"}, {"b", "2"}});
  settings.setIntList("None", {});
  EXPECT_EQ(
      "Ids = 0,1,-2\nNone = \nSizes = 0.010000,20.000000\nTypes = \"jpg\",\"jpeg\",\"png\"\n"
      "Words = \"a\">\"1\",\"b\">\"2\"\n",
      saved());
}

TEST_F(TNVSettingsTest, ListsComeBack) {
  settings.setIntList("Ids", {0, 1, -2});
  settings.setFloatList("Sizes", {0.01f, 20.0f});
  settings.setStringList("Types", {"jpg", "a b", ""});
  settings.setStringMap("Words", {{"a", "1"}, {"b", ""}});
  saved();
  settings.loadFile();
  EXPECT_THAT(settings.getIntList("Ids", {}), ElementsAre(0, 1, -2));
  EXPECT_THAT(settings.getFloatList("Sizes", {}), ElementsAre(0.01f, 20.0f));
  EXPECT_THAT(settings.getStringList("Types", {}), ElementsAre("jpg", "a b", ""));
  EXPECT_THAT(settings.getStringMap("Words", {}), ElementsAre(Pair("a", "1"), Pair("b", "")));
}

TEST_F(TNVSettingsTest, BracesVanishFromLists) {
  EXPECT_THAT(loaded("Key = {1,2}").getIntList("Key", {}), ElementsAre(1, 2));
}

TEST_F(TNVSettingsTest, EmptyValueIsAnEmptyListAndNotTheDefault) {
  loaded("Key = ");
  EXPECT_THAT(settings.getIntList("Key", {7}), IsEmpty());
  EXPECT_THAT(settings.getStringList("Key", {"d"}), IsEmpty());
  EXPECT_THAT(settings.getFloatList("Key", {7.0f}), IsEmpty());
  EXPECT_THAT(settings.getStringMap("Key", {{"k", "v"}}), IsEmpty());
}

TEST_F(TNVSettingsTest, WhatFollowsTheLastCommaIsAnItem) {
  EXPECT_THAT(loaded("Key = a,").getStringList("Key", {}), ElementsAre("a", ""));
  EXPECT_THAT(loaded("Key = \"a , b\"").getStringList("Key", {}), ElementsAre("a ", " b"));
}

TEST_F(TNVSettingsTest, MapsKeepPairsAndTheFirstOfTwoKeys) {
  loaded("Key = \"a>1,b,c>2>3,a>4\"");
  EXPECT_THAT(settings.getStringMap("Key", {}), ElementsAre(Pair("a", "1")));
}

TEST_F(TNVSettingsTest, FloatsAreKeptInSinglePrecision) {
  EXPECT_THAT(loaded("Key = 0.1,abc").getFloatList("Key", {}), ElementsAre(0.1f, 0.0f));
}

TEST_F(TNVSettingsTest, RandomBytesNeverFail) {
  std::mt19937 random(20260101);
  for (int round = 0; round < 300; ++round) {
    std::string content;
    for (int i = 0; i < 200; ++i)
      content += "=\"\\/{},> \tKey\n\r\0x"[random() % 17];
    loaded(content);
    saved();
  }
}

TEST_F(TNVSettingsTest, QuotesOfASecondLineCount) {
  loaded("K = 1\nK = \"2\"\n");
  EXPECT_EQ("K = \"1\"\n", saved());
}

TEST_F(TNVSettingsTest, TextsThatSurviveInAListComeBack) {
  for (const char* text : {"a", " a b ", "a>b", "a//b", "it's", ""}) {
    EXPECT_TRUE(TNVSettings::survivesInList(text)) << text;
    settings.setStringList("Key", {text, "end"});
    saved();
    settings.loadFile();
    EXPECT_THAT(settings.getStringList("Key", {}), ElementsAre(text, "end"));
  }
  for (const char* text : {"a,b", "a=b", "{", "}", "\"", "a\\b", "a\nb"}) {
    EXPECT_FALSE(TNVSettings::survivesInList(text)) << text;
  }
}

TEST_F(TNVSettingsTest, ContainsAnswersForKeysWithAndWithoutAValue) {
  loaded("A = 1\nB =\n");
  EXPECT_TRUE(settings.contains("A"));
  EXPECT_TRUE(settings.contains("B"));
  EXPECT_FALSE(settings.contains("C"));
}
