#include <memory>

#include "editing/TNVType.h"
#include "fuzz/Fuzzing.h"
#include "marks/TNVMark.h"
#include "project/TNVDNNClass.h"
#include "project/TNVTrainSet.h"

namespace {

const cv::Size imageSize{640, 480};

TNVDNNClass& onlyClass() {
  static TNVDNNClass dnnClass(1);
  return dnnClass;
}

void drawInAllWays(TNVMark& mark) {
  static const auto infos = TNVTypeDrawInfo().getTypes();
  static const auto styles = TNVTypeMarkStyleSet().getTypes();
  cv::Mat view(48, 64, CV_8UC3, cv::Scalar(40, 80, 120));
  for (std::size_t way = 0; way < infos.size(); ++way) {
    auto style = styles[way % styles.size()];
    style.drawFilled = way % 2 == 0;
    mark.selected = way % 3 == 0;
    mark.hovered = way % 3 == 1;
    mark.poiVisible = way % 2 == 1;
    mark.draw(view, imageSize, style, infos[way], {&onlyClass()}, way % 4 == 3);
  }
}

void ask(TNVMark& mark) {
  double distance = 0;
  for (const cv::Point2d point : {cv::Point2d(0.5, 0.5), cv::Point2d(0, 0), cv::Point2d(2, -1)})
    mark.isMouseOver(point, imageSize, &distance);
  mark.getRelSize(imageSize);
  mark.getPixelRect(imageSize);
  mark.getContour(imageSize);
  mark.getPOICountForSize(imageSize);
  for (const auto& mode : mark.getPOIModes())
    mark.getPOIsGenerated(mode, imageSize, 9);
}

void change(TNVMark& mark) {
  mark.update({0.25, 0.5}, {0.5, 0.25}, {&onlyClass()}, imageSize);
  mark.fitToPoints({{0.125, 0.25}, {0.75, 0.5}, {0.5, 0.875}}, imageSize);
}

}  // namespace

/// The file of a picture's record; whatever it says, its marks can be drawn, asked and changed, and
/// what is saved comes back.
void fuzz::run(std::string_view input) {
  TNVTrainSet record;
  record.dataPath = place().write("record.xml", std::string(input));
  mayThrow([&] { record.load(); });
  if (!record.dataLoaded) return;
  for (auto* mark : record.markPointers()) {
    drawInAllWays(*mark);
    ask(*mark);
  }
  record.changed = true;
  require(record.save(place().path()), "a record that was read can be saved");
  TNVTrainSet again;
  again.dataPath = record.dataPath;
  again.load();
  require(again.dataLoaded, "a record that was saved can be read");
  require(again.marks.size() == record.marks.size(), "no mark gets lost on the way");
  for (auto* mark : again.markPointers()) {
    change(*mark);
    drawInAllWays(*mark);
    ask(*mark);
  }
}
