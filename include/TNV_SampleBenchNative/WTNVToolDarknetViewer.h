#pragma once

#include <string>
#include <vector>

#include "TNV_SampleBenchNative/Export.h"

class TNVToolDarknetViewer;

/// Looks into a directory of Darknet samples: pictures with a label text of the same name beside
/// them. Needs no project. The wrapper owns the tool. For use on one thread at a time.
class TNV_SAMPLEBENCH_API WTNVToolDarknetViewer {
 public:
  WTNVToolDarknetViewer();
  WTNVToolDarknetViewer(const WTNVToolDarknetViewer&) = delete;

  /// Copies the bare pointer, after which two wrappers own one tool: not to be used.
  WTNVToolDarknetViewer& operator=(const WTNVToolDarknetViewer& other);
  ~WTNVToolDarknetViewer();

  /// The directory to look into. What was read before stays until `wReadImages`.
  void wSetImageDirectory(const std::string& directory);

  /// Reads the directory and gives the names, without extensions, of the pictures (jpg, jpeg, png)
  /// that have a label text, in the order of the file system.
  std::vector<std::string> wReadImages();

  /// Reads a picture anew from its file and draws the boxes of its label text, one for each line of
  /// five fields. False, with a log line, for a name that was not read, and for a picture that
  /// cannot be.
  bool wSelectImage(const std::string& name);

  /// The picture with its boxes: 8-bit pixels in the order blue, green, red, rows of
  /// `width * channels` bytes. They belong to the tool and stay until the next selection. Null and
  /// zeros without one.
  void wGetSelectedImage(unsigned char** data, int* width, int* height, int* channels) const;

  /// The file names of the selected picture and of its label text; empty before a selection.
  std::string wGetSelectedImageFile() const;
  std::string wGetSelectedDataFile() const;

 private:
  TNVToolDarknetViewer* native;
};
