// The enumerations of the C headers as C++ has them; made from those by scripts/cpp-enumerations. What the constants
// mean is said there: Axis::X is vlAxis_X.
#ifndef KELVO_ENUMERATIONS_HPP
#define KELVO_ENUMERATIONS_HPP

#include <type_traits>

#include "kelvo/kelvo.h"

namespace kelvo {

// Whether any combination of constants is a value.
template <class Enum>
struct IsFlags : std::false_type {};

// What is in either of them.
template <class Enum>
constexpr std::enable_if_t<IsFlags<Enum>::value, Enum> operator|(Enum a, Enum b) {
  return static_cast<Enum>(static_cast<int32_t>(a) | static_cast<int32_t>(b));
}
// What is in both of them.
template <class Enum>
constexpr std::enable_if_t<IsFlags<Enum>::value, Enum> operator&(Enum a, Enum b) {
  return static_cast<Enum>(static_cast<int32_t>(a) & static_cast<int32_t>(b));
}

enum class Installation : int32_t {
  Internal = vlInstallation_Internal,
  ExternalDhcp = vlInstallation_ExternalDhcp,
  External = vlInstallation_External,
};

enum class DirectorySelector : int32_t {
  BINFILES = vlDirectorySelector_BINFILES,
  CORRFILES = vlDirectorySelector_CORRFILES,
  JOBFILES = vlDirectorySelector_JOBFILES,
  LISTFILES = vlDirectorySelector_LISTFILES,
  PROCVARFILES = vlDirectorySelector_PROCVARFILES,
};

enum class FileMode : int32_t {
  CreateNew = vlFileMode_CreateNew,
  Create = vlFileMode_Create,
  Open = vlFileMode_Open,
  OpenOrCreate = vlFileMode_OpenOrCreate,
  Truncate = vlFileMode_Truncate,
  Append = vlFileMode_Append,
};

enum class IOPort : int32_t {
  PortA = vlIOPort_PortA,
  PortB = vlIOPort_PortB,
  PortC = vlIOPort_PortC,
  PortD = vlIOPort_PortD,
  PortE = vlIOPort_PortE,
  PortF = vlIOPort_PortF,
  PortG = vlIOPort_PortG,
  PortH = vlIOPort_PortH,
};

enum class IODirection : int32_t {
  Input = vlIODirection_Input,
  Output = vlIODirection_Output,
};

enum class IOVoltage : int32_t {
  Volt3_3 = vlIOVoltage_Volt3_3,
  Volt5 = vlIOVoltage_Volt5,
  Volt12 = vlIOVoltage_Volt12,
  Volt24 = vlIOVoltage_Volt24,
};

enum class PinAction : int32_t {
  Write = vlPinAction_Write,
  Set = vlPinAction_Set,
  Clear = vlPinAction_Clear,
  Toggle = vlPinAction_Toggle,
};

enum class MethodSupport : int32_t {
  No = vlMethodSupport_No,
  Yes = vlMethodSupport_Yes,
  NotKnown = vlMethodSupport_NotKnown,
};

enum class Polarity : int32_t {
  ActiveHigh = vlPolarity_ActiveHigh,
  ActiveLow = vlPolarity_ActiveLow,
};

enum class LaserSignal : int32_t {
  Fps = vlLaserSignal_Fps,
  Gate = vlLaserSignal_Gate,
  LM = vlLaserSignal_LM,
};

template <>
struct IsFlags<LaserSignal> : std::true_type {};

enum class LaserStatus : int32_t {
  None = vlLaserStatus_None,
  Pilot = vlLaserStatus_Pilot,
  Armed = vlLaserStatus_Armed,
  Alarm = vlLaserStatus_Alarm,
};

template <>
struct IsFlags<LaserStatus> : std::true_type {};

enum class ListStatus : int32_t {
  NoSuchList = vlListStatus_NoSuchList,
  Ready = vlListStatus_Ready,
  Running = vlListStatus_Running,
};

enum class RpcEventType : int32_t {
  None = vlRpcEventType_None,
  ListIdle = vlRpcEventType_ListIdle,
  ListDone = vlRpcEventType_ListDone,
  Progress = vlRpcEventType_Progress,
  Unknown = vlRpcEventType_Unknown,
  ListError = vlRpcEventType_ListError,
  Error = vlRpcEventType_Error,
  Exception = vlRpcEventType_Exception,
};

enum class MotfDistanceMode : int32_t {
  RelativeToCurrent = vlMotfDistanceMode_RelativeToCurrent,
  RelativeToPrevious = vlMotfDistanceMode_RelativeToPrevious,
};

enum class MotfSourceType : int32_t {
  QuadratureDecoder = vlMotfSourceType_QuadratureDecoder,
  Spi = vlMotfSourceType_Spi,
};

enum class MotfOperatingMode : int32_t {
  Standard = vlMotfOperatingMode_Standard,
  Continuous = vlMotfOperatingMode_Continuous,
};

enum class SHFlags : int32_t {
  XY2 = vlSHFlags_XY2,
  SL2 = vlSHFlags_SL2,
  VL3 = vlSHFlags_VL3,
  Defocus = vlSHFlags_Defocus,
  SingleHead = vlSHFlags_SingleHead,
  DualHead = vlSHFlags_DualHead,
  Auxiliary = vlSHFlags_Auxiliary,
  Extended = vlSHFlags_Extended,
  FourD = vlSHFlags_FourD,
};

template <>
struct IsFlags<SHFlags> : std::true_type {};

enum class ScanHeadFormat : int32_t {
  XY2_Single3D = vlScanHeadFormat_XY2_Single3D,
  XY2_Dual3D = vlScanHeadFormat_XY2_Dual3D,
  SL2_Single3D = vlScanHeadFormat_SL2_Single3D,
  SL2_Single3DX = vlScanHeadFormat_SL2_Single3DX,
  SL2_Single3DA = vlScanHeadFormat_SL2_Single3DA,
  SL2_Single4DF = vlScanHeadFormat_SL2_Single4DF,
  SL2_Single4DFX = vlScanHeadFormat_SL2_Single4DFX,
  SL2_Single4DFA = vlScanHeadFormat_SL2_Single4DFA,
  SL2_Single4D = vlScanHeadFormat_SL2_Single4D,
  SL2_Dual2D = vlScanHeadFormat_SL2_Dual2D,
  VL3_Single3D = vlScanHeadFormat_VL3_Single3D,
  VL3_Single3DX = vlScanHeadFormat_VL3_Single3DX,
  VL3_Single3DA = vlScanHeadFormat_VL3_Single3DA,
  VL3_Single3DXA = vlScanHeadFormat_VL3_Single3DXA,
  VL3_Single4DF = vlScanHeadFormat_VL3_Single4DF,
  VL3_Single4DFX = vlScanHeadFormat_VL3_Single4DFX,
  VL3_Single4DFA = vlScanHeadFormat_VL3_Single4DFA,
  VL3_Single4DFXA = vlScanHeadFormat_VL3_Single4DFXA,
  VL3_Single4D = vlScanHeadFormat_VL3_Single4D,
  VL3_Single4DX = vlScanHeadFormat_VL3_Single4DX,
  VL3_Single4DA = vlScanHeadFormat_VL3_Single4DA,
  VL3_Single4DXA = vlScanHeadFormat_VL3_Single4DXA,
  VL3_Dual3D = vlScanHeadFormat_VL3_Dual3D,
};

enum class SerialPortParity : int32_t {
  None = vlSerialPortParity_None,
  Odd = vlSerialPortParity_Odd,
  Even = vlSerialPortParity_Even,
};

enum class SerialPortStopBits : int32_t {
  One = vlSerialPortStopBits_One,
  Two = vlSerialPortStopBits_Two,
};

enum class SerialPortHandshake : int32_t {
  None = vlSerialPortHandshake_None,
  XOnXOff = vlSerialPortHandshake_XOnXOff,
  RtsCts = vlSerialPortHandshake_RtsCts,
};

enum class SerialPortLineEnd : int32_t {
  CrLf = vlSerialPortLineEnd_CrLf,
  Lf = vlSerialPortLineEnd_Lf,
  Cr = vlSerialPortLineEnd_Cr,
};

enum class SfRegister : int32_t {
  Status = vlSfRegister_Status,
  Control = vlSfRegister_Control,
  Input = vlSfRegister_Input,
  Output = vlSfRegister_Output,
};

enum class OperatingState : int32_t {
  Normal = vlOperatingState_Normal,
  ConfigurationFailed = vlOperatingState_ConfigurationFailed,
  InitializationFailed = vlOperatingState_InitializationFailed,
  ScannerError = vlOperatingState_ScannerError,
};

template <>
struct IsFlags<OperatingState> : std::true_type {};

enum class Axis : int32_t {
  X = vlAxis_X,
  Y = vlAxis_Y,
  Z = vlAxis_Z,
  ZoomZ = vlAxis_ZoomZ,
  Auxiliary = vlAxis_Auxiliary,
  SensorZ = vlAxis_SensorZ,
};

enum class Axes : int32_t {
  None = vlAxes_None,
  X = vlAxes_X,
  Y = vlAxes_Y,
  Z = vlAxes_Z,
  ZoomZ = vlAxes_ZoomZ,
  Auxiliary = vlAxes_Auxiliary,
  SensorZ = vlAxes_SensorZ,
  XY = vlAxes_XY,
  XYZ = vlAxes_XYZ,
};

template <>
struct IsFlags<Axes> : std::true_type {};

enum class PowerTarget : int32_t {
  None = vlPowerTarget_None,
  Dac0 = vlPowerTarget_Dac0,
  Dac1 = vlPowerTarget_Dac1,
  Digital1Bit = vlPowerTarget_Digital1Bit,
  Digital2Bit = vlPowerTarget_Digital2Bit,
  Digital8Bit = vlPowerTarget_Digital8Bit,
  Digital16Bit = vlPowerTarget_Digital16Bit,
  LmFrequency = vlPowerTarget_LmFrequency,
  LmWidth = vlPowerTarget_LmWidth,
};

enum class SkyWritingMode : int32_t {
  Disabled = vlSkyWritingMode_Disabled,
  ForceAtStartFinish = vlSkyWritingMode_ForceAtStartFinish,
  MinimumCoH = vlSkyWritingMode_MinimumCoH,
};

enum class VariableKind : int32_t {
  Boolean = vlVariableKind_Boolean,
  Integer = vlVariableKind_Integer,
  MarkCounter = vlVariableKind_MarkCounter,
};

}  // namespace kelvo

#endif
