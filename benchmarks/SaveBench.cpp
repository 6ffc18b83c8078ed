// Saving records with marks, one file each.

#include <filesystem>
#include <fstream>
#include <memory>

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
  cv::FileStorage storage(
      ".xml", cv::FileStorage::WRITE | cv::FileStorage::MEMORY | cv::FileStorage::FORMAT_XML);
  storage << "UniqueName" << trainSet.uniqueName << "ImagePath" << trainSet.imagePath;
  storage << "ImagePathAbs" << trainSet.imagePathAbs << "ImageCachePath"
          << "";
  storage << "ImageCacheSize"
          << "[:" << 0 << 0 << "]";
  storage << "Comment"
          << "";
  storage << "MarkCnt" << kMarks << "Special" << 0 << "Remove" << 0 << "Workflow" << -1;
  for (int i = 0; i < kMarks; ++i) {
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

void saveBare(const Records& records, const std::string& directory) {
  const auto boxes = relativeBoxes(kMarks);
  for (const TNVTrainSet* trainSet : records.trainSets)
    replaceBare(directory + trainSet->uniqueName + ".xml", bareRecord(*trainSet, boxes));
}

Pair makePair(int count, bool full) {
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

}  // namespace

void addSaves(const Plan& plan) {
  for (const bool full : {true, false}) {
    for (const int count : plan.sizes({1000, 10'000})) {
      addComparison(plan, full ? "full save" : "quick save", count, 7,
                    [=] { return makePair(count, full); });
    }
  }
}
