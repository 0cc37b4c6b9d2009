// The calls of every area but settings, in the card's words.
#include "ext/AskedCard.h"

namespace VELTRO::KELVO::Test {
namespace {

using namespace std::string_literals;

TEST(Calls, OfLists) {
  AskedCard c;
  std::int32_t i = 0, ids[2] = {};
  std::uint32_t n = 0;
  vlListExecutionStats s{};
  const auto* const stats = "GetLastExecutionStats[]";
  const AskingCall calls[] = {
      {ASK(vlListLoad(c, 3)), "LoadList[3]"},
      {ASK(vlListStore(c, 3)), "StoreList[3]"},
      {ASK(vlListDelete(c, 3, true)), "DeleteList[3,true]"},
      {ASK(vlListExecute(c, 3)), "ExecuteList[3]"},
      {ASK(vlListAbortExecution(c)), "AbortExecution[]"},
      {ASK(vlListResetExecution(c)), "ResetExecution[]"},
      {ASK(vlListGetListStatus(c, 3, &i), i), "GetListStatus[3]", "0 7", "\7"},
      {ASK(vlListGetListCaret(c, 3, &i), i), "GetListCaret[3]", "0 8", "\10"},
      {ASK(vlListSetExecutionLimit(c, -3)), "SetExecutionLimit[-3]"},
      {ASK(vlListGetExecutionLimit(c, &i), i), "GetExecutionLimit[]", "0 9", "\11"},
      {ASK(vlListGetStoredListIDs(c, ids, 2, &n), n, ids[0], ids[1]), "GetStoredListIDs[]", "0 2 5 -7",
       "\x92\5\xF9"},
      {ASK(vlListGetStoredListIDs(c, ids, 2, &n), n), "GetStoredListIDs[]", "Buffer is too small. 3",
       "\x93\7\7\7"},
      {ASK(vlListGetStoredListIDs(c, nullptr, 0, &n), n), "GetStoredListIDs[]", "Buffer is too small. 1",
       "\x91\7"},
      {ASK(vlListGetLastExecutionStats(c, &s), s.MacroVectors, s.MicroVectors, s.ComputationTime,
           s.ExecutionTime, s.ComputationTimePerMicroVector),
       stats, "0 1 2 3 4 5", "\x95\1\2\3\4\5"},
      {ASK(vlListGetLastExecutionStats(c, &s)), stats, "std::bad_cast", "\x90"},
      {ASK(vlListGetLastExecutionStats(c, &s)), stats, "std::bad_cast", "\x91\7"},
      {ASK(vlListGetLastExecutionStats(c, &s)), stats, "std::bad_cast", "\x96\1\2\3\4\5\6"},
      {ASK(vlListGetLastExecutionStats(c, &s), s.MicroVectors), stats, "std::bad_cast 2", "\7"},
  };
  ExpectAsked(c, calls);
}

TEST(Calls, OfTheLaser) {
  AskedCard c;
  bool flag = true;
  double scale = 0;
  std::uint32_t n = 0, two[] = {1, 4294967295};
  const auto* const get = "GetPowerCalibrationByEngine[1]";
  const AskingCall calls[] = {
      {ASK(vlLaserLaserOn(c)), "LaserOn[]"},
      {ASK(vlLaserLaserOff(c)), "LaserOff[]"},
      {ASK(vlLaserEnablePilot(c, 256)), "EnablePilot[true]"},
      {ASK(vlLaserArmLaser(c, 0)), "ArmLaser[false]"},
      {ASK(vlLaserIsPilotEnabled(c, &flag), flag), "IsPilotEnabled[]", "0 0", "\xC2"},
      {ASK(vlLaserIsLaserArmed(c, &flag), flag), "IsLaserArmed[]", "0 1", "\xC3"},
      {ASK(vlLaserReadLaserStatus(c, &n), n), "ReadLaserStatus[]", "0 7", "\7"},
      {ASK(vlLaserSetPowerScale(c, vlPowerTarget_Dac1, 0.5)), "SetPowerScaleByTarget[2,0.5]"},
      {ASK(vlLaserGetPowerScale(c, vlPowerTarget_Dac1, &scale), scale), "GetPowerScaleByTarget[2]", "0 2.5",
       Packed(2.5)},
      {ASK(vlLaserCreatePowerCalibration(c, 1)), "CreatePowerCalibrationByEngine[1]"},
      {ASK(vlLaserLoadPowerCalibration(c, 1)), "LoadPowerCalibrationByEngine[1]"},
      {ASK(vlLaserStorePowerCalibration(c, 1)), "StorePowerCalibrationByEngine[1]"},
      {ASK(vlLaserSetPowerCalibration(c, 1, two, 2)), "SetPowerCalibrationByEngine[[1,4294967295],1]"},
      {ASK(vlLaserSetPowerCalibration(c, 1, two, -1)), "", "The count must not be negative."},
      {ASK(vlLaserSetPowerCalibration(c, 1, nullptr, 0)), "SetPowerCalibrationByEngine[[],1]"},
      {ASK(vlLaserGetPowerCalibration(c, 1, two, 2, &n), n, two[0], two[1]), get, "0 2 8 9", "\x92\x08\x09"},
      {ASK(vlLaserGetPowerCalibration(c, 1, two, 2, &n), n), get, "Buffer is too small 3", "\x93\7\7\7"},
      {ASK(vlLaserGetPowerCalibration(c, 1, nullptr, 0, &n), n), get, "Buffer is too small 4",
       "\x94\7\7\7\7"},
      {ASK(vlLaserGetPowerCalibration(c, 1, nullptr, 0, &n), n), get, "0 0", "\x90"},
  };
  ExpectAsked(c, calls);
}

// A time of the card: so many ticks more than at the beginning of 1970, and the bits above them.
std::string Ticks(std::int64_t more, std::uint64_t kind) {
  return Packed(static_cast<std::uint64_t>(621355968000000000 + more) | kind << 62);
}

TEST(Calls, OfTheSystem) {
  AskedCard c;
  bool flag = false;
  std::uint32_t n = 0, zones[2] = {};
  char text[5] = "";
  const auto *const abc = "\xA3\x61\x62\x63", *const zonesAsked = "GetSupportedTimeZones[]";
  const AskingCall calls[] = {
      {ASK(vlConfigurationBeginUpdate(c)), "BeginUpdate[]"},
      {ASK(vlConfigurationEndUpdate(c)), "EndUpdate[]"},
      {ASK(vlConfigurationAbortUpdate(c)), "AbortUpdate[]"},
      {ASK(vlConfigurationIsUpdateActive(c, &flag), flag), "IsUpdateActive[]", "0 1", "\xC3"},
      {ASK(vlSystemResetToDefaults(c)), "ResetToDefaults[]"},
      {ASK(vlSystemResetOperatingState(c)), "ResetOperatingState[]"},
      {ASK(vlSystemGetOperatingState(c, &n), n), "GetOperatingState[]", "0 5", "\5"},
      {ASK(vlSystemGetConnectionLimit(c, &n), n), "GetConnectionLimit[]", "0 6", "\6"},
      {ASK(vlSystemGetFirmwareVersion(c, text, 5, &n), n, text), "GetFirmwareVersion[]", "0 3 abc", abc},
      {ASK(vlSystemGetFirmwareProductVersion(c, text, 5, &n), n), "GetFirmwareProductVersion[]", "0 3", abc},
      {ASK(vlSystemGetFirmwareProductVersion(c, text, 4, &n)), "GetFirmwareProductVersion[]",
       "Buffer is too small.", abc},
      {ASK(vlSystemGetFPGAVersion(c, text, 5, &n), n), "GetFpgaVersion[]", "0 0", "\xA0"},
      {ASK(vlSystemGetOSVersion(c, text, 5, &n), n), "GetOSVersion[]", "0 2", "\xA2\x61\x62"},
      {ASK(vlSystemGetCardSerialNumber(c, text, 5, &n), text), "GetCardSerialNumber[]", "0 x", "\xA1x"},
      {ASK(vlSystemGetSupportedTimeZones(c, zones, 2, &n), n, zones[0]), zonesAsked, "0 2 97",
       "\x92\x93\xA1\x61\xA0\0\x93\xA0\xA0\0"s},
      {ASK(vlSystemGetSupportedTimeZones(c, zones, 2, &n)), zonesAsked, "std::bad_cast", "\x91\x91\xA1\x61"},
      {ASK(vlSystemGetSupportedTimeZones(c, zones, 2, &n)), zonesAsked, "std::bad_cast", "\x91\x90"},
      {ASK(vlSystemGetSupportedTimeZones(c, zones, 2, &n)), zonesAsked, "std::bad_cast",
       "\x91\x94\xA0\xA0\0\0"s},
  };
  ExpectAsked(c, calls);
}

TEST(Calls, OfTheClockCountTicksSinceTheYearOne) {
  AskedCard c;
  std::uint64_t s = 99;
  const auto *const get = "GetTime[]", *const universal = "GetUniversalTime[]",
                    *const beyond = "The time is beyond the year 9999.";
  const AskingCall calls[] = {
      {ASK(vlSystemSetSystemTime(c, 0)), "SetSystemTime[621355968000000000]"},
      {ASK(vlSystemSetSystemTime(c, 253402300799)), "SetSystemTime[3155378975990000000]"},
      {ASK(vlSystemSetSystemTime(c, 253402300800)), "", beyond},
      {ASK(vlSystemSetSystemTime(c, 1844674407371)), "", beyond},
      {ASK(vlSystemGetTime(c, &s), s), get, "0 0", Ticks(9999999, 0)},
      {ASK(vlSystemGetTime(c, &s), s), get, "0 253402300799", Ticks(2534023007999999999, 2)},
      {ASK(vlSystemGetUniversalTime(c, &s), s), universal, "0 1", Ticks(10000000, 3)},
      {ASK(vlSystemGetUniversalTime(c, &s), s), universal, "0 1",
       Packed(std::int64_t{-4611686018427387904 + 621355968010000000})},
  };
  ExpectAsked(c, calls);
}

TEST(Calls, OfProcessAndMotion) {
  AskedCard c;
  std::int32_t i = 0;
  double factor = 0;
  const vlTransform3D given{{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, {10, 11, 12}};
  vlTransform3D t{};
  const AskingCall calls[] = {
      {ASK(vlProcessSetSpeedScale(c, 1.5)), "SetSpeedScale[1.5]"},
      {ASK(vlProcessGetSpeedScale(c, &factor), factor), "GetSpeedScale[]", "0 2.5", Packed(2.5)},
      {ASK(vlProcessSetTransformation(c, &given)), "SetTransformation[[[1,2,3,4,5,6,7,8,9],[10,11,12]]]"},
      {ASK(vlProcessGetTransformation(c, &t), t.A[0][1], t.A[1][0], t.A[2][1], t.b[0], t.b[2]),
       "GetTransformation[]", "0 2 4 8 10 12", "\x92\x99\1\2\3\4\5\6\7\10\11\x93\12\13\14"},
      {ASK(vlMotfResetState(c)), "ResetMotfState[]"},
      {ASK(vlMotfGetPendingParts(c, &i), i), "GetPendingParts[]", "0 7", "\7"},
      {ASK(vlSetFactor1xSpeed(c, 1.5)), "SetFactor1xSpeed[1.5]"},
      {ASK(vlGetFactor1xSpeed(c, &factor), factor), "GetFactor1xSpeed[]", "0 0.5", Packed(0.5)},
      {ASK(vlMotfQuadratureDecoderResetEncoderPosition(c, 3)), "ResetEncoderPosition[3]"},
      {ASK(vlMotfQuadratureDecoderReadEncoderPosition(c, 3, &i), i), "ReadEncoderPosition[3]", "0 -7",
       "\xF9"},
  };
  ExpectAsked(c, calls);
}

TEST(Calls, OfTheScanner) {
  AskedCard c;
  std::uint32_t n = 0, two[] = {8, 9};
  std::uint8_t byte = 1;
  const double biases[] = {0.5, 1.5};
  const std::int32_t axes = vlAxes_Y | vlAxes_SensorZ;
  vlScannerPositions at{};
  const auto& count = at.Heads.Count;
  const auto& heads = at.Heads.Items;
  vlPoint3D p{};
  const AskingCall calls[] = {
      {ASK(vlScannerGetNominalPosition(c, &p.X, &p.Y, &p.Z), p.X, p.Y, p.Z), "GetNominalPosition[]",
       "0 1 2 3", "\x93\1\2\3"},
      {ASK(vlScannerReadPositions(c, &at), count, heads[0].Count, heads[0].Items[0], heads[1].Items[0],
           heads[1].Items[1]),
       "ReadPositions[]", "0 2 1 1 3 4", "\x91\x92\x91\1\x92\3\4"},
      {ASK(vlScannerReadLastPositions(c, &at), count, heads[0].Items[0]), "ReadLastPositions[]", "0 1 5",
       "\x91\x91\x91\5"},
      {ASK(vlScannerReadLastPositions(c, &at), count), "ReadLastPositions[]",
       "Error converting ScannerPositions to C. 1", "\x91\x93\x90\x90\x90"},
      {ASK(vlScannerGetHeadBias(c, 1, &p), p.X, p.Y, p.Z), "GetHeadBias[1]", "0 4 5 6", "\x93\4\5\6"},
      {ASK(vlScannerSetHeadBias(c, 1, axes, biases, 2)), "SetHeadBias[1,34,[0.5,1.5]]"},
      {ASK(vlScannerCommunicationTransmitVeltro(c, 1, 6, &byte, 1, 9)), "",
       "Axis::_from_integral: invalid argument"},
      {ASK(vlScannerCommunicationTransmitVeltro(c, 1, vlAxis_SensorZ, &byte, 1, 9)),
       "TransmitVeltroMessage[1,5,\"BIN(size:1)\",9]"},
      {ASK(vlScannerCommunicationTransceiveVeltro(c, 1, vlAxis_SensorZ, &byte, 1, &byte, 1, &n, 9), byte),
       "TransceiveVeltroMessage[1,5,\"BIN(size:1)\",9]", "0 \7", "\xC4\1\7"},
      {ASK(vlScannerCommunicationTransmitEnhanced(c, 1, axes, two, 2, 9)),
       "TransmitEnhancedCommand[1,34,[8,9],9]"},
      {ASK(vlScannerCommunicationReceiveEnhanced(c, 1, axes, two, 1, &n, 9)),
       "ReceiveEnhancedCommand[1,34,9]", "Buffer is too small", "\x92\7\7"},
      {ASK(vlScannerCommunicationTransceiveEnhanced(c, 1, axes, two, 2, two, 2, &n, 9), n, two[0]),
       "TransceiveEnhancedCommand[1,34,[8,9],9]", "0 1 7", "\x91\7"},
  };
  ExpectAsked(c, calls);
}

TEST(Calls, OfFiles) {
  AskedCard c;
  bool flag = false;
  std::uint32_t n = 0, count = 0;
  char text[5] = "";
  constexpr auto lists = vlDirectorySelector_LISTFILES;
  const AskingCall calls[] = {
      {ASK(vlFileExists(c, vlDirectorySelector_PROCVARFILES, "a", &flag), flag), "FileExists[4,\"a\"]", "0 1",
       "\xC3"},
      {ASK(vlFileExists(c, 5, "a", &flag)), "", "DirectorySelector::_from_integral: invalid argument"},
      {ASK(vlFileDelete(c, vlDirectorySelector_BINFILES, "a")), "FileDelete[0,\"a\"]"},
      {ASK(vlFileGetFiles(c, lists, text, 5, &n, &count), n, count, text + 1), "GetFiles[3]", "0 4 2 bc",
       "\x92\xA0\xA2\x62\x63"},
      {ASK(vlFileGetFiles(c, lists, text, 3, &n, &count)), "GetFiles[3]", "Buffer is too small.",
       "\x92\xA0\xA2\x62\x63"},
      {ASK(vlFileGetFiles(c, lists, nullptr, 0, &n, &count), n, count), "GetFiles[3]", "0 0 0", "\x90"},
      {ASK(vlFileGetFiles(c, lists, text, 5, &n, &count)), "GetFiles[3]",
       "The card sent a file name that is none.", "\x91\xA2\0\x62"s},
  };
  ExpectAsked(c, calls);
}

TEST(Calls, OfCorrections) {
  AskedCard c;
  bool flag = false;
  std::int32_t i = 0;
  std::uint32_t n = 0;
  char text[5] = "";
  vlOpticalParameters optics{};
  optics.HeadFormat = 3;
  const AskingCall calls[] = {
      {ASK(vlHeadCorrectionExists(c, 1, -3, &flag), flag), "HeadCorrectionExists[1,-3]", "0 1", "\xC3"},
      {ASK(vlHeadCorrectionDelete(c, 1, 3)), "HeadCorrectionDelete[1,3]"},
      {ASK(vlHeadCorrectionLoad(c)), "LoadHeadCorrections[]"},
      {ASK(vlHeadCorrectionStore(c)), "StoreHeadCorrections[]"},
      {ASK(vlHeadCorrectionSelectCorrection(c, 1, 3)), "SelectHeadCorrection[1,3]"},
      {ASK(vlHeadCorrectionGetSelectedCorrection(c, 1, &i), i), "GetSelectedHeadCorrection[1]", "0 7", "\7"},
      {ASK(vlHeadCorrectionGetHash(c, 1, 3, text, 5, &n), n, text), "GetHeadCorrectionHash[1,3]", "0 3 abc",
       "\xA3\x61\x62\x63"},
      {ASK(vlHeadCorrectionGetOpticalParameters(c, 1, 3, &optics)), "GetOpticalParametersHeadCorrection[1,3]",
       "std::bad_cast", "\x90"},
      {ASK(vlHeadCorrectionGet(c, 1, 3, "/tmp/never")), "HeadCorrectionExists[1,3]",
       "The requested head correction does not exist on the card.", "\xC2"},
      {ASK(vlHeadCorrectionSet(c, 1, 3, "/dev/null")), "", "Unexpected filesize"},
      {ASK(vlPowerCorrectionSet(c, "/dev/null")), "", "Unexpected filesize"},
      {ASK(vlPowerCorrectionCreate(c, &optics)), "", "ScanHeadFormat::_from_integral: invalid argument"},
      {ASK(vlPowerCorrectionLoad(c)), "LoadPowerCorrection[]"},
      {ASK(vlPowerCorrectionStore(c)), "StorePowerCorrection[]"},
      {ASK(vlPowerCorrectionChangeValue(c, 1, 2.5, 3, 0.5)), "ChangePowerCorrectionValue[[1,2.5,3],0.5]"},
      {ASK(vlPowerCorrectionGetOpticalParameters(c, &optics)), "GetOpticalParametersPowerCorrection[]",
       "std::bad_cast"},
  };
  ExpectAsked(c, calls);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
