#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Report.h"

namespace VELTRO::KELVO::Bench {

// What a row is handed for one round.
class RowContext {
 public:
  explicit RowContext(std::uint16_t port) : port_(port) {}

  // The raw server's port on loopback.
  std::uint16_t Port() const { return port_; }
  // A further figure of this round, printed below the row.
  void Note(const std::string& name, const std::string& unit, double value) {
    notes_[name] = {unit, {value}};
  }
  const std::map<std::string, Series>& Notes() const { return notes_; }

 private:
  std::uint16_t port_;
  std::map<std::string, Series> notes_;
};

// Measures one round and gives its figure; throws if anything is wrong with the answers.
using RunRow = std::function<double(RowContext&)>;

// What a row that is about threads side by side needs.
inline constexpr int TwoCores = 2;

struct Options {
  bool isQuick = false;
  bool isSelfCheck = false;
  bool isPeers = false;
  bool isOneCore = true;
  bool isTwoCores = true;
  std::string filter;
};

class Harness {
 public:
  void AddReference(const std::string& name, const std::string& unit, RunRow run, int leastCores = 1);
  // Runs right after its reference row in every round and is compared with it round by round. The goal may be
  // left out.
  void AddLibraryRow(const std::string& name, const std::string& reference, std::optional<Goal> goal,
                     RunRow run, int leastCores = 1);
  // Registers every reference row a second time as if it were a library: shows how far from 1.0 a ratio can
  // be by chance alone.
  void AddSelfCheckRows();

  // False if a row failed or a goal was missed.
  bool Run(const Options& options) const;

 private:
  struct Row {
    std::string name;
    std::string unit;
    std::string reference;
    std::optional<Goal> goal;
    RunRow run;
    int leastCores;
  };

  std::vector<Row> Select(const std::string& filter, int cores) const;
  std::size_t IndexOfReference(const std::string& name) const;

  std::vector<Row> rows_;
};

}  // namespace VELTRO::KELVO::Bench
