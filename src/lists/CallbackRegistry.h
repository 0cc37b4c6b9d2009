// The callbacks of one kind of notification.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "common/Mutex.h"
#include "rpc/CallbackWait.h"

namespace VELTRO::KELVO::ClientLib {

// They stand under the ids 2 to 6. Deliberate oddity: the attempt with id 7 fails but leaves its entry in place, which is
// called like the others until it is unregistered. One thread, the receive thread, calls them; any thread registers and
// unregisters.
template <class Callback>
class CallbackRegistry {
 public:
  // Returns the id. Throws std::runtime_error "Unable to register callback!".
  std::uint32_t Register(Callback callback);
  // When it returns, the callback neither runs nor will begin: one that runs is waited for, except from inside itself.
  // Throws as CallbackWait does, when the callback has no entry any more but may still be running.
  void UnRegister(std::uint32_t id);
  // Calls, in the order of their ids, the callbacks that are registered when it begins and still when their turn comes.
  // No lock is held meanwhile.
  template <class... Args>
  void CallAll(const Args&... args);
  // Lets nobody wait for a running callback any more.
  void Abandon();

 private:
  static constexpr std::uint32_t FirstId = 2;
  static constexpr std::uint32_t FailingId = 7;

  struct Entry {
    explicit Entry(Callback function) : Function(std::move(function)) {}
    const Callback Function;
    std::atomic<bool> IsRegistered{true};
  };

  // While one lives, callbacks of a notification are being called.
  class Round {
   public:
    explicit Round(CallbackRegistry& owner) : owner_(owner) {}
    ~Round() { owner_.SetRunning(nullptr); }
    Round(const Round&) = delete;
    Round& operator=(const Round&) = delete;

   private:
    CallbackRegistry& owner_;
  };

  // Whoever waits for the one that has run so far is woken.
  void SetRunning(const Entry* entry);

  Mutex mutex_;
  CondVar ended_;
  std::map<std::uint32_t, std::shared_ptr<Entry>> callbacks_ KELVO_GUARDED_BY(mutex_);
  bool abandoned_ KELVO_GUARDED_BY(mutex_) = false;
  std::atomic<std::uint64_t> version_{0};  // of callbacks_

  // Notifications come by the million, so calling takes no lock. The calling thread says which callback it is about to
  // run and then looks whether that is registered; who unregisters it takes that away and then looks which one runs.
  // One of the two sees the other, as all of this is in one order.
  std::atomic<const Entry*> running_{nullptr};
  std::atomic<unsigned> waiting_{0};
  std::atomic<std::thread::id> thread_{};                    // that calls, and
  std::atomic<const ClientTransport*> connection_{nullptr};  // whose receive thread it is
  std::vector<std::shared_ptr<Entry>> called_;               // its copy of callbacks_, as of
  std::uint64_t calledVersion_ = 0;
};

template <class Callback>
std::uint32_t CallbackRegistry<Callback>::Register(Callback callback) {
  const auto entry = std::make_shared<Entry>(std::move(callback));
  const MutexLock lock(mutex_);
  std::uint32_t id = FirstId;
  while (!callbacks_.emplace(id, entry).second && id != FailingId) ++id;
  ++version_;
  if (id == FailingId) throw std::runtime_error("Unable to register callback!");
  return id;
}

template <class Callback>
void CallbackRegistry<Callback>::UnRegister(std::uint32_t id) {
  MutexLock lock(mutex_);
  const auto found = callbacks_.find(id);
  if (found == callbacks_.end()) return;
  const auto entry = std::move(found->second);
  callbacks_.erase(found);
  ++version_;
  entry->IsRegistered = false;
  if (running_ != entry.get() || thread_ == std::this_thread::get_id()) return;
  const CallbackWait wait(connection_);
  ++waiting_;
  while (running_ == entry.get() && !abandoned_) ended_.Wait(lock);
  --waiting_;
}

template <class Callback>
template <class... Args>
void CallbackRegistry<Callback>::CallAll(const Args&... args) {
  if (calledVersion_ != version_.load(std::memory_order_acquire)) {
    const MutexLock lock(mutex_);
    called_.clear();
    for (const auto& [id, entry] : callbacks_) called_.push_back(entry);
    calledVersion_ = version_;
  }
  if (called_.empty()) return;
  thread_.store(std::this_thread::get_id(), std::memory_order_relaxed);
  connection_.store(ReceiveThread::Current(), std::memory_order_relaxed);
  const Round round(*this);
  for (const auto& entry : called_) {
    SetRunning(entry.get());
    if (entry->IsRegistered) entry->Function(args...);
  }
}

template <class Callback>
void CallbackRegistry<Callback>::SetRunning(const Entry* entry) {
  running_ = entry;
  if (waiting_ == 0) return;
  const MutexLock lock(mutex_);
  ended_.NotifyAll();
}

template <class Callback>
void CallbackRegistry<Callback>::Abandon() {
  const MutexLock lock(mutex_);
  abandoned_ = true;
  ended_.NotifyAll();
}

}  // namespace VELTRO::KELVO::ClientLib
