#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

namespace tnv {

/// One labelled object of a picture. All positions are relative to the picture.
struct Label {
  std::size_t classPlace = 0;        ///< place of its class in the set's `classNames`
  cv::Rect2d box;                    ///< of the outline, if there is one
  std::vector<cv::Point2d> outline;  ///< corners of a polygon; empty for a box
};

/// A label as a reader found it: its class by the set's own number, and where it stands.
struct FoundLabel {
  long long classNumber = 0;
  cv::Rect2d box;
  std::vector<cv::Point2d> outline;
  std::size_t line = 0;  ///< in the file, counted from 1; 0 if the format has no lines
};

struct LabelledPicture {
  std::string path;       ///< of the picture; absolute, with forward slashes
  std::string labelFile;  ///< that told of its labels
  cv::Size size;          ///< in pixels, as far as the format carries it
  std::vector<Label> labels;
};

/// A label that was not taken, and why.
struct LabelRejection {
  std::string file;
  std::size_t line = 0;
  std::string reason;
};

/// Labels with their pictures, as they are read from or written to one of the known formats. Every
/// label that was found ends as a label of a picture or as a rejection:
/// `found() == accepted() + rejections.size()`.
class LabelSet {
 public:
  /// Adds the label to the picture if it can be right: a known class, finite numbers, a size above
  /// zero, an outline of at least three corners, nothing beyond the picture's edges. Otherwise it
  /// is rejected with its place and reason. `clip` cuts at the edges what reaches beyond them.
  void take(LabelledPicture& picture, const FoundLabel& label, bool clip);

  void reject(const std::string& file, std::size_t line, const std::string& reason);

  std::size_t found() const { return accepted + rejections.size(); }

  std::vector<std::string> classNames;

  /// The number that each class has in the set, in the order of `classNames`. Darknet counts from 0
  /// without gaps, COCO as it likes.
  std::vector<long long> classNumbers;

  std::vector<LabelledPicture> pictures;
  std::vector<LabelRejection> rejections;
  std::size_t accepted = 0;
};

/// How a set is to be read.
struct LabelReading {
  std::string names;     ///< file with class names, for formats that have them elsewhere; or empty
  std::string pictures;  ///< directory of the pictures, if they lie elsewhere; or empty
  int base = 1;          ///< of the pixel coordinates of Pascal VOC, 0 or 1
  bool clip = false;     ///< cut at the edges what reaches beyond the picture
};

/// How a set is to be written.
struct LabelWriting {
  bool copy = false;  ///< copy the pictures beside the labels
  int base = 1;       ///< of the pixel coordinates of Pascal VOC, 0 or 1
};

}  // namespace tnv
