#include "Compare.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <stdexcept>

namespace {

using Clock = std::chrono::steady_clock;

/// Pairs of runs are added for this long, but there are so many at least and at most.
constexpr std::chrono::milliseconds kTimeForAWorkload{1000};
constexpr std::size_t kFewestPairs = 5;
constexpr std::size_t kMostPairs = 2001;

double millisecondsOf(const Side& side) {
  side.prepare();
  const auto start = Clock::now();
  side.run();
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// The two sides take turns, and in going first, so that a slow moment of the machine meets both.
class Comparison {
 public:
  explicit Comparison(const Pair& compared) : pair(compared) {}

  void run(bool once) {
    const auto end = Clock::now() + kTimeForAWorkload;
    do {
      runOnce();
    } while (!once && product.size() < kMostPairs &&
             (product.size() < kFewestPairs || Clock::now() < end));
  }

  std::vector<double> product;
  std::vector<double> twin;

 private:
  void runOnce() {
    const bool productFirst = product.size() % 2 == 0;
    if (productFirst) product.push_back(millisecondsOf(pair.product));
    twin.push_back(millisecondsOf(pair.twin));
    if (!productFirst) product.push_back(millisecondsOf(pair.product));
  }

  const Pair& pair;
};

using Counters = benchmark::UserCounters;

void count(Counters& counters, const std::string& side, const std::vector<double>& values) {
  counters[side] = quantile(values, 0.5);
  counters[side + " low"] = quantile(values, 0.25);
  counters[side + " high"] = quantile(values, 0.75);
}

Times timesOf(const Counters& counters, const std::string& side) {
  return {counters.at(side), counters.at(side + " low"), counters.at(side + " high")};
}

Row rowOf(const benchmark::BenchmarkReporter::Run& run) {
  const std::string& name = run.run_name.function_name;
  const Workload workload{name.substr(0, name.rfind('/')), static_cast<int>(run.complexity_n),
                          run.counters.at("at most")};
  return {workload, timesOf(run.counters, "product"), timesOf(run.counters, "twin")};
}

/// Distance of the quartiles in per cent of the median.
double spread(const Times& times) {
  return 100 * (times.high - times.low) / times.median;
}

}  // namespace

double quantile(std::vector<double> values, double share) {
  std::sort(values.begin(), values.end());
  const double at = share * static_cast<double>(values.size() - 1);
  return values[static_cast<std::size_t>(std::lround(at))];
}

double exponent(const Row& smaller, const Row& larger, Times Row::*side) {
  return std::log((larger.*side).median / (smaller.*side).median) /
         std::log(static_cast<double>(larger.workload.size) / smaller.workload.size);
}

void addComparison(const Plan& plan, const Workload& workload, std::function<Pair()> make) {
  const auto body = [once = plan.smoke, workload, make = std::move(make)](benchmark::State& state) {
    for ([[maybe_unused]] auto iteration : state) {
      const Pair pair = make();
      Comparison comparison(pair);
      comparison.run(once);
      count(state.counters, "product", comparison.product);
      count(state.counters, "twin", comparison.twin);
    }
    state.counters["at most"] = workload.atMost;
    state.SetComplexityN(workload.size);
  };
  const std::string name = workload.name + "/" + std::to_string(workload.size);
  benchmark::RegisterBenchmark(name.c_str(), body)->Iterations(1);
}

void addFinding(const std::string& name, std::function<std::string()> find) {
  const auto body = [find = std::move(find)](benchmark::State& state) {
    for ([[maybe_unused]] auto iteration : state)
      state.SetLabel(find());
  };
  benchmark::RegisterBenchmark(name.c_str(), body)->Iterations(1);
}

void requireSame(bool same, const std::string& what) {
  if (!same) throw std::runtime_error("The two sides differ: " + what);
}

bool Table::ReportContext(const Context& /*context*/) {
  GetOutputStream() << "workload                                    product ms  spread    twin ms"
                       "  spread   ratio  growth (twin's)\n";
  return true;
}

void Table::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.report_label.empty()) {
      rows.push_back(rowOf(run));
      print(rows.back());
    } else {
      findings.push_back({run.run_name.function_name, run.report_label});
      GetOutputStream() << findings.back().name << "  " << findings.back().text << std::endl;
    }
  }
}

void Table::print(const Row& row) {
  char line[200];
  std::snprintf(line, sizeof line, "%-43s %10.3f %6.1f%% %10.3f %6.1f%% %7.3f",
                (row.workload.name + "/" + std::to_string(row.workload.size)).c_str(),
                row.product.median, spread(row.product), row.twin.median, spread(row.twin),
                row.ratio());
  GetOutputStream() << line;
  const Row* const last = rows.size() < 2 ? nullptr : &rows[rows.size() - 2];
  if (last && last->workload.name == row.workload.name) {
    std::snprintf(line, sizeof line, "  n^%.2f (n^%.2f)", exponent(*last, row, &Row::product),
                  exponent(*last, row, &Row::twin));
    GetOutputStream() << line;
  }
  if (row.workload.atMost > 0 && row.ratio() > row.workload.atMost) {
    std::snprintf(line, sizeof line, "  wanted: %.2f", row.workload.atMost);
    GetOutputStream() << line;
  }
  GetOutputStream() << std::endl;
}
