#include "foundation/TNVDirectory.h"

#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include "support/LogCapture.h"
#include "support/TempDirectory.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

#ifdef TNV_SANITIZED
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif

std::vector<std::string> fileNames(const std::vector<TNVFileInfo>& infos) {
  std::vector<std::string> names;
  for (const TNVFileInfo& info : infos)
    names.push_back(info.fileName);
  return names;
}

}  // namespace

TEST(TNVDirectory, CreatesADirectoryWithItsParents) {
  const TempDirectory temp;
  TNVDirectory::createDirectory(temp / "a/b/c/");
  EXPECT_TRUE(std::filesystem::is_directory(temp / "a/b/c"));
}

TEST(TNVDirectory, FailureToCreateIsLogged) {
  const TempDirectory temp;
  temp.write("file", "");
  const LogCapture log;
  TNVDirectory::createDirectory(temp / "file/below");
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVDirectory::createDirectory: Error while creating directories!"));
}

TEST(TNVDirectory, ExistsAnswersForFilesAndDirectories) {
  const TempDirectory temp;
  EXPECT_TRUE(TNVDirectory::exists(temp.path()));
  EXPECT_TRUE(TNVDirectory::exists(temp.write("file", "")));
  EXPECT_FALSE(TNVDirectory::exists(temp / "missing"));
}

TEST(TNVDirectory, ExistsThrowsWhatIsNotAnAnswer) {
  EXPECT_THROW(TNVDirectory::exists(std::string(5000, 'a')), std::filesystem::filesystem_error);
}

TEST(TNVDirectory, RemoveTakesAllThatLiesBelow) {
  const TempDirectory temp;
  temp.write("a/b/file", "");
  TNVDirectory::remove(temp / "a");
  EXPECT_FALSE(TNVDirectory::exists(temp / "a"));
  EXPECT_NO_THROW(TNVDirectory::remove(temp / "a"));
}

TEST(TNVDirectory, RemoveThrowsUnderItsName) {
  try {
    TNVDirectory::remove(std::string(5000, 'a'));
    FAIL() << "must throw";
  } catch (const std::filesystem::filesystem_error& error) {
    EXPECT_THAT(error.what(), testing::HasSubstr("remove_all"));
  }
}

TEST(TNVDirectory, ReadFilesComparesExtensionsWithoutCase) {
  const TempDirectory temp;
  temp.write("a.jpg", "");
  temp.write("B.JPG", "");
  temp.write("c.png", "");
  EXPECT_THAT(fileNames(TNVDirectory::readFiles(temp.path(), {"JPG"}, false)),
              UnorderedElementsAre("a.jpg", "B.JPG"));
  EXPECT_THAT(fileNames(TNVDirectory::readFiles(temp.path(), {"jpg"}, false)),
              UnorderedElementsAre("a.jpg", "B.JPG"));
}

TEST(TNVDirectory, ReadFilesWithoutTypesTakesAllEntries) {
  const TempDirectory temp;
  temp.write("a.jpg", "");
  temp.write("sub/b.jpg", "");
  EXPECT_THAT(fileNames(TNVDirectory::readFiles(temp.path(), {}, false)),
              UnorderedElementsAre("a.jpg", "sub"));
}

TEST(TNVDirectory, ReadFilesGoesDownOnlyWhenAsked) {
  const TempDirectory temp;
  temp.write("a.jpg", "");
  temp.write("sub/b.jpg", "");
  EXPECT_THAT(fileNames(TNVDirectory::readFiles(temp.path(), {"jpg"}, true)),
              UnorderedElementsAre("a.jpg", "b.jpg"));
  EXPECT_THAT(fileNames(TNVDirectory::readFiles(temp.path(), {"jpg"}, false)),
              ElementsAre("a.jpg"));
}

TEST(TNVDirectory, AnEntryComesOnceForEachEqualType) {
  const TempDirectory temp;
  temp.write("a.jpg", "");
  EXPECT_THAT(fileNames(TNVDirectory::readFiles(temp.path(), {"jpg", "JPG"}, false)),
              ElementsAre("a.jpg", "a.jpg"));
}

TEST(TNVDirectory, ReadFilesOfAMissingPathIsLogged) {
  const TempDirectory temp;
  const LogCapture log;
  EXPECT_THAT(TNVDirectory::readFiles(temp / "missing", {}, false), IsEmpty());
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVDirectory::readFiles: Path '" + (temp / "missing") + "' not found!"));
}

TEST(TNVDirectory, ReadFileNamesOfAMissingPathIsSilent) {
  const TempDirectory temp;
  temp.write("a.cfg", "");
  const LogCapture log;
  EXPECT_THAT(TNVDirectory::readFileNames(temp / "missing", {"cfg"}), IsEmpty());
  EXPECT_THAT(TNVDirectory::readFileNames(temp.path(), {"cfg"}), ElementsAre("a.cfg"));
  EXPECT_EQ("", log.text());
}

TEST(TNVDirectory, ReadDirectoriesGivesTheFirstLevelWithSlashes) {
  const TempDirectory temp;
  temp.write("a/b/file", "");
  temp.write("c/file", "");
  temp.write("file", "");
  EXPECT_THAT(TNVDirectory::readDirectories(temp.path()),
              UnorderedElementsAre(temp / "a/", temp / "c/"));
}

TEST(TNVDirectory, ReadDirectoriesOfAMissingPathIsLogged) {
  const TempDirectory temp;
  const LogCapture log;
  EXPECT_THAT(TNVDirectory::readDirectories(temp / "missing"), IsEmpty());
  EXPECT_THAT(log.lines(), ElementsAre("TNVDirectory::readDirectories: Path '" +
                                       (temp / "missing") + "' not found!"));
}

TEST(TNVDirectory, LastDirectoryNameNeedsTheFinalSlash) {
  const TempDirectory temp;
  temp.makeDirectory("one/two");
  EXPECT_EQ("two", TNVDirectory::getLastDirectoryName(temp / "one/two/"));
  EXPECT_EQ("two", TNVDirectory::getLastDirectoryName(temp / "one/two//"));
  EXPECT_EQ("one", TNVDirectory::getLastDirectoryName(temp / "one/two"));
}

TEST(TNVDirectory, LastDirectoryNameOfNoDirectoryIsLogged) {
  const TempDirectory temp;
  const LogCapture log;
  EXPECT_EQ("", TNVDirectory::getLastDirectoryName(temp / "missing/"));
  EXPECT_THAT(log.lines(), ElementsAre("TNVDirectory::getLastDirectoryName: '" +
                                       (temp / "missing/") + "' is not direcotry!"));
}

TEST(TNVDirectory, NormalizedPathsHaveForwardSlashesAndOneBehindADirectory) {
  const TempDirectory temp;
  temp.makeDirectory("dir");
  EXPECT_EQ(temp / "dir/", TNVDirectory::normalizePath(temp / "dir"));
  EXPECT_EQ(temp / "dir/", TNVDirectory::normalizePath(temp / "dir/"));
  EXPECT_EQ("no/such/place", TNVDirectory::normalizePath("no\\such\\place"));
  EXPECT_EQ("", TNVDirectory::normalizePath(""));
}

TEST(TNVDirectory, CopiesFilesAndDirectories) {
  const TempDirectory temp;
  temp.write("a/sub/file", "content");
  TNVDirectory::copy(temp / "a", temp / "b");
  EXPECT_EQ("content", readFile(temp / "b/sub/file"));
  TNVDirectory::copy(temp / "a/sub/file", temp / "copy");
  EXPECT_EQ("content", readFile(temp / "copy"));
}

TEST(TNVDirectory, CopyThrowsUnderItsNameAndOverwritesNothing) {
  const TempDirectory temp;
  temp.write("a", "new");
  temp.write("b", "old");
  for (const char* source : {"a", "missing"}) {
    try {
      TNVDirectory::copy(temp / source, temp / "b");
      FAIL() << "must throw";
    } catch (const std::filesystem::filesystem_error& error) {
      EXPECT_THAT(error.what(), testing::HasSubstr("copy"));
    }
  }
  EXPECT_EQ("old", readFile(temp / "b"));
}

TEST(TNVDirectory, ReadsTheLinesOfAFile) {
  const TempDirectory temp;
  EXPECT_THAT(TNVDirectory::readLines(temp.write("file", "a\n\nb")), ElementsAre("a", "", "b"));
  EXPECT_THAT(TNVDirectory::readLines(temp / "missing"), IsEmpty());
}

TEST(TNVDirectory, FileSizeIsInBytes) {
  const TempDirectory temp;
  EXPECT_EQ(5, TNVDirectory::fileSize(temp.write("file", "a\r\nbc")));
  EXPECT_EQ(0, TNVDirectory::fileSize(temp.write("empty", "")));
  EXPECT_EQ(-1, TNVDirectory::fileSize(temp / "missing"));
  EXPECT_EQ(-1, TNVDirectory::fileSize(temp.path()));
}

TEST(TNVDirectory, MD5OfKnownContents) {
  // The digests are the test suite of RFC 1321.
  const TempDirectory temp;
  EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", TNVDirectory::fileMD5(temp.write("empty", "")));
  EXPECT_EQ("900150983cd24fb0d6963f7d28e17f72", TNVDirectory::fileMD5(temp.write("abc", "abc")));
  EXPECT_EQ("f96b697d7cb7938d525a2f31aaf161d0",
            TNVDirectory::fileMD5(temp.write("message", "message digest")));
}

TEST(TNVDirectory, MD5OfAFileOfManyPieces) {
  // More than is read at once; the digest is that of the command md5sum.
  const TempDirectory temp;
  EXPECT_EQ("2a915e52d86d42e58e580f4073120a6b",
            TNVDirectory::fileMD5(temp.write("long", std::string(2000000, 'a'))));
}

TEST(TNVDirectory, MD5OfALargeFileNeedsNoMemoryOfItsSize) {
  if (kIsSanitized) {
    std::cerr << "left out: a sanitizer takes more address space than a limit would leave\n";
    return;
  }
  // Of zeros; the digest is that of the command md5sum.
  constexpr std::uintmax_t size = 1 << 28;
  const TempDirectory temp;
  const std::string file = temp.write("zeros", "");
  std::filesystem::resize_file(file, size);
  const auto hashWithLittleMemory = [&] {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t room = pages * static_cast<std::size_t>(getpagesize()) + size / 4;
    const rlimit limit{room, room};
    if (setrlimit(RLIMIT_AS, &limit) != 0) _exit(2);
    _exit(TNVDirectory::fileMD5(file) == "1f5039e50bd66b290c56684d8550c6c2" ? 0 : 1);
  };
  EXPECT_EXIT(hashWithLittleMemory(), testing::ExitedWithCode(0), "");
}

TEST(TNVDirectory, RemoveOfALinkLeavesWhatItLeadsTo) {
  const TempDirectory temp;
  temp.write("target/file", "kept");
  std::filesystem::create_directory_symlink(temp / "target", temp / "link");
  TNVDirectory::remove(temp / "link/");
  EXPECT_FALSE(std::filesystem::is_symlink(temp / "link"));
  EXPECT_EQ("kept", readFile(temp / "target/file"));
}

TEST(TNVDirectory, MD5OfAnUnreadableFileIsEmpty) {
  const TempDirectory temp;
  EXPECT_EQ("", TNVDirectory::fileMD5(temp / "missing"));
  EXPECT_EQ("", TNVDirectory::fileMD5(temp.path()));
}

TEST(MakeUniqueName, IsMadeOfTheTimeAndTheCounter) {
  std::tm time{};
  time.tm_year = 2026 - 1900;
  time.tm_mon = 10;
  time.tm_mday = 15;
  time.tm_hour = 17;
  time.tm_min = 6;
  time.tm_sec = 5;
  EXPECT_EQ("111520261706050", makeUniqueName(time, 0));
  EXPECT_EQ("1115202617060512", makeUniqueName(time, 12));
}

TEST(MakeUniqueName, CountsUpByOne) {
  const auto counterOf = [](const std::string& name) { return std::stoi(name.substr(14)); };
  const int first = counterOf(makeUniqueName());
  EXPECT_EQ(first + 1, counterOf(makeUniqueName()));
  EXPECT_EQ(first + 2, counterOf(makeUniqueName()));
}

TEST(MakeUniqueName, NamesThatAreThereAlreadyAreGivenToNobody) {
  const TempDirectory temp;
  // The names of the next seconds with the next counters, as another process may have given them.
  const std::string last = makeUniqueName();
  const auto counter = static_cast<unsigned>(std::stoul(last.substr(14)));
  std::set<std::string> taken;
  for (int second = -1; second < 5; ++second) {
    for (unsigned next = 1; next <= 3; ++next) {
      const std::time_t time = std::time(nullptr) + second;
      taken.insert(makeUniqueName(*std::localtime(&time), counter + next));
    }
  }
  for (const std::string& name : taken)
    temp.write(name + ".xml", "");
  const std::string name = makeUniqueName(temp.path() + "/", ".xml");
  EXPECT_EQ(taken.count(name), 0U) << name;
  EXPECT_EQ(name.substr(14), std::to_string(counter + 4));
  EXPECT_EQ(makeUniqueName(temp.path() + "/", ".jpg").substr(14), std::to_string(counter + 5));
}
