#include "support/LogCapture.h"

#include <iostream>

LogCapture::LogCapture() : before(std::cout.rdbuf(captured.rdbuf())) {}

LogCapture::~LogCapture() {
  std::cout.rdbuf(before);
}

std::vector<std::string> LogCapture::lines() const {
  std::vector<std::string> result;
  std::istringstream stream(text());
  for (std::string line; std::getline(stream, line);)
    result.push_back(line);
  return result;
}
