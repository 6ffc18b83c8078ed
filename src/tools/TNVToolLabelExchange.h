#pragma once

#include <atomic>
#include <map>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "tools/LabelSet.h"

namespace tnv {
struct LabelFormat;
}
class TNVDNNClass;
class TNVTrainSet;

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
  /// classes do not run from 0 without gaps or a name is no single line. A damaged record throws a
  /// `cv::Exception`.
  bool readMarks(const TrainSets& trainSets, const Classes& classes);

  /// Adds a mark for each label in memory to the train set of its picture, and gives how many were
  /// added. Changes nothing if a record is damaged, which throws. The records are not saved.
  int addMarks(const TrainSets& trainSets, const Classes& classes);

  /// Whether the directory is new, empty or an earlier export, and holds nothing that the set in
  /// memory was made of. False with a log line.
  bool canWrite(const std::string& directory) const;

  /// Writes the set in memory in the format that was set, in place of an earlier export. That stays
  /// as it is until the new one is whole. Pictures that cannot be read are left out.
  bool write(const std::string& directory);

  std::vector<std::string> getImagePaths() const;

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
  std::vector<tnv::LabelRejection> rejectedOnWayOut;  ///< by the last `addMarks` or `write`

  std::atomic<bool> stopRequested{false};     ///< ends what is under way before its next picture
  std::atomic<bool> stopped{true};            ///< nothing is under way
  std::atomic<void (*)()> onUpdate{nullptr};  ///< called before each picture

 private:
  class Run;

  void clear();
  tnv::GoOn untilStopped();

  /// With a log line if it was.
  bool wasStopped(std::string_view operation) const;

  /// The places of the pictures that cannot be read, or whose names the format would not give back;
  /// their labels are rejected. Finds sizes that are needed and not known yet.
  std::unordered_set<std::size_t> leaveOut(const tnv::LabelFormat& chosen, const tnv::GoOn& goOn);
};
