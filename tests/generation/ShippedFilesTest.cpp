#include <map>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "generation/TNVAugmentResize.h"
#include "generation/TNVAugmentRotation.h"
#include "generation/TNVGenerationDarknet.h"
#include "generation/TNVHandlerAugment.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"
#include "support/TempDirectory.h"

namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

const std::string kSource = TNV_SOURCE_DIRECTORY;

int savingTasks(const TNVAugment& task) {
  int count = task.save ? 1 : 0;
  for (const auto& subTask : task.subTasks)
    count += savingTasks(*subTask);
  return count;
}

/// The sizes that the saving tasks of the tree give for a picture.
void collectSizes(const TNVAugment& task, const TNVAugmentSample& sample,
                  std::vector<cv::Size>& sizes) {
  const TNVAugmentSample result = task.process(sample);
  if (task.save) sizes.push_back(result.image.size());
  for (const auto& subTask : task.subTasks)
    collectSizes(*subTask, result, sizes);
}

class ShippedTrees : public ::testing::Test {
 protected:
  std::vector<cv::Size> sizes(const std::string& fileName) {
    handler.setAugmentation(fileName);
    std::vector<cv::Size> result;
    if (!handler.rootTask) return result;
    TNVAugmentSample sample;
    sample.image = patternedPicture(300, 200);
    collectSizes(*handler.rootTask, sample, result);
    return result;
  }

  TNVHandlerAugment handler{kSource + "/augments/"};
};

TEST_F(ShippedTrees, AreTheOnesThatAreTested) {
  EXPECT_THAT(
      handler.getAvailableAugmentations(),
      UnorderedElementsAre("default.xml", "resize-quarter-turns.xml", "random-lengths.xml"));
}

TEST_F(ShippedTrees, DefaultSavesThePictureAsItIs) {
  EXPECT_THAT(sizes("default.xml"), ElementsAre(cv::Size(300, 200)));
}

TEST_F(ShippedTrees, QuarterTurnsSaveThePictureAndFourSquares) {
  const cv::Size square(416, 416);
  EXPECT_THAT(sizes("resize-quarter-turns.xml"),
              ElementsAre(cv::Size(300, 200), square, square, square, square));
  EXPECT_EQ(savingTasks(*handler.rootTask), 5);
  std::vector<int> angles;
  for (const auto& task : handler.rootTask->subTasks.at(0)->subTasks) {
    angles.push_back(dynamic_cast<const TNVAugmentRotation&>(*task).rotate);
  }
  EXPECT_THAT(angles, ElementsAre(90, 180, 270));
}

TEST_F(ShippedTrees, RandomLengthsSaveThePictureAndOneOfARandomLength) {
  const auto saved = sizes("random-lengths.xml");
  ASSERT_EQ(saved.size(), 2u);
  EXPECT_EQ(saved[0], cv::Size(300, 200));
  const auto& resize = dynamic_cast<const TNVAugmentResize&>(*handler.rootTask->subTasks.at(0));
  EXPECT_LT(resize.maxLengthRndMin, resize.maxLengthRndMax);
  EXPECT_GE(saved[1].width, resize.maxLengthRndMin);
  EXPECT_LE(saved[1].width, resize.maxLengthRndMax);
}

using Section = std::pair<std::string, std::map<std::string, std::string>>;

/// The sections of a filled network file, in order.
std::vector<Section> sectionsOf(const std::string& text) {
  std::vector<Section> sections;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (line.empty() || line[0] == '#') continue;
    if (line[0] == '[') {
      sections.emplace_back(line, std::map<std::string, std::string>());
    } else {
      const auto equals = line.find('=');
      sections.back().second[line.substr(0, equals)] = line.substr(equals + 1);
    }
  }
  return sections;
}

/// What a layer of the network gives: by how much smaller than the input, and how many channels.
struct Shape {
  int stride;
  int channels;
  bool operator==(const Shape&) const = default;
};

std::vector<int> numbersIn(const std::string& text) {
  std::vector<int> numbers;
  std::istringstream stream(text);
  for (std::string item; std::getline(stream, item, ',');)
    numbers.push_back(std::stoi(item));
  return numbers;
}

Shape routeShape(const Section& section, const std::vector<Shape>& layers) {
  Shape shape{0, 0};
  for (const int number : numbersIn(section.second.at("layers"))) {
    const int index = number < 0 ? static_cast<int>(layers.size()) + number : number;
    EXPECT_GE(index, 0);
    const Shape& from = layers.at(static_cast<std::size_t>(index));
    EXPECT_TRUE(shape.stride == 0 || shape.stride == from.stride) << "layers of different size";
    shape = {from.stride, shape.channels + from.channels};
  }
  const auto groups = section.second.find("groups");
  if (groups != section.second.end()) shape.channels /= std::stoi(groups->second);
  return shape;
}

/// Walks through the network as its reader would. The first section describes the input.
std::vector<Shape> shapesOf(const std::vector<Section>& sections) {
  std::vector<Shape> layers;
  for (std::size_t i = 1; i < sections.size(); ++i) {
    const auto& [kind, values] = sections[i];
    Shape shape = layers.empty() ? Shape{1, 3} : layers.back();
    if (kind == "[convolutional]") {
      shape = {shape.stride * std::stoi(values.at("stride")), std::stoi(values.at("filters"))};
    } else if (kind == "[maxpool]") {
      shape.stride *= std::stoi(values.at("stride"));
    } else if (kind == "[upsample]") {
      shape.stride /= std::stoi(values.at("stride"));
    } else if (kind == "[route]") {
      shape = routeShape(sections[i], layers);
    } else {
      EXPECT_EQ(kind, "[yolo]");
    }
    layers.push_back(shape);
  }
  return layers;
}

class ShippedTemplates : public ::testing::Test {
 protected:
  ShippedTemplates() {
    generation.platformPath = kSource + "/platforms/";
    generation.dnnClasses = {nullptr, nullptr};
  }

  std::string filled(const std::string& descriptor, const std::string& fileName,
                     const std::map<std::string, std::string>& keywords) {
    generation.setTemplateData(descriptor, fileName, keywords, directory / "filled");
    generation.writeTemplate(descriptor);
    return readFile(directory / "filled");
  }

  TempDirectory directory;
  LogCapture log;
  TNVGenerationDarknet generation;
};

TEST_F(ShippedTemplates, AreTheOnesThatAreTested) {
  EXPECT_THAT(generation.getAvailableTemplateNames("configs"), ElementsAre("data.tmp"));
  EXPECT_THAT(generation.getAvailableTemplateNames("nets"),
              UnorderedElementsAre("yolo-tiny-cpu.tmp", "yolov4-tiny.tmp"));
}

TEST_F(ShippedTemplates, TheDataDescriptionIsFilled) {
  EXPECT_EQ(filled("configs", "data.tmp",
                   {{"CLASSES", "$DNN_COUNT"},
                    {"DATA_PATH", "$DARKNET_DATA_PATH"},
                    {"TRAIN_FILE", "$DARKNET_TRAINFILE"},
                    {"TEST_FILE", "$DARKNET_TESTFILE"},
                    {"NAMES", "obj.names"},
                    {"BACKUP", "backup/"}}),
            "classes = 2\n"
            "train  = ./darknet/train.txt\n"
            "valid  = ./darknet/test.txt\n"
            "names  = obj.names\n"
            "backup = backup/\n");
}

struct NetRow {
  const char* fileName;
  std::size_t layers;
};

class ShippedNets : public ShippedTemplates, public ::testing::WithParamInterface<NetRow> {
 protected:
  std::vector<Section> sections() {
    const std::string text =
        filled("nets", GetParam().fileName,
               {{"CLASSES", "$DNN_COUNT"}, {"FILTERS", "$DARKNET_YOLO_FILTER_CNT"}});
    EXPECT_EQ(text.find("###"), text.npos);
    return sectionsOf(text);
  }
};

TEST_P(ShippedNets, AskForClassesAndFiltersOnly) {
  for (const auto& [key, value] : generation.getTemplateDataDefault("nets", GetParam().fileName)) {
    EXPECT_EQ(value.empty(), key == "CLASSES" || key == "FILTERS") << key;
    // A comma does not survive in the settings' map of keywords.
    EXPECT_EQ(value.find(','), value.npos) << key;
  }
}

TEST_P(ShippedNets, HaveAnInputOfWholeCells) {
  const auto net = sections().at(0);
  EXPECT_EQ(net.first, "[net]");
  for (const char* side : {"width", "height"})
    EXPECT_EQ(std::stoi(net.second.at(side)) % 32, 0) << side;
  EXPECT_EQ(std::stoi(net.second.at("batch")) % std::stoi(net.second.at("subdivisions")), 0);
  EXPECT_LT(std::stoi(net.second.at("steps")), std::stoi(net.second.at("max_batches")));
}

TEST_P(ShippedNets, EndInTwoHeadsOfTheRightDepth) {
  const auto parts = sections();
  const auto shapes = shapesOf(parts);
  ASSERT_EQ(shapes.size(), GetParam().layers);
  std::vector<int> strides;
  std::vector<std::string> masks;
  for (std::size_t i = 1; i < parts.size(); ++i) {
    if (parts[i].first != "[yolo]") continue;
    EXPECT_EQ(parts[i - 1].first, "[convolutional]");
    // Two classes: (2 + 5) * 3.
    EXPECT_EQ(parts[i - 1].second.at("filters"), "21");
    EXPECT_EQ(parts[i - 1].second.at("activation"), "linear");
    EXPECT_EQ(parts[i].second.at("classes"), "2");
    EXPECT_EQ(numbersIn(parts[i].second.at("anchors")).size(), 12u);
    EXPECT_EQ(parts[i].second.at("num"), "6");
    masks.push_back(parts[i].second.at("mask"));
    strides.push_back(shapes[i - 1].stride);
  }
  EXPECT_THAT(strides, ElementsAre(32, 16));
  EXPECT_THAT(masks, ElementsAre("3,4,5", "0,1,2"));
}

INSTANTIATE_TEST_SUITE_P(Rows, ShippedNets,
                         ::testing::Values(NetRow{"yolo-tiny-cpu.tmp", 22},
                                           NetRow{"yolov4-tiny.tmp", 38}));

/// The shapes of some layers of a network, by hand.
TEST_F(ShippedTemplates, RoutesLeadToTheLayersThatAreMeant) {
  const std::map<std::string, std::string> keywords{{"CLASSES", "2"}, {"FILTERS", "21"}};
  const auto split = shapesOf(sectionsOf(filled("nets", "yolov4-tiny.tmp", keywords)));
  EXPECT_EQ(split.at(3), (Shape{4, 32}));   // half of the 64 channels before
  EXPECT_EQ(split.at(6), (Shape{4, 64}));   // both inner convolutions
  EXPECT_EQ(split.at(8), (Shape{4, 128}));  // the stage's input beside its result
  EXPECT_EQ(split.at(16), (Shape{8, 256}));
  EXPECT_EQ(split.at(24), (Shape{16, 512}));
  EXPECT_EQ(split.at(31), (Shape{32, 256}));  // back to before the first head
  EXPECT_EQ(split.at(34), (Shape{16, 384}));  // 128 enlarged and the 256 of the last stage
  const auto small = shapesOf(sectionsOf(filled("nets", "yolo-tiny-cpu.tmp", keywords)));
  EXPECT_EQ(small.at(15), (Shape{32, 128}));
  EXPECT_EQ(small.at(18), (Shape{16, 320}));  // 64 enlarged and the 256 before the last pooling
}

}  // namespace
