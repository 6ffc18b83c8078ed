#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "boundary/TNVNotificator.h"

class TNVTrainSet;

/// The main process as the train-set handler sees it.
class TNVHandlerTrainSetMPObserver {
 public:
  /// A picture was loaded that is shown from the cache; arrives on the worker thread.
  virtual void onImageReady() = 0;
  virtual void onTrainSetSwitched() = 0;

 protected:
  ~TNVHandlerTrainSetMPObserver() = default;
};

/// Navigation in the list of all train sets, and the one background thread of a main process, which
/// loads the pictures of visited train sets and gives up those beyond a fixed count.
class TNVHandlerTrainSet : public TNVNotificator {
 public:
  TNVHandlerTrainSet() = default;
  ~TNVHandlerTrainSet();

  void workerInit();

  /// Ends the worker and waits for it.
  void workerDestroy();

  /// The worker looks at none of its train sets any more.
  void workerForgetAll();

  /// Brings `idxCur` into the list, loads the data of the train set there, flags it as current and
  /// queues its picture. Null, with a log line, for an empty list.
  TNVTrainSet* trainSetCurrent();

  TNVTrainSet* setTrainSetForward(unsigned step);
  TNVTrainSet* setTrainSetBackward(unsigned step);

  std::vector<TNVTrainSet*> trainSets;
  int idxCur = 0;
  int idxLast = 0;
  TNVHandlerTrainSetMPObserver* mpObserver = nullptr;
  bool cacheImages = false;
  std::thread worker;
  std::mutex workerMutex;
  std::atomic<bool> workerStop{false};
  std::vector<TNVTrainSet*> taskQueue;
  std::vector<TNVTrainSet*> loadedList;
  std::atomic<TNVTrainSet*> taskTarget{nullptr};
  int maxLoaded = 5;

 private:
  TNVTrainSet* navigateTo(int index);
  void leaveLast();
  void workerAddTask(TNVTrainSet* trainSet);
  void workerRun();
  TNVTrainSet* workerBeginStep();
  void workerLoad(TNVTrainSet& trainSet);
  void workerEvict();
  void workerEndStep();

  /// Whether the worker is between the begin and the end of a step; guarded by `workerMutex`.
  bool workerBusy = false;
  std::condition_variable workerIdle;
};
