#include "CropCommand.h"

#include <filesystem>

#include "CommandError.h"
#include "Editor.h"
#include "PictureFile.h"

namespace {

bool hasArea(const WTNVMark& mark, const Editor& editor) {
  double width = 0;
  double height = 0;
  mark.wGetRelSize(width, height, editor.width(), editor.height());
  return width * editor.width() >= 1 && height * editor.height() >= 1;
}

std::string cropName(const std::string& picture, std::size_t number) {
  return std::filesystem::path(picture).stem().string() + "-" + std::to_string(number) + ".png";
}

void writeCrop(Editor& editor, const WTNVMark& mark, const std::string& directory,
               const std::string& name, Output& output) {
  const auto file = editor.view.wSaveROIImage(mark, directory, name);
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error))
    throw CommandError("'" + directory + name + "' cannot be written; see that '" + directory +
                       "' is a directory of yours");
  output.data() << file << '\n';
}

}  // namespace

void runCrop(const Locations& locations, const CropOptions& options, Output& output) {
  const auto project = openProject(locations, options.project);
  const auto pictures = readPictures(*project, output);
  const auto place = PictureIndex(pictures).find(options.picture);
  Editor editor(*project);
  editor.goTo(place);
  const auto marks = editor.marks.getAllMarks();
  if (marks.empty())
    throw CommandError("picture '" + pictures[place].path + "' has no marks to cut out");
  const auto directory = (std::filesystem::path(options.directory) / "").string();
  for (std::size_t i = 0; i < marks.size(); ++i) {
    const auto name = cropName(pictures[place].path, i + 1);
    if (hasArea(marks[i], editor)) {
      requireWritablePicture(directory + name, *project, pictures);
      writeCrop(editor, marks[i], directory, name, output);
    } else {
      output.note("mark " + std::to_string(i + 1) + " (" + marks[i].wGetType() +
                  ") has no area to cut out");
    }
  }
}
