#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

/// A closed set of named choices that a front end shows and hands back by name. An object is one
/// row. `T` is the table class itself.
template <class T>
class TNVType {
 public:
  /// All rows, in the table's order.
  virtual std::vector<T> getTypes() const = 0;

  std::vector<std::string> getNames() const {
    std::vector<std::string> names;
    for (const T& row : getTypes())
      names.push_back(row.name);
    return names;
  }

  /// The row of exactly that name; the first row for any other text.
  T getByName(const std::string& wanted) const {
    std::vector<T> rows = getTypes();
    for (T& row : rows) {
      if (row.name == wanted) return row;
    }
    return rows.front();
  }

  std::string name;

 protected:
  explicit TNVType(std::string rowName = "default") : name(std::move(rowName)) {}
  TNVType(const TNVType&) = default;
  TNVType& operator=(const TNVType&) = default;
  ~TNVType() = default;
};

/// The forms in which a mark is constructed.
class TNVTypeMarkForm final : public TNVType<TNVTypeMarkForm> {
 public:
  explicit TNVTypeMarkForm(std::string rowName = "Rect");
  std::vector<TNVTypeMarkForm> getTypes() const override;
};

class TNVTypeAssist final : public TNVType<TNVTypeAssist> {
 public:
  explicit TNVTypeAssist(std::string rowName = "GrabCut");
  std::vector<TNVTypeAssist> getTypes() const override;
};

/// The training platforms that a set can be generated for.
class TNVTypeGeneration final : public TNVType<TNVTypeGeneration> {
 public:
  explicit TNVTypeGeneration(std::string rowName = "Darknet");
  std::vector<TNVTypeGeneration> getTypes() const override;
};

class TNVTypeMarkMode final : public TNVType<TNVTypeMarkMode> {
 public:
  explicit TNVTypeMarkMode(std::string rowName = "Create", int rowValue = 1);
  std::vector<TNVTypeMarkMode> getTypes() const override;

  int value;
};

/// What is written beside a mark.
class TNVTypeDrawInfo final : public TNVType<TNVTypeDrawInfo> {
 public:
  enum Value { kNone, kClassId, kClassName, kPixel, kPixelRelative, kRelative };

  explicit TNVTypeDrawInfo(std::string rowName = "DNN Class ID", int rowValue = kClassId);
  std::vector<TNVTypeDrawInfo> getTypes() const override;

  int value;
};

/// Filters of the magnifier.
class TNVTypeHelperMode final : public TNVType<TNVTypeHelperMode> {
 public:
  enum Value { kNormal = 1, kGray, kImprove, kEdge, kEdgeDoubled };

  explicit TNVTypeHelperMode(std::string rowName = "Normal", int rowValue = kNormal);
  std::vector<TNVTypeHelperMode> getTypes() const override;

  int value;
};

class TNVTypeCrossStyle final : public TNVType<TNVTypeCrossStyle> {
 public:
  enum Shape { kCross = 1, kCircle = 2 };

  TNVTypeCrossStyle();
  TNVTypeCrossStyle(std::string rowName, cv::Scalar rowColor, int rowThickness, int rowShape);
  std::vector<TNVTypeCrossStyle> getTypes() const override;

  cv::Scalar color;
  int thickness;
  int shape;
};

/// Colours (blue, green, red) and thicknesses of a mark by its state. A first channel of exactly -1
/// takes the colour from the mark's classes.
class TNVTypeMarkStyleSet final : public TNVType<TNVTypeMarkStyleSet> {
 public:
  struct Pen {
    cv::Scalar color;
    int thickness;
  };

  TNVTypeMarkStyleSet();
  TNVTypeMarkStyleSet(std::string rowName, const Pen& normal, const Pen& hovered,
                      const Pen& selected, const Pen& spare);
  std::vector<TNVTypeMarkStyleSet> getTypes() const override;

  cv::Scalar colorNormal;
  int thicknessNormal;
  cv::Scalar colorHovered;
  int thicknessHovered;
  cv::Scalar colorSelected;
  int thicknessSelected;
  cv::Scalar colorSpare;
  int thicknessSpare;
  bool drawFilled = false;
};
