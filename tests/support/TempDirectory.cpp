#include "support/TempDirectory.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace fs = std::filesystem;

TempDirectory::TempDirectory() {
  static std::atomic<unsigned> counter{0};
  std::random_device random;
  do {
    directory = (fs::temp_directory_path() /
                 ("tnv-test-" + std::to_string(random()) + "-" + std::to_string(counter++)))
                    .string() +
                "/";
  } while (!fs::create_directory(directory));
}

TempDirectory::~TempDirectory() {
  std::error_code error;
  fs::remove_all(directory, error);
}

std::string TempDirectory::write(const std::string& name, const std::string& content) const {
  const fs::path path = directory + name;
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << content;
  return path.string();
}

std::string TempDirectory::makeDirectory(const std::string& name) const {
  fs::create_directories(directory + name);
  return directory + name + (name.ends_with('/') ? "" : "/");
}

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}
