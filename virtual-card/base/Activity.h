// Who is connected, what they called last and what all clients were told: for those who look at the card.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "common/Mutex.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time. Calls and notifications are kept while somebody watches, the latest of them;
// for want of memory they are not.
class Activity {
 public:
  static constexpr std::size_t MostCalls = 5, MostNotifications = 50;  // of each client; of all
  static constexpr std::size_t MostTextBytes = 160;                    // of one; the rest is cut

  void Watch(bool isWatched) { watched_.store(isWatched, std::memory_order_relaxed); }
  bool IsWatched() const { return watched_.load(std::memory_order_relaxed); }

  // A client, as long as it is connected.
  class Presence {
   public:
    Presence(Activity& activity, std::string peer);
    ~Presence();
    Presence(const Presence&) = delete;
    Presence& operator=(const Presence&) = delete;
    void AddCall(std::string_view text) noexcept;

   private:
    Activity& activity_;
    std::uint64_t number_;
  };

  void AddNotification(std::string_view text) noexcept;

  struct Client {
    std::string Peer;
    std::uint64_t Calls = 0;  // while somebody watched
    std::deque<std::string> Latest = {};
  };
  // The first `most`, in the order in which they came.
  std::vector<Client> GetClients(std::size_t most);
  struct Notifications {
    std::uint64_t Count = 0;  // while somebody watched
    std::deque<std::string> Latest = {};
  };
  Notifications GetNotifications();

 private:
  std::atomic<bool> watched_{false};
  ClientLib::Mutex mutex_;
  std::uint64_t latest_ KELVO_GUARDED_BY(mutex_) = 0;
  std::map<std::uint64_t, Client> clients_ KELVO_GUARDED_BY(mutex_);
  Notifications notifications_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace VELTRO::KELVO::VirtualCard
