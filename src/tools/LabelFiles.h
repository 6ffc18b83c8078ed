#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/LabelSet.h"

/// What the formats of labels share about files.
namespace tnv {

/// The extensions of pictures, in the order in which they are looked for.
extern const std::vector<std::string> kPictureTypes;

/// The path from the root, without detours and with forward slashes.
std::string absolutePicturePath(const std::string& path);

/// The directory with a slash at its end; empty for an empty one.
std::string asDirectory(const std::string& path);

/// The text without the byte order mark that some editors put before UTF-8.
std::string_view withoutByteOrderMark(std::string_view text);

/// The text without blanks, tabs and carriage returns at both ends.
std::string_view trimmed(std::string_view text);

/// Where a picture named in a file lies. The name may have directories below `directory` before it;
/// nothing for a name that is empty, absolute or climbs out.
std::optional<std::string> pathBelow(const std::string& directory, const std::string& name);

/// Looks for what a path from elsewhere tells, below a directory: by the longest end of the path at
/// which `at` finds something.
std::optional<std::string> findByEnd(
    const std::string& directory, const std::string& told,
    const std::function<std::optional<std::string>(const std::string&)>& at);

/// More are no list of classes.
constexpr std::size_t kMostClasses = 100000;

/// Reads a file of class names, one a line: what stands on it without the blanks at both ends.
/// Empty lines keep their number but at the end. Nothing if it cannot be read or names none, and,
/// with a log line, if it has more lines than there can be classes.
std::optional<std::vector<std::string>> readNames(const std::string& file);

/// Where a path that is written in a file may lead: from one of the directories or from one above
/// it, the first directory first, and at last as it is written. Nothing if nothing is there.
std::optional<std::string> findUpwards(const std::string& path,
                                       const std::vector<std::filesystem::path>& directories);

/// What was met on the way through a tree of directories.
struct TreeWalk {
  std::vector<std::string> unreadable;  ///< directories
  std::vector<std::string> deadLinks;   ///< but those that have the name of a picture or a text
  bool followedLinks = false;           ///< so that a file may have been met by two paths
};

constexpr auto kUnreadableDirectory = "directory cannot be read";
constexpr auto kDeadLink = "link leads nowhere";

/// Calls back with the files below a directory until that gives true. Links to directories are
/// followed, but for those to a directory that holds them. What an export that was cut off left is
/// passed over.
TreeWalk forEachFileBelow(const std::string& directory,
                          const std::function<bool(const std::string& file)>& isEnough);

/// A file name for each picture of the set, without extension: its own, or with a number behind it
/// if another picture, whatever its directory or extension, has it already. Names that differ in
/// case only count as the same, since on some file systems they are. Long names are cut.
std::vector<std::string> outputNames(const LabelSet& set);

/// Whether the path has the extension, in letters of either case.
bool hasExtension(const std::string& path, std::string_view extension);

/// Whether the path has the extension of a picture.
bool hasPictureExtension(const std::string& path);

/// Whether there is a picture, and its path if there is: by its name, or for one of another kind by
/// what is in it.
bool isPictureFile(const std::string& path);
std::optional<std::string> pictureAt(const std::string& path);

/// Whether a file is a picture by its name, or by the first bytes that a reader of pictures knows.
bool looksLikePicture(const std::string& file);

bool isFile(const std::string& path);
bool isDirectory(const std::string& path);

/// What is the same for all paths of a file; the path itself if nothing is there.
std::string realPath(const std::string& path);

/// Leaves the first of the paths of each file, so that what it holds counts once.
void dropDoubles(std::vector<std::string>& files);

/// A name a line.
std::string namesText(const std::vector<std::string>& names);

/// A length in pixels, to a millionth of one, in its shortest form and with a decimal point.
std::string pixelText(double pixels);

/// The extension of a picture with its dot, or nothing.
std::string pictureExtension(const std::string& path);

/// Makes the directory with its parents. False, with a log line that starts with `who` and why.
bool makeDirectory(const std::string& directory, std::string_view who);

/// Puts the text in the place of the file. False, with a log line that starts with `who`.
bool writeWhole(const std::string& file, std::string_view text, std::string_view who);

/// Copies the picture of each entry to `directory` under its output name and its own extension,
/// each whole or not at all. False at the first that fails, with a log line that tells why, and
/// when it was stopped.
bool copyPictures(const LabelSet& set, const std::vector<std::string>& names,
                  const std::string& directory, std::string_view who, const GoOn& goOn = {});

}  // namespace tnv
