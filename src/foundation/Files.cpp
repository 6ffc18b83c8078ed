#include "foundation/Files.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>

namespace tnv {

namespace fs = std::filesystem;

namespace {

void reserveForFile(std::string& content, const std::string& path) {
  std::error_code error;
  const auto size = fs::file_size(path, error);
  if (!error) content.reserve(size);
}

/// With forward slashes, and without doubled ones, "." and "..".
std::string normalPath(const std::string& path) {
  return fs::path(withForwardSlashes(path)).lexically_normal().string();
}

}  // namespace

std::optional<std::string> readFile(const std::string& path) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  std::string content;
  std::array<char, std::size_t{1} << 14> piece;
  while (file) {
    file.read(piece.data(), piece.size());
    content.append(piece.data(), static_cast<std::size_t>(file.gcount()));
    // Most files end here; only a long one is worth asking for its size.
    if (file && content.size() == piece.size()) reserveForFile(content, path);
  }
  if (file.bad()) return std::nullopt;
  return content;
}

bool writeFile(const std::string& link, std::string_view content) {
  std::ofstream file(link, std::ios::binary | std::ios::trunc);
  if (!file) return false;
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  file.close();
  if (file.good()) return true;
  // By now a link leads to what was written.
  const std::string path = withoutLinks(link);
  std::error_code error;
  if (fs::is_regular_file(path, error)) fs::remove(path, error);
  return false;
}

bool replaceFile(const std::string& path, std::string_view content) {
  if (path.empty()) return false;
  const std::string target = withoutLinks(path);
  const std::string written = writeBeside(target, content);
  if (written.empty()) return false;
  if (takePlace(written, target)) return true;
  removeFile(written);
  return false;
}

std::string writeBeside(const std::string& target, std::string_view content) {
  std::string written = target + ".new";
  // A link or a pipe of that name would take the content elsewhere.
  removeFile(written);
  return writeFile(written, content) ? written : "";
}

bool takePlace(const std::string& path, const std::string& target) {
  std::error_code error;
  const fs::file_status earlier = fs::status(target, error);
  const bool differs =
      fs::exists(earlier) && fs::status(path, error).permissions() != earlier.permissions();
  // Setting them writes to the disk even if they stay the same.
  if (differs) fs::permissions(path, earlier.permissions(), error);
  fs::rename(path, target, error);
  return !error;
}

std::string withoutLinks(const std::string& path) {
  std::error_code error;
  if (!fs::is_symlink(path, error)) return path;
  const fs::path target = fs::canonical(path, error);
  return error ? path : target.string();
}

void removeFile(const std::string& path) {
  std::error_code error;
  const fs::file_status found = fs::symlink_status(path, error);
  if (fs::exists(found) && !fs::is_directory(found)) fs::remove(path, error);
}

std::vector<std::string_view> splitLines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    lines.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

std::string withForwardSlashes(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

std::string withOneSlash(std::string path) {
  while (path.ends_with('/'))
    path.pop_back();
  return path + "/";
}

std::optional<std::string> movedPath(const std::string& path, const std::string& from,
                                     const std::string& to) {
  const std::string before = withOneSlash(normalPath(from));
  const std::string normal = normalPath(path);
  if (!normal.starts_with(before)) return std::nullopt;
  return withOneSlash(normalPath(to)) + normal.substr(before.size());
}

bool isPlainName(std::string_view name) {
  if (name.empty() || name == "." || name == "..") return false;
  return std::none_of(name.begin(), name.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return c == '/' || c == '\\' || byte < 0x20 || byte == 0x7f;
  });
}

bool canNameFiles(std::string_view name) {
  // File systems take 255 bytes.
  constexpr std::size_t longest = 240;
  return isPlainName(name) && name.size() <= longest;
}

}  // namespace tnv
