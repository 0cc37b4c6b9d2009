// Listens in a card's place, and records what applications and the card say to each other.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Relay.h"
#include "common/IPAddress.h"

namespace VELTRO::KELVO::Tool {

struct Place {
  ClientLib::IPAddress Address;
  int Port;
};

// Throws Failure, Refused.
ClientLib::Descriptor ListenOn(const Place& place);

class CardRelays {
 public:
  // Connects to the card for each application that comes to the listener.
  CardRelays(ClientLib::Descriptor listener, Place card, ClientLib::Recording::FrameSink& sink);
  // Ends the connections.
  ~CardRelays();
  CardRelays(const CardRelays&) = delete;
  CardRelays& operator=(const CardRelays&) = delete;

  int GetPort() const;
  // Takes those that come within so many milliseconds. Returns why the card could not be reached for one of them, if so.
  std::string Serve(int milliseconds);

 private:
  struct Running {
    std::atomic<bool> IsOver{false};
    std::atomic<int> Reason{0};  // why there was no connection to the card
    std::thread Thread;
  };

  // Gives it a thread. Returns an error number where that cannot be.
  int Take(ClientLib::Descriptor application);
  // For that thread: carries the connection from beginning to end. Returns why there was none to the card.
  int Carry(ClientLib::Descriptor application, std::uint32_t connection) const;
  ClientLib::Descriptor ConnectToCard(int& reason) const;
  // Whether the connection under way is there before the relays are to stop.
  int ReasonOf(const ClientLib::Descriptor& socket) const;

  const Place card_;
  ClientLib::Recording::FrameSink& sink_;
  ClientLib::Descriptor listener_;
  ClientLib::Descriptor stopRead_, stopWrite_;  // closing the one lets the other be read
  std::uint32_t connections_ = 0;
  std::vector<std::unique_ptr<Running>> running_;
};

}  // namespace VELTRO::KELVO::Tool
