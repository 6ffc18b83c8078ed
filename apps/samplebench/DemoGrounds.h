#pragma once

#include <opencv2/core.hpp>

#include "DemoPictures.h"

/// How many kinds of ground there are: felt, wood, brushed metal, concrete.
constexpr int demoGroundCount = 4;

/// Draws a ground; reals from 0 to 1, blue, green, red.
cv::Mat3f drawDemoGround(int kind, DemoRandom& random);

/// Smooth noise between -1 and 1, roughly, with details of `cell` pixels.
cv::Mat1f smoothNoise(cv::Size size, cv::Size cell, DemoRandom& random);
