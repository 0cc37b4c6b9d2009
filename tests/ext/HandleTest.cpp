// Every exported function keeps to the frame: with a handle that names nothing it returns -1 and leaves a
// text.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>

#include "int/CardProcess.h"
#include "support/FakeCard.h"
#include "support/Process.h"

namespace VELTRO::KELVO::Test {
namespace {

// A function called with a handle, and whatever else it needs.
struct Function {
  const char* name;
  std::function<std::int64_t(std::int32_t)> call;
};

std::int32_t ConnectionOf(std::int32_t handle) {
  return handle;
}
std::int64_t ListOf(std::int32_t handle) {
  return static_cast<std::int64_t>(handle) * (std::int64_t{1} << 32) + 1;
}
std::int64_t FontOf(std::int32_t handle) {
  return ListOf(handle) + 0x80000000;
}

template <class Handle, class Result, class... Parameters, class... Arguments>
auto With(Handle (*handleOf)(std::int32_t), Result (*function)(Handle, Parameters...),
          Arguments... arguments) {
  return [=](std::int32_t handle) -> std::int64_t { return function(handleOf(handle), arguments...); };
}

std::uint32_t number = 0;
std::uint16_t character = 0;
std::int32_t value = 0;
bool flag = false;
char buffer[9];
double scale = 0;
vlListExecutionStats stats;
vlLaserConfig laser{};
vlSystemConfig systemConfig{};
std::uint64_t seconds = 0;
double factor = 0;
vlTransform3D transform;
vlProcessVariables variables;
vlMotfConfig motf;
vlQuadratureDecoderConfig decoders;
vlEventConfig events;
vlScannerConfig scanner;
vlScannerPositions positions;
vlPoint3D point;
std::uint8_t byte = 0;
vlOpticalParameters optics{};
constexpr vlListEventCallback OnEvent = [](std::int32_t, std::int32_t) {};
constexpr vlErrorEventCallback OnError = [](std::int32_t, std::int32_t, const char*, std::uint32_t) {};

#define ENTRY(function, ...) \
  { #function, With(&ConnectionOf, function __VA_OPT__(, ) __VA_ARGS__) }
#define LIST_ENTRY(function, ...) \
  { #function, With(&ListOf, function __VA_OPT__(, ) __VA_ARGS__) }
#define FONT_ENTRY(function, ...) \
  { #function, With(&FontOf, function __VA_OPT__(, ) __VA_ARGS__) }

// As many a line as fit.
// clang-format off
const Function onConnections[] = {
    ENTRY(vlDisconnect), ENTRY(vlGetTimeout, &number), ENTRY(vlSetTimeout, 1U),
    ENTRY(vlEnableCommandLogging, "/tmp/never", 0), ENTRY(vlDisableCommandLogging),
    ENTRY(vlListAllocate), ENTRY(vlFontAllocate, 1), ENTRY(vlFontGet, 1), ENTRY(vlFontSetActive, 1),
    ENTRY(vlFontDelete, 1), ENTRY(vlFontLoad, 1), ENTRY(vlFontStore, 1),
    {"vlFontSet", [](std::int32_t handle) { return vlFontSet(handle, FontOf(handle)); }},
    {"vlListSet", [](std::int32_t handle) { return vlListSet(handle, 1, ListOf(handle), false, -1); }},
    {"vlListGet", [](std::int32_t handle) { return vlListGet(handle, 1, ListOf(handle)); }},
    ENTRY(vlListDelete, 1, false), ENTRY(vlListGetStoredListIDs, &value, 1U, &number),
    ENTRY(vlListAllocateFromString, "[  ]"), ENTRY(vlListLoad, 1), ENTRY(vlListStore, 1),
    ENTRY(vlListResetExecution), ENTRY(vlListGetListCaret, 1, &value), ENTRY(vlListSetExecutionLimit, 1),
    ENTRY(vlListGetExecutionLimit, &value), ENTRY(vlListExecute, 1), ENTRY(vlListAbortExecution), ENTRY(vlListIsExecutionInProgress, &flag),
    ENTRY(vlListGetListStatus, 1, &value), ENTRY(vlListGetLastExecutionStats, &stats),
    ENTRY(vlListWaitForProgress, &value, 0), ENTRY(vlListWaitForListDone, &value, 0),
    ENTRY(vlListWaitForListIdle, &value, 0), ENTRY(vlListInterruptWaitForProgress),
    ENTRY(vlListInterruptWaitForListDone), ENTRY(vlListInterruptWaitForListIdle),
    ENTRY(vlListRegisterProgressCallback, OnEvent, &number),
    ENTRY(vlListRegisterListDoneCallback, OnEvent, &number),
    ENTRY(vlListRegisterListIdleCallback, OnEvent, &number),
    ENTRY(vlListRegisterErrorEventCallback, OnError, &number), ENTRY(vlListUnRegisterProgressCallback, 2U),
    ENTRY(vlListUnRegisterListDoneCallback, 2U), ENTRY(vlListUnRegisterListIdleCallback, 2U),
    ENTRY(vlListUnRegisterErrorEventCallback, 2U), ENTRY(vlListClearPendingEvents),
    ENTRY(vlConfigurationBeginUpdate), ENTRY(vlConfigurationEndUpdate), ENTRY(vlConfigurationAbortUpdate),
    ENTRY(vlConfigurationIsUpdateActive, &flag), ENTRY(vlLaserGetConfig, &laser), ENTRY(vlLaserSetConfig, &laser),
    ENTRY(vlLaserLoadConfig), ENTRY(vlLaserStoreConfig), ENTRY(vlLaserLaserOn), ENTRY(vlLaserLaserOff),
    ENTRY(vlLaserIsPilotEnabled, &flag), ENTRY(vlLaserEnablePilot, 1U), ENTRY(vlLaserIsLaserArmed, &flag),
    ENTRY(vlLaserArmLaser, 1U), ENTRY(vlLaserReadLaserStatus, &number), ENTRY(vlLaserGetPowerScale, 0U, &scale),
    ENTRY(vlLaserSetPowerScale, 0U, 1.0), ENTRY(vlLaserCreatePowerCalibration, 0U),
    ENTRY(vlLaserLoadPowerCalibration, 0U), ENTRY(vlLaserStorePowerCalibration, 0U),
    ENTRY(vlLaserGetPowerCalibration, 0U, &number, 1U, &number), ENTRY(vlLaserSetPowerCalibration, 0U, &number, 1),
    ENTRY(vlLaserPowerCalibrationGet, 0U, "/tmp/never"), ENTRY(vlLaserPowerCalibrationSet, 0U, "/tmp/never"),
    ENTRY(vlSystemGetConfig, &systemConfig), ENTRY(vlSystemSetConfig, &systemConfig), ENTRY(vlSystemLoadConfig),
    ENTRY(vlSystemStoreConfig), ENTRY(vlSystemResetToDefaults), ENTRY(vlSystemGetConnectionLimit, &number),
    ENTRY(vlSystemGetFirmwareVersion, buffer, 9U, &number), ENTRY(vlSystemGetFirmwareProductVersion, buffer, 9U, &number),
    ENTRY(vlSystemGetFPGAVersion, buffer, 9U, &number), ENTRY(vlSystemGetOSVersion, buffer, 9U, &number),
    ENTRY(vlSystemGetCardSerialNumber, buffer, 9U, &number), ENTRY(vlSystemGetOperatingState, &number),
    ENTRY(vlSystemResetOperatingState), ENTRY(vlSystemGetTime, &seconds), ENTRY(vlSystemGetUniversalTime, &seconds),
    ENTRY(vlSystemSetSystemTime, std::uint64_t{1}), ENTRY(vlSystemGetSupportedTimeZones, &number, 1U, &number),
    ENTRY(vlProcessGetVariables, &variables), ENTRY(vlProcessSetVariables, &variables), ENTRY(vlProcessLoadVariables),
    ENTRY(vlProcessStoreVariables), ENTRY(vlProcessGetSpeedScale, &factor), ENTRY(vlProcessSetSpeedScale, 1.0),
    ENTRY(vlProcessGetTransformation, &transform), ENTRY(vlProcessSetTransformation, &transform),
    ENTRY(vlMotfGetConfig, &motf), ENTRY(vlMotfSetConfig, &motf), ENTRY(vlMotfLoadConfig), ENTRY(vlMotfStoreConfig),
    ENTRY(vlMotfResetState), ENTRY(vlMotfGetPendingParts, &value), ENTRY(vlGetFactor1xSpeed, &factor), ENTRY(vlSetFactor1xSpeed, 1.0),
    ENTRY(vlMotfQuadratureDecoderGetConfig, &decoders), ENTRY(vlMotfQuadratureDecoderSetConfig, &decoders),
    ENTRY(vlMotfQuadratureDecoderLoadConfig), ENTRY(vlMotfQuadratureDecoderStoreConfig),
    ENTRY(vlMotfQuadratureDecoderResetEncoderPosition, 0), ENTRY(vlMotfQuadratureDecoderReadEncoderPosition, 0, &value),
    ENTRY(vlEventGetConfig, &events), ENTRY(vlEventSetConfig, &events), ENTRY(vlEventLoadConfig), ENTRY(vlEventStoreConfig),
    ENTRY(vlScannerGetConfig, &scanner), ENTRY(vlScannerSetConfig, &scanner), ENTRY(vlScannerLoadConfig), ENTRY(vlScannerStoreConfig),
    ENTRY(vlScannerGetNominalPosition, &scale, &scale, &scale), ENTRY(vlScannerReadPositions, &positions),
    ENTRY(vlScannerReadLastPositions, &positions), ENTRY(vlScannerGetHeadBias, 0U, &point), ENTRY(vlScannerSetHeadBias, 0U, 1U, &scale, 1U),
    ENTRY(vlScannerCommunicationTransmitVeltro, 0U, 1U, &byte, 1U, 9U), ENTRY(vlScannerCommunicationTransceiveVeltro, 0U, 1U, &byte, 1U, &byte, 1U, &number, 9U),
    ENTRY(vlScannerCommunicationTransmitEnhanced, 0U, 1U, &number, 1U, 9U), ENTRY(vlScannerCommunicationReceiveEnhanced, 0U, 1U, &number, 1U, &number, 9U),
    ENTRY(vlScannerCommunicationTransceiveEnhanced, 0U, 1U, &number, 1U, &number, 1U, &number, 9U),
    ENTRY(vlFileGetFiles, 0, buffer, 9U, &number, &number), ENTRY(vlFileExists, 0, "x", &flag), ENTRY(vlFileDelete, 0, "x"),
    ENTRY(vlFilePut, 0, "x", "/tmp/never", nullptr, nullptr), ENTRY(vlFileGet, 0, "x", "/tmp/never", nullptr, nullptr),
    ENTRY(vlHeadCorrectionExists, 0, 1, &flag), ENTRY(vlHeadCorrectionDelete, 0, 1), ENTRY(vlHeadCorrectionSet, 0, 1, "/tmp/never"), ENTRY(vlHeadCorrectionGet, 0, 1, "/tmp/never"),
    ENTRY(vlHeadCorrectionSetWithProgress, 0, 1, "/tmp/never", nullptr, nullptr), ENTRY(vlHeadCorrectionGetWithProgress, 0, 1, "/tmp/never", nullptr, nullptr),
    ENTRY(vlPowerCorrectionSetWithProgress, "/tmp/never", nullptr, nullptr), ENTRY(vlPowerCorrectionGetWithProgress, "/tmp/never", nullptr, nullptr),
    ENTRY(vlHeadCorrectionLoad), ENTRY(vlHeadCorrectionStore), ENTRY(vlHeadCorrectionSelectCorrection, 0, 1), ENTRY(vlHeadCorrectionGetSelectedCorrection, 0, &value),
    ENTRY(vlHeadCorrectionGetHash, 0, 1, buffer, 9U, &number), ENTRY(vlHeadCorrectionGetOpticalParameters, 0, 1, &optics), ENTRY(vlPowerCorrectionCreate, &optics),
    ENTRY(vlPowerCorrectionSet, "/tmp/never"), ENTRY(vlPowerCorrectionGet, "/tmp/never"), ENTRY(vlPowerCorrectionLoad), ENTRY(vlPowerCorrectionStore),
    ENTRY(vlPowerCorrectionChangeValue, 1., 2., 3., 4.), ENTRY(vlPowerCorrectionGetOpticalParameters, &optics),
};
// clang-format on

// As many a line as fit.
// clang-format off
const Function onLists[] = {
    LIST_ENTRY(vlListReleaseHandle), LIST_ENTRY(vlListDeleteHandle), LIST_ENTRY(vlListClear),
    LIST_ENTRY(vlListCommandCount), LIST_ENTRY(vlListStringLen), LIST_ENTRY(vlListToString, buffer, 9U, &number),
    LIST_ENTRY(vlListAppendMarkAbs2D, 1.0, 2.0), LIST_ENTRY(vlListAppendList, std::int64_t{1}),
};
// clang-format on

// clang-format off
const Function onFonts[] = {
    FONT_ENTRY(vlFontReleaseHandle), FONT_ENTRY(vlFontAddChar, u'A', std::int64_t{1}), FONT_ENTRY(vlFontGetChar, u'A'),
    FONT_ENTRY(vlFontRemoveChar, u'A'), FONT_ENTRY(vlFontClear), FONT_ENTRY(vlFontChars, &character, 1U, &number),
    FONT_ENTRY(vlFontCharsLen, &number),
};
// clang-format on

template <std::size_t N>
void ExpectRefusals(const Function (&functions)[N], std::int32_t handle, const std::string& text) {
  for (const auto& [name, call] : functions) {
    EXPECT_EQ(call(handle), -1) << name;
    EXPECT_EQ(LastError(), text) << name;
  }
}

TEST(Frame, RefusesHandlesThatNameNothing) {
  const std::string negative = "Illegal handle.";
  const std::string unknown = "There is no connection corresponding to this handle.";
  ExpectRefusals(onConnections, -1, negative);
  ExpectRefusals(onConnections, 99999, unknown);
  ExpectRefusals(onLists, -1, negative);
  ExpectRefusals(onLists, 99999, unknown);
  ExpectRefusals(onFonts, -1, negative);
  ExpectRefusals(onFonts, 99999, unknown);
}

TEST(Frame, RefusesListsThatDoNotExist) {
  FakeCard card(FakeCard::Obliging());
  Connection connection(card.Port());
  for (const auto& [name, call] : onLists) {
    const bool lenient = std::string(name) == "vlListReleaseHandle";
    EXPECT_EQ(call(connection), lenient ? 0 : -1) << name;
    EXPECT_EQ(LastError(), lenient ? "" : "List does not exist.") << name;
  }
}

TEST(Frame, RefusesFontsThatDoNotExist) {
  FakeCard card(FakeCard::Obliging());
  Connection connection(card.Port());
  ASSERT_EQ(vlListAllocate(connection) & 0xFFFFFFFF, 1);  // a list is no font
  ExpectRefusals(onFonts, connection, "Font does not exist.");
  EXPECT_EQ(vlFontSet(connection, ListOf(connection)), -1);
  EXPECT_EQ(LastError(), "Font does not exist.");
}

TEST(Frame, ASuccessErasesTheErrorBefore) {
  FakeCard card(FakeCard::Obliging());
  Connection connection(card.Port());
  EXPECT_EQ(vlListAllocate(-1), -1);
  EXPECT_EQ(vlGetLastErrorLen(), 15 + 2);
  EXPECT_EQ(vlListAllocate(connection) & 0xFFFFFFFF, 1);
  EXPECT_EQ(vlGetLastErrorLen(), 2);
}

// clang-format off
template <class F>
void ExpectKept(std::int32_t handle, F& set, auto init, auto get, auto put, auto load, auto store) {
  F fetched{}, defaults{};
  EXPECT_EQ(init(&defaults) + put(handle, &set) + store(handle) + put(handle, &defaults) + load(handle), 0);
  EXPECT_EQ(get(handle, &fetched), 0) << LastError();
  EXPECT_EQ(std::memcmp(&fetched, &set, sizeof set), 0);
}

TEST(Configuration, IsKeptByTheCardAndRefusedWhenItIsWrong) {
  const CardProcess card;
  const Connection connection(card.GetPort());
  char text[2000];
  EXPECT_EQ(vlProcessInitVariables(&variables) + vlMotfInitConfig(&motf) + vlEventInitConfig(&events), 0);
  EXPECT_EQ(vlMotfConfigSetDirectionFromAngle(&motf, -0.0), 0);
  EXPECT_FALSE(std::signbit(motf.MainDirection.Y) || std::signbit(motf.CompensationDirection.X));
  EXPECT_EQ(vlMotfConfigSetDirectionFromAngle(&motf, 1.5707963267948966), 0);
  EXPECT_NEAR(motf.MainDirection.Y - motf.CompensationDirection.X, 2, 1e-15);
  EXPECT_EQ(vlProcessWobbleSetCircle(&variables.Wobble, 3, 4) + vlProcessWobbleSetEight(&variables.Wobble, 3, 5, 4), 0);
  EXPECT_EQ(variables.Wobble.Amplitude.Y + variables.Wobble.Frequency.Y + variables.Wobble.Phase.Y, 5 + 8 + 0);
  // Field by field, so that what lies between the fields stays 0.
  variables.OnOffPattern.Count = 1, variables.OnOffPattern.Items[0] = 1.5;
  decoders.ConfigVersion = 4, decoders.Modules.Count = 1;
  decoders.Modules.Items[0].ConfigVersion = 4, decoders.Modules.Items[0].DistancePerCount = 3;
  events.EventSettings.Count = 2, events.EventSettings.Items[0].Number = -1, events.EventSettings.Items[1].Number = 5;
  events.EventSettings.Items[1].Value.Exclusions.Count = 1, events.EventSettings.Items[1].Value.Exclusions.Items[0] = 7;
#define KEPT(set, prefix, What) ExpectKept(connection, set, prefix##Init##What, prefix##Get##What, prefix##Set##What, prefix##Load##What, prefix##Store##What)
  KEPT(variables, vlProcess, Variables), KEPT(motf, vlMotf, Config);
  KEPT(decoders, vlMotfQuadratureDecoder, Config), KEPT(events, vlEvent, Config);
  EXPECT_EQ(vlMotfQuadratureDecoderInitConfig(&decoders), 0);
  EXPECT_EQ(decoders.Modules.Count, 2U);
  variables.OnOffPattern.Count = 65, decoders.Modules.Count = 5, motf.OperatingMode = 2, events.EventSettings.Items[1].Number = -1;
  const std::pair<std::function<std::int32_t()>, const char*> failures[] = {
      {[&] { return vlProcessToStringVariables(&variables, text, 2000, &number); }, "Illegal number of OnOffPattern values"},
      {[&] { return vlMotfToStringConfig(&motf, text, 2000, &number); }, "MotfOperatingMode::_from_integral: invalid argument"},
      {[&] { return vlMotfQuadratureDecoderToStringConfig(&decoders, text, 2000, &number); }, "Error converting QuadratureDecoderConfig from C."},
      {[&] { return vlEventSetConfig(connection, &events); }, "Error converting EventConfig from C."},
  };
  for (const auto& [call, expected] : failures) {
    EXPECT_EQ(call(), -1);
    EXPECT_EQ(LastError(), expected);
  }
}
// clang-format on

TEST(Lists, AreNumberedAndNeverNumberedAgain) {
  FakeCard card(FakeCard::Obliging());
  Connection connection(card.Port());
  const std::int64_t first = vlListAllocate(connection);
  EXPECT_EQ(first >> 32, connection);
  EXPECT_EQ(vlListReleaseHandle(first), 0);
  const std::int64_t second = vlListAllocate(connection);
  EXPECT_EQ(second, first + 1);
  EXPECT_EQ(vlListDeleteHandle(second), 0);
  EXPECT_EQ(vlListDeleteHandle(second), -1);
  EXPECT_EQ(vlListReleaseHandle(second), 0);
}

TEST(Lists, MayBeReleasedWhileOthersAppend) {
  FakeCard card(FakeCard::Obliging());
  Connection connection(card.Port());
  for (int round = 0; round < 50; ++round) {
    const std::int64_t list = vlListAllocate(connection);
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
      threads.emplace_back([list] {
        while (vlListAppendMarkAbs2D(list, 1, 2) == 0) continue;
        EXPECT_EQ(LastError(), "List does not exist.");
      });
    }
    while (vlListCommandCount(list) < 1000) std::this_thread::yield();
    EXPECT_EQ(vlListReleaseHandle(list), 0);
    for (std::thread& thread : threads) thread.join();
  }
}

TEST(Lists, AreForgottenByWhoeverUsedThemLast) {
  FakeCard card(FakeCard::Obliging());
  const std::int32_t connection = vlConnect("127.0.0.1", card.Port());
  const std::int64_t released = vlListAllocate(connection);
  EXPECT_EQ(vlListAppendMarkAbs2D(released, 1, 2) + vlListReleaseHandle(released), 0);
  EXPECT_EQ(vlListAppendMarkAbs2D(released, 1, 2), -1);
  EXPECT_EQ(LastError(), "List does not exist.");
  const std::int64_t left = vlListAllocate(connection);
  EXPECT_EQ(vlListAppendMarkAbs2D(left, 1, 2) + vlDisconnect(connection), 0);
  EXPECT_EQ(vlListAppendMarkAbs2D(left, 1, 2), -1);
  EXPECT_EQ(LastError(), "There is no connection corresponding to this handle.");
}

TEST(Lists, KeepTheirLoops) {
  FakeCard card(FakeCard::Obliging());
  Connection connection(card.Port());
  const std::int64_t list = vlListAllocate(connection);
  EXPECT_EQ(vlListAppendLoopBreak(list), -1);
  EXPECT_EQ(LastError(), "No loop opened!");
  EXPECT_EQ(vlListAppendLoopStart(list, 3), 0);
  EXPECT_EQ(vlListAppendLoopBreak(list), 0);
  EXPECT_EQ(vlListSet(connection, 1, list, false, -1), -1);
  EXPECT_EQ(LastError(), "There are open loops inside the list!");
  EXPECT_EQ(vlListAppendLoopEnd(list), 0);
  EXPECT_EQ(vlListSet(connection, 1, list, false, -1), 0) << LastError();
  EXPECT_EQ(vlListCommandCount(list), 3);
  EXPECT_EQ(vlListClear(list), 0);
  EXPECT_EQ(vlListCommandCount(list), 0);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
