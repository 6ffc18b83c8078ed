// What nobody writes and a damaged or malicious file may hold: each is answered in bounded time and
// memory, or refused with the library's own exception, and the next picture is shown as if nothing
// had been.

#include <cmath>
#include <functional>
#include <limits>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "TNV_SampleBenchNative/TNV_SampleBenchNative.h"
#include "project/TNVTrainSet.h"
#include "support/LogCapture.h"
#include "support/ProjectBuilder.h"

namespace {

constexpr int kWidth = 64;
constexpr int kHeight = 48;
constexpr auto kTree = R"(<?xml version="1.0"?>
<opencv_storage>
<TaskTree><SubTasks>1</SubTasks><Task_0><Name>Default</Name><Save>1</Save><SubTasks>0</SubTasks></Task_0></TaskTree>
</opencv_storage>
)";

#ifdef TNV_SANITIZED
constexpr std::size_t kLongLine = 10'000'000;
#else
constexpr std::size_t kLongLine = 200'000'000;
#endif

/// The most memory that the process has used so far.
std::size_t peakBytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

void mayThrow(const std::function<void()>& work) {
  try {
    work();
  } catch (const cv::Exception&) {
  }
}

std::string repeated(const std::string& text, std::size_t times) {
  std::string all;
  all.reserve(text.size() * times);
  for (std::size_t i = 0; i < times; ++i)
    all += text;
  return all;
}

std::string mark(const std::string& type, const std::string& fields,
                 const std::string& poiSize = "0.01 0.01") {
  return "<Mark0><Type>" + type + "</Type><Center>0.5 0.5</Center><POIs></POIs><POISize>" +
         poiSize + "</POISize><ClassIdx>0</ClassIdx>" + fields + "</Mark0>";
}

const std::string kBox = "<Size>0.5 0.5</Size>";

struct HostileRecord {
  const char* name;
  std::string (*marks)();  ///< made when it is their turn, for some are large
  int count = 1;
};

const HostileRecord kHostileRecords[] = {
    {"CountOfAllNumbers", [] { return mark("Rect", kBox); }, std::numeric_limits<int>::max()},
    {"NestingTenThousandDeep",
     [] { return repeated("<Mark0>", 10'000) + repeated("</Mark0>", 10'000); }},
    {"RadiusBeyondAllMeasure", [] { return mark("Circle", "<Radius>1e300 1e300</Radius>"); }},
    {"RadiusThatIsNoNumber", [] { return mark("Circle", "<Radius>.Nan .Nan</Radius>"); }},
    {"PoisOfNoSize", [] { return mark("Rect", kBox, "1e-300 1e-300"); }},
    {"PoisOfNegativeSize", [] { return mark("Rect", kBox, "-1e300 -1e300"); }},
    {"BoxBeyondAllMeasure", [] { return mark("Rect", "<Size>1e300 1e300</Size>"); }},
    {"PathOfAMillionPoints",
     [] {
       return mark("PolyLine",
                   "<PolyPoints>" + repeated("0.25 0.75\n", 1'000'000) + "</PolyPoints>");
     }},
    {"CommentOfALongLine",
     [] { return mark("Rect", kBox + "<Comment>" + std::string(kLongLine, 'a') + "</Comment>"); }}};

void PrintTo(const HostileRecord& record, std::ostream* stream) {
  *stream << record.name;
}

/// A project with a sound picture, a hostile one, and a sound one.
class Hostile : public ::testing::TestWithParam<HostileRecord> {
 protected:
  Hostile() {
    builder.withPictures({"0.png", "1.png", "2.png"}).withClasses({"nut"}).withDarknet(kTree);
    EXPECT_TRUE(builder.project().wUpdate(true));
  }

  ~Hostile() override {
#ifndef TNV_SANITIZED
    EXPECT_LT(peakBytes() - before, std::size_t{2} << 30);
#endif
  }

  void replaceSecondRecord(const HostileRecord& hostile) {
    const auto records = builder.project().wGetTrainSets();
    const std::string path = records.at(1).wGetDataPath();
    builder.temp.write(
        path.substr(builder.temp.path().size()),
        "<?xml version=\"1.0\"?>\n<opencv_storage><UniqueName>hostile</UniqueName><ImagePath>" +
            builder.temp / "pictures/1.png" + "</ImagePath><MarkCnt>" +
            std::to_string(hostile.count) + "</MarkCnt>" + hostile.marks() + "</opencv_storage>\n");
    builder.reopened();
  }

  static void lookAt(WTNVMainProcess& process) {
    auto view = process.getHndImageView();
    auto marks = process.getHndMark();
    unsigned char* pixels = nullptr;
    int width = 0;
    int height = 0;
    int channels = 0;
    marks.setAllMarksPOIVisible(true, marks.getAllMarks());
    view.wGetARImage(&pixels, &width, &height, &channels);
    view.wSetDrawMarkFilled(!view.wGetDrawMarkFilled());
    view.wGetARImage(&pixels, &width, &height, &channels);
    marks.getMarkMouseOver(0.5, 0.5);
    view.wSetCrossPosition(0.5, 0.5);
    view.wGetHelperImage(&pixels, &width, &height, &channels);
    for (const WTNVMark& mark : marks.getAllMarks())
      view.wSaveROIImage(mark, "/nowhere/", "roi");
  }

  static void expectSound(WTNVMainProcess& process) {
    auto view = process.getHndImageView();
    unsigned char* pixels = nullptr;
    int width = 0;
    int height = 0;
    int channels = 0;
    view.wSetZoomLevel(1);
    view.wGetARImage(&pixels, &width, &height, &channels);
    ASSERT_NE(pixels, nullptr);
    EXPECT_EQ(cv::Size(width, height), cv::Size(kWidth, kHeight));
  }

  /// From the first picture to the hostile one, and on to the last.
  void walk() {
    WTNVMainProcess process(&builder.project(), nullptr);
    auto pictures = process.getHndTrainSet();
    mayThrow([&] { pictures.wSetTrainSetForward(1); });
    mayThrow([&] { lookAt(process); });
    pictures.wSetTrainSetForward(1);
    expectSound(process);
  }

  void run() {
    WTNVProject& project = builder.project();
    mayThrow([&] {
      project.getHndAugment().wProcess(project.wGetTrainSets(), project.wGetGeneration());
    });
    mayThrow([&] {
      project.getHndAugment().wProcessParallel(project.wGetTrainSets(), project.wGetGeneration(),
                                               2);
    });
    mayThrow([&] { project.getHndValidation().wProcessGeneration(); });
  }

  LogCapture log;
  std::size_t before = peakBytes();
  ProjectBuilder builder;
};

}  // namespace

TEST_P(Hostile, RecordIsLookedAtAndPassedOver) {
  replaceSecondRecord(GetParam());
  walk();
}

TEST_P(Hostile, RecordGoesThroughARun) {
  replaceSecondRecord(GetParam());
  run();
}

TEST_P(Hostile, RecordIsSavedWithTheRest) {
  replaceSecondRecord(GetParam());
  for (const WTNVTrainSet& record : builder.project().wGetTrainSets())
    mayThrow([&] { record.wLoadData(); });
  mayThrow([&] { builder.project().wUpdate(true); });
  EXPECT_EQ(builder.reopened().wGetTrainSets().size(), 3U);
}

INSTANTIATE_TEST_SUITE_P(Records, Hostile, testing::ValuesIn(kHostileRecords),
                         [](const auto& each) { return each.param.name; });

namespace {

class HostileFiles : public Hostile {};

std::string nestedJson(std::size_t depth) {
  return R"({"images": )" + std::string(depth, '[') + std::string(depth, ']') + "}";
}

}  // namespace

TEST_F(HostileFiles, PictureOfAGigapixelInAFewBytesIsPassedOver) {
  builder.temp.write("pictures/1.png", hollowJpeg(32'000));
  walk();
  run();
}

TEST_F(HostileFiles, ZoomsOfNoMeasureAreAnswered) {
  WTNVMainProcess process(&builder.project(), nullptr);
  for (const double zoom : {1e9, -1e9, 1e300, 1e-300, 0.0, std::nan(""), HUGE_VAL}) {
    mayThrow([&] { process.getHndImageView().wSetZoomLevel(zoom); });
    mayThrow([&] { process.getHndImageView().setHelperZoomLevel(zoom); });
    mayThrow([&] { lookAt(process); });
  }
  process.getHndTrainSet().wSetTrainSetForward(1);
  expectSound(process);
}

TEST_F(HostileFiles, CountsOfAllNumbersInTheListOfASetEnd) {
  const std::string list = readFile(builder.projectDirectory() + "set.xml");
  const auto at = list.find("<Count>3<");
  ASSERT_NE(at, list.npos);
  builder.temp.write("projects/demo/set.xml",
                     list.substr(0, at) + "<Count>2147483647<" + list.substr(at + 9));
  mayThrow([&] { builder.another().wLoad(); });
  // The list may have lost some, but cannot hold more than it has room for.
  EXPECT_GE(builder.project().wGetTrainSets().size(), 3U);
  EXPECT_LT(builder.project().wGetTrainSets().size(), 100U);
}

TEST_F(HostileFiles, SettingsWithALongLineAreRead) {
  const std::string settings = readFile(builder.settingsPath());
  builder.temp.write("projects/demo/demo.cfg",
                     settings + "Project.Comment = \"" + std::string(kLongLine, 'a') + "\"\n");
  EXPECT_EQ(builder.reopened().wGetTrainSets().size(), 3U);
}

TEST_F(HostileFiles, CountsOfAllNumbersInTheSettingsEnd) {
  std::string settings = readFile(builder.settingsPath());
  for (const char* key : {"Generation.Tmp.Count = ", "Cache.Images.Cnt = "}) {
    const auto at = settings.find(key);
    ASSERT_NE(at, settings.npos) << key;
    const auto value = at + std::string(key).size();
    settings.replace(value, settings.find('\n', value) - value, "2147483647");
  }
  builder.temp.write("projects/demo/demo.cfg", settings);
  EXPECT_EQ(builder.reopened().wGetTrainSets().size(), 3U);
  walk();
}

TEST_F(HostileFiles, TaskTreesOutOfAllMeasureAreRefused) {
  const std::string head = "<?xml version=\"1.0\"?>\n<opencv_storage><TaskTree>";
  const std::string tail = "</TaskTree></opencv_storage>\n";
  const std::string task = "<Name>Default</Name><Save>1</Save>";
  for (const std::string& tree : {"<SubTasks>2147483647</SubTasks><Task_0>" + task +
                                      "<SubTasks>2147483647</SubTasks></Task_0>",
                                  repeated("<SubTasks>1</SubTasks><Task_0>" + task, 10'000) +
                                      repeated("</Task_0>", 10'000)}) {
    builder.temp.write("augments/tree.xml", head + tree + tail);
    mayThrow([&] { builder.project().getHndAugment().wSetAugmentation("tree.xml"); });
    run();
  }
}

TEST_F(HostileFiles, TemplateWithALongLineIsFilled) {
  builder.temp.write("platforms/darknet/nets/net.tmp", std::string(kLongLine, 'a') + "\n");
  run();
  EXPECT_EQ(readFile(builder.outputDirectory() + "net.cfg").size(), kLongLine + 1);
}

TEST_F(HostileFiles, LabelTextWithALongLineIsReadAndRejected) {
  builder.temp.write("pictures/0.txt", std::string(kLongLine, '1') + "\n");
  builder.temp.write("names.txt", "nut\n");
  WTNVToolDarknetViewer viewer;
  viewer.wSetImageDirectory(builder.temp / "pictures/");
  viewer.wReadImages();
  mayThrow([&] { viewer.wSelectImage("0"); });
  WTNVToolLabelExchange labels;
  labels.wSetNames(builder.temp / "names.txt");
  mayThrow([&] { labels.wRead(builder.temp / "pictures/"); });
  EXPECT_EQ(labels.wGetFound(), labels.wGetRejected());
}

TEST_F(HostileFiles, LabelsNestedTenThousandDeepAreRefused) {
  builder.temp.write("coco.json", nestedJson(10'000));
  WTNVToolLabelExchange labels;
  bool read = true;
  mayThrow([&] { read = labels.wRead(builder.temp / "coco.json"); });
  EXPECT_FALSE(read);
}
