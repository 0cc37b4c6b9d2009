#include "services/HeadCorrectionAPI.h"

#include <stdexcept>

#include "services/CorrectionFiles.h"

namespace VELTRO::KELVO::ClientLib {

void HeadCorrectionAPI::Set(std::int32_t first, std::int32_t second, const std::string& path,
                            const TransferProgress& progress) {
  CorrectionFiles::CheckSize(path, CorrectionFiles::MostHeadCorrectionBytes);
  files_.Put(CorrectionFiles::Directory, CorrectionFiles::HeadCorrectionCopy(first, second), path, progress);
  caller_.Call("SetHeadCorrection", first, second);
}

void HeadCorrectionAPI::Get(std::int32_t first, std::int32_t second, const std::string& path,
                            const TransferProgress& progress) {
  if (!Exists(first, second)) {
    throw std::runtime_error("The requested head correction does not exist on the card.");
  }
  files_.Get(CorrectionFiles::Directory, CorrectionFiles::HeadCorrection(first, second), path, progress);
}

}  // namespace VELTRO::KELVO::ClientLib
