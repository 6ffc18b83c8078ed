#include "TNV_SampleBenchNative/WTNVTrainSet.h"

#include "boundary/Handles.h"
#include "marks/TNVMark.h"
#include "project/TNVDNNClass.h"
#include "project/TNVTrainSet.h"
#include "project/TNVWorkflow.h"

WTNVTrainSet::WTNVTrainSet() : native(nullptr) {}

WTNVTrainSet::WTNVTrainSet(TNVTrainSet* trainSet) : native(trainSet) {}

WTNVTrainSet::WTNVTrainSet(const WTNVTrainSet& other) = default;

WTNVTrainSet& WTNVTrainSet::operator=(const WTNVTrainSet& other) = default;

WTNVTrainSet::~WTNVTrainSet() {
  native = nullptr;
}

TNVTrainSet* WTNVTrainSet::getNativeTrainSet() const {
  return native;
}

std::string WTNVTrainSet::getImagePath() const {
  return native->imagePath;
}

std::string WTNVTrainSet::wGetDataPath() const {
  return native->dataPath;
}

int WTNVTrainSet::getMarkCount() const {
  return static_cast<int>(native->marks.size());
}

std::vector<WTNVMark> WTNVTrainSet::wGetMarks() const {
  return tnv::asHandles<WTNVMark>(native->markPointers());
}

WTNVWorkflow WTNVTrainSet::wGetWorkflow(const std::vector<WTNVWorkflow>& workflows) const {
  if (!native->dataLoaded) return WTNVWorkflow();
  for (const WTNVWorkflow& workflow : workflows) {
    if (workflow.isValid() && workflow.getNativeWorkflow()->uniqueIdx == native->workflow)
      return workflow;
  }
  return WTNVWorkflow();
}

void WTNVTrainSet::getImageSize(int& width, int& height) const {
  const cv::Size size = native->getImageSize();
  width = size.width;
  height = size.height;
}

int WTNVTrainSet::wReplaceClass(const WTNVDNNClass& from, const WTNVDNNClass& to) const {
  return native->replaceClass(from.getNativeDNNClass()->uniqueIdx,
                              to.getNativeDNNClass()->uniqueIdx);
}

int WTNVTrainSet::wRemoveClass(const WTNVDNNClass& dnnClass) const {
  return native->removeClass(dnnClass.getNativeDNNClass()->uniqueIdx);
}

void WTNVTrainSet::wGetImageCacheSize(int& width, int& height) const {
  const cv::Size size = native->imageCacheSize;
  width = size.width;
  height = size.height;
}

bool WTNVTrainSet::wLoadData() const {
  if (!native->dataLoaded) native->load();
  return native->dataLoaded;
}
