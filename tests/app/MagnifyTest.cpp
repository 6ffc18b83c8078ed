#include <algorithm>
#include <filesystem>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "ProgramRunner.h"
#include "support/Pictures.h"

namespace {

class ProgramMagnify : public ProgramTest {
 protected:
  void SetUp() override { makeProject(); }

  cv::Mat magnify(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"magnify", "parts", "a.png", "-o", "spot.png"});
    succeed(arguments);
    return cv::imread(place / "spot.png");
  }
};

TEST_F(ProgramMagnify, AtOneToOneTheWindowIsAPieceOfThePicture) {
  const auto window = magnify({"--at", "0.5,0.5", "--zoom", "1", "--size", "32x16", "--no-cross"});
  EXPECT_TRUE(samePixels(patternedPicture(128, 64)(cv::Rect(48, 24, 32, 16)), window));
}

TEST_F(ProgramMagnify, BeyondTheCornerItIsBlack) {
  const auto window = magnify({"--at", "0,0", "--no-cross"});
  ASSERT_EQ(window.size(), cv::Size(256, 256));
  // The last row and column before the corner are blended with its pixels.
  EXPECT_EQ(cv::countNonZero(window(cv::Rect(0, 0, 127, 127)).clone().reshape(1)), 0);
  EXPECT_NE(cv::countNonZero(window(cv::Rect(128, 128, 128, 128)).clone().reshape(1)), 0);
}

TEST_F(ProgramMagnify, ShowsTheCrossUnlessTold) {
  const std::vector<std::string> plain{"--at", "0.5,0.5", "--size", "64x64", "--no-cross"};
  auto expected = magnify(plain);
  cv::line(expected, {32, 64}, {32, 0}, {255, 255, 255}, 1, cv::LINE_AA);
  cv::line(expected, {64, 32}, {0, 32}, {255, 255, 255}, 1, cv::LINE_AA);
  EXPECT_TRUE(samePixels(expected, magnify({"--at", "0.5,0.5", "--size", "64x64"})));
}

TEST_F(ProgramMagnify, AModeIsAFilterOnTheWindow) {
  const auto normal = magnify({"--at", "0.5,0.5", "--no-cross"});
  cv::Mat gray;
  cv::cvtColor(normal, gray, cv::COLOR_BGR2GRAY);
  cv::cvtColor(gray, gray, cv::COLOR_GRAY2BGR);
  EXPECT_TRUE(samePixels(gray, magnify({"--at", "0.5,0.5", "--no-cross", "--mode", "Gray"})));
}

TEST_F(ProgramMagnify, RefusesWhatWillNotDo) {
  struct Row {
    std::vector<std::string> arguments;
    std::string message;
    int exitCode;
  };
  const std::vector<Row> rows{
      {{"a.png", "-o", "x.png", "--at", "2,0"}, "lies outside the picture", 2},
      {{"a.png", "-o", "x.png", "--at", "0,0", "--mode", "Improved"}, "Edge x2", 2},
      {{"a.png", "-o", "x.png", "--at", "0,0", "--size", "0x5"}, "is no size", 2},
      {{"a.png", "-o", "x.png", "--at", "0,0", "--size", "9999x5"}, "use up to 4096x4096", 2},
      {{"a.png", "-o", "x.png", "--at", "0;0"}, "'0;0' is no point", 2},
      {{"a.png", "-o", "x.png", "--at", "0,0", "--size", "50x51", "--zoom", "100"},
       "at size 50x51 and zoom 100 the file would show nothing of the picture; give a larger",
       2},
      {{"a.png", "-o", "x.png", "--at", "0,0", "--size", "4096x4096", "--zoom", "0.1"},
       "at size 4096x4096 and zoom 0.1 the picture cannot be magnified",
       1},
      {{"a.png", "-o", "photos/b.png", "--at", "0,0"}, "is a picture of the project", 1},
      {{"z.png", "-o", "x.png", "--at", "0,0"}, "no picture 'z.png'", 1},
      {{"a.png", "-o", "x.png", "--at", "0,0", "--zoom", "0"}, "no number from", 2},
      {{"a.png", "-o", "x.png"}, "--at is required", 2}};
  for (auto [arguments, message, exitCode] : rows) {
    arguments.insert(arguments.begin(), {"magnify", "parts"});
    fail(arguments, message, exitCode);
  }
}

class ProgramCrop : public ProgramTest {
 protected:
  void SetUp() override { makeProject(); }
};

TEST_F(ProgramCrop, EachMarkWithAnAreaBecomesAFile) {
  succeed({"mark", "parts", "a.png", "Rect", "0.25,0.25", "0.5,0.75", "--class", "nut"});
  succeed({"mark", "parts", "a.png", "Point", "0.5,0.5", "--class", "nut"});
  succeed({"mark", "parts", "a.png", "Rect", "0.5,0.5", "0.75,0.75", "--class", "nut"});
  const auto result = run({"crop", "parts", "a.png", "-o", "cut"});
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(result.out, "cut/a-1.png\ncut/a-3.png\n");
  EXPECT_NE(result.err.find("mark 2 (Point) has no area"), std::string::npos) << result.err;
  EXPECT_TRUE(samePixels(patternedPicture(128, 64)(cv::Rect(32, 16, 32, 32)),
                         cv::imread(place / "cut/a-1.png")));
  EXPECT_TRUE(samePixels(patternedPicture(128, 64)(cv::Rect(64, 32, 32, 16)),
                         cv::imread(place / "cut/a-3.png")));
}

TEST_F(ProgramCrop, AnEarlierCropIsReplacedAndNothingElse) {
  succeed({"mark", "parts", "a.png", "Rect", "0.25,0.25", "0.5,0.75", "--class", "nut"});
  place.makeDirectory("cut");
  place.write("cut/a-1.png", "an earlier one");
  const auto dry = run({"crop", "parts", "a.png", "-o", "cut", "--dry-run"});
  EXPECT_NE(dry.err.find("would replace cut/a-1.png\n"), std::string::npos) << dry.err;
  const auto real = run({"crop", "parts", "a.png", "-o", "cut"});
  EXPECT_EQ(real.exitCode, 0);
  EXPECT_NE(real.err.find("replaced cut/a-1.png\n"), std::string::npos) << real.err;
  EXPECT_EQ(cv::imread(place / "cut/a-1.png").size(), cv::Size(32, 32));
  // A link may lead to anything, and a directory holds what nobody wants to lose.
  std::filesystem::remove(place / "cut/a-1.png");
  const auto other = place.write("other.png", "something else");
  std::filesystem::create_symlink(other, place / "cut/a-1.png");
  fail({"crop", "parts", "a.png", "-o", "cut"}, "is in the way");
  EXPECT_EQ(readFile(other), "something else");
  std::filesystem::remove(place / "cut/a-1.png");
  place.makeDirectory("cut/a-1.png");
  fail({"crop", "parts", "a.png", "-o", "cut"}, "is a directory");
}

TEST_F(ProgramCrop, PicturesOfOneNameAreToldApart) {
  writePicture(place / "photos/a.jpg", 128, 64);
  place.makeDirectory("more");
  writePicture(place / "more/a.png", 128, 64);
  succeed({"import", "parts", "day1", "photos"});
  succeed({"import", "parts", "day2", "more"});
  const std::vector<std::string> pictures{"photos/a.png", "photos/a.jpg", "more/a.png", "b.png"};
  for (const auto& picture : pictures)
    succeed({"mark", "parts", picture, "Rect", "0.25,0.25", "0.5,0.75", "--class", "nut"});
  auto inOneWord = (place / "photos/a.").substr(1);
  std::replace(inOneWord.begin(), inOneWord.end(), '/', '-');
  const std::vector<std::string> names{"day1-" + inOneWord + "png", "day1-" + inOneWord + "jpg",
                                       "day2-a", "b"};
  for (std::size_t i = 0; i < pictures.size(); ++i)
    EXPECT_EQ(succeed({"crop", "parts", pictures[i], "-o", "cut"}), "cut/" + names[i] + "-1.png\n");
}

TEST_F(ProgramCrop, AMarkThatCannotBeCutIsAFindingAndTheOthersAreWritten) {
  for (const char* corner : {"0.25,0.25", "0.125,0.25"})
    succeed({"mark", "parts", "a.png", "Rect", corner, "0.5,0.75", "--class", "nut"});
  for (const auto& entry : std::filesystem::directory_iterator(place / "projects/parts/is_day1")) {
    auto record = readFile(entry.path());
    const auto center = record.find("3.7500000000000000e-01 5.");
    if (center == std::string::npos) continue;
    place.write("projects/parts/is_day1/" + entry.path().filename().string(),
                record.insert(center, "-"));
  }
  place.makeDirectory("cut");
  place.write("cut/a-1.png", "an earlier one");
  const auto result = run({"crop", "parts", "a.png", "-o", "cut"});
  EXPECT_EQ(result.exitCode, 3) << result.err;
  EXPECT_EQ(result.out, "cut/a-2.png\n");
  EXPECT_NE(result.err.find("mark 1 (Rect) cannot be cut out"), std::string::npos) << result.err;
  EXPECT_FALSE(std::filesystem::exists(place / "cut/a-1.png"));
}

TEST_F(ProgramCrop, ADirectoryThatCannotBeWrittenToIsAnError) {
  succeed({"mark", "parts", "a.png", "Rect", "0.25,0.25", "0.5,0.75", "--class", "nut"});
  fail({"crop", "parts", "a.png", "-o", "/dev/full/cut"}, "cannot be made a directory");
  fail({"crop", "parts", "a.png", "-o", "/proc"}, "cannot be written");
}

TEST_F(ProgramCrop, RefusesWhatWillNotDo) {
  fail({"crop", "parts", "a.png", "-o", "cut"}, "has no marks to cut out");
  fail({"crop", "parts", "z.png", "-o", "cut"}, "no picture 'z.png'");
  fail({"crop", "parts", "a.png"}, "--output is required", 2);
  succeed({"mark", "parts", "a.png", "Rect", "0.25,0.25", "0.5,0.75", "--class", "nut"});
  fail({"crop", "parts", "a.png", "-o", ""}, "--output", 2);
  place.write("file", "in the way");
  fail({"crop", "parts", "a.png", "-o", "file"}, "cannot be made a directory");
}

}  // namespace
