// The process variables, and the two of them that can be had alone.
#pragma once

#include "common/Transform3D.h"
#include "config/ProcessVariables.h"
#include "config/RecordAPI.h"

namespace VELTRO::KELVO::ClientLib {

class ProcessAPI : public RecordAPI<ProcessVariables> {
 public:
  using RecordAPI::RecordAPI;

  ProcessVariables GetVariables() { return GetConfig(); }
  void SetVariables(const ProcessVariables& variables) { SetConfig(variables); }
  void LoadVariables() { LoadConfig(); }
  void StoreVariables() { StoreConfig(); }
  double GetSpeedScale() { return caller_.Call<double>("GetSpeedScale"); }
  void SetSpeedScale(double scale) { caller_.Call("SetSpeedScale", scale); }
  Transform3D GetTransformation() { return caller_.Call<Transform3D>("GetTransformation"); }
  void SetTransformation(const Transform3D& transform) { caller_.Call("SetTransformation", transform); }
};

}  // namespace VELTRO::KELVO::ClientLib
