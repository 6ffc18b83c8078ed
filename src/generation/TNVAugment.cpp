#include "generation/TNVAugment.h"

#include <algorithm>
#include <mutex>

#include "foundation/Log.h"
#include "foundation/Steps.h"
#include "generation/TNVGeneration.h"
#include "marks/TNVContour.h"
#include "marks/TNVMark.h"
#include "project/TNVDNNClass.h"
#include "project/TNVTrainSet.h"

namespace {

const TNVDNNClass* findClass(const std::vector<TNVDNNClass*>& classes, int uniqueIdx) {
  const auto found = std::find_if(classes.begin(), classes.end(), [uniqueIdx](const auto* each) {
    return each->uniqueIdx == uniqueIdx;
  });
  return found == classes.end() ? nullptr : *found;
}

/// The corners of a relative box, in pixels of the picture.
std::vector<cv::Point2d> boxInPixels(cv::Point2d center, cv::Point2d size, cv::Size picture) {
  return TNVContour::rectCorners((center.x - size.x * 0.5) * picture.width,
                                 (center.y - size.y * 0.5) * picture.height, picture.width * size.x,
                                 picture.height * size.y);
}

void addEntries(TNVAugmentSample& sample, const TNVMark& mark, const TNVDNNClass& dnnClass) {
  const cv::Size picture = sample.image.size();
  const auto add = [&](cv::Point2d center, cv::Point2d size, const char* gen) {
    sample.entries.push_back(
        {boxInPixels(center, size, picture), dnnClass.dnnId, gen, mark.getTypeName(false)});
  };
  add(mark.center, mark.getRelSize(picture), "ROI");
  for (const cv::Point2d& poi : mark.pois)
    add(poi, mark.poiSize, "POI");
}

cv::Mat sharedImage(TNVTrainSet& trainSet) {
  const std::lock_guard lock(trainSet.mutex);
  return trainSet.image;
}

}  // namespace

TNVAugmentSample TNVAugment::setTrainSet(TNVTrainSet* trainSet,
                                         const std::vector<TNVDNNClass*>& classes) {
  return setTrainSet(trainSet, trainSet ? sharedImage(*trainSet) : cv::Mat(), classes);
}

TNVAugmentSample TNVAugment::setTrainSet(const TNVTrainSet* trainSet, const cv::Mat& picture,
                                         const std::vector<TNVDNNClass*>& classes) {
  if (!trainSet) {
    tnv::logLine("TNVAugment::setTrainSet: TrainSet is nullptr!");
    return {};
  }
  TNVAugmentSample sample;
  sample.image = picture;
  if (sample.image.empty()) {
    tnv::logLine("TNVAugment::setTrainSet: TrainSet image is empty!");
    return {};
  }
  sample.special = trainSet->useSpecialTest;
  for (const auto& mark : trainSet->marks) {
    if (mark->classIdx.empty()) continue;
    if (const TNVDNNClass* dnnClass = findClass(classes, mark->classIdx.front())) {
      addEntries(sample, *mark, *dnnClass);
    } else {
      tnv::logLine("TNVAugment::setTrainSet: Warning, DNN Class not found!");
    }
  }
  return sample;
}

bool TNVAugment::processTrainSet(const TNVAugment& task, const TNVAugmentSample& sample,
                                 TNVGeneration* generation) {
  tnv::StepsAtOnce steps;
  return processTrainSet(task, sample, generation, steps);
}

bool TNVAugment::processTrainSet(const TNVAugment& task, const TNVAugmentSample& sample,
                                 TNVGeneration* generation, tnv::Steps& steps) {
  if (sample.image.empty()) {
    tnv::logLine("TNVAugment::processTrainSet: Can not process, TrainSet ist empty!");
    return false;
  }
  if (!generation) {
    tnv::logLine("TNVAugment::processTrainSet: Can not process, Generation is nullptr!");
    return false;
  }
  const TNVAugmentSample result = task.process(sample);
  if (task.save) generation->prepare(result, steps);
  for (const auto& subTask : task.subTasks)
    processTrainSet(*subTask, result, generation, steps);
  return true;
}
