#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <opencv2/core/types.hpp>

// What the pages of the program have in common. A page needs nothing beside it and runs no scripts.

/// The text as it may stand in HTML, in attributes, too.
std::string htmlText(std::string_view text);

/// A length or a size, no finer than the page shows it.
std::string pageNumber(double value);

/// Begins a page, up to its first heading. `style` is what it has beyond the common one.
void writePageHead(std::ostream& page, const std::string& title, std::string_view style = "");
/// Whether the file begins like a page that was written here.
bool isPageOfOurs(const std::string& file);

void writePageEnd(std::ostream& page);

/// A box in pixels of its picture.
struct PlacedBox {
  cv::Rect2d box;
  cv::Size picture;
};

/// Side lengths of squares of the same areas, of those boxes that have an area.
std::vector<double> sidesOf(const std::vector<cv::Rect2d>& boxes);

/// Plots of sizes, of aspect ratios and of the places on the picture, as inline SVG.
void writeBoxPlots(std::ostream& page, const std::vector<PlacedBox>& boxes);
