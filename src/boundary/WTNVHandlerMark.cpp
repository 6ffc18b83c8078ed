#include "TNV_SampleBenchNative/WTNVHandlerMark.h"

#include "boundary/Handles.h"
#include "editing/MarkDesign.h"
#include "editing/TNVHandlerMark.h"

WTNVHandlerMark::WTNVHandlerMark(TNVHandlerMark* handler) : native(handler) {
  native->addObserver(this);
}

WTNVHandlerMark::WTNVHandlerMark(const WTNVHandlerMark& other)
    : TNVHandlerMarkObserver(other), native(other.native) {
  native->addObserver(this);
}

WTNVHandlerMark& WTNVHandlerMark::operator=(const WTNVHandlerMark& other) {
  native = other.native;
  markAdded = other.markAdded;
  markDesigned = other.markDesigned;
  dnnClassChanged = other.dnnClassChanged;
  addInstantlyChanged = other.addInstantlyChanged;
  markFormChanged = other.markFormChanged;
  markModeChanged = other.markModeChanged;
  markMouseOver = other.markMouseOver;
  markStateHovered = other.markStateHovered;
  markStateSelected = other.markStateSelected;
  markStatePOIVisible = other.markStatePOIVisible;
  markUpdated = other.markUpdated;
  markRemoved = other.markRemoved;
  poiPointsUpdated = other.poiPointsUpdated;
  poiSizeUpdated = other.poiSizeUpdated;
  assistChanged = other.assistChanged;
  return *this;
}

WTNVHandlerMark::~WTNVHandlerMark() {
  native->removeObserver(this);
}

unsigned int WTNVHandlerMark::getMarkCount() const {
  return native->getMarkCount();
}

std::vector<WTNVMark> WTNVHandlerMark::getAllMarks() const {
  return tnv::asHandles<WTNVMark>(native->getAllMarks());
}

WTNVMark WTNVHandlerMark::getMarkWithUniqueId(int id) const {
  return WTNVMark(native->getMarkWithUniqueId(id));
}

WTNVMark WTNVHandlerMark::getMarkMouseOver(double x, double y) {
  return WTNVMark(native->getMarkMouseOver({x, y}));
}

void WTNVHandlerMark::wSetMarkHovered(WTNVMark mark, bool hovered) {
  native->setMarkHovered(mark.getNativeMark(), hovered);
}

void WTNVHandlerMark::wSetMarkHoveredOnly(WTNVMark mark) {
  native->setMarkHoveredOnly(mark.getNativeMark());
}

void WTNVHandlerMark::wSetAllMarksHovered(bool hovered, std::vector<WTNVMark> marks) {
  native->setAllMarksHovered(hovered, tnv::asPointers(marks));
}

int WTNVHandlerMark::wGetMarksHoveredCnt() const {
  return native->getMarksHoveredCount();
}

std::vector<WTNVMark> WTNVHandlerMark::wGetMarksHovered() const {
  return tnv::asHandles<WTNVMark>(native->getMarksHovered());
}

void WTNVHandlerMark::setMarkSelected(WTNVMark mark, bool selected) {
  native->setMarkSelected(mark.getNativeMark(), selected);
}

void WTNVHandlerMark::setAllMarksSelected(bool selected, std::vector<WTNVMark> marks) {
  native->setAllMarksSelected(selected, tnv::asPointers(marks));
}

int WTNVHandlerMark::getMarksSelectedCnt() const {
  return native->getMarksSelectedCount();
}

std::vector<WTNVMark> WTNVHandlerMark::getMarksSelected() const {
  return tnv::asHandles<WTNVMark>(native->getMarksSelected());
}

void WTNVHandlerMark::setAllMarksPOIVisible(bool visible, std::vector<WTNVMark> marks) {
  native->setAllMarksPOIVisible(visible, tnv::asPointers(marks));
}

void WTNVHandlerMark::updateMark(WTNVMark mark, double centerX, double centerY, double width,
                                 double height, std::vector<WTNVDNNClass> classes, int imageWidth,
                                 int imageHeight) {
  native->updateMark(mark.getNativeMark(), {centerX, centerY}, {width, height},
                     tnv::asClasses(classes), {imageWidth, imageHeight});
}

void WTNVHandlerMark::updateSelectedMarks(std::vector<WTNVDNNClass> classes) {
  native->updateSelectedMarks(tnv::asClasses(classes));
}

void WTNVHandlerMark::removeSelectedMarks() {
  native->removeSelectedMarks();
}

void WTNVHandlerMark::removeMark(WTNVMark mark) {
  native->removeMark(mark.getNativeMark());
}

void WTNVHandlerMark::wSetPOIPoints(WTNVMark mark, const std::vector<std::vector<double>>& points) {
  native->setPOIPoints(mark.getNativeMark(), tnv::asPoints(points));
}

void WTNVHandlerMark::wSetPOISize(WTNVMark mark, double sizeX, double sizeY) {
  native->setPOISize(mark.getNativeMark(), cv::Point2d(sizeX, sizeY));
}

void WTNVHandlerMark::wSetPOISize(WTNVMark mark, double size) {
  native->setPOISize(mark.getNativeMark(), size);
}

void WTNVHandlerMark::wSetDNNClassSelected(std::vector<WTNVDNNClass> classes) {
  native->setDNNClassSelected(tnv::asClasses(classes));
}

std::vector<WTNVDNNClass> WTNVHandlerMark::wGetDNNClassSelected() const {
  return tnv::asHandles<WTNVDNNClass>(native->dnnClassesSelected);
}

void WTNVHandlerMark::setAddInstantly(bool instantly) {
  native->setAddInstantly(instantly);
}

bool WTNVHandlerMark::getAddInstantly() const {
  return native->addInstantly;
}

std::vector<std::string> WTNVHandlerMark::getAvailableMarkForms() const {
  return native->markForm.getNames();
}

void WTNVHandlerMark::setMarkForm(const std::string& form) {
  native->setMarkForm(form);
}

std::string WTNVHandlerMark::getMarkForm() const {
  return native->markForm.name;
}

std::vector<std::string> WTNVHandlerMark::wGetAvailableMarkModes() const {
  return native->markMode.getNames();
}

void WTNVHandlerMark::wSetMarkMode(const std::string& mode) {
  native->setMarkMode(mode);
}

std::string WTNVHandlerMark::wGetMarkMode() const {
  return native->markMode.name;
}

std::vector<std::string> WTNVHandlerMark::wGetAvailableAssists() const {
  return native->assist.getNames();
}

void WTNVHandlerMark::wSetAssist(const std::string& assist) {
  native->setAssist(assist);
}

std::string WTNVHandlerMark::wGetAssist() const {
  return native->assist.name;
}

bool WTNVHandlerMark::designMark(const std::vector<std::vector<double>>& points,
                                 const std::string& form,
                                 const std::vector<WTNVDNNClass>& classes) {
  return native->designMark(tnv::asPoints(points), form, tnv::asClasses(classes));
}

bool WTNVHandlerMark::addDesignedMark() {
  return native->addDesignedMark();
}

void WTNVHandlerMark::wApplyAssistDesignMark() {
  native->applyAssistDesignMark();
}

void WTNVHandlerMark::wApplyAssistLastDesignPoint() {
  native->applyAssistLastDesignPoint();
}

int WTNVHandlerMark::getMarkMinConstructionPoints(const std::string& form) const {
  return tnv::minConstructionPoints(form);
}

int WTNVHandlerMark::getMarkMaxConstructionPoints(const std::string& form) const {
  return tnv::maxConstructionPoints(form);
}

void WTNVHandlerMark::setCBMarkAdded(void (*callback)()) {
  markAdded.set(callback);
}
void WTNVHandlerMark::setCBMarkDesigned(void (*callback)()) {
  markDesigned.set(callback);
}
void WTNVHandlerMark::setCBDNNClassChanged(void (*callback)()) {
  dnnClassChanged.set(callback);
}
void WTNVHandlerMark::setCBAddInstantlyChanged(void (*callback)()) {
  addInstantlyChanged.set(callback);
}
void WTNVHandlerMark::setCBMarkFormChanged(void (*callback)()) {
  markFormChanged.set(callback);
}
void WTNVHandlerMark::setCBMarkModeChanged(void (*callback)()) {
  markModeChanged.set(callback);
}
void WTNVHandlerMark::setCBMarkMouseOver(void (*callback)()) {
  markMouseOver.set(callback);
}
void WTNVHandlerMark::setCBMarkStateHovered(void (*callback)()) {
  markStateHovered.set(callback);
}
void WTNVHandlerMark::setCBMarkStateSelected(void (*callback)()) {
  markStateSelected.set(callback);
}
void WTNVHandlerMark::setCBMarkStatePOIVisible(void (*callback)()) {
  markStatePOIVisible.set(callback);
}
void WTNVHandlerMark::setCBMarkUpdated(void (*callback)()) {
  markUpdated.set(callback);
}
void WTNVHandlerMark::setCBMarkRemoved(void (*callback)()) {
  markRemoved.set(callback);
}
void WTNVHandlerMark::setCBPOIPointsUpdated(void (*callback)()) {
  poiPointsUpdated.set(callback);
}
void WTNVHandlerMark::setCBPOISizeUpdated(void (*callback)()) {
  poiSizeUpdated.set(callback);
}
void WTNVHandlerMark::setCBAssistChanged(void (*callback)()) {
  assistChanged.set(callback);
}

void WTNVHandlerMark::onEventMarkAdded() {
  markAdded.call();
}
void WTNVHandlerMark::onEventMarkDesigned() {
  markDesigned.call();
}
void WTNVHandlerMark::onEventDNNClassChanged() {
  dnnClassChanged.call();
}
void WTNVHandlerMark::onEventAddInstantlyChanged() {
  addInstantlyChanged.call();
}
void WTNVHandlerMark::onEventMarkFormChanged() {
  markFormChanged.call();
}
void WTNVHandlerMark::onEventMarkModeChanged() {
  markModeChanged.call();
}
void WTNVHandlerMark::onEventMarkMouseOver() {
  markMouseOver.call();
}
void WTNVHandlerMark::onEventMarkStateHovered() {
  markStateHovered.call();
}
void WTNVHandlerMark::onEventMarkStateSelected() {
  markStateSelected.call();
}
void WTNVHandlerMark::onEventMarkStatePOIVisible() {
  markStatePOIVisible.call();
}
void WTNVHandlerMark::onEventMarkUpdated() {
  markUpdated.call();
}
void WTNVHandlerMark::onEventMarkRemoved() {
  markRemoved.call();
}
void WTNVHandlerMark::onEventPOIPointsUpdated() {
  poiPointsUpdated.call();
}
void WTNVHandlerMark::onEventPOISizeUpdated() {
  poiSizeUpdated.call();
}
void WTNVHandlerMark::onEventAssistChanged() {
  assistChanged.call();
}
