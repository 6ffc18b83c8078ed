#include "Numbers.h"

#include <charconv>
#include <cmath>

#include "CommandError.h"

namespace {

template <typename Number, typename... Format>
std::optional<Number> parseWhole(std::string_view text, Format... format) {
  Number number{};
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number, format...);
  if (error != std::errc() || rest != end) return std::nullopt;
  return number;
}

std::string quoted(std::string_view text) {
  return "'" + std::string(text) + "'";
}

}  // namespace

std::optional<double> parseNumber(std::string_view text) {
  const auto number = parseWhole<double>(text);
  if (!number || !std::isfinite(*number)) return std::nullopt;
  return number;
}

std::optional<std::uint32_t> parseSeed(std::string_view text) {
  return parseWhole<std::uint32_t>(text);
}

Point parsePoint(std::string_view text) {
  const auto comma = text.find(',');
  if (comma != std::string_view::npos) {
    const auto x = parseNumber(text.substr(0, comma));
    const auto y = parseNumber(text.substr(comma + 1));
    if (x && y) return {*x, *y};
  }
  throw CommandError(quoted(text) + " is no point; write two numbers as x,y, like 0.25,0.5",
                     exitUsage);
}

std::vector<Point> parsePoints(std::string_view text) {
  constexpr std::string_view blanks = " ";
  std::vector<Point> points;
  for (auto begin = text.find_first_not_of(blanks); begin != std::string_view::npos;) {
    const auto end = text.find_first_of(blanks, begin);
    points.push_back(parsePoint(text.substr(begin, end - begin)));
    begin = text.find_first_not_of(blanks, end);
  }
  return points;
}

bool isWithinPicture(Point point) {
  return point.x >= 0 && point.x <= 1 && point.y >= 0 && point.y <= 1;
}

Size parseSize(std::string_view text) {
  const auto cross = text.find('x');
  if (cross != std::string_view::npos) {
    const auto width = parseWhole<int>(text.substr(0, cross));
    const auto height = parseWhole<int>(text.substr(cross + 1));
    if (width && height && *width >= 1 && *height >= 1) return {*width, *height};
  }
  throw CommandError(quoted(text) + " is no size; write it as WIDTHxHEIGHT, like 800x600",
                     exitUsage);
}

Color parseColor(std::string_view text) {
  const auto number = parseWhole<int>(text, 16);
  if (text.size() == 6 && text[0] != '-' && number)
    return {*number >> 16, (*number >> 8) & 255, *number & 255};
  throw CommandError(quoted(text) + " is no colour; write it as RRGGBB, like ff8000", exitUsage);
}

std::string numberText(double number) {
  char text[32];
  const auto result = std::to_chars(text, text + sizeof text, number);
  return {text, result.ptr};
}

std::string formatFixed(double number, int digits) {
  char text[512];  // the largest number has 309 digits before its point
  const auto result =
      std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, digits);
  return {text, result.ptr};
}

std::string pointText(Point point) {
  return numberText(point.x) + "," + numberText(point.y);
}
