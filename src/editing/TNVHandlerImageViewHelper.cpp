// What the image view shows and saves beside its main picture: the magnifier and single marks.

#include <exception>

#include "editing/TNVHandlerImageView.h"
#include "foundation/Log.h"
#include "foundation/Numbers.h"
#include "foundation/PictureFile.h"
#include "foundation/TNVDirectory.h"
#include "marks/TNVMark.h"

namespace {

bool isRelative(double position) {
  return position >= 0.0 && position <= 1.0;
}

/// Writes the region. Empty if there is no directory to write to; a file that cannot be written
/// changes nothing about the answer.
std::string writeRegion(const cv::Mat& region, const std::string& directory,
                        const std::string& name) {
  if (!TNVDirectory::exists(directory)) TNVDirectory::createDirectory(directory);
  if (!TNVDirectory::exists(directory)) {
    tnv::logLine("TNVProject::saveROIImage: Can not create directory at '" + directory + "'!");
    return {};
  }
  const std::string path =
      directory + (name.empty() ? makeUniqueName(directory, ".jpg") + ".jpg" : name);
  tnv::writePicture(path, region);
  return path;
}

}  // namespace

cv::Mat TNVHandlerImageView::getHelperImage() {
  if (!isRelative(crossX) || !isRelative(crossY)) return {};
  if (!trainSet) {
    tnv::logLine("TNVHandlerImageView::getZoomImage(): Current TrainSet is null!");
    return {};
  }
  if (imgSource.empty()) {
    tnv::logLine("TNVHandlerImageView::getZoomImage(): Current image is empty!");
    return {};
  }
  const cv::Point centre(tnv::roundToInt(imgSource.cols * crossX),
                         tnv::roundToInt(imgSource.rows * crossY));
  try {
    helper.image = tnv::renderHelperView(imgSource, centre, helper);
  } catch (const std::exception&) {
    tnv::logLine(
        "TNVHandlerImageView::getZoomImage(): Can not render, zoom or window size is not usable!");
    return {};
  }
  return helper.image;
}

void TNVHandlerImageView::setHelperZoomLevel(double zoom) {
  helper.zoom = zoom;
  notify(&TNVHandlerImageViewObserver::onEventHelperZoomLevelChanged);
}

void TNVHandlerImageView::setHelperMode(const std::string& mode) {
  helper.mode = helper.mode.getByName(mode);
  notify(&TNVHandlerImageViewObserver::onEventHelperModeChanged);
}

void TNVHandlerImageView::setHelperWindowSize(int width, int height) {
  helper.windowWidth = width;
  helper.windowHeight = height;
  notify(&TNVHandlerImageViewObserver::onEventHelperWndSizeChanged);
}

void TNVHandlerImageView::setHelperShowCross(bool show) {
  helper.showCross = show;
  notify(&TNVHandlerImageViewObserver::onEventHelperShowCrossChanged);
}

std::string TNVHandlerImageView::saveROIImage(const TNVMark* mark, const std::string& directory,
                                              const std::string& name) const {
  if (!mark) {
    tnv::logLine("saveROIImage::getROIImage: Mark is nullptr!");
    return {};
  }
  try {
    return writeRegion(mark->getROIImage(imgSource), directory, name);
  } catch (const std::exception&) {
    tnv::logLine("TNVHandlerImageView::saveROIImage: Can not save the region to '" + directory +
                 name + "'!");
    return {};
  }
}
