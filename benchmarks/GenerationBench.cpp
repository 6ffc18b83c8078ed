// Generation of a training set with the tree that ships: the picture, resized, and in quarter
// turns.

#include <filesystem>
#include <fstream>
#include <memory>

#include "BenchProject.h"
#include "Compare.h"
#include "TNV_SampleBenchNative/WTNVGenerationDarknet.h"
#include "marks/TNVMarkRect.h"

namespace fs = std::filesystem;

namespace {

using Corners = std::vector<cv::Point2f>;
using Boxes = std::vector<std::vector<cv::Point2d>>;

constexpr int kSide = 416;

class Run {
 public:
  Run(int pictures, cv::Size size) {
    for (int i = 0; i < pictures; ++i) {
      paths.push_back(bench.temp / ("picture_" + std::to_string(i) + ".jpg"));
      cv::imwrite(paths.back(), photograph(size, static_cast<unsigned>(i + 1)));
    }
    bench.project.wAddDNNClass("thing", 0, 0);
    bench.add(paths);
    for (const WTNVTrainSet& trainSet : bench.project.wGetTrainSets())
      mark(*trainSet.getNativeTrainSet());
    configure();
  }

  void process(bool onTwoThreads) {
    WTNVHandlerAugment augment = bench.project.getHndAugment();
    const auto trainSets = bench.project.wGetTrainSets();
    const WTNVGeneration generation = bench.project.wGetGeneration();
    requireSame(onTwoThreads ? augment.wProcessParallel(trainSets, generation, 2)
                             : augment.wProcess(trainSets, generation),
                "the run was refused");
  }

  void clear() { fs::remove_all(output()); }

  std::string output() const { return bench.temp / "out/"; }

  BenchProject bench;
  std::vector<std::string> paths;

 private:
  static void mark(TNVTrainSet& trainSet) {
    for (const cv::Rect2d& box : relativeBoxes(3)) {
      TNVMarkRect rect(box.tl(), box.br(), false);
      rect.classIdx = {0};
      trainSet.addMark(rect);
    }
  }

  void configure() {
    bench.project.wSetGeneration("Darknet");
    const WTNVGeneration generation = bench.project.wGetGeneration();
    const WTNVGenerationDarknet darknet(generation);
    darknet.wSetSampleDirectory(output() + "images/");
    darknet.wSetDarknetDataDirectory(output());
    const auto choose = [&](const std::string& descriptor, const std::string& name) {
      generation.wSetTemplateData(descriptor, name,
                                  generation.wGetTemplateDataDefault(descriptor, name),
                                  output() + descriptor);
    };
    choose("configs", "data.tmp");
    choose("nets", "yolo-tiny-cpu.tmp");
    bench.project.getHndAugment().wSetAugmentation("resize-quarter-turns.xml");
  }
};

class BareRun {
 public:
  BareRun(std::vector<std::string> pictures, std::string directory)
      : paths(std::move(pictures)), output(std::move(directory)) {}

  void process() {
    number = 0;
    for (const std::string& path : paths)
      processOne(cv::imread(path, cv::IMREAD_COLOR));
  }

  void clear() {
    fs::remove_all(output);
    fs::create_directories(output);
  }

 private:
  void processOne(const cv::Mat& picture) {
    const double columns = picture.cols;
    const double rows = picture.rows;
    Boxes boxes;
    for (const cv::Rect2d& box : relativeBoxes(3)) {
      const double left = box.x * columns;
      const double top = box.y * rows;
      const double right = left + box.width * columns;
      const double bottom = top + box.height * rows;
      boxes.push_back({{left, top}, {right, top}, {right, bottom}, {left, bottom}});
    }
    write(picture, boxes);
    cv::Mat resized;
    cv::resize(picture, resized, {kSide, kSide}, 0, 0, cv::INTER_CUBIC);
    for (auto& box : boxes) {
      for (cv::Point2d& point : box)
        point = {point.x * (kSide / columns), point.y * (kSide / rows)};
    }
    write(resized, boxes);
    turn(resized, boxes);
  }

  void turn(const cv::Mat& picture, const Boxes& boxes) {
    const Corners start{{0, 0}, {kSide, 0}, {kSide, kSide}, {0, kSide}};
    for (int turns = 1; turns <= 3; ++turns) {
      Corners end = start;
      std::rotate(end.begin(), end.begin() + turns, end.end());
      const cv::Mat transform = cv::getPerspectiveTransform(start, end);
      cv::Mat turned;
      cv::warpPerspective(picture, turned, transform, picture.size(), cv::INTER_LINEAR,
                          cv::BORDER_REFLECT);
      Boxes turnedBoxes = boxes;
      for (auto& box : turnedBoxes)
        cv::perspectiveTransform(box, box, transform);
      write(turned, turnedBoxes);
    }
  }

  void write(const cv::Mat& picture, const Boxes& boxes) {
    const std::string stem = output + "img_" + std::to_string(number++);
    std::ofstream labels(stem + ".txt");
    for (const auto& box : boxes) {
      const cv::Rect pixels = cv::boundingRect(Corners(box.begin(), box.end()));
      const double width = pixels.width / static_cast<double>(picture.cols);
      const double height = pixels.height / static_cast<double>(picture.rows);
      labels << 0 << ' ' << pixels.x / static_cast<double>(picture.cols) + width * 0.5 << ' '
             << pixels.y / static_cast<double>(picture.rows) + height * 0.5 << ' ' << width << ' '
             << height << '\n';
    }
    cv::imwrite(stem + ".jpg", picture);
  }

  std::vector<std::string> paths;
  std::string output;
  int number = 0;
};

/// The twin is always a loop on one thread.
Pair makePair(int pictures, cv::Size size, bool onTwoThreads) {
  const auto run = std::make_shared<Run>(pictures, size);
  const auto bare = std::make_shared<BareRun>(run->paths, run->bench.temp / "bare/");
  run->process(onTwoThreads);
  bare->clear();
  bare->process();
  for (const auto& file : fs::directory_iterator(run->bench.temp / "bare/")) {
    const std::string name = file.path().filename().string();
    requireSame(readFile(run->output() + "images/" + name) == readFile(file.path().string()), name);
  }
  return {{[=] { run->process(onTwoThreads); }, [run] { run->clear(); }},
          {[bare] { bare->process(); }, [bare] { bare->clear(); }}};
}

}  // namespace

void addGenerations(const Plan& plan) {
  const auto add = [&](const char* name, cv::Size size, int repeats, bool onTwoThreads) {
    for (const int pictures : plan.sizes({4, 40})) {
      addComparison(plan, name, pictures, repeats,
                    [=] { return makePair(pictures, size, onTwoThreads); });
    }
  };
  add("generate from 640 x 480", {640, 480}, 7, false);
  add("generate from 1920 x 1080", {1920, 1080}, 5, false);
  add("generate on two threads, 640 x 480", {640, 480}, 7, true);
  add("generate on two threads, 1920x1080", {1920, 1080}, 5, true);
}
