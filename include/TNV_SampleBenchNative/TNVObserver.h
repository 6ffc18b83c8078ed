#pragma once

#include "TNV_SampleBenchNative/Export.h"

/// Root of all observers. The process has one list of them, which every handler reports to: an
/// event reaches all observers of the handler's interface, in the order in which they registered,
/// whichever project or main process the handler belongs to. Events carry no data.
class TNV_SAMPLEBENCH_API TNVObserver {
 public:
  TNVObserver() = default;
  TNVObserver(const TNVObserver&) = default;
  TNVObserver& operator=(const TNVObserver&) = default;
  virtual ~TNVObserver();
};

/// Hears of generation runs.
class TNV_SAMPLEBENCH_API TNVHandlerAugmentObserver : public TNVObserver {
 public:
  virtual void onEventGenerationStarted();
  virtual void onEventGenerationUpdate();
  virtual void onEventGenerationFinished();
};

/// Hears of downloads.
class TNV_SAMPLEBENCH_API TNVHandlerDownloadObserver : public TNVObserver {
 public:
  virtual void onEventDownloadStarted();
  virtual void onEventDownloadUpdate();
  virtual void onEventDownloadFinished();
};

/// Hears of the making of the gallery.
class TNV_SAMPLEBENCH_API TNVHandlerValidationObserver : public TNVObserver {
 public:
  virtual void onEventValidGenStarted();
  virtual void onEventValidGenUpdate();
  virtual void onEventValidGenFinished();
};

/// Hears of the settings of the image view.
class TNV_SAMPLEBENCH_API TNVHandlerImageViewObserver : public TNVObserver {
 public:
  virtual void onEventCrossPositionChanged();
  virtual void onEventHelperZoomLevelChanged();
  virtual void onEventHelperModeChanged();
  virtual void onEventHelperWndSizeChanged();
  virtual void onEventHelperShowCrossChanged();
  virtual void onEventMarkStyleChanged();
  virtual void onEventMarkDrawInfoChanged();
  virtual void onEventCrossStyleChanged();
  virtual void onEventZoomLevelChanged();
  virtual void onEventDrawMarkFilledChanged();
  virtual void onEventDrawOnlyDNNsChanged();
};

/// Hears of navigation and of the current train set. `onEventImageLoaded` arrives on the worker
/// thread.
class TNV_SAMPLEBENCH_API TNVHandlerTrainSetObserver : public TNVObserver {
 public:
  virtual void onEventTrainSetChanged();
  virtual void onEventCommentUpdated();
  virtual void onEventUseSpecialTestUpdated();
  virtual void onEventProjectOpened();
  virtual void onEventProjectClosed();
  virtual void onEventProjectSaved();
  virtual void onEventImageLoaded();
  virtual void onEventRemoveChanged();
  virtual void onEventWorkflowChanged();
};

/// Hears of the marks of the current train set and of what is chosen for new ones.
class TNV_SAMPLEBENCH_API TNVHandlerMarkObserver : public TNVObserver {
 public:
  virtual void onEventMarkAdded();
  virtual void onEventMarkDesigned();
  virtual void onEventDNNClassChanged();
  virtual void onEventAddInstantlyChanged();
  virtual void onEventMarkFormChanged();
  virtual void onEventMarkModeChanged();
  virtual void onEventMarkMouseOver();
  virtual void onEventMarkStateHovered();
  virtual void onEventMarkStateSelected();
  virtual void onEventMarkStatePOIVisible();
  virtual void onEventMarkUpdated();
  virtual void onEventMarkRemoved();
  virtual void onEventPOIPointsUpdated();
  virtual void onEventPOISizeUpdated();
  virtual void onEventAssistChanged();
};
