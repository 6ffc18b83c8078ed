#pragma once

#include <string>
#include <vector>

#include "TNV_SampleBenchNative/Export.h"
#include "TNV_SampleBenchNative/WTNVMark.h"
#include "TNV_SampleBenchNative/WTNVWorkflow.h"

class TNVTrainSet;

/// Handle on a train set: one picture with its marks. The project owns the train set; the handle
/// owns nothing and dangles once the train set was removed or the project was loaded anew. Methods
/// need a handle that is not null. For use on the front end's thread.
class TNV_SAMPLEBENCH_API WTNVTrainSet {
 public:
  /// A null handle.
  WTNVTrainSet();
  explicit WTNVTrainSet(TNVTrainSet* trainSet);
  WTNVTrainSet(const WTNVTrainSet& other);
  WTNVTrainSet& operator=(const WTNVTrainSet& other);
  ~WTNVTrainSet();

  /// The train set itself, borrowed; null for a null handle.
  TNVTrainSet* getNativeTrainSet() const;

  /// The path of the picture as it was given when it was added. Empty as long as the train set's
  /// data were not read, see `wLoadData`.
  std::string getImagePath() const;

  /// The path of the train set's own file; empty before the first save.
  std::string wGetDataPath() const;

  /// Number of marks; 0 as long as the train set's data were not read.
  int getMarkCount() const;

  /// Handles on all marks, in drawing order, without making the train set the current one of a main
  /// process. The train set owns the marks. Empty as long as the train set's data were not read.
  std::vector<WTNVMark> wGetMarks() const;

  /// The workflow that the train set is in, without making it the current one of a main process:
  /// one of `workflows`, or a null handle. Also a null handle as long as the data were not read.
  WTNVWorkflow wGetWorkflow(const std::vector<WTNVWorkflow>& workflows) const;

  /// Size of the picture in pixels. The first call may have to read the picture, and waits up to
  /// five seconds for a main process to do so. 0 and 0 if the picture cannot be read.
  void getImageSize(int& width, int& height) const;

  /// Size in pixels that the picture had when its reduced copy was made; 0 and 0 if it has none, or
  /// the data were not read.
  void wGetImageCacheSize(int& width, int& height) const;

  /// Reads the train set's data (path, marks, comment) if they are not in memory yet: a project
  /// that was loaded knows no more of a train set than where its file lies. True if the data are in
  /// memory afterwards; a missing file gives false and a line in the log, a damaged one throws.
  bool wLoadData() const;

  /// Puts one class for another in all marks. A mark that has both keeps one; one that is the same
  /// as another mark afterwards is removed, so that each stays once. Returns the number of marks
  /// that changed, with those removed. The train set's data must have been read, and the handles
  /// not be null; `WTNVProject::wUpdate` saves the change.
  int wReplaceClass(const WTNVDNNClass& from, const WTNVDNNClass& to) const;

  /// Takes a class out of all marks, and with it the marks that have no other class. Returns the
  /// number of marks that carried it. As for saving, see `wReplaceClass`.
  int wRemoveClass(const WTNVDNNClass& dnnClass) const;

 private:
  TNVTrainSet* native;
};
