#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tnv {

/// What an export that was cut off left has names that begin so. Readers pass over it.
constexpr std::string_view kExportLeftovers = ".label-export.";

/// The directory of the export that a path may be of.
std::string exportOf(const std::string& path);

/// Whether an export to the directory was cut off while it took the place of an earlier one.
bool wasInterrupted(const std::string& directory);

/// The format of the export in the directory; empty if there is none that was finished.
std::string exportedFormat(const std::string& directory);

/// Whether pictures were copied to the directory by an export.
bool holdsPictures(const std::string& directory);

/// Why a directory cannot be one to write to; empty if it is one, or could be made.
std::string whyNoDirectory(const std::string& directory);

/// The directory of an export. A new one comes together out of sight, and takes the place of the
/// earlier one when it is whole; otherwise all is left as it was.
class ExportPlace {
 public:
  explicit ExportPlace(const std::string& directory);
  ~ExportPlace();
  ExportPlace(const ExportPlace&) = delete;
  ExportPlace& operator=(const ExportPlace&) = delete;

  /// False, with a log line, if nothing can be written there.
  bool prepare();

  /// The directory to write to.
  std::string newExport() const;

  /// False, with a log line, if the earlier export stayed.
  bool replace(const std::string& format);

 private:
  void noteMissing();
  bool mark(const std::string& format) const;

  /// The earlier export is out of the way, with its mark: all entries in place are new from here
  /// on.
  bool markRetired() const;

  /// Puts an export back that was on its way out, and takes away what came in its place.
  void restore() const;

  std::filesystem::path root;
  std::filesystem::path staging;
  std::filesystem::path retired;
  std::vector<std::filesystem::path> made;  ///< directories that did not exist, the lowest first
  bool isMarkedAnew = false;
};

}  // namespace tnv
