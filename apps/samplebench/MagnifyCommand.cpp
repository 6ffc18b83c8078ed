#include "MagnifyCommand.h"

#include "CommandError.h"
#include "Editor.h"
#include "Numbers.h"
#include "PictureFile.h"

namespace {

Point spot(const std::string& at) {
  const auto position = parsePoint(at);
  if (!isWithinPicture(position))
    throw CommandError("the spot " + at + " lies outside the picture; use 0 to 1");
  return position;
}

void choose(WTNVHandlerImageView& view, const MagnifyOptions& options) {
  requireChoice("mode", options.mode, view.getHelperModes());
  const auto [width, height] = parseSize(options.size);
  if (width > largestWindow || height > largestWindow)
    throw CommandError("the size " + options.size + " is too large; use up to " +
                       std::to_string(largestWindow) + "x" + std::to_string(largestWindow));
  view.setHelperMode(options.mode);
  view.setHelperZoomLevel(options.zoom);
  view.setHelperWindowSize(width, height);
  view.setHelperShowCross(options.cross);
}

}  // namespace

void runMagnify(const Locations& locations, const MagnifyOptions& options, Output& output) {
  const auto at = spot(options.at);
  const auto project = openProject(locations, options.project);
  const auto pictures = readPictures(*project, output);
  const auto place = PictureIndex(pictures).find(options.picture);
  requireWritablePicture(options.file, *project, pictures);
  Editor editor(*project);
  choose(editor.view, options);
  editor.goTo(place);
  editor.view.wSetCrossPosition(at.x, at.y);
  const auto picture = pictureFrom([&](auto... parts) { editor.view.wGetHelperImage(parts...); });
  writePicture(options.file, picture);
  output.data() << "wrote " << options.file << " (" << picture.cols << "x" << picture.rows
                << " pixels around " << pointText(at) << ", " << numberText(options.zoom)
                << " times)\n";
}
