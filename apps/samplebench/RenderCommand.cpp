#include "RenderCommand.h"

#include "CommandError.h"
#include "CommandLine.h"
#include "Editor.h"
#include "Numbers.h"
#include "PictureFile.h"

namespace {

void choose(WTNVHandlerImageView& view, const RenderOptions& options) {
  requireChoice("style", options.style, view.getAvailableMarkStyles(), exitUsage);
  requireChoice("info", options.info, view.getAvailableMarkDrawInfos(), exitUsage);
  requireChoice("cross style", options.crossStyle, view.getAvailableCrossStyles(), exitUsage);
  view.setMarkStyle(options.style);
  view.setMarkDrawInfo(options.info);
  view.setCrossStyle(options.crossStyle);
  view.wSetDrawMarkFilled(options.filled);
}

// The view always has a cross; at the far corner it lies just outside the picture.
Point crossPosition(const std::string& cross) {
  if (cross.empty()) return {1, 1};
  const auto position = parsePoint(cross);
  if (!isWithinPicture(position))
    throw CommandError("the cross " + cross + " lies outside the picture; use 0 to 1", exitUsage);
  return position;
}

void zoom(WTNVHandlerImageView& view, const RenderOptions& options) {
  if (options.fit.empty()) {
    view.wSetZoomLevel(options.zoom);
    return;
  }
  const auto [width, height] = parseSize(options.fit);
  view.wSetZoomLevel(width, height, largestZoom);
  if (view.wGetZoomLevel() < smallestZoom)
    throw CommandError("the picture is more than ten times as large as " + options.fit +
                       "; give a larger size");
}

}  // namespace

void renderPicture(WTNVProject& project, const RenderOptions& options, Output& output) {
  const auto cross = crossPosition(options.cross);
  const auto pictures = readPictures(project, output);
  const auto place = PictureIndex(pictures, output, options.set).find(options.picture);
  requireWritablePicture(options.file, project, pictures);
  Editor editor(project);
  choose(editor.view, options);
  editor.goTo(place);
  zoom(editor.view, options);
  editor.view.wSetCrossPosition(cross.x, cross.y);
  const auto picture = pictureFrom([&](auto... parts) { editor.view.wGetARImage(parts...); });
  const auto marks = static_cast<std::size_t>(editor.marks.getMarkCount());
  output.fact("marks", static_cast<Json::UInt64>(marks));
  writeResult(options.file, picture, ", " + counted(marks, "mark"), output);
}

namespace {

void addLook(CLI::App& command, ProgramOptions& program, RenderOptions& options) {
  using View = WTNVHandlerImageView;
  auto* style = command.add_option(
      "--style", options.style,
      "colours of the marks: White, Black, Red, Blue or Colored (those of the classes)");
  program.choices[style->capture_default_str()] =
      choicesOf(&Editor::view, &View::getAvailableMarkStyles);
  auto* info = command.add_option("--info", options.info,
                                  "text beside the marks: None, DNN Class ID, DNN Class Name, "
                                  "Pixel, Pixel Relative or Relative");
  program.choices[info->capture_default_str()] =
      choicesOf(&Editor::view, &View::getAvailableMarkDrawInfos);
  auto* cross = command.add_option("--cross", options.cross, "place of a cross, x,y from 0 to 1");
  auto* crossStyle = command.add_option(
      "--cross-style", options.crossStyle,
      "look of the cross: White Cross, Black Cross, White Circle or Black Circle");
  crossStyle->needs(cross)->capture_default_str();
  program.choices[crossStyle] = choicesOf(&Editor::view, &View::getAvailableCrossStyles);
  command.add_flag("!--no-fill", options.filled, "do not fill marks that have an area");
}

}  // namespace

void addRenderCommand(CLI::App& app, ProgramOptions& program) {
  const auto options = std::make_shared<RenderOptions>();
  auto* command =
      addWritingCommand(app, program,
                        {"render", "Writes a picture with its marks to a file.",
                         "render parts photo.jpg -o seen.png --fit 800x600 --style Colored"},
                        [&program, options](Output& output) {
                          const auto project = openProject(program.locations, options->project);
                          renderPicture(*project, *options, output);
                        });
  addProjectArgument(*command, options->project);
  addPictureArgument(*command, options->picture);
  addSetOption(*command, options->set);
  addOutputFile(*command, options->file, "seen.png");
  auto* zoom = command->add_option("--zoom", options->zoom, "pixels per pixel of the picture")
                   ->check(numberBetween(smallestZoom, largestZoom));
  command->add_option("--fit", options->fit, "largest size, WIDTHxHEIGHT")->excludes(zoom);
  addLook(*command, program, *options);
}
