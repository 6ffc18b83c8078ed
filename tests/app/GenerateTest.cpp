#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <sstream>

#include "ProgramRunner.h"
#include "support/Pictures.h"

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

class ProgramGenerate : public ProgramTest {
 protected:
  void SetUp() override { makeProject(); }

  void markBoth() const {
    succeed({"mark", "parts", "a.png", "Rect", "0.25,0.25", "0.5,0.75", "--class", "nut"});
    succeed({"mark", "parts", "b.png", "Rect Center", "0.5,0.5", "0.75,0.75", "--class", "screw"});
  }

  std::string label(int number) const {
    return readFile(place / "set/samples/img_" + std::to_string(number) + ".txt");
  }
};

// A label line for a box on a picture of 128 by 64 pixels.
std::string labelLine(int classNumber, double x, double y, double width, double height) {
  std::ostringstream line;
  line << classNumber << ' ' << (x + width / 2) / 128 << ' ' << (y + height / 2) / 64 << ' '
       << width / 128 << ' ' << height / 64 << '\n';
  return line.str();
}

std::string allFiles(const fs::path& directory) {
  std::string content;
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(directory))
    if (entry.is_regular_file()) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  for (const auto& file : files)
    content += file.string() + "\n" + readFile(file.string());
  return content;
}

TEST_F(ProgramGenerate, ARoundTripGivesTheLabelsOfTheMarks) {
  markBoth();
  const auto out = succeed({"generate", "parts", "--output", "set"});
  EXPECT_EQ(out.substr(0, out.find("\n\n")),
            "pictures  samples  training  test  boxes\n"
            "       2        2         2     0      2");
  // The box of whole pixels around 32 to 64, 16 to 48 takes in both ends.
  EXPECT_EQ(label(0), labelLine(1, 32, 16, 33, 33));
  // The centre 64, 32 and the corner 96, 48 span 32 to 96, 16 to 48.
  EXPECT_EQ(label(1), labelLine(0, 32, 16, 65, 33));
  EXPECT_EQ(cv::imread(place / "set/samples/img_0.jpg").size(), cv::Size(128, 64));
}

TEST_F(ProgramGenerate, TheSummaryHasTheSizesOfTheBoxes) {
  markBoth();
  succeed({"mark", "parts", "b.png", "Rect", "0,0", "0.125,0.125", "--class", "nut"});
  // With both ends the boxes have 65 by 33 pixels; 33 by 33, and 17 by 9. Their sides are the roots
  // of 2145, 1089 and 153, the median of two is in the middle.
  EXPECT_THAT(succeed({"generate", "parts", "--output", "set"}),
              HasSubstr("number  class  boxes  smallest side  median side  largest side\n"
                        "     0  screw      1           46.3         46.3          46.3\n"
                        "     1  nut        2           12.4         22.7          33.0\n"));
  const auto facts = succeed({"generate", "parts", "--output", "set", "--json"});
  EXPECT_EQ(occurrences(facts, "\"largestSide\" : 33.0,"), 1U) << facts;
  EXPECT_EQ(occurrences(facts, "\"smallestSide\" : 46."), 1U) << facts;
}

TEST_F(ProgramGenerate, ALinkToADirectoryStaysAndTheSetGoesWhereItLeads) {
  markBoth();
  place.makeDirectory("disk");
  for (const auto* target : {"disk", "disk/sets"}) {
    fs::create_directory(place / "disk/sets");
    fs::remove(place / "link");
    fs::create_directory_symlink(target, place / "link");
    for (const auto* output : {"link", "link/", "./link/."}) {
      fs::remove_all(place / target);
      fs::create_directories(place / target);
      succeed({"generate", "parts", "--output", output});
      EXPECT_TRUE(fs::is_symlink(place / "link")) << output;
      EXPECT_TRUE(fs::is_regular_file(place / target + std::string("/train.txt"))) << output;
      // A set of ours is replaced.
      succeed({"generate", "parts", "--output", output});
      succeed({"verify", place / target});
    }
  }
}

TEST_F(ProgramGenerate, ALinkStaysWhenLabelsAreExportedThroughIt) {
  markBoth();
  place.makeDirectory("disk");
  fs::create_directory_symlink("disk", place / "link");
  for (const auto* format : {"Darknet", "COCO"}) {
    succeed({"labels", "export", "parts", "link", "--format", format, "--copy"});
    EXPECT_TRUE(fs::is_symlink(place / "link"));
    EXPECT_FALSE(fs::is_empty(place / "disk"));
  }
  EXPECT_TRUE(fs::is_regular_file(place / "disk/annotations.json"));
}

TEST_F(ProgramGenerate, RelativePathsLeadThroughALinkToo) {
  markBoth();
  place.makeDirectory("disk");
  fs::create_directory_symlink(place / "disk", place / "link");
  succeed({"generate", "parts", "--output", "link", "--relative-paths"});
  EXPECT_TRUE(readFile(place / "disk/train.txt").starts_with("disk/samples/img_"));
}

TEST_F(ProgramGenerate, WhatARunRefusesItsDryRunRefusesToo) {
  markBoth();
  const auto refused = [&](const std::string& output, const std::string& text) {
    for (const auto* dry : {"", "--dry-run"}) {
      Words call{"generate", "parts", "--output", output};
      if (*dry != 0) call.emplace_back(dry);
      failWholly(call, text);
    }
  };
  fs::create_symlink("nowhere", place / "dangling");
  refused("dangling", "'dangling' is a link to 'nowhere', which is not there; make that directory");
  succeed({"generate", "parts", "--output", "set"});
  succeed({"import", "parts", "day2", "set/samples"});
  refused("set", "the picture '" + (place / "set/samples/img_0.jpg") +
                     "' of the project lies in '" + (place / "set/") +
                     "', which a run would clear; give another output directory");
  succeed({"remove", "set", "parts", "day2"});
  place.makeDirectory("by link");
  fs::create_symlink(place / "set/samples/img_1.jpg", place / "by link/d.jpg");
  succeed({"import", "parts", "day3", "by link"});
  refused("set", "by link/d.jpg' of the project lies in");
  succeed({"remove", "set", "parts", "day3"});
  fs::create_directory(place / "here");
  const auto elsewhere = RunningProgram({"/bin/sh", "-c",
                                         "cd here && for dry in '' --dry-run; do \"$0\" generate "
                                         "parts --projects ../projects -o . "
                                         "$dry; echo $?; done",
                                         SAMPLEBENCH_PROGRAM},
                                        place.path())
                             .wait();
  EXPECT_EQ(elsewhere.out, "1\n1\n");
  EXPECT_EQ(occurrences(elsewhere.err, "samplebench: the working directory lies in '"), 2U)
      << elsewhere.err;
}

TEST_F(ProgramGenerate, WritesListsNamesAndFilledTemplates) {
  markBoth();
  succeed({"generate", "parts", "--output", "set", "--set", "WIDTH=608"});
  const auto set = place / "set/";
  EXPECT_EQ(readFile(set + "parts.names"), "screw\nnut\n");
  EXPECT_EQ(readFile(set + "test.txt"), "");
  EXPECT_EQ(occurrences(readFile(set + "train.txt"), set + "samples/img_"), 2U);
  const auto data = readFile(set + "parts.data");
  EXPECT_NE(data.find("classes = 2\n"), std::string::npos) << data;
  EXPECT_NE(data.find(" " + set + "train.txt\n"), std::string::npos) << data;
  EXPECT_NE(data.find(" " + set + "test.txt\n"), std::string::npos) << data;
  EXPECT_NE(data.find(" " + set + "parts.names\n"), std::string::npos) << data;
  EXPECT_NE(data.find(" " + set + "backup/\n"), std::string::npos) << data;
  const auto net = readFile(set + "parts.cfg");
  EXPECT_NE(net.find("width=608\n"), std::string::npos);
  EXPECT_NE(net.find("filters=21\n"), std::string::npos);
  EXPECT_EQ(net.find("###"), std::string::npos);
  EXPECT_TRUE(fs::is_directory(set + "backup"));
}

TEST_F(ProgramGenerate, ListsHoldRelativePathsWhenTold) {
  markBoth();
  succeed({"generate", "parts", "--output", "set", "--relative-paths"});
  EXPECT_EQ(readFile(place / "set/train.txt").find(place.path()), std::string::npos);
  EXPECT_EQ(occurrences(readFile(place / "set/train.txt"), "set/samples/img_"), 2U);
  EXPECT_NE(readFile(place / "set/parts.data").find(" set/train.txt\n"), std::string::npos);
}

TEST_F(ProgramGenerate, TheTestListGetsItsShare) {
  markBoth();
  const auto out = succeed({"generate", "parts", "--output", "set", "--test-ratio", "0.4",
                            "--augmentation", "resize-quarter-turns.xml"});
  // Five samples of each picture; 0.4 of ten are four.
  EXPECT_NE(out.find("       2       10         6     4     10\n"), std::string::npos) << out;
}

TEST_F(ProgramGenerate, TwoRunsGiveTheSameFiles) {
  markBoth();
  succeed({"generate", "parts", "--output", "set", "--test-ratio", "0.5"});
  const auto first = allFiles(place / "set");
  succeed({"generate", "parts", "--output", "set", "--test-ratio", "0.5"});
  EXPECT_EQ(allFiles(place / "set"), first);
}

TEST_F(ProgramGenerate, RefusesWhatWillNotDoAndDeletesNothing) {
  markBoth();
  succeed({"generate", "parts", "--output", "set"});
  const auto before = allFiles(place / "set");
  struct Row {
    std::vector<std::string> arguments;
    std::string message;
    int exitCode = 1;
  };
  const std::vector<Row> rows{
      {{"--augmentation", "absent.xml"}, "choose from: default.xml, random-lengths.xml"},
      {{"--config", "absent.tmp"}, "choose from: data.tmp"},
      {{"--net", "absent.tmp"}, "choose from: yolo-tiny-cpu.tmp, yolov4-tiny.tmp"},
      {{"--weights", "absent.weights"},
       "there is no weights file 'absent.weights', nor any other in "},
      {{"--set", "WIDHT=8"}, "there is no key 'WIDHT'; choose from: BACKUP, BATCH, CLASSES"},
      {{"--set", "WIDTH=abc"}, "the value of WIDTH must be a number, like 416, and is 'abc'"},
      {{"--set", "WIDTH"}, "write it as KEY=VALUE", 2},
      {{"--set", "WIDTH=###WIDTH=416###"}, "must not hold ###", 2},
      {{"--test-ratio", "1.5"}, "no number from 0 to 1", 2},
      {{"--test-ratio", "nan"}, "no number from 0 to 1", 2}};
  for (auto [arguments, message, exitCode] : rows) {
    arguments.insert(arguments.begin(), {"generate", "parts", "--output", "set"});
    fail(arguments, message, exitCode);
    EXPECT_EQ(allFiles(place / "set"), before);
  }
}

TEST_F(ProgramGenerate, RefusesAnOutputThatIsNoEarlierSet) {
  markBoth();
  fail({"generate", "parts", "--output", "photos"}, "no training set of ours");
  fail({"generate", "parts", "--output", "my set"}, "has white space");
  place.write("file", "");
  fail({"generate", "parts", "--output", "file"}, "cannot be made a directory");
  succeed({"generate", "parts", "--output", "set"});
  place.write("set/notes.md", "mine");
  fail({"generate", "parts", "--output", "set"}, "no training set of ours");
  fs::remove(place / "set/notes.md");
  place.write("set/samples/holiday.jpg", "mine");
  fail({"generate", "parts", "--output", "set"}, "no training set of ours");
  fs::remove(place / "set/samples/holiday.jpg");
  place.write("set/backup/parts_final.weights", "trained");
  fail({"generate", "parts", "--output", "set"}, "trained weights");
  EXPECT_EQ(readFile(place / "set/backup/parts_final.weights"), "trained");
}

TEST_F(ProgramGenerate, WantsClassesAndPictures) {
  succeed({"create", "empty"});
  fail({"generate", "empty", "--output", "set"}, "has no classes");
  succeed({"class", "add", "empty", "nut"});
  fail({"generate", "empty", "--output", "set"},
       "the project has no pictures; add some with: samplebench import empty");
  fs::rename(place / "photos", place / "unmounted");
  fail({"generate", "parts", "--output", "set"},
       "none of the pictures of the project (2) can be read; samplebench check parts says why");
}

TEST_F(ProgramGenerate, EmptyDirectoriesInThePlaceAreReplaced) {
  place.makeDirectory("set/samples");
  place.makeDirectory("set/backup/deep");
  succeed({"generate", "parts", "--output", "set"});
  place.makeDirectory("other/samples");
  place.write("other/samples/mine.txt", "");
  fail({"generate", "parts", "--output", "other"}, "no training set of ours");
}

TEST_F(ProgramGenerate, ClassNumbersMustRunFromNoughtWithoutGap) {
  const auto settings = place / "projects/parts/parts.cfg";
  auto text = readFile(settings);
  const auto at = text.find("0,1", text.find("DNN.Ids"));
  ASSERT_NE(at, std::string::npos) << text;
  for (const auto* numbers : {"0,2", "0,0"}) {
    text.replace(at, 3, numbers);
    place.write("projects/parts/parts.cfg", text);
    fail({"generate", "parts", "--output", "set"}, "must run from 0 to 1 without gap or repeat");
  }
}

TEST_F(ProgramGenerate, NamesStandInTheOrderOfTheNumbers) {
  markBoth();
  const auto settings = place / "projects/parts/parts.cfg";
  auto text = readFile(settings);
  text.replace(text.find("0,1", text.find("DNN.Ids")), 3, "1,0");
  place.write("projects/parts/parts.cfg", text);
  succeed({"generate", "parts", "--output", "set"});
  EXPECT_EQ(readFile(place / "set/parts.names"), "nut\nscrew\n");
  EXPECT_EQ(label(0).substr(0, 2), "0 ");
}

TEST_F(ProgramGenerate, TreesThatARunCannotUseAreRefused) {
  const std::string head = "<?xml version=\"1.0\"?>\n<opencv_storage>\n<TaskTree>\n";
  const std::string tail = "</TaskTree>\n</opencv_storage>\n";
  const std::string task = "<Name>Default</Name><Save>1</Save><SubTasks>0</SubTasks>";
  struct Row {
    std::string tree;
    std::string message;
  };
  const std::vector<Row> rows{
      {"<SubTasks>0</SubTasks>\n", "exactly one tree"},
      {"<SubTasks>2</SubTasks><Task_0>" + task + "</Task_0><Task_1>" + task + "</Task_1>\n",
       "exactly one tree"},
      {"<SubTasks>1</SubTasks><Task_0><Name>Blur</Name><Save>1</Save></Task_0>\n",
       "unknown kind 'Blur'"},
      {"<SubTasks>1</SubTasks><Task_0><Name>Default</Name><Save>0</Save></Task_0>\n",
       "no task that saves"}};
  for (const auto& [tree, message] : rows) {
    place.write("trees/tree.xml", head + tree + tail);
    fail({"generate", "parts", "--output", "set", "--augments", "trees", "--augmentation",
          "tree.xml"},
         message);
  }
  place.write("trees/tree.xml", "<?xml version=\"1.0\"?>\n<opencv_storage>\n<Task");
  EXPECT_EQ(run({"generate", "parts", "--output", "set", "--augments", "trees", "--augmentation",
                 "tree.xml"})
                .exitCode,
            1);
  EXPECT_FALSE(fs::exists(place / "set"));
}

TEST_F(ProgramGenerate, AKeyWithoutAValueIsNamed) {
  place.write("platforms/darknet/configs/data.tmp", "x=###MISSING###\n");
  place.write("platforms/darknet/nets/tiny.tmp", "c=###CLASSES###\n");
  const std::vector<std::string> arguments{"generate", "parts",       "--output",
                                           "set",      "--platforms", "platforms"};
  fail(arguments, "want values for MISSING");
  auto given = arguments;
  given.insert(given.end(), {"--set", "MISSING=$DNN_COUNT"});
  succeed(given);
  EXPECT_EQ(readFile(place / "set/parts.data"), "x=2\n");
  EXPECT_EQ(readFile(place / "set/parts.cfg"), "c=2\n");
}

TEST_F(ProgramGenerate, ADamagedTaskTreeIsAMessageWhereverItIsCut) {
  const std::string whole =
      "<?xml "
      "version=\"1.0\"?>\n<opencv_storage><TaskTree><SubTasks>1</SubTasks><Task_0><Name>Default"
      "</Name><Save>1</Save><SubTasks>0</SubTasks></Task_0></TaskTree></opencv_storage>";
  const auto generate = [&](const std::string& content, const std::string& message) {
    place.write("augments/tree.xml", content);
    fail({"generate", "parts", "--output", "set", "--augments", "augments", "--augmentation",
          "tree.xml"},
         message);
  };
  for (const std::size_t length : {5u, 13u, 14u, 40u, 100u})
    generate(whole.substr(0, length), "is damaged");
  generate("", "is empty");
  EXPECT_FALSE(fs::exists(place / "set"));
}

TEST_F(ProgramGenerate, AnyNumberOfThreadsWritesTheSameSet) {
  markBoth();
  succeed({"generate", "parts", "--output", "set", "--augmentation", "resize-quarter-turns.xml",
           "--test-ratio", "0", "--jobs", "1"});
  const auto one = contents("set");
  for (const char* jobs : {"0", "2", "5"}) {
    fs::remove_all(place / "set");
    succeed({"generate", "parts", "--output", "set", "--augmentation", "resize-quarter-turns.xml",
             "--test-ratio", "0", "--jobs", jobs});
    EXPECT_EQ(contents("set"), one) << jobs;
  }
  fail({"generate", "parts", "--output", "set", "--jobs", "-1"}, "--jobs", 2);
}

TEST_F(ProgramGenerate, WeightsAreLaidBesideTheSet) {
  place.write("platforms/darknet/configs/data.tmp", "data\n");
  place.write("platforms/darknet/nets/tiny.tmp", "net\n");
  place.write("platforms/darknet/weights/start.weights", "numbers");
  succeed({"generate", "parts", "--output", "set", "--platforms", "platforms", "--weights",
           "start.weights"});
  fail({"generate", "parts", "--output", "set", "--platforms", "platforms", "--weights", "absent"},
       "there is no weights file 'absent'; choose from: start.weights");
  const auto none = run({"generate", "parts", "--output", "set", "--weights", "x"});
  EXPECT_NE(none.err.find("fetch one with: samplebench weights get NAME"), std::string::npos)
      << none.err;
  EXPECT_EQ(readFile(place / "set/start.weights"), "numbers");
}

TEST_F(ProgramGenerate, APictureThatIsGoneOrNoneIsNoted) {
  const auto note = "left out, for it is no picture that can be read: " + place / "photos/a.png";
  for (const auto& path : unreadablePictures(place)) {
    fs::remove_all(place / "photos/a.png");
    if (fs::exists(path)) fs::rename(path, place / "photos/a.png");
    const auto result = run({"generate", "parts", "--output", "set"});
    EXPECT_EQ(result.exitCode, 3) << path << result.err;
    EXPECT_NE(result.out.find("1 picture left out as unreadable"), std::string::npos) << result.out;
    // Those out of all proportion begin like pictures, and the library tells of them.
    const bool beginsLikeOne = path.ends_with("huge.png") || !path.ends_with(".png");
    const auto text = beginsLikeOne ? "TrainSet image is empty!" : note;
    EXPECT_NE(result.err.find(text), std::string::npos) << path << result.err;
  }
  fs::remove(place / "photos/a.png");
  place.write("photos/b.png", "a text");
  fail({"generate", "parts", "--output", "set"},
       "none of the pictures of the project (2) can be read");
}

TEST_F(ProgramGenerate, APictureWithoutTheEndOfItsFileGoesInAndIsToldOf) {
  writePicture(place / "photos/c.jpg", 128, 64);
  succeed({"import", "parts", "day1", "photos"});
  succeed({"generate", "parts", "--output", "set"});
  const auto whole = readFile(place / "photos/c.jpg");
  place.write("photos/c.jpg", whole.substr(0, whole.size() * 2 / 3));
  const auto result = run({"generate", "parts", "--output", "set"});
  EXPECT_EQ(result.exitCode, 3) << result.err;
  EXPECT_NE(result.out.find("\n1 picture without the end of the file, whose samples are grey "
                            "there:\n  " +
                            (place / "photos/c.jpg") + "\n"),
            std::string::npos)
      << result.out;
  EXPECT_EQ(cv::imread(place / "set/samples/img_2.jpg").size(), cv::Size(128, 64));
  const auto json = run({"generate", "parts", "--output", "set", "--json"});
  EXPECT_EQ(json.exitCode, 3);
  EXPECT_NE(json.out.find("photos/c.jpg"), std::string::npos) << json.out;
}

TEST_F(ProgramGenerate, PointsAreCountedForTheyBecomeBoxesOfOnePixel) {
  markBoth();
  EXPECT_EQ(succeed({"generate", "parts", "--output", "set"}).find("point"), std::string::npos);
  succeed({"mark", "parts", "a.png", "Point", "0.5,0.5", "--class", "nut"});
  EXPECT_NE(succeed({"generate", "parts", "--output", "set"})
                .find("\n1 point becomes a box of one pixel\n"),
            std::string::npos);
  EXPECT_EQ(label(0), labelLine(1, 32, 16, 33, 33) + labelLine(1, 64, 32, 1, 1));
  succeed({"mark", "parts", "b.png", "Point", "0.5,0.5", "--class", "nut"});
  EXPECT_NE(succeed({"generate", "parts", "--output", "set"})
                .find("\n2 points become boxes of one pixel\n"),
            std::string::npos);
}

TEST_F(ProgramGenerate, APlaceThatCannotBeWrittenToIsNamed) {
  // Nobody, the superuser neither, may make directories there.
  const auto result = run({"generate", "parts", "--output", "/proc/set"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_NE(result.err.find("/proc"), std::string::npos) << result.err;
  EXPECT_TRUE(result.err.find("give another") != std::string::npos ||
              result.err.find("choose a directory of yours") != std::string::npos)
      << result.err;
}

// In units of 512 bytes.
constexpr auto fileLimit = "40";

TEST_F(ProgramGenerate, AFullDiskEndsTheRunAndLeavesNoPartOfASet) {
  // Sixteen samples of a picture whose path is long: their list is beyond the limit, they are not.
  std::string tasks;
  for (int i = 0; i < 16; ++i)
    tasks += "<Task_" + std::to_string(i) +
             "><Name>Default</Name><Save>1</Save><SubTasks>0</SubTasks></Task_" +
             std::to_string(i) + ">";
  place.write("trees/many.xml",
              "<?xml version=\"1.0\"?>\n<opencv_storage><TaskTree><SubTasks>1</SubTasks><Task_0>"
              "<Name>Default</Name><Save>0</Save><SubTasks>16</SubTasks>" +
                  tasks + "</Task_0></TaskTree></opencv_storage>");
  std::string directory = "long";
  for (int i = 0; i < 10; ++i)
    directory += "/" + std::string(200, 'a');
  place.makeDirectory(directory);
  writePicture(place / directory + "/a.png", 64, 32);
  succeed({"remove", "set", "parts", "day1"});
  succeed({"import", "parts", "day1", directory});
  const std::vector<std::string> generate{
      SAMPLEBENCH_PROGRAM, "generate", "parts",          "--output", "set",
      "--augments",        "trees",    "--augmentation", "many.xml"};
  std::vector<std::string> limited{
      "/bin/sh", "-c", std::string("trap '' XFSZ; ulimit -f ") + fileLimit + "; exec \"$@\"", "sh"};
  limited.insert(limited.end(), generate.begin(), generate.end());
  const auto result = RunningProgram(limited, place.path()).wait();
  EXPECT_EQ(result.exitCode, 1) << result.err;
  EXPECT_NE(result.err.find("set/sources.txt' cannot be written; see that there is space\n"),
            std::string::npos)
      << result.err;
  EXPECT_NE(result.err.find("1 of 1 (100 %)"), std::string::npos) << result.err;
  EXPECT_FALSE(fs::exists(place / "set"));
  EXPECT_EQ(RunningProgram(generate, place.path()).wait().exitCode, 0);
  EXPECT_TRUE(fs::exists(place / "set/samples/img_15.jpg"));
}

TEST_F(ProgramGenerate, WhatIsRefusedLeavesNoTrace) {
  const auto before = contents("");
  fail({"generate", "parts", "--output", "new/deep/set", "--weights", "absent"},
       "there is no weights file 'absent'");
  EXPECT_EQ(contents(""), before);
  place.makeDirectory("mine");
  place.write("mine/notes.txt", "mine");
  const auto mine = contents("");
  fail({"generate", "parts", "--output", "mine"}, "no training set of ours");
  EXPECT_EQ(contents(""), mine);
}

TEST_F(ProgramGenerate, ASetWithoutSamplesIsReplacedIfItIsOfARun) {
  succeed({"generate", "parts", "--output", "set"});
  // As a run leaves it that was killed when it had removed the samples of the earlier set.
  fs::remove_all(place / "set/samples");
  succeed({"generate", "parts", "--output", "set"});
  // Lists alone may be somebody's own.
  fs::remove_all(place / "set/samples");
  fs::remove(place / "set/sources.txt");
  fail({"generate", "parts", "--output", "set"}, "no training set of ours");
}

TEST_F(ProgramGenerate, HalfWrittenFilesOfAKilledRunAreReplaced) {
  succeed({"generate", "parts", "--output", "set"});
  for (const char* name : {"parts.data.new", "train.txt.new", "division.txt.part"})
    place.write("set/" + std::string(name), "half");
  succeed({"generate", "parts", "--output", "set"});
}

TEST_F(ProgramGenerate, ASetThatCannotBeMadeAnewIsLeftAlone) {
  succeed({"generate", "parts", "--output", "above/set"});
  const auto before = contents("above");
  fs::permissions(place.path(), fs::perms::all);
  for (const auto& entry : fs::recursive_directory_iterator(place.path()))
    fs::permissions(entry.path(), fs::perms::all);
  fs::permissions(place / "above", fs::perms::owner_read | fs::perms::owner_exec |
                                       fs::perms::others_read | fs::perms::others_exec);
  for (const Words& call : {Words{"generate", "parts", "--output", "above/set"},
                            Words{"generate", "parts", "--output", "above/set", "--dry-run"}}) {
    const auto result = runAsNobody(call);
    EXPECT_EQ(result.exitCode, 1) << result.err;
    EXPECT_THAT(result.err, testing::HasSubstr("cannot be removed and made anew"));
  }
  fs::permissions(place / "above", fs::perms::all);
  EXPECT_EQ(contents("above"), before);
}

class ProgramStopped : public ProgramGenerate {
 protected:
  /// A run over an earlier set, if there is to be one, that takes a while.
  RunningProgram running(bool hasEarlier = true) const {
    if (hasEarlier) succeed({"generate", "parts", "--output", "set"});
    return runningOn();
  }

  RunningProgram runningOn() const {
    place.makeDirectory("many");
    for (int i = 0; i < 100; ++i)
      writePicture(place / "many/" + std::to_string(i) + ".jpg", 800, 600);
    succeed({"import", "parts", "day2", "many"});
    return start(
        {"generate", "parts", "--output", "set", "--augmentation", "resize-quarter-turns.xml"});
  }
};

TEST_F(ProgramStopped, ARequestToEndStopsTheRunAndTheNextOneWorks) {
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    auto program = running();
    ASSERT_TRUE(program.waitForError("(10 %)"));
    program.signal(number);
    const auto result = program.wait();
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_NE(result.err.find("samplebench: interrupted after"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("the earlier set there is gone"), std::string::npos) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_FALSE(fs::exists(place / "set/samples"));
  }
  succeed({"generate", "parts", "--output", "set"});
}

TEST_F(ProgramStopped, APlaceIsWrittenToByOneRunAtATime) {
  auto first = running();
  ASSERT_TRUE(first.waitForError("(10 %)"));
  for (const auto& output : {std::string("set"), place / "photos/../set/"})
    fail({"generate", "parts", "--output", output}, "another command works in '" + output + "'");
  const auto result = first.wait();
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_TRUE(fs::exists(place / "set/train.txt"));
  EXPECT_FALSE(fs::exists(place / ".set.lock"));
  succeed({"generate", "parts", "--output", "set"});
}

TEST_F(ProgramStopped, NoEarlierSetIsToldOfWhereNoneWas) {
  auto program = running(false);
  ASSERT_TRUE(program.waitForError("(10 %)"));
  program.interrupt();
  const auto result = program.wait();
  EXPECT_EQ(result.exitCode, 130);
  EXPECT_NE(result.err.find("set was removed: run it again"), std::string::npos) << result.err;
}

TEST_F(ProgramStopped, TheSeedOfADivisionOutlivesARunThatIsCutOff) {
  const std::vector<std::string> generate{"generate",        "parts",  "--output", "set",
                                          "--keep-together", "source", "--quiet"};
  // None that would be chosen without being asked for.
  const std::string division = "keep-together=source\nseed=4000000000\n";
  auto first = generate;
  first.insert(first.end(), {"--seed", "4000000000"});
  succeed(first);
  ASSERT_EQ(readFile(place / "set/division.txt"), division);
  for (const int number : {SIGINT, SIGKILL}) {
    auto program = runningOn();
    ASSERT_TRUE(program.waitForError("(10 %)"));
    program.signal(number);
    program.wait();
    EXPECT_FALSE(fs::exists(place / "set/division.txt"));
    succeed(generate);
    EXPECT_EQ(readFile(place / "set/division.txt"), division) << number;
    EXPECT_FALSE(fs::exists(place / ".set.division"));
  }
  succeed({"generate", "parts", "--output", "set"});
  EXPECT_FALSE(fs::exists(place / "set/division.txt")) << "another division takes its place";
  succeed(generate);
  EXPECT_NE(readFile(place / "set/division.txt"), division);
}

TEST_F(ProgramStopped, WhatAKilledRunLeavesIsReplaced) {
  auto program = running();
  ASSERT_TRUE(program.waitForError("(10 %)"));
  program.signal(SIGKILL);
  EXPECT_EQ(program.wait().exitCode, -SIGKILL);
  EXPECT_FALSE(fs::exists(place / "set/train.txt"));
  EXPECT_TRUE(fs::exists(place / "set/samples/img_0.jpg"));
  succeed({"generate", "parts", "--output", "set"});
  EXPECT_TRUE(fs::exists(place / "set/train.txt"));
}

}  // namespace
