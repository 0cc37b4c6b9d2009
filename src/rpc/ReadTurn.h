// Whose turn it is to read from a connection. Usually the receive thread's. It steps back while nobody waits for an
// answer; a thread that then makes a call takes the turn and reads its answer itself, which spares the way through a
// second thread.
#pragma once

#include <atomic>

#include "common/Descriptor.h"
#include "common/Mutex.h"

namespace VELTRO::KELVO::ClientLib {

class ReadTurn {
 public:
  // Names the socket, of which the receive thread, yet to be started, has the turn.
  void Open(int socket) KELVO_EXCLUDES(mutex_);
  // To be called before the socket is closed, when the receive thread has ended or is ending, with the turn.
  void Close() KELVO_EXCLUDES(mutex_);

  // For the receive thread, which has the turn: gives it up, and takes it back when there is something to read and no
  // caller to read it, or when it is handed over. The first time takes a descriptor more; where the system has none the
  // receive thread keeps the turn for ever.
  void StepBack() KELVO_EXCLUDES(mutex_);

  // Whether the receive thread has been handed something that it has not yet taken.
  bool IsHandedOver() const { return state_.load(std::memory_order_acquire) == HandedOver; }

  // A caller's turn.
  class OfCaller {
   public:
    explicit OfCaller(ReadTurn& turn) : turn_(turn) {}
    ~OfCaller() { Return(); }
    OfCaller(const OfCaller&) = delete;
    OfCaller& operator=(const OfCaller&) = delete;

    // Takes the turn if nobody has it. From then on what arrives does not wake the receive thread.
    void TryTake();
    bool IsTaken() const { return taken_; }
    // Gives it back, if it was taken.
    void Return() { GiveBack(Free); }
    // The same, but the next turn is the receive thread's: there is something that only it may read.
    void HandOver() { GiveBack(HandedOver); }

   private:
    void GiveBack(int state);

    ReadTurn& turn_;
    bool taken_ = false;
  };

 private:
  enum : int { Free, HandedOver, Taken };

  bool Take(int state);
  // The descriptor on which the receive thread sleeps, or -1.
  int GetWatch() KELVO_EXCLUDES(mutex_);
  // Wakes the receive thread for what the state says, once. To be called when the state has changed: of several threads
  // that change it, each does, and the last one sees the last state.
  void Watch() KELVO_EXCLUDES(mutex_);

  std::atomic<int> state_{Taken};
  Mutex mutex_;  // guards the life of the descriptors; nothing is waited for under it
  Descriptor watch_ KELVO_GUARDED_BY(mutex_);
  int socket_ KELVO_GUARDED_BY(mutex_) = -1;
  bool isWatchMade_ KELVO_GUARDED_BY(mutex_) = false;
};

}  // namespace VELTRO::KELVO::ClientLib
