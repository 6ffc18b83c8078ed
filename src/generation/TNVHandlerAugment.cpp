#include "generation/TNVHandlerAugment.h"

#include "TNV_SampleBenchNative/TNVObserver.h"
#include "foundation/Log.h"
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

void fetch(TNVTrainSet* trainSet) {
  if (!trainSet) return;
  if (!trainSet->dataLoaded) trainSet->load();
  if (!trainSet->isImageLoaded()) trainSet->loadImage();
}

void release(TNVTrainSet* trainSet) {
  if (trainSet) trainSet->releaseImage();
}

}  // namespace

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
  stopped = false;
  stopRequested = false;
  notify(&TNVHandlerAugmentObserver::onEventGenerationStarted);
  if (!generation) return refuseStart();
  const RunTrainSets run(*generation, trainSets);
  if (!generation->processBefore()) return refuseStart();
  for (TNVTrainSet* trainSet : trainSets) {
    fetch(trainSet);
    if (stopRequested) break;
    const bool processed = processOne(trainSet, *generation);
    if (processed) notify(&TNVHandlerAugmentObserver::onEventGenerationUpdate);
    release(trainSet);
    if (!processed) return finish(kNoTree);
  }
  if (stopRequested) return finish("TNVHandlerAugment::process: Process should stop!");
  if (generation->processAfter()) return finish("");
  return finish("TNVHandlerAugment::process: Process after failed!");
}

bool TNVHandlerAugment::processOne(TNVTrainSet* trainSet, TNVGeneration& generation) {
  const TNVAugmentSample sample = TNVAugment::setTrainSet(trainSet, dnnClasses);
  if (!rootTask && !sample.image.empty()) return false;
  // A sample without a picture only has its failure reported.
  const TNVAugmentDefault noTask;
  const TNVAugment* task = rootTask.get();
  TNVAugment::processTrainSet(task ? *task : noTask, sample, &generation);
  return true;
}

bool TNVHandlerAugment::finish(const std::string& failure) {
  if (!failure.empty()) tnv::logLine(failure);
  stopped = true;
  notify(&TNVHandlerAugmentObserver::onEventGenerationFinished);
  return failure.empty();
}
