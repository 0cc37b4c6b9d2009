#include "rpc/RpcCaller.h"

#include <nlohmann/json.hpp>

#include "rpc/JsonForm.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

using Json = nlohmann::ordered_json;

class JsonCall : public RemoteCall {
 public:
  JsonCall(std::string_view method, const Json& arguments) : RemoteCall(method), arguments_(arguments) {}

  void PackArguments(OutputPacket& packet) const override { JsonForm::Pack(arguments_, packet); }
  void LogArguments(RpcLogger& logger) const override {
    for (const Json& argument : arguments_) logger.Append(argument.dump());
  }
  void TakeResult(InputPacket& answer) override { Result = JsonForm::From(answer.Unpack().get()); }
  void LogResult(RpcLogger& logger) const override {
    if (!Result.is_null()) logger.Append(Result.dump());
  }

  Json Result;

 private:
  const Json& arguments_;
};

}  // namespace

Json RpcCaller::CallJson(std::string_view method, const Json& arguments) {
  JsonCall call(method, arguments);
  Perform(call);
  return std::move(call.Result);
}

}  // namespace VELTRO::KELVO::ClientLib
