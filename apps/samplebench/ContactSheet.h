#pragma once

#include <vector>

#include <opencv2/core.hpp>

/// The picture scaled to fit into the cell, in its middle, on black.
cv::Mat fitted(const cv::Mat& picture, cv::Size cell);

/// Cells of one size side by side, row by row; black where the last row is not full.
cv::Mat contactSheet(const std::vector<cv::Mat>& cells, int columns);
