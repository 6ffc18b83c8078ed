#include "Editor.h"

#include <filesystem>

#include "CommandError.h"

void Editor::goTo(std::size_t place) {
  const auto current = static_cast<std::size_t>(trainSets.wGetTrainSetCurIdx());
  const auto trainSet =
      place < current ? trainSets.wSetTrainSetBackward(static_cast<unsigned int>(current - place))
                      : trainSets.wSetTrainSetForward(static_cast<unsigned int>(place - current));
  trainSet.getImageSize(pictureWidth, pictureHeight);
  // The record may know the size of a picture that is gone.
  const auto isThere = std::filesystem::exists(trainSet.getImagePath());
  if (!isThere || pictureWidth < 1 || pictureHeight < 1)
    throw CommandError("picture '" + trainSet.getImagePath() +
                       "' cannot be read; put it back where it was, or mend it");
}
