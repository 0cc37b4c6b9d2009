#include "execution/Rehearsal.h"

#include <chrono>
#include <stdexcept>
#include <string>
#include <utility>

namespace VELTRO::KELVO::Simulation {

namespace {

std::runtime_error NoSuch(const char* what, std::int32_t id) {
  return std::runtime_error(std::string("There is no ") + what + " " + std::to_string(id) + " here.");
}

class StagedLists : public ListSource {
 public:
  explicit StagedLists(const std::map<std::int32_t, ClientLib::CommandList>& lists) : lists_(lists) {}

  std::optional<ListSnapshot> FindChanged(std::int32_t id, std::uint64_t known) override {
    const auto found = lists_.find(id);
    if (found == lists_.end()) throw NoSuch("list", id);
    const auto version = static_cast<std::uint64_t>(std::distance(lists_.begin(), found)) + 1;
    if (version == known) return std::nullopt;
    return ListSnapshot{version, found->second};
  }

 private:
  const std::map<std::int32_t, ClientLib::CommandList>& lists_;
};

class StagedFonts : public FontSource {
 public:
  explicit StagedFonts(const std::map<std::int32_t, ClientLib::Font>& fonts) {
    for (const auto& [id, font] : fonts) fonts_[id] = std::make_shared<const ClientLib::Font>(font);
  }

  FontSnapshot Find(std::int32_t id) override {
    const auto found = fonts_.find(id);
    if (found == fonts_.end()) throw NoSuch("font", id);
    return found->second;
  }
  FontSnapshot GetActive() override { return fonts_.empty() ? nullptr : fonts_.begin()->second; }

 private:
  std::map<std::int32_t, FontSnapshot> fonts_;
};

ClientLib::DateTime GetLocalTime() {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm local{};
  localtime_r(&now, &local);
  return ClientLib::DateTime::FromSeconds(static_cast<std::uint64_t>(now + local.tm_gmtoff));
}

}  // namespace

RunResult Rehearsal::Run(std::int32_t id, ClientLib::CommandList list, Canvas& canvas) {
  const ListSnapshot snapshot{1, list};
  stage_.Lists.insert_or_assign(id, std::move(list));
  StagedLists lists(stage_.Lists);
  StagedFonts fonts(stage_.Fonts);
  RunInputs inputs(abort_);
  inputs.Rehearse();
  Pins pins(abort_);
  for (const auto& [port, levels] : stage_.Inputs) pins.SetLevels(port, levels);
  SerialPorts serial(abort_);
  ListVariables variables(abort_);
  MarkTimeFormat timeFormat;
  const RunSurroundings surroundings{abort_,
                                     inputs,
                                     pins,
                                     serial,
                                     variables,
                                     timeFormat,
                                     lists,
                                     fonts,
                                     [this] { return stage_.Variables; },
                                     &GetLocalTime,
                                     [](std::int32_t) {},
                                     [](std::int32_t) {}};
  RunSettings settings;
  settings.Speed = std::numeric_limits<double>::infinity();
  settings.StandaloneList = stage_.StandaloneList;
  settings.Limit = LimitUs;
  settings.MostCommands = stage_.MostCommands;
  settings.IsAlone = true;
  GalvoPosition position;
  std::atomic<std::uint64_t> commands{0};
  return Simulate(settings, surroundings, {carets_, position, canvas, commands}, id, snapshot);
}

}  // namespace VELTRO::KELVO::Simulation
