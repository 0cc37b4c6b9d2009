// Diagnostics of the card, and what it can do.
#pragma once

#include <string>
#include <vector>

#include "config/RecordText.h"
#include "config/RecordWire.h"
#include "peripherals/Diagnostics.h"
#include "peripherals/PeripheralEnums.h"
#include "rpc/RpcCaller.h"

namespace VELTRO::KELVO::ClientLib {

class InternalAPI {
 public:
  explicit InternalAPI(RpcCaller& caller) : caller_(caller) {}

  std::vector<Measurement> GetMeasurements() {
    return caller_.Call<std::vector<Measurement>>("GetMeasurements");
  }
  std::string GetLog() { return caller_.Call<std::string>("GetCardLog"); }
  std::vector<SelfTestResult> RunSelfTest() {
    return caller_.Call<std::vector<SelfTestResult>>("RunSelfTest");
  }
  // Whether the card has a method of that name. One that does not know the question has none of the project's own
  // extension; whether it has any other, it does not tell.
  MethodSupport GetMethodSupport(const std::string& method);

 private:
  RpcCaller& caller_;
};

}  // namespace VELTRO::KELVO::ClientLib
