#pragma once

#include <opencv2/core/types.hpp>

#include "TNV_SampleBenchNative/WTNVMark.h"

/// The box of a mark in pixels of its picture.
cv::Rect2d boxInPixels(const WTNVMark& mark, cv::Size picture);
