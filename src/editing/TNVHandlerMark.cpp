#include "editing/TNVHandlerMark.h"

#include <algorithm>
#include <exception>
#include <limits>

#include "editing/MarkDesign.h"
#include "editing/TNVAssistGrabCut.h"
#include "foundation/Log.h"
#include "marks/TNVMark.h"
#include "project/TNVDNNClass.h"
#include "project/TNVProject.h"
#include "project/TNVTrainSet.h"

namespace {

std::vector<int> uniqueIndices(const std::vector<TNVDNNClass*>& classes) {
  std::vector<int> indices;
  for (const TNVDNNClass* dnnClass : classes)
    indices.push_back(dnnClass->uniqueIdx);
  return indices;
}

/// Every change of what a mark shows goes with a new tag.
void setFlag(TNVMark& mark, bool TNVMark::*flag, bool value) {
  mark.*flag = value;
  mark.renewChangeTag();
}

/// Whether the mark was hovered otherwise before; only then it gets a new tag.
bool changeHover(TNVMark& mark, bool hovered) {
  if (mark.hovered == hovered) return false;
  setFlag(mark, &TNVMark::hovered, hovered);
  return true;
}

}  // namespace

TNVHandlerMark::TNVHandlerMark() = default;

TNVHandlerMark::~TNVHandlerMark() {
  destroyDesign();
}

void TNVHandlerMark::setProject(TNVProject* newProject) {
  project = newProject;
  if (!project || project->dnnClasses.empty()) return;
  dnnClassesSelected = {project->dnnClasses.front().get()};
  notify(&TNVHandlerMarkObserver::onEventDNNClassChanged);
}

void TNVHandlerMark::unbind() {
  destroyDesign();
  dnnClassesSelected.clear();
  project = nullptr;
  trainSet = nullptr;
}

bool TNVHandlerMark::hasTrainSet(const std::string& operation) const {
  if (trainSet) return true;
  tnv::logLine("TNVHandlerMark::" + operation + ": Current Train Set is nullptr!");
  return false;
}

TNVHandlerMark::Marks TNVHandlerMark::marksOrAll(const Marks& marks) const {
  if (marks.empty()) return trainSet->markPointers();
  Marks given = marks;
  std::erase(given, nullptr);
  return given;
}

TNVHandlerMark::Marks TNVHandlerMark::marksWith(const std::string& operation,
                                                bool TNVMark::*flag) const {
  if (!hasTrainSet(operation)) return {};
  Marks marks = trainSet->markPointers();
  std::erase_if(marks, [&](const TNVMark* mark) { return !(mark->*flag); });
  return marks;
}

unsigned TNVHandlerMark::getMarkCount() const {
  return hasTrainSet("getMarkCount") ? static_cast<unsigned>(trainSet->marks.size()) : 0;
}

TNVHandlerMark::Marks TNVHandlerMark::getAllMarks() const {
  return hasTrainSet("getAllMarks") ? trainSet->markPointers() : Marks();
}

TNVMark* TNVHandlerMark::getMarkWithUniqueId(int id) const {
  if (!trainSet) return nullptr;
  for (const auto& mark : trainSet->marks) {
    if (mark->uniqueId == id) return mark.get();
  }
  return nullptr;
}

TNVMark* TNVHandlerMark::getMarkMouseOver(cv::Point2d point) {
  if (!hasTrainSet("getMarkMouseOver")) return nullptr;
  const cv::Size imageSize = trainSet->getImageSize();
  TNVMark* nearest = nullptr;
  double best = std::numeric_limits<double>::max();
  for (const auto& mark : trainSet->marks) {
    double distance = 0.0;
    if (!mark->isMouseOver(point, imageSize, &distance) || !(best > distance)) continue;
    best = distance;
    nearest = mark.get();
  }
  if (nearest) notify(&TNVHandlerMarkObserver::onEventMarkMouseOver);
  return nearest;
}

void TNVHandlerMark::setMarkHovered(TNVMark* mark, bool hovered) {
  if (!mark || !changeHover(*mark, hovered)) return;
  notify(&TNVHandlerMarkObserver::onEventMarkStateHovered);
}

void TNVHandlerMark::setMarkHoveredOnly(TNVMark* mark) {
  if (!hasTrainSet("setMarkHoveredOnly")) return;
  bool anyChanged = false;
  for (const auto& own : trainSet->marks) {
    anyChanged = changeHover(*own, own.get() == mark) || anyChanged;
  }
  if (anyChanged) notify(&TNVHandlerMarkObserver::onEventMarkStateHovered);
}

void TNVHandlerMark::setAllMarksHovered(bool hovered, const Marks& marks) {
  if (!hasTrainSet("setAllMarksHovered")) return;
  bool anyChanged = false;
  for (TNVMark* mark : marksOrAll(marks)) {
    anyChanged = changeHover(*mark, hovered) || anyChanged;
  }
  if (anyChanged) notify(&TNVHandlerMarkObserver::onEventMarkStateHovered);
}

int TNVHandlerMark::getMarksHoveredCount() const {
  const Marks marks = marksWith("getMarksHoveredCnt", &TNVMark::hovered);
  return trainSet ? static_cast<int>(marks.size()) : -1;
}

TNVHandlerMark::Marks TNVHandlerMark::getMarksHovered() const {
  return marksWith("getMarksHovered", &TNVMark::hovered);
}

void TNVHandlerMark::setMarkSelected(TNVMark* mark, bool selected) {
  if (!mark) return;
  setFlag(*mark, &TNVMark::selected, selected);
  notify(&TNVHandlerMarkObserver::onEventMarkStateSelected);
}

void TNVHandlerMark::setAllMarksSelected(bool selected, const Marks& marks) {
  if (!hasTrainSet("setAllMarksSelected")) return;
  for (TNVMark* mark : marksOrAll(marks)) {
    setFlag(*mark, &TNVMark::selected, selected);
  }
  notify(&TNVHandlerMarkObserver::onEventMarkStateSelected);
}

int TNVHandlerMark::getMarksSelectedCount() const {
  const Marks marks = marksWith("getMarksSelectedCnt", &TNVMark::selected);
  return trainSet ? static_cast<int>(marks.size()) : -1;
}

TNVHandlerMark::Marks TNVHandlerMark::getMarksSelected() const {
  return marksWith("getMarksSelected", &TNVMark::selected);
}

void TNVHandlerMark::setAllMarksPOIVisible(bool visible, const Marks& marks) {
  if (!hasTrainSet("setAllMarksPOIVisible")) return;
  for (TNVMark* mark : marksOrAll(marks)) {
    setFlag(*mark, &TNVMark::poiVisible, visible);
  }
  notify(&TNVHandlerMarkObserver::onEventMarkStatePOIVisible);
}

void TNVHandlerMark::updateMark(TNVMark* mark, cv::Point2d center, cv::Point2d size,
                                const Classes& classes, cv::Size imageSize) {
  if (!mark) return;
  mark->update(center, size, classes, imageSize);
  notify(&TNVHandlerMarkObserver::onEventMarkUpdated);
}

void TNVHandlerMark::updateSelectedMarks(const Classes& classes) {
  if (!hasTrainSet("updateSelectedMarks")) return;
  for (const auto& mark : trainSet->marks) {
    if (mark->selected) mark->classIdx = uniqueIndices(classes);
  }
  notify(&TNVHandlerMarkObserver::onEventMarkUpdated);
}

void TNVHandlerMark::removeSelectedMarks() {
  if (!hasTrainSet("removeSelectedMarks")) return;
  for (TNVMark* mark : trainSet->markPointers()) {
    if (mark->selected) trainSet->removeMark(mark);
  }
  notify(&TNVHandlerMarkObserver::onEventMarkRemoved);
}

void TNVHandlerMark::removeMark(TNVMark* mark) {
  if (!hasTrainSet("removeMark") || !mark) return;
  trainSet->removeMark(mark);
}

void TNVHandlerMark::setPOIPoints(TNVMark* mark, const Points& points) {
  if (!mark) return;
  mark->pois = points;
  mark->renewChangeTag();
  notify(&TNVHandlerMarkObserver::onEventPOIPointsUpdated);
}

void TNVHandlerMark::setPOISize(TNVMark* mark, cv::Point2d size) {
  if (!mark) return;
  mark->poiSize = size;
  mark->renewChangeTag();
  notify(&TNVHandlerMarkObserver::onEventPOISizeUpdated);
}

void TNVHandlerMark::setPOISize(TNVMark* mark, double size) {
  if (!trainSet) {
    tnv::logLine("TNVHandlerMark::setPOISize: TrainSet is nullptr!");
    return;
  }
  if (!mark) return;
  const cv::Size imageSize = trainSet->getImageSize();
  if (imageSize.empty()) return;
  setPOISize(mark, cv::Point2d(size, size * imageSize.width / imageSize.height));
}

void TNVHandlerMark::setDNNClassSelected(const Classes& classes) {
  if (!project) {
    tnv::logLine("TNVHandlerMark::setDNNClass: Project is not set!");
    return;
  }
  dnnClassesSelected = classes;
  notify(&TNVHandlerMarkObserver::onEventDNNClassChanged);
}

void TNVHandlerMark::setAddInstantly(bool instantly) {
  addInstantly = instantly;
  notify(&TNVHandlerMarkObserver::onEventAddInstantlyChanged);
}

void TNVHandlerMark::setMarkForm(const std::string& form) {
  markForm = markForm.getByName(form);
  notify(&TNVHandlerMarkObserver::onEventMarkFormChanged);
}

void TNVHandlerMark::setMarkMode(const std::string& mode) {
  markMode = markMode.getByName(mode);
  notify(&TNVHandlerMarkObserver::onEventMarkModeChanged);
}

void TNVHandlerMark::setAssist(const std::string& name) {
  assist = assist.getByName(name);
  notify(&TNVHandlerMarkObserver::onEventAssistChanged);
}

bool TNVHandlerMark::designMark(const Points& points, const std::string& form,
                                const Classes& classes) {
  if (!trainSet) {
    tnv::logLine("TNVHandlerMark::designMark: Current TrainSet is nullptr!");
    return false;
  }
  const cv::Size imageSize = trainSet->getImageSize();
  if (imageSize.width == 0 || imageSize.height == 0) {
    tnv::logLine("TNVHandlerMark::designMark: TrainSet has no image!");
    return false;
  }
  if (!project) {
    tnv::logLine("TNVHandlerMark::designMark: Current Project is nullptr!");
    return false;
  }
  destroyDesign();
  trainSet->designPoints = points;
  trainSet->designedMark = nullptr;
  markDesigned = tnv::buildMark(form, points, imageSize);
  if (!markDesigned) return false;
  markDesigned->classIdx = uniqueIndices(classes.empty() ? dnnClassesSelected : classes);
  trainSet->designedMark = markDesigned.get();
  designedOn = trainSet;
  notify(&TNVHandlerMarkObserver::onEventMarkDesigned);
  return true;
}

bool TNVHandlerMark::addDesignedMark() {
  if (!markDesigned) {
    tnv::logLine("TNVHandlerMark::addDesignedMark: Could not add mark, no mark designed!");
    return false;
  }
  if (!trainSet) {
    tnv::logLine("TNVHandlerMark::addDesignedMark: Current TrainSet is nullptr!");
    return false;
  }
  if (!project) {
    tnv::logLine("TNVHandlerMark::addDesignedMark: Current Project is nullptr!");
    return false;
  }
  takePOISizeFromProject(*markDesigned);
  trainSet->addMark(*markDesigned);
  trainSet->designedMark = nullptr;
  trainSet->designPoints.clear();
  destroyDesign();
  notify(&TNVHandlerMarkObserver::onEventMarkAdded);
  return true;
}

void TNVHandlerMark::applyAssistDesignMark() {
  if (!trainSet) {
    tnv::logLine("TNVHandlerMark::applyAssistDesignMark: TrainSet is nullptr!");
    return;
  }
  if (assist.name != "GrabCut") return;
  if (!markDesigned) {
    tnv::logLine("TNVHandlerMark::applyAssistDesignMark: No mark designed!");
    return;
  }
  try {
    const Points outline = assistedOutline();
    if (outline.size() <= 1) return;
    markDesigned->fitToPoints(outline, trainSet->getImageSize());
  } catch (const std::exception&) {
    tnv::logLine("TNVHandlerMark::applyAssistDesignMark: Can not apply assist on this mark!");
    return;
  }
  notify(&TNVHandlerMarkObserver::onEventMarkDesigned);
}

TNVHandlerMark::Points TNVHandlerMark::assistedOutline() const {
  const cv::Size imageSize = trainSet->getImageSize();
  const cv::Point2d size = markDesigned->getRelSize(imageSize);
  const cv::Point2d topLeft = markDesigned->center - size * 0.5;
  return TNVAssistGrabCut().apply({topLeft, cv::Size2d(size)}, trainSet->getImage(),
                                  markDesigned->getContour(imageSize));
}

void TNVHandlerMark::applyAssistLastDesignPoint() {
  notify(&TNVHandlerMarkObserver::onEventMarkDesigned);
}

void TNVHandlerMark::takePOISizeFromProject(TNVMark& mark) {
  constexpr int relative = 1;
  constexpr int absolute = 2;
  if (project->poiSizeUse == relative) {
    mark.poiSize = project->poiRelSize;
  } else if (project->poiSizeUse == absolute) {
    const cv::Size imageSize = trainSet->getImageSize();
    if (imageSize.empty()) return;
    mark.poiSize = {project->poiAbsSize.x / imageSize.width,
                    project->poiAbsSize.y / imageSize.height};
  } else {
    return;
  }
  mark.renewChangeTag();
}

void TNVHandlerMark::destroyDesign() {
  if (designedOn && designedOn->designedMark == markDesigned.get()) {
    designedOn->designedMark = nullptr;
  }
  designedOn = nullptr;
  markDesigned.reset();
}
