#pragma once

#include <string>
#include <vector>

#include "TNV_SampleBenchNative/Export.h"
#include "TNV_SampleBenchNative/WTNVDNNClass.h"

class TNVMark;

/// Handle on a mark: one annotated object on one picture. All positions and sizes are relative to
/// the picture, 0 to 1, origin top left, unless said otherwise. The train set owns the mark; a
/// handle on a mark that was removed from its train set stays readable as long as the train set.
/// Methods other than `valid` and `getNativeMark` need a handle that is not null. For use on the
/// front end's thread.
class TNV_SAMPLEBENCH_API WTNVMark {
 public:
  /// A null handle.
  WTNVMark();
  explicit WTNVMark(TNVMark* mark);
  WTNVMark(const WTNVMark& other);
  WTNVMark& operator=(const WTNVMark& other);
  ~WTNVMark();

  /// The mark itself, borrowed; null for a null handle.
  TNVMark* getNativeMark() const;

  /// Whether the handle is not null.
  bool valid() const;

  /// The kind of mark: "Rect", "Image", ...
  std::string wGetType() const;

  /// The id within the train set. It is given anew each time the train set is read; -1 for a mark
  /// that no train set has adopted.
  int wGetUniqueId() const;

  /// The unique indices of the mark's classes, in the order of assignment.
  std::vector<int> wGetClassIdx() const;

  /// The class of `classes` that the mark's first index names; a null handle if there is none.
  WTNVDNNClass wGetFirstDNNClass(const std::vector<WTNVDNNClass>& classes) const;

  /// Those of `classes` that the mark carries, in the order of `classes`, once for each time that
  /// the mark carries it.
  std::vector<WTNVDNNClass> wGetDNNClasses(const std::vector<WTNVDNNClass>& classes) const;

  bool wGetIsHovered() const;
  bool wGetIsSelected() const;
  void wGetRelCenter(double& x, double& y) const;

  /// Relative width and height of the mark's box on a picture of `width` by `height` pixels.
  void wGetRelSize(double& w, double& h, int width, int height) const;

  /// Relative width and height of the mark's POI boxes.
  void wGetRelPOISize(double& w, double& h) const;

  /// The ways in which POIs can be laid along this kind of mark.
  std::vector<std::string> wGetPOIModes() const;

  /// Whether the mode takes a number of points.
  bool wGetPOIModeSupportsValue(const std::string& mode) const;

  /// Lays POIs along the mark on a picture of `width` by `height` pixels. `points` is replaced by
  /// one pair x, y of relative coordinates for each POI; it is empty for an unknown mode, and for
  /// more points than any picture has room for (16,777,216). The mark stays as it is: hand the
  /// points to `WTNVHandlerMark::wSetPOIPoints`.
  void wGetPOIsGenerated(const std::string& mode, int width, int height, int count,
                         std::vector<std::vector<double>>& points) const;

  /// How many POI boxes fit along the mark on a picture of `width` by `height` pixels.
  int wGetPOICountForSize(int width, int height) const;

 private:
  TNVMark* native;
};
