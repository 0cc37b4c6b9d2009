// Makes the card one that is found: answers those who search for cards on the network.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "base/Wake.h"
#include "common/IPAddress.h"
#include "server/Socket.h"

namespace VELTRO::KELVO::VirtualCard {

struct SearchSettings {
  std::vector<std::string> Interfaces;  // none: all that take multicasts
  std::string SerialNumber;
  ClientLib::IPAddress Address;  // that the card listens on; all-zero for all
  int Port = 0;
};

// The text of a search for cards like this one, whatever else it asks for.
bool IsSearchForCards(std::string_view datagram);

class SearchResponder {
 public:
  // Answers from here on, in a thread of its own. Throws std::runtime_error: an interface that there is not, none at
  // all, a port that is not to be shared, a serial number that no answer can tell, an address that nobody else reaches.
  explicit SearchResponder(SearchSettings settings);
  ~SearchResponder();
  SearchResponder(const SearchResponder&) = delete;
  SearchResponder& operator=(const SearchResponder&) = delete;

 private:
  struct Listener {
    Descriptor Socket;
    std::uint32_t Interface;
  };

  void Work();
  void TryToAnswer(const Listener& listener) const noexcept;
  void Answer(const Listener& listener) const;
  // What the searcher is told of the card's place; nothing when the interface has no address for it.
  std::string PlaceFor(const ClientLib::IPAddress& searcher, std::uint32_t interface) const;

  const SearchSettings settings_;
  std::vector<Listener> listeners_;
  Wake wake_;
  std::atomic<bool> stopping_{false};
  std::thread thread_;
};

}  // namespace VELTRO::KELVO::VirtualCard
