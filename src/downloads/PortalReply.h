#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "downloads/TNVDownloadFile.h"

namespace tnv {

/// The files that a portal's reply names, the last one first. The reply is a JSON object with the
/// members "0", "1" and so on; what is no JSON names no files. Throws `Json::Exception` where a
/// value has another type, and `std::invalid_argument` or `std::out_of_range` for a size that is no
/// number or does not fit.
std::vector<TNVDownloadFile> filesOfReply(const std::string& reply);

/// The text with `?` for what would leave its line in a log.
std::string printable(std::string_view text);

}  // namespace tnv
