// Where answers wait for their callers. The receive thread delivers packets; each wakes the one caller that
// waits for its request id and nobody else.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <span>
#include <vector>

#include "common/Deadline.h"
#include "common/Futex.h"
#include "common/Mutex.h"
#include "rpc/InputPacket.h"

namespace VELTRO::KELVO::ClientLib {

class Inbox {
 public:
  // Answers that nobody waits for are kept, in case somebody asks for them yet, but no more than this in all;
  // the oldest go first.
  static constexpr std::size_t MostUnclaimed = 256;
  static constexpr std::size_t MostUnclaimedBytes = 4 << 20;

  // An answer that has come, a whole frame. A short one stays where it lies until it is delivered, and goes from there
  // into room that its caller has made. A long one is copied at once, while nobody waits for that.
  class Arrival {
   public:
    // Throws std::runtime_error "Invalid packet!".
    explicit Arrival(std::span<const unsigned char> frame);

   private:
    friend class Inbox;
    static constexpr std::size_t MostInPlace = 128;  // bytes of a frame

    bool IsInPlace() const { return frame_.size() <= MostInPlace; }
    void MoveTo(InputPacket& packet);

    std::span<const unsigned char> frame_;
    std::uint32_t requestId_;
    InputPacket copy_;
  };

  // One caller's wait for one id. Made before the request is sent, it makes sure that the answer is not taken
  // for unclaimed, however early it comes.
  class Ticket {
   public:
    // A kept answer of the same id is taken as this ticket's when `takeKept`, else it is from another age and
    // dropped.
    Ticket(Inbox& inbox, std::uint32_t requestId, bool takeKept);
    ~Ticket();
    Ticket(const Ticket&) = delete;
    Ticket& operator=(const Ticket&) = delete;

    // Waits for the answer until `deadline`. Throws std::runtime_error "ConnectionAborted" when the inbox
    // closes, or "Response was not received in the given timespan.".
    InputPacket Wait(Deadline deadline);
    // Whether Wait has nothing to wait for.
    bool IsSettled() const { return signal_->IsPosted(); }

   private:
    friend class Inbox;
    enum class State { Waiting, Delivered, Aborted };

    static std::shared_ptr<Signal> SignalOfThisThread();

    Inbox& inbox_;
    const std::uint32_t requestId_;
    const std::shared_ptr<Signal> signal_;
    State state_ = State::Waiting;  // under the inbox's mutex while on its list
    InputPacket packet_;
    bool finished_ = false;  // waited for: off the list, its signal taken
  };

  // Opens an inbox anew: forgets what was kept.
  void Open();
  // Ends every wait, now and to come, with "ConnectionAborted".
  void Close();
  // Hands the answer to its ticket, or keeps it in place of an older one of the same id. Says whether others wait yet.
  bool Deliver(Arrival answer);

  // Whether somebody waits.
  bool IsAwaited();
  std::size_t GetUnclaimedCount();

 private:
  void Keep(InputPacket packet) KELVO_REQUIRES(mutex_);
  InputPacket TakeUnclaimed(std::map<std::uint32_t, InputPacket>::iterator position) KELVO_REQUIRES(mutex_);

  Mutex mutex_;
  bool open_ KELVO_GUARDED_BY(mutex_) = true;
  std::vector<Ticket*> tickets_ KELVO_GUARDED_BY(mutex_);  // a caller each: few, so searched
  std::map<std::uint32_t, InputPacket> unclaimed_ KELVO_GUARDED_BY(mutex_);
  std::deque<std::uint32_t> unclaimedOrder_ KELVO_GUARDED_BY(mutex_);  // ids as they came
  std::size_t unclaimedBytes_ KELVO_GUARDED_BY(mutex_) = 0;
};

}  // namespace VELTRO::KELVO::ClientLib
