#include "kelvo/KelvoSfioAPI.h"

#include "capi/Frame.h"
#include "peripherals/SfioAPI.h"

using namespace VELTRO::KELVO::ClientLib;

int32_t vlSfioReadRegister(int32_t handle, int32_t register_number, uint32_t* value) {
  return On<SfioAPI>(handle, [&](SfioAPI& registers) {
    NotNull(value, "value");
    *value = registers.ReadRegister(SfRegister::_from_integral(register_number));
  });
}

int32_t vlSfioWriteRegister(int32_t handle, int32_t register_number, uint32_t value) {
  return On<SfioAPI>(handle, [&](SfioAPI& registers) {
    registers.WriteRegister(SfRegister::_from_integral(register_number), value);
  });
}
