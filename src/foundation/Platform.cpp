#include "foundation/Platform.h"

namespace tnv {

#ifdef _WIN32

std::tm localTime(std::time_t time) {
  std::tm result{};
  localtime_s(&result, &time);
  return result;
}

#else

std::tm localTime(std::time_t time) {
  std::tm result{};
  localtime_r(&time, &result);
  return result;
}

#endif

}  // namespace tnv
