#include "web/CardView.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <type_traits>
#include <utility>
#include <vector>

#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

using Json = nlohmann::json;

constexpr std::size_t MostShown = 200;  // of lists, variables, signals, clients
constexpr std::size_t MostCommandsShown = 200;
constexpr std::size_t MostPayloadShown = 300;  // bytes of a command that is shown in full
constexpr std::size_t MostPointsAtOnce = 65536;

// Names come from clients: what is no text must not keep the rest from being told.
std::string TextOf(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string LookAtRun(Card& card) {
  const auto run = card.Execution.LookAtRun();
  const auto stats = card.Execution.GetLastStats();
  const auto position = card.Execution.GetPosition();
  const auto* const picture = card.Execution.GetLivePicture();
  const auto extent = picture != nullptr ? picture->Look() : Simulation::LivePicture::Extent{};
  const auto end = run.IsOver ? run.End : std::chrono::steady_clock::now();
  return TextOf({{"number", run.Number},
                 {"list", run.Number == 0 ? Json() : Json(run.List)},
                 {"running", !run.IsOver},
                 {"command", run.IsOver ? -1 : card.Execution.GetCaret(run.List)},
                 {"commands", run.Commands},
                 {"seconds", std::chrono::duration<double>(end - run.Start).count()},
                 {"position", position.Coordinates},
                 {"picture", {{"number", extent.Number}, {"points", extent.Points}, {"cut", extent.IsCut}}},
                 {"stats",
                  {{"macroVectors", stats.MacroVectors},
                   {"microVectors", stats.MicroVectors},
                   {"computationTime", stats.ComputationTime},
                   {"executionTime", stats.ExecutionTime}}}});
}

std::string LookAtLists(Card& card) {
  const auto [views, count] = card.Lists.Look(MostShown);
  Json rows = Json::array();
  for (const CardLists::View& list : views) {
    rows.push_back({{"id", list.Id},
                    {"there", list.IsThere},
                    {"commands", list.Commands},
                    {"stored", list.IsStored},
                    {"running", card.Execution.GetCaret(list.Id) >= 0}});
  }
  return TextOf({{"count", count}, {"rows", std::move(rows)}});
}

std::string LookAtVariables(Card& card) {
  const auto all = card.Variables.GetAll();
  Json rows = Json::array();
  for (const auto& variable : all) {
    if (rows.size() == MostShown) break;
    rows.push_back({{"id", variable.Id},
                    {"kind", variable.Kind._to_string()},
                    {"name", variable.VariableName},
                    {"value", variable.Value}});
  }
  return TextOf({{"count", all.size()}, {"rows", std::move(rows)}});
}

std::string LookAtSignals(Card& card) {
  auto ids = card.Variables.GetSignals();
  const std::size_t count = ids.size();
  ids.resize(std::min(count, MostShown));
  return TextOf({{"count", count}, {"ids", ids}});
}

std::string LookAtPins(Card& card) {
  Json ports = Json::array();
  for (const auto& port : card.Ports.Look()) {
    ports.push_back(
        {{"output", port.IsOutput}, {"levels", port.Levels}, {"active", port.Active}, {"wired", port.Wired}});
  }
  return TextOf(ports);
}

std::string LookAtClients(Card& card) {
  Json rows = Json::array();
  for (const auto& client : card.Doings.GetClients(MostShown)) {
    rows.push_back({{"peer", client.Peer}, {"calls", client.Calls}, {"latest", client.Latest}});
  }
  return TextOf({{"count", card.Counters.Connections.load()}, {"rows", std::move(rows)}});
}

std::string LookAtNotifications(Card& card) {
  const auto notifications = card.Doings.GetNotifications();
  return TextOf({{"count", notifications.Count}, {"latest", notifications.Latest}});
}

std::string LookAtFaults(Card& card) {
  Json rows = Json::array();
  for (const Faults::Entry& fault : card.FaultsOnRequest.List()) {
    rows.push_back({{"text", fault.Text}, {"calls", fault.Calls}, {"befell", fault.Befell}});
  }
  return TextOf(rows);
}

std::string LookAtCounters(Card& card) {
  const CardCounters& counters = card.Counters;
  return TextOf({{"calls", counters.Calls.load()},
                 {"failedCalls", counters.FailedCalls.load()},
                 {"runs", counters.Runs.load()},
                 {"abortedRuns", counters.AbortedRuns.load()},
                 {"listCommands", counters.ListCommands.load()}});
}

std::string TextOfCommand(const ClientLib::CommandView& command) {
  if (command.Payload.size() <= MostPayloadShown) return command.ToString();
  const auto mnemonic = ClientLib::MnemonicOf(command.Code);
  return (mnemonic ? std::string(*mnemonic) : std::to_string(command.Code)) + ", " +
         std::to_string(command.Payload.size()) + " bytes";
}

template <class T>
void PutBytes(std::string& bytes, const T* values, std::size_t count) {
  const std::size_t before = bytes.size();
  bytes.resize(before + count * sizeof(T));
  if (count > 0) std::memcpy(bytes.data() + before, values, count * sizeof(T));
}

}  // namespace

std::span<const ViewSection> ViewSections() {
  static constexpr ViewSection Rows[] = {
      {"run", true, LookAtRun},
      {"lists", false, LookAtLists},
      {"variables", false, LookAtVariables},
      {"signals", false, LookAtSignals},
      {"pins", false, LookAtPins},
      {"clients", false, LookAtClients},
      {"notifications", false, LookAtNotifications},
      {"faults", false, LookAtFaults},
      {"counters", false, LookAtCounters},
  };
  return Rows;
}

std::string ViewCommands(Card& card, std::int32_t list, std::size_t first) {
  const ClientLib::CommandList commands = card.Lists.Get(list);
  const std::size_t count = commands.GetCommandCount();
  first = std::min(first, count);
  Json texts = Json::array();
  for (std::size_t i = first; i < count && texts.size() < MostCommandsShown; ++i) {
    texts.push_back(TextOfCommand(commands.At(i)));
  }
  return TextOf({{"id", list}, {"first", first}, {"count", count}, {"commands", std::move(texts)}});
}

std::string ViewDrawing(const Simulation::LivePicture& picture, std::size_t from) {
  const auto piece = picture.Copy(from, MostPointsAtOnce);
  const std::uint32_t head[] = {static_cast<std::uint32_t>(piece.Of.Number),
                                static_cast<std::uint32_t>(std::min(from, piece.Of.Points)),
                                static_cast<std::uint32_t>(piece.Pens.size()),
                                static_cast<std::uint32_t>(piece.Of.Points), piece.Of.IsCut ? 1U : 0U};
  std::string bytes;
  bytes.reserve(sizeof head + piece.Pens.size() * 9);
  PutBytes(bytes, head, std::size(head));
  PutBytes(bytes, piece.Places.data(), piece.Places.size());
  PutBytes(bytes, piece.Pens.data(), piece.Pens.size());
  return bytes;
}

}  // namespace VELTRO::KELVO::VirtualCard
