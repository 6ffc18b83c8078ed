#include "tools/LabelsCoco.h"

#include <json/reader.h>
#include <json/value.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <sstream>

#include <opencv2/imgcodecs.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/GlobalLocale.h"
#include "support/LogCapture.h"
#include "support/TempDirectory.h"
#include "tools/LabelTools.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr auto kCategories = R"("categories":[{"id":7,"name":"nut"},{"id":3,"name":"screw"}])";
constexpr auto kImages = R"("images":[{"id":1,"file_name":"a.jpg","width":200,"height":100},)"
                         R"({"id":"b","file_name":"b.jpg","width":200,"height":100}])";

/// A file with those annotations, one a line, from line 4 on.
std::string fileWith(const std::vector<std::string>& annotations) {
  std::string text = "{" + std::string(kCategories) + ",\n" + kImages + ",\n\"annotations\":[\n";
  for (std::size_t i = 0; i < annotations.size(); ++i)
    text += (i == 0 ? "" : ",\n") + annotations[i];
  // Recognised by its keys, among them the boxes.
  return text + "\n], \"info\":{\"bbox\":0}}\n";
}

std::string annotation(const std::string& rest, const std::string& image = "1",
                       const std::string& category = "3") {
  return R"({"image_id":)" + image + R"(,"category_id":)" + category + "," + rest + "}";
}

constexpr auto kBox = R"("bbox":[20,10,50,40])";

class LabelsCoco : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"a.jpg", "b.jpg"})
      temp.write(name, "");
  }

  tnv::LabelSet read(const std::vector<std::string>& annotations,
                     const tnv::LabelReading& reading = {}) const {
    const auto set = tnv::readCocoLabels(temp.write("labels.json", fileWith(annotations)), reading);
    EXPECT_TRUE(set.has_value());
    return set.value_or(tnv::LabelSet());
  }

  TempDirectory temp;
};

}  // namespace

TEST_F(LabelsCoco, BoxesAreInPixelsAndClassesInTheOrderOfTheirIds) {
  const auto set = read({annotation(kBox), annotation(kBox, "\"b\"", "7")});
  EXPECT_THAT(set.classNames, ElementsAre("screw", "nut"));
  EXPECT_THAT(picturesIn(set), ElementsAre("a.jpg: 1", "b.jpg: 1"));
  EXPECT_EQ(set.pictures[0].size, cv::Size(200, 100));
  EXPECT_EQ(set.pictures[0].path, temp / "a.jpg");
  const auto& label = set.pictures[0].labels[0];
  EXPECT_EQ(label.classPlace, 0U);
  EXPECT_EQ(label.line, 4U);
  EXPECT_LT(moved({0.1, 0.1, 0.25, 0.4}, label.box, {200, 100}), 1e-9);
  EXPECT_EQ(set.pictures[1].labels[0].classPlace, 1U);
  EXPECT_EQ(set.found(), 2U);
}

TEST_F(LabelsCoco, OnePolygonIsAnOutlineAndAllElseItsBox) {
  const auto set = read({
      annotation(std::string(kBox) + R"(,"segmentation":[[20,10,70,10,45,50]])"),
      annotation(std::string(kBox) + R"(,"segmentation":[[20,10,70,10,45,50],[1,1,2,1,2,2]])"),
      annotation(std::string(kBox) + R"(,"segmentation":{"counts":[5],"size":[100,200]})"),
      annotation(std::string(kBox) + R"(,"segmentation":[[20,10,70,10]])"),
      annotation(std::string(kBox) + R"(,"segmentation":[[20,10,70,10,"x",50]])"),
      annotation(R"("segmentation":[[20,10,70,10,45,50]])"),
  });
  ASSERT_THAT(rejectionsIn(set), IsEmpty());
  const auto& labels = set.pictures[0].labels;
  ASSERT_EQ(labels.size(), 6U);
  EXPECT_THAT(labels[0].outline,
              ElementsAre(cv::Point2d(0.1, 0.1), cv::Point2d(0.35, 0.1), cv::Point2d(0.225, 0.5)));
  EXPECT_LT(moved({0.1, 0.1, 0.25, 0.4}, labels[0].box, {200, 100}), 1e-9);
  for (std::size_t i = 1; i < 5; ++i) {
    EXPECT_THAT(labels[i].outline, IsEmpty()) << i;
    EXPECT_LT(moved({0.1, 0.1, 0.25, 0.4}, labels[i].box, {200, 100}), 1e-9) << i;
  }
  EXPECT_EQ(labels[5].outline.size(), 3U);
}

TEST_F(LabelsCoco, WhatCannotBeTakenIsRejectedWithItsLine) {
  const auto set = read({
      annotation(kBox, "99"),
      annotation(kBox, "null"),
      annotation(kBox, "1", "5"),
      annotation(kBox, "1", "\"screw\""),
      annotation(std::string(kBox) + R"(,"iscrowd":1)"),
      annotation(R"("bbox":[1,2,3])"),
      annotation(R"("bbox":[1,2,3,"4"])"),
      annotation(R"("area":4)"),
      annotation(R"("bbox":[20,10,0,40])"),
      annotation(R"("bbox":[180,10,50,40])"),
      "[]",
      annotation(kBox),
  });
  EXPECT_THAT(
      rejectionsIn(set),
      ElementsAre("labels.json:4: unknown picture", "labels.json:5: unknown picture",
                  "labels.json:6: unknown class", "labels.json:7: unknown class",
                  "labels.json:8: a crowd, no object", "labels.json:9: no box",
                  "labels.json:10: no box", "labels.json:11: no box",
                  "labels.json:12: no width or no height",
                  "labels.json:13: reaches beyond the picture", "labels.json:14: no annotation"));
  EXPECT_EQ(set.accepted, 1U);
  EXPECT_EQ(set.found(), 12U);
}

TEST_F(LabelsCoco, LabelsAreCutAtTheEdgesWhenTold) {
  tnv::LabelReading reading;
  reading.clip = true;
  const auto set = read({annotation(R"("bbox":[180,10,50,40])")}, reading);
  EXPECT_THAT(rejectionsIn(set), IsEmpty());
  EXPECT_LT(moved({0.9, 0.1, 0.1, 0.4}, set.pictures[0].labels[0].box, {200, 100}), 1e-9);
}

TEST_F(LabelsCoco, PicturesWithoutSizeOrFileLoseTheirLabelsAloud) {
  temp.write("labels.json",
             R"({"categories":[{"id":1,"name":"screw"}],"images":[
{"id":1,"file_name":"a.jpg"},
{"id":2,"file_name":"absent.jpg","width":9,"height":9},
{"id":3,"file_name":"../a.jpg","width":9,"height":9},
{"id":4,"width":9,"height":9},
{"id":5,"file_name":"b.jpg","width":-4,"height":1e99}],"annotations":[
{"image_id":1,"category_id":1,"bbox":[0,0,1,1]},
{"image_id":2,"category_id":1,"bbox":[0,0,1,1]},
{"image_id":3,"category_id":1,"bbox":[0,0,1,1]},
{"image_id":4,"category_id":1,"bbox":[0,0,1,1]},
{"image_id":5,"category_id":1,"bbox":[0,0,1,1]}]})");
  const auto set = tnv::readCocoLabels(temp / "labels.json", {});
  ASSERT_TRUE(set);
  EXPECT_THAT(
      rejectionsIn(*set),
      ElementsAre("labels.json:7: size of the picture is unknown", "labels.json:8: no picture",
                  "labels.json:9: no picture", "labels.json:10: no picture",
                  "labels.json:11: size of the picture is unknown"));
}

TEST_F(LabelsCoco, PicturesAreFoundWhereSetsHaveThem) {
  struct Row {
    std::string file;
    std::string picture;
  };
  for (const auto& [file, picture] :
       {Row{"annotations/all.json", "images/c.jpg"}, Row{"annotations/all.json", "c.jpg"},
        Row{"annotations/instances_train.json", "train/c.jpg"},
        Row{"annotations/instances_train.json", "images/train/c.jpg"},
        Row{"all.json", "images/c.jpg"}, Row{"all.json", "elsewhere/c.jpg"}}) {
    const TempDirectory other;
    other.write(picture, "");
    other.write(file, R"({"categories":[{"id":1,"name":"screw"}],"images":[{"id":1,"file_name":)"
                      R"("c.jpg","width":9,"height":9}],"annotations":[{"image_id":1,)"
                      R"("category_id":1,"bbox":[0,0,1,1]}]})");
    tnv::LabelReading reading;
    if (picture.starts_with("elsewhere")) reading.pictures = other / "elsewhere";
    EXPECT_TRUE(tnv::isCocoLabels(other.path()));
    const auto set = tnv::readCocoLabels(other.path(), reading);
    ASSERT_TRUE(set) << picture;
    ASSERT_EQ(set->pictures.size(), 1U) << picture;
    EXPECT_EQ(set->pictures[0].path, other / picture);
  }
}

TEST_F(LabelsCoco, AFileInTheDirectoryHidesNoneInTheTree) {
  temp.write("all.json", fileWith({annotation(kBox)}));
  temp.write("annotations/more.json", fileWith({annotation(kBox, "\"b\"")}));
  std::filesystem::create_symlink(temp / "all.json", temp / "annotations/same.json");
  EXPECT_THAT(picturesIn(*tnv::readCocoLabels(temp.path(), {})),
              ElementsAre("a.jpg: 1", "b.jpg: 1"));
}

TEST_F(LabelsCoco, NamesThatAreGivenComeFirst) {
  tnv::LabelReading reading;
  reading.names = temp.write("data.yaml", "names: [nut, clip]\n");
  const auto set = read({annotation(kBox)}, reading);
  EXPECT_THAT(set.classNames, ElementsAre("nut", "clip", "screw"));
  EXPECT_EQ(set.pictures[0].labels[0].classPlace, 2U);
  reading.names = temp / "absent.names";
  LogCapture log;
  EXPECT_FALSE(tnv::readCocoLabels(temp / "labels.json", reading));
  EXPECT_THAT(log.text(), HasSubstr("readCocoLabels: No class names in '"));
}

TEST_F(LabelsCoco, ADamagedFileBesideAGoodOneIsRejected) {
  const std::string good = fileWith({annotation(kBox)});
  temp.write("one.json", good);
  // Cut before the boxes, and before anything.
  temp.write("two.json", good.substr(0, 40));
  temp.write("three.json", "");
  temp.write("settings.json", "{\"a\": 1}");
  LogCapture log;
  const auto set = tnv::readCocoLabels(temp.path(), {});
  ASSERT_TRUE(set);
  EXPECT_EQ(set->accepted, 1U);
  EXPECT_THAT(rejectionsIn(*set),
              ElementsAre("three.json:0: file cannot be read", "two.json:0: file cannot be read"));
  EXPECT_THAT(log.text(), HasSubstr("settings.json' has no labels, passed over"));
}

TEST_F(LabelsCoco, WhatShouldBeAListAndIsNoneIsRejected) {
  const std::string names[] = {kCategories, kImages};
  struct Row {
    std::string text;
    const char* reason;
  };
  const Row rows[] = {
      {"{" + names[0] + "," + names[1] + R"(,"annotations":{"1":{"bbox":[]}}})",
       "annotations are no list"},
      {"{" + names[0] + "," + names[1] + "}", "annotations are no list"},
      {"{" + names[0] + R"(,"images":7,"annotations":[]})", "images are no list"},
      {"{" + names[1] + R"(,"categories":"x","annotations":[]})", "categories are no list"},
  };
  for (const Row& row : rows) {
    const auto set = tnv::readCocoLabels(temp.write("labels.json", row.text), {});
    ASSERT_TRUE(set);
    EXPECT_THAT(rejectionsIn(*set), ElementsAre(std::string("labels.json:0: ") + row.reason))
        << row.text;
  }
}

TEST_F(LabelsCoco, ImagesThatCannotBeTakenAreRejectedWithTheirLine) {
  temp.write("labels.json", R"({"categories":[{"id":1,"name":"screw"}],"images":[
{"id":1,"file_name":"a.jpg","width":9,"height":9},
{"id":1,"file_name":"b.jpg","width":9,"height":9},
{"id":2,"file_name":"absent.jpg","width":9,"height":9},
{"id":3,"file_name":"absent too.jpg","width":9,"height":9},
{"file_name":"nowhere.jpg","width":9,"height":9},
7],"annotations":[
{"image_id":1,"category_id":1,"bbox":[0,0,1,1]},
{"category_id":1,"bbox":[0,0,1,1]},
{"image_id":3,"category_id":1,"bbox":[0,0,1,1]}]})");
  const auto set = tnv::readCocoLabels(temp / "labels.json", {});
  ASSERT_TRUE(set);
  EXPECT_THAT(picturesIn(*set), ElementsAre("a.jpg: 1"));
  EXPECT_THAT(rejectionsIn(*set),
              ElementsAre("labels.json:3: another image has its id", "labels.json:6: no picture",
                          "labels.json:7: no image", "labels.json:9: unknown picture",
                          "labels.json:10: no picture", "labels.json:4: no picture"));
}

TEST_F(LabelsCoco, IdsAndCrowdsMayBeWrittenInOtherTypes) {
  const auto set = read({
      annotation(kBox, "1.0"),
      annotation(kBox, "1", "3.0"),
      annotation(kBox, "1.5"),
      annotation(std::string(kBox) + R"(,"iscrowd":true)"),
      annotation(std::string(kBox) + R"(,"iscrowd":1.0)"),
      annotation(std::string(kBox) + R"(,"iscrowd":false)"),
  });
  EXPECT_THAT(picturesIn(set), ElementsAre("a.jpg: 3", "b.jpg: 0"));
  EXPECT_THAT(rejectionsIn(set),
              ElementsAre("labels.json:6: unknown picture", "labels.json:7: a crowd, no object",
                          "labels.json:8: a crowd, no object"));
}

TEST_F(LabelsCoco, ASetWithoutAnyMarkComesBack) {
  const TempDirectory target;
  auto before = sampleSet(temp / "a.jpg", temp / "b.jpg");
  for (auto& picture : before.pictures)
    picture.labels.clear();
  ASSERT_TRUE(tnv::writeCocoLabels(before, target.path(), {}));
  EXPECT_TRUE(tnv::isCocoLabels(target.path()));
  const auto set = tnv::readCocoLabels(target.path(), {});
  ASSERT_TRUE(set);
  EXPECT_THAT(picturesIn(*set), ElementsAre("a.jpg: 0", "b.jpg: 0"));
  EXPECT_EQ(set->classNames, before.classNames);
  EXPECT_EQ(set->found(), 0U);
}

TEST_F(LabelsCoco, FilesWithOutlinesOnlyOrAnotherCaseAreRecognised) {
  temp.write("Labels.JSON", "{" + std::string(kCategories) + "," + kImages +
                                R"(,"annotations":[{"image_id":1,"category_id":3,)"
                                R"("segmentation":[[20,10,70,10,45,50]]}]})");
  ASSERT_TRUE(tnv::isCocoLabels(temp.path()));
  EXPECT_EQ(tnv::readCocoLabels(temp.path(), {})->accepted, 1U);
}

TEST_F(LabelsCoco, SeveralFilesShareTheirClassesByName) {
  temp.write("one.json", R"({"categories":[{"id":1,"name":"nut"},{"id":2,"name":"screw"}],"images":
[{"id":1,"file_name":"a.jpg","width":9,"height":9}],"annotations":
[{"image_id":1,"category_id":2,"bbox":[0,0,1,1]}]})");
  temp.write("two.json", R"({"categories":[{"id":1,"name":"screw"},{"id":9,"name":"clip"}],"images":
[{"id":1,"file_name":"b.jpg","width":9,"height":9}],"annotations":
[{"image_id":1,"category_id":1,"bbox":[0,0,1,1]},{"image_id":1,"category_id":9,"bbox":[0,0,1,1]}]})");
  const auto set = tnv::readCocoLabels(temp.path(), {});
  ASSERT_TRUE(set);
  EXPECT_THAT(set->classNames, ElementsAre("nut", "screw", "clip"));
  EXPECT_EQ(set->pictures[0].labels[0].classPlace, 1U);
  EXPECT_EQ(set->pictures[1].labels[0].classPlace, 1U);
  EXPECT_EQ(set->pictures[1].labels[1].classPlace, 2U);
}

TEST_F(LabelsCoco, OtherFilesAreNotTakenForOnes) {
  temp.write("captions.json",
             R"({"images":[],"annotations":[{"caption":"a cat"}],"categories":[]})");
  EXPECT_FALSE(tnv::isCocoLabels(temp.path()));
  EXPECT_FALSE(tnv::isCocoLabels(temp / "absent"));
  LogCapture log;
  EXPECT_FALSE(tnv::readCocoLabels(temp / "absent", {}));
  EXPECT_THAT(log.text(), HasSubstr("readCocoLabels: There is no COCO file at '"));
}

TEST_F(LabelsCoco, ADamagedFileIsARejectionAndNeverMore) {
  const std::string whole = fileWith({annotation(kBox), annotation(kBox, "\"b\"", "7")});
  for (std::size_t length = 0; length + 2 < whole.size(); ++length) {
    const auto set = tnv::readCocoLabels(temp.write("labels.json", whole.substr(0, length)), {});
    ASSERT_TRUE(set);
    EXPECT_THAT(rejectionsIn(*set), ElementsAre("labels.json:0: file cannot be read")) << length;
  }
  std::mt19937 random(5);
  for (int round = 0; round < 300; ++round) {
    std::string damaged = whole;
    for (int i = 0; i < 3; ++i)
      damaged[random() % damaged.size()] = static_cast<char>(random() % 256);
    tnv::readCocoLabels(temp.write("labels.json", damaged), {});
  }
  tnv::readCocoLabels(temp.write("labels.json", std::string(1000000, '[')), {});
  tnv::readCocoLabels(temp.write("labels.json", "{\"images\":" + std::string(100000, '{')), {});
}

TEST_F(LabelsCoco, WhatIsThereTwiceIsAnErrorInItsLine) {
  struct Row {
    std::string text;
    const char* rejection;
  };
  const std::string whole = fileWith({annotation(kBox)});
  const Row rows[] = {
      {whole + whole, "labels.json:6: several documents in one file"},
      {"{" + std::string(kCategories) + ",\n" + kImages +
           ",\n\"annotations\":[],\n\n\"annotations\":[" + annotation(kBox) + "]}",
       "labels.json:5: a key is there twice"},
      {"{" + std::string(kCategories) + ",\n" + kImages + ",\n\"annotations\":[\n" +
           annotation(std::string(kBox) + "," + kBox) + "]}",
       "labels.json:4: a key is there twice"},
  };
  for (const Row& row : rows) {
    const auto set = tnv::readCocoLabels(temp.write("labels.json", row.text), {});
    ASSERT_TRUE(set);
    EXPECT_THAT(rejectionsIn(*set), ElementsAre(row.rejection));
  }
}

TEST_F(LabelsCoco, AnIdOfTwoCategoriesIsNone) {
  temp.write("labels.json", R"({"categories":[{"id":1,"name":"screw"},
{"id":1,"name":"nut"},
{"id":2,"name":"clip"},
{"id":2,"name":"clip"}],"images":[
{"id":1,"file_name":"a.jpg","width":9,"height":9}],"annotations":[
{"image_id":1,"category_id":1,"bbox":[0,0,1,1]},
{"image_id":1,"category_id":2,"bbox":[0,0,1,1]}]})");
  const auto set = tnv::readCocoLabels(temp / "labels.json", {});
  EXPECT_THAT(set->classNames, ElementsAre("clip"));
  EXPECT_THAT(rejectionsIn(*set), ElementsAre("labels.json:2: another category has its id",
                                              "labels.json:4: another category has its id",
                                              "labels.json:6: unknown class"));
}

TEST_F(LabelsCoco, CategoriesThatCannotBeToldApartAreRejectedWithTheirLine) {
  temp.write("labels.json", R"({"categories":[{"id":1,"name":"nut"},
{"id":2,"name":"nut"},
{"id":1,"name":"nut"},
{"id":"3","name":"screw"},
{"id":1.5,"name":"bolt"},
{"name":"clip"}, 7],
"images":[{"id":1,"file_name":"a.jpg","width":9,"height":9}],"annotations":[
{"image_id":1,"category_id":1,"bbox":[0,0,1,1]},
{"image_id":1,"category_id":2,"bbox":[0,0,2,2]},
{"image_id":1,"category_id":"3","bbox":[0,0,1,1]}]})");
  const auto set = tnv::readCocoLabels(temp / "labels.json", {});
  EXPECT_THAT(set->classNames, ElementsAre("nut"));
  EXPECT_THAT(picturesIn(*set), ElementsAre("a.jpg: 2")) << "the name tells the class";
  constexpr auto noId = ": category without a whole number as its id";
  EXPECT_THAT(
      rejectionsIn(*set),
      ElementsAre("labels.json:2: another category has its name",
                  "labels.json:3: another category has its id", std::string("labels.json:4") + noId,
                  std::string("labels.json:5") + noId, std::string("labels.json:6") + noId,
                  std::string("labels.json:6") + noId, "labels.json:10: unknown class"));
}

namespace {

/// A file of a box on each picture, a box a line from line 2 on, the second one beyond the edge.
std::string boxesOn(const std::vector<std::string>& pictures) {
  std::string images;
  std::string annotations;
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    const std::string comma = i == 0 ? "" : ",";
    const std::string id = std::to_string(i);
    images +=
        comma + R"({"id":)" + id + R"(,"file_name":")" + pictures[i] + R"(","width":9,"height":9})";
    annotations += comma + "\n" + R"({"image_id":)" + id + R"(,"category_id":1,"bbox":[0,0,)" +
                   (i == 1 ? "12" : "1") + ",1]}";
  }
  return R"({"categories":[{"id":1,"name":"nut"}],"images":[)" + images + R"(],"annotations":[)" +
         annotations + "]}";
}

}  // namespace

TEST_F(LabelsCoco, PicturesOfOneNameAreToldApartByTheirDirectories) {
  tnv::LabelReading reading;
  reading.pictures = temp / "p";
  reading.clip = true;
  for (const char* picture : {"p/train/a.jpg", "p/valid/a.jpg", "p/b.jpg", "p/c.jpg"})
    temp.write(picture, "");
  for (const std::string root : {"/gone/", "", "C:\\\\gone\\\\", "set/images/"}) {
    temp.write("labels.json",
               boxesOn({root + "train/a.jpg", root + "valid/a.jpg", root + "train/c.jpg"}));
    const auto set = tnv::readCocoLabels(temp / "labels.json", reading);
    EXPECT_THAT(pictures(*set, temp / "p"),
                ElementsAre("train/a.jpg: 1", "valid/a.jpg: 1", "c.jpg: 1"))
        << root;
    EXPECT_THAT(rejectionsIn(*set), IsEmpty());
    EXPECT_EQ(set->cut, 1U);
  }
  // Each file of a divided set may leave its part of the division out.
  temp.write("divided/train.json", boxesOn({"a.jpg"}));
  temp.write("divided/valid.json", boxesOn({"a.jpg"}));
  EXPECT_THAT(pictures(*tnv::readCocoLabels(temp / "divided", reading), temp / "p"),
              ElementsAre("train/a.jpg: 1", "valid/a.jpg: 1"));
}

TEST_F(LabelsCoco, APictureThatSeveralAreFoundAtByNameAloneIsRejected) {
  tnv::LabelReading reading;
  reading.pictures = temp / "p";
  reading.clip = true;
  temp.write("p/a.jpg", "");
  constexpr auto open = ": several pictures have the name of the one found";
  temp.write("labels.json", boxesOn({"/gone/train/a.jpg", "/gone/valid/a.jpg"}));
  auto set = tnv::readCocoLabels(temp / "labels.json", reading);
  EXPECT_THAT(set->pictures, IsEmpty());
  EXPECT_THAT(rejectionsIn(*set), ElementsAre(std::string("labels.json:2") + open,
                                              std::string("labels.json:3") + open));
  EXPECT_EQ(set->accepted, 0U);
  EXPECT_EQ(set->cut, 0U);
  EXPECT_EQ(set->found(), 2U);
  // The one that is told as it lies there is none of them, and one that is told twice is one.
  temp.write("labels.json", boxesOn({"a.jpg", "valid/a.jpg", "/gone/x/b.jpg", "/gone/x/b.jpg"}));
  temp.write("p/b.jpg", "");
  set = tnv::readCocoLabels(temp / "labels.json", reading);
  EXPECT_THAT(rejectionsIn(*set), ElementsAre(std::string("labels.json:3") + open));
  EXPECT_THAT(picturesIn(*set), ElementsAre("a.jpg: 1", "b.jpg: 2"));
}

TEST_F(LabelsCoco, ManyCategoriesCostNoMoreThanTheirNumber) {
  std::string categories;
  for (int i = 0; i < 200000; ++i)
    categories += (i == 0 ? "" : ",") + ("{\"id\":" + std::to_string(i)) +
                  ",\"name\":\"name of class " + std::to_string(i) + "\"}";
  temp.write("labels.json",
             "{\"categories\":[" + categories + "]," + kImages + ",\"annotations\":[]}");
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(tnv::readCocoLabels(temp / "labels.json", {})->classNames.size(), 200000U);
  // Compared with each other they would take minutes.
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

TEST_F(LabelsCoco, APictureOfAnotherMachineIsFoundByItsNameWherePicturesAre) {
  temp.write("elsewhere/c.jpg", "");
  const std::string file = temp.write(
      "labels.json", R"({"categories":[{"id":1,"name":"screw"}],"images":[{"id":1,"file_name":)"
                     R"("/gone/day1/c.jpg","width":9,"height":9}],"annotations":[{"image_id":1,)"
                     R"("category_id":1,"bbox":[0,0,1,1]}]})");
  EXPECT_THAT(rejectionsIn(*tnv::readCocoLabels(file, {})),
              ElementsAre("labels.json:1: no picture"));
  tnv::LabelReading reading;
  reading.pictures = temp / "elsewhere";
  EXPECT_THAT(picturesIn(*tnv::readCocoLabels(file, reading)), ElementsAre("c.jpg: 1"));
}

TEST_F(LabelsCoco, ASizeThatIsMissingIsThatOfThePictureAndOtherFilesAreNone) {
  // The annotation covers a quarter of 64 by 48 pixels.
  cv::imwrite(temp / "c.png", cv::Mat(48, 64, CV_8UC1, cv::Scalar(0)));
  cv::imwrite(temp / "d.bmp", cv::Mat(48, 64, CV_8UC1, cv::Scalar(0)));
  temp.write("notes.md", "");
  temp.write("labels.json", R"({"categories":[{"id":1,"name":"screw"}],"images":[
{"id":1,"file_name":"c.png"},
{"id":2,"file_name":"d.bmp"},
{"id":3,"file_name":"notes.md"}],"annotations":[
{"image_id":1,"category_id":1,"bbox":[0,0,32,24]}]})");
  const auto set = tnv::readCocoLabels(temp / "labels.json", {});
  EXPECT_THAT(picturesIn(*set), ElementsAre("c.png: 1", "d.bmp: 0"));
  EXPECT_THAT(rejectionsIn(*set), ElementsAre("labels.json:4: no picture"));
  EXPECT_EQ(set->pictures[0].labels.at(0).box, cv::Rect2d(0, 0, 0.5, 0.5));
}

TEST_F(LabelsCoco, AByteOrderMarkIsPassedOver) {
  temp.write("labels.json", "\xEF\xBB\xBF" + fileWith({annotation("\"area\":1")}));
  EXPECT_THAT(rejectionsIn(*tnv::readCocoLabels(temp / "labels.json", {})),
              ElementsAre("labels.json:4: no box"));
  temp.write("labels.json", "\xEF\xBB\xBF" + fileWith({annotation(kBox)}));
  EXPECT_EQ(tnv::readCocoLabels(temp / "labels.json", {})->accepted, 1U);
}

TEST_F(LabelsCoco, WhatIsWrittenComesBack) {
  for (const bool copy : {false, true}) {
    const TempDirectory target;
    tnv::LabelWriting writing;
    writing.copy = copy;
    const auto before = sampleSet(temp / "a.jpg", temp / "b.jpg");
    ASSERT_TRUE(tnv::writeCocoLabels(before, target.path(), writing));
    const auto set = tnv::readCocoLabels(target.path(), {});
    ASSERT_TRUE(set);
    EXPECT_EQ(set->classNames, before.classNames);
    EXPECT_THAT(rejectionsIn(*set), IsEmpty());
    ASSERT_EQ(set->pictures.size(), 2U);
    EXPECT_EQ(set->pictures[0].path, copy ? target / "images/a.jpg" : temp / "a.jpg");
    for (std::size_t i = 0; i < 2; ++i) {
      ASSERT_EQ(set->pictures[i].labels.size(), before.pictures[i].labels.size());
      for (std::size_t j = 0; j < set->pictures[i].labels.size(); ++j) {
        const auto& from = before.pictures[i].labels[j];
        const auto& to = set->pictures[i].labels[j];
        EXPECT_EQ(from.classPlace, to.classPlace);
        EXPECT_EQ(from.outline.size(), to.outline.size());
        EXPECT_LT(moved(from.box, to.box, {640, 480}), 1e-5);
      }
    }
  }
}

TEST_F(LabelsCoco, WhatIsWrittenIsWhatOthersRead) {
  const TempDirectory target;
  ASSERT_TRUE(tnv::writeCocoLabels(sampleSet(temp / "a.jpg", temp / "b.jpg"), target.path(), {}));
  const GlobalLocale points(std::locale::classic());
  std::istringstream text(readFile(target / "annotations.json"));
  Json::Value root;
  text >> root;
  EXPECT_EQ(root["categories"][0]["id"].asInt(), 1);
  EXPECT_EQ(root["categories"][1]["name"].asString(), "a & \"b\" <ü>");
  EXPECT_EQ(root["images"][1]["file_name"].asString(), temp / "b.jpg");
  EXPECT_EQ(root["images"][1]["height"].asInt(), 480);
  const auto& box = root["annotations"][0];
  // 0.1 and a third of 640, 0.2 and a seventh of 480.
  EXPECT_DOUBLE_EQ(box["bbox"][0].asDouble(), 64);
  EXPECT_NEAR(box["bbox"][2].asDouble(), 213.333333, 1e-6);
  EXPECT_NEAR(box["bbox"][3].asDouble(), 68.571429, 1e-6);
  EXPECT_NEAR(box["area"].asDouble(), 213.333333 * 68.571429, 1e-3);
  EXPECT_EQ(box["iscrowd"].asInt(), 0);
  EXPECT_EQ(box["segmentation"].size(), 0U);
  const auto& outline = root["annotations"][2];
  EXPECT_EQ(outline["id"].asInt(), 3);
  EXPECT_EQ(outline["image_id"].asInt(), 2);
  EXPECT_EQ(outline["category_id"].asInt(), 2);
  EXPECT_EQ(outline["segmentation"][0].size(), 6U);
  // Half of |384 * 384 - 128 * 112|: the sides from the first corner are (384, 112), (128, 384).
  EXPECT_NEAR(outline["area"].asDouble(), (384.0 * 384 - 128.0 * 112) / 2, 1e-3);
}
