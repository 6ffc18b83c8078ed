#include "Division.h"

#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>

#include "CommandError.h"
#include "ProgramRunner.h"
#include "SampleSources.h"
#include "support/Pictures.h"

namespace {

std::string groupOf(const std::string& grouping, const std::string& picture) {
  return Grouper(parseGrouping(grouping)).groupOf(picture);
}

/// That many groups, each of that many samples.
std::vector<std::string> equalGroups(std::size_t count, std::size_t size) {
  std::vector<std::string> groups;
  for (std::size_t i = 0; i < count * size; ++i)
    groups.push_back("video" + std::to_string(i % count));
  return groups;
}

double shareOf(const std::vector<std::string>& groups, double ratio, std::uint32_t seed) {
  const auto isTest = testSamples(groups, ratio, seed);
  return static_cast<double>(std::count(isTest.begin(), isTest.end(), true)) /
         static_cast<double>(groups.size());
}

}  // namespace

TEST(Division, GroupsOfAPicture) {
  EXPECT_EQ(groupOf("source", "/photos/a.jpg"), "a.jpg");
  EXPECT_EQ(groupOf("group=^(.*)_frame", "/photos/clip_3_frame12.jpg"), "clip_3");
  EXPECT_EQ(groupOf("group=^[a-z]+", "/photos/clip_3_frame12.jpg"), "clip");
  EXPECT_EQ(groupOf("group=^(.*)_frame", "/photos/a.jpg"), "a.jpg");
  EXPECT_EQ(groupOf("group=photos", "/photos/a.jpg"), "a.jpg") << "directories do not count";
  EXPECT_EQ(groupOf("group=^(x)?a", "/photos/a.jpg"), "a") << "the group matched nothing";
}

TEST(Division, NoExpressionTakesLongOrRunsOutOfMemory) {
  const std::string name(100000, 'a');
  EXPECT_EQ(groupOf("group=^(a*)*b", name), name) << "finds nothing";
  EXPECT_EQ(groupOf("group=^(a|aa)+$", name), name.substr(0, 1)) << "the last round counts";
  EXPECT_EQ(groupOf("group=(?:.|x)*", name), name);
  EXPECT_EQ(groupOf("group=(?:a?){1000}", name), name.substr(0, 1000));
}

TEST(Division, LettersOfNamesAreWhole) {
  EXPECT_EQ(groupOf("group=^.", "äpfel.jpg"), "ä");
  EXPECT_EQ(groupOf("group=[äö]f", "Köfte.jpg"), "öf");
  EXPECT_EQ(groupOf("group=^[^_]*_", "\xE4_b.jpg"), "\xE4_b.jpg") << "no UTF-8";
}

TEST(Division, GroupingsAreReadAsTheyAreWritten) {
  for (const std::string text : {"none", "source", "group=^(.*)_frame"})
    EXPECT_EQ(groupingText(parseGrouping(text)), text);
  for (const std::string text : {"", "sources", "group", "group=", "group=(", "group=[z-a]",
                                 "group=(a)\\1", "group=a(?=b)", "group=(?<!a)b", "group=\xE4"}) {
    EXPECT_THROW(parseGrouping(text), CommandError) << text;
  }
}

TEST(Division, AGroupIsATestGroupBelowItsOwnNumber) {
  struct Row {
    std::string group;
    std::uint32_t seed;
    double number;
  };
  // Worked out by another program from the definition of the hash.
  for (const auto& [group, seed, number] :
       {Row{"a.jpg", 0, 0.7710024418342161}, Row{"a.jpg", 1, 0.5096556635409853},
        Row{"video7", 4294967295, 0.9860970844098218}, Row{"", 7, 0.1769492321977879}}) {
    EXPECT_FALSE(isTestGroup(group, number - 1e-9, seed)) << group;
    EXPECT_TRUE(isTestGroup(group, number + 1e-9, seed)) << group;
  }
  EXPECT_FALSE(isTestGroup("a.jpg", 0, 0));
  EXPECT_TRUE(isTestGroup("a.jpg", 1, 0));
}

TEST(Division, GroupsSpreadEvenly) {
  for (const double ratio : {0.05, 0.3, 0.5}) {
    // Ten thousand groups of one: the share's deviation is below 0.005.
    EXPECT_NEAR(shareOf(equalGroups(10000, 1), ratio, 3), ratio, 0.02);
  }
}

TEST(Division, SamplesOfOneGroupGoIntoOneList) {
  const auto groups = equalGroups(20, 7);
  const auto isTest = testSamples(groups, 0.4, 11);
  for (std::size_t i = 20; i < groups.size(); ++i)
    EXPECT_EQ(isTest[i], isTest[i % 20]);
}

TEST(Division, TheBestSeedMeetsARatioThatTheGroupsAllow) {
  EXPECT_DOUBLE_EQ(shareOf(equalGroups(50, 10), 0.1, closestSeed(equalGroups(50, 10), 0.1)), 0.1);
  EXPECT_DOUBLE_EQ(shareOf(equalGroups(4, 3), 0.25, closestSeed(equalGroups(4, 3), 0.25)), 0.25);
  // Of three groups one is closest to two fifths.
  EXPECT_NEAR(shareOf(equalGroups(3, 5), 0.4, closestSeed(equalGroups(3, 5), 0.4)), 1.0 / 3, 1e-12);
  EXPECT_NO_THROW(closestSeed({}, 0.4));
}

namespace {

class ProgramDivision : public ProgramTest {
 protected:
  void SetUp() override { makeProject(); }

  std::string generate(std::vector<std::string> arguments, const std::string& directory = "set") {
    arguments.insert(arguments.begin(), {"generate", "parts", "--output", directory,
                                         "--augmentation", "resize-quarter-turns.xml"});
    return succeed(arguments);
  }

  /// Source pictures of the samples of a list.
  std::set<std::string> sourcesIn(const std::string& list) const {
    std::map<std::string, std::string> sources;
    for (const auto& [sample, picture] : readSampleSources(place / "set/sources.txt"))
      sources[sample] = std::filesystem::path(picture).filename().string();
    std::set<std::string> result;
    std::istringstream lines(readFile(place / "set/" + list));
    for (std::string line; std::getline(lines, line);)
      result.insert(sources.at(std::filesystem::path(line).filename().string()));
    return result;
  }

  void addPictures(int count) {
    for (int i = 0; i < count; ++i)
      writePicture(place / ("photos/more" + std::to_string(i) + ".png"), 32, 32);
    succeed({"import", "parts", "day1", "photos"});
  }
};

}  // namespace

TEST_F(ProgramDivision, EachSampleKnowsItsSource) {
  generate({});
  const auto sources = readSampleSources(place / "set/sources.txt");
  ASSERT_EQ(sources.size(), 10U);
  EXPECT_EQ(sources[4], std::pair("img_4.jpg" + std::string(), place / "photos/a.png"));
  EXPECT_EQ(sources[5], std::pair("img_5.jpg" + std::string(), place / "photos/b.png"));
}

TEST_F(ProgramDivision, SamplesOfOnePictureStayTogether) {
  const auto out = generate({"--keep-together", "source", "--test-ratio", "0.5"});
  EXPECT_NE(out.find("       2       10         5     5      0\n"), std::string::npos) << out;
  EXPECT_NE(out.find("2 groups; the test list has 50.0 % of the samples, asked were 50.0 %"),
            std::string::npos)
      << out;
  EXPECT_EQ(sourcesIn("train.txt").size(), 1U);
  EXPECT_EQ(sourcesIn("test.txt").size(), 1U);
}

TEST_F(ProgramDivision, NewPicturesMoveNoneThatWasThere) {
  addPictures(8);
  generate({"--keep-together", "source", "--test-ratio", "0.3"});
  const auto training = sourcesIn("train.txt");
  const auto test = sourcesIn("test.txt");
  const auto division = readFile(place / "set/division.txt");
  for (int i = 0; i < 20; ++i)
    writePicture(place / ("photos/after" + std::to_string(i) + ".png"), 32, 32);
  succeed({"import", "parts", "day1", "photos"});
  generate({"--keep-together", "source", "--test-ratio", "0.3"});
  EXPECT_EQ(readFile(place / "set/division.txt"), division);
  EXPECT_THAT(sourcesIn("train.txt"), testing::IsSupersetOf(training));
  EXPECT_THAT(sourcesIn("test.txt"), testing::IsSupersetOf(test));
}

TEST_F(ProgramDivision, ASeedRepeatsADivisionElsewhere) {
  addPictures(8);
  generate({"--keep-together", "source", "--test-ratio", "0.3", "--seed", "77"});
  const auto test = sourcesIn("test.txt");
  for (const auto& picture : test)
    EXPECT_TRUE(isTestGroup(picture, 0.3, 77)) << picture;
  EXPECT_EQ(readFile(place / "set/division.txt"), "keep-together=source\nseed=77\n");
}

TEST_F(ProgramDivision, WithoutGroupsTheListsAreTheLibrarysOwn) {
  generate({"--test-ratio", "0.5"}, "plain");
  generate({"--test-ratio", "0.5", "--keep-together", "none"});
  EXPECT_FALSE(std::filesystem::exists(place / "set/division.txt"));
  EXPECT_EQ(occurrences(readFile(place / "plain/test.txt"), "img_"), 5U);
}

TEST_F(ProgramDivision, ItIsToldHowManyPicturesAPatternFits) {
  const std::vector<std::string> call{"generate", "parts", "--output", "set", "--keep-together"};
  const auto with = [&](const std::string& grouping) {
    auto arguments = call;
    arguments.push_back(grouping);
    return arguments;
  };
  for (const bool dry : {true, false}) {
    auto arguments = with("group=video[0-9]");
    if (dry) arguments.push_back("--dry-run");
    fail(arguments, "'video[0-9]' finds nothing in the name of any of the 2 pictures", 2);
    EXPECT_FALSE(std::filesystem::exists(place / "set"));
  }
  EXPECT_NE(run(with("group=^a"))
                .err.find("'^a' finds something in the names of 1 of 2 pictures; "
                          "each of the others stands alone\n"),
            std::string::npos);
  EXPECT_NE(run(with("group=png")).err.find("in the names of 2 of 2 pictures\n"),
            std::string::npos);
  auto json = with("group=^a");
  json.push_back("--json");
  EXPECT_NE(succeed(json).find("\"matched\" : 1"), std::string::npos);
  EXPECT_EQ(run(with("source")).err.find("finds something"), std::string::npos);
}

TEST_F(ProgramDivision, WhatKeepsNothingTogetherIsWrongUsage) {
  fail({"generate", "parts", "--output", "set", "--keep-together", "video"}, "choose from: none",
       2);
  fail({"generate", "parts", "--output", "set", "--keep-together", "group=("},
       "no regular expression that can be used: missing )", 2);
  fail({"generate", "parts", "--output", "set", "--seed", "3"}, "--keep-together", 2);
}
