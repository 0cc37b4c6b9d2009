#include "Callbacks.h"

#include <array>
#include <map>
#include <tuple>
#include <utility>

#include "Records.h"
#include "kelvo/kelvo.h"

namespace KelvoPython {
namespace {

// The library's callbacks know the connection and no more, so there is a function of C for each of the registrations
// that a connection may have of one kind.
constexpr std::size_t Places = 5;

// Guarded by the interpreter's lock; never destroyed, as callbacks may come until the door is closed.
using Key = std::tuple<std::int32_t, Event, std::size_t>;
std::map<Key, py::object>& Functions() {
  static auto& functions = *new std::map<Key, py::object>;
  return functions;
}

template <class Arguments>
void Forward(const Key& key, Arguments&& arguments) {
  if (!Enter()) return;
  const PyGILState_STATE state = PyGILState_Ensure();
  if (const auto found = Functions().find(key); found != Functions().end()) {
    const py::object function = found->second;
    try {
      function(*arguments());
    } catch (py::error_already_set& error) {
      error.restore();
      PyErr_WriteUnraisable(function.ptr());
    } catch (const std::exception& error) {
      PyErr_SetString(PyExc_RuntimeError, error.what());
      PyErr_WriteUnraisable(function.ptr());
    }
  }
  PyGILState_Release(state);
  Leave();
}

template <Event Kind, std::size_t Place>
void OnValue(std::int32_t handle, std::int32_t value) {
  Forward({handle, Kind, Place}, [value] { return py::make_tuple(value); });
}

template <std::size_t Place>
void OnError(std::int32_t handle, std::int32_t code, const char* message, std::uint32_t length) {
  Forward({handle, Event::Error, Place}, [=] {
    return py::make_tuple(EnumValue("RpcEventType", py::int_(code)), TextFrom(message, length));
  });
}

template <Event Kind, class Register, std::size_t... I>
std::int32_t RegisterValue(Register registration, std::int32_t handle, std::size_t place, std::uint32_t* id,
                           std::index_sequence<I...>) {
  constexpr std::array<vlListEventCallback, sizeof...(I)> callbacks = {OnValue<Kind, I>...};
  return registration(handle, callbacks[place], id);
}

template <std::size_t... I>
std::int32_t RegisterError(std::int32_t handle, std::size_t place, std::uint32_t* id,
                           std::index_sequence<I...>) {
  constexpr std::array<vlErrorEventCallback, sizeof...(I)> callbacks = {OnError<I>...};
  return vlListRegisterErrorEventCallback(handle, callbacks[place], id);
}

std::int32_t Register(std::int32_t handle, Event event, std::size_t place, std::uint32_t* id) {
  constexpr std::make_index_sequence<Places> all;
  switch (event) {
    case Event::Progress:
      return RegisterValue<Event::Progress>(vlListRegisterProgressCallback, handle, place, id, all);
    case Event::ListDone:
      return RegisterValue<Event::ListDone>(vlListRegisterListDoneCallback, handle, place, id, all);
    case Event::ListIdle:
      return RegisterValue<Event::ListIdle>(vlListRegisterListIdleCallback, handle, place, id, all);
    case Event::Error:
      return RegisterError(handle, place, id, all);
  }
  return -1;
}

std::int32_t UnRegister(std::int32_t handle, Event event, std::uint32_t id) {
  constexpr std::array functions = {vlListUnRegisterProgressCallback, vlListUnRegisterListDoneCallback,
                                    vlListUnRegisterListIdleCallback, vlListUnRegisterErrorEventCallback};
  return functions[static_cast<std::size_t>(event)](handle, id);
}

}  // namespace

Registration::Registration(py::object card, Event event, py::object function)
    : card_(std::move(card)), event_(event), place_(0) {
  if (PyCallable_Check(function.ptr()) == 0) throw py::type_error("callback must be callable");
  const std::int32_t handle = card_.cast<const Card&>().Handle();
  while (place_ < Places && Functions().count({handle, event, place_}) != 0) ++place_;
  if (place_ == Places) throw Error("Unable to register callback!");
  Functions()[{handle, event, place_}] = std::move(function);
  std::int32_t result = 0;
  {
    const Unlocked unlocked;
    result = Register(handle, event, place_, &id_);
  }
  if (result != 0) {
    Functions().erase({handle, event, place_});
    throw Error(LastError());
  }
  open_ = true;
}

void Registration::Close() {
  const auto& card = card_.cast<const Card&>();
  const std::int32_t handle = card.Handle();
  if (!std::exchange(open_, false) || card.IsClosed()) return;
  std::int32_t result = 0;
  {
    const Unlocked unlocked;
    result = UnRegister(handle, event_, id_);
  }
  Functions().erase({handle, event_, place_});
  if (result != 0 && !card.IsClosed()) throw Error(LastError());
}

void ForgetCallbacks(std::int32_t handle) {
  // What goes with a function may look here again, so they go when the table is done.
  std::map<Key, py::object> gone;
  for (auto next = Functions().begin(); next != Functions().end();) {
    const auto function = next++;
    if (std::get<0>(function->first) == handle) gone.insert(Functions().extract(function));
  }
}

}  // namespace KelvoPython
