#pragma once

#include <string>
#include <string_view>

/// Numbers to text and back without any influence of the locale, and the two conversions from
/// floating point to 32-bit integers that the geometry is built on.
namespace tnv {

/// Nearest integer, ties to even. Not-a-number and values out of range give the smallest integer.
int roundToInt(double value);

/// Toward zero. Not-a-number and values out of range give the smallest integer.
int truncateToInt(double value);

/// Nearest integer, ties away from zero. Not-a-number and values out of range give the smallest
/// integer.
int roundHalfAwayToInt(double value);

/// `a + b` and `a - b`, held at the ends of the 32-bit range instead of overflowing.
int addSaturated(int a, int b);
int subtractSaturated(int a, int b);

/// The format "%f": six decimals.
std::string formatFixed(double value);

/// The format "%.<precision>g", which is also what a text stream of that precision writes.
std::string formatGeneral(double value, int precision);

/// The leading decimal integer of a text, like `atoi`: leading blanks and a sign are allowed, a
/// text without a number gives 0, a number out of range the nearest end of the range.
int parseInt(std::string_view text);

/// The leading decimal number of a text, like `atof`: 0 where there is none. Hexadecimal numbers
/// are not read.
double parseDouble(std::string_view text);

/// The leading hexadecimal integer of a text. Throws `std::invalid_argument` when the text does not
/// start with a number and `std::out_of_range` when the number does not fit.
int parseHexStrict(std::string_view text);

}  // namespace tnv
