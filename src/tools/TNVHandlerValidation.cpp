#include "tools/TNVHandlerValidation.h"

#include <algorithm>
#include <cstdio>

#include "TNV_SampleBenchNative/TNVObserver.h"
#include "foundation/LargePictures.h"
#include "foundation/Log.h"
#include "foundation/OrderedWork.h"
#include "foundation/PictureFile.h"
#include "foundation/Steps.h"
#include "foundation/TNVDirectory.h"
#include "generation/RunGuard.h"
#include "marks/TNVMark.h"
#include "project/TNVDNNClass.h"
#include "project/TNVTrainSet.h"

namespace {

std::string labelOf(const TNVDNNClass& dnnClass) {
  return dnnClass.name + " (" + std::to_string(dnnClass.dnnId) + ")";
}

/// The picture, which the train set gives up.
cv::Mat takePicture(TNVTrainSet& trainSet, tnv::Steps& steps) {
  if (!trainSet.dataLoaded) trainSet.load();
  const cv::Mat picture = trainSet.readImage();
  steps.add([&trainSet] { trainSet.releaseImage(); });
  return picture;
}

void logNotCut(const TNVMark& mark, const TNVTrainSet& trainSet) {
  tnv::logLine("TNVHandlerValidation::createDNNImages: Could not cut mark " +
               std::to_string(mark.uniqueId) + " out of image '" + trainSet.imagePath + "'!");
}

}  // namespace

TNVHandlerValidation::TNVHandlerValidation(const std::string& directory)
    : validationDirectory(directory) {}

bool TNVHandlerValidation::createDNNImages() {
  return run([this] {
    tnv::StepsAtOnce steps;
    int next = 0;
    cutWhileNotStopped([&] { cutTrainSet(next++, steps); });
  });
}

bool TNVHandlerValidation::createDNNImagesParallel(int threads) {
  // A record has no lock for two threads that read it.
  if (tnv::hasRepeats(trainSets)) return createDNNImages();
  return run([this, threads] {
    tnv::OrderedWork<tnv::StepsForLater> work(trainSets.size(), threads, [this](std::size_t i) {
      tnv::StepsForLater steps;
      steps.record([&] { cutTrainSet(static_cast<int>(i), steps); });
      return steps;
    });
    cutWhileNotStopped([&] { work.take().replay(); });
  });
}

void TNVHandlerValidation::cutWhileNotStopped(const Turn& turn) {
  for (std::size_t i = 0; i < trainSets.size() && !stopRequested; ++i)
    turn();
}

bool TNVHandlerValidation::run(const std::function<void()>& cutAll) {
  stopped = false;
  stopRequested = false;
  if (trainSets.empty()) {
    tnv::logLine("TNVHandlerValidation::createDNNImages: No TrainSets!");
    return false;
  }
  if (!renewDirectory()) {
    tnv::logLine("TNVHandlerValidation::createDNNImages: Can not create validation directory at '" +
                 validationDirectory + "'!");
    return false;
  }
  notify(&TNVHandlerValidationObserver::onEventValidGenStarted);
  dnnImages.clear();
  images.clear();
  imageInfo.clear();
  const tnv::LargePictures kept;
  cutAll();
  stopped = true;
  notify(&TNVHandlerValidationObserver::onEventValidGenFinished);
  return true;
}

bool TNVHandlerValidation::renewDirectory() const {
  if (validationDirectory.empty()) return false;
  if (TNVDirectory::exists(validationDirectory)) {
    // Cuts may have been taken into the project as pictures of their own.
    tnv::RunGuard guard(trainSets);
    for (const std::string& path : keptPaths)
      guard.protectExisting(path, "the directory '" + path + "'");
    const std::string reason = guard.whyToKeep(validationDirectory);
    if (!reason.empty()) {
      tnv::logLine("TNVHandlerValidation::createDNNImages: Directory '" + validationDirectory +
                   "' is kept, " + reason + "!");
      return false;
    }
    TNVDirectory::remove(validationDirectory);
  }
  TNVDirectory::createDirectory(validationDirectory);
  return TNVDirectory::exists(validationDirectory);
}

void TNVHandlerValidation::cutTrainSet(int index, tnv::Steps& steps) {
  TNVTrainSet& trainSet = *trainSets[static_cast<std::size_t>(index)];
  const cv::Mat picture = takePicture(trainSet, steps);
  if (picture.empty()) {
    tnv::logLine("TNVHandlerValidation::createDNNImages: Could not load image '" +
                 trainSet.imagePath + "'!");
    return;
  }
  // Whoever places the cuts on their picture asks for its size, which would read it once more.
  steps.add([&trainSet, size = picture.size()] {
    trainSet.imageWidth = size.width;
    trainSet.imageHeight = size.height;
  });
  for (const auto& mark : trainSet.marks)
    cutMark(*mark, picture, index, steps);
  steps.add([this] { notify(&TNVHandlerValidationObserver::onEventValidGenUpdate); });
}

void TNVHandlerValidation::cutMark(const TNVMark& mark, const cv::Mat& picture, int trainSetIndex,
                                   tnv::Steps& steps) {
  const TNVDNNClass* dnnClass = classOf(mark);
  if (!dnnClass) return;
  const cv::Mat cut = cutOf(mark, picture, trainSetIndex);
  if (cut.empty()) return;
  const auto bytes = tnv::encodePicture(imagePath(0), cut);
  steps.add([this, bytes, &mark, label = labelOf(*dnnClass), trainSetIndex] {
    const bool added = addCut(bytes, label, {trainSetIndex, mark.uniqueId});
    if (!added) logNotCut(mark, *trainSets[static_cast<std::size_t>(trainSetIndex)]);
  });
}

bool TNVHandlerValidation::addCut(const tnv::PictureBytes& bytes, const std::string& label,
                                  const ImageInfo& info) {
  const auto id = static_cast<int>(imageInfo.size());
  // A cut may have more columns or rows than the format takes.
  if (!tnv::writePicture(imagePath(id), bytes)) return false;
  dnnImages[label].push_back(id);
  imageInfo[id] = info;
  return true;
}

cv::Mat TNVHandlerValidation::cutOf(const TNVMark& mark, const cv::Mat& picture,
                                    int trainSetIndex) const {
  try {
    return mark.getROIImage(picture);
  } catch (const cv::Exception&) {
    // One damaged mark is no reason to show none of the others.
    logNotCut(mark, *trainSets[static_cast<std::size_t>(trainSetIndex)]);
    return {};
  }
}

const TNVDNNClass* TNVHandlerValidation::classOf(const TNVMark& mark) const {
  if (mark.classIdx.empty()) return nullptr;
  const auto place = std::find_if(
      dnnClasses.begin(), dnnClasses.end(),
      [&](const TNVDNNClass* each) { return each->uniqueIdx == mark.classIdx.front(); });
  return place == dnnClasses.end() ? nullptr : *place;
}

std::string TNVHandlerValidation::imagePath(int id) const {
  return validationDirectory + std::to_string(id) + ".jpg";
}

std::vector<std::string> TNVHandlerValidation::getDNNClasses() const {
  std::vector<std::string> labels;
  for (const auto& [label, ids] : dnnImages)
    labels.push_back(label);
  return labels;
}

std::vector<int> TNVHandlerValidation::getDNNImageIndices(const std::string& label) const {
  const auto place = dnnImages.find(label);
  return place == dnnImages.end() ? std::vector<int>() : place->second;
}

cv::Mat TNVHandlerValidation::loadImage(int id) {
  const auto held = images.find(id);
  if (held != images.end()) return held->second;
  const cv::Mat cut = tnv::readPicture(imagePath(id));
  images[id] = cut;
  return cut;
}

void TNVHandlerValidation::unloadImagesOfDNN(const std::string& label) {
  for (const int id : getDNNImageIndices(label))
    images.erase(id);
}

int TNVHandlerValidation::getTrainSetIndex(int id) const {
  const auto place = imageInfo.find(id);
  return place == imageInfo.end() ? -1 : place->second.trainSetIndex;
}

int TNVHandlerValidation::getMarkUniqueId(int id) const {
  const auto place = imageInfo.find(id);
  return place == imageInfo.end() ? -1 : place->second.markUniqueId;
}
