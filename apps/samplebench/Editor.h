#pragma once

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
