#include "lists/ListEvents.h"

#include <utility>

#include "common/Deadline.h"

namespace VELTRO::KELVO::ClientLib {

void ListEvents::Connected(std::int32_t connectionId, std::uint64_t link) {
  connectionId_ = connectionId;
  const MutexLock lock(mutex_);
  link_ = Link::Up;
  linkNumber_ = link;
  clearEventQueues();
  lastError_.reset();
}

void ListEvents::ConnectionLost(std::uint64_t link) {
  const MutexLock lock(mutex_);
  if (link_ != Link::Up || linkNumber_ != link) return;
  link_ = Link::Lost;
  changed_.NotifyAll();
}

void ListEvents::Abandon() {
  for (auto& callbacks : callbacks_) callbacks.Abandon();
  errorCallbacks_.Abandon();
}

void ListEvents::AppendEvent(ListEventKind kind, std::int32_t value) {
  const MutexLock lock(mutex_);
  Channel& channel = channels_[Index(kind)];
  channel.Pending.push_back(value);
  if (channel.Pending.size() > MostPending) channel.Pending.pop_front();
  if (channel.Waiting > 0) changed_.NotifyAll();
}

void ListEvents::OnReceived(ListEventKind kind, std::int32_t value) {
  callbacks_[Index(kind)].CallAll(connectionId_.load(), value);
}

void ListEvents::OnErrorReceived(const RpcErrorEventArgs& error) {
  {
    const MutexLock lock(mutex_);
    lastError_ = error;
  }
  errorCallbacks_.CallAll(connectionId_.load(), error.Code, error.Message.c_str(),
                          static_cast<std::uint32_t>(error.Message.size()));
}

std::optional<std::int32_t> ListEvents::Wait(ListEventKind kind, std::chrono::milliseconds timeout) {
  const Deadline deadline = DeadlineAfter(timeout);
  MutexLock lock(mutex_);
  Channel& channel = channels_[Index(kind)];
  const std::uint64_t interruptions = channel.Interruptions;
  std::optional<std::int32_t> value;
  ++channel.Waiting;
  while (channel.Pending.empty() && link_ == Link::Up && channel.Interruptions == interruptions &&
         std::chrono::steady_clock::now() < deadline) {
    changed_.WaitUntil(lock, deadline);
  }
  --channel.Waiting;
  if (!channel.Pending.empty()) {
    value = channel.Pending.front();
    channel.Pending.pop_front();
  } else if (link_ != Link::Up) {
    throw std::runtime_error(link_ == Link::Lost ? "ConnectionAborted" : "Connection not active!");
  }
  return value;
}

void ListEvents::InterruptWait(ListEventKind kind) {
  const MutexLock lock(mutex_);
  ++channels_[Index(kind)].Interruptions;
  changed_.NotifyAll();
}

std::uint32_t ListEvents::RegisterCallback(ListEventKind kind, EventCallback callback) {
  return callbacks_[Index(kind)].Register(std::move(callback));
}

void ListEvents::UnRegisterCallback(ListEventKind kind, std::uint32_t id) {
  callbacks_[Index(kind)].UnRegister(id);
}

std::uint32_t ListEvents::RegisterErrorEventCallback(ErrorCallback callback) {
  return errorCallbacks_.Register(std::move(callback));
}

void ListEvents::UnRegisterErrorEventCallback(std::uint32_t id) {
  errorCallbacks_.UnRegister(id);
}

void ListEvents::clearEventQueues() {
  for (Channel& channel : channels_) channel.Pending.clear();
}

void ListEvents::ClearPendingEvents() {
  const MutexLock lock(mutex_);
  clearEventQueues();
  lastError_.reset();
}

void ListEvents::ClearError() {
  const MutexLock lock(mutex_);
  lastError_.reset();
}

bool ListEvents::CheckAndClearError() {
  const MutexLock lock(mutex_);
  return std::exchange(lastError_, std::nullopt).has_value();
}

}  // namespace VELTRO::KELVO::ClientLib
