#include "TNV_SampleBenchNative/WTNVToolDarknetViewer.h"

#include "boundary/PictureHandOff.h"
#include "tools/TNVToolDarknetViewer.h"

WTNVToolDarknetViewer::WTNVToolDarknetViewer() : native(new TNVToolDarknetViewer) {}

WTNVToolDarknetViewer& WTNVToolDarknetViewer::operator=(const WTNVToolDarknetViewer& other) =
    default;

WTNVToolDarknetViewer::~WTNVToolDarknetViewer() {
  delete native;
}

void WTNVToolDarknetViewer::wSetImageDirectory(const std::string& directory) {
  native->setImageDirectory(directory);
}

std::vector<std::string> WTNVToolDarknetViewer::wReadImages() {
  return native->readImages();
}

bool WTNVToolDarknetViewer::wSelectImage(const std::string& name) {
  return native->selectImage(name);
}

void WTNVToolDarknetViewer::wGetSelectedImage(unsigned char** data, int* width, int* height,
                                              int* channels) const {
  tnv::handOutPicture(native->selected.image, data, width, height, channels);
}

std::string WTNVToolDarknetViewer::wGetSelectedImageFile() const {
  return native->selected.imageFile;
}

std::string WTNVToolDarknetViewer::wGetSelectedDataFile() const {
  return native->selected.dataFile;
}
