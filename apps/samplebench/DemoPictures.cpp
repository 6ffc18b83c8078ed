#include "DemoPictures.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "DemoGrounds.h"

namespace {

constexpr double pi = 3.14159265358979323846;

// A part lies in its own coordinates: origin at its centre, pixels, x along its length.
struct Placement {
  DemoPart part = DemoPart::screw;
  cv::Point2d center;
  double angle = 0;
  /// Half the greatest extent.
  double radius = 0;
  /// Proportions that differ from part to part, 0 to 1.
  double variant = 0;
  cv::Vec3f color;
};

// What a part is like at one place: how far inside (negative) or outside its edge, in pixels, and
// how brightly its surface shines.
struct Surface {
  double distance = 0;
  double brightness = 0;
};

double mixed(double from, double to, double share) {
  return from + (to - from) * share;
}

// Light along the edge of a plate: bright where the rim looks to the light (top left).
double rimLight(double x, double y, double angle, double insideBy, double rimWidth) {
  if (insideBy > rimWidth) return 0;
  const double towardsLight = std::cos(std::atan2(y, x) + angle + 0.75 * pi);
  return 0.35 * towardsLight * (1 - insideBy / rimWidth);
}

// Turned metal shines in two opposite sectors.
double turnedShine(double x, double y, double angle) {
  return 0.16 * std::cos(2 * (std::atan2(y, x) + angle - 0.3));
}

Surface washerAt(const Placement& washer, double x, double y) {
  const double hole = washer.radius * mixed(0.42, 0.6, washer.variant);
  const double r = std::hypot(x, y);
  const double distance = std::max(r - washer.radius, hole - r);
  const double rim = rimLight(x, y, washer.angle, washer.radius - r, 3) -
                     rimLight(x, y, washer.angle, r - hole, 3);
  const double turning = 0.03 * std::sin(r * 2.1);
  return {distance, 0.72 + turnedShine(x, y, washer.angle) + turning + rim};
}

// Distance to the edge of a hexagon whose corners lie on the radius.
double hexagonDistance(double x, double y, double radius) {
  double farthest = -radius;
  for (int side = 0; side < 3; ++side) {
    const double normal = pi / 6 + side * pi / 3;
    farthest = std::max(farthest, std::abs(x * std::cos(normal) + y * std::sin(normal)));
  }
  return farthest - radius * std::cos(pi / 6);
}

Surface nutAt(const Placement& nut, double x, double y) {
  const double hole = nut.radius * mixed(0.42, 0.52, nut.variant);
  const double face = nut.radius * 0.85;
  const double r = std::hypot(x, y);
  const double outside = hexagonDistance(x, y, nut.radius);
  const double distance = std::max(outside, hole - r);
  double brightness = 0.74 + turnedShine(x, y, nut.angle);
  if (r > face) brightness = 0.5 + 0.3 * std::cos(std::atan2(y, x) + nut.angle + 0.75 * pi);
  if (r < hole * 1.22) brightness = 0.42 + 0.12 * std::sin((r - hole) * 1.6 + std::atan2(y, x));
  return {distance, brightness + rimLight(x, y, nut.angle, -outside, 2.5)};
}

// Light on a cylinder or a dome; `across` goes from -1 to 1.
double roundLight(double across, double angle) {
  const double side = std::cos(angle) > 0 ? -0.35 : 0.35;
  const double turned = std::clamp(across - side, -1.0, 1.0);
  return 0.3 + 0.6 * std::sqrt(1 - turned * turned);
}

struct ScrewShape {
  double headLength;
  double headHalf;
  double shaftHalf;
  double tipLength;
  double pitch;
};

ScrewShape screwShape(const Placement& screw) {
  const double length = 2 * screw.radius;
  const double shaftHalf = length * mixed(0.055, 0.075, screw.variant);
  return {length * 0.14, shaftHalf * 2.1, shaftHalf, length * 0.16, std::max(4.0, length * 0.05)};
}

Surface screwHeadAt(const Placement& screw, const ScrewShape& shape, double along, double y) {
  const double dome = 1 - along / shape.headLength;
  const double r = std::hypot(std::max(dome, 0.0), y / shape.headHalf);
  const double distance = std::max((r - 1) * shape.headLength, along - shape.headLength);
  const bool isSlot = along < shape.headLength * 0.4 && std::abs(y) < shape.headHalf * 0.22;
  const double brightness = roundLight(y / shape.headHalf, screw.angle);
  return {distance, isSlot ? 0.25 : brightness + 0.08 * dome};
}

Surface screwShaftAt(const Placement& screw, const ScrewShape& shape, double along, double y) {
  const double length = 2 * screw.radius;
  const double taper = std::clamp((length - along) / shape.tipLength, 0.0, 1.0);
  const double half = shape.shaftHalf * taper;
  const double turn = 2 * pi * along / shape.pitch + 0.9 * y / shape.shaftHalf;
  const double thread = std::sin(turn);
  const double edge = half * (1 + 0.13 * thread);
  const double distance = std::max(std::abs(y) - edge, along - length);
  const double across = half > 0.5 ? y / half : 0;
  return {distance, roundLight(across, screw.angle) * (0.84 + 0.3 * thread)};
}

Surface screwAt(const Placement& screw, double x, double y) {
  const auto shape = screwShape(screw);
  const double along = x + screw.radius;
  return along < shape.headLength ? screwHeadAt(screw, shape, along, y)
                                  : screwShaftAt(screw, shape, along, y);
}

Surface surfaceAt(const Placement& part, double x, double y) {
  if (part.part == DemoPart::screw) return screwAt(part, x, y);
  if (part.part == DemoPart::nut) return nutAt(part, x, y);
  return washerAt(part, x, y);
}

// How much of each pixel the part covers, 0 to 1, and its colour there.
struct Drawing {
  cv::Mat1f coverage;
  cv::Mat3f color;
};

Drawing drawPart(const Placement& part, DemoRandom& random) {
  Drawing drawing{cv::Mat1f(demoHeight, demoWidth, 0.F), cv::Mat3f(demoHeight, demoWidth, 0.F)};
  const cv::Matx22d turn(std::cos(part.angle), std::sin(part.angle), -std::sin(part.angle),
                         std::cos(part.angle));
  for (int y = 0; y < demoHeight; ++y) {
    for (int x = 0; x < demoWidth; ++x) {
      const cv::Vec2d offset(x - part.center.x, y - part.center.y);
      if (cv::norm(offset) > part.radius + 3) continue;
      const auto own = turn * offset;
      const auto [distance, brightness] = surfaceAt(part, own[0], own[1]);
      const double grain = random.between(-0.03, 0.03);
      drawing.coverage(y, x) = static_cast<float>(std::clamp(0.5 - distance, 0.0, 1.0));
      drawing.color(y, x) = part.color * static_cast<float>(brightness + grain);
    }
  }
  return drawing;
}

void castShadow(cv::Mat3f& picture, const cv::Mat1f& coverage, double height) {
  const cv::Matx23d shift(1, 0, height, 0, 1, height);
  cv::Mat1f shadow;
  cv::warpAffine(coverage, shadow, shift, coverage.size());
  cv::GaussianBlur(shadow, shadow, {}, 1.0 + height * 0.7);
  for (int y = 0; y < picture.rows; ++y)
    for (int x = 0; x < picture.cols; ++x)
      picture(y, x) *= 1 - 0.6F * shadow(y, x);
}

void blend(cv::Mat3f& picture, const Drawing& drawing) {
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      const float share = drawing.coverage(y, x);
      picture(y, x) = picture(y, x) * (1 - share) + drawing.color(y, x) * share;
    }
  }
}

cv::Vec3f partColor(DemoRandom& random) {
  // Zinc, steel, brass, black oxide, copper; blue, green, red.
  static const std::vector<cv::Vec3f> metals{{1.00F, 0.98F, 0.95F},
                                             {0.86F, 0.82F, 0.80F},
                                             {0.42F, 0.76F, 0.93F},
                                             {0.42F, 0.40F, 0.40F},
                                             {0.42F, 0.58F, 0.90F}};
  const auto metal = metals[static_cast<std::size_t>(random.below(5))];
  return metal * static_cast<float>(random.between(0.92, 1.08));
}

double partRadius(DemoPart part, DemoRandom& random) {
  if (part == DemoPart::screw) return random.between(48, 85);
  if (part == DemoPart::nut) return random.between(20, 40);
  return random.between(18, 38);
}

Placement randomPlacement(DemoRandom& random) {
  Placement placement;
  placement.part = static_cast<DemoPart>(random.below(3));
  placement.radius = partRadius(placement.part, random);
  const double margin = placement.radius + 6;
  placement.center = {random.between(margin, demoWidth - margin),
                      random.between(margin, demoHeight - margin)};
  placement.angle = random.between(-pi, pi);
  placement.variant = random.between(0, 1);
  placement.color = partColor(random);
  return placement;
}

bool isClearOf(const Placement& placement, const std::vector<Placement>& others) {
  return std::all_of(others.begin(), others.end(), [&](const Placement& other) {
    return cv::norm(placement.center - other.center) > placement.radius + other.radius + 8;
  });
}

std::vector<Placement> scatterParts(DemoRandom& random) {
  const auto wanted = static_cast<std::size_t>(5 + random.below(5));
  std::vector<Placement> placements;
  for (int attempt = 0; attempt < 200 && placements.size() < wanted; ++attempt) {
    const auto placement = randomPlacement(random);
    if (isClearOf(placement, placements)) placements.push_back(placement);
  }
  return placements;
}

// Light falls off from one corner, the lens is a little soft, and the sensor has noise.
cv::Mat photographed(cv::Mat3f picture, DemoRandom& random) {
  const cv::Point2d lamp{random.between(0, demoWidth), random.between(0, demoHeight / 2.0)};
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      const double distance = std::hypot(x - lamp.x, y - lamp.y) / demoWidth;
      picture(y, x) *= static_cast<float>(1.1 - 0.35 * distance * distance);
    }
  }
  cv::GaussianBlur(picture, picture, {}, random.between(0.4, 0.9));
  const auto strength = static_cast<float>(random.between(0.008, 0.022));
  for (auto& pixel : picture)
    for (int channel = 0; channel < 3; ++channel)
      pixel[channel] +=
          strength * static_cast<float>(random.between(-1, 1) + random.between(-1, 1));
  cv::Mat image;
  picture.convertTo(image, CV_8UC3, 255);
  return image;
}

}  // namespace

const std::vector<std::string>& demoPartNames() {
  static const std::vector<std::string> names{"screw", "nut", "washer"};
  return names;
}

int DemoRandom::below(int count) {
  return static_cast<int>(generator() % static_cast<unsigned int>(count));
}

double DemoRandom::between(double low, double high) {
  return low + (high - low) * (static_cast<double>(generator()) / std::mt19937::max());
}

DemoPicture drawDemoPicture(unsigned int number) {
  DemoRandom random(1000 + number);
  DemoPicture picture;
  auto canvas = drawDemoGround(static_cast<int>(number % demoGroundCount), random);
  for (const auto& part : scatterParts(random)) {
    const auto drawing = drawPart(part, random);
    castShadow(canvas, drawing.coverage, part.part == DemoPart::washer ? 2 : 5);
    blend(canvas, drawing);
    picture.objects.push_back({part.part, cv::boundingRect(drawing.coverage >= 0.5F)});
  }
  picture.image = photographed(canvas, random);
  return picture;
}
