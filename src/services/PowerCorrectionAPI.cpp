#include "services/PowerCorrectionAPI.h"

#include <stdexcept>

#include "services/CorrectionFiles.h"

namespace VELTRO::KELVO::ClientLib {

void PowerCorrectionAPI::Get(const std::string& path, const TransferProgress& progress) {
  caller_.Call("GetPowerCorrection");
  for (const char* name : {CorrectionFiles::PowerCorrectionCopy, CorrectionFiles::PowerCorrection}) {
    if (files_.Exists(CorrectionFiles::Directory, name)) {
      files_.Get(CorrectionFiles::Directory, name, path, progress);
      return;
    }
  }
  throw std::runtime_error("No power correction exists on the card.");
}

void PowerCorrectionAPI::Set(const std::string& path, const TransferProgress& progress) {
  CorrectionFiles::CheckSize(path, CorrectionFiles::MostPowerCorrectionBytes);
  files_.Put(CorrectionFiles::Directory, CorrectionFiles::PowerCorrectionCopy, path, progress);
  caller_.Call("SetPowerCorrection");
}

}  // namespace VELTRO::KELVO::ClientLib
