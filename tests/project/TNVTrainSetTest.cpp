#include "project/TNVTrainSet.h"

#include <filesystem>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TNV_SampleBenchNative/WTNVTrainSet.h"
#include "foundation/XmlStorage.h"
#include "marks/TNVMarkCircle.h"
#include "marks/TNVMarkEllipse.h"
#include "marks/TNVMarkImage.h"
#include "marks/TNVMarkLine.h"
#include "marks/TNVMarkPoint.h"
#include "marks/TNVMarkPolyLine.h"
#include "marks/TNVMarkRect.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"
#include "support/TempDirectory.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

TNVMarkRect rectangle(double x = 0.5) {
  return {{x, 0.2}, {x + 0.1, 0.4}, false};
}

/// A kind of mark that no record knows.
class StrangeMark : public TNVMark {
 public:
  void setRelSize(cv::Point2d, cv::Point2d, cv::Size) override {}
  cv::Point2d getRelSize(cv::Size) const override { return {}; }
  int getMinConstructionPoints(bool) const override { return 0; }
  int getMaxConstructionPoints(bool) const override { return 0; }
  bool isMouseOver(cv::Point2d, cv::Size, double*) const override { return false; }
  std::string getTypeName(bool) const override { return "Strange"; }
  cv::Rect getPixelRect(cv::Size) const override { return {}; }
  Points getContour(cv::Size) const override { return {}; }
  std::vector<std::string> getPOIModes() const override { return {}; }
  bool getPOIModeSupportsValue(const std::string&) const override { return false; }
  Points getPOIsGenerated(const std::string&, cv::Size, int) const override { return {}; }
  int getPOICountForSize(cv::Size) const override { return 0; }
};

class TNVTrainSetTest : public testing::Test {
 protected:
  /// The record of a file with that content between its outermost tags, loaded.
  std::unique_ptr<TNVTrainSet> loaded(const std::string& content) {
    return loadedFrom(temp.write("record.xml", "<?xml version=\"1.0\"?>\n<opencv_storage>\n" +
                                                   content + "\n</opencv_storage>\n"));
  }

  std::unique_ptr<TNVTrainSet> loadedFrom(const std::string& path) {
    auto record = std::make_unique<TNVTrainSet>();
    record->dataPath = path;
    record->load();
    return record;
  }

  TempDirectory temp;
};

}  // namespace

TEST_F(TNVTrainSetTest, NewImageHasItsDataInMemory) {
  const TNVTrainSet record("x/a.jpg", "");
  EXPECT_EQ("x/a.jpg", record.imagePath);
  EXPECT_EQ((std::filesystem::current_path() / "x/a.jpg").string(), record.imagePathAbs);
  EXPECT_TRUE(record.dataLoaded);
  EXPECT_TRUE(record.changed);
  EXPECT_FALSE(record.current);
  EXPECT_EQ(0, record.markIdNext);
  EXPECT_EQ(-1, record.workflow);
  EXPECT_EQ("", record.dataPath);
  EXPECT_EQ("", record.uniqueName);
  EXPECT_EQ("", record.comment);
  EXPECT_FALSE(record.useSpecialTest);
  EXPECT_FALSE(record.remove);
  EXPECT_FALSE(record.imageLoaded);
  EXPECT_EQ(0, record.imageWidth);
  EXPECT_EQ(nullptr, record.designedMark);
}

TEST_F(TNVTrainSetTest, BasePathTakesThePlaceOfTheImagesDirectory) {
  EXPECT_EQ("/base/a.jpg", TNVTrainSet("x/a.jpg", "/base/").imagePathAbs);
}

TEST_F(TNVTrainSetTest, RecordToBeLoadedIsEmpty) {
  const TNVTrainSet record;
  EXPECT_EQ("", record.imagePath);
  EXPECT_EQ("", record.imagePathAbs);
  EXPECT_FALSE(record.dataLoaded);
  EXPECT_TRUE(record.changed);
}

TEST_F(TNVTrainSetTest, DataPathIsGivenOnceAndStays) {
  TNVTrainSet record("a.jpg", "");
  const std::string path = record.getDataPath("one/");
  EXPECT_EQ("one/" + record.uniqueName + ".xml", path);
  EXPECT_EQ(path, record.getDataPath("two/"));
}

TEST_F(TNVTrainSetTest, FileHasItsNodesInOrder) {
  TNVTrainSet record("a.jpg", "/base/");
  record.comment = "note";
  record.useSpecialTest = true;
  record.workflow = 4;
  record.addMark(rectangle());
  record.addMark(rectangle());
  EXPECT_TRUE(record.save(temp.path()));
  const cv::FileStorage file(record.dataPath, cv::FileStorage::READ);
  std::vector<std::string> names;
  for (const cv::FileNode& node : file.root())
    names.push_back(node.name());
  EXPECT_THAT(names, ElementsAre("UniqueName", "ImagePath", "ImagePathAbs", "ImageCachePath",
                                 "ImageCacheSize", "Comment", "MarkCnt", "Special", "Remove",
                                 "Workflow", "Mark0", "Mark1"));
  EXPECT_EQ(record.uniqueName, static_cast<std::string>(file["UniqueName"]));
  EXPECT_EQ("a.jpg", static_cast<std::string>(file["ImagePath"]));
  EXPECT_EQ("/base/a.jpg", static_cast<std::string>(file["ImagePathAbs"]));
  EXPECT_EQ(2u, file["ImageCacheSize"].size());
  EXPECT_EQ(2, static_cast<int>(file["MarkCnt"]));
  EXPECT_EQ(1, static_cast<int>(file["Special"]));
  EXPECT_EQ(0, static_cast<int>(file["Remove"]));
  EXPECT_EQ(4, static_cast<int>(file["Workflow"]));
}

TEST_F(TNVTrainSetTest, EverythingStoredComesBack) {
  TNVTrainSet record("a.jpg", "/base/");
  record.comment = "two\nlines & \"quotes\"";
  record.useSpecialTest = true;
  record.remove = true;
  record.workflow = 3;
  record.imageCachePath = "cache/x.jpg";
  record.imageCacheSize = {4000, 3000};
  record.addMark(rectangle(0.3))->classIdx = {2, 1};
  ASSERT_TRUE(record.save(temp.path()));
  const auto back = loadedFrom(record.dataPath);
  EXPECT_EQ(record.uniqueName, back->uniqueName);
  EXPECT_EQ("a.jpg", back->imagePath);
  EXPECT_EQ("/base/a.jpg", back->imagePathAbs);
  EXPECT_EQ(record.comment, back->comment);
  EXPECT_TRUE(back->useSpecialTest);
  EXPECT_TRUE(back->remove);
  EXPECT_EQ(3, back->workflow);
  EXPECT_EQ("cache/x.jpg", back->imageCachePath);
  EXPECT_EQ(cv::Size(4000, 3000), back->imageCacheSize);
  ASSERT_THAT(back->marks, SizeIs(1));
  EXPECT_EQ(record.marks[0]->center, back->marks[0]->center);
  EXPECT_THAT(back->marks[0]->classIdx, ElementsAre(2, 1));
}

TEST_F(TNVTrainSetTest, SavingALoadedRecordAgainGivesTheSameBytes) {
  TNVTrainSet record("a.jpg", "/base/");
  record.comment = "x";
  record.addMark(rectangle(1.0 / 3.0));
  ASSERT_TRUE(record.save(temp.path()));
  const std::string before = readFile(record.dataPath);
  const auto back = loadedFrom(record.dataPath);
  back->changed = true;
  ASSERT_TRUE(back->save(temp.path()));
  EXPECT_EQ(before, readFile(record.dataPath));
}

TEST_F(TNVTrainSetTest, RecordThatWasNeverLoadedIsNotWritten) {
  temp.write("kept.xml", "as it was");
  TNVTrainSet known;
  known.dataPath = temp / "kept.xml";
  TNVTrainSet unknown;
  const LogCapture log;
  known.save(temp.path());
  unknown.save(temp.path());
  EXPECT_THAT(log.lines(), ElementsAre("TNVTrainSet::save: Cannot save, data not loaded!",
                                       "TNVTrainSet::save: Cannot save, data not loaded!"));
  EXPECT_EQ("as it was", readFile(temp / "kept.xml"));
  EXPECT_EQ(temp.path() + unknown.uniqueName + ".xml", unknown.dataPath);
  EXPECT_FALSE(std::filesystem::exists(unknown.dataPath));
}

TEST_F(TNVTrainSetTest, UnchangedRecordIsNotWritten) {
  TNVTrainSet record("a.jpg", "/base/");
  ASSERT_TRUE(record.save(temp.path()));
  EXPECT_FALSE(record.changed);
  temp.write(record.uniqueName + ".xml", "untouched");
  EXPECT_TRUE(record.save(temp.path()));
  EXPECT_EQ("untouched", readFile(record.dataPath));
}

TEST_F(TNVTrainSetTest, CurrentRecordStaysChanged) {
  TNVTrainSet record("a.jpg", "/base/");
  record.current = true;
  ASSERT_TRUE(record.save(temp.path()));
  EXPECT_TRUE(record.changed);
  EXPECT_TRUE(std::filesystem::exists(record.dataPath));
}

TEST_F(TNVTrainSetTest, RecordThatCannotBeWrittenStaysChanged) {
  TNVTrainSet record("a.jpg", "/base/");
  const LogCapture log;
  EXPECT_FALSE(record.save(temp / "missing/"));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVTrainSet::save: Could not write '" + record.dataPath + "'!"));
  EXPECT_TRUE(record.changed);
}

TEST_F(TNVTrainSetTest, LoadingWithoutAPathOrAFileIsLogged) {
  TNVTrainSet record;
  const LogCapture log;
  record.load();
  record.dataPath = temp / "missing.xml";
  record.load();
  EXPECT_THAT(log.lines(), ElementsAre("TNVTrainSet::load: Datapath is empty!",
                                       "TNVTrainSet::load: File does not exist!"));
  EXPECT_FALSE(record.dataLoaded);
}

TEST_F(TNVTrainSetTest, FileWithoutMarks) {
  const auto record = loaded("<MarkCnt>0</MarkCnt>");
  EXPECT_THAT(record->marks, IsEmpty());
  EXPECT_FALSE(record->changed);
  EXPECT_TRUE(record->dataLoaded);
}

TEST_F(TNVTrainSetTest, MissingNodesTakeTheirDefaults) {
  const auto record = loaded("<MarkCnt>0</MarkCnt>");
  EXPECT_EQ("", record->uniqueName);
  EXPECT_EQ("", record->imagePath);
  EXPECT_EQ(0, record->workflow);
  EXPECT_FALSE(record->useSpecialTest);
  EXPECT_EQ(cv::Size(), record->imageCacheSize);
}

TEST_F(TNVTrainSetTest, MarkOfAnUnknownTypeAddsNothing) {
  const std::string rect = "<Type>Rect</Type><Center>0.5 0.5</Center><Size>0.1 0.1</Size>";
  const LogCapture log;
  const auto record =
      loaded("<MarkCnt>2</MarkCnt><Mark0>" + rect + "</Mark0><Mark1><Type>Spiral</Type></Mark1>");
  EXPECT_THAT(record->marks, SizeIs(1));
  EXPECT_EQ("", log.text());
}

TEST_F(TNVTrainSetTest, RectangleFromItsCentreIsLostOnReloading) {
  TNVTrainSet record("a.jpg", "/base/");
  record.addMark(TNVMarkRect({0.5, 0.5}, {0.6, 0.7}, true));
  EXPECT_EQ("Rect Center", record.marks[0]->type);
  ASSERT_TRUE(record.save(temp.path()));
  EXPECT_THAT(loadedFrom(record.dataPath)->marks, IsEmpty());
}

TEST_F(TNVTrainSetTest, MarksOfBothKindsAreReadAsRectangles) {
  const auto record = loaded(
      "<MarkCnt>2</MarkCnt>"
      "<Mark0><Type>Image</Type><Center>0.5 0.5</Center><Size>0.9 0.9</Size></Mark0>"
      "<Mark1><Type>Rect</Type><Center>0.1 0.2</Center><Size>0.3 0.4</Size></Mark1>");
  ASSERT_THAT(record->marks, SizeIs(2));
  EXPECT_EQ("Image", record->marks[0]->type);
  EXPECT_EQ("Rect", record->marks[0]->getTypeName(false));
  EXPECT_EQ(cv::Point2d(0.3, 0.4), record->marks[1]->getRelSize({1, 1}));
}

TEST_F(TNVTrainSetTest, CacheSizeOfAnotherLengthIsNone) {
  EXPECT_EQ(cv::Size(), loaded("<ImageCacheSize>5</ImageCacheSize>")->imageCacheSize);
  EXPECT_EQ(cv::Size(), loaded("<ImageCacheSize>5 6 7</ImageCacheSize>")->imageCacheSize);
  EXPECT_EQ(cv::Size(5, 6), loaded("<ImageCacheSize>5 6</ImageCacheSize>")->imageCacheSize);
}

TEST_F(TNVTrainSetTest, CacheSizeThatNoPictureHasIsNone) {
  EXPECT_EQ(cv::Size(),
            loaded("<ImageCacheSize>2147483647 2147483647</ImageCacheSize>")->imageCacheSize);
}

TEST_F(TNVTrainSetTest, LoadingTwiceAddsTheMarksTwice) {
  TNVTrainSet record("a.jpg", "/base/");
  record.addMark(rectangle());
  ASSERT_TRUE(record.save(temp.path()));
  const auto back = loadedFrom(record.dataPath);
  back->load();
  EXPECT_THAT(back->marks, SizeIs(2));
}

TEST_F(TNVTrainSetTest, IdsAreGivenAnewInTheOrderOfTheFile) {
  TNVTrainSet record("a.jpg", "/base/");
  record.markIdNext = 7;
  record.addMark(rectangle());
  record.markIdNext = 9;
  record.addMark(rectangle());
  ASSERT_TRUE(record.save(temp.path()));
  const auto back = loadedFrom(record.dataPath);
  EXPECT_EQ(0, back->marks[0]->uniqueId);
  EXPECT_EQ(1, back->marks[1]->uniqueId);
  EXPECT_EQ(2, back->addMark(rectangle())->uniqueId);
}

TEST_F(TNVTrainSetTest, AddedMarkIsACopyWithANewTag) {
  TNVTrainSet record("a.jpg", "/base/");
  const TNVMarkRect source({0.5, 0.5}, {0.6, 0.7}, true);
  const TNVMark* first = record.addMark(source);
  const TNVMark* second = record.addMark(source);
  EXPECT_NE(&source, first);
  EXPECT_EQ("Rect Center", first->type);
  EXPECT_EQ(source.center, first->center);
  EXPECT_EQ(0, first->uniqueId);
  EXPECT_EQ(1, second->uniqueId);
  EXPECT_EQ(-1, source.uniqueId);
  EXPECT_THAT(record.markPointers(), ElementsAre(first, second));
}

TEST_F(TNVTrainSetTest, WholeImageMarkIsAdoptedAsARectangle) {
  TNVTrainSet record("a.jpg", "/base/");
  const TNVMark* adopted = record.addMark(TNVMarkImage());
  EXPECT_EQ(nullptr, dynamic_cast<const TNVMarkImage*>(adopted));
  EXPECT_EQ("Rect", adopted->getTypeName(false));
  EXPECT_EQ("Rect", adopted->type);
}

TEST_F(TNVTrainSetTest, UnknownKindIsNotAdopted) {
  TNVTrainSet record("a.jpg", "/base/");
  const LogCapture log;
  EXPECT_EQ(nullptr, record.addMark(StrangeMark()));
  EXPECT_THAT(log.lines(), ElementsAre("TNVTrainSet::addMark: Mark type not compatible!"));
  EXPECT_THAT(record.marks, IsEmpty());
}

TEST_F(TNVTrainSetTest, RemovedMarkStaysReadable) {
  TNVTrainSet record("a.jpg", "/base/");
  TNVMark* mark = record.addMark(rectangle());
  record.removeMark(mark);
  EXPECT_THAT(record.marks, IsEmpty());
  EXPECT_EQ("Rect", mark->getTypeName(false));
  const LogCapture log;
  record.removeMark(mark);
  EXPECT_THAT(log.lines(), ElementsAre("TNVTrainSet::removeMark: Mark not found!"));
}

TEST_F(TNVTrainSetTest, DamagedMarkThrowsAndLeavesNothingHalfRead) {
  const std::string odd =
      "<MarkCnt>2</MarkCnt><ImagePath>\"a.jpg\"</ImagePath><Mark0><Type>Rect</Type></Mark0>"
      "<Mark1><Type>Rect</Type><POIs>1. 2. 3.</POIs></Mark1>";
  temp.write("record.xml",
             "<?xml version=\"1.0\"?>\n<opencv_storage>" + odd + "</opencv_storage>\n");
  TNVTrainSet record;
  record.dataPath = temp / "record.xml";
  EXPECT_THROW(record.load(), cv::Exception);
  EXPECT_FALSE(record.dataLoaded);
  EXPECT_THAT(record.marks, IsEmpty());
}

TEST_F(TNVTrainSetTest, FileCutAnywhereIsNeverTakenForAnEmptyRecord) {
  TNVTrainSet record("a.jpg", "/base/");
  record.addMark(rectangle());
  ASSERT_TRUE(record.save(temp.path()));
  const std::string whole = readFile(record.dataPath);
  // The last two bytes are the end of the closing tag and a line feed.
  for (std::size_t length = 1; length < whole.size() - 1; ++length) {
    temp.write("cut.xml", whole.substr(0, length));
    TNVTrainSet cut;
    cut.dataPath = temp / "cut.xml";
    EXPECT_THROW(cut.load(), cv::Exception) << length;
    EXPECT_FALSE(cut.dataLoaded);
  }
}

TEST_F(TNVTrainSetTest, WhatADamagedFileThrowsNamesTheFileOnce) {
  for (const std::string content :
       {"no XML", "<Workflow>1.5.5 </Workflow>", "<Comment>a \"b c</Comment>",
        "<MarkCnt>1</MarkCnt><Mark0><Type>Point</Type><ClassIdx>a b</ClassIdx></Mark0>"}) {
    TNVTrainSet record;
    record.dataPath = temp.write(
        "damaged.xml", "<?xml version=\"1.0\"?><opencv_storage>" + content + "</opencv_storage>");
    try {
      record.load();
      ADD_FAILURE() << content;
    } catch (const cv::Exception& error) {
      const auto place = error.err.find(record.dataPath);
      ASSERT_NE(place, std::string::npos) << error.err;
      EXPECT_EQ(error.err.find(record.dataPath, place + 1), std::string::npos) << error.err;
      EXPECT_THAT(error.what(), testing::HasSubstr(record.dataPath));
    }
  }
}

TEST_F(TNVTrainSetTest, EmptyFileIsNoRecord) {
  const LogCapture log;
  const auto record = loadedFrom(temp.write("empty.xml", ""));
  EXPECT_THAT(log.lines(), ElementsAre("TNVTrainSet::load: File is empty!"));
  EXPECT_FALSE(record->dataLoaded);
}

TEST_F(TNVTrainSetTest, HugeMarkCountsEnd) {
  for (const char* count : {"2147483647", "\"text\"", "1e300", "-5"}) {
    EXPECT_THAT(loaded(std::string("<MarkCnt>") + count + "</MarkCnt>")->marks, IsEmpty()) << count;
  }
}

TEST_F(TNVTrainSetTest, CommentThatIsTooLongIsRefused) {
  TNVTrainSet record("a.jpg", "/base/");
  EXPECT_TRUE(record.setComment(std::string(4095, 'x')));
  EXPECT_TRUE(record.save(temp.path()));
  const LogCapture log;
  EXPECT_FALSE(record.setComment(std::string(4096, 'y')));
  EXPECT_THAT(log.lines(), ElementsAre("TNVTrainSet::setComment: Comment is too long, 4095 bytes "
                                       "are the most!"));
  EXPECT_EQ(std::string(4095, 'x'), record.comment);
}

TEST_F(TNVTrainSetTest, HandleShowsPathMarksAndSize) {
  TNVTrainSet record(writePicture(temp / "a.png", 64, 48), "");
  record.addMark(rectangle());
  record.loadImage();
  const WTNVTrainSet handle(&record);
  EXPECT_EQ(temp / "a.png", handle.getImagePath());
  EXPECT_EQ(1, handle.getMarkCount());
  int width = 0;
  int height = 0;
  handle.getImageSize(width, height);
  EXPECT_EQ(64, width);
  EXPECT_EQ(48, height);
  EXPECT_EQ(64, record.imageWidth);
  record.imageWidth = 7;
  record.imageHeight = 8;
  handle.getImageSize(width, height);
  EXPECT_EQ(7, width);
  EXPECT_EQ(8, height);
}

TEST_F(TNVTrainSetTest, HandleReadsTheDataOnce) {
  TNVTrainSet record("a.jpg", "/base/");
  record.addMark(rectangle());
  ASSERT_TRUE(record.save(temp.path()));
  TNVTrainSet back;
  back.dataPath = record.dataPath;
  const WTNVTrainSet handle(&back);
  EXPECT_TRUE(handle.wLoadData());
  EXPECT_TRUE(handle.wLoadData());
  EXPECT_EQ(1, handle.getMarkCount());
  TNVTrainSet missing;
  missing.dataPath = temp / "missing.xml";
  EXPECT_FALSE(WTNVTrainSet(&missing).wLoadData());
}

TEST_F(TNVTrainSetTest, DestroyingAHandleLeavesTheRecord) {
  TNVTrainSet record("a.jpg", "/base/");
  {
    WTNVTrainSet handle(&record);
    const WTNVTrainSet copy(handle);
    EXPECT_EQ(&record, copy.getNativeTrainSet());
    handle = WTNVTrainSet();
    EXPECT_EQ(nullptr, handle.getNativeTrainSet());
  }
  EXPECT_EQ("a.jpg", record.imagePath);
}

TEST_F(TNVTrainSetTest, LoadingAgainStartsTheIdsAnew) {
  TNVTrainSet record("a.jpg", "/base/");
  record.addMark(rectangle());
  ASSERT_TRUE(record.save(temp.path()));
  const auto back = loadedFrom(record.dataPath);
  back->load();
  EXPECT_EQ(0, back->marks.at(1)->uniqueId);
}

TEST_F(TNVTrainSetTest, SavingNamesARecordThatHasOnlyAPath) {
  TNVTrainSet record("a.jpg", "/base/");
  record.dataPath = temp / "given.xml";
  ASSERT_TRUE(record.save(temp.path()));
  EXPECT_NE("", record.uniqueName);
  EXPECT_TRUE(std::filesystem::exists(temp / "given.xml"));
}

TEST_F(TNVTrainSetTest, MarksOfEachKindAreReadInTheOrderOfTheFile) {
  const std::vector<std::string> types{"Rect", "Image",    "Point",  "Circle",
                                       "Line", "PolyLine", "Ellipse"};
  std::string content = "<MarkCnt>7</MarkCnt>";
  for (std::size_t i = 0; i < types.size(); ++i) {
    const std::string tag = "Mark" + std::to_string(i);
    content += "<" + tag + "><Type>" + types[i] + "</Type></" + tag + ">";
  }
  const auto record = loaded(content);
  ASSERT_THAT(record->marks, SizeIs(types.size()));
  for (std::size_t i = 0; i < types.size(); ++i) {
    EXPECT_EQ(record->marks[i]->type, types[i]);
    EXPECT_EQ(record->marks[i]->getTypeName(false), i == 1 ? "Rect" : types[i]);
    EXPECT_EQ(record->marks[i]->uniqueId, static_cast<int>(i));
  }
}

TEST_F(TNVTrainSetTest, NamesOfFormsAreNoKindsToRead) {
  for (const char* form :
       {"Rect Center", "Circle Multiple", "Ellipse Multiple", "PolyLine Closed", "point", ""})
    EXPECT_THAT(
        loaded("<MarkCnt>1</MarkCnt><Mark0><Type>" + std::string(form) + "</Type></Mark0>")->marks,
        IsEmpty());
}

TEST_F(TNVTrainSetTest, EachKindIsAdoptedAsItself) {
  TNVTrainSet record("a.jpg", "/base/");
  TNVMarkCircle circle({0.5, 0.5}, {0.6, 0.5});
  TNVMarkEllipse ellipse({0.5, 0.5}, {0.6, 0.5}, {0.5, 0.7});
  TNVMarkLine line({0.1, 0.2}, {0.3, 0.4});
  TNVMarkPolyLine path({{0.1, 0.2}, {0.3, 0.4}, {0.5, 0.1}}, true);
  EXPECT_NE(dynamic_cast<TNVMarkPoint*>(record.addMark(TNVMarkPoint({0.1, 0.9}))), nullptr);
  const auto* adoptedCircle = dynamic_cast<TNVMarkCircle*>(record.addMark(circle));
  const auto* adoptedEllipse = dynamic_cast<TNVMarkEllipse*>(record.addMark(ellipse));
  const auto* adoptedLine = dynamic_cast<TNVMarkLine*>(record.addMark(line));
  const auto* adoptedPath = dynamic_cast<TNVMarkPolyLine*>(record.addMark(path));
  ASSERT_TRUE(adoptedCircle && adoptedEllipse && adoptedLine && adoptedPath);
  EXPECT_EQ(record.marks[0]->center, cv::Point2d(0.1, 0.9));
  EXPECT_EQ(adoptedCircle->radius, circle.radius);
  EXPECT_EQ(adoptedEllipse->pointA, ellipse.pointA);
  EXPECT_EQ(adoptedEllipse->pointB, ellipse.pointB);
  EXPECT_EQ(adoptedLine->pointA, line.pointA);
  EXPECT_EQ(adoptedLine->pointB, line.pointB);
  EXPECT_EQ(adoptedPath->polyPoints, path.polyPoints);
  EXPECT_TRUE(adoptedPath->closed);
}

TEST_F(TNVTrainSetTest, AllKindsButTheRectangleAreAdoptedUnderTheirOwnName) {
  TNVTrainSet record("a.jpg", "/base/");
  TNVMarkCircle circle({0.5, 0.5}, {0.6, 0.5});
  circle.type = "Circle Multiple";
  EXPECT_EQ(record.addMark(circle)->type, "Circle");
  TNVMarkPolyLine path({{0.1, 0.2}, {0.3, 0.4}}, true);
  path.type = "PolyLine Closed";
  EXPECT_EQ(record.addMark(path)->type, "PolyLine");
  TNVMarkEllipse ellipse({0.5, 0.5}, {0.6, 0.5}, {0.5, 0.7});
  ellipse.type = "Ellipse Multiple";
  EXPECT_EQ(record.addMark(ellipse)->type, "Ellipse");
  TNVMarkLine line({0.1, 0.2}, {0.3, 0.4});
  line.type = "Rect";
  EXPECT_EQ(record.addMark(line)->type, "Line");
  TNVMarkPoint point({0.1, 0.9});
  point.type = "Circle";
  EXPECT_EQ(record.addMark(point)->type, "Point");
}
