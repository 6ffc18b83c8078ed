#pragma once

#include <string>
#include <vector>

#include "TNV_SampleBenchNative/Export.h"
#include "TNV_SampleBenchNative/TNVObserver.h"
#include "TNV_SampleBenchNative/WTNVCallback.h"

class TNVHandlerValidation;

/// The gallery: every mark cut out of its picture, class by class, to look the marks through. A cut
/// has a number from 0 on. A class goes by its label, name and number: `Screw (3)`. The project
/// owns the handler. The wrapper is an observer registered by its address: keep it in one place,
/// and destroy it before the project. Callbacks are called on the thread that makes the gallery.
class TNV_SAMPLEBENCH_API WTNVHandlerValidation : public TNVHandlerValidationObserver {
 public:
  explicit WTNVHandlerValidation(TNVHandlerValidation* handler);

  /// Another observer of the same handler, without callbacks.
  WTNVHandlerValidation(const WTNVHandlerValidation& other);

  /// Takes over the handler and the callbacks; registers nothing.
  WTNVHandlerValidation& operator=(const WTNVHandlerValidation& other);
  ~WTNVHandlerValidation() override;

  /// Makes the gallery of all train sets on the calling thread, in the project's validation
  /// directory, whose earlier content is deleted. Started comes first, an Update after each train
  /// set whose picture can be read, then Finished; true also when it was stopped. False, with a log
  /// line and without events, if there are no train sets, or if the directory cannot be made anew
  /// or holds pictures of the project. A mark that cannot be cut has a log line and no number.
  /// Errors of the file system, and of OpenCV on damaged records, are thrown; the run then counts
  /// as active.
  bool wProcessGeneration();

  /// The same run on several threads at once: so many of its own read pictures, cut and encode,
  /// each for a train set of its own, while the calling thread numbers and writes the cuts in the
  /// order of the train sets. 0, or less, takes one for each core. Events, on the calling thread,
  /// log lines, result, files and what is thrown are those of `wProcessGeneration`. At most two
  /// train sets a thread are in work or wait for their turn. The threads have ended before the
  /// Finished event and before anything is thrown. Until then the project must not be changed, nor
  /// asked for train sets whose turn has not come, not by callbacks either.
  bool wProcessGenerationParallel(int threads);

  /// Ends a run before its next train set; what is cut until then stays usable. For any thread, and
  /// for the callbacks of the run.
  void wProcessStop();

  /// Whether no run is active. For any thread. After a run that could not start it stays false.
  bool wProcessIsStopped() const;

  /// The labels of the classes that have cuts, sorted. Not to be asked while a run is active, like
  /// all that follows.
  std::vector<std::string> wGetDNNClasses() const;

  /// The numbers of the cuts of a class, in the order of making; empty for an unknown label.
  std::vector<int> wGetDNNImageIndices(const std::string& label) const;

  /// Hands a cut out, read from disk at the first time: 8-bit pixels in the order blue, green, red,
  /// rows of `width * channels` bytes, which stay until the cut is unloaded or a run starts. Null
  /// and zeros for one that cannot be read.
  void wLoadImage(int id, unsigned char** data, int* width, int* height, int* channels);

  /// Gives memory back: of one cut, of all of a class, of all.
  void wUnloadImage(int id);
  void wUnloadImagesOfDNN(const std::string& label);
  void wUnloadAll();

  /// Where a cut comes from: the place of its train set in the project, and the id of its mark
  /// there. -1 for an unknown number.
  int wGetTrainSetIndex(int id) const;
  int wGetMarkUniqueId(int id) const;

  /// Functions to call on events; null clears.
  void setCBValidGenStarted(void (*callback)());
  void setCBValidGenUpdate(void (*callback)());
  void setCBValidGenFinished(void (*callback)());

  void onEventValidGenStarted() override;
  void onEventValidGenUpdate() override;
  void onEventValidGenFinished() override;

 private:
  TNVHandlerValidation* native;
  WTNVCallback validGenStarted;
  WTNVCallback validGenUpdate;
  WTNVCallback validGenFinished;
};
