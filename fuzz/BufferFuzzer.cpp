// The receive buffer against the plainest queue of bytes there is: arrivals and takings of any size, in any
// order.
#include <algorithm>
#include <vector>

#include "Cursor.h"
#include "Require.h"
#include "rpc/ReceiveBuffer.h"

namespace VELTRO::KELVO::Fuzz {

namespace {

using ClientLib::ReceiveBuffer;

constexpr std::size_t FirstCapacity = 4096;  // the least that it begins with
constexpr std::size_t MostBytes = 1 << 18;

class Queue {
 public:
  // As much as fits, or `most` bytes, arrives while `wanted` bytes are waited for.
  void Receive(std::size_t wanted, std::size_t most) {
    const auto room = buffer_.Room(wanted);
    Require(!room.empty(), "there is room for what arrives");
    Require(buffer_.Size() + room.size() <= std::max(FirstCapacity, 2 * mostSinceEmpty_),
            "room grows with what has arrived, not with what is promised");
    const std::size_t count = std::min(most, room.size());
    for (std::size_t i = 0; i < count; ++i) {
      room[i] = next_++;
      bytes_.push_back(room[i]);
    }
    buffer_.Add(count);
    mostSinceEmpty_ = std::max(mostSinceEmpty_, bytes_.size());
    Check();
  }

  void Drop(std::size_t count) {
    count = std::min(count, bytes_.size());
    buffer_.Drop(count);
    bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(count));
    if (bytes_.empty()) mostSinceEmpty_ = 0;
    Check();
  }

  std::size_t Size() const { return bytes_.size(); }

 private:
  void Check() const {
    Require(buffer_.Size() == bytes_.size(), "the buffer holds as much as has arrived");
    Require(std::equal(bytes_.begin(), bytes_.end(), buffer_.Data()), "the buffer holds what has arrived");
  }

  ReceiveBuffer buffer_{FirstCapacity};
  std::vector<unsigned char> bytes_;
  std::size_t mostSinceEmpty_ = 0;
  unsigned char next_ = 0;
};

}  // namespace

}  // namespace VELTRO::KELVO::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace VELTRO::KELVO::Fuzz;
  constexpr int MostSteps = 200;
  Cursor input(data, size);
  Queue queue;
  for (int step = 0; step < MostSteps && !input.Empty(); ++step) {
    const auto kind = input.Next<std::uint8_t>();
    const std::size_t count = input.Next<std::uint16_t>();
    if (kind % 4 == 0) {
      queue.Drop(count);
    } else if (kind % 4 == 1) {
      queue.Drop(queue.Size());
    } else if (queue.Size() < MostBytes) {
      // What a header claims is beyond all bounds now and then.
      queue.Receive(kind % 4 == 2 ? count : 0x7FFFFFFF, kind >= 128 ? SIZE_MAX : count);
    }
  }
  return 0;
}
