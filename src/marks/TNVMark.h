#pragma once

#include <memory>
#include <string>
#include <vector>

#include <opencv2/imgproc.hpp>

class TNVDNNClass;
class TNVTypeDrawInfo;
class TNVTypeMarkStyleSet;

/// Colour (blue, green, red) and thickness that a mark is drawn with.
struct MarkDrawStyle {
  cv::Scalar colour;
  int thickness;
};

/// A length that belongs to a mark: in pixels of the picture, in pixels of the view, and relative.
struct MarkLength {
  int imagePixels;
  int viewPixels;
  double relative;
};

/// One annotated object on one picture. All geometry is relative to the picture: x a fraction of
/// its width, y of its height, origin top left. Pixels are computed from a size handed in.
class TNVMark {
 public:
  using Points = std::vector<cv::Point2d>;
  using Classes = std::vector<TNVDNNClass*>;

  virtual ~TNVMark() = default;
  TNVMark& operator=(const TNVMark&) = delete;

  /// Writes the keys of the mark into the map that is open in the storage.
  virtual void write(cv::FileStorage& storage);

  /// Refits centre and size to the box of the relative points.
  virtual void fitToPoints(const Points& points, cv::Size imageSize);

  /// Takes over a new size. `centre` is where `update` will put the centre, which is still old.
  virtual void setRelSize(cv::Point2d centre, cv::Point2d size, cv::Size imageSize) = 0;
  virtual cv::Point2d getRelSize(cv::Size imageSize) const = 0;

  virtual int getMinConstructionPoints(bool variant) const = 0;
  virtual int getMaxConstructionPoints(bool variant) const = 0;

  /// Draws the mark on the view, which shows the whole picture at any scale. `imageSize` is the
  /// size of the picture itself.
  virtual void draw(cv::Mat& view, cv::Size imageSize, const TNVTypeMarkStyleSet& style,
                    const TNVTypeDrawInfo& info, const Classes& classes, bool designing);

  /// Whether the relative point hits the mark. `distance`, if wanted, is in pixels.
  virtual bool isMouseOver(cv::Point2d point, cv::Size imageSize,
                           double* distance = nullptr) const = 0;

  /// Kind of mark; with `variant` the name of its second form.
  virtual std::string getTypeName(bool variant) const = 0;

  virtual cv::Rect getPixelRect(cv::Size imageSize) const = 0;

  /// The outline in pixels; empty for a mark without area.
  virtual Points getContour(cv::Size imageSize) const = 0;

  virtual std::vector<std::string> getPOIModes() const = 0;
  virtual bool getPOIModeSupportsValue(const std::string& mode) const = 0;

  /// Relative points of interest along the mark.
  virtual Points getPOIsGenerated(const std::string& mode, cv::Size imageSize, int count) const = 0;

  /// How many POI boxes of the present size fit along the mark.
  virtual int getPOICountForSize(cv::Size imageSize) const = 0;

  /// Moves and resizes the mark and drags its POIs along. An empty list keeps the classes.
  void update(cv::Point2d newCentre, cv::Point2d newSize, const Classes& classes,
              cv::Size imageSize);

  /// The mark's box cut out of the picture at its full size, black outside the picture.
  cv::Mat getROIImage(const cv::Mat& image) const;

  /// To be called after each change of what the mark looks like: views compare the tags.
  int renewChangeTag();

  MarkDrawStyle resolveDrawStyle(const TNVTypeMarkStyleSet& style, const Classes& classes) const;

  static std::string classIdText(const Classes& classes, const std::vector<int>& classIdx);
  static std::string classNameText(const Classes& classes, const std::vector<int>& classIdx);

  int uniqueId = -1;
  std::string type = "none";
  cv::Point2d center{-1.0, -1.0};
  cv::Point2d designPoint{-1.0, -1.0};
  std::vector<int> classIdx;
  bool hovered = false;
  bool selected = false;
  bool poiVisible = false;
  Points pois;
  cv::Point2d poiSize{0.0, 0.0};
  int changeTag = -1;
  std::string text;

 protected:
  TNVMark();
  TNVMark(const TNVMark& other);
  explicit TNVMark(const cv::FileNode& node);

  /// What lies under every mark: its filling, the selection frame and the POI boxes.
  void drawFrame(cv::Mat& view, cv::Size imageSize, const TNVTypeMarkStyleSet& style,
                 const Classes& classes) const;

  /// The label for those draw infos that name the mark's classes; empty for all others.
  std::string classLabel(const TNVTypeDrawInfo& info, const Classes& classes) const;

  /// The label for those draw infos that tell a length; empty for all others.
  static std::string lengthLabel(const TNVTypeDrawInfo& info, const MarkLength& length);

  /// Draws the edges of a mark under design.
  static void drawDashedEdges(cv::Mat& view, const Points& points, const MarkDrawStyle& pen,
                              bool closed);

  /// Draws the dotted line that leads from the mark to the cursor while the mark is designed.
  void drawLineToCursor(cv::Mat& view, cv::Point2d from, const MarkDrawStyle& pen) const;

  /// The small ring at a mark's centre, and the dot on its ends. Positions are pixels of the view.
  static void drawRing(cv::Mat& view, cv::Point2d position, const MarkDrawStyle& pen,
                       int lineType = cv::LINE_AA);
  static void drawDot(cv::Mat& view, cv::Point2d position, const cv::Scalar& colour);

  /// How many POI boxes of the present size stand along a path of that length, in pixels.
  int poiCountAlong(double pathLength, cv::Size imageSize) const;

  /// Distance of a relative point from the centre in pixels.
  double pixelsFromCentre(cv::Point2d point, cv::Size imageSize) const;

  /// What the mark's relative points become when it gets that centre and size.
  Points resizedPoints(const Points& points, cv::Point2d newCentre, cv::Point2d newSize,
                       cv::Size imageSize) const;

  /// The hit test of a mark by its outline in pixels. The distance, which is that to the centre, is
  /// given for a hit only.
  bool isOverOutline(const Points& outline, double margin, cv::Point2d point, cv::Size imageSize,
                     double* distance) const;

  /// Writes the classes or the length of a path of relative points at the centre.
  void drawPathLabel(cv::Mat& view, cv::Size imageSize, const TNVTypeDrawInfo& info,
                     const Classes& classes, const Points& path, const cv::Scalar& colour) const;

  /// One label in the common font.
  static void drawLabel(cv::Mat& view, const std::string& label, cv::Point bottomLeft,
                        const cv::Scalar& colour);

 private:
  void drawFilling(cv::Mat& view, const cv::Scalar& colour) const;
  void drawSelectionFrame(cv::Mat& view, cv::Size imageSize, const cv::Scalar& colour) const;
  void drawPOIs(cv::Mat& view, const MarkDrawStyle& pen) const;
};
