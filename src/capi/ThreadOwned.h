// One T for each thread, quick to reach.
#pragma once

#include <cstddef>
#include <new>

namespace VELTRO::KELVO::ClientLib {

// It serves to the very end of its thread: destructors of an application's static and thread-local objects
// call the library, too. So it is never destroyed; when the thread ends, its Release() gives back what it holds.
template <class T>
class ThreadOwned {
 public:
  static T& Get() noexcept { return instance_ != nullptr ? *instance_ : Create(); }

 private:
  [[gnu::noinline]] static T& Create() noexcept {
    alignas(T) thread_local std::byte storage[sizeof(T)];
    instance_ = ::new (storage) T;
    struct AtThreadEnd {
      ~AtThreadEnd() { instance_->Release(); }
    };
    thread_local const AtThreadEnd atThreadEnd;
    static_cast<void>(&atThreadEnd);  // made with the first use
    return *instance_;
  }

  // Every exported function reaches for one first: a pointer at a fixed place of the thread, found without a call.
  [[gnu::tls_model("initial-exec")]] inline static constinit thread_local T* instance_ = nullptr;
};

}  // namespace VELTRO::KELVO::ClientLib
