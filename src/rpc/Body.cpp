#include "rpc/Body.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace VELTRO::KELVO::ClientLib::Body {

namespace {

constexpr const char* Empty = "The body holds no object.";
constexpr const char* Malformed =
    "The body is cut short, malformed, too deeply nested, or claims more than it holds.";

[[noreturn]] void Refuse(const char* reason) {
  throw std::runtime_error(std::string("Invalid packet! ") + reason);
}

// Looks at nothing but the nesting and the number of values: what is cut short or claims more than it holds, the
// parser itself refuses.
class Walk : public msgpack::null_visitor {
 public:
  Walk(std::uint32_t depth, std::size_t values) : depthLeft_(depth), valuesLeft_(values) {}

  bool start_array(std::uint32_t count) { return Enter(count); }
  bool end_array() { return Leave(); }
  bool start_map(std::uint32_t count) { return Enter(2 * std::size_t{count}); }
  bool end_map() { return Leave(); }

  bool HoldsTooMuch() const { return holdsTooMuch_; }

 private:
  bool Enter(std::size_t values) {
    holdsTooMuch_ = values > valuesLeft_;
    if (depthLeft_ == 0 || holdsTooMuch_) return false;
    --depthLeft_;
    valuesLeft_ -= values;
    return true;
  }
  bool Leave() {
    ++depthLeft_;
    return true;
  }

  std::uint32_t depthLeft_;
  std::size_t valuesLeft_;
  bool holdsTooMuch_ = false;
};

// Stops behind the first head, which has to be that of an array or of a map.
class HeadVisitor : public msgpack::null_visitor {
 public:
  bool start_array(std::uint32_t value) { return Stop(value, false); }
  bool start_map(std::uint32_t value) { return Stop(value, true); }

  std::optional<std::uint32_t> count;
  bool isMap = false;

 private:
  bool Stop(std::uint32_t value, bool map) {
    count = value;
    isMap = map;
    return false;
  }
};

// Stops behind the first object unless it is one of bytes.
class BytesVisitor : public msgpack::null_visitor {
 public:
  bool visit_str(const char* at, std::uint32_t size) { return visit_bin(at, size); }
  bool visit_bin(const char* at, std::uint32_t size) {
    bytes = {at, size};
    return true;
  }
  bool start_array(std::uint32_t) { return false; }
  bool start_map(std::uint32_t) { return false; }

  std::optional<std::span<const char>> bytes;
};

// The length of an array's or a map's head in front of which `first` stands.
std::size_t HeadLength(char first) {
  const auto byte = static_cast<unsigned char>(first);
  if (byte == 0xDC || byte == 0xDE) return 3;
  if (byte == 0xDD || byte == 0xDF) return 5;
  return 1;
}

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
// most answers and notifications are shorter than the walk is long.
constexpr std::size_t SmallBytes = 64;
constexpr std::size_t SmallZoneBytes = 512;  // the system has such pieces of memory at hand

bool IsSmall(std::span<const char> bytes, std::uint32_t depth) {
  return bytes.size() <= SmallBytes && depth >= SmallBytes;
}

msgpack::object UnpackSmall(std::span<const char> bytes, std::size_t& used, msgpack::zone& zone) {
  const std::size_t most = bytes.size();  // a byte, at least, each
  try {
    return msgpack::unpack(zone, bytes.data(), most, used, &Refer, nullptr,
                           {most, most, most, most, most, most});
  } catch (const msgpack::unpack_error&) {
    Refuse(Malformed);
  }
}

}  // namespace

std::uint32_t TakeRequestId(std::span<const char> bytes, std::size_t& position) {
  // As an id is packed, but for a small one; what else may stand for it is left to the parser.
  constexpr char UInt32 = '\xCE';
  if (bytes.size() > sizeof(std::uint32_t) && bytes.front() == UInt32) {
    std::uint32_t id = 0;
    for (const char byte : bytes.subspan(1, sizeof id)) id = id << 8 | static_cast<unsigned char>(byte);
    position += 1 + sizeof id;
    return id;
  }
  IdVisitor visitor;
  std::size_t offset = 0;
  if (!msgpack::parse(bytes.data(), bytes.size(), offset, visitor) || visitor.id > UINT32_MAX) {
    throw std::runtime_error("Invalid packet!");
  }
  position += offset;
  return static_cast<std::uint32_t>(visitor.id);
}

std::size_t Check(std::span<const char> bytes, std::uint32_t depth, std::size_t mostValues) {
  if (bytes.empty()) Refuse(Empty);
  Walk walk(depth, mostValues);
  std::size_t offset = 0;
  if (!msgpack::parse(bytes.data(), bytes.size(), offset, walk)) {
    Refuse(walk.HoldsTooMuch() ? "The body claims or holds too many values." : Malformed);
  }
  return offset;
}

msgpack::object_handle Unpack(std::span<const char> bytes, std::size_t& used, std::uint32_t depth,
                              std::size_t mostValues) {
  used = 0;
  if (bytes.empty()) Refuse(Empty);
  if (IsSmall(bytes, depth)) {
    auto zone = std::make_unique<msgpack::zone>(SmallZoneBytes);
    const msgpack::object object = UnpackSmall(bytes, used, *zone);
    return {object, std::move(zone)};
  }
  used = Check(bytes, depth, mostValues);
  return msgpack::unpack(bytes.data(), used, &Refer);
}

msgpack::object Unpack(std::span<const char> bytes, msgpack::zone& zone, std::uint32_t depth) {
  std::size_t used = 0;
  if (IsSmall(bytes, depth)) return UnpackSmall(bytes, used, zone);
  used = Check(bytes, depth);
  return msgpack::unpack(zone, bytes.data(), used, &Refer);
}

std::span<const char> Bytes(std::span<const char> bytes) {
  BytesVisitor visitor;
  std::size_t offset = 0;
  if (msgpack::parse(bytes.data(), bytes.size(), offset, visitor) && visitor.bytes) return *visitor.bytes;
  Check(bytes, UsualDepth);
  throw msgpack::type_error();
}

msgpack::object Reader::Take() {
  zone_.clear();
  const std::size_t used = Check(rest_, UsualDepth);
  const auto bytes = rest_.first(used);
  rest_ = rest_.subspan(used);
  return msgpack::unpack(zone_, bytes.data(), bytes.size(), &Refer);
}

std::uint32_t Reader::TakeHead(bool isMap) {
  if (rest_.empty()) Refuse(Malformed);
  HeadVisitor head;
  std::size_t offset = 0;
  msgpack::parse(rest_.data(), rest_.size(), offset, head);
  const std::size_t length = HeadLength(rest_.front());
  if (length > rest_.size()) Refuse(Malformed);
  if (!head.count || head.isMap != isMap) throw msgpack::type_error();
  rest_ = rest_.subspan(length);
  return *head.count;
}

}  // namespace VELTRO::KELVO::ClientLib::Body
