#include "foundation/PictureHead.h"

#include <cmath>
#include <filesystem>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "foundation/PictureFile.h"

#include "support/Pictures.h"
#include "support/TempDirectory.h"

namespace fs = std::filesystem;

namespace {

/// As far as the head of the file leaves no doubt about how the picture is seen.
cv::Size sizeFromHead(const std::string& path) {
  const tnv::PictureHead head = tnv::readPictureHead(path);
  return head.mayBeTurned ? cv::Size() : head.size;
}

}  // namespace

TEST(PictureHead, IsToldByTheHeadOfTheFile) {
  const TempDirectory temp;
  for (const char* name : {"a.png", "a.jpg"}) {
    const std::string path = writePicture(temp / name, 37, 21);
    EXPECT_EQ(sizeFromHead(path), cv::Size(37, 21)) << name;
    // What lies behind the head is not looked at.
    fs::resize_file(path, fs::file_size(path) - 20);
    EXPECT_EQ(sizeFromHead(path), cv::Size(37, 21)) << name;
  }
}

TEST(PictureHead, ATurnedPictureHasTheSizeThatItIsSeenIn) {
  const TempDirectory temp;
  // 6: to be turned by a quarter; 3: by a half.
  EXPECT_EQ(tnv::pictureSize(temp.write("a.jpg", turnedJpeg(patternedPicture(37, 21), 6))),
            cv::Size(21, 37));
  EXPECT_EQ(tnv::pictureSize(temp.write("b.jpg", turnedJpeg(patternedPicture(37, 21), 3))),
            cv::Size(37, 21));
}

TEST(PictureHead, APngThatMayBeTurnedIsReadToBeSure) {
  const TempDirectory temp;
  std::string png = readFile(writePicture(temp / "a.png", 37, 21));
  // Behind the signature and the header chunk, of 8 and 25 bytes: no data, the name, a check sum.
  png.insert(33, std::string("\0\0\0\0eXIf\0\0\0\0", 12));
  EXPECT_EQ(sizeFromHead(temp.write("b.png", png)), cv::Size());
  png.replace(37, 4, "tEXt");
  EXPECT_EQ(sizeFromHead(temp.write("c.png", png)), cv::Size(37, 21));
  // Behind the pixels, before the last chunk of 12 bytes.
  png.insert(png.size() - 12, std::string("\0\0\0\0eXIf\0\0\0\0", 12));
  EXPECT_EQ(sizeFromHead(temp.write("d.png", png)), cv::Size());
}

TEST(PictureHead, OtherKindsOfPicturesAreRead) {
  const TempDirectory temp;
  const std::string path = writePicture(temp / "a.bmp", 37, 21);
  EXPECT_EQ(sizeFromHead(path), cv::Size());
  EXPECT_EQ(tnv::pictureSize(path), cv::Size(37, 21));
}

TEST(PictureHead, ADamagedHeadHasNoSize) {
  const TempDirectory temp;
  for (const char* name : {"a.png", "a.jpg"}) {
    const std::string whole = readFile(writePicture(temp / name, 37, 21));
    for (std::size_t size = 0; size < 200; ++size) {
      const cv::Size told = sizeFromHead(temp.write("cut", whole.substr(0, size)));
      EXPECT_TRUE(told.empty() || told == cv::Size(37, 21)) << name << " cut at " << size;
    }
  }
  EXPECT_EQ(tnv::pictureSize(temp / "missing.jpg"), cv::Size());
  EXPECT_EQ(tnv::pictureSize(temp.path()), cv::Size());
  // A width of 2^32 - 1.
  std::string huge = readFile(temp / "a.png");
  huge.replace(16, 4, "\xff\xff\xff\xff");
  EXPECT_EQ(sizeFromHead(temp.write("huge.png", huge)), cv::Size());
}

TEST(PictureHead, WhatIsNoPictureHasNoSize) {
  const TempDirectory temp;
  for (const std::string& path : unreadablePictures(temp))
    EXPECT_EQ(tnv::pictureSize(path), cv::Size()) << path;
}

TEST(PictureHead, NoMorePixelsThanTenThousandAByteAreBelieved) {
  const TempDirectory temp;
  const double bytes = static_cast<double>(hollowJpeg(100).size());
  for (const auto& [pixelsOfAByte, isBelieved] : {std::pair{9500, true}, {10500, false}}) {
    const int side = static_cast<int>(std::sqrt(pixelsOfAByte * bytes));
    const std::string path = temp.write("a.jpg", hollowJpeg(side));
    EXPECT_EQ(tnv::pictureSize(path).empty(), !isBelieved);
    EXPECT_EQ(tnv::readPicture(path).empty(), !isBelieved);
  }
}

TEST(PictureHead, PixelsCountForEachScan) {
  const TempDirectory temp;
  // A thousand pixels a byte, of which a progressive file of this kind has ten scans at least.
  const std::string small = hollowJpeg(100, true);
  std::size_t scans = 0;
  for (std::size_t at = small.find("\xFF\xDA"); at != small.npos;
       at = small.find("\xFF\xDA", at + 1))
    ++scans;
  ASSERT_GT(scans, 2U);
  const double bytes = static_cast<double>(small.size());
  for (const auto& [pixelsOfAByte, isBelieved] : {std::pair{9500, true}, {10500, false}}) {
    const int side =
        static_cast<int>(std::sqrt(pixelsOfAByte * bytes / static_cast<double>(scans)));
    const std::string path = temp.write("a.jpg", hollowJpeg(side, true));
    EXPECT_EQ(tnv::readPicture(path).empty(), !isBelieved);
  }
}

namespace {

const std::string kStreamStart = "\xFF\x4F\xFF\x51";

/// As the image library writes it: a code stream in boxes.
std::string jpeg2000() {
  std::vector<uchar> bytes;
  cv::imencode(".jp2", patternedPicture(64, 48), bytes);
  return {bytes.begin(), bytes.end()};
}

std::string bigEndian(int number) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8)
    bytes += static_cast<char>(number >> shift & 0xFF);
  return bytes;
}

/// With a code stream that claims to be a square in one tile.
std::string claiming(int side, std::string jpeg) {
  const std::size_t start = jpeg.find(kStreamStart);
  const std::string size = bigEndian(side) + bigEndian(side);
  // Behind the start, two lengths; then the picture's size and place, and the tile's size.
  return jpeg.replace(start + 8, 8, size).replace(start + 24, 8, size);
}

}  // namespace

TEST(PictureHead, Jpeg2000IsKnownWhateverItIsCalled) {
  const TempDirectory temp;
  const std::string boxed = jpeg2000();
  const std::string bare = boxed.substr(boxed.find(kStreamStart));
  for (const std::string& jpeg : {boxed, bare}) {
    const std::string path = temp.write("a.jpg", jpeg);
    EXPECT_EQ(tnv::readPictureHead(path).size, cv::Size(64, 48));
    EXPECT_TRUE(samePixels(tnv::readPicture(path), cv::imread(path)));
    EXPECT_EQ(tnv::pictureSize(path), cv::Size(64, 48));
    // One that is cut before it tells its size is refused.
    EXPECT_TRUE(tnv::readPictureHead(temp.write("cut.jpg", jpeg.substr(0, 20))).isHollow);
  }
}

TEST(PictureHead, SizeOfJpeg2000IsThatOfItsPartOfTheGrid) {
  const TempDirectory temp;
  std::string jpeg = jpeg2000();
  const std::size_t start = jpeg.find(kStreamStart);
  jpeg.replace(start + 16, 8, bigEndian(7) + bigEndian(11));
  EXPECT_EQ(tnv::readPictureHead(temp.write("a.jp2", jpeg)).size, cv::Size(57, 37));
  jpeg.replace(start + 16, 8, bigEndian(65) + bigEndian(0));
  EXPECT_TRUE(tnv::readPictureHead(temp.write("a.jp2", jpeg)).isHollow);
}

TEST(PictureHead, NoMorePixelsThanAThousandAByteOfJpeg2000AreBelieved) {
  const TempDirectory temp;
  const double bytes = static_cast<double>(jpeg2000().size());
  for (const auto& [pixelsOfAByte, isBelieved] : {std::pair{950, true}, {1050, false}}) {
    const int side = static_cast<int>(std::sqrt(pixelsOfAByte * bytes));
    const std::string path = temp.write("a.jpg", claiming(side, jpeg2000()));
    EXPECT_EQ(tnv::readPictureHead(path).isHollow, !isBelieved);
  }
  // Which would take thirteen gigabytes.
  EXPECT_TRUE(tnv::readPicture(temp.write("b.jpg", claiming(30000, jpeg2000()))).empty());
}

TEST(PictureHead, AnEmptyPageInTwoColoursIsAPicture) {
  const TempDirectory temp;
  const cv::Mat page(9000, 9000, CV_8UC1, cv::Scalar(255));
  cv::imwrite(temp / "page.png", page,
              {cv::IMWRITE_PNG_BILEVEL, 1, cv::IMWRITE_PNG_COMPRESSION, 9});
  // Thus a bound of 2,000 pixels a byte would be too low.
  ASSERT_GT(9000.0 * 9000 / static_cast<double>(fs::file_size(temp / "page.png")), 2000);
  EXPECT_EQ(tnv::readPicture(temp / "page.png").size(), page.size());
}

TEST(PictureHead, BitmapsOfEitherDirectionAreRead) {
  const TempDirectory temp;
  const std::string path = writePicture(temp / "a.bmp", 37, 21);
  std::string bitmap = readFile(path);
  EXPECT_TRUE(samePixels(patternedPicture(37, 21), tnv::readPicture(path)));
  // 2^32 - 21
  bitmap.replace(22, 4, "\xEB\xFF\xFF\xFF");
  EXPECT_EQ(tnv::readPicture(temp.write("down.bmp", bitmap)).size(), cv::Size(37, 21));
}

namespace {

/// With segments of a comment that are too short for their own length.
std::string withShortSegment(const std::string& jpeg, const std::string& before) {
  return std::string(jpeg).insert(jpeg.find(before), std::string("\xFF\xFE\0\0\xFF\xFE\0\1", 8));
}

}  // namespace

TEST(PictureHead, ShortSegmentsArePassedOver) {
  const TempDirectory temp;
  const std::string jpeg = readFile(writePicture(temp / "a.jpg", 64, 48));
  for (const char* before : {"\xFF\xDB", "\xFF\xC0", "\xFF\xDA"}) {
    const std::string path = temp.write("b.jpg", withShortSegment(jpeg, before));
    EXPECT_EQ(tnv::pictureSize(path), cv::Size(64, 48));
    EXPECT_TRUE(samePixels(cv::imread(path), tnv::readPicture(path)));
  }
  const std::string hollow = hollowJpeg(1500, true);
  EXPECT_TRUE(tnv::readPicture(temp.write("c.jpg", hollow)).empty());
  EXPECT_TRUE(tnv::readPicture(temp.write("d.jpg", withShortSegment(hollow, "\xFF\xDA"))).empty());
}

TEST(PictureHead, ScansAreCountedAcrossPieces) {
  const TempDirectory temp;
  const std::string small = hollowJpeg(100, true);
  const std::size_t frame = small.find("\xFF\xC2");
  const std::size_t last = small.rfind("\xFF\xDA");
  std::size_t scans = 0;
  for (std::size_t at = small.find("\xFF\xDA"); at != small.npos;
       at = small.find("\xFF\xDA", at + 1))
    ++scans;
  // A comment moves the marker of the last scan over the end of a piece of 65,536 bytes.
  for (std::size_t place = 65533; place <= 65537; ++place) {
    const std::size_t length = place - last - 2;
    const std::string comment =
        std::string{'\xFF', '\xFE', static_cast<char>(length >> 8), static_cast<char>(length)} +
        std::string(length - 2, 'x');
    const double bytes = static_cast<double>(small.size() + comment.size());
    // Believed only if one scan were missed.
    const int side = static_cast<int>(std::sqrt(10400 * bytes / static_cast<double>(scans)));
    const std::string jpeg = hollowJpeg(side, true).insert(frame, comment);
    ASSERT_EQ(jpeg.rfind("\xFF\xDA"), place);
    EXPECT_TRUE(tnv::readPictureHead(temp.write("a.jpg", jpeg)).isHollow) << place;
  }
}
