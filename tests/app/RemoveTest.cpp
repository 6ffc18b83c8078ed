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

/// Three marks on a.png, one on b.png, both in the set day1; day2 has b.png once more, and c.png.
class ProgramRemove : public ProgramTest {
 protected:
  void SetUp() override {
    makeMarkedProject();
    place.makeDirectory("more");
    writePicture(place / "more/c.png", 128, 64);
    mark("a.png", "Point", {"0.5,0.5"}, "screw");
    mark("a.png", "Circle", {"0.5,0.5", "0.625,0.5"}, "nut");
    mark("b.png", "Rect", {"0,0", "0.5,0.5"}, "nut");
    fs::copy_file(place / "photos/b.png", place / "more/b.png");
    succeed({"import", "parts", "day2", "more"});
  }

  void mark(const std::string& picture, const std::string& form, const Words& points,
            const std::string& name) const {
    Words call{"mark", "parts", picture, form};
    call.insert(call.end(), points.begin(), points.end());
    call.insert(call.end(), {"--class", name});
    succeed(call);
  }

  void expectPicturesThere() const {
    for (const auto* file : {"photos/a.png", "photos/b.png", "more/b.png", "more/c.png"})
      EXPECT_TRUE(fs::exists(place / file)) << file;
  }
};

TEST_F(ProgramRemove, ListShowsTheMarksOfAPictureByTheirNumbers) {
  // The rectangle spans 32 to 64 by 16 to 48 of 128 by 64 pixels; the circle's radius is 16.
  EXPECT_EQ(succeed({"list", "parts", "--picture", "a.png"}),
            "number  x     y     width  height  form    classes\n"
            "     1  32.0  16.0   32.0    32.0  Rect    nut\n"
            "     2  64.0  32.0    0.0     0.0  Point   screw\n"
            "     3  48.0  16.0   32.0    32.0  Circle  nut\n");
  fail({"list", "parts", "--set", "day1"}, "--picture", 2);
  fail({"list", "parts", "--picture", "none.png"}, "has no picture 'none.png'");
}

TEST_F(ProgramRemove, MarksGoByTheirNumbers) {
  const Words call{"remove", "mark", "parts", "a.png", "3", "1"};
  EXPECT_THAT(dryRun(call), HasSubstr("2 marks would be removed from a.png; 1 mark would be left"));
  EXPECT_THAT(succeed(call), HasSubstr("2 marks removed from a.png; 1 mark left"));
  EXPECT_THAT(succeed({"list", "parts", "--picture", "a.png"}),
              AllOf(HasSubstr("     1  64.0  32.0"), HasSubstr("Point"), Not(HasSubstr("Rect")),
                    Not(HasSubstr("Circle"))));
  succeed({"remove", "mark", "parts", "a.png", "1"});
  failWholly({"remove", "mark", "parts", "a.png", "1"}, "there is no mark 1 on 'a.png', which has");
}

TEST_F(ProgramRemove, NumbersThatAreNoneChangeNothing) {
  failWholly({"remove", "mark", "parts", "a.png", "1", "4"}, "have the numbers 1 to 3");
  failWholly({"remove", "mark", "parts", "a.png", "0"}, "there is no mark 0");
  failWholly({"remove", "mark", "parts", "a.png", "--", "-1"}, "there is no mark -1");
  failWholly({"remove", "mark", "parts", "a.png", "2", "2"}, "named twice", 2);
  failWholly({"remove", "mark", "parts", "a.png", "x"}, "NUMBER", 2);
  failWholly({"remove", "mark", "parts", "a.png"}, "NUMBER is required", 2);
}

TEST_F(ProgramRemove, PicturesGoWithTheirMarksOnlyWhenTold) {
  const Words call{"remove", "picture", "parts", "a.png", "c.png"};
  failWholly(call, "3 marks would be removed, too; --with-marks does that");
  EXPECT_THAT(dryRun(call), HasSubstr("2 pictures with 3 marks would be removed from project parts;"
                                      " the picture files stay"));
  auto all = call;
  all.push_back("--with-marks");
  EXPECT_THAT(succeed(all), HasSubstr("2 pictures with 3 marks removed from project parts"));
  EXPECT_THAT(succeed({"list", "parts"}),
              AllOf(HasSubstr("set day1: 1 picture, 1 mark"), HasSubstr("set day2: 1 picture, 0"),
                    HasSubstr("more/b.png"), Not(HasSubstr("a.png")), Not(HasSubstr("c.png"))));
  expectPicturesThere();
  EXPECT_THAT(succeed({"import", "parts", "day1", "photos"}),
              HasSubstr("1 picture added, 1 already"));
  EXPECT_THAT(succeed({"list", "parts"}), HasSubstr("set day1: 2 pictures, 1 mark"))
      << "it comes back without its marks";
}

TEST_F(ProgramRemove, ASetGoesWithItsLastPicture) {
  succeed({"remove", "picture", "parts", place / "more/b.png", "c.png"});
  EXPECT_THAT(succeed({"list", "parts"}), Not(HasSubstr("day2")));
}

TEST_F(ProgramRemove, APictureInTwoSetsHasToBeNamedWithItsSet) {
  succeed({"import", "parts", "day3", "photos"});
  failWholly({"remove", "picture", "parts", "a.png"}, "is in several sets, ");
  failWholly({"remove", "mark", "parts", "a.png", "1"}, "choose one with --set");
  failWholly({"remove", "picture", "parts", "a.png", "--set", "day2"}, "has no picture 'a.png'");
  failWholly({"remove", "picture", "parts", "a.png", "--set", "day4"},
             "there is no set 'day4'; choose from: day1, day2, day3");
  succeed({"remove", "picture", "parts", "a.png", "--set", "day3"});
  EXPECT_THAT(succeed({"list", "parts"}), AllOf(HasSubstr("set day1: 2 pictures, 4 marks"),
                                                HasSubstr("set day3: 1 picture, 0")));
}

TEST_F(ProgramRemove, ASetGoes) {
  failWholly({"remove", "set", "parts", "day1"}, "4 marks would be removed");
  failWholly({"remove", "set", "parts", "day4"}, "choose from: day1, day2");
  EXPECT_THAT(dryRun({"remove", "set", "parts", "day1"}),
              HasSubstr("2 pictures with 4 marks would be removed"));
  EXPECT_THAT(succeed({"remove", "set", "parts", "day2"}), HasSubstr("2 pictures with 0 marks"));
  succeed({"remove", "set", "parts", "day1", "--with-marks"});
  EXPECT_THAT(succeed({"list", "parts"}), HasSubstr("total: 0 pictures, 0 marks"));
  EXPECT_THAT(succeed({"class", "list", "parts"}), HasSubstr("nut"));
  expectPicturesThere();
}

TEST_F(ProgramRemove, ARecordThatCannotBeReadGoesOnlyWhenTold) {
  mark("c.png", "Point", {"0.5,0.5"}, "nut");
  const auto record = recordOf("day2", "c.png");
  const auto whole = readFile(record);
  const Words set{"remove", "set", "parts", "day2"};
  for (const std::string& damaged : {whole.substr(0, whole.size() / 2), std::string()}) {
    std::ofstream(record) << damaged;
    failWholly(set, "or remove it unread, with its marks, by --with-marks");
    failWholly({"remove", "project", "parts"}, "or remove it unread");
    EXPECT_THAT(dryRun(set), HasSubstr("2 pictures with 0 marks would be removed"));
  }
  failWholly({"remove", "set", "parts", "day1"}, "4 marks would be removed");
  auto all = set;
  all.push_back("--with-marks");
  succeed(all);
  EXPECT_THAT(succeed({"list", "parts"}), Not(HasSubstr("day2")));
}

TEST_F(ProgramRemove, ARecordThatIsThereAndCannotBeOpenedIsNotGone) {
  const auto record = recordOf("day2", "c.png");
  fs::remove(record);
  fs::create_directory(record);
  failWholly({"remove", "set", "parts", "day2"}, "cannot be read: " + record);
  EXPECT_TRUE(fs::exists(record));
}

TEST_F(ProgramRemove, WithARecordThatIsGoneNothingIsLost) {
  fs::remove(recordOf("day2", "c.png"));
  succeed({"remove", "set", "parts", "day2"});
  EXPECT_THAT(succeed({"list", "parts"}), Not(HasSubstr("day2")));
}

TEST_F(ProgramRemove, PicturesOfOneSetGoAtOnce) {
  const auto result =
      run({"remove", "picture", "parts", "a.png", place / "photos/b.png", "c.png", "--with-marks"});
  EXPECT_THAT(result.out, HasSubstr("3 pictures with 4 marks removed"));
  // The library tells after each call how many there are, of four at first.
  EXPECT_THAT(result.err, AllOf(HasSubstr("Set Trainsets 2\n"), HasSubstr("Set Trainsets 1\n"),
                                Not(HasSubstr("Set Trainsets 3\n"))));
  EXPECT_THAT(succeed({"list", "parts"}), AllOf(Not(HasSubstr("day1")), HasSubstr("more/b.png")));
}

TEST_F(ProgramRemove, AProjectGoes) {
  failWholly({"remove", "project", "parts"}, "4 marks would be removed, too");
  failWholly({"remove", "project", "none"}, "there is no project 'none'");
  EXPECT_THAT(dryRun({"remove", "project", "parts"}),
              AllOf(HasSubstr("4 pictures with 4 marks would be removed"),
                    HasSubstr("projects/parts"), HasSubstr("the picture files stay")));
  succeed({"remove", "project", "parts", "--with-marks"});
  EXPECT_FALSE(fs::exists(place / "projects/parts"));
  expectPicturesThere();
  succeed({"create", "parts"});
}

TEST_F(ProgramRemove, AProjectWithPicturesInItsDirectoryStays) {
  fs::create_directory(place / "projects/parts/mine");
  fs::copy_file(place / "photos/a.png", place / "projects/parts/mine/d.png");
  succeed({"import", "parts", "day4", "projects/parts/mine"});
  failWholly({"remove", "project", "parts", "--with-marks"}, "mine/d.png' lies in the directory");
}

TEST_F(ProgramRemove, WithoutRightsNothingGoes) {
  const auto before = contents("projects");
  for (const Words& call : {Words{"remove", "project", "parts", "--with-marks"},
                            Words{"remove", "set", "parts", "day1", "--with-marks"},
                            Words{"remove", "picture", "parts", "c.png"},
                            Words{"remove", "mark", "parts", "a.png", "1"}}) {
    const auto result = runWithoutRights(call);
    EXPECT_EQ(result.exitCode, 1) << result.err;
    EXPECT_EQ(result.out, "") << call[1];
    EXPECT_EQ(contents("projects"), before) << call[1];
  }
}

TEST_F(ProgramRemove, ASetChoosesAmongPicturesOfOneName) {
  succeed({"import", "parts", "day3", "photos"});
  mark("c.png", "Point", {"0.5,0.5"}, "nut");
  succeed({"mark", "parts", "a.png", "Rect", "0,0", "0.5,0.5", "--class", "nut", "--set", "day3"});
  place.write("list.txt", "b.png\tPoint\tnut\t0.5,0.5\n");
  succeed({"mark", "parts", "--list", "list.txt", "--set", "day3"});
  EXPECT_THAT(succeed({"list", "parts"}), AllOf(HasSubstr("set day1: 2 pictures, 4 marks"),
                                                HasSubstr("set day3: 2 pictures, 2 marks")));
  EXPECT_THAT(succeed({"list", "parts", "--picture", "a.png", "--set", "day3"}),
              HasSubstr("     1  0.0  0.0   64.0    32.0  Rect"));
  EXPECT_THAT(succeed({"render", "parts", "a.png", "--set", "day3", "-o", "seen.png"}),
              HasSubstr(", 1 mark)\n"));
  EXPECT_EQ(occurrences(succeed({"crop", "parts", "a.png", "--set", "day3", "-o", "cut"}), "\n"),
            1U);
  const auto result =
      run({"magnify", "parts", "a.png", "--set", "day3", "--at", "0.5,0.5", "-o", "spot.png"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.err, Not(HasSubstr("several sets")));
  for (const Words& call : {Words{"mark", "parts", "a.png", "Point", "0,0", "--class", "nut"},
                            Words{"render", "parts", "a.png", "-o", "seen.png"},
                            Words{"crop", "parts", "a.png", "-o", "cut"},
                            Words{"magnify", "parts", "a.png", "--at", "0,0", "-o", "spot.png"}}) {
    auto wrong = call;
    wrong.insert(wrong.end(), {"--set", "day9"});
    fail(wrong, "there is no set 'day9'; choose from: day1, day2, day3");
  }
}

TEST_F(ProgramRemove, AProjectBehindALinkIsLeftAlone) {
  fs::rename(place / "projects/parts", place / "elsewhere");
  fs::create_directory_symlink(place / "elsewhere", place / "projects/parts");
  const auto before = contents("elsewhere");
  for (const Words& call : {Words{"remove", "project", "parts", "--with-marks"},
                            Words{"remove", "project", "parts", "--dry-run"}})
    fail(call, "' is a link to '");
  EXPECT_EQ(contents("elsewhere"), before);
}

TEST_F(ProgramRemove, PicturesWhoseRecordsCannotBeReadGoOnlyWhenTold) {
  std::vector<std::string> records;
  for (const auto& entry : fs::directory_iterator(place / "projects/parts/is_day1"))
    records.push_back(entry.path().string());
  ASSERT_EQ(records.size(), 2U);
  fs::resize_file(records[0], 50);
  const auto second = fs::directory_iterator(place / "projects/parts/is_day2")->path();
  fs::remove(second);
  EXPECT_THAT(run({"check", "parts"}).out,
              HasSubstr("samplebench remove picture parts --damaged --with-marks"));
  const Words call{"remove", "picture", "parts", "--damaged"};
  failWholly(call, "the marks of 2 pictures whose records cannot be read would be lost");
  EXPECT_THAT(dryRun(call), HasSubstr("2 pictures whose records cannot be read would be removed"));
  failWholly({"remove", "picture", "parts", "--damaged", "a.png"}, "or --damaged", 2);
  failWholly({"remove", "picture", "parts"}, "or --damaged", 2);
  EXPECT_THAT(succeed({"remove", "picture", "parts", "--damaged", "--with-marks"}),
              HasSubstr("2 pictures whose records cannot be read removed"));
  EXPECT_THAT(succeed({"check", "parts"}), HasSubstr("2 pictures, 0 findings"));
  EXPECT_THAT(succeed({"remove", "picture", "parts", "--damaged"}), HasSubstr("0 pictures"));
  expectPicturesThere();
}

}  // namespace
