#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace VELTRO::KELVO::Bench {

double Median(std::vector<double> values);

// What the ratio of a library row to its reference row has to keep to.
struct Goal {
  enum class Kind { AtMost, AtLeast };

  bool IsMetBy(double ratio) const { return kind == Kind::AtMost ? ratio <= bound : ratio >= bound; }

  Kind kind;
  double bound;
};

inline Goal AtMost(double bound) {
  return {Goal::Kind::AtMost, bound};
}
inline Goal AtLeast(double bound) {
  return {Goal::Kind::AtLeast, bound};
}

// One figure per round; index by round, so that two series can be compared pair by pair.
struct Series {
  std::string unit;
  std::vector<double> figures;
};

struct RowResult {
  std::string name;
  int cores = 0;
  std::string reference;
  std::optional<Goal> goal;
  Series main;
  std::map<std::string, Series> notes;
  std::string failure;
};

// Prints the one table. False if a row failed or a goal was missed.
bool PrintTable(const std::vector<RowResult>& results);

}  // namespace VELTRO::KELVO::Bench
