#include "Texts.h"

#include <array>
#include <cstdio>

std::string text(double value, int digits) {
  std::array<char, 40> buffer;
  std::snprintf(buffer.data(), buffer.size(), "%.*f", digits, value);
  return buffer.data();
}

std::string grouped(int number) {
  std::string digits = std::to_string(number);
  for (int at = static_cast<int>(digits.size()) - 3; at > 0; at -= 3)
    digits.insert(static_cast<std::size_t>(at), 1, ',');
  return digits;
}
