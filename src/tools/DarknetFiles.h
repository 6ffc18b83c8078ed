#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "tools/LabelNames.h"
#include "tools/LabelSet.h"

/// Which files a set of Darknet labels is made of.
namespace tnv::darknet {

/// Names in the directory of an export.
constexpr std::string_view kPictureList = "pictures.txt";
constexpr std::string_view kLabelsDirectory = "labels/";

/// The file that names the classes of a directory; empty if there is none.
std::string namesFileIn(const std::string& root);

/// Whether a file is the text of a picture. An empty one is only by the picture.
bool isLabelText(const std::string& file);

/// Where a set is and what it says of itself.
struct DarknetPlace {
  std::string root;
  LabelDescription description;
  std::string singleText;  ///< the only text that is asked for; empty for all
};

/// Nothing, with a log line, if there is nothing at the path or no class names for it are found.
std::optional<DarknetPlace> placeOf(const std::string& path, const LabelReading& reading);

/// The files of a set, before any label is read.
class DarknetFiles {
 public:
  void addDirectory(const std::string& directory);

  /// Pictures that a text lists one a line. Relative ones count from the text's directory, or, as
  /// for who trains, from one that the set was started in: that of its description or one above.
  void addList(const std::string& list, const std::string& root);

  /// A text with the pictures of its name.
  void addSingle(const std::string& text, const std::vector<std::string>& named);

  /// The list that an export wrote, whose label texts lie in a directory of their own. False, with
  /// a log line, if the texts are not those that the export wrote for the list.
  bool addExport(const std::string& root);

  void addPicture(const std::string& path, const std::string& text);

  /// Texts of labels lie below `labels`, for pictures at the same place below `pictureDirectory`.
  void pairByPlace(const std::string& labels, const std::string& pictureDirectory);

  void pairByConvention();

  /// A picture that was met by two paths counts once, by the one that has labels.
  void dropDoubles();

  /// Texts that several pictures have, which have none then: whose labels they are is open.
  std::vector<std::string> takeShared();

  void reject(const std::string& file, const std::string& reason);

  void exclude(const std::string& file) { notLabels.insert(file); }

  bool empty() const;

  std::vector<std::string> textsWithoutPicture() const;

  std::vector<LabelledPicture> pictures;
  LabelRejections rejections;  ///< of whole directories and lists

 private:
  std::vector<std::string> filesBelow(const std::string& directory);

  /// What is the same for all paths of a file. Asking the file system is left out where no file can
  /// have two.
  std::string withoutDetours(const std::string& path) const;

  struct NumberedLine {
    std::string text;
    std::size_t number;
  };

  std::vector<NumberedLine> linesOf(const std::string& file);

  void addText(const std::string& file);

  /// Pictures of a list may lie where no directory was looked through.
  bool isThere(const std::string& file) const;

  bool isNoLabelText(const std::string& file) const;

  std::unordered_set<std::string> known;
  std::unordered_set<std::string> textSet;
  std::unordered_set<std::string> notLabels;
  std::unordered_set<std::string> rejected;
  std::vector<std::string> texts;
  bool followedLinks = false;
};

/// The files of the set at the place, each picture with its text. Nothing, with a log line, if they
/// are of an export and not as it wrote them.
std::optional<DarknetFiles> filesOf(const DarknetPlace& place, const LabelReading& reading);

}  // namespace tnv::darknet
