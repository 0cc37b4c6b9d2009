// Descriptors of the server.
#pragma once

#include <string>

#include "common/IPAddress.h"

namespace VELTRO::KELVO::VirtualCard {

// Owns a descriptor.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  ~Descriptor() { Close(); }
  Descriptor(Descriptor&& other) noexcept : number_(other.number_) { other.number_ = -1; }
  Descriptor& operator=(Descriptor&& other) noexcept;

  int Get() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }
  void Close();

 private:
  int number_;
};

// Wakes a poll from another thread.
class Wake {
 public:
  // Throws std::system_error.
  Wake();
  int Get() const { return event_.Get(); }
  void Signal();
  void Clear();

 private:
  Descriptor event_;
};

// A socket that listens; port 0 takes a free one. Throws std::runtime_error "Cannot listen on PLACE:
// REASON.".
Descriptor Listen(const ClientLib::IPAddress& address, int port);
// The place that the socket is bound to, as "127.0.0.1:49374" or "[::1]:49374".
std::string PlaceOf(const Descriptor& socket);

// The next connection that waits at the listening socket, ready for use, and its peer's place. Not open when
// there is none; `exhausted` then says whether that is for want of descriptors or memory.
Descriptor Accept(const Descriptor& listener, std::string& peer, bool& exhausted);

}  // namespace VELTRO::KELVO::VirtualCard
