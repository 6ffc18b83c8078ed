#pragma once

#include <opencv2/core.hpp>
#include <random>
#include <string>
#include <vector>

/// The kinds of parts that lie on the drawn pictures; also their class numbers.
enum class DemoPart { screw, nut, washer };

/// Class names in the order of the numbers.
const std::vector<std::string>& demoPartNames();

/// A drawn part and the box tight around its pixels.
struct DemoObject {
  DemoPart part = DemoPart::screw;
  cv::Rect box;
};

struct DemoPicture {
  cv::Mat image;
  std::vector<DemoObject> objects;
};

constexpr int demoWidth = 640;
constexpr int demoHeight = 480;

/// Draws small parts on a textured ground. The same number gives the same picture.
DemoPicture drawDemoPicture(unsigned int number);

/// Draws whole numbers and reals from raw outputs of the generator, so that they are the same
/// everywhere.
class DemoRandom {
 public:
  explicit DemoRandom(unsigned int seed) : generator(seed) {}

  /// From 0 to `count` - 1.
  int below(int count);

  /// From `low` to `high`.
  double between(double low, double high);

 private:
  std::mt19937 generator;
};
