// One run of the tool: what is printed, and the card, which is connected when a verb first needs it.
#pragma once

#include <cstdint>
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

class Session {
 public:
  Session(Output output, CardChoice choice) : Out(output), choice_(std::move(choice)) {}
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const Output Out;

  // The connection's handle. Throws Failure, NoConnection or WrongUsage.
  std::int32_t Card();
  // Throws Failure when a function of the library has failed: NoConnection if that has ended the connection.
  std::int64_t Check(std::int64_t result);

 private:
  std::int32_t Connect() const;

  const CardChoice choice_;
  std::int32_t handle_ = 0;
};

}  // namespace VELTRO::KELVO::Tool
