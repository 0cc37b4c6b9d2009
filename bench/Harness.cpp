#include "Harness.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <utility>

#include "Machine.h"
#include "RawServer.h"
#include "Wire.h"

namespace VELTRO::KELVO::Bench {

namespace {

constexpr int kRounds = 15;
constexpr int kQuickRounds = 5;
// Keeps the whole run below three minutes on a slow machine too; the table then rests on fewer rounds.
constexpr std::uint64_t kModeBudgetNs = 70'000'000'000;

void RunOnce(const RunRow& run, std::uint16_t port, RowResult& result) {
  try {
    RowContext context(port);
    const double figure = run(context);
    result.main.figures.push_back(figure);
    for (const auto& [name, note] : context.Notes()) {
      Series& series = result.notes[name];
      series.unit = note.unit;
      series.figures.push_back(note.figures.front());
    }
  } catch (const std::exception& error) {
    result.failure = error.what();
  }
}

}  // namespace

void Harness::AddReference(const std::string& name, const std::string& unit, RunRow run, int leastCores) {
  rows_.push_back({name, unit, "", std::nullopt, std::move(run), leastCores});
}

void Harness::AddLibraryRow(const std::string& name, const std::string& reference, std::optional<Goal> goal,
                            RunRow run, int leastCores) {
  std::size_t place = IndexOfReference(reference);
  const std::string unit = rows_[place].unit;
  do {
    ++place;
  } while (place < rows_.size() && rows_[place].reference == reference);
  rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(place),
               {name, unit, reference, goal, std::move(run), leastCores});
}

void Harness::AddSelfCheckRows() {
  for (const Row& row : std::vector<Row>(rows_)) {
    if (row.reference.empty())
      AddLibraryRow(row.name + ", again", row.name, std::nullopt, row.run, row.leastCores);
  }
}

bool Harness::Run(const Options& options) const {
  if (Select(options.filter, TwoCores).empty())
    throw std::invalid_argument("no row matches \"" + options.filter + "\"");
  PrintMachine();

  std::vector<std::pair<int, std::vector<int>>> modes;
  const std::vector<int> cpus = AllowedCpus();
  if (options.isOneCore) modes.push_back({1, {cpus[0]}});
  if (options.isTwoCores && cpus.size() >= 2) modes.push_back({2, {cpus[0], cpus[1]}});
  if (options.isTwoCores && cpus.size() < 2) std::printf("NOTE     only one core usable, no two-core rows\n");

  std::vector<RowResult> results;
  for (const auto& [cores, modeCpus] : modes) {
    const std::vector<Row> rows = Select(options.filter, cores);
    PinAllThreads(modeCpus);
    const RawServerProcess server;
    std::vector<RowResult> modeResults;
    for (const Row& row : rows) {
      modeResults.push_back({row.name, cores, row.reference, row.goal, {row.unit, {}}, {}, {}});
    }

    const std::uint64_t deadline = NowNs() + kModeBudgetNs;
    const int rounds = options.isQuick ? kQuickRounds : kRounds;
    int done = 0;
    while (done < rounds && NowNs() < deadline) {
      for (std::size_t i = 0; i < rows.size(); ++i) {
        if (modeResults[i].failure.empty()) RunOnce(rows[i].run, server.Port(), modeResults[i]);
      }
      ++done;
    }
    std::printf("%d core%s  %d rounds%s\n", cores, cores == 1 ? " " : "s", done,
                done < rounds ? " (cut short, time is up)" : "");
    std::fflush(stdout);
    results.insert(results.end(), modeResults.begin(), modeResults.end());
  }
  PinAllThreads(cpus);
  return PrintTable(results);
}

std::vector<Harness::Row> Harness::Select(const std::string& filter, int cores) const {
  std::vector<Row> selected;
  for (const Row& row : rows_) {
    // A library row never runs without the reference that it is compared with.
    const bool isWanted = std::any_of(rows_.begin(), rows_.end(), [&](const Row& other) {
      const bool isRelated = &other == &row || other.reference == row.name;
      return isRelated && other.name.find(filter) != std::string::npos;
    });
    if (isWanted && row.leastCores <= cores) selected.push_back(row);
  }
  return selected;
}

std::size_t Harness::IndexOfReference(const std::string& name) const {
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    if (rows_[i].name == name && rows_[i].reference.empty()) return i;
  }
  throw std::invalid_argument("no reference row named \"" + name + "\"");
}

}  // namespace VELTRO::KELVO::Bench
