#include "TNV_SampleBenchNative/WTNVMainProcess.h"

#include "TNV_SampleBenchNative/WTNVProject.h"
#include "editing/TNVHandlerImageView.h"
#include "editing/TNVHandlerMark.h"
#include "editing/TNVMainProcess.h"

WTNVMainProcess::WTNVMainProcess(WTNVProject* project, WTNVUser*)
    : native(new TNVMainProcess(project ? project->getNativeProject() : nullptr)) {}

WTNVMainProcess& WTNVMainProcess::operator=(const WTNVMainProcess& other) = default;

WTNVMainProcess::~WTNVMainProcess() {
  delete native;
}

WTNVHandlerTrainSet WTNVMainProcess::getHndTrainSet() {
  return WTNVHandlerTrainSet(native->hndTrainSet.get());
}

WTNVHandlerMark WTNVMainProcess::getHndMark() {
  return WTNVHandlerMark(native->hndMark.get());
}

WTNVHandlerImageView WTNVMainProcess::getHndImageView() {
  return WTNVHandlerImageView(native->hndImageView.get());
}
