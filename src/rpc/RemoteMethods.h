// The remote methods of a card: a row each, with its arguments and its result. What the library calls and what the
// virtual card answers is held against it while it compiles (SignatureCheck.h), docs/protocol.md by a test.
#pragma once

#include <cstddef>
#include <iterator>
#include <string_view>

namespace VELTRO::KELVO::ClientLib {

struct RemoteMethod {
  std::string_view Name;
  // "TYPE name, TYPE name": types as in docs/protocol.md, TYPE[] for an array of any length. Nothing for none.
  std::string_view Arguments;
  // A type; nil for none.
  std::string_view Result;
  // Of the project's own design: cards have it whose firmware was made to know it.
  bool IsExtension = false;
};

// The four methods that every record of settings has.
#define KELVO_RECORD_ROWS(name, Record, ...)                            \
  {"Get" name, "", Record __VA_OPT__(, ) __VA_ARGS__},                  \
      {"Set" name, Record " record", "nil" __VA_OPT__(, ) __VA_ARGS__}, \
      {"Load" name, "", "nil" __VA_OPT__(, ) __VA_ARGS__}, {            \
    "Store" name, "", "nil" __VA_OPT__(, ) __VA_ARGS__                  \
  }

inline constexpr bool Extension = true;

// clang-format off
inline constexpr RemoteMethod RemoteMethods[] = {
    // Connecting
    {"SetClientLibVersion", "string version", "nil"},

    // The card
    {"GetFirmwareVersion", "", "string"},
    {"GetFirmwareProductVersion", "", "string"},
    {"GetFpgaVersion", "", "string"},
    {"GetOSVersion", "", "string"},
    {"GetCardSerialNumber", "", "string"},
    {"GetConnectionLimit", "", "uint32"},
    {"GetOperatingState", "", "int32"},
    {"ResetOperatingState", "", "nil"},
    {"ResetToDefaults", "", "nil"},
    {"GetTime", "", "time"},
    {"GetUniversalTime", "", "time"},
    {"SetSystemTime", "time universal", "nil"},
    {"GetSupportedTimeZones", "", "timeZone[]"},
    KELVO_RECORD_ROWS("SystemConfig", "SystemConfig"),

    // Groups of settings
    {"BeginUpdate", "", "nil"},
    {"EndUpdate", "", "nil"},
    {"AbortUpdate", "", "nil"},
    {"IsUpdateActive", "", "bool"},

    // Lists
    {"SetList", "int32 listId, list commands, bool append", "nil"},
    {"GetList", "int32 listId", "list"},
    {"DeleteList", "int32 listId, bool stored", "nil"},
    {"LoadList", "int32 listId", "nil"},
    {"StoreList", "int32 listId", "nil"},
    {"GetStoredListIDs", "", "int32[]"},
    {"ExecuteList", "int32 listId", "nil"},
    {"AbortExecution", "", "nil"},
    {"ResetExecution", "", "nil"},
    {"IsExecutionInProgress", "", "bool"},
    {"GetListStatus", "int32 listId", "int32"},
    {"GetListCaret", "int32 listId", "int32"},
    {"SetExecutionLimit", "int32 limit", "nil"},
    {"GetExecutionLimit", "", "int32"},
    {"GetLastExecutionStats", "", "statistics"},

    // Fonts
    {"SetFont", "font glyphs", "nil"},
    {"GetFont", "int32 fontId", "font"},
    {"DeleteFont", "int32 fontId", "nil"},
    {"LoadFont", "int32 fontId", "nil"},
    {"StoreFont", "int32 fontId", "nil"},
    {"SetFontActive", "int32 fontId", "nil"},

    // Laser
    KELVO_RECORD_ROWS("LaserConfig", "LaserConfig"),
    {"LaserOn", "", "nil"},
    {"LaserOff", "", "nil"},
    {"EnablePilot", "bool on", "nil"},
    {"IsPilotEnabled", "", "bool"},
    {"ArmLaser", "bool on", "nil"},
    {"IsLaserArmed", "", "bool"},
    {"ReadLaserStatus", "", "int32"},
    {"SetPowerScaleByTarget", "int32 target, double scale", "nil"},
    {"GetPowerScaleByTarget", "int32 target", "double"},
    {"CreatePowerCalibrationByEngine", "int32 engine", "nil"},
    {"LoadPowerCalibrationByEngine", "int32 engine", "nil"},
    {"StorePowerCalibrationByEngine", "int32 engine", "nil"},
    {"GetPowerCalibrationByEngine", "int32 engine", "uint32[]"},
    {"SetPowerCalibrationByEngine", "uint32[] values, int32 engine", "nil"},

    // Process variables
    KELVO_RECORD_ROWS("Variables", "ProcessVariables"),
    {"GetSpeedScale", "", "double"},
    {"SetSpeedScale", "double scale", "nil"},
    {"GetTransformation", "", "transform"},
    {"SetTransformation", "transform transformation", "nil"},

    // Marking on the fly, and its encoders
    KELVO_RECORD_ROWS("MotfConfig", "MotfConfig"),
    {"ResetMotfState", "", "nil"},
    {"GetPendingParts", "", "int32"},
    {"GetFactor1xSpeed", "", "double"},
    {"SetFactor1xSpeed", "double factor", "nil"},
    KELVO_RECORD_ROWS("QuadratureDecoderConfig", "QuadratureDecoderConfig"),
    {"ReadEncoderPosition", "int32 module", "int32"},
    {"ResetEncoderPosition", "int32 module", "nil"},

    // Card events
    KELVO_RECORD_ROWS("EventConfig", "EventConfig"),

    // Scanner
    KELVO_RECORD_ROWS("ScannerConfig", "ScannerConfig"),
    {"GetNominalPosition", "", "point"},
    {"ReadPositions", "", "positions"},
    {"ReadLastPositions", "", "positions"},
    {"GetHeadBias", "int32 head", "point"},
    {"SetHeadBias", "int32 head, int32 axes, double[] values", "nil"},
    {"TransmitVeltroMessage", "int32 head, int32 axis, binary message, uint32 timeout", "nil"},
    {"TransceiveVeltroMessage", "int32 head, int32 axis, binary message, uint32 timeout", "binary"},
    {"TransmitEnhancedCommand", "int32 head, int32 axes, uint32[] commands, uint32 timeout", "nil"},
    {"ReceiveEnhancedCommand", "int32 head, int32 axes, uint32 timeout", "uint32[]"},
    {"TransceiveEnhancedCommand", "int32 head, int32 axes, uint32[] commands, uint32 timeout", "uint32[]"},

    // Files
    {"GetFiles", "int32 directory", "string[]"},
    {"FileExists", "int32 directory, string name", "bool"},
    {"FileDelete", "int32 directory, string name", "nil"},
    {"GetFileHandle", "int32 directory, string name", "int32"},
    {"FileOpen", "int32 directory, string name, int32 mode", "int32"},
    {"FileClose", "int32 handle", "nil"},
    {"FileGetSize", "int32 handle", "uint64"},
    {"FileRead", "int32 handle, int32 count", "binary"},
    {"FileReadText", "int32 handle, int32 count", "string"},
    {"FileReadTextLine", "int32 handle", "string"},
    {"FileWrite", "int32 handle, binary bytes, int32 count", "nil"},
    {"FileWriteText", "int32 handle, string text", "nil"},
    {"FileWriteTextLine", "int32 handle, string text", "nil"},

    // Head correction
    {"HeadCorrectionExists", "int32 first, int32 second", "bool"},
    {"HeadCorrectionDelete", "int32 first, int32 second", "nil"},
    {"SetHeadCorrection", "int32 first, int32 second", "nil"},
    {"SelectHeadCorrection", "int32 first, int32 second", "nil"},
    {"GetSelectedHeadCorrection", "int32 first", "int32"},
    {"LoadHeadCorrections", "", "nil"},
    {"StoreHeadCorrections", "", "nil"},
    {"GetHeadCorrectionHash", "int32 first, int32 second", "string"},
    {"GetOpticalParametersHeadCorrection", "int32 first, int32 second", "OpticalParameters"},

    // Power correction
    {"CreatePowerCorrection", "OpticalParameters parameters", "nil"},
    {"LoadPowerCorrection", "", "nil"},
    {"StorePowerCorrection", "", "nil"},
    {"GetPowerCorrection", "", "nil"},
    {"SetPowerCorrection", "", "nil"},
    {"ChangePowerCorrectionValue", "point position, double value", "nil"},
    {"GetOpticalParametersPowerCorrection", "", "OpticalParameters"},

    // Pins
    {"GetGpioConfig", "", "GpioConfig", Extension},
    {"SetGpioConfig", "GpioConfig record", "nil", Extension},
    {"LoadGpioConfig", "", "nil"},
    {"StoreGpioConfig", "", "nil"},
    {"ReadGpioPort", "int32 port", "uint32", Extension},
    {"WriteGpioPort", "int32 port, int32 action, uint32 pins", "nil", Extension},
    {"PulseGpioPins", "int32 port, uint32 pins, double duration", "nil", Extension},
    {"WaitForGpioChange", "int32 port, uint32 pins, uint32 known, uint32 timeout", "uint32", Extension},

    // Variables of lists
    {"SetBooleanVariable", "string name, bool value", "nil", Extension},
    {"GetBooleanVariable", "string name", "bool", Extension},
    {"SetIntegerVariable", "string name, int32 value", "nil", Extension},
    {"GetIntegerVariable", "string name", "int32", Extension},
    {"SetMarkCounter", "string name, MarkCounter counter", "nil", Extension},
    {"GetMarkCounter", "string name", "MarkCounter", Extension},
    {"ResetMarkCounter", "string name", "nil", Extension},
    {"SetMarkTimeFormat", "string format", "nil", Extension},
    {"GetMarkTimeFormat", "", "string", Extension},
    {"GetCardVariables", "", "CardVariable[]", Extension},

    // Serial ports, SPI, special functions
    KELVO_RECORD_ROWS("SerialPortConfig", "SerialPortConfig", Extension),
    {"WriteSerialPort", "int32 port, binary bytes", "nil", Extension},
    {"ReadSerialPort", "int32 port, uint32 most, uint32 timeout", "binary", Extension},
    {"FlushSerialPort", "int32 port", "nil", Extension},
    KELVO_RECORD_ROWS("SpiConfig", "SpiConfig", Extension),
    {"TransferSpi", "int32 module, binary bytes", "binary", Extension},
    {"ReadSfRegister", "int32 register", "uint32", Extension},
    {"WriteSfRegister", "int32 register, uint32 value", "nil", Extension},

    // The adapter board
    KELVO_RECORD_ROWS("AdapterBoardConfig", "AdapterBoardConfig", Extension),
    {"GetAdapterBoardIdentity", "", "AdapterBoardIdentity", Extension},

    // Diagnostics
    {"GetMeasurements", "", "Measurement[]", Extension},
    {"GetCardLog", "", "string", Extension},
    {"RunSelfTest", "", "SelfTestResult[]", Extension},
    {"IsMethodSupported", "string method", "bool", Extension},
};
// clang-format on

#undef KELVO_RECORD_ROWS

// The index of the method of that name, or the number of methods.
constexpr std::size_t FindRemoteMethod(std::string_view name) {
  std::size_t index = 0;
  while (index < std::size(RemoteMethods) && RemoteMethods[index].Name != name) ++index;
  return index;
}

}  // namespace VELTRO::KELVO::ClientLib
