#pragma once

#include <filesystem>
#include <functional>
#include <ostream>
#include <string>

#include "ProjectAccess.h"

/// Where writing to the file ends up: without detours, and at the end of links, which may lead to
/// what is not there yet. Throws CommandError for links in a circle.
std::filesystem::path destinationOf(const std::string& file);

/// Throws CommandError if what is at that place is not to be written over: a directory, or a pipe
/// or device, which are not to be replaced either; and, for a command on a project, a file or a
/// picture of the project.
void requireReplaceableFile(const std::string& file);
void requireReplaceableFile(const std::string& file, const WTNVProject& project,
                            const std::vector<PictureRecord>& pictures);

/// The same, and there must be a directory that the file can be written in.
void requireWritable(const std::string& file);
void requireWritable(const std::string& file, const WTNVProject& project,
                     const std::vector<PictureRecord>& pictures);

/// Throws CommandError if a page would replace a file that is no page of this program.
void requireNoForeignPage(const std::string& report);

/// Throws CommandError if no directory can be made there because a file is in the way, or if what
/// is there, or above it, cannot be written to.
void requireDirectoryPlace(const std::string& directory);

/// Whether anything but directories lies in the directory or below.
bool holdsFiles(const std::string& directory);

/// Throws CommandError if the directory is there and cannot be removed and made anew.
void requireRenewable(const std::string& directory);

/// The directory itself, or the one that a link in its place leads to: what replaces a directory
/// would replace the link. Throws CommandError if that is not there.
std::string directoryBehind(const std::string& directory);

/// Makes the directory, and those above it, if it is not there; throws CommandError if that fails.
void makeDirectory(const std::string& directory);

/// Says that the file was written or, in a dry run, would be; `details` follow.
void sayWritten(const std::string& file, const std::string& details, Output& output);

/// Writes a file, through a link to where that leads. Under its name the file stands whole or not
/// at all. Throws CommandError if that fails.
void writeWhole(const std::string& file, const std::function<void(std::ostream&)>& write);
