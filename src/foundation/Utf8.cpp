#include "foundation/Utf8.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace tnv {

namespace {

/// The bytes of the character that the text begins with; 0 if it begins with none in UTF-8, which
/// has one way to write each and no halves of characters.
std::size_t characterSize(std::string_view text) {
  struct Kind {
    unsigned char mask;
    unsigned char lead;
    std::uint32_t least;
  };
  constexpr Kind kinds[] = {
      {0x80, 0, 0}, {0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}};
  const auto first = static_cast<unsigned char>(text.front());
  const auto* kind = std::find_if(std::begin(kinds), std::end(kinds), [&](const Kind& each) {
    return (first & each.mask) == each.lead;
  });
  const auto size = static_cast<std::size_t>(kind - std::begin(kinds)) + 1;
  if (kind == std::end(kinds) || text.size() < size) return 0;
  std::uint32_t code = first & ~kind->mask & 0xFFU;
  for (const char c : text.substr(1, size - 1)) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xC0) != 0x80) return 0;
    code = code << 6 | (byte & 0x3FU);
  }
  const bool isHalf = code >= 0xD800 && code < 0xE000;
  return code < kind->least || code > 0x10FFFF || isHalf ? 0 : size;
}

}  // namespace

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t size = characterSize(text);
    if (size == 0) return false;
    text.remove_prefix(size);
  }
  return true;
}

std::string shortened(const std::string& text, std::size_t most) {
  if (text.size() <= most) return text;
  std::size_t size = most;
  while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
    --size;
  return text.substr(0, size == 0 ? most : size);
}

}  // namespace tnv
