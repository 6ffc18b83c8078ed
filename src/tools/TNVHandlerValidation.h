#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "boundary/TNVNotificator.h"

class TNVDNNClass;
class TNVMark;
class TNVTrainSet;

namespace tnv {
class Steps;
struct PictureBytes;
}  // namespace tnv

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

  /// The same run with the same outcome, but so many threads of its own read, cut and encode ahead,
  /// one for each core if none or less are asked for.
  bool createDNNImagesParallel(int threads);

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
  /// Cuts the next train set.
  using Turn = std::function<void()>;

  bool run(const std::function<void()>& cutAll);
  void cutWhileNotStopped(const Turn& turn);
  bool renewDirectory() const;

  /// For any thread; what the steps do is for the thread of the run.
  void cutTrainSet(int index, tnv::Steps& steps);
  void cutMark(const TNVMark& mark, const cv::Mat& picture, int trainSetIndex, tnv::Steps& steps);

  /// False if it cannot be written; then it gets no number.
  bool addCut(const tnv::PictureBytes& bytes, const std::string& label, const ImageInfo& info);

  /// Empty for a mark without area, and, with a log line, for one that lies so that nothing can be
  /// cut.
  cv::Mat cutOf(const TNVMark& mark, const cv::Mat& picture, int trainSetIndex) const;
  const TNVDNNClass* classOf(const TNVMark& mark) const;
  std::string imagePath(int id) const;
};
