#pragma once

#include <string>
#include <system_error>

/// What the system says of an error, in the language of the user.
inline std::string messageOf(std::errc error) {
  return std::make_error_code(error).message();
}
