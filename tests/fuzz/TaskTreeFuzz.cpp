#include "fuzz/Fuzzing.h"
#include "generation/TNVAugment.h"
#include "generation/TNVGeneration.h"
#include "generation/TNVHandlerAugment.h"

namespace {

/// Takes the samples and writes nothing.
class Generator final : public TNVGeneration {
 public:
  std::string getName() const override { return "Fuzz"; }
  bool processBefore() override { return true; }
  bool process(const TNVAugmentSample& sample) override {
    for (const auto& entry : sample.entries)
      fuzz::require(entry.points.size() == 4, "a region has four corners");
    return true;
  }
  bool processAfter() override { return true; }
  std::vector<std::string> validateConfig() const override { return {}; }
};

TNVAugmentSample sample() {
  TNVAugmentSample made;
  made.image = cv::Mat(48, 64, CV_8UC3, cv::Scalar(40, 80, 120));
  made.entries = {{{{10, 5}, {30, 5}, {30, 15}, {10, 15}}, 3, "ROI", "Rect"}};
  return made;
}

}  // namespace

/// A file of tasks, through which a picture is sent.
void fuzz::run(std::string_view input) {
  place().write("tree.xml", std::string(input));
  TNVHandlerAugment handler(place().path());
  mayThrow([&] { handler.setAugmentation("tree.xml"); });
  if (!handler.rootTask) return;
  Generator generator;
  mayThrow([&] { TNVAugment::processTrainSet(*handler.rootTask, sample(), &generator); });
}
