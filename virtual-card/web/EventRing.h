// What streams of events are made of: the latest events, each with an id.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

namespace VELTRO::KELVO::VirtualCard {

// One thread's. Whoever has been away gets what has happened since, as long as it is still there; else one event, "anew",
// says that all is to be fetched again.
class EventRing {
 public:
  static constexpr std::size_t MostBytes = 1 << 20;

  // `epoch` tells this ring's ids from those of another card that was at the same place.
  explicit EventRing(std::string epoch) : epoch_(std::move(epoch)) {}

  // `data` is one line.
  void Add(std::string_view name, std::string_view data);
  // Of the latest event.
  std::string GetLatestId() const { return IdOf(next_ - 1); }

  // Where to go on for whom the event with this id was the latest. Lost: it is no id of this ring.
  static constexpr std::uint64_t Lost = 0;
  std::uint64_t PlaceBehind(std::string_view id) const;
  // The events from the place on, as they travel, at least one of them and then as many as `enough` bytes take; moves the
  // place. Empty when there are none.
  std::string Read(std::uint64_t& place, std::size_t enough) const;

 private:
  std::string IdOf(std::uint64_t number) const { return epoch_ + "-" + std::to_string(number); }

  const std::string epoch_;
  std::deque<std::string> events_;
  std::size_t bytes_ = 0;
  std::uint64_t next_ = 1;  // event 0 is that nothing has happened yet
};

}  // namespace VELTRO::KELVO::VirtualCard
