#include "TNV_SampleBenchNative/WTNVDNNClass.h"

#include "boundary/PictureHandOff.h"
#include "foundation/Numbers.h"
#include "foundation/PictureFile.h"
#include "project/TNVDNNClass.h"

WTNVDNNClass::WTNVDNNClass() : native(nullptr) {}

WTNVDNNClass::WTNVDNNClass(TNVDNNClass* dnnClass) : native(dnnClass) {}

WTNVDNNClass::WTNVDNNClass(const WTNVDNNClass& other) = default;

WTNVDNNClass& WTNVDNNClass::operator=(const WTNVDNNClass& other) = default;

WTNVDNNClass::~WTNVDNNClass() {
  native = nullptr;
}

TNVDNNClass* WTNVDNNClass::getNativeDNNClass() const {
  return native;
}

bool WTNVDNNClass::isValid() const {
  return native != nullptr;
}

bool WTNVDNNClass::equal(WTNVDNNClass other) const {
  return native->uniqueIdx == other.native->uniqueIdx;
}

std::string WTNVDNNClass::wGetName() const {
  return native->name;
}

int WTNVDNNClass::wGetDNNId() const {
  return native->dnnId;
}

std::string WTNVDNNClass::wGetSamplePath() const {
  return native->samplePath;
}

std::string WTNVDNNClass::wGetComment() const {
  return native->comment;
}

void WTNVDNNClass::wGetColor(int* red, int* green, int* blue) const {
  if (red == nullptr || green == nullptr || blue == nullptr) return;
  *blue = tnv::truncateToInt(native->color[0]);
  *green = tnv::truncateToInt(native->color[1]);
  *red = tnv::truncateToInt(native->color[2]);
}

void WTNVDNNClass::wGetSampleImage(unsigned char** data, int* width, int* height,
                                   int* channels) const {
  cv::Mat picture;
  if (!native->samplePath.empty()) {
    native->sampleImage = tnv::readPicture(native->samplePath);
    picture = native->sampleImage;
  }
  tnv::handOutPicture(picture, data, width, height, channels);
}

WTNVDNNClass WTNVDNNClass::wGetDNNClassByIdx(const std::vector<WTNVDNNClass>& classes,
                                             int uniqueIdx) {
  for (const WTNVDNNClass& dnnClass : classes) {
    if (dnnClass.isValid() && dnnClass.native->uniqueIdx == uniqueIdx) return dnnClass;
  }
  return {};
}
