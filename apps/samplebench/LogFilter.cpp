#include "LogFilter.h"

#include <string_view>

namespace {

// Said of each record that was not read, and so has nothing to save, whenever a project is saved.
constexpr std::string_view noise = "TNVTrainSet::save: Cannot save, data not loaded!";

}  // namespace

void LogFilter::silence() {
  const std::lock_guard lock(mutex);
  silent = true;
}

std::string LogFilter::newestLine() const {
  const std::lock_guard lock(mutex);
  return newest;
}

void LogFilter::finish() {
  const std::lock_guard lock(mutex);
  if (!current.empty()) endLine();
  reportRepeats();
  lastIsThere = false;
}

LogFilter::int_type LogFilter::overflow(int_type character) {
  if (traits_type::eq_int_type(character, traits_type::eof()))
    return traits_type::not_eof(character);
  const std::lock_guard lock(mutex);
  take(traits_type::to_char_type(character));
  return character;
}

std::streamsize LogFilter::xsputn(const char* text, std::streamsize count) {
  const std::lock_guard lock(mutex);
  for (std::streamsize i = 0; i < count; ++i)
    take(text[i]);
  return count;
}

void LogFilter::take(char character) {
  if (character == '\n') {
    endLine();
  } else {
    current += character;
  }
}

void LogFilter::endLine() {
  const bool isNoise = current == noise;
  if (!isNoise) newest = current;
  if (silent || isNoise) {
    current.clear();
    return;
  }
  if (lastIsThere && current == last) {
    ++repeats;
  } else {
    reportRepeats();
    errors.line(current);
    last = current;
    lastIsThere = true;
  }
  current.clear();
}

void LogFilter::reportRepeats() {
  if (repeats == 1) errors.line(last);
  if (repeats > 1) errors.line("... (repeated " + std::to_string(repeats) + " times)");
  repeats = 0;
}
