#include <algorithm>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TNV_SampleBenchNative/WTNVTrainSet.h"
#include "foundation/Files.h"
#include "marks/TNVMarkRect.h"
#include "project/TNVTrainSet.h"
#include "support/LogCapture.h"
#include "support/ProjectBuilder.h"

namespace {

namespace fs = std::filesystem;

class Relink : public testing::Test {
 protected:
  void withPictures() {
    builder.withPictures({"a.png", "b.png"});
    for (TNVTrainSet* record : records(builder.project()))
      record->addMark(TNVMarkRect({0.25, 0.25}, {0.5, 0.5}, false));
  }

  static std::vector<TNVTrainSet*> records(const WTNVProject& project) {
    std::vector<TNVTrainSet*> natives;
    for (const WTNVTrainSet& handle : project.wGetTrainSets()) {
      handle.wLoadData();
      natives.push_back(handle.getNativeTrainSet());
    }
    return natives;
  }

  std::string pictures() const { return builder.temp / "pictures/"; }

  /// As other systems write it.
  static std::string withBackslashes(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
  }

  LogCapture log;
  ProjectBuilder builder;
};

}  // namespace

TEST_F(Relink, APathIsMovedWithItsDirectoryAlone) {
  EXPECT_EQ(tnv::movedPath("/a/b/c.png", "/a/b", "/x"), "/x/c.png");
  EXPECT_EQ(tnv::movedPath("/a/b/c.png", "/a/b/", "/x/"), "/x/c.png");
  EXPECT_EQ(tnv::movedPath("/a/b/d/c.png", "/a/b", "/x"), "/x/d/c.png");
  EXPECT_EQ(tnv::movedPath("/a/c.png", "/", "/x"), "/x/a/c.png");
  EXPECT_EQ(tnv::movedPath("/x/c.png", "/x", "/"), "/c.png");
  EXPECT_EQ(tnv::movedPath("/a//b/./c.png", "/a/d/../b", "/x/./y//"), "/x/y/c.png");
  EXPECT_EQ(tnv::movedPath("C:\\a\\b\\c.png", "C:/a", "D:\\x"), "D:/x/b/c.png");
  // A name that only begins alike is another directory.
  EXPECT_FALSE(tnv::movedPath("/a/bc/d.png", "/a/b", "/x"));
  EXPECT_FALSE(tnv::movedPath("/a/b", "/a/b", "/x"));
  EXPECT_FALSE(tnv::movedPath("a/b/c.png", "/a/b", "/x"));
}

TEST_F(Relink, PicturesFollowTheirDirectory) {
  withPictures();
  ASSERT_TRUE(builder.project().wUpdate(true));
  const auto moved = builder.temp / "elsewhere/";
  fs::rename(pictures(), moved);
  WTNVProject& project = builder.reopened();
  EXPECT_EQ(project.wRelinkPictures(pictures(), moved), 2);
  EXPECT_EQ(project.wRelinkPictures(pictures(), moved), 0);
  ASSERT_TRUE(project.wUpdate(true));
  for (TNVTrainSet* record : records(builder.reopened())) {
    EXPECT_TRUE(record->imagePath.starts_with(moved)) << record->imagePath;
    EXPECT_EQ(record->imagePathAbs, record->imagePath);
    EXPECT_FALSE(record->readImage().empty());
    EXPECT_EQ(record->marks.size(), 1U);
  }
}

TEST_F(Relink, OnlyThoseBelowTheDirectoryChange) {
  withPictures();
  builder.project().wAddImagesToImageSet({"/other/c.png"}, {true}, "set", false);
  EXPECT_EQ(builder.project().wRelinkPictures(pictures(), "/x"), 2);
  EXPECT_EQ(records(builder.project())[2]->imagePath, "/other/c.png");
}

TEST_F(Relink, APictureThatWasToldFromTheWorkingDirectoryIsFoundByItsWholePath) {
  builder.project().wAddImagesToImageSet({"photos/c.png"}, {true}, "set", false);
  const auto here = fs::current_path().string();
  EXPECT_EQ(builder.project().wRelinkPictures(here + "/photos", "/x"), 1);
  EXPECT_EQ(records(builder.project())[0]->imagePath, "/x/c.png");
  EXPECT_EQ(records(builder.project())[0]->imagePathAbs, "/x/c.png");
}

TEST_F(Relink, AnEmptyDirectoryIsRefused) {
  withPictures();
  ASSERT_TRUE(builder.project().wUpdate(true));
  WTNVProject& project = builder.reopened();
  for (const auto& [from, to] : {std::pair<std::string, std::string>{"", "/x"}, {"/", ""}}) {
    EXPECT_EQ(project.wRelinkPictures(from, to), 0);
    EXPECT_EQ(project.wRelinkTrainSets(from, to), 0);
  }
  const auto lines = log.lines();
  const auto count = [&](const std::string& line) {
    return std::count(lines.begin(), lines.end(), line);
  };
  EXPECT_EQ(count("TNVProject::relinkPictures: Directory must not be empty!"), 2);
  EXPECT_EQ(count("TNVProject::relinkTrainSets: Directory must not be empty!"), 2);
  for (TNVTrainSet* record : records(project)) {
    EXPECT_TRUE(record->imagePath.starts_with(pictures())) << record->imagePath;
    EXPECT_TRUE(record->dataPath.starts_with(builder.projectDirectory())) << record->dataPath;
    EXPECT_FALSE(record->changed);
  }
}

TEST_F(Relink, BackslashesAndDetoursLeadToTheSamePictures) {
  withPictures();
  WTNVProject& project = builder.project();
  EXPECT_EQ(project.wRelinkPictures(withBackslashes(pictures()), "\\x\\y"), 2);
  EXPECT_EQ(records(project)[0]->imagePath, "/x/y/a.png");
  EXPECT_EQ(records(project)[0]->imagePathAbs, "/x/y/a.png");
  EXPECT_EQ(project.wRelinkPictures("/x/./z/..//y", "/v/../w/"), 2);
  EXPECT_EQ(records(project)[1]->imagePath, "/w/b.png");
}

TEST_F(Relink, APictureThatWasToldWithBackslashesIsFound) {
  builder.project().wAddImagesToImageSet({"\\other\\c.png"}, {true}, "set", false);
  EXPECT_EQ(builder.project().wRelinkPictures("/other", "/x"), 1);
  EXPECT_EQ(records(builder.project())[0]->imagePath, "/x/c.png");
}

TEST_F(Relink, TheWholePathOfAPictureStaysWhole) {
  withPictures();
  EXPECT_EQ(builder.project().wRelinkPictures(pictures(), "photos"), 2);
  EXPECT_EQ(records(builder.project())[0]->imagePathAbs,
            fs::current_path().string() + "/photos/a.png");
}

TEST_F(Relink, AProjectIsFoundByBackslashes) {
  withPictures();
  ASSERT_TRUE(builder.project().wUpdate(true));
  const auto before = builder.projectDirectory();
  EXPECT_EQ(builder.project().wRelinkTrainSets(withBackslashes(before), "/x\\demo"), 2);
  for (TNVTrainSet* record : records(builder.project()))
    EXPECT_TRUE(record->dataPath.starts_with("/x/demo/is_")) << record->dataPath;
}

TEST_F(Relink, AMovedProjectIsReadFromItsNewPlace) {
  withPictures();
  builder.project().wSetCacheImages(true);
  ASSERT_TRUE(builder.project().wUpdate(true));
  const auto before = builder.projectDirectory();
  const auto projects = builder.temp.makeDirectory("moved");
  fs::rename(before, projects + "demo");
  const auto open = [&] {
    return std::make_unique<WTNVProject>("demo", projects, builder.temp.path(),
                                         builder.temp.path());
  };
  auto project = open();
  ASSERT_TRUE(project->wLoad());
  EXPECT_EQ(project->wRelinkTrainSets(before, projects + "demo"), 2);
  ASSERT_TRUE(project->wUpdate(true));
  EXPECT_FALSE(fs::exists(before));
  project = open();
  ASSERT_TRUE(project->wLoad());
  const auto found = records(*project);
  ASSERT_EQ(found.size(), 2U);
  for (TNVTrainSet* record : found) {
    EXPECT_TRUE(record->dataPath.starts_with(projects)) << record->dataPath;
    EXPECT_EQ(record->marks.size(), 1U);
    EXPECT_TRUE(fs::exists(record->imageCachePath)) << record->imageCachePath;
    EXPECT_TRUE(record->imageCachePath.starts_with(projects)) << record->imageCachePath;
  }
}

TEST_F(Relink, ADamagedRecordMovesWithTheOthers) {
  withPictures();
  ASSERT_TRUE(builder.project().wUpdate(true));
  const auto before = builder.projectDirectory();
  const std::string damaged = builder.project().wGetTrainSets()[0].wGetDataPath();
  std::ofstream(damaged) << "<opencv_storage";
  const auto projects = builder.temp.makeDirectory("moved");
  fs::rename(before, projects + "demo");
  WTNVProject project("demo", projects, builder.temp.path(), builder.temp.path());
  ASSERT_TRUE(project.wLoad());
  EXPECT_EQ(project.wRelinkTrainSets(before, projects + "demo"), 2);
  EXPECT_EQ(project.wGetTrainSets()[0].wGetDataPath(),
            projects + "demo/" + damaged.substr(before.size()));
  EXPECT_THAT(log.text(), testing::HasSubstr("TNVTrainSet::relinkRecord: "));
}

TEST_F(Relink, FrontEndsAskWhereATrainSetsFileLies) {
  withPictures();
  EXPECT_EQ(builder.project().wGetTrainSets()[0].wGetDataPath(), "");
  ASSERT_TRUE(builder.project().wUpdate(true));
  EXPECT_TRUE(fs::exists(builder.project().wGetTrainSets()[0].wGetDataPath()));
}
