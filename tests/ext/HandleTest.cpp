// Every exported function keeps to the frame: with a handle that names nothing it returns -1 and leaves a text.
#include "support/FakeCard.h"

namespace VELTRO::KELVO::Test {
namespace {

// An exported function, called with the connection of this handle, or with a list or font on it that is not there.
struct Function {
  std::string name;
  std::function<std::int64_t(std::int32_t)> call;
};

std::int64_t ListOf(std::int32_t connection) {
  return static_cast<std::int64_t>(connection) * (std::int64_t{1} << 32) + 1;
}
std::int64_t FontOf(std::int32_t connection) {
  return ListOf(connection) + 0x80000000;
}
std::int32_t ConnectionOf(std::int32_t connection) {
  return connection;
}

// Whatever else a function takes: it does not come to look at it. Only null pointers are refused ahead of handles.
struct Anything {
  template <class T>
  operator T() const {
    return T();
  }
  template <class T>
  operator T*() const {
    if constexpr (std::is_function_v<T>) {
      return Callback(static_cast<T*>(nullptr));
    } else {
      alignas(16) static char zeros[1 << 16];
      return reinterpret_cast<T*>(zeros);
    }
  }

 private:
  template <class Result, class... Parameters>
  static auto Callback(Result (*)(Parameters...)) -> Result (*)(Parameters...) {
    return [](Parameters...) { return Result(); };
  }
};

template <class Handle, class Result, class... Parameters>
auto OnHandle(Handle (*handleOf)(std::int32_t), Result (*function)(Handle, Parameters...)) {
  return [=](std::int32_t connection) -> std::int64_t {
    return function(handleOf(connection), static_cast<Parameters>(Anything())...);
  };
}

// One for each function; `names` are theirs, with commas in between.
std::vector<Function> Named(const char* names, auto handleOf, auto... functions) {
  std::istringstream stream(names);
  const auto next = [&] {
    std::string name;
    std::getline(stream >> std::ws, name, ',');
    return name;
  };
  return {{next(), OnHandle(handleOf, functions)}...};
}
#define FUNCTIONS(handleOf, ...) Named(#__VA_ARGS__, handleOf, __VA_ARGS__)

const auto onConnections = FUNCTIONS(
    ConnectionOf, vlDisconnect, vlGetTimeout, vlSetTimeout, vlEnableCommandLogging, vlDisableCommandLogging,
    vlListAllocate, vlFontAllocate, vlFontGet, vlFontSetActive, vlFontDelete, vlFontLoad, vlFontStore,
    vlFontSet, vlListSet, vlListGet, vlListDelete, vlListGetStoredListIDs, vlListAllocateFromString,
    vlListLoad, vlListStore, vlListResetExecution, vlListGetListCaret, vlListSetExecutionLimit,
    vlListGetExecutionLimit, vlListExecute, vlListAbortExecution, vlListIsExecutionInProgress,
    vlListGetListStatus, vlListGetLastExecutionStats, vlListWaitForProgress, vlListWaitForListDone,
    vlListWaitForListIdle, vlListInterruptWaitForProgress, vlListInterruptWaitForListDone,
    vlListInterruptWaitForListIdle, vlListRegisterProgressCallback, vlListRegisterListDoneCallback,
    vlListRegisterListIdleCallback, vlListRegisterErrorEventCallback, vlListUnRegisterProgressCallback,
    vlListUnRegisterListDoneCallback, vlListUnRegisterListIdleCallback, vlListUnRegisterErrorEventCallback,
    vlListClearPendingEvents, vlConfigurationBeginUpdate, vlConfigurationEndUpdate,
    vlConfigurationAbortUpdate, vlConfigurationIsUpdateActive, vlLaserGetConfig, vlLaserSetConfig,
    vlLaserLoadConfig, vlLaserStoreConfig, vlLaserLaserOn, vlLaserLaserOff, vlLaserIsPilotEnabled,
    vlLaserEnablePilot, vlLaserIsLaserArmed, vlLaserArmLaser, vlLaserReadLaserStatus, vlLaserGetPowerScale,
    vlLaserSetPowerScale, vlLaserCreatePowerCalibration, vlLaserLoadPowerCalibration,
    vlLaserStorePowerCalibration, vlLaserGetPowerCalibration, vlLaserSetPowerCalibration,
    vlLaserPowerCalibrationGet, vlLaserPowerCalibrationSet, vlSystemGetConfig, vlSystemSetConfig,
    vlSystemLoadConfig, vlSystemStoreConfig, vlSystemResetToDefaults, vlSystemGetConnectionLimit,
    vlSystemGetFirmwareVersion, vlSystemGetFirmwareProductVersion, vlSystemGetFPGAVersion,
    vlSystemGetOSVersion, vlSystemGetCardSerialNumber, vlSystemGetOperatingState, vlSystemResetOperatingState,
    vlSystemGetTime, vlSystemGetUniversalTime, vlSystemSetSystemTime, vlSystemGetSupportedTimeZones,
    vlProcessGetVariables, vlProcessSetVariables, vlProcessLoadVariables, vlProcessStoreVariables,
    vlProcessGetSpeedScale, vlProcessSetSpeedScale, vlProcessGetTransformation, vlProcessSetTransformation,
    vlMotfGetConfig, vlMotfSetConfig, vlMotfLoadConfig, vlMotfStoreConfig, vlMotfResetState,
    vlMotfGetPendingParts, vlGetFactor1xSpeed, vlSetFactor1xSpeed, vlMotfQuadratureDecoderGetConfig,
    vlMotfQuadratureDecoderSetConfig, vlMotfQuadratureDecoderLoadConfig, vlMotfQuadratureDecoderStoreConfig,
    vlMotfQuadratureDecoderResetEncoderPosition, vlMotfQuadratureDecoderReadEncoderPosition, vlEventGetConfig,
    vlEventSetConfig, vlEventLoadConfig, vlEventStoreConfig, vlScannerGetConfig, vlScannerSetConfig,
    vlScannerLoadConfig, vlScannerStoreConfig, vlScannerGetNominalPosition, vlScannerReadPositions,
    vlScannerReadLastPositions, vlScannerGetHeadBias, vlScannerSetHeadBias,
    vlScannerCommunicationTransmitVeltro, vlScannerCommunicationTransceiveVeltro,
    vlScannerCommunicationTransmitEnhanced, vlScannerCommunicationReceiveEnhanced,
    vlScannerCommunicationTransceiveEnhanced, vlFileGetFiles, vlFileExists, vlFileDelete, vlFilePut,
    vlFileGet, vlHeadCorrectionExists, vlHeadCorrectionDelete, vlHeadCorrectionSet, vlHeadCorrectionGet,
    vlHeadCorrectionSetWithProgress, vlHeadCorrectionGetWithProgress, vlPowerCorrectionSetWithProgress,
    vlPowerCorrectionGetWithProgress, vlHeadCorrectionLoad, vlHeadCorrectionStore,
    vlHeadCorrectionSelectCorrection, vlHeadCorrectionGetSelectedCorrection, vlHeadCorrectionGetHash,
    vlHeadCorrectionGetOpticalParameters, vlPowerCorrectionCreate, vlPowerCorrectionSet, vlPowerCorrectionGet,
    vlPowerCorrectionLoad, vlPowerCorrectionStore, vlPowerCorrectionChangeValue,
    vlPowerCorrectionGetOpticalParameters);

// Those of a list that has to exist.
const auto onLists = FUNCTIONS(ListOf, vlListDeleteHandle, vlListClear, vlListCommandCount, vlListStringLen,
                               vlListToString, vlListAppendMarkAbs2D, vlListAppendList);
const auto onFonts = FUNCTIONS(FontOf, vlFontReleaseHandle, vlFontAddChar, vlFontGetChar, vlFontRemoveChar,
                               vlFontClear, vlFontChars, vlFontCharsLen);

void ExpectRefusals(const std::vector<Function>& functions, std::int32_t connection, const char* text) {
  for (const auto& [name, call] : functions) {
    EXPECT_TRUE(FailsWith(name.c_str(), nullptr, call(connection), text));
  }
}

TEST(Frame, RefusesHandlesThatNameNothing) {
  for (const auto& functions : {onConnections, onLists, onFonts}) {
    ExpectRefusals(functions, -1, "Illegal handle.");
    ExpectRefusals(functions, 99999, "There is no connection corresponding to this handle.");
  }
  EXPECT_FAILS(vlListReleaseHandle(-1), "Illegal handle.");
  EXPECT_FAILS(vlListReleaseHandle(ListOf(99999)), "There is no connection corresponding to this handle.");
}

TEST(Frame, RefusesListsThatDoNotExist) {
  const FakeConnection connection;
  ExpectRefusals(onLists, connection, "List does not exist.");
  EXPECT_OK(vlListReleaseHandle(ListOf(connection))) << "it is gone already";
}

TEST(Frame, RefusesFontsThatDoNotExist) {
  const FakeConnection connection;
  ASSERT_EQ(vlListAllocate(connection) & 0xFFFFFFFF, 1);  // a list is no font
  ExpectRefusals(onFonts, connection, "Font does not exist.");
  EXPECT_FAILS(vlFontSet(connection, ListOf(connection)), "Font does not exist.");
}

TEST(Frame, ASuccessErasesTheErrorBefore) {
  const FakeConnection connection;
  EXPECT_EQ(vlListAllocate(-1), -1);
  EXPECT_EQ(vlGetLastErrorLen(), 15 + 2);
  EXPECT_EQ(vlListAllocate(connection) & 0xFFFFFFFF, 1);
  EXPECT_EQ(vlGetLastErrorLen(), 2);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
