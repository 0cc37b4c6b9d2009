// One run of the tool: what is printed, and the card, which is connected when a verb first needs it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

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
  std::string Card, Serial, Timeout;  // what was given for the options, or the environment
};

class Interrupt;

class Session {
 public:
  Session(Output output, CardChoice choice) : Out(output), choice_(std::move(choice)) {}
  ~Session() { Disconnect(); }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const Output Out;

  // The connection's handle. Throws Failure, NoConnection or WrongUsage.
  std::int32_t Card();
  // Throws Failure when a function of the library has failed: NoConnection if that has ended the connection.
  std::int64_t Check(std::int64_t result);
  // The same for one that failed with this text.
  [[noreturn]] void Fail(const std::string& text);
  // Calls a function of the library, in another thread, and throws like Check. Ctrl-C ends the connection, and with it the
  // call; then it returns false, and the next Card() is a new connection.
  bool CheckUnlessInterrupted(const Interrupt& interrupt, const std::function<std::int64_t()>& call);

 private:
  std::int32_t Connect() const;
  void Disconnect();

  const CardChoice choice_;
  std::int32_t handle_ = 0;
};

}  // namespace VELTRO::KELVO::Tool
