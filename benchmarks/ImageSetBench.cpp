// Opening a project with long lists and what its records take in memory, importing a directory, and
// adding and removing many pictures, of which none exists.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <unordered_set>

#include <malloc.h>

#include "BenchProject.h"
#include "Compare.h"
#include "support/Memory.h"

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

/// A project of which the list has so many entries.
std::shared_ptr<BenchProject> longProject(int count) {
  const auto bench = std::make_shared<BenchProject>();
  bench->add({"/pictures/one.jpg"});
  bench->project.wUpdate(true);
  writeList(bench->temp / "bench/", count);
  return bench;
}

Pair makeOpening(int count) {
  const auto bench = longProject(count);
  const std::string directory = bench->temp / "bench/";
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

/// Without what was given back and is only kept for later.
double bytesInUse() {
  malloc_trim(0);
  return static_cast<double>(residentBytes());
}

std::string bytesOfRecords(int count) {
  const auto bench = longProject(count);
  WTNVProject opened("bench", bench->temp.path(), "", "");
  const double before = bytesInUse();
  opened.wLoad();
  const double each = (bytesInUse() - before) / count;
  requireSame(opened.wGetTrainSetCountFromImageSet("set") == count, "count");
  char text[80];
  std::snprintf(text, sizeof text, "%.0f bytes each of %d; wanted: less than 1024", each, count);
  return text;
}

/// A directory of empty files with the names of pictures, and what reads it into a project.
Pair makeImporting(int count) {
  const auto bench = std::make_shared<BenchProject>();
  const std::string directory = bench->temp.makeDirectory("pictures");
  for (int i = 0; i < count; ++i)
    std::ofstream(directory + "picture_" + std::to_string(i) + ".jpg");
  const auto imported = std::make_shared<std::vector<std::string>>();
  const auto import = [=] {
    *imported = bench->project.wReadImagesFromDirectory(directory, false);
    bench->add(*imported, true);
    requireSame(bench->project.wGetTrainSetCountFromImageSet("set") == count, "count");
  };
  const auto forget = [=] { bench->project.wRemoveImagesFromImageSet(*imported, "set"); };
  const auto bareImport = [=] {
    std::vector<std::string> paths;
    for (const auto& entry : fs::directory_iterator(directory)) {
      if (entry.path().extension() == ".jpg") paths.push_back(entry.path().string());
    }
    requireSame(paths.size() == static_cast<std::size_t>(count), "bare count");
  };
  return {{import, forget}, {bareImport}};
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
  for (const int count : plan.sizes({1000, 10'000, 50'000, 100'000}))
    addComparison(plan, {"open a list", count, count == 50'000 ? 1.5 : 0},
                  [=] { return makeOpening(count); });
  for (const int count : plan.sizes({1000, 10'000, 100'000}))
    addComparison(plan, {"import a directory", count, count == 100'000 ? 2.0 : 0},
                  [=] { return makeImporting(count); });
  for (const int count : plan.sizes({1000, 10'000, 100'000}))
    addComparison(plan, {"add pictures", count}, [=] { return makeAdding(count); });
  for (const int count : plan.sizes({1000, 10'000, 100'000}))
    addComparison(plan, {"remove pictures", count}, [=] { return makeRemoving(count); });
}

void addMemory(const Plan& plan) {
  addFinding("memory of unloaded records",
             [count = plan.smoke ? 1000 : 100'000] { return bytesOfRecords(count); });
}
