// What the API classes need of a connection: something that can call.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "rpc/CallbackWait.h"
#include "rpc/InputPacket.h"
#include "rpc/OutputPacket.h"
#include "rpc/PackDouble.h"
#include "rpc/RpcLogger.h"
#include "rpc/SignatureCheck.h"

namespace VELTRO::KELVO::ClientLib {

// Packs one argument of a call. Types whose bytes need not be copied have an overload of their own.
template <class T>
void PackArgument(OutputPacket& packet, const T& argument) {
  msgpack::packer(packet).pack(argument);
}

// Doubles always travel as float 64.
inline void PackArgument(OutputPacket& packet, double argument) {
  msgpack::packer packer(packet);
  PackDouble(packer, argument);
}
inline void PackArgument(OutputPacket& packet, const std::vector<double>& argument) {
  msgpack::packer packer(packet);
  packer.pack_array(static_cast<std::uint32_t>(argument.size()));
  for (const double value : argument) PackDouble(packer, value);
}

// One remote call: a method, its arguments to pack, its result to take.
class RemoteCall {
 public:
  explicit RemoteCall(std::string_view method) : method_(method) {}
  virtual ~RemoteCall() = default;

  std::string_view GetMethod() const { return method_; }
  // Whether somebody waits for the answer.
  bool IsAwaited() const { return awaited_; }
  // Packs the arguments as one array.
  virtual void PackArguments(OutputPacket& packet) const = 0;
  virtual void LogArguments(RpcLogger& logger) const = 0;
  // Takes the result from the answer; throws msgpack::type_error when it is of another kind.
  virtual void TakeResult(InputPacket& answer) = 0;
  virtual void LogResult(RpcLogger& logger) const = 0;

 protected:
  void DoNotAwait() { awaited_ = false; }

 private:
  const std::string_view method_;
  bool awaited_ = true;
};

// A result as it came, with the bytes that it refers to.
struct RawResult {
  InputPacket Answer;
  msgpack::object_handle Object;
};

class RpcCaller {
 public:
  virtual ~RpcCaller() = default;

  // Calls the card's method and returns its result, converted to `Result` (void: whatever came is ignored).
  // For Result = msgpack::object the raw object is returned as a RawResult, for callers that convert it
  // themselves. Throws RpcRemoteException for an error that the card reports, msgpack::type_error for a
  // result of another kind, std::runtime_error for what can happen to the connection.
  template <class Result = void, class... Args>
  auto Call(Checked<Result, Args...> method, const Args&... args);
  // Calls a method that no row needs to know. The arguments, an array, and the result are JSON as JsonForm has it. Throws
  // as Call and JsonForm::Pack do.
  std::string CallJson(std::string_view method, std::string_view arguments);
  // For what a destructor tells a card that may be dead: sends the call if that is possible at once, and waits for
  // nothing. Whether the card does it stays unknown. Throws nothing.
  template <class... Args>
  void Tell(Checked<void, Args...> method, const Args&... args) noexcept;

  // How long a call waits for its answer.
  virtual std::uint32_t GetTimeout() const = 0;
  // To be held while waiting for something that the card says. Throws as CallbackWait does.
  virtual CallbackWait BeginWait() const = 0;
  // Whether received data waits to be read.
  virtual bool IsDataPending() const = 0;
  // A free line in the command log.
  virtual void Log(const char* text) = 0;

 protected:
  virtual void Perform(RemoteCall& call) = 0;
  // Lets another caller perform the call.
  static void Forward(RpcCaller& to, RemoteCall& call) { to.Perform(call); }

 private:
  template <class Result, class... Args>
  class TypedCall;
};

template <class Result, class... Args>
class RpcCaller::TypedCall : public RemoteCall {
  static constexpr bool IsRaw = std::is_same_v<Result, msgpack::object>;
  using Stored = std::conditional_t<std::is_void_v<Result> || IsRaw, RawResult, Result>;

 public:
  TypedCall(std::string_view method, const Args&... args) : RemoteCall(method), arguments_(args...) {}

  void PackArguments(OutputPacket& packet) const override {
    msgpack::packer(packet).pack_array(sizeof...(Args));
    std::apply([&](const auto&... argument) { (PackArgument(packet, argument), ...); }, arguments_);
  }
  void LogArguments(RpcLogger& logger) const override {
    std::apply([&](const auto&... argument) { (logger.Append(argument), ...); }, arguments_);
  }
  void TakeResult(InputPacket& answer) override {
    if constexpr (std::is_void_v<Result> || IsRaw) {
      auto object = answer.Unpack();
      result_ = {std::move(answer), std::move(object)};
    } else if constexpr (requires(Body::Reader & reader) { result_.TakeFrom(reader); }) {
      Body::Reader reader(answer.Rest());
      result_.TakeFrom(reader);
    } else if constexpr (requires { result_.TakeFrom(std::move(answer)); }) {
      result_.TakeFrom(std::move(answer));
    } else {
      answer.Unpack().get().convert(result_);
    }
  }
  void LogResult(RpcLogger& logger) const override {
    if constexpr (std::is_void_v<Result> || IsRaw) {
      if (!result_.Object.get().is_nil()) logger.Append(result_.Object.get());
    } else {
      logger.Append(result_);
    }
  }
  Stored GetResult() { return std::move(result_); }
  using RemoteCall::DoNotAwait;

 private:
  const std::tuple<const Args&...> arguments_;
  Stored result_{};
};

template <class Result, class... Args>
auto RpcCaller::Call(Checked<Result, Args...> method, const Args&... args) {
  TypedCall<Result, Args...> call(method.GetName(), args...);
  Perform(call);
  if constexpr (!std::is_void_v<Result>) return call.GetResult();
}

template <class... Args>
void RpcCaller::Tell(Checked<void, Args...> method, const Args&... args) noexcept {
  try {
    TypedCall<void, Args...> call(method.GetName(), args...);
    call.DoNotAwait();
    Perform(call);
  } catch (...) {
    // A call that is not awaited always throws: at the latest because no answer has come yet.
    static_cast<void>(0);
  }
}

}  // namespace VELTRO::KELVO::ClientLib
