// Opening a project with long lists, and adding and removing many pictures, of which none exists.

#include <filesystem>
#include <fstream>
#include <memory>
#include <unordered_set>

#include "BenchProject.h"
#include "Compare.h"

namespace fs = std::filesystem;

namespace {

std::string recordPath(const std::string& directory, int number) {
  return directory + "is_set/0101202412000" + std::to_string(number) + ".xml";
}

/// Writes the list of a set as text.
void writeList(const std::string& directory, int count) {
  fs::create_directories(directory + "is_set");
  std::ofstream list(directory + "set.xml");
  list << "<?xml version=\"1.0\"?>\n<opencv_storage>\n<Count>" << count << "</Count>\n";
  for (int i = 0; i < count; ++i) {
    list << "<id" << i << ">\n  <DataPath>\"" << recordPath(directory, i) << "\"</DataPath></id"
         << i << ">\n";
  }
  list << "</opencv_storage>\n";
}

std::size_t openBare(const std::string& list) {
  const cv::FileStorage storage(list, cv::FileStorage::READ);
  std::vector<std::string> paths;
  for (const cv::FileNode& node : storage.root()) {
    if (node.isMap()) paths.push_back((*node.begin()).string());
  }
  return paths.size();
}

Pair makeOpening(int count) {
  const auto bench = std::make_shared<BenchProject>();
  bench->add({"/pictures/one.jpg"});
  bench->project.wUpdate(true);
  const std::string directory = bench->temp / "bench/";
  writeList(directory, count);
  const auto opened = std::make_shared<std::unique_ptr<WTNVProject>>();
  const auto closeAndOpen = [=] {
    *opened = std::make_unique<WTNVProject>("bench", bench->temp.path(), "", "");
  };
  const auto total = static_cast<std::size_t>(count);
  return {{[=] {
             opened->get()->wLoad();
             requireSame(opened->get()->wGetTrainSetCountFromImageSet("set") == count, "count");
           },
           closeAndOpen},
          {[=] { requireSame(openBare(directory + "set.xml") == total, "bare count"); }}};
}

std::vector<std::string> picturePaths(int count) {
  std::vector<std::string> paths;
  for (int i = 0; i < count; ++i)
    paths.push_back("/pictures/holiday/picture_" + std::to_string(i) + ".jpg");
  return paths;
}

Pair makeAdding(int count) {
  const auto bench = std::make_shared<BenchProject>();
  const auto paths = std::make_shared<std::vector<std::string>>(picturePaths(count));
  const auto bareAdd = [paths] {
    std::unordered_set<std::string> present;
    for (const std::string& path : *paths)
      present.insert(fs::absolute(path).string());
    requireSame(present.size() == paths->size(), "bare count");
  };
  return {{[=] { bench->add(*paths); },
           [=] { bench->project.wRemoveImagesFromImageSet(*paths, "set"); }},
          {bareAdd}};
}

/// Every second picture goes, so that the ones which stay are moved up.
Pair makeRemoving(int count) {
  const auto bench = std::make_shared<BenchProject>();
  const auto paths = std::make_shared<std::vector<std::string>>(picturePaths(count));
  const auto leaving = std::make_shared<std::vector<std::string>>();
  for (std::size_t i = 0; i < paths->size(); i += 2)
    leaving->push_back((*paths)[i]);
  const auto bareRemove = [=] {
    const std::unordered_set<std::string> gone(leaving->begin(), leaving->end());
    std::vector<std::string> kept;
    for (const std::string& path : *paths) {
      if (!gone.contains(path)) kept.push_back(path);
    }
    requireSame(kept.size() + leaving->size() == paths->size(), "bare count");
  };
  return {{[=] { bench->project.wRemoveImagesFromImageSet(*leaving, "set"); },
           [=] { bench->add(*paths); }},
          {bareRemove}};
}

}  // namespace

void addImageSets(const Plan& plan) {
  for (const int count : plan.sizes({1000, 10'000, 100'000}))
    addComparison(plan, "open a list", count, 11, [=] { return makeOpening(count); });
  for (const int count : plan.sizes({10'000, 100'000}))
    addComparison(plan, "add pictures", count, 11, [=] { return makeAdding(count); });
  for (const int count : plan.sizes({10'000, 100'000}))
    addComparison(plan, "remove pictures", count, 11, [=] { return makeRemoving(count); });
}
