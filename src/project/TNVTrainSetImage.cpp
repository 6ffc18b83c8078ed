// The picture of a train set: in memory, and reduced in the cache on disk.

#include <chrono>
#include <filesystem>
#include <thread>

#include <opencv2/imgproc.hpp>

#include "foundation/Files.h"
#include "foundation/Log.h"
#include "foundation/PictureFile.h"
#include "foundation/TNVDirectory.h"
#include "marks/TNVContour.h"
#include "project/TNVTrainSet.h"

namespace fs = std::filesystem;

namespace {

/// How often and how long to wait for another thread to deliver the picture.
constexpr int kWaits = 50;
constexpr std::chrono::milliseconds kWait{100};

}  // namespace

cv::Size TNVTrainSet::getImageSize() {
  if (imageWidth == 0) {
    const cv::Mat picture = getImage();
    imageWidth = picture.cols;
    imageHeight = picture.rows;
  }
  return {imageWidth, imageHeight};
}

bool TNVTrainSet::isImageLoaded() {
  const std::lock_guard lock(mutex);
  return imageLoaded;
}

void TNVTrainSet::releaseImage() {
  const std::lock_guard lock(mutex);
  image = cv::Mat();
  imageLoaded = false;
}

void TNVTrainSet::setUnreadable() {
  keepImage(cv::Mat());
}

std::optional<cv::Mat> TNVTrainSet::loadedImage() {
  const std::lock_guard lock(mutex);
  if (!imageLoaded) return std::nullopt;
  return image;
}

cv::Mat TNVTrainSet::loadImage() {
  if (const auto loaded = loadedImage()) return *loaded;
  const cv::Mat picture = tnv::readPicture(imagePath);
  keepImage(picture);
  return picture;
}

cv::Mat TNVTrainSet::readImage() {
  const auto loaded = loadedImage();
  return loaded ? *loaded : tnv::readPicture(imagePath);
}

void TNVTrainSet::keepImage(const cv::Mat& picture) {
  const std::lock_guard lock(mutex);
  image = picture;
  imageLoaded = true;
}

bool TNVTrainSet::hasImageCache() const {
  return !imageCachePath.empty() && imageCacheSize.width >= 1 && imageCacheSize.height >= 1;
}

cv::Mat TNVTrainSet::getImage() {
  if (!hasImageCache()) {
    for (int i = 0; i < kWaits && !isImageLoaded(); ++i)
      std::this_thread::sleep_for(kWait);
    return loadImage();
  }
  if (const auto loaded = loadedImage()) return *loaded;
  const cv::Mat cached = getImageCached();
  if (!cached.empty()) return cached;
  tnv::logLine("TNVTrainSet::getImage: Could not load cache? Using normal image!");
  return loadImage();
}

cv::Mat TNVTrainSet::getImageCached() {
  if (imageCachePath.empty()) return {};
  cv::Mat reduced = tnv::readPicture(imageCachePath);
  if (reduced.empty()) {
    tnv::logLine("TNVTrainSet::getImageCached: Image cache is empty!");
    dropImageCache();
    return {};
  }
  if (imageCacheSize.width <= 0 || imageCacheSize.height <= 0) {
    tnv::logLine("TNVTrainSet::getImageCached: Image dst size is zero!");
    return {};
  }
  cv::Mat picture;
  cv::resize(reduced, picture, imageCacheSize, 0, 0, cv::INTER_LINEAR);
  return picture;
}

bool TNVTrainSet::addImageCache(const std::string& cacheDirectory, int maxSize, int quality) {
  if (maxSize <= 0) {
    tnv::logLine("TNVTrainSet::addImageCache: MaxSize is <= 0!");
    return false;
  }
  const cv::Mat source = tnv::readPicture(imagePath);
  if (source.empty()) {
    tnv::logLine("TNVTrainSet::addImageCache: Image source is empty!");
    return false;
  }
  imageCacheSize = source.size();
  cv::Mat reduced;
  TNVContour::resizeToLength(source, reduced, maxSize, source.cols > source.rows);
  const std::string path = cacheDirectory + makeUniqueName(cacheDirectory, ".jpg") + ".jpg";
  if (!TNVDirectory::exists(cacheDirectory)) TNVDirectory::createDirectory(cacheDirectory);
  if (!TNVDirectory::exists(cacheDirectory)) {
    tnv::logLine("TNVTrainSet::addImageCache: Can not create cache directory!");
    return false;
  }
  tnv::writePicture(path, reduced, quality);
  if (!TNVDirectory::exists(path)) {
    imageCacheSize = cv::Size();
    tnv::logLine("TNVTrainSet::addImageCache: Can not create cache image!");
    return false;
  }
  imageCachePath = path;
  ownsImageCache = true;
  return true;
}

bool TNVTrainSet::liesInCache() const {
  if (imageCachePath.empty() || dataPath.empty()) return false;
  // A record lies in the directory of its set, which lies beside that of the copies.
  const fs::path project = fs::absolute(dataPath).lexically_normal().parent_path().parent_path();
  return fs::absolute(imageCachePath).lexically_normal().parent_path() == project / "cache";
}

void TNVTrainSet::dropImageCache() {
  // A damaged record must not lead to the picture itself.
  if (ownsImageCache && imageCachePath != imagePath && imageCachePath != imagePathAbs)
    tnv::removeFile(imageCachePath);
  imageCachePath.clear();
  imageCacheSize = cv::Size();
  ownsImageCache = false;
}
