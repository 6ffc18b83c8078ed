#include "Compare.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <stdexcept>

namespace {

double secondsOf(const Side& side) {
  side.prepare();
  const auto start = std::chrono::steady_clock::now();
  side.run();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Distance of the quartiles in per cent of the median.
double spread(const std::vector<double>& values) {
  return 100 * (quantile(values, 0.75) - quantile(values, 0.25)) / quantile(values, 0.5);
}

/// The two sides take turns, and in going first, so that a slow moment of the machine meets both.
void compare(benchmark::State& state, const Pair& pair) {
  std::vector<double> product;
  std::vector<double> twin;
  for ([[maybe_unused]] auto iteration : state) {
    const bool productFirst = product.size() % 2 == 0;
    if (productFirst) product.push_back(secondsOf(pair.product));
    twin.push_back(secondsOf(pair.twin));
    if (!productFirst) product.push_back(secondsOf(pair.product));
    state.SetIterationTime(product.back());
  }
  state.counters["product_ms"] = 1e3 * quantile(product, 0.5);
  state.counters["product_spread"] = spread(product);
  state.counters["twin_ms"] = 1e3 * quantile(twin, 0.5);
  state.counters["twin_spread"] = spread(twin);
  state.counters["ratio"] = quantile(product, 0.5) / quantile(twin, 0.5);
}

using Run = benchmark::BenchmarkReporter::Run;

std::string stem(const Run& run) {
  const std::string& name = run.run_name.function_name;
  return name.substr(0, name.rfind('/'));
}

double counter(const Run& run, const char* name) {
  return run.counters.at(name);
}

/// The exponent of the size that the time grew with; 1 is linear.
double exponent(const Run& smaller, const Run& larger, const char* name) {
  return std::log(counter(larger, name) / counter(smaller, name)) /
         std::log(static_cast<double>(larger.complexity_n) /
                  static_cast<double>(smaller.complexity_n));
}

}  // namespace

double quantile(std::vector<double> values, double share) {
  std::sort(values.begin(), values.end());
  const double at = share * static_cast<double>(values.size() - 1);
  return values[static_cast<std::size_t>(std::lround(at))];
}

void addComparison(const Plan& plan, const std::string& name, int size, int repeats,
                   std::function<Pair()> make) {
  const auto body = [size, make = std::move(make)](benchmark::State& state) {
    compare(state, make());
    state.SetComplexityN(size);
  };
  benchmark::RegisterBenchmark((name + "/" + std::to_string(size)).c_str(), body)
      ->Iterations(plan.smoke ? 1 : repeats)
      ->UseManualTime();
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
  GetOutputStream() << "workload                               product ms  spread    twin ms"
                       "  spread   ratio  growth (twin's)\n";
  return true;
}

void Table::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (!run.report_label.empty()) {
      GetOutputStream() << run.run_name.function_name << "  " << run.report_label << std::endl;
      continue;
    }
    char line[200];
    std::snprintf(line, sizeof line, "%-38s %10.3f %6.1f%% %10.3f %6.1f%% %7.3f",
                  run.run_name.function_name.c_str(), counter(run, "product_ms"),
                  counter(run, "product_spread"), counter(run, "twin_ms"),
                  counter(run, "twin_spread"), counter(run, "ratio"));
    GetOutputStream() << line;
    if (last.complexity_n > 0 && stem(last) == stem(run)) {
      std::snprintf(line, sizeof line, "  n^%.2f (n^%.2f)", exponent(last, run, "product_ms"),
                    exponent(last, run, "twin_ms"));
      GetOutputStream() << line;
    }
    GetOutputStream() << std::endl;
    last = run;
  }
}
