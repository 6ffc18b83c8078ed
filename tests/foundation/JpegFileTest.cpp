#include "foundation/JpegFile.h"

#include <random>

#include <gtest/gtest.h>
#include <turbojpeg.h>
#include <opencv2/imgcodecs.hpp>

#include "foundation/PictureFile.h"
#include "support/Pictures.h"
#include "support/TempDirectory.h"

// Whatever the file, the outcome is that of the image library, with the JPEG library built in or
// not.

namespace {

const std::vector<cv::Size> kSizes{{1, 1},   {1, 8},   {7, 1},   {8, 8},   {15, 17},
                                   {16, 16}, {17, 33}, {33, 15}, {64, 48}, {101, 67}};
const std::vector<int> kSamplings{TJSAMP_444,  TJSAMP_422, TJSAMP_420,
                                  TJSAMP_GRAY, TJSAMP_440, TJSAMP_411};

std::string encoded(const cv::Mat& picture, const std::vector<int>& parameters = {}) {
  std::vector<uchar> bytes;
  cv::imencode(".jpg", picture, bytes, parameters);
  return {bytes.begin(), bytes.end()};
}

/// By the JPEG library itself, for what the image library does not write.
std::string encodedAs(const cv::Mat& picture, int format, int sampling, int flags = 0) {
  const tjhandle handle = tjInitCompress();
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  EXPECT_EQ(tjCompress2(handle, picture.data, picture.cols, static_cast<int>(picture.step),
                        picture.rows, format, &bytes, &size, sampling, 90, flags),
            0);
  const std::string result(bytes, bytes + size);
  tjFree(bytes);
  tjDestroy(handle);
  return result;
}

class JpegFile : public testing::Test {
 protected:
  /// Reads the file in both ways. Tells whether the JPEG library alone did it.
  bool isReadAlike(const std::string& bytes) {
    const std::string path = temp.write("a.jpg", bytes);
    const cv::Mat expected = cv::imread(path, cv::IMREAD_COLOR);
    const cv::Mat picture = tnv::readPicture(path);
    EXPECT_EQ(picture.empty(), expected.empty());
    if (!expected.empty() && !picture.empty()) {
      EXPECT_TRUE(samePixels(expected, picture));
    }
    return !tnv::readPlainJpeg(path, tnv::readPictureHead(path)).empty();
  }

  TempDirectory temp;
};

}  // namespace

TEST_F(JpegFile, EverySizeAndSamplingIsReadAlike) {
  for (const cv::Size& size : kSizes)
    for (const int sampling : kSamplings)
      for (const int flags : {0, TJFLAG_PROGRESSIVE})
        EXPECT_EQ(isReadAlike(encodedAs(patternedPicture(size.width, size.height), TJPF_BGR,
                                        sampling, flags)),
                  TNV_TURBOJPEG)
            << size << " sampling " << sampling << " flags " << flags;
}

TEST_F(JpegFile, GreyAndRestartMarkersAndOptimisedCodesAreReadAlike) {
  const cv::Mat picture = patternedPicture(101, 67);
  EXPECT_EQ(isReadAlike(encoded(picture, {cv::IMWRITE_JPEG_RST_INTERVAL, 3})), TNV_TURBOJPEG);
  EXPECT_EQ(isReadAlike(encoded(picture, {cv::IMWRITE_JPEG_OPTIMIZE, 1})), TNV_TURBOJPEG);
  cv::Mat grey;
  cv::extractChannel(picture, grey, 1);
  EXPECT_EQ(isReadAlike(encoded(grey)), TNV_TURBOJPEG);
}

TEST_F(JpegFile, FourColoursAreLeftToTheImageLibrary) {
  cv::Mat picture(67, 101, CV_8UC4);
  cv::RNG(5).fill(picture, cv::RNG::UNIFORM, 0, 256);
  EXPECT_FALSE(isReadAlike(encodedAs(picture, TJPF_CMYK, TJSAMP_444)));
  EXPECT_FALSE(isReadAlike(encodedAs(picture, TJPF_CMYK, TJSAMP_420)));
}

TEST_F(JpegFile, EveryOrientationIsReadAlike) {
  const cv::Mat picture = patternedPicture(37, 21);
  for (int orientation = 0; orientation <= 9; ++orientation)
    EXPECT_EQ(isReadAlike(turnedJpeg(picture, static_cast<char>(orientation))),
              TNV_TURBOJPEG && orientation == 1)
        << orientation;
}

TEST_F(JpegFile, NotesThatTellNoOrientationAreReadAlike) {
  const std::string jpeg = encoded(patternedPicture(37, 21));
  const std::string other = withCameraNotes(jpeg, "http://somewhere/notes");
  EXPECT_EQ(isReadAlike(other), TNV_TURBOJPEG);
  std::string notes = notesOfOrientation(6);
  notes[17] = 19;  // another tag
  EXPECT_EQ(isReadAlike(withCameraNotes(jpeg, notes)), TNV_TURBOJPEG);
}

TEST_F(JpegFile, LittleEndianNotesAreReadAlike) {
  const std::string jpeg = encoded(patternedPicture(37, 21));
  for (const char orientation : {'\1', '\3', '\6'}) {
    const std::string notes =
        std::string("Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0", 24) + orientation +
        std::string(7, '\0');
    EXPECT_EQ(isReadAlike(withCameraNotes(jpeg, notes)), TNV_TURBOJPEG && orientation == 1);
  }
}

TEST_F(JpegFile, DamagedNotesAreReadAlike) {
  const std::string jpeg = encoded(patternedPicture(37, 21));
  std::mt19937 random(20260412);
  for (const char orientation : {'\1', '\6'}) {
    const std::string whole = notesOfOrientation(orientation);
    for (std::size_t size = 0; size <= whole.size(); ++size)
      isReadAlike(withCameraNotes(jpeg, whole.substr(0, size)));
    for (std::size_t at = 0; at < whole.size(); ++at) {
      for (int i = 0; i < 8; ++i) {
        std::string notes = whole;
        notes[at] = static_cast<char>(random());
        isReadAlike(withCameraNotes(jpeg, notes));
      }
    }
  }
}

TEST_F(JpegFile, TheFirstOfTwoNotesCountsForBoth) {
  const std::string jpeg = encoded(patternedPicture(37, 21));
  for (const char first : {'\1', '\6'})
    for (const char second : {'\1', '\6'})
      isReadAlike(withCameraNotes(withCameraNotes(jpeg, notesOfOrientation(second)),
                                  notesOfOrientation(first)));
}

TEST_F(JpegFile, CutFilesAreReadAlike) {
  for (const int flags : {0, TJFLAG_PROGRESSIVE}) {
    const std::string whole = encodedAs(patternedPicture(33, 15), TJPF_BGR, TJSAMP_420, flags);
    for (std::size_t size = 0; size < whole.size(); ++size)
      isReadAlike(whole.substr(0, size));
  }
}

TEST_F(JpegFile, DamagedFilesAreReadAlike) {
  std::mt19937 random(20260413);
  for (const int flags : {0, TJFLAG_PROGRESSIVE}) {
    const std::string whole = encodedAs(patternedPicture(33, 15), TJPF_BGR, TJSAMP_420, flags);
    for (int i = 0; i < 300; ++i) {
      std::string damaged = whole;
      for (int k = 0; k < 1 + i % 3; ++k)
        damaged[random() % damaged.size()] = static_cast<char>(random());
      isReadAlike(damaged);
    }
  }
}

TEST_F(JpegFile, WhatFollowsTheEndIsNotRead) {
  EXPECT_EQ(isReadAlike(encoded(patternedPicture(33, 15)) + "and more"), TNV_TURBOJPEG);
}

TEST_F(JpegFile, EverySizeAndQualityIsWrittenAlike) {
  for (const cv::Size& size : kSizes)
    for (const int quality : {-3, 0, 1, 10, 50, 75, 95, 96, 100, 300}) {
      const cv::Mat picture = patternedPicture(size.width, size.height);
      const std::string expected = encoded(picture, {cv::IMWRITE_JPEG_QUALITY, quality});
      ASSERT_TRUE(tnv::writePicture(temp / "b.jpg", picture, quality));
      EXPECT_EQ(readFile(temp / "b.jpg"), expected) << size << " quality " << quality;
      EXPECT_EQ(tnv::encodePlainJpeg(picture, quality).size, TNV_TURBOJPEG ? expected.size() : 0U);
    }
}

TEST_F(JpegFile, PartsOfPicturesAndOtherTypesAreWrittenAlike) {
  const cv::Mat whole = patternedPicture(64, 48);
  cv::Mat grey;
  cv::extractChannel(whole, grey, 0);
  cv::Mat four;
  cv::merge(std::vector<cv::Mat>{grey, grey, grey, grey}, four);
  for (const cv::Mat& picture : {whole(cv::Rect(5, 7, 31, 22)), grey, four}) {
    for (const char* name : {"c.jpg", "c.JPEG", "c.jpe"}) {
      ASSERT_TRUE(tnv::writePicture(temp / name, picture));
      EXPECT_EQ(readFile(temp / name), encoded(picture)) << name;
    }
  }
}
