#include <opencv2/imgcodecs.hpp>

#include "fuzz/Fuzzing.h"
#include "tools/TNVToolDarknetViewer.h"

/// The label text beside a picture, whose boxes are drawn.
void fuzz::run(std::string_view input) {
  static const bool hasPicture =
      cv::imwrite(place() / "sample.png", cv::Mat(48, 64, CV_8UC3, cv::Scalar(40, 80, 120)));
  require(hasPicture, "there is a picture");
  place().write("sample.txt", std::string(input));
  TNVToolDarknetViewer viewer;
  viewer.setImageDirectory(place().path());
  require(viewer.readImages().size() == 1, "the sample is found");
  require(viewer.selectImage("sample"), "the sample is shown");
  require(viewer.selected.image.size() == cv::Size(64, 48), "the picture keeps its size");
}
