#include <gmock/gmock.h>
#include <json/reader.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "CommandError.h"
#include "ProgramRunner.h"
#include "support/Pictures.h"
#include "verify/SetVerifier.h"

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// A picture of its own look.
cv::Mat scene(unsigned seed, cv::Size size = {64, 48}) {
  cv::RNG random(seed);
  cv::Mat coarse(6, 8, CV_8UC3);
  random.fill(coarse, cv::RNG::UNIFORM, 0, 256);
  cv::Mat picture;
  cv::resize(coarse, picture, size, 0, 0, cv::INTER_LINEAR);
  return picture;
}

/// A sound set of four samples, two in each list, of two classes.
class VerifiedSetTest : public testing::Test {
 protected:
  void SetUp() override {
    place.makeDirectory("samples");
    for (unsigned i = 0; i < 4; ++i) {
      cv::imwrite(sample(i, ".png"), scene(i + 1));
      place.write("samples/img_" + std::to_string(i) + ".txt",
                  std::to_string(i % 2) + " 0.5 0.5 0.25 0.5\n");
    }
    writeList("train.txt", {0, 1});
    writeList("test.txt", {2, 3});
    place.write("parts.names", "screw\nnut\n");
    place.write("parts.data", "classes = 2\ntrain = " + (place / "train.txt") +
                                  "\nvalid = " + (place / "test.txt") +
                                  "\nnames = " + (place / "parts.names") + "\n");
    place.write("parts.cfg", network(2, 21));
  }

  std::string sample(unsigned number, const std::string& ending) const {
    return place / ("samples/img_" + std::to_string(number) + ending);
  }

  void writeList(const std::string& name, const std::vector<unsigned>& numbers) const {
    std::string text;
    for (const auto number : numbers)
      text += sample(number, ".png") + "\n";
    place.write(name, text);
  }

  /// Of 64 by 64 pixels, with one output layer of three boxes a place.
  static std::string network(int classes, int filters) {
    return "[net]\nwidth=64\nheight=64\n\n[convolutional]\nfilters=" + std::to_string(filters) +
           "\n\n[yolo]\nmask=0,1,2\nclasses=" + std::to_string(classes) + "\nnum=6\n";
  }

  void label(const std::string& text) const { place.write("samples/img_0.txt", text); }

  VerifiedSet verify(const std::string& path) const {
    Findings found;
    const auto layout = findSet(path, "", found);
    return verifySet(layout, found, {[](std::size_t) {}, [] {}});
  }

  /// "file:line rule" of each finding, the file below the set.
  std::vector<std::string> findings(const std::string& path = "") const {
    std::vector<std::string> texts;
    for (const auto& finding : verify(path.empty() ? place.path() : path).findings)
      texts.push_back(fs::path(finding.file).lexically_relative(place.path()).string() + ":" +
                      std::to_string(finding.line) + " " + finding.rule);
    std::sort(texts.begin(), texts.end());
    return texts;
  }

  TempDirectory place;
};

TEST_F(VerifiedSetTest, ASoundSetHasNoFindings) {
  EXPECT_THAT(findings(), IsEmpty());
  EXPECT_THAT(findings(place / "parts.data"), IsEmpty());
  const auto verified = verify(place.path());
  EXPECT_EQ(verified.pictures, 4U);
  EXPECT_EQ(verified.labels, 4U);
}

TEST_F(VerifiedSetTest, BoxesUpToTheEdgesAndEmptyTextsAreSound) {
  label("0 0.5 0.5 1 1\n1 1 0.25 0.00002 0.5\n\n");
  place.write("samples/img_1.txt", "");
  EXPECT_THAT(findings(), ElementsAre("samples/img_0.txt:2 small-box"))
      << "the box is sound but for its width";
}

TEST_F(VerifiedSetTest, LabelsThatTrainersReadWrong) {
  struct Row {
    std::string line;
    std::string rule;
  };
  for (const auto& [line, rule] :
       {Row{"0 0.5 0.5 0.25", "fields"}, Row{"0 0.5 0.5 0.25 0.5 0.9", "fields"},
        Row{"2 0.5 0.5 0.25 0.5", "class-number"}, Row{"-1 0.5 0.5 0.25 0.5", "class-number"},
        Row{"1.0 0.5 0.5 0.25 0.5", "class-number"}, Row{"nut 0.5 0.5 0.25 0.5", "class-number"},
        Row{"0 0,5 0.5 0.25 0.5", "number"}, Row{"0 nan 0.5 0.25 0.5", "number"},
        Row{"0 0.5 0.5 inf 0.5", "number"}, Row{"0 0.5 0.5 0 0.5", "size"},
        Row{"0 0.5 0.5 0.25 -0.5", "size"}, Row{"0 0.2 0.5 0.5 0.5", "box-outside"},
        Row{"0 0.5 0.8 0.25 0.5", "box-outside"},
        // 0.015 of 64 pixels.
        Row{"0 0.5 0.5 0.015 0.5", "small-box"}, Row{"0 0.5 0.5 0.25 0.015", "small-box"}}) {
    label("1 0.5 0.5 0.5 0.5\n" + line + "\n");
    EXPECT_THAT(findings(), ElementsAre("samples/img_0.txt:2 " + rule)) << line;
  }
}

TEST_F(VerifiedSetTest, ACentreOutsideIsSaidAsSuch) {
  label("0 0 0.5 0.25 0.5\n0 0.5 1.1 0.25 0.5\n");
  EXPECT_THAT(findings(),
              ElementsAre("samples/img_0.txt:1 box-outside", "samples/img_0.txt:1 centre",
                          "samples/img_0.txt:2 box-outside", "samples/img_0.txt:2 centre"));
}

TEST_F(VerifiedSetTest, ARowThatStandsTwice) {
  label("0 0.5 0.5 0.25 0.5\n1 0.5 0.5 0.25 0.5\n0  0.5 0.5 0.25\t0.5\n");
  EXPECT_THAT(findings(), ElementsAre("samples/img_0.txt:3 duplicate-row"));
}

TEST_F(VerifiedSetTest, RowsAreTheSameIfTheirNumbersAre) {
  label("0 0.5 0.5 0.25 0.5\n0 .5 0.50 25e-2 0.5\n0 0.5 0.5 0.25 0.500001\n");
  EXPECT_THAT(findings(), ElementsAre("samples/img_0.txt:2 duplicate-row"));
}

TEST_F(VerifiedSetTest, APictureThatBreaksOff) {
  const auto file = sample(0, ".jpg");
  place.write("train.txt", file + "\n" + sample(1, ".png") + "\n");
  fs::remove(sample(0, ".png"));
  std::vector<unsigned char> bytes;
  cv::imencode(".jpg", scene(1, {640, 480}), bytes);
  const std::string whole(bytes.begin(), bytes.end());
  // A segment that holds a whole JPEG, as cameras write thumbnails.
  const std::string segment = std::string("\xff\xe5\x00\x08", 4) + "\xff\xd8\xff\xd9zz";
  const auto withThumbnail = whole.substr(0, 2) + segment + whole.substr(2);
  const auto written = [&](const std::string& content) {
    place.write("samples/img_0.jpg", content);
    return findings();
  };
  EXPECT_THAT(written(whole), IsEmpty());
  EXPECT_THAT(written(withThumbnail), IsEmpty());
  EXPECT_THAT(written(whole + "behind the end"), IsEmpty());
  for (const auto& content : {whole, withThumbnail})
    EXPECT_THAT(written(content.substr(0, content.size() / 2)),
                ElementsAre("samples/img_0.jpg:0 cut-picture"));
  EXPECT_THAT(written(whole.substr(0, whole.size() - 2)),
              ElementsAre("samples/img_0.jpg:0 cut-picture"));
}

TEST_F(VerifiedSetTest, FoldersOfTheSetWithoutListedSamplesAreLookedInto) {
  fs::create_directories(place / "images/more");
  fs::copy_file(sample(0, ".png"), place / "images/more/x.png");
  place.write("labels/y.txt", "0 0.5 0.5 0.25 0.5\n");
  EXPECT_THAT(findings(),
              ElementsAre("images/more/x.png:0 stray-picture", "labels/y.txt:0 stray-text"));
}

TEST_F(VerifiedSetTest, BesideTheListsOnlyTextsThatReadAsLabelsAreStray) {
  for (const auto* name : {"img_0", "img_1"})
    for (const auto* ending : {".png", ".txt"})
      fs::rename(place / ("samples/" + std::string(name) + ending),
                 place / (name + std::string(ending)));
  place.write("train.txt", (place / "img_0.png") + "\n" + (place / "img_1.png") + "\n");
  place.write("requirements.txt", "a text of another kind\n");
  place.write("left.txt", "0 0.5 0.5 0.25 0.5\n");
  EXPECT_THAT(findings(), ElementsAre("left.txt:0 stray-text"));
}

TEST_F(VerifiedSetTest, ASetWithoutListsAndNamesIsNamedByItsDirectory) {
  fs::create_directories(place / "bare");
  fs::rename(sample(0, ".png"), place / "bare/a.png");
  place.write("bare/a.txt", "0 0.5 0.5 0.25 0.5\n");
  Findings found;
  const auto verified =
      verifySet(findSet(place / "bare", "", found), found, {[](std::size_t) {}, [] {}});
  ASSERT_EQ(verified.findings.size(), 1U);
  EXPECT_EQ(verified.findings[0].rule, "missing-names");
  EXPECT_EQ(verified.findings[0].file, place / "bare");
}

TEST_F(VerifiedSetTest, AByteOrderMarkInEachKindOfText) {
  for (const std::string file :
       {"samples/img_0.txt", "parts.names", "parts.data", "parts.cfg", "train.txt", "test.txt"}) {
    const auto before = readFile(place / file);
    place.write(file, "\xEF\xBB\xBF" + before);
    EXPECT_THAT(findings(), ElementsAre(file + ":1 byte-order-mark"));
    place.write(file, before);
  }
}

TEST_F(VerifiedSetTest, DefectsOfFiles) {
  struct Row {
    std::string name;
    std::function<void()> defect;
    std::vector<std::string> found;
  };
  const auto append = [&](const std::string& file, const std::string& text) {
    place.write(file, readFile(place / file) + text);
  };
  const auto data = [&](const std::string& from, const std::string& to) {
    auto text = readFile(place / "parts.data");
    text.replace(text.find(from), from.size(), to);
    place.write("parts.data", text);
  };
  const std::vector<Row> rows{
      {"no label text",
       [&] { fs::remove(sample(1, ".txt")); },
       {"samples/img_1.png:0 missing-label"}},
      {"no picture",
       [&] { fs::remove(sample(1, ".png")); },
       {"samples/img_1.png:0 missing-picture", "samples/img_1.txt:0 stray-text"}},
      {"picture in no list",
       [&] { cv::imwrite(place / "samples/more.png", scene(9)); },
       {"samples/more.png:0 stray-picture"}},
      {"text without picture",
       [&] { place.write("samples/more.txt", ""); },
       {"samples/more.txt:0 stray-text"}},
      {"two pictures for one text",
       [&] {
         cv::imwrite(place / "samples/img_1.jpg", scene(9));
         append("train.txt", place / "samples/img_1.jpg\n");
       },
       {"samples/img_1.png:0 same-stem"}},
      {"listed twice",
       [&] { append("train.txt", sample(0, ".png") + "\n"); },
       {"train.txt:3 listed-twice"}},
      {"in both lists",
       [&] { append("test.txt", sample(0, ".png") + "\n"); },
       {"test.txt:3 listed-twice"}},
      {"empty line", [&] { append("train.txt", "\n"); }, {"train.txt:3 empty-line"}},
      {"white space",
       [&] {
         place.write("test.txt", sample(2, ".png") + " \n");
         append("train.txt", sample(3, ".png") + "\n");
       },
       {"test.txt:1 list-space"}},
      {"carriage returns",
       [&] { place.write("test.txt", sample(2, ".png") + "\r\n" + sample(3, ".png") + "\r\n"); },
       {"test.txt:0 line-end"}},
      {"nothing to train with",
       [&] {
         place.write("train.txt", "");
         place.write("test.txt", "");
       },
       {"samples/img_0.png:0 stray-picture", "samples/img_0.txt:0 stray-text",
        "samples/img_1.png:0 stray-picture", "samples/img_1.txt:0 stray-text",
        "samples/img_2.png:0 stray-picture", "samples/img_2.txt:0 stray-text",
        "samples/img_3.png:0 stray-picture", "samples/img_3.txt:0 stray-text",
        "train.txt:0 empty-list"}},
      {"input between the grid",
       [&] {
         auto text = network(2, 21);
         place.write("parts.cfg", text.replace(text.find("height=64"), 9, "height=100"));
       },
       {"parts.cfg:1 network-input"}},
      {"no list",
       [&] { fs::remove(place / "test.txt"); },
       {"samples/img_2.png:0 stray-picture", "samples/img_2.txt:0 stray-text",
        "samples/img_3.png:0 stray-picture", "samples/img_3.txt:0 stray-text",
        "test.txt:0 missing-file"}},
      {"white space in a value",
       [&] { append("parts.data", "backup = my weights/\n"); },
       {"parts.data:5 data-space"}},
      {"no pair", [&] { append("parts.data", "backup\n"); }, {"parts.data:5 data-line"}},
      {"wrong number of classes",
       [&] { data("classes = 2", "classes = 3"); },
       {"parts.data:0 class-count"}},
      {"no number of classes", [&] { data("classes = 2", "# none"); }, {"parts.data:0 data-key"}},
      {"no names", [&] { fs::remove(place / "parts.names"); }, {"parts.names:0 missing-file"}},
      {"blank name",
       [&] { place.write("parts.names", "screw\n \n"); },
       {"parts.names:2 blank-name"}},
      {"carriage returns among the names",
       [&] { place.write("parts.names", "screw\r\nnut\r\n"); },
       {"parts.names:0 line-end"}},
      {"blanks around a name",
       [&] { place.write("parts.names", "screw\nnut \n"); },
       {"parts.names:2 name-space"}},
      {"no list to test with",
       [&] { data("valid = ", "# "); },
       {"parts.data:0 data-key", "samples/img_2.png:0 stray-picture",
        "samples/img_2.txt:0 stray-text", "samples/img_3.png:0 stray-picture",
        "samples/img_3.txt:0 stray-text"}},
      {"an empty value",
       [&] {
         place.write("parts.data",
                     "classes = 2\ntrain =\nvalid =\nnames = " + (place / "parts.names") + "\n");
       },
       {"parts.data:0 data-key", "parts.data:0 data-key"}},
      {"a key twice",
       [&] { append("parts.data", "train = " + (place / "test.txt") + "\n"); },
       {"parts.data:5 data-key"}},
      {"a line that leads elsewhere",
       [&] {
         place.makeDirectory("other");
         cv::imwrite(place / "other.png", scene(9));
         append("train.txt", place / "other\n");
         append("train.txt", place / "../absent.png\n");
       },
       {"../absent.png:0 missing-picture", "other:0 missing-label", "other:0 unreadable-picture"}},
      {"name twice",
       [&] { place.write("parts.names", "nut\nnut\n"); },
       {"parts.names:2 same-name"}},
      {"network's classes",
       [&] { place.write("parts.cfg", network(80, 21)); },
       {"parts.cfg:8 network-classes"}},
      {"network's filters",
       [&] { place.write("parts.cfg", network(2, 255)); },
       {"parts.cfg:5 network-filters"}},
      {"network without output",
       [&] { place.write("parts.cfg", "[net]\nwidth=64\nheight=64\n"); },
       {"parts.cfg:0 network-output"}},
      {"network without input",
       [&] { place.write("parts.cfg", "[net]\nwidth=64\n" + network(2, 21).substr(26)); },
       {"parts.cfg:1 network-input"}},
      {"trash",
       [&] { place.write("samples/img_1.png", "no picture"); },
       {"samples/img_1.png:0 unreadable-picture"}},
      {"empty picture",
       [&] { place.write("samples/img_1.png", ""); },
       {"samples/img_1.png:0 unreadable-picture"}},
      {"tiny picture",
       [&] {
         cv::imwrite(sample(1, ".png"), scene(9, {64, 9}));
       },
       {"samples/img_1.png:0 tiny-picture"}},
      {"the same picture in both lists",
       [&] {
         fs::copy(sample(0, ".png"), sample(2, ".png"), fs::copy_options::overwrite_existing);
       },
       {"samples/img_2.png:0 same-picture"}},
      {"a turned copy in the other list",
       [&] {
         cv::Mat turned;
         cv::rotate(scene(1), turned, cv::ROTATE_90_CLOCKWISE);
         cv::imwrite(sample(3, ".png"), turned);
       },
       {"samples/img_3.png:0 near-twin"}},
      {"samples of one source in both lists",
       [&] {
         place.write("sources.txt",
                     "img_0.png\ta.jpg\nimg_1.png\tb.jpg\nimg_2.png\tc.jpg\nimg_3.png\ta.jpg\n");
       },
       {"samples/img_3.png:0 near-twin"}},
  };
  for (const auto& [name, defect, found] : rows) {
    fs::remove_all(place / "samples");
    fs::remove(place / "sources.txt");
    SetUp();
    defect();
    EXPECT_THAT(findings(), testing::ElementsAreArray(found)) << name;
  }
}

TEST_F(VerifiedSetTest, AnOrientationTagIsFound) {
  std::vector<uchar> jpeg;
  cv::imencode(".jpg", scene(1), jpeg);
  // An APP1 segment with one entry: orientation (0x0112), a short, 6.
  const std::string tiff("II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x06\0\0\0\0\0\0\0", 26);
  const std::string exif = std::string("Exif\0\0", 6) + tiff;
  const std::string segment =
      std::string("\xFF\xE1\0", 3) + static_cast<char>(exif.size() + 2) + exif;
  std::string file(jpeg.begin(), jpeg.end());
  file.insert(2, segment);
  place.write("samples/img_9.jpg", file);
  place.write("samples/img_9.txt", "");
  place.write("train.txt", readFile(place / "train.txt") + (place / "samples/img_9.jpg\n"));
  auto found = findings();
  EXPECT_THAT(found, ElementsAre("samples/img_9.jpg:0 orientation"));
}

TEST_F(VerifiedSetTest, AnOrientationTagOfAPngIsFound) {
  std::vector<uchar> plain;
  cv::imencode(".png", scene(1), plain);
  // The checksums of the chunk, in which 6 and 1 stand for how the picture is turned.
  const std::vector<std::pair<char, std::string>> tags{{6, "\xB7\x48\x11\x29"},
                                                       {1, "\xBD\x8D\x18\x30"}};
  for (const auto& [turn, checksum] : tags) {
    const std::string tiff = std::string("II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0", 18) +
                             turn + std::string(7, '\0');
    const std::string chunk = std::string("\0\0\0\x1a", 4) + "eXIf" + tiff + checksum;
    // Behind the head, and before the end.
    for (const std::size_t offset : {std::size_t{33}, plain.size() - 12}) {
      std::string file(plain.begin(), plain.end());
      file.insert(offset, chunk);
      place.write("samples/img_0.png", file);
      const cv::Mat seen = cv::imread(sample(0, ".png"));
      ASSERT_EQ(seen.size(), turn == 6 ? cv::Size(48, 64) : cv::Size(64, 48));
      if (turn == 6) {
        EXPECT_THAT(findings(), ElementsAre("samples/img_0.png:0 orientation"));
      } else {
        EXPECT_THAT(findings(), IsEmpty());
      }
    }
  }
}

TEST_F(VerifiedSetTest, PlainPicturesAreNoTwins) {
  cv::imwrite(sample(0, ".png"), cv::Mat(48, 64, CV_8UC3, cv::Scalar(90, 90, 90)));
  cv::imwrite(sample(2, ".png"), cv::Mat(48, 64, CV_8UC3, cv::Scalar(200, 90, 20)));
  EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(VerifiedSetTest, LabelsMayLieInATreeOfTheirOwn) {
  const TempDirectory other;
  other.makeDirectory("images/day1");
  other.makeDirectory("labels/day1");
  other.write("classes.txt", "screw\n");
  cv::imwrite(other / "images/day1/a.png", scene(1));
  other.write("labels/day1/a.txt", "0 0.5 0.5 0.25 0.5\n");
  EXPECT_THAT(verify(other.path()).findings, IsEmpty());
  EXPECT_EQ(verify(other.path()).labels, 1U);
  fs::rename(other / "labels/day1/a.txt", other / "images/day1/a.txt");
  const auto found = verify(other.path()).findings;
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].rule, "images-folder");
  EXPECT_EQ(found[0].file, other / "images/day1");
}

TEST_F(VerifiedSetTest, FoldersOfPicturesThatTrainersLookForLabelsElsewhereFor) {
  for (const std::string folder : {"images", "JPEGImages"}) {
    struct Row {
      std::string pictures;
      std::string labels;
      bool hasList;
      bool isFound;
    };
    for (const auto& [pictures, labels, hasList, isFound] :
         {Row{"set/" + folder, "set/labels", false, false},
          Row{"set/" + folder, "set/labels", true, true},
          Row{folder + "/set/" + folder, folder + "/set/labels", false, true},
          Row{folder + "/set/samples", folder + "/set/samples", false, true},
          Row{folder + "/set/samples", folder + "/set/samples", true, true},
          Row{folder + "2/set", folder + "2/set", true, false}}) {
      const TempDirectory other;
      other.makeDirectory(pictures);
      cv::imwrite(other / (pictures + "/a.png"), scene(1));
      other.write(labels + "/a.txt", "0 0.5 0.5 0.25 0.5\n");
      const fs::path set = fs::path(pictures).parent_path();
      other.write((set / "classes.txt").string(), "screw\n");
      if (hasList) other.write((set / "train.txt").string(), other / (pictures + "/a.png") + "\n");
      const auto found = verify(other / set.string()).findings;
      const std::string row = pictures + (hasList ? " listed" : "");
      ASSERT_EQ(found.size(), isFound ? 1U : 0U) << row;
      if (!isFound) continue;
      EXPECT_EQ(found[0].rule, "images-folder") << row;
      EXPECT_EQ(found[0].file, other / pictures);
    }
  }
}

TEST_F(VerifiedSetTest, RelativePathsAreFoundBesideTheList) {
  place.write("train.txt", "samples/img_0.png\n./samples/img_1.png\n");
  EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(VerifiedSetTest, WhatIsNoSetIsAnError) {
  const TempDirectory empty;
  EXPECT_THROW(verify(empty.path()), CommandError);
  EXPECT_THROW(verify(empty / "absent"), CommandError);
  place.write("other.data", "");
  EXPECT_THROW(verify(place.path()), CommandError) << "two data files";
}

/// The same set as newer trainers have it: pictures and labels in trees, described by data.yaml.
class DescribedSetTest : public VerifiedSetTest {
 protected:
  void SetUp() override {
    for (unsigned i = 0; i < 4; ++i) {
      const std::string name = std::string(i < 2 ? "train" : "val") + "/p" + std::to_string(i);
      fs::create_directories(fs::path(place / ("images/" + name)).parent_path());
      cv::imwrite(place / ("images/" + name + ".png"), scene(i + 1));
      place.write("labels/" + name + ".txt", std::to_string(i % 2) + " 0.5 0.5 0.25 0.5\n");
    }
    describe("path: .\ntrain: images/train\nval: images/val\nnc: 2\nnames: [screw, nut]\n");
  }

  void describe(const std::string& text) const { place.write("data.yaml", text); }
};

TEST_F(DescribedSetTest, ASoundSetHasNoFindings) {
  EXPECT_THAT(findings(), IsEmpty());
  EXPECT_THAT(findings(place / "data.yaml"), IsEmpty());
  EXPECT_EQ(verify(place.path()).pictures, 4U);
  EXPECT_EQ(verify(place.path()).labels, 4U);
  fs::rename(place / "data.yaml", place / "data.yml");
  EXPECT_EQ(verify(place.path()).labels, 4U);
  place.write("val.txt", "images/val/p2.png\nimages/val/p3.png\n");
  describe("train: ../images/train\nval: val.txt\nnames:\n  0: screw\n  1: nut\n");
  EXPECT_THAT(findings(), IsEmpty()) << "a list, a step up too many, a map, no count";
}

TEST_F(DescribedSetTest, DefectsOfTheDescription) {
  const std::string places = "train: images/train\nval: images/val\n";
  const std::string names = "names: [screw, nut]\n";
  struct Row {
    std::string text;
    std::vector<std::string> found;
  };
  for (const auto& [text, found] : std::vector<Row>{
           {places + "nc: 3\n" + names, {"data.yaml:0 class-count"}},
           {places + "nc: two\n" + names, {"data.yaml:0 class-count"}},
           {places, {"data.yaml:0 missing-names"}},
           {places + "names: [screw, screw]\n", {"data.yaml:0 same-name"}},
           {places + "names: ['', nut]\n", {"data.yaml:0 blank-name"}},
           {places + "names: {0: screw, 2: nut}\n", {"data.yaml:0 class-count"}},
           {places + "names: {1: screw, 2: nut}\n", {"data.yaml:0 class-count"}},
           {places + "names: [screw]\n",
            {"labels/train/p1.txt:1 class-number", "labels/val/p3.txt:1 class-number"}},
           {"train: images/train\n" + names, {"data.yaml:0 data-key"}},
           {"val: images/val\n" + names, {"data.yaml:0 data-key"}},
           {"train: images/train\nval: images/absent\n" + names, {"data.yaml:0 missing-file"}},
           {"train: images/train\nval: images/train\n" + names, {"data.yaml:0 same-picture"}},
           {places + "test: images/val\n" + names, {}},
           {places + "names: [screw, nut\n", {"data.yaml:3 data-syntax"}},
           {places + "names: {0: screw, 1: nut\n", {"data.yaml:3 data-syntax"}},
           {places + names + "comment: 'open\n", {"data.yaml:4 data-syntax"}},
           {places + "names:\n\t- screw\n\t- nut\n",
            {"data.yaml:4 data-syntax", "data.yaml:5 data-syntax"}},
           {places + "# it's [\n" + names, {}},
           {places + "names: ['it''s # [', don't] # {\n", {}},
           {places + "names:\n  - \"a \\\" [\"\n  - b[{\n", {}},
           {places + "names: [\n  screw,\n  nut]\n", {}},
           {places + names + "nc: 2\nnames: [screw, nut]\n", {"data.yaml:5 data-key"}},
           {places + "nc: 2\n" + names + "\"nc\": 2\n'val': images/val\n",
            {"data.yaml:5 data-key", "data.yaml:6 data-key"}},
           {places + "names:\n  0: screw\n  1: nut\n  1: nut\n", {"data.yaml:6 data-key"}},
           {places + "'names':\n  \"0\": screw\n  '1': nut\n", {}},
           {places + names + "more:\n  a: {x: 1}\n  a: 'x: 1'\n", {}},
           {places + "names: [\n  'a: 1',\n  'a: 2']\n", {}},
           // A script that some fetch the pictures with.
           {places + names + "download: |\n  names: [\n  'it\n  names: &x\n\n\ty\n", {}},
           {"\xEF\xBB\xBF" + places + names, {"data.yaml:1 byte-order-mark"}},
           // Without any place that is there the whole directory is looked through.
           {"train: a\nval: b\n" + names,
            {"data.yaml:0 missing-file", "data.yaml:0 missing-file"}}}) {
    describe(text);
    EXPECT_THAT(findings(), testing::ElementsAreArray(found)) << text;
  }
  EXPECT_EQ(verify(place.path()).labels, 4U);
}

TEST_F(DescribedSetTest, SpellingsThatAreNotReadAreRefusedWithTheirLine) {
  const std::string places = "train: images/train\nval: images/val\n";
  for (const auto& [text, line] : std::vector<std::pair<std::string, std::string>>{
           {places + "names: &all [screw, nut]\n", "3"},
           {places + "names:\n  - screw\n  - |\n    nut\n", "5"},
           {places + "names:\n  0: screw\n  1: >-\n    nut\n", "5"},
           {places + "names: [screw,\n  *nut]\n", "4"},
           {"train: *place\nval: images/val\nnames: [screw, nut]\n", "1"},
           {places + "<<: *base\n", "3"},
           {places + "names: !!seq [screw, nut]\n", "3"},
           {"{\"train\": \"images/train\",\n \"names\": [\"screw\", \"nut\"]}\n", "1"}}) {
    describe(text);
    try {
      verify(place.path());
      ADD_FAILURE() << text;
    } catch (const CommandError& error) {
      EXPECT_THAT(error.what(), HasSubstr("data.yaml' is spelled in line " + line + " in a way"))
          << text;
    }
  }
  describe(places + "names: ['&screw', \"*\"]\nauthor: &me somebody\n");
  EXPECT_THAT(findings(), IsEmpty()) << "in quotes, and where nobody looks";
}

TEST_F(DescribedSetTest, ANameThatStandsTwiceIsToldWithItsNumber) {
  describe("train: images/train\nval: images/val\nnames: {1: screw, 3: screw}\n");
  EXPECT_THAT(verify(place.path()).findings,
              testing::Contains(testing::Field(&Finding::text, "'screw' is class 1, too")));
}

TEST_F(DescribedSetTest, TheNameOfTheDescriptionMayBeInCapitals) {
  for (const char* name : {"DATA.YAML", "Data.Yml"}) {
    fs::rename(place / "data.yaml", place / name);
    EXPECT_THAT(findings(place / name), IsEmpty());
    EXPECT_EQ(verify(place.path()).labels, 4U) << name;
    fs::rename(place / name, place / "data.yaml");
  }
}

TEST_F(DescribedSetTest, TestPicturesAreComparedWithThoseToTrainWith) {
  fs::copy_file(place / "images/train/p0.png", place / "images/val/p2.png",
                fs::copy_options::overwrite_existing);
  fs::remove(place / "labels/val/p3.txt");
  place.makeDirectory("images/none");
  describe("train: images/train\nval: [images/val, images/none]\nnames: [screw, nut]\n");
  EXPECT_THAT(findings(),
              ElementsAre("images/none:0 empty-list", "images/val/p2.png:0 same-picture",
                          "images/val/p3.png:0 missing-label"));
}

class ProgramVerify : public ProgramTest {};

TEST_F(ProgramVerify, ADirectoryThatIsLockedIsNamedAndTheRestGoneOnWith) {
  place.makeDirectory("bare/locked");
  writePicture(place / "bare/a.png", 32, 32);
  place.write("bare/a.txt", "");
  place.write("bare/classes.txt", "nut\n");
  fs::permissions(place / "bare/locked", fs::perms::none);
  const auto result = runAsNobody({"verify", "bare"});
  fs::permissions(place / "bare/locked", fs::perms::owner_all);
  EXPECT_EQ(result.exitCode, 3) << result.err;
  EXPECT_THAT(result.out, HasSubstr("locked: locked-directory"));
  EXPECT_THAT(result.out, HasSubstr("1 picture, "));
}

TEST_F(ProgramVerify, AGeneratedSetIsSoundAndABrokenOneIsFound) {
  makeProject();
  cv::imwrite(place / "photos/b.png", scene(7, {128, 64}));
  succeed({"mark", "parts", "a.png", "Rect", "0.25,0.25", "0.5,0.75", "--class", "nut"});
  succeed({"generate", "parts", "--output", "set", "--test-ratio", "0.5", "--keep-together",
           "source", "--augmentation", "resize-quarter-turns.xml"});
  EXPECT_THAT(succeed({"verify", "set"}), HasSubstr("10 pictures, 5 labels, 0 findings\n"));
  place.write("set/samples/img_0.txt", "7 0.5 0.5 0.5 0.5\n");
  const auto broken = run({"verify", "set"});
  EXPECT_EQ(broken.exitCode, 3);
  EXPECT_THAT(broken.out, HasSubstr("/samples/img_0.txt:1: class-number: there is no class 7"));
  const auto json = run({"verify", "set", "--json"});
  EXPECT_EQ(json.exitCode, 3);
  EXPECT_THAT(json.out, HasSubstr("\"rule\" : \"class-number\""));
}

TEST_F(ProgramVerify, TheLibrarysOwnDivisionTearsCopiesApart) {
  makeProject();
  succeed({"generate", "parts", "--output", "set", "--test-ratio", "0.5", "--augmentation",
           "resize-quarter-turns.xml"});
  const auto result = run({"verify", "set"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.out, HasSubstr("near-twin"));
  EXPECT_THAT(result.out, HasSubstr("generate --keep-together"));
}

TEST_F(ProgramVerify, WithoutASetTheErrorSaysWhatToGive) {
  fail({"verify", "nowhere"}, "give its directory, its data file or its data.yaml");
  place.write("parts.cfg", "[net]\n");
  fail({"verify", "parts.cfg"}, "is a network file; give the directory of the set, its data file");
}

TEST_F(ProgramVerify, WhatIsNotCheckedIsTold) {
  makeProject();
  cv::imwrite(place / "photos/b.png", scene(7, {128, 64}));
  succeed({"mark", "parts", "a.png", "Rect", "0.25,0.25", "0.5,0.75", "--class", "nut"});
  succeed({"generate", "parts", "--output", "set", "--test-ratio", "0.5"});
  const auto notChecked = [&](const std::vector<std::string>& expected, const std::string& note) {
    const auto result = run({"verify", "set", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.out;
    EXPECT_THAT(result.err, HasSubstr(note));
    Json::Value value;
    std::istringstream(result.out) >> value;
    std::vector<std::string> told;
    for (const auto& each : value["notChecked"])
      told.push_back(each.asString());
    EXPECT_EQ(told, expected);
  };
  notChecked({}, "");
  fs::remove(place / "set/parts.cfg");
  notChecked({"network"}, "--net names one");
  fs::remove(place / "set/parts.data");
  notChecked({"data file", "network"}, "no data file and no data.yaml");
}

TEST_F(ProgramVerify, LabelsOfOtherFormatsAreNoSetWithFindings) {
  makeProject();
  succeed({"mark", "parts", "a.png", "Rect", "0.25,0.25", "0.5,0.75", "--class", "nut"});
  for (const std::string format : {"COCO", "VOC"}) {
    for (const bool copy : {true, false}) {
      std::vector<std::string> call{"labels", "export", "parts", format, "--format", format};
      if (copy) call.emplace_back("--copy");
      succeed(call);
      for (const auto* command : {"verify", "stats"})
        for (const std::string file :
             {"", format == "COCO" ? "/annotations.json" : "/Annotations/a.xml"})
          fail({command, format + file},
               format + file + "' holds labels of the format " + format +
                   "; verify and stats read sets for Darknet and its successors: take these into a "
                   "project with labels import, and write them with labels export");
    }
  }
}

}  // namespace
