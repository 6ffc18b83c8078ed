#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Reading and writing of numbers with a decimal point, whatever the locale.

/// The finite number that the whole text stands for.
std::optional<double> parseNumber(std::string_view text);

/// The number from 0 to 4294967295 that the whole text stands for.
std::optional<std::uint32_t> parseSeed(std::string_view text);

struct Point {
  double x = 0;
  double y = 0;

  bool operator==(const Point&) const = default;
};

/// The point "x,y"; throws CommandError for anything else.
Point parsePoint(std::string_view text);

/// Points with blanks between them; throws CommandError if one is none.
std::vector<Point> parsePoints(std::string_view text);

/// Whether the point lies on the picture, in relative coordinates.
bool isWithinPicture(Point point);

struct Size {
  int width = 0;
  int height = 0;
};

/// The size "WxH", both at least 1; throws CommandError for anything else.
Size parseSize(std::string_view text);

struct Color {
  int red = 0;
  int green = 0;
  int blue = 0;
};

/// The colour "RRGGBB" in hexadecimal; throws CommandError for anything else.
Color parseColor(std::string_view text);

/// With that many digits behind the point.
std::string formatFixed(double number, int digits);

/// The shortest text that reads back as the same number.
std::string numberText(double number);
std::string pointText(Point point);
