#include "editing/TNVType.h"

#include <utility>

TNVTypeMarkForm::TNVTypeMarkForm(std::string rowName) {
  name = std::move(rowName);
}

std::vector<TNVTypeMarkForm> TNVTypeMarkForm::getTypes() const {
  using Row = TNVTypeMarkForm;
  return {Row("Rect"),    Row("Rect Center"),     Row("Point"),
          Row("Image"),   Row("Circle"),          Row("Circle Multiple"),
          Row("Line"),    Row("PolyLine"),        Row("PolyLine Closed"),
          Row("Ellipse"), Row("Ellipse Multiple")};
}

TNVTypeAssist::TNVTypeAssist(std::string rowName) {
  name = std::move(rowName);
}

std::vector<TNVTypeAssist> TNVTypeAssist::getTypes() const {
  return {TNVTypeAssist("None"), TNVTypeAssist("GrabCut")};
}

TNVTypeGeneration::TNVTypeGeneration(std::string rowName) {
  name = std::move(rowName);
}

std::vector<TNVTypeGeneration> TNVTypeGeneration::getTypes() const {
  return {TNVTypeGeneration("Darknet")};
}

TNVTypeMarkMode::TNVTypeMarkMode(std::string rowName, int rowValue) : value(rowValue) {
  name = std::move(rowName);
}

std::vector<TNVTypeMarkMode> TNVTypeMarkMode::getTypes() const {
  using Row = TNVTypeMarkMode;
  return {Row("Create", 1), Row("Edit", 2), Row("POI", 3)};
}

TNVTypeDrawInfo::TNVTypeDrawInfo(std::string rowName, int rowValue) : value(rowValue) {
  name = std::move(rowName);
}

std::vector<TNVTypeDrawInfo> TNVTypeDrawInfo::getTypes() const {
  using Row = TNVTypeDrawInfo;
  return {Row("None", kNone),
          Row("DNN Class ID", kClassId),
          Row("DNN Class Name", kClassName),
          Row("Pixel", kPixel),
          Row("Pixel Relative", kPixelRelative),
          Row("Relative", kRelative)};
}

TNVTypeHelperMode::TNVTypeHelperMode(std::string rowName, int rowValue) : value(rowValue) {
  name = std::move(rowName);
}

std::vector<TNVTypeHelperMode> TNVTypeHelperMode::getTypes() const {
  using Row = TNVTypeHelperMode;
  return {Row("Normal", kNormal), Row("Gray", kGray), Row("Improve", kImprove), Row("Edge", kEdge),
          Row("Edge x2", kEdgeDoubled)};
}

TNVTypeCrossStyle::TNVTypeCrossStyle()
    : TNVTypeCrossStyle("White Cross", cv::Scalar(255, 255, 255), 1, kCross) {}

TNVTypeCrossStyle::TNVTypeCrossStyle(std::string rowName, cv::Scalar rowColor, int rowThickness,
                                     int rowShape)
    : color(rowColor), thickness(rowThickness), shape(rowShape) {
  name = std::move(rowName);
}

std::vector<TNVTypeCrossStyle> TNVTypeCrossStyle::getTypes() const {
  using Row = TNVTypeCrossStyle;
  const cv::Scalar white(255, 255, 255);
  const cv::Scalar black(0, 0, 0);
  return {Row("White Cross", white, 1, kCross), Row("White Circle", white, 1, kCircle),
          Row("Black Cross", black, 1, kCross), Row("Black Circle", black, 1, kCircle)};
}

TNVTypeMarkStyleSet::TNVTypeMarkStyleSet()
    : TNVTypeMarkStyleSet("White", {{255, 255, 255}, 1}, {{0, 255, 0}, 2}, {{0, 0, 255}, 1},
                          {{0, 0, 255}, 1}) {}

TNVTypeMarkStyleSet::TNVTypeMarkStyleSet(std::string rowName, const Pen& normal, const Pen& hovered,
                                         const Pen& selected, const Pen& spare)
    : colorNormal(normal.color),
      thicknessNormal(normal.thickness),
      colorHovered(hovered.color),
      thicknessHovered(hovered.thickness),
      colorSelected(selected.color),
      thicknessSelected(selected.thickness),
      colorSpare(spare.color),
      thicknessSpare(spare.thickness) {
  name = std::move(rowName);
}

std::vector<TNVTypeMarkStyleSet> TNVTypeMarkStyleSet::getTypes() const {
  using Row = TNVTypeMarkStyleSet;
  const Pen ofClasses{{-1, -1, -1}, 1};
  const Pen white{{255, 255, 255}, 1};
  const Pen black{{0, 0, 0}, 1};
  const Pen red{{0, 0, 255}, 1};
  const Pen thickGreen{{0, 255, 0}, 2};
  return {Row("Colored", ofClasses, thickGreen, red, ofClasses),
          Row("White", white, thickGreen, red, red), Row("Black", black, thickGreen, red, red),
          Row("Blue", {{255, 64, 64}, 1}, {{255, 32, 32}, 2}, white, white),
          Row("Red", {{64, 64, 255}, 1}, {{32, 32, 255}, 2}, white, white)};
}
