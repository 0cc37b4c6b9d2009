#include "rpc/CallbackWait.h"

#include <map>
#include <stdexcept>

#include "common/Mutex.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

// Which connection's receive thread waits for which other's. There is never a circle in it.
struct Waits {
  Mutex mutex;
  std::map<const ClientTransport*, const ClientTransport*> byWaiting KELVO_GUARDED_BY(mutex);
};

Waits& GetWaits() {
  // Never destroyed: receive threads may outlive every static object.
  static Waits* const waits = new Waits;
  return *waits;
}

}  // namespace

void CallbackWait::Begin(const ClientTransport* awaited) {
  const ClientTransport* const self = ReceiveThread::Current();
  if (awaited == self) throw std::runtime_error("A callback must not wait for its own connection.");
  Waits& waits = GetWaits();
  const MutexLock lock(waits.mutex);
  for (auto next = waits.byWaiting.find(awaited); next != waits.byWaiting.end();
       next = waits.byWaiting.find(next->second)) {
    if (next->second == self) {
      throw std::runtime_error("A callback must not wait for a connection whose callback waits for its own.");
    }
  }
  waits.byWaiting[self] = awaited;
  waiting_ = self;
}

void CallbackWait::End() noexcept {
  Waits& waits = GetWaits();
  const MutexLock lock(waits.mutex);
  waits.byWaiting.erase(waiting_);
}

}  // namespace VELTRO::KELVO::ClientLib
