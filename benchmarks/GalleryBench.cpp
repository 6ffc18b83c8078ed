// The gallery: every mark of a project cut out of its picture, beside reading the pictures and
// packing the cuts. 143 pictures of 640 by 640 with 13 marks each are what a small real data set
// has.

#include <filesystem>
#include <memory>

#include "BenchProject.h"
#include "Compare.h"
#include "marks/TNVMarkRect.h"

namespace fs = std::filesystem;

namespace {

constexpr int kSide = 640;
constexpr int kMarks = 13;

class Run {
 public:
  explicit Run(int pictures) : paths(writePhotographs(bench.temp, pictures, {kSide, kSide})) {
    bench.project.wAddDNNClass("thing", 0, 0);
    bench.add(paths);
    for (const WTNVTrainSet& trainSet : bench.project.wGetTrainSets())
      mark(*trainSet.getNativeTrainSet());
  }

  void process(bool onTwoThreads) {
    WTNVHandlerValidation validation = bench.project.getHndValidation();
    requireSame(
        onTwoThreads ? validation.wProcessGenerationParallel(2) : validation.wProcessGeneration(),
        "the run was refused");
  }

  std::string output() const { return bench.temp / "bench/validation/"; }

  BenchProject bench;
  std::vector<std::string> paths;

 private:
  static void mark(TNVTrainSet& trainSet) {
    for (const cv::Rect2d& box : relativeBoxes(kMarks)) {
      TNVMarkRect rect(box.tl(), box.br(), false);
      rect.classIdx = {0};
      trainSet.addMark(rect);
    }
  }
};

class BareRun {
 public:
  BareRun(std::vector<std::string> pictures, std::string directory)
      : paths(std::move(pictures)), output(std::move(directory)) {}

  void process() const {
    fs::remove_all(output);
    fs::create_directories(output);
    int number = 0;
    for (const std::string& path : paths) {
      const cv::Mat picture = cv::imread(path, cv::IMREAD_COLOR);
      for (const cv::Rect2d& box : relativeBoxes(kMarks))
        cv::imwrite(output + std::to_string(number++) + ".jpg", picture(pixels(box)));
    }
  }

 private:
  static cv::Rect pixels(const cv::Rect2d& box) {
    return {cvRound(box.x * kSide), cvRound(box.y * kSide), cvRound(box.width * kSide),
            cvRound(box.height * kSide)};
  }

  std::vector<std::string> paths;
  std::string output;
};

/// The twin is always a loop on one thread.
Pair makePair(int pictures, bool onTwoThreads) {
  const auto run = std::make_shared<Run>(pictures);
  const auto bare = std::make_shared<BareRun>(run->paths, run->bench.temp / "bare/");
  run->process(onTwoThreads);
  bare->process();
  for (int i = 0; i < pictures * kMarks; ++i) {
    const std::string name = std::to_string(i) + ".jpg";
    requireSame(readFile(run->output() + name) == readFile(run->bench.temp / "bare/" + name), name);
  }
  return {{[=] { run->process(onTwoThreads); }}, {[bare] { bare->process(); }}};
}

}  // namespace

void addGalleries(const Plan& plan) {
  const auto add = [&](const char* name, double atMost, bool onTwoThreads) {
    for (const int pictures : plan.sizes({10, 143})) {
      addComparison(plan, {name, pictures, atMost},
                    [=] { return makePair(pictures, onTwoThreads); });
    }
  };
  add("gallery, 13 marks each, pictures", 0.85, false);
  add("gallery on two threads, pictures", 0, true);
}
