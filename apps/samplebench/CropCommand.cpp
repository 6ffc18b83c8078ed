#include "CropCommand.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "CommandError.h"
#include "CommandLine.h"
#include "Editor.h"
#include "GalleryStatistics.h"
#include "Interrupt.h"
#include "MarkBox.h"
#include "OutputFile.h"
#include "Platform.h"

namespace fs = std::filesystem;

namespace {

struct CropOptions {
  std::string project;
  std::string picture;
  std::string set;
  std::string directory;
};

bool hasArea(const WTNVMark& mark, const Editor& editor) {
  double width = 0;
  double height = 0;
  mark.wGetRelSize(width, height, editor.width(), editor.height());
  return width * editor.width() >= 1 && height * editor.height() >= 1;
}

// What the names of a picture's crops may begin with, the shortest first.
std::vector<std::string> possibleNames(const PictureRecord& picture) {
  const fs::path path(picture.path);
  const auto stem = path.stem().string();
  auto whole = path.relative_path().generic_string();
  std::replace(whole.begin(), whole.end(), '/', '-');
  return {stem, picture.set + "-" + stem, picture.set + "-" + whole};
}

// The shortest that no other picture of the project may have.
std::string nameOf(const std::vector<PictureRecord>& pictures, std::size_t place) {
  auto names = possibleNames(pictures[place]);
  const auto isTaken = [&](const std::string& name) {
    for (std::size_t i = 0; i < pictures.size(); ++i) {
      if (i == place || pictures[i].path.empty()) continue;
      const auto others = possibleNames(pictures[i]);
      if (std::find(others.begin(), others.end(), name) != others.end()) return true;
    }
    return false;
  };
  while (names.size() > 1 && isTaken(names.front()))
    names.erase(names.begin());
  return names.front();
}

void requireEarlierCrop(const std::string& file) {
  std::error_code error;
  const auto earlier = fs::symlink_status(file, error).type();
  if (earlier != fs::file_type::not_found && earlier != fs::file_type::regular)
    throw CommandError("'" + file + "' is in the way and no earlier crop; move it away");
}

// The library does not tell whether it wrote a file: what is there afterwards has to be new.
void removeEarlierCrop(const std::string& file) {
  std::error_code error;
  fs::remove(file, error);
  if (error)
    throw CommandError("'" + file + "' cannot be replaced; see that its directory is yours");
}

// False if nothing of the picture lies under the mark.
bool writeCrop(Editor& editor, const WTNVMark& mark, const std::string& directory,
               const std::string& name, const Output& output) {
  requireEarlierCrop(directory + name);
  if (output.isDryRun()) {
    const cv::Size size(editor.width(), editor.height());
    return !isOutside(boxInPixels(mark, size), size);
  }
  removeEarlierCrop(directory + name);
  const auto file = editor.view.wSaveROIImage(mark, directory, name);
  if (file.empty()) return false;
  if (cv::imread(file).empty())
    throw CommandError("'" + file + "' cannot be written; see that '" + directory +
                       "' is a directory of yours with room");
  return true;
}

void runCrop(const Locations& locations, const CropOptions& options, Output& output) {
  const auto project = openProject(locations, options.project);
  const auto pictures = readPictures(*project, output);
  const auto place = PictureIndex(pictures, output, options.set).find(options.picture);
  Editor editor(*project);
  editor.goTo(place);
  const auto marks = editor.marks.getAllMarks();
  if (marks.empty())
    throw CommandError("picture '" + pictures[place].path + "' has no marks to cut out");
  const auto directory = (fs::path(options.directory) / "").string();
  const auto picture = nameOf(pictures, place);
  requireReplaceableFile(directory + picture + ".png", *project, pictures);
  requireDirectoryPlace(directory);
  if (!output.isDryRun()) makeDirectory(directory);
  Json::Value files(Json::arrayValue);
  Json::Value replaced(Json::arrayValue);
  const platform::InterruptCatcher catcher;
  for (std::size_t i = 0; i < marks.size(); ++i) {
    stopIfInterrupted();
    const auto name = picture + "-" + std::to_string(i + 1) + ".png";
    const auto mark = "mark " + std::to_string(i + 1) + " (" + marks[i].wGetType() + ")";
    if (!hasArea(marks[i], editor)) {
      output.note(mark + " has no area to cut out");
      continue;
    }
    requireReplaceableFile(directory + name, *project, pictures);
    std::error_code error;
    const bool isThere = fs::exists(directory + name, error);
    if (writeCrop(editor, marks[i], directory, name, output)) {
      output.say(directory + name);
      files.append(directory + name);
      if (isThere) replaced.append(directory + name);
    } else {
      output.note(mark + " cannot be cut out: it lies off the picture or is far too large");
      output.setFindings();
    }
  }
  output.fact("files", files);
  output.fact("replaced", replaced);
  for (const auto& file : replaced)
    output.note(std::string(output.told("replaced ", "would replace ")) + file.asString());
}

}  // namespace

void addCropCommand(CLI::App& app, ProgramOptions& program) {
  const auto options = std::make_shared<CropOptions>();
  auto* command = addWritingCommand(
      app, program,
      {"crop",
       "Writes what lies under each mark of a picture to a file of its own, and prints the files.",
       "crop parts photo.jpg -o cut/"},
      [&program, options](Output& output) { runCrop(program.locations, *options, output); });
  addProjectArgument(*command, options->project);
  addPictureArgument(*command, options->picture);
  addSetOption(*command, options->set);
  command->add_option("-o,--output", options->directory, "directory to write to")
      ->required()
      ->check(notEmpty());
}
