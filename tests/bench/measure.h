// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Measuring what may be compared: the processor time of this thread, of several subjects in turn.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Effort {
  int rounds;
  double seconds;     // about that long is each subject run in a round
  uint64_t size_max;  // nothing larger is measured
};

struct Subject {
  std::string name;
  std::function<void()> run;
};

// Returns the seconds of one run: of each subject, in each round. All are run equally often.
using Rounds = std::vector<std::vector<double>>;
Rounds Measure(const std::vector<Subject> &subjects, const Effort &effort);

double Median(std::vector<double> values);

// The median of the ratios within each round.
double MedianRatio(const std::vector<double> &over, const std::vector<double> &under);

// A line of the results. What a run costs is told for one of its units: a TCK period, a byte.
struct Row {
  std::string area;     // "scan"
  std::string name;     // what was measured: "play"
  uint64_t size;        // of one run: bits, bytes, cycles
  std::string variant;  // "random, mask"
  std::string unit;     // "ns/TCK"
  double ours;
  double floor;  // the same for what it is compared with
  double ratio;
};

// Collects rows, and prints each where one is made.
class Results {
 public:
  void Add(const Row &row);
  void Write(const std::string &path) const;  // as JSON; throws std::runtime_error

  // The subjects from the first floor on are the floor, in one form or another: the cheapest
  // counts. `units` of them are in one run.
  void AddRounds(const Row &like, const std::vector<Subject> &subjects, const Rounds &rounds,
                 size_t first_floor, double units);

 private:
  std::vector<Row> rows_;
};

}  // namespace bench
