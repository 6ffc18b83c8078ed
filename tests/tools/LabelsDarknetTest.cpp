#include "tools/LabelsDarknet.h"

#include <filesystem>
#include <locale>
#include <random>

#include <opencv2/imgcodecs.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LogCapture.h"
#include "support/SystemMessage.h"
#include "support/TempDirectory.h"
#include "tools/LabelNames.h"
#include "tools/LabelTools.h"

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Texts = std::vector<std::string>;

/// The reader looks at the names of pictures, not into them.
void addPictures(const TempDirectory& temp, const Texts& names) {
  for (const std::string& name : names)
    temp.write(name, "");
}

tnv::LabelSet readSet(const std::string& path, const tnv::LabelReading& reading = {}) {
  auto set = tnv::readDarknetLabels(path, reading);
  EXPECT_TRUE(set.has_value()) << path;
  return set ? std::move(*set) : tnv::LabelSet();
}

Texts rejections(const tnv::LabelSet& set) {
  return rejectionsIn(set);
}

/// The rejections of a label text beside its picture, with the classes screw and nut.
Texts rejectionsOf(const std::string& text, bool clip = false) {
  const TempDirectory temp;
  addPictures(temp, {"a.jpg"});
  temp.write("classes.txt", "screw\nnut\n");
  temp.write("a.txt", text);
  tnv::LabelReading reading;
  reading.clip = clip;
  return rejections(readSet(temp.path(), reading));
}

constexpr auto kBox = "0 0.5 0.5 0.25 0.5\n";

}  // namespace

TEST(LabelsDarknet, ABoxIsToldByItsCentreAndSize) {
  const TempDirectory temp;
  addPictures(temp, {"a.jpg"});
  temp.write("classes.txt", "screw\nnut\n");
  temp.write("a.txt", "\n1 0.5 0.375 0.25 0.5\n");
  const auto set = readSet(temp.path());
  EXPECT_THAT(set.classNames, ElementsAre("screw", "nut"));
  ASSERT_EQ(set.pictures.size(), 1U);
  EXPECT_EQ(set.pictures[0].path, temp / "a.jpg");
  EXPECT_EQ(set.pictures[0].labelFile, temp / "a.txt");
  ASSERT_EQ(set.pictures[0].labels.size(), 1U);
  EXPECT_EQ(set.pictures[0].labels[0].classPlace, 1U);
  EXPECT_EQ(set.pictures[0].labels[0].box, cv::Rect2d(0.375, 0.125, 0.25, 0.5));
  EXPECT_EQ(set.pictures[0].labels[0].line, 2U);
  EXPECT_TRUE(set.pictures[0].labels[0].outline.empty());
}

TEST(LabelsDarknet, MoreNumbersAreAnOutline) {
  const TempDirectory temp;
  addPictures(temp, {"a.jpg"});
  temp.write("classes.txt", "screw\n");
  temp.write("a.txt", "0 0.25 0.25 0.75 0.25 0.5 0.75\n");
  const auto set = readSet(temp.path());
  ASSERT_EQ(set.accepted, 1U);
  const std::vector<cv::Point2d> expected{{0.25, 0.25}, {0.75, 0.25}, {0.5, 0.75}};
  EXPECT_EQ(set.pictures[0].labels[0].outline, expected);
}

TEST(LabelsDarknet, EachBrokenLineIsRejectedWithItsPlace) {
  struct Row {
    const char* line;
    const char* reason;
  };
  const Row rows[] = {
      {"0 0.5 0.5 0.25", "neither a box nor an outline"},
      {"0 0.5 0.5 0.25 0.5 0.9", "neither a box nor an outline"},
      {"0", "neither a box nor an outline"},
      {"screw 0.5 0.5 0.25 0.5", "class is no whole number"},
      {"0.0 0.5 0.5 0.25 0.5", "class is no whole number"},
      {"99999999999999999999 0.5 0.5 0.25 0.5", "class is no whole number"},
      {"0 0,5 0.5 0.25 0.5", "not a number"},
      {"0 0.5x 0.5 0.25 0.5", "not a number"},
      {"0 1e999 0.5 0.25 0.5", "not a number"},
      {"0 nan 0.5 0.25 0.5", "not a finite number"},
      {"0 0.5 0.5 inf 0.5", "not a finite number"},
      {"2 0.5 0.5 0.25 0.5", "unknown class"},
      {"-1 0.5 0.5 0.25 0.5", "unknown class"},
      {"0 0.5 0.5 0 0.5", "no width or no height"},
      {"0 0.5 0.5 0.25 -0.5", "no width or no height"},
      {"0 0.5 0.5 1.1 0.5", "reaches beyond the picture"},
  };
  for (const Row& row : rows) {
    EXPECT_THAT(rejectionsOf(std::string(kBox) + row.line + "\n" + kBox),
                ElementsAre(std::string("a.txt:2: ") + row.reason))
        << row.line;
  }
}

TEST(LabelsDarknet, BlanksByteOrderMarkAndLineEndsOfAnyKindDoNoHarm) {
  EXPECT_THAT(rejectionsOf("\xEF\xBB\xBF"
                           "0 0.5 0.5 0.25 0.5\r\n\r\n  \t1\t0.5  0.5 1 1 \r\n"),
              IsEmpty());
}

TEST(LabelsDarknet, ClippingIsLeftToTheReader) {
  EXPECT_THAT(rejectionsOf("0 0 0.5 0.5 0.5\n"),
              ElementsAre("a.txt:1: reaches beyond the picture"));
  EXPECT_THAT(rejectionsOf("0 0 0.5 0.5 0.5\n", true), IsEmpty());
}

TEST(LabelsDarknet, NumbersDoNotDependOnTheLocale) {
  class CommaNumbers : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
  };
  const std::locale before =
      std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
  const TempDirectory temp;
  const Texts found = rejectionsOf(kBox);
  tnv::LabelSet set;
  set.classNames = {"screw"};
  set.classNumbers = {0};
  set.pictures = {{temp / "a.jpg", {}, {}, {}}};
  set.take(set.pictures[0], {0, {0.25, 0.25, 0.5, 0.5}, {}, 0, false}, false);
  const bool written = tnv::writeDarknetLabels(set, temp / "out", {});
  std::locale::global(before);
  EXPECT_THAT(found, IsEmpty());
  EXPECT_TRUE(written);
  EXPECT_EQ(readFile(temp / "out/labels/a.txt"), "0 0.5 0.5 0.5 0.5\n");
}

TEST(LabelsDarknet, PicturesAndLabelsMayLieInTwoTrees) {
  const struct {
    const char* picture;
    const char* text;
  } rows[] = {
      {"a.jpg", "a.txt"},
      {"images/a.JPG", "labels/a.txt"},
      {"images/train/a.png", "labels/train/a.txt"},
      {"train/images/day1/a.jpeg", "train/labels/day1/a.txt"},
      {"images/old/images/a.jpg", "images/old/labels/a.txt"},
  };
  for (const auto& row : rows) {
    const TempDirectory temp;
    addPictures(temp, {row.picture});
    temp.write("obj.names", "screw\n");
    temp.write(row.text, kBox);
    const auto set = readSet(temp.path());
    EXPECT_THAT(pictures(set, temp.path()), ElementsAre(std::string(row.picture) + ": 1"));
    EXPECT_THAT(set.rejections, IsEmpty()) << row.picture;
  }
}

TEST(LabelsDarknet, SplitsAreReadTogetherInTheOrderOfTheirPaths) {
  const TempDirectory temp;
  addPictures(temp, {"valid/images/c.jpg", "train/images/b.jpg", "train/images/a.jpg"});
  // What the description does not name is no part of the set.
  addPictures(temp, {"extra/x.jpg"});
  temp.write("train/labels/a.txt", kBox);
  temp.write("valid/labels/c.txt", std::string(kBox) + kBox);
  temp.write("data.yaml", "train: ../train/images\nval: ../valid/images\nnames: [screw]\n");
  EXPECT_THAT(
      pictures(readSet(temp.path()), temp.path()),
      ElementsAre("train/images/a.jpg: 1", "train/images/b.jpg: 0", "valid/images/c.jpg: 2"));
}

TEST(LabelsDarknet, ALabelsTreeFindsItsPicturesBesideIt) {
  const TempDirectory temp;
  addPictures(temp, {"images/a.jpg"});
  temp.write("labels/classes.txt", "screw\n");
  temp.write("labels/a.txt", kBox);
  EXPECT_THAT(pictures(readSet(temp / "labels"), temp.path()), ElementsAre("images/a.jpg: 1"));
}

TEST(LabelsDarknet, ATextThatSeveralPicturesHaveIsRejected) {
  for (const bool isSingle : {false, true}) {
    const TempDirectory temp;
    addPictures(temp, {"a.jpg", "a.png", "b.jpg"});
    temp.write("classes.txt", "screw\n");
    temp.write("a.txt", std::string(kBox) + "\n" + kBox);
    temp.write("b.txt", kBox);
    const auto set = readSet(isSingle ? temp / "a.txt" : temp.path());
    EXPECT_THAT(rejections(set),
                ElementsAre("a.txt:1: several pictures have the name of the text",
                            "a.txt:3: several pictures have the name of the text"));
    EXPECT_EQ(set.accepted, isSingle ? 0U : 1U);
    EXPECT_EQ(set.pictures.size(), isSingle ? 2U : 3U);
  }
}

TEST(LabelsDarknet, APictureMayBeCalledLikeTheFileOfClasses) {
  const TempDirectory temp;
  addPictures(temp, {"images/classes.jpg"});
  temp.write("labels/classes.txt", kBox);
  temp.write("classes.txt", "screw\n");
  for (const std::string& path : {temp.path(), temp / "labels/classes.txt"}) {
    const auto set = readSet(path);
    EXPECT_THAT(set.classNames, ElementsAre("screw"));
    EXPECT_THAT(pictures(set, temp.path()), ElementsAre("images/classes.jpg: 1")) << path;
  }
  fs::remove(temp / "classes.txt");
  temp.write("labels/obj.names", "nut\n");
  EXPECT_THAT(readSet(temp / "labels").classNames, ElementsAre("nut"));
}

TEST(LabelsDarknet, LinesOfAListThatAreNoPicturesAreRejected) {
  const TempDirectory temp;
  addPictures(temp, {"data/obj/a.jpg", "notes.md", "data/obj/a.dat"});
  temp.write("obj.names", "screw\n");
  temp.write("list.txt", "data\\obj\\a.jpg\n\nnotes.md\ndata\ngone.md\n");
  temp.write("obj.data", "train = list.txt\nnames = obj.names\n");
  const auto set = readSet(temp / "obj.data");
  EXPECT_THAT(pictures(set, temp.path()), ElementsAre("data/obj/a.jpg: 0"));
  EXPECT_THAT(rejections(set), ElementsAre("list.txt:3: no picture file",
                                           "list.txt:4: no picture file", "gone.md:0: no picture"));
}

TEST(LabelsDarknet, PicturesOfAnyKindThatCanBeReadLieBesideTexts) {
  const TempDirectory temp;
  temp.write("classes.txt", "screw\n");
  temp.makeDirectory("images");
  const cv::Mat picture(8, 8, CV_8UC3, cv::Scalar(1, 2, 3));
  for (const std::string type : {"bmp", "tif", "webp"}) {
    cv::imwrite(temp / "images/" + type + "." + type, picture);
    temp.write("labels/" + type + ".txt", "0 0.5 0.5 0.5 0.5\n");
  }
  fs::rename(temp / "images/tif.tif", temp / "images/tif.of somebody");
  temp.write("images/notes.doc", "no picture");
  temp.write("labels/notes.txt", "0 0.5 0.5 0.5 0.5\n");
  const auto set = readSet(temp.path());
  EXPECT_THAT(picturesIn(set), ElementsAre("bmp.bmp: 1", "tif.of somebody: 1", "webp.webp: 1"));
  EXPECT_THAT(rejections(set), ElementsAre("notes.txt:1: no picture"));
  EXPECT_THAT(picturesIn(readSet(temp / "labels/bmp.txt")), ElementsAre("bmp.bmp: 1"));
}

TEST(LabelsDarknet, PicturesMayLieElsewhere) {
  const TempDirectory temp;
  addPictures(temp, {"photos/day1/a.jpg", "photos/b.jpg"});
  temp.write("set/classes.txt", "screw\n");
  temp.write("set/day1/a.txt", kBox);
  temp.write("set/labels/b.txt", kBox);
  temp.write("set/c.txt", kBox);
  tnv::LabelReading reading;
  reading.pictures = temp / "photos";
  const auto set = readSet(temp / "set", reading);
  EXPECT_THAT(pictures(set, temp.path()), ElementsAre("photos/b.jpg: 1", "photos/day1/a.jpg: 1"));
  EXPECT_THAT(rejections(set), ElementsAre("c.txt:1: no picture"));
}

TEST(LabelsDarknet, ASingleTextIsReadWithItsPicture) {
  struct Row {
    const char* text;
    const char* picture;
    const char* names;
    const char* content;
  };
  for (const auto& [text, picture, names, content] :
       {Row{"a.txt", "a.jpg", "classes.txt", kBox},
        Row{"labels/train/a.txt", "images/train/a.JPG", "obj.names", kBox},
        Row{"labels/a.txt", "images/a.png", "labels/classes.txt", kBox},
        Row{"a.txt", "a.jpg", "classes.txt", ""}}) {
    const TempDirectory temp;
    addPictures(temp, {picture, "other.jpg"});
    temp.write("other.txt", kBox);
    temp.write(names, "screw\n");
    const std::string path = temp.write(text, content);
    EXPECT_TRUE(tnv::isDarknetLabels(path)) << text;
    const auto set = readSet(path);
    EXPECT_THAT(set.classNames, ElementsAre("screw"));
    EXPECT_THAT(pictures(set, temp.path()),
                ElementsAre(picture + std::string(*content ? ": 1" : ": 0")));
    EXPECT_THAT(rejections(set), IsEmpty());
  }
}

TEST(LabelsDarknet, ASingleTextMayHaveItsPictureElsewhereOrNowhere) {
  const TempDirectory temp;
  addPictures(temp, {"photos/a.jpg"});
  temp.write("set/classes.txt", "screw\n");
  const std::string path = temp.write("set/a.txt", kBox);
  tnv::LabelReading reading;
  EXPECT_THAT(rejections(readSet(path)), ElementsAre("a.txt:1: no picture"));
  reading.pictures = temp / "photos";
  EXPECT_THAT(pictures(readSet(path, reading), temp.path()), ElementsAre("photos/a.jpg: 1"));
  EXPECT_FALSE(tnv::isDarknetLabels(temp / "set/classes.txt"));
  EXPECT_FALSE(tnv::isDarknetLabels(temp.write("README.txt", "These are screws.\n")));
}

TEST(LabelsDarknet, ATextWithoutAPictureHasEachOfItsLabelsRejected) {
  const TempDirectory temp;
  addPictures(temp, {"a.jpg"});
  temp.write("classes.txt", "screw\n");
  temp.write("a.txt", kBox);
  temp.write("b.txt", std::string(kBox) + "\nbroken\n" + kBox);
  const auto set = readSet(temp.path());
  EXPECT_THAT(rejections(set),
              ElementsAre("b.txt:1: no picture", "b.txt:3: no picture", "b.txt:4: no picture"));
  EXPECT_EQ(set.found(), 4U);
}

TEST(LabelsDarknet, ATextThatHoldsNoLabelsIsPassedOverAloud) {
  const TempDirectory temp;
  addPictures(temp, {"a.jpg"});
  temp.write("classes.txt", "screw\n");
  temp.write("README.txt", "These are screws.\n");
  LogCapture log;
  EXPECT_EQ(readSet(temp.path()).found(), 0U);
  EXPECT_THAT(log.text(), HasSubstr("README.txt' has no picture and no labels, passed over"));
}

TEST(LabelsDarknet, ATextThatCannotBeReadIsToldOf) {
  const TempDirectory temp;
  addPictures(temp, {"a.jpg"});
  temp.write("classes.txt", "screw\n");
  fs::create_symlink(temp / "nowhere", temp / "a.txt");
  fs::create_symlink(temp / "nowhere", temp / "b.txt");
  EXPECT_THAT(rejections(readSet(temp.path())),
              ElementsAre("a.txt:0: file cannot be read", "b.txt:0: file cannot be read"));
}

TEST(LabelsDarknet, LinkedDirectoriesBelongToTheSet) {
  const TempDirectory elsewhere;
  addPictures(elsewhere, {"photos/a.jpg"});
  elsewhere.write("texts/a.txt", kBox);
  const TempDirectory temp;
  temp.write("classes.txt", "screw\n");
  fs::create_directory_symlink(elsewhere / "photos", temp / "images");
  fs::create_directory_symlink(elsewhere / "texts", temp / "labels");
  const auto set = readSet(temp.path());
  EXPECT_THAT(pictures(set, temp.path()), ElementsAre("images/a.jpg: 1"));
  EXPECT_THAT(rejections(set), IsEmpty());
}

TEST(LabelsDarknet, APictureThatALinkLeadsToCountsOnce) {
  const TempDirectory temp;
  addPictures(temp, {"all/photos/a.jpg", "all/photos/b.jpg"});
  temp.write("all/texts/a.txt", kBox);
  temp.write("classes.txt", "screw\n");
  fs::create_directory_symlink(temp / "all/photos", temp / "images");
  fs::create_directory_symlink(temp / "all/texts", temp / "labels");
  const auto set = readSet(temp.path());
  EXPECT_THAT(pictures(set, temp.path()), ElementsAre("images/a.jpg: 1", "all/photos/b.jpg: 0"));
  EXPECT_THAT(rejections(set), IsEmpty());
}

TEST(LabelsDarknet, APictureThatALinkedFileOrALineLeadsToCountsOnce) {
  const TempDirectory temp;
  addPictures(temp, {"all/a.jpg"});
  temp.write("all/a.txt", kBox);
  temp.write("classes.txt", "screw\n");
  fs::create_symlink(temp / "all/a.jpg", temp / "b.jpg");
  EXPECT_THAT(pictures(readSet(temp.path()), temp.path()), ElementsAre("all/a.jpg: 1"));
  fs::remove(temp / "b.jpg");
  fs::create_directory_symlink(temp / "all", temp / "day1");
  temp.write("list.txt", "all/a.jpg\nday1/a.jpg\n");
  temp.write("obj.data", "train = list.txt\nnames = classes.txt\n");
  EXPECT_THAT(pictures(readSet(temp / "obj.data"), temp.path()), ElementsAre("all/a.jpg: 1"));
}

TEST(LabelsDarknet, LinksInACircleComeToAnEnd) {
  const TempDirectory temp;
  addPictures(temp, {"x/a.jpg", "y/b.jpg"});
  temp.write("classes.txt", "screw\n");
  for (const char* from : {"x", "y"}) {
    for (const char* to : {"x", "y", "."})
      fs::create_directory_symlink(temp / to, temp / from + "/to " + to);
  }
  EXPECT_EQ(readSet(temp.path()).pictures.size(), 2U);
}

TEST(LabelsDarknet, ADirectoryThatCannotBeReadIsRejected) {
  const TempDirectory temp;
  addPictures(temp, {"images/a.jpg"});
  temp.write("classes.txt", "screw\n");
  temp.write("labels/a.txt", kBox);
  temp.write("locked/b.txt", kBox);
  for (const char* link : {"linked", "day1.2024", "notes.md"})
    fs::create_symlink(temp / "gone", temp / link);
  fs::permissions(temp.path(), fs::perms::all);
  fs::permissions(temp / "locked", fs::perms::none);
  tnv::LabelSet set;
  {
    const WithoutRights withoutRights;
    set = readSet(temp.path());
  }
  auto rejected = rejections(set);
  std::sort(rejected.begin(), rejected.end());
  EXPECT_THAT(rejected,
              ElementsAre("day1.2024:0: link leads nowhere", "linked:0: link leads nowhere",
                          "locked:0: directory cannot be read", "notes.md:0: link leads nowhere"));
  EXPECT_THAT(pictures(set, temp.path()), ElementsAre("images/a.jpg: 1"));
  fs::permissions(temp / "locked", fs::perms::owner_all);
}

TEST(LabelsDarknet, ADataFileTellsNamesAndPictures) {
  const TempDirectory temp;
  addPictures(temp, {"data/obj/a.jpg", "data/obj/b.jpg", "data/obj/c.jpg"});
  temp.write("data/obj/a.txt", kBox);
  temp.write("data/train.txt", "obj/a.jpg\nobj/gone.jpg\n");
  temp.write("data/valid.txt", temp / "data/obj/b.jpg\n" + temp.path() + "data/obj/a.jpg");
  temp.write("data/obj.names", "screw\n");
  temp.write("data/obj.data",
             "classes = 1\ntrain = data/train.txt\nvalid=data/valid.txt\nnames = data/obj.names\n");
  const auto set = readSet(temp / "data/obj.data");
  EXPECT_THAT(pictures(set, temp.path()), ElementsAre("data/obj/a.jpg: 1", "data/obj/b.jpg: 0"));
  EXPECT_THAT(rejections(set), ElementsAre("gone.jpg:0: no picture"));
}

TEST(LabelsDarknet, AllPlacesOfADescriptionAreRead) {
  for (const char* key : {"train", "val", "valid", "test"}) {
    const TempDirectory temp;
    addPictures(temp, {"day1/a.jpg"});
    temp.write("list.txt", "day1/a.jpg\n");
    temp.write("obj.names", "screw\n");
    temp.write("obj.DATA", std::string(key) + " = list.txt\nnames = obj.names\n");
    temp.write("set.YAML", std::string(key) + ": day1\nnames: [screw]\n");
    for (const char* file : {"obj.DATA", "set.YAML"})
      EXPECT_THAT(pictures(readSet(temp / file), temp.path()), ElementsAre("day1/a.jpg: 0"))
          << key << file;
    EXPECT_THAT(tnv::readYamlTexts(temp / "set.YAML", key), ElementsAre(temp / "day1"));
  }
}

TEST(LabelsDarknet, APlaceThatIsMissingIsRejectedWhereAnotherIsThere) {
  const TempDirectory temp;
  addPictures(temp, {"train/a.jpg"});
  temp.write("data.yaml", "train: train\nval: valid/images\ntest:\nnames: [screw]\n");
  auto set = readSet(temp.path());
  EXPECT_THAT(pictures(set, temp.path()), ElementsAre("train/a.jpg: 0"));
  ASSERT_THAT(rejections(set), ElementsAre("images:0: no such file or directory"));
  EXPECT_EQ(set.rejections[0].file, temp / "valid/images");
  temp.write("list.txt", "train/a.jpg\n");
  temp.write("obj.names", "screw\n");
  temp.write("obj.data", "train = list.txt\nvalid = gone.txt\nnames = obj.names\n");
  set = readSet(temp / "obj.data");
  EXPECT_THAT(pictures(set, temp.path()), ElementsAre("train/a.jpg: 0"));
  EXPECT_THAT(rejections(set), ElementsAre("gone.txt:0: no such file or directory"));
}

TEST(LabelsDarknet, ASetThatWasMovedIsLookedThroughAloud) {
  const TempDirectory temp;
  addPictures(temp, {"images/a.jpg"});
  temp.write("data.yaml", "train: /where/it/was\nnames: [screw]\n");
  LogCapture log;
  EXPECT_THAT(pictures(readSet(temp.path()), temp.path()), ElementsAre("images/a.jpg: 0"));
  EXPECT_THAT(log.text(), HasSubstr("There is nothing at '/where/it/was'"));
}

TEST(LabelsDarknet, PlacesOfPicturesMayBeLists) {
  for (const char* train : {"train: [day1, 'day2',\n  day3/gone]\n",
                            "train:\n  - day1\n  - day2 # the second\n"
                            "  - day3/gone\nval: day1\n",
                            "train:\n- day1\nval:\n- day2\ntest: ~\n\ntest: day1\nval: [day2]\n"}) {
    const TempDirectory temp;
    addPictures(temp, {"day1/a.jpg", "day2/b.jpg", "day3/c.jpg"});
    temp.write("data.yaml", std::string(train) + "names: [screw]\n");
    const auto set = readSet(temp.path());
    EXPECT_THAT(pictures(set, temp.path()), ElementsAre("day1/a.jpg: 0", "day2/b.jpg: 0"));
    const bool hasGone = std::string_view(train).find("gone") != std::string_view::npos;
    EXPECT_EQ(set.rejections.size(), hasGone ? 1U : 0U) << train;
  }
}

TEST(LabelsDarknet, AListThatCannotBeReadIsRejected) {
  const TempDirectory temp;
  addPictures(temp, {"images/a.jpg"});
  temp.write("list.txt", "images/a.jpg\n");
  temp.write("data.yaml", "train: images\nval: list.txt\nnames: [screw]\n");
  fs::permissions(temp.path(), fs::perms::all);
  fs::permissions(temp / "list.txt", fs::perms::none);
  const WithoutRights withoutRights;
  EXPECT_THAT(rejections(readSet(temp.path())), ElementsAre("list.txt:0: file cannot be read"));
}

TEST(LabelsDarknet, PathsOfAListCountFromWhereTheTrainerMayBeStarted) {
  struct Row {
    const char* data;
    const char* list;
    const char* line;
  };
  // The picture is always data/obj/a.jpg.
  for (const auto& [data, list, line] :
       {Row{"data/obj.data", "data/train.txt", "data/obj/a.jpg"},
        Row{"data/obj.data", "data/train.txt", "obj/a.jpg"},
        Row{"data/cfg/deep/obj.data", "data/train.txt", "data/obj/a.jpg"},
        Row{"data/obj.data", "lists/train.txt", "obj/a.jpg"},
        Row{"data/obj.data", "data/obj/train.txt", "a.jpg"}}) {
    const TempDirectory temp;
    addPictures(temp, {"data/obj/a.jpg"});
    temp.write("data/obj/a.txt", kBox);
    temp.write("obj.names", "screw\n");
    temp.write(list, std::string(line) + "\n");
    temp.write(data, std::string("train = ") + list + "\nnames = obj.names\n");
    const auto set = readSet(temp / data);
    EXPECT_THAT(pictures(set, temp.path()), ElementsAre("data/obj/a.jpg: 1")) << data << list;
    EXPECT_THAT(rejections(set), IsEmpty());
  }
}

TEST(LabelsDarknet, PathsOfAListMayCountFromTheWorkingDirectory) {
  const TempDirectory temp;
  addPictures(temp, {"work/out/a.jpg"});
  temp.write("set/obj.names", "screw\n");
  temp.write("set/train.txt", "out/a.jpg\n");
  temp.write("set/obj.data", "train = train.txt\nnames = obj.names\n");
  const fs::path before = fs::current_path();
  fs::current_path(temp / "work");
  const auto set = readSet(temp / "set/obj.data");
  fs::current_path(before);
  EXPECT_THAT(pictures(set, temp.path()), ElementsAre("work/out/a.jpg: 0"));
}

TEST(LabelsDarknet, NamesThatAreGivenCountBeforeThoseThatLieThere) {
  const TempDirectory temp;
  addPictures(temp, {"a.jpg"});
  temp.write("classes.txt", "wrong\n");
  tnv::LabelReading reading;
  reading.names = temp.write("elsewhere/right.txt", "screw\n");
  LogCapture log;
  EXPECT_THAT(readSet(temp.path(), reading).classNames, ElementsAre("screw"));
  // The file of names is no label text that was passed over.
  EXPECT_EQ(log.text(), "");
  reading.names = temp / "missing.names";
  EXPECT_FALSE(tnv::readDarknetLabels(temp.path(), reading));
  EXPECT_THAT(log.text(), HasSubstr("No class names in"));
}

TEST(LabelsDarknet, WithoutNamesPicturesOrAnythingThereIsNoSet) {
  const TempDirectory temp;
  LogCapture log;
  EXPECT_FALSE(tnv::readDarknetLabels(temp / "missing", {}));
  EXPECT_THAT(log.text(), HasSubstr("There is nothing at"));
  temp.write("a.txt", kBox);
  EXPECT_FALSE(tnv::readDarknetLabels(temp.path(), {}));
  EXPECT_THAT(log.text(), HasSubstr("No class names found"));
  const TempDirectory empty;
  empty.write("classes.txt", "screw\n");
  EXPECT_FALSE(tnv::readDarknetLabels(empty.path(), {}));
  EXPECT_THAT(log.text(), HasSubstr("No pictures and no label texts in"));
}

TEST(LabelsDarknet, IsRecognisedByTextsOrADescription) {
  const TempDirectory temp;
  EXPECT_FALSE(tnv::isDarknetLabels(temp.path()));
  EXPECT_FALSE(tnv::isDarknetLabels(temp / "missing"));
  EXPECT_FALSE(tnv::isDarknetLabels(temp.write("a.jpg", "")));
  EXPECT_TRUE(tnv::isDarknetLabels(temp.write("set/data.yaml", "")));
  temp.write("deep/er/a.txt", "");
  EXPECT_TRUE(tnv::isDarknetLabels(temp / "deep"));
}

TEST(LabelsDarknet, DamagedTextsNeverDoMoreThanReject) {
  std::mt19937 random(5);
  const std::string whole = std::string(kBox) + "1 0.25 0.25 0.75 0.25 0.5 0.75\n";
  for (std::size_t size = 0; size <= whole.size(); ++size)
    rejectionsOf(whole.substr(0, size));
  for (int round = 0; round < 50; ++round) {
    std::string noise(200, '\0');
    for (char& c : noise)
      c = static_cast<char>(random() & 0xff);
    rejectionsOf(noise);
  }
  EXPECT_EQ(rejectionsOf(std::string(100000, '0')).size(), 1U);
}

TEST(LabelNames, YamlHasThemInManyForms) {
  const char* texts[] = {
      "names: [screw, 'hex nut', \"bolt\"]\n",
      "names: [ 'screw' , hex nut,\n   bolt,\n]\nnc: 3\n",
      "names:\n  [screw, hex nut, bolt]\n",
      "nc: 3\nnames:\n- screw\n- hex nut # of steel\n- 'bolt'\n",
      "names:\n  - screw\n\n  # a comment\n  - \"hex nut\"\n  - bolt\ntrain: images\n",
      "names:\n  0: screw\n  1: hex nut\n  2: bolt\n",
      "names:\r\n  2: bolt\r\n  0: 'screw'\r\n  1: hex nut\r\nval: x\r\n",
      "names: {0: screw, 1: 'hex nut', 2: bolt}\n",
      "\xEF\xBB\xBFnames : # all of them\n  0: screw\n  1: hex nut\n  2: bolt",
      "'nc': 3\n\"names\": [\"screw\", 'hex nut', bolt]\n",
      "'names\": [a]\n\"names\" :\n  \"0\": screw\n  '1': hex nut\n  2: bolt\n",
  };
  for (const char* text : texts) {
    const auto classes = tnv::parseYaml(text).classes;
    EXPECT_THAT(classes.names, ElementsAre("screw", "hex nut", "bolt")) << text;
    EXPECT_THAT(classes.numbers, ElementsAre(0, 1, 2)) << text;
  }
}

TEST(LabelNames, QuotesKeepWhatWouldEndAName) {
  EXPECT_THAT(tnv::parseYaml("names: ['it''s', \"a \\\"b\\\"\", 'x, y', '#1']").classes.names,
              ElementsAre("it's", "a \"b\"", "x, y", "#1"));
}

TEST(LabelNames, WhatFollowsTheBracketIsNoName) {
  for (const char* text : {"names: ['a', 'b']\nnc: 2\n", "names: [a, b] # two\nnc: 2\ntrain: x\n",
                           "names: {0: a, 1: b}\n7: c\n", "names: [a, b,]\n, c]\n"})
    EXPECT_THAT(tnv::parseYaml(text).classes.names, ElementsAre("a", "b")) << text;
}

TEST(LabelNames, EscapesInDoubleQuotesAreDecoded) {
  struct Row {
    const char* quoted;
    const char* name;
  };
  const Row rows[] = {
      {R"("a\"b\\c")", "a\"b\\c"},
      {R"("H\xFClse")", "H\xC3\xBClse"},
      {R"("\u0041\u20ac")", "A\xE2\x82\xAC"},
      {R"("\U0001F529")", "\xF0\x9F\x94\xA9"},
      {R"("\ud83d\udd29!")", "\xF0\x9F\x94\xA9!"},
      {R"("a\tb\nc\rd")", "a\tb\nc\rd"},
      {R"("\ud83d")", "\xEF\xBF\xBD"},
      {R"("\ud83dx")", "\xEF\xBF\xBDx"},
      {R"("\U00110000")", "\xEF\xBF\xBD"},
      {R"("\xg1\u12")", "xg1u12"},
      {R"("\q\/")", "q/"},
      {R"('a\nb')", "a\\nb"},
  };
  for (const Row& row : rows)
    EXPECT_THAT(tnv::parseYaml(std::string("names: [") + row.quoted + ", z]").classes.names,
                ElementsAre(row.name, "z"))
        << row.quoted;
  const std::string whole = R"(names: ["\ud83d\udd29\xFC"])";
  for (std::size_t size = 0; size <= whole.size(); ++size)
    tnv::parseYaml(whole.substr(0, size));
}

TEST(LabelNames, ANumberedMapMayHaveGapsOfAnySize) {
  const auto classes = tnv::parseYaml("names:\n  2147483647: far\n  3: near\n  3: again\n").classes;
  EXPECT_THAT(classes.names, ElementsAre("near", "far"));
  EXPECT_THAT(classes.numbers, ElementsAre(3, 2147483647));
}

TEST(LabelNames, TooManyForClassesAreNone) {
  std::string list = "names: [a";
  for (int i = 0; i < 100000; ++i)
    list += ",a";
  EXPECT_THAT(tnv::parseYaml(list + "]").classes.names, IsEmpty());
  list.resize(list.size() - 2);
  EXPECT_EQ(tnv::parseYaml(list + "]").classes.names.size(), 100000U);
}

TEST(LabelNames, OtherYamlIsPassedOver) {
  const char* texts[] = {"",
                         "names",
                         "names:",
                         "names: coco.names",
                         "names:\n",
                         "nameses: [a]",
                         "other:\n  names: [a]",
                         "names: &x {a: b}"};
  for (const char* text : texts)
    EXPECT_THAT(tnv::parseYaml(text).classes.names, IsEmpty()) << text;
  const auto description = tnv::parseYaml("path: ../set\ntrain: images/train # here\nval: 'v'\n");
  EXPECT_THAT(description.sources, ElementsAre("../set/images/train", "../set/v"));
}

TEST(LabelNames, SpellingsThatAreNotReadAreNoNamesAndToldOf) {
  for (const char* text : {"names: &all [a, b]\n", "names: *all\n", "names:\n  - |\n    a\n  - b\n",
                           "names:\n  0: >-\n    a\n", "names: [a, *b]\n", "names: !!seq [a]\n",
                           "names:\n  - a\n  - &b b\n", "{\"names\": [\n\"a\",\n\"b\"]}\n",
                           "names: {0: a, 1: !!str b}\n"}) {
    LogCapture log;
    EXPECT_THAT(tnv::parseYaml(text).classes.names, IsEmpty()) << text;
    EXPECT_THAT(log.text(), HasSubstr("are not read, write the values out!")) << text;
  }
  LogCapture log;
  EXPECT_THAT(tnv::parseYaml("train: *place\nval: a&b\nnames: ['*', \"&\", a*, 'b | c']").sources,
              ElementsAre("a&b"));
  EXPECT_THAT(tnv::parseYaml("names: ['*', \"&\", a*, b | c]").classes.names,
              ElementsAre("*", "&", "a*", "b | c"));
}

TEST(LabelNames, DamagedYamlEndsWhereItIsDamaged) {
  const std::string whole = "names: ['it''s', \"a\\\"b\", {0: c}]\nnames:\n  0: x\n";
  for (std::size_t size = 0; size <= whole.size(); ++size)
    tnv::parseYaml(whole.substr(0, size));
  EXPECT_THAT(tnv::parseYaml("names: [a, b").classes.names, ElementsAre("a", "b"));
  EXPECT_THAT(tnv::parseYaml("names: ['a, b]").classes.names, ElementsAre("a, b]"));
  EXPECT_THAT(tnv::parseYaml("names: " + std::string(100000, '[')).classes.names.size(), 1U);
}

TEST(LabelNames, WhatIsWrittenIsReadAgain) {
  const Texts names{"screw", "it's", "a: b # c", "H\xFClse", "- x"};
  const auto description = tnv::parseYaml(tnv::yamlText(names, "images"));
  EXPECT_EQ(description.classes.names, names);
  EXPECT_THAT(description.sources, ElementsAre("images", "images"));
}

namespace {

/// Two pictures of one name in two directories, and one without labels.
class DarknetRoundTrip : public testing::Test {
 protected:
  DarknetRoundTrip() {
    addPictures(temp, {"a/x.jpg", "b/x.jpg", "b/y.png"});
    set.classNames = {"screw", "nut"};
    set.classNumbers = {0, 1};
    set.pictures = {{temp / "a/x.jpg", {}, {}, {}},
                    {temp / "b/x.jpg", {}, {}, {}},
                    {temp / "b/y.png", {}, {}, {}}};
    add(0, 1, {0.1, 0.2, 0.3, 0.4});
    add(0, 0, {1.0 / 3, 1.0 / 7, 1.0 / 9, 1e-7});
    add(1, 0, {0, 0, 1, 1});
  }

  void add(std::size_t picture, long long classNumber, cv::Rect2d box) {
    set.take(set.pictures[picture], {classNumber, box, {}, 0, false}, false);
  }

  /// The set that comes back has the same classes and labels, in the same order.
  void expectSame(const tnv::LabelSet& back) const {
    EXPECT_EQ(back.classNames, set.classNames);
    EXPECT_THAT(back.rejections, IsEmpty());
    ASSERT_EQ(back.pictures.size(), set.pictures.size());
    for (std::size_t i = 0; i < set.pictures.size(); ++i) {
      const auto& before = set.pictures[i].labels;
      const auto& after = back.pictures[i].labels;
      ASSERT_EQ(after.size(), before.size()) << i;
      for (std::size_t k = 0; k < before.size(); ++k) {
        EXPECT_EQ(after[k].classPlace, before[k].classPlace);
        EXPECT_NEAR(after[k].box.x, before[k].box.x, 1e-11);
        EXPECT_NEAR(after[k].box.y, before[k].box.y, 1e-11);
        EXPECT_NEAR(after[k].box.br().x, before[k].box.br().x, 1e-11);
        EXPECT_NEAR(after[k].box.br().y, before[k].box.br().y, 1e-11);
      }
    }
  }

  TempDirectory temp;
  tnv::LabelSet set;
};

}  // namespace

TEST_F(DarknetRoundTrip, NumbersAreAsShortAsTheyCanBe) {
  ASSERT_TRUE(tnv::writeDarknetLabels(set, temp / "out", {}));
  EXPECT_EQ(readFile(temp / "out/labels/x.txt"),
            "1 0.25 0.4 0.3 0.4\n0 0.388888888889 0.142857192857 0.111111111111 1e-07\n");
  EXPECT_EQ(readFile(temp / "out/labels/y.txt"), "");
  EXPECT_EQ(readFile(temp / "out/classes.txt"), "screw\nnut\n");
}

TEST_F(DarknetRoundTrip, ByReferenceThePicturesAreFoundWhereTheyLie) {
  // Texts of others beside the pictures are not those of the export.
  temp.write("a/x.txt", "0 0.5 0.5 1 1\n0 0.5 0.5 0.5 0.5\n");
  ASSERT_TRUE(tnv::writeDarknetLabels(set, temp / "out", {}));
  temp.write("out/.label-export", "Darknet\n");
  EXPECT_FALSE(fs::exists(temp / "out/images"));
  const auto back = readSet(temp / "out");
  EXPECT_THAT(pictures(back, temp.path()), ElementsAre("a/x.jpg: 2", "b/x.jpg: 1", "b/y.png: 0"));
  expectSame(back);
}

TEST_F(DarknetRoundTrip, TextsThatAreNotThoseOfTheListAreRefused) {
  for (const char* change : {"a text more", "a text less", "another list"}) {
    ASSERT_TRUE(tnv::writeDarknetLabels(set, temp / "out", {}));
    temp.write("out/.label-export", "Darknet\n");
    const std::string_view kind = change;
    if (kind == "a text more") temp.write("out/labels/z.txt", "");
    if (kind == "a text less") fs::remove(temp / "out/labels/y.txt");
    if (kind == "another list") temp.write("out/pictures.txt", temp / "a/x.jpg");
    LogCapture log;
    EXPECT_FALSE(tnv::readDarknetLabels(temp / "out", {})) << change;
    EXPECT_THAT(log.text(), HasSubstr("out/pictures.txt', export the labels anew!")) << change;
    fs::remove_all(temp / "out");
  }
}

TEST_F(DarknetRoundTrip, AListOfSomebodyElseIsNoExport) {
  temp.write("out/pictures.txt", "../a/x.jpg\n../b/x.jpg\n");
  temp.write("out/labels/x.txt", kBox);
  temp.write("out/labels/x_2.txt", kBox);
  temp.write("out/classes.txt", "screw\n");
  const auto back = readSet(temp / "out");
  EXPECT_THAT(back.pictures, IsEmpty());
  EXPECT_THAT(rejections(back), ElementsAre("x.txt:1: no picture", "x_2.txt:1: no picture"));
}

TEST_F(DarknetRoundTrip, CopiesLieBesideTheLabels) {
  temp.write("a/x.jpg", "first");
  temp.write("b/x.jpg", "second");
  tnv::LabelWriting writing;
  writing.copy = true;
  ASSERT_TRUE(tnv::writeDarknetLabels(set, temp / "out/", writing));
  EXPECT_EQ(readFile(temp / "out/images/x.jpg"), "first");
  EXPECT_EQ(readFile(temp / "out/images/x_2.jpg"), "second");
  const auto back = readSet(temp / "out/data.yaml");
  EXPECT_THAT(pictures(back, temp.path()),
              ElementsAre("out/images/x.jpg: 2", "out/images/x_2.jpg: 1", "out/images/y.png: 0"));
  expectSame(back);
}

TEST_F(DarknetRoundTrip, WritingEndsAtTheFirstFailureAloud) {
  temp.makeDirectory("out/labels/x.txt/in the way");
  LogCapture log;
  EXPECT_FALSE(tnv::writeDarknetLabels(set, temp / "out", {}));
  EXPECT_THAT(log.text(), HasSubstr("writeDarknetLabels: Could not write"));
  EXPECT_FALSE(fs::exists(temp / "out/labels/x_2.txt"));
  EXPECT_FALSE(tnv::writeDarknetLabels(set, temp.write("file", ""), {}));
  EXPECT_THAT(log.text(), HasSubstr("file/labels/': " + messageOf(std::errc::not_a_directory)));
}
