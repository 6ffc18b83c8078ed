#include <gmock/gmock.h>

#include <filesystem>

#include <opencv2/imgcodecs.hpp>

#include "ProgramRunner.h"
#include "support/Pictures.h"

using testing::HasSubstr;
using testing::Not;

namespace {

class ProgramStats : public ProgramTest {
 protected:
  /// Pictures of 128 by 64 pixels: a screw of 32 by 32 and a nut of 64 by 16 on the first one.
  void SetUp() override {
    makeProject();
    mark("Rect", "0.25,0.25", "0.5,0.75", "screw");
    mark("Rect", "0.25,0.5", "0.75,0.75", "nut");
  }

  void mark(const std::string& form, const std::string& a, const std::string& b,
            const std::string& name) const {
    succeed({"mark", "parts", "a.png", form, a, b, "--class", name});
  }
};

TEST_F(ProgramStats, ADescriptionTellsOfNamesAndPlaces) {
  for (const std::string part : {"train", "val"}) {
    place.makeDirectory("set/images/" + part);
    writePicture(place / "set/images/" + part + "/a.png", 64, 32);
    place.write("set/labels/" + part + "/a.txt", "1 0.5 0.5 0.5 0.5\n");
  }
  place.write("set/data.yaml", "train: images/train\nval: images/val\nnames: [bolt, nut]\n");
  const auto out = succeed({"stats", "set"});
  EXPECT_THAT(out, HasSubstr("\n       2           0              0      2              0\n"));
  // The root of 32 by 16 pixels is 22.6.
  EXPECT_THAT(out, HasSubstr("    2         2           22.6         22.6          22.6  nut\n"));
  place.write("set/data.yaml", "val: images/val\nnames: [bolt, nut]\n");
  fail({"stats", "set"}, "data.yaml' names no pictures that are there (train)");
}

TEST_F(ProgramStats, NamesStandForTheNumbersThatADescriptionGivesThem) {
  place.makeDirectory("set/images");
  writePicture(place / "set/images/a.png", 64, 32);
  place.write("set/labels/a.txt",
              "2 0.5 0.5 0.5 0.5\n2 0.5 0.5 0.25 0.25\n1 0.5 0.5 0.5 0.5\n0 0.5 0.5 0.5 0.5\n");
  // A number that would not do as a place, either.
  place.write("set/data.yaml",
              "train: images\nval: images\nnames: {0: bolt, 2: nut, 2000000000: washer}\n");
  const auto out = succeed({"stats", "set"});
  EXPECT_THAT(out, HasSubstr("\n       1           0              0      4              1\n"));
  // The root of 32 by 16 pixels is 22.6, that of 16 by 8 is 11.3.
  EXPECT_THAT(out,
              HasSubstr("    1         1           22.6         22.6          22.6  bolt\n"
                        "    2         1           11.3         17.0          22.6  nut\n"
                        "    0         0            0.0          0.0           0.0  washer\n"));
}

TEST_F(ProgramStats, ADescriptionMayHaveItsNameInCapitals) {
  place.makeDirectory("set/images");
  writePicture(place / "set/images/a.png", 64, 32);
  place.write("set/labels/a.txt", "1 0.5 0.5 0.5 0.5\n");
  place.write("set/DATA.YAML", "train: images\nval: images\nnames: [bolt, nut]\n");
  for (const char* subject : {"set", "set/DATA.YAML"})
    EXPECT_THAT(succeed({"stats", subject}),
                HasSubstr("    1         1           22.6         22.6          22.6  nut\n"));
}

}  // namespace

TEST_F(ProgramStats, AProjectIsCounted) {
  mark("Rect", "0.5,0.25", "0.625,0.5", "screw");
  EXPECT_EQ(succeed({"stats", "parts"}),
            "pictures  unreadable  without boxes  boxes  without class\n"
            "       2           0              1      3              0\n"
            "\n"
            "boxes  pictures  smallest side  median side  largest side  class\n"
            "    2         1           16.0         24.0          32.0  screw\n"
            "    1         1           32.0         32.0          32.0  nut\n");
}

TEST_F(ProgramStats, ATrainingSetIsCountedByItsLabels) {
  succeed({"generate", "parts", "--output", "set"});
  fail({"stats", "set", "--report", "set/samples/img_0.jpg"}, "lies in the training set");
  EXPECT_FALSE(cv::imread(place / "set/samples/img_0.jpg").empty());
  // The labels of a rectangle take both of its ends in: 33 by 33, 65 by 17 pixels.
  EXPECT_THAT(succeed({"stats", "set"}),
              HasSubstr("    1         1           33.0         33.0          33.0  screw\n"
                        "    1         1           33.2         33.2          33.2  nut\n"));
}

TEST_F(ProgramStats, PicturesThatCannotBeReadAreToldAndTheirBoxesLeftOut) {
  place.write("photos/a.png", "trash");
  EXPECT_THAT(succeed({"stats", "parts"}),
              HasSubstr("       2           1              1      0              0\n"));
}

TEST_F(ProgramStats, OfARecordThatCannotBeReadTheFileIsNamed) {
  const auto record = recordOf("day1", "b.png");
  std::filesystem::remove(record);
  const auto result = run({"stats", "parts", "--json"});
  EXPECT_THAT(result.out, HasSubstr("\"unreadablePictures\" : \n  [\n    \"" + record + "\"\n"));
  EXPECT_THAT(result.err, HasSubstr("cannot be read, its boxes do not count: " + record));
}

TEST_F(ProgramStats, AReportIsOnePageWithPlots) {
  succeed({"class", "add", "parts", "<clip>"});
  EXPECT_THAT(succeed({"stats", "parts", "--report", "stats.html"}),
              HasSubstr("wrote stats.html\n"));
  const auto page = readFile(place / "stats.html");
  EXPECT_THAT(page, HasSubstr("<title>Project parts</title>"));
  EXPECT_THAT(page, HasSubstr("<td>128 × 64</td><td>2</td>"));
  EXPECT_THAT(page, HasSubstr("&lt;clip&gt;"));
  EXPECT_THAT(page, Not(HasSubstr("<clip>")));
  // Three plots for each of the two classes that have boxes.
  EXPECT_EQ(occurrences(page, "<svg "), 6U);
  EXPECT_EQ(occurrences(page, "http"), 1U) << "the policy's http-equiv and no address";
  // All columns of the totals are numbers.
  EXPECT_THAT(page, HasSubstr("<table class=\"totals\">"));
  EXPECT_THAT(page, HasSubstr(".totals th:first-child, .totals td:first-child "
                              "{ text-align: right; }"));
  EXPECT_TRUE(page.ends_with("</html>\n"));
}

TEST_F(ProgramStats, AReportHurtsNoFileOfTheProject) {
  const auto settings = readFile(place / "projects/parts/parts.cfg");
  fail({"stats", "parts", "--report", "projects/parts/parts.cfg"}, "parts.cfg");
  fail({"stats", "parts", "--report", "photos/a.png"}, "a.png");
  EXPECT_EQ(readFile(place / "projects/parts/parts.cfg"), settings);
  EXPECT_FALSE(cv::imread(place / "photos/a.png").empty());
  succeed({"stats", "parts", "--report", "new.html", "--dry-run"});
  EXPECT_FALSE(std::filesystem::exists(place / "new.html"));
}

TEST_F(ProgramStats, JsonHasNumbersAsNumbers) {
  const auto out = succeed({"stats", "parts", "--json"});
  EXPECT_THAT(out, HasSubstr("\"medianSide\" : 32.0"));
  EXPECT_THAT(out, HasSubstr("\"withoutBoxes\" : 1"));
}

TEST_F(ProgramStats, WhatIsNeitherProjectNorSetIsAnError) {
  fail({"stats", "absent"}, "neither a project in");
  fail({"stats", "photos/a.png/x"}, "neither a project in");
  succeed({"stats", "parts", "--report", "page.html"});
  place.write("notes.txt", "a = b\n");
  for (const std::string command : {"stats", "verify"})
    for (const std::string file : {"page.html", "notes.txt", "photos/a.png"})
      fail({command, file}, "'" + file +
                                "' describes no training set; give the directory of the set, its "
                                "data file or its data.yaml");
}

TEST_F(ProgramStats, UnreadablePicturesAndBadLinesAreNamedAndCounted) {
  place.write("photos/a.png", "trash");
  const auto result = run({"stats", "parts"});
  EXPECT_THAT(
      result.err,
      HasSubstr("cannot be read, its boxes do not count: " + (place / "photos/a.png") + "\n"));
  place.write("set/images/b.txt", "0 0.5 0.5 0.5 0.5\nno label\n\n1 2\n");
  std::filesystem::copy_file(place / "photos/b.png", place / "set/images/b.png");
  place.write("set/classes.txt", "nut\n");
  EXPECT_THAT(succeed({"stats", "set"}), HasSubstr("\n2 lines of label texts left out"));
  EXPECT_THAT(succeed({"stats", "set", "--json"}), HasSubstr("\"badLines\" : 2"));
}

TEST_F(ProgramStats, ASetWhoseListsAreMissingIsNoEmptySet) {
  succeed({"generate", "parts", "--output", "set"});
  std::filesystem::remove(place / "set/train.txt");
  fail({"stats", "set"}, "set/train.txt' of the set is missing or cannot be read");
  place.write("set/parts.data", "classes = 2\n");
  fail({"stats", "set"}, "names no pictures that are there");
}

TEST_F(ProgramStats, AReportReplacesNothingButAReport) {
  place.write("mine.html", "<!DOCTYPE html>\n<html lang=\"en\">\nmine");
  for (const Words& more : {Words{}, Words{"--dry-run"}}) {
    Words call{"stats", "parts", "--report", "mine.html"};
    call.insert(call.end(), more.begin(), more.end());
    fail(call, "is no report of ours");
  }
  EXPECT_TRUE(readFile(place / "mine.html").ends_with("mine"));
  succeed({"stats", "parts", "--report", "page.html"});
  EXPECT_THAT(succeed({"stats", "parts", "--report", "page.html", "--dry-run"}),
              HasSubstr("would replace page.html"));
  succeed({"stats", "parts", "--report", "page.html"});
}
