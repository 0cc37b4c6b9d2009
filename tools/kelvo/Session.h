// One run of the tool: what is printed, and the card, which is connected when a verb first needs it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "Failure.h"
#include "Output.h"

namespace VELTRO::KELVO::Tool {

// The text of the calling thread's last error. Of what a card says only its own words.
std::string LastError();
// The card's own words in the library's text of an error.
std::string WordsOf(const std::string& text);

struct CardPlace {
  std::string Host;
  std::int32_t Port;
};
// "HOST", "HOST:PORT", "[IPv6]:PORT" or an IPv6 address alone. Throws Failure, WrongUsage.
CardPlace ParseCard(const std::string& text);

struct CardChoice {
  std::vector<std::string> Cards, Serials;  // what was given for the options, or the environment
  std::string Timeout, Log;
  bool MayBeLogged = true;  // as "log on" wants it
};

struct NamedCard {
  std::string Name;  // as it was given
  std::int32_t Handle;
};

class Interrupt;

class Session {
 public:
  Session(Output output, CardChoice choice) : Out(output), choice_(std::move(choice)) {}
  ~Session() { Disconnect(); }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const Output Out;

  // The connection's handle. Throws Failure, NoConnection or WrongUsage, the latter also when several cards are named.
  std::int32_t Card();
  // Where the card is that is named, for a verb that does not connect as others do. Throws Failure, WrongUsage.
  CardPlace Place() const;
  // The same as Card for a verb that takes several.
  const std::vector<NamedCard>& Cards();
  // Throws Failure when a function of the library has failed: NoConnection if that has ended the connection.
  std::int64_t Check(std::int64_t result) const;
  // The same for one that failed with this text.
  [[noreturn]] void Fail(const std::string& text) const;
  // Calls a function of the library, in another thread, and throws like Check. Ctrl-C ends the call, if need be by ending
  // all connections; then it returns false, and the next Card() is connected anew.
  bool CheckUnlessInterrupted(const Interrupt& interrupt, const std::function<std::int64_t()>& call);
  // The same, but false for a refusal.
  bool IsDone(std::int64_t result) const;

 private:
  void Connect(const std::string& name, bool isSerial);
  void Disconnect();
  void StartLog(std::size_t card) const;

  const CardChoice choice_;
  std::vector<NamedCard> cards_;
};

// Whether the connection is up.
bool IsConnected(std::int32_t handle);

}  // namespace VELTRO::KELVO::Tool
