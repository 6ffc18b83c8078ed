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

std::string hollowJpeg(int side, bool progressive) {
  std::vector<uchar> bytes;
  cv::imencode(".jpg", patternedPicture(8, 8), bytes,
               {cv::IMWRITE_JPEG_PROGRESSIVE, progressive ? 1 : 0});
  std::string jpeg(bytes.begin(), bytes.end());
  const char sides[] = {static_cast<char>(side >> 8), static_cast<char>(side)};
  // Behind the marker: two bytes of length, one of bits, height and width.
  const std::size_t frame = jpeg.find(progressive ? "\xFF\xC2" : "\xFF\xC0") + 5;
  jpeg.replace(frame, 2, sides, 2).replace(frame + 2, 2, sides, 2);
  return jpeg;
}

/// The same with bytes before its frame that the image library passes over.
static std::string hollowJpegWith(const std::string& stray) {
  const std::string jpeg = hollowJpeg(32000);
  return std::string(jpeg).insert(jpeg.find("\xFF\xDB"), stray);
}

/// The head of a bitmap of 18,000 by 18,000 pixels, packed, and its end at once.
static std::string hollowBitmap() {
  std::string bitmap(1078, '\0');
  const auto put = [&](std::size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i)
      bitmap[at + static_cast<std::size_t>(i)] = static_cast<char>(value >> (8 * i));
  };
  bitmap.replace(0, 2, "BM");
  put(10, 1078);
  put(14, 40);
  put(18, 18000);
  put(22, 18000);
  put(26, 1 | 8 << 16);
  put(30, 1);
  put(46, 256);
  return bitmap + std::string("\0\1", 2);
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
          temp.write("hollow.jpg", hollowJpeg(32000)),
          temp.write("stray.jpg", hollowJpegWith("x")),
          temp.write("alone.jpg", hollowJpegWith("\xFF\x01")),
          temp.write("stuffed.jpg", hollowJpegWith(std::string("\xFF\0\xC4", 3))),
          temp.write("hollow.bmp", hollowBitmap())};
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
