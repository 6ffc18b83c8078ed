#include "editing/TNVHandlerTrainSet.h"

#include <algorithm>
#include <chrono>

#include "foundation/Log.h"
#include "project/TNVTrainSet.h"

namespace {

constexpr std::chrono::milliseconds kWorkerPeriod{100};

}  // namespace

TNVHandlerTrainSet::~TNVHandlerTrainSet() {
  workerDestroy();
}

TNVTrainSet* TNVHandlerTrainSet::trainSetCurrent() {
  if (trainSets.empty()) {
    tnv::logLine("TNVMainProcess::trainSetCurrent: Project has no trainsets!");
    return nullptr;
  }
  const int last = static_cast<int>(trainSets.size()) - 1;
  if (idxCur != idxLast) {
    idxCur = std::clamp(idxCur, 0, last);
    leaveLast();
  }
  // A list that became shorter without navigation ends before the index.
  TNVTrainSet* current = trainSets[static_cast<std::size_t>(std::clamp(idxCur, 0, last))];
  if (!current->dataLoaded) current->load();
  current->changed = true;
  current->current = true;
  workerAddTask(current);
  idxLast = idxCur;
  return current;
}

void TNVHandlerTrainSet::leaveLast() {
  if (idxLast < 0 || static_cast<std::size_t>(idxLast) >= trainSets.size()) return;
  TNVTrainSet& left = *trainSets[static_cast<std::size_t>(idxLast)];
  left.changed = true;
  left.current = false;
  left.designedMark = nullptr;
  left.designPoints.clear();
}

TNVTrainSet* TNVHandlerTrainSet::setTrainSetForward(unsigned step) {
  return navigateTo(static_cast<int>(static_cast<unsigned>(idxCur) + step));
}

TNVTrainSet* TNVHandlerTrainSet::setTrainSetBackward(unsigned step) {
  return navigateTo(static_cast<int>(static_cast<unsigned>(idxCur) - step));
}

TNVTrainSet* TNVHandlerTrainSet::navigateTo(int index) {
  idxCur = index;
  TNVTrainSet* current = trainSetCurrent();
  mpObserver->onTrainSetSwitched();
  notify(&TNVHandlerTrainSetObserver::onEventTrainSetChanged);
  return current;
}

void TNVHandlerTrainSet::workerInit() {
  if (worker.joinable()) {
    tnv::logLine("TNVHandlerTrainSet::workerInit: Worker Thread is not null!");
    return;
  }
  workerStop = false;
  worker = std::thread([this] { workerRun(); });
}

void TNVHandlerTrainSet::workerDestroy() {
  if (!worker.joinable()) return;
  workerStop = true;
  worker.join();
  tnv::logLine("Worker destroyed");
}

void TNVHandlerTrainSet::workerForgetAll() {
  std::unique_lock lock(workerMutex);
  taskQueue.clear();
  workerIdle.wait(lock, [this] { return !workerBusy; });
  loadedList.clear();
  taskTarget = nullptr;
}

void TNVHandlerTrainSet::workerAddTask(TNVTrainSet* trainSet) {
  if (!trainSet) {
    tnv::logLine("TNVHandlerTrainSet::workerAddTask: Cannot add trainset, is nullptr!");
    return;
  }
  const std::lock_guard lock(workerMutex);
  const auto place = std::find(taskQueue.begin(), taskQueue.end(), trainSet);
  if (place == taskQueue.begin() && place != taskQueue.end()) return;
  if (place != taskQueue.end()) taskQueue.erase(place);
  taskQueue.insert(taskQueue.begin(), trainSet);
  taskTarget = trainSet;
}

void TNVHandlerTrainSet::workerRun() {
  while (!workerStop) {
    std::this_thread::sleep_for(kWorkerPeriod);
    TNVTrainSet* task = workerBeginStep();
    if (task && !task->isImageLoaded()) workerLoad(*task);
    workerEvict();
    workerEndStep();
  }
}

TNVTrainSet* TNVHandlerTrainSet::workerBeginStep() {
  const std::lock_guard lock(workerMutex);
  workerBusy = true;
  if (taskQueue.empty()) return nullptr;
  TNVTrainSet* task = taskQueue.front();
  taskQueue.erase(taskQueue.begin());
  return task;
}

void TNVHandlerTrainSet::workerLoad(TNVTrainSet& trainSet) {
  try {
    trainSet.loadImage();
  } catch (...) {
    trainSet.setUnreadable();
  }
  loadedList.insert(loadedList.begin(), &trainSet);
  if (&trainSet != taskTarget || !cacheImages) return;
  mpObserver->onImageReady();
  notify(&TNVHandlerTrainSetObserver::onEventImageLoaded);
}

void TNVHandlerTrainSet::workerEvict() {
  const auto held = static_cast<std::size_t>(std::max(maxLoaded, 0));
  for (; loadedList.size() > held; loadedList.pop_back())
    loadedList.back()->releaseImage();
}

void TNVHandlerTrainSet::workerEndStep() {
  const std::lock_guard lock(workerMutex);
  workerBusy = false;
  workerIdle.notify_all();
}
