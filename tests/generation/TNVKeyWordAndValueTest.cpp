#include "generation/TNVKeyWordAndValue.h"

#include <fstream>
#include <random>
#include <regex>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LogCapture.h"
#include "support/TempDirectory.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Texts = std::vector<std::string>;

class TNVKeyWordAndValueFixture : public ::testing::Test {
 protected:
  void read(const std::string& content) {
    words.sourceFile = directory.write("template.tmp", content);
    words.targetFile = directory / "filled.txt";
    words.getAvailableKeys();
  }

  std::string replaced() {
    words.replace();
    return readFile(words.targetFile);
  }

  bool targetExists() const { return std::ifstream(words.targetFile).good(); }

  TempDirectory directory;
  LogCapture log;
  TNVKeyWordAndValue words;
};

struct PatternRow {
  const char* line;
  Texts keysAndValues;
};

class TNVKeyWordAndValuePattern : public ::testing::TestWithParam<PatternRow> {};

TEST_P(TNVKeyWordAndValuePattern, FindsTheKeywordsOfALine) {
  const TempDirectory directory;
  TNVKeyWordAndValue words;
  words.sourceFile = directory.write("template.tmp", GetParam().line);
  EXPECT_EQ(words.getAvailableKeysAndValues(), GetParam().keysAndValues);
  EXPECT_THAT(words.keys, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TNVKeyWordAndValuePattern,
    ::testing::Values(PatternRow{"no keyword", {}},                            //
                      PatternRow{"a=###A=1###", {"A", "1"}},                   //
                      PatternRow{"###A###", {"A", ""}},                        //
                      PatternRow{"###A=###", {"A", ""}},                       //
                      PatternRow{"###A=1######B=2###", {"A", "1", "B", "2"}},  //
                      PatternRow{"###A=1### text ###B=2###",
                                 {"A", "1", " text ", "", "B", "2"}},  //
                      PatternRow{"###A=1### tail", {"A", "1"}},        //
                      PatternRow{"###=5###", {"", "5"}},               //
                      PatternRow{"#####", {}},                         //
                      PatternRow{"###", {}},                           //
                      PatternRow{"######", {}},                        //
                      PatternRow{"####A=1###", {"A", "1"}},            //
                      PatternRow{"###A=1", {}},                        //
                      PatternRow{"###A\n=1###", {}},                   //
                      PatternRow{"###A=b=c###", {"A", "b=c"}},         //
                      PatternRow{"###A=b#c##d###", {"A", "b#c##d"}},   //
                      PatternRow{"### A = b ###", {" A ", " b "}},     //
                      PatternRow{"###A=1####", {"A", "1"}},            //
                      PatternRow{"###A=1###\n###A=2###\n###a=3###", {"A", "1", "a", "3"}},
                      PatternRow{"###A=1###\r\n", {"A", "1"}},   //
                      PatternRow{"###A\r=1###B###", {"B", ""}},  //
                      PatternRow{"###\rA=1###", {"\rA", "1"}}));

Texts keysByRegularExpression(const std::string& line) {
  const std::regex pattern("(###)[^#].*?(?=###)");
  Texts result;
  for (std::sregex_iterator match(line.begin(), line.end(), pattern), end; match != end; ++match) {
    const std::string text = match->str().substr(3);
    const std::string name = text.substr(0, text.find('='));
    bool known = false;
    for (std::size_t i = 0; i < result.size(); i += 2)
      known = known || result[i] == name;
    if (known) continue;
    result.push_back(name);
    result.push_back(text.find('=') == text.npos ? "" : text.substr(text.find('=') + 1));
  }
  return result;
}

TEST(TNVKeyWordAndValue, FindsWhatTheRegularExpressionFinds) {
  const TempDirectory directory;
  TNVKeyWordAndValue words;
  words.sourceFile = directory / "template.tmp";
  std::mt19937 random(20);
  for (int round = 0; round < 3000; ++round) {
    std::string line;
    for (auto length = random() % 40; length > 0; --length)
      line += "####a=\r"[random() % 7];
    directory.write("template.tmp", line);
    ASSERT_EQ(words.getAvailableKeysAndValues(), keysByRegularExpression(line)) << line;
  }
}

TEST(TNVKeyWordAndValue, AVeryLongLineIsNoTrouble) {
  const TempDirectory directory;
  TNVKeyWordAndValue words;
  words.sourceFile = directory.write(
      "template.tmp", "###A=" + std::string(5000000, 'x') + "###" + std::string(5000000, '#'));
  EXPECT_EQ(words.getAvailableKeysAndValues().size(), 2u);
}

TEST_F(TNVKeyWordAndValueFixture, ReadsKeysValuesAndKeywordsOfTheWorkedExample) {
  read("[net]\nbatch=###BATCHSIZE=64###\nclasses=###CLASSES###\n");
  EXPECT_THAT(words.keys, ElementsAre("BATCHSIZE", "CLASSES"));
  EXPECT_THAT(words.values, ElementsAre("64", "NO DEFAULT VALUE"));
  EXPECT_THAT(words.keywords, ElementsAre("BATCHSIZE=64", "CLASSES"));
  EXPECT_EQ(log.text(), "CLASSES has no default value set!\n");
}

TEST_F(TNVKeyWordAndValueFixture, FillsTheWorkedExample) {
  read("[net]\nbatch=###BATCHSIZE=64###\nclasses=###CLASSES###\n");
  EXPECT_TRUE(words.setValueForKey("CLASSES", "3"));
  EXPECT_EQ(replaced(), "[net]\nbatch=64\nclasses=3\n");
}

TEST_F(TNVKeyWordAndValueFixture, RefusesWhileADefaultIsMissing) {
  read("classes=###CLASSES###\n");
  words.replace();
  EXPECT_EQ(log.lines().back(), std::string("Replace konnte nicht ausgef\xFC") +
                                    "hrt werden. Default Value wurde nicht gesetzt. ");
  EXPECT_FALSE(targetExists());
}

TEST_F(TNVKeyWordAndValueFixture, RefusesTheMarkerAsAValue) {
  read("a=###A=1###\n");
  words.setValueForKey("A", "NO DEFAULT VALUE");
  words.replace();
  EXPECT_EQ(log.lines().size(), 1u);
  EXPECT_FALSE(targetExists());
}

TEST_F(TNVKeyWordAndValueFixture, RefusesListsOfDifferentLength) {
  read("a=###A=1###\n");
  words.values.clear();
  words.replace();
  EXPECT_EQ(log.text(), std::string("Replace konnte nicht ausgef\xFC") +
                            "hrt werden. Die Listenl\xE4" + "nge stimmt nicht \xFC" + "berein. \n");
  EXPECT_FALSE(targetExists());
}

TEST_F(TNVKeyWordAndValueFixture, ARefusalLeavesAnEarlierTargetAlone) {
  directory.write("filled.txt", "earlier");
  read("###A###");
  EXPECT_EQ(replaced(), "earlier");
}

TEST_F(TNVKeyWordAndValueFixture, AnUnknownKeyIsNotSet) {
  read("a=###A=1###\n");
  EXPECT_FALSE(words.setValueForKey("a", "2"));
  EXPECT_EQ(log.text(), "setValueForKey: a Element  Not Found\n");
  EXPECT_THAT(words.values, ElementsAre("1"));
}

TEST_F(TNVKeyWordAndValueFixture, ATextBetweenTwoKeywordsIsAKeyThatWantsAValue) {
  read("###A=1### text ###B=2###");
  EXPECT_THAT(words.keys, ElementsAre("A", " text ", "B"));
  EXPECT_EQ(log.text(), " text  has no default value set!\n");
  words.replace();
  EXPECT_FALSE(targetExists());
  EXPECT_TRUE(words.setValueForKey(" text ", "x"));
  // The first keyword takes the fence that the odd one would have started with.
  EXPECT_EQ(replaced(), "1 text 2\n");
}

TEST_F(TNVKeyWordAndValueFixture, ALaterDefaultOfAKnownKeyStaysAsItStands) {
  read("###A=1###\n###A=2###\n###A=1###\n");
  EXPECT_THAT(words.keywords, ElementsAre("A=1"));
  words.setValueForKey("A", "7");
  EXPECT_EQ(replaced(), "7\n###A=2###\n7\n");
}

TEST_F(TNVKeyWordAndValueFixture, AValueIsSearchedAgainForLaterKeywords) {
  read("###A=1###\n###B=2###\n");
  words.setValueForKey("A", "<###B=2###>");
  words.setValueForKey("B", "b");
  EXPECT_EQ(replaced(), "<b>\nb\n");
}

TEST_F(TNVKeyWordAndValueFixture, TheSearchGoesOnAtTheInsertedValue) {
  read("###A=1###=1###\n");
  words.setValueForKey("A", "###A");
  // "###A" and the rest of the line make the keyword once more; what that gives is no keyword.
  EXPECT_EQ(replaced(), "###A\n");
}

TEST_F(TNVKeyWordAndValueFixture, AFileWithoutKeywordsIsCopiedLineByLine) {
  read("one\n\n  two\r\n#three");
  EXPECT_EQ(replaced(), "one\n\n  two\r\n#three\n");
}

TEST_F(TNVKeyWordAndValueFixture, CarriageReturnsStay) {
  read("a=###A=1###\r\nb\r\n");
  EXPECT_EQ(replaced(), "a=1\r\nb\r\n");
}

TEST_F(TNVKeyWordAndValueFixture, ATemplateMayBeRewrittenInPlace) {
  read("a=###A=1###\nb\n");
  words.targetFile = words.sourceFile;
  EXPECT_EQ(replaced(), "a=1\nb\n");
}

TEST_F(TNVKeyWordAndValueFixture, AMissingTemplateGivesAnEmptyTargetSilently) {
  words.sourceFile = directory / "absent.tmp";
  words.targetFile = directory / "filled.txt";
  words.getAvailableKeys();
  EXPECT_THAT(words.keys, IsEmpty());
  EXPECT_THAT(words.getAvailableKeysAndValues(), IsEmpty());
  EXPECT_EQ(replaced(), "");
  EXPECT_TRUE(targetExists());
  EXPECT_EQ(log.text(), "");
}

TEST_F(TNVKeyWordAndValueFixture, ATargetThatCannotBeOpenedLeavesNoFile) {
  read("a\n");
  words.targetFile = directory / "absent/filled.txt";
  words.replace();
  EXPECT_FALSE(targetExists());
  EXPECT_EQ(log.text(), "");
}

}  // namespace
