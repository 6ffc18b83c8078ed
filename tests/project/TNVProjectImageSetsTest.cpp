#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "TNV_SampleBenchNative/WTNVProject.h"
#include "foundation/XmlStorage.h"
#include "generation/TNVGenerationDarknet.h"
#include "marks/TNVMarkRect.h"
#include "project/TNVProject.h"
#include "project/TNVTrainSet.h"
#include "support/LogCapture.h"
#include "support/ProjectBuilder.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::UnorderedElementsAre;

namespace {

namespace fs = std::filesystem;

class ImageSetsTest : public testing::Test {
 protected:
  WTNVProject& project() { return builder.project(); }
  TNVProject& native() { return *project().getNativeProject(); }
  TNVTrainSet& record(std::size_t i, const std::string& set = "set") {
    return *native().imageSets.at(set).at(i);
  }
  int add(const std::vector<std::string>& images, const std::string& set = "set",
          bool sameDirectory = false) {
    return project().wAddImagesToImageSet(images, std::vector<bool>(images.size(), true), set,
                                          sameDirectory);
  }
  std::string inProject(const std::string& name) { return builder.projectDirectory() + name; }
  bool isInProject(const std::string& name) { return fs::exists(inProject(name)); }
  std::vector<std::string> entriesOf(const std::string& directory) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(inProject(directory))) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }

  /// The project again, with a list file of that content for the set "set".
  WTNVProject& withList(const std::string& content) {
    builder.withPictures({"a.png"});
    EXPECT_TRUE(project().wUpdate(true));
    builder.temp.write("projects/demo/set.xml", "<?xml version=\"1.0\"?>\n<opencv_storage>\n" +
                                                    content + "</opencv_storage>\n");
    return builder.reopened();
  }

  ProjectBuilder builder;
};

}  // namespace

TEST_F(ImageSetsTest, ReadsImagesByTheTypesOfTheProject) {
  builder.temp.write("in/a.jpg", "");
  builder.temp.write("in/b.PNG", "");
  builder.temp.write("in/c.txt", "");
  builder.temp.write("in/d.bmp", "");
  builder.temp.write("in/sub/e.jpeg", "");
  const std::string directory = builder.temp / "in";
  EXPECT_THAT(project().wReadImagesFromDirectory(directory, false),
              UnorderedElementsAre(directory + "/a.jpg", directory + "/b.PNG"));
  EXPECT_THAT(
      project().wReadImagesFromDirectory(directory, true),
      UnorderedElementsAre(directory + "/a.jpg", directory + "/b.PNG", directory + "/sub/e.jpeg"));
}

TEST_F(ImageSetsTest, ReadingAMissingDirectoryIsLogged) {
  const LogCapture log;
  EXPECT_THAT(project().wReadImagesFromDirectory(builder.temp / "missing", false), IsEmpty());
  EXPECT_THAT(log.lines(), ElementsAre("TNVProject::readImagesFromDirectory: Directory '" +
                                       (builder.temp / "missing") + "' does not exist!"));
}

TEST_F(ImageSetsTest, ListsOfDifferentLengthAndEmptyOnesAddNothing) {
  const LogCapture log;
  EXPECT_EQ(0, project().wAddImagesToImageSet({"a.jpg"}, {}, "set", false));
  EXPECT_EQ(0, project().wAddImagesToImageSet({}, {}, "set", false));
  EXPECT_THAT(log.lines(), ElementsAre("TNVProject::addImages: Size not equal!",
                                       "TNVProject::addImages: No images to add!"));
  EXPECT_THAT(project().wGetImageSets(), IsEmpty());
}

TEST_F(ImageSetsTest, SetNameThatIsAPathIsRefused) {
  for (const char* name : {"../x", "a/b", "", ".", "..", "a\\b"}) {
    const LogCapture log;
    EXPECT_EQ(0, add({"a.jpg"}, name)) << name;
    EXPECT_THAT(log.lines(), ElementsAre("TNVProject::addImages: Image set name must not be empty, "
                                         "a path or longer than 240 bytes!"));
  }
  EXPECT_THAT(project().wGetImageSets(), IsEmpty());
}

TEST_F(ImageSetsTest, SetNameThatIsTooLongForItsFilesIsRefused) {
  const std::string longest(240, 's');
  EXPECT_EQ(0, add({"a.jpg"}, longest + "s"));
  EXPECT_THAT(project().wGetImageSets(), IsEmpty());
  EXPECT_EQ(1, add({"a.jpg"}, longest));
  ASSERT_TRUE(project().wUpdate(true));
  builder.reopened();
  EXPECT_EQ(1, project().wGetTrainSetCountFromImageSet(longest));
}

TEST_F(ImageSetsTest, SetNameOfASettingsFileThatIsTooLongIsPassedOver) {
  builder.withPictures({"a.png"});
  ASSERT_TRUE(project().wUpdate(true));
  const std::string settings = readFile(inProject("demo.cfg"));
  builder.temp.write("projects/demo/demo.cfg", settings + "Source.Images.Filelists = \"set\",\"" +
                                                   std::string(300, 's') + "\"\n");
  builder.reopened();
  EXPECT_THAT(project().wGetImageSets(), ElementsAre("set"));
}

TEST_F(ImageSetsTest, AnImageIsCountedOnce) {
  const std::string picture = builder.picture("a.png");
  EXPECT_EQ(1, add({picture, picture}));
  EXPECT_EQ(0, add({picture}));
  EXPECT_EQ(1, project().wGetTrainSetCountFromImageSet("set"));
}

TEST_F(ImageSetsTest, AnImageIsTheSameByItsAbsolutePath) {
  EXPECT_EQ(1, add({"x/a.png"}));
  EXPECT_EQ(0, add({(fs::current_path() / "x/a.png").string()}));
  EXPECT_EQ(0, add({"./y/../x/a.png"}));
}

TEST_F(ImageSetsTest, AnImageMayBeInTwoSets) {
  const std::string picture = builder.picture("a.png");
  EXPECT_EQ(1, add({picture}, "one"));
  EXPECT_EQ(1, add({picture}, "two"));
  EXPECT_THAT(project().wGetTrainSets(), SizeIs(2));
}

TEST_F(ImageSetsTest, UnusedImagesAreNotAddedButTheSetIsMade) {
  EXPECT_EQ(0, project().wAddImagesToImageSet({"a.jpg", "b.jpg"}, {false, false}, "set", false));
  EXPECT_THAT(project().wGetImageSets(), ElementsAre("set"));
  EXPECT_EQ(1, project().wAddImagesToImageSet({"a.jpg", "b.jpg"}, {false, true}, "set", false));
  EXPECT_EQ("b.jpg", project().wGetTrainSetsFromImageSet("set").at(0).getImagePath());
}

TEST_F(ImageSetsTest, SameDirectoryTakesAllImagesToLieBesideTheFirst) {
  EXPECT_EQ(2, add({"one/a.jpg", "two/b.jpg"}, "set", true));
  EXPECT_EQ((fs::current_path() / "one/a.jpg").string(), record(0).imagePathAbs);
  EXPECT_EQ((fs::current_path() / "one/b.jpg").string(), record(1).imagePathAbs);
  EXPECT_EQ("two/b.jpg", record(1).imagePath);
}

TEST_F(ImageSetsTest, SetsAreListedByNameAndTrainSetsSetBySet) {
  add({"b.jpg", "a.jpg"}, "zebra");
  add({"c.jpg"}, "ant");
  EXPECT_THAT(project().wGetImageSets(), ElementsAre("ant", "zebra"));
  EXPECT_THAT(native().imageLists, ElementsAre("ant", "zebra"));
  std::vector<std::string> paths;
  for (const WTNVTrainSet& trainSet : project().wGetTrainSets()) {
    paths.push_back(trainSet.getImagePath());
  }
  EXPECT_THAT(paths, ElementsAre("c.jpg", "b.jpg", "a.jpg"));
}

TEST_F(ImageSetsTest, UnknownSetsAreLogged) {
  const LogCapture log;
  EXPECT_THAT(project().wGetTrainSetsFromImageSet("x"), IsEmpty());
  EXPECT_EQ(0, project().wGetTrainSetCountFromImageSet("x"));
  EXPECT_EQ(0, project().wRemoveImagesFromImageSet({"a"}, "x"));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVProject::getImagesFromImageSet: Image set not found!",
                          "TNVProject::getTrainSetCountFromImageSet: Image set not found!",
                          "TNVProject::removeImagesFromImageSet: Image set not found!"));
}

TEST_F(ImageSetsTest, GeneratorHearsOfEveryChange) {
  project().wSetGeneration("Darknet");
  const LogCapture log;
  add({"a.jpg", "b.jpg"});
  project().wRemoveImagesFromImageSet({"a.jpg"}, "set");
  EXPECT_THAT(log.lines(), ElementsAre("Set Trainsets 2", "Set Trainsets 1"));
  EXPECT_THAT(native().generation->trainSets, SizeIs(1));
}

TEST_F(ImageSetsTest, WithoutAGeneratorNobodyIsTold) {
  const LogCapture log;
  add({"a.jpg"});
  EXPECT_EQ("", log.text());
}

TEST_F(ImageSetsTest, RemovesTheFirstRecordOfEachText) {
  add({"x/a.jpg", "b.jpg", "c.jpg"});
  EXPECT_EQ(2,
            project().wRemoveImagesFromImageSet({"c.jpg", "missing", "x/a.jpg", "c.jpg"}, "set"));
  EXPECT_EQ("b.jpg", project().wGetTrainSetsFromImageSet("set").at(0).getImagePath());
}

TEST_F(ImageSetsTest, RemovingByAnotherFormOfThePathFindsNothing) {
  add({"./a.jpg"});
  EXPECT_EQ(0, project().wRemoveImagesFromImageSet({"a.jpg"}, "set"));
  EXPECT_EQ(1, project().wGetTrainSetCountFromImageSet("set"));
}

TEST_F(ImageSetsTest, SetWithoutImagesIsGoneWithTheNextFullUpdate) {
  builder.withPictures({"a.png"}).withPictures({"b.png"}, "kept");
  ASSERT_TRUE(project().wUpdate(true));
  ASSERT_TRUE(isInProject("is_set/") && isInProject("set.xml"));
  EXPECT_EQ(1, project().wRemoveImagesFromImageSet({builder.temp / "pictures/a.png"}, "set"));
  EXPECT_THAT(project().wGetImageSets(), ElementsAre("kept"));
  ASSERT_TRUE(project().wUpdate(false));
  EXPECT_TRUE(isInProject("is_set/"));
  ASSERT_TRUE(project().wUpdate(true));
  EXPECT_FALSE(isInProject("is_set/"));
  EXPECT_FALSE(isInProject("set.xml"));
  EXPECT_TRUE(isInProject("is_kept/") && isInProject("kept.xml"));
  EXPECT_THAT(native().imageLists, ElementsAre("kept"));
}

TEST_F(ImageSetsTest, FullUpdateKeepsOtherDirectories) {
  builder.temp.write("projects/demo/samples/x", "");
  builder.temp.write("projects/demo/his_set/x", "");
  ASSERT_TRUE(project().wUpdate(true));
  EXPECT_TRUE(isInProject("samples/x") && isInProject("his_set/x"));
}

TEST_F(ImageSetsTest, FullUpdateWritesTheListAndARecordPerImage) {
  builder.withPictures({"a.png", "b.png"});
  ASSERT_TRUE(project().wUpdate(true));
  EXPECT_THAT(entriesOf("is_set"), SizeIs(2));
  EXPECT_THAT(entriesOf("is_set"), testing::Each(MatchesRegex("[0-9]{15,}\\.xml")));
  const cv::FileStorage list(inProject("set.xml"), cv::FileStorage::READ);
  EXPECT_EQ(2, static_cast<int>(list["Count"]));
  EXPECT_EQ(record(0).dataPath, static_cast<std::string>(list["id0"]["DataPath"]));
  EXPECT_EQ(record(1).dataPath, static_cast<std::string>(list["id1"]["DataPath"]));
  EXPECT_EQ(inProject("is_set/") + record(0).uniqueName + ".xml", record(0).dataPath);
  EXPECT_FALSE(record(0).changed);
}

TEST_F(ImageSetsTest, RecordsComeBackWithoutTheirData) {
  builder.withPictures({"a.png", "b.png"});
  ASSERT_TRUE(project().wUpdate(true));
  builder.reopened();
  ASSERT_THAT(project().wGetTrainSets(), SizeIs(2));
  EXPECT_FALSE(record(0).dataLoaded);
  EXPECT_EQ("", project().wGetTrainSets()[0].getImagePath());
  EXPECT_TRUE(project().wGetTrainSets()[0].wLoadData());
  EXPECT_EQ(builder.temp / "pictures/a.png", project().wGetTrainSets()[0].getImagePath());
}

TEST_F(ImageSetsTest, RecordThatWasNeverLoadedIsListedAndNotRewritten) {
  builder.withPictures({"a.png"});
  ASSERT_TRUE(project().wUpdate(true));
  const std::string file = record(0).dataPath;
  const std::string before = readFile(file);
  builder.reopened();
  const LogCapture log;
  ASSERT_TRUE(project().wUpdate(true));
  EXPECT_THAT(log.lines(), ElementsAre("TNVTrainSet::save: Cannot save, data not loaded!"));
  EXPECT_EQ(before, readFile(file));
  EXPECT_THAT(builder.reopened().wGetTrainSets(), SizeIs(1));
}

TEST_F(ImageSetsTest, QuickUpdateWritesChangedRecordsAlone) {
  builder.withPictures({"a.png", "b.png"});
  ASSERT_TRUE(project().wUpdate(true));
  builder.temp.write("projects/demo/set.xml", "untouched");
  fs::remove(record(0).dataPath);
  fs::remove(record(1).dataPath);
  record(1).changed = true;
  ASSERT_TRUE(project().wUpdate(false));
  EXPECT_FALSE(fs::exists(record(0).dataPath));
  EXPECT_TRUE(fs::exists(record(1).dataPath));
  EXPECT_EQ("untouched", readFile(inProject("set.xml")));
}

TEST_F(ImageSetsTest, QuickUpdateLoadsAChangedRecordFirst) {
  builder.withPictures({"a.png"});
  ASSERT_TRUE(project().wUpdate(true));
  builder.reopened();
  ASSERT_TRUE(project().wUpdate(false));
  EXPECT_TRUE(record(0).dataLoaded);
}

TEST_F(ImageSetsTest, MissingDirectoryOfASetIsLoggedAndTheOthersAreThere) {
  builder.withPictures({"a.png"}, "one").withPictures({"b.png"}, "two");
  ASSERT_TRUE(project().wUpdate(true));
  fs::remove_all(inProject("is_one"));
  const LogCapture log;
  builder.reopened();
  EXPECT_THAT(log.lines(), Contains("TNVProject::_readImageFiles: Image set directory not found!"));
  EXPECT_THAT(project().wGetImageSets(), ElementsAre("two"));
}

TEST_F(ImageSetsTest, SetNamesOfASettingsFileThatArePathsAreRefused) {
  builder.temp.write("projects/is_../x.xml", "");
  builder.temp.write("projects/demo/demo.cfg", "Source.Images.Filelists = \"../evil\",\"\"\n");
  builder.temp.makeDirectory("projects/demo/is_../evil");
  const LogCapture log;
  builder.reopened();
  EXPECT_THAT(log.lines(), ElementsAre("Set Trainsets 0",
                                       "TNVProject::_readImageFiles: Image set name must not be "
                                       "empty, a path or longer than 240 bytes!",
                                       "TNVProject::_readImageFiles: Image set name must not be "
                                       "empty, a path or longer than 240 bytes!",
                                       "Set Trainsets 0"));
  EXPECT_THAT(project().wGetImageSets(), IsEmpty());
}

TEST_F(ImageSetsTest, MissingListIsAnEmptySet) {
  builder.withPictures({"a.png"});
  ASSERT_TRUE(project().wUpdate(true));
  fs::remove(inProject("set.xml"));
  builder.reopened();
  EXPECT_THAT(project().wGetImageSets(), ElementsAre("set"));
  EXPECT_EQ(0, project().wGetTrainSetCountFromImageSet("set"));
}

TEST_F(ImageSetsTest, ListOutOfOrderPutsRecordsIntoTheLastSet) {
  builder.withPictures({"a.png"}, "ant").withPictures({"z.png"}, "zebra");
  ASSERT_TRUE(project().wUpdate(true));
  std::string settings = readFile(builder.settingsPath());
  const std::string sorted = "\"ant\",\"zebra\"";
  settings.replace(settings.find(sorted), sorted.size(), "\"zebra\",\"ant\"");
  builder.temp.write("projects/demo/demo.cfg", settings);
  builder.reopened();
  EXPECT_EQ(0, project().wGetTrainSetCountFromImageSet("ant"));
  EXPECT_EQ(2, project().wGetTrainSetCountFromImageSet("zebra"));
}

TEST_F(ImageSetsTest, EntriesWithoutAPathAreRecordsWithoutOne) {
  withList(
      "<Count>2</Count><id0><DataPath>\"/p/a.xml\"</DataPath></id0><id1><Other>1</Other></id1>");
  ASSERT_EQ(2, project().wGetTrainSetCountFromImageSet("set"));
  EXPECT_EQ("/p/a.xml", record(0).dataPath);
  EXPECT_EQ("", record(1).dataPath);
}

TEST_F(ImageSetsTest, EntriesBeyondTheCountAreNotRead) {
  withList(
      "<Count>1</Count><id0><DataPath>\"a\"</DataPath></id0><id1><DataPath>\"b\"</DataPath></id1>");
  EXPECT_EQ(1, project().wGetTrainSetCountFromImageSet("set"));
}

TEST_F(ImageSetsTest, HugeCountDoesNotMakeMoreRecordsThanTheFileHasRoomFor) {
  for (const char* count : {"2147483647", "\"text\""}) {
    const LogCapture log;
    withList(std::string("<Count>") + count + "</Count><id0><DataPath>\"a\"</DataPath></id0>");
    EXPECT_LT(project().wGetTrainSetCountFromImageSet("set"), 30);
    EXPECT_THAT(log.lines(), Contains("TNVProject::_readImageFiles: Image set list '" +
                                      inProject("set.xml") + "' holds less than it counts!"));
  }
}

TEST_F(ImageSetsTest, NegativeCountIsNone) {
  withList("<Count>-5</Count><id0><DataPath>\"a\"</DataPath></id0>");
  EXPECT_EQ(0, project().wGetTrainSetCountFromImageSet("set"));
}

TEST_F(ImageSetsTest, SetDirectoryThatCannotBeMadeIsLoggedAndTheOthersAreWritten) {
  builder.withPictures({"a.png"}, "bad").withPictures({"b.png"}, "good");
  builder.temp.write("projects/demo/is_bad", "a file in the way");
  const LogCapture log;
  EXPECT_TRUE(project().wUpdate(true));
  EXPECT_THAT(log.lines(),
              Contains("TNVProject::_updateImageFiles(): Could not create image set directory!"));
  EXPECT_THAT(entriesOf("is_good"), SizeIs(1));
}

TEST_F(ImageSetsTest, BadRecordDoesNotKeepTheOthersFromBeingSaved) {
  builder.withPictures({"a.png", "b.png"});
  record(0).comment = std::string(5000, 'x');
  EXPECT_THROW(project().wUpdate(true), cv::Exception);
  EXPECT_TRUE(record(0).changed);
  EXPECT_FALSE(record(1).changed);
  EXPECT_TRUE(fs::exists(record(1).dataPath));
  EXPECT_TRUE(isInProject("set.xml"));
  EXPECT_THROW(project().wUpdate(false), cv::Exception);
  record(0).comment = "short";
  EXPECT_TRUE(project().wUpdate(false));
  EXPECT_TRUE(fs::exists(record(0).dataPath));
}

TEST_F(ImageSetsTest, FullUpdateWithTheCacheOnMakesReducedCopies) {
  builder.withPictures({"a.png", "b.png"});
  project().wSetCacheImages(true);
  project().wSetCacheImagesMaxSize(32);
  ASSERT_TRUE(project().wUpdate(true));
  EXPECT_THAT(entriesOf("cache"), SizeIs(2));
  EXPECT_EQ(cv::Size(64, 48), record(0).imageCacheSize);
  EXPECT_EQ(cv::Size(32, 24), cv::imread(record(0).imageCachePath).size());
  EXPECT_FALSE(record(0).isImageLoaded());
  const std::string before = record(0).imageCachePath;
  ASSERT_TRUE(project().wUpdate(true));
  EXPECT_EQ(before, record(0).imageCachePath);
}

TEST_F(ImageSetsTest, FullUpdateWithTheCacheOnLoadsRecords) {
  builder.withPictures({"a.png"});
  project().wSetCacheImages(true);
  ASSERT_TRUE(project().wUpdate(true));
  const std::string before = record(0).imageCachePath;
  builder.reopened();
  ASSERT_TRUE(project().wUpdate(true));
  EXPECT_EQ(before, record(0).imageCachePath);
  EXPECT_THAT(entriesOf("cache"), SizeIs(1));
}

TEST_F(ImageSetsTest, FullUpdateWithTheCacheOffDeletesReducedCopies) {
  builder.withPictures({"a.png", "b.png"});
  project().wSetCacheImages(true);
  ASSERT_TRUE(project().wUpdate(true));
  project().wSetCacheImages(false);
  ASSERT_TRUE(project().wUpdate(true));
  EXPECT_THAT(entriesOf("cache"), IsEmpty());
  EXPECT_EQ("", record(0).imageCachePath);
  EXPECT_EQ(cv::Size(), record(0).imageCacheSize);
}

TEST_F(ImageSetsTest, ReducedCopiesOfALoadedProjectAreDeletedWithTheCacheOff) {
  builder.withPictures({"a.png"});
  project().wSetCacheImages(true);
  ASSERT_TRUE(project().wUpdate(true));
  builder.reopened();
  record(0).load();
  project().wSetCacheImages(false);
  ASSERT_TRUE(project().wUpdate(true));
  EXPECT_THAT(entriesOf("cache"), IsEmpty());
}

TEST_F(ImageSetsTest, NoFileOutsideTheCacheIsDeletedForOneThatARecordNames) {
  builder.withPictures({"a.png", "b.png"});
  project().wSetCacheImages(true);
  ASSERT_TRUE(project().wUpdate(true));
  const std::string recordFile = record(0).dataPath;
  const std::string copy = record(0).imageCachePath;
  const std::string whole = readFile(recordFile);
  // A file that is no picture, a picture of the project, and ways out of the cache.
  const std::string text = builder.temp.write("mine.txt", "mine");
  const std::string picture = builder.picture("b.png");
  const std::string settings = inProject("demo.cfg");
  for (const std::string& victim : {text, picture, settings, inProject("cache/../demo.cfg"),
                                    inProject("cache/deep/../../demo.cfg")}) {
    std::string claiming = whole;
    claiming.replace(claiming.find(copy), copy.size(), victim);
    std::ofstream(recordFile) << claiming;
    builder.reopened();
    record(0).load();
    ASSERT_EQ(victim, record(0).imageCachePath);
    record(0).dropImageCache();
    EXPECT_TRUE(fs::exists(fs::path(victim).lexically_normal())) << victim;
    EXPECT_EQ("", record(0).imageCachePath);
  }
}

TEST_F(ImageSetsTest, ClearingTheCacheVisitsAllTrainSets) {
  builder.withPictures({"a.png", "b.png"});
  project().wSetCacheImages(true);
  ASSERT_TRUE(project().wUpdate(true));
  EXPECT_EQ(2, project().wClearImagesCache());
  EXPECT_FALSE(isInProject("cache/"));
  EXPECT_EQ("", record(1).imageCachePath);
  EXPECT_FALSE(record(1).changed);
}

TEST_F(ImageSetsTest, ClearingTheCacheWithoutTrainSets) {
  builder.temp.write("projects/demo/cache/x.jpg", "");
  EXPECT_EQ(0, project().wClearImagesCache());
  EXPECT_FALSE(isInProject("cache/"));
}

TEST_F(ImageSetsTest, ManyImagesAreAddedAndRemovedWithoutComparingEachWithEach) {
  std::vector<std::string> images;
  for (int i = 0; i < 20000; ++i)
    images.push_back("p/" + std::to_string(i) + ".jpg");
  EXPECT_EQ(20000, add(images, "set", true));
  EXPECT_EQ(20000, project().wRemoveImagesFromImageSet(images, "set"));
}

TEST_F(ImageSetsTest, EntriesThatAreMissingAreRecordsWithoutAPath) {
  withList("<Count>3</Count>");
  EXPECT_EQ(3, project().wGetTrainSetCountFromImageSet("set"));
}

TEST_F(ImageSetsTest, EmptyListIsNotTakenForAnEmptySet) {
  builder.withPictures({"a.png"});
  ASSERT_TRUE(project().wUpdate(true));
  builder.temp.write("projects/demo/set.xml", "");
  EXPECT_THROW(builder.another().wLoad(), cv::Exception);
  EXPECT_FALSE(project().wUpdate(true));
  EXPECT_EQ("", readFile(inProject("set.xml")));
}

TEST_F(ImageSetsTest, SetNameThatTheSettingsWouldLoseIsRefused) {
  for (const char* name : {"a,b", "a=b", "a{b", "a}b", "a\"b"}) {
    const LogCapture log;
    EXPECT_EQ(0, add({"a.jpg"}, name)) << name;
    EXPECT_THAT(
        log.lines(),
        ElementsAre("TNVProject::addImages: Image set name must not hold one of , = { } \"!"));
  }
}

TEST_F(ImageSetsTest, SetNamesOfAnyOtherTextComeBack) {
  const std::vector<std::string> names{" lead", "a > b", "a b", "\xc3\xa4", "it's", "x.y"};
  for (const std::string& name : names)
    add({"a.jpg"}, name);
  ASSERT_TRUE(project().wUpdate(true));
  builder.reopened();
  EXPECT_THAT(project().wGetImageSets(), testing::UnorderedElementsAreArray(names));
}

TEST_F(ImageSetsTest, FullUpdateWritesLoadedRecordsAnew) {
  builder.withPictures({"a.png"});
  ASSERT_TRUE(project().wUpdate(true));
  fs::remove(record(0).dataPath);
  ASSERT_TRUE(project().wUpdate(true));
  EXPECT_TRUE(fs::exists(record(0).dataPath));
}

TEST_F(ImageSetsTest, CachingGivesTheFullPictureUpAndKeepsToTheQuality) {
  builder.withPictures({"a.png"});
  record(0).loadImage();
  project().wSetCacheImages(true);
  project().wSetCacheImagesMaxSize(64);
  project().wSetCacheImagesQuality(10);
  ASSERT_TRUE(project().wUpdate(true));
  EXPECT_FALSE(record(0).isImageLoaded());
  std::vector<uchar> expected;
  cv::imencode(".jpg", patternedPicture(64, 48), expected, {cv::IMWRITE_JPEG_QUALITY, 10});
  EXPECT_EQ(std::string(expected.begin(), expected.end()), readFile(record(0).imageCachePath));
}

TEST_F(ImageSetsTest, LoadedProjectReadsTheTypesOfItsSettings) {
  builder.temp.write("in/a.bmp", "");
  builder.temp.write("projects/demo/demo.cfg", "");
  EXPECT_THAT(builder.reopened().wReadImagesFromDirectory(builder.temp / "in", false), SizeIs(1));
  builder.temp.write("projects/demo/demo.cfg", "Source.Images.Types = \"tif\"\n");
  EXPECT_THAT(builder.reopened().wReadImagesFromDirectory(builder.temp / "in", false), IsEmpty());
}

TEST_F(ImageSetsTest, LinkInACircleDoesNotKeepTheProjectFromBeingSaved) {
  fs::create_symlink("circle", inProject("circle"));
  builder.withPictures({"a.png"});
  EXPECT_TRUE(project().wUpdate(true));
  EXPECT_TRUE(isInProject("set.xml"));
}

TEST_F(ImageSetsTest, LinkToADirectoryGoesAloneWhenItsSetIsGone) {
  builder.temp.write("elsewhere/file", "kept");
  fs::create_directory_symlink(builder.temp / "elsewhere", inProject("is_link"));
  ASSERT_TRUE(builder.reopened().wUpdate(true));
  EXPECT_FALSE(fs::is_symlink(inProject("is_link")));
  EXPECT_EQ("kept", readFile(builder.temp / "elsewhere/file"));
}
