// Generation of a training set with the trees that ship, and what the trees come to by direct
// calls.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>

#include <sys/resource.h>
#include <unistd.h>

#include "BenchProject.h"
#include "Compare.h"
#include "TNV_SampleBenchNative/WTNVGenerationDarknet.h"
#include "marks/TNVMarkRect.h"

namespace fs = std::filesystem;

namespace {

using Corners = std::vector<cv::Point2f>;
using Boxes = std::vector<std::vector<cv::Point2d>>;

constexpr int kSide = 416;

// Between these the tree of random lengths draws.
constexpr int kShortest = 320;
constexpr int kLongest = 640;

enum class Tree { kDefault, kRandomLengths, kQuarterTurns };

struct Shipped {
  Tree tree;
  const char* name;
  const char* file;
};

constexpr Shipped kTrees[] = {{Tree::kDefault, "as it is", "default.xml"},
                              {Tree::kRandomLengths, "random lengths", "random-lengths.xml"},
                              {Tree::kQuarterTurns, "quarter turns", "resize-quarter-turns.xml"}};

/// Makes so many files and returns their paths.
using Pictures = std::function<std::vector<std::string>(const TempDirectory& temp, int count)>;

Pictures detailed(cv::Size size) {
  return
      [size](const TempDirectory& temp, int count) { return writePhotographs(temp, count, size); };
}

Pictures smooth(cv::Size size) {
  return [size](const TempDirectory& temp, int count) {
    return writePictures(temp, count, [size](unsigned seed) {
      cv::Mat picture;
      cv::resize(photograph(size / 16, seed), picture, size, 0, 0, cv::INTER_CUBIC);
      return picture;
    });
  };
}

/// The first pictures of that folder, in the order of their names.
Pictures picturesIn(const std::string& folder) {
  return [folder](const TempDirectory& /*temp*/, int count) {
    std::vector<std::string> paths;
    for (const auto& entry : fs::directory_iterator(folder)) {
      if (entry.path().extension() == ".jpg") paths.push_back(entry.path().string());
    }
    std::sort(paths.begin(), paths.end());
    paths.resize(std::min(paths.size(), static_cast<std::size_t>(count)));
    return paths;
  };
}

class Run {
 public:
  Run(const Pictures& pictures, int count, const std::string& tree,
      const std::string& trees = TNV_SOURCE_DIR "augments/")
      : bench(trees), paths(pictures(bench.temp, count)) {
    bench.project.wAddDNNClass("thing", 0, 0);
    bench.add(paths);
    for (const WTNVTrainSet& trainSet : bench.project.wGetTrainSets())
      mark(*trainSet.getNativeTrainSet());
    configure(tree);
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

  void configure(const std::string& tree) {
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
    bench.project.getHndAugment().wSetAugmentation(tree);
  }
};

class BareRun {
 public:
  BareRun(std::vector<std::string> pictures, std::string directory, Tree wanted)
      : paths(std::move(pictures)), output(std::move(directory)), tree(wanted) {}

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
    if (tree == Tree::kDefault) return;
    const cv::Mat resized = tree == Tree::kQuarterTurns ? squeezed(picture) : shortened(picture);
    for (auto& box : boxes) {
      for (cv::Point2d& point : box)
        point = {point.x * (resized.cols / columns), point.y * (resized.rows / rows)};
    }
    write(resized, boxes);
    if (tree == Tree::kQuarterTurns) turn(resized, boxes);
  }

  static cv::Mat squeezed(const cv::Mat& picture) {
    cv::Mat resized;
    cv::resize(picture, resized, {kSide, kSide}, 0, 0, cv::INTER_CUBIC);
    return resized;
  }

  /// Halved as often as it stays longer than the drawn length, then brought to it.
  cv::Mat shortened(cv::Mat picture) {
    const int length = std::uniform_int_distribution(kShortest, kLongest)(random);
    const bool byWidth = picture.cols > picture.rows;
    if (length == (byWidth ? picture.cols : picture.rows)) return picture;
    do {
      cv::Mat half;
      cv::pyrDown(picture, half);
      picture = half;
    } while ((byWidth ? picture.cols : picture.rows) / 2 > length);
    const double factor = static_cast<double>(length) / (byWidth ? picture.cols : picture.rows);
    cv::Mat resized;
    cv::resize(picture, resized, {cvRound(picture.cols * factor), cvRound(picture.rows * factor)});
    return resized;
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
  Tree tree;
  int number = 0;
  std::mt19937 random{std::random_device{}()};
};

/// Files of which the lengths are drawn differ from run to run.
bool isDrawn(Tree tree, const fs::path& file) {
  return tree == Tree::kRandomLengths && std::stoi(file.stem().string().substr(4)) % 2 == 1;
}

void requireSameFiles(const Run& run, const std::string& directory, Tree tree) {
  for (const auto& file : fs::directory_iterator(directory)) {
    const std::string name = file.path().filename().string();
    const std::string made = readFile(run.output() + "images/" + name);
    requireSame(isDrawn(tree, file.path()) ? !made.empty() : made == readFile(file.path().string()),
                name);
  }
}

/// The twin is always a loop on one thread.
Pair makePair(const Pictures& pictures, int count, const Shipped& shipped, bool onTwoThreads) {
  const auto run = std::make_shared<Run>(pictures, count, shipped.file);
  const std::string directory = run->bench.temp / "bare/";
  const auto bare = std::make_shared<BareRun>(run->paths, directory, shipped.tree);
  run->process(onTwoThreads);
  bare->clear();
  bare->process();
  requireSameFiles(*run, directory, shipped.tree);
  return {{[=] { run->process(onTwoThreads); }, [run] { run->clear(); }},
          {[bare] { bare->process(); }, [bare] { bare->clear(); }}};
}

void add(const Plan& plan, const std::string& kind, const Pictures& pictures) {
  constexpr int kCount = 8;
  const int count = plan.smoke ? 2 : kCount;
  for (const Shipped& shipped : kTrees) {
    for (const bool onTwoThreads : {false, true}) {
      const std::string name = std::string("generate, ") + shipped.name + ", " + kind +
                               (onTwoThreads ? ", 2 threads" : "");
      addComparison(plan, {name, count, onTwoThreads ? 0.45 : 0.8},
                    [=] { return makePair(pictures, count, shipped, onTwoThreads); });
    }
  }
}

/// Turned three times at its full size, each turn taking what the one before it gave.
constexpr auto kTurnedThrice = R"(<?xml version="1.0"?>
<opencv_storage>
<TaskTree><SubTasks>1</SubTasks><Task_0><Name>Rotation</Name><Save>0</Save><Rotate>90</Rotate>
<SubTasks>1</SubTasks><Task_0><Name>Rotation</Name><Save>0</Save><Rotate>180</Rotate>
<SubTasks>1</SubTasks><Task_0><Name>Rotation</Name><Save>0</Save><Rotate>270</Rotate>
<SubTasks>1</SubTasks><Task_0><Name>Resize</Name><Save>1</Save><TargetSize>416 416</TargetSize>
<SubTasks>0</SubTasks></Task_0></Task_0></Task_0></Task_0></TaskTree>
</opencv_storage>
)";

long pageFaults() {
  struct rusage usage {};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_minflt;
}

long pageFaultsOfRun(const Pictures& pictures, int count) {
  const TempDirectory trees;
  trees.write("thrice.xml", kTurnedThrice);
  Run run(pictures, count, "thrice.xml", trees.path());
  const long before = pageFaults();
  run.process(false);
  return pageFaults() - before;
}

/// Of each picture after the first one.
std::string findPageFaults(cv::Size size) {
  constexpr int kFurther = 2;
  // The same file each time, since making it takes long.
  const TempDirectory temp;
  const std::string picture = detailed(size)(temp, 1).front();
  const Pictures pictures = [&](const TempDirectory& own, int count) {
    std::vector<std::string> paths;
    for (int i = 0; i < count; ++i) {
      paths.push_back(own / (std::to_string(i) + ".jpg"));
      fs::copy_file(picture, paths.back());
    }
    return paths;
  };
  const long each =
      (pageFaultsOfRun(pictures, 1 + kFurther) - pageFaultsOfRun(pictures, 1)) / kFurther;
  const long pages = 3L * size.area() / sysconf(_SC_PAGESIZE);
  return std::to_string(each) + " for each further picture, of which one takes " +
         std::to_string(pages) + " pages";
}

}  // namespace

void addGenerations(const Plan& plan) {
  const cv::Size size = plan.smoke ? cv::Size(4096, 4096) : cv::Size(8000, 6000);
  addFinding(
      "page faults of a tree of three turns, " + std::to_string(size.area() / 1'000'000) + " Mpx",
      [size] { return findPageFaults(size); });
  add(plan, "1080p smooth", smooth({1920, 1080}));
  add(plan, "1080p detailed", detailed({1920, 1080}));
  const char* const folder = std::getenv("SAMPLEBENCH_PICTURES");
  if (folder) {
    add(plan, "photographs", picturesIn(folder));
  } else {
    add(plan, "640 x 640", detailed({640, 640}));
  }
}
