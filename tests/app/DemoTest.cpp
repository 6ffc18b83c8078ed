#include <filesystem>
#include <fstream>
#include <opencv2/imgcodecs.hpp>

#include "ProgramRunner.h"
#include "support/Pictures.h"

namespace fs = std::filesystem;

namespace {

class ProgramDemo : public ProgramTest {};

std::vector<std::string> linesOf(const std::string& file) {
  std::ifstream stream(file);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

TEST_F(ProgramDemo, EndsWithAConsistentSet) {
  const auto out = succeed({"demo", "demo"});
  auto samples = linesOf(place / "demo/set/train.txt");
  const auto test = linesOf(place / "demo/set/test.txt");
  // Five samples of each of 24 pictures, a twentieth of them for the test: those of one picture.
  EXPECT_EQ(test.size(), 5U);
  samples.insert(samples.end(), test.begin(), test.end());
  EXPECT_EQ(samples.size(), 120U);
  std::size_t boxes = 0;
  for (const auto& sample : samples) {
    ASSERT_TRUE(fs::exists(sample)) << sample;
    const auto labels = linesOf(fs::path(sample).replace_extension(".txt").string());
    EXPECT_FALSE(labels.empty()) << sample;
    for (const auto& line : labels) {
      int number = -1;
      double x = 0, y = 0, width = 0, height = 0;
      ASSERT_EQ(std::sscanf(line.c_str(), "%d %lf %lf %lf %lf", &number, &x, &y, &width, &height),
                5);
      EXPECT_TRUE(number >= 0 && number < 3) << line;
      EXPECT_TRUE(width > 0 && x - width / 2 > -1e-5 && x + width / 2 < 1 + 1e-5) << line;
      EXPECT_TRUE(height > 0 && y - height / 2 > -1e-5 && y + height / 2 < 1 + 1e-5) << line;
      ++boxes;
    }
  }
  EXPECT_NE(out.find("  " + std::to_string(boxes) + "\n\n24 pictures gave 120 samples"),
            std::string::npos)
      << out;
  EXPECT_EQ(cv::imread(place / "demo/rendered.png").size(), cv::Size(640, 480));
}

TEST_F(ProgramDemo, AnEarlierDemoIsReplacedAndGivesTheSame) {
  succeed({"demo", "demo"});
  const auto picture = readFile(place / "demo/pictures/parts_07.jpg");
  const auto list = readFile(place / "demo/set/test.txt");
  succeed({"demo", "demo"});
  EXPECT_EQ(readFile(place / "demo/pictures/parts_07.jpg"), picture);
  EXPECT_EQ(readFile(place / "demo/set/test.txt"), list);
}

TEST_F(ProgramDemo, TakesTheUsersPictures) {
  place.makeDirectory("photos");
  writePicture(place / "photos/a.png", 100, 80);
  writePicture(place / "photos/b.png", 100, 80);
  const auto out = succeed({"demo", "demo", "--pictures", "photos"});
  EXPECT_NE(out.find("picture      2            10\n"), std::string::npos) << out;
  EXPECT_FALSE(fs::exists(place / "demo/pictures"));
}

TEST_F(ProgramDemo, RefusesADirectoryWithFilesOfTheUser) {
  place.write("demo/precious.txt", "mine");
  fail({"demo", "demo"}, "no earlier demo");
  EXPECT_EQ(readFile(place / "demo/precious.txt"), "mine");
  place.write("file", "");
  fail({"demo", "file"}, "cannot be made a directory");
  fail({"demo", "a demo"}, "white space");
}

TEST_F(ProgramDemo, ReplacesOneThatWasKilledWhileItWroteTheSet) {
  succeed({"demo", "demo"});
  place.write("demo/.set.lock", "");
  succeed({"demo", "demo"});
  EXPECT_FALSE(fs::exists(place / "demo/.set.lock"));
}

TEST_F(ProgramDemo, RefusesPicturesThatItWouldClear) {
  succeed({"demo", "demo"});
  fail({"demo", "demo", "--pictures", "demo/pictures"}, "which is cleared");
  EXPECT_TRUE(fs::exists(place / "demo/pictures/parts_01.jpg"));
}

}  // namespace
