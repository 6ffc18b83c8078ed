#pragma once

#include <atomic>
#include <map>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "boundary/TNVNotificator.h"

class TNVDNNClass;
class TNVMark;
class TNVTrainSet;

/// Cuts every mark out of its picture into a gallery on disk, and knows the cuts of each class and
/// the mark of each cut. The index lasts until the next generation and is not kept on disk.
class TNVHandlerValidation : public TNVNotificator {
 public:
  struct ImageInfo {
    int trainSetIndex;
    int markUniqueId;
  };

  /// An empty directory is none: no gallery can be made.
  explicit TNVHandlerValidation(const std::string& validationDirectory);

  /// One whole run, on the calling thread.
  bool createDNNImages();

  /// The labels of the classes that have cuts.
  std::vector<std::string> getDNNClasses() const;
  std::vector<int> getDNNImageIndices(const std::string& label) const;

  /// The cut, from memory or else from disk; kept in memory, also if it is empty.
  cv::Mat loadImage(int id);
  void unloadImagesOfDNN(const std::string& label);

  int getTrainSetIndex(int id) const;
  int getMarkUniqueId(int id) const;

  /// The cuts that are held in memory.
  std::map<int, cv::Mat> images;
  std::map<int, ImageInfo> imageInfo;
  std::string validationDirectory;

  /// What a run must not delete beside the project's pictures.
  std::vector<std::string> keptPaths;
  std::map<std::string, std::vector<int>> dnnImages;
  std::vector<TNVTrainSet*> trainSets;
  std::vector<TNVDNNClass*> dnnClasses;
  std::atomic<bool> stopped{true};
  std::atomic<bool> stopRequested{false};

 private:
  bool renewDirectory() const;
  void cutTrainSet(int index);
  void cutMark(const TNVMark& mark, const cv::Mat& picture, int trainSetIndex);

  /// Empty for a mark without area, and, with a log line, for one that lies so that nothing can be
  /// cut.
  cv::Mat cutOf(const TNVMark& mark, const cv::Mat& picture, int trainSetIndex) const;
  const TNVDNNClass* classOf(const TNVMark& mark) const;
  std::string imagePath(int id) const;
};
