#include <chrono>
#include <filesystem>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "project/TNVTrainSet.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"
#include "support/TempDirectory.h"

using testing::ElementsAre;

namespace {

using Clock = std::chrono::steady_clock;

class TrainSetImageTest : public testing::Test {
 protected:
  /// A record of a picture of that size.
  TNVTrainSet& record(int width, int height) {
    owned = std::make_unique<TNVTrainSet>(writePicture(temp / "a.png", width, height), "");
    return *owned;
  }

  /// The same with a reduced copy.
  TNVTrainSet& cachedRecord(int width, int height, int maxSize) {
    EXPECT_TRUE(record(width, height).addImageCache(temp / "cache/", maxSize, 75));
    return *owned;
  }

  TempDirectory temp;
  std::unique_ptr<TNVTrainSet> owned;
};

}  // namespace

TEST_F(TrainSetImageTest, LoadingReadsTheFileOnce) {
  TNVTrainSet& trainSet = record(20, 10);
  trainSet.loadImage();
  EXPECT_TRUE(trainSet.imageLoaded);
  EXPECT_TRUE(samePixels(patternedPicture(20, 10), trainSet.image));
  trainSet.image = cv::Mat();
  trainSet.loadImage();
  EXPECT_TRUE(trainSet.image.empty());
}

TEST_F(TrainSetImageTest, ReadingTakesWhatIsLoadedAndKeepsNothing) {
  TNVTrainSet& trainSet = record(20, 10);
  EXPECT_TRUE(samePixels(patternedPicture(20, 10), trainSet.readImage()));
  EXPECT_FALSE(trainSet.isImageLoaded());
  const cv::Mat picture = patternedPicture(7, 3);
  trainSet.keepImage(picture);
  EXPECT_TRUE(trainSet.isImageLoaded());
  EXPECT_EQ(trainSet.readImage().data, picture.data);
  EXPECT_EQ(trainSet.loadImage().data, picture.data);
}

TEST_F(TrainSetImageTest, UnreadablePictureCountsAsLoaded) {
  for (const std::string& path : unreadablePictures(temp)) {
    TNVTrainSet trainSet(path, "");
    const LogCapture log;
    trainSet.loadImage();
    EXPECT_TRUE(trainSet.imageLoaded) << path;
    EXPECT_TRUE(trainSet.getImage().empty()) << path;
    EXPECT_EQ("", log.text());
  }
}

TEST_F(TrainSetImageTest, OfAnUnreadablePictureThereIsNoCache) {
  for (const std::string& path : unreadablePictures(temp)) {
    TNVTrainSet trainSet(path, "");
    const LogCapture log;
    EXPECT_FALSE(trainSet.addImageCache(temp / "cache/", 32, 75)) << path;
    EXPECT_THAT(log.lines(), ElementsAre("TNVTrainSet::addImageCache: Image source is empty!"));
  }
}

TEST_F(TrainSetImageTest, GreyPicturesComeInColour) {
  cv::imwrite(temp / "a.png", cv::Mat(4, 4, CV_8UC1, cv::Scalar(9)));
  TNVTrainSet trainSet(temp / "a.png", "");
  trainSet.loadImage();
  EXPECT_EQ(CV_8UC3, trainSet.image.type());
}

TEST_F(TrainSetImageTest, WithoutAWorkerThePictureComesAfterFiveSeconds) {
  TNVTrainSet& trainSet = record(20, 10);
  const auto start = Clock::now();
  EXPECT_TRUE(samePixels(patternedPicture(20, 10), trainSet.getImage()));
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(5000));
  EXPECT_TRUE(trainSet.imageLoaded);
}

TEST_F(TrainSetImageTest, PictureThatIsDeliveredMeanwhileEndsTheWait) {
  TNVTrainSet& trainSet = record(20, 10);
  const auto start = Clock::now();
  std::thread deliverer([&] { trainSet.loadImage(); });
  EXPECT_FALSE(trainSet.getImage().empty());
  deliverer.join();
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(4000));
}

TEST_F(TrainSetImageTest, GivenOutPictureOutlivesItsRelease) {
  TNVTrainSet& trainSet = record(20, 10);
  trainSet.loadImage();
  const cv::Mat picture = trainSet.getImage();
  EXPECT_EQ(picture.data, trainSet.image.data);
  trainSet.releaseImage();
  EXPECT_FALSE(trainSet.imageLoaded);
  EXPECT_TRUE(trainSet.image.empty());
  EXPECT_TRUE(samePixels(patternedPicture(20, 10), picture));
}

TEST_F(TrainSetImageTest, CacheHoldsAReducedCopyOfTheFullSize) {
  TNVTrainSet& trainSet = cachedRecord(4000, 3000, 1024);
  EXPECT_EQ(cv::Size(4000, 3000), trainSet.imageCacheSize);
  EXPECT_EQ(cv::Size(1024, 768), cv::imread(trainSet.imageCachePath).size());
  EXPECT_EQ(cv::Size(4000, 3000), trainSet.getImage().size());
  EXPECT_FALSE(trainSet.imageLoaded);
}

TEST_F(TrainSetImageTest, LongerSideDecidesTheLengthOfTheCopy) {
  EXPECT_EQ(cv::Size(24, 32), cv::imread(cachedRecord(48, 64, 32).imageCachePath).size());
  EXPECT_EQ(cv::Size(32, 32), cv::imread(cachedRecord(64, 64, 32).imageCachePath).size());
  EXPECT_EQ(cv::Size(128, 96), cv::imread(cachedRecord(64, 48, 128).imageCachePath).size());
  EXPECT_EQ(cv::Size(64, 48), cv::imread(cachedRecord(64, 48, 64).imageCachePath).size());
}

TEST_F(TrainSetImageTest, CachedPictureIsTheCopyBlownUp) {
  TNVTrainSet& trainSet = cachedRecord(64, 48, 32);
  cv::Mat expected;
  cv::resize(cv::imread(trainSet.imageCachePath), expected, {64, 48}, 0, 0, cv::INTER_LINEAR);
  EXPECT_TRUE(samePixels(expected, trainSet.getImage()));
  EXPECT_TRUE(samePixels(expected, trainSet.getImageCached()));
}

TEST_F(TrainSetImageTest, QualityRulesTheSizeOfTheFile) {
  TNVTrainSet& trainSet = record(64, 48);
  ASSERT_TRUE(trainSet.addImageCache(temp / "cache/", 64, 10));
  std::vector<uchar> expected;
  cv::imencode(".jpg", patternedPicture(64, 48), expected, {cv::IMWRITE_JPEG_QUALITY, 10});
  EXPECT_EQ(std::string(expected.begin(), expected.end()), readFile(trainSet.imageCachePath));
}

TEST_F(TrainSetImageTest, LoadedPictureGoesBeforeTheCache) {
  TNVTrainSet& trainSet = cachedRecord(64, 48, 32);
  trainSet.loadImage();
  std::filesystem::remove(trainSet.imageCachePath);
  const LogCapture log;
  EXPECT_TRUE(samePixels(patternedPicture(64, 48), trainSet.getImage()));
  EXPECT_EQ("", log.text());
}

TEST_F(TrainSetImageTest, LostCacheFileGivesTheFullPictureAndIsForgotten) {
  TNVTrainSet& trainSet = cachedRecord(64, 48, 32);
  std::filesystem::remove(trainSet.imageCachePath);
  const LogCapture log;
  EXPECT_TRUE(samePixels(patternedPicture(64, 48), trainSet.getImage()));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVTrainSet::getImageCached: Image cache is empty!",
                          "TNVTrainSet::getImage: Could not load cache? Using normal image!"));
  EXPECT_FALSE(trainSet.hasImageCache());
  EXPECT_EQ("", trainSet.imageCachePath);
}

TEST_F(TrainSetImageTest, DamagedCacheFileIsDeleted) {
  TNVTrainSet& trainSet = cachedRecord(64, 48, 32);
  const std::string path = trainSet.imageCachePath;
  temp.write("cache/" + std::filesystem::path(path).filename().string(), "no picture");
  EXPECT_TRUE(trainSet.getImageCached().empty());
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(TrainSetImageTest, CacheNeedsAPathAndASize) {
  TNVTrainSet trainSet("a.png", "");
  EXPECT_FALSE(trainSet.hasImageCache());
  EXPECT_TRUE(trainSet.getImageCached().empty());
  trainSet.imageCachePath = writePicture(temp / "c.jpg", 8, 8);
  EXPECT_FALSE(trainSet.hasImageCache());
  const LogCapture log;
  EXPECT_TRUE(trainSet.getImageCached().empty());
  EXPECT_THAT(log.lines(), ElementsAre("TNVTrainSet::getImageCached: Image dst size is zero!"));
  trainSet.imageCacheSize = {8, 1};
  EXPECT_TRUE(trainSet.hasImageCache());
  trainSet.imageCacheSize = {8, 0};
  EXPECT_FALSE(trainSet.hasImageCache());
}

TEST_F(TrainSetImageTest, PathWithoutASizeTakesTheWaitingRoad) {
  TNVTrainSet& trainSet = cachedRecord(64, 48, 32);
  trainSet.imageCacheSize = cv::Size();
  const auto start = Clock::now();
  EXPECT_TRUE(samePixels(patternedPicture(64, 48), trainSet.getImage()));
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(5000));
}

TEST_F(TrainSetImageTest, ReasonsForNoCacheAreLogged) {
  TNVTrainSet& trainSet = record(8, 8);
  TNVTrainSet missing(temp / "missing.png", "");
  temp.write("file", "");
  const LogCapture log;
  EXPECT_FALSE(trainSet.addImageCache(temp / "cache/", 0, 75));
  EXPECT_FALSE(trainSet.addImageCache(temp / "cache/", -1, 75));
  EXPECT_FALSE(missing.addImageCache(temp / "cache/", 32, 75));
  EXPECT_FALSE(std::filesystem::exists(temp / "cache"));
  EXPECT_THAT(log.lines(), ElementsAre("TNVTrainSet::addImageCache: MaxSize is <= 0!",
                                       "TNVTrainSet::addImageCache: MaxSize is <= 0!",
                                       "TNVTrainSet::addImageCache: Image source is empty!"));
}

TEST_F(TrainSetImageTest, CacheDirectoryThatCannotBeMadeIsLogged) {
  TNVTrainSet& trainSet = record(8, 8);
  temp.write("file", "");
  const LogCapture log;
  EXPECT_FALSE(trainSet.addImageCache(temp / "file/cache/", 32, 75));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVDirectory::createDirectory: Error while creating directories!",
                          "TNVTrainSet::addImageCache: Can not create cache directory!"));
}

TEST_F(TrainSetImageTest, CacheFileThatCannotBeWrittenIsLogged) {
  TNVTrainSet& trainSet = record(8, 8);
  const LogCapture log;
  // A place that exists and takes no file, not even from root.
  EXPECT_FALSE(trainSet.addImageCache("/proc/", 32, 75));
  EXPECT_THAT(log.lines(),
              testing::Contains("TNVTrainSet::addImageCache: Can not create cache image!"));
  EXPECT_EQ(cv::Size(), trainSet.imageCacheSize);
}

TEST_F(TrainSetImageTest, PictureIsReadFromThePathAsGiven) {
  TNVTrainSet elsewhere(writePicture(temp / "a.png", 20, 10), temp / "other/");
  elsewhere.loadImage();
  EXPECT_EQ(cv::Size(20, 10), elsewhere.image.size());
  EXPECT_TRUE(elsewhere.addImageCache(temp / "cache/", 10, 75));
}

TEST_F(TrainSetImageTest, CachePathThatIsThePictureIsForgottenAndNotDeleted) {
  TNVTrainSet& trainSet = record(8, 8);
  trainSet.imageCachePath = trainSet.imagePath;
  trainSet.dropImageCache();
  EXPECT_EQ("", trainSet.imageCachePath);
  EXPECT_TRUE(std::filesystem::exists(trainSet.imagePath));
}
