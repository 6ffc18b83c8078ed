#pragma once

#include <string_view>

namespace tnv {

/// Writes one line of the system's log to standard output and flushes it. Safe on any thread.
void logLine(std::string_view line);

}  // namespace tnv
