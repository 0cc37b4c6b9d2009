#include "methods/RequestCost.h"

#include "rpc/Body.h"
#include "rpc/Packet.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

constexpr std::size_t SmallBytes = 4096;  // not worth looking at
constexpr std::size_t Copies = 3;         // of its bytes: the packet, and what the method makes of it

class Counter : public msgpack::null_visitor {
 public:
  std::size_t GetCount() const { return count_; }

  bool visit_nil() { return Add(); }
  bool visit_boolean(bool) { return Add(); }
  bool visit_positive_integer(std::uint64_t) { return Add(); }
  bool visit_negative_integer(std::int64_t) { return Add(); }
  bool visit_float32(float) { return Add(); }
  bool visit_float64(double) { return Add(); }
  bool visit_str(const char*, std::uint32_t) { return Add(); }
  bool visit_bin(const char*, std::uint32_t) { return Add(); }
  bool visit_ext(const char*, std::uint32_t) { return Add(); }
  bool start_array(std::uint32_t) { return Enter(); }
  bool end_array() { return Leave(); }
  bool start_map(std::uint32_t) { return Enter(); }
  bool end_map() { return Leave(); }

 private:
  bool Add() {
    ++count_;
    return true;
  }
  bool Enter() { return Add() && ++depth_ <= ClientLib::Body::UsualDepth; }
  bool Leave() {
    --depth_;
    return true;
  }

  std::size_t count_ = 0;
  std::uint32_t depth_ = 0;
};

}  // namespace

std::size_t CostOf(std::span<const unsigned char> frame) {
  if (frame.size() <= SmallBytes) return 0;
  const auto body = frame.subspan(ClientLib::Packet::FullHeaderLen);
  Counter counter;
  // Object by object; what is malformed ends it, as it will end the request.
  for (std::size_t offset = 0; offset < body.size();) {
    if (!msgpack::parse(reinterpret_cast<const char*>(body.data()), body.size(), offset, counter)) break;
  }
  return Copies * body.size() + counter.GetCount() * sizeof(msgpack::object);
}

}  // namespace VELTRO::KELVO::VirtualCard
