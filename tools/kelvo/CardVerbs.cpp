// Finding cards and what they are; their clocks; their notifications.
#include <kelvo/kelvo.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <ctime>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>

#include "Interrupt.h"
#include "Session.h"
#include "Spinner.h"
#include "Verb.h"

namespace VELTRO::KELVO::Tool {

namespace {

constexpr std::uint32_t MostCards = 1024;

ExitCode ShowCards(const Output& out, const std::vector<vlCardInfo>& cards) {
  Json list = Json::array();
  std::vector<std::vector<std::string>> rows;
  for (const vlCardInfo& card : cards) {
    list.push_back({{"serial", card.SerialNumber}, {"address", card.IPAddress}, {"port", card.Port}});
    rows.push_back({Clean(card.SerialNumber), Clean(card.IPAddress), std::to_string(card.Port)});
  }
  if (out.AsJson) {
    out.Print(list);
  } else if (rows.empty()) {
    out.Remark("No card answered.");
  } else {
    out.Table({"SERIAL", "ADDRESS", "PORT"}, rows);
  }
  return ExitCode::Done;
}

ExitCode Discover(Session& session, const Arguments& given) {
  std::vector<vlCardInfo> cards(MostCards);
  std::uint32_t count = 0;
  const std::string& range = given.Text("--ping");
  const std::size_t dash = range.find('-');
  const auto serial = [](std::string_view text) {
    return static_cast<std::int32_t>(ParseWhole("--ping", text, 0, INT32_MAX));
  };
  const std::int32_t first = range.empty() ? 0 : serial(std::string_view(range).substr(0, dash));
  const std::int32_t last =
      dash == std::string::npos ? first : serial(std::string_view(range).substr(dash + 1));
  const Spinner spinner(session.Out, range.empty() ? "Searching all networks" : "Pinging");
  session.Check(range.empty() ? vlDiscover(cards.data(), MostCards, &count)
                              : vlDiscoverByPinging(first, last, cards.data(), MostCards, &count));
  spinner.Stop();
  cards.resize(count);
  return ShowCards(session.Out, cards);
}

ExitCode Predict(Session& session, const Arguments& given) {
  struct Row {
    const char* Name;
    vlInstallation Installation;
    bool IsIPv6;
  };
  constexpr Row Kinds[] = {{"internal, IPv6", vlInstallation_Internal, true},
                           {"external, IPv6", vlInstallation_External, true},
                           {"internal, IPv4", vlInstallation_Internal, false},
                           {"external, IPv4", vlInstallation_External, false}};
  Json list = Json::array();
  std::vector<std::vector<std::string>> rows;
  std::string refusal;
  for (const Row& kind : Kinds) {
    char address[64] = "";
    if (vlPredictIPAddressFromSerialNumber(given.Text("SERIAL").c_str(), kind.Installation, kind.IsIPv6,
                                           address, sizeof address) < 0) {
      refusal = LastError();
      continue;
    }
    list.push_back({{"installation", kind.Name}, {"address", address}});
    rows.push_back({kind.Name, address});
  }
  if (rows.empty()) throw Refused(refusal);
  session.Out.AsJson ? session.Out.Print(list) : session.Out.Table({}, rows);
  return ExitCode::Done;
}

std::string TextFrom(Session& session,
                     std::int32_t (*get)(std::int32_t, char*, std::uint32_t, std::uint32_t*)) {
  char text[4096] = "";
  std::uint32_t length = 0;
  session.Check(get(session.Card(), text, sizeof text, &length));
  return {text, length};
}

std::string TimeText(std::uint64_t seconds) {
  const auto time = static_cast<std::time_t>(seconds);
  std::tm parts{};
  char text[64] = "";
  if (gmtime_r(&time, &parts) != nullptr) std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
  return text;
}

// What is wrong with a card, in words; empty for nothing.
std::string TroublesOf(std::uint32_t state) {
  std::string troubles;
  for (const auto& [bit, name] :
       {std::pair{1U, "configuration failed"}, {2U, "initialization failed"}, {4U, "scanner error"}}) {
    if ((state & bit) != 0) troubles += (troubles.empty() ? "" : ", ") + std::string(name);
  }
  return troubles;
}

ExitCode Info(Session& session, const Arguments&) {
  const std::int32_t card = session.Card();
  std::uint32_t limit = 0, state = 0;
  std::uint64_t time = 0;
  bool isRunning = false;
  session.Check(vlSystemGetConnectionLimit(card, &limit));
  session.Check(vlSystemGetOperatingState(card, &state));
  session.Check(vlSystemGetUniversalTime(card, &time));
  session.Check(vlListIsExecutionInProgress(card, &isRunning));
  const std::string troubles = TroublesOf(state);
  Json info = {{"serial", TextFrom(session, vlSystemGetCardSerialNumber)},
               {"product", TextFrom(session, vlSystemGetFirmwareProductVersion)},
               {"firmware", TextFrom(session, vlSystemGetFirmwareVersion)},
               {"fpga", TextFrom(session, vlSystemGetFPGAVersion)},
               {"os", TextFrom(session, vlSystemGetOSVersion)},
               {"state", troubles.empty() ? "normal" : troubles},
               {"running", isRunning},
               {"clock", TimeText(time) + " UTC"},
               {"connectionLimit", limit}};
  if (session.Out.AsJson) {
    session.Out.Print(info);
    return ExitCode::Done;
  }
  std::vector<std::vector<std::string>> rows;
  for (const auto& [name, value] : info.items()) rows.push_back({name, Shown(value)});
  session.Out.Table({}, rows);
  return ExitCode::Done;
}

ExitCode ShowClock(Session& session, const Arguments&) {
  std::uint64_t utc = 0, local = 0;
  session.Check(vlSystemGetUniversalTime(session.Card(), &utc));
  session.Check(vlSystemGetTime(session.Card(), &local));
  if (session.Out.AsJson) {
    session.Out.Print({{"utc", TimeText(utc)}, {"local", TimeText(local)}});
  } else {
    session.Out.Table({}, {{"utc", TimeText(utc)}, {"local", TimeText(local)}});
  }
  return ExitCode::Done;
}

ExitCode SetClock(Session& session, const Arguments& given) {
  const std::string& text = given.Text("TIME");
  std::time_t seconds = std::time(nullptr);
  if (!text.empty()) {
    std::tm parts{};
    const char* const end = strptime(text.c_str(), "%Y-%m-%d %H:%M:%S", &parts);
    if (end == nullptr || *end != 0)
      throw WrongUsage("TIME takes 'YYYY-MM-DD HH:MM:SS' in UTC, not '" + Clean(text) + "'.");
    seconds = timegm(&parts);
  }
  session.Check(vlSystemSetSystemTime(session.Card(), static_cast<std::uint64_t>(seconds)));
  return ExitCode::Done;
}

constexpr std::chrono::milliseconds LookForStates(500);
// A card that does not answer must not keep the others from being looked at, nor Ctrl-C waiting.
constexpr std::uint32_t WaitForStateMs = 1000;

// What watches tell: a line for each event, of JSON or a plain one, which begins with the card's name if there are
// several.
class Teller {
 public:
  explicit Teller(Session& session) : out_(session.Out), cards_(session.Cards()) {}

  void Tell(std::int32_t card, const char* event, const Json& value) {
    const std::string& name = std::ranges::find(cards_, card, &NamedCard::Handle)->Name;
    const std::lock_guard lock(mutex_);
    if (out_.AsJson) return out_.PrintNow({{"card", name}, {"event", event}, {"value", value}});
    out_.Line((cards_.size() > 1 ? Clean(name) + " " : "") + event + " " + Shown(value));
    std::fflush(stdout);
  }

 private:
  const Output& out_;
  const std::vector<NamedCard>& cards_;
  std::mutex mutex_;
};

// For the callbacks, which may come until the session has ended.
std::unique_ptr<Teller> teller;

void RegisterFor(Session& session, std::int32_t card) {
  std::uint32_t id = 0;
  session.Check(vlListRegisterProgressCallback(
      card, [](std::int32_t handle, std::int32_t value) { teller->Tell(handle, "progress", value); }, &id));
  session.Check(vlListRegisterListDoneCallback(
      card, [](std::int32_t handle, std::int32_t list) { teller->Tell(handle, "list-done", list); }, &id));
  session.Check(vlListRegisterListIdleCallback(
      card, [](std::int32_t handle, std::int32_t list) { teller->Tell(handle, "list-idle", list); }, &id));
  session.Check(vlListRegisterErrorEventCallback(
      card,
      [](std::int32_t handle, std::int32_t, const char* text, std::uint32_t) {
        teller->Tell(handle, "error", WordsOf(text));
      },
      &id));
}

// "idle" or "running", and what is wrong; a card that does not tell is "silent".
std::string StateOf(std::int32_t card) {
  bool isRunning = false;
  std::uint32_t state = 0;
  if (vlListIsExecutionInProgress(card, &isRunning) < 0 || vlSystemGetOperatingState(card, &state) < 0)
    return "silent";
  const std::string troubles = TroublesOf(state);
  return (isRunning ? "running" : "idle") + (troubles.empty() ? "" : ", " + troubles);
}

ExitCode Watch(Session& session, const Arguments& given) {
  session.Cards();
  const Interrupt interrupt;
  teller = std::make_unique<Teller>(session);
  std::map<std::int32_t, std::string> states;
  for (const auto& [name, card] : session.Cards()) {
    if (!given.Has("--timeout")) session.Check(vlSetTimeout(card, WaitForStateMs));
    RegisterFor(session, card);
    states[card] = "";
  }
  session.Out.Remark("Watching; Ctrl-C ends.");
  do {
    for (auto known = states.begin(); known != states.end();) {
      auto& [card, state] = *known;
      std::string now = StateOf(card);
      const bool isLost = !IsConnected(card);
      if (isLost || now != state) teller->Tell(card, "state", isLost ? "lost" : now);
      state = std::move(now);
      known = isLost ? states.erase(known) : std::next(known);
    }
    if (states.empty()) throw Failure(ExitCode::NoConnection, "The connection to the card was lost.");
  } while (!interrupt.Came(LookForStates));
  return ExitCode::Done;
}

}  // namespace

std::span<const Verb> CardVerbs() {
  static const Verb Rows[] = {
      {"discover",
       "Find the cards on all networks",
       {{"--ping", "FIRST-LAST", "Ping the addresses of these serial numbers instead"}},
       &Discover},
      {"predict",
       "Show the addresses that a serial number predicts; needs no card",
       {{"SERIAL", "", "12345"}},
       &Predict},
      {"info", "Show what the card is and how it is", {}, &Info},
      {"clock show", "Show the card's clock", {}, &ShowClock},
      {"clock set",
       "Set the card's clock",
       {{"TIME", "", "'YYYY-MM-DD HH:MM:SS' in UTC; else this machine's time", Parameter::AtMostOne}},
       &SetClock},
      {"watch",
       "Show notifications and states of one or, with --card several times, several cards, until Ctrl-C",
       {},
       &Watch},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Tool
