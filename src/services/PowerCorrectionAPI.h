// The correction of laser power over the field: a table that the card creates and keeps as a file.
#pragma once

#include <string>

#include "common/Point.h"
#include "config/RecordText.h"
#include "config/RecordWire.h"
#include "services/FileAPIVL.h"
#include "services/OpticalParameters.h"

namespace VELTRO::KELVO::ClientLib {

class PowerCorrectionAPI {
 public:
  PowerCorrectionAPI(RpcCaller& caller, FileAPIVL& files) : caller_(caller), files_(files) {}

  void Create(const OpticalParameters& parameters) { caller_.Call("CreatePowerCorrection", parameters); }
  void Load() { caller_.Call("LoadPowerCorrection"); }
  void Store() { caller_.Call("StorePowerCorrection"); }
  void ChangeValue(const Point3D& position, double value) {
    caller_.Call("ChangePowerCorrectionValue", position, value);
  }
  OpticalParameters GetOpticalParameters() {
    return caller_.Call<OpticalParameters>("GetOpticalParametersPowerCorrection");
  }
  // Makes the card's correction a local file: the working copy if there is one, else the stored one. Throws
  // std::runtime_error "No power correction exists on the card.", or as FileAPIVL::Get.
  void Get(const std::string& path, const TransferProgress& progress = {});
  // Sends a local file of up to 34900811784 bytes and makes it the correction. Throws std::runtime_error "Unexpected
  // filesize", and sends nothing then, or as FileAPIVL::Put.
  void Set(const std::string& path, const TransferProgress& progress = {});

 private:
  RpcCaller& caller_;
  FileAPIVL& files_;
};

}  // namespace VELTRO::KELVO::ClientLib
