#include "OutputFile.h"

#include <algorithm>
#include <fstream>

#include "CommandError.h"
#include "HtmlPage.h"
#include "Interrupt.h"
#include "PictureFile.h"
#include "Platform.h"
#include "SetLists.h"

namespace fs = std::filesystem;

namespace {

// As many as the system follows.
constexpr int mostLinks = 40;

void requireNoPicture(const std::string& file, const std::vector<PictureRecord>& pictures) {
  for (const auto& picture : pictures) {
    std::error_code error;
    if (fs::equivalent(file, picture.path, error))
      throw CommandError("'" + file + "' is a picture of the project; choose another file");
  }
}

[[noreturn]] void refuse(const std::string& file) {
  throw CommandError("'" + file +
                     "' cannot be written; see that its directory exists and is yours, and that "
                     "there is space");
}

[[noreturn]] void refuseDirectory(const std::string& directory) {
  throw CommandError("'" + directory +
                     "' cannot be made a directory; see that no file is in the way and that the "
                     "place is yours");
}

void requireParent(const std::string& file) {
  std::error_code error;
  const auto directory = destinationOf(file).parent_path();
  if (!fs::is_directory(directory, error) || !platform::canWriteIn(directory)) refuse(file);
}

bool isTaken(const fs::path& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));
}

// A name beside the file that nothing has.
fs::path freePart(const fs::path& file) {
  fs::path part = file.string() + ".part";
  for (int i = 2; isTaken(part); ++i)
    part = file.string() + ".part" + std::to_string(i);
  return part;
}

}  // namespace

fs::path destinationOf(const std::string& file) {
  std::error_code error;
  auto place = fs::absolute(file);
  for (int i = 0; i < mostLinks; ++i) {
    if (!fs::is_symlink(fs::symlink_status(place, error)))
      return fs::weakly_canonical(place, error);
    place = place.parent_path() / fs::read_symlink(place, error);
  }
  throw CommandError("'" + file + "' cannot be written; it is a link in a circle");
}

void requireReplaceableFile(const std::string& file) {
  destinationOf(file);
  std::error_code error;
  const auto status = fs::status(file, error);
  if (fs::is_directory(status))
    throw CommandError("'" + file + "' is a directory; name a file in it");
  if (fs::exists(status) && !fs::is_regular_file(status))
    throw CommandError("'" + file +
                       "' cannot be written; it is a pipe or a device, choose another file");
}

void requireReplaceableFile(const std::string& file, const WTNVProject& project,
                            const std::vector<PictureRecord>& pictures) {
  requireReplaceableFile(file);
  if (liesWithin(destinationOf(file), projectDirectory(project)))
    throw CommandError("'" + file +
                       "' lies in the directory of the project, which is for the project's own "
                       "files; choose another place");
  requireNoPicture(file, pictures);
  // Nobody knows the pictures of a set whose list is lost.
  if (looksLikePicture(file)) requireSetLists(project);
}

void requireWritable(const std::string& file) {
  requireReplaceableFile(file);
  requireParent(file);
}

void requireWritable(const std::string& file, const WTNVProject& project,
                     const std::vector<PictureRecord>& pictures) {
  requireReplaceableFile(file, project, pictures);
  requireParent(file);
}

void requireNoForeignPage(const std::string& report) {
  std::error_code error;
  if (!fs::is_regular_file(report, error)) return;
  if (fs::is_empty(report, error) || isPageOfOurs(report)) return;
  throw CommandError("'" + report +
                     "' is no report of ours and would be replaced; choose another file");
}

void requireDirectoryPlace(const std::string& directory) {
  std::error_code error;
  const auto place = lowestExisting(directory);
  if (!fs::is_directory(place, error)) refuseDirectory(directory);
  if (!platform::canWriteIn(place))
    throw CommandError("'" + place.string() +
                       "' cannot be written to; choose a directory of yours");
}

std::string directoryBehind(const std::string& directory) {
  // With a slash behind its name the system goes through the link already.
  const auto path = fs::path(directory).lexically_normal();
  const auto place = path.has_filename() ? path : path.parent_path();
  std::error_code error;
  if (!fs::is_symlink(fs::symlink_status(place, error))) return directory;
  const auto target = fs::canonical(place, error);
  if (error)
    throw CommandError("'" + directory + "' is a link to '" +
                       fs::read_symlink(place, error).string() +
                       "', which is not there; make that directory, or choose another place");
  return place.is_absolute() ? target.string() : fs::proximate(target).string();
}

bool holdsFiles(const std::string& directory) {
  std::error_code error;
  fs::recursive_directory_iterator entries(directory, error);
  return std::any_of(begin(entries), end(entries),
                     [](const auto& entry) { return entry.is_symlink() || !entry.is_directory(); });
}

void requireRenewable(const std::string& directory) {
  std::error_code error;
  if (!fs::is_directory(directory, error)) return;
  const auto place = fs::canonical(directory, error);
  if (!platform::canWriteIn(place.parent_path()) || platform::isMountPoint(place))
    throw CommandError("'" + directory +
                       "' cannot be removed and made anew, as it is done for each set; choose a "
                       "directory within it");
}

void makeDirectory(const std::string& directory) {
  std::error_code error;
  fs::create_directories(directory, error);
  if (!fs::is_directory(directory, error)) refuseDirectory(directory);
}

void sayWritten(const std::string& file, const std::string& details, Output& output) {
  std::error_code error;
  const auto* would = fs::exists(file, error) ? "would replace " : "would write ";
  output.say(std::string(output.told("wrote ", would)) + file + details);
}

void writeWhole(const std::string& file, const std::function<void(std::ostream&)>& write) {
  const auto destination = destinationOf(file);
  const auto part = freePart(destination);
  const platform::InterruptCatcher catcher;
  std::error_code error;
  try {
    std::ofstream stream(part, std::ios::binary);
    if (stream) write(stream);
    stream.close();
    stopIfInterrupted();
    if (stream) fs::rename(part, destination, error);
    if (!stream || error) refuse(file);
  } catch (...) {
    fs::remove(part, error);
    throw;
  }
}
