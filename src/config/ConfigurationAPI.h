// The bracket around a group of settings.
#pragma once

#include "rpc/RpcCaller.h"

namespace VELTRO::KELVO::ClientLib {

class ConfigurationAPI {
 public:
  explicit ConfigurationAPI(RpcCaller& caller) : caller_(caller) {}

  void BeginUpdate() { caller_.Call("BeginUpdate"); }
  void EndUpdate() { caller_.Call("EndUpdate"); }
  void AbortUpdate() { caller_.Call("AbortUpdate"); }
  bool IsUpdateActive() { return caller_.Call<bool>("IsUpdateActive"); }

 private:
  RpcCaller& caller_;
};

}  // namespace VELTRO::KELVO::ClientLib
