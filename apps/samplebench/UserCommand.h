#pragma once

#include <string>

#include "Output.h"

struct UserOptions {
  std::string users = "users/";
  std::string name;
  std::string project;
};

/// The commands about the people who work with the tool. All throw CommandError.
void runUserCreate(const UserOptions& options, Output& output);
void runUserList(const UserOptions& options, Output& output);
void runUserSet(const UserOptions& options, Output& output);
void runUserRemove(const UserOptions& options, Output& output);

/// Shows where a configuration file puts projects, platforms, augmentations and users.
void runConfig(const std::string& file, Output& output);
