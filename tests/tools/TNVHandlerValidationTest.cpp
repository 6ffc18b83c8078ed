#include "tools/TNVHandlerValidation.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "TNV_SampleBenchNative/WTNVHandlerValidation.h"
#include "marks/TNVMarkRect.h"
#include "project/TNVProject.h"
#include "project/TNVTrainSet.h"
#include "support/LogCapture.h"
#include "support/OpenProject.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::string> events;

class Validation : public testing::Test {
 protected:
  Validation() {
    builder.withClasses({"Screw", "Nut"}).withPictures({"a.png", "b.png", "c.png"});
    events.clear();
    gallery.setCBValidGenStarted([] { events.emplace_back("started"); });
    gallery.setCBValidGenUpdate([] { events.emplace_back("update"); });
    gallery.setCBValidGenFinished([] { events.emplace_back("finished"); });
  }

  TNVProject& native() { return *builder.project().getNativeProject(); }
  TNVHandlerValidation& handler() { return *native().hndValidation; }
  TNVTrainSet& trainSet(std::size_t i) { return *native().trainSetPointers().at(i); }

  /// A box of the pictures, which are 64 by 48 pixels.
  TNVMark* addMark(std::size_t i, const cv::Rect& box, const std::vector<int>& classIdx) {
    TNVMark* mark = trainSet(i).addMark(
        TNVMarkRect({box.x / 64.0, box.y / 48.0}, {box.br().x / 64.0, box.br().y / 48.0}, false));
    mark->classIdx = classIdx;
    return mark;
  }

  cv::Mat cut(int id) {
    unsigned char* data = nullptr;
    int width = -1;
    int height = -1;
    int channels = -1;
    gallery.wLoadImage(id, &data, &width, &height, &channels);
    if (data == nullptr) {
      EXPECT_EQ(std::vector({width, height, channels}), std::vector({0, 0, 0}));
      return {};
    }
    return {height, width, CV_8UC(channels), data};
  }

  std::string fileOf(int id) const {
    return builder.projectDirectory() + "validation/" + std::to_string(id) + ".jpg";
  }
  std::size_t fileCount() const {
    const std::filesystem::directory_iterator files(builder.projectDirectory() + "validation");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
  }

  /// What a JPEG of that part of the picture reads back as.
  static cv::Mat jpegOf(const cv::Mat& picture) {
    std::vector<uchar> bytes;
    cv::imencode(".jpg", picture, bytes);
    return cv::imdecode(bytes, cv::IMREAD_COLOR);
  }

  ProjectBuilder builder;
  WTNVHandlerValidation gallery = builder.project().getHndValidation();
};

}  // namespace

TEST_F(Validation, IsIdleWithoutAnIndexAtFirst) {
  EXPECT_TRUE(gallery.wProcessIsStopped());
  EXPECT_FALSE(handler().stopRequested);
  EXPECT_EQ(handler().validationDirectory, builder.projectDirectory() + "validation/");
  EXPECT_THAT(gallery.wGetDNNClasses(), IsEmpty());
  EXPECT_EQ(gallery.wGetTrainSetIndex(0), -1);
  EXPECT_EQ(gallery.wGetMarkUniqueId(0), -1);
}

TEST_F(Validation, WithoutMarksThereAreEventsAndAnEmptyDirectory) {
  EXPECT_TRUE(gallery.wProcessGeneration());
  EXPECT_THAT(events, ElementsAre("started", "update", "update", "update", "finished"));
  EXPECT_THAT(gallery.wGetDNNClasses(), IsEmpty());
  EXPECT_EQ(fileCount(), 0U);
  EXPECT_TRUE(gallery.wProcessIsStopped());
}

TEST_F(Validation, CutsAreNumberedOverAllTrainSetsAndListedByClass) {
  const int first = addMark(0, {8, 8, 16, 12}, {1})->uniqueId;
  const int second = addMark(0, {20, 10, 30, 20}, {0})->uniqueId;
  const int third = addMark(2, {0, 0, 64, 48}, {1})->uniqueId;
  ASSERT_TRUE(gallery.wProcessGeneration());
  EXPECT_THAT(gallery.wGetDNNClasses(), ElementsAre("Nut (1)", "Screw (0)"));
  EXPECT_THAT(gallery.wGetDNNImageIndices("Nut (1)"), ElementsAre(0, 2));
  EXPECT_THAT(gallery.wGetDNNImageIndices("Screw (0)"), ElementsAre(1));
  EXPECT_THAT(gallery.wGetDNNImageIndices("Screw"), IsEmpty());
  EXPECT_EQ(gallery.wGetTrainSetIndex(0), 0);
  EXPECT_EQ(gallery.wGetTrainSetIndex(1), 0);
  EXPECT_EQ(gallery.wGetTrainSetIndex(2), 2);
  EXPECT_EQ(gallery.wGetMarkUniqueId(0), first);
  EXPECT_EQ(gallery.wGetMarkUniqueId(1), second);
  EXPECT_EQ(gallery.wGetMarkUniqueId(2), third);
  EXPECT_EQ(gallery.wGetTrainSetIndex(3), -1);
  EXPECT_EQ(fileCount(), 3U);
}

TEST_F(Validation, MarksNameTheirClassByItsUniqueIndexAndLabelsByTheNetworksNumber) {
  native().dnnClasses[0]->dnnId = 1;
  native().dnnClasses[1]->dnnId = 40;
  addMark(0, {8, 8, 16, 12}, {1});
  addMark(0, {20, 10, 30, 20}, {0});
  ASSERT_TRUE(gallery.wProcessGeneration());
  EXPECT_THAT(gallery.wGetDNNImageIndices("Nut (40)"), ElementsAre(0));
  EXPECT_THAT(gallery.wGetDNNImageIndices("Screw (1)"), ElementsAre(1));
}

TEST_F(Validation, ACutIsTheMarksBoxAsAJpegOfTheUsualQuality) {
  addMark(0, {8, 8, 16, 12}, {0});
  ASSERT_TRUE(gallery.wProcessGeneration());
  EXPECT_TRUE(samePixels(jpegOf(patternedPicture(64, 48)(cv::Rect(8, 8, 16, 12))), cut(0)));
}

TEST_F(Validation, AMarkWithTwoClassesIsListedUnderTheFirst) {
  addMark(0, {8, 8, 16, 12}, {1, 0});
  ASSERT_TRUE(gallery.wProcessGeneration());
  EXPECT_THAT(gallery.wGetDNNClasses(), ElementsAre("Nut (1)"));
}

TEST_F(Validation, MarksWithoutAClassOrAreaConsumeNoNumber) {
  addMark(0, {8, 8, 0, 12}, {0});
  addMark(0, {8, 8, 16, 12}, {});
  addMark(0, {8, 8, 16, 12}, {7, 0});
  addMark(0, {8, 8, 16, 12}, {0});
  ASSERT_TRUE(gallery.wProcessGeneration());
  EXPECT_THAT(gallery.wGetDNNImageIndices("Screw (0)"), ElementsAre(0));
  EXPECT_EQ(gallery.wGetMarkUniqueId(0), 3);
}

TEST_F(Validation, RecordsThatWereNotReadAreReadAndOthersStayAsTheyAre) {
  addMark(0, {8, 8, 16, 12}, {0});
  addMark(1, {8, 8, 16, 12}, {0});
  ASSERT_TRUE(builder.project().wUpdate(true));
  WTNVProject again("demo", builder.temp / "projects/", "", "");
  ASSERT_TRUE(again.wLoad());
  TNVTrainSet& read = *again.getNativeProject()->trainSetPointers().at(1);
  read.load();
  read.removeMark(read.marks.front().get());
  WTNVHandlerValidation cuts = again.getHndValidation();
  ASSERT_TRUE(cuts.wProcessGeneration());
  EXPECT_THAT(cuts.wGetDNNImageIndices("Screw (0)"), ElementsAre(0));
  EXPECT_EQ(cuts.wGetTrainSetIndex(0), 0);
}

TEST_F(Validation, TheEarlierIndexLastsUntilTheStartedEvent) {
  addMark(0, {8, 8, 16, 12}, {0});
  ASSERT_TRUE(gallery.wProcessGeneration());
  cut(0);
  static TNVHandlerValidation* running = nullptr;
  running = &handler();
  gallery.setCBValidGenStarted([] {
    EXPECT_THAT(running->getDNNImageIndices("Screw (0)"), ElementsAre(0));
    EXPECT_EQ(running->images.size(), 1U);
    EXPECT_EQ(running->imageInfo.size(), 1U);
  });
  trainSet(0).removeMark(trainSet(0).marks.front().get());
  ASSERT_TRUE(gallery.wProcessGeneration());
  EXPECT_THAT(gallery.wGetDNNClasses(), IsEmpty());
  EXPECT_EQ(running->images.size(), 0U);
  EXPECT_EQ(running->imageInfo.size(), 0U);
}

TEST_F(Validation, ACopyOfTheWrapperHearsTheEventsToo) {
  WTNVHandlerValidation copy(gallery);
  copy.setCBValidGenFinished([] { events.emplace_back("finished for the copy"); });
  EXPECT_TRUE(gallery.wProcessGeneration());
  EXPECT_THAT(events, testing::Contains("finished for the copy"));
}

TEST_F(Validation, DamagedMarksAreLeftOut) {
  addMark(0, {8, 8, 16, 12}, {0})->center = {-40, 0.5};
  addMark(0, {8, 8, 16, 12}, {0})->center = {std::nan(""), 0.5};
  dynamic_cast<TNVMarkRect*>(addMark(0, {8, 8, 16, 12}, {0}))->size = {1e300, 1e300};
  dynamic_cast<TNVMarkRect*>(addMark(0, {8, 8, 16, 12}, {0}))->size = {-1, -1};
  addMark(0, {8, 8, 16, 12}, {0});
  const LogCapture log;
  ASSERT_TRUE(gallery.wProcessGeneration());
  EXPECT_EQ(gallery.wGetMarkUniqueId(gallery.wGetDNNImageIndices("Screw (0)").back()), 4);
  EXPECT_THAT(log.lines(), testing::Contains(
                               "TNVHandlerValidation::createDNNImages: Could not cut mark 0 out of "
                               "image '" +
                               trainSet(0).imagePath + "'!"));
  EXPECT_EQ(fileCount(), 1U);
}

TEST_F(Validation, CutsThatTheFormatDoesNotTakeAreLoggedAndConsumeNoNumber) {
  // 70000 columns, of which a JPEG has 65500 at most.
  const auto addWide = [&] {
    dynamic_cast<TNVMarkRect*>(addMark(0, {8, 8, 16, 12}, {0}))->size = {70000 / 64.0, 1 / 48.0};
  };
  addWide();
  addMark(0, {8, 8, 16, 12}, {0});
  addWide();
  const LogCapture log;
  ASSERT_TRUE(gallery.wProcessGeneration());
  EXPECT_THAT(gallery.wGetDNNImageIndices("Screw (0)"), ElementsAre(0));
  EXPECT_EQ(gallery.wGetMarkUniqueId(0), 1);
  EXPECT_EQ(cut(0).size(), cv::Size(16, 12));
  const std::string line = "TNVHandlerValidation::createDNNImages: Could not cut mark ";
  const std::string image = " out of image '" + trainSet(0).imagePath + "'!";
  EXPECT_THAT(log.lines(), testing::Contains(line + "0" + image));
  EXPECT_THAT(log.lines(), testing::Contains(line + "2" + image));
  EXPECT_EQ(fileCount(), 1U);
}

TEST_F(Validation, AnUnreadablePictureIsLoggedAndHasNoUpdate) {
  addMark(1, {8, 8, 16, 12}, {0});
  addMark(2, {8, 8, 16, 12}, {0});
  for (const std::string& path : unreadablePictures(builder.temp)) {
    trainSet(1).imagePath = path;
    events.clear();
    const LogCapture log;
    EXPECT_TRUE(gallery.wProcessGeneration());
    EXPECT_THAT(log.lines(),
                testing::Contains("TNVHandlerValidation::createDNNImages: Could not load image '" +
                                  path + "'!"));
    EXPECT_THAT(events, ElementsAre("started", "update", "update", "finished"));
    EXPECT_EQ(gallery.wGetTrainSetIndex(0), 2);
  }
}

TEST_F(Validation, WhatCannotBeReadAsACutGivesZeros) {
  addMark(0, {8, 8, 16, 12}, {0});
  ASSERT_TRUE(gallery.wProcessGeneration());
  for (const std::string& path : unreadablePictures(builder.temp)) {
    std::filesystem::remove_all(fileOf(0));
    if (std::filesystem::exists(path)) std::filesystem::rename(path, fileOf(0));
    EXPECT_TRUE(cut(0).empty()) << path;
    gallery.wUnloadAll();
  }
}

TEST_F(Validation, TrainSetsGiveTheirPicturesUp) {
  trainSet(0).loadImage();
  ASSERT_TRUE(gallery.wProcessGeneration());
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_FALSE(trainSet(i).isImageLoaded());
    EXPECT_TRUE(trainSet(i).image.empty());
    EXPECT_TRUE(trainSet(i).dataLoaded);
  }
}

TEST_F(Validation, TheSizesOfReadPicturesAreKnownFromThenOn) {
  std::filesystem::remove(trainSet(1).imagePath);
  ASSERT_TRUE(gallery.wProcessGeneration());
  EXPECT_EQ(trainSet(0).imageWidth, 64);
  EXPECT_EQ(trainSet(0).imageHeight, 48);
  EXPECT_EQ(trainSet(1).imageWidth, 0);
}

TEST_F(Validation, WithoutTrainSetsThereIsNoEventAndTheRunCountsAsActive) {
  ProjectBuilder empty("empty");
  empty.project().wCreate();
  WTNVHandlerValidation lonely = empty.project().getHndValidation();
  lonely.setCBValidGenStarted([] { events.emplace_back("started"); });
  const LogCapture log;
  EXPECT_FALSE(lonely.wProcessGeneration());
  EXPECT_THAT(log.lines(), ElementsAre("TNVHandlerValidation::createDNNImages: No TrainSets!"));
  EXPECT_THAT(events, IsEmpty());
  EXPECT_FALSE(lonely.wProcessIsStopped());
}

TEST_F(Validation, ADirectoryThatCannotBeMadeIsLogged) {
  handler().validationDirectory = builder.temp.write("file", "in the way") + "/below/";
  const LogCapture log;
  EXPECT_FALSE(gallery.wProcessGeneration());
  EXPECT_THAT(log.lines(),
              testing::Contains("TNVHandlerValidation::createDNNImages: Can not create validation "
                                "directory at '" +
                                handler().validationDirectory + "'!"));
  EXPECT_THAT(events, IsEmpty());
  EXPECT_FALSE(gallery.wProcessIsStopped());
}

TEST_F(Validation, PicturesOfTheProjectInTheDirectoryAreNotDeleted) {
  const std::string picture = builder.projectDirectory() + "validation/own.png";
  std::filesystem::create_directories(builder.projectDirectory() + "validation");
  writePicture(picture, 8, 8);
  builder.project().wAddImagesToImageSet({picture}, {true}, "cuts", false);
  const LogCapture log;
  EXPECT_FALSE(gallery.wProcessGeneration());
  EXPECT_TRUE(std::filesystem::exists(picture));
  EXPECT_THAT(events, IsEmpty());
}

TEST_F(Validation, AProjectNamedByAPathDeletesNothing) {
  const std::string victim = builder.temp.write("validation/kept.txt", "x");
  builder.temp.makeDirectory("projects");
  WTNVProject strange("..", builder.temp / "projects/", "", "");
  strange.wAddImagesToImageSet({trainSet(0).imagePath}, {true}, "set", false);
  const LogCapture log;
  EXPECT_FALSE(strange.getHndValidation().wProcessGeneration());
  EXPECT_TRUE(std::filesystem::exists(victim));
}

TEST_F(Validation, AStopAfterTheFirstTrainSetLeavesAUsableIndex) {
  for (std::size_t i = 0; i < 3; ++i)
    addMark(i, {8, 8, 16, 12}, {0});
  static WTNVHandlerValidation* running = nullptr;
  running = &gallery;
  gallery.setCBValidGenUpdate([] {
    EXPECT_FALSE(running->wProcessIsStopped());
    running->wProcessStop();
  });
  EXPECT_TRUE(gallery.wProcessGeneration());
  EXPECT_TRUE(gallery.wProcessIsStopped());
  EXPECT_THAT(events, ElementsAre("started", "finished"));
  EXPECT_THAT(gallery.wGetDNNImageIndices("Screw (0)"), ElementsAre(0));
  EXPECT_FALSE(cut(0).empty());
  gallery.setCBValidGenUpdate(nullptr);
  EXPECT_TRUE(gallery.wProcessGeneration());
  EXPECT_EQ(gallery.wGetDNNImageIndices("Screw (0)").size(), 3U) << "the next run is a whole one";
}

TEST_F(Validation, AtItsFinishedEventARunCountsAsEnded) {
  static WTNVHandlerValidation* running = nullptr;
  running = &gallery;
  gallery.setCBValidGenFinished([] { EXPECT_TRUE(running->wProcessIsStopped()); });
  EXPECT_TRUE(gallery.wProcessGeneration());
}

TEST_F(Validation, ARunThatCannotStartLeavesIndexAndDirectory) {
  addMark(0, {8, 8, 16, 12}, {0});
  ASSERT_TRUE(gallery.wProcessGeneration());
  const LogCapture log;
  const auto trainSets = std::exchange(handler().trainSets, {});
  EXPECT_FALSE(gallery.wProcessGeneration());
  EXPECT_EQ(fileCount(), 1U);
  EXPECT_THAT(gallery.wGetDNNImageIndices("Screw (0)"), ElementsAre(0));
  handler().trainSets = trainSets;
  handler().validationDirectory = builder.temp.write("file", "in the way") + "/below/";
  EXPECT_FALSE(gallery.wProcessGeneration());
  EXPECT_THAT(gallery.wGetDNNImageIndices("Screw (0)"), ElementsAre(0));
}

TEST_F(Validation, TemplatesAndTaskTreesInTheDirectoryAreNotDeleted) {
  const std::string directory = builder.projectDirectory() + "validation/";
  for (const std::string below : {"platforms/", "augments/"}) {
    std::filesystem::create_directories(directory + below);
    const auto placeOf = [&](const std::string& name) {
      return name == below ? directory + below : builder.temp / name;
    };
    WTNVProject project("demo", builder.temp / "projects/", placeOf("platforms/"),
                        placeOf("augments/"));
    project.wAddImagesToImageSet({trainSet(0).imagePath}, {true}, "set", false);
    const LogCapture log;
    EXPECT_FALSE(project.getHndValidation().wProcessGeneration()) << below;
    EXPECT_TRUE(std::filesystem::exists(directory + below));
    std::filesystem::remove_all(directory);
  }
}

TEST_F(Validation, AStopMayComeFromAnotherThread) {
  static std::atomic<bool> asked{false};
  asked = false;
  std::thread other([this] {
    while (gallery.wProcessIsStopped())
      std::this_thread::yield();
    gallery.wProcessStop();
    asked = true;
  });
  gallery.setCBValidGenStarted([] {
    while (!asked)
      std::this_thread::yield();
  });
  EXPECT_TRUE(gallery.wProcessGeneration());
  other.join();
  EXPECT_THAT(events, ElementsAre("finished"));
}

TEST_F(Validation, ACutIsHeldUntilItIsUnloaded) {
  addMark(0, {8, 8, 16, 12}, {0});
  addMark(0, {8, 8, 8, 8}, {1});
  ASSERT_TRUE(gallery.wProcessGeneration());
  const uchar* pixels = cut(0).data;
  std::filesystem::remove(fileOf(0));
  EXPECT_EQ(cut(0).data, pixels);
  gallery.wUnloadImage(5);
  cut(1);
  EXPECT_EQ(handler().images.size(), 2U);
  gallery.wUnloadImagesOfDNN("Screw (0)");
  EXPECT_EQ(handler().images.size(), 1U);
  gallery.wUnloadImage(1);
  EXPECT_EQ(handler().images.size(), 0U);
  cut(1);
  gallery.wUnloadAll();
  EXPECT_EQ(handler().images.size(), 0U);
}

TEST_F(Validation, ADeletedFileGivesZerosAndAnEmptyEntry) {
  addMark(0, {8, 8, 16, 12}, {0});
  ASSERT_TRUE(gallery.wProcessGeneration());
  std::filesystem::remove(fileOf(0));
  EXPECT_TRUE(cut(0).empty());
  writePicture(fileOf(0), 8, 8);
  EXPECT_TRUE(cut(0).empty()) << "the empty entry is held";
  EXPECT_EQ(handler().images.count(0), 1U);
  EXPECT_TRUE(handler().images.at(0).empty());
}

TEST_F(Validation, ASecondRunStartsAnew) {
  addMark(0, {8, 8, 16, 12}, {0});
  TNVMark* second = addMark(0, {8, 8, 8, 8}, {1});
  ASSERT_TRUE(gallery.wProcessGeneration());
  cut(0);
  builder.temp.write("projects/demo/validation/stray.txt", "");
  trainSet(0).removeMark(second);
  ASSERT_TRUE(gallery.wProcessGeneration());
  EXPECT_EQ(handler().images.size(), 0U);
  EXPECT_EQ(fileCount(), 1U);
  EXPECT_THAT(gallery.wGetDNNClasses(), ElementsAre("Screw (0)"));
  EXPECT_THAT(gallery.wGetDNNImageIndices("Screw (0)"), ElementsAre(0));
}

TEST_F(Validation, TheHandlerFollowsTheProjectsTrainSetsAndClasses) {
  EXPECT_EQ(handler().trainSets, native().trainSetPointers());
  builder.withPictures({"d.png"}, "more").withClasses({"Washer"});
  EXPECT_EQ(handler().trainSets, native().trainSetPointers());
  EXPECT_EQ(handler().dnnClasses, native().classPointers());
  builder.project().wRemoveImagesFromImageSet({trainSet(0).imagePath}, "more");
  builder.project().wRemoveDNNClass(builder.project().wGetDNNClasses()[0]);
  EXPECT_EQ(handler().trainSets, native().trainSetPointers());
  EXPECT_EQ(handler().dnnClasses, native().classPointers());
  ASSERT_TRUE(builder.project().wUpdate(true));
  WTNVProject again("demo", builder.temp / "projects/", "", "");
  ASSERT_TRUE(again.wLoad());
  const TNVProject& read = *again.getNativeProject();
  EXPECT_EQ(read.hndValidation->trainSets, read.trainSetPointers());
  EXPECT_EQ(read.hndValidation->trainSets.size(), 3U);
  EXPECT_EQ(read.hndValidation->dnnClasses, read.classPointers());
  EXPECT_EQ(read.hndValidation->dnnClasses.size(), 2U);
}

TEST_F(Validation, TheIndexIsNotKeptOnDisk) {
  addMark(0, {8, 8, 16, 12}, {0});
  ASSERT_TRUE(gallery.wProcessGeneration());
  ASSERT_TRUE(builder.project().wUpdate(true));
  WTNVProject again("demo", builder.temp / "projects/", "", "");
  ASSERT_TRUE(again.wLoad());
  EXPECT_THAT(again.getHndValidation().wGetDNNClasses(), IsEmpty());
  EXPECT_TRUE(std::filesystem::exists(fileOf(0)));
}

namespace {

/// `wProcessGeneration`, with which the others are compared.
constexpr int kOneAfterTheOther = -1000;

/// Whatever a run leaves for others to see.
struct Traces {
  std::string result;  ///< "true", "false", or what was thrown
  bool stopped = false;
  std::vector<std::string> events;
  std::vector<std::string> log;
  std::map<std::string, std::string> files;
  std::map<std::string, std::vector<int>> cutsOfClasses;
  std::vector<std::vector<int>> origins;
  std::vector<std::vector<int>> trainSets;
};

void expectSame(const Traces& expected, const Traces& actual) {
  EXPECT_EQ(expected.result, actual.result);
  EXPECT_EQ(expected.stopped, actual.stopped);
  EXPECT_EQ(expected.events, actual.events);
  EXPECT_EQ(expected.log, actual.log);
  EXPECT_EQ(expected.cutsOfClasses, actual.cutsOfClasses);
  EXPECT_EQ(expected.origins, actual.origins);
  EXPECT_EQ(expected.trainSets, actual.trainSets);
  EXPECT_TRUE(expected.files == actual.files);
}

std::function<void()> reaction;
std::thread::id home;

void note(const char* event) {
  const bool isHome = std::this_thread::get_id() == home;
  events.push_back(isHome ? event : std::string(event) + " elsewhere");
  if (reaction) reaction();
}

class ParallelValidation : public Validation {
 protected:
  ParallelValidation() {
    home = std::this_thread::get_id();
    reaction = nullptr;
    // It would hear the events of the projects that are compared.
    gallery.setCBValidGenStarted(nullptr);
    gallery.setCBValidGenUpdate(nullptr);
    gallery.setCBValidGenFinished(nullptr);
    builder.project().wAddImagesToImageSet(
        {builder.picture("d.jpg", 500, 400), builder.picture("e.png", 1, 1),
         builder.picture("f.jpg", 90, 300)},
        {true, true, true}, "then", false);
  }
  ~ParallelValidation() override { reaction = nullptr; }

  /// Marks of two classes on all pictures, some of which cannot be cut or have no class.
  void addMarks() {
    for (std::size_t i = 0; i < native().trainSetPointers().size(); ++i) {
      addMark(i, {8, 8, 16, 12}, {1});
      addMark(i, {8, 8, 16, 12}, {0})->center = {-40, 0.5};
      addMark(i, {20, 10, 30, 20}, {0});
      addMark(i, {20, 10, 30, 20}, {7});
      dynamic_cast<TNVMarkRect*>(addMark(i, {8, 8, 16, 12}, {0}))->size = {70000 / 64.0, 1 / 48.0};
      addMark(i, {0, 0, 64, 48}, {1});
    }
  }

  /// A whole run on the project as it is on disk.
  Traces run(int threads) {
    WTNVProject project("demo", builder.temp / "projects/", "", "");
    EXPECT_TRUE(project.wLoad());
    WTNVHandlerValidation cuts = project.getHndValidation();
    cuts.setCBValidGenStarted([] { note("started"); });
    cuts.setCBValidGenUpdate([] { note("update"); });
    cuts.setCBValidGenFinished([] { note("finished"); });
    running = &cuts;
    events.clear();
    Traces traces;
    const LogCapture log;
    traces.result = resultOf(cuts, threads);
    traces.stopped = cuts.wProcessIsStopped();
    traces.events = events;
    traces.log = log.lines();
    collect(*project.getNativeProject(), traces);
    return traces;
  }

  void expectSameOnAllThreads() {
    ASSERT_TRUE(builder.project().wUpdate(true));
    const Traces expected = run(kOneAfterTheOther);
    for (const int threads : {1, 2, 4, 0, -1, 100}) {
      SCOPED_TRACE(threads);
      expectSame(expected, run(threads));
    }
  }

  static inline WTNVHandlerValidation* running = nullptr;

 private:
  static std::string resultOf(WTNVHandlerValidation& cuts, int threads) {
    try {
      const bool result = threads == kOneAfterTheOther ? cuts.wProcessGeneration()
                                                       : cuts.wProcessGenerationParallel(threads);
      return result ? "true" : "false";
    } catch (const std::exception& error) {
      return error.what();
    }
  }

  void collect(const TNVProject& project, Traces& traces) const {
    const std::filesystem::path directory = builder.projectDirectory() + "validation";
    if (std::filesystem::exists(directory)) {
      for (const auto& file : std::filesystem::directory_iterator(directory))
        traces.files[file.path().filename()] = readFile(file.path());
    }
    const TNVHandlerValidation& handler = *project.hndValidation;
    traces.cutsOfClasses = handler.dnnImages;
    for (const auto& [id, info] : handler.imageInfo)
      traces.origins.push_back({id, info.trainSetIndex, info.markUniqueId});
    for (TNVTrainSet* trainSet : project.trainSetPointers()) {
      traces.trainSets.push_back(
          {trainSet->imageWidth, trainSet->imageHeight, trainSet->isImageLoaded()});
    }
  }
};

}  // namespace

TEST_F(ParallelValidation, MakesTheSameGallery) {
  addMarks();
  for (const std::string& path : unreadablePictures(builder.temp)) {
    builder.project().wAddImagesToImageSet({path}, {true}, "unreadable", false);
  }
  ASSERT_TRUE(builder.project().wUpdate(true));
  const Traces traces = run(4);
  EXPECT_EQ(traces.result, "true");
  // Three marks of each picture can be cut, but of the one pixel only that which has it whole.
  EXPECT_EQ(traces.files.size(), 3 * 5 + 1U);
  EXPECT_EQ(traces.origins.size(), 3 * 5 + 1U);
  EXPECT_THAT(traces.log, testing::Contains(testing::HasSubstr("Could not cut mark 4")));
  EXPECT_THAT(traces.log, testing::Contains(testing::HasSubstr("Could not load image")));
  EXPECT_EQ(traces.events.size(), 2 + 6U);
  expectSameOnAllThreads();
}

TEST_F(ParallelValidation, WithoutTrainSetsIsRefused) {
  ProjectBuilder empty("empty");
  empty.project().wCreate();
  const LogCapture log;
  EXPECT_FALSE(empty.project().getHndValidation().wProcessGenerationParallel(2));
  EXPECT_THAT(log.lines(), ElementsAre("TNVHandlerValidation::createDNNImages: No TrainSets!"));
}

TEST_F(ParallelValidation, AStopCountsBeforeTheNextTrainSet) {
  addMarks();
  for (const std::size_t moment : {1U, 2U, 4U, 8U}) {
    SCOPED_TRACE(moment);
    reaction = [moment] {
      if (events.size() == moment) std::thread([] { running->wProcessStop(); }).join();
    };
    ASSERT_TRUE(builder.project().wUpdate(true));
    const Traces traces = run(2);
    EXPECT_EQ(traces.result, "true");
    EXPECT_EQ(traces.events.size(), std::min<std::size_t>(moment + 1, 8));
    expectSameOnAllThreads();
  }
}

TEST_F(ParallelValidation, WhatACallbackThrowsEndsTheRunThere) {
  addMarks();
  reaction = [] {
    if (events.size() == 3) throw std::runtime_error("not in the mood");
  };
  ASSERT_TRUE(builder.project().wUpdate(true));
  EXPECT_EQ(run(2).result, "not in the mood");
  EXPECT_EQ(run(2).origins.back().at(1), 1) << "the second train set is the last";
  expectSameOnAllThreads();
}

TEST_F(ParallelValidation, ADamagedRecordIsThrownInItsTurn) {
  addMarks();
  ASSERT_TRUE(builder.project().wUpdate(true));
  const std::string damaged = trainSet(2).dataPath;
  std::ofstream(damaged) << "<?xml version=\"1.0\"?>x";
  std::vector<Traces> all;
  for (const int threads : {kOneAfterTheOther, 1, 2, 4}) {
    SCOPED_TRACE(threads);
    // With an earlier gallery in place all records would be read before the run.
    std::filesystem::remove_all(builder.projectDirectory() + "validation");
    all.push_back(run(threads));
    EXPECT_THAT(all.back().result, testing::HasSubstr(damaged));
    EXPECT_THAT(all.back().events, ElementsAre("started", "update", "update"));
    EXPECT_EQ(all.back().files.size(), 6U);
    expectSame(all.front(), all.back());
  }
}

TEST_F(ParallelValidation, ATrainSetThatIsListedTwiceIsCutTwice) {
  addMark(0, {8, 8, 16, 12}, {0});
  handler().trainSets = {&trainSet(0), &trainSet(1), &trainSet(0)};
  ASSERT_TRUE(gallery.wProcessGenerationParallel(4));
  EXPECT_THAT(gallery.wGetDNNImageIndices("Screw (0)"), ElementsAre(0, 1));
  EXPECT_EQ(gallery.wGetTrainSetIndex(1), 2);
}
