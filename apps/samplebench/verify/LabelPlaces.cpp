#include "verify/LabelPlaces.h"

#include <algorithm>
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
  fs::path tail = picture.filename().replace_extension(".txt");
  while (head.has_relative_path()) {
    if (isPictureFolder(head.filename())) return head.parent_path() / "labels" / tail;
    tail = head.filename() / tail;
    head = head.parent_path();
  }
  return {};
}

bool hasSeveralPictureFolders(const fs::path& picture) {
  const auto folders = picture.parent_path();
  return std::count_if(folders.begin(), folders.end(), isPictureFolder) > 1;
}

}  // namespace

std::string LabelPlaces::labelOf(const std::string& picture) {
  const auto beside = fs::path(picture).replace_extension(".txt");
  const auto inTree = labelTreePath(picture);
  if (inTree.empty()) return isThere(beside) ? beside.generic_string() : "";
  if (isThere(inTree)) {
    if (hasLists) {
      report(picture, "Darknet looks for their labels beside them, others in " +
                          inTree.parent_path().generic_string());
    } else if (hasSeveralPictureFolders(picture)) {
      report(picture,
             "there are several in the path, of which trainers put labels in place of the "
             "first, the last or all");
    }
    return inTree.generic_string();
  }
  if (!isThere(beside)) return "";
  report(picture, "their labels lie beside them, and some trainers look for these in " +
                      inTree.parent_path().generic_string() + " and take the pictures for empty");
  return beside.generic_string();
}

void LabelPlaces::report(const std::string& picture, const std::string& text) {
  const auto directory = fs::path(picture).parent_path().generic_string();
  if (reported.insert(directory).second)
    findings.push_back({directory, 0, "images-folder",
                        "the pictures lie below a folder named images or JPEGImages: " + text});
}
