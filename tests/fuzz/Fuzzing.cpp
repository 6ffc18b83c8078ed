#include "fuzz/Fuzzing.h"

#include <cstdio>
#include <cstdlib>

#include <opencv2/core/utils/logger.hpp>

#include "foundation/Log.h"

namespace {

int saysNothing(int, const char*, const char*, const char*, int, void*) {
  return 0;
}

}  // namespace

const TempDirectory& fuzz::place() {
  static const TempDirectory directory;
  return directory;
}

void fuzz::require(bool promise, const char* what) {
  if (promise) return;
  std::fprintf(stderr, "broken promise: %s\n", what);
  std::abort();
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  cv::redirectError(saysNothing);
  cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const tnv::DivertedLog silence([](std::string_view) {});
  fuzz::run({reinterpret_cast<const char*>(data), size});
  return 0;
}
