// A run on several threads beside the same run on one: files, events, log and failures are equal.

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "TNV_SampleBenchNative/WTNVHandlerAugment.h"
#include "foundation/Steps.h"
#include "generation/TNVAugment.h"
#include "generation/TNVGenerationDarknet.h"
#include "generation/TNVHandlerAugment.h"
#include "marks/TNVMarkRect.h"
#include "project/TNVDNNClass.h"
#include "project/TNVTrainSet.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"
#include "support/TempDirectory.h"

namespace fs = std::filesystem;

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

/// The run that the others are compared with: `wProcess`.
constexpr int kOneAfterTheOther = -1000;
const std::vector<int> kThreads = {1, 2, 4, 0, -1, 100};

/// Whatever a run leaves for others to see.
struct Traces {
  std::string result;  ///< "true", "false", or what was thrown
  bool stopped = false;
  std::vector<std::string> events;
  std::vector<std::string> log;
  std::vector<std::string> trainSets;
  std::map<std::string, std::string> files;
  unsigned counter = 0;
};

std::vector<std::string> namesOf(const std::map<std::string, std::string>& files) {
  std::vector<std::string> names;
  for (const auto& [name, content] : files)
    names.push_back(name);
  return names;
}

void expectSame(const Traces& expected, const Traces& actual) {
  EXPECT_EQ(expected.result, actual.result);
  EXPECT_EQ(expected.stopped, actual.stopped);
  EXPECT_EQ(expected.events, actual.events);
  EXPECT_EQ(expected.log, actual.log);
  EXPECT_EQ(expected.trainSets, actual.trainSets);
  EXPECT_EQ(expected.counter, actual.counter);
  EXPECT_EQ(namesOf(expected.files), namesOf(actual.files));
  for (const auto& [name, content] : expected.files)
    EXPECT_TRUE(actual.files.count(name) == 1 && actual.files.at(name) == content) << name;
}

std::map<std::string, std::string> filesBelow(const std::string& directory) {
  std::map<std::string, std::string> files;
  if (!fs::exists(directory)) return files;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    if (entry.is_regular_file()) files[entry.path()] = readFile(entry.path());
  }
  return files;
}

/// Notes events, and those that come on another thread than the run's apart.
class Journal final : public TNVHandlerAugmentObserver {
 public:
  void onEventGenerationStarted() override { note("started"); }
  void onEventGenerationUpdate() override { note("update " + std::to_string(updates++)); }
  void onEventGenerationFinished() override { note("finished"); }

  std::vector<std::string> notes;
  std::function<void(const std::string& note)> react;

 private:
  void note(const std::string& what) {
    notes.push_back(std::this_thread::get_id() == home ? what : what + " elsewhere");
    if (react) react(what);
  }

  const std::thread::id home = std::this_thread::get_id();
  int updates = 0;
};

/// A generator that leaves all to its turn and does not read train sets before the run.
class PlainGeneration final : public TNVGeneration {
 public:
  std::string getName() const override { return "Plain"; }
  bool processBefore() override { return true; }
  bool process(const TNVAugmentSample& sample) override {
    sizes.push_back(sample.image.size());
    onOtherThreads = onOtherThreads || std::this_thread::get_id() != home;
    return true;
  }
  bool processAfter() override { return true; }
  std::vector<std::string> validateConfig() const override { return {}; }
  void prepare(const TNVAugmentSample& sample, tnv::Steps& steps) override {
    if (sample.image.cols == throwsAtWidth) throw std::runtime_error("too wide");
    TNVGeneration::prepare(sample, steps);
  }

  int throwsAtWidth = 0;
  std::vector<cv::Size> sizes;
  bool onOtherThreads = false;

 private:
  const std::thread::id home = std::this_thread::get_id();
};

class ParallelRun : public ::testing::Test {
 protected:
  ParallelRun() {
    first.dnnId = 6;
    second.dnnId = 2;
  }

  /// A stored record of a picture, with a mark of a class, one with two points, and one of a class
  /// that is not there.
  TNVTrainSet& add(const std::string& picture) {
    TNVTrainSet trainSet(picture, "");
    TNVMarkRect rect({0.1, 0.2}, {0.5, 0.7}, false);
    rect.classIdx = {3};
    trainSet.addMark(rect);
    rect.classIdx = {4};
    rect.pois = {{0.3, 0.4}, {0.9, 0.95}};
    rect.poiSize = {0.1, 0.2};
    trainSet.addMark(rect);
    rect.classIdx = {77};
    trainSet.addMark(rect);
    trainSet.save(directory.makeDirectory("records"));
    records.push_back(trainSet.dataPath);
    kept.push_back(std::make_unique<TNVTrainSet>());
    kept.back()->dataPath = trainSet.dataPath;
    kept.back()->load();
    return *kept.back();
  }

  TNVTrainSet& addPicture(int width, int height, const std::string& extension = ".png") {
    return add(writePicture(directory / ("picture" + std::to_string(records.size()) + extension),
                            width, height));
  }

  /// Pictures of many sizes; among them what cannot be read, special ones, one with a reduced copy.
  void addAll() {
    addPicture(64, 48);
    addPicture(300, 200, ".jpg");
    for (const std::string& path : unreadablePictures(directory))
      add(path);
    addPicture(31, 90);
    change([](TNVTrainSet& trainSet) { trainSet.useSpecialTest = true; });
    addPicture(120, 120, ".jpg");
    change([this](TNVTrainSet& trainSet) {
      EXPECT_TRUE(trainSet.addImageCache(directory / "cache/", 60, 75));
    });
    records.push_back(directory / "records/absent.xml");
    addPicture(1, 1);
    addPicture(640, 480, ".jpg");
    addPicture(17, 23);
    change([](TNVTrainSet& trainSet) { trainSet.useSpecialTest = true; });
    addPicture(200, 300);
  }

  /// Changes the last record.
  void change(const std::function<void(TNVTrainSet&)>& how) {
    how(*kept.back());
    kept.back()->changed = true;
    ASSERT_TRUE(kept.back()->save(directory / "records/"));
  }

  void select(const std::string& tasks) {
    directory.write("augments/tree.xml", "<?xml version=\"1.0\"?>\n<opencv_storage>\n<TaskTree>" +
                                             tasks + "</TaskTree>\n</opencv_storage>\n");
    augmentsPath = directory / "augments/";
    tree = "tree.xml";
  }

  void selectShipped(const std::string& fileName) {
    augmentsPath = TNV_SOURCE_DIRECTORY "/augments/";
    tree = fileName;
  }

  /// A whole run on fresh records.
  Traces run(int threads) {
    const LogCapture log;
    Traces traces;
    TNVGenerationDarknet darknet;
    darknet.platformPath = directory.makeDirectory("platforms");
    darknet.sampleDirectory = directory / "out/images/";
    darknet.dataDirectory = directory / "out/";
    darknet.testRatio = 0.3;
    runWith(darknet, threads, traces);
    traces.counter = darknet.sampleCounter;
    traces.files = filesBelow(directory / "out/");
    traces.log = log.lines();
    return traces;
  }

  void runWith(TNVGeneration& generation, int threads, Traces& traces) {
    TNVHandlerAugment handler(augmentsPath);
    handler.setAugmentation(tree);
    handler.dnnClasses = {&first, &second};
    Journal journal;
    journal.react = [&](const std::string& note) {
      if (react) react(note, handler);
    };
    handler.addObserver(&journal);
    const auto trainSets = freshTrainSets();
    traces.result = resultOf([&] { return start(handler, trainSets, generation, threads); });
    handler.removeObserver(&journal);
    traces.events = journal.notes;
    traces.stopped = handler.stopped;
    for (TNVTrainSet* trainSet : trainSets) {
      traces.trainSets.push_back(std::string(trainSet->isImageLoaded() ? "loaded" : "given up") +
                                 (trainSet->image.empty() ? "" : ", a picture"));
    }
  }

  void expectSameOnAllThreads() {
    const Traces expected = run(kOneAfterTheOther);
    for (const int threads : kThreads) {
      SCOPED_TRACE(threads);
      expectSame(expected, run(threads));
    }
  }

  TempDirectory directory;
  std::vector<std::string> records;
  std::string augmentsPath;
  std::string tree;
  std::function<void(const std::string& note, TNVHandlerAugment& handler)> react;

 private:
  static bool start(TNVHandlerAugment& handler, const std::vector<TNVTrainSet*>& trainSets,
                    TNVGeneration& generation, int threads) {
    WTNVHandlerAugment wrapper(&handler);
    const std::vector<WTNVTrainSet> handles(trainSets.begin(), trainSets.end());
    if (threads == kOneAfterTheOther) return wrapper.wProcess(handles, WTNVGeneration(&generation));
    return wrapper.wProcessParallel(handles, WTNVGeneration(&generation), threads);
  }

  static std::string resultOf(const std::function<bool()>& call) {
    try {
      return call() ? "true" : "false";
    } catch (const std::exception& error) {
      return error.what();
    }
  }

  std::vector<TNVTrainSet*> freshTrainSets() {
    fresh.clear();
    std::vector<TNVTrainSet*> trainSets;
    for (const std::string& record : records) {
      fresh.push_back(std::make_unique<TNVTrainSet>());
      fresh.back()->dataPath = record;
      trainSets.push_back(fresh.back().get());
    }
    return trainSets;
  }

  TNVDNNClass first{3};
  TNVDNNClass second{4};
  std::vector<std::unique_ptr<TNVTrainSet>> kept;
  std::vector<std::unique_ptr<TNVTrainSet>> fresh;
};

constexpr const char* kCopy =
    "<SubTasks>1</SubTasks><Task_0><Name>Default</Name><Save>1</Save></Task_0>";

/// Saves each picture twice, and then throws.
constexpr const char* kThrowsAtLast =
    "<SubTasks>1</SubTasks><Task_0><Name>Default</Name><Save>1</Save><SubTasks>2</SubTasks>"
    "<Task_0><Name>Default</Name><Save>1</Save></Task_0>"
    "<Task_1><Name>Resize</Name><Save>1</Save><TargetSize>0 0</TargetSize></Task_1></Task_0>";

TEST_F(ParallelRun, WritesTheSameFilesWithTheShippedTrees) {
  addAll();
  for (const char* fileName : {"default.xml", "resize-quarter-turns.xml"}) {
    SCOPED_TRACE(fileName);
    selectShipped(fileName);
    const Traces traces = run(kOneAfterTheOther);
    EXPECT_EQ(traces.result, "true");
    // Each of the eight pictures that can be read, at least as it is, and its labels.
    EXPECT_GE(traces.files.size(), 2 * 8U);
    EXPECT_THAT(traces.log, Contains("TNVAugment::setTrainSet: TrainSet image is empty!"));
    EXPECT_THAT(traces.log, Contains("TNVAugment::setTrainSet: Warning, DNN Class not found!"));
    EXPECT_THAT(traces.log, Contains("TNVTrainSet::load: File does not exist!"));
    EXPECT_THAT(traces.events, SizeIs(records.size() + 2));
    expectSameOnAllThreads();
  }
}

TEST_F(ParallelRun, WritesTheSameFilesWithATreeOfAllKinds) {
  addAll();
  select(
      "<SubTasks>1</SubTasks><Task_0><Name>Filter</Name><Save>1</Save>"
      "<FilterAllowedGens>ROI</FilterAllowedGens><FilterAllowedForms>Rect</FilterAllowedForms>"
      "<SubTasks>2</SubTasks>"
      "<Task_0><Name>Rotation</Name><Save>1</Save><Rotate>90</Rotate></Task_0>"
      "<Task_1><Name>Resize</Name><Save>0</Save><TargetSize>40 "
      "30</TargetSize><SubTasks>1</SubTasks>"
      "<Task_0><Name>Default</Name><Save>1</Save></Task_0></Task_1></Task_0>");
  expectSameOnAllThreads();
}

TEST_F(ParallelRun, WithoutTrainSetsIsAWholeRun) {
  select(kCopy);
  const Traces traces = run(4);
  EXPECT_EQ(traces.result, "true");
  EXPECT_THAT(traces.events, ElementsAre("started", "finished"));
  expectSameOnAllThreads();
}

TEST_F(ParallelRun, WithoutATreeEndsAtTheFirstPicture) {
  add(directory / "absent.png");
  addPicture(40, 20);
  addPicture(40, 20);
  select("<SubTasks>0</SubTasks>");
  const Traces traces = run(4);
  EXPECT_EQ(traces.result, "false");
  EXPECT_THAT(traces.events, ElementsAre("started", "update 0", "finished"));
  expectSameOnAllThreads();
}

TEST_F(ParallelRun, WithoutAGeneratorIsRefused) {
  const LogCapture log;
  TNVHandlerAugment handler(directory.path());
  EXPECT_FALSE(handler.processParallel({}, nullptr, 2));
  EXPECT_FALSE(handler.stopped);
  EXPECT_THAT(log.lines(), ElementsAre("TNVHandlerAugment::process: Process before failed!"));
}

TEST_F(ParallelRun, AStopFromACallbackCountsBeforeTheNextTrainSet) {
  addAll();
  select(kCopy);
  for (const char* moment : {"started", "update 0", "update 3", "finished"}) {
    SCOPED_TRACE(moment);
    react = [&](const std::string& note, TNVHandlerAugment& handler) {
      if (note == moment) handler.stopRequested = true;
    };
    expectSameOnAllThreads();
  }
}

TEST_F(ParallelRun, AStopFromAnotherThreadCountsBeforeTheNextTrainSet) {
  addAll();
  select(kCopy);
  react = [](const std::string& note, TNVHandlerAugment& handler) {
    if (note == "update 1") std::thread([&] { handler.stopRequested = true; }).join();
  };
  const Traces traces = run(2);
  EXPECT_EQ(traces.result, "false");
  EXPECT_THAT(traces.events, ElementsAre("started", "update 0", "update 1", "finished"));
  EXPECT_EQ(traces.log.back(), "TNVHandlerAugment::process: Process should stop!");
  EXPECT_THAT(namesOf(traces.files), SizeIs(4));
  expectSameOnAllThreads();
}

TEST_F(ParallelRun, WhatATaskThrowsLeavesAllThatWasSavedBefore) {
  add(directory / "absent.png");
  addPicture(40, 20);
  addPicture(50, 60);
  select(kThrowsAtLast);
  const Traces traces = run(4);
  EXPECT_THAT(traces.result, HasSubstr("resize"));
  EXPECT_FALSE(traces.stopped);
  EXPECT_THAT(traces.events, ElementsAre("started", "update 0"));
  EXPECT_THAT(namesOf(traces.files),
              ElementsAre(directory / "out/images/img_0.jpg", directory / "out/images/img_0.txt",
                          directory / "out/images/img_1.jpg", directory / "out/images/img_1.txt"));
  EXPECT_THAT(traces.trainSets, ElementsAre("given up", "loaded, a picture", "given up"));
  expectSameOnAllThreads();
}

TEST_F(ParallelRun, WhatIsThrownOnAWorkerComesInItsTurn) {
  for (const int width : {10, 20, 30, 40, 50})
    addPicture(width, 10);
  select(kCopy);
  std::vector<Traces> all;
  for (const int threads : {kOneAfterTheOther, 1, 2, 4}) {
    SCOPED_TRACE(threads);
    const LogCapture log;
    PlainGeneration plain;
    plain.throwsAtWidth = 30;
    Traces traces;
    runWith(plain, threads, traces);
    EXPECT_EQ(traces.result, "too wide");
    EXPECT_THAT(traces.events, ElementsAre("started", "update 0", "update 1"));
    EXPECT_THAT(plain.sizes, ElementsAre(cv::Size(10, 10), cv::Size(20, 10)));
    all.push_back(traces);
    expectSame(all.front(), traces);
  }
}

TEST_F(ParallelRun, ADamagedRecordIsThrownInItsTurn) {
  for (int i = 0; i < 6; ++i)
    addPicture(20 + i, 20);
  records.insert(records.begin() + 3,
                 directory.write("records/bad.xml", "<?xml version=\"1.0\"?>x"));
  select(kCopy);
  std::vector<Traces> all;
  for (const int threads : {kOneAfterTheOther, 1, 2, 4}) {
    SCOPED_TRACE(threads);
    const LogCapture log;
    PlainGeneration plain;
    Traces traces;
    runWith(plain, threads, traces);
    EXPECT_THAT(traces.result, HasSubstr("bad.xml"));
    EXPECT_THAT(traces.events, ElementsAre("started", "update 0", "update 1", "update 2"));
    EXPECT_THAT(plain.sizes, ElementsAre(cv::Size(20, 20), cv::Size(21, 20), cv::Size(22, 20)));
    all.push_back(traces);
    expectSame(all.front(), traces);
  }
}

TEST_F(ParallelRun, WhatAnObserverThrowsEndsTheRunThere) {
  addAll();
  select(kCopy);
  for (const char* moment : {"started", "update 2", "finished"}) {
    SCOPED_TRACE(moment);
    react = [&](const std::string& note, TNVHandlerAugment&) {
      if (note == moment) throw std::runtime_error("not in the mood");
    };
    EXPECT_EQ(run(2).result, "not in the mood");
    expectSameOnAllThreads();
  }
}

TEST_F(ParallelRun, APictureInMemoryIsTakenAsItIsAlsoWhenItIsNamedTwice) {
  for (const int threads : {kOneAfterTheOther, 4}) {
    SCOPED_TRACE(threads);
    const LogCapture log;
    select(kCopy);
    TNVHandlerAugment handler(augmentsPath);
    handler.setAugmentation(tree);
    PlainGeneration plain;
    TNVTrainSet loaded(directory / "absent.png", "");
    TNVTrainSet other(writePicture(directory / "other.png", 9, 8), "");
    const auto process = [&](const std::vector<TNVTrainSet*>& trainSets) {
      loaded.keepImage(patternedPicture(7, 3));
      plain.sizes.clear();
      return threads == kOneAfterTheOther ? handler.process(trainSets, &plain)
                                          : handler.processParallel(trainSets, &plain, threads);
    };
    EXPECT_TRUE(process({&loaded, &other}));
    EXPECT_THAT(plain.sizes, ElementsAre(cv::Size(7, 3), cv::Size(9, 8)));
    // The second time its picture has been given up.
    EXPECT_TRUE(process({&loaded, &other, &loaded, &other}));
    EXPECT_THAT(plain.sizes, ElementsAre(cv::Size(7, 3), cv::Size(9, 8), cv::Size(9, 8)));
    EXPECT_TRUE(process({nullptr, &other, nullptr}));
    EXPECT_THAT(plain.sizes, ElementsAre(cv::Size(9, 8)));
  }
}

TEST_F(ParallelRun, AGeneratorIsAskedOnTheCallingThreadInOrder) {
  std::vector<cv::Size> expected;
  for (int i = 0; i < 20; ++i) {
    // Large and small ones, so that some are ready before others that come first.
    const cv::Size size = i % 3 == 0 ? cv::Size(900, 700 + i) : cv::Size(10 + i, 10);
    addPicture(size.width, size.height);
    expected.push_back(size);
  }
  select(kCopy);
  const LogCapture log;
  PlainGeneration plain;
  Traces traces;
  runWith(plain, 4, traces);
  EXPECT_EQ(plain.sizes, expected);
  EXPECT_FALSE(plain.onOtherThreads);
}

TEST_F(ParallelRun, ATreeThatIsSelectedDuringTheRunCountsFromTheNextOn) {
  for (int i = 0; i < 8; ++i)
    addPicture(40, 20);
  select(kCopy);
  const Traces expected = run(2);
  directory.write("augments/nothing.xml",
                  "<?xml version=\"1.0\"?>\n<opencv_storage>\n<TaskTree><SubTasks>1</SubTasks>"
                  "<Task_0><Name>Default</Name><Save>0</Save></Task_0></TaskTree>"
                  "</opencv_storage>\n");
  react = [](const std::string& note, TNVHandlerAugment& handler) {
    if (note == "update 0") handler.setAugmentation("nothing.xml");
  };
  expectSame(expected, run(2));
}

TEST_F(ParallelRun, RandomTasksDrawOnEachThreadWithinTheirBounds) {
  for (int i = 0; i < 30; ++i)
    addPicture(64, 48);
  select(
      "<SubTasks>1</SubTasks><Task_0><Name>Resize</Name><Save>1</Save>"
      "<MaxLengthRndMin>20</MaxLengthRndMin><MaxLengthRndMax>24</MaxLengthRndMax>"
      "<SubTasks>1</SubTasks><Task_0><Name>Rotation</Name><Save>1</Save>"
      "<RotateRnd>90 180</RotateRnd></Task_0></Task_0>");
  const Traces traces = run(4);
  EXPECT_EQ(traces.result, "true");
  EXPECT_EQ(traces.counter, 60U);
  for (int i = 0; i < 60; ++i) {
    const cv::Mat picture =
        cv::imread(directory / ("out/images/img_" + std::to_string(i) + ".jpg"));
    EXPECT_THAT(std::max(picture.cols, picture.rows),
                ::testing::AllOf(::testing::Ge(20), ::testing::Le(24)));
  }
}

/// Takes its time as soon as a stop is asked for.
class SlowGeneration final : public TNVGeneration {
 public:
  explicit SlowGeneration(const std::atomic<bool>& stop) : stopRequested(stop) {}
  std::string getName() const override { return "Slow"; }
  bool processBefore() override { return true; }
  bool process(const TNVAugmentSample&) override { return true; }
  bool processAfter() override { return true; }
  std::vector<std::string> validateConfig() const override { return {}; }
  void prepare(const TNVAugmentSample& sample, tnv::Steps& steps) override {
    ++active;
    // The third is still in work when the run stops before the second.
    if (sample.image.cols == 30) {
      while (!stopRequested)
        std::this_thread::yield();
      const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
      while (std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    }
    --active;
    TNVGeneration::prepare(sample, steps);
  }

  const std::atomic<bool>& stopRequested;
  std::atomic<int> active{0};
};

TEST_F(ParallelRun, AtTheFinishedEventItsThreadsHaveEnded) {
  for (const int width : {10, 20, 30})
    addPicture(width, 10);
  select(kCopy);
  const LogCapture log;
  std::atomic<bool> stop{false};
  SlowGeneration slow(stop);
  int activeAtTheEnd = -1;
  react = [&](const std::string& note, TNVHandlerAugment& handler) {
    if (note == "update 0") {
      handler.stopRequested = true;
      stop = true;
    }
    if (note == "finished") activeAtTheEnd = slow.active;
  };
  Traces traces;
  runWith(slow, 3, traces);
  EXPECT_THAT(traces.events, ElementsAre("started", "update 0", "finished"));
  EXPECT_EQ(activeAtTheEnd, 0);
}

}  // namespace
