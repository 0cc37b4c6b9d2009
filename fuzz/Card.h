// What stands in for a card: a server on loopback that says what the fuzzer's input says.
#pragma once

#include <sys/socket.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "common/IPAddress.h"
#include "common/Mutex.h"

namespace VELTRO::KELVO::Fuzz {

// One connection's worth of behaviour.
struct Script {
  enum class Ending {
    Close,      // no more comes
    Reset,      // the connection is torn down, with a request unanswered or not
    StaysOpen,  // nothing more comes, but nobody says so
  };

  std::span<const unsigned char> Stream;  // sent as it is
  std::size_t Piece = 0;                  // the first few sends are of so many bytes; 0: of a frame
  Ending End = Ending::Close;
};

// Serves one connection at a time, on a thread of its own that lives as long as the process.
class Card {
 public:
  Card();
  Card(const Card&) = delete;
  Card& operator=(const Card&) = delete;

  const ClientLib::IPAddress& GetAddress() const { return address_; }
  int GetPort() const { return port_; }

  // Says what the next connection is served. The stream must stay where it is until WaitUntilServed returns.
  void Prepare(const Script& script);
  // Says that the client calls no more on this connection, so that no request is waited for any longer.
  void EndOfCalls();
  // Returns when the connection is over on the card's side, too.
  void WaitUntilServed();

 private:
  void Run();
  void Serve(int connection, const Script& script);
  // Receives what the client sends until it has come to request number `id` or a later one (a call from a
  // callback fails unsent and leaves a gap), or calls no more. False when the client has gone.
  bool AwaitRequest(int connection, std::size_t id);
  // Receives once. False when the client has gone.
  bool Receive(int connection);
  void TakeRequests();

  int listener_ = -1;
  int endOfCalls_ = -1;  // an event descriptor
  int port_ = 0;
  ClientLib::IPAddress address_;

  // The serving thread's own.
  std::vector<unsigned char> received_;
  std::size_t next_ = 0;  // the number that the next request has at least

  ClientLib::Mutex mutex_;
  ClientLib::CondVar changed_;
  Script script_ KELVO_GUARDED_BY(mutex_);
  bool served_ KELVO_GUARDED_BY(mutex_) = true;
};

}  // namespace VELTRO::KELVO::Fuzz
