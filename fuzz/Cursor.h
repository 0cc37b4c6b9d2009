// Takes decisions and values from the front of a fuzzer's input. An input that has ended gives zeroes, so
// that every input means something.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace VELTRO::KELVO::Fuzz {

class Cursor {
 public:
  Cursor(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

  bool Empty() const { return rest_.empty(); }
  std::span<const unsigned char> Rest() const { return rest_; }

  std::span<const unsigned char> Take(std::size_t count) {
    const auto taken = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }

  // A number or a structure of numbers as it lies in memory.
  template <class T>
  T Next() {
    T value{};
    const auto taken = Take(sizeof value);
    if (!taken.empty()) std::memcpy(static_cast<void*>(&value), taken.data(), taken.size());
    return value;
  }

 private:
  std::span<const unsigned char> rest_;
};

}  // namespace VELTRO::KELVO::Fuzz
