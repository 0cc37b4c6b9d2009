#include "card/CardModules.h"

#include <stdexcept>
#include <string>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::SfRegister;

namespace {

constexpr std::size_t MostTransferBytes = 65536;

[[noreturn]] void RefuseRegister(std::int32_t which) {
  throw std::runtime_error("There is no register " + std::to_string(which) + ".");
}

}  // namespace

void CardModules::CheckSpi(std::int32_t module) {
  if (module < 0 || module >= std::ssize(configuration_.Spi.Get().Modules)) {
    throw std::runtime_error("There is no SPI module " + std::to_string(module) + ".");
  }
}

CardModules::Bytes CardModules::Transfer(std::int32_t module, Bytes bytes) {
  CheckSpi(module);
  if (bytes.size() > MostTransferBytes) throw std::runtime_error("A transfer has 65536 bytes at most.");
  return bytes;
}

std::uint32_t CardModules::ReadRegister(std::int32_t which) {
  switch (which) {
    case SfRegister::Status:
      return executor_.GetRunningList() ? 1 : 0;
    case SfRegister::Control:
      return control_;
    case SfRegister::Input:
    case SfRegister::Output:
      return output_;
    default:
      RefuseRegister(which);
  }
}

void CardModules::WriteRegister(std::int32_t which, std::uint32_t value) {
  switch (which) {
    case SfRegister::Control:
      control_ = value;
      return;
    case SfRegister::Output:
      output_ = value;
      return;
    case SfRegister::Status:
    case SfRegister::Input:
      throw std::runtime_error("Register " + std::to_string(which) + " can only be read.");
    default:
      RefuseRegister(which);
  }
}

}  // namespace VELTRO::KELVO::VirtualCard
