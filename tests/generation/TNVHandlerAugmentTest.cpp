#include "generation/TNVHandlerAugment.h"

#include <filesystem>
#include <functional>
#include <random>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "TNV_SampleBenchNative/WTNVHandlerAugment.h"
#include "foundation/TNVSettings.h"
#include "generation/TNVAugment.h"
#include "generation/TNVGenerationDarknet.h"
#include "marks/TNVMarkRect.h"
#include "project/TNVDNNClass.h"
#include "project/TNVTrainSet.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"
#include "support/TempDirectory.h"

namespace fs = std::filesystem;

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

std::string document(const std::string& tree) {
  return "<?xml version=\"1.0\"?>\n<opencv_storage>\n<TaskTree>\n" + tree +
         "\n</TaskTree>\n</opencv_storage>\n";
}

std::string task(int index, const std::string& name, int save, const std::string& parameters = "",
                 const std::vector<std::string>& subTasks = {}) {
  const std::string tag = "Task_" + std::to_string(index) + ">";
  std::string text = "<" + tag + "<Name>" + name + "</Name><Save>" + std::to_string(save) +
                     "</Save>" + parameters + "<SubTasks>" + std::to_string(subTasks.size()) +
                     "</SubTasks>";
  for (const std::string& subTask : subTasks)
    text += subTask;
  return text + "</" + tag + "\n";
}

std::string oneRoot(const std::string& root) {
  return document("<SubTasks>1</SubTasks>" + root);
}

/// The names of the tree, depth first: "Default(Resize)".
std::string outline(const TNVAugment* root) {
  if (!root) return "none";
  std::string text = root->getName() + (root->save ? "+" : "-");
  for (const auto& subTask : root->subTasks)
    text += "(" + outline(subTask.get()) + ")";
  return text;
}

/// Notes the order of events and of what the generator is asked.
class Journal final : public TNVHandlerAugmentObserver {
 public:
  void onEventGenerationStarted() override { note("started"); }
  void onEventGenerationUpdate() override { note("update"); }
  void onEventGenerationFinished() override { note("finished"); }
  void note(const std::string& what) {
    notes.push_back(what);
    if (watch) watch(what);
    if (what == stopAt) handler->stopRequested = true;
  }

  std::vector<std::string> notes;
  std::string stopAt;
  std::function<void(const std::string& what)> watch;
  TNVHandlerAugment* handler = nullptr;
};

class NotingGeneration final : public TNVGeneration {
 public:
  explicit NotingGeneration(Journal& target) : journal(target) {}
  std::string getName() const override { return "Noting"; }
  bool processBefore() override {
    journal.note("before " + std::to_string(runTrainSets.size()));
    return startsWell;
  }
  bool process(const TNVAugmentSample& sample) override {
    journal.note("sample");
    if (throws) throw std::runtime_error("full");
    lastSize = sample.image.size();
    return true;
  }
  bool processAfter() override {
    journal.note("after");
    return endsWell;
  }
  std::vector<std::string> validateConfig() const override { return {}; }

  Journal& journal;
  bool startsWell = true;
  bool endsWell = true;
  bool throws = false;
  cv::Size lastSize;
};

class TNVHandlerAugmentFixture : public ::testing::Test {
 protected:
  TNVHandlerAugmentFixture() {
    journal.handler = &handler;
    handler.addObserver(&journal);
    directory.write("augments/tree.xml", oneRoot(task(0, "Default", 1)));
  }
  ~TNVHandlerAugmentFixture() override { handler.removeObserver(&journal); }

  void select(const std::string& content) {
    directory.write("augments/selected.xml", content);
    handler.setAugmentation("selected.xml");
  }

  TNVTrainSet* addTrainSet(const std::string& picture) {
    owned.push_back(std::make_unique<TNVTrainSet>(picture, ""));
    trainSets.push_back(owned.back().get());
    return trainSets.back();
  }

  TNVTrainSet* addPicture(int width = 40, int height = 20) {
    const std::string name = "picture" + std::to_string(owned.size()) + ".png";
    return addTrainSet(writePicture(directory / name, width, height));
  }

  bool run() { return handler.process(trainSets, &generation); }

  TempDirectory directory;
  LogCapture log;
  Journal journal;
  TNVHandlerAugment handler{directory.makeDirectory("augments")};
  NotingGeneration generation{journal};
  std::vector<std::unique_ptr<TNVTrainSet>> owned;
  std::vector<TNVTrainSet*> trainSets;
};

struct TreeRow {
  std::string content;
  const char* outline;
};

class TNVHandlerAugmentTrees : public TNVHandlerAugmentFixture,
                               public ::testing::WithParamInterface<TreeRow> {};

TEST_P(TNVHandlerAugmentTrees, AreReadAsTheFileTells) {
  select(GetParam().content);
  EXPECT_EQ(outline(handler.rootTask.get()), GetParam().outline);
  EXPECT_EQ(handler.augmentation, "selected.xml");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TNVHandlerAugmentTrees,
    ::testing::Values(
        TreeRow{oneRoot(task(0, "Default", 1)), "Default+"},
        TreeRow{oneRoot(task(0, "Resize", 0)), "Resize-"},
        TreeRow{oneRoot(task(0, "Rotation", 2)), "Rotation+"},
        TreeRow{oneRoot(task(0, "Filter", -1)), "Filter+"},
        TreeRow{oneRoot("<Task_0><Name>Default</Name></Task_0>"), "Default-"},
        TreeRow{oneRoot(task(0, "Default", 1, "",
                             {task(0, "Resize", 0, "", {task(0, "Rotation", 1)}),
                              task(1, "Filter", 1)})),
                "Default+(Resize-(Rotation+))(Filter+)"},
        // The order is that of the numbers.
        TreeRow{
            oneRoot("<Task_0><Name>Default</Name><SubTasks>3</SubTasks>" + task(2, "Filter", 1) +
                    task(0, "Resize", 1) + task(1, "Rotation", 1) + "</Task_0>"),
            "Default-(Resize+)(Rotation+)(Filter+)"},
        // An unknown kind goes with all below it.
        TreeRow{
            oneRoot(task(0, "Default", 1, "",
                         {task(0, "Blur", 1, "", {task(0, "Resize", 1)}), task(1, "Filter", 1)})),
            "Default+(Filter+)"},
        TreeRow{oneRoot(task(0, "default", 1)), "none"},
        TreeRow{oneRoot(task(0, "Blur", 1, "", {task(0, "Default", 1)})), "none"},
        // Fewer and more children than the count says.
        TreeRow{document("<SubTasks>5</SubTasks>" + task(0, "Default", 1)), "Default+"},
        TreeRow{document("<SubTasks>2147483647</SubTasks>" + task(3, "Default", 1)), "Default+"},
        TreeRow{document("<SubTasks>1</SubTasks>" + task(0, "Default", 1) + task(1, "Filter", 1)),
                "Default+"},
        TreeRow{document("<SubTasks>2</SubTasks>" + task(0, "Default", 1) + task(1, "Filter", 1)),
                "none"},
        TreeRow{document("<SubTasks>0</SubTasks>" + task(0, "Default", 1)), "none"},
        TreeRow{document("<SubTasks>-1</SubTasks>" + task(0, "Default", 1)), "none"},
        TreeRow{document(task(0, "Default", 1)), "none"},
        TreeRow{"<?xml version=\"1.0\"?>\n<opencv_storage>\n</opencv_storage>\n", "none"},
        TreeRow{"<?xml version=\"1.0\"?>\n<opencv_storage>\n<TaskTree>5</TaskTree>\n"
                "</opencv_storage>\n",
                "none"},
        TreeRow{"", "none"}));

TEST_F(TNVHandlerAugmentFixture, ReadsTheExampleWithItsParameters) {
  select(
      "<?xml version=\"1.0\"?>\n<opencv_storage>\n<TaskTree>\n<SubTasks>1</SubTasks>\n<Task_0>\n"
      "<Name>Default</Name><Save>1</Save><SubTasks>1</SubTasks>\n<Task_0>\n"
      "<Name>Resize</Name><Save>0</Save><TargetSize>416 416</TargetSize>\n"
      "<MaxLength>0</MaxLength><MaxLengthRndMin>0</MaxLengthRndMin>"
      "<MaxLengthRndMax>0</MaxLengthRndMax>\n<SubTasks>1</SubTasks>\n"
      "<Task_0><Name>Rotation</Name><Save>1</Save><Rotate>90</Rotate><RotateRnd></RotateRnd>"
      "<SubTasks>0</SubTasks></Task_0>\n</Task_0>\n</Task_0>\n</TaskTree>\n</opencv_storage>\n");
  EXPECT_EQ(outline(handler.rootTask.get()), "Default+(Resize-(Rotation+))");
  addPicture();
  EXPECT_TRUE(run());
  EXPECT_EQ(generation.lastSize, cv::Size(416, 416));
}

TEST_F(TNVHandlerAugmentFixture, AFileWithoutOneRootKeepsTheTreeAndShowsAsSelected) {
  select(oneRoot(task(0, "Resize", 1)));
  const TNVAugment* before = handler.rootTask.get();
  directory.write("augments/two.xml", document("<SubTasks>2</SubTasks>" + task(0, "Default", 1) +
                                               task(1, "Default", 1)));
  directory.write("augments/blur.xml", oneRoot(task(0, "Blur", 1)));
  directory.write("augments/empty.xml", "");
  for (const char* name : {"two.xml", "blur.xml", "empty.xml", "absent.xml", ""}) {
    handler.setAugmentation(name);
    EXPECT_EQ(handler.rootTask.get(), before) << name;
    EXPECT_EQ(handler.augmentation, name);
  }
}

TEST_F(TNVHandlerAugmentFixture, AReplacedTreeStaysReadable) {
  select(oneRoot(task(0, "Resize", 1)));
  const TNVAugment* before = handler.rootTask.get();
  handler.setAugmentation("tree.xml");
  EXPECT_EQ(outline(handler.rootTask.get()), "Default+");
  EXPECT_EQ(outline(before), "Resize+");
}

TEST_F(TNVHandlerAugmentFixture, AFileThatIsNoXmlIsThrownAndNotSelected) {
  select(oneRoot(task(0, "Resize", 1)));
  for (const char* content : {"rubbish", "<?xml version=\"1.0\"?>\n<opencv_storage>\n<TaskTree>",
                              "%YAML:1.0\n---\nTaskTree: 1\n"}) {
    directory.write("augments/bad.xml", content);
    EXPECT_THROW(handler.setAugmentation("bad.xml"), cv::Exception) << content;
  }
  EXPECT_EQ(handler.augmentation, "selected.xml");
  EXPECT_EQ(outline(handler.rootTask.get()), "Resize+");
}

TEST_F(TNVHandlerAugmentFixture, AFileCutAnywhereIsATreeOrThrown) {
  const std::string whole =
      oneRoot(task(0, "Filter", 1, "<FilterAllowedGens>ROI POI</FilterAllowedGens>",
                   {task(0, "Resize", 1, "<TargetSize>4 5</TargetSize><MaxLength>3</MaxLength>"),
                    task(1, "Rotation", 1, "<RotateRnd>90 180</RotateRnd>")}));
  for (std::size_t length = 0; length < whole.size(); ++length) {
    try {
      select(whole.substr(0, length));
    } catch (const cv::Exception&) {
    }
  }
  select(whole);
  EXPECT_EQ(outline(handler.rootTask.get()), "Filter+(Resize+)(Rotation+)");
}

TEST_F(TNVHandlerAugmentFixture, AFileWithDamagedBytesIsATreeOrThrown) {
  const std::string whole =
      oneRoot(task(0, "Resize", 1, "<TargetSize>4 5</TargetSize>", {task(0, "Rotation", 1)}));
  std::mt19937 random(11);
  for (int round = 0; round < 500; ++round) {
    std::string damaged = whole;
    damaged[random() % damaged.size()] = static_cast<char>(random() % 256);
    try {
      select(damaged);
    } catch (const cv::Exception&) {
    }
  }
}

TEST_F(TNVHandlerAugmentFixture, WrongTypesAreAnswered) {
  select(oneRoot("<Task_0><Name>5</Name><Save>x</Save></Task_0>"));
  EXPECT_EQ(outline(handler.rootTask.get()), "none");
  select(oneRoot("<Task_0>5</Task_0>"));
  EXPECT_EQ(outline(handler.rootTask.get()), "none");
  select(oneRoot(task(0, "Resize", 1, "<MaxLength>z</MaxLength>")));
  EXPECT_EQ(outline(handler.rootTask.get()), "Resize+");
  EXPECT_THROW(select(oneRoot(task(0, "Filter", 1, "",
                                   {task(0, "Resize", 1, "<TargetSize>a b</TargetSize>")}))),
               cv::Exception);
  EXPECT_EQ(outline(handler.rootTask.get()), "Resize+");
}

TEST_F(TNVHandlerAugmentFixture, DeepNestingIsThrown) {
  std::string open;
  std::string close;
  for (int i = 0; i < 50000; ++i) {
    open += "<Task_0><Name>Default</Name><SubTasks>1</SubTasks>";
    close += "</Task_0>";
  }
  EXPECT_THROW(select(oneRoot(open + close)), cv::Exception);
}

TEST_F(TNVHandlerAugmentFixture, ManyTasksAreReadInOneWalk) {
  std::vector<std::string> subTasks;
  for (int i = 0; i < 20000; ++i)
    subTasks.push_back(task(i, "Default", 1));
  select(oneRoot(task(0, "Default", 1, "", subTasks)));
  ASSERT_TRUE(handler.rootTask);
  EXPECT_EQ(handler.rootTask->subTasks.size(), 20000u);
}

TEST_F(TNVHandlerAugmentFixture, AvailableAreTheXmlFilesOfTheDirectory) {
  directory.write("augments/b.XML", "");
  directory.write("augments/c.txt", "");
  directory.write("augments/deep/d.xml", "");
  EXPECT_THAT(handler.getAvailableAugmentations(), UnorderedElementsAre("tree.xml", "b.XML"));
}

TEST_F(TNVHandlerAugmentFixture, TheSelectionIsKeptInTheSettings) {
  TNVSettings settings(directory / "p.cfg");
  handler.setAugmentation("tree.xml");
  handler.saveSettings(&settings);
  settings.saveFile();
  EXPECT_EQ(readFile(directory / "p.cfg"), "Augmentation.Selected = \"tree.xml\"\n");
  TNVHandlerAugment other(directory / "augments/");
  other.loadSettings(&settings);
  EXPECT_EQ(other.augmentation, "tree.xml");
  EXPECT_EQ(outline(other.rootTask.get()), "Default+");
}

TEST_F(TNVHandlerAugmentFixture, WithoutASelectionTheDefaultIsLoaded) {
  directory.write("augments/default.xml", oneRoot(task(0, "Filter", 1)));
  TNVSettings settings(directory / "p.cfg");
  handler.loadSettings(&settings);
  EXPECT_EQ(handler.augmentation, "./default.xml");
  EXPECT_EQ(outline(handler.rootTask.get()), "Filter+");
}

TEST_F(TNVHandlerAugmentFixture, ARunSendsItsEventsInOrder) {
  handler.setAugmentation("tree.xml");
  addPicture();
  addPicture();
  EXPECT_TRUE(handler.stopped);
  EXPECT_TRUE(run());
  EXPECT_THAT(journal.notes, ElementsAre("started", "before 2", "sample", "update", "sample",
                                         "update", "after", "finished"));
  EXPECT_TRUE(handler.stopped);
  EXPECT_FALSE(handler.stopRequested);
  EXPECT_EQ(log.text(), "");
  EXPECT_THAT(generation.runTrainSets, IsEmpty());
}

TEST_F(TNVHandlerAugmentFixture, AnEmptyListIsAWholeRun) {
  handler.setAugmentation("tree.xml");
  EXPECT_TRUE(run());
  EXPECT_THAT(journal.notes, ElementsAre("started", "before 0", "after", "finished"));
}

TEST_F(TNVHandlerAugmentFixture, EachSavingTaskGivesASample) {
  select(
      oneRoot(task(0, "Default", 1, "",
                   {task(0, "Default", 0, "", {task(0, "Rotation", 1)}), task(1, "Filter", 1)})));
  addPicture();
  EXPECT_TRUE(run());
  EXPECT_EQ(std::count(journal.notes.begin(), journal.notes.end(), "sample"), 3);
}

TEST_F(TNVHandlerAugmentFixture, PicturesAreGivenUpOneByOne) {
  handler.setAugmentation("tree.xml");
  TNVTrainSet* first = addPicture();
  TNVTrainSet* second = addPicture();
  second->loadImage();
  EXPECT_TRUE(run());
  EXPECT_FALSE(first->isImageLoaded());
  EXPECT_TRUE(first->image.empty());
  EXPECT_FALSE(second->isImageLoaded());
}

TEST_F(TNVHandlerAugmentFixture, APictureIsGivenUpAfterItsUpdateAndBeforeTheNext) {
  handler.setAugmentation("tree.xml");
  TNVTrainSet* first = addPicture();
  TNVTrainSet* second = addPicture();
  std::vector<std::string> seen;
  journal.watch = [&](const std::string& what) {
    if (what != "sample" && what != "update") return;
    seen.push_back(what + (first->isImageLoaded() ? " first" : "") +
                   (second->isImageLoaded() ? " second" : ""));
  };
  EXPECT_TRUE(run());
  EXPECT_THAT(seen, ElementsAre("sample first", "update first", "sample second", "update second"));
}

TEST_F(TNVHandlerAugmentFixture, FlagsAreSetBeforeTheirEvents) {
  handler.setAugmentation("tree.xml");
  addPicture();
  handler.stopRequested = true;
  std::vector<std::string> seen;
  journal.watch = [&](const std::string& what) {
    if (what != "started" && what != "finished") return;
    seen.push_back(what + (handler.stopped ? " stopped" : "") +
                   (handler.stopRequested ? " requested" : ""));
  };
  EXPECT_TRUE(run());
  EXPECT_THAT(seen, ElementsAre("started", "finished stopped"));
}

TEST_F(TNVHandlerAugmentFixture, ALoadedPictureIsTakenAsItIs) {
  handler.setAugmentation("tree.xml");
  TNVTrainSet* trainSet = addTrainSet(directory / "absent.png");
  trainSet->image = patternedPicture(7, 3);
  trainSet->imageLoaded = true;
  EXPECT_TRUE(run());
  EXPECT_EQ(generation.lastSize, cv::Size(7, 3));
}

TEST_F(TNVHandlerAugmentFixture, ARecordIsLoadedWhenItIsItsTurn) {
  handler.setAugmentation("tree.xml");
  TNVTrainSet stored(writePicture(directory / "p.png", 9, 5), "");
  ASSERT_TRUE(stored.save(directory.path()));
  TNVTrainSet record;
  record.dataPath = stored.dataPath;
  EXPECT_TRUE(handler.process({&record}, &generation));
  EXPECT_TRUE(record.dataLoaded);
  EXPECT_EQ(generation.lastSize, cv::Size(9, 5));
}

TEST_F(TNVHandlerAugmentFixture, AnUnreadablePictureIsPassedOver) {
  handler.setAugmentation("tree.xml");
  addTrainSet(directory / "absent.png");
  addPicture();
  EXPECT_TRUE(run());
  EXPECT_THAT(journal.notes, ElementsAre("started", "before 2", "update", "sample", "update",
                                         "after", "finished"));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVAugment::setTrainSet: TrainSet image is empty!",
                          "TNVAugment::processTrainSet: Can not process, TrainSet ist empty!"));
}

TEST_F(TNVHandlerAugmentFixture, ANullTrainSetIsPassedOver) {
  handler.setAugmentation("tree.xml");
  trainSets = {nullptr};
  EXPECT_TRUE(run());
  EXPECT_THAT(journal.notes, ElementsAre("started", "before 1", "update", "after", "finished"));
  EXPECT_EQ(log.lines().front(), "TNVAugment::setTrainSet: TrainSet is nullptr!");
}

TEST_F(TNVHandlerAugmentFixture, AGeneratorThatRefusesEndsTheRunWithoutFinished) {
  handler.setAugmentation("tree.xml");
  addPicture();
  generation.startsWell = false;
  EXPECT_FALSE(run());
  EXPECT_THAT(journal.notes, ElementsAre("started", "before 1"));
  EXPECT_EQ(log.text(), "TNVHandlerAugment::process: Process before failed!\n");
  EXPECT_FALSE(handler.stopped);
  EXPECT_THAT(generation.runTrainSets, IsEmpty());
}

TEST_F(TNVHandlerAugmentFixture, NoGeneratorIsARefusalToo) {
  EXPECT_FALSE(handler.process({}, nullptr));
  EXPECT_EQ(log.text(), "TNVHandlerAugment::process: Process before failed!\n");
}

TEST_F(TNVHandlerAugmentFixture, AnEndThatFailsIsReported) {
  handler.setAugmentation("tree.xml");
  addPicture();
  generation.endsWell = false;
  EXPECT_FALSE(run());
  EXPECT_THAT(journal.notes,
              ElementsAre("started", "before 1", "sample", "update", "after", "finished"));
  EXPECT_EQ(log.text(), "TNVHandlerAugment::process: Process after failed!\n");
  EXPECT_TRUE(handler.stopped);
}

TEST_F(TNVHandlerAugmentFixture, AStopBeforeTheFirstTrainSetEndsTheRunAtOnce) {
  handler.setAugmentation("tree.xml");
  TNVTrainSet* trainSet = addPicture();
  journal.stopAt = "started";
  EXPECT_FALSE(run());
  EXPECT_THAT(journal.notes, ElementsAre("started", "before 1", "finished"));
  EXPECT_EQ(log.text(), "TNVHandlerAugment::process: Process should stop!\n");
  EXPECT_TRUE(handler.stopped);
  // The stop is looked for when the picture is there.
  EXPECT_TRUE(trainSet->isImageLoaded());
}

TEST_F(TNVHandlerAugmentFixture, AStopWithinATrainSetLetsItRunToItsEnd) {
  select(oneRoot(task(0, "Default", 1, "", {task(0, "Default", 1)})));
  addPicture();
  addPicture();
  journal.stopAt = "sample";
  EXPECT_FALSE(run());
  EXPECT_THAT(journal.notes,
              ElementsAre("started", "before 2", "sample", "sample", "update", "finished"));
}

TEST_F(TNVHandlerAugmentFixture, AStopAfterTheLastTrainSetLeavesNoLists) {
  handler.setAugmentation("tree.xml");
  addPicture();
  journal.stopAt = "update";
  EXPECT_FALSE(run());
  EXPECT_THAT(journal.notes, ElementsAre("started", "before 1", "sample", "update", "finished"));
  EXPECT_EQ(log.text(), "TNVHandlerAugment::process: Process should stop!\n");
}

TEST_F(TNVHandlerAugmentFixture, AStopAskedForBeforeARunDoesNotCount) {
  handler.setAugmentation("tree.xml");
  handler.stopRequested = true;
  EXPECT_TRUE(run());
}

TEST_F(TNVHandlerAugmentFixture, WithoutATreeARunEndsAtTheFirstPicture) {
  addTrainSet(directory / "absent.png");
  TNVTrainSet* trainSet = addPicture();
  addPicture();
  EXPECT_FALSE(run());
  EXPECT_THAT(journal.notes, ElementsAre("started", "before 3", "update", "finished"));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVAugment::setTrainSet: TrainSet image is empty!",
                          "TNVAugment::processTrainSet: Can not process, TrainSet ist empty!",
                          "TNVHandlerAugment::process: No augmentation is loaded, select one with "
                          "wSetAugmentation!"));
  EXPECT_TRUE(handler.stopped);
  EXPECT_FALSE(trainSet->isImageLoaded());
}

TEST_F(TNVHandlerAugmentFixture, WithoutATreeARunWithoutPicturesIsWhole) {
  addTrainSet(directory / "absent.png");
  EXPECT_TRUE(run());
  EXPECT_THAT(journal.notes, ElementsAre("started", "before 1", "update", "after", "finished"));
}

TEST_F(TNVHandlerAugmentFixture, WhatIsThrownPassesAndLeavesTheRunOpen) {
  handler.setAugmentation("tree.xml");
  addPicture();
  generation.throws = true;
  EXPECT_THROW(run(), std::runtime_error);
  EXPECT_FALSE(handler.stopped);
  EXPECT_THAT(generation.runTrainSets, IsEmpty());
  EXPECT_THAT(journal.notes, ElementsAre("started", "before 1", "sample"));
}

TEST_F(TNVHandlerAugmentFixture, ATargetSizeOfZeroIsThrown) {
  select(oneRoot(task(0, "Resize", 1)));
  addPicture();
  EXPECT_THROW(run(), cv::Exception);
}

TEST_F(TNVHandlerAugmentFixture, AHandlerThatIsOffTellsNobody) {
  handler.setAugmentation("tree.xml");
  handler.enabled = false;
  EXPECT_TRUE(run());
  EXPECT_THAT(journal.notes, ElementsAre("before 0", "after"));
}

class TNVHandlerAugmentDarknet : public TNVHandlerAugmentFixture {
 protected:
  TNVHandlerAugmentDarknet() {
    darknet.platformPath = directory.makeDirectory("platforms");
    darknet.sampleDirectory = directory / "out/images/";
    darknet.dataDirectory = directory / "out/";
    darknet.testRatio = 0.0;
    dnnClass.dnnId = 6;
    handler.dnnClasses = {&dnnClass};
  }

  std::string label(int number) const {
    return readFile(directory / ("out/images/img_" + std::to_string(number) + ".txt"));
  }

  TNVGenerationDarknet darknet;
  TNVDNNClass dnnClass{3};
};

TEST_F(TNVHandlerAugmentDarknet, WritesPicturesLabelsAndLists) {
  select(oneRoot(task(0, "Default", 1, "", {task(0, "Rotation", 1, "<Rotate>90</Rotate>")})));
  TNVTrainSet* trainSet = addPicture(40, 20);
  TNVMarkRect mark;
  mark.center = {0.25, 0.5};
  mark.size = {0.225, 0.45};
  mark.classIdx = {3};
  trainSet->addMark(mark);
  EXPECT_TRUE(handler.process(trainSets, &darknet));
  // x 5.5 to 14.5 and y 5.5 to 14.5, in whole pixels 5 to 14 on both axes.
  EXPECT_EQ(label(0), "6 0.25 0.5 0.25 0.5\n");
  // A quarter turn makes y the distance from the right: x 20 - 14.5 to 20 - 5.5, y 5.5 to 14.5.
  EXPECT_EQ(label(1), "6 0.5 0.25 0.5 0.25\n");
  EXPECT_EQ(cv::imread(directory / "out/images/img_0.jpg").size(), cv::Size(40, 20));
  EXPECT_EQ(cv::imread(directory / "out/images/img_1.jpg").size(), cv::Size(20, 40));
  EXPECT_THAT(readFile(directory / "out/train.txt"), ::testing::HasSubstr("img_1.jpg\n"));
  EXPECT_EQ(readFile(directory / "out/test.txt"), "");
}

TEST_F(TNVHandlerAugmentDarknet, SpecialIsLostBehindAnyOtherTaskThanDefault) {
  select(oneRoot(task(0, "Default", 1, "", {task(0, "Filter", 1)})));
  addPicture()->useSpecialTest = true;
  EXPECT_TRUE(handler.process(trainSets, &darknet));
  EXPECT_EQ(readFile(directory / "out/test.txt"), directory / "out/images/img_0.jpg\n");
  EXPECT_EQ(readFile(directory / "out/train.txt"), directory / "out/images/img_1.jpg\n");
}

TEST_F(TNVHandlerAugmentDarknet, ATreeThatSavesNothingGivesTwoEmptyLists) {
  select(oneRoot(task(0, "Default", 0)));
  addPicture();
  EXPECT_TRUE(handler.process(trainSets, &darknet));
  EXPECT_TRUE(fs::is_empty(directory / "out/images"));
  EXPECT_TRUE(fs::exists(directory / "out/train.txt"));
  EXPECT_EQ(readFile(directory / "out/train.txt") + readFile(directory / "out/test.txt"), "");
}

TEST_F(TNVHandlerAugmentDarknet, AStopLeavesAPartialRunWithoutLists) {
  handler.setAugmentation("tree.xml");
  addPicture();
  addPicture();
  journal.stopAt = "update";
  EXPECT_FALSE(handler.process(trainSets, &darknet));
  EXPECT_TRUE(fs::exists(directory / "out/images/img_0.jpg"));
  EXPECT_FALSE(fs::exists(directory / "out/images/img_1.jpg"));
  EXPECT_FALSE(fs::exists(directory / "out/train.txt"));
}

TEST_F(TNVHandlerAugmentDarknet, ARunDoesNotDeleteThePicturesThatItIsGiven) {
  handler.setAugmentation("tree.xml");
  TNVTrainSet* trainSet =
      addTrainSet(writePicture(directory.makeDirectory("out") + "source.png", 8, 8));
  EXPECT_FALSE(handler.process(trainSets, &darknet));
  EXPECT_TRUE(fs::exists(trainSet->imagePath));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVGenerationDarknet::processBefore: Directory '" + directory.path() +
                              "out/' would be deleted, but it is or contains the picture '" +
                              trainSet->imagePath + "'!",
                          "TNVHandlerAugment::process: Process before failed!"));
}

std::vector<std::string> calls;

class WTNVHandlerAugmentFixture : public TNVHandlerAugmentFixture {
 protected:
  WTNVHandlerAugmentFixture() {
    calls.clear();
    handler.setAugmentation("tree.xml");
  }

  bool process(WTNVHandlerAugment& wrapper) {
    return wrapper.wProcess({WTNVTrainSet(addPicture())}, WTNVGeneration(&generation));
  }
};

TEST_F(WTNVHandlerAugmentFixture, CallsBackOnEachEvent) {
  WTNVHandlerAugment wrapper(&handler);
  wrapper.setCBGenerationStarted([] { calls.push_back("started"); });
  wrapper.setCBGenerationUpdate([] { calls.push_back("update"); });
  wrapper.setCBGenerationFinished([] { calls.push_back("finished"); });
  EXPECT_TRUE(process(wrapper));
  EXPECT_THAT(calls, ElementsAre("started", "update", "finished"));
  wrapper.setCBGenerationUpdate(nullptr);
  process(wrapper);
  EXPECT_EQ(calls.size(), 5u);
}

TEST_F(WTNVHandlerAugmentFixture, ForwardsSelectionAndState) {
  WTNVHandlerAugment wrapper(&handler);
  EXPECT_THAT(wrapper.wGetAvailableAugmentations(), ElementsAre("tree.xml"));
  wrapper.wSetAugmentation("absent.xml");
  EXPECT_EQ(wrapper.wGetAugmentation(), "absent.xml");
  EXPECT_TRUE(wrapper.wProcessIsStopped());
  wrapper.wProcessStop();
  EXPECT_TRUE(handler.stopRequested);
  generation.startsWell = false;
  EXPECT_FALSE(process(wrapper));
  EXPECT_FALSE(wrapper.wProcessIsStopped());
}

TEST_F(WTNVHandlerAugmentFixture, ACopyHearsEventsWithoutTheOthersCallbacks) {
  auto first = std::make_unique<WTNVHandlerAugment>(&handler);
  first->setCBGenerationStarted([] { calls.push_back("first"); });
  WTNVHandlerAugment copy(*first);
  process(copy);
  EXPECT_THAT(calls, ElementsAre("first"));
  copy.setCBGenerationStarted([] { calls.push_back("copy"); });
  process(copy);
  EXPECT_THAT(calls, ElementsAre("first", "first", "copy"));
  first.reset();
  process(copy);
  EXPECT_THAT(calls, ElementsAre("first", "first", "copy", "copy"));
}

TEST_F(WTNVHandlerAugmentFixture, AnAssignmentTakesHandlerAndCallbacksAndRegistersNothing) {
  TNVHandlerAugment other(directory / "augments/");
  other.augmentation = "other.xml";
  WTNVHandlerAugment source(&other);
  source.setCBGenerationStarted([] { calls.push_back("called"); });
  WTNVHandlerAugment target(&handler);
  const auto before = handler.observers->snapshot();
  target = source;
  EXPECT_EQ(handler.observers->snapshot(), before);
  EXPECT_EQ(target.wGetAugmentation(), "other.xml");
  process(source);
  EXPECT_THAT(calls, ElementsAre("called", "called"));
}

TEST_F(WTNVHandlerAugmentFixture, ADestroyedWrapperIsNoObserver) {
  const auto before = handler.observers->snapshot();
  { const WTNVHandlerAugment wrapper(&handler); }
  EXPECT_EQ(handler.observers->snapshot(), before);
}

TEST_F(WTNVHandlerAugmentFixture, AnotherThreadStopsARun) {
  static WTNVHandlerAugment* running = nullptr;
  WTNVHandlerAugment wrapper(&handler);
  running = &wrapper;
  wrapper.setCBGenerationStarted([] { std::thread([] { running->wProcessStop(); }).join(); });
  EXPECT_FALSE(process(wrapper));
  EXPECT_EQ(log.text(), "TNVHandlerAugment::process: Process should stop!\n");
}

}  // namespace
