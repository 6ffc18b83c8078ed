#include "MarkBox.h"

cv::Rect2d boxInPixels(const WTNVMark& mark, cv::Size picture) {
  cv::Point2d centre;
  cv::Size2d size;
  mark.wGetRelCenter(centre.x, centre.y);
  mark.wGetRelSize(size.width, size.height, picture.width, picture.height);
  return {(centre.x - size.width / 2) * picture.width,
          (centre.y - size.height / 2) * picture.height, size.width * picture.width,
          size.height * picture.height};
}
