#include "foundation/TNVAppConfig.h"

#include <cstdlib>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include "foundation/Platform.h"
#include "foundation/XdgUserDirs.h"
#include "support/LogCapture.h"
#include "support/TempDirectory.h"

using testing::ElementsAre;

namespace {

std::string documents() {
  return "D:/Docs/";
}

class TNVAppConfigTest : public testing::Test {
 protected:
  TNVAppConfig configOf(const std::string& content) {
    return TNVAppConfig(temp.write("app.cfg", content), documents);
  }

  static std::vector<std::string> pathsOf(const TNVAppConfig& config) {
    return {config.getProjectsPath(), config.getPlatformsPath(), config.getAugmentsPath(),
            config.getUsersPath()};
  }

  TempDirectory temp;
};

}  // namespace

TEST_F(TNVAppConfigTest, AnEmptyFileGivesTheDefaultsBelowTheDocuments) {
  EXPECT_THAT(pathsOf(configOf("")), ElementsAre("D:/Docs/Annotation.Tessarine/projects/",
                                                 "D:/Docs/Annotation.Tessarine/platforms/",
                                                 "D:/Docs/Annotation.Tessarine/augments/",
                                                 "D:/Docs/Annotation.Tessarine/users/"));
}

TEST_F(TNVAppConfigTest, WithoutTheDocumentsPathsAreAsTheyStand) {
  EXPECT_THAT(pathsOf(configOf("Basic.DocumentsPath.Use = NO\n")),
              ElementsAre("projects/", "platforms/", "augments/", "users/"));
}

TEST_F(TNVAppConfigTest, KeysOfTheFileReplaceTheDefaults) {
  const std::string content =
      "Basic.Projects.Path = \"a b/\"\nBasic.Platforms.Path = \"/p/\"\n"
      "Basic.Augments.Path = \"g/\"\nBasic.Users.Path = \"\"\n";
  EXPECT_THAT(pathsOf(configOf(content + "Basic.DocumentsPath.SubDir = \"sub/\"\n")),
              ElementsAre("D:/Docs/sub/a b/", "D:/Docs/sub//p/", "D:/Docs/sub/g/", "D:/Docs/sub/"));
  EXPECT_THAT(pathsOf(configOf(content + "Basic.DocumentsPath.Use = NO\n")),
              ElementsAre("a b/", "/p/", "g/", ""));
}

TEST_F(TNVAppConfigTest, WithoutAFileAllPathsAreEmpty) {
  const LogCapture log;
  const TNVAppConfig config(temp / "absent.cfg", documents);
  EXPECT_THAT(pathsOf(config), ElementsAre("", "", "", ""));
  EXPECT_EQ(config.settings, nullptr);
  EXPECT_EQ(config.configPath, "./app.cfg");
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVAppConfig::TNVAppConfig: Could not load app config at '" +
                          temp / "absent.cfg" + "'!"));
}

TEST_F(TNVAppConfigTest, TheFileIsReadOnceAndNeverWritten) {
  const TNVAppConfig config = configOf("Basic.DocumentsPath.Use = NO\n");
  temp.write("app.cfg", "Basic.Projects.Path = \"other/\"\n");
  EXPECT_EQ(config.getProjectsPath(), "projects/");
  EXPECT_EQ(readFile(temp / "app.cfg"), "Basic.Projects.Path = \"other/\"\n");
}

TEST(XdgUserDirs, TheDocumentsDirectoryIsReadAsAShellReadsIt) {
  struct Row {
    const char* text;
    const char* directory;
  };
  for (const Row& row :
       {Row{"XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n", "/home/ann/Dokumente/"},
        {"# a note\nXDG_MUSIC_DIR=\"$HOME/M\"\n \tXDG_DOCUMENTS_DIR=\"/data/docs/\"",
         "/data/docs/"},
        {"XDG_DOCUMENTS_DIR=\"$HOME/My \\\"own\\\" \\$x\"\n", "/home/ann/My \"own\" $x/"},
        {"XDG_DOCUMENTS_DIR=\"$HOME/a\"\nXDG_DOCUMENTS_DIR=\"$HOME/b\"\n", "/home/ann/b/"},
        {"XDG_DOCUMENTS_DIR=\"$HOME/a\"\nXDG_DOCUMENTS_DIR=\"b\"\n", "/home/ann/a/"},
        {"XDG_DOCUMENTS_DIR=\"$HOME\"\n", "/home/ann/"},
        {"XDG_DOCUMENTS_DIR=\"$HOME/\"\n", "/home/ann/"},
        {"XDG_DOCUMENTS_DIR=\"/\"\n", "/"},
        {"XDG_DOCUMENTS_DIR=\"/data//\"\n", "/data/"},
        {"XDG_DOCUMENTS_DIR=\"\\$HOME/x\"\n", ""},
        {"XDG_DOCUMENTS_DIR=\"$HOMER/x\"\n", ""},
        {"XDG_DOCUMENTS_DIR=\"relative\"\n", ""},
        {"XDG_DOCUMENTS_DIR=\"$HOME/open\n", ""},
        {"XDG_DOCUMENTS_DIR=\"$HOME/open\\", ""},
        {"XDG_DOCUMENTS_DIR=$HOME/bare\n", ""},
        {"XDG_DOCUMENTS_DIR=", ""},
        {"#XDG_DOCUMENTS_DIR=\"$HOME/off\"\n", ""},
        {"", ""}})
    EXPECT_EQ(tnv::xdgDocumentsDirectory(row.text, "/home/ann"), row.directory) << row.text;
  EXPECT_EQ(tnv::xdgDocumentsDirectory("XDG_DOCUMENTS_DIR=\"$HOME/D\"", "/"), "/D/");
}

TEST(DocumentsDirectory, IsThatOfTheDesktopOrElseOneBelowTheHome) {
  const TempDirectory temp;
  const std::string home = temp / "ann";
  EXPECT_EQ(tnv::documentsDirectoryOf(home), home + "/Documents/");
  temp.write("ann/.config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n");
  EXPECT_EQ(tnv::documentsDirectoryOf(home), home + "/Dokumente/");
}

TEST(DocumentsDirectory, StandsOneSlashBehindTheHome) {
  const TempDirectory temp;
  const std::string home = temp / "ann";
  EXPECT_EQ(tnv::documentsDirectoryOf(home + "/"), home + "/Documents/");
  EXPECT_EQ(tnv::documentsDirectoryOf(home + "//"), home + "/Documents/");
  // As root, there may be a file of that name at the top.
  if (!std::filesystem::exists("/.config/user-dirs.dirs")) {
    EXPECT_EQ(tnv::documentsDirectoryOf("/"), "/Documents/");
  }
}

TEST(DocumentsDirectory, TheHomeIsThatOfTheAccountAndNotOfTheEnvironment) {
  const std::string before = tnv::documentsDirectory();
  const char* home = std::getenv("HOME");
  const std::string kept = home != nullptr ? home : "";
  ::setenv("HOME", "/somewhere/else", 1);
  ::setenv("XDG_CONFIG_HOME", "/somewhere/else", 1);
  EXPECT_EQ(tnv::documentsDirectory(), before);
  ::unsetenv("XDG_CONFIG_HOME");
  home != nullptr ? ::setenv("HOME", kept.c_str(), 1) : ::unsetenv("HOME");
  EXPECT_TRUE(before.ends_with("/")) << before;
  EXPECT_EQ(before, tnv::documentsDirectoryOf(getpwuid(getuid())->pw_dir));
}
