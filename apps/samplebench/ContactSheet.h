#pragma once

#include <vector>

#include <opencv2/core.hpp>

/// What is seen between pictures.
inline const cv::Scalar sheetGround(240, 240, 240);

/// Where in the cell a picture of that size lies.
cv::Rect fittedPlace(cv::Size picture, cv::Size cell);

/// The picture scaled to fit into the cell, in its middle.
cv::Mat fitted(const cv::Mat& picture, cv::Size cell);

/// Cells of one size side by side, row by row; the ground where the last row is not full.
cv::Mat contactSheet(const std::vector<cv::Mat>& cells, int columns);
