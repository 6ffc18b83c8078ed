#include "editing/TNVAssistGrabCut.h"

#include <algorithm>

#include <opencv2/imgproc.hpp>

#include "foundation/Numbers.h"
#include "marks/MarkGeometry.h"
#include "marks/TNVContour.h"

namespace {

using Points = TNVAssist::Points;

/// Longer side, in pixels, of the picture that is segmented: the person waits for the result.
constexpr int kSmallLength = 128;

/// How far the neighbourhood reaches beyond each side of the mark, as a share of the mark's size.
constexpr double kMargin = 0.25;

/// An outline is shrunk by its smaller side divided by this; what is left is held to be object.
constexpr int kCoreDivisor = 3;

/// An outline says more than a box, and more is made of it.
constexpr int kOutlineIterations = 5;
constexpr int kBoxIterations = 3;

/// Fewer points than this are noise.
constexpr std::size_t kFewestPoints = 4;

/// How far the result may be off the outline, in pixels of the segmented picture.
constexpr double kTolerance = 0.5;

cv::Rect rounded(const cv::Rect2d& box) {
  return {tnv::roundToInt(box.x), tnv::roundToInt(box.y), tnv::roundToInt(box.width),
          tnv::roundToInt(box.height)};
}

/// The box with its margin, as far as it lies on the picture; all zero if nothing of it does.
cv::Rect2d searchArea(const cv::Rect2d& box, cv::Size imageSize) {
  const cv::Rect2d wide(box.x - kMargin * box.width, box.y - kMargin * box.height,
                        (1 + 2 * kMargin) * box.width, (1 + 2 * kMargin) * box.height);
  return wide & cv::Rect2d(0, 0, imageSize.width, imageSize.height);
}

/// A mark's neighbourhood, reduced, and the way there and back.
class Neighbourhood {
 public:
  Neighbourhood(const cv::Mat& image, const cv::Rect2d& area)
      : imageSize(image.size()), origin(area.tl()) {
    // Two halves rounded up would reach one pixel over the edge. What is no number lies nowhere.
    const cv::Mat roi = image(rounded(area) & cv::Rect({}, imageSize));
    factor = TNVContour::resizeToLength(roi, small, kSmallLength, roi.rows < roi.cols);
  }

  const cv::Mat& picture() const { return small; }

  cv::Point2d reduced(cv::Point2d pixel) const { return (pixel - origin) * factor; }

  cv::Rect2d reduced(const cv::Rect2d& box) const {
    return {reduced(box.tl()), cv::Size2d(box.width * factor, box.height * factor)};
  }

  Points reduced(Points pixels) const {
    for (cv::Point2d& pixel : pixels)
      pixel = reduced(pixel);
    return pixels;
  }

  cv::Point2d relative(cv::Point reducedPixel) const {
    return tnv::toRelative(cv::Point2d(reducedPixel) / factor + origin, imageSize);
  }

 private:
  cv::Size imageSize;
  cv::Point2d origin;
  cv::Mat small;
  double factor = 1.0;
};

/// Side of the square that an outline with that box is shrunk by, 0 for the library's smallest.
int coreKernelSide(cv::Size2d box, cv::Size picture) {
  // From here on a kernel covers the picture from each of its pixels; none has to be larger.
  const int largest = 2 * std::max(picture.width, picture.height) + 1;
  const double smaller =
      std::clamp(std::min(box.width, box.height), 0.0, static_cast<double>(kCoreDivisor) * largest);
  return tnv::truncateToInt(smaller) / kCoreDivisor;
}

/// The inner part of the outline's area.
cv::Mat coreOf(const Points& contour, cv::Size2d box, cv::Size picture) {
  cv::Mat filled(picture, CV_8UC1, cv::Scalar(0));
  TNVContour::fillContourMask(filled, TNVContour::roundedContour(contour), cv::Scalar(255));
  const int side = coreKernelSide(box, picture);
  cv::Mat core;
  cv::erode(filled, core, cv::Mat(side, side, CV_8UC1, cv::Scalar(255)), cv::Point(-1, -1), 1,
            cv::BORDER_CONSTANT, cv::morphologyDefaultBorderValue());
  return core;
}

/// Object pixels, starting from the core of the outline or, without an outline, from the box.
cv::Mat segmented(const cv::Mat& picture, const cv::Rect2d& box, const Points& contour) {
  cv::Mat mask(picture.size(), CV_8UC1, cv::Scalar(cv::GC_BGD));
  cv::Mat ground;
  cv::Mat object;
  if (contour.empty()) {
    cv::grabCut(picture, mask, rounded(box), ground, object, kBoxIterations, cv::GC_INIT_WITH_RECT);
  } else {
    mask.setTo(cv::GC_PR_FGD, coreOf(contour, box.size(), picture.size()));
    cv::grabCut(picture, mask, cv::Rect(), ground, object, kOutlineIterations,
                cv::GC_INIT_WITH_MASK);
  }
  return mask == cv::GC_PR_FGD;
}

}  // namespace

TNVAssistGrabCut::TNVAssistGrabCut() : TNVAssist("GrabCut") {}

Points TNVAssistGrabCut::apply(const cv::Rect2d& rect, const cv::Mat& image,
                               const Points& contour) const {
  const cv::Rect2d box(rect.x * image.cols, rect.y * image.rows, rect.width * image.cols,
                       rect.height * image.rows);
  const Neighbourhood neighbourhood(image, searchArea(box, image.size()));
  std::vector<cv::Point> outline = tnv::largestRegionOutline(segmented(
      neighbourhood.picture(), neighbourhood.reduced(box), neighbourhood.reduced(contour)));
  if (outline.size() < kFewestPoints) return {};
  cv::approxPolyDP(outline, outline, kTolerance, true);
  Points result;
  for (const cv::Point& point : outline)
    result.push_back(neighbourhood.relative(point));
  return result;
}

std::vector<cv::Point> tnv::largestRegionOutline(const cv::Mat& mask) {
  cv::Mat labels;
  cv::Mat stats;
  cv::Mat centroids;
  const int count = cv::connectedComponentsWithStats(mask, labels, stats, centroids, 8, CV_32S);
  int largest = 0;
  int most = 0;
  for (int label = 1; label < count; ++label) {
    const int pixels = stats.at<int>(label, cv::CC_STAT_AREA);
    if (pixels <= most) continue;
    most = pixels;
    largest = label;
  }
  if (largest == 0) return {};
  std::vector<std::vector<cv::Point>> contours;
  cv::findContours(labels == largest, contours, cv::RETR_LIST, cv::CHAIN_APPROX_SIMPLE);
  std::vector<cv::Point> outline;
  double widest = 0.0;
  for (std::vector<cv::Point>& contour : contours) {
    const double area = cv::contourArea(contour);
    if (!(area > widest)) continue;
    widest = area;
    outline = std::move(contour);
  }
  return outline;
}
