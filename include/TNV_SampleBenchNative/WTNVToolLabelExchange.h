#pragma once

#include <map>
#include <string>
#include <vector>

#include "TNV_SampleBenchNative/Export.h"
#include "TNV_SampleBenchNative/WTNVDNNClass.h"
#include "TNV_SampleBenchNative/WTNVTrainSet.h"

class TNVToolLabelExchange;

/// Brings labels that were made elsewhere to the marks of train sets, and marks to where others can
/// read them. One set of labels is in memory: `wRead` takes it from files, `wReadMarks` from marks;
/// `wAddMarks` gives it to train sets, `wWrite` to files. Reading files and writing them in another
/// format needs no project.
///
/// No label is lost without a word: each one that was found is either taken or rejected with its
/// place and a reason. Positions are relative to the picture, 0 to 1, origin top left. A label that
/// reaches beyond its picture by more than 0.00001 is rejected on reading, see `wSetClip`.
///
/// The wrapper owns the tool; train sets and classes belong to their project. Failures are told by
/// the result and a line in the log. For use on one thread at a time, which no main process uses
/// the train sets on meanwhile; only `wProcessStop` and `wProcessIsStopped` are for any thread.
class TNV_SAMPLEBENCH_API WTNVToolLabelExchange {
 public:
  WTNVToolLabelExchange();
  WTNVToolLabelExchange(const WTNVToolLabelExchange&) = delete;
  WTNVToolLabelExchange& operator=(const WTNVToolLabelExchange&) = delete;
  ~WTNVToolLabelExchange();

  /// The size in pixels in which a picture file is seen, from its head where that tells it, or else
  /// by reading it. False, and 0, for what is no picture that can be read.
  static bool wGetPictureSize(const std::string& path, int& width, int& height);

  /// The classes that a file tells of, as `wSetNames` takes it: their names, in the order of their
  /// numbers. False, with both lists empty, if there are none.
  static bool wReadClassNames(const std::string& file, std::vector<std::string>& names,
                              std::vector<int>& numbers);

  /// What a `data.yaml` says under a key: the texts of a list, or a single text, or those of a map
  /// in the order of its numbers, which are not told; `wReadClassNames` tells those of classes.
  /// Under `train`, `val`, `valid` and `test` these are the absolute paths of directories and lists
  /// of pictures, whether they exist or not. Empty if the file is none (extension yaml or yml),
  /// cannot be read or does not have the key.
  static std::vector<std::string> wReadDescription(const std::string& file, const std::string& key);

  /// The names of the formats, sorted.
  static std::vector<std::string> wGetAvailableFormats();

  /// Chooses the format for reading and writing. The empty name, which is the default, recognises
  /// the format on reading. False for an unknown name; the choice stays then.
  bool wSetFormat(const std::string& name);

  /// The format of the set that `wRead` took into memory; empty if there is none.
  std::string wGetReadFormat() const;

  /// For reading: a file with class names (one a line; or a Darknet data file or a `data.yaml`),
  /// for formats whose labels have numbers only; in the others its classes come first. Empty, the
  /// default, looks for one beside them.
  void wSetNames(const std::string& file);

  /// For reading: where the pictures lie, if not where the format has them. Empty by default.
  void wSetPictureDirectory(const std::string& directory);

  /// Whether Pascal VOC counts pixels from 1, the default, or from 0. Other numbers count as 1.
  void wSetBase(int base);

  /// For reading: cut labels at the edges of their picture instead of rejecting those that reach
  /// beyond. Labels that lie outside are rejected all the same. False by default. Marks are always
  /// cut.
  void wSetClip(bool clip);

  /// For writing: copy the pictures beside the labels. False by default; the labels then tell where
  /// the pictures lie.
  void wSetCopy(bool copy);

  /// Takes a set of labels from files into memory, in place of the one that is there. `path` is a
  /// directory, or a file of the format: a `data.yaml`, a Darknet data file, a single Darknet text,
  /// a COCO or VOC file. False if there is no such set, if there are labels of several formats and
  /// none was chosen, if an export there was interrupted, or if it was stopped; none is in memory
  /// then.
  bool wRead(const std::string& path);

  /// Takes the marks of the train sets into memory, in place of what is there, reading train sets
  /// that were not read yet. A closed PolyLine is an outline; any other mark its box. A mark with
  /// several classes is a label for each. Marks without a class, with a class that is not among
  /// `classes` or without a size are rejected; what reaches beyond the picture is cut.
  ///
  /// The labels get the classes' numbers (`WTNVDNNClass::wGetDNNId`): false if these do not run
  /// from 0 without gaps, or if a name is empty, has blanks at its ends or control characters; and
  /// if it was stopped, with nothing in memory then. A damaged train set file throws.
  bool wReadMarks(const std::vector<WTNVTrainSet>& trainSets,
                  const std::vector<WTNVDNNClass>& classes);

  /// Adds a mark to the train set of its picture for each label in memory: Rect for a box, a closed
  /// PolyLine for an outline, with the class of `classes` that has the same name. Train sets that
  /// were not read yet are read; of several for one picture the first is taken. Rejected are labels
  /// whose picture has no train set here, whose class is not here, and those that are marked
  /// already: same kind, class and place (all numbers within 0.000001). So nothing is added twice.
  ///
  /// The result is the number of marks added; with `wGetRejected` it makes `wGetFound`. The train
  /// sets are flagged as changed, and `WTNVProject::wUpdate` saves them. A damaged train set file
  /// throws before anything was added. When it is stopped, the labels of the pictures that are left
  /// are rejected; what was added stays.
  int wAddMarks(const std::vector<WTNVTrainSet>& trainSets,
                const std::vector<WTNVDNNClass>& classes);

  /// For writing: the pictures and files of these train sets are kept, as are those of the set in
  /// memory. To be told of all train sets of a project where only some are written, for an earlier
  /// picture may lie where an export is to be replaced. Train sets that were not read yet are read;
  /// if one cannot be, an export that holds pictures is not replaced, for its picture may be among
  /// them. Takes the place of an earlier call.
  void wProtect(const std::vector<WTNVTrainSet>& trainSets);

  /// Whether `wWrite` may write there: the directory does not exist, is empty or an earlier export,
  /// there are rights to write to it, and it holds neither pictures nor files of the set in memory
  /// or of the train sets that are protected. If not, the log tells why. Nothing is made.
  bool wCanWrite(const std::string& directory) const;

  /// Writes the set in memory in the format chosen. The directory is made if it does not exist; an
  /// earlier export in it is replaced when the new one is whole, and stays as it is otherwise.
  /// False if no format was chosen, `wCanWrite` is false, something could not be written or copied,
  /// or it was stopped. A class name that is no UTF-8 is a failure in COCO, as JSON cannot tell it.
  ///
  /// Left out, with a line in the log, are pictures that cannot be read, and those whose name would
  /// not read back. That is the file's name if pictures are copied, else the whole path. It may
  /// hold no backslash; in COCO nothing but UTF-8; in VOC no carriage return, and no blank, tab or
  /// feed at its ends; in Darknet neither carriage return nor line feed. The labels of pictures
  /// left out count as rejected.
  bool wWrite(const std::string& directory);

  /// Looks at the pictures as `wWrite` would and counts what it would leave out, but writes
  /// nothing. False where `wWrite` would fail before it writes.
  bool wTryWrite(const std::string& directory);

  /// The pictures that the last `wWrite` or `wTryWrite` left out, with labels and without.
  std::vector<std::string> wGetPicturesLeftOut() const;

  /// Ends the `wRead`, `wReadMarks`, `wAddMarks`, `wWrite` or `wTryWrite` that is under way before
  /// its next picture. Without one it does nothing. For any thread, and for the callback.
  void wProcessStop();

  /// Whether none of them is under way. For any thread.
  bool wProcessIsStopped() const;

  /// A function to call before each picture, at least once for each, on the thread that reads or
  /// writes; null clears.
  void setCBUpdate(void (*callback)());

  /// The classes of the set in memory in their order.
  std::vector<std::string> wGetClassNames() const;

  /// The pictures of the set in memory, with and without labels: absolute paths with forward
  /// slashes, in the order of the set.
  std::vector<std::string> wGetImagePaths() const;

  /// How many labels were found by `wRead` or `wReadMarks`, taken or not. A file that cannot be
  /// read counts as one that was rejected.
  int wGetFound() const;

  /// How many of them were rejected, by the last `wAddMarks` or `wWrite` among others.
  int wGetRejected() const;

  /// How many labels in memory were cut at the edges of their picture.
  int wGetCut() const;

  /// The reasons, each with the number of labels that were rejected for it.
  std::map<std::string, int> wGetReasons() const;

  /// All rejections as "file:line: reason". For marks it is the train set's file and the number of
  /// the mark, from 1; without a line where the format has none.
  std::vector<std::string> wGetRejections() const;

 private:
  TNVToolLabelExchange* native;
};
