#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "verify/SetFiles.h"

/// The files that make up a training set.
struct SetLayout {
  std::string directory;
  std::string dataFile;     ///< empty if there is none
  std::string description;  ///< a `data.yaml`, which counts if there is no data file, or empty
  std::string namesFile;
  std::string network;
  std::vector<std::string> trainLists;
  std::vector<std::string> testLists;
  std::string sources;                    ///< which picture each sample was made of
  std::vector<std::string> pictures;      ///< to train with that are in no list
  std::vector<std::string> testPictures;  ///< the same to test with
  DataFile data;

  /// The lists to train and to test with.
  std::vector<std::string> lists() const;
};

/// Finds the files of a set, given its data file, `data.yaml` or directory; throws CommandError if
/// there is nothing that could be one. `network` overrides the network file beside it.
SetLayout findSet(const std::string& path, const std::string& network, Findings& findings);

struct VerifiedSet {
  std::size_t pictures = 0;
  std::size_t labels = 0;
  Findings findings;
};

/// Called with the number of pictures at first, then after each picture; ends the work by throwing.
struct VerifyProgress {
  std::function<void(std::size_t)> start;
  std::function<void()> step;
};

/// Checks the set as trainers of the Darknet family and their successors read it.
VerifiedSet verifySet(const SetLayout& layout, Findings found, const VerifyProgress& progress);
