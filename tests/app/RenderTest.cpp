#include <filesystem>
#include <regex>

#include <sys/stat.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "ProgramRunner.h"
#include "TNV_SampleBenchNative/TNV_SampleBenchNative.h"
#include "support/Pictures.h"

namespace {

class ProgramRender : public ProgramTest {
 protected:
  void SetUp() override { makeProject(); }

  cv::Mat render(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"render", "parts", "a.png", "-o", "seen.png"});
    succeed(arguments);
    return cv::imread(place / "seen.png");
  }
};

TEST_F(ProgramRender, WithoutMarksAndCrossThePictureIsAsItIs) {
  EXPECT_TRUE(samePixels(patternedPicture(128, 64), render({})));
}

TEST_F(ProgramRender, ZoomAndFitGiveTheSize) {
  EXPECT_EQ(render({"--zoom", "2"}).size(), cv::Size(256, 128));
  EXPECT_EQ(render({"--fit", "64x64"}).size(), cv::Size(64, 32));
  EXPECT_EQ(render({"--fit", "512x128"}).size(), cv::Size(256, 128));
}

TEST_F(ProgramRender, ACrossIsDrawnWhereItIsWanted) {
  const auto picture = render({"--cross", "0.5,0.25", "--cross-style", "Black Cross"});
  auto expected = patternedPicture(128, 64);
  cv::line(expected, {64, 64}, {64, 0}, {}, 1, cv::LINE_AA);
  cv::line(expected, {128, 16}, {0, 16}, {}, 1, cv::LINE_AA);
  EXPECT_TRUE(samePixels(expected, picture));
}

TEST_F(ProgramRender, MarksAreDrawnInTheStyleAndFilledUnlessTold) {
  succeed({"mark", "parts", "a.png", "Rect", "0.25,0.25", "0.75,0.75", "--class", "nut"});
  const std::vector<std::string> plain{"--style", "Red", "--info", "None", "--no-fill"};
  const auto outlined = render(plain);
  // Smoothed lines let a little of the picture through.
  EXPECT_LT(cv::norm(outlined.at<cv::Vec3b>(16, 50), cv::Vec3b(64, 64, 255)), 40);
  const cv::Point inside(40, 20);
  EXPECT_EQ(outlined.at<cv::Vec3b>(inside), patternedPicture(128, 64).at<cv::Vec3b>(inside));
  const auto filled = render({"--style", "Red", "--info", "None"});
  EXPECT_NE(filled.at<cv::Vec3b>(inside), outlined.at<cv::Vec3b>(inside));
}

TEST_F(ProgramRender, RefusesWhatWillNotDo) {
  struct Row {
    std::vector<std::string> arguments;
    std::string message;
    int exitCode;
  };
  const std::vector<Row> rows{
      {{"a.png", "-o", "x.png", "--style", "Pink"}, "choose from: Black, Blue, Colored, Red", 2},
      {{"a.png", "-o", "x.png", "--info", "All"}, "there is no info 'All'; choose from: DNN", 2},
      {{"a.png", "-o", "x.png", "--cross", "0,0", "--cross-style", "Star"}, "Black Circle", 2},
      {{"a.png", "-o", "x.png", "--cross", "2,0"}, "lies outside the picture", 2},
      {{"a.png", "-o", "x.png", "--fit", "80"}, "is no size", 2},
      {{"a.png", "-o", "x.png", "--fit", "0x80"}, "is no size", 2},
      {{"a.png", "-o", "x.png", "--fit", "5x5"}, "give a larger size", 1},
      {{"a.png", "-o", "absent/x.png"}, "cannot be written", 1},
      {{"z.png", "-o", "x.png"}, "no picture 'z.png'", 1},
      {{"a.png", "-o", "x.png", "--zoom", "0.01"}, "no number from 0.1 to 20", 2},
      {{"a.png", "-o", "x.png", "--zoom", "nan"}, "no number from 0.1 to 20", 2},
      {{"a.png", "-o", "x.png", "--zoom", "1", "--fit", "8x8"}, "excludes", 2},
      {{"a.png", "-o", "x.png", "--cross-style", "White Cross"}, "requires --cross", 2},
      {{"a.png"}, "--output is required", 2}};
  for (auto [arguments, message, exitCode] : rows) {
    arguments.insert(arguments.begin(), {"render", "parts"});
    fail(arguments, message, exitCode);
  }
}

TEST_F(ProgramRender, APictureThatCannotBeReadIsAMessage) {
  for (const auto& path : unreadablePictures(place)) {
    std::filesystem::remove_all(place / "photos/a.png");
    if (std::filesystem::exists(path)) std::filesystem::rename(path, place / "photos/a.png");
    fail({"render", "parts", "a.png", "-o", "x.png"}, "cannot be read; put it back");
  }
}

TEST_F(ProgramRender, AFormatThatNobodyWritesIsAMessage) {
  fail({"render", "parts", "a.png", "-o", "x.nothing"}, "use .png or .jpg", 2);
}

TEST_F(ProgramRender, NeitherFilesOfTheProjectNorSpecialFilesAreWrittenOver) {
  succeed({"mark", "parts", "a.png", "Rect", "0.25,0.25", "0.75,0.75", "--class", "nut"});
  succeed({"gallery", "parts"});
  const auto before = contents("projects");
  ASSERT_EQ(mkfifo((place / "pipe.png").c_str(), 0600), 0);
  std::filesystem::create_symlink("projects/parts/new.png", place / "link.png");
  place.makeDirectory("directory.png");
  struct Row {
    const char* file;
    const char* message;
  };
  for (const auto& [file, message] :
       {Row{"projects/parts/validation/0.jpg", "lies in the directory of the project"},
        {"projects/parts/new.png", "lies in the directory of the project"},
        {"link.png", "lies in the directory of the project"},
        {"pipe.png", "cannot be written"},
        {"directory.png", "is a directory"}}) {
    fail({"render", "parts", "a.png", "-o", file}, message);
    fail({"magnify", "parts", "a.png", "--at", "0.5,0.5", "-o", file}, message);
  }
  fail({"crop", "parts", "a.png", "-o", "projects/parts/cuts"},
       "lies in the directory of the project");
  place.makeDirectory("cuts");
  ASSERT_EQ(mkfifo((place / "cuts/a-1.png").c_str(), 0600), 0);
  fail({"crop", "parts", "a.png", "-o", "cuts"}, "cannot be written");
  EXPECT_EQ(contents("projects"), before);
}

TEST_F(ProgramRender, APictureIsWrittenThroughALinkAndWhole) {
  place.write("seen/earlier.png", "earlier");
  std::filesystem::create_symlink("seen/earlier.png", place / "link.png");
  std::filesystem::create_hard_link(place / "seen/earlier.png", place / "kept.png");
  succeed({"render", "parts", "a.png", "-o", "link.png"});
  EXPECT_TRUE(std::filesystem::is_symlink(place / "link.png"));
  EXPECT_TRUE(samePixels(patternedPicture(128, 64), cv::imread(place / "seen/earlier.png")));
  EXPECT_EQ(readFile(place / "kept.png"), "earlier");
}

TEST_F(ProgramRender, PicturesOfTheProjectAreNotWrittenOver) {
  const auto before = readFile(place / "photos/b.png");
  fail({"render", "parts", "a.png", "-o", "photos/b.png"}, "is a picture of the project");
  EXPECT_EQ(readFile(place / "photos/b.png"), before);
}

TEST_F(ProgramRender, TheHelpListsTheValuesThatThereAre) {
  auto help = succeed({"render", "--help"});
  // Without the breaks of lines.
  help = std::regex_replace(help, std::regex("\\s+"), " ");
  WTNVProject project("", "", "", "");
  WTNVMainProcess process(&project, nullptr);
  const auto view = process.getHndImageView();
  for (const auto& values : {view.getAvailableMarkStyles(), view.getAvailableMarkDrawInfos(),
                             view.getAvailableCrossStyles()})
    for (const auto& value : values)
      EXPECT_TRUE(std::regex_search(help, std::regex("(: |, | or )" + value + "(,| or| \\(|\\b)")))
          << value;
}

}  // namespace
