#include "GrowthPlot.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <utility>

#include "Texts.h"

namespace {

constexpr int kPanelWidth = 270;
constexpr int kPanelHeight = 210;
constexpr int kColumns = 3;

/// A field of the picture: sizes to the right and milliseconds upwards, both as powers of ten.
struct Panel {
  static constexpr int kLeft = 62;
  static constexpr int kTop = 28;
  static constexpr int kRight = kPanelWidth - 24;
  static constexpr int kBottom = kPanelHeight - 30;

  double x(double size) const { return place(std::log10(size), columns, kLeft, kRight); }
  double y(double time) const { return place(std::log10(time), decades, kBottom, kTop); }

  static double place(double value, const std::pair<int, int>& range, int start, int end) {
    return start + (value - range.first) / (range.second - range.first) * (end - start);
  }

  std::pair<int, int> columns;
  std::pair<int, int> decades;
};

/// The powers of ten around all of the values.
std::pair<int, int> powersAround(const std::vector<double>& values) {
  const auto [least, most] = std::minmax_element(values.begin(), values.end());
  const int low = static_cast<int>(std::floor(std::log10(*least)));
  return {low, std::max(low + 1, static_cast<int>(std::ceil(std::log10(*most))))};
}

Panel panelOf(const Series& series) {
  std::vector<double> sizes;
  std::vector<double> times;
  for (const Row& row : series) {
    sizes.push_back(row.workload.size);
    times.insert(times.end(), {row.product.median, row.twin.median});
  }
  return {powersAround(sizes), powersAround(times)};
}

void writeLine(std::ostream& output, double x1, double y1, double x2, double y2) {
  output << "<line x1=\"" << text(x1, 1) << "\" y1=\"" << text(y1, 1) << "\" x2=\"" << text(x2, 1)
         << "\" y2=\"" << text(y2, 1) << "\"/>\n";
}

void writeText(std::ostream& output, double x, double y, const char* anchor,
               const std::string& content) {
  output << "<text x=\"" << text(x, 1) << "\" y=\"" << text(y, 1) << "\" text-anchor=\"" << anchor
         << "\">" << content << "</text>\n";
}

void writeGrid(std::ostream& output, const Panel& panel) {
  for (int power = panel.columns.first; power <= panel.columns.second; ++power) {
    const double x = panel.x(std::pow(10, power));
    writeLine(output, x, Panel::kTop, x, Panel::kBottom);
    writeText(output, x, Panel::kBottom + 16, "middle",
              grouped(static_cast<int>(std::lround(std::pow(10, power)))));
  }
  for (int power = panel.decades.first; power <= panel.decades.second; ++power) {
    const double y = panel.y(std::pow(10, power));
    writeLine(output, Panel::kLeft, y, Panel::kRight, y);
    writeText(output, Panel::kLeft - 6, y + 4, "end",
              text(std::pow(10, power), std::max(0, -power)) + " ms");
  }
}

void writeCurve(std::ostream& output, const Panel& panel, const Series& series, const char* kind,
                Times Row::*side) {
  output << "<polyline class=\"" << kind << "\" points=\"";
  for (const Row& row : series)
    output << text(panel.x(row.workload.size), 1) << ',' << text(panel.y((row.*side).median), 1)
           << ' ';
  output << "\"/>\n";
}

void writePanel(std::ostream& output, const Series& series, int number) {
  const Panel panel = panelOf(series);
  output << "<g transform=\"translate(" << number % kColumns * kPanelWidth << ' '
         << number / kColumns * kPanelHeight << ")\">\n";
  output << "<text class=\"title\" x=\"" << Panel::kLeft << "\" y=\"18\">"
         << series.front().workload.name << "</text>\n";
  writeGrid(output, panel);
  writeCurve(output, panel, series, "twin", &Row::twin);
  writeCurve(output, panel, series, "library", &Row::product);
  output << "</g>\n";
}

}  // namespace

void writeGrowthPlot(std::ostream& output, const std::vector<Series>& all) {
  const int count = static_cast<int>(all.size());
  const int rows = (count + kColumns - 1) / kColumns;
  output << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << kColumns * kPanelWidth
         << ' ' << rows * kPanelHeight << "\" font-family=\"sans-serif\" font-size=\"10\">\n"
         << "<style>line{stroke:#ddd} text{fill:#555} .title{fill:#222;font-size:13px}"
            " polyline{fill:none;stroke-width:2} .library{stroke:#1f6fb4}"
            " .twin{stroke:#c0562b;stroke-dasharray:5 3}</style>\n"
         << "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
  for (int i = 0; i < count; ++i)
    writePanel(output, all[static_cast<std::size_t>(i)], i);
  output << "</svg>\n";
}
