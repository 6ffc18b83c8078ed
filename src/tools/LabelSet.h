#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <opencv2/core.hpp>

namespace tnv {

/// One labelled object of a picture. All positions are relative to the picture.
struct Label {
  std::size_t classPlace = 0;        ///< place of its class in the set's `classNames`
  cv::Rect2d box;                    ///< of the outline, if there is one
  std::vector<cv::Point2d> outline;  ///< corners of a polygon; empty for a box
  std::size_t line = 0;              ///< in the label file, counted from 1; 0 if it has no lines
  std::uint32_t file = 0;            ///< that told of it, see `LabelSet::fileOf`
  bool isCut = false;                ///< at the edges of the picture
};

/// A label as a reader found it: its class by the set's own number, and where it stands.
struct FoundLabel {
  long long classNumber = 0;
  cv::Rect2d box;                    ///< counts only without an outline
  std::vector<cv::Point2d> outline;  ///< corners of a polygon
  std::size_t line = 0;              ///< in the file, counted from 1; 0 if the format has no lines
  bool isOutline = false;            ///< an outline, even one without corners
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
  std::size_t line = 0;  ///< counted from 1; 0 if the file has no lines
  std::string reason;
};

/// Texts of which there are few, each with a number.
class TextTable {
 public:
  std::uint32_t numberOf(std::string_view text);

  /// Empty for a number that was never given.
  const std::string& operator[](std::uint32_t number) const;

  std::size_t size() const { return texts.size(); }

 private:
  std::vector<std::string> texts;
  std::unordered_map<std::string, std::uint32_t> numbers;
};

/// A list that may be as long as the labels are many, with few files and reasons in it.
class LabelRejections {
 public:
  void add(std::string_view file, std::size_t line, std::string_view reason);

  std::size_t size() const { return entries.size(); }
  bool empty() const { return entries.empty(); }
  LabelRejection operator[](std::size_t place) const;
  LabelRejection front() const { return (*this)[0]; }
  std::vector<LabelRejection> all() const;

  /// Adds to the number of rejections for each reason.
  void count(std::map<std::string, int>& reasons) const;

 private:
  struct Entry {
    std::uint32_t file;
    std::uint32_t line;
    std::uint32_t reason;
  };

  std::vector<Entry> entries;
  TextTable files;
  TextTable reasons;
};

/// Labels with their pictures, as they are read from or written to one of the known formats. Every
/// label that was found ends as a label of a picture or as a rejection:
/// `found() == accepted + rejections.size()`.
class LabelSet {
 public:
  /// Adds the label to the picture if it can be right: a known class, finite numbers, a size above
  /// zero, an outline of at least three corners, nothing beyond the picture's edges. Otherwise it
  /// is rejected with its place and reason. `clip` cuts at the edges what reaches beyond them.
  void take(LabelledPicture& picture, const FoundLabel& label, bool clip);

  /// Reasons are few and the same for each label that they hold for, so that they can be counted.
  void reject(std::string_view file, std::size_t line, std::string_view reason);

  /// Takes pictures away, with their labels rejected, that were found without the directories that
  /// their files tell, if it is open which is meant: others that are told by another path were
  /// found at the same place. `told` has that path for each picture so found, and is empty for
  /// others.
  void rejectAmbiguous(const std::vector<std::string>& told);

  /// The file that told of a label that was taken; several may tell of one picture.
  const std::string& fileOf(const Label& label) const { return files[label.file]; }

  std::size_t found() const { return accepted + rejections.size(); }

  std::vector<std::string> classNames;

  /// The number that each class has in the set, in the order of `classNames`. Darknet counts from 0
  /// without gaps, COCO as it likes. Both lists only grow while labels are taken.
  std::vector<long long> classNumbers;

  std::vector<LabelledPicture> pictures;
  LabelRejections rejections;
  std::size_t accepted = 0;
  std::size_t cut = 0;  ///< how many of the accepted were cut at the edges

 private:
  void withdraw(const LabelledPicture& picture, std::string_view reason);
  std::optional<std::size_t> classPlaceOf(long long number);

  TextTable files;
  std::unordered_map<long long, std::size_t> classPlaces;  ///< of the first `classesKnown` numbers
  std::size_t classesKnown = 0;
};

/// Gives the classes of formats that tell them by names their numbers in the set: each name that is
/// new the next, so that names which are told first come first.
class ClassNumbers {
 public:
  explicit ClassNumbers(LabelSet& target) : set(target) {}

  void add(const std::vector<std::string>& names);

  /// The number of the class of that name, which is added if it is not there.
  long long of(const std::string& name);

 private:
  LabelSet& set;
  std::unordered_map<std::string, long long> numbers;
};

/// Why a picture or label is left out where no picture is found.
constexpr auto kNoPicture = "no picture";

/// Whether each format can tell the name and give it back: something, without blanks at its ends
/// and control characters.
bool isPlainClassName(std::string_view name);

/// Takes away what reaches beyond the picture by no more than rounding, which `LabelSet::take` lets
/// pass.
void cutAtEdges(Label& label);

/// The bounding box of points; empty at the origin without any.
cv::Rect2d boxOf(const std::vector<cv::Point2d>& points);

/// Asked before each picture; false ends the work there. Nothing to ask goes on.
using GoOn = std::function<bool()>;

inline bool goesOn(const GoOn& goOn) {
  return !goOn || goOn();
}

/// How a set is to be read.
struct LabelReading {
  std::string names;     ///< file with class names, for formats that have them elsewhere; or empty
  std::string pictures;  ///< directory of the pictures, if they lie elsewhere; or empty
  int base = 1;          ///< of the pixel coordinates of Pascal VOC, 0 or 1
  bool clip = false;     ///< cut at the edges what reaches beyond the picture
  GoOn goOn;             ///< a set that was not read to its end is none
};

/// How a set is to be written.
struct LabelWriting {
  bool copy = false;  ///< copy the pictures beside the labels
  int base = 1;       ///< of the pixel coordinates of Pascal VOC, 0 or 1
  GoOn goOn;          ///< false counts as a failure
};

}  // namespace tnv
