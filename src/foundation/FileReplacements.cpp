#include "foundation/FileReplacements.h"

#include <utility>

#include "foundation/Files.h"
#include "foundation/Platform.h"

namespace tnv {

namespace {

// Until they are placed, files take room twice.
constexpr std::size_t kMostWaiting = 10'000;

}  // namespace

FileReplacements::~FileReplacements() {
  for (const auto& file : waiting)
    removeFile(file.written);
}

bool FileReplacements::add(const std::string& path, std::string_view content, Ending ending) {
  if (path.empty()) return false;
  std::string target = withoutLinks(path);
  if (waiting.size() == kMostWaiting || targets.contains(target)) placeAll();
  std::string written = writeBeside(target, content);
  if (written.empty()) return false;
  targets.insert(target);
  waiting.push_back({std::move(written), std::move(target), std::move(ending)});
  return true;
}

bool FileReplacements::commit() {
  placeAll();
  return std::exchange(allPlaced, true);
}

void FileReplacements::placeAll() {
  std::vector<std::string> paths;
  for (const auto& file : waiting)
    paths.push_back(file.written);
  const bool flushed = flushToDisk(paths);
  for (const auto& file : std::exchange(waiting, {})) {
    const bool placed = flushed && takePlace(file.written, file.target);
    if (!placed) removeFile(file.written);
    allPlaced = allPlaced && placed;
    if (file.ending) file.ending(placed);
  }
  targets.clear();
}

bool replaceForGood(const std::string& path, std::string_view content) {
  FileReplacements files;
  return files.add(path, content) && files.commit();
}

}  // namespace tnv
