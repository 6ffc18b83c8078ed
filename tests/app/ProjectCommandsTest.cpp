#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "ProgramRunner.h"
#include "support/Pictures.h"

namespace fs = std::filesystem;

namespace {

class ProgramProjects : public ProgramTest {};

TEST_F(ProgramProjects, HelpTeachesEachCommandWithAnExample) {
  EXPECT_NE(succeed({"--help"}).find("Exit codes: 0 done, 1"), std::string::npos);
  const std::vector<std::vector<std::string>> commands{{"create"},
                                                       {"class", "add"},
                                                       {"class", "list"},
                                                       {"class", "rename"},
                                                       {"class", "merge"},
                                                       {"class", "delete"},
                                                       {"class", "order"},
                                                       {"import"},
                                                       {"mark"},
                                                       {"list"},
                                                       {"remove", "mark"},
                                                       {"remove", "picture"},
                                                       {"remove", "set"},
                                                       {"remove", "project"},
                                                       {"render"},
                                                       {"generate"},
                                                       {"demo"},
                                                       {"magnify"},
                                                       {"crop"},
                                                       {"gallery"},
                                                       {"stats"},
                                                       {"verify"},
                                                       {"labels", "import"},
                                                       {"labels", "export"},
                                                       {"view"},
                                                       {"weights", "list"},
                                                       {"weights", "get"},
                                                       {"weights", "import"},
                                                       {"weights", "remove"},
                                                       {"user", "list"},
                                                       {"user", "create"},
                                                       {"user", "set"},
                                                       {"user", "remove"},
                                                       {"config"}};
  for (auto command : commands) {
    std::string example = "samplebench";
    for (const auto& word : command)
      example += " " + word;
    command.push_back("--help");
    EXPECT_NE(succeed(command).find(example + " "), std::string::npos) << example;
  }
}

TEST_F(ProgramProjects, WrongUsageEndsWithTwo) {
  fail({}, "subcommand is required", 2);
  fail({"nonsense"}, "there is no 'nonsense' here; --help lists", 2);
  fail({"class", "lst"}, "there is no 'lst' here; --help lists", 2);
  fail({"list", "parts", "more"}, "not expected", 2);
  fail({"create"}, "PROJECT is required", 2);
  fail({"class"}, "subcommand is required", 2);
}

TEST_F(ProgramProjects, CreateMakesAProjectOnce) {
  succeed({"create", "parts"});
  EXPECT_TRUE(std::filesystem::exists(place / "projects/parts/parts.cfg"));
  fail({"create", "parts"}, "there already");
}

TEST_F(ProgramProjects, CreateRefusesANameThatIsAPath) {
  for (const char* name :
       {"../parts", "a/b", "/parts", "..", ".", "", "a\\b", "a\nb", "a=b", "\"a"}) {
    fail({"create", name}, "cannot name a project; use a name without slashes", 2);
    // There is no use in the advice to make one of that name.
    const auto result = run({"list", name});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("there is no project"), std::string::npos) << result.err;
    EXPECT_EQ(result.err.find("samplebench create"), std::string::npos) << result.err;
  }
  EXPECT_FALSE(std::filesystem::exists(place / "parts"));
  succeed({"create", std::string(200, 'x')});
  fail({"create", std::string(201, 'x')}, "of at most 200 bytes", 2);
}

TEST_F(ProgramProjects, GlobalOptionsMayStandBehindTheCommand) {
  succeed({"create", "parts", "--projects", "elsewhere"});
  EXPECT_TRUE(std::filesystem::exists(place / "elsewhere/parts/parts.cfg"));
}

TEST_F(ProgramProjects, AnUnknownProjectIsAnErrorThatListsTheOthers) {
  succeed({"create", "bolts"});
  succeed({"create", "clips"});
  fail({"list", "parts"}, "projects there: bolts, clips. Make it with: samplebench create parts");
}

TEST_F(ProgramProjects, ClassesGetConsecutiveNumbersAndTheirColour) {
  succeed({"create", "parts"});
  succeed({"class", "add", "parts", "screw"});
  succeed({"class", "add", "parts", "nut", "--color", "ff8000"});
  EXPECT_EQ(succeed({"class", "list", "parts"}),
            "number  class  colour\n"
            "     0  screw  56b4e9\n"
            "     1  nut    ff8000\n");
}

TEST_F(ProgramProjects, ClassesGetColoursOfTheirOwn) {
  succeed({"create", "parts"});
  std::vector<std::string> add{"class", "add", "parts"};
  for (int i = 0; i < 60; ++i)
    add.push_back("c" + std::to_string(i));
  succeed(add);
  std::map<std::string, int> uses;
  std::istringstream list(succeed({"class", "list", "parts"}));
  std::string line;
  for (std::getline(list, line); std::getline(list, line);)
    ++uses[line.substr(line.size() - 6)];
  EXPECT_EQ(uses.size(), 60U);
}

TEST_F(ProgramProjects, AClassMayBeNamedLikeACommand) {
  succeed({"create", "parts"});
  succeed({"class", "add", "parts", "list", "mark"});
  const auto classes = succeed({"class", "list", "parts"});
  EXPECT_NE(classes.find("0  list"), std::string::npos);
  EXPECT_NE(classes.find("1  mark"), std::string::npos);
}

TEST_F(ProgramProjects, ClassesThatWillNotDoAreRefusedAndNothingIsSaved) {
  succeed({"create", "parts"});
  fail({"class", "add", "parts", "nut", "nut"},
       "class 'nut' cannot be added; there is a class of that name already");
  fail({"class", "add", "parts", "nut", "a,b"}, "without comma", 2);
  fail({"class", "add", "parts", "nut", "  "}, "not of blanks alone", 2);
  fail({"class", "add", "parts", "nut", ""}, "not of blanks alone", 2);
  fail({"class", "add", "parts", "nut", "--color", "red"}, "write it as RRGGBB", 2);
  fail({"class", "add", "parts", "nut", "--color", "-fffff"}, "write it as RRGGBB", 2);
  EXPECT_EQ(succeed({"class", "list", "parts"}), "number  class  colour\n");
}

TEST_F(ProgramProjects, ASecondImportAddsNothing) {
  makeProject();
  EXPECT_EQ(succeed({"import", "parts", "day1", "photos"}),
            "set day1: 0 pictures added, 2 already there\n");
  writePicture(place / "photos/c.png", 8, 8);
  EXPECT_EQ(succeed({"import", "parts", "day1", "photos"}),
            "set day1: 1 picture added, 2 already there\n");
}

TEST_F(ProgramProjects, APictureWithABackslashIsRejectedWithAReason) {
  makeProject();
  writePicture(place / "photos/c\\d.png", 8, 8);
  place.makeDirectory("photos/e.png");
  place.write("photos/f\\g.txt", "no picture");
  for (const bool dry : {true, false}) {
    std::vector<std::string> call{"import", "parts", "day2", "photos"};
    if (dry) call.emplace_back("--dry-run");
    const auto result = run(call);
    EXPECT_EQ(result.exitCode, 3) << result.err;
    EXPECT_EQ(result.out.substr(0, result.out.find("\n2 pictures")),
              std::string("set day2: 2 pictures ") + (dry ? "would be " : "") +
                  "added, 0 already there, 2 rejected\n"
                  "rejected: " +
                  (place / "photos/c\\d.png") +
                  ": a backslash in the path would be taken for a slash; rename what has it\n"
                  "rejected: " +
                  (place / "photos/e.png") + ": it is a directory");
  }
  EXPECT_NE(succeed({"list", "parts"}).find("set day2: 2 pictures"), std::string::npos);
  const auto facts = run({"import", "parts", "day2", "photos", "--json"}).out;
  EXPECT_NE(facts.find("\"picture\" : \"" + (place / "photos/c\\\\d.png") + "\",\n"),
            std::string::npos)
      << facts;
}

TEST_F(ProgramProjects, PicturesBelowADirectoryWithABackslashAreRejected) {
  makeProject();
  fs::create_directories(place / "all/a\\b");
  fs::create_directories(place / "all/a/b");
  writePicture(place / "all/a\\b/c.png", 8, 8);
  fail({"import", "parts", "day2", "all", "--recursive"}, "no picture in 'all' can be taken in: '");
  fail({"import", "parts", "day2", place / "all/a\\b"}, "a backslash in the path would be taken");
  // Of the same name for the library.
  writePicture(place / "all/a/b/c.png", 8, 8);
  const auto result = run({"import", "parts", "day2", "all", "--recursive"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_EQ(result.out.find("set day2: 1 picture added, 0 already there, 1 rejected\n"), 0U)
      << result.out;
  EXPECT_NE(succeed({"list", "parts"}).find(place / "all/a/b/c.png"), std::string::npos);
}

TEST_F(ProgramProjects, OneDirectoryOrManyIsTheSame) {
  makeProject();
  fs::create_directory(place / "photos/more");
  writePicture(place / "photos/more/c.png", 8, 8);
  EXPECT_EQ(succeed({"import", "parts", "day1", "photos/../photos/", "--recursive"}),
            "set day1: 1 picture added, 2 already there\n");
  EXPECT_EQ(succeed({"import", "parts", "day1", "photos/more"}),
            "set day1: 0 pictures added, 1 already there\n");
  EXPECT_EQ(succeed({"import", "parts", "day1", "./photos"}),
            "set day1: 0 pictures added, 2 already there\n");
}

TEST_F(ProgramProjects, ADryImportSaysWhatItWouldAdd) {
  makeProject();
  writePicture(place / "photos/c.png", 8, 8);
  EXPECT_EQ(succeed({"import", "parts", "day1", "photos", "--dry-run"}),
            "set day1: 1 picture would be added, 2 already there\n");
  EXPECT_EQ(succeed({"import", "parts", "day1", "photos"}),
            "set day1: 1 picture added, 2 already there\n");
}

TEST_F(ProgramProjects, APictureInTwoSetsIsToldAndTheFirstIsTaken) {
  makeProject();
  writePicture(place / "photos/c.png", 8, 8);
  const auto twice = "2 pictures of it also in other sets: each is two pictures to the program";
  for (const bool dry : {true, false}) {
    std::vector<std::string> call{"import", "parts", "day2", "photos"};
    if (dry) call.push_back("--dry-run");
    const auto out = succeed(call);
    EXPECT_EQ(out.find("set day2: 3 pictures "), 0U) << out;
    EXPECT_NE(out.find(twice), std::string::npos) << out;
  }
  for (const std::string name : {"a.png", "photos/a.png"}) {
    const auto result =
        run({"mark", "parts", name, "Rect", "0.25,0.25", "0.5,0.75", "--class", "nut"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.err.find("'" + name + "' is in several sets, "), std::string::npos)
        << result.err;
  }
  const auto list = succeed({"list", "parts"});
  EXPECT_NE(list.find("set day1: 2 pictures, 2 marks"), std::string::npos) << list;
  EXPECT_NE(list.find("set day2: 3 pictures, 0 marks"), std::string::npos) << list;
}

TEST_F(ProgramProjects, NoPictureIsAddedBesideARecordThatCannotBeRead) {
  makeProject();
  const auto record = recordOf("day1", "a.png");
  const auto whole = readFile(record);
  const auto refused = [&] {
    for (const Words& call : {Words{"import", "parts", "day1", "photos"},
                              Words{"labels", "import", "parts", "day1", "labelled"}})
      fail(call, "a record of set 'day1' cannot be read: " + record);
  };
  place.makeDirectory("labelled");
  writePicture(place / "labelled/a.png", 128, 64);
  place.write("labelled/a.txt", "0 0.5 0.5 0.25 0.25\n");
  place.write("labelled/classes.txt", "nut\n");
  std::ofstream(record) << "<opencv_storage";
  refused();
  fs::remove(record);
  refused();
  std::ofstream(record) << whole;
  EXPECT_EQ(succeed({"import", "parts", "day1", "photos"}),
            "set day1: 0 pictures added, 2 already there\n");
}

TEST_F(ProgramProjects, ImportLooksBelowOnlyWhenTold) {
  place.makeDirectory("photos/below");
  writePicture(place / "photos/below/a.png", 8, 8);
  succeed({"create", "parts"});
  fail({"import", "parts", "day1", "photos"}, "--recursive");
  EXPECT_EQ(succeed({"import", "parts", "day1", "photos", "--recursive"}),
            "set day1: 1 picture added, 0 already there\n");
}

TEST_F(ProgramProjects, ImportRefusesBadNames) {
  makeProject();
  fail({"import", "parts", "day1", "nowhere"}, "there is no directory 'nowhere'");
  fail({"import", "parts", "a/b", "photos"}, "cannot name an image set", 2);
}

TEST_F(ProgramProjects, ListShowsPicturesInOrderWithMarksAndTotals) {
  makeProject();
  succeed({"mark", "parts", "b.png", "Rect", "0.25,0.25", "0.5,0.75", "--class", "nut"});
  const auto photos = place / "photos/";
  EXPECT_EQ(succeed({"list", "parts"}),
            "number  class  colour\n"
            "     0  screw  56b4e9\n"
            "     1  nut    e69f00\n"
            "\n"
            "set day1: 2 pictures, 1 mark\n"
            "marks  picture\n"
            "    0  " +
                photos +
                "a.png\n"
                "    1  " +
                photos +
                "b.png\n"
                "\n"
                "total: 2 pictures, 1 mark\n");
}

TEST_F(ProgramProjects, TheLogGoesToStandardErrorAndQuietSilencesIt) {
  makeProject();
  const std::vector<std::string> mark{"mark", "parts",   "a.png",   "Rect",
                                      "0,0",  "0.5,0.5", "--class", "nut"};
  EXPECT_NE(run(mark).err.find("Worker destroyed"), std::string::npos);
  auto quietly = mark;
  quietly.insert(quietly.begin(), "--quiet");
  const auto result = run(quietly);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "1 mark added on 1 picture\n");
}

TEST_F(ProgramProjects, ABrokenSettingsListIsAMessageNotACrash) {
  makeProject();
  place.write("projects/parts/day1.xml", "<?xml version=\"1.0\"?>\n<opencv_storage>\n<Cou");
  EXPECT_EQ(run({"list", "parts"}).exitCode, 1);
}

TEST_F(ProgramProjects, DamagedSettingsAreNotTakenForAnEmptyProject) {
  makeProject();
  for (const char* damaged : {"", "Cache.Images = NO\n"}) {
    place.write("projects/parts/parts.cfg", damaged);
    fail({"list", "parts"}, "the settings of project 'parts' are damaged");
    fail({"class", "add", "parts", "bolt"}, "restore that file");
    EXPECT_EQ(readFile(place / "projects/parts/parts.cfg"), damaged);
  }
}

TEST_F(ProgramProjects, DamagedRecordIsNamedAndTheOthersAreShown) {
  makeProject();
  const auto records = std::filesystem::directory_iterator(place / "projects/parts/is_day1");
  const auto record = records->path();
  std::filesystem::resize_file(record, 50);
  const auto result = run({"list", "parts"});
  EXPECT_EQ(result.exitCode, 0);
  const auto note =
      "of set 'day1': No whole XML file: " + record.string() + "; restore or remove that file\n";
  EXPECT_NE(result.err.find(note), std::string::npos) << result.err;
  EXPECT_NE(result.out.find("total: 2 pictures"), std::string::npos) << result.out;
}

TEST_F(ProgramProjects, AnyWorkingDirectoryWillDo) {
  makeProject();
  const auto inside = place.makeDirectory("elsewhere");
  const auto list =
      RunningProgram({SAMPLEBENCH_PROGRAM, "--projects", "../projects", "list", "parts"}, inside)
          .wait();
  EXPECT_EQ(list.exitCode, 0);
  EXPECT_EQ(list.out.find("(unreadable)"), std::string::npos) << list.out;
}

TEST_F(ProgramProjects, ImportsInOneSecondLoseNothing) {
  succeed({"create", "parts"});
  succeed({"class", "add", "parts", "nut"});
  place.makeDirectory("photos");
  for (const char* name : {"a.png", "b.png", "c.png"}) {
    writePicture(place / ("photos/" + std::string(name)), 32, 16);
    succeed({"import", "parts", "day1", "photos"});
    succeed({"mark", "parts", name, "Rect", "0.1,0.1", "0.5,0.5", "--class", "nut"});
  }
  const auto list = succeed({"list", "parts"});
  for (const char* name : {"a.png", "b.png", "c.png"})
    EXPECT_EQ(occurrences(list, name), 1U) << list;
  EXPECT_NE(list.find("total: 3 pictures, 3 marks"), std::string::npos) << list;
}

}  // namespace
