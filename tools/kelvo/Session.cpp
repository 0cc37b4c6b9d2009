#include "Session.h"

#include <kelvo/kelvo.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <future>
#include <vector>

#include "Interrupt.h"
#include "Verb.h"

namespace VELTRO::KELVO::Tool {

namespace {

constexpr std::chrono::milliseconds InterruptLook{50};

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
  if (handle_ > 0) vlDisconnect(handle_);
  handle_ = 0;
}

std::int32_t Session::Card() {
  if (handle_ > 0) return handle_;
  const std::uint32_t timeout = choice_.Timeout.empty() ? 0 : ParseTime("--timeout", choice_.Timeout);
  handle_ = Connect();
  if (handle_ <= 0)
    throw Failure(ExitCode::NoConnection, LastError(), "Is the card switched on, and --card right?");
  if (timeout > 0) Check(vlSetTimeout(handle_, timeout));
  return handle_;
}

std::int32_t Session::Connect() const {
  if (!choice_.Card.empty()) {
    const CardPlace place = ParseCard(choice_.Card);
    return vlConnect(place.Host.c_str(), place.Port);
  }
  if (choice_.Serial.empty()) {
    throw WrongUsage("No card is named.",
                     "Name it by --card HOST[:PORT], --serial NUMBER, KELVO_CARD or KELVO_SERIAL.");
  }
  vlCardInfo card{};
  if (choice_.Serial.size() >= sizeof card.SerialNumber) throw WrongUsage("The serial number is too long.");
  std::memcpy(card.SerialNumber, choice_.Serial.c_str(), choice_.Serial.size());
  std::strcpy(card.IPAddress, "0.0.0.0");
  card.Port = KELVO_DEFAULT_PORT;
  return vlConnectByCardInfo(&card);
}

std::int64_t Session::Check(std::int64_t result) {
  if (result < 0) Fail(LastError());
  return result;
}

void Session::Fail(const std::string& text) {
  bool isConnected = false;
  const bool isLost = handle_ > 0 && vlIsConnected(handle_, &isConnected) == 0 && !isConnected;
  if (isLost) throw Failure(ExitCode::NoConnection, "The connection to the card was lost: " + text);
  throw Refused(text);
}

bool Session::CheckUnlessInterrupted(const Interrupt& interrupt, const std::function<std::int64_t()>& call) {
  // The error's text is the calling thread's own.
  auto error = std::async(std::launch::async, [&] { return call() < 0 ? LastError() : std::string(); });
  while (error.wait_for(InterruptLook) != std::future_status::ready && !interrupt.Came()) {
  }
  if (interrupt.Came()) Disconnect();
  const std::string text = error.get();
  if (!text.empty() && !interrupt.Came()) Fail(text);
  return !interrupt.Came();
}

}  // namespace VELTRO::KELVO::Tool
