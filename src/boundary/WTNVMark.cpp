#include "TNV_SampleBenchNative/WTNVMark.h"

#include "marks/TNVMark.h"
#include "project/TNVDNNClass.h"

WTNVMark::WTNVMark() : native(nullptr) {}

WTNVMark::WTNVMark(TNVMark* mark) : native(mark) {}

WTNVMark::WTNVMark(const WTNVMark& other) = default;

WTNVMark& WTNVMark::operator=(const WTNVMark& other) = default;

WTNVMark::~WTNVMark() {
  native = nullptr;
}

TNVMark* WTNVMark::getNativeMark() const {
  return native;
}

bool WTNVMark::valid() const {
  return native != nullptr;
}

std::string WTNVMark::wGetType() const {
  return native->getTypeName(false);
}

int WTNVMark::wGetUniqueId() const {
  return native->uniqueId;
}

std::vector<int> WTNVMark::wGetClassIdx() const {
  return native->classIdx;
}

WTNVDNNClass WTNVMark::wGetFirstDNNClass(const std::vector<WTNVDNNClass>& classes) const {
  if (native->classIdx.empty()) return {};
  return WTNVDNNClass::wGetDNNClassByIdx(classes, native->classIdx.front());
}

std::vector<WTNVDNNClass> WTNVMark::wGetDNNClasses(const std::vector<WTNVDNNClass>& classes) const {
  std::vector<WTNVDNNClass> carried;
  for (const WTNVDNNClass& dnnClass : classes) {
    if (!dnnClass.isValid()) continue;
    for (const int idx : native->classIdx) {
      if (dnnClass.getNativeDNNClass()->uniqueIdx == idx) carried.push_back(dnnClass);
    }
  }
  return carried;
}

bool WTNVMark::wGetIsHovered() const {
  return native->hovered;
}

bool WTNVMark::wGetIsSelected() const {
  return native->selected;
}

void WTNVMark::wGetRelCenter(double& x, double& y) const {
  x = native->center.x;
  y = native->center.y;
}

void WTNVMark::wGetRelSize(double& w, double& h, int width, int height) const {
  const cv::Point2d size = native->getRelSize({width, height});
  w = size.x;
  h = size.y;
}

void WTNVMark::wGetRelPOISize(double& w, double& h) const {
  w = native->poiSize.x;
  h = native->poiSize.y;
}

std::vector<std::string> WTNVMark::wGetPOIModes() const {
  return native->getPOIModes();
}

bool WTNVMark::wGetPOIModeSupportsValue(const std::string& mode) const {
  return native->getPOIModeSupportsValue(mode);
}

void WTNVMark::wGetPOIsGenerated(const std::string& mode, int width, int height, int count,
                                 std::vector<std::vector<double>>& points) const {
  points.clear();
  for (const cv::Point2d& point : native->getPOIsGenerated(mode, {width, height}, count))
    points.push_back({point.x, point.y});
}

int WTNVMark::wGetPOICountForSize(int width, int height) const {
  return native->getPOICountForSize({width, height});
}
