#include <filesystem>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "ContactSheet.h"
#include "ProgramRunner.h"
#include "support/Pictures.h"

namespace {

TEST(ContactSheet, PicturesAreFittedIntoTheMiddleOfTheirCell) {
  const cv::Mat white(10, 40, CV_8UC3, cv::Scalar::all(255));
  const auto cell = fitted(white, {20, 20});
  ASSERT_EQ(cell.size(), cv::Size(20, 20));
  cv::Mat expected(20, 20, CV_8UC3, cv::Scalar());
  expected(cv::Rect(0, 7, 20, 5)).setTo(cv::Scalar::all(255));
  EXPECT_TRUE(samePixels(expected, cell));
}

TEST(ContactSheet, CellsStandRowByRow) {
  std::vector<cv::Mat> cells;
  for (int i = 1; i <= 5; ++i)
    cells.emplace_back(2, 3, CV_8UC3, cv::Scalar::all(i));
  const auto sheet = contactSheet(cells, 3);
  ASSERT_EQ(sheet.size(), cv::Size(9, 4));
  EXPECT_EQ(sheet.at<cv::Vec3b>(0, 8)[0], 3);
  EXPECT_EQ(sheet.at<cv::Vec3b>(2, 0)[0], 4);
  EXPECT_EQ(sheet.at<cv::Vec3b>(3, 5)[0], 5);
  EXPECT_EQ(sheet.at<cv::Vec3b>(3, 6)[0], 0);
  EXPECT_EQ(contactSheet({cells[0]}, 3).size(), cv::Size(3, 2));
  EXPECT_TRUE(contactSheet({}, 3).empty());
}

class ProgramView : public ProgramTest {
 protected:
  void SetUp() override {
    place.makeDirectory("images");
    for (const char* name : {"img_2", "img_10", "img_1"}) {
      writePicture(place / ("images/" + std::string(name) + ".png"), 80, 60);
      place.write("images/" + std::string(name) + ".txt", "0 0.5 0.5 0.25 0.25\n");
    }
  }
};

TEST_F(ProgramView, ASampleIsWrittenWithItsBoxes) {
  succeed({"view", "images", "img_2", "-o", "seen.png"});
  auto expected = patternedPicture(80, 60);
  cv::rectangle(expected, cv::Rect(30, 22, 20, 15), cv::Scalar(0, 0, 255), 1, cv::LINE_AA);
  EXPECT_TRUE(samePixels(expected, cv::imread(place / "seen.png")));
}

TEST_F(ProgramView, WithoutANameTheFirstSamplesStandOnASheet) {
  EXPECT_EQ(succeed({"view", "images", "-o", "sheet.png"}), "wrote sheet.png (3 of 3 samples)\n");
  EXPECT_EQ(cv::imread(place / "sheet.png").size(), cv::Size(3 * 240, 180));
  EXPECT_EQ(succeed({"view", "images", "-o", "sheet.png", "--count", "2"}),
            "wrote sheet.png (2 of 3 samples)\n");
}

TEST_F(ProgramView, RefusesWhatWillNotDo) {
  fail({"view", "absent", "-o", "x.png"}, "is no directory");
  fail({"view", ".", "-o", "x.png"}, "holds no pictures with a label text");
  fail({"view", "images", "img_9", "-o", "x.png"}, "no sample 'img_9'");
  fail({"view", "images", "-o", "images/img_1.png"}, "lies among the samples");
  fail({"view", "images", "-o", "x.nothing"}, "use .png or .jpg");
  fail({"view", "images", "-o", "x.png", "--count", "0"}, "--count", 2);
}

using ProgramWeights = ProgramTest;

TEST_F(ProgramWeights, WithoutAPortalTheDirectoryIsListed) {
  place.write("weights/own.bin", "hello");
  const auto result =
      run({"weights", "list", "--address", "http://localhost:1/list", "--directory", "weights"});
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_NE(result.out.find("own.bin"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("only here"), std::string::npos) << result.out;
  EXPECT_NE(result.err.find("cannot be reached or offers nothing"), std::string::npos);
}

TEST_F(ProgramWeights, AFileIsFetchedFromAMirrorOnDisk) {
  const auto file = place.write("mirror/small.bin", "hello");
  place.makeDirectory("weights");
  place.write("mirror/list",
              "{\"0\":{\"name\":\"small.bin\",\"hash\":\"5d41402abc4b2a76b9719d91"
              "1017c592\",\"file_size\":\"5\",\"creation_date\":\"today\","
              "\"download_link\":\"file://" +
                  file + "\"}}");
  const std::string address = "file://" + place / "mirror/list";
  const std::vector<std::string> where{"--address", address, "--directory", "weights"};
  const auto with = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), where.begin(), where.end());
    return arguments;
  };
  EXPECT_NE(succeed(with({"weights", "list"})).find("not fetched"), std::string::npos);
  succeed(with({"weights", "get", "small.bin"}));
  EXPECT_EQ(readFile(place / "weights/small.bin"), "hello");
  EXPECT_NE(succeed(with({"weights", "list"})).find("here and whole"), std::string::npos);
  place.write("weights/small.bin", "hallo");
  EXPECT_NE(succeed(with({"weights", "list"})).find("wrong content"), std::string::npos);
  fail(with({"weights", "get", "large.bin"}), "choose from: small.bin");
  // What the portal says and what it gives differ.
  place.write("mirror/small.bin", "hello!");
  fail(with({"weights", "get", "small.bin"}), "damaged: wrong size");
  std::filesystem::remove(place / "mirror/small.bin");
  fail(with({"weights", "get", "small.bin"}), "could not be fetched");
  place.write("mirror/list", "[{}]");
  fail(with({"weights", "list"}), "is no list of files");
}

TEST_F(ProgramWeights, FilesAreImportedAndRemoved) {
  place.write("from/w.bin", "hello");
  place.makeDirectory("weights");
  succeed({"weights", "import", "from/w.bin", "--directory", "weights"});
  EXPECT_EQ(readFile(place / "weights/w.bin"), "hello");
  fail({"weights", "import", "from/w.bin", "--directory", "weights"}, "is there already");
  fail({"weights", "import", "absent", "--directory", "weights"}, "is no file");
  fail({"weights", "import", "from/w.bin", "--directory", "absent"}, "is no directory");
  fail({"weights", "remove", "x.bin", "--directory", "weights"}, "there is no 'x.bin'");
  fail({"weights", "remove", "../from/w.bin", "--directory", "weights"}, "there is no");
  succeed({"weights", "remove", "w.bin", "--directory", "weights"});
  EXPECT_FALSE(std::filesystem::exists(place / "weights/w.bin"));
}

using ProgramUser = ProgramTest;

TEST_F(ProgramUser, UsersAreMadeListedChangedAndRemoved) {
  succeed({"user", "create", "bea"});
  succeed({"user", "create", "ann"});
  succeed({"user", "set", "ann", "parts"});
  EXPECT_EQ(succeed({"user", "list"}), "user  last project\nann   parts\nbea\n");
  fail({"user", "create", "ann"}, "cannot be made");
  fail({"user", "create", "../ann"}, "cannot be made");
  fail({"user", "set", "cay", "parts"}, "there are: ann, bea");
  fail({"user", "remove", "cay"}, "there are: ann, bea");
  succeed({"user", "remove", "ann"});
  EXPECT_EQ(succeed({"user", "list"}).find("ann"), std::string::npos);
}

TEST_F(ProgramUser, AConfigurationTellsWhereEverythingLives) {
  place.write("app.cfg", "Basic.DocumentsPath.Use = NO\nBasic.Users.Path = \"people/\"\n");
  EXPECT_EQ(succeed({"config", "app.cfg"}),
            "projects       projects/\nplatforms      platforms/\naugmentations  augments/\n"
            "users          people/\n");
  fail({"config", "absent.cfg"}, "is no file");
}

}  // namespace
