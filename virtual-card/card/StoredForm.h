// How what the card has stored is made of bytes and read back from them.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "rpc/Body.h"

namespace VELTRO::KELVO::VirtualCard {

template <class T>
std::string ToStored(const T& value) {
  struct {
    std::string Bytes;
    void write(const char* bytes, std::size_t count) { Bytes.append(bytes, count); }
  } stored;
  msgpack::pack(stored, value);
  return std::move(stored.Bytes);
}

// From the one MessagePack object that `bytes` have to be. Throws std::runtime_error "What is stored is damaged.", or what
// the conversion throws.
template <class T>
T FromStored(std::string_view bytes) {
  msgpack::object_handle object;
  std::size_t used = 0;
  try {
    object = ClientLib::Body::Unpack(bytes, used, ClientLib::Body::UsualDepth);
  } catch (const std::runtime_error&) {  // its words are those of packets
    used = 0;
  }
  if (used == 0 || used != bytes.size()) throw std::runtime_error("What is stored is damaged.");
  T value;
  object->convert(value);
  return value;
}

// The same for lists and fonts, however large.
template <class T>
requires requires(T& value, ClientLib::Body::Reader& reader) {
  value.TakeFrom(reader);
}
T FromStored(std::string_view bytes) {
  T value;
  ClientLib::Body::Reader reader(bytes);
  try {
    value.TakeFrom(reader);
    if (reader.IsAtEnd()) return value;
  } catch (const msgpack::type_error&) {
    value = T();
  } catch (const std::runtime_error&) {
    value = T();
  }
  throw std::runtime_error("What is stored is damaged.");
}

}  // namespace VELTRO::KELVO::VirtualCard
