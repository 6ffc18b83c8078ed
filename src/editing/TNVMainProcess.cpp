#include "editing/TNVMainProcess.h"

#include "editing/TNVHandlerImageView.h"
#include "editing/TNVHandlerMark.h"
#include "foundation/Log.h"

namespace {

/// Pictures held when the project keeps no reduced copies to fall back on.
constexpr int kHeldWithoutCache = 10;

}  // namespace

TNVMainProcess::TNVMainProcess(TNVProject* openProject) : project(openProject) {
  if (!project) {
    tnv::logLine("TNVMainProcess::trainSetCount: Project is nullptr!");
    return;
  }
  project->observer = this;
  try {
    createHandlers();
    refreshTrainSets();
    onTrainSetSwitched();
  } catch (...) {
    // A damaged train set, say: the project must not report to what never came to be.
    project->detachObserver();
    throw;
  }
  hndTrainSet->notify(&TNVHandlerTrainSetObserver::onEventProjectOpened);
}

void TNVMainProcess::createHandlers() {
  hndImageView = std::make_unique<TNVHandlerImageView>();
  hndImageView->project = project;
  hndImageView->renderCache = project->cacheRender;
  hndMark = std::make_unique<TNVHandlerMark>();
  hndMark->setProject(project);
  hndMark->cacheValidation = project->cacheValidation;
  hndTrainSet = std::make_unique<TNVHandlerTrainSet>();
  hndTrainSet->mpObserver = this;
  hndTrainSet->maxLoaded = project->cacheImages ? project->cacheImagesCount : kHeldWithoutCache;
  hndTrainSet->cacheImages = project->cacheImages;
  // Last, since the worker reads what stands above.
  hndTrainSet->workerInit();
}

TNVMainProcess::~TNVMainProcess() {
  if (!hndTrainSet) return;
  hndTrainSet->notify(&TNVHandlerTrainSetObserver::onEventProjectClosed);
  // First the worker, which reports to the view.
  hndTrainSet->workerDestroy();
  hndImageView.reset();
  hndMark.reset();
  hndTrainSet.reset();
  // Last, since it lets go of train sets that the handlers may still have looked at.
  if (project && project->observer == this) project->detachObserver();
}

void TNVMainProcess::onImageReady() {
  hndImageView->reloadImage = true;
}

void TNVMainProcess::onTrainSetSwitched() {
  if (!hndTrainSet) return;
  TNVTrainSet* current = hndTrainSet->trainSetCurrent();
  if (!current) return;
  hndImageView->bind(current);
  hndMark->trainSet = current;
}

void TNVMainProcess::refreshTrainSets() {
  hndTrainSet->trainSets = project->trainSetPointers();
  hndTrainSet->trainSetCurrent();
  onTrainSetSwitched();
}

void TNVMainProcess::onProjectUpdated() {
  if (!hndTrainSet) return;
  refreshTrainSets();
  hndTrainSet->notify(&TNVHandlerTrainSetObserver::onEventProjectSaved);
}

void TNVMainProcess::onProjectLoaded() {
  if (!hndTrainSet) return;
  refreshTrainSets();
  onTrainSetSwitched();
}

void TNVMainProcess::onProjectClosed() {
  if (!hndTrainSet) return;
  hndTrainSet->trainSets.clear();
  hndTrainSet->trainSetCurrent();
  onTrainSetSwitched();
  // The train sets go with the project; nothing here may look at them any more.
  hndTrainSet->workerForgetAll();
  hndMark->unbind();
  hndImageView->unbind();
  project = nullptr;
}
