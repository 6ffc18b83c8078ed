#pragma once

#include <string>

#include "ProjectAccess.h"

struct RenderOptions {
  std::string project;
  std::string picture;
  std::string file;
  double zoom = 1;
  std::string fit;
  std::string style = "White";
  std::string info = "DNN Class ID";
  std::string cross;
  std::string crossStyle = "White Cross";
  bool filled = true;
};

/// The bounds of the zoom.
constexpr double smallestZoom = 0.1;
constexpr double largestZoom = 20;

/// Writes a picture with its marks to a file. Throws CommandError.
void runRender(const Locations& locations, const RenderOptions& options, Output& output);

/// The same for a project that is open.
void renderPicture(WTNVProject& project, const RenderOptions& options, Output& output);
