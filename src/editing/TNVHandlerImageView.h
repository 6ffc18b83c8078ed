#pragma once

#include <atomic>
#include <map>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "boundary/TNVNotificator.h"
#include "editing/HelperView.h"
#include "editing/TNVType.h"

class TNVDNNClass;
class TNVMark;
class TNVProject;
class TNVTrainSet;

/// Turns the current train set into the picture that is shown. The picture with all marks is kept
/// as long as no mark's change tag differs, so that moving the cross or the design costs one copy.
class TNVHandlerImageView : public TNVNotificator {
 public:
  /// Shows another train set from now on.
  void bind(TNVTrainSet* newTrainSet);

  /// Neither project nor train set is looked at any more.
  void unbind();

  /// Renders. The result shares the pixels of `imgAR`; it is empty if there is nothing to render.
  cv::Mat getARImage();

  /// Size of the rendered picture at the stored zoom.
  cv::Size getARImageSize() const;

  void setZoomLevel(double zoom);

  /// Fits into a window, enlarging by `maxZoom` at most.
  void setZoomLevel(int width, int height, double maxZoom);
  void setCrossPosition(double x, double y);
  void setMarkStyle(const std::string& style);
  void setMarkDrawInfo(const std::string& info);
  void setCrossStyle(const std::string& style);
  void setDrawMarkFilled(bool filled);
  void setDrawOnlyDNNs(const std::vector<TNVDNNClass*>& classes);

  /// Renders the magnifier around the cross. The result shares the pixels of `helper.image`; it is
  /// empty if there is nothing to show.
  cv::Mat getHelperImage();
  void setHelperZoomLevel(double zoom);
  void setHelperMode(const std::string& mode);
  void setHelperWindowSize(int width, int height);
  void setHelperShowCross(bool show);

  /// Writes the mark's region of the picture to `directory` + `name`, under a name of its own if
  /// that is empty, and returns the path. Empty, with a log line, if there was nothing to write or
  /// no way to; a file that the disk refuses goes unnoticed.
  std::string saveROIImage(const TNVMark* mark, const std::string& directory,
                           const std::string& name) const;

  TNVProject* project = nullptr;
  cv::Mat imgSource;
  cv::Mat imgScaled;
  cv::Mat imgAR;
  bool zoomToSize = false;
  double zoomLevel = 1.0;
  double crossX = 0.5;
  double crossY = 0.5;
  TNVTrainSet* trainSet = nullptr;
  tnv::HelperView helper;
  TNVTypeMarkStyleSet markStyle = filledStyle();
  TNVTypeDrawInfo markDrawInfo;
  TNVTypeCrossStyle crossStyle;
  bool drawMarkFilled = true;
  std::vector<TNVDNNClass*> drawOnlyDNNs;
  bool renderCache = true;
  cv::Mat imgCached;
  bool cacheDirty = true;
  std::map<int, int> cacheTags;
  std::atomic<bool> reloadImage{false};

 private:
  using Classes = std::vector<TNVDNNClass*>;

  static TNVTypeMarkStyleSet filledStyle();

  void invalidate();
  bool canRender() const;
  bool reloadSource();
  void showPicture(const cv::Mat& picture);
  void scaleSource();
  bool marksChanged(const std::vector<TNVMark*>& marks);
  void rememberTags(const std::vector<TNVMark*>& marks);
  void drawMarks(const std::vector<TNVMark*>& marks, const Classes& classes);
  bool passesFilter(const TNVMark& mark, const Classes& classes) const;
  void drawDesign(const Classes& classes);
  void drawCross();
};
