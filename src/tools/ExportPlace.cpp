#include "tools/ExportPlace.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <system_error>

#include "foundation/Files.h"
#include "foundation/Log.h"
#include "foundation/Platform.h"
#include "tools/LabelFiles.h"

namespace tnv {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kWho = "TNVToolLabelExchange::write";

/// Lies in the directory of an export and names its format, so that a later one may take its place.
constexpr std::string_view kExportMark = ".label-export";

/// Where a new export comes together, and where the earlier one waits while it takes its place.
/// Readers pass over names that begin so.
constexpr std::string_view kStaging = ".label-export.next";
constexpr std::string_view kRetired = ".label-export.former";

/// All that an export of any format puts into its directory.
constexpr std::string_view kExportEntries[] = {"labels",       "images",          "JPEGImages",
                                               "Annotations",  "classes.txt",     "data.yaml",
                                               "pictures.txt", "annotations.json"};

/// Those of them that hold copies of pictures.
constexpr std::string_view kPictureEntries[] = {"images", "JPEGImages"};

bool isEmpty(const fs::path& directory) {
  std::error_code error;
  return fs::is_empty(directory, error) && !error;
}

bool isExport(const fs::path& directory) {
  std::error_code error;
  return fs::is_regular_file(directory / kExportMark, error);
}

bool isTooLong(const fs::path& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  return !fs::exists(status) && error == std::errc::filename_too_long;
}

/// Moves what belongs to an export. False, with a log line, at the first entry that cannot be.
bool moveAll(const fs::path& from, const fs::path& to) {
  for (const std::string_view entry : kExportEntries) {
    std::error_code error;
    if (!fs::exists(fs::symlink_status(from / entry, error))) continue;
    fs::rename(from / entry, to / entry, error);
    if (!error) continue;
    logLine(std::string(kWho) + ": Could not move '" + (from / entry).string() +
            "': " + error.message());
    return false;
  }
  return true;
}

}  // namespace

std::string exportOf(const std::string& path) {
  std::error_code error;
  return fs::is_directory(path, error) ? path : fs::path(path).parent_path().string();
}

bool wasInterrupted(const std::string& directory) {
  std::error_code error;
  return fs::exists(fs::path(directory) / kRetired, error);
}

bool holdsPictures(const std::string& directory) {
  return std::any_of(
      std::begin(kPictureEntries), std::end(kPictureEntries), [&](std::string_view entry) {
        std::error_code error;
        return fs::exists(fs::symlink_status(fs::path(directory) / entry, error)) ||
               fs::exists(fs::symlink_status(fs::path(directory) / kRetired / entry, error));
      });
}

std::string exportedFormat(const std::string& directory) {
  const auto mark = readFile(asDirectory(directory) + std::string(kExportMark));
  const std::string_view text = mark ? *mark : std::string_view();
  return std::string(text.substr(0, text.find('\n')));
}

std::string whyNoDirectory(const std::string& directory) {
  if (directory.empty()) return "No directory was given!";
  fs::path present;  // the lowest directory on the way that exists
  bool isThere = true;
  for (const fs::path& part : fs::path(absolutePicturePath(directory))) {
    const fs::path next = present / part;
    if (isTooLong(next)) return "'" + part.string() + "' is too long a name!";
    std::error_code error;
    const fs::file_status status = fs::status(next, error);
    if (!isThere || status.type() == fs::file_type::not_found) {
      isThere = false;
    } else if (!fs::status_known(status)) {
      return "'" + next.string() + "' cannot be used: " + error.message();
    } else if (!fs::is_directory(status)) {
      return "'" + next.string() + "' is a file, no directory!";
    } else {
      present = next;
    }
  }
  if (isTooLong(directory)) return "'" + directory + "' is too long a path!";
  if (!mayWriteTo(present.string()))
    return "There are no rights to write to '" + present.string() + "'!";
  if (isThere && !isEmpty(present) && !isExport(present))
    return "'" + directory + "' holds files that are no earlier export!";
  return {};
}

ExportPlace::ExportPlace(const std::string& directory)
    : root(directory), staging(root / kStaging), retired(root / kRetired) {}

ExportPlace::~ExportPlace() {
  std::error_code error;
  fs::remove_all(staging, error);
  if (!isMarkedAnew) return;
  fs::remove(root / kExportMark, error);
  for (const fs::path& directory : made)
    fs::remove(directory, error);
}

bool ExportPlace::prepare() {
  noteMissing();
  if (!makeDirectory(root.string(), kWho)) return false;
  isMarkedAnew = !isExport(root);
  // Marked first, so that what is left of a run that was killed can be replaced.
  if (isMarkedAnew && !mark({})) return false;
  restore();
  std::error_code error;
  fs::remove_all(staging, error);
  return makeDirectory(staging.string(), kWho);
}

std::string ExportPlace::newExport() const {
  return asDirectory(staging.string());
}

bool ExportPlace::replace(const std::string& format) {
  if (!makeDirectory(retired.string(), kWho)) return false;
  if (!moveAll(root, retired) || !markRetired() || !moveAll(staging, root) || !mark(format)) {
    restore();
    return false;
  }
  isMarkedAnew = false;
  // Under the name of what nobody needs it goes, however far that comes.
  std::error_code error;
  fs::remove_all(staging, error);
  fs::rename(retired, staging, error);
  return true;
}

void ExportPlace::noteMissing() {
  std::error_code error;
  for (fs::path path = absolutePicturePath(root.string());
       !path.empty() && !fs::exists(path, error) && !error; path = path.parent_path()) {
    if (path.has_filename()) made.push_back(path);
  }
}

bool ExportPlace::mark(const std::string& format) const {
  return writeWhole((root / kExportMark).string(), format + "\n", kWho);
}

bool ExportPlace::markRetired() const {
  return writeWhole((retired / kExportMark).string(), exportedFormat(root.string()) + "\n", kWho);
}

void ExportPlace::restore() const {
  std::error_code error;
  if (!fs::is_directory(retired, error)) return;
  const bool isOut = isExport(retired);
  for (const std::string_view entry : kExportEntries) {
    // What was not on its way out yet is still in place.
    const bool isRetired = fs::exists(fs::symlink_status(retired / entry, error));
    if (!isOut && !isRetired) continue;
    fs::remove_all(root / entry, error);
    if (isRetired) fs::rename(retired / entry, root / entry, error);
  }
  if (isOut) fs::rename(retired / kExportMark, root / kExportMark, error);
  fs::remove(retired, error);
}

}  // namespace tnv
