#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tnv {

/// The whole content of a regular file, or nothing when it cannot be read.
std::optional<std::string> readFile(const std::string& path);

/// Writes a file in its place. False when that failed; then nothing is left of the file.
bool writeFile(const std::string& link, std::string_view content);

/// Puts `content` in the place of the file: it is written beside the target and renamed over it, so
/// that an earlier file stays readable whatever happens half way. The file that a link leads to is
/// replaced, not the link, and its permission bits stay, though not its owner. False when that
/// failed; then the earlier file is untouched.
bool replaceFile(const std::string& path, std::string_view content);

/// Writes the content into a new file beside the target, to take its place later. Gives its path;
/// empty when it could not be written.
std::string writeBeside(const std::string& target, std::string_view content);

/// Renames a file over another one, of which the permission bits stay. False when that failed.
bool takePlace(const std::string& path, const std::string& target);

/// The path of the file that a link leads to in the end; the path itself if it is none, or leads
/// nowhere.
std::string withoutLinks(const std::string& path);

/// Deletes what is at the path, a link itself and not what it leads to, but never a directory. A
/// failure is silent; nothing there is none.
void removeFile(const std::string& path);

/// The lines of a text, without their line feeds. What follows the last line feed is a line only
/// when it is not empty.
std::vector<std::string_view> splitLines(std::string_view text);

std::string withForwardSlashes(std::string path);

/// The path with exactly one slash at its end.
std::string withOneSlash(std::string path);

/// Where a path leads after the directory `from` became the directory `to`: with forward slashes,
/// and without doubled ones, "." and "..", which do not count in any of the three. Nothing for a
/// path that does not lie below `from`. No directory may be empty, which would be the root.
std::optional<std::string> movedPath(const std::string& path, const std::string& from,
                                     const std::string& to);

/// True when a name given by a person or a file can be a directory entry of its own: not empty, not
/// "." or "..", without slash, backslash and control characters.
bool isPlainName(std::string_view name);

/// True for a plain name that leaves room for the endings of files which are called after it, and
/// of those that replace them: of at most 240 bytes.
bool canNameFiles(std::string_view name);

}  // namespace tnv
