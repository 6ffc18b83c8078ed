#include "RenderCommand.h"

#include <filesystem>

#include <opencv2/imgcodecs.hpp>

#include "CommandError.h"
#include "Editor.h"
#include "Numbers.h"

namespace {

void choose(WTNVHandlerImageView& view, const RenderOptions& options) {
  requireChoice("style", options.style, view.getAvailableMarkStyles());
  requireChoice("info", options.info, view.getAvailableMarkDrawInfos());
  requireChoice("cross style", options.crossStyle, view.getAvailableCrossStyles());
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
    throw CommandError("the cross " + cross + " lies outside the picture; use 0 to 1");
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

cv::Mat rendered(WTNVHandlerImageView& view) {
  unsigned char* data = nullptr;
  int width = 0;
  int height = 0;
  int channels = 0;
  view.wGetARImage(&data, &width, &height, &channels);
  if (data == nullptr) throw CommandError("the picture cannot be rendered");
  return {height, width, CV_8UC(channels), data};
}

void requireWritable(const std::string& file, const std::vector<PictureRecord>& pictures) {
  if (!cv::haveImageWriter(file))
    throw CommandError("'" + file + "' is of no format that can be written; use .png or .jpg");
  for (const auto& picture : pictures) {
    std::error_code error;
    if (std::filesystem::equivalent(file, picture.path, error))
      throw CommandError("'" + file + "' is a picture of the project; choose another file");
  }
}

void writePicture(const std::string& file, const cv::Mat& picture) {
  if (!cv::imwrite(file, picture))
    throw CommandError("'" + file + "' cannot be written; see that its directory exists");
}

}  // namespace

void renderPicture(WTNVProject& project, const RenderOptions& options, Output& output) {
  const auto cross = crossPosition(options.cross);
  const auto pictures = readPictures(project, output);
  const auto place = PictureIndex(pictures).find(options.picture);
  requireWritable(options.file, pictures);
  Editor editor(project);
  choose(editor.view, options);
  editor.goTo(place);
  zoom(editor.view, options);
  editor.view.wSetCrossPosition(cross.x, cross.y);
  const auto picture = rendered(editor.view);
  writePicture(options.file, picture);
  output.data() << "wrote " << options.file << " (" << picture.cols << "x" << picture.rows
                << " pixels, " << counted(editor.marks.getMarkCount(), "mark") << ")\n";
}

void runRender(const Locations& locations, const RenderOptions& options, Output& output) {
  const auto project = openProject(locations, options.project);
  renderPicture(*project, options, output);
}
