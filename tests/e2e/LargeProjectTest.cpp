#include <fstream>
#include <map>

#include <gtest/gtest.h>

#include "support/LogCapture.h"
#include "support/ProjectBuilder.h"

namespace {

constexpr int kRecords = 100'000;
constexpr int kMiddle = 50'000;

/// A project with one set, of which the list was written by somebody else. Only a few records have
/// a file; their pictures are named after the place in the list.
class LargeProject : public ::testing::Test {
 protected:
  LargeProject() {
    builder.project().wAddImagesToImageSet({"/pictures/first.jpg"}, {true}, "big", false);
    EXPECT_TRUE(builder.project().wUpdate(true));
    writeList();
    for (const int place : {0, 1, kMiddle - 1, kMiddle, kMiddle + 1, kRecords - 2, kRecords - 1})
      writeRecord(place);
  }

  std::string recordPath(int place) const {
    return builder.projectDirectory() + "is_big/record" + std::to_string(place) + ".xml";
  }

  static std::string picturePath(int place) {
    return "/pictures/" + std::to_string(place) + ".jpg";
  }

  void writeList() const {
    std::ofstream list(builder.projectDirectory() + "big.xml");
    list.imbue(std::locale::classic());
    list << "<?xml version=\"1.0\"?>\n<opencv_storage>\n<Count>" << kRecords << "</Count>\n";
    for (int i = 0; i < kRecords; ++i) {
      list << "<id" << i << "><DataPath>\"" << recordPath(i) << "\"</DataPath></id" << i << ">\n";
    }
    list << "</opencv_storage>\n";
  }

  void writeRecord(int place) const {
    std::ofstream(recordPath(place))
        << "<?xml version=\"1.0\"?>\n<opencv_storage>\n<UniqueName>record" + std::to_string(place)
        << "</UniqueName>\n<ImagePath>\"" << picturePath(place) << "\"</ImagePath>\n"
        << "<ImagePathAbs>\"" << picturePath(place) << "\"</ImagePathAbs>\n"
        << "<MarkCnt>0</MarkCnt>\n</opencv_storage>\n";
  }

  /// The picture of the record at that place, which is read for it.
  std::string pictureAt(int place) {
    const auto trainSets = builder.project().wGetTrainSetsFromImageSet("big");
    const WTNVTrainSet& trainSet = trainSets.at(static_cast<std::size_t>(place));
    EXPECT_TRUE(trainSet.wLoadData());
    return trainSet.getImagePath();
  }

  int count() { return builder.project().wGetTrainSetCountFromImageSet("big"); }

  LogCapture log;
  ProjectBuilder builder;
};

TEST_F(LargeProject, OpensWithAllRecordsInTheOrderOfTheList) {
  builder.reopened();
  EXPECT_EQ(count(), kRecords);
  EXPECT_EQ(builder.project().wGetTrainSets().size(), static_cast<std::size_t>(kRecords));
  for (const int place : {0, 1, kMiddle, kRecords - 1})
    EXPECT_EQ(pictureAt(place), picturePath(place));
}

TEST_F(LargeProject, RecordsMoveUpWhenOthersAreRemovedAndStaySoAfterASave) {
  builder.reopened();
  ASSERT_EQ(pictureAt(0), picturePath(0));
  ASSERT_EQ(pictureAt(kMiddle), picturePath(kMiddle));
  EXPECT_EQ(builder.project().wRemoveImagesFromImageSet(
                {picturePath(kMiddle), "/pictures/unknown.jpg", picturePath(0)}, "big"),
            2);
  ASSERT_TRUE(builder.project().wUpdate(true));
  const std::map<int, int> placesBefore = {
      {0, 1}, {kMiddle - 2, kMiddle - 1}, {kMiddle - 1, kMiddle + 1}, {kRecords - 3, kRecords - 1}};
  for (const bool saved : {false, true}) {
    if (saved) builder.reopened();
    EXPECT_EQ(count(), kRecords - 2);
    for (const auto& [place, before] : placesBefore)
      EXPECT_EQ(pictureAt(place), picturePath(before)) << "saved: " << saved;
  }
}

TEST_F(LargeProject, TakesAsManyNewPicturesAndGivesThemBack) {
  builder.reopened();
  std::vector<std::string> pictures;
  for (int i = 0; i < kRecords; ++i)
    pictures.push_back("/new/" + std::to_string(i) + ".jpg");
  pictures.push_back(pictures.front());
  const std::vector<bool> use(pictures.size(), true);
  EXPECT_EQ(builder.project().wAddImagesToImageSet(pictures, use, "new", false), kRecords);
  EXPECT_EQ(builder.project().wAddImagesToImageSet(pictures, use, "new", false), 0);
  const auto trainSets = builder.project().wGetTrainSetsFromImageSet("new");
  ASSERT_EQ(trainSets.size(), static_cast<std::size_t>(kRecords));
  EXPECT_EQ(trainSets[kMiddle].getImagePath(), pictures[kMiddle]);
  EXPECT_EQ(builder.project().wGetTrainSets().size(), static_cast<std::size_t>(2 * kRecords));

  EXPECT_EQ(builder.project().wRemoveImagesFromImageSet(pictures, "new"), kRecords);
  EXPECT_EQ(builder.project().wGetImageSets(), std::vector<std::string>{"big"});
  EXPECT_EQ(count(), kRecords);
}

}  // namespace
