#pragma once

#include <atomic>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tools/LabelSet.h"

class TNVDNNClass;
class TNVTrainSet;

namespace tnv {
struct LabelFormat;
}

/// Brings labels from files to marks and back. A set of labels is taken into memory, from files or
/// from marks, and goes out of it, to marks or to files.
class TNVToolLabelExchange {
 public:
  using TrainSets = std::vector<TNVTrainSet*>;
  using Classes = std::vector<TNVDNNClass*>;

  static std::vector<std::string> getAvailableFormats();

  /// False, with a log line, for an unknown format. An empty name recognises the format on reading.
  bool setFormat(const std::string& name);

  /// Takes the set that lies at the path into memory. False, with a log line, if there is none; the
  /// set in memory is empty then.
  bool read(const std::string& path);

  /// Takes the marks of the train sets into memory. False, with a log line, if the numbers of the
  /// classes do not run from 0 without gaps or a name cannot go out and come back. A damaged record
  /// throws a `cv::Exception`.
  bool readMarks(const TrainSets& trainSets, const Classes& classes);

  /// Adds a mark for each label in memory to the train set of its picture, and gives how many were
  /// added. Changes nothing if a record is damaged, which throws. The records are not saved.
  int addMarks(const TrainSets& trainSets, const Classes& classes);

  /// Has `write` keep the pictures and files of these train sets, in place of those that were told
  /// before. Train sets that were not read yet are read.
  void protect(const TrainSets& trainSets);

  /// Whether the directory is new, empty or an earlier export, and holds nothing that the set in
  /// memory was made of or that is protected. False with a log line.
  bool canWrite(const std::string& directory) const;

  /// Writes the set in memory in the format that was set, in place of an earlier export. That stays
  /// as it is until the new one is whole. Pictures that cannot be read are left out, and those
  /// whose name the format cannot tell.
  bool write(const std::string& directory);

  /// Finds out what `write` would leave out, and whether it may write, without writing anything.
  bool tryWrite(const std::string& directory);

  std::vector<std::string> getImagePaths() const;
  std::vector<std::string> getPicturesLeftOut() const;

  /// Labels in memory, and those that were rejected on the way in or out.
  std::size_t getFound() const { return set.found(); }
  std::size_t getRejected() const { return set.rejections.size() + rejectedOnWayOut.size(); }

  /// How many labels were rejected for each reason.
  std::map<std::string, int> getReasons() const;

  /// "file:line: reason", without the line where there is none.
  std::vector<std::string> getRejections() const;

  std::string format;      ///< that is set; empty if it is to be recognised
  std::string readFormat;  ///< of the set in memory; empty for marks
  tnv::LabelReading reading;
  tnv::LabelWriting writing;
  tnv::LabelSet set;
  tnv::LabelRejections rejectedOnWayOut;  ///< by the last `addMarks` or `write`

  std::set<std::size_t> leftOut;  ///< places of the pictures, by the last writing

  std::vector<std::string> protectedPaths;
  std::string unreadRecord;  ///< one of those to protect, whose picture is unknown; or empty

  std::atomic<bool> stopRequested{false};     ///< ends what is under way before its next picture
  std::atomic<bool> stopped{true};            ///< nothing is under way
  std::atomic<void (*)()> onUpdate{nullptr};  ///< called before each picture

 private:
  class Run;

  /// The format that was set or that the path has; null, with a log line, if it has none or
  /// several.
  const tnv::LabelFormat* formatOf(const std::string& path) const;

  void clear();
  tnv::GoOn untilStopped();

  /// With a log line if it was.
  bool wasStopped(std::string_view operation) const;

  /// The format to write in, when it is known what is left out; null, with a log line, if nothing
  /// can be written.
  const tnv::LabelFormat* prepareWriting(const std::string& directory, const tnv::GoOn& goOn);

  /// Rejects the labels of pictures that cannot go out, and finds sizes that are not known yet.
  void leaveOut(const tnv::LabelFormat& chosen, const tnv::GoOn& goOn);

  /// Empty for a picture that can go out.
  std::string whyLeftOut(tnv::LabelledPicture& picture, const tnv::LabelFormat& chosen) const;
};
