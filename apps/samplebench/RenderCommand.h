#pragma once

#include <string>

#include "ProjectAccess.h"

namespace CLI {
class App;
}
struct ProgramOptions;

struct RenderOptions {
  std::string project;
  std::string picture;
  /// That the picture is looked for in; empty for all.
  std::string set;
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

/// The command that writes a picture with its marks to a file.
void addRenderCommand(CLI::App& app, ProgramOptions& program);

/// The same for a project that is open. Throws CommandError.
void renderPicture(WTNVProject& project, const RenderOptions& options, Output& output);
