// The card's remote methods: a row each, its name and what it does. It compiles when the table of remote methods
// (rpc/RemoteMethods.h) has a method of that name with such arguments and such a result.
//
// A row's function takes the card and the method's arguments as C++ values, in their order:
//   Method("DeleteList", [](Card& card, std::int32_t id, bool) { card.Lists.Delete(id); })
// One that acts on what belongs to the client who asks takes that client in place of the card.
// The number and the types of the arguments that a request brings are checked against it. What it returns is
// the method's result; what it throws is the error that the client gets.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "card/CardClient.h"
#include "rpc/MsgPack.h"
#include "rpc/OutputPacket.h"
#include "rpc/SignatureCheck.h"

namespace VELTRO::KELVO::VirtualCard {

using Arguments = std::span<const msgpack::object>;

class Method {
 public:
  template <std::convertible_to<std::string_view> Text, class F>
  constexpr Method(const Text& name, F) : name_(name), function_(&Invoke<F>) {
    Check(name_, &F::operator());
  }

  std::string_view GetName() const { return name_; }
  // Calls the method and packs its result into `answer`. Throws std::runtime_error "Method 'NAME' takes N
  // arguments, M were given." or "Method 'NAME': argument K is of the wrong type." (K counts from 1), or what
  // the method throws.
  void Call(CardClient& client, Arguments arguments, ClientLib::OutputPacket& answer) const {
    function_(name_, client, arguments, answer);
  }

 private:
  template <class F, class Result, class On, class... Values>
  static constexpr void Check(std::string_view name, Result (F::*)(On&, Values...) const) {
    ClientLib::Signature::Check(name, ClientLib::WireTypeOf<Result>,
                                {ClientLib::WireTypeOf<std::remove_cvref_t<Values>>...});
  }
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

  static Card& Subject(CardClient& client, const Card*) { return client.Owner; }
  static CardClient& Subject(CardClient& client, const CardClient*) { return client; }

  template <class F, class Result, class On, class... Values>
  static void InvokeWith(std::string_view name, CardClient& client, Arguments arguments,
                         ClientLib::OutputPacket& answer, Result (F::*)(On&, Values...) const) {
    CheckCount(name, sizeof...(Values), arguments.size());
    [[maybe_unused]] std::size_t index = 0;
    std::tuple<std::remove_cvref_t<Values>...> taken{
        Take<std::remove_cvref_t<Values>>(name, arguments, index)...};
    On& on = Subject(client, static_cast<const On*>(nullptr));
    const auto call = [&on](auto&... values) { return F{}(on, std::move(values)...); };
    msgpack::packer packer(answer);
    if constexpr (std::is_void_v<Result>) {
      std::apply(call, taken);
      packer.pack_nil();
    } else {
      packer.pack(std::apply(call, taken));
    }
  }

  template <class F>
  static void Invoke(std::string_view name, CardClient& client, Arguments arguments,
                     ClientLib::OutputPacket& answer) {
    InvokeWith(name, client, arguments, answer, &F::operator());
  }

  std::string_view name_;
  void (*function_)(std::string_view, CardClient&, Arguments, ClientLib::OutputPacket&);
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
std::span<const Method> RecordMethods();
std::span<const Method> FileMethods();
std::span<const Method> HeadCorrectionMethods();
std::span<const Method> PowerCorrectionMethods();

}  // namespace VELTRO::KELVO::VirtualCard
