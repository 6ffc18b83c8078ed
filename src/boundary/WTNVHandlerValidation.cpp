#include "TNV_SampleBenchNative/WTNVHandlerValidation.h"

#include "boundary/PictureHandOff.h"
#include "tools/TNVHandlerValidation.h"

WTNVHandlerValidation::WTNVHandlerValidation(TNVHandlerValidation* handler) : native(handler) {
  native->addObserver(this);
}

WTNVHandlerValidation::WTNVHandlerValidation(const WTNVHandlerValidation& other)
    : TNVHandlerValidationObserver(other), native(other.native) {
  native->addObserver(this);
}

WTNVHandlerValidation& WTNVHandlerValidation::operator=(const WTNVHandlerValidation& other) =
    default;

WTNVHandlerValidation::~WTNVHandlerValidation() {
  native->removeObserver(this);
}

bool WTNVHandlerValidation::wProcessGeneration() {
  return native->createDNNImages();
}

bool WTNVHandlerValidation::wProcessGenerationParallel(int threads) {
  return native->createDNNImagesParallel(threads);
}

void WTNVHandlerValidation::wProcessStop() {
  native->stopRequested = true;
}

bool WTNVHandlerValidation::wProcessIsStopped() const {
  return native->stopped;
}

std::vector<std::string> WTNVHandlerValidation::wGetDNNClasses() const {
  return native->getDNNClasses();
}

std::vector<int> WTNVHandlerValidation::wGetDNNImageIndices(const std::string& label) const {
  return native->getDNNImageIndices(label);
}

void WTNVHandlerValidation::wLoadImage(int id, unsigned char** data, int* width, int* height,
                                       int* channels) {
  tnv::handOutPicture(native->loadImage(id), data, width, height, channels);
}

void WTNVHandlerValidation::wUnloadImage(int id) {
  native->images.erase(id);
}

void WTNVHandlerValidation::wUnloadImagesOfDNN(const std::string& label) {
  native->unloadImagesOfDNN(label);
}

void WTNVHandlerValidation::wUnloadAll() {
  native->images.clear();
}

int WTNVHandlerValidation::wGetTrainSetIndex(int id) const {
  return native->getTrainSetIndex(id);
}

int WTNVHandlerValidation::wGetMarkUniqueId(int id) const {
  return native->getMarkUniqueId(id);
}

void WTNVHandlerValidation::setCBValidGenStarted(void (*callback)()) {
  validGenStarted.set(callback);
}

void WTNVHandlerValidation::setCBValidGenUpdate(void (*callback)()) {
  validGenUpdate.set(callback);
}

void WTNVHandlerValidation::setCBValidGenFinished(void (*callback)()) {
  validGenFinished.set(callback);
}

void WTNVHandlerValidation::onEventValidGenStarted() {
  validGenStarted.call();
}

void WTNVHandlerValidation::onEventValidGenUpdate() {
  validGenUpdate.call();
}

void WTNVHandlerValidation::onEventValidGenFinished() {
  validGenFinished.call();
}
