// Finding cards and what they are; their clocks; their notifications.
#include <kelvo/kelvo.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <ctime>
#include <nlohmann/json.hpp>
#include <thread>

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

ExitCode Info(Session& session, const Arguments&) {
  const std::int32_t card = session.Card();
  std::uint32_t limit = 0, state = 0;
  std::uint64_t time = 0;
  bool isRunning = false;
  session.Check(vlSystemGetConnectionLimit(card, &limit));
  session.Check(vlSystemGetOperatingState(card, &state));
  session.Check(vlSystemGetUniversalTime(card, &time));
  session.Check(vlListIsExecutionInProgress(card, &isRunning));
  std::string states;
  for (const auto& [bit, name] :
       {std::pair{1U, "configuration failed"}, {2U, "initialization failed"}, {4U, "scanner error"}}) {
    if ((state & bit) != 0) states += (states.empty() ? "" : ", ") + std::string(name);
  }
  Json info = {{"serial", TextFrom(session, vlSystemGetCardSerialNumber)},
               {"product", TextFrom(session, vlSystemGetFirmwareProductVersion)},
               {"firmware", TextFrom(session, vlSystemGetFirmwareVersion)},
               {"fpga", TextFrom(session, vlSystemGetFPGAVersion)},
               {"os", TextFrom(session, vlSystemGetOSVersion)},
               {"state", states.empty() ? "normal" : states},
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

// One line of JSON, or a plain one, for each event.
void Tell(const Output& out, const char* event, const Json& value) {
  if (out.AsJson) return out.PrintNow({{"event", event}, {"value", value}});
  out.Line(std::string(event) + " " + Shown(value));
  std::fflush(stdout);
}

ExitCode Watch(Session& session, const Arguments&) {
  const std::int32_t card = session.Card();
  const Interrupt interrupt;
  static const Output* out = &session.Out;
  out = &session.Out;
  std::uint32_t id = 0;
  session.Check(vlListRegisterProgressCallback(
      card, [](std::int32_t, std::int32_t value) { Tell(*out, "progress", value); }, &id));
  session.Check(vlListRegisterListDoneCallback(
      card, [](std::int32_t, std::int32_t value) { Tell(*out, "list-done", value); }, &id));
  session.Check(vlListRegisterListIdleCallback(
      card, [](std::int32_t, std::int32_t value) { Tell(*out, "list-idle", value); }, &id));
  // A card notifies clients from their first call on.
  session.Check(vlListIsExecutionInProgress(card, std::make_unique<bool>().get()));
  session.Out.Remark("Watching; Ctrl-C ends.");
  bool isConnected = true;
  while (isConnected && !interrupt.Came(std::chrono::milliseconds(100)))
    session.Check(vlIsConnected(card, &isConnected));
  if (!isConnected) throw Failure(ExitCode::NoConnection, "The connection to the card was lost.");
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
      {"watch", "Show notifications as they come, until Ctrl-C", {}, &Watch},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Tool
