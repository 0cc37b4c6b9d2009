// The card's remote methods: a row each, its name and what it does.
//
// A row's function takes the card and the method's arguments as C++ values, in their order:
//   Method("DeleteList", [](Card& card, std::int32_t id, bool) { card.Lists.Delete(id); })
// The number and the types of the arguments that a request brings are checked against it. What it returns is
// the method's result; what it throws is the error that the client gets.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "card/Card.h"
#include "rpc/MsgPack.h"
#include "rpc/OutputPacket.h"

namespace VELTRO::KELVO::VirtualCard {

using Arguments = std::span<const msgpack::object>;

class Method {
 public:
  template <class F>
  constexpr Method(std::string_view name, F) : name_(name), function_(&Invoke<F>) {}

  std::string_view GetName() const { return name_; }
  // Calls the method and packs its result into `answer`. Throws std::runtime_error "Method 'NAME' takes N
  // arguments, M were given." or "Method 'NAME': argument K is of the wrong type." (K counts from 1), or what
  // the method throws.
  void Call(Card& card, Arguments arguments, ClientLib::OutputPacket& answer) const {
    function_(name_, card, arguments, answer);
  }

 private:
  static void CheckCount(std::string_view name, std::size_t wanted, std::size_t given);
  [[noreturn]] static void RefuseType(std::string_view name, std::size_t index);

  template <class T>
  static T Take(std::string_view name, Arguments arguments, std::size_t& index) {
    try {
      return arguments[index++].as<T>();
    } catch (const msgpack::type_error&) {
      RefuseType(name, index);
    }
  }

  template <class F, class Result, class... Values>
  static void InvokeWith(std::string_view name, Card& card, Arguments arguments,
                         ClientLib::OutputPacket& answer, Result (F::*)(Card&, Values...) const) {
    CheckCount(name, sizeof...(Values), arguments.size());
    [[maybe_unused]] std::size_t index = 0;
    std::tuple<std::remove_cvref_t<Values>...> taken{
        Take<std::remove_cvref_t<Values>>(name, arguments, index)...};
    const auto call = [&card](auto&... values) { return F{}(card, std::move(values)...); };
    msgpack::packer packer(answer);
    if constexpr (std::is_void_v<Result>) {
      std::apply(call, taken);
      packer.pack_nil();
    } else {
      packer.pack(std::apply(call, taken));
    }
  }

  template <class F>
  static void Invoke(std::string_view name, Card& card, Arguments arguments,
                     ClientLib::OutputPacket& answer) {
    InvokeWith(name, card, arguments, answer, &F::operator());
  }

  std::string_view name_;
  void (*function_)(std::string_view, Card&, Arguments, ClientLib::OutputPacket&);
};

// The method of that name. Throws std::runtime_error "Unknown method 'NAME'.".
const Method& FindMethod(std::string_view name);

// The rows of each area.
std::span<const Method> CardMethods();
std::span<const Method> ListMethods();
std::span<const Method> LaserMethods();
std::span<const Method> ConfigurationMethods();
std::span<const Method> ScannerMethods();
std::span<const Method> FontMethods();
std::span<const Method> ProcessMethods();
std::span<const Method> MotfMethods();
std::span<const Method> EventMethods();

}  // namespace VELTRO::KELVO::VirtualCard
