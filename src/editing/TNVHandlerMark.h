#pragma once

#include <memory>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "boundary/TNVNotificator.h"
#include "editing/TNVType.h"

class TNVDNNClass;
class TNVMark;
class TNVProject;
class TNVTrainSet;

/// The marks of the current train set: hover, selection, POIs, update, removal, and the design of
/// new ones. Every change of what a mark looks like renews its change tag, by which the view
/// notices.
class TNVHandlerMark : public TNVNotificator {
 public:
  using Marks = std::vector<TNVMark*>;
  using Classes = std::vector<TNVDNNClass*>;
  using Points = std::vector<cv::Point2d>;

  TNVHandlerMark();
  ~TNVHandlerMark();

  void setProject(TNVProject* newProject);

  /// Neither project nor train set is looked at any more.
  void unbind();

  unsigned getMarkCount() const;
  Marks getAllMarks() const;
  TNVMark* getMarkWithUniqueId(int id) const;
  TNVMark* getMarkMouseOver(cv::Point2d point);

  void setMarkHovered(TNVMark* mark, bool hovered);
  void setMarkHoveredOnly(TNVMark* mark);
  void setAllMarksHovered(bool hovered, const Marks& marks);
  int getMarksHoveredCount() const;
  Marks getMarksHovered() const;

  void setMarkSelected(TNVMark* mark, bool selected);
  void setAllMarksSelected(bool selected, const Marks& marks);
  int getMarksSelectedCount() const;
  Marks getMarksSelected() const;
  void setAllMarksPOIVisible(bool visible, const Marks& marks);

  void updateMark(TNVMark* mark, cv::Point2d center, cv::Point2d size, const Classes& classes,
                  cv::Size imageSize);
  void updateSelectedMarks(const Classes& classes);
  void removeSelectedMarks();
  void removeMark(TNVMark* mark);
  void setPOIPoints(TNVMark* mark, const Points& points);
  void setPOISize(TNVMark* mark, cv::Point2d size);
  void setPOISize(TNVMark* mark, double size);

  void setDNNClassSelected(const Classes& classes);
  void setAddInstantly(bool instantly);
  void setMarkForm(const std::string& form);
  void setMarkMode(const std::string& mode);
  void setAssist(const std::string& name);

  bool designMark(const Points& points, const std::string& form, const Classes& classes);
  bool addDesignedMark();

  /// Fits the designed mark to the object that the current assist finds. If it finds none, the mark
  /// stays as it is, without an event.
  void applyAssistDesignMark();

  /// No assist works on single points yet; the preview is called for all the same.
  void applyAssistLastDesignPoint();

  Classes dnnClassesSelected;
  TNVProject* project = nullptr;
  TNVTrainSet* trainSet = nullptr;
  std::unique_ptr<TNVMark> markDesigned;
  bool addInstantly = false;
  TNVTypeMarkForm markForm;
  TNVTypeMarkMode markMode;
  TNVTypeAssist assist;
  bool cacheValidation = false;

 private:
  bool hasTrainSet(const std::string& operation) const;
  Marks marksOrAll(const Marks& marks) const;
  Marks marksWith(const std::string& operation, bool TNVMark::*flag) const;
  void destroyDesign();
  void takePOISizeFromProject(TNVMark& mark);
  Points assistedOutline() const;

  /// The train set whose `designedMark` is `markDesigned`.
  TNVTrainSet* designedOn = nullptr;
};
