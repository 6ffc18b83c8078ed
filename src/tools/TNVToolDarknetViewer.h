#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

/// Shows what a generation has written: the pictures of a directory that have a label text, with
/// the boxes of the text drawn in.
class TNVToolDarknetViewer {
 public:
  struct Item {
    std::string name;
    std::string imageFile;
    std::string dataFile;
    cv::Mat image;
    std::string comment;
  };

  void setImageDirectory(const std::string& directory);

  /// Reads the directory anew and gives the names of the items.
  std::vector<std::string> readImages();

  /// Loads the item of that name and draws its boxes. False, with a log line, if there is none or
  /// its picture cannot be read.
  bool selectImage(const std::string& name);

  std::string imageDirectory;
  std::vector<Item> items;
  Item selected;
};
