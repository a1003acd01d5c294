// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "measure.h"

#include <fmt/core.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace bench {

namespace {

double ThreadSeconds() {
  timespec now = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double SecondsOf(const std::function<void()> &run, size_t times) {
  const double start = ThreadSeconds();
  for (size_t i = 0; i < times; ++i) {
    run();
  }
  return (ThreadSeconds() - start) / static_cast<double>(times);
}

}  // namespace

Rounds Measure(const std::vector<Subject> &subjects, const Effort &effort) {
  double longest = 1e-9;
  for (const Subject &subject : subjects) {
    SecondsOf(subject.run, 1);
    longest = std::max(longest, SecondsOf(subject.run, 1));
  }
  const size_t times = 1 + static_cast<size_t>(effort.seconds / longest);
  Rounds rounds(subjects.size());
  for (int round = 0; round < effort.rounds; ++round) {
    for (size_t i = 0; i < subjects.size(); ++i) {
      rounds[i].push_back(SecondsOf(subjects[i].run, times));
    }
  }
  return rounds;
}

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

double MedianRatio(const std::vector<double> &over, const std::vector<double> &under) {
  std::vector<double> ratios;
  for (size_t i = 0; i < over.size(); ++i) {
    ratios.push_back(over[i] / under[i]);
  }
  return Median(ratios);
}

void Results::Add(const Row &row) {
  fmt::print("{:8} {:22} {:9} {:28} {:9.3f} {:9.3f} {:8} {:7.3f}\n", row.area, row.name, row.size,
             row.variant, row.ours, row.floor, row.unit, row.ratio);
  std::fflush(stdout);
  rows_.push_back(row);
}

void Results::AddRounds(const Row &like, const std::vector<Subject> &subjects, const Rounds &rounds,
                        size_t first_floor, double units) {
  const auto cheaper = [](const auto &a, const auto &b) { return Median(a) < Median(b); };
  const auto floor =
      std::min_element(rounds.begin() + static_cast<ptrdiff_t>(first_floor), rounds.end(), cheaper);
  Row row = like;
  row.floor = Median(*floor) / units * 1e9;
  for (size_t i = 0; i < subjects.size(); ++i) {
    row.name = subjects[i].name;
    row.ours = Median(rounds[i]) / units * 1e9;
    row.ratio = MedianRatio(rounds[i], *floor);
    Add(row);
  }
}

void Results::Write(const std::string &path) const {
  std::string text;
  for (const Row &row : rows_) {
    text += text.empty() ? "[\n" : ",\n";
    text += fmt::format(
        R"({{"area": "{}", "name": "{}", "size": {}, "variant": "{}", "unit": "{}", )"
        R"("ours": {:.4g}, "floor": {:.4g}, "ratio": {:.4g}}})",
        row.area, row.name, row.size, row.variant, row.unit, row.ours, row.floor, row.ratio);
  }
  std::ofstream file(path);
  file << text << "\n]\n";
  if (!file.flush()) {
    throw std::runtime_error(path + ": cannot be written");
  }
}

}  // namespace bench
