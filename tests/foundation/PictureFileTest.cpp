#include "foundation/PictureFile.h"

#include <filesystem>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "support/FileLimit.h"
#include "support/Pictures.h"
#include "support/TempDirectory.h"

namespace {

/// The content of the file that the image library makes of a picture.
std::string encoded(const char* extension, const cv::Mat& picture, const std::vector<int>& how) {
  std::vector<uchar> bytes;
  cv::imencode(extension, picture, bytes, how);
  return {bytes.begin(), bytes.end()};
}

}  // namespace

TEST(PictureFile, APictureComesAsItWasWritten) {
  const TempDirectory temp;
  EXPECT_TRUE(
      samePixels(patternedPicture(20, 10), tnv::readPicture(writePicture(temp / "a.png", 20, 10))));
}

TEST(PictureFile, GreyAndTransparentPicturesComeInColour) {
  const TempDirectory temp;
  cv::imwrite(temp / "grey.png", cv::Mat(4, 5, CV_8UC1, cv::Scalar(9)));
  cv::imwrite(temp / "deep.png", cv::Mat(4, 5, CV_16UC4, cv::Scalar(2313, 2313, 2313, 500)));
  const cv::Mat expected(4, 5, CV_8UC3, cv::Scalar::all(9));
  EXPECT_TRUE(samePixels(expected, tnv::readPicture(temp / "grey.png")));
  EXPECT_TRUE(samePixels(expected, tnv::readPicture(temp / "deep.png")));
}

TEST(PictureFile, WhatCannotBeReadIsEmpty) {
  const TempDirectory temp;
  for (const std::string& path : unreadablePictures(temp))
    EXPECT_TRUE(tnv::readPicture(path).empty()) << path;
  EXPECT_TRUE(tnv::readPicture("").empty());
}

TEST(PictureFile, ALinkLeadsToItsPicture) {
  const TempDirectory temp;
  writePicture(temp / "a.png", 20, 10);
  std::filesystem::create_symlink(temp / "a.png", temp / "link.png");
  EXPECT_TRUE(samePixels(patternedPicture(20, 10), tnv::readPicture(temp / "link.png")));
}

TEST(PictureFile, TheQualityOfAJpegIsTheUsualOneUnlessGiven) {
  const TempDirectory temp;
  const cv::Mat picture = patternedPicture(64, 48);
  EXPECT_TRUE(tnv::writePicture(temp / "usual.jpg", picture));
  EXPECT_TRUE(tnv::writePicture(temp / "low.jpg", picture, 10));
  EXPECT_EQ(readFile(temp / "usual.jpg"), encoded(".jpg", picture, {}));
  EXPECT_EQ(readFile(temp / "low.jpg"), encoded(".jpg", picture, {cv::IMWRITE_JPEG_QUALITY, 10}));
}

TEST(PictureFile, TheExtensionGivesTheFormat) {
  const TempDirectory temp;
  const cv::Mat picture = patternedPicture(64, 48);
  EXPECT_TRUE(tnv::writePicture(temp / "a.png", picture));
  EXPECT_EQ(readFile(temp / "a.png"), encoded(".png", picture, {}));
  EXPECT_THROW(tnv::writePicture(temp / "a.nothing", picture), cv::Exception);
}

TEST(PictureFile, EncodedPicturesAreTheContentOfTheFiles) {
  const TempDirectory temp;
  const cv::Mat picture = patternedPicture(64, 48);
  for (const char* extension : {".jpg", ".png"}) {
    const tnv::PictureBytes bytes = tnv::encodePicture(std::string("any") + extension, picture);
    const tnv::PictureBytes copy = bytes;
    EXPECT_EQ(bytes.content, encoded(extension, picture, {}));
    EXPECT_EQ(copy.content.data(), bytes.content.data());
    EXPECT_TRUE(tnv::writePicture(temp / "of_bytes", copy));
    EXPECT_EQ(readFile(temp / "of_bytes"), bytes.content);
  }
  EXPECT_EQ(tnv::encodePicture("any.jpg", picture, 10).content,
            encoded(".jpg", picture, {cv::IMWRITE_JPEG_QUALITY, 10}));
}

TEST(PictureFile, APictureThatTheFormatDoesNotTakeHasNoContentAndIsNotWritten) {
  const TempDirectory temp;
  for (const cv::Size size : {cv::Size(65501, 1), cv::Size(1, 65501), cv::Size(70000, 2)}) {
    const auto bytes = tnv::encodePicture("a.jpg", cv::Mat(size, CV_8UC3, cv::Scalar()));
    EXPECT_TRUE(bytes.content.empty()) << size;
    EXPECT_FALSE(tnv::writePicture(temp / "a.jpg", bytes));
    EXPECT_FALSE(std::filesystem::exists(temp / "a.jpg"));
  }
  const cv::Mat longest(1, 65500, CV_8UC3, cv::Scalar());
  EXPECT_EQ(tnv::encodePicture("a.jpg", longest).content, encoded(".jpg", longest, {}));
  EXPECT_THROW(tnv::encodePicture("a.jpg", cv::Mat(0, 70000, CV_8UC3)), cv::Exception);
}

TEST(PictureFile, WhatCannotBeWrittenIsFalse) {
  const TempDirectory temp;
  EXPECT_FALSE(tnv::writePicture(temp / "absent/a.png", patternedPicture(8, 8)));
}

TEST(PictureFile, AFullDiskIsToldAndLeavesNoHalfFile) {
  const TempDirectory temp;
  for (const char* name : {"a.png", "a.jpg", "a.bmp", "a.ppm", "a.webp", "a.tiff"}) {
    for (const int room : {0, 20}) {
      const FileLimit limit(static_cast<rlim_t>(room));
      EXPECT_FALSE(tnv::writePicture(temp / name, patternedPicture(32, 24))) << name;
      EXPECT_FALSE(std::filesystem::exists(temp / name)) << name;
    }
    EXPECT_TRUE(tnv::writePicture(temp / name, patternedPicture(32, 24))) << name;
    EXPECT_FALSE(cv::imread(temp / name).empty()) << name;
  }
}

TEST(PictureFile, APictureThatAFormatCannotTakeIsFalse) {
  const TempDirectory temp;
  // A JPEG has at most 65,500 columns.
  EXPECT_FALSE(tnv::writePicture(temp / "wide.jpg", cv::Mat(1, 65600, CV_8UC3, cv::Scalar())));
  EXPECT_FALSE(std::filesystem::exists(temp / "wide.jpg"));
  EXPECT_THROW(tnv::writePicture(temp / "none.jpg", cv::Mat()), cv::Exception);
}
