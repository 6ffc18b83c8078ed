#include "foundation/TNVDirectory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>

#include <openssl/evp.h>

#include "foundation/Files.h"
#include "foundation/Log.h"
#include "foundation/Platform.h"

namespace fs = std::filesystem;

namespace {

std::string lowerCased(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
    return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  });
  return text;
}

/// What follows the last dot of the last component; a leading dot does not count.
std::string_view extensionOf(std::string_view path) {
  const std::string_view name = path.substr(path.rfind('/') + 1);
  const auto dot = name.rfind('.');
  return dot == name.npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

template <class Iterator>
std::vector<std::string> filteredPaths(Iterator entries, const std::vector<std::string>& types) {
  std::vector<std::string> wanted;
  std::transform(types.begin(), types.end(), std::back_inserter(wanted), lowerCased);
  std::vector<std::string> paths;
  for (const fs::directory_entry& entry : entries) {
    std::string path = tnv::withForwardSlashes(entry.path().string());
    const std::string extension = lowerCased(std::string(extensionOf(path)));
    const auto times = wanted.empty() ? 1 : std::count(wanted.begin(), wanted.end(), extension);
    for (auto i = times; i > 1; --i)
      paths.push_back(path);
    if (times > 0) paths.push_back(std::move(path));
  }
  return paths;
}

std::string hexText(const unsigned char* bytes, std::size_t count) {
  constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    text += digits[bytes[i] >> 4];
    text += digits[bytes[i] & 15];
  }
  return text;
}

}  // namespace

void TNVDirectory::createDirectory(const std::string& path) {
  try {
    fs::create_directories(path);
  } catch (const std::exception&) {
    tnv::logLine("TNVDirectory::createDirectory: Error while creating directories!");
  }
}

bool TNVDirectory::exists(const std::string& path) {
  return fs::exists(path);
}

void TNVDirectory::remove(const std::string& path) {
  // Without the slash behind it, a link to a directory goes and not what it leads to.
  const fs::path given(path);
  std::error_code error;
  fs::remove_all(given.has_filename() ? given : given.parent_path(), error);
  if (error) throw fs::filesystem_error("remove_all", path, error);
}

std::vector<std::string> TNVDirectory::readPaths(const std::string& path,
                                                 const std::vector<std::string>& types,
                                                 bool recursive) {
  if (!exists(path)) {
    tnv::logLine("TNVDirectory::readFiles: Path '" + path + "' not found!");
    return {};
  }
  if (recursive) return filteredPaths(fs::recursive_directory_iterator(path), types);
  return filteredPaths(fs::directory_iterator(path), types);
}

std::vector<TNVFileInfo> TNVDirectory::readFiles(const std::string& path,
                                                 const std::vector<std::string>& types,
                                                 bool recursive) {
  const auto paths = readPaths(path, types, recursive);
  return {paths.begin(), paths.end()};
}

std::vector<std::string> TNVDirectory::readFileNames(const std::string& path,
                                                     const std::vector<std::string>& types) {
  std::vector<std::string> names;
  if (!exists(path)) return names;
  for (const TNVFileInfo& info : readFiles(path, types, false))
    names.push_back(info.fileName);
  return names;
}

std::vector<std::string> TNVDirectory::readDirectories(const std::string& path) {
  std::vector<std::string> result;
  if (!exists(path)) {
    tnv::logLine("TNVDirectory::readDirectories: Path '" + path + "' not found!");
    return result;
  }
  for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
    // An entry that cannot be examined, a link in a circle say, is no directory.
    std::error_code error;
    if (!entry.is_directory(error)) continue;
    std::string directory = tnv::withForwardSlashes(entry.path().string());
    if (!directory.ends_with('/')) directory += '/';
    result.push_back(std::move(directory));
  }
  return result;
}

std::string TNVDirectory::getLastDirectoryName(const std::string& path) {
  if (!fs::is_directory(path)) {
    tnv::logLine("TNVDirectory::getLastDirectoryName: '" + path + "' is not direcotry!");
    return {};
  }
  std::string name;
  std::size_t start = 0;
  for (auto slash = path.find('/'); slash != std::string::npos; slash = path.find('/', start)) {
    if (slash > start) name = path.substr(start, slash - start);
    start = slash + 1;
  }
  return name;
}

std::string TNVDirectory::normalizePath(const std::string& path) {
  std::string result = tnv::withForwardSlashes(path);
  std::error_code error;
  if (!result.ends_with('/') && fs::is_directory(result, error)) result += '/';
  return result;
}

void TNVDirectory::copy(const std::string& from, const std::string& to) {
  std::error_code error;
  fs::copy(from, to, fs::copy_options::recursive, error);
  if (error) throw fs::filesystem_error("copy", from, to, error);
}

std::vector<std::string> TNVDirectory::readLines(const std::string& file) {
  const std::string content = tnv::readFile(file).value_or("");
  const auto lines = tnv::splitLines(content);
  return {lines.begin(), lines.end()};
}

long long TNVDirectory::fileSize(const std::string& file) {
  std::error_code error;
  if (fs::is_directory(file, error)) return -1;
  std::ifstream stream(file, std::ios::binary | std::ios::ate);
  return stream ? static_cast<long long>(stream.tellg()) : -1;
}

std::string TNVDirectory::fileMD5(const std::string& file) {
  std::error_code error;
  std::ifstream stream(file, std::ios::binary);
  if (!stream || fs::is_directory(file, error)) return {};
  const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                        EVP_MD_CTX_free);
  if (!context || EVP_DigestInit_ex(context.get(), EVP_md5(), nullptr) != 1) return {};
  // Read in pieces, so that memory does not grow with the file.
  std::vector<char> piece(std::size_t{1} << 20);
  while (stream) {
    stream.read(piece.data(), static_cast<std::streamsize>(piece.size()));
    EVP_DigestUpdate(context.get(), piece.data(), static_cast<std::size_t>(stream.gcount()));
  }
  if (stream.bad()) return {};
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest;
  unsigned length = 0;
  EVP_DigestFinal_ex(context.get(), digest.data(), &length);
  return hexText(digest.data(), length);
}

std::string makeUniqueName() {
  static std::atomic<unsigned> counter{0};
  return makeUniqueName(tnv::localTime(std::time(nullptr)), counter++);
}

std::string makeUniqueName(const std::string& directory, const std::string& ending) {
  std::error_code error;
  std::string name = makeUniqueName();
  while (fs::exists(directory + name + ending, error))
    name = makeUniqueName();
  return name;
}

std::string makeUniqueName(const std::tm& time, unsigned counter) {
  std::array<char, 80> text;
  std::snprintf(text.data(), text.size(), "%02d%02d%04d%02d%02d%02d%u", time.tm_mon + 1,
                time.tm_mday, time.tm_year + 1900, time.tm_hour, time.tm_min, time.tm_sec, counter);
  return text.data();
}
