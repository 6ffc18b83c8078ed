#include <array>
#include <cmath>
#include <filesystem>

#include <opencv2/imgcodecs.hpp>

#include "fuzz/Fuzzing.h"
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

}  // namespace

/// A label file of the kind that the first byte chooses, beside one picture and one other text.
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
  if (exchange.read(directory)) checkLabels(exchange);
}
