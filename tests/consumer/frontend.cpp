// A complete small front end: it shows each picture of a project and marks what the user clicks.
#include <TNV_SampleBenchNative/TNV_SampleBenchNative.h>

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

namespace {

bool outdated = true;

void show(WTNVHandlerImageView& view, const std::string& file) {
  unsigned char* pixels = nullptr;
  int width = 0, height = 0, channels = 0;
  view.wGetARImage(&pixels, &width, &height, &channels);
  if (pixels == nullptr) return;
  std::ofstream picture(file, std::ios::binary);
  picture << "P6\n" << width << ' ' << height << "\n255\n";
  // The pixels belong to the view: used up here, before any other call.
  for (int i = 0; i < width * height; ++i, pixels += channels)
    picture << pixels[2] << pixels[1] << pixels[0];
  outdated = false;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return std::cerr << "usage: frontend PROJECTS NAME PICTURE.ppm\n", 2;
  WTNVProject project(argv[2], argv[1], "", "");
  if (!project.wLoad()) return std::cerr << "there is no such project\n", 1;
  const auto classes = project.wGetDNNClasses();
  {
    WTNVMainProcess process(&project, nullptr);
    auto pictures = process.getHndTrainSet();
    auto marks = process.getHndMark();
    auto view = process.getHndImageView();
    // Events carry no data and may come many at a time: note that there is something to draw, and
    // draw once when the calls are through.
    const auto onChange = [] { outdated = true; };
    pictures.setCBTrainSetChanged(onChange);
    marks.setCBMarkDesigned(onChange);
    marks.setCBMarkAdded(onChange);

    // Two clicks, relative to the picture, a line: "0.1 0.2 0.4 0.5". An empty line goes on.
    for (std::string line; std::getline(std::cin, line);) {
      std::istringstream clicks(line);
      double x = 0, y = 0, x2 = 0, y2 = 0;
      if (clicks >> x >> y >> x2 >> y2) {
        marks.designMark({{x, y}, {x2, y2}}, "Rect", classes);
        marks.addDesignedMark();
      } else {
        pictures.wSetTrainSetForward(1);
      }
      if (outdated) show(view, argv[3]);
    }
  }  // handlers go before the process, the process before the project
  return project.wUpdate(false) ? 0 : 1;
}
