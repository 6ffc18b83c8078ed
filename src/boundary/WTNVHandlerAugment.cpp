#include "TNV_SampleBenchNative/WTNVHandlerAugment.h"

#include "generation/TNVHandlerAugment.h"

namespace {

std::vector<TNVTrainSet*> nativesOf(const std::vector<WTNVTrainSet>& trainSets) {
  std::vector<TNVTrainSet*> natives;
  for (const WTNVTrainSet& trainSet : trainSets)
    natives.push_back(trainSet.getNativeTrainSet());
  return natives;
}

}  // namespace

WTNVHandlerAugment::WTNVHandlerAugment(TNVHandlerAugment* handler) : native(handler) {
  native->addObserver(this);
}

WTNVHandlerAugment::WTNVHandlerAugment(const WTNVHandlerAugment& other)
    : TNVHandlerAugmentObserver(other), native(other.native) {
  native->addObserver(this);
}

WTNVHandlerAugment& WTNVHandlerAugment::operator=(const WTNVHandlerAugment& other) = default;

WTNVHandlerAugment::~WTNVHandlerAugment() {
  native->removeObserver(this);
}

bool WTNVHandlerAugment::wProcess(const std::vector<WTNVTrainSet>& trainSets,
                                  WTNVGeneration generation) {
  return native->process(nativesOf(trainSets), generation.getNativeGeneration());
}

bool WTNVHandlerAugment::wProcessParallel(const std::vector<WTNVTrainSet>& trainSets,
                                          WTNVGeneration generation, int threads) {
  return native->processParallel(nativesOf(trainSets), generation.getNativeGeneration(), threads);
}

void WTNVHandlerAugment::wProcessStop() {
  native->stopRequested = true;
}

bool WTNVHandlerAugment::wProcessIsStopped() const {
  return native->stopped;
}

std::vector<std::string> WTNVHandlerAugment::wGetAvailableAugmentations() const {
  return native->getAvailableAugmentations();
}

void WTNVHandlerAugment::wSetAugmentation(const std::string& fileName) {
  native->setAugmentation(fileName);
}

std::string WTNVHandlerAugment::wGetAugmentation() const {
  return native->augmentation;
}

void WTNVHandlerAugment::setCBGenerationStarted(void (*callback)()) {
  generationStarted.set(callback);
}

void WTNVHandlerAugment::setCBGenerationUpdate(void (*callback)()) {
  generationUpdate.set(callback);
}

void WTNVHandlerAugment::setCBGenerationFinished(void (*callback)()) {
  generationFinished.set(callback);
}

void WTNVHandlerAugment::onEventGenerationStarted() {
  generationStarted.call();
}

void WTNVHandlerAugment::onEventGenerationUpdate() {
  generationUpdate.call();
}

void WTNVHandlerAugment::onEventGenerationFinished() {
  generationFinished.call();
}
