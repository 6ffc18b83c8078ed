// Projects that were moved, copied or renamed.

#include <gmock/gmock.h>

#include <filesystem>

#include "ProgramRunner.h"
#include "support/Pictures.h"

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

/// A mark on a.png of the project, and a copy of the project in "my attic".
class ProgramMoved : public ProgramTest {
 protected:
  void SetUp() override {
    makeMarkedProject();
    fs::create_directories(place / "my attic");
    fs::copy(place / "projects/parts", place / "my attic/parts", fs::copy_options::recursive);
  }

  Words inAttic(Words call) const {
    call.insert(call.end(), {"--projects", "my attic"});
    return call;
  }

  /// What the user is told to do.
  std::string advice() const {
    return "its records are looked for in " + (place / "projects/parts") +
           "; tell it where they are: samplebench relink parts --project '" +
           (place / "projects/parts=") + (place / "my attic/parts'");
  }

  /// The call fails with that advice and changes nothing on disk.
  void refuse(const Words& call) const {
    failWholly(inAttic(call), advice() + "; nothing was changed");
  }

  void refuseAllThatWrite() const {
    place.write("marks.txt", "a.png\tRect\tnut\t0,0 0.5,0.5\n");
    for (const Words& call :
         std::vector<Words>{{"mark", "parts", "a.png", "Rect", "0,0", "0.5,0.5", "--class", "nut"},
                            {"mark", "parts", "--list", "marks.txt"},
                            {"import", "parts", "day1", "photos"},
                            {"class", "add", "parts", "bolt"},
                            {"class", "rename", "parts", "nut", "bolt"},
                            {"class", "merge", "parts", "nut", "--into", "screw"},
                            {"class", "delete", "parts", "nut", "--with-marks"},
                            {"class", "order", "parts", "nut", "screw"},
                            {"remove", "mark", "parts", "a.png", "1"},
                            {"remove", "picture", "parts", "a.png", "--with-marks"},
                            {"remove", "picture", "parts", "--damaged", "--with-marks"},
                            {"remove", "set", "parts", "day1"},
                            {"remove", "project", "parts"},
                            {"labels", "import", "parts", "day2", "photos"},
                            {"gallery", "parts"},
                            {"relink", "parts", "--pictures", "photos=my attic"}}) {
      refuse(call);
      auto dry = call;
      dry.push_back("--dry-run");
      refuse(dry);
    }
  }
};

TEST_F(ProgramMoved, ACopyChangesNothingOfTheOriginal) {
  refuseAllThatWrite();
}

TEST_F(ProgramMoved, AProjectThatWasMovedLosesNothing) {
  fs::remove_all(place / "projects");
  refuseAllThatWrite();
}

TEST_F(ProgramMoved, ReadingGoesOnWithOneNote) {
  place.makeDirectory("out");
  for (const Words& call : std::vector<Words>{
           {"list", "parts"},
           {"stats", "parts"},
           {"generate", "parts", "--output", "set"},
           {"render", "parts", "a.png", "-o", "seen.png"},
           {"labels", "export", "parts", "labels", "--format", "COCO", "--rejections", "no.txt"}}) {
    const auto result = run(inAttic(call));
    EXPECT_EQ(result.exitCode, 0) << call[0];
    EXPECT_EQ(occurrences(result.err, advice()), 1U) << call[0] << result.err;
  }
  fs::remove_all(place / "projects");
  const auto result = run(inAttic({"list", "parts"}));
  EXPECT_EQ(occurrences(result.err, advice()), 1U) << result.err;
  EXPECT_THAT(result.err, Not(HasSubstr("restore or remove")));
}

TEST_F(ProgramMoved, CheckNamesItAsOneFinding) {
  fs::remove_all(place / "projects");
  const auto result = run(inAttic({"check", "parts"}));
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.out, AllOf(HasSubstr((place / "my attic/parts") +
                                          ": moved-project: project 'parts' was moved or copied"),
                                HasSubstr(advice()), HasSubstr("2 pictures, 1 finding\n")));
}

TEST_F(ProgramMoved, OnceItIsToldAllWorks) {
  succeed(inAttic({"relink", "parts", "--project", "projects/parts=my attic/parts"}));
  fs::remove_all(place / "projects");
  EXPECT_THAT(succeed(inAttic({"check", "parts"})), HasSubstr("2 pictures, 0 findings"));
  succeed(inAttic({"mark", "parts", "b.png", "Rect", "0,0", "0.5,0.5", "--class", "nut"}));
  EXPECT_THAT(succeed(inAttic({"list", "parts"})), HasSubstr("total: 2 pictures, 2 marks"));
}

TEST_F(ProgramMoved, LinksToTheProjectAndFromItAreNoMove) {
  fs::create_directory_symlink(place / "projects", place / "link");
  succeed({"class", "add", "parts", "bolt", "--projects", "link"});
  fs::rename(place / "projects/parts/is_day1", place / "elsewhere");
  fs::create_directory_symlink(place / "elsewhere", place / "projects/parts/is_day1");
  succeed({"class", "add", "parts", "washer"});
  EXPECT_THAT(succeed({"check", "parts"}), HasSubstr("2 pictures, 0 findings"));
}

TEST_F(ProgramMoved, ACopyUnderANewNameIsToldWhatToDo) {
  const auto copy = place / "projects/other";
  fs::rename(place / "my attic/parts", copy);
  const auto holds = "'" + copy + "' holds the settings of 'parts'. To rename or copy";
  const auto before = contents("");
  fail({"list", "other"}, holds);
  EXPECT_THAT(run({"list", "other"}).err, Not(HasSubstr("samplebench create")));
  fail({"create", "other"}, holds);
  fail({"create", "other", "--dry-run"}, holds);
  EXPECT_EQ(contents(""), before);

  fs::rename(copy + "/parts.cfg", copy + "/other.cfg");
  fail({"list", "other"}, "write Project.Name = \"other\" in it");
  auto settings = readFile(copy + "/other.cfg");
  const std::string name = "Project.Name = \"parts\"";
  settings.replace(settings.find(name), name.size(), "Project.Name = \"other\"");
  place.write("projects/other/other.cfg", settings);
  succeed({"relink", "other", "--project", "projects/parts=projects/other"});
  succeed({"mark", "other", "b.png", "Rect", "0,0", "0.5,0.5", "--class", "nut"});
  EXPECT_THAT(succeed({"check", "other"}), HasSubstr("2 pictures, 0 findings"));
  EXPECT_THAT(succeed({"list", "other"}), HasSubstr("total: 2 pictures, 2 marks"));
  EXPECT_THAT(succeed({"list", "parts"}), HasSubstr("total: 2 pictures, 1 mark"));
}

TEST_F(ProgramMoved, AProjectIsMadeAmongNoOtherFiles) {
  place.makeDirectory("projects/bare");
  succeed({"create", "bare"});
  place.write("projects/notes/notes.txt", "mine");
  fail({"create", "notes"}, "is there and holds other files");
}

}  // namespace
