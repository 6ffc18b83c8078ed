#include "TNV_SampleBenchNative/WTNVToolLabelExchange.h"

#include <algorithm>
#include <limits>

#include "boundary/Handles.h"
#include "foundation/PictureHead.h"
#include "tools/LabelNames.h"
#include "tools/TNVToolLabelExchange.h"

namespace {

std::vector<TNVTrainSet*> asTrainSets(const std::vector<WTNVTrainSet>& handles) {
  std::vector<TNVTrainSet*> trainSets = tnv::asPointers(handles);
  std::erase(trainSets, nullptr);
  return trainSets;
}

int asInt(long long number) {
  using Limits = std::numeric_limits<int>;
  return static_cast<int>(std::clamp<long long>(number, Limits::min(), Limits::max()));
}

}  // namespace

WTNVToolLabelExchange::WTNVToolLabelExchange() : native(new TNVToolLabelExchange) {}

WTNVToolLabelExchange::~WTNVToolLabelExchange() {
  delete native;
}

bool WTNVToolLabelExchange::wGetPictureSize(const std::string& path, int& width, int& height) {
  const cv::Size size = tnv::pictureSize(path);
  width = size.width;
  height = size.height;
  return !size.empty();
}

bool WTNVToolLabelExchange::wReadClassNames(const std::string& file,
                                            std::vector<std::string>& names,
                                            std::vector<int>& numbers) {
  auto description = tnv::readDescription(file);
  if (!description) description.emplace();
  names = std::move(description->classes.names);
  numbers.clear();
  for (const long long number : description->classes.numbers)
    numbers.push_back(asInt(number));
  return !names.empty();
}

std::vector<std::string> WTNVToolLabelExchange::wReadDescription(const std::string& file,
                                                                 const std::string& key) {
  return tnv::readYamlTexts(file, key);
}

std::vector<std::string> WTNVToolLabelExchange::wGetAvailableFormats() {
  return TNVToolLabelExchange::getAvailableFormats();
}

bool WTNVToolLabelExchange::wSetFormat(const std::string& name) {
  return native->setFormat(name);
}

std::string WTNVToolLabelExchange::wGetReadFormat() const {
  return native->readFormat;
}

void WTNVToolLabelExchange::wSetNames(const std::string& file) {
  native->reading.names = file;
}

void WTNVToolLabelExchange::wSetPictureDirectory(const std::string& directory) {
  native->reading.pictures = directory;
}

void WTNVToolLabelExchange::wSetBase(int base) {
  native->reading.base = base == 0 ? 0 : 1;
  native->writing.base = native->reading.base;
}

void WTNVToolLabelExchange::wSetClip(bool clip) {
  native->reading.clip = clip;
}

void WTNVToolLabelExchange::wSetCopy(bool copy) {
  native->writing.copy = copy;
}

bool WTNVToolLabelExchange::wRead(const std::string& path) {
  return native->read(path);
}

bool WTNVToolLabelExchange::wReadMarks(const std::vector<WTNVTrainSet>& trainSets,
                                       const std::vector<WTNVDNNClass>& classes) {
  return native->readMarks(asTrainSets(trainSets), tnv::asClasses(classes));
}

int WTNVToolLabelExchange::wAddMarks(const std::vector<WTNVTrainSet>& trainSets,
                                     const std::vector<WTNVDNNClass>& classes) {
  return native->addMarks(asTrainSets(trainSets), tnv::asClasses(classes));
}

void WTNVToolLabelExchange::wProtect(const std::vector<WTNVTrainSet>& trainSets) {
  native->protect(asTrainSets(trainSets));
}

bool WTNVToolLabelExchange::wCanWrite(const std::string& directory) const {
  return native->canWrite(directory);
}

bool WTNVToolLabelExchange::wWrite(const std::string& directory) {
  return native->write(directory);
}

bool WTNVToolLabelExchange::wTryWrite(const std::string& directory) {
  return native->tryWrite(directory);
}

std::vector<std::string> WTNVToolLabelExchange::wGetPicturesLeftOut() const {
  return native->getPicturesLeftOut();
}

void WTNVToolLabelExchange::wProcessStop() {
  native->stopRequested = true;
}

bool WTNVToolLabelExchange::wProcessIsStopped() const {
  return native->stopped;
}

void WTNVToolLabelExchange::setCBUpdate(void (*callback)()) {
  native->onUpdate = callback;
}

std::vector<std::string> WTNVToolLabelExchange::wGetClassNames() const {
  return native->set.classNames;
}

std::vector<std::string> WTNVToolLabelExchange::wGetImagePaths() const {
  return native->getImagePaths();
}

int WTNVToolLabelExchange::wGetFound() const {
  return static_cast<int>(native->getFound());
}

int WTNVToolLabelExchange::wGetRejected() const {
  return static_cast<int>(native->getRejected());
}

int WTNVToolLabelExchange::wGetCut() const {
  return static_cast<int>(native->set.cut);
}

std::map<std::string, int> WTNVToolLabelExchange::wGetReasons() const {
  return native->getReasons();
}

std::vector<std::string> WTNVToolLabelExchange::wGetRejections() const {
  return native->getRejections();
}
