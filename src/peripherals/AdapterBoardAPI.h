// The adapter board between the card and a machine.
#pragma once

#include "config/RecordAPI.h"
#include "peripherals/AdapterBoardConfig.h"

namespace VELTRO::KELVO::ClientLib {

class AdapterBoardAPI : public RecordAPI<AdapterBoardConfig> {
 public:
  using RecordAPI::RecordAPI;

  AdapterBoardIdentity GetIdentity() { return caller_.Call<AdapterBoardIdentity>("GetAdapterBoardIdentity"); }
};

}  // namespace VELTRO::KELVO::ClientLib
