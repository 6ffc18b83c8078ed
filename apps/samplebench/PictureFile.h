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

/// Whether that is a file: looking into a pipe might never end.
bool isFile(const std::string& path);

/// Whether the file begins like a picture that can be read.
bool looksLikePicture(const std::string& file);

/// Throws CommandError if none of the pictures can be read, for an earlier result would give way to
/// an empty one. `owner` is what they are the pictures of.
void requireReadable(const WTNVProject& project, const std::vector<PictureRecord>& pictures,
                     const std::string& owner = "the project");

/// The size in which the picture of a file is seen; empty if it cannot be read.
cv::Size pictureSize(const std::string& file);

/// Tells how many pictures a result does without, for they cannot be read; any is a finding.
void sayLeftOut(std::size_t pictures, Output& output);

/// Throws CommandError if a picture cannot be written there, or if something of the project or no
/// file at all would be written over.
void requireWritablePicture(const std::string& file);
void requireWritablePicture(const std::string& file, const WTNVProject& project,
                            const std::vector<PictureRecord>& pictures);

/// Throws CommandError if the file cannot be written.
void writePicture(const std::string& file, const cv::Mat& picture);

/// The same as the result of a command: tells of it, and in a dry run only that. `details` follow
/// the size in what is said.
void writeResult(const std::string& file, const cv::Mat& picture, const std::string& details,
                 Output& output);
