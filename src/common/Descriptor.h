// Owns a descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace VELTRO::KELVO::ClientLib {

class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  ~Descriptor() { Close(); }
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }

  int Get() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }
  // Leaves it to somebody else.
  int Release() { return std::exchange(number_, -1); }
  void Close() {
    if (IsOpen()) close(Release());
  }

 private:
  int number_;
};

}  // namespace VELTRO::KELVO::ClientLib
