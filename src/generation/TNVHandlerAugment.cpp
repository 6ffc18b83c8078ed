#include "generation/TNVHandlerAugment.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "TNV_SampleBenchNative/TNVObserver.h"
#include "foundation/LargePictures.h"
#include "foundation/Log.h"
#include "foundation/OrderedWork.h"
#include "foundation/Steps.h"
#include "foundation/TNVDirectory.h"
#include "foundation/TNVSettings.h"
#include "foundation/XmlStorage.h"
#include "generation/TNVAugment.h"
#include "generation/TNVAugmentDefault.h"
#include "generation/TNVAugmentFilter.h"
#include "generation/TNVAugmentResize.h"
#include "generation/TNVAugmentRotation.h"
#include "generation/TNVGeneration.h"
#include "project/TNVTrainSet.h"

namespace {

using Tasks = std::vector<std::unique_ptr<TNVAugment>>;

// Persisted in the project's settings and in task files.
const std::string kSelectedKey = "Augmentation.Selected";
const std::string kTreeKey = "TaskTree";
const std::string kCountKey = "SubTasks";
const std::string kNameKey = "Name";
const std::string kSaveKey = "Save";
const std::string kTaskPrefix = "Task_";

std::unique_ptr<TNVAugment> makeTask(const std::string& name) {
  if (name == "Default") return std::make_unique<TNVAugmentDefault>();
  if (name == "Resize") return std::make_unique<TNVAugmentResize>();
  if (name == "Rotation") return std::make_unique<TNVAugmentRotation>();
  if (name == "Filter") return std::make_unique<TNVAugmentFilter>();
  return nullptr;
}

Tasks readTasks(const cv::FileNode& node) {
  Tasks tasks;
  const int count = tnv::readInt(tnv::child(node, kCountKey), 0);
  for (const auto& [number, child] : tnv::numberedChildren(node, kTaskPrefix, count)) {
    auto task = makeTask(tnv::readText(tnv::child(child, kNameKey), ""));
    if (!task) continue;
    task->save = tnv::readInt(tnv::child(child, kSaveKey), 0) != 0;
    task->read(child);
    task->subTasks = readTasks(child);
    tasks.push_back(std::move(task));
  }
  return tasks;
}

Tasks readTree(const std::string& path) {
  const cv::FileStorage storage = tnv::openXml(path);
  return storage.isOpened() ? readTasks(storage[kTreeKey]) : Tasks();
}

const std::string kNoTree =
    "TNVHandlerAugment::process: No augmentation is loaded, select one with wSetAugmentation!";
const std::string kStopped = "TNVHandlerAugment::process: Process should stop!";
const std::string kAfterFailed = "TNVHandlerAugment::process: Process after failed!";

/// No Finished event follows: the caller knows from the result.
bool refuseStart() {
  tnv::logLine("TNVHandlerAugment::process: Process before failed!");
  return false;
}

/// Lets the generator know for the time of a run what it must not delete.
class RunTrainSets {
 public:
  RunTrainSets(TNVGeneration& target, const std::vector<TNVTrainSet*>& trainSets)
      : generation(target) {
    generation.runTrainSets = trainSets;
  }
  ~RunTrainSets() { generation.runTrainSets.clear(); }
  RunTrainSets(const RunTrainSets&) = delete;
  RunTrainSets& operator=(const RunTrainSets&) = delete;

 private:
  TNVGeneration& generation;
};

/// The picture of a train set, which is to have record and picture in memory from then on.
cv::Mat fetch(TNVTrainSet* trainSet, tnv::Steps& steps) {
  if (!trainSet) return {};
  if (!trainSet->dataLoaded) trainSet->load();
  const cv::Mat picture = trainSet->readImage();
  steps.add([trainSet, picture] { trainSet->keepImage(picture); });
  return picture;
}

void release(TNVTrainSet* trainSet) {
  if (trainSet) trainSet->releaseImage();
}

/// What a run sends its train sets through.
struct Way {
  const TNVAugment* root;
  const std::vector<TNVDNNClass*>& classes;
  TNVGeneration& generation;
};

/// False when there is a picture, but no tree to send it through.
bool send(const TNVTrainSet* trainSet, const cv::Mat& picture, const Way& way, tnv::Steps& steps) {
  const TNVAugmentSample sample = TNVAugment::setTrainSet(trainSet, picture, way.classes);
  if (!way.root && !sample.image.empty()) return false;
  // A sample without a picture only has its failure reported.
  const TNVAugmentDefault noTask;
  TNVAugment::processTrainSet(way.root ? *way.root : noTask, sample, &way.generation, steps);
  return true;
}

}  // namespace

/// The work on one train set after the other, in two halves: a stop is looked for between them.
class TNVHandlerAugment::Turns {
 public:
  Turns() = default;
  virtual ~Turns() = default;
  Turns(const Turns&) = delete;
  Turns& operator=(const Turns&) = delete;

  /// Brings the next train set into memory.
  virtual void fetchNext() = 0;

  /// Sends it through the tree. False when there is a picture, but no tree.
  virtual bool sendIt() = 0;
};

class TNVHandlerAugment::TurnsAtOnce final : public Turns {
 public:
  TurnsAtOnce(const TNVHandlerAugment& running, const std::vector<TNVTrainSet*>& all,
              TNVGeneration& target)
      : handler(running), trainSets(all), generation(target) {}

  void fetchNext() override {
    trainSet = trainSets[next++];
    picture = fetch(trainSet, steps);
  }

  bool sendIt() override {
    return send(trainSet, std::exchange(picture, {}),
                {handler.rootTask.get(), handler.dnnClasses, generation}, steps);
  }

 private:
  const TNVHandlerAugment& handler;
  const std::vector<TNVTrainSet*>& trainSets;
  TNVGeneration& generation;
  tnv::StepsAtOnce steps;
  std::size_t next = 0;
  TNVTrainSet* trainSet = nullptr;
  cv::Mat picture;
};

class TNVHandlerAugment::TurnsAhead final : public Turns {
 public:
  TurnsAhead(const TNVHandlerAugment& running, const std::vector<TNVTrainSet*>& all,
             TNVGeneration& target, int threads)
      : root(running.rootTask.get()),
        classes(running.dnnClasses),
        trainSets(all),
        generation(target),
        work(all.size(), threads, [this](std::size_t i) { return prepare(trainSets[i]); }) {}

  void fetchNext() override {
    current = work.take();
    current.fetching.replay();
  }

  bool sendIt() override {
    current.sending.replay();
    return current.sent;
  }

 private:
  struct Ahead {
    tnv::StepsForLater fetching;
    tnv::StepsForLater sending;
    bool sent = false;
  };

  Ahead prepare(TNVTrainSet* trainSet) const {
    Ahead ahead;
    cv::Mat picture;
    const bool fetched = ahead.fetching.record([&] { picture = fetch(trainSet, ahead.fetching); });
    if (!fetched) return ahead;
    ahead.sending.record([&] {
      ahead.sent = send(trainSet, picture, {root, classes, generation}, ahead.sending);
    });
    return ahead;
  }

  // As they were at the start: a callback may select another tree.
  const TNVAugment* const root;
  const std::vector<TNVDNNClass*> classes;
  const std::vector<TNVTrainSet*>& trainSets;
  TNVGeneration& generation;
  Ahead current;
  tnv::OrderedWork<Ahead> work;
};

TNVHandlerAugment::TNVHandlerAugment(const std::string& path) : augmentsPath(path) {}

TNVHandlerAugment::~TNVHandlerAugment() = default;

void TNVHandlerAugment::setAugmentation(const std::string& fileName) {
  Tasks tasks = readTree(augmentsPath + fileName);
  if (tasks.size() == 1) {
    if (rootTask) replacedTasks.push_back(std::move(rootTask));
    rootTask = std::move(tasks.front());
  }
  augmentation = fileName;
}

std::vector<std::string> TNVHandlerAugment::getAvailableAugmentations() const {
  std::vector<std::string> names;
  for (const TNVFileInfo& file : TNVDirectory::readFiles(augmentsPath, {"xml"}, false)) {
    names.push_back(file.fileName);
  }
  return names;
}

void TNVHandlerAugment::saveSettings(TNVSettings* settings) const {
  settings->setString(kSelectedKey, augmentation);
}

void TNVHandlerAugment::loadSettings(TNVSettings* settings) {
  setAugmentation(settings->getString(kSelectedKey, "./default.xml"));
}

bool TNVHandlerAugment::process(const std::vector<TNVTrainSet*>& trainSets,
                                TNVGeneration* generation) {
  return run(trainSets, generation,
             [&] { return std::make_unique<TurnsAtOnce>(*this, trainSets, *generation); });
}

bool TNVHandlerAugment::processParallel(const std::vector<TNVTrainSet*>& trainSets,
                                        TNVGeneration* generation, int threads) {
  // A record has no lock for two threads that read it.
  if (tnv::hasRepeats(trainSets)) return process(trainSets, generation);
  return run(trainSets, generation,
             [&] { return std::make_unique<TurnsAhead>(*this, trainSets, *generation, threads); });
}

bool TNVHandlerAugment::run(const std::vector<TNVTrainSet*>& trainSets, TNVGeneration* generation,
                            const MakeTurns& makeTurns) {
  stopped = false;
  stopRequested = false;
  notify(&TNVHandlerAugmentObserver::onEventGenerationStarted);
  if (!generation) return refuseStart();
  const RunTrainSets known(*generation, trainSets);
  const tnv::LargePictures kept;
  if (!generation->processBefore()) return refuseStart();
  const std::string failure = workThrough(trainSets, makeTurns());
  if (!failure.empty()) return finish(failure);
  return finish(generation->processAfter() ? "" : kAfterFailed);
}

std::string TNVHandlerAugment::workThrough(const std::vector<TNVTrainSet*>& trainSets,
                                           std::unique_ptr<Turns> turns) {
  for (TNVTrainSet* trainSet : trainSets) {
    turns->fetchNext();
    if (stopRequested) break;
    const bool sent = turns->sendIt();
    if (sent) notify(&TNVHandlerAugmentObserver::onEventGenerationUpdate);
    release(trainSet);
    if (!sent) return kNoTree;
  }
  return stopRequested ? kStopped : "";
}

bool TNVHandlerAugment::finish(const std::string& failure) {
  if (!failure.empty()) tnv::logLine(failure);
  stopped = true;
  notify(&TNVHandlerAugmentObserver::onEventGenerationFinished);
  return failure.empty();
}
