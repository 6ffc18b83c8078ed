#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tnv {

/// Whether the bytes are characters in UTF-8.
bool isUtf8(std::string_view text);

/// The text cut to that many bytes, in front of a character of UTF-8 if there is one.
std::string shortened(const std::string& text, std::size_t most);

}  // namespace tnv
