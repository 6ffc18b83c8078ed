#include "verify/LabelPlaces.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

bool isThere(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

bool isPictureFolder(const fs::path& part) {
  return part == "images" || part == "JPEGImages";
}

/// The path with `labels` in place of the last such folder; empty if it has none.
fs::path labelTreePath(const fs::path& picture) {
  fs::path head = picture.parent_path();
  fs::path tail = picture.filename();
  while (head.has_relative_path()) {
    if (isPictureFolder(head.filename())) return head.parent_path() / "labels" / tail;
    tail = head.filename() / tail;
    head = head.parent_path();
  }
  return {};
}

}  // namespace

std::string LabelPlaces::labelOf(const std::string& picture) {
  auto beside = fs::path(picture).replace_extension(".txt");
  auto elsewhere = labelTreePath(picture);
  if (elsewhere.empty()) return isThere(beside) ? beside.generic_string() : "";
  elsewhere.replace_extension(".txt");
  if (isThere(elsewhere)) return elsewhere.generic_string();
  if (!isThere(beside)) return "";
  const auto directory = beside.parent_path().generic_string();
  if (reported.insert(directory).second)
    findings.push_back({directory, 0, "images-folder",
                        "labels lie beside pictures below a folder named images or JPEGImages; "
                        "some trainers look for them in " +
                            elsewhere.parent_path().generic_string() +
                            " and take the pictures for empty"});
  return beside.generic_string();
}
