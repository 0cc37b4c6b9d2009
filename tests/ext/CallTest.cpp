// What exported functions ask the card, and what they make of its answers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <tuple>
#include <vector>

#include "int/CardProcess.h"
#include "support/FakeCard.h"
#include "support/Process.h"

namespace VELTRO::KELVO::Test {
namespace {

using namespace std::string_literals;

// A card that keeps what it was asked latest and always gives the same answer, nil at first.
struct AskedCard {
  std::string Asked, Arguments, Answer = "\xC0";  // "Method[arguments]", and the arguments packed
  FakeCard Card{FakeCard::Answering([this](const Request& request) {
    std::ostringstream text;
    text << request.Method << request.Arguments.get();
    Asked = text.str();
    Arguments = Packed(request.Arguments.get());
    return Frame(0x01, Packed(request.Id) + Answer);
  })};
  Connection Handle{Card.Port()};
};

// Other than that these are defaults.
auto LaserRecord(int version, int polarity, bool last) {
  return std::make_tuple(version, polarity, 0, 0, 0., 0., 0., 0., 0., 0., 0., 0., 1., 2., 1, 0, 2, 0, false,
                         0., 0., false, false, false, false, false, false, false, false, last);
}

auto SystemRecord(int version, const std::string& zone, std::vector<int> axes) {
  return std::make_tuple(
      version, zone, false, 0, 0,
      std::make_tuple(2, false, false, 21120, 11136, 11136, 0, 0, 0, 1000, 3, false, std::move(axes)));
}

// A time of the card: so many ticks more than at the beginning of 1970, and the bits above them.
std::string Ticks(std::int64_t more, std::uint64_t kind) {
  return Packed(static_cast<std::uint64_t>(621355968000000000 + more) | kind << 62);
}

// As many a line as fit.
// clang-format off
TEST(Calls, AskTheCardInItsWords) {
  AskedCard card;
  const std::int32_t c = card.Handle;
  bool flag = false;
  double scale = 0;
  std::int32_t i = 0, ids[2] = {};
  std::uint32_t n = 0, two[] = {1, 4294967295}, zones[2] = {};
  vlListExecutionStats stats{};
  std::uint64_t s = 0;
  char text[5] = "";
  vlLaserConfig laser{}, wrong{};
  vlSystemConfig system{}, endless{}, threeAxes{};
  std::ranges::fill(endless.TimeZone, 'x');
  threeAxes.ScannerMonitoring.ScanHeadAxes.Count = 3;
  vlScannerPositions positions{};
  vlPoint3D p{};
  const double biases[] = {0.5, 1.5};
  std::uint8_t byte = 1;
  wrong.HotPowerTarget = 7;
  vlOpticalParameters optics{};
  optics.HeadFormat = 3;
#define CALL(call, ...) [&] { double sum = call; __VA_OPT__(sum += static_cast<double>(__VA_ARGS__);) return sum; }
  const struct {
    std::function<double()> call;
    const char* asked;
    double expected = 0;  // the result and the output, added
    std::string answer = "\xC0";
    const char* error = "";
  } cases[] = {
      {CALL(vlListLoad(c, 3)), "LoadList[3]"}, {CALL(vlListStore(c, 3)), "StoreList[3]"},
      {CALL(vlListDelete(c, 3, true)), "DeleteList[3,true]"}, {CALL(vlListExecute(c, 3)), "ExecuteList[3]"},
      {CALL(vlListAbortExecution(c)), "AbortExecution[]"}, {CALL(vlListResetExecution(c)), "ResetExecution[]"},
      {CALL(vlListGetListStatus(c, 3, &i), i), "GetListStatus[3]", 7, "\7"},
      {CALL(vlListGetListCaret(c, 3, &i), i), "GetListCaret[3]", 7, "\7"},
      {CALL(vlListSetExecutionLimit(c, -3)), "SetExecutionLimit[-3]"},
      {CALL(vlListGetExecutionLimit(c, &i), i), "GetExecutionLimit[]", 7, "\7"}, {CALL(vlConfigurationBeginUpdate(c)), "BeginUpdate[]"},
      {CALL(vlConfigurationEndUpdate(c)), "EndUpdate[]"}, {CALL(vlConfigurationAbortUpdate(c)), "AbortUpdate[]"},
      {CALL(vlConfigurationIsUpdateActive(c, &flag), flag), "IsUpdateActive[]", 1, "\xC3"},
      {CALL(vlLaserLoadConfig(c)), "LoadLaserConfig[]"}, {CALL(vlLaserStoreConfig(c)), "StoreLaserConfig[]"},
      {CALL(vlLaserLaserOn(c)), "LaserOn[]"}, {CALL(vlLaserLaserOff(c)), "LaserOff[]"},
      {CALL(vlLaserEnablePilot(c, 256)), "EnablePilot[true]"}, {CALL(vlLaserArmLaser(c, 0)), "ArmLaser[false]"},
      {CALL(vlLaserIsPilotEnabled(c, &flag), flag), "IsPilotEnabled[]", 0, "\xC2"},
      {CALL(vlLaserIsLaserArmed(c, &flag), flag), "IsLaserArmed[]", 1, "\xC3"},
      {CALL(vlLaserReadLaserStatus(c, &n), n), "ReadLaserStatus[]", 7, "\7"},
      {CALL(vlLaserSetPowerScale(c, vlPowerTarget_Dac1, 0.5)), "SetPowerScaleByTarget[2,0.5]"},
      {CALL(vlLaserGetPowerScale(c, vlPowerTarget_Dac1, &scale), scale), "GetPowerScaleByTarget[2]", 2.5, Packed(2.5)},
      {CALL(vlLaserCreatePowerCalibration(c, 1)), "CreatePowerCalibrationByEngine[1]"},
      {CALL(vlLaserLoadPowerCalibration(c, 1)), "LoadPowerCalibrationByEngine[1]"},
      {CALL(vlLaserStorePowerCalibration(c, 1)), "StorePowerCalibrationByEngine[1]"},
      {CALL(vlLaserSetPowerCalibration(c, 1, two, 2)), "SetPowerCalibrationByEngine[[1,4294967295],1]"},
      {CALL(vlLaserSetPowerCalibration(c, 1, two, -1)), "", -1, "", "The count must not be negative."},
      {CALL(vlLaserSetPowerCalibration(c, 1, nullptr, 0)), "SetPowerCalibrationByEngine[[],1]"},
      {CALL(vlLaserGetPowerCalibration(c, 1, two, 2, &n), n + two[1]), "GetPowerCalibrationByEngine[1]", 11, "\x92\x08\x09"},
      {CALL(vlLaserGetPowerCalibration(c, 1, two, 2, &n), n), "GetPowerCalibrationByEngine[1]", -1 + 3, "\x93\7\7\7", "Buffer is too small"},
      {CALL(vlLaserGetPowerCalibration(c, 1, nullptr, 0, &n), n), "GetPowerCalibrationByEngine[1]", -1 + 4, "\x94\7\7\7\7", "Buffer is too small"},
      {CALL(vlLaserGetPowerCalibration(c, 1, nullptr, 0, &n), n), "GetPowerCalibrationByEngine[1]", 0, "\x90"},
      {CALL(vlListGetStoredListIDs(c, ids, 2, &n), static_cast<int>(n) + ids[1]), "GetStoredListIDs[]", 2 - 7, "\x92\5\xF9"},
      {CALL(vlListGetStoredListIDs(c, ids, 2, &n), n), "GetStoredListIDs[]", -1 + 3, "\x93\7\7\7", "Buffer is too small."},
      {CALL(vlListGetStoredListIDs(c, nullptr, 0, &n), n), "GetStoredListIDs[]", -1 + 1, "\x91\7", "Buffer is too small."},
      {CALL(vlListGetLastExecutionStats(c, &stats), stats.MacroVectors + 2 * stats.MicroVectors + 4 * stats.ComputationTime + 8 * stats.ExecutionTime + 16 * stats.ComputationTimePerMicroVector),
       "GetLastExecutionStats[]", 1 + 4 + 12 + 32 + 80, "\x95\1\2\3\4\5"},
      {CALL(vlListGetLastExecutionStats(c, &stats)), "GetLastExecutionStats[]", -1, "\x90", "std::bad_cast"}, {CALL(vlListGetLastExecutionStats(c, &stats)), "GetLastExecutionStats[]", -1, "\x91\7", "std::bad_cast"},
      {CALL(vlListGetLastExecutionStats(c, &stats)), "GetLastExecutionStats[]", -1, "\x96\1\2\3\4\5\6", "std::bad_cast"}, {CALL(vlListGetLastExecutionStats(c, &stats), stats.MicroVectors), "GetLastExecutionStats[]", -1 + 2, "\7", "std::bad_cast"},
      {CALL(vlLaserGetConfig(c, &laser), laser.ConfigVersion), "GetLaserConfig[]", 7, Packed(LaserRecord(7, 1, true))},
      {CALL(vlLaserGetConfig(c, &laser)), "GetLaserConfig[]", -1, Packed(LaserRecord(9, 0, false)),
       "The Version of the supplied config is newer than the newest supported version."},
      {CALL(vlLaserGetConfig(c, &laser)), "GetLaserConfig[]", -1, Packed(LaserRecord(8, 2, false)), "Polarity::_from_integral: invalid argument"},
      {CALL(vlLaserGetConfig(c, &laser)), "GetLaserConfig[]", -1, "\x91\x08", "std::bad_cast"},
      {CALL(vlLaserSetConfig(c, &wrong)), "", -1, "", "PowerTarget::_from_integral: invalid argument"},
      {CALL(vlSystemLoadConfig(c)), "LoadSystemConfig[]"}, {CALL(vlSystemStoreConfig(c)), "StoreSystemConfig[]"},
      {CALL(vlSystemResetToDefaults(c)), "ResetToDefaults[]"}, {CALL(vlSystemResetOperatingState(c)), "ResetOperatingState[]"},
      {CALL(vlSystemGetOperatingState(c, &n), n), "GetOperatingState[]", 5, "\5"},
      {CALL(vlSystemGetConnectionLimit(c, &n), n), "GetConnectionLimit[]", 5, "\5"},
      {CALL(vlSystemGetFirmwareVersion(c, text, 5, &n), n), "GetFirmwareVersion[]", 3, "\xA3\x61\x62\x63"},
      {CALL(vlSystemGetFirmwareProductVersion(c, text, 4, &n)), "GetFirmwareProductVersion[]", -1, "\xA3\x61\x62\x63", "Buffer is too small."},
      {CALL(vlSystemGetFPGAVersion(c, text, 5, &n), n), "GetFpgaVersion[]", 0, "\xA0"},
      {CALL(vlSystemGetOSVersion(c, text, 5, &n), n), "GetOSVersion[]", 2, "\xA2\x61\x62"},
      {CALL(vlSystemGetCardSerialNumber(c, text, 5, &n), text[0]), "GetCardSerialNumber[]", 'x', "\xA1x"},
      {CALL(vlSystemSetSystemTime(c, 0)), "SetSystemTime[621355968000000000]"},
      {CALL(vlSystemSetSystemTime(c, 253402300799)), "SetSystemTime[3155378975990000000]"},
      {CALL(vlSystemSetSystemTime(c, 253402300800)), "", -1, "", "The time is beyond the year 9999."},
      {CALL(vlSystemSetSystemTime(c, 1844674407371)), "", -1, "", "The time is beyond the year 9999."},
      {CALL(vlSystemGetTime(c, &s), s), "GetTime[]", 0, Ticks(9999999, 0)},
      {CALL(vlSystemGetTime(c, &s), s), "GetTime[]", 253402300799, Ticks(2534023007999999999, 2)},
      {CALL(vlSystemGetUniversalTime(c, &s), s), "GetUniversalTime[]", 1, Ticks(10000000, 3)},
      {CALL(vlSystemGetUniversalTime(c, &s), s), "GetUniversalTime[]", 1, Packed(std::int64_t{-4611686018427387904 + 621355968010000000})},
      {CALL(vlSystemGetConfig(c, &system), system.ScannerMonitoring.ScanHeadAxes.Items[1]), "GetSystemConfig[]", 7, Packed(SystemRecord(4, std::string(127, 'z'), {1, 7}))},
      {CALL(vlSystemGetConfig(c, &system)), "GetSystemConfig[]", -1, Packed(SystemRecord(5, std::string(128, 'x'), {})), "Error converting SystemConfig to C."},
      {CALL(vlSystemGetConfig(c, &system)), "GetSystemConfig[]", -1, Packed(SystemRecord(5, "x", {1, 1, 1})), "Error converting ScannerMonitoringConfig to C."},
      {CALL(vlSystemGetConfig(c, &system), system.ScannerMonitoring.ScanHeadAxes.Items[0]), "GetSystemConfig[]", vlAxes_X | vlAxes_Z, Packed(SystemRecord(4, std::string(127, 'z'), {5}))},
      {CALL(vlSystemGetConfig(c, &system)), "GetSystemConfig[]", -1, Packed(SystemRecord(5, "x", {64 + 5})), "Axes::_from_integral: invalid argument"},
      {CALL(vlSystemGetSupportedTimeZones(c, zones, 2, &n), n + zones[0] % 256), "GetSupportedTimeZones[]", 2 + 'a', "\x92\x93\xA1\x61\xA0\0\x93\xA0\xA0\0"s},
      {CALL(vlSystemGetSupportedTimeZones(c, zones, 2, &n)), "GetSupportedTimeZones[]", -1, "\x91\x91\xA1\x61", "std::bad_cast"}, {CALL(vlSystemGetSupportedTimeZones(c, zones, 2, &n)), "GetSupportedTimeZones[]", -1, "\x91\x90", "std::bad_cast"},
      {CALL(vlSystemGetSupportedTimeZones(c, zones, 2, &n)), "GetSupportedTimeZones[]", -1, "\x91\x94\xA0\xA0\0\0"s, "std::bad_cast"},
      {CALL(vlSystemSetConfig(c, &endless)), "", -1, "", "Error converting SystemConfig from C."},
      {CALL(vlSystemToStringConfig(&threeAxes, text, 5, &n)), "", -1, "", "Error converting SystemConfig from C."},
      {CALL(vlScannerLoadConfig(c)), "LoadScannerConfig[]"}, {CALL(vlScannerStoreConfig(c)), "StoreScannerConfig[]"},
      {CALL(vlScannerGetNominalPosition(c, &p.X, &p.Y, &p.Z), p.X + 2 * p.Y + 4 * p.Z), "GetNominalPosition[]", 17, "\x93\1\2\3"},
      {CALL(vlScannerReadPositions(c, &positions), positions.Heads.Items[1].Items[1]), "ReadPositions[]", 4, "\x91\x92\x91\1\x92\3\4"},
      {CALL(vlScannerReadLastPositions(c, &positions), positions.Heads.Count), "ReadLastPositions[]", 1, "\x91\x93\x90\x90\x90", "Error converting ScannerPositions to C."},
      {CALL(vlScannerReadPositions(c, nullptr)), "", -1, "", "Out parameter must not be null"},
      {CALL(vlScannerGetHeadBias(c, 1, &p), p.X + 2 * p.Y + 4 * p.Z), "GetHeadBias[1]", 17, "\x93\1\2\3"},
      {CALL(vlScannerSetHeadBias(c, 1, vlAxes_Y | vlAxes_SensorZ, biases, 2)), "SetHeadBias[1,34,[0.5,1.5]]"},
      {CALL(vlScannerCommunicationTransmitVeltro(c, 1, 6, &byte, 1, 9)), "", -1, "", "Axis::_from_integral: invalid argument"},
      {CALL(vlScannerCommunicationTransmitVeltro(c, 1, vlAxis_SensorZ, &byte, 1, 9)), "TransmitVeltroMessage[1,5,\"BIN(size:1)\",9]"},
      {CALL(vlScannerCommunicationTransceiveVeltro(c, 1, vlAxis_SensorZ, &byte, 1, &byte, 1, &n, 9), byte), "TransceiveVeltroMessage[1,5,\"BIN(size:1)\",9]", 7, std::string("\xC4\1\7", 3)},
      {CALL(vlScannerCommunicationTransmitEnhanced(c, 1, vlAxes_Y | vlAxes_SensorZ, two, 2, 9)), "TransmitEnhancedCommand[1,34,[8,9],9]"},
      {CALL(vlScannerCommunicationReceiveEnhanced(c, 1, vlAxes_Y | vlAxes_SensorZ, two, 1, &n, 9)), "ReceiveEnhancedCommand[1,34,9]", -1, "\x92\7\7", "Buffer is too small"},
      {CALL(vlScannerCommunicationTransceiveEnhanced(c, 1, vlAxes_Y | vlAxes_SensorZ, two, 2, two, 2, &n, 9), n + two[0]), "TransceiveEnhancedCommand[1,34,[8,9],9]", 8, "\x91\7"},
      {CALL(vlFileExists(c, vlDirectorySelector_PROCVARFILES, "a", &flag), flag), "FileExists[4,\"a\"]", 1, "\xC3"}, {CALL(vlFileDelete(c, vlDirectorySelector_BINFILES, "a")), "FileDelete[0,\"a\"]"},
      {CALL(vlFileGetFiles(c, vlDirectorySelector_LISTFILES, text, 5, &n, &two[0]), static_cast<int>(n + 10 * two[0]) + text[1] + text[2]), "GetFiles[3]", 4 + 20 + 'b' + 'c', "\x92\xA0\xA2\x62\x63"},
      {CALL(vlFileGetFiles(c, vlDirectorySelector_LISTFILES, text, 3, &n, &two[0])), "GetFiles[3]", -1, "\x92\xA0\xA2\x62\x63", "Buffer is too small."},
      {CALL(vlFileGetFiles(c, vlDirectorySelector_LISTFILES, nullptr, 0, &n, &two[0]), n), "GetFiles[3]", 0, "\x90"}, {CALL(vlFileExists(c, 5, "a", &flag)), "", -1, "", "DirectorySelector::_from_integral: invalid argument"},
      {CALL(vlFileGetFiles(c, vlDirectorySelector_LISTFILES, text, 5, &n, &two[0])), "GetFiles[3]", -1, std::string("\x91\xA2\0\x62", 4), "The card sent a file name that is none."},
      {CALL(vlHeadCorrectionExists(c, 1, -3, &flag), flag), "HeadCorrectionExists[1,-3]", 1, "\xC3"}, {CALL(vlHeadCorrectionDelete(c, 1, 3)), "HeadCorrectionDelete[1,3]"},
      {CALL(vlHeadCorrectionLoad(c)), "LoadHeadCorrections[]"}, {CALL(vlHeadCorrectionStore(c)), "StoreHeadCorrections[]"},
      {CALL(vlHeadCorrectionSelectCorrection(c, 1, 3)), "SelectHeadCorrection[1,3]"}, {CALL(vlHeadCorrectionGetSelectedCorrection(c, 1, &i), i), "GetSelectedHeadCorrection[1]", 7, "\7"},
      {CALL(vlHeadCorrectionGetHash(c, 1, 3, text, 5, &n), n), "GetHeadCorrectionHash[1,3]", 3, "\xA3\x61\x62\x63"}, {CALL(vlHeadCorrectionGetOpticalParameters(c, 1, 3, &optics)), "GetOpticalParametersHeadCorrection[1,3]", -1, "\x90", "std::bad_cast"},
      {CALL(vlHeadCorrectionGet(c, 1, 3, "/tmp/never")), "HeadCorrectionExists[1,3]", -1, "\xC2", "The requested head correction does not exist on the card."},
      {CALL(vlHeadCorrectionSet(c, 1, 3, "/dev/null")), "", -1, "", "Unexpected filesize"}, {CALL(vlPowerCorrectionSet(c, "/dev/null")), "", -1, "", "Unexpected filesize"},
      {CALL(vlPowerCorrectionCreate(c, &optics)), "", -1, "", "ScanHeadFormat::_from_integral: invalid argument"}, {CALL(vlPowerCorrectionLoad(c)), "LoadPowerCorrection[]"}, {CALL(vlPowerCorrectionStore(c)), "StorePowerCorrection[]"},
      {CALL(vlPowerCorrectionChangeValue(c, 1, 2.5, 3, 0.5)), "ChangePowerCorrectionValue[[1,2.5,3],0.5]"}, {CALL(vlPowerCorrectionGetOpticalParameters(c, &optics)), "GetOpticalParametersPowerCorrection[]", -1, "\xC0", "std::bad_cast"},
  };
  for (const auto& [call, asked, expected, answer, error] : cases) {
    card.Asked = "";
    card.Answer = answer;
    EXPECT_EQ(call(), expected) << asked;
    EXPECT_EQ(LastError(), error);
    EXPECT_EQ(card.Asked, asked);
  }
  EXPECT_TRUE(laser.FpsPolarity == vlPolarity_ActiveLow && laser.EnableEquallySpacedPulses) << "a failing get changed it";
  EXPECT_EQ(system.TimeZone, std::string(127, 'z'));
}

TEST(Laser, TakesCalibrationFiles) {
  AskedCard card;
  const TemporaryDirectory directory;
  const std::string path = directory.Path + "/table";
  // A file, and the values that are sent; null when it is refused.
  const std::pair<const char*, const char*> files[] = {
      {"10;20\n30", "[10,20,30]"}, {"1\r\n 2 ;\t3\r\n\r\n;;4\n", "[1,2,3,4]"}, {"", "[]"}, {"4294967295", "[4294967295]"},
      {"4294967296\n", nullptr}, {"1\n-1\n", nullptr}, {"1;1.5", nullptr}, {"1 2", nullptr}, {"0x1", nullptr},
  };
  for (const auto& [content, values] : files) {
    std::ofstream(path) << content;
    card.Asked = "";
    EXPECT_EQ(vlLaserPowerCalibrationSet(card.Handle, 1, path.c_str()), values ? 0 : -1) << content;
    EXPECT_EQ(LastError(), values ? "" : "Illegal format!") << content;
    EXPECT_EQ(card.Asked, values ? std::string("SetPowerCalibrationByEngine[") + values + ",1]" : "");
  }
  const std::vector<std::uint32_t> many(1000000, 4294967295);
  card.Answer = Packed(many);
  EXPECT_EQ(vlLaserPowerCalibrationGet(card.Handle, 1, path.c_str()), 0) << LastError();
  EXPECT_EQ(vlLaserPowerCalibrationSet(card.Handle, 1, path.c_str()), 0) << LastError();
  EXPECT_TRUE(card.Arguments == Packed(std::make_tuple(many, 1)));
}

TEST(Laser, KeepsCalibrationFilesUntilTheNextIsThere) {
  AskedCard card;
  const TemporaryDirectory directory;
  const auto at = [&](const char* name) { return directory.Path + "/" + name; };
  const std::string table = at("table"), link = at("link"), none = at("no/file"), folder = directory.Path, full = Device("full"), asked = "GetPowerCalibrationByEngine[1]";
  std::filesystem::create_symlink("new", link);
  struct Row { std::string path, answer, asked, error, written, content; };
  const Row rows[] = {
      {table, "\xC0", asked, "std::bad_cast", table, "before"}, {table, "\x92\x08\x09", asked, "", table, "8\n9\n"}, {table, "\x90", asked, "", table, ""},
      {link, "\x91\x07", asked, "", at("new"), "7\n"}, {full, "\x91\x07", asked, "Cannot write '" + full + "'.", table, "before"}, {Device("null"), "\x91\x07", asked, "", table, "before"},
      {none, "\x90", "", "Cannot open '" + none + "': No such file or directory.", table, "before"}, {folder, "\x90", "", "Cannot open '" + folder + "': Is a directory.", table, "before"},
  };
  for (const Row& row : rows) {
    std::ofstream(table) << "before";
    card.Asked = "", card.Answer = row.answer;
    EXPECT_EQ(vlLaserPowerCalibrationGet(card.Handle, 1, row.path.c_str()), row.error.empty() ? 0 : -1) << row.path;
    EXPECT_EQ(LastError(), row.error);
    EXPECT_EQ(card.Asked, row.asked) << row.path;
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(std::ifstream(row.written).rdbuf()), {}), row.content) << row.path;
  }
  std::size_t entries = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) entries += !entry.path().empty();
  EXPECT_EQ(entries, 3U) << "table, link, new";
  card.Asked = "";
  for (const char* endless : {"/dev/zero", "/dev/full"}) {
    EXPECT_EQ(vlLaserPowerCalibrationSet(card.Handle, 1, endless), -1);
    EXPECT_EQ(LastError(), std::string("'") + endless + "' is too long for a power calibration.");
  }
  std::ofstream file(table);
  for (int i = 0; i < 1048577; ++i) file << "1;";
  file.close();
  EXPECT_EQ(vlLaserPowerCalibrationSet(card.Handle, 1, table.c_str()), -1);
  EXPECT_EQ(LastError(), "'" + table + "' is too long for a power calibration.");
  EXPECT_TRUE(card.Asked.empty());
}

TEST(VirtualCard, HasScanHeads) {
  const CardProcess process({"--speed", "max"});
  Connection card(process.GetPort());
  vlScannerConfig config{};
  vlScannerPositions at{};
  const double bias[] = {0.5, -1};
  char text[1000] = "";
  std::int32_t idle = 0;
  std::uint32_t length = 0;
  EXPECT_EQ(vlScannerInitConfig(&config) + vlScannerSetHeadBias(card, 1, vlAxes_Y | vlAxes_Z, bias, 2), -1) << "there is one head";
  EXPECT_EQ(vlScannerConfigSetHeadFormat(&config, vlScanHeadFormat_VL3_Dual3D) + vlScannerSetConfig(card, &config) + vlScannerSetHeadBias(card, 1, vlAxes_Y | vlAxes_Z, bias, 2), 0) << LastError();
  const std::int64_t list = vlListAllocate(card);
  EXPECT_EQ(vlListAppendJumpAbs3D(list, 3, 4, 5) + vlListSet(card, 1, list, false, -1) + vlListExecute(card, 1) + vlListWaitForListIdle(card, &idle, 9000), 0);
  EXPECT_EQ(vlScannerReadPositions(card, &at), 0) << LastError();
  EXPECT_EQ(vlScannerGetConfig(card, &config) + vlScannerToStringConfig(&config, text, 1000, &length), 0) << LastError();
  EXPECT_TRUE(std::string(text).ends_with(", HeadFormat=VL3_Dual3D, ConfigVersion=12")) << text;
  const auto& [count, heads] = at.Heads;
  EXPECT_TRUE(count == 2 && heads[0].Items[2] == 5 && heads[1].Items[0] == 3 && heads[1].Items[1] == 4.5 && heads[1].Items[2] == 4);
}
// clang-format on

TEST(Configuration, HasDefaultsOnTheWireAndAsText) {
  AskedCard card;
  vlLaserConfig laser{};
  vlSystemConfig system{};
  char text[1000] = "";
  std::uint32_t length = 0;
  ASSERT_FALSE(vlLaserInitConfig(&laser) || vlLaserSetConfig(card.Handle, &laser));
  EXPECT_TRUE(card.Arguments == Packed(std::make_tuple(LaserRecord(8, 0, false)))) << card.Asked;
  ASSERT_FALSE(vlSystemInitConfig(&system) || vlSystemSetConfig(card.Handle, &system));
  EXPECT_TRUE(card.Arguments == Packed(std::make_tuple(SystemRecord(5, "UTC", {3})))) << card.Asked;
  ASSERT_EQ(vlLaserToStringConfig(&laser, text, 1000, &length), 0);
  EXPECT_TRUE(std::string(text).starts_with("FpsPolarity=ActiveHigh, GatePolarity=ActiveHigh, LMPolarity="));
  EXPECT_TRUE(std::string(text).ends_with(", EnableEquallySpacedPulses=false, ConfigVersion=8"));
  EXPECT_EQ(vlLaserToStringConfig(&laser, text, length + 2, &length), 0);
  EXPECT_EQ(vlLaserToStringConfig(&laser, text, length + 1, &length), -1);
  EXPECT_EQ(LastError(), "Buffer is too small.");
  ASSERT_EQ(vlSystemToStringConfig(&system, text, 1000, &length), 0);
  EXPECT_TRUE(
      std::string(text).starts_with("TimeZone=UTC, EnableStandAloneMode=false, StandAloneListID=0, "));
  EXPECT_TRUE(std::string(text).ends_with("ScanHeadAxes=[ XY ], ConfigVersion=2 }, ConfigVersion=5"));
}

// Puts nil in the place of every part of an answer, one after the other, also of parts of parts, and calls `look`.
void ForEachSpoiled(msgpack::object& part, const std::function<void()>& look) {
  const msgpack::object whole = std::exchange(part, msgpack::object());
  look();
  part = whole;
  if (part.type == msgpack::type::ARRAY) {
    for (std::uint32_t i = 0; i < part.via.array.size; ++i) ForEachSpoiled(part.via.array.ptr[i], look);
  } else if (part.type == msgpack::type::MAP) {
    for (std::uint32_t i = 0; i < part.via.map.size; ++i) {
      ForEachSpoiled(part.via.map.ptr[i].key, look);
      ForEachSpoiled(part.via.map.ptr[i].val, look);
    }
  }
}

TEST(Configuration, IsRefusedWithAnyPartOfAWrongKind) {
  AskedCard card;
  const auto expectRefusals = [&](auto flat, auto set, auto get) {
    ASSERT_EQ(set(card.Handle, &flat), 0) << LastError();
    const auto arguments = msgpack::unpack(card.Arguments.data(), card.Arguments.size());
    msgpack::object& record = arguments->via.array.ptr[0];
    const auto before = flat;
    int parts = 0;
    ForEachSpoiled(record, [&] {
      card.Answer = Packed(record);
      EXPECT_EQ(get(card.Handle, &flat), -1) << record;
      EXPECT_EQ(LastError(), "std::bad_cast") << record;
      ++parts;
    });
    EXPECT_TRUE(std::memcmp(&flat, &before, sizeof flat) == 0) << "a refused answer has changed it";
    EXPECT_GE(parts, 8);
    card.Answer = Packed(record);
    EXPECT_EQ(get(card.Handle, &flat), 0) << LastError();
  };
  const auto defaults = []<class F>(std::int32_t (*init)(F*)) {
    F flat{};
    EXPECT_EQ(init(&flat), 0);
    return flat;
  };
  vlEventConfig events = defaults(vlEventInitConfig);
  events.EventSettings.Count = events.EventSettings.Items[0].Value.Exclusions.Count = 1;
  vlProcessVariables variables = defaults(vlProcessInitVariables);
  variables.OnOffPattern.Count = 2;
  expectRefusals(defaults(vlLaserInitConfig), vlLaserSetConfig, vlLaserGetConfig);
  expectRefusals(defaults(vlScannerInitConfig), vlScannerSetConfig, vlScannerGetConfig);
  expectRefusals(variables, vlProcessSetVariables, vlProcessGetVariables);
  expectRefusals(defaults(vlSystemInitConfig), vlSystemSetConfig, vlSystemGetConfig);
  expectRefusals(defaults(vlMotfInitConfig), vlMotfSetConfig, vlMotfGetConfig);
  expectRefusals(defaults(vlMotfQuadratureDecoderInitConfig), vlMotfQuadratureDecoderSetConfig,
                 vlMotfQuadratureDecoderGetConfig);
  expectRefusals(events, vlEventSetConfig, vlEventGetConfig);
  expectRefusals(defaults(vlHeadCorrectionInitOpticalParameters), vlPowerCorrectionCreate,
                 vlPowerCorrectionGetOpticalParameters);
}

TEST(VirtualCard, HasAClockAndTimeZones) {
  const CardProcess process;
  Connection card(process.GetPort());
  std::uint32_t zones[999], count = 0;
  std::uint64_t time = 0;
  vlSystemConfig config{};
  EXPECT_EQ(vlSystemGetSupportedTimeZones(card, zones, 9, &count), -1);
  EXPECT_EQ(LastError(), "Error converting TimeZone data.");
  ASSERT_FALSE(vlSystemSetSystemTime(card, 1000000) || vlSystemInitConfig(&config) ||
               vlSystemGetSupportedTimeZones(card, zones, 999, &count));
  std::map<std::string, double> hours;
  for (const char* name = reinterpret_cast<const char*>(zones); count > 0; --count) {
    std::strcpy(config.TimeZone, name);
    EXPECT_FALSE(vlSystemSetConfig(card, &config) || vlSystemGetTime(card, &time)) << name << LastError();
    hours[name] = std::round((static_cast<double>(time) - 1000000) / 360) / 10;
    name += std::strlen(name) + 1;
  }
  EXPECT_TRUE(hours.size() > 12 && hours["Asia/Kolkata"] == 5.5 && hours["America/Denver"] == -7);
  EXPECT_FALSE(vlSystemResetToDefaults(card) || vlSystemGetConfig(card, &config));
  EXPECT_STREQ(config.TimeZone, "UTC");
}

TEST(VirtualCard, KeepsWhatIsStored) {
  const TemporaryDirectory directory;
  vlLaserConfig config{};
  const auto fpsStart = [&](std::int32_t card) {
    return vlLaserGetConfig(card, &config) ? -1 : config.FpsStart;
  };
  std::uint32_t table[] = {7, 9}, count = 0;
  for (const double stored : {0., 1.}) {
    const CardProcess process({"--state", directory.Path});
    Connection card(process.GetPort());
    EXPECT_FALSE(vlLaserLoadPowerCalibration(card, 1) ||
                 vlLaserGetPowerCalibration(card, 1, table, 2, &count));
    EXPECT_EQ(count, 2 * stored);
    // The settings of a group that is dropped, and of one that is not.
    for (const bool keep : {false, true}) {
      EXPECT_EQ(fpsStart(card), stored);
      config.FpsStart = 1;
      EXPECT_FALSE(vlConfigurationBeginUpdate(card) || vlLaserSetConfig(card, &config));
      EXPECT_EQ(fpsStart(card), stored);
      EXPECT_EQ(keep ? vlConfigurationEndUpdate(card) : vlConfigurationAbortUpdate(card), 0);
    }
    EXPECT_EQ(fpsStart(card), 1);
    EXPECT_FALSE(vlLaserStoreConfig(card) || vlLaserSetPowerCalibration(card, 1, table, 2) ||
                 vlLaserStorePowerCalibration(card, 1));
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
