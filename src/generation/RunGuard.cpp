#include "generation/RunGuard.h"

#include <algorithm>
#include <unordered_set>

#include "generation/TNVGeneration.h"
#include "project/TNVTrainSet.h"

namespace tnv {

namespace fs = std::filesystem;

namespace {

fs::path withoutSlash(const fs::path& path) {
  return path.has_filename() ? path : path.parent_path();
}

/// Without symbolic links and dots, and without a slash at the end. What cannot be resolved is only
/// made absolute.
fs::path resolvedPath(const fs::path& path) {
  std::error_code error;
  const fs::path absolute = fs::absolute(path.empty() ? "." : path, error);
  const fs::path resolved = fs::weakly_canonical(absolute, error);
  return withoutSlash(error ? absolute.lexically_normal() : resolved);
}

/// Whether `path` is `directory` or lies below it, component by component.
bool isWithin(const fs::path& path, const fs::path& directory) {
  const auto end = std::mismatch(directory.begin(), directory.end(), path.begin(), path.end());
  return end.first == directory.end();
}

}  // namespace

RunGuard::RunGuard(const TNVGeneration& generation) {
  protect(generation.platformPath, "the platforms path");
  protect(generation.projectDirectory, "the project's directory");
  protectExisting(generation.augmentsPath, "the task trees");
  for (const auto& [descriptor, record] : generation.templates) {
    protectExisting(generation.platformPath + record.path, "the templates");
  }
  std::vector<TNVTrainSet*> trainSets = generation.trainSets;
  trainSets.insert(trainSets.end(), generation.runTrainSets.begin(), generation.runTrainSets.end());
  protectTrainSets(trainSets);
}

RunGuard::RunGuard(const std::vector<TNVTrainSet*>& trainSets) {
  protectTrainSets(trainSets);
}

void RunGuard::protectTrainSets(const std::vector<TNVTrainSet*>& trainSets) {
  std::error_code error;
  protect(fs::current_path(error).string(), "the working directory");
  std::unordered_set<TNVTrainSet*> seen{nullptr};
  for (TNVTrainSet* trainSet : trainSets) {
    if (seen.insert(trainSet).second) protectTrainSet(*trainSet);
  }
}

void RunGuard::protectTrainSet(TNVTrainSet& trainSet) {
  if (!trainSet.dataLoaded && !trainSet.dataPath.empty()) trainSet.load();
  protect(trainSet.dataPath, "the data file '" + trainSet.dataPath + "'");
  // The picture is read from the one and known by the other.
  protect(trainSet.imagePath, "the picture '" + trainSet.imagePath + "'");
  protect(trainSet.imagePathAbs, "the picture '" + trainSet.imagePathAbs + "'");
}

void RunGuard::protectExisting(const std::string& path, const std::string& what) {
  std::error_code error;
  if (fs::exists(path, error)) protect(path, what);
}

void RunGuard::protect(const std::string& path, const std::string& what) {
  if (path.empty()) return;
  const fs::path given = withoutSlash(path);
  auto [parent, isNew] = resolvedParents.try_emplace(given.parent_path());
  if (isNew) parent->second = resolvedPath(given.parent_path());
  // Where the entry itself lies, and where it leads to if it is a link.
  std::error_code error;
  const bool plain = given.has_filename() && given.filename() != "." && given.filename() != "..";
  if (plain) sources.push_back({parent->second / given.filename(), what});
  if (!plain || fs::is_symlink(given, error)) sources.push_back({resolvedPath(given), what});
}

std::string RunGuard::whyToKeep(const std::string& directory) const {
  if (directory.empty()) return {};
  // The system would see nothing but what stands before it.
  if (directory.find('\0') != directory.npos) return "it is no path";
  const fs::path path = resolvedPath(directory);
  if (path == path.root_path()) return "it is a file system root";
  for (const Source& source : sources) {
    if (isWithin(source.path, path)) return "it is or contains " + source.what;
  }
  return {};
}

}  // namespace tnv
