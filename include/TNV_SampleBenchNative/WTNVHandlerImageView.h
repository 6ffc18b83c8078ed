#pragma once

#include <string>
#include <vector>

#include "TNV_SampleBenchNative/Export.h"
#include "TNV_SampleBenchNative/TNVObserver.h"
#include "TNV_SampleBenchNative/WTNVCallback.h"
#include "TNV_SampleBenchNative/WTNVDNNClass.h"
#include "TNV_SampleBenchNative/WTNVMark.h"

class TNVHandlerImageView;

/// Renders the current train set: its picture at the chosen zoom with all marks, the design and the
/// cross hair. Every setter fires its event, whether the value changed or not. The main process
/// owns the handler. The wrapper is an observer registered by its address: keep it in one place,
/// and destroy it before the main process. All calls and callbacks belong to the front end's
/// thread.
class TNV_SAMPLEBENCH_API WTNVHandlerImageView : public TNVHandlerImageViewObserver {
 public:
  explicit WTNVHandlerImageView(TNVHandlerImageView* handler);

  /// Another observer of the same handler, without callbacks.
  WTNVHandlerImageView(const WTNVHandlerImageView& other);

  /// Takes over the handler and the callbacks; registers nothing.
  WTNVHandlerImageView& operator=(const WTNVHandlerImageView& other);
  ~WTNVHandlerImageView() override;

  /// Renders and hands the picture out: 8-bit pixels in the order blue, green, red, `channels` 3,
  /// rows of `width * channels` bytes. The pixels belong to the view; copy them before the next
  /// render or navigation. Null and zeros, with a log line, if there is nothing to render.
  void wGetARImage(unsigned char** data, int* width, int* height, int* channels);

  /// Size in pixels of the rendered picture at the stored zoom. A zoom below 0.1 is raised only by
  /// the next render.
  void wGetARImageSize(int& width, int& height) const;

  /// Pixels of the view per pixel of the picture.
  void wSetZoomLevel(double zoom);

  /// Fits the picture into a window of that many pixels, enlarging it by `maxZoom` at most. A train
  /// set with a picture must be current.
  void wSetZoomLevel(int width, int height, double maxZoom);
  double wGetZoomLevel() const;

  /// Whether the zoom was last set by fitting.
  bool wGetZoomToSize() const;

  /// Position of the cross relative to the picture; held between 0 and 1.
  void wSetCrossPosition(double x, double y);
  void wGetCrossPositionRelative(double& x, double& y) const;

  /// The position in pixels of the picture, unrounded; 0 and 0 without one.
  void wGetCrossPositionPixelAbsolute(double& x, double& y) const;

  /// The position in pixels of the view, unrounded; 0 and 0 before the first render.
  void wGetCrossPositionPixelRelative(double& x, double& y) const;

  /// Relative size of one pixel of the picture; 0 and 0 without one.
  void wGetRelativePixel(double& x, double& y) const;

  /// Choices by name; an unknown name gives the first one of the list.
  std::vector<std::string> getAvailableMarkStyles() const;
  void setMarkStyle(const std::string& style);
  std::string getMarkStyle() const;
  std::vector<std::string> getAvailableMarkDrawInfos() const;
  void setMarkDrawInfo(const std::string& info);
  std::string getMarkDrawInfo() const;
  std::vector<std::string> getAvailableCrossStyles() const;
  void setCrossStyle(const std::string& style);
  std::string getCrossStyle() const;

  /// Whether marks with an area are filled.
  void wSetDrawMarkFilled(bool filled);
  bool wGetDrawMarkFilled() const;

  /// Draws only marks of these classes; an empty list draws all marks. The handles must stay valid
  /// as long as they are set.
  void wSetDrawOnlyDNNs(const std::vector<WTNVDNNClass>& classes);
  std::vector<WTNVDNNClass> wGetDrawOnlyDNNs() const;

  /// Renders the magnifier: a window on the picture with the cross position in its middle, black
  /// outside the picture. Handed out as by `wGetARImage`, always at the size of the window; the
  /// pixels stay valid until the next call. Null and zeros, with a log line, without a current
  /// picture, and where zoom or window size are not positive, too small to show a pixel or out of
  /// all proportion to the picture.
  void wGetHelperImage(unsigned char** data, int* width, int* height, int* channels);

  /// Pixels of the magnifier per pixel of the picture; 2 at the start. Stored unchecked.
  void setHelperZoomLevel(double zoom);
  double getHelperZoomLevel() const;

  /// Filter of the magnifier by name; an unknown name gives the first one of the list, "Normal".
  std::vector<std::string> getHelperModes() const;
  void setHelperMode(const std::string& mode);
  std::string getHelperMode() const;

  /// Size of the magnifier in pixels; 256 by 256 at the start. Stored unchecked.
  void setHelperWindowSize(int width, int height);
  void getHelperWindowSize(int& width, int& height) const;

  /// Whether a white cross marks the middle of the magnifier.
  void setHelperShowCross(bool show);
  bool getHelperShowCross() const;

  /// Cuts the mark's box out of the current picture, black outside it, and writes it to
  /// `directory`, which ends in a slash and is made if it is missing. The extension of `name` gives
  /// the format; an empty `name` stands for a new, unique one with ".jpg". Returns the path.
  /// Whether the disk took the file is not checked. Empty text, with a log line, for a null handle,
  /// a directory that cannot be made, a box without a pixel and an extension that is no format.
  std::string wSaveROIImage(WTNVMark mark, const std::string& directory, const std::string& name);

  /// Functions to call on events; null clears.
  void setCBCrossPositionChanged(void (*callback)());
  void setCBHelperZoomLevelChanged(void (*callback)());
  void setCBHelperModeChanged(void (*callback)());
  void setCBHelperWndSizeChanged(void (*callback)());
  void setCBHelperShowCrossChanged(void (*callback)());
  void setCBMarkStyleChanged(void (*callback)());
  void setCBMarkDrawInfoChanged(void (*callback)());
  void setCBCrossStyleChanged(void (*callback)());
  void setCBZoomLevelChanged(void (*callback)());
  void setCBDrawMarkFilledChanged(void (*callback)());
  void setCBDrawOnlyDNNsChanged(void (*callback)());

  void onEventCrossPositionChanged() override;
  void onEventHelperZoomLevelChanged() override;
  void onEventHelperModeChanged() override;
  void onEventHelperWndSizeChanged() override;
  void onEventHelperShowCrossChanged() override;
  void onEventMarkStyleChanged() override;
  void onEventMarkDrawInfoChanged() override;
  void onEventCrossStyleChanged() override;
  void onEventZoomLevelChanged() override;
  void onEventDrawMarkFilledChanged() override;
  void onEventDrawOnlyDNNsChanged() override;

 private:
  TNVHandlerImageView* native;
  WTNVCallback crossPositionChanged;
  WTNVCallback helperZoomLevelChanged;
  WTNVCallback helperModeChanged;
  WTNVCallback helperWndSizeChanged;
  WTNVCallback helperShowCrossChanged;
  WTNVCallback markStyleChanged;
  WTNVCallback markDrawInfoChanged;
  WTNVCallback crossStyleChanged;
  WTNVCallback zoomLevelChanged;
  WTNVCallback drawMarkFilledChanged;
  WTNVCallback drawOnlyDNNsChanged;
};
