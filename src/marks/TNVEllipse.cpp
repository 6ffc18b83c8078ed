#include "marks/TNVEllipse.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <utility>

#include <opencv2/imgproc.hpp>

#include "foundation/Log.h"
#include "foundation/Numbers.h"
#include "marks/TNVContour.h"

namespace {

using Points = TNVEllipse::Points;
using Ellipses = std::vector<cv::RotatedRect>;

/// An ellipse has five degrees of freedom.
constexpr std::size_t kSampleSize = 5;

/// Samples that are drawn, and draws that each may take to find different points.
constexpr int kRounds = 250;
constexpr int kDraws = 15;

/// Angles are counted by half degrees of a whole turn.
constexpr int kAngleBins = 720;

/// Distance in pixels from the centre, and in degrees from the angle, up to which an ellipse votes
/// on.
constexpr double kFarthestCentre = 25.0;
constexpr double kFarthestAngle = 6.0;

/// Kernels that the votes are smoothed with.
constexpr int kCentreKernel = 3;
constexpr int kKernel = 5;

/// Degrees between the points of the outline.
constexpr int kOutlineDelta = 4;

/// Pictures of more pixels cannot be read, so a larger size is a damaged one.
constexpr std::int64_t kMostPixels = std::int64_t{1} << 30;

/// A highest vote, and the centroid of its direct neighbourhood counted from where that starts.
struct Peak {
  cv::Point cell;
  cv::Point2d centroid;
};

std::vector<cv::Point> drawSample(const Points& points, std::mt19937& generator) {
  std::vector<cv::Point> sample;
  sample.reserve(kSampleSize);
  for (int draw = 0; draw < kDraws && sample.size() < kSampleSize; ++draw) {
    const cv::Point point = TNVContour::rounded(points[generator() % points.size()]);
    if (std::find(sample.begin(), sample.end(), point) == sample.end()) sample.push_back(point);
  }
  return sample;
}

/// Nothing where the library refuses the points. No sample is known that it does refuse; this is a
/// guard, since a fit has to answer whatever was clicked.
std::optional<cv::RotatedRect> fitted(const std::vector<cv::Point>& sample) {
  try {
    return cv::fitEllipseAMS(sample);
  } catch (const cv::Exception&) {
    return std::nullopt;
  }
}

Ellipses fitSamples(const Points& points, std::mt19937& generator) {
  Ellipses ellipses;
  for (int round = 0; round < kRounds; ++round) {
    const std::vector<cv::Point> sample = drawSample(points, generator);
    if (sample.size() < kSampleSize) continue;
    if (const auto ellipse = fitted(sample)) ellipses.push_back(*ellipse);
  }
  return ellipses;
}

/// The votes have half the resolution of the picture.
cv::Mat_<float> emptyVotes(cv::Size imageSize) {
  return cv::Mat_<float>(imageSize.height / 2, imageSize.width / 2, 0.0F);
}

/// The cell at half a position or a size in pixels.
cv::Point cellOf(cv::Point2f pixels) {
  return TNVContour::rounded(pixels / 2);
}

void vote(cv::Mat_<float>& votes, cv::Point cell) {
  if (cell.inside(cv::Rect({}, votes.size()))) votes(cell) += 1.0F;
}

cv::Mat smoothed(const cv::Mat& votes, int kernel) {
  cv::Mat smooth;
  cv::blur(votes, smooth, {kernel, kernel}, {-1, -1}, cv::BORDER_DEFAULT);
  cv::normalize(smooth, smooth, 0.0, 1.0, cv::NORM_MINMAX);
  return smooth;
}

cv::Point highestCell(const cv::Mat& smooth) {
  cv::Point cell;
  cv::minMaxLoc(smooth, nullptr, nullptr, nullptr, &cell);
  return cell;
}

cv::Point2d centroid(const cv::Mat& part) {
  const cv::Moments moments = cv::moments(part);
  return {moments.m10 / moments.m00, moments.m01 / moments.m00};
}

/// Nothing where the highest vote lies too close to an end to have a whole neighbourhood.
std::optional<Peak> findPeak(const cv::Mat& votes, int kernel) {
  const cv::Mat smooth = smoothed(votes, kernel);
  const cv::Point cell = highestCell(smooth);
  if (cell.x - 1 < 1 || cell.x + 1 >= smooth.cols) return std::nullopt;
  if (cell.y - 1 < 1 || cell.y + 1 >= smooth.rows) return std::nullopt;
  return Peak{cell, centroid(smooth(cv::Rect(cell.x - 1, cell.y - 1, 3, 3)))};
}

std::optional<cv::Point2d> findCentre(const Ellipses& ellipses, cv::Size imageSize) {
  cv::Mat_<float> votes = emptyVotes(imageSize);
  for (const cv::RotatedRect& ellipse : ellipses)
    vote(votes, cellOf(ellipse.center));
  const auto peak = findPeak(votes, kCentreKernel);
  if (!peak) return std::nullopt;
  return 2.0 * (cv::Point2d(peak->cell) - cv::Point2d(1, 1) + peak->centroid);
}

/// In degrees. The place of a cell within its neighbourhood counts on top of the cell itself, which
/// adds half a degree.
double findAngle(const Ellipses& ellipses) {
  cv::Mat_<float> votes(1, kAngleBins, 0.0F);
  for (const cv::RotatedRect& ellipse : ellipses)
    vote(votes, {tnv::truncateToInt(2 * ellipse.angle), 0});
  const cv::Mat smooth = smoothed(votes, kKernel);
  const int column = highestCell(smooth).x;
  const bool atEnd = column == 0 || column == kAngleBins - 1;
  const double offset = atEnd ? 1.0 : centroid(smooth(cv::Rect(column - 1, 0, 3, 1))).x;
  return (column + offset) / 2;
}

/// Width and height. The place of a cell counts on top of it here too, which adds two pixels.
std::optional<cv::Size2d> findSize(const Ellipses& ellipses, cv::Size imageSize) {
  cv::Mat_<float> votes = emptyVotes(imageSize);
  for (const cv::RotatedRect& ellipse : ellipses) {
    const cv::Point cell = cellOf({ellipse.size.width, ellipse.size.height});
    if (cell.x >= 1 && cell.y >= 1) vote(votes, cell);
  }
  const auto peak = findPeak(votes, kKernel);
  if (!peak) return std::nullopt;
  return cv::Size2d(2.0 * (cv::Point2d(peak->cell) + peak->centroid));
}

bool holdsVotes(cv::Size imageSize) {
  return imageSize.width >= 2 && imageSize.height >= 2 &&
         std::int64_t{imageSize.width} * imageSize.height <= kMostPixels;
}

/// Width and height 0 where the samples do not agree.
cv::RotatedRect electEllipse(Ellipses ellipses, cv::Size imageSize) {
  const auto centre = findCentre(ellipses, imageSize);
  if (!centre) return {};
  // What is no number goes too.
  std::erase_if(ellipses, [&](const cv::RotatedRect& ellipse) {
    return !(TNVContour::distance(ellipse.center, *centre) <= kFarthestCentre);
  });
  const double angle = findAngle(ellipses);
  std::erase_if(ellipses, [&](const cv::RotatedRect& ellipse) {
    return !(std::abs(ellipse.angle - angle) <= kFarthestAngle);
  });
  const auto size = findSize(ellipses, imageSize);
  if (!size) return {};
  return {*centre, *size, static_cast<float>(angle)};
}

}  // namespace

TNVEllipse::TNVEllipse(Points rimPoints, cv::Size pictureSize)
    : points(std::move(rimPoints)), imageSize(pictureSize) {}

const cv::RotatedRect& TNVEllipse::detectEllipse() {
  // Whoever draws from the process-wide generator finds it reseeded by each detection. The samples
  // come from one of their own, which no other thread draws from.
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  std::mt19937 generator(static_cast<std::mt19937::result_type>(now));
  return detectEllipse(generator);
}

const cv::RotatedRect& TNVEllipse::detectEllipse(std::mt19937& generator) {
  ellipse = {};
  outline.clear();
  if (points.size() < kSampleSize) {
    tnv::logLine("TNVEllipse::detectEllipse: Too less points (<5) to detect ellipse!");
    return ellipse;
  }
  if (!holdsVotes(imageSize)) return ellipse;
  ellipse = electEllipse(fitSamples(points, generator), imageSize);
  if (!ellipse.size.empty()) outline = TNVContour::ellipseOutline(ellipse, kOutlineDelta);
  return ellipse;
}
