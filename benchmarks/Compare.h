#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

/// One side of a comparison. What `prepare` does is not timed.
struct Side {
  std::function<void()> run;
  std::function<void()> prepare = [] {};
};

/// The library and its twin: bare calls that reach the same result.
struct Pair {
  Side product;
  Side twin;
};

/// What is compared. `name` tells what `size` counts.
struct Workload {
  std::string name;
  int size = 1;
  double atMost = 0;  ///< the ratio that is required; 0 where none is
};

/// How much is measured.
struct Plan {
  /// Each workload once, at its smallest size, to see that it still works.
  bool smoke = false;

  std::vector<int> sizes(const std::vector<int>& all) const {
    return smoke ? std::vector<int>{all.front()} : all;
  }
};

/// Median and quartiles in milliseconds.
struct Times {
  double median = 0;
  double low = 0;
  double high = 0;
};

struct Row {
  Workload workload;
  Times product;
  Times twin;

  double ratio() const { return product.median / twin.median; }
};

/// What is told by a text instead of by times.
struct Finding {
  std::string name;
  std::string text;
};

/// Registers a workload. `make` builds it when its turn has come, and what it captured lives until
/// all pairs of runs are done.
void addComparison(const Plan& plan, const Workload& workload, std::function<Pair()> make);

/// Registers a workload that is told by what it found out instead of by its time.
void addFinding(const std::string& name, std::function<std::string()> find);

/// A failed comparison of results ends the program: times of different work say nothing.
void requireSame(bool same, const std::string& what);

/// The value that this share of the values does not exceed. Not to be called without values.
double quantile(std::vector<double> values, double share);

/// The exponent of the size that the time grew with; 1 is linear.
double exponent(const Row& smaller, const Row& larger, Times Row::*side);

/// Prints one line for each workload, and how time grew since the last size of the same one.
class Table : public benchmark::BenchmarkReporter {
 public:
  explicit Table(std::ostream& stream) { SetOutputStream(&stream); }
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;

  std::vector<Row> rows;
  std::vector<Finding> findings;

 private:
  void print(const Row& row);
};

void addRenders(const Plan& plan);
void addEditing(const Plan& plan);
void addGalleries(const Plan& plan);
void addGenerations(const Plan& plan);
void addTemplates(const Plan& plan);
void addImageSets(const Plan& plan);
void addSaves(const Plan& plan);
void addLabels(const Plan& plan);
void addAssists(const Plan& plan);
void addHashes(const Plan& plan);
void addMemory(const Plan& plan);

/// Prints how far fits to clicked points are from the truth.
void printFitQuality(const Plan& plan, std::ostream& output);
