// The variables that the card's lists use.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "config/RecordText.h"
#include "config/RecordWire.h"
#include "peripherals/Variables.h"
#include "rpc/RpcCaller.h"

namespace VELTRO::KELVO::ClientLib {

class VariableAPI {
 public:
  explicit VariableAPI(RpcCaller& caller) : caller_(caller) {}

  void SetBoolean(const std::string& name, bool value) { caller_.Call("SetBooleanVariable", name, value); }
  bool GetBoolean(const std::string& name) { return caller_.Call<bool>("GetBooleanVariable", name); }
  void SetInteger(const std::string& name, std::int32_t value) {
    caller_.Call("SetIntegerVariable", name, value);
  }
  std::int32_t GetInteger(const std::string& name) {
    return caller_.Call<std::int32_t>("GetIntegerVariable", name);
  }
  void SetMarkCounter(const std::string& name, const MarkCounter& counter) {
    caller_.Call("SetMarkCounter", name, counter);
  }
  MarkCounter GetMarkCounter(const std::string& name) {
    return caller_.Call<MarkCounter>("GetMarkCounter", name);
  }
  void ResetMarkCounter(const std::string& name) { caller_.Call("ResetMarkCounter", name); }
  void SetMarkTimeFormat(const std::string& format) { caller_.Call("SetMarkTimeFormat", format); }
  std::string GetMarkTimeFormat() { return caller_.Call<std::string>("GetMarkTimeFormat"); }
  // In the order of their kinds and ids.
  std::vector<CardVariable> GetAll() { return caller_.Call<std::vector<CardVariable>>("GetCardVariables"); }

 private:
  RpcCaller& caller_;
};

}  // namespace VELTRO::KELVO::ClientLib
