// The document about a run of all workloads.

#include "Report.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

#include <sys/statfs.h>
#include <unistd.h>
#include <opencv2/core/version.hpp>

#include "GrowthPlot.h"
#include "Texts.h"

namespace {

/// Growth is told of what was measured with so many records.
constexpr int kFrom = 10'000;
constexpr int kTo = 100'000;
constexpr double kLargestExponent = 1.1;

/// Three digits that count.
std::string milliseconds(double value) {
  return text(value, value < 1 ? 3 : value < 10 ? 2 : value < 100 ? 1 : 0);
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
  writeGrowthPlot(picture, series);
  finish(picture, "performance.svg");
  std::ofstream output = opened(directory + "/performance.md");
  output << "# Performance\n\n" << kHowToRead;
  writeMachine(output);
  output << "## What is asked for\n\n";
  writeRequired(output, table.rows);
  output << "\n## Growth\n\nThe exponent of the number of records that the time grows with from "
         << grouped(kFrom) << " to\n"
         << grouped(kTo)
         << " of them; 1 is linear. What grows faster beside a twin that does so too waits for "
            "memory: of\n"
            "so many records the smaller number lies in the caches of a processor, and the larger "
            "one does\n"
            "not. In the picture the library is the solid line, the twin the dashed one.\n\n";
  writeGrowth(output, series);
  output << "\n![Time over size, library and twin](performance.svg)\n\n## All workloads\n\n";
  writeRows(output, table.rows);
  output << "\n## What was found out\n\n| | |\n| --- | --- |\n";
  for (const Finding& finding : table.findings)
    output << "| " << finding.name << " | " << finding.text << " |\n";
  output << "\n```text" << fitQuality << "```\n";
  finish(output, "performance.md");
}
