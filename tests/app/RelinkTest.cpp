#include "RelinkCommand.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "CommandError.h"
#include "ProgramRunner.h"
#include "TNV_SampleBenchNative/WTNVProject.h"
#include "support/Pictures.h"

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;

namespace {

class ProgramRelink : public ProgramTest {
 protected:
  void SetUp() override { makeMarkedProject(); }
};

class ProgramCheck : public ProgramRelink {};

}  // namespace

TEST_F(ProgramRelink, PicturesThatWereMovedAreFoundAgain) {
  fs::rename(place / "photos", place / "moved = here");
  EXPECT_EQ(run({"render", "parts", "a.png", "-o", "x.png"}).exitCode, 1);
  const Words call{"relink", "parts", "--pictures", "photos=moved = here"};
  EXPECT_THAT(dryRun(call), AllOf(HasSubstr("2 pictures would be looked for in "),
                                  HasSubstr("of all, 2 found, 0 not found")));
  EXPECT_THAT(succeed(call), HasSubstr("2 pictures now looked for in "));
  EXPECT_THAT(succeed({"render", "parts", "a.png", "-o", "x.png"}), HasSubstr("1 mark"));
  succeed({"check", "parts"});
}

TEST_F(ProgramRelink, ThoseThatAreNotThereAreNamed) {
  fs::rename(place / "photos", place / "moved");
  fs::remove(place / "moved/b.png");
  const auto result = run({"relink", "parts", "--pictures", "photos=moved"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.out, HasSubstr("of all, 1 found, 1 not found"));
  EXPECT_THAT(result.err, HasSubstr("not found: " + (place / "moved/b.png")));
}

TEST_F(ProgramRelink, AMoveThatFitsNothingChangesNothing) {
  place.makeDirectory("empty");
  failWholly({"relink", "parts", "--pictures", "photo=empty"}, "no picture lies below");
  failWholly({"relink", "parts", "--pictures", "photos=empty"}, "no picture is there with");
  failWholly({"relink", "parts", "--pictures", "photos=absent"}, "write it as OLD=NEW", 2);
  failWholly({"relink", "parts", "--pictures", "empty"}, "write it as OLD=NEW", 2);
  failWholly({"relink", "parts"}, "say what was moved", 2);
}

TEST_F(ProgramRelink, WhatLiesElsewhereDoesNotSpeakForAWrongPlace) {
  place.makeDirectory("others");
  writePicture(place / "others/z.png", 128, 64);
  succeed({"import", "parts", "day2", "others"});
  fs::rename(place / "photos", place / "moved");
  place.makeDirectory("empty");
  failWholly({"relink", "parts", "--pictures", "photos=others"}, "no picture is there with");
  failWholly({"relink", "parts", "--project", "projects/parts/is_day1=empty"},
             "no record of the project is there with");
  EXPECT_THAT(succeed({"relink", "parts", "--pictures", "photos=moved"}),
              HasSubstr("2 pictures now looked for in " + (place / "moved") +
                        "; of all, 3 found, 0 not found"));
}

TEST_F(ProgramRelink, NothingIsSaidToBeDoneBeforeItIsSaved) {
  fs::rename(place / "photos", place / "moved");
  const auto before = contents("");
  const auto result = runWithoutRights({"relink", "parts", "--pictures", "photos=moved"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.err, HasSubstr("cannot be saved"));
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(contents(""), before);
}

TEST_F(ProgramRelink, AProjectThatWasMovedWorksOnItsOwnFiles) {
  fs::create_directories(place / "attic");
  fs::copy(place / "projects/parts", place / "attic/parts", fs::copy_options::recursive);
  succeed({"relink", "parts", "--projects", "attic", "--project", "projects/parts=attic/parts"});
  const auto original = contents("projects");
  succeed({"mark", "parts", "b.png", "Rect", "0,0", "0.5,0.5", "--class", "nut", "--projects",
           "attic"});
  EXPECT_EQ(contents("projects"), original);
  fs::remove_all(place / "projects");
  EXPECT_THAT(succeed({"list", "parts", "--projects", "attic"}),
              HasSubstr("total: 2 pictures, 2 marks"));
}

TEST_F(ProgramRelink, TheSignMayStandInNames) {
  const auto a = place.makeDirectory("a=b");
  const auto there = fs::path(a).parent_path().string();
  EXPECT_EQ(parseMove("/x=y=" + there).from, "/x=y");
  EXPECT_EQ(parseMove("/x=y=" + there).to, there);
  EXPECT_EQ(parseMove("/x=" + there).from, "/x");
  EXPECT_THROW(parseMove("=" + there), CommandError);
}

TEST_F(ProgramCheck, ASoundProjectHasNoFindings) {
  EXPECT_THAT(succeed({"check", "parts"}), HasSubstr("2 pictures, 0 findings"));
}

TEST_F(ProgramCheck, WhatIsMissingOrDamagedIsNamed) {
  const auto recordA = recordOf("day1", "a.png");
  const auto findings = [&] {
    const auto result = run({"check", "parts"});
    EXPECT_EQ(result.exitCode, 3) << result.err;
    return result.out;
  };
  place.write("photos/b.png", "no picture");
  EXPECT_THAT(findings(),
              HasSubstr(place / "photos/b.png" + std::string(": unreadable-picture: ")));
  fs::remove(place / "photos/b.png");
  EXPECT_THAT(findings(),
              AllOf(HasSubstr(place / "photos/b.png" + std::string(": missing-picture: ")),
                    HasSubstr("samplebench relink"), HasSubstr("1 finding")));
  std::ofstream(recordA) << "<opencv_storage";
  EXPECT_THAT(findings(), HasSubstr(recordA + ": damaged-record: "));
  fs::remove(recordA);
  EXPECT_THAT(findings(), HasSubstr(recordA + ": damaged-record: "));
}

TEST_F(ProgramCheck, APngThatIsCutIsNamed) {
  const auto whole = readFile(place / "photos/a.png");
  place.write("photos/a.png", whole.substr(0, whole.size() / 2));
  const auto result = run({"check", "parts"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.out,
              HasSubstr(place / "photos/a.png" + std::string(": unreadable-picture: ")));
}

TEST_F(ProgramCheck, MarksOfClassesThatAreLostAreNamed) {
  succeed({"mark", "parts", "a.png", "Rect", "0.25,0.25", "0.5,0.5", "--class", "nut"});
  auto settings = readFile(place / "projects/parts/parts.cfg");
  const auto names = settings.find("DNN.Names");
  settings.erase(names, settings.find('\n', names) + 1 - names);
  place.write("projects/parts/parts.cfg", settings);
  const auto result = run({"check", "parts"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.out, HasSubstr(place / "photos/a.png" +
                                    std::string(": unknown-class: 2 marks of classes")));
}

TEST_F(ProgramCheck, SizesThatAreNotKnownAreCounted) {
  EXPECT_THAT(run({"check", "parts"}).err,
              HasSubstr("which size 2 pictures had before is not known"));
}

TEST_F(ProgramCheck, SettingsThatPlaceSamplesElsewhereMoveNoProject) {
  const auto settings = readFile(place / "projects/parts/parts.cfg");
  for (const char* samples : {"../other/x/", "samples/deep/"}) {
    place.write("projects/parts/parts.cfg",
                settings + "Project.SamplesDirectory = \"" + samples + "\"\n");
    EXPECT_THAT(succeed({"check", "parts"}), HasSubstr("2 pictures, 0 findings")) << samples;
  }
}

TEST_F(ProgramCheck, APictureOfAnotherSizeIsNamedIfItsSizeIsKnown) {
  WTNVProject project("parts", place / "projects/", "", "");
  ASSERT_TRUE(project.wLoad());
  project.wSetCacheImages(true);
  ASSERT_TRUE(project.wUpdate(true));
  succeed({"check", "parts"});
  writePicture(place / "photos/a.png", 64, 64);
  const auto result = run({"check", "parts"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.out, HasSubstr("other-size: the picture has 64x64 pixels and had 128x64"));
}

TEST_F(ProgramCheck, ASetWhoseListIsLostIsNamed) {
  const auto list = place / "projects/parts/day1.xml";
  const auto content = readFile(list);
  const auto expectLost = [&] {
    const auto result = run({"check", "parts"});
    EXPECT_EQ(result.exitCode, 3) << result.err;
    EXPECT_THAT(
        result.out,
        AllOf(HasSubstr(list + ": lost-list: no list of the project names the 2 records in " +
                        (place / "projects/parts/is_day1") + "; restore " + list + ", or"),
              HasSubstr("0 pictures, 1 finding")));
  };
  fs::remove(list);
  expectLost();
  place.write("projects/parts/day1.xml",
              "<?xml version=\"1.0\"?>\n<opencv_storage>\n<Count>0</Count></opencv_storage>\n");
  expectLost();
  place.write("projects/parts/day1.xml", content);
  succeed({"check", "parts"});
}

TEST_F(ProgramCheck, RecordsOfRemovedPicturesAreNoFinding) {
  succeed({"remove", "picture", "parts", "b.png"});
  const auto result = run({"check", "parts", "--json"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.out, HasSubstr("\"unlistedRecords\" : 1"));
  EXPECT_THAT(result.err, HasSubstr("1 record beside those of the lists"));
}

TEST_F(ProgramCheck, OfACutListItIsSaidToRestoreIt) {
  fs::resize_file(place / "projects/parts/day1.xml", 60);
  const auto result = run({"check", "parts"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.err,
              AllOf(HasSubstr((place / "projects/parts/day1.xml") +
                              "; restore that file, for it says which pictures"),
                    HasSubstr("delete it, and then: samplebench remove set parts day1")));
}

TEST_F(ProgramCheck, APictureThatIsTwiceInASetIsNamedAndCanBeTakenOut) {
  auto list = readFile(place / "projects/parts/day1.xml");
  const auto first = list.find("<id0>");
  const auto end = list.find("</id0>") + 6;
  auto again = list.substr(first, end - first);
  again.replace(1, 3, "id2").replace(again.size() - 4, 3, "id2");
  list.insert(list.find("</opencv_storage>"), again);
  list.replace(list.find("<Count>2"), 8, "<Count>3");
  place.write("projects/parts/day1.xml", list);
  const auto* twice =
      again.find(recordOf("day1", "a.png")) != std::string::npos ? "a.png" : "b.png";
  const auto result = run({"check", "parts"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.out, AllOf(HasSubstr(": listed-twice: the picture is in the set day1 already"),
                                HasSubstr("3 pictures, 1 finding")));
  succeed({"remove", "picture", "parts", twice, "--with-marks"});
  EXPECT_THAT(succeed({"check", "parts"}), HasSubstr("2 pictures, 0 findings"));
}
