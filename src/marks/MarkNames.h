#pragma once

#include <opencv2/core.hpp>

#include "foundation/XmlStorage.h"

/// Names that several kinds of marks share.
namespace tnv {

/// The mode in which POIs stand at equal distances; it takes a count.
constexpr auto kDivided = "Divided";

/// Nodes in a train set's file; persisted.
constexpr auto kPointA = "PointA";
constexpr auto kPointB = "PointB";

inline void writePointPair(cv::FileStorage& storage, cv::Point2d a, cv::Point2d b) {
  writePoint(storage, kPointA, a);
  writePoint(storage, kPointB, b);
}

}  // namespace tnv
