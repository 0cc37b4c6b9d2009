// The card's remote methods: a row each, its name and what it does. It compiles when the table of remote methods
// (rpc/RemoteMethods.h) has a method of that name with such arguments and such a result.
//
// A row's function takes the card and the method's arguments as C++ values, in their order:
//   Method("DeleteList", [](Card& card, std::int32_t id, bool) { card.Lists.Delete(id); })
// One that acts on what belongs to the client who asks takes that client in place of the card.
// The number and the types of the arguments that a request brings are checked against it. What it returns is
// the method's result; what it throws is the error that the client gets. One that returns Later<Result> lets the client
// wait for its answer, while other requests of the client go on.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "card/CardClient.h"
#include "rpc/MsgPack.h"
#include "rpc/OutputPacket.h"
#include "rpc/RpcCaller.h"
#include "rpc/SignatureCheck.h"

namespace VELTRO::KELVO::VirtualCard {

using Arguments = std::span<const msgpack::object>;

// A result that is there when Ask gives one, which it does at the latest when the time is over. It is asked again whenever
// something has changed on the card, by any thread, and outlives the request.
template <class T>
struct Later {
  using Content = T;

  std::chrono::milliseconds Timeout;
  std::function<std::optional<T>(bool isOver)> Ask;
};

class Method {
 public:
  template <std::convertible_to<std::string_view> Text, class F>
  constexpr Method(const Text& name, F) : name_(name), function_(&Invoke<F>) {
    Check(name_, &F::operator());
  }

  std::string_view GetName() const { return name_; }
  // Calls the method and packs its result into `answer`; returns false, and has taken `answer`, when the client gets it
  // later. Throws std::runtime_error "Method 'NAME' takes N
  // arguments, M were given." or "Method 'NAME': argument K is of the wrong type." (K counts from 1), or what
  // the method throws.
  bool Call(CardClient& client, Arguments arguments, ClientLib::OutputPacket& answer) const {
    return function_(name_, client, arguments, answer);
  }

 private:
  template <class F, class Result, class On, class... Values>
  static constexpr void Check(std::string_view name, Result (F::*)(On&, Values...) const) {
    ClientLib::Signature::Check(name, WireTypeOfResult<Result>(),
                                {ClientLib::WireTypeOf<std::remove_cvref_t<Values>>...});
  }
  template <class Result>
  static constexpr ClientLib::WireType WireTypeOfResult() {
    if constexpr (requires { &Result::Ask; }) {
      return ClientLib::WireTypeOf<typename Result::Content>;
    } else {
      return ClientLib::WireTypeOf<Result>;
    }
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

  static void Postpone(CardClient& client, std::chrono::milliseconds timeout, ClientLib::OutputPacket answer,
                       std::function<bool(ClientLib::OutputPacket& answer, bool isOver)> tryToPack);

  template <class T>
  static void Postpone(CardClient& client, Later<T> later, ClientLib::OutputPacket& answer) {
    Postpone(client, later.Timeout, std::move(answer),
             [ask = std::move(later.Ask)](ClientLib::OutputPacket& taken, bool isOver) {
               const std::optional<T> result = ask(isOver);
               if (result) msgpack::packer(taken).pack(*result);
               return result.has_value();
             });
  }

  template <class F, class Result, class On, class... Values>
  static bool InvokeWith(std::string_view name, CardClient& client, Arguments arguments,
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
    } else if constexpr (requires { &Result::Ask; }) {
      Postpone(client, std::apply(call, taken), answer);
      return false;
    } else {
      ClientLib::PackArgument(answer, std::apply(call, taken));
    }
    return true;
  }

  template <class F>
  static bool Invoke(std::string_view name, CardClient& client, Arguments arguments,
                     ClientLib::OutputPacket& answer) {
    return InvokeWith(name, client, arguments, answer, &F::operator());
  }

  std::string_view name_;
  bool (*function_)(std::string_view, CardClient&, Arguments, ClientLib::OutputPacket&);
};

// The method of that name. Throws std::runtime_error "Unknown method 'NAME'.".
const Method& FindMethod(std::string_view name);
bool HasMethod(std::string_view name);

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
std::span<const Method> PinMethods();
std::span<const Method> VariableMethods();
std::span<const Method> PeripheralMethods();
std::span<const Method> DiagnosticMethods();

}  // namespace VELTRO::KELVO::VirtualCard
