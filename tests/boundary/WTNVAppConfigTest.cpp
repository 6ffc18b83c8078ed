#include "TNV_SampleBenchNative/WTNVAppConfig.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "foundation/Platform.h"
#include "support/TempDirectory.h"

// There is one instance in a process, so that each of these looks at it in a child.

TEST(WTNVAppConfigDeathTest, AMissingFileGivesAValidInstanceWithEmptyPaths) {
  const TempDirectory temp;
  const auto look = [&] {
    const WTNVAppConfig* config = WTNVAppConfig::getInstance(temp / "absent.cfg");
    const bool isEmpty = config != nullptr && config->wGetProjectsPath().empty() &&
                         config->wGetPlatformsPath().empty() &&
                         config->wGetAugmentsPath().empty() && config->wGetUsersPath().empty();
    std::exit(isEmpty ? 0 : 1);
  };
  EXPECT_EXIT(look(), testing::ExitedWithCode(0), "");
}

TEST(WTNVAppConfigDeathTest, ASecondPathGivesTheFirstInstanceAndReadsNothing) {
  const TempDirectory temp;
  const std::string first = temp.write("a.cfg", "Basic.DocumentsPath.Use = NO\n");
  const std::string second = temp.write("b.cfg",
                                        "Basic.DocumentsPath.Use = NO\n"
                                        "Basic.Users.Path = \"other/\"\n");
  const auto look = [&] {
    const WTNVAppConfig* config = WTNVAppConfig::getInstance(first);
    const bool isFirst =
        WTNVAppConfig::getInstance(second) == config && config->wGetProjectsPath() == "projects/" &&
        config->wGetPlatformsPath() == "platforms/" && config->wGetAugmentsPath() == "augments/" &&
        config->wGetUsersPath() == "users/";
    std::exit(isFirst ? 0 : 1);
  };
  EXPECT_EXIT(look(), testing::ExitedWithCode(0), "");
}

TEST(WTNVAppConfigDeathTest, PathsLieBelowTheDocumentsOfTheAccount) {
  const TempDirectory temp;
  const std::string file = temp.write("app.cfg", "");
  const auto look = [&] {
    const std::string expected = tnv::documentsDirectory() + "Annotation.Tessarine/users/";
    std::exit(WTNVAppConfig::getInstance(file)->wGetUsersPath() == expected ? 0 : 1);
  };
  EXPECT_EXIT(look(), testing::ExitedWithCode(0), "");
}
