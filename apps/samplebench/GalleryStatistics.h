#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include <opencv2/core/types.hpp>

// Numbers about the boxes of marks, in pixels of their pictures. Boxes may come from damaged files:
// not finite, without area, anywhere.

/// Sides below this many pixels are called out: detectors hardly find what is smaller.
constexpr double tinySide = 10;

/// Two boxes that share more than this much of their union mark the same object.
constexpr double repeatOverlap = 0.9;

/// Whether all numbers are finite and both sides are longer than zero.
bool hasArea(const cv::Rect2d& box);

/// Whether a side is shorter than `tinySide`, or no number.
bool isTiny(const cv::Rect2d& box);

/// Whether no part of the box lies on the picture.
bool isOutside(const cv::Rect2d& box, cv::Size picture);

/// The middle value, or the mean of the two in the middle; 0 if there are none.
double median(std::vector<double> values);

/// How unusual each box is among these: its distance from the median of the logarithms of area and
/// of aspect ratio (width by height), both in units of their median absolute deviation. Infinite
/// for a box without area.
std::vector<double> outlierScores(std::span<const cv::Rect2d> boxes);

/// The places of the scores, the largest score first; equal ones keep their order.
std::vector<std::size_t> outliersFirst(std::span<const double> scores);

/// 1 for equal boxes, also without area; 0 for boxes that share nothing or are not finite.
double intersectionOverUnion(const cv::Rect2d& a, const cv::Rect2d& b);

/// A box that marks the same object as an earlier one of the list.
struct Repeat {
  std::size_t place;
  std::size_t earlier;

  bool operator==(const Repeat&) const = default;
};

/// Each box that repeats an earlier one, once, among those of one class on one picture, in the
/// order of places. Compares only boxes that begin at nearly the same column.
std::vector<Repeat> findRepeats(std::span<const cv::Rect2d> boxes);

/// A range of a logarithmic axis, as exponents of 2.
struct Octaves {
  int low;
  int high;

  bool operator==(const Octaves&) const = default;
};

constexpr int binsPerOctave = 2;

/// The smallest range that covers the values and `least`, but nothing beyond `most`. Values that
/// are not above zero or not finite are passed over, here and below.
Octaves octavesAround(std::span<const double> values, Octaves least, Octaves most);

/// How many values lie in each bin of the range; what lies beyond counts at its ends.
std::vector<std::size_t> logBins(std::span<const double> values, Octaves range);
