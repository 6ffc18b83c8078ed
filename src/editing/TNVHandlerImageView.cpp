#include "editing/TNVHandlerImageView.h"

#include <algorithm>

#include <opencv2/imgproc.hpp>

#include "foundation/Log.h"
#include "foundation/Numbers.h"
#include "marks/TNVMark.h"
#include "project/TNVDNNClass.h"
#include "project/TNVProject.h"
#include "project/TNVTrainSet.h"

namespace {

constexpr double kSmallestZoom = 0.1;

cv::Size scaledSize(cv::Size size, double zoom) {
  return {tnv::roundToInt(size.width * zoom), tnv::roundToInt(size.height * zoom)};
}

cv::Point pixelOf(const cv::Mat& image, cv::Point2d relative) {
  return {tnv::roundToInt(image.cols * relative.x), tnv::roundToInt(image.rows * relative.y)};
}

bool contains(const std::vector<int>& values, int wanted) {
  return std::find(values.begin(), values.end(), wanted) != values.end();
}

}  // namespace

TNVTypeMarkStyleSet TNVHandlerImageView::filledStyle() {
  TNVTypeMarkStyleSet style;
  style.drawFilled = true;
  return style;
}

void TNVHandlerImageView::bind(TNVTrainSet* newTrainSet) {
  // Fetched first: if that throws, picture and marks stay those of one train set.
  showPicture(newTrainSet->getImage());
  trainSet = newTrainSet;
}

void TNVHandlerImageView::unbind() {
  drawOnlyDNNs.clear();
  project = nullptr;
  trainSet = nullptr;
}

void TNVHandlerImageView::showPicture(const cv::Mat& picture) {
  imgSource = picture;
  imgScaled = cv::Mat();
  imgAR = cv::Mat();
  invalidate();
}

void TNVHandlerImageView::invalidate() {
  if (!renderCache) return;
  cacheDirty = true;
  imgCached = cv::Mat();
  cacheTags.clear();
}

cv::Size TNVHandlerImageView::getARImageSize() const {
  return scaledSize(imgSource.size(), zoomLevel);
}

void TNVHandlerImageView::setZoomLevel(double zoom) {
  zoomToSize = false;
  zoomLevel = zoom;
  invalidate();
  notify(&TNVHandlerImageViewObserver::onEventZoomLevelChanged);
}

void TNVHandlerImageView::setZoomLevel(int width, int height, double maxZoom) {
  zoomToSize = true;
  const double columns = imgSource.cols;
  const double rows = imgSource.rows;
  const bool wider = columns / rows > static_cast<double>(width) / height;
  zoomLevel = wider ? width / columns : height / rows;
  if (zoomLevel > maxZoom) zoomLevel = maxZoom;
  invalidate();
  notify(&TNVHandlerImageViewObserver::onEventZoomLevelChanged);
}

void TNVHandlerImageView::setCrossPosition(double x, double y) {
  // Written so that not-a-number becomes 0 too.
  crossX = x > 0.0 ? std::min(x, 1.0) : 0.0;
  crossY = y > 0.0 ? std::min(y, 1.0) : 0.0;
  notify(&TNVHandlerImageViewObserver::onEventCrossPositionChanged);
}

void TNVHandlerImageView::setMarkStyle(const std::string& style) {
  markStyle = markStyle.getByName(style);
  markStyle.drawFilled = drawMarkFilled;
  invalidate();
  notify(&TNVHandlerImageViewObserver::onEventMarkStyleChanged);
}

void TNVHandlerImageView::setMarkDrawInfo(const std::string& info) {
  markDrawInfo = markDrawInfo.getByName(info);
  invalidate();
  notify(&TNVHandlerImageViewObserver::onEventMarkDrawInfoChanged);
}

void TNVHandlerImageView::setCrossStyle(const std::string& style) {
  crossStyle = crossStyle.getByName(style);
  invalidate();
  notify(&TNVHandlerImageViewObserver::onEventCrossStyleChanged);
}

void TNVHandlerImageView::setDrawMarkFilled(bool filled) {
  drawMarkFilled = filled;
  markStyle.drawFilled = filled;
  invalidate();
  notify(&TNVHandlerImageViewObserver::onEventDrawMarkFilledChanged);
}

void TNVHandlerImageView::setDrawOnlyDNNs(const Classes& classes) {
  drawOnlyDNNs = classes;
  invalidate();
  notify(&TNVHandlerImageViewObserver::onEventDrawOnlyDNNsChanged);
}

cv::Mat TNVHandlerImageView::getARImage() {
  if (!canRender()) return {};
  // The file may have become unreadable since the reduced copy was made.
  if (reloadSource() && !canRender()) return {};
  scaleSource();
  const std::vector<TNVMark*> marks = trainSet->markPointers();
  const Classes classes = project->classPointers();
  if (!renderCache || marksChanged(marks)) {
    drawMarks(marks, classes);
  } else if (imgCached.size() == imgAR.size()) {
    imgCached.copyTo(imgAR);
  }
  drawDesign(classes);
  drawCross();
  return imgAR;
}

bool TNVHandlerImageView::canRender() const {
  const char* missing = !project            ? "Current Project is null!"
                        : !trainSet         ? "Current TrainSet is null!"
                        : imgSource.empty() ? "Current image is empty!"
                                            : nullptr;
  if (!missing) return true;
  tnv::logLine(std::string("TNVHandlerImageView::getARImage(): ") + missing);
  return false;
}

bool TNVHandlerImageView::reloadSource() {
  if (!reloadImage.exchange(false)) return false;
  showPicture(trainSet->getImage());
  return true;
}

void TNVHandlerImageView::scaleSource() {
  if (!(zoomLevel > kSmallestZoom)) zoomLevel = kSmallestZoom;
  const cv::Size exact = getARImageSize();
  // A thin picture far away is still a picture.
  const cv::Size size(std::max(exact.width, 1), std::max(exact.height, 1));
  if (!imgScaled.empty() && imgScaled.size() == size) return;
  cv::resize(imgSource, imgScaled, size, 0, 0, cv::INTER_LINEAR);
}

bool TNVHandlerImageView::marksChanged(const std::vector<TNVMark*>& marks) {
  if (cacheDirty || imgCached.size() != imgAR.size() || cacheTags.size() != marks.size()) {
    return true;
  }
  // Marks stand in the order of their ids, as the tags do.
  return !std::equal(marks.begin(), marks.end(), cacheTags.begin(),
                     [](const TNVMark* mark, const auto& tag) {
                       return mark->uniqueId == tag.first && mark->changeTag == tag.second;
                     });
}

void TNVHandlerImageView::rememberTags(const std::vector<TNVMark*>& marks) {
  cacheTags.clear();
  for (const TNVMark* mark : marks)
    cacheTags[mark->uniqueId] = mark->changeTag;
}

void TNVHandlerImageView::drawMarks(const std::vector<TNVMark*>& marks, const Classes& classes) {
  // Dirty until all is drawn, whatever is thrown on the way.
  cacheDirty = true;
  if (imgAR.size() != imgScaled.size()) imgAR = cv::Mat(imgScaled.size(), CV_8UC3);
  imgScaled.copyTo(imgAR);
  for (TNVMark* mark : marks) {
    if (!passesFilter(*mark, classes)) continue;
    mark->draw(imgAR, imgSource.size(), markStyle, markDrawInfo, classes, false);
  }
  if (!renderCache) return;
  rememberTags(marks);
  imgAR.copyTo(imgCached);
  cacheDirty = false;
}

bool TNVHandlerImageView::passesFilter(const TNVMark& mark, const Classes& classes) const {
  if (drawOnlyDNNs.empty()) return true;
  return std::any_of(drawOnlyDNNs.begin(), drawOnlyDNNs.end(), [&](const TNVDNNClass* wanted) {
    const bool inProject = std::any_of(classes.begin(), classes.end(), [&](const auto* own) {
      return own->uniqueIdx == wanted->uniqueIdx;
    });
    return inProject && contains(mark.classIdx, wanted->uniqueIdx);
  });
}

void TNVHandlerImageView::drawDesign(const Classes& classes) {
  if (TNVMark* designed = trainSet->designedMark) {
    designed->draw(imgAR, imgSource.size(), markStyle, markDrawInfo, classes, true);
  }
  const cv::Scalar red(0, 0, 255);
  for (const cv::Point2d& point : trainSet->designPoints) {
    cv::circle(imgAR, pixelOf(imgAR, point), 3, red, 1, cv::LINE_AA);
  }
}

void TNVHandlerImageView::drawCross() {
  const cv::Point at = pixelOf(imgAR, {crossX, crossY});
  if (crossStyle.shape == TNVTypeCrossStyle::kCross) {
    cv::line(imgAR, {at.x, imgAR.rows}, {at.x, 0}, crossStyle.color, 1, cv::LINE_AA);
    cv::line(imgAR, {imgAR.cols, at.y}, {0, at.y}, crossStyle.color, 1, cv::LINE_AA);
  } else {
    cv::circle(imgAR, at, 3, crossStyle.color, crossStyle.thickness, cv::LINE_AA);
    cv::circle(imgAR, at, 15, crossStyle.color, crossStyle.thickness, cv::LINE_AA);
  }
}
