#pragma once

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <opencv2/core/types.hpp>

/// A mark of the gallery.
struct GalleryMark {
  /// Place of the picture in the project; file names may be alike.
  std::size_t picture = 0;
  std::string fileName;
  /// Counted from 1 on each picture.
  std::size_t number = 0;
  /// In pixels of the picture.
  cv::Rect2d box;
  cv::Size pictureSize;
  /// Number of the cut; -1 for a mark of which nothing can be cut out.
  int cut = -1;
};

/// A class with its marks, those of a picture one after the other.
struct GalleryClass {
  std::string label;
  std::vector<GalleryMark> marks;
};

/// What a page tells.
struct Gallery {
  std::string project;
  std::size_t pictures = 0;
  std::size_t marks = 0;
  std::size_t marksWithoutClass = 0;
  /// File names of pictures that cannot be read, whose marks stand in no class.
  std::vector<std::string> unreadable;
  std::vector<GalleryClass> classes;
};

/// A small picture, packed as JPEG; empty if there is none.
struct Thumbnail {
  std::string jpeg;
  cv::Size size;
};

/// Gives the thumbnail of a cut. A page asks for one at a time, so that they need not all be held.
using ThumbnailSource = std::function<Thumbnail(int cut)>;

std::string base64(std::string_view bytes);

/// Writes one page that needs nothing beside it. Names are hostile input and are escaped.
void writeGalleryPage(std::ostream& page, const Gallery& gallery,
                      const ThumbnailSource& thumbnails);
