#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

class TNVGeneration;
class TNVTrainSet;

namespace tnv {

/// Knows what a run reads, so that no output directory that holds some of it is deleted. Costs time
/// linear in the number of train sets.
class RunGuard {
 public:
  /// Loads the records that are not loaded yet: only then their pictures are known.
  explicit RunGuard(const TNVGeneration& generation);

  /// For a run that reads nothing but the train sets.
  explicit RunGuard(const std::vector<TNVTrainSet*>& trainSets);

  /// Adds a directory that a run reads, if it is there.
  void protectExisting(const std::string& path, const std::string& what);

  /// Why the directory must not be deleted; an empty text if it may be.
  std::string whyToKeep(const std::string& directory) const;

 private:
  struct Source {
    std::filesystem::path path;
    std::string what;
  };

  void protect(const std::string& path, const std::string& what);
  void protectTrainSets(const std::vector<TNVTrainSet*>& trainSets);
  void protectTrainSet(TNVTrainSet& trainSet);

  std::vector<Source> sources;
  std::map<std::filesystem::path, std::filesystem::path> resolvedParents;
};

}  // namespace tnv
