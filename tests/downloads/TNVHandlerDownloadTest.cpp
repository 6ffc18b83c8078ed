#include "downloads/TNVHandlerDownload.h"

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "TNV_SampleBenchNative/WTNVHandlerDownload.h"
#include "TNV_SampleBenchNative/WTNVProject.h"
#include "foundation/TNVDirectory.h"
#include "support/FileLimit.h"
#include "support/LogCapture.h"
#include "support/PortalServer.h"
#include "support/TempDirectory.h"

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

namespace {

constexpr auto kMD5OfNothing = "d41d8cd98f00b204e9800998ecf8427e";
/// Of the text "hello".
constexpr auto kMD5OfHello = "5d41402abc4b2a76b9719d911017c592";

std::vector<std::string> events;
std::vector<double> shares;
TNVHandlerDownload* watched = nullptr;

TNVDownloadFile fileNamed(const std::string& name, const std::string& address = "") {
  TNVDownloadFile file;
  file.fileName = name;
  file.downloadAddress = address;
  return file;
}

/// A variable of the environment with another value as long as this object lives.
class Environment {
 public:
  Environment(const char* name, const char* value) : variable(name) {
    if (const char* const before = std::getenv(name)) kept = before;
    ::setenv(name, value, 1);
  }
  ~Environment() { kept ? ::setenv(variable, kept->c_str(), 1) : ::unsetenv(variable); }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

 private:
  const char* variable;
  std::optional<std::string> kept;
};

class Download : public testing::Test {
 protected:
  Download() {
    temp.makeDirectory("weights");
    events.clear();
    shares.clear();
    watched = &handler;
    wrapper.setCBDownloadStarted([] { events.emplace_back("started"); });
    wrapper.setCBDownloadUpdate([] { shares.push_back(watched->progress); });
    wrapper.setCBDownloadFinished([] { events.emplace_back("finished"); });
  }

  std::string weights() const { return temp / "weights/"; }

  bool download(const std::string& path, const std::string& name = "w.bin") {
    return wrapper.wDownloadFile(WTNVDownloadFile(fileNamed(name, server.address(path))),
                                 weights());
  }
  std::string content(const std::string& name = "w.bin") const {
    return readFile(weights() + name);
  }

  void offer(const std::vector<TNVDownloadFile>& files) {
    server.reply = "{";
    for (std::size_t i = 0; i < files.size(); ++i) {
      server.reply += std::string(i > 0 ? "," : "") + "\"" + std::to_string(i) + "\":{\"name\":\"" +
                      files[i].fileName + "\",\"hash\":\"" + files[i].md5Hash +
                      "\",\"file_size\":\"" + std::to_string(files[i].fileSize) +
                      "\",\"creation_date\":\"today\",\"download_link\":\"x\"}";
    }
    server.reply += "}";
  }

  std::vector<WTNVDownloadFile> list() {
    return wrapper.wGetAllFiles(server.listAddress(), weights());
  }

  /// Downloadable, downloaded, size and hash as letters.
  static std::string statesOf(const WTNVDownloadFile& file) {
    return std::string(file.wGetStateDownloadable() ? "P" : "-") +
           (file.wGetStateDownloaded() ? "D" : "-") + (file.wGetStateFileSizeValid() ? "S" : "-") +
           (file.wGetStateMD5Valid() ? "H" : "-");
  }

  static std::vector<std::string> namesAndStates(const std::vector<WTNVDownloadFile>& files) {
    std::vector<std::string> texts;
    for (const WTNVDownloadFile& file : files)
      texts.push_back(file.wGetFileName() + " " + statesOf(file));
    return texts;
  }

  TempDirectory temp;
  PortalServer server;
  TNVHandlerDownload handler;
  WTNVHandlerDownload wrapper{&handler};
};

TNVDownloadFile offered(const std::string& name, int size, const std::string& hash) {
  TNVDownloadFile file = fileNamed(name);
  file.fileSize = size;
  file.md5Hash = hash;
  return file;
}

}  // namespace

TEST_F(Download, TheListIsAskedForByPostingNull) {
  handler.downloadList(server.listAddress());
  EXPECT_THAT(server.bodies, ElementsAre("null\n"));
  EXPECT_THAT(server.contentTypes, ElementsAre("application/x-www-form-urlencoded"));
}

TEST_F(Download, AnEmptyObjectIsAnEmptyList) {
  const LogCapture log;
  EXPECT_THAT(handler.downloadList(server.listAddress()), IsEmpty());
  EXPECT_EQ(log.text(), "");
}

TEST_F(Download, TheListIsThatOfTheReplyInReverse) {
  offer({offered("a", 1, "h"), offered("b", 2, "h")});
  const auto files = handler.downloadList(server.listAddress());
  ASSERT_THAT(files, SizeIs(2));
  EXPECT_EQ(files[0].fileName, "b");
  EXPECT_EQ(files[1].fileName, "a");
  EXPECT_EQ(files[1].timeStamp, "today");
}

TEST_F(Download, AnUnreachablePortalIsAnEmptyListWithoutAWord) {
  server.stop();
  const LogCapture log;
  EXPECT_THAT(handler.downloadList(server.listAddress()), IsEmpty());
  EXPECT_THAT(handler.downloadList("no address"), IsEmpty());
  EXPECT_THAT(handler.downloadList("ftp://localhost/list"), IsEmpty());
  EXPECT_EQ(log.text(), "");
}

TEST_F(Download, FailuresOfTheReplyPassToTheCallerAndTheNextListIsFine) {
  server.reply = "[{\"name\":\"a\"}]";
  EXPECT_THROW(handler.downloadList(server.listAddress()), std::exception);
  server.reply = "{\"0\":{\"name\":\"a\"}}";
  EXPECT_THROW(handler.downloadList(server.listAddress()), std::invalid_argument);
  server.reply = "{\"0\":{\"name\":\"a\",\"file_size\":\"99999999999\"}}";
  EXPECT_THROW(handler.downloadList(server.listAddress()), std::out_of_range);
  server.reply = "<html>";
  EXPECT_THAT(handler.downloadList(server.listAddress()), IsEmpty());
  offer({offered("a", 1, "h")});
  EXPECT_THAT(handler.downloadList(server.listAddress()), SizeIs(1));
}

TEST_F(Download, NamesThatLeadElsewhereAreLeftOutOfTheList) {
  offer({offered("../evil", 1, ""), offered("good", 1, ""), offered("", 1, ""),
         offered("..", 1, ""), offered(".", 1, ""), offered("a\\\\b", 1, ""),
         offered("a\\nb", 1, ""), offered("/etc/x", 1, "")});
  const LogCapture log;
  const auto files = handler.downloadList(server.listAddress());
  ASSERT_THAT(files, SizeIs(1));
  EXPECT_EQ(files[0].fileName, "good");
  EXPECT_THAT(log.lines(), SizeIs(7));
  EXPECT_THAT(log.lines(), Each(StartsWith("TNVHandlerDownload::downloadList: File name '")));
  EXPECT_THAT(log.lines(), Contains("TNVHandlerDownload::downloadList: File name 'a?b' must not be "
                                    "empty or a path!"));
}

TEST_F(Download, AFileIsFetchedWithItsEvents) {
  EXPECT_TRUE(download("/file"));
  EXPECT_EQ(content(), servedContent());
  EXPECT_THAT(events, ElementsAre("started", "finished"));
  EXPECT_EQ(handler.progress, 1.0);
  EXPECT_FALSE(handler.fileStream.is_open());
}

TEST_F(Download, UpdatesComeBeforeTheShareIsStored) {
  wrapper.setCBDownloadStarted([] {
    EXPECT_EQ(watched->progress, 0.0);
    watched->progress = -1.0;
  });
  wrapper.setCBDownloadFinished([] { EXPECT_EQ(watched->progress, 1.0); });
  handler.progress = 0.7;
  EXPECT_TRUE(download("/slow"));
  ASSERT_GT(shares.size(), 2U);
  EXPECT_EQ(shares.front(), -1.0) << "nothing is stored yet";
  EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
  EXPECT_GT(shares.back(), 0.0);
  EXPECT_LE(shares.back(), 1.0);
}

TEST_F(Download, TheShareIsThatOfTheBytes) {
  const LogCapture log;
  EXPECT_FALSE(download("/cut"));
  EXPECT_EQ(handler.progress, 0.5) << "half of the file came";
}

TEST_F(Download, WithoutALengthThereAreNoUpdates) {
  wrapper.setCBDownloadFinished([] {
    EXPECT_EQ(watched->progress, 1.0) << "without a share on the way, too";
    events.emplace_back("finished");
  });
  EXPECT_TRUE(download("/endless"));
  EXPECT_EQ(content().size(), kServedSize);
  EXPECT_THAT(shares, IsEmpty());
  EXPECT_THAT(events, ElementsAre("started", "finished"));
}

TEST_F(Download, AnEmptyFileIsFetchedToo) {
  EXPECT_TRUE(download("/empty"));
  EXPECT_TRUE(std::filesystem::is_empty(weights() + "w.bin"));
}

TEST_F(Download, AnErrorPageIsSavedLikeAFile) {
  EXPECT_TRUE(download("/absent"));
  EXPECT_TRUE(std::filesystem::exists(weights() + "w.bin"));
  EXPECT_THAT(events, ElementsAre("started", "finished"));
}

TEST_F(Download, ARedirectionIsNotFollowed) {
  EXPECT_TRUE(download("/elsewhere"));
  EXPECT_EQ(content(), "");
}

TEST_F(Download, ARefusedConnectionIsAFailureWithTheCode) {
  server.stop();
  const LogCapture log;
  EXPECT_FALSE(download("/file"));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVDownloadManager::downlaodFile: Could not downlaod, reason: 7"));
  EXPECT_THAT(events, ElementsAre("started"));
  EXPECT_FALSE(handler.fileStream.is_open());
  EXPECT_NE(handler.progress, 1.0);
}

TEST_F(Download, OfAFileCutHalfWayThePartStays) {
  const LogCapture log;
  EXPECT_FALSE(download("/cut"));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVDownloadManager::downlaodFile: Could not downlaod, reason: 18"));
  EXPECT_THAT(events, ElementsAre("started"));
  EXPECT_EQ(content().size(), kServedSize / 2);
}

TEST_F(Download, AnEarlierFileIsReplacedOnlyByAWholeOne) {
  temp.write("weights/w.bin", "earlier");
  {
    const LogCapture log;
    EXPECT_FALSE(download("/cut"));
  }
  EXPECT_EQ(content(), "earlier");
  EXPECT_EQ(content("w.bin.part").size(), kServedSize / 2);
  const auto owner = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
  std::filesystem::permissions(weights() + "w.bin", owner);
  EXPECT_TRUE(download("/file"));
  EXPECT_EQ(content(), servedContent());
  EXPECT_FALSE(std::filesystem::exists(weights() + "w.bin.part"));
  EXPECT_EQ(std::filesystem::status(weights() + "w.bin").permissions(), owner);
}

TEST_F(Download, AnObserverMayCancel) {
  wrapper.setCBDownloadUpdate([] { watched->cancel = true; });
  const LogCapture log;
  EXPECT_FALSE(download("/slow"));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVDownloadManager::downlaodFile: Could not downlaod, reason: 23"));
  wrapper.setCBDownloadUpdate(nullptr);
  EXPECT_TRUE(download("/file")) << "the next download starts anew";
}

TEST_F(Download, WhatAnObserverThrowsPassesToTheCaller) {
  wrapper.setCBDownloadUpdate([] { throw std::logic_error("observer"); });
  EXPECT_THROW(download("/slow"), std::logic_error);
  EXPECT_FALSE(handler.fileStream.is_open());
}

TEST_F(Download, AMissingDirectoryIsAFailureAndNothingIsWrittenBesideIt) {
  for (const char* directory : {"absent", "absent/"}) {
    const LogCapture log;
    EXPECT_FALSE(wrapper.wDownloadFile(WTNVDownloadFile(fileNamed("w", server.address("/file"))),
                                       temp / directory));
    EXPECT_THAT(log.lines(),
                ElementsAre("TNVDownloadManager::downlaodFile: Could not downlaod, reason: 23"));
  }
  EXPECT_FALSE(std::filesystem::exists(temp / "absentw"));
}

TEST_F(Download, ADirectoryInTheWayIsKept) {
  temp.write("weights/w.bin/kept", "x");
  const LogCapture log;
  EXPECT_FALSE(download("/file"));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVDownloadManager::downlaodFile: Could not downlaod, reason: 23"));
  EXPECT_EQ(content("w.bin/kept"), "x");
}

TEST_F(Download, OtherSchemesAreNotFollowedButALocalMirrorIs) {
  const std::string mirror = temp.write("mirror.bin", "local");
  EXPECT_TRUE(
      wrapper.wDownloadFile(WTNVDownloadFile(fileNamed("w", "file://" + mirror)), weights()));
  EXPECT_EQ(content("w"), "local");
  const LogCapture log;
  for (const char* address : {"ftp://localhost/x", "dict://localhost/x", "smtp://localhost"})
    EXPECT_FALSE(wrapper.wDownloadFile(WTNVDownloadFile(fileNamed("v", address)), weights()));
  EXPECT_THAT(log.lines(), Each("TNVDownloadManager::downlaodFile: Could not downlaod, reason: 1"));
}

TEST_F(Download, NamesThatLeadElsewhereAreRefused) {
  temp.write("victim", "x");
  const LogCapture log;
  for (const char* name : {"../victim", "", ".", "..", "a/b", "a\\b", "a\nb"}) {
    const WTNVDownloadFile file(fileNamed(name, server.address("/file")));
    EXPECT_FALSE(wrapper.wDownloadFile(file, weights()));
    EXPECT_FALSE(wrapper.wRemoveFile(file, weights()));
  }
  EXPECT_FALSE(wrapper.wDownloadFile(WTNVDownloadFile(), weights()));
  EXPECT_FALSE(wrapper.wRemoveFile(WTNVDownloadFile(), weights()));
  EXPECT_FALSE(wrapper.wImportFile(temp / "weights/", weights()));
  EXPECT_THAT(events, IsEmpty());
  EXPECT_EQ(log.lines()[0],
            "TNVHandlerDownload::downlaodFile: File name '../victim' must not be empty or a path!");
  EXPECT_EQ(log.lines()[1],
            "TNVHandlerDownload::removeFile: File name '../victim' must not be empty or a path!");
  EXPECT_EQ(readFile(temp / "victim"), "x");
}

TEST_F(Download, StoppingDoesNothing) {
  EXPECT_FALSE(wrapper.wStopDownload());
  EXPECT_FALSE(handler.cancel);
}

TEST_F(Download, StatesTellHowPortalAndDirectoryCompare) {
  temp.write("weights/same", "hello");
  temp.write("weights/size", "hello!");
  temp.write("weights/hash", "hallo");
  temp.write("weights/own", "hello");
  offer({offered("same", 5, kMD5OfHello), offered("size", 5, kMD5OfHello),
         offered("hash", 5, kMD5OfHello), offered("portal", 5, kMD5OfHello)});
  const LogCapture log;
  const auto files = list();
  EXPECT_THAT(namesAndStates(files),
              ElementsAre("portal P---", "hash PDS-", "size PD--", "same PDSH", "own ----"));
  EXPECT_THAT(log.lines(), ElementsAre("dwnds: 4", "locals: 4", "cmb: 5"));
  // What is in both shows what the portal says.
  EXPECT_EQ(files[2].wGetFileSize(), 5);
  EXPECT_EQ(files[2].wGetMD5Hash(), kMD5OfHello);
  EXPECT_EQ(files[2].wGetTimeStamp(), "today");
  EXPECT_EQ(files[2].wGetDownloadAddress(), "x");
  EXPECT_EQ(files[4].wGetTimeStamp(), "00:00");
  EXPECT_EQ(files[4].wGetMD5Hash(), kMD5OfHello);
  EXPECT_EQ(files[4].wGetFileSize(), 5);
  EXPECT_EQ(files[4].wGetDownloadAddress(), "");
}

TEST_F(Download, AnEmptyDirectoryLeavesThePortalsFiles) {
  offer({offered("a", 5, ""), offered("b", 5, "")});
  EXPECT_THAT(namesAndStates(list()), ElementsAre("b P---", "a P---"));
}

TEST_F(Download, NamesThatDifferInCaseAreTwoFiles) {
  temp.write("weights/A.bin", "hello");
  offer({offered("a.bin", 5, kMD5OfHello)});
  EXPECT_THAT(namesAndStates(list()), ElementsAre("a.bin P---", "A.bin ----"));
}

TEST_F(Download, HashesDifferInCaseToo) {
  temp.write("weights/a", "hello");
  offer({offered("a", 5, "5D41402ABC4B2A76B9719D911017C592")});
  EXPECT_THAT(namesAndStates(list()), ElementsAre("a PDS-"));
}

TEST_F(Download, AFileOfferedTwiceIsComparedTwice) {
  temp.write("weights/a", "hello");
  offer({offered("a", 5, kMD5OfHello), offered("a", 6, "")});
  EXPECT_THAT(namesAndStates(list()), ElementsAre("a PD--", "a PDSH"));
}

TEST_F(Download, AnEmptyFileHasTheHashOfNothing) {
  temp.write("weights/a", "");
  const auto files = list();
  ASSERT_THAT(files, SizeIs(1));
  EXPECT_EQ(files[0].wGetMD5Hash(), kMD5OfNothing);
  EXPECT_EQ(files[0].wGetFileSize(), 0);
}

TEST_F(Download, WhatIsNoFileIsListedAsOneThatCannotBeOpened) {
  temp.makeDirectory("weights/below");
  ASSERT_EQ(mkfifo((weights() + "pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink("nowhere", weights() + "dangling");
  const auto files = list();
  ASSERT_THAT(files, SizeIs(3));
  for (const WTNVDownloadFile& file : files) {
    EXPECT_EQ(file.wGetMD5Hash(), "") << file.wGetFileName();
    EXPECT_EQ(file.wGetFileSize(), -1) << file.wGetFileName();
  }
}

TEST_F(Download, WithoutPortalAndDirectoryTheListIsEmptyButForItsCounts) {
  server.stop();
  const LogCapture log;
  EXPECT_THAT(wrapper.wGetAllFiles(server.listAddress(), temp / "absent/"), IsEmpty());
  const auto lines = log.lines();
  ASSERT_THAT(lines, SizeIs(4));
  EXPECT_EQ(lines[0], "dwnds: 0");
  EXPECT_EQ(lines[2], "locals: 0");
  EXPECT_EQ(lines[3], "cmb: 0");
}

TEST_F(Download, AFileIsImportedUnderItsName) {
  const std::string source = temp.write("from/w.bin", "hello");
  EXPECT_TRUE(wrapper.wImportFile(source, weights()));
  EXPECT_EQ(content(), "hello");
  EXPECT_EQ(readFile(source), "hello");
}

TEST_F(Download, ImportingOverAFileRaisesTheFilesystemError) {
  const std::string source = temp.write("from/w.bin", "hello");
  temp.write("weights/w.bin", "earlier");
  EXPECT_THROW(wrapper.wImportFile(source, weights()), std::filesystem::filesystem_error);
  EXPECT_EQ(content(), "earlier");
  EXPECT_THROW(wrapper.wImportFile(temp / "absent", weights()), std::filesystem::filesystem_error);
}

TEST_F(Download, WhatHasNoPlainNameIsNotImported) {
  temp.write("from/below/w.bin", "hello");
  const LogCapture log;
  for (const std::string& source : {temp.write("from/a\nb", "hello"), temp / "from/below/..",
                                    temp / "from/below/.", temp / "from/below/"})
    EXPECT_FALSE(wrapper.wImportFile(source, weights())) << source;
  EXPECT_THAT(log.lines(), Each(StartsWith("TNVHandlerDownload::importFile: File name '")));
  EXPECT_TRUE(std::filesystem::is_empty(weights()));
}

TEST_F(Download, ACopyOfTheWrapperHearsTheEventsToo) {
  WTNVHandlerDownload copy(wrapper);
  copy.setCBDownloadFinished([] { events.emplace_back("finished for the copy"); });
  EXPECT_TRUE(download("/file"));
  EXPECT_THAT(events, Contains("finished for the copy"));
}

TEST_F(Download, RemovingSucceedsAlsoForAFileThatWasNeverThere) {
  temp.write("weights/w.bin", "x");
  const WTNVDownloadFile file(fileNamed("w.bin"));
  EXPECT_TRUE(wrapper.wRemoveFile(file, weights()));
  EXPECT_FALSE(std::filesystem::exists(weights() + "w.bin"));
  EXPECT_TRUE(wrapper.wRemoveFile(file, weights()));
}

TEST_F(Download, ARemovalThatThePlatformRefusesIsFalse) {
  temp.write("weights/w.bin/kept", "x");
  EXPECT_FALSE(wrapper.wRemoveFile(WTNVDownloadFile(fileNamed("w.bin")), weights()));
  EXPECT_EQ(content("w.bin/kept"), "x");
}

TEST_F(Download, AnEmptyDirectoryIsNoFileToRemove) {
  temp.makeDirectory("weights/below");
  EXPECT_FALSE(wrapper.wRemoveFile(WTNVDownloadFile(fileNamed("below")), weights()));
  EXPECT_TRUE(std::filesystem::is_directory(weights() + "below"));
}

TEST_F(Download, RecordsAreCopiesOfTheirOwn) {
  TNVDownloadFile record = offered("a", 5, "h");
  const WTNVDownloadFile first(record);
  record.fileName = "b";
  WTNVDownloadFile second;
  EXPECT_EQ(second.wGetNativeDownloadFile(), nullptr);
  EXPECT_EQ(second.wGetFileName(), "");
  EXPECT_EQ(second.wGetFileSize(), 0);
  second = first;
  const WTNVDownloadFile third(second);
  EXPECT_EQ(second.wGetFileName(), "a");
  EXPECT_EQ(third.wGetMD5Hash(), "h");
  EXPECT_NE(first.wGetNativeDownloadFile(), second.wGetNativeDownloadFile());
  EXPECT_NE(third.wGetNativeDownloadFile(), second.wGetNativeDownloadFile());
}

TEST_F(Download, AProjectHandsItsHandlerOut) {
  WTNVProject project("demo", temp / "projects/", "", "");
  WTNVHandlerDownload download = project.getHndDownload();
  EXPECT_TRUE(
      download.wDownloadFile(WTNVDownloadFile(fileNamed("w", server.address("/file"))), weights()));
}

TEST_F(Download, ACertificateThatNoStoreKnowsIsRefusedUnlessTheBuildSaysOtherwise) {
  PortalServer encrypted(true);
  encrypted.reply = server.reply = "{\"0\":{\"name\":\"a\",\"file_size\":\"1\"}}";
  const TNVDownloadFile file = fileNamed("w", encrypted.address("/file"));
  handler.verifyCertificates = true;
  {
    const LogCapture log;
    EXPECT_THAT(handler.downloadList(encrypted.listAddress()), IsEmpty());
    EXPECT_FALSE(handler.downlaodFile(file, weights()));
    EXPECT_THAT(log.lines(),
                ElementsAre("TNVDownloadManager::downlaodFile: Could not downlaod, reason: 60"));
  }
  handler.verifyCertificates = false;
  EXPECT_THAT(handler.downloadList(encrypted.listAddress()), SizeIs(1));
  EXPECT_TRUE(handler.downlaodFile(file, weights()));
  EXPECT_EQ(content("w"), servedContent());
}

TEST_F(Download, CertificatesAreCheckedByDefault) {
  EXPECT_TRUE(TNVHandlerDownload().verifyCertificates);
}

TEST_F(Download, WithoutADirectoryTheNameStandsAlone) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(temp.path());
  const std::string source = temp.write("from/w.bin", "hello");
  EXPECT_TRUE(wrapper.wImportFile(source, ""));
  EXPECT_EQ(readFile(temp / "w.bin"), "hello");
  EXPECT_TRUE(
      wrapper.wDownloadFile(WTNVDownloadFile(fileNamed("d.bin", server.address("/file"))), ""));
  EXPECT_EQ(readFile(temp / "d.bin"), servedContent());
  EXPECT_TRUE(wrapper.wRemoveFile(WTNVDownloadFile(fileNamed("w.bin")), ""));
  std::filesystem::current_path(before);
  EXPECT_FALSE(std::filesystem::exists(temp / "w.bin"));
}

TEST_F(Download, BackslashesInTheDirectoryAreSlashes) {
  const std::string source = temp.write("from/w.bin", "hello");
  EXPECT_TRUE(wrapper.wImportFile(source, temp.path() + "\\weights\\"));
  EXPECT_EQ(content(), "hello");
}

TEST_F(Download, TheListedDirectoryIsTakenAsItStands) {
  temp.write("weights/a", "hello");
  const auto files = wrapper.wGetAllFiles(server.listAddress(), temp / "weights");
  ASSERT_THAT(files, SizeIs(1));
  EXPECT_EQ(files[0].wGetFileSize(), -1) << "without its slash the path leads nowhere";
}

TEST_F(Download, WhatIsNoDirectoryToReadIsLoggedAndEmpty) {
  const std::string file = temp.write("file", "x");
  server.stop();
  const LogCapture log;
  EXPECT_THAT(wrapper.wGetAllFiles(server.listAddress(), file), IsEmpty());
  EXPECT_THAT(
      log.lines(),
      ElementsAre("dwnds: 0",
                  "TNVHandlerDownload::getAllFiles: Could not read directory '" + file + "'!",
                  "locals: 0", "cmb: 0"));
}

TEST_F(Download, AProxyOfTheEnvironmentIsNotAsked) {
  // Nothing answers there.
  const char* const proxy = "http://127.0.0.1:1";
  const Environment http("http_proxy", proxy);
  const Environment all("ALL_PROXY", proxy);
  const Environment none("no_proxy", "");
  const Environment upperNone("NO_PROXY", "");
  offer({offered("a", 1, "h")});
  EXPECT_THAT(handler.downloadList(server.listAddress()), SizeIs(1));
  EXPECT_TRUE(download("/file"));
}

TEST_F(Download, APortalThatSendsWithoutEndIsCutOff) {
  server.reply = "{\"0\":{\"name\":\"a\",\"file_size\":\"1\"},\"x\":\"" +
                 std::string((std::size_t{1} << 20) + (1 << 18), 'x') + "\"}";
  EXPECT_THROW(handler.downloadList(server.listAddress()), std::exception)
      << "of two members one was parsed";
  server.reply = std::string(std::size_t{1} << 22, ' ') + "{\"0\":{\"file_size\":\"x\"}}";
  EXPECT_THAT(handler.downloadList(server.listAddress()), IsEmpty());
}

TEST_F(Download, ANameTooLongForTheFileSystemIsAFailure) {
  const WTNVDownloadFile file(fileNamed(std::string(300, 'n'), server.address("/file")));
  const LogCapture log;
  EXPECT_FALSE(wrapper.wDownloadFile(file, weights()));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVDownloadManager::downlaodFile: Could not downlaod, reason: 23"));
  EXPECT_TRUE(wrapper.wRemoveFile(file, weights()));
}

TEST_F(Download, WhatIsNoFileIsNotWrittenTo) {
  ASSERT_EQ(mkfifo((weights() + "pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink(temp / "outside", weights() + "dangling");
  temp.write("weights/w.bin", "earlier");
  ASSERT_EQ(mkfifo((weights() + "w.bin.part").c_str(), 0600), 0);
  const LogCapture log;
  for (const char* name : {"pipe", "dangling", "w.bin"})
    EXPECT_FALSE(download("/file", name)) << name;
  EXPECT_FALSE(std::filesystem::exists(temp / "outside"));
  EXPECT_EQ(content(), "earlier");
  EXPECT_THAT(events, ElementsAre("started", "started", "started"));
}

TEST_F(Download, OfALinkedFileTheFileIsReplacedAndTheLinkStays) {
  temp.write("elsewhere/big.bin", "earlier");
  std::filesystem::create_symlink(temp / "elsewhere/big.bin", weights() + "w.bin");
  EXPECT_TRUE(download("/file"));
  EXPECT_TRUE(std::filesystem::is_symlink(weights() + "w.bin"));
  EXPECT_EQ(readFile(temp / "elsewhere/big.bin"), servedContent());
  EXPECT_FALSE(std::filesystem::exists(temp / "elsewhere/big.bin.part"));
}

TEST_F(Download, ALinkInThePlaceOfAPartIsNotWrittenThrough) {
  temp.write("weights/w.bin", "earlier");
  temp.write("victim", "kept");
  std::filesystem::create_symlink(temp / "victim", weights() + "w.bin.part");
  const LogCapture log;
  EXPECT_FALSE(download("/file"));
  EXPECT_EQ(content(), "earlier");
  EXPECT_EQ(readFile(temp / "victim"), "kept");
}

TEST_F(Download, APipeAsALocalMirrorIsNotWaitedFor) {
  ASSERT_EQ(mkfifo((temp / "a pipe").c_str(), 0600), 0);
  const LogCapture log;
  ASSERT_EQ(mkfifo((temp / "a\npipe").c_str(), 0600), 0);
  for (const std::string& address :
       {"file://" + temp.path() + "a%20pipe", "file://" + temp.path() + "a%0Apipe",
        std::string("file:///dev/zero")})
    EXPECT_FALSE(wrapper.wDownloadFile(WTNVDownloadFile(fileNamed("w.bin", address)), weights()));
  // The code of a file that cannot be read.
  EXPECT_THAT(log.lines(),
              Each("TNVDownloadManager::downlaodFile: Could not downlaod, reason: 37"));
}

TEST_F(Download, WhatFindsNoRoomOnTheDiskIsAFailure) {
  const std::string mirror = temp.write("small.bin", "less than a buffer");
  const LogCapture log;
  const FileLimit limit(4);
  EXPECT_FALSE(
      wrapper.wDownloadFile(WTNVDownloadFile(fileNamed("w.bin", "file://" + mirror)), weights()));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVDownloadManager::downlaodFile: Could not downlaod, reason: 23"));
}

TEST_F(Download, ARemovalInADirectoryOfOthersIsFalse) {
  const std::string path = temp.write("weights/w.bin", "x");
  const uid_t user = geteuid();
  ASSERT_EQ(chmod(weights().c_str(), 0), 0);
  // The superuser is refused nothing.
  constexpr uid_t somebody = 65534;
  ASSERT_EQ(user == 0 ? seteuid(somebody) : 0, 0);
  EXPECT_FALSE(wrapper.wRemoveFile(WTNVDownloadFile(fileNamed("w.bin")), weights()));
  ASSERT_EQ(seteuid(user), 0);
  ASSERT_EQ(chmod(weights().c_str(), 0700), 0);
  EXPECT_EQ(content(), "x");
}

TEST_F(Download, AThrowAtTheStartClosesTheFileToo) {
  wrapper.setCBDownloadStarted([] { throw std::logic_error("observer"); });
  EXPECT_THROW(download("/file"), std::logic_error);
  EXPECT_FALSE(handler.fileStream.is_open());
}

TEST_F(Download, WhatCannotBeWrittenAtTheEndIsAFailure) {
  const std::string empty = temp.write("empty.bin", "");
  const LogCapture log;
  EXPECT_FALSE(
      wrapper.wDownloadFile(WTNVDownloadFile(fileNamed("w", "file://" + empty)), temp / "absent/"));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVDownloadManager::downlaodFile: Could not downlaod, reason: 23"));
}

TEST_F(Download, TheRightHashOfAnotherSizeDoesNotCount) {
  temp.write("weights/a", "hello");
  offer({offered("a", 6, kMD5OfHello)});
  EXPECT_THAT(namesAndStates(list()), ElementsAre("a PD--"));
}

TEST_F(Download, WhatIsNoFileIsNeverTheFileOfAPortal) {
  temp.makeDirectory("weights/a");
  offer({offered("a", -1, "")});
  EXPECT_THAT(namesAndStates(list()), ElementsAre("a PD--"));
}
