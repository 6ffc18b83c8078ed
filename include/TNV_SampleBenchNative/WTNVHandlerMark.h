#pragma once

#include <string>
#include <vector>

#include "TNV_SampleBenchNative/Export.h"
#include "TNV_SampleBenchNative/TNVObserver.h"
#include "TNV_SampleBenchNative/WTNVCallback.h"
#include "TNV_SampleBenchNative/WTNVDNNClass.h"
#include "TNV_SampleBenchNative/WTNVMark.h"

class TNVHandlerMark;

/// The marks of the current train set, the design of new ones, and the choices that go with them.
/// Positions and sizes are relative to the picture, 0 to 1, origin top left, unless said otherwise.
/// A list of points is one pair x, y each; an element that is no pair counts as (0, 0). The main
/// process owns the handler. The wrapper is an observer registered by its address: keep it in one
/// place, and destroy it before the main process. All calls and callbacks belong to the front end's
/// thread. Calls that need a current train set answer 0, -1, an empty list or a null handle without
/// one, nearly all with a log line. Null handles of marks are ignored, those of classes left out.
class TNV_SAMPLEBENCH_API WTNVHandlerMark : public TNVHandlerMarkObserver {
 public:
  explicit WTNVHandlerMark(TNVHandlerMark* handler);

  /// Another observer of the same handler, without callbacks.
  WTNVHandlerMark(const WTNVHandlerMark& other);

  /// Takes over the handler and the callbacks; registers nothing.
  WTNVHandlerMark& operator=(const WTNVHandlerMark& other);
  ~WTNVHandlerMark() override;

  unsigned int getMarkCount() const;

  /// All marks in the order in which they are drawn.
  std::vector<WTNVMark> getAllMarks() const;

  /// The mark with that id; a null handle if there is none.
  WTNVMark getMarkWithUniqueId(int id) const;

  /// The mark under the point, of several the one whose centre is nearest, the earlier of two at
  /// one distance; a null handle if there is none. Hover and selection stay as they are.
  WTNVMark getMarkMouseOver(double x, double y);

  /// Hover: of one mark, of one alone (a null handle clears all), of some (an empty list means
  /// all). The event comes only when something changed.
  void wSetMarkHovered(WTNVMark mark, bool hovered);
  void wSetMarkHoveredOnly(WTNVMark mark);
  void wSetAllMarksHovered(bool hovered, std::vector<WTNVMark> marks);
  int wGetMarksHoveredCnt() const;
  std::vector<WTNVMark> wGetMarksHovered() const;

  /// Selection: of one mark, of some (an empty list means all). The event always comes.
  void setMarkSelected(WTNVMark mark, bool selected);
  void setAllMarksSelected(bool selected, std::vector<WTNVMark> marks);
  int getMarksSelectedCnt() const;
  std::vector<WTNVMark> getMarksSelected() const;

  /// Whether POI boxes are drawn, for some marks (an empty list means all).
  void setAllMarksPOIVisible(bool visible, std::vector<WTNVMark> marks);

  /// Moves and resizes a mark on a picture of `imageWidth` by `imageHeight` pixels. An empty list
  /// keeps its classes.
  void updateMark(WTNVMark mark, double centerX, double centerY, double width, double height,
                  std::vector<WTNVDNNClass> classes, int imageWidth, int imageHeight);

  /// Gives all selected marks these classes; an empty list clears them.
  void updateSelectedMarks(std::vector<WTNVDNNClass> classes);

  /// Takes marks out of the train set; handles on them stay readable. The second call has no event.
  void removeSelectedMarks();
  void removeMark(WTNVMark mark);

  /// Replaces the POIs of a mark.
  void wSetPOIPoints(WTNVMark mark, const std::vector<std::vector<double>>& points);

  /// Size of the mark's POI boxes; with one value a box that is square in pixels.
  void wSetPOISize(WTNVMark mark, double sizeX, double sizeY);
  void wSetPOISize(WTNVMark mark, double size);

  /// The classes that new marks get. The handles must stay valid as long as they are set.
  void wSetDNNClassSelected(std::vector<WTNVDNNClass> classes);
  std::vector<WTNVDNNClass> wGetDNNClassSelected() const;

  /// Choices that are kept here for the front end; the library does not consult them. An unknown
  /// name gives the first one of the list.
  void setAddInstantly(bool instantly);
  bool getAddInstantly() const;
  std::vector<std::string> getAvailableMarkForms() const;
  void setMarkForm(const std::string& form);
  std::string getMarkForm() const;
  std::vector<std::string> wGetAvailableMarkModes() const;
  void wSetMarkMode(const std::string& mode);
  std::string wGetMarkMode() const;

  /// The assist that improves a mark under design.
  std::vector<std::string> wGetAvailableAssists() const;
  void wSetAssist(const std::string& assist);
  std::string wGetAssist() const;

  /// Builds the mark under design anew from all points so far. Without classes it gets the selected
  /// ones. False, and no mark under design, if the form is unknown or does not take so many points;
  /// the points are shown all the same. False, and all as before, with a log line, without a train
  /// set, its picture or a project.
  bool designMark(const std::vector<std::vector<double>>& points, const std::string& form,
                  const std::vector<WTNVDNNClass>& classes);

  /// Adds the mark under design to the current train set and ends the design.
  bool addDesignedMark();

  /// Fits the mark under design to the object that the chosen assist finds in the picture. The
  /// object lies within the mark, if that has an outline within its inner part, so that the mark
  /// can but shrink; a quarter of its size around it shows what the ground looks like. That takes
  /// some ten milliseconds, and some hundred for a mark over much of a picture of many megapixels,
  /// which has to be reduced first. When something was found, the event of a designed mark comes.
  /// Otherwise the mark stays as it is, without an event: with the assist "None", and, with a log
  /// line, without a mark under design, without a readable picture, and for a mark that lies off
  /// the picture, is too small or covers all of it.
  void wApplyAssistDesignMark();

  /// Calls for a fresh preview by the event of a designed mark, and does nothing else: no assist
  /// works on single points.
  void wApplyAssistLastDesignPoint();

  /// The fewest and the most points that a form is constructed from; 0 for an unknown form.
  int getMarkMinConstructionPoints(const std::string& form) const;
  int getMarkMaxConstructionPoints(const std::string& form) const;

  /// Functions to call on events; null clears.
  void setCBMarkAdded(void (*callback)());
  void setCBMarkDesigned(void (*callback)());
  void setCBDNNClassChanged(void (*callback)());
  void setCBAddInstantlyChanged(void (*callback)());
  void setCBMarkFormChanged(void (*callback)());
  void setCBMarkModeChanged(void (*callback)());
  void setCBMarkMouseOver(void (*callback)());
  void setCBMarkStateHovered(void (*callback)());
  void setCBMarkStateSelected(void (*callback)());
  void setCBMarkStatePOIVisible(void (*callback)());
  void setCBMarkUpdated(void (*callback)());
  void setCBMarkRemoved(void (*callback)());
  void setCBPOIPointsUpdated(void (*callback)());
  void setCBPOISizeUpdated(void (*callback)());
  void setCBAssistChanged(void (*callback)());

  void onEventMarkAdded() override;
  void onEventMarkDesigned() override;
  void onEventDNNClassChanged() override;
  void onEventAddInstantlyChanged() override;
  void onEventMarkFormChanged() override;
  void onEventMarkModeChanged() override;
  void onEventMarkMouseOver() override;
  void onEventMarkStateHovered() override;
  void onEventMarkStateSelected() override;
  void onEventMarkStatePOIVisible() override;
  void onEventMarkUpdated() override;
  void onEventMarkRemoved() override;
  void onEventPOIPointsUpdated() override;
  void onEventPOISizeUpdated() override;
  void onEventAssistChanged() override;

 private:
  TNVHandlerMark* native;
  WTNVCallback markAdded;
  WTNVCallback markDesigned;
  WTNVCallback dnnClassChanged;
  WTNVCallback addInstantlyChanged;
  WTNVCallback markFormChanged;
  WTNVCallback markModeChanged;
  WTNVCallback markMouseOver;
  WTNVCallback markStateHovered;
  WTNVCallback markStateSelected;
  WTNVCallback markStatePOIVisible;
  WTNVCallback markUpdated;
  WTNVCallback markRemoved;
  WTNVCallback poiPointsUpdated;
  WTNVCallback poiSizeUpdated;
  WTNVCallback assistChanged;
};
