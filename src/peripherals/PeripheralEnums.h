// The enumerations of peripheral input and output.
#pragma once

#include "common/ReflectiveEnum.h"

namespace VELTRO::KELVO::ClientLib {

KELVO_ENUM(IOPort, std::int32_t, PortA = 0, PortB = 1, PortC = 2, PortD = 3, PortE = 4, PortF = 5, PortG = 6,
           PortH = 7)
KELVO_ENUM(IODirection, std::int32_t, Input = 0, Output = 1)
KELVO_ENUM(IOVoltage, std::int32_t, Volt3_3 = 0, Volt5 = 1, Volt12 = 2, Volt24 = 3)
KELVO_ENUM(PinAction, std::int32_t, Write = 0, Set = 1, Clear = 2, Toggle = 3)
KELVO_ENUM(VariableKind, std::int32_t, Boolean = 0, Integer = 1, MarkCounter = 2)
KELVO_ENUM(SerialPortParity, std::int32_t, None = 0, Odd = 1, Even = 2)
KELVO_ENUM(SerialPortStopBits, std::int32_t, One = 1, Two = 2)
KELVO_ENUM(SerialPortHandshake, std::int32_t, None = 0, XOnXOff = 1, RtsCts = 2)
KELVO_ENUM(SerialPortLineEnd, std::int32_t, CrLf = 0, Lf = 1, Cr = 2)
KELVO_ENUM(SfRegister, std::int32_t, Status = 0, Control = 1, Input = 2, Output = 3)
KELVO_ENUM(MethodSupport, std::int32_t, No = 0, Yes = 1, NotKnown = 2)

}  // namespace VELTRO::KELVO::ClientLib
