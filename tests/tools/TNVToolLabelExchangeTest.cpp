#include "TNV_SampleBenchNative/WTNVToolLabelExchange.h"

#include <chrono>
#include <filesystem>
#include <limits>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/Numbers.h"
#include "marks/TNVMarkCircle.h"
#include "marks/TNVMarkPoint.h"
#include "marks/TNVMarkPolyLine.h"
#include "marks/TNVMarkRect.h"
#include "project/TNVTrainSet.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"
#include "support/ProjectBuilder.h"
#include "support/SystemMessage.h"
#include "support/TempDirectory.h"
#include "tools/LabelTools.h"
#include "tools/TNVToolLabelExchange.h"

namespace fs = std::filesystem;

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

using Reasons = std::map<std::string, int>;

/// A project with the classes screw and nut and the pictures a.png and b.png of 64 by 48 pixels.
class LabelExchange : public testing::Test {
 protected:
  LabelExchange() {
    builder.withClasses({"screw", "nut"}).withPictures({"a.png", "b.png"});
    labels = builder.temp.makeDirectory("labels of others");
    labelsFile("classes.txt", "nut\nscrew\n");
    exchange.wSetPictureDirectory(builder.temp / "pictures");
  }

  void labelsFile(const std::string& name, const std::string& text) const {
    builder.temp.write("labels of others/" + name, text);
  }

  TNVTrainSet& record(std::size_t number) {
    return *builder.project().wGetTrainSets().at(number).getNativeTrainSet();
  }

  const std::vector<std::unique_ptr<TNVMark>>& marks(std::size_t number) {
    return record(number).marks;
  }

  int addMarks() {
    const int added =
        exchange.wAddMarks(builder.project().wGetTrainSets(), builder.project().wGetDNNClasses());
    EXPECT_EQ(added + exchange.wGetRejected(), exchange.wGetFound());
    return added;
  }

  bool readMarks() {
    return exchange.wReadMarks(builder.project().wGetTrainSets(),
                               builder.project().wGetDNNClasses());
  }

  void mark(std::size_t number, TNVMark&& mark, const std::vector<int>& classIdx) {
    mark.classIdx = classIdx;
    ASSERT_TRUE(record(number).addMark(mark));
  }

  /// Writes the set in memory as Darknet labels and gives the text for a picture.
  std::string written(const std::string& name) {
    EXPECT_TRUE(exchange.wSetFormat("Darknet"));
    EXPECT_TRUE(exchange.wWrite(out()));
    return readFile(out() + "/labels/" + name + ".txt");
  }

  std::string out() const { return builder.temp / "out"; }

  ProjectBuilder builder;
  std::string labels;
  WTNVToolLabelExchange exchange;
};

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

}  // namespace

TEST_F(LabelExchange, KnowsItsFormatsAndNoOther) {
  const auto formats = WTNVToolLabelExchange::wGetAvailableFormats();
  for (const std::string& format : formats)
    EXPECT_TRUE(exchange.wSetFormat(format)) << format;
  EXPECT_THAT(formats, testing::Contains("Darknet"));
  EXPECT_TRUE(exchange.wSetFormat(""));
  LogCapture log;
  EXPECT_FALSE(exchange.wSetFormat("darknet"));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVToolLabelExchange::setFormat: Unknown format 'darknet'!"));
}

TEST_F(LabelExchange, ASetThatIsReadTellsClassesPicturesAndCounts) {
  labelsFile("a.txt", "0 0.5 0.5 0.25 0.5\n7 0.5 0.5 0.25 0.5\nbroken\n");
  ASSERT_TRUE(exchange.wRead(labels));
  EXPECT_EQ(exchange.wGetReadFormat(), "Darknet");
  EXPECT_THAT(exchange.wGetClassNames(), ElementsAre("nut", "screw"));
  EXPECT_THAT(exchange.wGetImagePaths(),
              ElementsAre(builder.temp / "pictures/a.png", builder.temp / "pictures/b.png"));
  EXPECT_EQ(exchange.wGetFound(), 3);
  EXPECT_EQ(exchange.wGetRejected(), 2);
  EXPECT_EQ(exchange.wGetReasons(),
            (Reasons{{"neither a box nor an outline", 1}, {"unknown class", 1}}));
  EXPECT_THAT(exchange.wGetRejections(),
              ElementsAre(labels + "a.txt:2: unknown class",
                          labels + "a.txt:3: neither a box nor an outline"));
}

TEST_F(LabelExchange, LabelsOfSeveralFormatsAreRefusedUntilOneIsChosen) {
  constexpr auto coco = R"({"categories":[],"images":[],"annotations":[]})";
  constexpr auto voc = "<annotation/>";
  struct Row {
    std::map<std::string, std::string> files;
    const char* formats;
  };
  const Row rows[] = {
      {{{"a.txt", "0 0.5 0.5 0.25 0.5\n"}}, "Darknet"},
      {{{"deep/a.xml", voc}, {"README.txt", "screws"}, {"classes.txt", "nut"}}, "VOC"},
      {{{"annotations/all.json", coco}, {"other.yml", "services: 2"}}, "COCO"},
      {{{"a.xml", voc}, {"labels/a.txt", "0 0.5 0.5 0.25 0.5\n"}}, "VOC, Darknet"},
      {{{"all.json", coco}, {"Annotations/a.xml", voc}}, "COCO, VOC"},
      {{{"all.json", coco}, {"data.yaml", "train: x\nnames: [nut]\n"}}, "COCO, Darknet"},
      {{{"all.json", coco}, {"a.xml", voc}, {"a.txt", "0 0.5 0.5 0.25 0.5\n"}},
       "COCO, VOC, Darknet"},
      {{{"a.txt", ""}}, "Darknet"},
  };
  int number = 0;
  for (const Row& row : rows) {
    const std::string place = builder.temp.makeDirectory("row" + std::to_string(++number));
    for (const auto& [name, text] : row.files)
      builder.temp.write("row" + std::to_string(number) + "/" + name, text);
    exchange.wSetFormat("");
    exchange.wSetNames(labels + "classes.txt");
    LogCapture log;
    const bool isOne = std::string_view(row.formats).find(',') == std::string_view::npos;
    EXPECT_EQ(exchange.wRead(place), isOne) << row.formats;
    EXPECT_EQ(exchange.wGetReadFormat(), isOne ? row.formats : "");
    if (isOne) continue;
    EXPECT_THAT(log.text(), HasSubstr("There are labels of several formats at '" + place +
                                      "', choose one of: " + row.formats));
    ASSERT_TRUE(exchange.wSetFormat(row.files.contains("a.xml") ? "VOC" : "COCO"));
    EXPECT_TRUE(exchange.wRead(place)) << row.formats;
  }
}

TEST_F(LabelExchange, AFailedReadLeavesNothingInMemory) {
  labelsFile("a.txt", "0 0.5 0.5 0.25 0.5\n");
  ASSERT_TRUE(exchange.wRead(labels));
  LogCapture log;
  EXPECT_FALSE(exchange.wRead(builder.temp / "missing"));
  EXPECT_THAT(log.lines(), ElementsAre("TNVToolLabelExchange::read: There is nothing at '" +
                                       builder.temp.path() + "missing'!"));
  EXPECT_FALSE(exchange.wRead(builder.temp.makeDirectory("empty")));
  EXPECT_THAT(log.text(), HasSubstr("TNVToolLabelExchange::read: No labels of a known format at"));
  EXPECT_EQ(exchange.wGetFound(), 0);
  EXPECT_THAT(exchange.wGetClassNames(), IsEmpty());
  EXPECT_EQ(exchange.wGetReadFormat(), "");
  EXPECT_TRUE(exchange.wSetFormat("Darknet"));
  EXPECT_FALSE(exchange.wRead(builder.temp / "missing"));
  EXPECT_THAT(log.text(), HasSubstr("There is nothing at"));
}

TEST_F(LabelExchange, BoxesAndOutlinesBecomeMarksOfTheClassOfTheirName) {
  labelsFile("a.txt", "1 0.5 0.375 0.25 0.5\n0 0.25 0.25 0.75 0.25 0.5 0.75\n");
  ASSERT_TRUE(exchange.wRead(labels));
  EXPECT_EQ(addMarks(), 2);
  ASSERT_EQ(marks(0).size(), 2U);
  const auto* box = dynamic_cast<const TNVMarkRect*>(marks(0)[0].get());
  ASSERT_TRUE(box);
  EXPECT_EQ(box->type, "Rect");
  EXPECT_EQ(box->center, cv::Point2d(0.5, 0.375));
  EXPECT_EQ(box->size, cv::Point2d(0.25, 0.5));
  // The project counts screw as 0, the labels as 1.
  EXPECT_THAT(box->classIdx, ElementsAre(0));
  const auto* line = dynamic_cast<const TNVMarkPolyLine*>(marks(0)[1].get());
  ASSERT_TRUE(line);
  EXPECT_TRUE(line->closed);
  EXPECT_EQ(line->polyPoints, (TNVMark::Points{{0.25, 0.25}, {0.75, 0.25}, {0.5, 0.75}}));
  EXPECT_EQ(line->center, cv::Point2d(0.5, 0.5));
  EXPECT_THAT(line->classIdx, ElementsAre(1));
  EXPECT_THAT(marks(1), IsEmpty());
}

TEST_F(LabelExchange, MarksAreSavedByThePartialUpdateOfTheProject) {
  ASSERT_TRUE(builder.project().wUpdate(true));
  builder.reopened();
  labelsFile("b.txt", "1 0.5 0.375 0.25 0.5\n");
  ASSERT_TRUE(exchange.wRead(labels));
  ASSERT_EQ(addMarks(), 1);
  EXPECT_FALSE(record(0).changed);
  EXPECT_TRUE(record(1).changed);
  ASSERT_TRUE(builder.project().wUpdate(false));
  builder.reopened();
  for (const auto& trainSet : builder.project().wGetTrainSets())
    trainSet.wLoadData();
  EXPECT_EQ(marks(0).size(), 0U);
  ASSERT_EQ(marks(1).size(), 1U);
  EXPECT_EQ(marks(1)[0]->center, cv::Point2d(0.5, 0.375));
}

TEST_F(LabelExchange, ImportingTwiceDoublesNothing) {
  labelsFile("a.txt", "1 0.5 0.375 0.25 0.5\n0 0.25 0.25 0.75 0.25 0.5 0.75\n");
  labelsFile("b.txt", "0 0.123456 0.654321 0.111111 0.222222\n");
  ASSERT_TRUE(exchange.wRead(labels));
  EXPECT_EQ(addMarks(), 3);
  EXPECT_EQ(addMarks(), 0);
  EXPECT_EQ(exchange.wGetReasons(), (Reasons{{"already marked", 3}}));
  ASSERT_TRUE(builder.project().wUpdate(true));
  builder.reopened();
  ASSERT_TRUE(exchange.wRead(labels));
  EXPECT_EQ(addMarks(), 0);
  EXPECT_EQ(exchange.wGetRejected(), 3);
  EXPECT_EQ(marks(0).size() + marks(1).size(), 3U);
}

TEST_F(LabelExchange, AlreadyMarkedIsTheSameKindClassAndPlace) {
  struct Row {
    const char* label;
    bool isNew;
  };
  const Row rows[] = {
      {"1 0.5 0.5 0.25 0.5", false},
      {"1 0.5000009 0.5 0.25 0.5", false},
      {"1 0.4999991 0.5 0.25 0.5", false},
      {"1 0.5 0.5 0.25 0.5000009", false},
      {"1 0.500002 0.5 0.25 0.5", true},
      {"1 0.5 0.499998 0.25 0.5", true},
      {"1 0.5 0.5 0.250002 0.5", true},
      {"1 0.5 0.5 0.25 0.499998", true},
      {"1 0.25 0.25 0.75 0.25 0.5 0.75", false},
      {"1 0.25 0.25 0.75 0.2500009 0.5 0.75", false},
      {"1 0.25 0.25 0.75 0.250002 0.5 0.75", true},
      {"1 0.25 0.25 0.75 0.25 0.5 0.75 0.3 0.5", true},
      {"1 0.75 0.25 0.5 0.75 0.25 0.25", true},
  };
  mark(0, TNVMarkRect({0.375, 0.25}, {0.625, 0.75}, false), {1, 0});
  mark(0, TNVMarkPolyLine({{0.25, 0.25}, {0.75, 0.25}, {0.5, 0.75}}, true), {0});
  // Equal in place, but of other kinds.
  mark(0, TNVMarkPolyLine({{0.75, 0.25}, {0.5, 0.75}, {0.25, 0.25}}, false), {0});
  mark(0, TNVMarkPolyLine(TNVMark::Points(), true), {0});
  const std::size_t before = marks(0).size();
  for (const Row& row : rows) {
    labelsFile("a.txt", row.label);
    ASSERT_TRUE(exchange.wRead(labels));
    EXPECT_EQ(addMarks(), row.isNew ? 1 : 0) << row.label;
    while (marks(0).size() > before)
      record(0).removeMark(record(0).marks.back().get());
  }
}

TEST_F(LabelExchange, EachClassOfAMarkCounts) {
  mark(0, TNVMarkRect({0.375, 0.25}, {0.625, 0.75}, false), {1});
  labelsFile("a.txt", "0 0.5 0.5 0.25 0.5\n1 0.5 0.5 0.25 0.5\n");
  ASSERT_TRUE(exchange.wRead(labels));
  EXPECT_EQ(addMarks(), 1);
  EXPECT_THAT(marks(0).back()->classIdx, ElementsAre(0));
}

TEST_F(LabelExchange, ALabelThatIsThereTwiceIsAddedOnce) {
  labelsFile("a.txt", "0 0.5 0.5 0.25 0.5\n0 0.5 0.5 0.25 0.5\n");
  ASSERT_TRUE(exchange.wRead(labels));
  EXPECT_EQ(addMarks(), 1);
  EXPECT_THAT(exchange.wGetRejections(), ElementsAre(labels + "a.txt:2: already marked"));
}

TEST_F(LabelExchange, ALabelIsRejectedUnderTheFileThatToldOfIt) {
  // Both files tell of one picture, and the second repeats nothing.
  const auto file = [&](const char* name, const char* box) {
    builder.temp.write(std::string("coco/") + name,
                       R"({"categories":[{"id":1,"name":"screw"}],"images":[{"id":1,)"
                       R"("file_name":"a.png","width":64,"height":48}],"annotations":[)"
                       R"({"image_id":1,"category_id":1,"bbox":)" +
                           std::string(box) + "}]}");
  };
  file("one.json", "[16,12,32,24]");
  file("two.json", "[0,0,32,24]");
  mark(0, TNVMarkRect({0.25, 0.25}, {0.75, 0.75}, false), {0});
  ASSERT_TRUE(exchange.wRead(builder.temp / "coco"));
  EXPECT_EQ(addMarks(), 1);
  EXPECT_THAT(exchange.wGetRejections(),
              ElementsAre(builder.temp / "coco/one.json" + ":1: already marked"));
}

TEST_F(LabelExchange, CrowdsInOneLineCostNoMoreThanScatteredOnes) {
  // Boxes, then outlines, of one x or of as many as there are labels.
  const auto secondsFor = [&](bool isLine, bool isOutline) {
    constexpr int count = 20000;
    std::string text;
    for (int i = 0; i < count; ++i) {
      const std::string x = isLine ? "0.25" : tnv::formatFixed(0.1 + i * 3e-5);
      const std::string y = tnv::formatFixed(0.1 + i * 3e-5);
      text += isOutline ? "0 " + x + " " + y + " 0.9 0.9 0.1 0.95\n"
                        : "0 " + x + " " + y + " 0.1 0.1\n";
    }
    labelsFile("a.txt", text);
    EXPECT_TRUE(exchange.wRead(labels));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(addMarks(), count);
    EXPECT_EQ(addMarks(), 0);
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    while (!marks(0).empty())
      record(0).removeMark(record(0).marks.back().get());
    return passed.count();
  };
  for (const bool isOutline : {false, true}) {
    const double scattered = secondsFor(false, isOutline);
    EXPECT_LT(secondsFor(true, isOutline), 5 * scattered + 0.2) << isOutline;
  }
}

TEST_F(LabelExchange, APictureIsKnownByItsAbsolutePathToo) {
  labelsFile("a.txt", "1 0.5 0.5 0.25 0.5\n");
  ASSERT_TRUE(exchange.wRead(labels));
  TNVTrainSet trainSet("somewhere/a.png", builder.temp / "pictures/");
  EXPECT_EQ(exchange.wAddMarks({WTNVTrainSet(&trainSet)}, builder.project().wGetDNNClasses()), 1);
  EXPECT_EQ(trainSet.marks.size(), 1U);
}

TEST_F(LabelExchange, LabelsWithoutTrainSetOrClassAreRejected) {
  labelsFile("classes.txt", "bolt\nscrew\n");
  labelsFile("a.txt", "0 0.5 0.5 0.25 0.5\n1 0.5 0.5 0.25 0.5\n");
  labelsFile("c.txt", "1 0.5 0.5 0.25 0.5\n");
  builder.picture("c.png");
  ASSERT_TRUE(exchange.wRead(labels));
  EXPECT_EQ(addMarks(), 1);
  EXPECT_EQ(exchange.wGetReasons(), (Reasons{{"class is not in the project", 1},
                                             {"picture is not among the train sets", 1}}));
  EXPECT_THAT(exchange.wGetRejections(),
              ElementsAre(labels + "a.txt:1: class is not in the project",
                          labels + "c.txt:1: picture is not among the train sets"));
}

TEST_F(LabelExchange, NullHandlesAreLeftOut) {
  labelsFile("a.txt", "1 0.5 0.5 0.25 0.5\n");
  ASSERT_TRUE(exchange.wRead(labels));
  EXPECT_EQ(exchange.wAddMarks({WTNVTrainSet()}, {WTNVDNNClass()}), 0);
  EXPECT_EQ(exchange.wGetRejected(), 1);
  EXPECT_FALSE(exchange.wReadMarks({}, {}));
  EXPECT_TRUE(exchange.wReadMarks({}, builder.project().wGetDNNClasses()));
  EXPECT_EQ(exchange.wGetFound(), 0);
}

TEST_F(LabelExchange, ADamagedRecordThrowsBeforeAnythingIsAdded) {
  ASSERT_TRUE(builder.project().wUpdate(true));
  builder.reopened();
  builder.temp.write("projects/demo/is_set/" + fs::path(record(1).dataPath).filename().string(),
                     "<?xml");
  labelsFile("a.txt", "1 0.5 0.5 0.25 0.5\n");
  ASSERT_TRUE(exchange.wRead(labels));
  EXPECT_THROW(addMarks(), cv::Exception);
  EXPECT_THAT(marks(0), IsEmpty());
}

TEST_F(LabelExchange, ClippingIsAChoiceOnReading) {
  labelsFile("a.txt", "1 0 0.5 0.5 0.5\n");
  ASSERT_TRUE(exchange.wRead(labels));
  EXPECT_EQ(exchange.wGetRejected(), 1);
  exchange.wSetClip(true);
  ASSERT_TRUE(exchange.wRead(labels));
  EXPECT_EQ(exchange.wGetCut(), 1);
  EXPECT_EQ(addMarks(), 1);
  EXPECT_EQ(marks(0)[0]->center, cv::Point2d(0.125, 0.5));
}

TEST_F(LabelExchange, TheBaseIsThatOfTheFirstPixelInVoc) {
  mark(0, TNVMarkRect({0.25, 0.25}, {0.75, 0.5}, false), {1});
  ASSERT_TRUE(readMarks());
  exchange.wSetFormat("VOC");
  exchange.wSetPictureDirectory("");
  // Of 64 by 48 pixels: from 16 and 12 to 48 and 24.
  for (const auto& [base, left, top] : {std::tuple{0, "16", "12"}, std::tuple{1, "17", "13"}}) {
    exchange.wSetBase(base);
    ASSERT_TRUE(exchange.wWrite(out()));
    EXPECT_THAT(readFile(out() + "/Annotations/a.xml"),
                AllOf(HasSubstr(std::string("<xmin>") + left + "</xmin>"),
                      HasSubstr(std::string("<ymin>") + top + "</ymin>"),
                      HasSubstr("<xmax>48</xmax>"), HasSubstr("<ymax>24</ymax>")));
    WTNVToolLabelExchange back;
    back.wSetBase(base);
    ASSERT_TRUE(back.wRead(out()));
    EXPECT_EQ(back.wAddMarks(builder.project().wGetTrainSets(), builder.project().wGetDNNClasses()),
              0);
    EXPECT_EQ(back.wGetReasons(), (Reasons{{"already marked", 1}})) << base;
    back.wSetBase(1 - base);
    ASSERT_TRUE(back.wRead(out()));
    EXPECT_EQ(back.wAddMarks(builder.project().wGetTrainSets(), builder.project().wGetDNNClasses()),
              1)
        << base;
    record(0).removeMark(record(0).marks.back().get());
  }
}

TEST_F(LabelExchange, MarksGoOutAsTheirBoxes) {
  mark(0, TNVMarkRect({0.25, 0.25}, {0.75, 0.5}, false), {1});
  mark(0, TNVMarkPolyLine({{0.25, 0.25}, {0.75, 0.25}, {0.5, 0.75}}, true), {0});
  // Its rim is 12 pixels from the middle of 64 by 48 pixels.
  mark(0, TNVMarkCircle({0.5, 0.5}, {0.5 + 12.0 / 64, 0.5}), {0});
  ASSERT_TRUE(readMarks());
  EXPECT_EQ(exchange.wGetFound(), 3);
  EXPECT_EQ(exchange.wGetRejected(), 0);
  std::istringstream lines(written("a"));
  lines.imbue(std::locale::classic());
  const double expected[][5] = {
      {1, 0.5, 0.375, 0.5, 0.25}, {0, 0.5, 0.5, 0.5, 0.5}, {0, 0.5, 0.5, 24.0 / 64, 24.0 / 48}};
  for (const auto& row : expected) {
    for (const double number : row) {
      double read = -1;
      lines >> read;
      EXPECT_NEAR(read, number, 1e-9);
    }
  }
}

TEST_F(LabelExchange, AMarkOfSeveralClassesIsALabelForEach) {
  mark(0, TNVMarkRect({0.25, 0.25}, {0.75, 0.5}, false), {1, 0});
  ASSERT_TRUE(readMarks());
  EXPECT_EQ(written("a"), "1 0.5 0.375 0.5 0.25\n0 0.5 0.375 0.5 0.25\n");
}

TEST_F(LabelExchange, MarksThatCannotGoOutAreRejectedByTheirNumber) {
  ASSERT_TRUE(builder.project().wUpdate(true));
  const TNVMarkRect box({0.25, 0.25}, {0.75, 0.5}, false);
  mark(0, TNVMarkRect(box), {});
  mark(0, TNVMarkRect(box), {77});
  mark(0, TNVMarkPoint({0.5, 0.5}), {0});
  mark(0, TNVMarkRect({kNan, 0.25}, {0.75, 0.5}, true), {0, 1});
  mark(0, TNVMarkRect({1.25, 0.25}, {1.75, 0.5}, false), {0});
  ASSERT_TRUE(readMarks());
  const std::string file = record(0).dataPath;
  EXPECT_THAT(exchange.wGetRejections(),
              ElementsAre(file + ":1: mark without a class", file + ":2: unknown class",
                          file + ":3: no width or no height", file + ":4: not a finite number",
                          file + ":4: not a finite number", file + ":5: lies outside the picture"));
  EXPECT_EQ(written("a"), "");
}

TEST_F(LabelExchange, MarksAreCutAtTheEdgesOfThePicture) {
  mark(0, TNVMarkRect({-0.5, 0.25}, {0.5, 0.75}, false), {0});
  ASSERT_TRUE(readMarks());
  EXPECT_EQ(exchange.wGetCut(), 1);
  EXPECT_EQ(written("a"), "0 0.25 0.5 0.5 0.5\n");
}

TEST_F(LabelExchange, MarksGoOutWithinTheEdgesToTheLastDigit) {
  mark(0, TNVMarkRect({-8e-6, 0.25}, {0.5, 1 + 8e-6}, false), {0});
  ASSERT_TRUE(readMarks());
  EXPECT_EQ(exchange.wGetCut(), 0);
  EXPECT_EQ(written("a"), "0 0.25 0.625 0.5 0.75\n");
}

TEST_F(LabelExchange, AMarkWhoseSizeDependsOnAMissingPictureIsRejected) {
  mark(0, TNVMarkRect({0.25, 0.25}, {0.75, 0.5}, false), {0});
  mark(0, TNVMarkPolyLine({{0.25, 0.25}, {0.75, 0.25}, {0.5, 0.75}}, false), {0, 1});
  builder.temp.write("pictures/a.png", "no picture");
  ASSERT_TRUE(readMarks());
  EXPECT_EQ(exchange.wGetReasons(), (Reasons{{"size of the picture is unknown", 2}}));
}

TEST_F(LabelExchange, AMissingPictureIsLeftOutAloudInEachFormat) {
  mark(0, TNVMarkRect({0.25, 0.25}, {0.75, 0.5}, false), {0});
  mark(0, TNVMarkRect({0.25, 0.25}, {0.5, 0.5}, false), {0});
  mark(1, TNVMarkRect({0.25, 0.25}, {0.75, 0.5}, false), {0});
  // Known from the record, the size does not make up for the file.
  record(0).imageWidth = 64;
  record(0).imageHeight = 48;
  ASSERT_TRUE(readMarks());
  int round = 0;
  for (const std::string& format : WTNVToolLabelExchange::wGetAvailableFormats()) {
    for (const bool copy : {false, true}) {
      exchange.wSetFormat(format);
      exchange.wSetCopy(copy);
      // Gone, empty, or something else.
      fs::remove(builder.temp / "pictures/a.png");
      if (++round % 3 > 0) builder.temp.write("pictures/a.png", round % 3 == 1 ? "" : "no picture");
      fs::remove_all(out());
      EXPECT_TRUE(exchange.wTryWrite(out()));
      EXPECT_THAT(exchange.wGetPicturesLeftOut(), ElementsAre(builder.temp / "pictures/a.png"));
      EXPECT_EQ(exchange.wGetReasons(), (Reasons{{"picture cannot be read", 2}}));
      EXPECT_FALSE(fs::exists(out()));
      LogCapture log;
      ASSERT_TRUE(exchange.wWrite(out())) << format;
      EXPECT_THAT(log.text(), HasSubstr("pictures/a.png' is left out: picture cannot be read"));
      EXPECT_THAT(exchange.wGetPicturesLeftOut(), ElementsAre(builder.temp / "pictures/a.png"));
      EXPECT_EQ(exchange.wGetReasons(), (Reasons{{"picture cannot be read", 2}}));
      WTNVToolLabelExchange back;
      ASSERT_TRUE(back.wRead(out()));
      EXPECT_EQ(back.wGetReadFormat(), format);
      EXPECT_EQ(back.wGetImagePaths().size(), 1U);
      EXPECT_EQ(back.wGetFound(), 1);
    }
  }
}

TEST_F(LabelExchange, WhatJsonCannotTellDoesNotGoOutAsCoco) {
  const std::string other = builder.temp / "pictures/H\xFClse.png";
  fs::copy_file(builder.temp / "pictures/a.png", other);
  TNVTrainSet latin(other, other);
  TNVMarkRect box({0.25, 0.25}, {0.75, 0.5}, false);
  box.classIdx = {0};
  latin.addMark(box);
  latin.dataLoaded = true;
  auto classes = builder.project().wGetDNNClasses();
  ASSERT_TRUE(exchange.wReadMarks({WTNVTrainSet(&latin)}, classes));
  for (const bool copy : {false, true}) {
    exchange.wSetCopy(copy);
    exchange.wSetFormat("COCO");
    ASSERT_TRUE(exchange.wWrite(out()));
    EXPECT_EQ(exchange.wGetReasons(), (Reasons{{"name of the picture cannot be written", 1}}));
    exchange.wSetFormat("Darknet");
    ASSERT_TRUE(exchange.wWrite(out()));
    EXPECT_EQ(exchange.wGetRejected(), 0);
    EXPECT_EQ(readFile(out() + "/labels/H\xFClse.txt"), "0 0.5 0.375 0.5 0.25\n");
  }
  ASSERT_TRUE(builder.project().wUpdateDNNClass(classes[1], "H\xFClse", 1, "", "", 0, 0, 0));
  ASSERT_TRUE(readMarks());
  exchange.wSetFormat("COCO");
  LogCapture log;
  EXPECT_FALSE(exchange.wWrite(out()));
  EXPECT_THAT(log.text(), HasSubstr("is no UTF-8, which COCO needs!"));
}

TEST_F(LabelExchange, PicturesWithTheLongestNamesGoOut) {
  // A name may have 255 bytes; the last two characters of two bytes each.
  const std::string name = std::string(246, 'x') + "\xC3\xBC\xC3\xBC.png";
  const std::string longest = builder.temp / "pictures/" + name;
  fs::copy_file(builder.temp / "pictures/a.png", longest);
  TNVTrainSet record(longest, longest);
  TNVMarkRect box({0.25, 0.25}, {0.75, 0.5}, false);
  box.classIdx = {0};
  record.addMark(box);
  record.dataLoaded = true;
  ASSERT_TRUE(exchange.wReadMarks({WTNVTrainSet(&record)}, builder.project().wGetDNNClasses()));
  exchange.wSetPictureDirectory("");
  for (const std::string& format : WTNVToolLabelExchange::wGetAvailableFormats()) {
    for (const bool copy : {false, true}) {
      exchange.wSetFormat(format);
      exchange.wSetCopy(copy);
      ASSERT_TRUE(exchange.wWrite(out())) << format << copy;
      WTNVToolLabelExchange back;
      ASSERT_TRUE(back.wRead(out())) << format << copy;
      EXPECT_EQ(back.wGetFound() - back.wGetRejected(), 1) << format << copy;
    }
  }
}

TEST_F(LabelExchange, ClassesGoOutByTheirNumbers) {
  const auto classes = builder.project().wGetDNNClasses();
  ASSERT_TRUE(builder.project().wUpdateDNNClass(classes[0], "screw", 1, "", "", 0, 0, 0));
  LogCapture log;
  EXPECT_FALSE(readMarks());
  EXPECT_THAT(log.text(),
              HasSubstr("TNVToolLabelExchange::readMarks: The numbers of the classes do "
                        "not run from 0 without gaps!"));
  ASSERT_TRUE(builder.project().wUpdateDNNClass(classes[1], "nut", 0, "", "", 0, 0, 0));
  mark(0, TNVMarkRect({0.25, 0.25}, {0.75, 0.5}, false), {0});
  ASSERT_TRUE(readMarks());
  EXPECT_THAT(exchange.wGetClassNames(), ElementsAre("nut", "screw"));
  EXPECT_EQ(written("a"), "1 0.5 0.375 0.5 0.25\n");
  for (const char* name : {"two\nlines", " blank", "blank ", "carriage\r"}) {
    ASSERT_TRUE(builder.project().wUpdateDNNClass(classes[1], name, 0, "", "", 0, 0, 0));
    EXPECT_FALSE(readMarks()) << name;
  }
}

TEST_F(LabelExchange, WhatWentOutComesBackWithTheSameMarks) {
  mark(0, TNVMarkRect({1.0 / 3, 1.0 / 7}, {2.0 / 3, 6.0 / 7}, false), {1});
  mark(1, TNVMarkRect({0, 0}, {1, 1}, false), {0});
  ASSERT_TRUE(readMarks());
  written("a");
  exchange.wSetPictureDirectory("");
  ASSERT_TRUE(exchange.wRead(out()));
  EXPECT_EQ(exchange.wGetFound(), 2);
  EXPECT_EQ(addMarks(), 0);
  EXPECT_EQ(exchange.wGetReasons(), (Reasons{{"already marked", 2}}));
}

TEST_F(LabelExchange, AnExportReplacesNothingButAnExport) {
  mark(0, TNVMarkRect({0.25, 0.25}, {0.75, 0.5}, false), {1});
  ASSERT_TRUE(readMarks());
  LogCapture log;
  EXPECT_FALSE(exchange.wWrite(out()));
  EXPECT_THAT(log.text(), HasSubstr("TNVToolLabelExchange::write: No format was set!"));
  exchange.wSetFormat("Darknet");
  EXPECT_FALSE(exchange.wCanWrite(""));
  EXPECT_FALSE(exchange.wCanWrite(labels));
  EXPECT_FALSE(exchange.wWrite(labels));
  EXPECT_THAT(log.text(), HasSubstr("holds files that are no earlier export!"));
  EXPECT_FALSE(exchange.wWrite(labels + "classes.txt"));
  EXPECT_EQ(readFile(labels + "classes.txt"), "nut\nscrew\n");
  EXPECT_TRUE(exchange.wCanWrite(out()));
  EXPECT_FALSE(fs::exists(out()));
  fs::create_directories(out());
  ASSERT_TRUE(exchange.wWrite(out()));
  builder.temp.write("out/labels/stale.txt", "0 0.5 0.5 1 1\n");
  ASSERT_TRUE(exchange.wWrite(out()));
  EXPECT_FALSE(fs::exists(out() + "/labels/stale.txt"));
  EXPECT_TRUE(fs::exists(out() + "/labels/a.txt"));
}

TEST_F(LabelExchange, AnExportNeverReplacesItsOwnSources) {
  exchange.wSetFormat("Darknet");
  exchange.wSetCopy(true);
  exchange.wSetPictureDirectory("");
  mark(0, TNVMarkRect({0.25, 0.25}, {0.75, 0.5}, false), {1});
  ASSERT_TRUE(readMarks());
  ASSERT_TRUE(exchange.wWrite(out()));
  ASSERT_TRUE(exchange.wRead(out()));
  LogCapture log;
  EXPECT_FALSE(exchange.wCanWrite(out()));
  EXPECT_FALSE(exchange.wWrite(out()));
  EXPECT_THAT(log.text(), AllOf(HasSubstr("is not written to"), HasSubstr("out/images/a.png")));
  EXPECT_TRUE(fs::exists(out() + "/images/a.png"));
  EXPECT_TRUE(exchange.wWrite(builder.temp / "other"));
  // The texts are sources too, even if the pictures lie elsewhere.
  exchange.wSetCopy(false);
  ASSERT_TRUE(exchange.wWrite(builder.temp / "texts"));
  ASSERT_TRUE(exchange.wRead(builder.temp / "texts"));
  EXPECT_FALSE(exchange.wWrite(builder.temp / "texts"));
  EXPECT_THAT(log.text(), HasSubstr("texts/labels/a.txt"));
  EXPECT_TRUE(fs::exists(builder.temp / "texts/labels/a.txt"));
}

TEST_F(LabelExchange, AnExportKeepsThePicturesThatAreProtected) {
  exchange.wSetPictureDirectory("");
  exchange.wSetFormat("Darknet");
  exchange.wSetCopy(true);
  mark(0, TNVMarkRect({0.25, 0.25}, {0.75, 0.5}, false), {1});
  ASSERT_TRUE(readMarks());
  ASSERT_TRUE(exchange.wWrite(out()));
  // The copy is a picture of the project from here on, and does not go out.
  record(1).imagePath = out() + "/images/a.png";
  const auto trainSets = builder.project().wGetTrainSets();
  ASSERT_TRUE(exchange.wReadMarks({trainSets[0]}, builder.project().wGetDNNClasses()));
  ASSERT_TRUE(exchange.wCanWrite(out()));
  exchange.wProtect(trainSets);
  LogCapture log;
  EXPECT_FALSE(exchange.wCanWrite(out()));
  EXPECT_FALSE(exchange.wTryWrite(out()));
  EXPECT_FALSE(exchange.wWrite(out()));
  EXPECT_THAT(log.text(), HasSubstr("it is or contains '" + out() + "/images/a.png'"));
  EXPECT_TRUE(fs::exists(out() + "/images/a.png"));
  EXPECT_TRUE(exchange.wWrite(builder.temp / "other"));
  exchange.wProtect({WTNVTrainSet(), trainSets[0]});
  EXPECT_TRUE(exchange.wCanWrite(out()));
}

TEST_F(LabelExchange, WhereAPictureIsUnknownNoPicturesAreReplaced) {
  ASSERT_TRUE(builder.project().wUpdate(true));
  exchange.wSetPictureDirectory("");
  exchange.wSetFormat("VOC");
  for (const std::string& content : {std::string("<?xml"), std::string()}) {
    builder.reopened();
    const std::string file = fs::path(record(1).dataPath).filename().string();
    const std::string whole = readFile(record(1).dataPath);
    builder.temp.write("projects/demo/is_set/" + file, content);
    const auto trainSets = builder.project().wGetTrainSets();
    const std::string place = builder.temp / ("of " + std::to_string(content.size()));
    ASSERT_TRUE(exchange.wReadMarks({trainSets[0]}, builder.project().wGetDNNClasses()));
    exchange.wProtect(trainSets);
    exchange.wSetCopy(false);
    EXPECT_TRUE(exchange.wWrite(place)) << "texts alone may be replaced";
    EXPECT_TRUE(exchange.wWrite(place));
    exchange.wSetCopy(true);
    EXPECT_TRUE(exchange.wWrite(place));
    LogCapture log;
    EXPECT_FALSE(exchange.wWrite(place));
    EXPECT_THAT(log.text(), HasSubstr(file + "' cannot be read, and its picture may lie there"));
    builder.temp.write("projects/demo/is_set/" + file, whole);
  }
}

namespace {

/// The files below a directory with what is in them.
std::map<std::string, std::string> filesBelow(const std::string& directory) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    const std::string name = entry.path().lexically_relative(directory).generic_string();
    files[name] = entry.is_regular_file() ? readFile(entry.path().string()) : "";
  }
  return files;
}

/// What the callback, which has no argument, works with.
WTNVToolLabelExchange* toStop = nullptr;
int picturesUntilStop = 0;

void stopInTime() {
  EXPECT_FALSE(toStop->wProcessIsStopped());
  if (picturesUntilStop-- == 0) toStop->wProcessStop();
}

/// An earlier export of two pictures with copies lies there, with a file of somebody else.
class LaterExport : public LabelExchange {
 protected:
  LaterExport() {
    exchange.wSetPictureDirectory("");
    exchange.wSetFormat("Darknet");
    exchange.wSetCopy(true);
    mark(0, TNVMarkRect({0.25, 0.25}, {0.75, 0.5}, false), {1});
    EXPECT_TRUE(readMarks());
    EXPECT_TRUE(exchange.wWrite(out()));
    builder.temp.write("out/notes", "of somebody");
    before = filesBelow(out());
    mark(1, TNVMarkRect({0.25, 0.25}, {0.75, 0.5}, false), {1});
    EXPECT_TRUE(readMarks());
    toStop = &exchange;
  }
  ~LaterExport() override { exchange.setCBUpdate(nullptr); }

  std::map<std::string, std::string> before;
};

}  // namespace

TEST_F(LaterExport, TakesThePlaceOfTheEarlierAndOfNothingElse) {
  exchange.wSetFormat("VOC");
  exchange.wSetCopy(false);
  ASSERT_TRUE(exchange.wWrite(out()));
  std::vector<std::string> names;
  for (const auto& [name, content] : filesBelow(out()))
    names.push_back(name);
  EXPECT_THAT(names, UnorderedElementsAre(".label-export", "Annotations", "Annotations/a.xml",
                                          "Annotations/b.xml", "classes.txt", "notes"));
  EXPECT_EQ(readFile(out() + "/.label-export"), "VOC\n");
}

TEST_F(LaterExport, LeavesTheEarlierAsItWasWhenACopyFails) {
  // The picture goes when both were looked at and the first is to be copied or written.
  for (const std::string& format : WTNVToolLabelExchange::wGetAvailableFormats()) {
    exchange.wSetFormat(format);
    exchange.setCBUpdate([] {
      const fs::path picture = toStop->wGetImagePaths().at(1);
      if (++picturesUntilStop == 3) fs::remove(picture);
    });
    picturesUntilStop = 0;
    LogCapture log;
    EXPECT_FALSE(exchange.wWrite(out())) << format;
    EXPECT_THAT(log.text(), HasSubstr("b.png': " + messageOf(std::errc::no_such_file_or_directory)))
        << format;
    EXPECT_EQ(filesBelow(out()), before) << format;
    builder.picture("b.png");
  }
}

TEST_F(LaterExport, LeavesTheEarlierAsItWasWhenStopped) {
  exchange.setCBUpdate(stopInTime);
  for (const std::string& format : WTNVToolLabelExchange::wGetAvailableFormats()) {
    exchange.wSetFormat(format);
    // Two pictures are looked at and copied.
    for (const int pictures : {0, 1, 2, 3}) {
      picturesUntilStop = pictures;
      LogCapture log;
      EXPECT_FALSE(exchange.wWrite(out())) << format << pictures;
      EXPECT_THAT(log.text(), HasSubstr("TNVToolLabelExchange::write: Stopped!"));
      EXPECT_EQ(filesBelow(out()), before) << format << pictures;
      EXPECT_TRUE(exchange.wProcessIsStopped());
    }
  }
  exchange.setCBUpdate(nullptr);
  EXPECT_TRUE(exchange.wWrite(out()));
}

TEST_F(LaterExport, ThatIsStoppedLeavesNoNewDirectory) {
  exchange.setCBUpdate(stopInTime);
  const std::string empty = builder.temp.makeDirectory("empty");
  for (const std::string& directory : {builder.temp / "new/in/new", empty}) {
    picturesUntilStop = 3;
    EXPECT_FALSE(exchange.wWrite(directory));
  }
  EXPECT_FALSE(fs::exists(builder.temp / "new"));
  EXPECT_TRUE(fs::is_empty(empty));
}

TEST_F(LaterExport, MendsWhatAKilledOneLeft) {
  fs::create_directories(out() + "/.label-export.former");
  fs::rename(out() + "/labels", out() + "/.label-export.former/labels");
  builder.temp.write("out/.label-export.next/labels/x.txt", "0 0.5 0.5 1 1\n");
  exchange.setCBUpdate(stopInTime);
  picturesUntilStop = 3;
  EXPECT_FALSE(exchange.wWrite(out()));
  EXPECT_EQ(filesBelow(out()), before);
}

TEST_F(LaterExport, TakesAwayAgainWhatAKilledOnePutInPlace) {
  // The earlier one, Darknet, is out of the way with its mark, and some of the new one is in place.
  const std::string former = out() + "/.label-export.former/";
  fs::create_directories(former);
  for (const char* entry : {"labels", "images", "classes.txt", "data.yaml"})
    fs::rename(out() + "/" + entry, former + entry);
  fs::copy_file(out() + "/.label-export", former + ".label-export");
  builder.temp.write("out/Annotations/a.xml", "<annotation/>");
  builder.temp.write("out/classes.txt", "other\n");
  builder.temp.write("out/.label-export", "VOC\n");
  WTNVToolLabelExchange back;
  for (const std::string& path : {out(), out() + "/classes.txt"}) {
    LogCapture log;
    EXPECT_FALSE(back.wRead(path));
    EXPECT_THAT(log.text(), HasSubstr("An export to '" + out() +
                                      "' was interrupted, export there again before reading!"));
  }
  exchange.setCBUpdate(stopInTime);
  picturesUntilStop = 3;
  EXPECT_FALSE(exchange.wWrite(out()));
  EXPECT_EQ(filesBelow(out()), before);
}

TEST_F(LaterExport, IsReadWithoutWhatAKilledOneLeft) {
  builder.temp.write("out/.label-export.next/labels/x.txt", "0 0.5 0.5 1 1\n");
  WTNVToolLabelExchange back;
  ASSERT_TRUE(back.wRead(out()));
  EXPECT_EQ(back.wGetFound(), 1);
}

TEST_F(LaterExport, IsNoHindranceToReadingThatStops) {
  exchange.setCBUpdate(stopInTime);
  const std::string sets = builder.temp / "sets/";
  for (const std::string& format : WTNVToolLabelExchange::wGetAvailableFormats()) {
    exchange.wSetFormat(format);
    picturesUntilStop = -1;
    ASSERT_TRUE(exchange.wWrite(sets + format));
  }
  for (const std::string& format : WTNVToolLabelExchange::wGetAvailableFormats()) {
    exchange.wSetFormat(format);
    picturesUntilStop = 1;
    LogCapture log;
    EXPECT_FALSE(exchange.wRead(sets + format)) << format;
    EXPECT_THAT(log.text(), HasSubstr("TNVToolLabelExchange::read: Stopped!")) << format;
    EXPECT_THAT(exchange.wGetImagePaths(), IsEmpty());
  }
  picturesUntilStop = 3;
  EXPECT_FALSE(readMarks());
  EXPECT_EQ(exchange.wGetFound(), 0);
}

TEST_F(LabelExchange, AddingThatIsStoppedRejectsTheRest) {
  labelsFile("a.txt", "1 0.5 0.375 0.25 0.5\n");
  labelsFile("b.txt", "1 0.5 0.375 0.25 0.5\n0 0.5 0.5 0.25 0.5\n");
  ASSERT_TRUE(exchange.wRead(labels));
  toStop = &exchange;
  exchange.setCBUpdate(stopInTime);
  // Two records are read before the two pictures.
  picturesUntilStop = 3;
  EXPECT_EQ(addMarks(), 1);
  EXPECT_EQ(exchange.wGetReasons(), (Reasons{{"stopped", 2}}));
  EXPECT_EQ(marks(1).size(), 0U);
  exchange.setCBUpdate(nullptr);
  // A stop that came too late or too early has nothing to stop.
  exchange.wProcessStop();
  EXPECT_EQ(addMarks(), 2);
  EXPECT_TRUE(exchange.wProcessIsStopped());
}

TEST_F(LabelExchange, WhyADirectoryCannotBeWrittenToIsTold) {
  const TempDirectory locked;
  const std::string file = builder.temp.write("file", "");
  const std::string longName(300, 'x');
  const auto readOnly = fs::perms::owner_read | fs::perms::owner_exec | fs::perms::group_read |
                        fs::perms::group_exec | fs::perms::others_read | fs::perms::others_exec;
  fs::permissions(locked.path(), readOnly);
  for (const std::string& open : {builder.temp.path(), labels})
    fs::permissions(open, fs::perms::all);
  struct Row {
    std::string directory;
    std::string reason;
  };
  const Row rows[] = {
      {"", "No directory was given!"},
      {builder.temp / longName, "'" + longName + "' is too long a name!"},
      {builder.temp / "new/" + longName + "/x", "'" + longName + "' is too long a name!"},
      {file, "'" + file + "' is a file, no directory!"},
      {file + "/below", "'" + file + "' is a file, no directory!"},
      {locked.path(), "There are no rights to write to '" + locked.path() + "'!"},
      {locked / "new/deeper",
       "There are no rights to write to '" + fs::path(locked.path()).parent_path().string() + "'!"},
      {labels, "'" + labels + "' holds files that are no earlier export!"},
  };
  const WithoutRights withoutRights;
  for (const Row& row : rows) {
    LogCapture log;
    EXPECT_FALSE(exchange.wCanWrite(row.directory)) << row.directory;
    EXPECT_THAT(log.lines(), ElementsAre("TNVToolLabelExchange::write: " + row.reason));
  }
  EXPECT_TRUE(exchange.wCanWrite(builder.temp / "new/deeper"));
}

namespace {

struct OddName {
  const char* what;
  std::string name;
};

/// Names that a file system takes and formats of text may not give back.
const std::vector<OddName> kOddNames{{"leading blank", " a.png"},
                                     {"blank before the ending", "a .png"},
                                     {"trailing blank in a directory", "dir /a.png"},
                                     {"line feed", "a\nb.png"},
                                     {"carriage return", "a\rb.png"},
                                     {"tab", "a\tb.png"},
                                     {"no UTF-8",
                                      "a\xff\xfe"
                                      "b.png"},
                                     {"cut UTF-8", "a\xc3.png"},
                                     {"control character",
                                      "a\x01"
                                      "b.png"},
                                     {"markup", "a&<b>\"'.png"},
                                     {"number sign", "#a.png"},
                                     {"backslash", "a\\b.png"}};

/// A set of one picture with one label.
tnv::LabelSet setOf(const std::string& picture) {
  tnv::LabelSet set;
  set.classNames = {"screw"};
  set.classNumbers = {0};
  tnv::LabelledPicture only{picture, "", {}, {}};
  tnv::FoundLabel label;
  label.box = {0.25, 0.25, 0.5, 0.5};
  set.take(only, label, false);
  set.pictures = {only};
  return set;
}

/// What became of a label on its way out and back: "came back", "rejected: why", or what was lost.
std::string wayOfLabel(const std::string& format, bool copy, const std::string& name) {
  const TempDirectory temp;
  fs::create_directories(fs::path(temp / name).parent_path());
  writePicture(temp / name, 64, 48);
  TNVToolLabelExchange out;
  out.setFormat(format);
  out.writing.copy = copy;
  out.set = setOf(temp / name);
  if (!out.write(temp / "out")) return "was not written";
  if (out.getRejected() == 1) return "rejected: " + out.rejectedOnWayOut.front().reason;
  TNVToolLabelExchange back;
  back.setFormat(format);
  if (!back.read(temp / "out")) return "cannot be read";
  if (back.getRejected() > 0) return "rejected on the way back: " + back.getRejections().front();
  if (back.set.pictures.size() != 1 || back.set.pictures[0].labels.size() != 1) return "lost";
  const std::string& path = back.set.pictures[0].path;
  if (!fs::is_regular_file(path) || readFile(path) != readFile(temp / name))
    return "another picture: " + path;
  return "came back";
}

}  // namespace

TEST(TNVToolLabelExchange, OddNamesOfPicturesComeBackOrAreRejectedWithAReason) {
  constexpr auto rejected = "rejected: name of the picture cannot be written";
  for (const std::string format : {"COCO", "Darknet", "VOC"}) {
    for (const bool copy : {false, true}) {
      for (const auto& [what, name] : kOddNames)
        EXPECT_THAT(wayOfLabel(format, copy, name), testing::AnyOf("came back", rejected))
            << format << (copy ? ", copied, " : ", ") << what;
    }
  }
}
