#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include "support/TempDirectory.h"

/// A picture with no two equal neighbours, always the same for a size.
cv::Mat patternedPicture(int width, int height);

/// Writes a patterned picture and returns the path. The extension gives the format.
std::string writePicture(const std::string& path, int width, int height);

/// The JPEG file with the notes of a camera as its first segment: a name of six bytes and a TIFF.
std::string withCameraNotes(const std::string& jpeg, const std::string& notes);

/// Notes of a camera that tell how the picture is to be turned, from 1 for not at all to 8.
std::string notesOfOrientation(char orientation);

/// The picture as the bytes of a JPEG file that is to be turned so before it is seen.
std::string turnedJpeg(const cv::Mat& picture, char orientation);

/// A file of some hundred bytes that claims to be a picture of so many rows and columns.
std::string hollowJpeg(int side, bool progressive = false);

/// What is named like a picture and cannot be read as one: nothing, a directory, a pipe that nobody
/// writes to, an empty file, a text, and pictures out of all proportion.
std::vector<std::string> unreadablePictures(const TempDirectory& temp);

/// Equal size, type and pixels; the message names the first difference.
::testing::AssertionResult samePixels(const cv::Mat& expected, const cv::Mat& actual);
