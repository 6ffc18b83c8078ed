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
/// or device, which are not to be replaced either.
void requireWritable(const std::string& file);

/// The same for a command on a project, of which no file and no picture is to be written over.
void requireWritable(const std::string& file, const WTNVProject& project,
                     const std::vector<PictureRecord>& pictures);

/// Writes a file, through a link to where that leads. Under its name the file stands whole or not
/// at all. Throws CommandError if that fails.
void writeWhole(const std::string& file, const std::function<void(std::ostream&)>& write);
