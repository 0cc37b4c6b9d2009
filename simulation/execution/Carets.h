// Where a run is, for others to look at while it runs.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

namespace VELTRO::KELVO::Simulation {

// One thread sets, any thread reads. A place is written as a whole for each command, so it costs no more than a
// store.
class Carets {
 public:
  static constexpr std::int32_t NotThere = -1;
  static constexpr std::size_t MostLevels = 65;

  // How many lists the run is in, one called by the other.
  void SetLevels(std::size_t count) { levels_.store(count, std::memory_order_relaxed); }
  // Where it is in the list at that level.
  void Set(std::size_t level, std::int32_t listId, std::size_t index) {
    places_[level].store(std::uint64_t{static_cast<std::uint32_t>(listId)} << 32 | (index & IndexMask),
                         std::memory_order_relaxed);
  }
  // No list of the card.
  void SetNone(std::size_t level) { places_[level].store(None, std::memory_order_relaxed); }

  // The index of the command that runs in the list, in its innermost call; NotThere when the run is not in it.
  std::int32_t Find(std::int32_t listId) const {
    for (std::size_t level = levels_.load(std::memory_order_relaxed); level-- > 0;) {
      const std::uint64_t place = places_[level].load(std::memory_order_relaxed);
      if (place != None && static_cast<std::int32_t>(place >> 32) == listId) {
        return static_cast<std::int32_t>(place & IndexMask);
      }
    }
    return NotThere;
  }

 private:
  static constexpr std::uint64_t IndexMask = 0x7FFFFFFF;
  static constexpr std::uint64_t None = ~std::uint64_t{0};  // an index that the mask does not let through

  std::array<std::atomic<std::uint64_t>, MostLevels> places_{};
  std::atomic<std::size_t> levels_{0};
};

}  // namespace VELTRO::KELVO::Simulation
