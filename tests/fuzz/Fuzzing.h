#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <opencv2/core.hpp>

#include "support/TempDirectory.h"

/// What all fuzz targets share. A target is a function that takes any bytes: it may refuse them in
/// the ways that its header tells, and must not crash, hang, leak or break a promise.
namespace fuzz {

/// A directory for the files of one target, the same for all its inputs.
const TempDirectory& place();

/// Ends the run with the input as a finding.
void require(bool promise, const char* what);

/// Calls the work, which may end with the library's own exception.
template <class Work>
void mayThrow(const Work& work) {
  try {
    work();
  } catch (const cv::Exception&) {
  }
}

/// To be defined by each target.
void run(std::string_view input);

}  // namespace fuzz
