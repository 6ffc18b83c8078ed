#pragma once

#include <functional>
#include <string>

#include <opencv2/core.hpp>

#include "ProjectAccess.h"

/// A call of the library that hands out a picture.
using PictureCall = std::function<void(unsigned char**, int*, int*, int*)>;

/// The picture that the call hands out, borrowed from the library; throws CommandError if there is
/// none.
cv::Mat pictureFrom(const PictureCall& call);

/// Throws CommandError if the file is one of the project's own pictures.
void requireNoPicture(const std::string& file, const std::vector<PictureRecord>& pictures);

/// Throws CommandError if a picture cannot be written there, or if that is one of the project's
/// own.
void requireWritable(const std::string& file, const std::vector<PictureRecord>& pictures);

/// Throws CommandError if the file cannot be written.
void writePicture(const std::string& file, const cv::Mat& picture);
