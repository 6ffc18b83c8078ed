#include <atomic>
#include <chrono>
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

/// Generates again and again until it is told to end; others stop its runs.
void generate(WTNVProject& project, const std::atomic<bool>& ends, int& runs) {
  auto augment = project.getHndAugment();
  for (bool parallel = false; !ends; parallel = !parallel, ++runs) {
    const auto trainSets = project.wGetTrainSets();
    if (parallel) {
      augment.wProcessParallel(trainSets, project.wGetGeneration(), 2);
    } else {
      augment.wProcess(trainSets, project.wGetGeneration());
    }
  }
}

}  // namespace

TEST(Stress, OneProjectIsAnnotatedWhileAnotherOneIsGeneratedFrom) {
  const LogCapture log;
  ProjectBuilder annotated("annotated");
  annotated.withPictures(pictureNames()).withClasses({"nut"});
  ASSERT_TRUE(annotated.project().wUpdate(true));
  ProjectBuilder generated("generated");
  generated.withPictures(pictureNames()).withClasses({"nut"});
  ASSERT_TRUE(generated.project().wUpdate(true));

  std::atomic<bool> ends{false};
  int runs = 0;
  int stops = 0;
  std::thread generator([&] { generate(generated.project(), ends, runs); });
  std::thread stopper([&] {
    auto augment = generated.project().getHndAugment();
    for (; !ends; ++stops) {
      std::this_thread::sleep_for(std::chrono::milliseconds(3 + stops % 20));
      augment.wProcessStop();
      augment.wProcessIsStopped();
    }
  });
  const int steps = repeats(200);
  annotate(annotated.project(), steps);
  ends = true;
  generator.join();
  stopper.join();

  EXPECT_GT(runs, 0);
  EXPECT_GT(stops, 0);
  std::size_t marks = 0;
  for (const WTNVTrainSet& record : annotated.reopened().wGetTrainSets()) {
    ASSERT_TRUE(record.wLoadData());
    marks += record.wGetMarks().size();
  }
  // One of each second step; those after the last save do not count.
  EXPECT_EQ(marks, static_cast<std::size_t>(steps / 10 * 5));
  RecordProperty("steps", steps);
  RecordProperty("runs", runs);
}
