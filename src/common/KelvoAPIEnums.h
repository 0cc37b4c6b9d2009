// The enumerations that several areas share.
#pragma once

#include "common/ReflectiveEnum.h"

namespace VELTRO::KELVO::ClientLib {

KELVO_ENUM(Polarity, std::int32_t, ActiveHigh = 0, ActiveLow = 1)
KELVO_FLAGS(LaserSignal, std::int32_t, Fps = 1, Gate = 2, LM = 4)
KELVO_FLAGS(LaserStatus, std::int32_t, None = 0, Pilot = 1, Armed = 2, Alarm = 4)
KELVO_ENUM(PowerTarget, std::int32_t, None = 0, Dac0 = 1, Dac1 = 2, Digital1Bit = 3, Digital2Bit = 4,
           Digital8Bit = 5, Digital16Bit = 6, LmFrequency = 11, LmWidth = 12)
KELVO_ENUM(Axis, std::int32_t, X = 0, Y = 1, Z = 2, ZoomZ = 3, Auxiliary = 4, SensorZ = 5)
KELVO_FLAGS(Axes, std::int32_t, None = 0x00, X = 0x01, Y = 0x02, Z = 0x04, ZoomZ = 0x08, Auxiliary = 0x10,
            SensorZ = 0x20, XY = 0x03, XYZ = 0x07)
KELVO_ENUM(SkyWritingMode, std::int32_t, Disabled = 0, ForceAtStartFinish = 1, MinimumCoH = 2)
KELVO_ENUM(MotfDistanceMode, std::int32_t, RelativeToCurrent = 0, RelativeToPrevious = 1)

KELVO_ENUM(MotfOperatingMode, std::int32_t, Standard = 0, Continuous = 1)
KELVO_ENUM(MotfSourceType, std::int32_t, QuadratureDecoder = 0, Spi = 1)
KELVO_FLAGS(OperatingState, std::int32_t, Normal = 0, ConfigurationFailed = 1, InitializationFailed = 2,
            ScannerError = 4)

}  // namespace VELTRO::KELVO::ClientLib
