#include "services/PowerCorrectionAPI.h"

#include <stdexcept>

#include "services/CorrectionFiles.h"

namespace VELTRO::KELVO::ClientLib {

void PowerCorrectionAPI::Get(const std::string& path) {
  caller_.Call("GetPowerCorrection");
  for (const char* name : {CorrectionFiles::PowerCorrectionCopy, CorrectionFiles::PowerCorrection}) {
    if (files_.Exists(DirectorySelector::CORRFILES, name)) {
      files_.Get(DirectorySelector::CORRFILES, name, path);
      return;
    }
  }
  throw std::runtime_error("No power correction exists on the card.");
}

void PowerCorrectionAPI::Set(const std::string& path) {
  CorrectionFiles::CheckSize(path, CorrectionFiles::MostPowerCorrectionBytes);
  files_.Put(DirectorySelector::CORRFILES, CorrectionFiles::PowerCorrectionCopy, path);
  caller_.Call("SetPowerCorrection");
}

}  // namespace VELTRO::KELVO::ClientLib
