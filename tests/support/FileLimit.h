#pragma once

#include <csignal>
#include <stdexcept>

#include <sys/resource.h>

/// As long as this object lives no file takes more bytes, as if the disk were full.
class FileLimit {
 public:
  explicit FileLimit(rlim_t bytes) : handler(std::signal(SIGXFSZ, SIG_IGN)) {
    if (getrlimit(RLIMIT_FSIZE, &kept) != 0) throw std::runtime_error("no limit to change");
    const rlimit limit{bytes, kept.rlim_max};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) throw std::runtime_error("the limit stays");
  }
  ~FileLimit() {
    setrlimit(RLIMIT_FSIZE, &kept);
    std::signal(SIGXFSZ, handler);
  }
  FileLimit(const FileLimit&) = delete;
  FileLimit& operator=(const FileLimit&) = delete;

 private:
  void (*handler)(int);
  rlimit kept{};
};
