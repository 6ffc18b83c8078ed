#include <filesystem>
#include <map>
#include <sstream>

#include <gmock/gmock.h>

#include "Editor.h"
#include "ProgramRunner.h"
#include "ProjectAccess.h"
#include "support/Pictures.h"

namespace {

class ProgramClasses : public ProgramTest {
 protected:
  void SetUp() override {
    makeProject();
    succeed({"class", "add", "parts", "bolt", "--color", "ff8000"});
    mark("a.png", "screw");
    mark("a.png", "nut");
    mark("b.png", "screw");
    mark("b.png", "bolt");
  }

  /// In a place that each class has for itself.
  void mark(const std::string& picture, const std::string& name) const {
    const std::map<std::string, std::string> corners{
        {"screw", "0.25,0.25"}, {"nut", "0.125,0.25"}, {"bolt", "0.375,0.25"}};
    succeed({"mark", "parts", picture, "Rect", corners.at(name), "0.5,0.75", "--class", name});
  }

  /// As front ends can.
  void markWithBoth(const std::string& picture, const std::string& first,
                    const std::string& second) const {
    WTNVProject project("parts", place / "projects/", "", "");
    ASSERT_TRUE(project.wLoad());
    Output output;
    const auto index = PictureIndex(readPictures(project, output), output).find(picture);
    Editor editor(project);
    editor.goTo(index);
    ASSERT_TRUE(editor.marks.designMark({{0.5, 0.5}, {0.75, 0.75}}, "Rect",
                                        {findClass(project, first), findClass(project, second)}));
    ASSERT_TRUE(editor.marks.addDesignedMark());
    ASSERT_TRUE(project.wUpdate(false));
  }

  /// The class numbers of all labels of a set, in the order of the marks.
  std::string numbers() const {
    succeed({"generate", "parts", "--output", "set"});
    std::string result;
    for (const auto* name : {"set/samples/img_0.txt", "set/samples/img_1.txt"}) {
      std::istringstream lines(readFile(place / name));
      for (std::string line; std::getline(lines, line);)
        result += line.substr(0, line.find(' '));
      result += '|';
    }
    return result;
  }
};

}  // namespace

TEST_F(ProgramClasses, OfMarksThatAMergeMakesTheSameOneStays) {
  const auto same = [&](const std::string& picture, const std::string& form,
                        const std::string& name) {
    succeed({"mark", "parts", picture, form, "0.5,0.5", "0.75,0.75", "--class", name});
  };
  // Three of one place on a.png, one of them of another form, and a fourth of a class that stays.
  same("a.png", "Rect", "screw");
  same("a.png", "Rect", "bolt");
  same("a.png", "Circle", "bolt");
  same("a.png", "Rect", "nut");
  // Two of one class before.
  same("b.png", "Rect", "bolt");
  same("b.png", "Rect", "bolt");
  const Words call{"class", "merge", "parts", "screw", "--into", "bolt"};
  const auto told = [&](const std::string& text) { return text.substr(0, text.find('\n')); };
  EXPECT_EQ(
      told(dryRun(call)),
      "would have merged screw into bolt, and removed 1 mark that is there in bolt already; 3 "
      "marks would change");
  EXPECT_EQ(told(succeed(call)),
            "merged screw into bolt, and removed 1 mark that is there in bolt already; 3 marks "
            "changed");
  // Four of SetUp and six more, but for one.
  EXPECT_NE(succeed({"list", "parts"}).find("total: 2 pictures, 9 marks"), std::string::npos);
  const auto marks = succeed({"list", "parts", "--picture", "a.png"});
  EXPECT_EQ(occurrences(marks, "64.0  32.0   32.0    16.0  Rect    bolt\n"), 1U) << marks;
  EXPECT_EQ(occurrences(marks, "Circle  bolt\n"), 1U) << marks;
  EXPECT_EQ(occurrences(marks, "Rect    nut\n"), 2U) << marks;
}

TEST_F(ProgramClasses, TwoMergedClassesLeaveOneMarkOfAPlace) {
  for (const auto* name : {"screw", "nut"})
    succeed({"mark", "parts", "b.png", "Point", "0.5,0.5", "--class", name});
  const auto result = run({"class", "merge", "parts", "screw", "nut", "--into", "bolt", "--json"});
  EXPECT_NE(result.out.find("\"sameMarks\" : 1"), std::string::npos) << result.out;
  // Four of SetUp and one of the two.
  EXPECT_NE(succeed({"list", "parts"}).find("total: 2 pictures, 5 marks"), std::string::npos);
}

TEST_F(ProgramClasses, ARenamedClassKeepsNumberColourAndMarks) {
  succeed({"class", "rename", "parts", "bolt", "stud"});
  EXPECT_EQ(succeed({"class", "list", "parts"}),
            "number  class  colour\n"
            "     0  screw  56b4e9\n"
            "     1  nut    e69f00\n"
            "     2  stud   ff8000\n");
  EXPECT_EQ(numbers(), "01|02|");
}

TEST_F(ProgramClasses, ARenamedClassIsNoOccasionToTellOfRecordsThatAreLeftAlone) {
  const auto result = run({"class", "rename", "parts", "screw", "stud"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.err.find("Cannot save"), std::string::npos) << result.err;
  EXPECT_EQ(result.err.find("repeated"), std::string::npos) << result.err;
}

TEST_F(ProgramClasses, ANameThatIsTakenOrWouldNotBeReadBackIsRefused) {
  fail({"class", "rename", "parts", "bolt", "nut"},
       "'bolt' cannot be renamed to 'nut'; there is a class of that name already");
  fail({"class", "rename", "parts", "bolt", " stud"}, "without blanks at its ends", 2);
  fail({"class", "add", "parts", "stud "}, "' cannot name a class; use a name without blanks", 2);
  fail({"class", "rename", "parts", "bolt", "a,b"}, "without comma", 2);
  fail({"class", "rename", "parts", "clip", "stud"}, "there is no class 'clip'");
  EXPECT_EQ(occurrences(succeed({"class", "list", "parts"}), "bolt"), 1U);
}

TEST_F(ProgramClasses, MergedClassesGiveTheirMarksAndLeaveNoGap) {
  EXPECT_EQ(succeed({"class", "merge", "parts", "screw", "--into", "bolt"}),
            "merged screw into bolt; 2 marks changed\n"
            "number  class  colour\n"
            "     0  nut    e69f00\n"
            "     1  bolt   ff8000\n");
  EXPECT_EQ(numbers(), "10|11|");
}

TEST_F(ProgramClasses, AMarkOfTwoClassesCountsOnce) {
  markWithBoth("a.png", "screw", "nut");
  const auto changed = [&](std::vector<std::string> call) {
    const auto out = succeed(call);
    return out.substr(0, out.find('\n'));
  };
  EXPECT_EQ(changed({"class", "merge", "parts", "screw", "nut", "--into", "bolt", "--dry-run"}),
            "would have merged screw, nut into bolt; 4 marks would change");
  EXPECT_EQ(changed({"class", "delete", "parts", "screw", "nut", "--with-marks", "--dry-run"}),
            "would have deleted screw, nut with 4 marks; 4 marks would change");
}

TEST_F(ProgramClasses, ManyClassesAreOrderedAtOnceAndMarksKeepTheirs) {
  std::vector<std::string> add{"class", "add", "parts"};
  std::vector<std::string> order{"class", "order", "parts"};
  constexpr int many = 300;
  for (int i = 0; i < many; ++i)
    add.push_back("c" + std::to_string(i));
  order.insert(order.end(), add.rbegin(), add.rend() - 3);
  order.insert(order.end(), {"bolt", "nut", "screw"});
  succeed(add);
  // A gap in what marks know the classes by.
  succeed({"class", "delete", "parts", "c7"});
  std::erase(order, "c7");
  const auto out = succeed(order);
  EXPECT_NE(out.find("\n     0  c299   "), std::string::npos);
  EXPECT_NE(out.find("\n   299  bolt   ff8000\n"), std::string::npos);
  EXPECT_NE(out.find("\n   301  screw  56b4e9\n"), std::string::npos);
  EXPECT_EQ(succeed({"class", "list", "parts"}), out.substr(out.find('\n') + 1));
  EXPECT_EQ(numbers(), "301300|301299|");
}

TEST_F(ProgramClasses, AMergeIntoItselfIsWrongUsage) {
  fail({"class", "merge", "parts", "screw", "bolt", "--into", "bolt"}, "into itself", 2);
  fail({"class", "merge", "parts", "screw", "screw", "--into", "bolt"}, "named twice", 2);
  EXPECT_EQ(numbers(), "01|02|");
}

TEST_F(ProgramClasses, DeletingMarksHasToBeAskedFor) {
  fail({"class", "delete", "parts", "screw"}, "2 marks would be deleted with screw");
  EXPECT_EQ(numbers(), "01|02|");
  succeed({"class", "delete", "parts", "screw", "--with-marks"});
  EXPECT_EQ(numbers(), "0|1|");
  EXPECT_EQ(occurrences(succeed({"class", "list", "parts"}), "screw"), 0U);
}

TEST_F(ProgramClasses, AClassWithoutMarksGoesWithoutAWord) {
  succeed({"class", "add", "parts", "dirt"});
  succeed({"class", "delete", "parts", "dirt"});
  EXPECT_EQ(numbers(), "01|02|");
}

TEST_F(ProgramClasses, TheOrderGivesTheNumbers) {
  EXPECT_EQ(succeed({"class", "order", "parts", "bolt", "screw", "nut"}),
            "numbered the classes anew; 0 marks changed\n"
            "number  class  colour\n"
            "     0  bolt   ff8000\n"
            "     1  screw  56b4e9\n"
            "     2  nut    e69f00\n");
  EXPECT_EQ(numbers(), "12|10|");
  fail({"class", "order", "parts", "bolt", "screw"}, "name all 3 classes", 2);
}

TEST_F(ProgramClasses, ADryRunCountsAndChangesNothing) {
  const auto out = succeed({"class", "merge", "parts", "screw", "--into", "bolt", "--dry-run"});
  EXPECT_EQ(out.substr(0, out.find('\n')),
            "would have merged screw into bolt; 2 marks would change");
  fail({"class", "delete", "parts", "screw", "--dry-run"}, "2 marks would be deleted with screw");
  const auto deleted = succeed({"class", "delete", "parts", "screw", "--with-marks", "--dry-run"});
  EXPECT_EQ(deleted.substr(0, deleted.find('\n')),
            "would have deleted screw with 2 marks; 2 marks would change");
  EXPECT_EQ(numbers(), "01|02|");
}

TEST_F(ProgramClasses, ASaveThatIsCutOffLeavesNoMarkWithoutItsClass) {
  // Records beyond the limit, of 512 bytes, and settings below it.
  std::string list;
  for (int i = 0; i < 40; ++i)
    list += "a.png\tRect\t" + std::string(i % 2 == 0 ? "screw" : "bolt") + "\t0.0" +
            std::to_string(10 + i) + ",0.1 0.9,0.9\n";
  place.write("marks.txt", list);
  succeed({"mark", "parts", "--list", "marks.txt"});
  for (const Words& words : {Words{"class", "merge", "parts", "screw", "--into", "nut"},
                             Words{"class", "delete", "parts", "screw", "--with-marks"}}) {
    Words limited{"/bin/sh", "-c", "trap '' XFSZ; ulimit -f 8; exec \"$@\"", "sh",
                  SAMPLEBENCH_PROGRAM};
    limited.insert(limited.end(), words.begin(), words.end());
    const auto result = RunningProgram(limited, place.path()).wait();
    EXPECT_EQ(result.exitCode, 1) << result.err;
    EXPECT_THAT(succeed({"check", "parts"}), testing::HasSubstr(" 0 findings"));
    EXPECT_THAT(succeed({"class", "list", "parts"}), testing::HasSubstr("screw"));
  }
  succeed({"class", "merge", "parts", "screw", "--into", "nut"});
}

TEST_F(ProgramClasses, NothingChangesWhileARecordCannotBeRead) {
  for (const auto& entry : std::filesystem::directory_iterator(place / "projects/parts/is_day1"))
    if (entry.path().extension() == ".xml") {
      place.write("projects/parts/is_day1/" + entry.path().filename().string(), "<?xml");
      break;
    }
  fail({"class", "merge", "parts", "screw", "--into", "bolt"},
       "restore those records, or take them out with: samplebench remove picture parts --damaged");
  EXPECT_EQ(occurrences(succeed({"class", "list", "parts"}), "screw"), 1U);
}
