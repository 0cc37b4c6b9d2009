// The registers of the card's special-function input and output.
#pragma once

#include <cstdint>

#include "peripherals/PeripheralEnums.h"
#include "rpc/RpcCaller.h"

namespace VELTRO::KELVO::ClientLib {

class SfioAPI {
 public:
  explicit SfioAPI(RpcCaller& caller) : caller_(caller) {}

  std::uint32_t ReadRegister(SfRegister which) {
    return caller_.Call<std::uint32_t>("ReadSfRegister", which._to_integral());
  }
  void WriteRegister(SfRegister which, std::uint32_t value) {
    caller_.Call("WriteSfRegister", which._to_integral(), value);
  }

 private:
  RpcCaller& caller_;
};

}  // namespace VELTRO::KELVO::ClientLib
