#include "support/Pictures.h"

#include <sys/stat.h>
#include <opencv2/imgcodecs.hpp>

cv::Mat patternedPicture(int width, int height) {
  cv::Mat picture(height, width, CV_8UC3);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      picture.at<cv::Vec3b>(y, x) = cv::Vec3b(static_cast<uchar>((x * 7 + y * 3) % 256),
                                              static_cast<uchar>((x * 2 + y * 5 + 40) % 256),
                                              static_cast<uchar>((x + y * 11 + 90) % 256));
    }
  }
  return picture;
}

std::string writePicture(const std::string& path, int width, int height) {
  cv::imwrite(path, patternedPicture(width, height));
  return path;
}

std::string withCameraNotes(const std::string& jpeg, const std::string& notes) {
  const std::size_t length = notes.size() + 2;
  const std::string head{'\xFF', '\xE1', static_cast<char>(length >> 8), static_cast<char>(length)};
  return jpeg.substr(0, 2) + head + notes + jpeg.substr(2);
}

std::string notesOfOrientation(char orientation) {
  return {'E', 'x', 'i', 'f', 0, 0, 'M', 'M', 0, 42,          0, 0, 0, 8, 0, 1,
          1,   18,  0,   3,   0, 0, 0,   1,   0, orientation, 0, 0, 0, 0, 0, 0};
}

std::string turnedJpeg(const cv::Mat& picture, char orientation) {
  std::vector<uchar> bytes;
  cv::imencode(".jpg", picture, bytes);
  return withCameraNotes({bytes.begin(), bytes.end()}, notesOfOrientation(orientation));
}

/// A small file that claims to be a picture of 32,000 by 32,000 pixels.
static std::string hollowJpeg() {
  std::vector<uchar> bytes;
  cv::imencode(".jpg", patternedPicture(8, 8), bytes);
  std::string jpeg(bytes.begin(), bytes.end());
  // Behind the marker: two bytes of length, one of bits, height and width.
  jpeg.replace(jpeg.find("\xFF\xC0") + 5, 4, "\x7D\x00\x7D\x00", 4);
  return jpeg;
}

std::vector<std::string> unreadablePictures(const TempDirectory& temp) {
  temp.makeDirectory("directory.png");
  EXPECT_EQ(mkfifo((temp / "pipe.png").c_str(), 0600), 0);
  return {temp / "missing.png",
          temp / "directory.png",
          temp / "pipe.png",
          temp.write("empty.png", ""),
          temp.write("text.png", "no picture"),
          temp.write("huge.png", "P6 100000 100000 255\n"),
          temp.write("hollow.jpg", hollowJpeg())};
}

::testing::AssertionResult samePixels(const cv::Mat& expected, const cv::Mat& actual) {
  if (expected.size() != actual.size() || expected.type() != actual.type()) {
    return ::testing::AssertionFailure()
           << "expected " << expected.size() << " of type " << expected.type() << ", got "
           << actual.size() << " of type " << actual.type();
  }
  for (int y = 0; y < expected.rows; ++y) {
    for (int x = 0; x < expected.cols; ++x) {
      const auto* wanted =
          expected.ptr<uchar>(y) + static_cast<std::size_t>(x) * expected.elemSize();
      const auto* seen = actual.ptr<uchar>(y) + static_cast<std::size_t>(x) * actual.elemSize();
      if (std::equal(wanted, wanted + expected.elemSize(), seen)) continue;
      return ::testing::AssertionFailure()
             << "first difference at (" << x << ", " << y << "): expected " << int{wanted[0]}
             << ", got " << int{seen[0]} << " in the first channel";
    }
  }
  return ::testing::AssertionSuccess();
}
