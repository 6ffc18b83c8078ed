#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <random>
#include <thread>

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <opencv2/core.hpp>

#include "TNV_SampleBenchNative/WTNVTrainSet.h"
#include "foundation/XmlStorage.h"
#include "marks/TNVMarkRect.h"
#include "project/TNVProject.h"
#include "project/TNVTrainSet.h"
#include "reliability/Repeats.h"
#include "support/FileLimit.h"
#include "support/LogCapture.h"
#include "support/ProjectBuilder.h"

namespace {

namespace fs = std::filesystem;
using Contents = std::map<std::string, std::string>;
using Clock = std::chrono::steady_clock;

constexpr int kPictures = 200;
constexpr std::size_t kMarksBefore = 3;
constexpr std::size_t kMarksAfter = 4;
constexpr int kNut = 0;
constexpr int kScrew = 1;

void addMarks(WTNVProject& project, std::size_t upTo) {
  for (const WTNVTrainSet& handle : project.wGetTrainSets()) {
    TNVTrainSet& record = *handle.getNativeTrainSet();
    if (!record.dataLoaded) record.load();
    while (record.marks.size() < upTo) {
      const double side = 0.1 * static_cast<double>(record.marks.size() + 1);
      TNVMarkRect mark({0.05, 0.1}, {0.05 + side, 0.1 + side}, false);
      mark.classIdx = {kNut};
      record.addMark(mark);
    }
  }
}

/// All nuts turn out to be screws, which the project gets to know only now.
void changeClasses(WTNVProject& project) {
  project.wAddDNNClass("screw", kScrew, -1);
  for (const WTNVTrainSet& record : project.wGetTrainSets())
    record.getNativeTrainSet()->replaceClass(kNut, kScrew);
}

bool isRecord(const std::string& path) {
  return path.find("/is_set/") != path.npos;
}

/// Another number than before says that another file has taken the place.
ino_t fileNumber(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

/// Waits without a pause, for what is waited for is over soon.
void waitForAnotherFile(const std::string& path, ino_t earlier) {
  const auto deadline = Clock::now() + std::chrono::minutes(1);
  while (fileNumber(path) == earlier && Clock::now() < deadline) {
  }
}

bool isWholeXml(const std::string& content) {
  try {
    const cv::FileStorage storage(content, cv::FileStorage::READ | cv::FileStorage::MEMORY);
    return storage.isOpened() && content.ends_with("</opencv_storage>\n");
  } catch (const cv::Exception&) {
    return false;
  }
}

/// A project of annotated pictures, and a second state of it, with more marks, all of another class
/// than before, and another set, that a child process is about to save when something happens.
class Saving : public ::testing::Test {
 protected:
  Saving() {
    std::vector<std::string> names;
    for (int i = 0; i < kPictures; ++i)
      names.push_back(std::to_string(i) + ".png");
    builder.withPictures(names).withClasses({"nut"});
    addMarks(builder.project(), kMarksBefore);
    EXPECT_TRUE(builder.project().wUpdate(true));
    for (const char* name : {"x.png", "y.png", "z.png"})
      morePictures.push_back(builder.picture(name));
    before = contents();
    const auto start = Clock::now();
    EXPECT_TRUE(finishes(startSave([] {})));
    duration = Clock::now() - start;
    after = contents();
  }

  /// Starts a child process that lets the fault happen and saves the second state.
  pid_t startSave(const std::function<void()>& fault) {
    const pid_t child = fork();
    if (child != 0) return child;
    WTNVProject& project = builder.reopened();
    addMarks(project, kMarksAfter);
    changeClasses(project);
    project.wAddImagesToImageSet(morePictures, {true, true, true}, "more", false);
    fault();
    _exit(project.wUpdate(true) ? 0 : 1);
  }

  static bool finishes(pid_t child) {
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }

  /// What lies in the project's directory, by path. What a save left half done does not count.
  Contents contents() const {
    Contents files;
    for (const auto& entry : fs::recursive_directory_iterator(builder.projectDirectory()))
      if (entry.is_regular_file() && entry.path().extension() != ".new")
        files[entry.path().string()] = readFile(entry.path().string());
    return files;
  }

  void restore() const {
    for (const auto& entry : fs::directory_iterator(builder.projectDirectory()))
      fs::remove_all(entry.path());
    for (const auto& [path, content] : before) {
      fs::create_directories(fs::path(path).parent_path());
      std::ofstream(path, std::ios::binary) << content;
    }
  }

  /// Each file is the old or the new one, and with them the project loads with all old marks.
  /// True if some records are old and some are new.
  bool expectNothingLost() {
    const Contents now = contents();
    std::size_t changed = 0;
    for (const auto& [path, content] : before) {
      const auto file = now.find(path);
      if (file == now.end()) {
        ADD_FAILURE() << path << " is gone";
        continue;
      }
      const bool isNew = file->second == after.at(path);
      EXPECT_TRUE(isNew || file->second == content) << path << " is neither old nor new";
      if (isNew && isRecord(path)) ++changed;
    }
    // The new set's records have names of their time.
    for (const auto& [path, content] : now)
      EXPECT_TRUE(before.contains(path) || isWholeXml(content)) << path << " is not whole";
    expectMarks(builder.reopened(), kMarksBefore);
    return changed > 0 && changed < kPictures;
  }

  static void expectMarks(WTNVProject& project, std::size_t atLeast) {
    EXPECT_EQ(project.wGetTrainSetCountFromImageSet("set"), kPictures);
    for (const WTNVTrainSet& record : project.wGetTrainSetsFromImageSet("set")) {
      ASSERT_TRUE(record.wLoadData());
      ASSERT_GE(record.getNativeTrainSet()->marks.size(), atLeast);
      for (const WTNVMark& mark : record.wGetMarks())
        ASSERT_EQ(mark.wGetDNNClasses(project.wGetDNNClasses()).size(), 1U)
            << "a mark has a class that the project does not know";
    }
  }

  /// The files of the set's records, in the order in which they are saved.
  std::vector<std::string> recordPaths() {
    std::vector<std::string> paths;
    for (const WTNVTrainSet& record : builder.project().wGetTrainSetsFromImageSet("set"))
      paths.push_back(record.wGetDataPath());
    return paths;
  }

  /// Saves again without a fault, which makes up for it.
  void expectThatASecondSaveIsWhole() {
    ASSERT_TRUE(finishes(startSave([] {})));
    const Contents now = contents();
    for (const auto& [path, content] : before)
      EXPECT_EQ(now.at(path), after.at(path)) << path;
    expectMarks(builder.reopened(), kMarksAfter);
    for (const auto& [path, content] : before)
      EXPECT_FALSE(fs::exists(path + ".new")) << path;
  }

  LogCapture log;
  ProjectBuilder builder;
  std::vector<std::string> morePictures;
  Contents before;
  Contents after;
  Clock::duration duration{};
};

/// A file system of its own in place of a directory, of so many pages.
class SmallDisk {
 public:
  SmallDisk(const std::string& place, std::size_t pages)
      : directory(place),
        mounted(mount("tmpfs", place.c_str(), "tmpfs", 0,
                      ("size=" + std::to_string(pages * pageSize())).c_str()) == 0) {}
  ~SmallDisk() {
    if (mounted) umount(directory.c_str());
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  bool isThere() const { return mounted; }

  static std::size_t pageSize() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

  /// What the files take on such a disk, with their directories.
  static std::size_t pagesFor(const Contents& files) {
    std::size_t pages = 1;
    for (const auto& [path, content] : files)
      pages += (content.size() + pageSize() - 1) / pageSize();
    return pages;
  }

 private:
  std::string directory;
  bool mounted;
};

/// Takes the rights of a superuser away from the process.
void becomeNobody() {
  constexpr uid_t nobody = 65534;
  if (geteuid() == 0 && seteuid(nobody) != 0) _exit(2);
}

}  // namespace

TEST_F(Saving, KilledAtAnyMomentLosesNothing) {
  std::mt19937 random(2026);
  std::uniform_int_distribution<Clock::rep> anyMoment(0, duration.count());
  std::uniform_int_distribution<std::size_t> anyRecord(0, kPictures - 1);
  const std::vector<std::string> records = recordPaths();
  int between = 0;
  const int rounds = repeats(25);
  for (int round = 0; round < rounds; ++round) {
    restore();
    // The records take their places in a small part of the time, at which half of the kills aim.
    const std::string& record = records.at(anyRecord(random));
    const auto earlier = fileNumber(record);
    const pid_t child = startSave([] {});
    if (round % 2 == 0) {
      waitForAnotherFile(record, earlier);
    } else {
      std::this_thread::sleep_for(Clock::duration(anyMoment(random)));
    }
    kill(child, SIGKILL);
    finishes(child);
    if (expectNothingLost()) ++between;
    ASSERT_FALSE(HasFailure()) << "in round " << round;
  }
  RecordProperty("killed", rounds);
  RecordProperty("between", between);
  constexpr int enough = 20;
  if (rounds >= enough) {
    EXPECT_GT(between, 0) << "no kill came while the records took their places";
  }
  expectThatASecondSaveIsWhole();
}

TEST_F(Saving, FilesThatMayNotGrowLoseNothing) {
  std::size_t largestRecord = 0;
  for (const auto& [path, content] : before)
    if (isRecord(path)) largestRecord = std::max(largestRecord, content.size());
  const std::size_t list = before.at(builder.projectDirectory() + "set.xml").size();
  const std::vector<std::size_t> limits{0, 1, largestRecord / 2, largestRecord, list - 1};
  RecordProperty("limits", static_cast<int>(limits.size()));
  for (const std::size_t limit : limits) {
    SCOPED_TRACE(limit);
    restore();
    const pid_t child = startSave([&] { new FileLimit(limit); });
    EXPECT_FALSE(finishes(child)) << "the failure is not told";
    expectNothingLost();
  }
  expectThatASecondSaveIsWhole();
}

TEST_F(Saving, DirectoriesThatMayNotBeWrittenToLoseNothing) {
  const auto all = fs::perms::all;
  const auto reading =
      all & ~(fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write);
  fs::permissions(builder.temp.path(), all);
  RecordProperty("closed", 3);
  for (const bool projectIsOpen : {false, true}) {
    for (const bool setIsOpen : {false, true}) {
      if (projectIsOpen && setIsOpen) continue;
      SCOPED_TRACE(testing::Message() << "project " << projectIsOpen << ", set " << setIsOpen);
      restore();
      const std::string project = builder.projectDirectory();
      fs::permissions(project + "is_set", setIsOpen ? all : reading);
      fs::permissions(project, projectIsOpen ? all : reading);
      const pid_t child = startSave(becomeNobody);
      EXPECT_FALSE(finishes(child)) << "the failure is not told";
      fs::permissions(project, all);
      fs::permissions(project + "is_set", all);
      expectNothingLost();
    }
  }
  expectThatASecondSaveIsWhole();
}

TEST_F(Saving, ADiskThatIsFullLosesNothing) {
  const std::string place = builder.projectDirectory();
  const std::size_t least = SmallDisk::pagesFor(before);
  const std::size_t enough = SmallDisk::pagesFor(after) + SmallDisk::pagesFor(before);
  {
    const SmallDisk disk(place, enough);
    if (!disk.isThere()) {
      // Mounting takes rights that this process has not.
      RecordProperty("disks", 0);
      return;
    }
    restore();
    EXPECT_TRUE(finishes(startSave([] {})));
  }
  constexpr std::size_t disks = 20;
  RecordProperty("disks", int{disks});
  std::size_t failed = 0;
  for (std::size_t free = 0; free < disks; ++free) {
    SCOPED_TRACE(free);
    const SmallDisk disk(place, least + free);
    ASSERT_TRUE(disk.isThere());
    restore();
    if (!finishes(startSave([] {}))) ++failed;
    expectNothingLost();
  }
  EXPECT_GT(failed, 5U);
}
