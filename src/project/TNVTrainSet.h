#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

class TNVMark;

namespace tnv {
class FileReplacements;
}

/// One picture with its marks: the record in memory of one XML file. It comes into being with
/// little more than a path; the marks are read on first need, the picture apart from them.
class TNVTrainSet {
 public:
  /// A record that is to be loaded; the caller sets `dataPath`.
  TNVTrainSet();

  /// A record of a picture being added. With a `basePath` the picture is taken to lie there.
  TNVTrainSet(const std::string& imagePath, const std::string& basePath);
  ~TNVTrainSet();
  TNVTrainSet(const TNVTrainSet&) = delete;
  TNVTrainSet& operator=(const TNVTrainSet&) = delete;

  /// Reads the record's file and adds its marks. Nothing but log lines and `dataLoaded` tells of a
  /// failure; a malformed file throws a `cv::Exception`.
  void load();

  /// Writes the record's file if the record was loaded and has changed. False, with a log line,
  /// when the file could not be written; the record stays flagged as changed then.
  bool save(const std::string& directory);

  /// The same in one pass with other files. False, with a log line, when the file could not be
  /// written; if it cannot take its place, a log line tells when the pass ends. Until `files` was
  /// committed, or is gone, the record must live, where it is and unchanged: it counts as saved
  /// from when its file takes its place.
  bool save(const std::string& directory, tnv::FileReplacements& files);

  /// The path of the record's file; a new record gets its name here.
  std::string getDataPath(const std::string& directory);

  /// Appends a copy of the mark with an id of this record; null for a kind that is not known.
  TNVMark* addMark(const TNVMark& source);

  /// Follows the picture, or the record's own files, to where a directory was moved. False if none
  /// lies below `from`.
  bool relinkPicture(const std::string& from, const std::string& to);
  bool relinkRecord(const std::string& from, const std::string& to);

  /// Takes the mark out. It is no longer drawn nor saved, but stays readable as long as the record.
  void removeMark(TNVMark* mark);

  /// Puts one class for another in all marks, by their unique indices. A mark that has both keeps
  /// one; one that is the same as another mark afterwards is taken out. Returns the number of marks
  /// that changed, with those taken out.
  int replaceClass(int from, int to);

  /// Takes a class out of all marks, and with it the marks that have no other. Returns the number
  /// of marks that carried it.
  int removeClass(int idx);

  /// The marks in the order of addition, which is the drawing order.
  std::vector<TNVMark*> markPointers() const;

  /// The size of the picture, fetching the picture if the size is not known yet. Zero without one.
  cv::Size getImageSize();

  /// Sets the comment unless it is too long to be stored: then false and a log line.
  bool setComment(const std::string& newComment);

  /// Reads the picture if it is not in memory yet, and gives it out.
  cv::Mat loadImage();

  /// The same in two: the picture without having it in memory from then on, and that.
  cv::Mat readImage();
  void keepImage(const cv::Mat& picture);

  /// The picture at its full size. Waits up to five seconds for another thread to load it.
  cv::Mat getImage();
  cv::Mat getImageCached();
  bool addImageCache(const std::string& cacheDirectory, int maxSize, int quality);
  bool hasImageCache() const;

  /// Deletes the cache file and forgets it.
  void dropImageCache();

  bool isImageLoaded();

  /// As if a picture had been loaded that cannot be read.
  void setUnreadable();

  /// Gives the picture up again.
  void releaseImage();

  int markIdNext = 0;
  int workflow = -1;
  bool changed = true;
  bool current = false;
  cv::Mat image;             ///< guarded by `mutex`
  bool imageLoaded = false;  ///< guarded by `mutex`
  std::mutex mutex;
  std::string uniqueName;
  std::string imagePath;
  std::string imagePathAbs;
  std::string dataPath;
  bool dataLoaded = false;
  int imageWidth = 0;
  int imageHeight = 0;
  std::vector<std::unique_ptr<TNVMark>> marks;
  TNVMark* designedMark = nullptr;  ///< owned by the mark handler
  std::vector<cv::Point2d> designPoints;
  std::string comment;
  bool useSpecialTest = false;
  bool remove = false;
  std::string imageCachePath;
  cv::Size imageCacheSize;

 private:
  void writeNodes(cv::FileStorage& storage);
  void readNodes(const cv::FileNode& root);

  std::optional<cv::Mat> loadedImage();

  /// Whether the reduced copy lies where those of the record's project lie.
  bool liesInCache() const;

  std::vector<std::unique_ptr<TNVMark>> removedMarks;

  /// Only then it may be deleted: the path may come from a file that somebody else wrote.
  bool ownsImageCache = false;
};
