#include "rpc/Inbox.h"

#include <algorithm>
#include <stdexcept>

namespace VELTRO::KELVO::ClientLib {

Inbox::Arrival::Arrival(std::span<const unsigned char> frame)
    : frame_(frame), requestId_(InputPacket::RequestIdOf(frame)) {
  if (!IsInPlace()) copy_.Fill(frame);
}

void Inbox::Arrival::MoveTo(InputPacket& packet) {
  if (IsInPlace()) {
    packet.Fill(frame_);
  } else {
    packet = std::move(copy_);
  }
}

// Every thread has one for all its waits; shared, so that the receive thread may still be leaving Post when the thread
// that it woke has ended.
std::shared_ptr<Signal> Inbox::Ticket::SignalOfThisThread() {
  // Destructors of an application's static and thread-local objects make calls, too, and may run when the
  // thread's own is gone.
  thread_local bool gone = false;
  if (gone) return std::make_shared<Signal>();
  struct Owner {
    const std::shared_ptr<Signal> signal = std::make_shared<Signal>();
    ~Owner() { gone = true; }
  };
  thread_local const Owner owner;
  return owner.signal;
}

Inbox::Ticket::Ticket(Inbox& inbox, std::uint32_t requestId, bool takeKept)
    : inbox_(inbox), requestId_(requestId), signal_(SignalOfThisThread()) {
  // By the thread that frees it: memory that goes from one thread to another costs more.
  packet_.MakeRoom(Arrival::MostInPlace);
  const MutexLock lock(inbox_.mutex_);
  if (const auto kept = inbox_.unclaimed_.find(requestId); kept != inbox_.unclaimed_.end()) {
    InputPacket packet = inbox_.TakeUnclaimed(kept);
    if (takeKept) {
      packet_ = std::move(packet);
      state_ = State::Delivered;
      signal_->Post();
      return;
    }
  }
  if (!inbox_.open_) {
    state_ = State::Aborted;
    signal_->Post();
    return;
  }
  inbox_.tickets_.push_back(this);
}

Inbox::Ticket::~Ticket() {
  if (finished_) return;
  {
    const MutexLock lock(inbox_.mutex_);
    if (std::erase(inbox_.tickets_, this) != 0) return;
  }
  // Whoever took the ticket off the list posts its signal. Left there, the post would end the thread's next
  // wait.
  signal_->Wait();
}

InputPacket Inbox::Ticket::Wait(Deadline deadline) {
  const bool posted = signal_->WaitUntil(deadline);
  if (!posted) {
    const MutexLock lock(inbox_.mutex_);
    if (std::erase(inbox_.tickets_, this) != 0) {
      finished_ = true;
      throw std::runtime_error("Response was not received in the given timespan.");
    }
  }
  if (!posted) signal_->Wait();  // delivered in the last moment: the post is on its way
  finished_ = true;
  if (state_ == State::Aborted) throw std::runtime_error("ConnectionAborted");
  return std::move(packet_);
}

void Inbox::Open() {
  const MutexLock lock(mutex_);
  open_ = true;
  unclaimed_.clear();
  unclaimedOrder_.clear();
  unclaimedBytes_ = 0;
}

void Inbox::Close() {
  const MutexLock lock(mutex_);
  open_ = false;
  for (Ticket* ticket : tickets_) {
    ticket->state_ = Ticket::State::Aborted;
    const auto signal = ticket->signal_;  // the ticket may be gone as soon as it is posted
    signal->Post();
  }
  tickets_.clear();
}

bool Inbox::Deliver(Arrival answer) {
  std::shared_ptr<Signal> signal;
  bool doOthersWait = false;
  {
    const MutexLock lock(mutex_);
    const auto found = std::find_if(tickets_.begin(), tickets_.end(), [&](const Ticket* ticket) {
      return ticket->requestId_ == answer.requestId_;
    });
    if (found == tickets_.end()) {
      InputPacket packet;
      answer.MoveTo(packet);
      Keep(std::move(packet));
      return !tickets_.empty();
    }
    Ticket& ticket = **found;
    *found = tickets_.back();
    tickets_.pop_back();
    answer.MoveTo(ticket.packet_);
    ticket.state_ = Ticket::State::Delivered;
    signal = ticket.signal_;
    doOthersWait = !tickets_.empty();
  }
  signal->Post();
  return doOthersWait;
}

void Inbox::Keep(InputPacket packet) {
  const std::uint32_t id = packet.GetRequestId().value();
  if (const auto older = unclaimed_.find(id); older != unclaimed_.end()) TakeUnclaimed(older);
  unclaimedBytes_ += packet.GetSize();
  unclaimedOrder_.push_back(id);
  unclaimed_.emplace(id, std::move(packet));
  while (unclaimed_.size() > MostUnclaimed || unclaimedBytes_ > MostUnclaimedBytes) {
    TakeUnclaimed(unclaimed_.find(unclaimedOrder_.front()));
  }
}

InputPacket Inbox::TakeUnclaimed(std::map<std::uint32_t, InputPacket>::iterator position) {
  InputPacket packet = std::move(position->second);
  std::erase(unclaimedOrder_, position->first);
  unclaimedBytes_ -= packet.GetSize();
  unclaimed_.erase(position);
  return packet;
}

bool Inbox::IsAwaited() {
  const MutexLock lock(mutex_);
  return !tickets_.empty();
}

std::size_t Inbox::GetUnclaimedCount() {
  const MutexLock lock(mutex_);
  return unclaimed_.size();
}

}  // namespace VELTRO::KELVO::ClientLib
