#include "MagnifyCommand.h"

#include <algorithm>

#include "CommandError.h"
#include "CommandLine.h"
#include "Editor.h"
#include "Numbers.h"
#include "PictureFile.h"
#include "RenderCommand.h"

namespace {

struct MagnifyOptions {
  std::string project;
  std::string picture;
  std::string set;
  std::string file;
  std::string at;
  double zoom = 2;
  std::string mode = "Normal";
  std::string size = "256x256";
  bool cross = true;
};

// The least magnification is that of render.
constexpr double largestMagnification = 100;

// The largest side of the window.
constexpr int largestWindow = 4096;

Point spot(const std::string& at) {
  const auto position = parsePoint(at);
  if (!isWithinPicture(position))
    throw CommandError("the spot " + at + " lies outside the picture; use 0 to 1", exitUsage);
  return position;
}

std::string atSizeAndZoom(const MagnifyOptions& options) {
  return "at size " + options.size + " and zoom " + numberText(options.zoom);
}

Size windowSize(const MagnifyOptions& options) {
  const auto size = parseSize(options.size);
  if (size.width > largestWindow || size.height > largestWindow)
    throw CommandError("the size " + options.size + " is too large; use up to " +
                           std::to_string(largestWindow) + "x" + std::to_string(largestWindow),
                       exitUsage);
  // Half a pixel is rounded down to none.
  if (std::min(size.width, size.height) <= options.zoom / 2)
    throw CommandError(atSizeAndZoom(options) +
                           " the file would show nothing of the picture; give a larger --size or "
                           "a smaller --zoom",
                       exitUsage);
  return size;
}

void choose(WTNVHandlerImageView& view, const MagnifyOptions& options, Size window) {
  requireChoice("mode", options.mode, view.getHelperModes(), exitUsage);
  view.setHelperMode(options.mode);
  view.setHelperZoomLevel(options.zoom);
  view.setHelperWindowSize(window.width, window.height);
  view.setHelperShowCross(options.cross);
}

cv::Mat magnified(WTNVHandlerImageView& view, const MagnifyOptions& options) {
  try {
    return pictureFrom([&](auto... parts) { view.wGetHelperImage(parts...); });
  } catch (const CommandError&) {
    throw CommandError(atSizeAndZoom(options) +
                       " the picture cannot be magnified, of which the file would show far more "
                       "than there is; give a smaller --size or a larger --zoom");
  }
}

void runMagnify(const Locations& locations, const MagnifyOptions& options, Output& output) {
  const auto at = spot(options.at);
  const auto window = windowSize(options);
  const auto project = openProject(locations, options.project);
  const auto pictures = readPictures(*project, output);
  const auto place = PictureIndex(pictures, output, options.set).find(options.picture);
  requireWritablePicture(options.file, *project, pictures);
  Editor editor(*project);
  choose(editor.view, options, window);
  editor.goTo(place);
  editor.view.wSetCrossPosition(at.x, at.y);
  const auto picture = magnified(editor.view, options);
  writeResult(options.file, picture,
              " around " + pointText(at) + ", " + numberText(options.zoom) + " times", output);
}

}  // namespace

void addMagnifyCommand(CLI::App& app, ProgramOptions& program) {
  const auto options = std::make_shared<MagnifyOptions>();
  auto* command = addWritingCommand(
      app, program,
      {"magnify", "Writes the neighbourhood of a spot of a picture, enlarged, to a file.",
       "magnify parts photo.jpg --at 0.3,0.7 --zoom 8 -o spot.png"},
      [&program, options](Output& output) { runMagnify(program.locations, *options, output); });
  addProjectArgument(*command, options->project);
  addPictureArgument(*command, options->picture);
  addSetOption(*command, options->set);
  addOutputFile(*command, options->file, "spot.png");
  command->add_option("--at", options->at, "the spot, x,y from 0 to 1")->required();
  command->add_option("--zoom", options->zoom, "pixels per pixel of the picture")
      ->check(numberBetween(smallestZoom, largestMagnification))
      ->capture_default_str();
  auto* mode = command->add_option("--mode", options->mode,
                                   "filter: Normal, Gray, Improve, Edge or Edge x2");
  program.choices[mode->capture_default_str()] =
      choicesOf(&Editor::view, &WTNVHandlerImageView::getHelperModes);
  command->add_option("--size", options->size, "size of the file's picture, WIDTHxHEIGHT")
      ->capture_default_str();
  command->add_flag("!--no-cross", options->cross, "do not draw the cross at the spot");
}
