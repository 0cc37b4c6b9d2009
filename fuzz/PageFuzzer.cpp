// What the virtual card's page reads: the head of a request, the arguments of its address, the actions that are asked for.
// What is let in is served; a second, plain way says whether it may be, and what it has to do.
#include <algorithm>
#include <array>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>
#include <regex>
#include <span>
#include <string>
#include <utility>

#include "Require.h"
#include "card/Card.h"
#include "web/Site.h"

namespace VELTRO::KELVO::Fuzz {

namespace {

using VirtualCard::Card;
using VirtualCard::Site;
using VirtualCard::WebAnswer;
using VirtualCard::WebRequest;
using Json = nlohmann::json;

constexpr const char* Token = "0123456789abcdef";
constexpr const char* Hosts[] = {"127.0.0.1:80", "card.example"};

class NoClients : public VirtualCard::Notifier {
 public:
  void Notify(std::span<const unsigned char>) override {}
};

std::string Lower(std::string text) {
  std::ranges::transform(text, text.begin(), [](char c) { return 'A' <= c && c <= 'Z' ? char(c + 32) : c; });
  return text;
}

// Lines of "name value", and behind the last of them the body. How often Host comes is counted.
WebRequest ReadRequest(std::string text) {
  WebRequest request;
  const std::pair<const char*, std::string*> parts[] = {
      {"method", &request.Method}, {"path", &request.Path},      {"host", &request.Host},
      {"origin", &request.Origin}, {"site", &request.FetchSite}, {"type", &request.ContentType},
      {"token", &request.Token},   {"id", &request.ListId},      {"from", &request.From}};
  for (std::size_t end; (end = text.find('\n')) != std::string::npos; text.erase(0, end + 1)) {
    const std::string line = text.substr(0, end);
    const std::size_t blank = std::min(line.find(' '), line.size());
    const std::string name = line.substr(0, blank);
    const auto* const part = std::ranges::find(parts, name, [](const auto& one) { return one.first; });
    if (part == std::end(parts)) continue;
    *part->second = line.substr(std::min(blank + 1, line.size()));
    if (name == "host") ++request.HostCount;
  }
  request.Body = text;
  return request;
}

bool MayAsk(const WebRequest& request) {
  const std::string host = Lower(request.Host), type = Lower(request.ContentType);
  if (request.HostCount != 1 || std::ranges::count(Hosts, host) == 0) return false;
  if (!request.Origin.empty() && Lower(request.Origin) != "http://" + host) return false;
  const bool isForeign = request.FetchSite == "cross-site" || request.FetchSite == "same-site";
  if (request.Path != "/do")
    return (request.Method == "GET" || request.Method == "HEAD") && (!isForeign || request.Path == "/");
  static const std::regex json("application/json(; ?charset=utf-8)?");
  return request.Method == "POST" && !isForeign && type.size() < 100 && std::regex_match(type, json) &&
         request.Token == Token;
}

std::optional<double> Whole(const Json& action, const char* name) {
  if (!action.contains(name) || !action[name].is_number_integer()) return std::nullopt;
  return action[name].get<double>();
}

// Whether the action must have been done. Nothing where that is not looked at.
std::optional<bool> MustWork(const Json& action, const std::array<Simulation::Pins::PortView, 8>& ports) {
  if (!action.is_object() || !action.contains("do") || !action["do"].is_string()) return false;
  const auto name = action["do"].get<std::string>();
  if (name == "start" || name == "resume") return true;
  if (name == "signal" || name == "variable" || name == "fault") return std::nullopt;
  if (name != "pin") return false;
  const auto port = Whole(action, "port"), pin = Whole(action, "pin");
  return port && pin && *port >= 0 && *port < 8 && *pin >= 0 && *pin < 32 && action.contains("high") &&
         action["high"].is_boolean() && !ports[std::size_t(*port)].IsOutput;
}

void CheckAction(Card& card, const WebRequest& request, const WebAnswer& answer,
                 const std::array<Simulation::Pins::PortView, 8>& before) {
  Json action = Json::parse(request.Body, nullptr, false);
  const auto mustWork = MustWork(action, before);
  Require(!mustWork || *mustWork == (answer.Status == 200), "an action is done exactly when it can be");
  auto expected = before;
  if (mustWork && *mustWork && action["do"] == "pin") {
    auto& levels = expected[action["port"].get<std::size_t>()].Levels;
    const std::uint32_t bit = 1U << action["pin"].get<unsigned>();
    levels = action["high"].get<bool>() ? levels | bit : levels & ~bit;
  }
  const auto after = card.Ports.Look();
  Require(std::ranges::equal(after, expected, {}, &Simulation::Pins::PortView::Levels,
                             &Simulation::Pins::PortView::Levels),
          "that pin is set and no other");
}

// A text that is taken is a fault from then on, as it was written; one that is refused leaves all as it was.
void CheckFault(Card& card, const WebRequest& request, bool isTaken, std::size_t before) {
  const Json action = Json::parse(request.Body, nullptr, false);
  if (!action.is_object() || action.value("do", Json()) != "fault") return;
  const auto faults = card.FaultsOnRequest.List();
  const std::string text = isTaken ? action["text"].get<std::string>() : "";
  const bool ends =
      text.ends_with("off") && faults.size() <= before && card.FaultsOnRequest.AreNone() == faults.empty();
  Require(isTaken ? ends || (faults.size() == before + 1 && faults.front().Text == text)
                  : faults.size() == before,
          "there are the faults that were asked for");
  if (faults.size() == VirtualCard::Faults::Most) card.FaultsOnRequest.Clear();
}

void CheckServed(Card& card, Site& site, const WebRequest& request) {
  const auto before = card.Ports.Look();
  const std::size_t faults = card.FaultsOnRequest.List().size();
  const WebAnswer answer = site.Serve(request);
  Require(answer.Status == 200 || answer.Status == 400 || answer.Status == 404, "what is let in is answered");
  if (request.Path == "/do") {
    CheckAction(card, request, answer, before);
    CheckFault(card, request, answer.Status == 200, faults);
  }
  if (answer.Status != 200) return;
  if (answer.ContentType == "application/json") Require(Json::accept(answer.Body), "an answer is JSON");
  if (request.Path != "/drawing") return;
  std::uint32_t count = 0;
  std::memcpy(&count, answer.Body.data() + 8, sizeof count);
  Require(answer.Body.size() == 20 + 9 * std::size_t{count}, "a drawing is as long as it says");
}

}  // namespace

}  // namespace VELTRO::KELVO::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace VELTRO::KELVO::Fuzz;
  static NoClients clients;
  // It lives as long as the process, as the page's does, so that what is kept of requests adds up.
  static auto& card = *new Card({{"fuzzed", "12345", 1}, {{}, {}, true}, "", std::size_t{1} << 20}, clients);
  static auto& site = *new Site(card, {{std::begin(Hosts), std::end(Hosts)}, Token});
  const WebRequest request = ReadRequest({data, data + size});
  const auto refusal = site.Refuse(request);
  Require(refusal.has_value() != MayAsk(request), "those are let in who may ask");
  if (refusal) {
    Require(refusal->Status >= 400 && refusal->Status < 500, "a refusal is the asker's fault");
  } else {
    CheckServed(card, site, request);
  }
  return 0;
}
