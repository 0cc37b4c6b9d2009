// Callbacks of the C++ face: functions with a state, and what unregisters them.
#ifndef KELVO_CALLBACKS_HPP
#define KELVO_CALLBACKS_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

#include "kelvo/KelvoCall.hpp"
#include "kelvo/KelvoEnumerations.hpp"

namespace kelvo {

// Gets a progress value or a list id. On the connection's receive thread, as all callbacks (kelvo.h, 7).
using ListEventCallback = std::function<void(std::int32_t value)>;
// Gets an error that the card reports outside of any call; the text lives only during the call.
using ErrorEventCallback = std::function<void(RpcEventType code, std::string_view message)>;
// Gets how many bytes of a transfer have been moved, and how many there are; returns whether to go on. Runs inside the
// transferring call and on its thread. An exception ends the transfer and comes out of that call.
using FileProgressCallback = std::function<bool(std::uint64_t moved, std::uint64_t whole)>;

// A registered callback: unregisters it at its end, or with Close. Then the callback neither runs nor begins, with the
// exceptions that kelvo.h, 7 names. It may outlive its connection, and may be closed inside the callback.
class Registration {
 public:
  // What unregisters it.
  using Ending = void (*)(void*);

  // Of nothing.
  Registration() = default;
  // Takes what the ending gets when the registration ends.
  Registration(void* registered, Ending ending) : registered_(registered, ending) {}

  // Unregisters it now.
  void Close() { registered_.reset(); }
  // Whether there is something to unregister.
  explicit operator bool() const { return registered_ != nullptr; }

 private:
  std::unique_ptr<void, Ending> registered_{nullptr, [](void*) {}};
};

namespace detail {

// The functions behind the callbacks of a kind. C's callbacks are told apart by nothing but their addresses, so there is
// one of them for each place that a connection has; as many as C takes, and one for the attempt that fails.
template <auto Register, auto UnRegister, class Function>
class CallbackTable : Calls {
 public:
  static Registration Add(std::int32_t handle, Function function) {
    static constexpr auto callbacks = MakeCallbacks(std::make_index_sequence<PlaceCount>());
    const bool callable = static_cast<bool>(function);
    auto added = std::make_unique<Added>(Added{handle, Keep(handle, std::move(function)), 0});
    if (Register(handle, callable ? callbacks[added->Place] : nullptr, &added->Id) < 0) {
      const std::string text = TakeLastError();
      // What fails for want of a place has taken one all the same (vlListRegisterProgressCallback).
      if (text == NoPlace) UnRegister(handle, FailingId);
      Forget(*added);
      throw Error(text);
    }
    return Registration(added.release(), [](void* registered) {
      const std::unique_ptr<Added> ended(static_cast<Added*>(registered));
      UnRegister(ended->Handle, ended->Id);
      Forget(*ended);
    });
  }

 private:
  static constexpr std::size_t PlaceCount = 6;
  static constexpr std::uint32_t FailingId = 7;
  static constexpr const char* NoPlace = "Unable to register callback!";

  struct Added {
    std::int32_t Handle;
    std::size_t Place;
    std::uint32_t Id;
  };
  struct Table {
    std::mutex Mutex;
    std::map<std::pair<std::int32_t, std::size_t>, std::shared_ptr<const Function>> Functions;
  };
  // It stays to the very end of the process: so do connections, and they call.
  static Table& TheTable() {
    static Table& table = *new Table;
    return table;
  }

  static std::size_t Keep(std::int32_t handle, Function function) {
    const auto kept = std::make_shared<const Function>(std::move(function));
    const std::lock_guard<std::mutex> lock(TheTable().Mutex);
    for (std::size_t place = 0; place < PlaceCount; ++place) {
      if (TheTable().Functions.try_emplace({handle, place}, kept).second) return place;
    }
    throw Error(NoPlace);
  }
  // The function ends without the lock: who knows what its end does.
  static void Forget(const Added& added) {
    std::unique_lock<std::mutex> lock(TheTable().Mutex);
    const auto forgotten = TheTable().Functions.extract({added.Handle, added.Place});
    lock.unlock();
  }

  // It stays while it runs, also when it is unregistered meanwhile by itself.
  template <class... Arguments>
  static void Run(std::int32_t handle, std::size_t place, const Arguments&... arguments) {
    std::shared_ptr<const Function> function;
    {
      const std::lock_guard<std::mutex> lock(TheTable().Mutex);
      const auto found = TheTable().Functions.find({handle, place});
      if (found == TheTable().Functions.end()) return;
      function = found->second;
    }
    (*function)(arguments...);
  }
  template <std::size_t Place>
  static void Arrived(std::int32_t handle, std::int32_t value) {
    Run(handle, Place, value);
  }
  template <std::size_t Place>
  static void Arrived(std::int32_t handle, std::int32_t code, const char* message, std::uint32_t length) {
    Run(handle, Place, static_cast<RpcEventType>(code), std::string_view(message, length));
  }

  using Callback = std::conditional_t<std::is_same_v<Function, ErrorEventCallback>, vlErrorEventCallback,
                                      vlListEventCallback>;
  template <std::size_t... Places>
  static constexpr std::array<Callback, PlaceCount> MakeCallbacks(std::index_sequence<Places...>) {
    return {{&Arrived<Places>...}};
  }
};

// A transfer with its progress.
template <auto Function, class... Arguments>
void Transfer(const FileProgressCallback& progress, const Arguments&... arguments) {
  struct State {
    const FileProgressCallback& Progress;
    std::exception_ptr Thrown;
    static bool Arrived(void* user, std::uint64_t moved, std::uint64_t whole) {
      State& state = *static_cast<State*>(user);
      try {
        return state.Progress(moved, whole);
      } catch (...) {
        state.Thrown = std::current_exception();
        return false;
      }
    }
  } state{progress, nullptr};
  const std::int32_t result = Function(Pass(arguments)..., progress ? &State::Arrived : nullptr, &state);
  if (state.Thrown) std::rethrow_exception(state.Thrown);
  if (result < 0) ThrowLastError();
}

}  // namespace detail
}  // namespace kelvo

#endif
