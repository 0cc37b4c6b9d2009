#include "rpc/Body.h"

#include <stdexcept>
#include <string>

namespace VELTRO::KELVO::ClientLib::Body {

namespace {

constexpr const char* Malformed =
    "The body is cut short, malformed, too deeply nested, or claims more than it holds.";

[[noreturn]] void Refuse(const char* reason) {
  throw std::runtime_error(std::string("Invalid packet! ") + reason);
}

// Looks at nothing but the nesting: what is cut short or claims more than it holds, the parser itself
// refuses.
class Walk : public msgpack::null_visitor {
 public:
  explicit Walk(std::uint32_t depth) : depthLeft_(depth) {}

  bool start_array(std::uint32_t) { return Enter(); }
  bool end_array() { return Leave(); }
  bool start_map(std::uint32_t) { return Enter(); }
  bool end_map() { return Leave(); }

 private:
  bool Enter() {
    if (depthLeft_ == 0) return false;
    --depthLeft_;
    return true;
  }
  bool Leave() {
    ++depthLeft_;
    return true;
  }

  std::uint32_t depthLeft_;
};

// Stops at anything that is no non-negative integer.
class IdVisitor : public msgpack::null_visitor {
 public:
  bool visit_nil() { return false; }
  bool visit_boolean(bool) { return false; }
  bool visit_positive_integer(std::uint64_t value) {
    id = value;
    return true;
  }
  bool visit_negative_integer(std::int64_t value) {
    if (value < 0) return false;
    id = static_cast<std::uint64_t>(value);  // a signed encoding of a non-negative number
    return true;
  }
  bool visit_float32(float) { return false; }
  bool visit_float64(double) { return false; }
  bool visit_str(const char*, std::uint32_t) { return false; }
  bool visit_bin(const char*, std::uint32_t) { return false; }
  bool visit_ext(const char*, std::uint32_t) { return false; }
  bool start_array(std::uint32_t) { return false; }
  bool start_map(std::uint32_t) { return false; }

  std::uint64_t id = UINT64_MAX;
};

bool Refer(msgpack::type::object_type, std::size_t, void*) {
  return true;
}

// A body this short is not walked first: whatever it claims within the limits below is a matter of kilobytes, and
// most notifications are shorter than the walk is long.
constexpr std::size_t SmallBytes = 64;

msgpack::object UnpackSmall(std::span<const char> bytes, msgpack::zone& zone) {
  const std::size_t most = bytes.size();  // a byte, at least, each
  try {
    return msgpack::unpack(zone, bytes.data(), most, &Refer, nullptr, {most, most, most, most, most, most});
  } catch (const msgpack::unpack_error&) {
    Refuse(Malformed);
  }
}

}  // namespace

std::uint32_t TakeRequestId(std::span<const char> bytes, std::size_t& position) {
  IdVisitor visitor;
  std::size_t offset = 0;
  if (!msgpack::parse(bytes.data(), bytes.size(), offset, visitor) || visitor.id > UINT32_MAX) {
    throw std::runtime_error("Invalid packet!");
  }
  position += offset;
  return static_cast<std::uint32_t>(visitor.id);
}

std::size_t Check(std::span<const char> bytes, std::uint32_t depth) {
  if (bytes.empty()) Refuse("The body holds no object.");
  Walk walk(depth);
  std::size_t offset = 0;
  if (!msgpack::parse(bytes.data(), bytes.size(), offset, walk)) {
    Refuse(Malformed);
  }
  return offset;
}

msgpack::object_handle Unpack(std::span<const char> bytes, std::size_t& used, std::uint32_t depth) {
  used = Check(bytes, depth);
  return msgpack::unpack(bytes.data(), used, &Refer);
}

msgpack::object Unpack(std::span<const char> bytes, msgpack::zone& zone, std::uint32_t depth) {
  if (bytes.size() <= SmallBytes && depth >= SmallBytes) return UnpackSmall(bytes, zone);
  const std::size_t used = Check(bytes, depth);
  return msgpack::unpack(zone, bytes.data(), used, &Refer);
}

}  // namespace VELTRO::KELVO::ClientLib::Body
