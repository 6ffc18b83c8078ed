#include "generation/RunGuard.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "generation/TNVGenerationDarknet.h"
#include "project/TNVTrainSet.h"
#include "support/LogCapture.h"
#include "support/TempDirectory.h"

namespace fs = std::filesystem;

namespace {

class RunGuardFixture : public ::testing::Test {
 protected:
  RunGuardFixture() { generation.platformPath = directory.makeDirectory("platforms"); }

  std::string reason(const std::string& path) const {
    return tnv::RunGuard(generation).whyToKeep(path);
  }

  std::string reasonBelow(const std::string& name) const { return reason(directory / name); }

  /// A picture that a run reads.
  TNVTrainSet& addTrainSet(const std::string& picture) {
    trainSets.push_back(std::make_unique<TNVTrainSet>(picture, ""));
    generation.trainSets.push_back(trainSets.back().get());
    return *trainSets.back();
  }

  TempDirectory directory;
  LogCapture log;
  TNVGenerationDarknet generation;
  std::vector<std::unique_ptr<TNVTrainSet>> trainSets;
};

TEST_F(RunGuardFixture, AnyOtherDirectoryMayGo) {
  generation.projectDirectory = directory.makeDirectory("project");
  addTrainSet(directory.write("pictures/a.png", ""));
  for (const char* name : {"out/", "out", "project/samples/", "platforms/out/", "pictures/out/",
                           "pict", "pictures/a.pn", "platform/"}) {
    EXPECT_EQ(reasonBelow(name), "") << name;
  }
  EXPECT_EQ(reason(""), "");
}

TEST_F(RunGuardFixture, AFileSystemRootStays) {
  EXPECT_EQ(reason("/"), "it is a file system root");
  EXPECT_EQ(reason("/tmp/.."), "it is a file system root");
  EXPECT_EQ(reason("//"), "it is a file system root");
}

TEST_F(RunGuardFixture, TheWorkingDirectoryStays) {
  // With nothing else that stays around it, wherever the tests run.
  const fs::path before = fs::current_path();
  fs::current_path(directory.makeDirectory("around/here"));
  const std::string wanted = "it is or contains the working directory";
  EXPECT_EQ(reason("."), wanted);
  EXPECT_EQ(reason("./"), wanted);
  EXPECT_EQ(reason(fs::current_path().string()), wanted);
  EXPECT_EQ(reason("absent/.."), wanted);
  EXPECT_EQ(reason(".."), wanted);
  EXPECT_EQ(reason("./absent/"), "");
  fs::current_path(before);
}

TEST_F(RunGuardFixture, ThePlatformsPathStays) {
  for (const char* name : {"platforms", "platforms/", "", "platforms/../platforms/", "./"}) {
    EXPECT_EQ(reasonBelow(name), "it is or contains the platforms path") << name;
  }
}

TEST_F(RunGuardFixture, TemplatesStay) {
  EXPECT_EQ(reasonBelow("platforms/darknet/"), "");
  directory.write("platforms/darknet/nets/n.tmp", "");
  EXPECT_EQ(reasonBelow("platforms/darknet/"), "it is or contains the templates");
  EXPECT_EQ(reasonBelow("platforms/darknet/nets"), "it is or contains the templates");
  EXPECT_EQ(reasonBelow("platforms/darknet/out"), "");
}

TEST_F(RunGuardFixture, TaskTreesStay) {
  generation.augmentsPath = directory / "augments/";
  EXPECT_EQ(reasonBelow("augments"), "");
  directory.makeDirectory("augments");
  EXPECT_EQ(reasonBelow("augments"), "it is or contains the task trees");
}

TEST_F(RunGuardFixture, TheProjectsDirectoryStays) {
  generation.projectDirectory = directory.makeDirectory("projects/mine");
  EXPECT_EQ(reasonBelow("projects/mine/"), "it is or contains the project's directory");
  EXPECT_EQ(reasonBelow("projects"), "it is or contains the project's directory");
  EXPECT_EQ(reasonBelow("projects/min"), "");
}

TEST_F(RunGuardFixture, PicturesStay) {
  const std::string picture = directory.write("pictures/a.png", "");
  addTrainSet(picture);
  const std::string wanted = "it is or contains the picture '" + picture + "'";
  EXPECT_EQ(reasonBelow("pictures"), wanted);
  EXPECT_EQ(reasonBelow("pictures/a.png"), wanted);
}

TEST_F(RunGuardFixture, PicturesOfTheRunStay) {
  const std::string picture = directory.write("pictures/a.png", "");
  TNVTrainSet trainSet(picture, "");
  generation.runTrainSets = {&trainSet, nullptr};
  EXPECT_EQ(reasonBelow("pictures"), "it is or contains the picture '" + picture + "'");
}

TEST_F(RunGuardFixture, ARelativePictureIsMadeAbsolute) {
  TNVTrainSet& trainSet = addTrainSet("absent-folder/a.png");
  trainSet.imagePathAbs = "";
  EXPECT_EQ(reason((fs::current_path() / "absent-folder").string()),
            "it is or contains the picture 'absent-folder/a.png'");
}

TEST_F(RunGuardFixture, ThePictureIsKnownByBothPaths) {
  TNVTrainSet& trainSet = addTrainSet(directory / "read/a.png");
  trainSet.imagePathAbs = directory / "known/a.png";
  EXPECT_NE(reasonBelow("read"), "");
  EXPECT_NE(reasonBelow("known"), "");
}

TEST_F(RunGuardFixture, DataFilesStay) {
  TNVTrainSet& trainSet = addTrainSet(directory / "pictures/a.png");
  trainSet.dataPath = directory / "data/a.xml";
  EXPECT_EQ(reasonBelow("data/"), "it is or contains the data file '" + trainSet.dataPath + "'");
}

TEST_F(RunGuardFixture, ARecordThatWasNotLoadedIsLoaded) {
  const std::string picture = directory.write("pictures/a.png", "");
  TNVTrainSet stored(picture, "");
  directory.makeDirectory("data");
  ASSERT_TRUE(stored.save(directory / "data/"));
  TNVTrainSet record;
  record.dataPath = stored.dataPath;
  generation.trainSets = {&record};
  EXPECT_EQ(reasonBelow("pictures"), "it is or contains the picture '" + picture + "'");
  EXPECT_TRUE(record.dataLoaded);
}

TEST_F(RunGuardFixture, ALinkedOutputDirectoryIsWhereTheLinkLeads) {
  addTrainSet(directory.write("pictures/a.png", ""));
  fs::create_directory_symlink(directory / "pictures", directory / "link");
  EXPECT_NE(reasonBelow("link"), "");
  EXPECT_NE(reasonBelow("link/"), "");
}

TEST_F(RunGuardFixture, ALinkedDirectoryOfPicturesIsWhereTheLinkLeads) {
  directory.write("pictures/a.png", "");
  fs::create_directory_symlink(directory / "pictures", directory / "link");
  addTrainSet(directory / "link/a.png");
  EXPECT_NE(reasonBelow("pictures"), "");
}

TEST_F(RunGuardFixture, ALinkedPictureStaysAndItsLinkToo) {
  directory.write("pictures/a.png", "");
  directory.makeDirectory("links");
  fs::create_symlink(directory / "pictures/a.png", directory / "links/b.png");
  addTrainSet(directory / "links/b.png");
  EXPECT_NE(reasonBelow("pictures"), "");
  EXPECT_NE(reasonBelow("links"), "");
}

TEST_F(RunGuardFixture, ATextThatEndsEarlyForTheSystemIsNoPath) {
  EXPECT_EQ(reason(directory.path() + std::string("\0out/", 5)), "it is no path");
}

}  // namespace
