#include "project/TNVUser.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TNV_SampleBenchNative/WTNVUser.h"
#include "support/LogCapture.h"
#include "support/TempDirectory.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

class TNVUserTest : public testing::Test {
 protected:
  std::string users() const { return temp.path() + "/"; }
  std::string fileOf(const std::string& name) const { return readFile(temp / (name + ".cfg")); }

  TempDirectory temp;
};

}  // namespace

TEST_F(TNVUserTest, ANewUserTouchesNoFile) {
  const WTNVUser user("Ann", users());
  EXPECT_EQ(user.wGetUserName(), "Ann");
  EXPECT_EQ(user.wGetLastProject(), "");
  const TNVUser* native = user.getNativeUser();
  EXPECT_EQ(native->settingsFile, "Ann.cfg");
  EXPECT_EQ(native->settingsPath, users() + "Ann.cfg");
  EXPECT_EQ(native->usersPath, users());
  EXPECT_TRUE(std::filesystem::is_empty(temp.path()));
}

TEST_F(TNVUserTest, TheUsersPathIsTakenAsItStands) {
  EXPECT_EQ(TNVUser("Ann", "a\\b").settingsPath, "a\\bAnn.cfg");
}

TEST_F(TNVUserTest, CreatingTwiceIsRefused) {
  WTNVUser user("Ann", users());
  EXPECT_TRUE(user.wCreate());
  EXPECT_EQ(fileOf("Ann"), "Basic.LastProject = \"\"\nBasic.Name = \"Ann\"\n");
  user.wSetLastProject("x");
  const LogCapture log;
  EXPECT_FALSE(user.wCreate());
  EXPECT_THAT(log.lines(), ElementsAre("TNVUser::create: User already exists!"));
  EXPECT_EQ(fileOf("Ann"), "Basic.LastProject = \"\"\nBasic.Name = \"Ann\"\n");
}

TEST_F(TNVUserTest, InAMissingDirectoryNothingIsCreatedAndTheResultIsTrue) {
  const LogCapture log;
  WTNVUser user("Ann", users() + "absent/");
  EXPECT_TRUE(user.wCreate());
  EXPECT_FALSE(std::filesystem::exists(temp / "absent"));
}

TEST_F(TNVUserTest, TheLastProjectIsStoredByAnUpdateAlone) {
  {
    WTNVUser user("Ann", users());
    ASSERT_TRUE(user.wCreate());
    user.wSetLastProject("parts");
    EXPECT_EQ(user.wGetLastProject(), "parts");
  }
  WTNVUser user("Ann", users());
  ASSERT_TRUE(user.wLoad());
  EXPECT_EQ(user.wGetLastProject(), "");
  user.wSetLastProject("parts 2 // x");
  ASSERT_TRUE(user.wUpdate());
  WTNVUser again("Ann", users());
  ASSERT_TRUE(again.wLoad());
  EXPECT_EQ(again.wGetLastProject(), "parts 2 // x");
}

TEST_F(TNVUserTest, MissingKeysHaveDefaults) {
  temp.write("Ann.cfg", "");
  WTNVUser user("Ann", users());
  user.wSetLastProject("parts");
  ASSERT_TRUE(user.wLoad());
  EXPECT_EQ(user.wGetUserName(), "unknown");
  EXPECT_EQ(user.wGetLastProject(), "");
}

TEST_F(TNVUserTest, AnotherNameInTheFileLeavesTheFileWhereItIs) {
  temp.write("Ann.cfg", "Basic.Name = \"Bea\"\n");
  WTNVUser user("Ann", users());
  ASSERT_TRUE(user.wLoad());
  EXPECT_EQ(user.wGetUserName(), "Bea");
  ASSERT_TRUE(user.wUpdate());
  EXPECT_EQ(fileOf("Ann"), "Basic.LastProject = \"\"\nBasic.Name = \"Bea\"\n");
  EXPECT_FALSE(std::filesystem::exists(temp / "Bea.cfg"));
  EXPECT_THAT(WTNVUser::wReadAvailableUsers(users()), ElementsAre("Ann"));
}

TEST_F(TNVUserTest, WithoutAFileThereIsNothingToLoadUpdateOrRemove) {
  WTNVUser user("Ann", users());
  const LogCapture log;
  EXPECT_FALSE(user.wLoad());
  EXPECT_FALSE(user.wUpdate());
  EXPECT_FALSE(user.wRemove());
  EXPECT_THAT(log.lines(), ElementsAre("TNVUser::_readSettings: Could not find project at '" +
                                           users() + "Ann.cfg'!",
                                       "TNVUser::load: Could not read settings!",
                                       "TNVUser::update: User does not exists!",
                                       "TNVUser::remove: User does not exists!"));
  EXPECT_TRUE(std::filesystem::is_empty(temp.path()));
}

TEST_F(TNVUserTest, RemovingDeletesTheFile) {
  WTNVUser user("Ann", users());
  ASSERT_TRUE(user.wCreate());
  EXPECT_TRUE(user.wRemove());
  EXPECT_FALSE(std::filesystem::exists(temp / "Ann.cfg"));
}

TEST_F(TNVUserTest, RemovingNeverDeletesADirectory) {
  temp.write("Ann.cfg/kept", "x");
  temp.makeDirectory("Bea.cfg");
  EXPECT_TRUE(WTNVUser("Ann", users()).wRemove());
  EXPECT_TRUE(WTNVUser("Bea", users()).wRemove());
  EXPECT_EQ(readFile(temp / "Ann.cfg/kept"), "x");
  EXPECT_TRUE(std::filesystem::is_directory(temp / "Bea.cfg"));
}

TEST_F(TNVUserTest, RemovingALinkLeavesWhatItLeadsTo) {
  temp.write("elsewhere/Ann.cfg", "x");
  std::filesystem::create_symlink(temp / "elsewhere/Ann.cfg", temp / "Ann.cfg");
  std::filesystem::create_directory_symlink(temp / "elsewhere", temp / "Bea.cfg");
  EXPECT_TRUE(WTNVUser("Ann", users()).wRemove());
  EXPECT_TRUE(WTNVUser("Bea", users()).wRemove());
  EXPECT_EQ(readFile(temp / "elsewhere/Ann.cfg"), "x");
  EXPECT_FALSE(std::filesystem::is_symlink(temp / "Ann.cfg"));
  EXPECT_FALSE(std::filesystem::is_symlink(temp / "Bea.cfg"));
}

TEST_F(TNVUserTest, UsersAreListedByTheNamesOfTheirFilesUpToTheFirstDot) {
  for (const char* file : {"Ann.cfg", "a.b.cfg", "Bea.CFG", "note.txt"})
    temp.write(file, "");
  temp.write("below/Cay.cfg", "");
  EXPECT_THAT(WTNVUser::wReadAvailableUsers(users()), UnorderedElementsAre("Ann", "a", "Bea"));
}

TEST_F(TNVUserTest, AMissingDirectoryHasNoUsersAndIsLogged) {
  const LogCapture log;
  EXPECT_THAT(WTNVUser::wReadAvailableUsers(users() + "absent/"), IsEmpty());
  EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(TNVUserTest, ANameThatLeadsElsewhereIsRefused) {
  temp.makeDirectory("users");
  temp.write("victim.cfg", "Basic.Name = \"victim\"\n");
  const std::string tooLong(241, 'n');
  for (const char* name : {"../victim", "", "a/b", "a\\b", ".", "..", "a\nb", tooLong.c_str()}) {
    WTNVUser user(name, temp / "users/");
    const LogCapture log;
    EXPECT_FALSE(user.wCreate());
    EXPECT_FALSE(user.wLoad());
    EXPECT_FALSE(user.wUpdate());
    EXPECT_FALSE(user.wRemove());
    EXPECT_THAT(
        log.lines(),
        testing::Contains(
            "TNVUser::create: User name must not be empty, a path or longer than 240 bytes!"));
  }
  EXPECT_EQ(fileOf("victim"), "Basic.Name = \"victim\"\n");
  EXPECT_TRUE(std::filesystem::is_empty(temp / "users"));
}

TEST_F(TNVUserTest, AnUpdateThatCannotBeWrittenIsTrueAndLogged) {
  temp.makeDirectory("Ann.cfg");
  WTNVUser user("Ann", users());
  const LogCapture log;
  EXPECT_TRUE(user.wUpdate());
  EXPECT_TRUE(std::filesystem::is_directory(temp / "Ann.cfg"));
  EXPECT_THAT(log.lines(), ElementsAre("TNVUser::_writeSettings: Could not write settings at '" +
                                       users() + "Ann.cfg'!"));
}
