#include "DemoGrounds.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

namespace {

const cv::Size pictureSize(demoWidth, demoHeight);

cv::Mat1f whiteNoise(cv::Size size, DemoRandom& random) {
  cv::Mat1f noise(size);
  for (auto& value : noise)
    value = static_cast<float>(random.between(-1, 1));
  return noise;
}

// Several sizes of detail, each half as strong as the one before.
cv::Mat1f cloudNoise(int cell, DemoRandom& random) {
  cv::Mat1f sum(pictureSize, 0.F);
  for (double strength = 0.5; cell >= 2; cell /= 2, strength /= 2)
    sum += strength * smoothNoise(pictureSize, {cell, cell}, random);
  return sum;
}

cv::Mat3f colored(const cv::Mat1f& brightness, const cv::Vec3f& color) {
  cv::Mat3f picture(brightness.size());
  for (int y = 0; y < picture.rows; ++y)
    for (int x = 0; x < picture.cols; ++x)
      picture(y, x) = color * brightness(y, x);
  return picture;
}

cv::Mat3f felt(DemoRandom& random) {
  static const std::vector<cv::Vec3f> colors{
      {0.42F, 0.50F, 0.30F}, {0.55F, 0.38F, 0.26F}, {0.36F, 0.38F, 0.60F}, {0.62F, 0.66F, 0.68F}};
  const auto color = colors[static_cast<std::size_t>(random.below(4))];
  const cv::Mat1f fibres = smoothNoise(pictureSize, {3, 2}, random);
  const cv::Mat1f clouds = cloudNoise(160, random);
  return colored(cv::Mat1f(1 + 0.15 * clouds + 0.14 * fibres), color);
}

// Year rings, far stretched along the plank, warped by slow noise.
cv::Mat3f wood(DemoRandom& random) {
  const auto warp = smoothNoise(pictureSize, {320, 70}, random);
  const auto pores = smoothNoise(pictureSize, {60, 2}, random);
  const auto rings = random.between(0.09, 0.16);
  cv::Mat1f brightness(pictureSize);
  for (int y = 0; y < demoHeight; ++y) {
    for (int x = 0; x < demoWidth; ++x) {
      const double phase = rings * y + 5.0 * static_cast<double>(warp(y, x)) + 0.003 * x;
      const double ring = std::pow(0.5 + 0.5 * std::sin(phase), 2.0);
      brightness(y, x) = static_cast<float>(0.82 + 0.2 * ring + 0.09 * pores(y, x));
    }
  }
  const auto warmth = static_cast<float>(random.between(0.85, 1.1));
  return colored(brightness, cv::Vec3f(0.30F, 0.47F, 0.68F) * warmth);
}

cv::Mat3f brushedMetal(DemoRandom& random) {
  cv::Mat1f streaks = whiteNoise(pictureSize, random);
  cv::blur(streaks, streaks, {121, 1}, {-1, -1}, cv::BORDER_REFLECT);
  const auto shine = random.between(0, demoWidth);
  cv::Mat1f brightness(pictureSize);
  for (int y = 0; y < demoHeight; ++y) {
    for (int x = 0; x < demoWidth; ++x) {
      const double distance = (x - shine) / 240;
      brightness(y, x) =
          static_cast<float>(0.40 + 0.16 * std::exp(-distance * distance)) + 0.7F * streaks(y, x);
    }
  }
  return colored(brightness, {1.06F, 1.0F, 0.95F});
}

void scatterSpecks(cv::Mat1f& brightness, DemoRandom& random) {
  for (int i = 0; i < 500; ++i) {
    const cv::Point center{random.below(demoWidth), random.below(demoHeight)};
    const double value = random.between(0.3, 0.8);
    cv::circle(brightness, center, random.below(3) / 2, value, cv::FILLED, cv::LINE_AA);
  }
}

cv::Mat3f concrete(DemoRandom& random) {
  const auto clouds = cloudNoise(128, random);
  const auto grains = smoothNoise(pictureSize, {2, 2}, random);
  cv::Mat1f brightness(0.58 + 0.16 * clouds + 0.05 * grains);
  scatterSpecks(brightness, random);
  cv::GaussianBlur(brightness, brightness, {}, 0.7);
  return colored(brightness, {0.96F, 1.0F, 1.02F});
}

}  // namespace

cv::Mat1f smoothNoise(cv::Size size, cv::Size cell, DemoRandom& random) {
  cv::Mat1f noise =
      whiteNoise({size.width / cell.width + 3, size.height / cell.height + 3}, random);
  cv::resize(noise, noise, {noise.cols * cell.width, noise.rows * cell.height}, 0, 0,
             cv::INTER_CUBIC);
  return noise(cv::Rect({cell.width, cell.height}, size)).clone();
}

cv::Mat3f drawDemoGround(int kind, DemoRandom& random) {
  switch (kind) {
    case 0:
      return felt(random);
    case 1:
      return wood(random);
    case 2:
      return brushedMetal(random);
    default:
      return concrete(random);
  }
}
