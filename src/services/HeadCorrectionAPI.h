// The geometric corrections of scan heads: files that the card keeps in numbered slots.
#pragma once

#include <cstdint>
#include <string>

#include "config/RecordWire.h"
#include "services/FileAPIVL.h"
#include "services/OpticalParameters.h"

namespace VELTRO::KELVO::ClientLib {

// A correction has two indices: that of the scan head, and that of its slot there.
class HeadCorrectionAPI {
 public:
  HeadCorrectionAPI(RpcCaller& caller, FileAPIVL& files) : caller_(caller), files_(files) {}

  bool Exists(std::int32_t first, std::int32_t second) {
    return caller_.Call<bool>("HeadCorrectionExists", first, second);
  }
  void Delete(std::int32_t first, std::int32_t second) {
    caller_.Call("HeadCorrectionDelete", first, second);
  }
  // Sends a local file of up to 128 MiB and makes it the correction. Throws std::runtime_error "Unexpected filesize",
  // and sends nothing then, or as FileAPIVL::Put.
  void Set(std::int32_t first, std::int32_t second, const std::string& path,
           const TransferProgress& progress = {});
  // Makes the correction's file a local one. Throws std::runtime_error "The requested head correction does not exist on
  // the card.", or as FileAPIVL::Get.
  void Get(std::int32_t first, std::int32_t second, const std::string& path,
           const TransferProgress& progress = {});
  void Load() { caller_.Call("LoadHeadCorrections"); }
  void Store() { caller_.Call("StoreHeadCorrections"); }
  void SelectCorrection(std::int32_t first, std::int32_t second) {
    caller_.Call("SelectHeadCorrection", first, second);
  }
  std::int32_t GetSelectedCorrection(std::int32_t first) {
    return caller_.Call<std::int32_t>("GetSelectedHeadCorrection", first);
  }
  std::string GetHash(std::int32_t first, std::int32_t second) {
    return caller_.Call<std::string>("GetHeadCorrectionHash", first, second);
  }
  OpticalParameters GetOpticalParameters(std::int32_t first, std::int32_t second) {
    return caller_.Call<OpticalParameters>("GetOpticalParametersHeadCorrection", first, second);
  }

 private:
  RpcCaller& caller_;
  FileAPIVL& files_;
};

}  // namespace VELTRO::KELVO::ClientLib
