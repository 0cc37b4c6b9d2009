// Marking on the fly.
#pragma once

#include <cstdint>

#include "config/MotfConfig.h"
#include "config/RecordAPI.h"

namespace VELTRO::KELVO::ClientLib {

class MotfAPI : public RecordAPI<MotfConfig> {
 public:
  using RecordAPI::RecordAPI;

  void ResetState() { caller_.Call("ResetMotfState"); }
  double GetFactor1xSpeed() { return caller_.Call<double>("GetFactor1xSpeed"); }
  void SetFactor1xSpeed(double factor) { caller_.Call("SetFactor1xSpeed", factor); }
  // Parts that have been detected and are not marked yet.
  std::int32_t GetPendingParts() { return caller_.Call<std::int32_t>("GetPendingParts"); }
};

}  // namespace VELTRO::KELVO::ClientLib
