#pragma once

#include <string>

#include "ProjectAccess.h"

struct MagnifyOptions {
  std::string project;
  std::string picture;
  std::string file;
  std::string at;
  double zoom = 2;
  std::string mode = "Normal";
  std::string size = "256x256";
  bool cross = true;
};

/// The largest magnification; the least is that of render.
constexpr double largestMagnification = 100;

/// The largest side of the window.
constexpr int largestWindow = 4096;

/// Writes the neighbourhood of a spot, enlarged, to a file. Throws CommandError.
void runMagnify(const Locations& locations, const MagnifyOptions& options, Output& output);
