// Lines of a recorded session are read.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "rpc/MsgPack.h"
#include "session/FrameLine.h"

namespace VELTRO::KELVO::ClientLib::Recording {

// A JSON object that was read, with the memory that it refers to.
struct Object {
  std::unique_ptr<const std::string> Bytes;
  msgpack::object_handle Handle;
  std::span<const msgpack::object_kv> All;

  const msgpack::object* Find(std::string_view name) const;
  // Throws std::runtime_error when there is none, or it is of another kind.
  template <class T>
  T Get(std::string_view name) const;
  // `otherwise` when there is none.
  template <class T>
  T Get(std::string_view name, T otherwise) const {
    return Find(name) == nullptr ? otherwise : Get<T>(name);
  }
};

// Throws std::runtime_error with what is wrong.
Object ReadObject(std::string_view text);

// Throws std::runtime_error: a member is not what it should be.
[[noreturn]] void RefuseMember(std::string_view name);

template <class T>
T Object::Get(std::string_view name) const {
  const msgpack::object* const value = Find(name);
  if (value == nullptr) RefuseMember(name);
  try {
    return value->as<T>();
  } catch (const msgpack::type_error&) {
    RefuseMember(name);
  }
}

// A line that was read.
struct Line {
  LineHead Head;
  std::uint32_t Id = 0;
  std::string Method;  // empty where it is not known
  // Arguments (an array), result, error or values, as the kind has it; nil where there is none.
  msgpack::object Content;
  std::string Raw;            // the bytes of Raw
  std::uint64_t Missing = 0;  // frames
  std::uint64_t MissingBytes = 0;
  std::uint64_t LeftOut = 0;  // bytes of a file, in whose place nil stands

  // What Content refers to.
  Object Whole;
  std::unique_ptr<const std::string> PackedBytes;
  msgpack::object_handle PackedObject;
};

// Reads one line, without its end. Throws std::runtime_error with what is wrong with it.
Line ReadLine(std::string_view text);

}  // namespace VELTRO::KELVO::ClientLib::Recording
