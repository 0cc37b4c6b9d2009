// How the C++ face calls the C functions: failures as exceptions, texts, arrays, times and enumerations as C++ has them.
// C++17, header only. What an application includes is kelvo/kelvo.hpp.
#ifndef KELVO_CALL_HPP
#define KELVO_CALL_HPP

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <optional>
#include <ratio>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "kelvo/kelvo.h"

namespace kelvo {

// A call that has failed; what() is the text of the last error (kelvo.h, 2).
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Takes the text of the calling thread's last error, which is empty then: for programs that call C functions, too.
inline std::string TakeLastError() {
  std::string text(static_cast<std::size_t>(vlGetLastErrorLen()), '\0');
  vlGetLastError(text.data(), static_cast<std::int32_t>(text.size()));
  text.resize(text.find('\0'));
  return text;
}

// A parameter that takes any text; only a std::string_view is copied, because C asks for a zero behind it. A text with
// a zero inside is refused.
class Text {
 public:
  // A null pointer is refused by the function.
  Text(const char* text) : text_(text) {}
  // Refers to it.
  Text(const std::string& text) : text_(text.c_str()) { Check(text); }
  // Copies it.
  Text(std::string_view text) : copy_(text), text_(copy_.c_str()) { Check(text); }
  // A std::filesystem::path, for one.
  template <class Other, class = std::enable_if_t<std::is_convertible_v<
                             decltype(std::declval<const Other&>().c_str()), const char*>>>
  Text(const Other& other) : text_(other.c_str()) {}
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;

  // What the C function gets.
  const char* Passed() const { return text_; }

 private:
  static void Check(std::string_view text) {
    if (text.find('\0') != text.npos) throw Error("A text has a zero inside.");
  }

  std::string copy_;
  const char* text_;
};

// A parameter that takes any array: std::vector, std::array, std::span, what has a beginning and a size, or values in
// braces. It refers to them for the time of the call.
template <class Value>
class Span {
 public:
  // So many, from there on.
  Span(const Value* values, std::size_t count) : data_(values), size_(count) {}
  // Values in braces.
  Span(std::initializer_list<Value> values) : Span(values.begin(), values.size()) {}
  // What has a beginning and a size.
  template <class Array, class = std::enable_if_t<std::is_convertible_v<
                             decltype(std::data(std::declval<const Array&>())), const Value*>>>
  Span(const Array& array) : Span(std::data(array), std::size(array)) {}

  // The first of them.
  const Value* data() const { return data_; }
  // How many there are; more than a C function takes are refused.
  std::uint32_t size() const {
    if (size_ > std::numeric_limits<std::uint32_t>::max()) throw Error("An array is too long.");
    return static_cast<std::uint32_t>(size_);
  }

 private:
  const Value* data_;
  std::size_t size_;
};

// A parameter that takes a time as the C function has it, a number of a unit, or as any std::chrono::duration. What of a
// duration is no whole unit of a whole number counts as one; what goes beyond the numbers that there are is the last one.
template <class Number, class Unit>
class Time {
 public:
  // So many of the unit.
  constexpr Time(Number number) : number_(number) {}
  // A duration.
  template <class Rep, class Period>
  constexpr Time(std::chrono::duration<Rep, Period> time)
      : number_(Converted(std::chrono::duration<double, Unit>(time).count())) {}

  // What the C function gets.
  constexpr Number Passed() const { return number_; }

 private:
  static constexpr Number Converted(double number) {
    if constexpr (!std::is_integral_v<Number>) {
      return number;
    } else {
      if (!(number > 0)) return 0;
      constexpr Number most = std::numeric_limits<Number>::max();
      if (number >= static_cast<double>(most)) return most;
      const Number whole = static_cast<Number>(number);
      return static_cast<double>(whole) < number ? static_cast<Number>(whole + 1) : whole;
    }
  }

  Number number_;
};

// Of lists: delays and durations.
using Microseconds = Time<double, std::micro>;
// Of waits in lists; a negative number waits for ever, a negative duration not at all.
using ListTimeout = Time<std::int32_t, std::micro>;
// Of waits and pings.
using Milliseconds = Time<std::int32_t, std::milli>;
// Of connections and scan heads.
using UnsignedMilliseconds = Time<std::uint32_t, std::milli>;
// As the time-out of a wait: the connection's own, which holds when nothing is said.
inline constexpr Milliseconds ConnectionTimeout{KELVO_CONNECTION_TIMEOUT};

// A time of a card's clock: seconds since 1 January 1970, 00:00 UTC.
using SystemTime = std::chrono::time_point<std::chrono::system_clock, std::chrono::seconds>;

// The number of a constant, as fields of the C structs take it.
template <class Enum, class = std::enable_if_t<std::is_enum_v<Enum>>>
constexpr std::int32_t Number(Enum constant) {
  return static_cast<std::int32_t>(constant);
}

namespace detail {

// An enumeration's constant on its way into a C function, which takes it with a sign or without.
struct EnumNumber {
  std::int32_t Value;
  operator std::int32_t() const { return Value; }
  operator std::uint32_t() const { return static_cast<std::uint32_t>(Value); }
};

// What the C function gets for an argument: for a struct of C a pointer to it.
template <class Argument>
auto Pass(const Argument& argument) {
  if constexpr (std::is_enum_v<Argument>) {
    return EnumNumber{Number(argument)};
  } else if constexpr (!std::is_class_v<Argument>) {
    return argument;
  } else if constexpr (std::is_aggregate_v<Argument>) {
    return &argument;
  } else {
    return argument.Passed();
  }
}

// To what the last parameter of a C function points.
template <class Function>
struct LastOutput;
template <class Result, class... Parameters>
struct LastOutput<Result (*)(Parameters...)> {
  using Type =
      std::remove_pointer_t<std::tuple_element_t<sizeof...(Parameters) - 1, std::tuple<Parameters...>>>;
};

[[noreturn, gnu::cold, gnu::noinline]] inline void ThrowLastError() {
  throw Error(TakeLastError());
}

// Throws unless the last call has failed for want of room, of which there must not be more than a quarter of 1 GiB.
inline void ThrowUnlessRoomIsWanted(std::size_t room) {
  const std::string text = TakeLastError();
  const bool wanted = text.rfind("Buffer is too small", 0) == 0 || text == "Error converting TimeZone data.";
  if (!wanted || room > (std::size_t{1} << 28)) throw Error(text);
}

// The ways of calling a C function, each by its name: Call<vlListExecute>(handle, id).
struct Calls {
  // Returns what the function does, unless that is a failure.
  template <auto Function, class... Arguments>
  static auto Call(const Arguments&... arguments) {
    const auto result = Function(Pass(arguments)...);
    if (result < 0) ThrowLastError();
    return result;
  }

  // Returns what the function writes to where its last parameter points, as `As` if that is given.
  template <auto Function, class As = void, class... Arguments>
  static auto Fetch(const Arguments&... arguments) {
    typename LastOutput<decltype(Function)>::Type value{};
    Call<Function>(arguments..., &value);
    if constexpr (std::is_void_v<As>) {
      return value;
    } else {
      return static_cast<As>(value);
    }
  }

  // Returns the text that the function writes into a buffer. It is asked again, with more room, as often as it wants more.
  template <auto Function, class... Arguments>
  static std::string FetchText(const Arguments&... arguments) {
    return FetchTextOf<Function>(1000, arguments...);
  }
  // The same with a buffer that is at first so large.
  template <auto Function, class... Arguments>
  static std::string FetchTextOf(std::size_t room, const Arguments&... arguments) {
    std::uint32_t length = 0;
    for (;; room *= 4) {
      std::string text(room, '\0');
      if (Function(Pass(arguments)..., text.data(), static_cast<std::uint32_t>(room), &length) >= 0) {
        text.resize(length);
        return text;
      }
      ThrowUnlessRoomIsWanted(room);
    }
  }

  // Returns the values that the function writes into an array: usually there is room for them the first time, so that
  // the card is asked once; else the function says how much it wants, or is given more and more.
  template <auto Function, class Value, class... Arguments>
  static std::vector<Value> FetchValues(const Arguments&... arguments) {
    std::uint32_t count = 0;
    for (std::uint32_t room = 256;; room = count > room ? count : room * 4) {
      std::vector<Value> values(room);
      if (Function(Pass(arguments)..., values.data(), room, &count) >= 0) {
        values.resize(count);
        return values;
      }
      ThrowUnlessRoomIsWanted(sizeof(Value) * room);
    }
  }

  // The texts that stand one behind the other, each with its zero.
  static std::vector<std::string> Split(const char* texts, std::uint32_t count) {
    std::vector<std::string> all;
    for (; count > 0; --count) texts += all.emplace_back(texts).size() + 1;
    return all;
  }
};

// What names something of the library's by its number.
template <class Handle>
class Handled : protected Calls {
 public:
  constexpr explicit Handled(Handle handle) : handle_(handle) {}
  // The handle for C functions.
  Handle handle() const { return handle_; }
  Handle Passed() const { return handle_; }

 protected:
  Handle handle_;
};

// What owns it, and releases it at its end: `Reference` is the type without the duty, Release the function for that.
template <class Reference, auto Release>
class Owner : public Reference {
 public:
  using Handle = decltype(std::declval<const Reference&>().handle());

  Owner(Owner&& other) noexcept : Reference(other.GiveUp()) {}
  Owner& operator=(Owner&& other) noexcept {
    if (this == &other) return *this;
    End();
    this->handle_ = other.GiveUp();
    return *this;
  }
  ~Owner() { End(); }

  // Gives the handle to the caller, who releases it from now on; functions called here fail then.
  Handle GiveUp() { return std::exchange(this->handle_, Handle{-1}); }

 protected:
  explicit Owner(Handle handle) : Reference(handle) {}

 private:
  void End() noexcept {
    if (this->handle_ > 0) Release(this->handle_);
  }
};

}  // namespace detail
}  // namespace kelvo

#endif
