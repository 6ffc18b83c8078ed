#include <gmock/gmock.h>
#include <json/reader.h>

#include <csignal>
#include <filesystem>
#include <sstream>

#include "ProgramRunner.h"
#include "TNV_SampleBenchNative/TNV_SampleBenchNative.h"

namespace fs = std::filesystem;

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

Json::Value parsed(const std::string& text) {
  Json::Value value;
  std::istringstream stream(text);
  EXPECT_NO_THROW(stream >> value) << text;
  return value;
}

/// The project of screws and nuts, and labels of the pictures a.png and b.png.
class LabelsTest : public ProgramTest {
 protected:
  LabelsTest() {
    makeProject();
    fs::create_directories(place / "in/images");
    fs::copy_file(place / "photos/a.png", place / "in/images/c.png");
    fs::copy_file(place / "photos/a.png", place / "in/images/d.png");
    place.write("in/obj.names", "bolt\nnut\n");
    labels("c", "0 0.5 0.5 0.25 0.5\n1 0.25 0.25 0.125 0.125\n");
    labels("d", "");
  }

  void labels(const std::string& name, const std::string& text) const {
    place.write("in/labels/" + name + ".txt", text);
  }

  ProgramResult import(std::vector<std::string> more = {}) const {
    std::vector<std::string> arguments{"labels", "import", "parts", "others", "in"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return run(arguments);
  }

  /// Puts the second picture into a workflow of its own, "done".
  void finishSecondPicture() const {
    WTNVProject project("parts", place / "projects/", place / "", place / "");
    ASSERT_TRUE(project.wLoad());
    const auto done = project.wAddWorkflow("done", -1);
    ASSERT_TRUE(project.wUpdate(true));
    WTNVMainProcess process(&project, nullptr);
    auto trainSets = process.getHndTrainSet();
    trainSets.wSetTrainSetForward(1);
    trainSets.wSetWorkflow(done);
    ASSERT_TRUE(project.wUpdate(false));
  }

  std::string label(const std::string& directory, const std::string& name) const {
    return readFile(place / (directory + "/labels/" + name + ".txt"));
  }
};

}  // namespace

TEST_F(LabelsTest, ImportAddsClassesPicturesAndMarks) {
  const auto result = import();
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("Darknet: 1 class and 2 pictures added\n"
                                    "found     2\nimported  2\nrejected  0\n"));
  // The classes that were there stay first.
  const auto classes = succeed({"class", "list", "parts"});
  EXPECT_LT(classes.find("nut"), classes.find("bolt"));
  EXPECT_EQ(occurrences(classes, "nut"), 1U);
  EXPECT_THAT(classes, HasSubstr("bolt   cc79a7")) << "the third colour";
  EXPECT_THAT(succeed({"list", "parts"}), AllOf(HasSubstr("c.png"), HasSubstr("d.png")));
  succeed({"labels", "export", "parts", "out", "--format", "Darknet"});
  EXPECT_EQ(label("out", "c"), "2 0.5 0.5 0.25 0.5\n1 0.25 0.25 0.125 0.125\n");
  EXPECT_EQ(label("out", "a"), "");
  EXPECT_EQ(readFile(place / "out/classes.txt"), "screw\nnut\nbolt\n");
}

TEST_F(LabelsTest, WhatWasRejectedIsToldAndIsAFinding) {
  ASSERT_EQ(import().exitCode, 0);
  labels("d", "0 0.5 0.5 0.25 0.5\nbroken\n0 0 0.5 0.5 0.5\n");
  const auto result = import();
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.out, AllOf(HasSubstr("found     5\nimported  1\nrejected  4\n"),
                                HasSubstr("already marked                    2\n"),
                                HasSubstr("neither a box nor an outline      1\n"),
                                HasSubstr("reaches beyond the picture        1\n")));
  EXPECT_THAT(result.err, AllOf(HasSubstr("in/labels/c.txt:2: already marked\n"),
                                HasSubstr("in/labels/d.txt:2: neither a box nor an outline\n"),
                                HasSubstr("in/labels/d.txt:3: reaches beyond the picture\n"),
                                Not(HasSubstr("more; --rejections"))));
  EXPECT_THAT(import({"--clip"}).out, HasSubstr("imported  1\n"));
}

TEST_F(LabelsTest, AClassThatTheProjectCannotKeepIsNotAdded) {
  place.write("in/obj.names", "a, b\nnut\n");
  const auto result = import();
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.err, AllOf(HasSubstr("class 'a, b' is not added"),
                                HasSubstr("c.txt:1: class is not in the project\n")));
  EXPECT_THAT(result.out, HasSubstr("imported  1\n"));
  EXPECT_THAT(succeed({"class", "list", "parts"}), Not(HasSubstr("a, b")));
}

TEST_F(LabelsTest, ManyRejectionsAreListedInAFile) {
  std::string text;
  for (int i = 0; i < 23; ++i)
    text += "broken\n";
  labels("d", text);
  const auto result = import({"--rejections", "why.txt"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_EQ(occurrences(result.err, "neither a box"), 20U);
  EXPECT_THAT(result.err, HasSubstr("and 3 more; --rejections FILE lists them all"));
  EXPECT_EQ(occurrences(readFile(place / "why.txt"), "d.txt:"), 23U);
}

TEST_F(LabelsTest, TheListOfRejectionsTakesThePlaceOfNothingThatIsRead) {
  labels("d", "broken\n");
  place.write("names.txt", "bolt\nnut\n");
  fs::create_directories(place / "elsewhere");
  fs::copy_file(place / "photos/a.png", place / "elsewhere/c.png");
  place.write("set/labels/c.txt", "0 0.5 0.5 0.25 0.5\nbroken\n");
  place.write("set/obj.names", "bolt\n");
  place.write("set/train.txt", (place / "elsewhere/c.png") + "\n");
  place.write("elsewhere/c.txt", "0 0.5 0.5 0.25 0.5\nbroken\n");
  place.write("set/obj.data", "classes=1\ntrain=train.txt\nnames=obj.names\n");
  fs::create_symlink(place / "names.txt", place / "link");
  const std::vector<std::string> words{"labels", "import", "parts", "others"};
  const std::vector<std::pair<std::vector<std::string>, std::string>> calls{
      {{"in", "--names", "names.txt"}, "names.txt"},
      {{"in", "--names", "names.txt"}, "link"},
      {{"in", "--pictures", "elsewhere"}, "elsewhere/c.png"},
      {{"in"}, "in/images/c.png"},
      {{"set/obj.data"}, "set/labels/c.txt"},
      {{"set/obj.data"}, "set/train.txt"},
      {{"set/obj.data"}, "elsewhere/c.txt"}};
  for (const auto& [more, file] : calls) {
    auto call = words;
    call.insert(call.end(), more.begin(), more.end());
    call.insert(call.end(), {"--rejections", file});
    const auto content = readFile(place / file);
    const auto result = run(call);
    EXPECT_EQ(result.exitCode, 1) << file << result.err;
    EXPECT_THAT(result.err, HasSubstr("would lie in what is read")) << file;
    EXPECT_EQ(readFile(place / file), content) << file;
  }
}

TEST_F(LabelsTest, TheListOfRejectionsHurtsNothing) {
  labels("d", "broken\n");
  const auto before = succeed({"list", "parts"});
  for (const std::string file :
       {"projects/parts/parts.cfg", "photos/a.png", "in/d.txt", "in/d.jpg"}) {
    const auto content = readFile(place / file);
    EXPECT_EQ(import({"--rejections", file}).exitCode, 1) << file;
    EXPECT_EQ(readFile(place / file), content) << file;
  }
  EXPECT_EQ(succeed({"list", "parts"}), before) << "nothing was imported";
}

TEST_F(LabelsTest, ResultsForProgramsAreOneObject) {
  labels("d", "broken\n");
  const auto result = import({"--json"});
  EXPECT_EQ(result.exitCode, 3);
  const Json::Value facts = parsed(result.out);
  EXPECT_EQ(facts["format"].asString(), "Darknet");
  EXPECT_EQ(facts["classesAdded"].asInt(), 1);
  EXPECT_EQ(facts["picturesAdded"].asInt(), 2);
  EXPECT_EQ(facts["labels"]["found"].asInt(), 3);
  EXPECT_EQ(facts["labels"]["imported"].asInt(), 2);
  EXPECT_EQ(facts["labels"]["rejected"].asInt(), 1);
  ASSERT_EQ(facts["reasons"].size(), 1U);
  EXPECT_EQ(facts["reasons"][0]["reason"].asString(), "neither a box nor an outline");
  EXPECT_EQ(facts["reasons"][0]["count"].asInt(), 1);
  const Json::Value exported =
      parsed(succeed({"labels", "export", "parts", "out", "--format", "Darknet", "--json"}));
  EXPECT_EQ(exported["pictures"].asInt(), 4);
  EXPECT_EQ(exported["labels"]["exported"].asInt(), 2);
  EXPECT_TRUE(exported["reasons"].isArray());
  EXPECT_TRUE(exported["reasons"].empty());
}

TEST_F(LabelsTest, WhatWasRejectedIsToldAlsoIfNoPictureIsFound) {
  fs::rename(place / "in/images", place / "pictures");
  const auto before = contents("projects");
  const auto text = import({"--rejections", "why.txt"});
  EXPECT_EQ(text.exitCode, 1);
  EXPECT_THAT(text.out, AllOf(HasSubstr("Darknet: 0 classes and 0 pictures added\n"
                                        "found     2\nimported  0\nrejected  2\n"),
                              HasSubstr("no picture      2\n")));
  EXPECT_THAT(text.err,
              AllOf(HasSubstr("c.txt:1: no picture\n"), HasSubstr("c.txt:2: no picture\n"),
                    HasSubstr("--pictures tells where pictures lie")));
  EXPECT_EQ(occurrences(readFile(place / "why.txt"), "no picture"), 2U);
  const auto json = parsed(import({"--json"}).out);
  EXPECT_EQ(json["labels"]["found"].asInt(), 2);
  EXPECT_EQ(json["labels"]["imported"].asInt(), 0);
  EXPECT_EQ(json["labels"]["rejected"].asInt(), 2);
  EXPECT_EQ(json["reasons"][0]["count"].asInt(), 2);
  EXPECT_THAT(json["error"].asString(), HasSubstr("no label has a picture that was found"));
  EXPECT_EQ(contents("projects"), before);
}

TEST_F(LabelsTest, ADryRunWritesNothing) {
  const auto before = succeed({"list", "parts"});
  const auto result = import({"--dry-run", "--rejections", "why.txt"});
  EXPECT_THAT(result.out, HasSubstr("imported  2\n"));
  EXPECT_FALSE(fs::exists(place / "why.txt"));
  EXPECT_EQ(succeed({"list", "parts"}), before);
  EXPECT_THAT(succeed({"labels", "export", "parts", "out", "--format", "Darknet", "--dry-run"}),
              HasSubstr("Darknet labels of 2 pictures would go to out\n"));
  EXPECT_FALSE(fs::exists(place / "out"));
  fail({"labels", "export", "parts", "in", "--format", "Darknet", "--dry-run"},
       "cannot be written");
}

TEST_F(LabelsTest, PicturesLeftOutAreCountedToldAndAFinding) {
  ASSERT_EQ(import().exitCode, 0);
  // c.png has two labels, a.png none.
  place.write("in/images/c.png", "");
  fs::remove(place / "photos/a.png");
  for (const std::string format : {"COCO", "Darknet", "VOC"}) {
    for (const bool isDry : {true, false}) {
      std::vector<std::string> call{"labels", "export", "parts", "out", "--format", format};
      if (isDry) call.push_back("--dry-run");
      const auto result = run(call);
      EXPECT_EQ(result.exitCode, 3) << format << result.err;
      EXPECT_THAT(result.out,
                  AllOf(HasSubstr(format + " labels of 2 pictures " +
                                  (isDry ? "would go to out\n2 pictures would be left out\n"
                                         : "written to out\n2 pictures left out\n")),
                        HasSubstr("found     2\nexported  0\nrejected  2\n"),
                        HasSubstr("picture cannot be read      2\n")));
      EXPECT_THAT(result.err, AllOf(HasSubstr("photos/a.png' "), HasSubstr("in/images/c.png' ")));
      EXPECT_EQ(fs::exists(place / "out"), !isDry) << format;
    }
    const auto result = run({"labels", "export", "parts", "out", "--format", format, "--json",
                             "--rejections", "why.txt"});
    const Json::Value facts = parsed(result.out);
    EXPECT_EQ(facts["pictures"].asInt(), 2);
    EXPECT_EQ(facts["picturesLeftOut"].asInt(), 2);
    EXPECT_EQ(facts["labels"]["exported"].asInt(), 0);
    EXPECT_EQ(occurrences(readFile(place / "why.txt"), ": picture cannot be read\n"), 2U);
    fs::remove_all(place / "out");
  }
}

TEST_F(LabelsTest, EachFormatGoesOutAndComesBack) {
  ASSERT_EQ(import().exitCode, 0);
  for (const std::string format : {"COCO", "Darknet", "VOC"}) {
    for (const bool copy : {false, true}) {
      const std::string name = format + (copy ? "copied" : "");
      std::vector<std::string> call{"labels", "export", "parts", name, "--format", format};
      if (copy) call.push_back("--copy");
      EXPECT_THAT(succeed(call), HasSubstr(format + " labels of 4 pictures written to " + name));
      succeed({"create", "p" + name});
      EXPECT_THAT(succeed({"labels", "import", "p" + name, "all", name}),
                  AllOf(HasSubstr(format + ": 3 classes and 4 pictures added\n"),
                        HasSubstr("found     2\nimported  2\nrejected  0\n")));
      succeed({"labels", "export", "p" + name, name + "again", "--format", "Darknet"});
      EXPECT_EQ(label(name + "again", "c"), "2 0.5 0.5 0.25 0.5\n1 0.25 0.25 0.125 0.125\n");
    }
  }
}

TEST_F(LabelsTest, TheBaseOfVocIsAChoiceInBothDirections) {
  ASSERT_EQ(import().exitCode, 0);
  succeed({"labels", "export", "parts", "out", "--format", "VOC", "--base", "0"});
  // A quarter of 128 by 64 pixels less half of an eighth of them.
  EXPECT_THAT(readFile(place / "out/Annotations/c.xml"),
              AllOf(HasSubstr("<xmin>24</xmin>"), HasSubstr("<ymin>12</ymin>"),
                    HasSubstr("<xmax>40</xmax>"), HasSubstr("<ymax>20</ymax>")));
  EXPECT_THAT(run({"labels", "import", "parts", "others", "out", "--base", "0"}).out,
              HasSubstr("already marked      2\n"));
  EXPECT_THAT(run({"labels", "import", "parts", "others", "out"}).out, HasSubstr("imported  2\n"));
}

TEST_F(LabelsTest, LabelsOfSeveralFormatsNeedAChoice) {
  place.write("in/old.xml", "<annotation/>");
  fail({"labels", "import", "parts", "others", "in"},
       "There are labels of several formats at 'in', choose one of: VOC, Darknet; --format");
  EXPECT_EQ(import({"--format", "Darknet"}).exitCode, 0);
}

TEST_F(LabelsTest, AClassNameWithBlanksAtItsEndsIsNotAdded) {
  place.write("in/data.yaml", "names: [' bolt', nut]\n");
  const auto result = import();
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(
      result.err,
      AllOf(HasSubstr("class ' bolt' is not added"),
            HasSubstr("c.txt:1: class name with blanks at its ends or control characters")));
  EXPECT_THAT(result.out, HasSubstr("imported  1\n"));
}

TEST_F(LabelsTest, AWorkflowChoosesThePicturesThatGoOut) {
  finishSecondPicture();
  EXPECT_THAT(
      succeed({"labels", "export", "parts", "out", "--format", "Darknet", "--workflow", "done"}),
      HasSubstr("Darknet labels of 1 picture written to out\n"));
  EXPECT_FALSE(fs::exists(place / "out/labels/a.txt"));
  EXPECT_TRUE(fs::exists(place / "out/labels/b.txt"));
  fs::remove(place / "photos/b.png");
  fail({"labels", "export", "parts", "out", "--format", "Darknet", "--workflow", "done"},
       "none of the pictures of workflow 'done' (1) can be read");
  EXPECT_TRUE(fs::exists(place / "out/labels/b.txt"));
}

TEST_F(LabelsTest, AnExportOfSomeKeepsThePicturesOfAll) {
  const std::vector<std::string> call{"labels",   "export",  "parts", "out",
                                      "--format", "Darknet", "--copy"};
  succeed(call);
  succeed({"import", "parts", "spare", "out/images"});
  finishSecondPicture();
  const auto before = contents("out");
  auto some = call;
  some.insert(some.end(), {"--workflow", "done"});
  fail(some, "out/images/a.png");
  EXPECT_EQ(contents("out"), before);
  fs::resize_file(recordOf("spare", "a.png"), 0);
  fs::resize_file(recordOf("spare", "b.png"), 0);
  fail(some, "cannot be read, and its picture may lie there");
  EXPECT_EQ(contents("out"), before);
}

TEST_F(LabelsTest, CopiesComeBackIntoAnotherProject) {
  ASSERT_EQ(import().exitCode, 0);
  succeed({"labels", "export", "parts", "out", "--format", "Darknet", "--copy"});
  EXPECT_TRUE(fs::exists(place / "out/images/c.png"));
  succeed({"create", "copy"});
  succeed({"labels", "import", "copy", "all", "out"});
  succeed({"labels", "export", "copy", "again", "--format", "Darknet"});
  EXPECT_EQ(label("again", "c"), label("out", "c"));
  EXPECT_EQ(readFile(place / "again/classes.txt"), "screw\nnut\nbolt\n");
}

TEST_F(LabelsTest, AnExportToCocoCountsAllLabels) {
  ASSERT_EQ(import().exitCode, 0);
  succeed({"mark", "parts", "a.png", "Point", "0.5,0.5", "--class", "nut"});
  const auto result = run({"labels", "export", "parts", "out", "--format", "COCO", "--json"});
  EXPECT_EQ(result.exitCode, 3) << "a point has no size";
  const Json::Value facts = parsed(result.out);
  EXPECT_EQ(facts["pictures"].asInt(), 4);
  EXPECT_EQ(facts["labels"]["found"].asInt(), 3);
  EXPECT_EQ(facts["labels"]["exported"].asInt(), 2);
  EXPECT_EQ(facts["labels"]["rejected"].asInt(), 1);
  const Json::Value written = parsed(readFile(place / "out/annotations.json"));
  EXPECT_EQ(written["images"].size(), 4U);
  EXPECT_EQ(written["annotations"].size(), 2U);
}

TEST_F(LabelsTest, NamesAndPicturesMayLieElsewhere) {
  fs::rename(place / "in/obj.names", place / "names.txt");
  fs::rename(place / "in/images", place / "pictures");
  fail({"labels", "import", "parts", "others", "in"},
       "No class names found for 'in'; --format and --names tell how to read them");
  EXPECT_THAT(import({"--names", "names.txt"}).err,
              HasSubstr("--pictures tells where pictures lie"));
  const auto result = import({"--names", "names.txt", "--pictures", "pictures"});
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("imported  2\n"));
}

TEST_F(LabelsTest, NamesThatAreSpelledInAWayThatIsNotReadAreToldOf) {
  place.write("in/data.yaml", "names: &all [bolt, nut]\n");
  for (const std::vector<std::string>& more :
       {std::vector<std::string>(), {"--names", "in/data.yaml"}}) {
    std::vector<std::string> call{"labels", "import", "parts", "others", "in"};
    call.insert(call.end(), more.begin(), more.end());
    fail(call,
         "No class names in '" + (more.empty() ? place / "in/data.yaml" : more.back()) +
             "'! Anchors, references, tags, blocks of lines and files in braces are not read");
  }
}

TEST_F(LabelsTest, WrongRequestsAreRefusedWithAWayOut) {
  fail({"labels", "import", "parts", "others", "missing"}, "no labels can be read from 'missing'");
  fail({"labels", "import", "parts", "others", "in", "--format", "Yolo"},
       "there is no format 'Yolo'; choose from:", 2);
  fail({"labels", "import", "parts", "others", "in", "--pictures", "nowhere"},
       "there is no directory 'nowhere'");
  fail({"labels", "import", "parts", "a/b", "in"}, "use a name without slashes", 2);
  fail({"labels", "import", "parts", "others", "in", "--base", "2"}, "--base", 2);
  fail({"labels", "export", "parts", "in", "--format", "Darknet"}, "give a new or empty directory");
  fail({"labels", "export", "parts", "out"}, "--format", 2);
  fail({"labels", "export", "parts", "out", "--format", "Darknet", "--workflow", "done"},
       "there is no workflow 'done'; choose from:");
  EXPECT_FALSE(fs::exists(place / "out"));
}

namespace {

constexpr int stoppingSignals[] = {SIGINT, SIGTERM, SIGHUP};

class LabelsStopped : public LabelsTest {
 protected:
  LabelsStopped() {
    const std::string picture = readFile(place / "photos/a.png");
    std::string text;
    for (int i = 0; i < 20; ++i)
      text += "0 0.5 0.5 0." + std::to_string(11 + i) + " 0.5\n";
    for (int i = 0; i < 1000; ++i) {
      const std::string name = "p" + std::to_string(i);
      place.write("in/images/" + name + ".png", picture);
      labels(name, text);
    }
  }

  /// Stops the program as soon as it says the text, and returns what it left.
  ProgramResult stopped(const std::vector<std::string>& arguments, const std::string& text,
                        int signal) const {
    auto program = start(arguments);
    EXPECT_TRUE(program.waitForError(text));
    program.signal(signal);
    return program.wait();
  }
};

}  // namespace

TEST_F(LabelsStopped, AnImportThatIsStoppedLeavesTheProjectAsItWas) {
  const auto before = contents("projects");
  for (const int signal : stoppingSignals) {
    for (const std::string moment : {"reading the labels", "(60 %)"}) {
      const auto result = stopped({"labels", "import", "parts", "others", "in"}, moment, signal);
      EXPECT_EQ(result.exitCode, 130) << moment << result.err;
      EXPECT_THAT(result.err, HasSubstr("samplebench: interrupted; nothing was imported"));
      EXPECT_EQ(result.out, "");
      EXPECT_EQ(contents("projects"), before) << moment;
    }
  }
  // a.png and b.png are in another set: 20 labels of each of the 1000, and the two of c.png.
  EXPECT_THAT(import().out, HasSubstr("imported  20002\nrejected      0\n"));
}

TEST_F(LabelsStopped, AnExportThatIsStoppedLeavesTheEarlierOneAsItWas) {
  ASSERT_EQ(import().exitCode, 0);
  for (const std::string format : {"Darknet", "COCO", "VOC"}) {
    const std::vector<std::string> call{"labels",   "export", "parts", "out",
                                        "--format", format,   "--copy"};
    fs::remove_all(place / "out");
    const auto first = stopped(call, "(30 %)", SIGINT);
    EXPECT_EQ(first.exitCode, 130) << first.err;
    EXPECT_FALSE(fs::exists(place / "out")) << "there was none before";
    succeed({"labels", "export", "parts", "out", "--format", "Darknet"});
    const auto before = contents("out");
    for (const int signal : stoppingSignals) {
      const auto result = stopped(call, "(30 %)", signal);
      EXPECT_EQ(result.exitCode, 130) << format << result.err;
      EXPECT_THAT(result.err, HasSubstr("samplebench: interrupted; nothing was exported"));
      EXPECT_EQ(result.out, "");
      EXPECT_EQ(contents("out"), before) << format;
    }
  }
}

TEST_F(LabelsTest, WithoutAnyPictureTheEarlierExportStays) {
  succeed({"labels", "export", "parts", "out", "--format", "Darknet", "--copy"});
  const auto before = contents("out");
  fs::rename(place / "photos", place / "unmounted");
  for (const auto* more : {"--copy", "--dry-run"})
    fail({"labels", "export", "parts", "out", "--format", "Darknet", more},
         "none of the pictures of the project (2) can be read; samplebench check parts");
  EXPECT_EQ(contents("out"), before);
}

TEST_F(LabelsTest, TheSummaryOfADarknetExportSaysWhatATrainerNeeds) {
  const auto copyHint = HasSubstr("to train with them, export with --copy");
  const auto valHint = HasSubstr("val of data.yaml is the same as train");
  const std::vector<std::string> call{"labels", "export", "parts", "out", "--format", "Darknet"};
  EXPECT_THAT(succeed(call), AllOf(copyHint, valHint));
  auto withCopy = call;
  withCopy.push_back("--copy");
  EXPECT_THAT(succeed(withCopy), AllOf(Not(copyHint), valHint));
  EXPECT_THAT(succeed({"labels", "export", "parts", "coco", "--format", "COCO"}),
              AllOf(Not(copyHint), Not(valHint)));
}

TEST_F(LabelsTest, TheReasonWhyClassesCannotGoOutIsTheTrueOne) {
  WTNVProject project("parts", place / "projects/", "", "");
  ASSERT_TRUE(project.wLoad());
  ASSERT_TRUE(project.wAddDNNClass("bolt ", -1, -1).isValid());
  ASSERT_TRUE(project.wUpdate(true));
  const std::vector<std::string> call{"labels", "export", "parts", "out", "--format", "COCO"};
  fail(call, "cannot be written: The name 'bolt ' is empty, has blanks at its ends");
  succeed({"class", "rename", "parts", "bolt ", "bolt"});
  succeed(call);
}

TEST_F(LabelsTest, AReasonDoesNotTellOfFunctions) {
  fs::create_directories(place / "bare");
  const auto result = run({"--quiet", "labels", "import", "parts", "day2", "bare"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.err, AllOf(HasSubstr("no labels can be read from 'bare': "),
                                Not(HasSubstr("TNV")), Not(HasSubstr("::"))));
}
