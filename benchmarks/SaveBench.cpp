// Saving records with marks, one file each, and reading one.

#include <filesystem>
#include <fstream>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

#include "BenchProject.h"
#include "Compare.h"
#include "marks/TNVMarkRect.h"

namespace fs = std::filesystem;

namespace {

constexpr int kMarks = 5;

class Records {
 public:
  explicit Records(int count) {
    std::vector<std::string> paths;
    for (int i = 0; i < count; ++i)
      paths.push_back("/pictures/holiday/picture_" + std::to_string(i) + ".jpg");
    bench.add(paths);
    for (const WTNVTrainSet& handle : bench.project.wGetTrainSets()) {
      TNVTrainSet* trainSet = handle.getNativeTrainSet();
      for (const cv::Rect2d& box : relativeBoxes(kMarks))
        trainSet->addMark(TNVMarkRect(box.tl(), box.br(), false));
      trainSets.push_back(trainSet);
    }
    save(true);
  }

  void save(bool full) { requireSame(bench.project.wUpdate(full), "the save failed"); }

  void change() {
    for (TNVTrainSet* trainSet : trainSets)
      trainSet->changed = true;
  }

  BenchProject bench;
  std::vector<TNVTrainSet*> trainSets;
};

void writeBareMark(cv::FileStorage& storage, const cv::Rect2d& box) {
  storage << "Type"
          << "Rect";
  storage << "Center"
          << "[:" << box.x + box.width / 2 << box.y + box.height / 2 << "]";
  storage << "POIs" << std::vector<cv::Point2d>();
  storage << "POISize"
          << "[:" << 0.0 << 0.0 << "]";
  storage << "ClassIdx" << std::vector<int>();
  storage << "Size"
          << "[:" << box.width << box.height << "]";
}

std::string bareRecord(const TNVTrainSet& trainSet, const std::vector<cv::Rect2d>& boxes) {
  const int count = static_cast<int>(boxes.size());
  cv::FileStorage storage(
      ".xml", cv::FileStorage::WRITE | cv::FileStorage::MEMORY | cv::FileStorage::FORMAT_XML);
  storage << "UniqueName" << trainSet.uniqueName << "ImagePath" << trainSet.imagePath;
  storage << "ImagePathAbs" << trainSet.imagePathAbs << "ImageCachePath"
          << "";
  storage << "ImageCacheSize"
          << "[:" << 0 << 0 << "]";
  storage << "Comment"
          << "";
  storage << "MarkCnt" << count << "Special" << 0 << "Remove" << 0 << "Workflow" << -1;
  for (int i = 0; i < count; ++i) {
    storage << "Mark" + std::to_string(i) << "{";
    writeBareMark(storage, boxes[static_cast<std::size_t>(i)]);
    storage << "}";
  }
  return storage.releaseAndGetString();
}

void replaceBare(const std::string& path, const std::string& content) {
  std::ofstream(path + ".new", std::ios::binary) << content;
  fs::rename(path + ".new", path);
}

/// As a save does with a record on its own: what takes the place of a file is on the disk before.
void replaceBareForGood(const std::string& path, const std::string& content) {
  std::ofstream(path + ".new", std::ios::binary) << content;
  const int file = open((path + ".new").c_str(), O_RDONLY | O_CLOEXEC);
  requireSame(file >= 0 && fdatasync(file) == 0 && close(file) == 0, path);
  fs::rename(path + ".new", path);
}

void saveBare(const Records& records, const std::string& directory) {
  const auto boxes = relativeBoxes(kMarks);
  for (const TNVTrainSet* trainSet : records.trainSets)
    replaceBare(directory + trainSet->uniqueName + ".xml", bareRecord(*trainSet, boxes));
}

Pair makeSaves(int count, bool full) {
  const auto records = std::make_shared<Records>(count);
  const std::string directory = records->bench.temp.makeDirectory("bare");
  saveBare(*records, directory);
  for (const TNVTrainSet* trainSet : records->trainSets) {
    requireSame(readFile(trainSet->dataPath) == readFile(directory + trainSet->uniqueName + ".xml"),
                trainSet->dataPath);
  }
  return {{[=] { records->save(full); }, [=] { records->change(); }},
          {[=] { saveBare(*records, directory); }}};
}

struct BareMark {
  std::string type;
  std::vector<double> center, pois, poiSize, size;
  std::vector<int> classes;
};

std::vector<BareMark> readBare(const std::string& path) {
  const cv::FileStorage storage(readFile(path), cv::FileStorage::READ | cv::FileStorage::MEMORY);
  const cv::FileNode root = storage.root();
  std::vector<std::string> texts;
  for (const char* name : {"UniqueName", "ImagePath", "ImagePathAbs", "ImageCachePath", "Comment"})
    texts.push_back(root[name].string());
  std::vector<int> numbers;
  for (const char* name : {"MarkCnt", "Special", "Remove", "Workflow"})
    numbers.push_back(static_cast<int>(root[name]));
  std::vector<BareMark> marks;
  for (const cv::FileNode& node : root) {
    if (!node.isMap()) continue;
    BareMark& mark = marks.emplace_back();
    mark.type = node["Type"].string();
    node["Center"] >> mark.center;
    node["POIs"] >> mark.pois;
    node["POISize"] >> mark.poiSize;
    node["ClassIdx"] >> mark.classes;
    node["Size"] >> mark.size;
  }
  requireSame(marks.size() == static_cast<std::size_t>(numbers[0]), "bare count");
  return marks;
}

/// A record on its own, read and written again.
Pair makeRoundTrip(int marks) {
  const auto temp = std::make_shared<TempDirectory>();
  const auto boxes = relativeBoxes(marks);
  const auto first = std::make_shared<TNVTrainSet>("/pictures/holiday/picture_1.jpg", "");
  for (const cv::Rect2d& box : boxes)
    first->addMark(TNVMarkRect(box.tl(), box.br(), false));
  requireSame(first->save(temp->path()), "the save failed");
  const std::string path = first->dataPath;
  const std::string barePath = temp->write("bare.xml", bareRecord(*first, boxes));
  const auto product = [=] {
    TNVTrainSet record;
    record.dataPath = path;
    record.load();
    record.changed = true;
    requireSame(record.save(temp->path()), "the save failed");
  };
  const auto bare = [=] {
    requireSame(readBare(barePath).size() == boxes.size(), "bare marks");
    replaceBareForGood(barePath, bareRecord(*first, boxes));
  };
  product();
  requireSame(readFile(path) == readFile(barePath), path);
  return {{product}, {bare}};
}

}  // namespace

void addSaves(const Plan& plan) {
  for (const int marks : plan.sizes({5, 100}))
    addComparison(plan, {"read and write a record, marks", marks, 1.2},
                  [=] { return makeRoundTrip(marks); });
  for (const bool full : {true, false}) {
    for (const int count : plan.sizes({1000, 10'000, 100'000})) {
      // Beside a twin that flushes nothing, a full save may take twice the time.
      const double atMost = full ? 2.0 : 0;
      addComparison(plan, {full ? "full save" : "quick save", count, atMost},
                    [=] { return makeSaves(count, full); });
    }
  }
}
