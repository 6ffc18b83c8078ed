// The document about a run of all workloads, with a picture of how times grow with size.

#include "Report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <sys/statfs.h>
#include <unistd.h>
#include <opencv2/core/version.hpp>

namespace {

/// Growth is told of what was measured with so many records.
constexpr int kFrom = 10'000;
constexpr int kTo = 100'000;
constexpr double kLargestExponent = 1.1;

std::string text(double value, int digits) {
  std::array<char, 40> buffer;
  std::snprintf(buffer.data(), buffer.size(), "%.*f", digits, value);
  return buffer.data();
}

/// Three digits that count.
std::string milliseconds(double value) {
  return text(value, value < 1 ? 3 : value < 10 ? 2 : value < 100 ? 1 : 0);
}

/// With a comma at the thousands.
std::string grouped(int number) {
  std::string digits = std::to_string(number);
  for (int at = static_cast<int>(digits.size()) - 3; at > 0; at -= 3)
    digits.insert(static_cast<std::size_t>(at), ",");
  return digits;
}

/// The first line of the system's file that begins so, behind its colon.
std::string systemValue(const char* path, const std::string& name) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(name)) return line.substr(std::min(line.find(": ") + 2, line.size()));
  }
  return "unknown";
}

std::string memory() {
  const double bytes =
      static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
  return text(bytes / (1 << 30), 1) + " GiB";
}

std::string temporaryFiles() {
  constexpr long kInMemory = 0x01021994;
  struct statfs system {};
  const std::string path = std::filesystem::temp_directory_path().string();
  const bool inMemory = statfs(path.c_str(), &system) == 0 && system.f_type == kInMemory;
  return inMemory ? "in memory" : "on disk";
}

std::string now() {
  const std::time_t seconds = std::time(nullptr);
  std::array<char, 40> buffer;
  std::strftime(buffer.data(), buffer.size(), "%Y-%m-%d %H:%M UTC", std::gmtime(&seconds));
  return buffer.data();
}

std::string load() {
  std::array<double, 3> averages{};
  getloadavg(averages.data(), static_cast<int>(averages.size()));
  return text(averages[0], 2) + ", " + text(averages[1], 2) + ", " + text(averages[2], 2);
}

void writeMachine(std::ostream& output) {
  output << "| | |\n| --- | --- |\n"
         << "| processor | " << systemValue("/proc/cpuinfo", "model name") << " |\n"
         << "| cores | " << std::thread::hardware_concurrency() << " |\n"
         << "| memory | " << memory() << " |\n"
         << "| compiler | " << TNV_COMPILER << " |\n"
         << "| OpenCV | " << CV_VERSION << " |\n"
         << "| temporary files | " << temporaryFiles() << " |\n"
         << "| command | `scripts/bench.sh` |\n"
         << "| date | " << now() << " |\n"
         << "| load average at the end, over 1, 5 and 15 minutes | " << load() << " |\n\n";
}

std::string timesText(const Times& times) {
  return milliseconds(times.median) + " | " + milliseconds(times.low) + " – " +
         milliseconds(times.high);
}

std::string verdict(bool reached) {
  return reached ? "yes" : "**no**";
}

void writeRequired(std::ostream& output, const std::vector<Row>& rows) {
  output
      << "| workload | size | at most | measured | reached |\n| --- | ---: | ---: | ---: | --- |\n";
  for (const Row& row : rows) {
    const double atMost = row.workload.atMost;
    if (atMost <= 0) continue;
    output << "| " << row.workload.name << " | " << grouped(row.workload.size) << " | "
           << text(atMost, 2) << " | " << text(row.ratio(), 2) << " | "
           << verdict(row.ratio() <= atMost) << " |\n";
  }
}

void writeRows(std::ostream& output, const std::vector<Row>& rows) {
  output << "| workload | size | library, ms | quartiles | twin, ms | quartiles | ratio |\n"
         << "| --- | ---: | ---: | ---: | ---: | ---: | ---: |\n";
  for (const Row& row : rows) {
    output << "| " << row.workload.name << " | " << grouped(row.workload.size) << " | "
           << timesText(row.product) << " | " << timesText(row.twin) << " | "
           << text(row.ratio(), 2) << " |\n";
  }
}

/// The rows of one workload, from its smallest size to its largest.
using Series = std::vector<Row>;

const Row* findSize(const Series& series, int size) {
  const auto row = std::find_if(series.begin(), series.end(),
                                [size](const Row& each) { return each.workload.size == size; });
  return row == series.end() ? nullptr : &*row;
}

/// The workloads that were measured over the sizes of which the growth is told.
std::vector<Series> growing(const std::vector<Row>& rows) {
  std::vector<Series> all;
  for (const Row& row : rows) {
    if (all.empty() || all.back().back().workload.name != row.workload.name) all.emplace_back();
    all.back().push_back(row);
  }
  std::erase_if(
      all, [](const Series& series) { return !findSize(series, kFrom) || !findSize(series, kTo); });
  return all;
}

void writeGrowth(std::ostream& output, const std::vector<Series>& all) {
  output << "| workload | library | twin | at most " << text(kLargestExponent, 1)
         << " |\n| --- | ---: | ---: | --- |\n";
  for (const Series& series : all) {
    const Row& from = *findSize(series, kFrom);
    const Row& to = *findSize(series, kTo);
    const double own = exponent(from, to, &Row::product);
    const double twin = exponent(from, to, &Row::twin);
    output << "| " << from.workload.name << " | " << text(own, 2) << " | " << text(twin, 2) << " | "
           << verdict(own <= kLargestExponent)
           << (own > kLargestExponent && twin > kLargestExponent ? ", nor the twin" : "") << " |\n";
  }
}

// The picture.

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

void writePicture(std::ostream& output, const std::vector<Series>& all) {
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

constexpr auto kHowToRead =
    R"(Each workload stands beside its twin, a loop of bare calls of OpenCV, OpenSSL or the standard
library that reaches the same result; where files or pictures come out, those of both sides
are compared before anything is measured. Both run in one process and take turns, for about a
second and five times at least, so that a slow moment of the machine meets both. Times are
medians in milliseconds with the quartiles beside them; the ratio is that of the medians, and
below 1 the library is the faster one. OpenCV itself is held to one thread on both sides; the
twin of a workload on two threads is the loop on one. Pictures are read from and files written
to the place of temporary files. A ratio says more than a time, which holds for this machine
and this moment.

)";

std::ofstream opened(const std::string& path) {
  std::ofstream file(path);
  if (!file) throw std::runtime_error("'" + path + "' cannot be written");
  return file;
}

void finish(std::ofstream& file, const std::string& name) {
  file.close();
  if (!file) throw std::runtime_error("'" + name + "' was not written whole");
}

}  // namespace

void writeReport(const std::string& directory, const Table& table, const std::string& fitQuality) {
  const std::vector<Series> series = growing(table.rows);
  std::ofstream picture = opened(directory + "/performance.svg");
  writePicture(picture, series);
  finish(picture, "performance.svg");
  std::ofstream output = opened(directory + "/performance.md");
  output << "# Performance\n\n" << kHowToRead;
  writeMachine(output);
  output << "## What is asked for\n\n";
  writeRequired(output, table.rows);
  output << "\n## Growth\n\nThe exponent of the number of records that the time grows with from "
         << grouped(kFrom) << " to\n"
         << grouped(kTo)
         << " of them; 1 is linear. In the picture the library is the solid line, the twin the\n"
            "dashed one.\n\n";
  writeGrowth(output, series);
  output << "\n![Time over size, library and twin](performance.svg)\n\n## All workloads\n\n";
  writeRows(output, table.rows);
  output << "\n## What was found out\n\n| | |\n| --- | --- |\n";
  for (const Finding& finding : table.findings)
    output << "| " << finding.name << " | " << finding.text << " |\n";
  output << "\n```text" << fitQuality << "```\n";
  finish(output, "performance.md");
}
