#pragma once

#include <string>

/// With so many digits behind the point.
std::string text(double value, int digits);

/// With a comma at the thousands.
std::string grouped(int number);
