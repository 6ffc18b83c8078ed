#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <opencv2/core/types.hpp>

/// The files of a training set, as `generate` lays them out below its output directory.
struct TrainingSetPaths {
  std::string directory;
  std::string samples;
  std::string trainList;
  std::string testList;
  std::string data;
  std::string net;
  std::string names;
  std::string backup;
  /// Which picture each sample was made of.
  std::string sources;
  /// How samples were kept together, if they were.
  std::string division;
};

/// `output` as it is to stand in the lists. Blanks in the project's name become underscores, for
/// Darknet cannot read paths with blanks.
TrainingSetPaths trainingSetPaths(const std::string& output, const std::string& project);

/// Throws CommandError unless the directory may be replaced by a new training set: it does not
/// exist, is empty but for empty directories, or holds what `generate` wrote there and nothing
/// else.
void requireReplaceable(const std::string& directory);

/// What a training set consists of.
struct TrainingSetContent {
  std::size_t training = 0;
  std::size_t test = 0;
  /// By class number, in pixels of their samples.
  std::vector<std::vector<cv::Rect2d>> boxes;
  std::size_t withoutBoxes = 0;

  std::size_t samples() const { return training + test; }
  std::size_t boxCount() const;
};

/// Reads a training set back; throws CommandError if a list names a picture that is not there or
/// has no label text, or if a label is not five fields with a class below `classCount` and a box
/// within the picture.
TrainingSetContent readTrainingSet(const TrainingSetPaths& paths, std::size_t classCount);
