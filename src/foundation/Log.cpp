#include "foundation/Log.h"

#include <iostream>
#include <mutex>
#include <utility>

namespace tnv {

namespace {

thread_local const DivertedLog::Sink* diversion = nullptr;

}  // namespace

void logLine(std::string_view line) {
  if (diversion) return (*diversion)(line);
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  std::cout << line << std::endl;
}

DivertedLog::DivertedLog(Sink target)
    : sink(std::move(target)), before(std::exchange(diversion, &sink)) {}

DivertedLog::~DivertedLog() {
  diversion = before;
}

}  // namespace tnv
