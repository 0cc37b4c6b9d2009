// Calls and answers are held against the table of remote methods while they compile: a name that no row has, or a
// value of another type than the row's, is an error of the compiler.
#pragma once

#include <concepts>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "rpc/RemoteMethods.h"

namespace VELTRO::KELVO::ClientLib {

// What a C++ type is called in the table. Types of our own say it themselves: `static constexpr std::string_view
// WireName = "font";`.
template <class T>
inline constexpr std::string_view WireName = T::WireName;
template <>
inline constexpr std::string_view WireName<void> = "nil";
template <>
inline constexpr std::string_view WireName<bool> = "bool";
template <>
inline constexpr std::string_view WireName<std::int32_t> = "int32";
template <>
inline constexpr std::string_view WireName<std::uint32_t> = "uint32";
template <>
inline constexpr std::string_view WireName<std::uint64_t> = "uint64";
template <>
inline constexpr std::string_view WireName<double> = "double";
template <>
inline constexpr std::string_view WireName<std::string> = "string";
template <>
inline constexpr std::string_view WireName<std::string_view> = "string";
template <>
inline constexpr std::string_view WireName<std::vector<std::uint8_t>> = "binary";
template <class T>
inline constexpr bool IsWireArray = false;
template <class T>
inline constexpr bool IsWireArray<std::vector<T>> = true;
template <>
inline constexpr bool IsWireArray<std::vector<std::uint8_t>> = false;
template <class T>
requires IsWireArray<std::vector<T>>
inline constexpr std::string_view WireName<std::vector<T>> = WireName<T>;

struct WireType {
  std::string_view Name;
  bool IsArray;

  constexpr bool IsCalled(std::string_view text) const {
    return IsArray ? text.ends_with("[]") && text.substr(0, text.size() - 2) == Name : text == Name;
  }
};

template <class T>
inline constexpr WireType WireTypeOf{WireName<T>, IsWireArray<T>};

namespace Signature {

// Not constant expressions: the compiler names the one that is reached.
[[noreturn]] inline void NoSuchRemoteMethod() {
  std::abort();
}
[[noreturn]] inline void OtherNumberOfArguments() {
  std::abort();
}
[[noreturn]] inline void OtherTypeOfArgument() {
  std::abort();
}
[[noreturn]] inline void OtherTypeOfResult() {
  std::abort();
}

// To be called in constant expressions.
constexpr void Check(std::string_view name, WireType result, std::initializer_list<WireType> arguments) {
  const std::size_t index = FindRemoteMethod(name);
  if (index == std::size(RemoteMethods)) NoSuchRemoteMethod();
  const RemoteMethod& method = RemoteMethods[index];
  if (!result.IsCalled(method.Result)) OtherTypeOfResult();
  std::string_view rest = method.Arguments;
  for (const WireType argument : arguments) {
    if (rest.empty()) OtherNumberOfArguments();
    if (!argument.IsCalled(rest.substr(0, rest.find(' ')))) OtherTypeOfArgument();
    const std::size_t next = rest.find(", ");
    rest = next == std::string_view::npos ? std::string_view() : rest.substr(next + 2);
  }
  if (!rest.empty()) OtherNumberOfArguments();
}

}  // namespace Signature

// The name of a method that the table need not know.
struct UncheckedMethod {
  std::string_view Name;
};

// The name of a method of the table that has such arguments and such a result.
template <class Result, class... Args>
class CheckedMethod {
 public:
  template <std::convertible_to<std::string_view> Text>
  consteval CheckedMethod(const Text& name) : name_(name) {
    Signature::Check(name_, WireTypeOf<Result>, {WireTypeOf<Args>...});
  }
  constexpr CheckedMethod(UncheckedMethod method) : name_(method.Name) {}

  constexpr std::string_view GetName() const { return name_; }

 private:
  std::string_view name_;
};

// The same as a parameter of a template, which deduces the types from its other parameters.
template <class Result, class... Args>
using Checked = CheckedMethod<std::type_identity_t<Result>, std::type_identity_t<Args>...>;

}  // namespace VELTRO::KELVO::ClientLib
