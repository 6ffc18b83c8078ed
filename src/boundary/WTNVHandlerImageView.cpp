#include "TNV_SampleBenchNative/WTNVHandlerImageView.h"

#include "boundary/Handles.h"
#include "boundary/PictureHandOff.h"
#include "editing/TNVHandlerImageView.h"

WTNVHandlerImageView::WTNVHandlerImageView(TNVHandlerImageView* handler) : native(handler) {
  native->addObserver(this);
}

WTNVHandlerImageView::WTNVHandlerImageView(const WTNVHandlerImageView& other)
    : TNVHandlerImageViewObserver(other), native(other.native) {
  native->addObserver(this);
}

WTNVHandlerImageView& WTNVHandlerImageView::operator=(const WTNVHandlerImageView& other) {
  native = other.native;
  crossPositionChanged = other.crossPositionChanged;
  helperZoomLevelChanged = other.helperZoomLevelChanged;
  helperModeChanged = other.helperModeChanged;
  helperWndSizeChanged = other.helperWndSizeChanged;
  helperShowCrossChanged = other.helperShowCrossChanged;
  markStyleChanged = other.markStyleChanged;
  markDrawInfoChanged = other.markDrawInfoChanged;
  crossStyleChanged = other.crossStyleChanged;
  zoomLevelChanged = other.zoomLevelChanged;
  drawMarkFilledChanged = other.drawMarkFilledChanged;
  drawOnlyDNNsChanged = other.drawOnlyDNNsChanged;
  return *this;
}

WTNVHandlerImageView::~WTNVHandlerImageView() {
  native->removeObserver(this);
}

void WTNVHandlerImageView::wGetARImage(unsigned char** data, int* width, int* height,
                                       int* channels) {
  tnv::handOutPicture(native->getARImage(), data, width, height, channels);
}

void WTNVHandlerImageView::wGetARImageSize(int& width, int& height) const {
  const cv::Size size = native->getARImageSize();
  width = size.width;
  height = size.height;
}

void WTNVHandlerImageView::wSetZoomLevel(double zoom) {
  native->setZoomLevel(zoom);
}

void WTNVHandlerImageView::wSetZoomLevel(int width, int height, double maxZoom) {
  native->setZoomLevel(width, height, maxZoom);
}

double WTNVHandlerImageView::wGetZoomLevel() const {
  return native->zoomLevel;
}

bool WTNVHandlerImageView::wGetZoomToSize() const {
  return native->zoomToSize;
}

void WTNVHandlerImageView::wSetCrossPosition(double x, double y) {
  native->setCrossPosition(x, y);
}

void WTNVHandlerImageView::wGetCrossPositionRelative(double& x, double& y) const {
  x = native->crossX;
  y = native->crossY;
}

void WTNVHandlerImageView::wGetCrossPositionPixelAbsolute(double& x, double& y) const {
  x = native->crossX * native->imgSource.cols;
  y = native->crossY * native->imgSource.rows;
}

void WTNVHandlerImageView::wGetCrossPositionPixelRelative(double& x, double& y) const {
  x = native->crossX * native->imgAR.cols;
  y = native->crossY * native->imgAR.rows;
}

void WTNVHandlerImageView::wGetRelativePixel(double& x, double& y) const {
  const cv::Mat& picture = native->imgSource;
  x = picture.empty() ? 0.0 : 1.0 / picture.cols;
  y = picture.empty() ? 0.0 : 1.0 / picture.rows;
}

std::vector<std::string> WTNVHandlerImageView::getAvailableMarkStyles() const {
  return native->markStyle.getNames();
}

void WTNVHandlerImageView::setMarkStyle(const std::string& style) {
  native->setMarkStyle(style);
}

std::string WTNVHandlerImageView::getMarkStyle() const {
  return native->markStyle.name;
}

std::vector<std::string> WTNVHandlerImageView::getAvailableMarkDrawInfos() const {
  return native->markDrawInfo.getNames();
}

void WTNVHandlerImageView::setMarkDrawInfo(const std::string& info) {
  native->setMarkDrawInfo(info);
}

std::string WTNVHandlerImageView::getMarkDrawInfo() const {
  return native->markDrawInfo.name;
}

std::vector<std::string> WTNVHandlerImageView::getAvailableCrossStyles() const {
  return native->crossStyle.getNames();
}

void WTNVHandlerImageView::setCrossStyle(const std::string& style) {
  native->setCrossStyle(style);
}

std::string WTNVHandlerImageView::getCrossStyle() const {
  return native->crossStyle.name;
}

void WTNVHandlerImageView::wSetDrawMarkFilled(bool filled) {
  native->setDrawMarkFilled(filled);
}

bool WTNVHandlerImageView::wGetDrawMarkFilled() const {
  return native->drawMarkFilled;
}

void WTNVHandlerImageView::wSetDrawOnlyDNNs(const std::vector<WTNVDNNClass>& classes) {
  native->setDrawOnlyDNNs(tnv::asClasses(classes));
}

std::vector<WTNVDNNClass> WTNVHandlerImageView::wGetDrawOnlyDNNs() const {
  return tnv::asHandles<WTNVDNNClass>(native->drawOnlyDNNs);
}

void WTNVHandlerImageView::wGetHelperImage(unsigned char** data, int* width, int* height,
                                           int* channels) {
  tnv::handOutPicture(native->getHelperImage(), data, width, height, channels);
}

void WTNVHandlerImageView::setHelperZoomLevel(double zoom) {
  native->setHelperZoomLevel(zoom);
}

double WTNVHandlerImageView::getHelperZoomLevel() const {
  return native->helper.zoom;
}

std::vector<std::string> WTNVHandlerImageView::getHelperModes() const {
  return TNVTypeHelperMode().getNames();
}

void WTNVHandlerImageView::setHelperMode(const std::string& mode) {
  native->setHelperMode(mode);
}

std::string WTNVHandlerImageView::getHelperMode() const {
  return native->helper.mode.name;
}

void WTNVHandlerImageView::setHelperWindowSize(int width, int height) {
  native->setHelperWindowSize(width, height);
}

void WTNVHandlerImageView::getHelperWindowSize(int& width, int& height) const {
  width = native->helper.windowWidth;
  height = native->helper.windowHeight;
}

void WTNVHandlerImageView::setHelperShowCross(bool show) {
  native->setHelperShowCross(show);
}

bool WTNVHandlerImageView::getHelperShowCross() const {
  return native->helper.showCross;
}

std::string WTNVHandlerImageView::wSaveROIImage(WTNVMark mark, const std::string& directory,
                                                const std::string& name) {
  return native->saveROIImage(mark.getNativeMark(), directory, name);
}

void WTNVHandlerImageView::setCBCrossPositionChanged(void (*callback)()) {
  crossPositionChanged.set(callback);
}
void WTNVHandlerImageView::setCBHelperZoomLevelChanged(void (*callback)()) {
  helperZoomLevelChanged.set(callback);
}
void WTNVHandlerImageView::setCBHelperModeChanged(void (*callback)()) {
  helperModeChanged.set(callback);
}
void WTNVHandlerImageView::setCBHelperWndSizeChanged(void (*callback)()) {
  helperWndSizeChanged.set(callback);
}
void WTNVHandlerImageView::setCBHelperShowCrossChanged(void (*callback)()) {
  helperShowCrossChanged.set(callback);
}
void WTNVHandlerImageView::setCBMarkStyleChanged(void (*callback)()) {
  markStyleChanged.set(callback);
}
void WTNVHandlerImageView::setCBMarkDrawInfoChanged(void (*callback)()) {
  markDrawInfoChanged.set(callback);
}
void WTNVHandlerImageView::setCBCrossStyleChanged(void (*callback)()) {
  crossStyleChanged.set(callback);
}
void WTNVHandlerImageView::setCBZoomLevelChanged(void (*callback)()) {
  zoomLevelChanged.set(callback);
}
void WTNVHandlerImageView::setCBDrawMarkFilledChanged(void (*callback)()) {
  drawMarkFilledChanged.set(callback);
}
void WTNVHandlerImageView::setCBDrawOnlyDNNsChanged(void (*callback)()) {
  drawOnlyDNNsChanged.set(callback);
}

void WTNVHandlerImageView::onEventCrossPositionChanged() {
  crossPositionChanged.call();
}
void WTNVHandlerImageView::onEventHelperZoomLevelChanged() {
  helperZoomLevelChanged.call();
}
void WTNVHandlerImageView::onEventHelperModeChanged() {
  helperModeChanged.call();
}
void WTNVHandlerImageView::onEventHelperWndSizeChanged() {
  helperWndSizeChanged.call();
}
void WTNVHandlerImageView::onEventHelperShowCrossChanged() {
  helperShowCrossChanged.call();
}
void WTNVHandlerImageView::onEventMarkStyleChanged() {
  markStyleChanged.call();
}
void WTNVHandlerImageView::onEventMarkDrawInfoChanged() {
  markDrawInfoChanged.call();
}
void WTNVHandlerImageView::onEventCrossStyleChanged() {
  crossStyleChanged.call();
}
void WTNVHandlerImageView::onEventZoomLevelChanged() {
  zoomLevelChanged.call();
}
void WTNVHandlerImageView::onEventDrawMarkFilledChanged() {
  drawMarkFilledChanged.call();
}
void WTNVHandlerImageView::onEventDrawOnlyDNNsChanged() {
  drawOnlyDNNsChanged.call();
}
