#pragma once

#include <array>
#include <vector>

#include <opencv2/imgproc.hpp>

/// Pure functions over point lists and pictures. Points are pixels unless said otherwise.
namespace TNVContour {

using Points = std::vector<cv::Point2d>;

/// Start x, start y, end x, end y.
using Segment = std::array<double, 4>;

double distance(cv::Point2d a, cv::Point2d b);

/// Sum of the edges from each point to the next; without the one from the last to the first.
double pathLength(const Points& points);

/// `count` points spaced evenly along the line, both ends included. Empty, with a log line, for
/// less than two points or a count below 2.
Points consistentDevidePointLine(const Points& points, int count);

/// Top left, top right, bottom right, bottom left.
Points rectCorners(double x, double y, double width, double height);

/// The box around the points. Not to be called with an empty list.
cv::Rect2d boundingRectOfPoints(const Points& points);

/// Points along the rim of the ellipse, one for `delta` degrees of the arc, the first again at the
/// end. The rectangle's angle counts in whole degrees. Empty where its geometry is no number.
Points ellipseOutline(const cv::RotatedRect& ellipse, int delta);

/// The outline's points rounded and held within a million pixels of the origin. The library fills
/// row by row from an outline's topmost point, so that points further out would keep it busy for
/// seconds.
std::vector<cv::Point> roundedContour(const Points& points);

/// Fills the outline in the mask. One of more than a thousand corners or 65536 rows that would take
/// more than 2^30 steps, the square of the number of edges that cross it for each row, could keep
/// the library busy for minutes and is left out.
void fillContourMask(cv::Mat& mask, const std::vector<cv::Point>& contour, const cv::Scalar& value);

/// The part of the picture under the rectangle at the rectangle's full size, `fill` where it leaves
/// the picture. A rectangle that ends left of or above the picture, has a negative size or is out
/// of all proportion to the picture throws a `cv::Exception`.
cv::Mat cropWithBorder(const cv::Mat& source, const cv::Rect& rect, const cv::Scalar& fill);

/// What a window of the size `target` shows at that zoom around `centre`, black outside the
/// picture. A window or a zoom that leaves nothing to show, or is out of all proportion to the
/// picture, throws a `cv::Exception`.
cv::Mat resizedCrop(const cv::Mat& source, cv::Point centre, cv::Size target, double zoom);

/// Scales so that the columns (`byWidth`) or the rows get exactly that length, by pyramid steps and
/// one linear step. Returns the factor. A length of 0 or the present one gives a deep copy. An
/// empty picture, a negative length, and one with which the picture would get too large throw a
/// `cv::Exception`.
double resizeToLength(const cv::Mat& source, cv::Mat& destination, int length, bool byWidth);

/// The dashes of a line along the pixels that it covers in the picture.
std::vector<Segment> dashSegments(const cv::Mat& image, const Points& points, int onLength,
                                  int offLength, bool closed);

void drawDashedPolyline(cv::Mat& image, const Points& points, const cv::Scalar& colour,
                        int onLength, int offLength, int thickness, bool closed);
void drawDashedCircle(cv::Mat& image, cv::Point2d centre, float radius, const cv::Scalar& colour,
                      int thickness);
void drawDashedEllipse(cv::Mat& image, const cv::RotatedRect& ellipse, const cv::Scalar& colour,
                       int thickness);

/// `cv::line`, which throws for a thickness below 1; such a line is drawn with thickness 1. Of a
/// line that reaches far out of the picture only the near part is followed.
void drawLine(cv::Mat& image, cv::Point from, cv::Point to, const cv::Scalar& colour,
              int thickness);

/// Pixels of a dash and of the gap behind it, along what is under design.
constexpr int kDashOn = 7;
constexpr int kDashOff = 3;

/// `cv::rectangle` with smooth edges. Of a box that reaches far out of the picture, which would be
/// followed row by row, only the near part is drawn.
void drawRectangle(cv::Mat& image, const cv::Rect& box, const cv::Scalar& colour, int thickness);

/// `cv::circle`, which throws for a negative radius. Such a circle is not drawn, nor is one that
/// reaches out further than a million pixels.
void drawCircle(cv::Mat& image, cv::Point centre, int radius, const cv::Scalar& colour,
                int thickness, int lineType = cv::LINE_AA);

/// `cv::ellipse`, which throws where a side is negative or no number. Such an ellipse is not drawn,
/// nor is one that reaches out further than a million pixels.
void drawEllipse(cv::Mat& image, const cv::RotatedRect& ellipse, const cv::Scalar& colour,
                 int thickness);

/// Rounds each coordinate to the nearest integer.
cv::Point rounded(cv::Point2d point);

}  // namespace TNVContour
