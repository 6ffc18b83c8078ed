#include "HtmlPage.h"

#include <algorithm>
#include <cmath>
#include <fstream>

#include "GalleryStatistics.h"
#include "Numbers.h"

namespace {

// Ranges of the plots: a common one to start with, so that classes can be compared, and the most.
constexpr Octaves leastSides{3, 9};
constexpr Octaves mostSides{0, 15};
constexpr Octaves leastAspects{-2, 2};
constexpr Octaves mostAspects{-6, 6};

// Sizes of the plots in units of their own.
constexpr double plotWidth = 300;
constexpr double plotHeight = 96;
constexpr double labelHeight = 16;
constexpr double placesSide = 112;

// No page of another make is likely to begin with all of this.
constexpr std::string_view pageBegin =
    "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
    "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
    "img-src data:; style-src 'unsafe-inline'\">\n";

constexpr auto commonStyle = R"(
:root { color-scheme: light dark; --ink: #1d2024; --soft: #636b74; --line: #dcdfe3; --ground: #fff;
  --tile: #f3f4f6; --accent: #1f5fbf; --warn: #a8430a; --bar: #5b8bd0; }
@media (prefers-color-scheme: dark) { :root { --ink: #e4e6e9; --soft: #9aa2ac; --line: #363b42;
  --ground: #16181b; --tile: #22262b; --accent: #86b3f5; --warn: #f0a070; --bar: #5f8fd6; } }
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 78rem; padding: 2rem 1.5rem 4rem; background: var(--ground);
  color: var(--ink); font: 15px/1.5 system-ui, "Segoe UI", Roboto, "Helvetica Neue", sans-serif; }
h1 { margin: 0 0 1rem; font-size: 1.7rem; line-height: 1.2; }
h2 { margin: 2.5rem 0 .75rem; font-size: 1.2rem; overflow-wrap: anywhere; }
h1, h2, th { font-weight: 600; }
small { color: var(--soft); font-size: .85rem; font-weight: 400; }
a { color: var(--accent); text-decoration: none; }
a:hover { text-decoration: underline; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; }
th, td { padding: .25rem 1.5rem .25rem 0; border-bottom: 1px solid var(--line); text-align: right; }
th:first-child, td:first-child { text-align: left; overflow-wrap: anywhere; }
.totals th:first-child, .totals td:first-child { text-align: right; }
thead th { color: var(--soft); font-size: .85rem; }
.totals { margin-bottom: 1rem; }
details { margin: .4rem 0; }
summary { cursor: pointer; }
.found > summary { color: var(--warn); font-weight: 600; }
.links { display: grid; grid-template-columns: repeat(auto-fill, minmax(18rem, 1fr)); gap: 0 1.5rem;
  margin: .4rem 0 1rem; padding: 0; list-style: none; font-size: .87rem; }
.links li { overflow-wrap: anywhere; }
.none { color: var(--soft); margin: .4rem 0; }
.plots { display: flex; flex-wrap: wrap; gap: 1rem 2.5rem; margin: 0 0 1rem; }
.plots figure { margin: 0; }
.plots figcaption { color: var(--soft); font-size: .8rem; }
svg { display: block; height: 7rem; width: auto; max-width: 100%; }
svg text { fill: var(--soft); font-size: 11px; text-anchor: middle; }
.bar { fill: var(--bar); }
.axis, .frame { fill: none; stroke: var(--line); }
.dots { fill: none; stroke: var(--bar); stroke-width: 2.4; stroke-linecap: round; }
)";

// Three digits tell all edges apart.
std::string axisText(double exponent) {
  const auto value = std::exp2(exponent);
  const auto unit = std::pow(10.0, std::floor(std::log10(value)) - 2);
  return value >= 100 ? numberText(std::round(value))
                      : numberText(std::round(std::round(value / unit) * unit * 1e6) / 1e6);
}

void writeBars(std::ostream& page, const std::vector<std::size_t>& bins, Octaves range) {
  const auto step = plotWidth / static_cast<double>(bins.size());
  const auto most = *std::max_element(bins.begin(), bins.end());
  for (std::size_t i = 0; i < bins.size(); ++i) {
    if (bins[i] == 0) continue;
    // A single one among thousands is seen, too.
    const auto height =
        std::max(1.5, plotHeight * static_cast<double>(bins[i]) / static_cast<double>(most));
    const auto exponent = range.low + static_cast<double>(i) / binsPerOctave;
    page << "<rect class=\"bar\" x=\"" << pageNumber(static_cast<double>(i) * step + 0.5)
         << "\" y=\"" << pageNumber(plotHeight - height) << "\" width=\"" << pageNumber(step - 1)
         << "\" height=\"" << pageNumber(height) << "\"><title>" << axisText(exponent) << " to "
         << axisText(exponent + 1.0 / binsPerOctave) << ": " << bins[i] << "</title></rect>\n";
  }
}

std::string tickText(int exponent) {
  return exponent < 0 ? "1/" + std::to_string(1 << -exponent) : std::to_string(1 << exponent);
}

void writeTicks(std::ostream& page, Octaves range) {
  const auto octave = plotWidth / (range.high - range.low);
  for (auto exponent = range.low + 1; exponent < range.high; ++exponent)
    page << "<text x=\"" << pageNumber((exponent - range.low) * octave) << "\" y=\""
         << plotHeight + labelHeight - 3 << "\">" << tickText(exponent) << "</text>\n";
}

void writePlot(std::ostream& page, const std::string& caption, const std::vector<double>& values,
               Octaves least, Octaves most) {
  const auto range = octavesAround(values, least, most);
  page << "<figure><svg viewBox=\"0 0 " << plotWidth << ' ' << plotHeight + labelHeight
       << "\" role=\"img\" aria-label=\"" << caption << "\">\n";
  writeBars(page, logBins(values, range), range);
  page << "<path class=\"axis\" d=\"M0 " << plotHeight << "H" << plotWidth << "\"/>\n";
  writeTicks(page, range);
  page << "</svg><figcaption>" << caption << "</figcaption></figure>\n";
}

void writeDot(std::ostream& page, const PlacedBox& placed) {
  const auto x = (placed.box.x + placed.box.width / 2) / placed.picture.width;
  const auto y = (placed.box.y + placed.box.height / 2) / placed.picture.height;
  if (!std::isfinite(x) || !std::isfinite(y)) return;
  page << 'M' << pageNumber(std::clamp(x, 0.0, 1.0) * placesSide) << ' '
       << pageNumber(std::clamp(y, 0.0, 1.0) * placesSide) << "h0";
}

// One path for all dots keeps the page small; a stroke of no length is a dot.
void writePlaces(std::ostream& page, const std::vector<PlacedBox>& boxes) {
  page << "<figure><svg viewBox=\"0 0 " << placesSide << ' ' << placesSide
       << "\" role=\"img\" aria-label=\"Centres on the picture\">\n<rect class=\"frame\" "
          "x=\"0.5\" "
          "y=\"0.5\" width=\""
       << placesSide - 1 << "\" height=\"" << placesSide - 1 << "\"/>\n<path class=\"dots\" d=\"";
  for (const auto& box : boxes)
    writeDot(page, box);
  page << "\"/>\n</svg><figcaption>Centres on the picture</figcaption></figure>\n";
}

}  // namespace

std::string htmlText(std::string_view text) {
  std::string result;
  for (const char character : text) {
    switch (character) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\'':
        result += "&#39;";
        break;
      default:
        result += character;
    }
  }
  return result;
}

std::string pageNumber(double value) {
  return numberText(std::round(value * 10) / 10);
}

void writePageHead(std::ostream& page, const std::string& title, std::string_view style) {
  const auto text = htmlText(title);
  page << pageBegin
       << "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>"
       << text << "</title>\n<style>" << commonStyle << style << "</style>\n</head>\n<body>\n<h1>"
       << text << "</h1>\n";
}

bool isPageOfOurs(const std::string& file) {
  std::string begin(pageBegin.size(), '\0');
  std::ifstream(file, std::ios::binary).read(begin.data(), std::ssize(begin));
  return begin == pageBegin;
}

void writePageEnd(std::ostream& page) {
  page << "</body>\n</html>\n";
}

std::vector<double> sidesOf(const std::vector<cv::Rect2d>& boxes) {
  std::vector<double> sides;
  for (const auto& box : boxes)
    if (hasArea(box)) sides.push_back(std::sqrt(box.width) * std::sqrt(box.height));
  return sides;
}

void writeBoxPlots(std::ostream& page, const std::vector<PlacedBox>& boxes) {
  std::vector<cv::Rect2d> plain;
  std::vector<double> aspects;
  for (const auto& [box, picture] : boxes) {
    plain.push_back(box);
    if (hasArea(box)) aspects.push_back(box.width / box.height);
  }
  writePlot(page, "Side of the box in pixels, √(width × height)", sidesOf(plain), leastSides,
            mostSides);
  writePlot(page, "Width by height of the box", aspects, leastAspects, mostAspects);
  writePlaces(page, boxes);
}
