#include "foundation/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>

namespace tnv {

namespace {

constexpr int kSmallest = std::numeric_limits<int>::min();
constexpr int kLargest = std::numeric_limits<int>::max();

/// The integer of an already integral value. Comparisons with not-a-number are false, so that it
/// takes the last line as well.
int toInt(double integral) {
  if (integral >= double{kSmallest} && integral <= double{kLargest}) {
    return static_cast<int>(integral);
  }
  return kSmallest;
}

int clampToInt(std::int64_t value) {
  return static_cast<int>(
      std::clamp<std::int64_t>(value, std::int64_t{kSmallest}, std::int64_t{kLargest}));
}

bool isSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

/// The text from its number on: without leading blanks and without a plus sign, which
/// `std::from_chars` does not take.
std::string_view numberStart(std::string_view text) {
  while (!text.empty() && isSpace(text.front()))
    text.remove_prefix(1);
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  return text;
}

template <class... Format>
std::string format(double value, Format... style) {
  // The largest double has 309 digits before the point.
  std::array<char, 400> buffer;
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, style...);
  return {buffer.data(), result.ptr};
}

}  // namespace

int roundToInt(double value) {
  return toInt(std::nearbyint(value));
}

int truncateToInt(double value) {
  return toInt(std::trunc(value));
}

int roundHalfAwayToInt(double value) {
  return toInt(std::round(value));
}

int addSaturated(int a, int b) {
  return clampToInt(std::int64_t{a} + b);
}

int subtractSaturated(int a, int b) {
  return clampToInt(std::int64_t{a} - b);
}

std::string formatFixed(double value) {
  return format(value, std::chars_format::fixed, 6);
}

std::string formatGeneral(double value, int precision) {
  return format(value, std::chars_format::general, precision);
}

int parseInt(std::string_view text) {
  text = numberStart(text);
  int value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc::result_out_of_range) return value;
  return text.front() == '-' ? kSmallest : kLargest;
}

double parseDouble(std::string_view text) {
  text = numberStart(text);
  double value = 0.0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc::result_out_of_range) return value;
  // `std::from_chars` does not say at which end; a stream fails at the upper one alone.
  std::istringstream stream(std::string(text.data(), result.ptr));
  stream.imbue(std::locale::classic());
  if (stream >> value) return value;
  return std::copysign(std::numeric_limits<double>::infinity(), value);
}

int parseHexStrict(std::string_view text) {
  text = numberStart(text);
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    text.remove_prefix(2);
  }
  int value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (result.ec == std::errc::invalid_argument) {
    throw std::invalid_argument("invalid stoi argument");
  }
  if (result.ec == std::errc::result_out_of_range) {
    throw std::out_of_range("stoi argument out of range");
  }
  return value;
}

}  // namespace tnv
