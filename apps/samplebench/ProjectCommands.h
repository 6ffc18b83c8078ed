#pragma once

#include <string>
#include <vector>

#include "ProjectAccess.h"

/// The commands that make a project and show what is in it. All throw CommandError.

void runCreate(const Locations& locations, const std::string& project, Output& output);

/// Adds classes; an empty colour leaves the library's.
void runClassAdd(const Locations& locations, const std::string& project,
                 const std::vector<std::string>& names, const std::string& color, Output& output);

void runClassList(const Locations& locations, const std::string& project, Output& output);

/// Classes, pictures with the number of their marks, totals.
void runList(const Locations& locations, const std::string& project, Output& output);

/// Shows the classes of a project that is open.
void writeClasses(const WTNVProject& project, Output& output);

/// Adds a class, in memory only.
void addClass(WTNVProject& project, const std::string& name, const std::string& color);
