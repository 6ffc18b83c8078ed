#include <array>
#include <cmath>
#include <filesystem>
#include <memory>

#include <opencv2/imgcodecs.hpp>

#include "fuzz/Fuzzing.h"
#include "marks/TNVMark.h"
#include "project/TNVDNNClass.h"
#include "project/TNVTrainSet.h"
#include "tools/TNVToolLabelExchange.h"

namespace {

struct Kind {
  const char* format;
  const char* file;
};

constexpr std::array kinds{
    Kind{"", "a.txt"},    Kind{"", "labels.json"}, Kind{"", "a.xml"},       Kind{"", "data.yaml"},
    Kind{"", "set.data"}, Kind{"", "classes.txt"}, Kind{"COCO", "set.json"}};

void checkLabels(const TNVToolLabelExchange& exchange) {
  std::size_t labels = 0;
  for (const auto& picture : exchange.set.pictures) {
    labels += picture.labels.size();
    for (const auto& label : picture.labels) {
      fuzz::require(label.classPlace < exchange.set.classNames.size(), "each label has a class");
      const bool isFinite = std::isfinite(label.box.x) && std::isfinite(label.box.y) &&
                            std::isfinite(label.box.width) && std::isfinite(label.box.height);
      fuzz::require(isFinite, "boxes are finite");
      fuzz::require(label.box.width > 0 && label.box.height > 0, "boxes have a size");
    }
  }
  fuzz::require(labels == exchange.set.accepted, "accepted labels are those of the pictures");
  fuzz::require(exchange.getFound() == labels + exchange.getRejected(),
                "what is found is taken or rejected");
}

/// What a project has when the labels come to it: a record for each picture, and all classes but
/// one.
struct Project {
  explicit Project(const TNVToolLabelExchange& exchange) {
    for (const auto& path : exchange.getImagePaths()) {
      records.push_back(std::make_unique<TNVTrainSet>(path, ""));
      trainSets.push_back(records.back().get());
    }
    const auto& names = exchange.set.classNames;
    for (std::size_t i = 0; i < names.size() && (i == 0 || i + 1 < names.size()); ++i) {
      classes.push_back(std::make_unique<TNVDNNClass>(static_cast<int>(i)));
      classes.back()->name = names[i];
      dnnClasses.push_back(classes.back().get());
    }
  }

  std::size_t markCount() const {
    std::size_t count = 0;
    for (const auto& record : records)
      count += record->marks.size();
    return count;
  }

  std::vector<std::unique_ptr<TNVTrainSet>> records;
  std::vector<std::unique_ptr<TNVDNNClass>> classes;
  TNVToolLabelExchange::TrainSets trainSets;
  TNVToolLabelExchange::Classes dnnClasses;
};

void checkMarks(const TNVTrainSet& record, std::size_t classCount) {
  for (const auto* mark : record.markPointers()) {
    fuzz::require(mark->classIdx.size() == 1, "each mark has a class");
    const int place = mark->classIdx.front();
    fuzz::require(place >= 0 && static_cast<std::size_t>(place) < classCount,
                  "the class is one of the project");
  }
}

void checkComesBack(TNVTrainSet& record) {
  if (!record.save(fuzz::place().makeDirectory("records"))) return;
  TNVTrainSet again;
  again.dataPath = record.dataPath;
  again.load();
  fuzz::require(again.marks.size() == record.marks.size(), "marks that were added are saved");
}

void addMarks(TNVToolLabelExchange& exchange) {
  const Project project(exchange);
  const auto added =
      static_cast<std::size_t>(exchange.addMarks(project.trainSets, project.dnnClasses));
  fuzz::require(added == project.markCount(), "marks that are told of are there");
  fuzz::require(added + exchange.getRejected() == exchange.getFound(),
                "what was found is added or rejected");
  for (const auto& record : project.records)
    checkMarks(*record, project.classes.size());
  fuzz::require(exchange.addMarks(project.trainSets, project.dnnClasses) == 0,
                "labels that come twice are added once");
  for (const auto& record : project.records)
    checkComesBack(*record);
}

}  // namespace

/// A label file of the kind that the first byte chooses, beside one picture and one other text,
/// whose labels become marks of a project.
void fuzz::run(std::string_view input) {
  if (input.empty()) return;
  const auto& kind = kinds[static_cast<unsigned char>(input.front()) % kinds.size()];
  input.remove_prefix(1);
  std::filesystem::remove_all(place() / "set");
  const auto directory = place().makeDirectory("set");
  require(cv::imwrite(directory + "a.png", cv::Mat(48, 64, CV_8UC3, cv::Scalar(40, 80, 120))),
          "there is a picture");
  place().write("set/a.txt", "0 0.5 0.5 0.25 0.5\n");
  place().write("set/classes.txt", "nut\n");
  place().write(std::string("set/") + kind.file, std::string(input));
  TNVToolLabelExchange exchange;
  exchange.setFormat(kind.format);
  const bool clips = input.size() % 2 == 0;
  exchange.reading.clip = clips;
  if (!exchange.read(directory)) return;
  checkLabels(exchange);
  addMarks(exchange);
}
