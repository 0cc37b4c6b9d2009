// A lookup table that is made at compile time.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace VELTRO::KELVO::ClientLib {

// A name of up to eight bytes as one number; 0 for an empty or a longer one, which no table holds.
constexpr std::uint64_t NameKey(std::string_view name) {
  if (name.size() > 8) return 0;
  std::uint64_t key = 0;
  for (const char c : name) key = key << 8 | static_cast<unsigned char>(c);
  return key;
}

// Finds values by number. Of two entries with one key the first is found.
template <class Value, std::size_t Count>
class FixedTable {
 public:
  struct Entry {
    std::uint64_t Key;
    Value Found;
  };

  consteval explicit FixedTable(const std::array<Entry, Count>& entries) {
    for (std::size_t i = 0; i < Count; ++i) {
      std::size_t slot = SlotOf(entries[i].Key);
      while (slots_[slot] != 0) slot = (slot + 1) % Slots;
      slots_[slot] = static_cast<std::uint16_t>(i + 1);
      entries_[i] = entries[i];
    }
  }

  constexpr const Value* Find(std::uint64_t key) const {
    for (std::size_t slot = SlotOf(key); slots_[slot] != 0; slot = (slot + 1) % Slots) {
      const Entry& entry = entries_[slots_[slot] - 1U];
      if (entry.Key == key) return &entry.Found;
    }
    return nullptr;
  }

 private:
  // A quarter full: most keys are found at their first slot.
  static constexpr std::size_t Slots = std::bit_ceil(4 * Count);

  static constexpr std::size_t SlotOf(std::uint64_t key) {
    return static_cast<std::size_t>(key * 0x9E3779B97F4A7C15U >> (64 - std::countr_zero(Slots)));
  }

  std::array<std::uint16_t, Slots> slots_{};
  std::array<Entry, Count> entries_{};
};

}  // namespace VELTRO::KELVO::ClientLib
