#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "TNV_SampleBenchNative/WTNVGeneration.h"
#include "TNV_SampleBenchNative/WTNVHandlerAugment.h"
#include "TNV_SampleBenchNative/WTNVMainProcess.h"
#include "TNV_SampleBenchNative/WTNVTrainSet.h"
#include "reliability/Repeats.h"
#include "support/LogCapture.h"
#include "support/ProjectBuilder.h"

namespace {

constexpr int kPictures = 12;

std::vector<std::string> pictureNames() {
  std::vector<std::string> names;
  for (int i = 0; i < kPictures; ++i)
    names.push_back(std::to_string(i) + ".png");
  return names;
}

/// Goes through the pictures as a user does, and saves now and then.
void annotate(WTNVProject& project, int steps) {
  WTNVMainProcess process(&project, nullptr);
  for (int step = 0; step < steps; ++step) {
    // Handles come and go while the worker that loads pictures is at work.
    auto pictures = process.getHndTrainSet();
    auto marks = process.getHndMark();
    auto view = process.getHndImageView();
    const auto jump = static_cast<unsigned>(step % 5);
    const WTNVTrainSet current =
        step % 3 == 0 ? pictures.wSetTrainSetBackward(jump) : pictures.wSetTrainSetForward(jump);
    pictures.wSetComment("step " + std::to_string(step));
    const double offset = 0.01 * (step % 40);
    marks.designMark({{0.1 + offset, 0.1}, {0.3 + offset, 0.4}}, "Rect", project.wGetDNNClasses());
    if (step % 2 == 0) marks.addDesignedMark();
    marks.getMarkMouseOver(0.2 + offset, 0.2);
    unsigned char* pixels = nullptr;
    int width = 0;
    int height = 0;
    int channels = 0;
    view.wSetZoomLevel(0.5 + 0.1 * (step % 10));
    view.wGetARImage(&pixels, &width, &height, &channels);
    view.wGetHelperImage(&pixels, &width, &height, &channels);
    if (step % 10 == 9) {
      EXPECT_TRUE(project.wUpdate(step % 20 == 19));
    }
  }
}

constexpr auto kTree = R"(<?xml version="1.0"?>
<opencv_storage>
<TaskTree>
  <SubTasks>1</SubTasks>
  <Task_0><Name>Default</Name><Save>1</Save><SubTasks>1</SubTasks>
    <Task_0><Name>Default</Name><Save>1</Save><SubTasks>0</SubTasks></Task_0></Task_0>
</TaskTree>
</opencv_storage>
)";
constexpr int kSamples = 2 * kPictures;

void markEachPicture(WTNVProject& project) {
  WTNVMainProcess process(&project, nullptr);
  auto pictures = process.getHndTrainSet();
  auto marks = process.getHndMark();
  for (int i = 0; i < kPictures; ++i) {
    ASSERT_TRUE(marks.designMark({{0.2, 0.2}, {0.6, 0.7}}, "Rect", project.wGetDNNClasses()));
    ASSERT_TRUE(marks.addDesignedMark());
    pictures.wSetTrainSetForward(1);
  }
}

long samplesOf(const ProjectBuilder& builder) {
  const std::filesystem::directory_iterator files(builder.outputDirectory() + "images/");
  return std::count_if(begin(files), end(files),
                       [](const auto& entry) { return entry.path().extension() == ".jpg"; });
}

struct Runs {
  int complete = 0;
  int stopped = 0;
};

/// Generates again and again, until it is told to end and has seen runs of both kinds; others stop
/// its runs.
Runs generate(ProjectBuilder& builder, const std::atomic<bool>& ends) {
  WTNVProject& project = builder.project();
  auto augment = project.getHndAugment();
  Runs runs;
  for (bool parallel = false; !ends || runs.complete == 0 || runs.stopped == 0;
       parallel = !parallel) {
    const auto trainSets = project.wGetTrainSets();
    const bool complete = parallel
                              ? augment.wProcessParallel(trainSets, project.wGetGeneration(), 2)
                              : augment.wProcess(trainSets, project.wGetGeneration());
    ++(complete ? runs.complete : runs.stopped);
    if (complete) {
      EXPECT_EQ(samplesOf(builder), kSamples);
    }
  }
  return runs;
}

/// Stops runs soon after they began, and lets others come to their end.
int stopNowAndThen(WTNVProject& project, const std::atomic<bool>& ends) {
  auto augment = project.getHndAugment();
  int stops = 0;
  for (; !ends; ++stops) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1 << stops % 11));
    augment.wProcessStop();
    augment.wProcessIsStopped();
  }
  return stops;
}

}  // namespace

TEST(Stress, OneProjectIsAnnotatedWhileAnotherOneIsGeneratedFrom) {
  const LogCapture log;
  ProjectBuilder annotated("annotated");
  annotated.withPictures(pictureNames()).withClasses({"nut"});
  ASSERT_TRUE(annotated.project().wUpdate(true));
  ProjectBuilder generated("generated");
  generated.withPictures(pictureNames()).withClasses({"nut"}).withDarknet(kTree);
  markEachPicture(generated.project());
  ASSERT_TRUE(generated.project().wUpdate(true));
  ASSERT_TRUE(generated.project().getHndAugment().wProcess(generated.project().wGetTrainSets(),
                                                           generated.project().wGetGeneration()));

  std::atomic<bool> annotationEnds{false};
  std::atomic<bool> generationEnds{false};
  Runs runs;
  int stops = 0;
  std::thread generator([&] { runs = generate(generated, annotationEnds); });
  std::thread stopper([&] { stops = stopNowAndThen(generated.project(), generationEnds); });
  const int steps = repeats(200);
  annotate(annotated.project(), steps);
  annotationEnds = true;
  generator.join();
  generationEnds = true;
  stopper.join();

  EXPECT_GT(stops, 0);
  std::size_t marks = 0;
  for (const WTNVTrainSet& record : annotated.reopened().wGetTrainSets()) {
    ASSERT_TRUE(record.wLoadData());
    marks += record.wGetMarks().size();
  }
  // One of each second step; those after the last save do not count.
  EXPECT_EQ(marks, static_cast<std::size_t>(steps / 10 * 5));
  RecordProperty("steps", steps);
  RecordProperty("complete", runs.complete);
  RecordProperty("stopped", runs.stopped);
}
