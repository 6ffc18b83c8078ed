#include "CropCommand.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "CommandError.h"
#include "CommandLine.h"
#include "Editor.h"
#include "PictureFile.h"

namespace fs = std::filesystem;

namespace {

struct CropOptions {
  std::string project;
  std::string picture;
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

// Makes the directory, given with a slash at its end.
void makeDirectory(const std::string& given) {
  std::error_code error;
  fs::create_directories(given, error);
  if (!fs::is_directory(given, error))
    throw CommandError("'" + given + "' cannot be written to; give a directory of yours");
}

// The library does not tell whether it wrote a file: what is there afterwards has to be new.
void removeEarlierCrop(const std::string& file) {
  std::error_code error;
  const auto earlier = fs::symlink_status(file, error).type();
  if (earlier == fs::file_type::not_found) return;
  if (earlier != fs::file_type::regular)
    throw CommandError("'" + file + "' is in the way and no earlier crop; move it away");
  if (!fs::remove(file, error))
    throw CommandError("'" + file + "' cannot be replaced; see that its directory is yours");
}

bool writeCrop(Editor& editor, const WTNVMark& mark, const std::string& directory,
               const std::string& name) {
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
  const auto place = PictureIndex(pictures).find(options.picture);
  Editor editor(*project);
  editor.goTo(place);
  const auto marks = editor.marks.getAllMarks();
  if (marks.empty())
    throw CommandError("picture '" + pictures[place].path + "' has no marks to cut out");
  const auto directory = (fs::path(options.directory) / "").string();
  const auto picture = nameOf(pictures, place);
  requireWritablePicture(directory + picture + ".png", *project, pictures);
  makeDirectory(directory);
  for (std::size_t i = 0; i < marks.size(); ++i) {
    const auto name = picture + "-" + std::to_string(i + 1) + ".png";
    const auto mark = "mark " + std::to_string(i + 1) + " (" + marks[i].wGetType() + ")";
    if (!hasArea(marks[i], editor)) {
      output.note(mark + " has no area to cut out");
      continue;
    }
    requireWritablePicture(directory + name, *project, pictures);
    if (writeCrop(editor, marks[i], directory, name)) {
      output.data() << directory << name << '\n';
    } else {
      output.note(mark + " cannot be cut out: it lies off the picture or is far too large");
      output.setFindings();
    }
  }
}

}  // namespace

void addCropCommand(CLI::App& app, ProgramOptions& program) {
  const auto options = std::make_shared<CropOptions>();
  auto* command = addCommand(
      app, program,
      {"crop",
       "Writes what lies under each mark of a picture to a file of its own, and prints the files.",
       "crop parts photo.jpg -o cut/"},
      [&program, options](Output& output) { runCrop(program.locations, *options, output); });
  addProjectArgument(*command, options->project);
  addPictureArgument(*command, options->picture);
  command->add_option("-o,--output", options->directory, "directory to write to")
      ->required()
      ->check(notEmpty());
}
