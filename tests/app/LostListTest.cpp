// Projects that lost a list, their settings, or the rights to them.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "ProgramRunner.h"
#include "support/Pictures.h"

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr auto emptyList =
    "<?xml version=\"1.0\"?>\n<opencv_storage>\n<Count>0</Count></opencv_storage>\n";

/// Two sets: day1 with a mark on a.png, and day2 with c.png.
class ProgramLostList : public ProgramTest {
 protected:
  void SetUp() override {
    makeMarkedProject();
    place.makeDirectory("more");
    writePicture(place / "more/c.png", 128, 64);
    succeed({"import", "parts", "day2", "more"});
    place.write("marks.txt", "c.png\tRect\tnut\t0,0 0.5,0.5\n");
  }

  std::string project() const { return place / "projects/parts"; }

  /// What the user is told to do about the set.
  std::string advice(const std::string& set, const std::string& count,
                     const std::string& more = "") const {
    return "no list of the project names the " + count + " in " + project() + "/is_" + set +
           "; restore " + project() + "/" + set + ".xml" + more +
           ", or give the records up, with their marks: samplebench remove set parts " + set +
           " --with-marks";
  }

  void expectAllThatWriteRefuse(const std::string& text) const {
    for (const Words& call :
         std::vector<Words>{{"mark", "parts", "c.png", "Rect", "0,0", "0.5,0.5", "--class", "nut"},
                            {"mark", "parts", "--list", "marks.txt"},
                            {"import", "parts", "day1", "photos"},
                            {"import", "parts", "day3", "photos"},
                            {"class", "add", "parts", "bolt"},
                            {"class", "rename", "parts", "nut", "bolt"},
                            {"class", "merge", "parts", "nut", "--into", "screw"},
                            {"class", "delete", "parts", "nut", "--with-marks"},
                            {"class", "order", "parts", "nut", "screw"},
                            {"remove", "mark", "parts", "c.png", "1"},
                            {"remove", "picture", "parts", "c.png", "--with-marks"},
                            {"remove", "picture", "parts", "--damaged", "--with-marks"},
                            {"remove", "set", "parts", "day2", "--with-marks"},
                            {"labels", "import", "parts", "day3", "photos"},
                            {"relink", "parts", "--pictures", "photos=more"}}) {
      failWholly(call, text);
      auto dry = call;
      dry.emplace_back("--dry-run");
      failWholly(dry, text);
    }
    failWholly({"remove", "set", "parts", "day1"}, text);
    failWholly({"remove", "project", "parts"}, text);
  }

  /// The set is gone, and only it.
  void expectWithoutDay1() const {
    EXPECT_FALSE(fs::exists(project() + "/is_day1"));
    EXPECT_FALSE(fs::exists(project() + "/day1.xml"));
    EXPECT_THAT(succeed({"list", "parts"}),
                AllOf(Not(HasSubstr("day1")), HasSubstr("set day2: 1 p"),
                      HasSubstr("total: 1 picture, 0 marks")));
    EXPECT_TRUE(fs::exists(place / "photos/a.png"));
    succeed({"check", "parts"});
    succeed({"import", "parts", "day1", "photos"});
    EXPECT_THAT(succeed({"list", "parts"}), HasSubstr("total: 3 pictures, 0 marks"));
  }

  /// Takes the set's name out of the settings, as if it never had been there.
  void forgetDay1() const {
    auto settings = readFile(project() + "/parts.cfg");
    const auto at = settings.find("\"day1\",");
    ASSERT_NE(at, std::string::npos) << settings;
    settings.erase(at, 7);
    place.write("projects/parts/parts.cfg", settings);
  }
};

TEST_F(ProgramLostList, NothingIsChangedWithoutIt) {
  const auto list = project() + "/day1.xml";
  fs::remove(list);
  expectAllThatWriteRefuse(advice("day1", "2 records"));
  place.write("projects/parts/day1.xml", emptyList);
  expectAllThatWriteRefuse(advice("day1", "2 records"));
}

TEST_F(ProgramLostList, ReadingGoesOnWithANote) {
  fs::remove(project() + "/day1.xml");
  for (const Words& call :
       std::vector<Words>{{"list", "parts"},
                          {"stats", "parts"},
                          {"generate", "parts", "--output", "set"},
                          {"render", "parts", "c.png", "-o", "seen.png"},
                          {"gallery", "parts"},
                          {"labels", "export", "parts", "labels", "--format", "COCO"}}) {
    const auto result = run(call);
    EXPECT_EQ(result.exitCode, 3) << call[0] << result.err;
    EXPECT_EQ(occurrences(result.err,
                          "the list of set 'day1' is lost, and its pictures are left "
                          "out: " +
                              advice("day1", "2 records")),
              1U)
        << call[0] << result.err;
  }
}

TEST_F(ProgramLostList, ItsPicturesAreNotReplacedByResults) {
  place.makeDirectory("out/images");
  writePicture(place / "out/images/d.png", 128, 64);
  succeed({"import", "parts", "day3", "out/images"});
  fs::remove(project() + "/day3.xml");
  const auto before = contents("out");
  const std::string text = "the list of set 'day3' is lost";
  fail({"labels", "export", "parts", "out", "--format", "COCO"}, text);
  fail({"render", "parts", "c.png", "-o", "out/images/d.png"}, text);
  EXPECT_EQ(contents("out"), before);
}

TEST_F(ProgramLostList, ATrainingSetIsNotReplacedWhileAPictureIsUnknown) {
  succeed({"generate", "parts", "--output", "set"});
  const auto record = recordOf("day1", "a.png");
  const auto before = contents("set");
  fs::rename(record, place / "kept.xml");
  fail({"generate", "parts", "--output", "set"}, "Its picture may lie in '");
  fs::rename(place / "kept.xml", record);
  fs::rename(project() + "/day1.xml", place / "list.xml");
  fail({"generate", "parts", "--output", "set"}, "the list of set 'day1' is lost");
  EXPECT_EQ(contents("set"), before);
  fs::rename(place / "list.xml", project() + "/day1.xml");
  succeed({"generate", "parts", "--output", "set"});
}

TEST_F(ProgramLostList, ARestoredOneGivesAllBack) {
  const auto list = readFile(project() + "/day1.xml");
  fs::remove(project() + "/day1.xml");
  fail({"class", "add", "parts", "bolt"}, "restore " + project() + "/day1.xml");
  place.write("projects/parts/day1.xml", list);
  succeed({"class", "add", "parts", "bolt"});
  EXPECT_THAT(succeed({"list", "parts"}), HasSubstr("total: 3 pictures, 1 mark"));
}

TEST_F(ProgramLostList, ItsSetCanBeGivenUp) {
  fs::remove(project() + "/day1.xml");
  const Words call{"remove", "set", "parts", "day1"};
  EXPECT_THAT(dryRun(call),
              HasSubstr("2 records of set day1, whose list is lost, would be removed"));
  auto all = call;
  all.emplace_back("--with-marks");
  EXPECT_THAT(succeed(all), HasSubstr("2 records of set day1, whose list is lost, removed with the "
                                      "marks in them; the picture files stay"));
  expectWithoutDay1();
}

TEST_F(ProgramLostList, ASetThatTheSettingsDoNotNameIsKeptToo) {
  forgetDay1();
  const auto text =
      advice("day1", "2 records", " and the set's name in the settings (Source.Images.Filelists)");
  expectAllThatWriteRefuse(text);
  failWholly({"relink", "parts", "--project", project() + "=" + project()}, text);
  EXPECT_THAT(dryRun({"remove", "set", "parts", "day1"}), HasSubstr("2 records"));
  succeed({"remove", "set", "parts", "day1", "--with-marks"});
  expectWithoutDay1();
}

TEST_F(ProgramLostList, OfTwoTheOneWithoutANameGoesFirst) {
  succeed({"import", "parts", "day3", "more"});
  fs::remove(project() + "/day2.xml");
  forgetDay1();
  failWholly({"remove", "set", "parts", "day2", "--with-marks"}, "remove set parts day1");
  succeed({"remove", "set", "parts", "day1", "--with-marks"});
  succeed({"remove", "set", "parts", "day2", "--with-marks"});
  EXPECT_THAT(succeed({"list", "parts"}),
              AllOf(HasSubstr("set day3: 1 picture"), HasSubstr("total: 1 picture")));
}

TEST_F(ProgramLostList, AFirstImportThatWasKilledCanBeMadeAnew) {
  succeed({"remove", "set", "parts", "day2"});
  // The list is written when all records are.
  succeed({"import", "parts", "day3", "more"});
  fs::remove(project() + "/day3.xml");
  fail({"import", "parts", "day3", "more"}, "samplebench remove set parts day3 --with-marks");
  succeed({"remove", "set", "parts", "day3", "--with-marks"});
  succeed({"import", "parts", "day3", "more"});
  EXPECT_THAT(succeed({"list", "parts"}), HasSubstr("total: 3 pictures, 1 mark"));
}

TEST_F(ProgramLostList, AProjectThatWasMovedAndLostAListIsMended) {
  fs::rename(place / "projects", place / "attic");
  fs::remove(place / "attic/parts/day1.xml");
  const auto inAttic = [](Words call) {
    call.insert(call.end(), {"--projects", "attic"});
    return call;
  };
  failWholly(inAttic({"remove", "set", "parts", "day1", "--with-marks"}), "samplebench relink");
  succeed(inAttic({"relink", "parts", "--project", project() + "=" + (place / "attic/parts")}));
  succeed(inAttic({"remove", "set", "parts", "day1", "--with-marks"}));
  succeed(inAttic({"check", "parts"}));
}

TEST_F(ProgramLostList, AProjectGoesWithItsMarksWhenTold) {
  fs::remove(project() + "/day1.xml");
  failWholly({"remove", "project", "parts"}, advice("day1", "2 records"));
  dryRun({"remove", "project", "parts"});
  writePicture(place / "projects/parts/mine.png", 8, 8);
  failWholly({"remove", "project", "parts", "--with-marks"}, "mine.png' lies in the directory");
  fs::remove(place / "projects/parts/mine.png");
  succeed({"remove", "project", "parts", "--with-marks"});
  EXPECT_FALSE(fs::exists(project()));
}

/// What cannot be read at all.
class ProgramBroken : public ProgramLostList {
 protected:
  void expectRemovable(const std::string& reason) const {
    failWholly({"list", "parts"}, reason);
    failWholly({"remove", "project", "parts"}, "samplebench remove project parts --with-marks");
    EXPECT_THAT(dryRun({"remove", "project", "parts", "--with-marks"}),
                HasSubstr("project parts, which cannot be read, would be removed"));
    writePicture(place / "projects/parts/mine.png", 8, 8);
    failWholly({"remove", "project", "parts", "--with-marks"}, "mine.png' lies in the directory");
    fs::remove(place / "projects/parts/mine.png");
    succeed({"remove", "project", "parts", "--with-marks"});
    EXPECT_FALSE(fs::exists(project()));
    EXPECT_TRUE(fs::exists(place / "photos/a.png"));
    succeed({"create", "parts"});
  }
};

TEST_F(ProgramBroken, AProjectWithACutListCanBeRemoved) {
  fs::resize_file(project() + "/day1.xml", 60);
  expectRemovable("restore that file, for it says which pictures");
}

TEST_F(ProgramBroken, AProjectWithDamagedSettingsCanBeRemoved) {
  fs::resize_file(project() + "/parts.cfg", 0);
  expectRemovable("the settings of project 'parts' are damaged");
}

TEST_F(ProgramBroken, OfAnEmptyListItIsSaidHowToGoOn) {
  fs::resize_file(project() + "/day1.xml", 0);
  failWholly({"list", "parts"},
             "Empty image set list: " + project() +
                 "/day1.xml; restore that file, for it says which pictures the set has. To give "
                 "them up with their marks, delete it, and then: samplebench remove set parts day1 "
                 "--with-marks");
  fs::remove(project() + "/day1.xml");
  succeed({"remove", "set", "parts", "day1", "--with-marks"});
  expectWithoutDay1();
}

TEST_F(ProgramBroken, AListWithoutTheRightToReadItIsNotEmpty) {
  fs::permissions(project() + "/day1.xml", fs::perms::none);
  const auto result = runAsNobody({"list", "parts"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.err, AllOf(HasSubstr("'" + project() + "/day1.xml' cannot be read; see that"),
                                Not(HasSubstr("Empty")), Not(HasSubstr("delete"))));
}

TEST_F(ProgramBroken, LostSettingsAreToBeRestored) {
  fs::remove(project() + "/parts.cfg");
  const auto text = "'" + project() +
                    "' holds image sets (day1, day2) and no settings; restore the settings, "
                    "parts.cfg, or move that directory away";
  failWholly({"list", "parts"}, text);
  failWholly({"create", "parts"}, text);
  EXPECT_THAT(run({"list", "parts"}).err, Not(HasSubstr("samplebench create")));
}

TEST_F(ProgramBroken, WithoutRightsInTheSetItStaysNamed) {
  // All is to belong to the one who runs the program, but for what the set's directory holds.
  for (const auto& entry : fs::recursive_directory_iterator(place / "projects"))
    fs::permissions(entry.path(), fs::perms::all);
  fs::permissions(place / "projects", fs::perms::all);
  fs::permissions(project() + "/is_day2",
                  fs::perms::owner_all | fs::perms::others_read | fs::perms::others_exec);
  const auto before = contents("");
  const auto result = runAsNobody({"remove", "set", "parts", "day2"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.err,
              HasSubstr("'" + project() + "/is_day2' cannot be written to; nothing was"));
  EXPECT_EQ(contents(""), before);
}

TEST_F(ProgramBroken, OfADirectoryThatCannotBeReadTheNameIsTold) {
  for (const auto& entry : fs::recursive_directory_iterator(place / "projects"))
    fs::permissions(entry.path(), fs::perms::all);
  fs::permissions(place / "projects", fs::perms::all);
  const auto closed = project() + "/closed";
  fs::create_directory(closed);
  fs::permissions(closed, fs::perms::owner_all);
  const auto before = contents("");
  const auto result = runAsNobody({"remove", "project", "parts", "--with-marks"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.err, HasSubstr("'" + closed + "' cannot be read; nothing was removed"));
  EXPECT_EQ(contents(""), before);
}

}  // namespace
