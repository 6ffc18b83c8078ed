#pragma once

#include <functional>
#include <string>
#include <vector>

#include "TNV_SampleBenchNative/WTNVMainProcess.h"
#include "TNV_SampleBenchNative/WTNVProject.h"

/// An open project under edit: the main process with its handlers, which go before it.
class Editor {
 public:
  explicit Editor(WTNVProject& project)
      : process(&project, nullptr),
        trainSets(process.getHndTrainSet()),
        marks(process.getHndMark()),
        view(process.getHndImageView()) {}

  /// Makes the picture at that place of the project current, and waits until it is read; throws
  /// CommandError if it cannot be read.
  void goTo(std::size_t place);

  /// The size of the current picture in pixels.
  int width() const { return pictureWidth; }
  int height() const { return pictureHeight; }

 private:
  WTNVMainProcess process;
  int pictureWidth = 0;
  int pictureHeight = 0;

 public:
  WTNVHandlerTrainSet trainSets;
  WTNVHandlerMark marks;
  WTNVHandlerImageView view;
};

/// What a handler of any project has to choose from, asked for when it is wanted.
template <typename Handler>
std::function<std::vector<std::string>()> choicesOf(Handler Editor::*handler,
                                                    std::vector<std::string> (Handler::*method)()
                                                        const) {
  return [=] {
    WTNVProject project("", "", "", "");
    Editor editor(project);
    return ((editor.*handler).*method)();
  };
}
