#include "Report.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace VELTRO::KELVO::Bench {

namespace {

constexpr int kNameWidth = 40;
constexpr std::size_t kTableWidth = 131;

struct Spread {
  explicit Spread(const std::vector<double>& values)
      : median(Median(values)),
        min(*std::min_element(values.begin(), values.end())),
        max(*std::max_element(values.begin(), values.end())) {}

  double median;
  double min;
  double max;
};

std::vector<double> PairRatios(const Series& row, const Series& reference) {
  std::vector<double> ratios;
  const std::size_t pairs = std::min(row.figures.size(), reference.figures.size());
  for (std::size_t i = 0; i < pairs; ++i) ratios.push_back(row.figures[i] / reference.figures[i]);
  return ratios;
}

void PrintSeries(const std::string& label, const Series& series, int cores) {
  const Spread spread(series.figures);
  const int decimals = spread.median < 1000 ? 2 : 0;
  std::printf("%-*s %5d %12.*f %12.*f %12.*f %-7s", kNameWidth, label.c_str(), cores, decimals, spread.median,
              decimals, spread.min, decimals, spread.max, series.unit.c_str());
}

const RowResult* FindReference(const std::vector<RowResult>& results, const RowResult& row) {
  for (const RowResult& other : results) {
    const bool isSame = !row.reference.empty() && other.name == row.reference && other.cores == row.cores;
    if (isSame && other.failure.empty()) return &other;
  }
  return nullptr;
}

void PrintRatios(const std::vector<double>& ratios) {
  const Spread spread(ratios);
  std::printf(" %7.3f %7.3f %7.3f", spread.median, spread.min, spread.max);
}

bool PrintVerdict(const Goal& goal, const std::vector<double>& ratios) {
  const bool isMet = goal.IsMetBy(Median(ratios));
  std::printf("  %s %.2f %s", goal.kind == Goal::Kind::AtMost ? "<=" : ">=", goal.bound,
              isMet ? "met" : "MISSED");
  return isMet;
}

bool PrintRow(const std::vector<RowResult>& results, const RowResult& row) {
  if (!row.failure.empty()) {
    std::printf("%-*s %5d FAILED: %s\n", kNameWidth, row.name.c_str(), row.cores, row.failure.c_str());
    return false;
  }
  const RowResult* reference = FindReference(results, row);
  // A goal that cannot be checked, because the reference row failed, is not met.
  bool isGood = reference != nullptr || !row.goal;
  PrintSeries(row.name, row.main, row.cores);
  if (reference != nullptr) {
    const std::vector<double> ratios = PairRatios(row.main, reference->main);
    PrintRatios(ratios);
    if (row.goal) isGood = PrintVerdict(*row.goal, ratios);
  }
  std::printf("\n");
  for (const auto& [name, series] : row.notes) {
    PrintSeries("    " + name, series, row.cores);
    if (reference != nullptr && reference->notes.contains(name)) {
      PrintRatios(PairRatios(series, reference->notes.at(name)));
    }
    std::printf("\n");
  }
  return isGood;
}

}  // namespace

double Median(std::vector<double> values) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

bool PrintTable(const std::vector<RowResult>& results) {
  const std::string line(kTableWidth, '-');
  std::printf("\n%*s %s\n", kNameWidth + 53, "", "ratio pair by pair");
  std::printf("%-*s %5s %12s %12s %12s %-7s %7s %7s %7s  %s\n", kNameWidth, "row", "cores", "median", "min",
              "max", "unit", "median", "min", "max", "goal");
  bool isGood = true;
  int cores = 0;
  for (const RowResult& row : results) {
    if (row.cores != cores) std::printf("%s\n", line.c_str());
    cores = row.cores;
    isGood = PrintRow(results, row) && isGood;
  }
  std::printf("%s\n", line.c_str());
  return isGood;
}

}  // namespace VELTRO::KELVO::Bench
