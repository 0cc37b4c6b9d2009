#include "Session.h"

#include <kelvo/kelvo.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <future>
#include <vector>

#include "Interrupt.h"
#include "LoggedRuns.h"
#include "Verb.h"

namespace VELTRO::KELVO::Tool {

namespace {

constexpr std::chrono::milliseconds InterruptLook{50}, EndByItself{500};

}  // namespace

// They stand between heads of dashes.
std::string WordsOf(const std::string& text) {
  if (!text.starts_with("BeginException")) return text;
  const std::size_t begin = text.find('\n') + 1;
  return text.substr(begin, text.find("\nInnerException---", begin) - begin);
}

std::string LastError() {
  std::vector<char> text(static_cast<std::size_t>(std::max(vlGetLastErrorLen(), 2)));
  vlGetLastError(text.data(), static_cast<std::int32_t>(text.size()));
  return Clean(WordsOf(text.data()));
}

CardPlace ParseCard(const std::string& text) {
  const std::size_t colon = text.rfind(':');
  const bool isBracketed = text.starts_with('[');
  const bool isIPv6 = std::ranges::count(text, ':') > 1 && !isBracketed;
  const bool hasPort = colon != std::string::npos && !isIPv6 && (!isBracketed || text[colon - 1] == ']');
  CardPlace place{hasPort ? text.substr(0, colon) : text, KELVO_DEFAULT_PORT};
  if (isBracketed) {
    if (!place.Host.ends_with(']')) throw WrongUsage("--card takes HOST[:PORT], not '" + Clean(text) + "'.");
    place.Host = place.Host.substr(1, place.Host.size() - 2);
  }
  if (hasPort)
    place.Port =
        static_cast<std::int32_t>(ParseWhole("The port of --card", text.substr(colon + 1), 1, 65535));
  return place;
}

void Session::Disconnect() {
  for (const auto& [name, handle] : cards_) {
    const bool isLogged = vlDisableCommandLogging(handle) == 0;
    if (!isLogged) Out.Remark("The log is not whole: " + LastError() + ".");
    vlDisconnect(handle);
  }
  cards_.clear();
}

std::int32_t Session::Card() {
  if (choice_.Cards.size() + choice_.Serials.size() > 1)
    throw WrongUsage("Several cards are named.", "This verb takes one.");
  return Cards().front().Handle;
}

CardPlace Session::Place() const {
  if (choice_.Cards.size() != 1) throw WrongUsage("This verb takes one card, named by --card HOST[:PORT].");
  return ParseCard(choice_.Cards.front());
}

const std::vector<NamedCard>& Session::Cards() {
  if (!cards_.empty()) return cards_;
  if (choice_.Cards.empty() && choice_.Serials.empty()) {
    throw WrongUsage("No card is named.",
                     "Name it by --card HOST[:PORT], --serial NUMBER, KELVO_CARD or KELVO_SERIAL.");
  }
  const std::uint32_t timeout = choice_.Timeout.empty() ? 0 : ParseTime("--timeout", choice_.Timeout);
  for (const std::string& card : choice_.Cards) Connect(card, false);
  for (const std::string& serial : choice_.Serials) Connect(serial, true);
  for (std::size_t i = 0; i < cards_.size(); ++i) {
    if (timeout > 0) Check(vlSetTimeout(cards_[i].Handle, timeout));
    StartLog(i);
  }
  return cards_;
}

void Session::Connect(const std::string& name, bool isSerial) {
  std::int32_t handle = 0;
  if (isSerial) {
    vlCardInfo card{};
    if (name.size() >= sizeof card.SerialNumber) throw WrongUsage("The serial number is too long.");
    std::memcpy(card.SerialNumber, name.c_str(), name.size());
    std::strcpy(card.IPAddress, "0.0.0.0");
    card.Port = KELVO_DEFAULT_PORT;
    handle = vlConnectByCardInfo(&card);
  } else {
    const CardPlace place = ParseCard(name);
    handle = vlConnect(place.Host.c_str(), place.Port);
  }
  if (handle <= 0)
    throw Failure(ExitCode::NoConnection, LastError(), "Is the card switched on, and --card right?");
  cards_.push_back({name, handle});
}

// Several cards have a file each.
void Session::StartLog(std::size_t card) const {
  const bool isAsked = !choice_.Log.empty();
  std::string path = isAsked ? choice_.Log : choice_.MayBeLogged ? FileOfLoggedRun() : "";
  if (path.empty()) return;
  if (card > 0) path += "." + std::to_string(card + 1);
  if (vlEnableCommandLogging(cards_[card].Handle, path.c_str(), -1) < 0)
    throw Refused(LastError() + ".", isAsked ? "" : "'kelvo log off' ends the logging.");
  if (!isAsked) Out.Remark("The calls are logged in '" + path + "'.");
}

std::int64_t Session::Check(std::int64_t result) const {
  if (result < 0) Fail(LastError());
  return result;
}

void Session::Fail(const std::string& text) const {
  for (const auto& [name, handle] : cards_) {
    if (!IsConnected(handle))
      throw Failure(ExitCode::NoConnection, "The connection to the card was lost: " + text);
  }
  throw Refused(text);
}

bool Session::CheckUnlessInterrupted(const Interrupt& interrupt, const std::function<std::int64_t()>& call) {
  // The error's text is the calling thread's own.
  auto error = std::async(std::launch::async, [&] { return call() < 0 ? LastError() : std::string(); });
  while (error.wait_for(InterruptLook) != std::future_status::ready && !interrupt.Came()) {
  }
  // A transfer of a file ends by itself when the card goes on answering.
  if (interrupt.Came() && error.wait_for(EndByItself) != std::future_status::ready) Disconnect();
  const std::string text = error.get();
  if (!text.empty() && !interrupt.Came()) Fail(text);
  return !interrupt.Came();
}

bool Session::IsDone(std::int64_t result) const {
  try {
    Check(result);
    return true;
  } catch (const Failure& failure) {
    if (failure.Code != ExitCode::Refused) throw;
    return false;
  }
}

bool IsConnected(std::int32_t handle) {
  bool isConnected = false;
  return vlIsConnected(handle, &isConnected) == 0 && isConnected;
}

}  // namespace VELTRO::KELVO::Tool
