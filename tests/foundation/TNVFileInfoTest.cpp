#include "foundation/TNVFileInfo.h"

#include <gtest/gtest.h>

TEST(TNVFileInfo, PartsOfAPath) {
  struct Row {
    const char* path;
    const char* fileName;
    const char* baseName;
    const char* extension;
    const char* directory;
    const char* fullPath;
  };
  const Row rows[] = {
      {"dir/a.b.jpg", "a.b.jpg", "a", "jpg", "dir/", "dir/a.b.jpg"},
      {"a.jpg", "a.jpg", "a", "jpg", "a.jpg/", "a.jpg"},
      {"c:\\x\\y.png", "y.png", "y", "png", "c:/x/", "c:/x/y.png"},
      {"dir/.hidden", ".hidden", "", "", "dir/", "dir/.hidden"},
      {"dir/name", "name", "name", "", "dir/", "dir/name"},
      {"dir/name.", "name.", "name", "", "dir/", "dir/name."},
      {"/dir/", "", "", "", "/dir/", "/dir/"},
      {"", "", "", "", "/", ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.path);
    const TNVFileInfo info(row.path);
    EXPECT_EQ(row.fileName, info.fileName);
    EXPECT_EQ(row.baseName, info.baseName);
    EXPECT_EQ(row.extension, info.extension);
    EXPECT_EQ(row.directory, info.directory);
    EXPECT_EQ(row.fullPath, info.fullPath);
  }
}
