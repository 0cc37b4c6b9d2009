#include "rpc/RpcCaller.h"

#include <span>

#include "rpc/JsonForm.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

class JsonCall : public RemoteCall {
 public:
  JsonCall(std::string_view method, std::string_view arguments)
      : RemoteCall(method), arguments_(JsonForm::Pack(arguments)) {}

  void PackArguments(OutputPacket& packet) const override {
    packet.write(arguments_.data(), arguments_.size());
  }
  void LogArguments(RpcLogger& logger) const override {
    const auto whole = msgpack::unpack(arguments_.data(), arguments_.size());
    const auto& array = whole->via.array;
    for (const auto& argument : std::span(array.ptr, array.size)) logger.Append(JsonForm::TextOf(argument));
  }
  void TakeResult(InputPacket& answer) override { Result = JsonForm::TextOf(answer.Unpack().get()); }
  void LogResult(RpcLogger& logger) const override {
    if (Result != "null") logger.Append(Result);
  }

  std::string Result;

 private:
  const std::string arguments_;
};

}  // namespace

std::string RpcCaller::CallJson(std::string_view method, std::string_view arguments) {
  JsonCall call(method, arguments);
  Perform(call);
  return std::move(call.Result);
}

}  // namespace VELTRO::KELVO::ClientLib
