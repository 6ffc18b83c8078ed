#include "tools/LabelFiles.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "support/LogCapture.h"
#include "support/Pictures.h"
#include "support/TempDirectory.h"
#include "tools/PictureSize.h"

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

tnv::LabelSet setOf(const std::vector<std::string>& paths) {
  tnv::LabelSet set;
  for (const std::string& path : paths)
    set.pictures.push_back({path, {}, {}, {}});
  return set;
}

/// The picture as JPEG with a note of its orientation, as cameras write it.
std::string turnedJpeg(const cv::Mat& picture, unsigned char orientation) {
  std::vector<uchar> bytes;
  cv::imencode(".jpg", picture, bytes);
  const unsigned char exif[] = {0xFF, 0xE1, 0, 34, 'E', 'x',         'i', 'f', 0, 0,  'M', 'M',
                                0,    42,   0, 0,  0,   8,           0,   1,   1, 18, 0,   3,
                                0,    0,    0, 1,  0,   orientation, 0,   0,   0, 0,  0,   0};
  std::string file(bytes.begin(), bytes.begin() + 2);
  file.append(std::begin(exif), std::end(exif));
  return file.append(bytes.begin() + 2, bytes.end());
}

}  // namespace

TEST(LabelFiles, PicturesOfOneNameGetNumbers) {
  EXPECT_THAT(
      tnv::outputNames(setOf({"/a/x.jpg", "/b/x.jpg", "/b/X.png", "/b/y.v2.jpg", "/c/x.jpg"})),
      ElementsAre("x", "x_2", "X_3", "y.v2", "x_4"));
}

TEST(LabelFiles, ANumberedNameGivesWayToARealOne) {
  EXPECT_THAT(tnv::outputNames(setOf({"/a/x_2.jpg", "/a/x.jpg", "/b/x.jpg"})),
              ElementsAre("x_2", "x", "x_3"));
}

TEST(LabelFiles, ANameNeverLeadsOutOfItsDirectory) {
  EXPECT_EQ(tnv::pathBelow("/set/images", "a.jpg"), "/set/images/a.jpg");
  EXPECT_EQ(tnv::pathBelow("/set/images/", "day1/./a.jpg"), "/set/images/day1/a.jpg");
  EXPECT_EQ(tnv::pathBelow("/set/images", "day1\\a.jpg"), "/set/images/day1/a.jpg");
  for (const char* name :
       {"", "/etc/a.jpg", "../a.jpg", "day1/../../a.jpg", "..\\a.jpg", "day1/", ".."})
    EXPECT_EQ(tnv::pathBelow("/set/images", name), std::nullopt) << name;
  EXPECT_EQ(tnv::pathBelow("/set/images", std::string("a\0.jpg", 6)), std::nullopt);
}

TEST(LabelFiles, NamesKeepTheirNumbersAndLoseTheirBlanks) {
  const TempDirectory temp;
  const std::string file =
      temp.write("classes.txt", "\xEF\xBB\xBF screw\r\n\r\nhex nut\t\r\nH\xFClse\n\n\n");
  EXPECT_THAT(*tnv::readNames(file), ElementsAre("screw", "", "hex nut", "H\xFClse"));
  EXPECT_EQ(tnv::readNames(temp.write("none.txt", "\n\n")), std::nullopt);
  EXPECT_EQ(tnv::readNames(temp / "missing.txt"), std::nullopt);
}

TEST(LabelFiles, CopiesReplaceEarlierOnesAndTellOfFailures) {
  const TempDirectory temp;
  const auto set = setOf({temp.write("a.jpg", "new"), temp / "missing.jpg"});
  const std::string target = temp.makeDirectory("images");
  temp.write("images/x.jpg", "old");
  LogCapture log;
  EXPECT_FALSE(tnv::copyPictures(set, {"x", "y"}, target, "who"));
  EXPECT_EQ(readFile(target + "x.jpg"), "new");
  EXPECT_THAT(log.lines(), ElementsAre("who: Could not copy '" + temp.path() + "missing.jpg'!"));
}

TEST(LabelFiles, APictureThatIsItsOwnCopyStaysWhole) {
  const TempDirectory temp;
  const auto set = setOf({temp.write("a.jpg", "picture")});
  EXPECT_TRUE(tnv::copyPictures(set, {"a"}, temp.path(), "who"));
  EXPECT_EQ(readFile(temp / "a.jpg"), "picture");
}

TEST(PictureSize, IsToldByTheHeadOfTheFile) {
  const TempDirectory temp;
  for (const char* name : {"a.png", "a.jpg"}) {
    const std::string path = writePicture(temp / name, 37, 21);
    EXPECT_EQ(tnv::pictureSizeFromHead(path), cv::Size(37, 21)) << name;
    // What lies behind the head is not looked at.
    fs::resize_file(path, fs::file_size(path) - 20);
    EXPECT_EQ(tnv::pictureSizeFromHead(path), cv::Size(37, 21)) << name;
  }
}

TEST(PictureSize, ATurnedPictureHasTheSizeThatItIsSeenIn) {
  const TempDirectory temp;
  // 6: to be turned by a quarter; 3: by a half.
  EXPECT_EQ(tnv::pictureSize(temp.write("a.jpg", turnedJpeg(patternedPicture(37, 21), 6))),
            cv::Size(21, 37));
  EXPECT_EQ(tnv::pictureSize(temp.write("b.jpg", turnedJpeg(patternedPicture(37, 21), 3))),
            cv::Size(37, 21));
}

TEST(PictureSize, APngThatMayBeTurnedIsReadToBeSure) {
  const TempDirectory temp;
  std::string png = readFile(writePicture(temp / "a.png", 37, 21));
  // Behind the signature and the header chunk, of 8 and 25 bytes: no data, the name, a check sum.
  png.insert(33, std::string("\0\0\0\0eXIf\0\0\0\0", 12));
  EXPECT_EQ(tnv::pictureSizeFromHead(temp.write("b.png", png)), cv::Size());
  png.replace(37, 4, "tEXt");
  EXPECT_EQ(tnv::pictureSizeFromHead(temp.write("c.png", png)), cv::Size(37, 21));
}

TEST(PictureSize, OtherKindsOfPicturesAreRead) {
  const TempDirectory temp;
  const std::string path = writePicture(temp / "a.bmp", 37, 21);
  EXPECT_EQ(tnv::pictureSizeFromHead(path), cv::Size());
  EXPECT_EQ(tnv::pictureSize(path), cv::Size(37, 21));
}

TEST(PictureSize, ADamagedHeadHasNoSize) {
  const TempDirectory temp;
  for (const char* name : {"a.png", "a.jpg"}) {
    const std::string whole = readFile(writePicture(temp / name, 37, 21));
    for (std::size_t size = 0; size < 200; ++size) {
      const cv::Size told = tnv::pictureSizeFromHead(temp.write("cut", whole.substr(0, size)));
      EXPECT_TRUE(told.empty() || told == cv::Size(37, 21)) << name << " cut at " << size;
    }
  }
  EXPECT_EQ(tnv::pictureSize(temp / "missing.jpg"), cv::Size());
  EXPECT_EQ(tnv::pictureSize(temp.path()), cv::Size());
  // A width of 2^32 - 1.
  std::string huge = readFile(temp / "a.png");
  huge.replace(16, 4, "\xff\xff\xff\xff");
  EXPECT_EQ(tnv::pictureSizeFromHead(temp.write("huge.png", huge)), cv::Size());
}
