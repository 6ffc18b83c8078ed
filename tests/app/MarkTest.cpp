#include <filesystem>
#include <sstream>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "ProgramRunner.h"
#include "support/Pictures.h"

namespace {

class ProgramMark : public ProgramTest {
 protected:
  void SetUp() override { makeProject(); }

  bool hasMarks(const std::string& count) const {
    return succeed({"list", "parts"}).find("total: 2 pictures, " + count) != std::string::npos;
  }
};

TEST_F(ProgramMark, PicturesAreFoundByPathAndByFileName) {
  succeed({"mark", "parts", "a.png", "Image", "0.5,0.5", "--class", "nut"});
  succeed({"mark", "parts", "photos/a.png", "Image", "0.5,0.5", "--class", "nut"});
  succeed({"mark", "parts", place / "photos/a.png", "Image", "0.5,0.5", "--class", "nut"});
  EXPECT_TRUE(hasMarks("3 marks"));
}

TEST_F(ProgramMark, RefusesWhatWillNotDoAndSavesNothing) {
  struct Row {
    std::vector<std::string> arguments;
    std::string message;
    int exitCode;
  };
  const std::vector<Row> rows{
      {{"c.png", "Rect", "0,0", "1,1", "--class", "nut"}, "no picture 'c.png'", 1},
      {{"a.png", "rect", "0,0", "1,1", "--class", "nut"},
       "choose from: Circle, Circle Multiple",
       2},
      {{"a.png", "Rect", "0,0", "1,1", "--class", "bolt"}, "choose from: screw, nut", 1},
      {{"a.png", "Rect", "0,0", "--class", "nut"}, "takes 2 points, not 1", 2},
      {{"a.png", "Rect", "0,0", "1,1", "0,1", "--class", "nut"}, "takes 2 points, not 3", 2},
      {{"a.png", "Rect", "0,0", "1.1,1", "--class", "nut"}, "point 1.1,1 lies outside", 2},
      {{"a.png", "Rect", "0,0", "1,nan", "--class", "nut"}, "'1,nan' is no point", 2},
      {{"a.png", "Rect", "0,0", "inf,1", "--class", "nut"}, "'inf,1' is no point", 2},
      {{"a.png", "Rect", "0,0", "1;1", "--class", "nut"}, "'1;1' is no point", 2},
      {{"a.png", "Rect", "0,0", "129,64", "--class", "nut", "--pixels"}, "128x64 pixels", 1},
      {{"a.png", "Rect", "0,0", "0,1", "--class", "nut"}, "the points enclose no area", 2},
      {{"a.png", "Rect", "0,0", "0.0078,1", "--class", "nut"}, "enclose less than a pixel", 1},
      {{"a.png", "Rect", "1,1", "1.9,9", "--class", "nut", "--pixels"},
       "enclose less than a pixel",
       2},
      {{"a.png", "Circle", "Multiple", "0,0", "1,1", "0,1", "--class", "nut"},
       "has two words; write it in quotes: \"Circle Multiple\"",
       2},
      {{"a.png", "Rect", "Multiple", "0,0", "--class", "nut"}, "'Multiple' is no point", 2}};
  for (auto [arguments, message, exitCode] : rows) {
    arguments.insert(arguments.begin(), {"mark", "parts"});
    fail(arguments, message, exitCode);
  }
  EXPECT_TRUE(hasMarks("0 marks"));
}

TEST_F(ProgramMark, WantsEitherOneMarkOrAList) {
  fail({"mark", "parts"}, "or --list FILE", 2);
  fail({"mark", "parts", "a.png", "Rect", "0,0", "1,1"}, "--class NAME", 2);
  fail({"mark", "parts", "a.png", "--list", "x"}, "of its own", 2);
  fail({"mark", "parts", "a.png", "Rect", "0,0", "1,1", "--class", "nut", "--list", ""}, "--list",
       2);
  fail({"mark", "parts", "--list", ""}, "--list", 2);
}

TEST_F(ProgramMark, AFileNameInTwoSetsIsAnErrorWithTheCandidates) {
  place.makeDirectory("more");
  writePicture(place / "more/a.png", 8, 8);
  succeed({"import", "parts", "day2", "more"});
  fail({"mark", "parts", "a.png", "Image", "0.5,0.5", "--class", "nut"},
       place / "photos/a.png" + " (set day1), " + place / "more/a.png" + " (set day2)");
  succeed({"mark", "parts", "more/a.png", "Image", "0.5,0.5", "--class", "nut"});
}

TEST_F(ProgramMark, AnUnreadablePictureIsAnError) {
  place.write("photos/a.png", "no picture");
  fail({"mark", "parts", "a.png", "Image", "0.5,0.5", "--class", "nut"}, "a.png' cannot be read");
  std::filesystem::remove(place / "photos/b.png");
  fail({"mark", "parts", "b.png", "Image", "0.5,0.5", "--class", "nut"}, "b.png' cannot be read");
}

TEST_F(ProgramMark, AListMarksManyPictures) {
  place.write("marks.txt",
              "# picture\tform\tclass\tpoints\r\n"
              "b.png\tRect\tnut\t0,0 0.5,0.5\r\n"
              "\n"
              "a.png\tImage\tscrew\t0.5,0.5\n"
              "b.png\tRect Center\tnut\t0.5,0.5  0.75,0.75");
  EXPECT_EQ(succeed({"mark", "parts", "--list", "marks.txt"}), "3 marks added on 2 pictures\n");
  const auto list = succeed({"list", "parts"});
  EXPECT_NE(list.find("    1  " + place / "photos/a.png"), std::string::npos) << list;
  EXPECT_NE(list.find("    2  " + place / "photos/b.png"), std::string::npos) << list;
}

TEST_F(ProgramMark, ABadLineIsNamedAndNothingIsSaved) {
  const std::string good = "a.png\tRect\tnut\t0,0 0.5,0.5\n";
  struct Row {
    std::string line;
    std::string message;
  };
  const std::vector<Row> rows{
      {"a.png\tRect\tnut", "marks.txt:3: expected 4 fields"},
      {"a.png\tRect\tnut\t0,0 x,1", "marks.txt:3: 'x,1' is no point"},
      {"a.png\tRect\tnut\t0,0", "marks.txt:3: form 'Rect' takes 2 points, not 1"},
      {"a.png\tRect\tnut\t0,0 1,2", "marks.txt:3: point 1,2 lies outside"},
      {"a.png\tRect\tnut\t0.1,0.2 0.1,0.4", "marks.txt:3: the points enclose no area"},
      {"z.png\tRect\tnut\t0,0 1,1", "marks.txt:3: the project has no picture 'z.png'"},
      {"a.png\tBlob\tnut\t0,0 1,1", "marks.txt:3: there is no form 'Blob'"},
      {"a.png\tRect\tbolt\t0,0 1,1", "marks.txt:3: there is no class 'bolt'"}};
  for (const auto& [line, message] : rows) {
    place.write("marks.txt", good + "# a comment counts as a line\n" + line + "\n" + good);
    fail({"mark", "parts", "--list", "marks.txt"}, message);
  }
  EXPECT_TRUE(hasMarks("0 marks"));
  fail({"mark", "parts", "--list", "absent.txt"}, "the list 'absent.txt' cannot be read");
  fail({"mark", "parts", "--list", "photos"}, "the list 'photos' cannot be read");
}

TEST_F(ProgramMark, AListThatEndsBeforeItsTimeMarksNothing) {
  const std::string good = "a.png\tRect\tnut\t0,0 0.5,0.5\n";
  place.write("marks.txt", good + "#" + std::string((1 << 20) - 1, 'x') + "\n");
  EXPECT_EQ(succeed({"mark", "parts", "--list", "marks.txt"}), "1 mark added on 1 picture\n");
  place.write("marks.txt", good + "#" + std::string(1 << 20, 'x') + "\n" + good);
  fail({"mark", "parts", "--list", "marks.txt"},
       "the list 'marks.txt' cannot be read to its end; see line 2");
  EXPECT_TRUE(hasMarks("1 mark"));
  // Opens, and fails at the first read.
  fail({"mark", "parts", "--list", "/proc/self/mem"}, "cannot be read to its end");
}

TEST_F(ProgramMark, ADamagedRecordIsNamedByWhoeverNeedsIt) {
  const auto recordOf = [&](const std::string& picture) {
    std::string record;
    for (const auto& entry : std::filesystem::directory_iterator(place / "projects/parts/is_day1"))
      if (readFile(entry.path()).find("photos/" + picture) != std::string::npos)
        record = entry.path();
    return record;
  };
  const auto first = recordOf("a.png");
  const auto second = recordOf("b.png");
  std::filesystem::resize_file(second, 50);
  succeed({"magnify", "parts", "a.png", "--at", "0.5,0.5", "-o", "spot.png"});
  const std::string reason =
      "no picture 'b.png' among those that can be read; it may be in record 2 of set 'day1': No "
      "whole XML file: " +
      second;
  fail({"--quiet", "mark", "parts", "b.png", "Point", "0.5,0.5", "--class", "nut"}, reason);
  fail({"--quiet", "crop", "parts", "b.png", "-o", "cut"}, reason);
  fail({"--quiet", "magnify", "parts", "b.png", "--at", "0.5,0.5", "-o", "x.png"}, reason);
  std::filesystem::remove(second);
  fail({"--quiet", "crop", "parts", "b.png", "-o", "cut"},
       "the file of record 2 of set 'day1' is missing: " + second);
  std::filesystem::resize_file(first, 50);
  fail({"--quiet", "mark", "parts", "b.png", "Point", "0.5,0.5", "--class", "nut"}, first);
  EXPECT_EQ(readFile(first).size(), 50U);
}

TEST_F(ProgramMark, AListWithoutMarksIsTold) {
  place.write("marks.txt", "# none yet\n\n");
  fail({"mark", "parts", "--list", "marks.txt"}, "'marks.txt' holds no marks; write a mark a line");
}

}  // namespace

namespace {

class ProgramForms : public ProgramMark {
 protected:
  /// The label of picture a.png in pixels of its 128 by 64: centre x, y, width, height.
  cv::Vec4d labelOfGeneratedSet() const {
    succeed({"generate", "parts", "--output", "set"});
    std::istringstream label(readFile(place / "set/samples/img_0.txt"));
    int number = -1;
    cv::Vec4d box;
    label >> number >> box[0] >> box[1] >> box[2] >> box[3];
    EXPECT_FALSE(label.fail());
    return box.mul(cv::Vec4d(128, 64, 128, 64));
  }
};

TEST_F(ProgramForms, AllElevenAreMadeAndComeBack) {
  struct Row {
    std::string form;
    std::string points;
    // Centre and size of the label in pixels, by hand.
    cv::Vec4d box;
    double tolerance;
  };
  // Points at 0, 72, 144, 216 and 288 degrees of a circle of 16 pixels around 64, 32.
  const std::string five =
      "80,32 68.944272,47.216904 51.055728,41.404564 51.055728,22.595436 "
      "68.944272,16.783096";
  const std::vector<Row> rows{
      {"Rect", "32,16 96,48", {64, 32, 64, 32}, 1},
      {"Rect Center", "64,32 96,48", {64, 32, 64, 32}, 1},
      {"Point", "50,20", {50, 20, 0, 0}, 1},
      {"Image", "1,1", {64, 32, 115.2, 57.6}, 1},
      {"Circle", "64,32 64,48", {64, 32, 32, 32}, 1},
      {"Circle Multiple", five, {64, 32, 32, 32}, 1},
      {"Line", "32,16 96,48", {64, 32, 65, 33}, 1},
      {"PolyLine", "32,16 96,48 40,40", {64, 32, 65, 33}, 1},
      {"PolyLine Closed", "32,16 96,48 40,40", {64, 32, 65, 33}, 1},
      {"Ellipse", "64,32 96,32 64,48", {64, 32, 65, 33}, 1},
      // The vote for the size counts in steps of two pixels and lies one off.
      {"Ellipse Multiple", five, {64, 32, 34, 34}, 3}};
  for (const auto& [form, points, box, tolerance] : rows) {
    place.write("marks.txt", "a.png\t" + form + "\tnut\t" + points + "\n");
    succeed({"mark", "parts", "--list", "marks.txt", "--pixels"});
    const auto label = labelOfGeneratedSet();
    EXPECT_LE(cv::norm(label, box, cv::NORM_INF), tolerance) << form << " " << label;
    std::filesystem::remove_all(place / "projects");
    succeed({"create", "parts"});
    succeed({"class", "add", "parts", "screw", "nut"});
    succeed({"import", "parts", "day1", "photos"});
  }
}

TEST_F(ProgramForms, RefusesPointsWithoutExtent) {
  struct Row {
    std::string form;
    std::string points;
    std::string message;
  };
  const std::vector<Row> rows{
      {"Circle", "0.5,0.5 0.5,0.5", "all lie at one place"},
      {"Line", "0.5,0.5 0.5,0.5", "all lie at one place"},
      {"PolyLine", "0.5,0.5 0.5,0.5 0.5,0.5", "all lie at one place"},
      {"Ellipse", "0.5,0.5 0.7,0.5 0.5,0.5", "the ellipse has an axis of no length"},
      // On 128 by 64 pixels.
      {"Circle", "0.5,0.5 0.5,0.515", "all lie within a pixel"},
      {"Line", "0.5,0.5 0.507,0.5", "all lie within a pixel"},
      {"PolyLine Closed", "0.5,0.5 0.5,0.5001 0.5001,0.5", "all lie within a pixel"},
      {"Ellipse", "0.5,0.5 0.7,0.5 0.5,0.515", "an axis shorter than a pixel"},
      {"Rect", "0.5,0.5 0.9,0.515", "enclose less than a pixel"},
      {"Rect", "0.5,0.5 0.507,0.9", "enclose less than a pixel"},
      {"Rect Center", "0.5,0.5 0.9,0.507", "enclose less than a pixel"},
      {"Ellipse Multiple", "0.5,0.5 0.5,0.5 0.5,0.5 0.5,0.5 0.6,0.5", "fits these points"},
      {"Circle Multiple", "0.1,0.1 0.2,0.2 0.3,0.3", "fits these points"},
      {"Circle Multiple", "0.1,0.1 0.2,0.2", "takes 3 to 99 points, not 2"}};
  for (const auto& [form, points, message] : rows) {
    place.write("marks.txt", "a.png\t" + form + "\tnut\t" + points + "\n");
    fail({"mark", "parts", "--list", "marks.txt"}, message);
  }
  EXPECT_TRUE(hasMarks("0 marks"));
}

TEST_F(ProgramForms, TakesMarksOfOnePixel) {
  place.write("marks.txt",
              "a.png\tRect\tnut\t10,10 11,11\n"
              "a.png\tRect Center\tnut\t10.5,10.5 11,11\n"
              "a.png\tLine\tnut\t33,7 34,7\n"
              "a.png\tCircle\tnut\t77,30 77,31\n"
              "a.png\tEllipse\tnut\t77,30 78,30 77,31\n");
  succeed({"mark", "parts", "--list", "marks.txt", "--pixels"});
  EXPECT_TRUE(hasMarks("5 marks"));
}

TEST_F(ProgramForms, TheAssistSnapsToTheObject) {
  cv::Mat picture = cv::Mat::zeros(64, 128, CV_8UC3);
  cv::randu(picture, cv::Scalar::all(20), cv::Scalar::all(70));
  cv::circle(picture, {64, 32}, 16, {40, 90, 220}, cv::FILLED, cv::LINE_AA);
  cv::imwrite(place / "photos/a.png", picture);
  // Four pixels too far on all sides.
  place.write("marks.txt", "a.png\tRect\tnut\t44,12 84,52\n");
  EXPECT_EQ(succeed({"mark", "parts", "--list", "marks.txt", "--pixels", "--assist"}),
            "1 mark added on 1 picture\n");
  const auto label = labelOfGeneratedSet();
  // The box was 8 pixels too large; what is sure to be object may be a little small.
  EXPECT_LE(cv::norm(label, cv::Vec4d(64, 32, 33, 33), cv::NORM_INF), 5) << label;
}

TEST_F(ProgramForms, AnAssistThatFindsNothingLeavesTheMarkAndSaysSo) {
  const auto result =
      run({"mark", "parts", "a.png", "Point", "0.5,0.5", "--class", "nut", "--assist"});
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_NE(result.err.find("the mark is as it was given"), std::string::npos) << result.err;
  EXPECT_TRUE(hasMarks("1 mark"));
}

}  // namespace
