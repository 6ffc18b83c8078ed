#include <gmock/gmock.h>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <opencv2/imgcodecs.hpp>
#include <set>
#include <sstream>

#include <sys/stat.h>

#include "GalleryReport.h"
#include "GalleryStatistics.h"
#include "HtmlPage.h"
#include "ProgramRunner.h"
#include "support/Pictures.h"

namespace fs = std::filesystem;

using namespace std::string_literals;

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

using Boxes = std::vector<cv::Rect2d>;

constexpr auto nan = std::numeric_limits<double>::quiet_NaN();
constexpr auto infinite = std::numeric_limits<double>::infinity();

TEST(GalleryStatistics, TheMedianIsTheMiddleOrTheMeanOfTheMiddleTwo) {
  EXPECT_EQ(median({3}), 3);
  EXPECT_EQ(median({5, 1, 3}), 3);
  EXPECT_EQ(median({9, 1, 2, 4}), 3);
  EXPECT_EQ(median({}), 0);
}

TEST(GalleryStatistics, ScoresAreDistancesInDeviationsOfSizeAndShape) {
  // Squares of e^0, e^1, e^2, e^3, e^7: the logarithms of the areas are 0, 2, 4, 6, 14, with the
  // median 4 and the distances 4, 2, 0, 2, 10 of which the median is 2. All shapes are alike.
  Boxes boxes;
  for (const int exponent : {0, 1, 2, 3, 7})
    boxes.emplace_back(0, 0, std::exp(exponent), std::exp(exponent));
  const auto scores = outlierScores(boxes);
  const std::vector<double> expected{2, 1, 0, 1, 5};
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_NEAR(scores[i], expected[i], 1e-9) << i;
  EXPECT_THAT(outliersFirst(scores), ElementsAre(4U, 0U, 1U, 3U, 2U));
}

TEST(GalleryStatistics, SizeAndShapeAddUpAsLegsOfATriangle) {
  // Logarithms of area: 0, 2, -2, 6, 0; of aspect: 0, 1, -1, 4, 0. Both medians are 0, the
  // deviations 2 and 1, and the fourth box is 3 and 4 of them off.
  const auto box = [](double area, double aspect) {
    return cv::Rect2d(5, 7, std::exp((area + aspect) / 2), std::exp((area - aspect) / 2));
  };
  const auto scores = outlierScores(Boxes{box(0, 0), box(2, 1), box(-2, -1), box(6, 4), box(0, 0)});
  EXPECT_NEAR(scores[3], 5, 1e-9);
  EXPECT_NEAR(scores[1], std::sqrt(2.0), 1e-9);
}

TEST(GalleryStatistics, AHairsBreadthIsNoOutlierWhereAllAreAlike) {
  const auto scores = outlierScores(
      Boxes{{0, 0, 8, 8}, {0, 0, 8, 8}, {0, 0, 8, 8}, {0, 0, 8 * std::exp(0.005), 8}});
  EXPECT_EQ(scores[0], 0);
  // Half of one per cent in size and in shape, of one that counts as a deviation.
  EXPECT_NEAR(scores[3], std::sqrt(0.5), 1e-9);
}

TEST(GalleryStatistics, BoxesWithoutAreaComeFirstAndDoNotDisturbTheOthers) {
  const auto scores = outlierScores(Boxes{{0, 0, 8, 8},
                                          {0, 0, 0, 5},
                                          {0, 0, nan, 5},
                                          {0, 0, 8, 8},
                                          {0, 0, 5, -1},
                                          {0, 0, infinite, 5}});
  EXPECT_THAT(scores, ElementsAre(0, infinite, infinite, 0, infinite, infinite));
  EXPECT_THAT(outliersFirst(scores), ElementsAre(1U, 2U, 4U, 5U, 0U, 3U));
  EXPECT_THAT(outlierScores(Boxes{}), ElementsAre());
}

TEST(GalleryStatistics, HugeBoxesHaveFiniteScores) {
  for (const auto score : outlierScores(Boxes{{0, 0, 1e300, 1e300}, {0, 0, 1e-300, 1e300}}))
    EXPECT_TRUE(std::isfinite(score));
}

TEST(GalleryStatistics, TinyIsBelowTenPixelsOnASide) {
  EXPECT_FALSE(isTiny({0, 0, 10, 10}));
  EXPECT_TRUE(isTiny({0, 0, 9.99, 100}));
  EXPECT_TRUE(isTiny({0, 0, 100, 9.99}));
  EXPECT_TRUE(isTiny({0, 0, nan, 100}));
}

TEST(GalleryStatistics, OutsideIsWhatSharesNothingWithThePicture) {
  const cv::Size picture(100, 50);
  for (const auto& box : Boxes{{-10, 10, 10.5, 5},
                               {99.5, 10, 5, 5},
                               {10, -5, 5, 5.5},
                               {10, 49, 5, 5},
                               {-10, -10, 500, 500},
                               {0, 0, 0, 0},
                               {100, 50, 0, 0}})
    EXPECT_FALSE(isOutside(box, picture)) << box;
  for (const auto& box : Boxes{{-10, 10, 10, 5},
                               {100, 10, 5, 5},
                               {10, -5, 5, 5},
                               {10, 50, 5, 5},
                               {101, 20, 0, 0},
                               {10, nan, 5, 5},
                               {10, 10, nan, 5}})
    EXPECT_TRUE(isOutside(box, picture)) << box;
}

TEST(GalleryStatistics, IntersectionOverUnionOfKnownBoxes) {
  // 5 by 10 of 150.
  EXPECT_NEAR(intersectionOverUnion({0, 0, 10, 10}, {5, 0, 10, 10}), 50.0 / 150, 1e-12);
  EXPECT_NEAR(intersectionOverUnion({0, 0, 10, 10}, {0, 0, 10, 9}), 0.9, 1e-12);
  EXPECT_EQ(intersectionOverUnion({0, 0, 10, 10}, {10, 0, 10, 10}), 0);
  EXPECT_EQ(intersectionOverUnion({3, 4, 0, 0}, {3, 4, 0, 0}), 1);
  EXPECT_EQ(intersectionOverUnion({3, 4, 0, 0}, {0, 0, 10, 10}), 0);
  EXPECT_EQ(intersectionOverUnion({nan, 0, 1, 1}, {nan, 0, 1, 1}), 0);
}

TEST(GalleryStatistics, RepeatsShareMoreThanNineTenths) {
  // Shares of the union: 95 % of the first, 90 % exactly, and another object.
  EXPECT_THAT(findRepeats(Boxes{{0, 0, 100, 100}, {0, 0, 95, 100}}), ElementsAre(Repeat{1, 0}));
  EXPECT_THAT(findRepeats(Boxes{{0, 0, 100, 100}, {0, 0, 90, 100}}), ElementsAre());
  EXPECT_THAT(findRepeats(Boxes{{0, 0, 100, 100}, {300, 0, 100, 100}}), ElementsAre());
  EXPECT_THAT(findRepeats(Boxes{}), ElementsAre());
}

TEST(GalleryStatistics, TheLaterOneRepeatsWhereverItBegins) {
  EXPECT_THAT(findRepeats(Boxes{{2, 0, 100, 100}, {50, 50, 30, 30}, {0, 0, 100, 100}}),
              ElementsAre(Repeat{2, 0}));
}

TEST(GalleryStatistics, ABoxThatBeginsBetweenDoesNotHideARepeat) {
  // By the left edges: the first, the flat one, the repeat.
  EXPECT_THAT(findRepeats(Boxes{{0, 0, 100, 100}, {1, 0, 100, 10}, {2, 0, 100, 100}}),
              ElementsAre(Repeat{2, 0}));
}

TEST(GalleryStatistics, RepeatsAreThoseThatComparingAllPairsFinds) {
  cv::RNG random(5);
  Boxes boxes;
  for (int i = 0; i < 600; ++i)
    boxes.emplace_back(random.uniform(0, 12), random.uniform(0, 12), random.uniform(30, 60),
                       random.uniform(30, 60));
  std::set<std::size_t> wanted;
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j)
      if (intersectionOverUnion(boxes[i], boxes[j]) > repeatOverlap) wanted.insert(i);
  }
  ASSERT_GT(wanted.size(), 100U);
  std::set<std::size_t> found;
  for (const auto& [place, earlier] : findRepeats(boxes)) {
    EXPECT_LT(earlier, place);
    EXPECT_GT(intersectionOverUnion(boxes[place], boxes[earlier]), repeatOverlap);
    found.insert(place);
  }
  EXPECT_EQ(found, wanted);
}

TEST(GalleryStatistics, AHeapOfEqualBoxesRepeatsEachOnce) {
  EXPECT_EQ(findRepeats(Boxes(50'000, cv::Rect2d(1, 2, 30, 40))).size(), 49'999U);
}

TEST(GalleryStatistics, OctavesGrowAroundTheValues) {
  EXPECT_EQ(octavesAround(std::vector<double>{}, {3, 9}, {0, 15}), (Octaves{3, 9}));
  // 5 lies between 4 and 8, 600 between 512 and 1024.
  EXPECT_EQ(octavesAround(std::vector<double>{5, 600}, {3, 9}, {0, 15}), (Octaves{2, 10}));
  EXPECT_EQ(octavesAround(std::vector<double>{8, 512}, {3, 9}, {0, 15}), (Octaves{3, 9}));
  EXPECT_EQ(octavesAround(std::vector<double>{1e-9, 1e300, nan, infinite, -1, 0}, {3, 9}, {0, 15}),
            (Octaves{0, 15}));
}

TEST(GalleryStatistics, BinsAreHalfOctaves) {
  // From 4 to 16: 4 to 5.66, to 8, to 11.3, to 16.
  EXPECT_THAT(logBins(std::vector<double>{4, 5.6, 5.7, 7.9, 8, 12, 15}, {2, 4}),
              ElementsAre(2U, 2U, 1U, 2U));
  EXPECT_THAT(logBins(std::vector<double>{1, 16, 1e300, 0, -3, nan, infinite}, {2, 4}),
              ElementsAre(1U, 0U, 0U, 2U));
}

TEST(GalleryReport, Base64OfKnownTexts) {
  // The vectors of RFC 4648.
  const std::vector<std::pair<std::string, std::string>> rows{{"", ""},
                                                              {"f", "Zg=="},
                                                              {"fo", "Zm8="},
                                                              {"foo", "Zm9v"},
                                                              {"foob", "Zm9vYg=="},
                                                              {"fooba", "Zm9vYmE="},
                                                              {"foobar", "Zm9vYmFy"}};
  for (const auto& [bytes, text] : rows)
    EXPECT_EQ(base64(bytes), text);
  EXPECT_EQ(base64(std::string("\xff\xff\xfe\x00", 4)), "///+AA==");
}

TEST(GalleryReport, TextsAreEscaped) {
  EXPECT_EQ(htmlText("<script>&\"'"), "&lt;script&gt;&amp;&quot;&#39;");
  EXPECT_EQ(htmlText("Größe"), "Größe");
}

GalleryMark markAt(std::size_t number, const cv::Rect2d& box, int cut) {
  return {0, "a.jpg", number, box, {100, 100}, cut};
}

std::string pageOf(const Gallery& gallery) {
  std::ostringstream page;
  writeGalleryPage(page, gallery, [](int cut) {
    return Thumbnail{"jpeg" + std::to_string(cut), {48, 24}};
  });
  return page.str();
}

TEST(GalleryReport, HostileNamesStayText) {
  const std::string hostile = "<script>alert(\"1\")</script>'&";
  Gallery gallery{hostile, 1, 1, 0, {hostile}, {{hostile, {markAt(1, {1, 1, 5, 5}, 0)}}}};
  gallery.classes[0].marks[0].fileName = hostile;
  const auto page = pageOf(gallery);
  EXPECT_THAT(page, Not(HasSubstr("<script")));
  EXPECT_THAT(page, Not(HasSubstr("alert(\"")));
  // Title and heading, a callout with the class, the table, the class itself, the tile with its
  // tooltip, and the list of what cannot be read.
  EXPECT_EQ(occurrences(page, "&lt;script&gt;alert(&quot;1&quot;)&lt;/script&gt;&#39;&amp;"), 9U);
}

TEST(GalleryReport, NeedsNothingBesideIt) {
  const auto page = pageOf({"p", 1, 1, 0, {}, {{"nut (0)", {markAt(1, {1, 1, 50, 50}, 0)}}}});
  for (const auto* text : {"http:", "https:", "<link", "@import", "url(", "<script", "src=\"/"})
    EXPECT_THAT(page, Not(HasSubstr(text)));
  EXPECT_THAT(page, HasSubstr("default-src 'none'"));
  EXPECT_THAT(page, HasSubstr("prefers-color-scheme: dark"));
  EXPECT_THAT(page, HasSubstr("src=\"data:image/jpeg;base64,anBlZzA=\""));
}

TEST(GalleryReport, OutliersComeFirstWithNameNumberAndSize) {
  std::vector<GalleryMark> marks;
  for (std::size_t i = 1; i <= 3; ++i)
    marks.push_back(markAt(i, {20.0 * static_cast<double>(i), 1, 20, 20}, static_cast<int>(i)));
  marks.push_back(markAt(4, {1, 50, 60, 30.4}, 4));
  const auto page = pageOf({"p", 1, 4, 0, {}, {{"nut (0)", marks}}});
  EXPECT_LT(page.find("id=\"c0m3\""), page.find("id=\"c0m0\""));
  EXPECT_LT(page.find("id=\"c0m0\""), page.find("id=\"c0m1\""));
  EXPECT_THAT(page, HasSubstr("#4 · 60 × 30<"));
  EXPECT_EQ(occurrences(page, "class=\"mark unusual\""), 1U);
}

TEST(GalleryReport, CalloutsLinkToTheirTiles) {
  const std::vector<GalleryMark> marks{
      markAt(1, {10, 10, 40, 40}, 0), markAt(2, {10, 10, 40, 41}, 1),
      markAt(3, {200, 10, 40, 40}, 2), markAt(4, {50, 50, 4, 0}, -1)};
  const auto page = pageOf({"p", 1, 4, 0, {}, {{"nut (0)", marks}}});
  EXPECT_THAT(page, HasSubstr("1 mark under 10 pixels on a side"));
  EXPECT_THAT(page, HasSubstr("<a href=\"#c0m3\">a.jpg #4</a> <small>nut (0), 4 × 0</small>"));
  EXPECT_THAT(page, HasSubstr("1 mark wholly outside the picture"));
  EXPECT_THAT(page, HasSubstr("<a href=\"#c0m2\">a.jpg #3</a>"));
  EXPECT_THAT(page, HasSubstr("1 mark repeats another one of the same class"));
  EXPECT_THAT(page, HasSubstr("repeats <a href=\"#c0m0\">#1</a>"));
  EXPECT_EQ(occurrences(page, "no cut"), 1U);
  for (const auto* id : {"c0m0", "c0m1", "c0m2", "c0m3"})
    EXPECT_EQ(occurrences(page, "id=\"" + std::string(id) + "\""), 1U) << id;
}

TEST(GalleryReport, TheSameBoxOnAnotherPictureOrOfAnotherClassIsNoRepeat) {
  auto elsewhere = markAt(1, {10, 10, 40, 40}, 1);
  elsewhere.picture = 1;
  const auto here = markAt(1, {10, 10, 40, 40}, 0);
  const auto page =
      pageOf({"p", 2, 3, 0, {}, {{"nut (0)", {here, elsewhere}}, {"screw (1)", {here}}}});
  EXPECT_THAT(page, HasSubstr("No marks that repeat"));
}

TEST(GalleryReport, TotalsCountMarksWithoutClassAndClassesWithoutMarks) {
  const auto page =
      pageOf({"p", 7, 5, 4, {}, {{"nut (0)", {markAt(1, {1, 1, 50, 50}, 0)}}, {"screw (1)", {}}}});
  EXPECT_THAT(page, HasSubstr("<tr><td>7</td><td>5</td><td>4</td><td>2</td><td>1</td></tr>"));
  EXPECT_THAT(page, HasSubstr("<tr><td>screw (1)</td><td>0</td>"));
}

TEST(GalleryReport, PlotsShowSizesShapesAndPlaces) {
  // A side of 40 lies in the bin 32 to 45.3, a shape of 4, the end of the range, in the last bin,
  // and the centre 0.25, 0.5 at 28, 56 of a box of 112.
  const auto page = pageOf({"p", 1, 1, 0, {}, {{"nut (0)", {markAt(1, {-15, 40, 80, 20}, 0)}}}});
  EXPECT_THAT(page, HasSubstr("<title>32 to 45.3: 1</title>"));
  EXPECT_THAT(page, HasSubstr("<title>2.83 to 4: 1</title>"));
  EXPECT_THAT(page, HasSubstr("d=\"M28 56h0\""));
}

TEST(GalleryReport, SmallCutsAreEnlargedUpToTheTile) {
  // 48 by 24 fill the tile of 96 twice enlarged.
  const auto page = pageOf({"p", 1, 1, 0, {}, {{"nut (0)", {markAt(1, {1, 1, 48, 24}, 0)}}}});
  EXPECT_THAT(page, HasSubstr("width=\"96\" height=\"48\""));
}

TEST(GalleryReport, HostileNumbersAreNoSizes) {
  std::vector<GalleryMark> marks;
  for (const auto value : {nan, infinite, 1e300, -1e300, 0.0})
    marks.push_back(markAt(marks.size() + 1, {value, value, value, value}, -1));
  const auto page = pageOf({"p", 1, 5, 0, {}, {{"nut (0)", marks}}});
  EXPECT_EQ(occurrences(page, "</figcaption></figure>\n"), 8U);
  for (const auto* text : {"nan", "inf\"", "inf "})
    EXPECT_THAT(page, Not(HasSubstr(text)));
}

class ProgramGallery : public ProgramTest {
 protected:
  void SetUp() override { makeProject(); }

  void mark() const {
    succeed({"mark", "parts", "a.png", "Rect", "0.25,0.25", "0.5,0.75", "--class", "nut"});
    succeed({"mark", "parts", "a.png", "Point", "0.5,0.5", "--class", "nut"});
    succeed({"mark", "parts", "b.png", "Rect", "0.5,0.5", "0.5625,0.75", "--class", "screw"});
  }

  std::string report(int exitCode = 0) const {
    const auto result = run({"gallery", "parts", "--report", "marks.html"});
    EXPECT_EQ(result.exitCode, exitCode) << result.err;
    EXPECT_EQ(exitCode == 3, result.out.find("1 picture left out as unreadable") != result.out.npos)
        << result.out;
    return readFile(place / "marks.html");
  }
};

TEST_F(ProgramGallery, PrintsTheCutsOfEachClass) {
  mark();
  EXPECT_EQ(succeed({"gallery", "parts"}),
            "cuts  class\n   1  nut (1)\n   1  screw (0)\n\ntotal: 2 cuts\n");
  EXPECT_TRUE(fs::is_regular_file(place / "projects/parts/validation/0.jpg"));
}

TEST_F(ProgramGallery, TheReportHoldsEachMarkOnce) {
  mark();
  const auto page = report();
  EXPECT_EQ(occurrences(page, "data:image/jpeg;base64,"), 2U);
  EXPECT_EQ(occurrences(page, "no cut"), 1U);
  EXPECT_THAT(page, HasSubstr("#1 · 32 × 32<"));
  EXPECT_THAT(page, HasSubstr("#2 · 0 × 0<"));
  EXPECT_THAT(page, HasSubstr("#1 · 8 × 16<"));
  EXPECT_THAT(page, HasSubstr("<tr><td>2</td><td>3</td><td>0</td><td>2</td><td>0</td></tr>"));
  EXPECT_THAT(page, HasSubstr("2 marks under 10 pixels on a side"));
  EXPECT_FALSE(fs::exists(place / "marks.html.part"));
}

TEST_F(ProgramGallery, ThumbnailsAreTheCutsNoLongerThan96) {
  place.makeDirectory("more");
  cv::imwrite(place / "more/c.png", cv::Mat(300, 400, CV_8UC3, cv::Scalar(20, 120, 220)));
  succeed({"import", "parts", "day2", "more"});
  succeed({"mark", "parts", "c.png", "Rect", "0.25,0.25", "0.75,0.5", "--class", "nut"});
  const auto page = report();
  const std::string before = "base64,";
  const auto begin = page.find(before) + before.size();
  const auto text = page.substr(begin, page.find('"', begin) - begin);
  place.write("cut.base64", text);
  ASSERT_EQ(std::system(("base64 -d " + place / "cut.base64" + " > " + place / "cut.jpg").c_str()),
            0);
  const auto thumbnail = cv::imread(place / "cut.jpg");
  // 200 by 75 pixels, reduced by 96 / 200.
  ASSERT_EQ(thumbnail.size(), cv::Size(96, 36));
  EXPECT_LE(cv::norm(thumbnail, cv::Mat(36, 96, CV_8UC3, cv::Scalar(20, 120, 220)), cv::NORM_INF),
            6);
}

TEST_F(ProgramGallery, HostileNamesStayText) {
  place.makeDirectory("more");
  cv::imwrite(place / "more/<script>.png", patternedPicture(128, 64));
  succeed({"class", "add", "parts", "<script>x</script>"});
  succeed({"import", "parts", "day2", "more"});
  succeed(
      {"mark", "parts", "<script>.png", "Rect", "0,0", "0.5,0.5", "--class", "<script>x</script>"});
  const auto page = report();
  EXPECT_THAT(page, Not(HasSubstr("<script")));
  EXPECT_THAT(page, HasSubstr("&lt;script&gt;.png"));
}

TEST_F(ProgramGallery, APictureThatIsGoneIsTold) {
  mark();
  fs::remove(place / "photos/a.png");
  const auto page = report(3);
  EXPECT_THAT(page, HasSubstr("1 picture with marks cannot be read"));
  EXPECT_THAT(page, HasSubstr("<li>a.png</li>"));
  EXPECT_EQ(occurrences(page, "data:image/jpeg;base64,"), 1U);
}

TEST_F(ProgramGallery, AnEarlierReportIsReplacedAndAPictureIsNot) {
  report();
  mark();
  EXPECT_THAT(report(), HasSubstr("<!DOCTYPE html>"));
  place.write("notes.html", "mine");
  fail({"gallery", "parts", "--report", "notes.html"}, "'notes.html' is no report of ours");
  fail({"gallery", "parts", "--report", "notes.html", "--dry-run"}, "is no report of ours");
  EXPECT_EQ(readFile(place / "notes.html"), "mine");
  const auto picture = readFile(place / "photos/b.png");
  fail({"gallery", "parts", "--report", "photos/b.png"}, "is a picture of the project");
  EXPECT_EQ(readFile(place / "photos/b.png"), picture);
}

TEST_F(ProgramGallery, NoFileOfTheProjectIsWrittenOver) {
  mark();
  succeed({"gallery", "parts"});
  fs::create_symlink("projects/parts/parts.cfg", place / "link.html");
  fs::create_symlink("projects/parts/new.html", place / "dangling.html");
  fs::create_directory_symlink("projects/parts", place / "shortcut");
  const auto before = contents("projects");
  for (const auto* file :
       {"projects/parts/parts.cfg", "projects/parts/day1.xml", "projects/parts/validation/0.jpg",
        "projects/parts/new.html", "photos/../projects/parts/new.html", "link.html",
        "dangling.html", "shortcut/new.html"})
    fail({"gallery", "parts", "--report", file}, "lies in the directory of the project");
  EXPECT_EQ(contents("projects"), before);
}

TEST_F(ProgramGallery, WhatIsNoFileIsNotReplaced) {
  mark();
  ASSERT_EQ(mkfifo((place / "pipe").c_str(), 0600), 0);
  fs::create_symlink("pipe", place / "link");
  fs::create_symlink("circle", place / "circle");
  for (const auto* file : {"pipe", "link", "circle"})
    fail({"gallery", "parts", "--report", file}, "cannot be written");
  EXPECT_TRUE(fs::is_fifo(place / "pipe"));
  EXPECT_TRUE(fs::is_symlink(place / "link"));
  EXPECT_FALSE(fs::exists(place / "projects/parts/validation/0.jpg"));
}

TEST_F(ProgramGallery, AReportIsWrittenThroughALink) {
  mark();
  place.write("pages/marks.html", "");
  fs::create_symlink("pages/marks.html", place / "link.html");
  fs::create_symlink("pages/new.html", place / "dangling.html");
  for (const auto* file : {"link.html", "dangling.html"}) {
    succeed({"gallery", "parts", "--report", file});
    EXPECT_TRUE(fs::is_symlink(place / file));
  }
  EXPECT_THAT(readFile(place / "pages/marks.html"), HasSubstr("<!DOCTYPE html>"));
  EXPECT_THAT(readFile(place / "pages/new.html"), HasSubstr("<!DOCTYPE html>"));
  EXPECT_EQ(contents("pages").size(), 2U);
}

TEST_F(ProgramGallery, WhatLiesBesideTheReportIsNotUsedForItsPart) {
  mark();
  place.write("marks.html.part", "mine");
  ASSERT_EQ(mkfifo((place / "pipe.html.part").c_str(), 0600), 0);
  succeed({"gallery", "parts", "--report", "marks.html"});
  succeed({"gallery", "parts", "--report", "pipe.html"});
  EXPECT_EQ(readFile(place / "marks.html.part"), "mine");
  EXPECT_THAT(readFile(place / "pipe.html"), HasSubstr("<!DOCTYPE html>"));
}

TEST_F(ProgramGallery, PicturesThatCannotBeReadDoNotKeepTheOthersFromTheReport) {
  mark();
  const auto unreadable = unreadablePictures(place);
  for (const auto& path : unreadable) {
    fs::remove_all(place / "photos/a.png");
    if (fs::exists(path)) fs::rename(path, place / "photos/a.png");
    const auto page = report(3);
    EXPECT_THAT(page, HasSubstr("<li>a.png</li>")) << path;
    EXPECT_EQ(occurrences(page, "data:image/jpeg;base64,"), 1U) << path;
  }
}

TEST_F(ProgramGallery, MarksWithoutAreaShowOnlyOnPicturesThatCanBeRead) {
  succeed({"mark", "parts", "a.png", "Point", "0.5,0.5", "--class", "nut"});
  succeed({"mark", "parts", "b.png", "Point", "0.5,0.5", "--class", "nut"});
  EXPECT_EQ(occurrences(report(), "no cut"), 2U);
  place.write("photos/a.png", "no picture");
  const auto start = std::chrono::steady_clock::now();
  const auto page = report(3);
  // So long the library waits for a picture that another thread might read.
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_THAT(page, HasSubstr("<li>a.png</li>"));
  EXPECT_EQ(occurrences(page, "no cut"), 1U);
}

TEST_F(ProgramGallery, ARecordThatCannotBeReadIsNamedBeforeAnythingIsCut) {
  mark();
  succeed({"gallery", "parts"});
  std::vector<std::string> records;
  for (const auto& entry : fs::directory_iterator(place / "projects/parts/is_day1"))
    records.push_back(entry.path().string());
  ASSERT_EQ(records.size(), 2U);
  const auto whole = readFile(records[0]);
  const auto with = [&](const std::string& node) {
    auto wrong = whole;
    return wrong.insert(wrong.find(node) + node.size(), "a \"b ");
  };
  for (const auto& content : {std::string(), std::string("no record"), whole.substr(0, 200),
                              "<?xml version=\"1.0\"?><opencv_storage><a>1</b></opencv_storage>"s,
                              with("<MarkCnt>"), with("<ClassIdx>")}) {
    std::ofstream(records[0]) << content;
    const auto result = run({"gallery", "parts", "--report", "marks.html"});
    EXPECT_EQ(result.exitCode, 1) << content;
    EXPECT_EQ(result.out, "");
    const auto message = result.err.substr(result.err.find("samplebench: "));
    EXPECT_THAT(message, HasSubstr(records[0]));
    EXPECT_THAT(message, HasSubstr("restore or remove that file"));
    EXPECT_TRUE(fs::exists(place / "projects/parts/validation/0.jpg"));
    EXPECT_FALSE(fs::exists(place / "marks.html"));
    EXPECT_THAT(run({"list", "parts"}).err, HasSubstr(records[0]));
  }
  fs::remove(records[0]);
  EXPECT_EQ(run({"gallery", "parts"}).exitCode, 3);
}

TEST_F(ProgramGallery, RefusesWhatWillNotDoBeforeItCuts) {
  succeed({"create", "bare"});
  place.makeDirectory("directory");
  fail({"gallery", "bare"}, "the project has no pictures");
  fail({"gallery", "none"}, "there is no project 'none'");
  fail({"gallery", "parts", "--report", "missing/marks.html"}, "see that its directory exists");
  fail({"gallery", "parts", "--report", "directory"}, "is a directory");
  fail({"gallery"}, "PROJECT is required", 2);
  fail({"gallery", "parts", "--report", ""}, "--report", 2);
  EXPECT_FALSE(fs::exists(place / "projects/parts/validation/0.jpg"));
}

TEST_F(ProgramGallery, AnInterruptStopsTheRunAndLeavesNoReport) {
  place.makeDirectory("many");
  for (int i = 0; i < 100; ++i)
    writePicture(place / "many/" + std::to_string(i) + ".jpg", 1200, 900);
  report();
  const auto earlier = readFile(place / "marks.html");
  succeed({"import", "parts", "day2", "many"});
  auto program = start({"gallery", "parts", "--report", "marks.html"});
  ASSERT_TRUE(program.waitForError("(10 %)"));
  program.interrupt();
  const auto result = program.wait();
  EXPECT_EQ(result.exitCode, 130);
  EXPECT_THAT(result.err, HasSubstr("samplebench: interrupted after"));
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(readFile(place / "marks.html"), earlier);
}

TEST_F(ProgramGallery, WithoutAnyPictureTheEarlierCutsStay) {
  mark();
  report();
  const auto before = contents("projects");
  const auto page = readFile(place / "marks.html");
  fs::rename(place / "photos", place / "unmounted");
  for (const std::vector<std::string>& more :
       {std::vector<std::string>{}, {"--report", "marks.html"}, {"--dry-run"}}) {
    std::vector<std::string> call{"gallery", "parts"};
    call.insert(call.end(), more.begin(), more.end());
    fail(call, "none of the pictures of the project (2) can be read; samplebench check parts");
  }
  EXPECT_EQ(contents("projects"), before);
  EXPECT_EQ(readFile(place / "marks.html"), page);
}

}  // namespace
