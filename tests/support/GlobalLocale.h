#pragma once

#include <locale>

/// The global locale as long as the object is there.
class GlobalLocale {
 public:
  explicit GlobalLocale(const std::locale& locale) : before(std::locale::global(locale)) {}
  ~GlobalLocale() { std::locale::global(before); }
  GlobalLocale(const GlobalLocale&) = delete;
  GlobalLocale& operator=(const GlobalLocale&) = delete;

 private:
  std::locale before;
};
