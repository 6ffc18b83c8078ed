#pragma once

#include <string>

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

/// A picture with no two equal neighbours, always the same for a size.
cv::Mat patternedPicture(int width, int height);

/// Writes a patterned picture and returns the path. The extension gives the format.
std::string writePicture(const std::string& path, int width, int height);

/// Equal size, type and pixels; the message names the first difference.
::testing::AssertionResult samePixels(const cv::Mat& expected, const cv::Mat& actual);
