// The areas of a card in C++: card.Laser().ArmLaser(true) is vlLaserArmLaser(card, 1). What a member does, and its units
// and errors, are said with the C function that it calls.
#ifndef KELVO_AREAS_HPP
#define KELVO_AREAS_HPP

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kelvo/KelvoCall.hpp"
#include "kelvo/KelvoCallbacks.hpp"
#include "kelvo/KelvoEnumerations.hpp"
#include "kelvo/KelvoLists.hpp"

namespace kelvo {

// The structs are those of C: their fields take numbers, as in config.HotPowerTarget = Number(PowerTarget::Dac1).
using AdapterBoardConfig = vlAdapterBoardConfig;
using AdapterBoardIdentity = vlAdapterBoardIdentity;
using CardInfo = vlCardInfo;
using CardVariable = vlCardVariable;
using EventConfig = vlEventConfig;
using GpioConfig = vlGpioConfig;
using LaserConfig = vlLaserConfig;
using ListExecutionStats = vlListExecutionStats;
using MarkCounter = vlMarkCounter;
using Measurement = vlMeasurement;
using MotfConfig = vlMotfConfig;
using OpticalParameters = vlOpticalParameters;
using ProcessVariables = vlProcessVariables;
using QuadratureDecoderConfig = vlQuadratureDecoderConfig;
using ScannerConfig = vlScannerConfig;
using ScannerPositions = vlScannerPositions;
using SelfTestResult = vlSelfTestResult;
using SerialPortConfig = vlSerialPortConfig;
using SpiConfig = vlSpiConfig;
using SystemConfig = vlSystemConfig;
using WobbleSettings = vlWobbleSettings;

// Where a pin is.
struct PinPlace {
  IOPort Port;       // the port
  std::int32_t Pin;  // the number of the pin there, from 0
};

// A part of the card that a connection leads to.
using Area = detail::Handled<std::int32_t>;

// An area with a configuration.
template <auto Init, auto GetActive, auto SetActive, auto Load, auto Store, auto ToString>
class ConfigurationArea : public Area {
 public:
  using Area::Area;
  // The struct of C.
  using Config = typename detail::LastOutput<decltype(GetActive)>::Type;

  // The defaults.
  static Config InitConfig() { return Fetch<Init>(); }
  // The card's active configuration.
  Config GetConfig() const { return Fetch<GetActive>(handle_); }
  // Sends one, which becomes the active one.
  void SetConfig(const Config& config) const { Call<SetActive>(handle_, config); }
  // Makes the stored one the active one.
  void LoadConfig() const { Call<Load>(handle_); }
  // Makes the card store the active one.
  void StoreConfig() const { Call<Store>(handle_); }
  // It as text.
  static std::string ToStringConfig(const Config& config) { return FetchText<ToString>(config); }
};

class AdapterBoardArea : public ConfigurationArea<vlAdapterBoardInitConfig, vlAdapterBoardGetConfig,
                                                  vlAdapterBoardSetConfig, vlAdapterBoardLoadConfig,
                                                  vlAdapterBoardStoreConfig, vlAdapterBoardToStringConfig> {
 public:
  using ConfigurationArea::ConfigurationArea;

  AdapterBoardIdentity GetIdentity() const { return Fetch<vlAdapterBoardGetIdentity>(handle_); }
};

// A group of settings, from vlConfigurationBeginUpdate to its end.
class ConfigurationUpdateArea : public Area {
 public:
  using Area::Area;

  void BeginUpdate() const { Call<vlConfigurationBeginUpdate>(handle_); }
  void EndUpdate() const { Call<vlConfigurationEndUpdate>(handle_); }
  void AbortUpdate() const { Call<vlConfigurationAbortUpdate>(handle_); }
  bool IsUpdateActive() const { return Fetch<vlConfigurationIsUpdateActive>(handle_); }
};

class EventArea : public Area {
 public:
  using Area::Area;

  static EventConfig InitConfig() { return Fetch<vlEventInitConfig>(); }
  EventConfig GetConfig() const { return Fetch<vlEventGetConfig>(handle_); }
  void SetConfig(const EventConfig& config) const { Call<vlEventSetConfig>(handle_, config); }
  void LoadConfig() const { Call<vlEventLoadConfig>(handle_); }
  void StoreConfig() const { Call<vlEventStoreConfig>(handle_); }
};

class FileArea : public Area {
 public:
  using Area::Area;

  std::vector<std::string> GetFiles(DirectorySelector directory) const {
    std::uint32_t length = 0, count = 0;
    for (std::vector<char> names(10000);; names.resize(length)) {
      const auto room = static_cast<std::uint32_t>(names.size());
      if (vlFileGetFiles(handle_, Number(directory), names.data(), room, &length, &count) >= 0) {
        return Split(names.data(), count);
      }
      detail::ThrowUnlessRoomIsWanted(room);
      Call<vlFileGetFiles>(handle_, directory, nullptr, 0U, &length, &count);
    }
  }
  bool Exists(DirectorySelector directory, const Text& name) const {
    return Fetch<vlFileExists>(handle_, directory, name);
  }
  void Delete(DirectorySelector directory, const Text& name) const {
    Call<vlFileDelete>(handle_, directory, name);
  }
  void Put(DirectorySelector directory, const Text& name, const Text& path,
           const FileProgressCallback& progress = {}) const {
    detail::Transfer<vlFilePut>(progress, handle_, directory, name, path);
  }
  void Get(DirectorySelector directory, const Text& name, const Text& path,
           const FileProgressCallback& progress = {}) const {
    detail::Transfer<vlFileGet>(progress, handle_, directory, name, path);
  }
};

class FontArea : public Area {
 public:
  using Area::Area;

  void Set(const FontRef& font) const { Call<vlFontSet>(handle_, font); }
  Font Get(std::int32_t font_id) const { return Font::Adopt(Call<vlFontGet>(handle_, font_id)); }
  void SetActive(std::int32_t font_id) const { Call<vlFontSetActive>(handle_, font_id); }
  void Delete(std::int32_t font_id) const { Call<vlFontDelete>(handle_, font_id); }
  void Load(std::int32_t font_id) const { Call<vlFontLoad>(handle_, font_id); }
  void Store(std::int32_t font_id) const { Call<vlFontStore>(handle_, font_id); }
};

class GpioArea : public ConfigurationArea<vlGpioInitConfig, vlGpioGetConfig, vlGpioSetConfig,
                                          vlGpioLoadConfig, vlGpioStoreConfig, vlGpioToStringConfig> {
 public:
  using ConfigurationArea::ConfigurationArea;

  static PinPlace ConfigFindPin(const GpioConfig& config, const Text& name) {
    std::int32_t port = 0, pin = 0;
    Call<vlGpioConfigFindPin>(config, name, &port, &pin);
    return {static_cast<IOPort>(port), pin};
  }
  std::uint32_t ReadPort(IOPort port) const { return Fetch<vlGpioReadPort>(handle_, port); }
  void WritePort(IOPort port, PinAction action, std::uint32_t pins) const {
    Call<vlGpioWritePort>(handle_, port, action, pins);
  }
  bool ReadPin(IOPort port, std::int32_t pin) const { return Fetch<vlGpioReadPin>(handle_, port, pin); }
  void WritePin(IOPort port, std::int32_t pin, bool active) const {
    Call<vlGpioWritePin>(handle_, port, pin, active);
  }
  void PulsePins(IOPort port, std::uint32_t pins, Microseconds duration) const {
    Call<vlGpioPulsePins>(handle_, port, pins, duration);
  }
  // Nothing when no pin differed in time.
  std::optional<std::uint32_t> WaitForChange(IOPort port, std::uint32_t pins, std::uint32_t known,
                                             Milliseconds timeout = ConnectionTimeout) const {
    std::uint32_t now = 0;
    const bool late = Call<vlGpioWaitForChange>(handle_, port, pins, known, timeout, &now) != 0;
    return late ? std::nullopt : std::optional(now);
  }
};

class HeadCorrectionArea : public Area {
 public:
  using Area::Area;

  bool Exists(std::int32_t head, std::int32_t slot) const {
    return Fetch<vlHeadCorrectionExists>(handle_, head, slot);
  }
  void Delete(std::int32_t head, std::int32_t slot) const {
    Call<vlHeadCorrectionDelete>(handle_, head, slot);
  }
  void Set(std::int32_t head, std::int32_t slot, const Text& path) const {
    Call<vlHeadCorrectionSet>(handle_, head, slot, path);
  }
  void SetWithProgress(std::int32_t head, std::int32_t slot, const Text& path,
                       const FileProgressCallback& progress) const {
    detail::Transfer<vlHeadCorrectionSetWithProgress>(progress, handle_, head, slot, path);
  }
  void Get(std::int32_t head, std::int32_t slot, const Text& path) const {
    Call<vlHeadCorrectionGet>(handle_, head, slot, path);
  }
  void GetWithProgress(std::int32_t head, std::int32_t slot, const Text& path,
                       const FileProgressCallback& progress) const {
    detail::Transfer<vlHeadCorrectionGetWithProgress>(progress, handle_, head, slot, path);
  }
  void Load() const { Call<vlHeadCorrectionLoad>(handle_); }
  void Store() const { Call<vlHeadCorrectionStore>(handle_); }
  void SelectCorrection(std::int32_t head, std::int32_t slot) const {
    Call<vlHeadCorrectionSelectCorrection>(handle_, head, slot);
  }
  std::int32_t GetSelectedCorrection(std::int32_t head) const {
    return Fetch<vlHeadCorrectionGetSelectedCorrection>(handle_, head);
  }
  std::string GetHash(std::int32_t head, std::int32_t slot) const {
    return FetchText<vlHeadCorrectionGetHash>(handle_, head, slot);
  }
  OpticalParameters GetOpticalParameters(std::int32_t head, std::int32_t slot) const {
    return Fetch<vlHeadCorrectionGetOpticalParameters>(handle_, head, slot);
  }
  static OpticalParameters InitOpticalParameters() { return Fetch<vlHeadCorrectionInitOpticalParameters>(); }
};

class InternalArea : public Area {
 public:
  using Area::Area;

  MethodSupport GetMethodSupport(const Text& method) const {
    return Fetch<vlInternalGetMethodSupport, MethodSupport>(handle_, method);
  }
  std::vector<Measurement> GetMeasurements() const {
    return FetchValues<vlInternalGetMeasurements, Measurement>(handle_);
  }
  std::string GetLog() const { return FetchText<vlInternalGetLog>(handle_); }
  std::vector<SelfTestResult> RunSelfTest() const {
    return FetchValues<vlInternalRunSelfTest, SelfTestResult>(handle_);
  }
};

class LaserArea : public ConfigurationArea<vlLaserInitConfig, vlLaserGetConfig, vlLaserSetConfig,
                                           vlLaserLoadConfig, vlLaserStoreConfig, vlLaserToStringConfig> {
 public:
  using ConfigurationArea::ConfigurationArea;

  void LaserOn() const { Call<vlLaserLaserOn>(handle_); }
  void LaserOff() const { Call<vlLaserLaserOff>(handle_); }
  bool IsPilotEnabled() const { return Fetch<vlLaserIsPilotEnabled>(handle_); }
  void EnablePilot(bool enable) const { Call<vlLaserEnablePilot>(handle_, enable); }
  bool IsLaserArmed() const { return Fetch<vlLaserIsLaserArmed>(handle_); }
  void ArmLaser(bool arm) const { Call<vlLaserArmLaser>(handle_, arm); }
  LaserStatus ReadLaserStatus() const { return Fetch<vlLaserReadLaserStatus, LaserStatus>(handle_); }
  double GetPowerScale(PowerTarget target) const { return Fetch<vlLaserGetPowerScale>(handle_, target); }
  void SetPowerScale(PowerTarget target, double scale) const {
    Call<vlLaserSetPowerScale>(handle_, target, scale);
  }

  void CreatePowerCalibration(std::uint32_t engine) const {
    Call<vlLaserCreatePowerCalibration>(handle_, engine);
  }
  void LoadPowerCalibration(std::uint32_t engine) const {
    Call<vlLaserLoadPowerCalibration>(handle_, engine);
  }
  void StorePowerCalibration(std::uint32_t engine) const {
    Call<vlLaserStorePowerCalibration>(handle_, engine);
  }
  std::vector<std::uint32_t> GetPowerCalibration(std::uint32_t engine) const {
    return FetchValues<vlLaserGetPowerCalibration, std::uint32_t>(handle_, engine);
  }
  void SetPowerCalibration(std::uint32_t engine, Span<std::uint32_t> values) const {
    Call<vlLaserSetPowerCalibration>(handle_, engine, values.data(),
                                     static_cast<std::int32_t>(values.size()));
  }
  void PowerCalibrationGet(std::uint32_t engine, const Text& path) const {
    Call<vlLaserPowerCalibrationGet>(handle_, engine, path);
  }
  void PowerCalibrationSet(std::uint32_t engine, const Text& path) const {
    Call<vlLaserPowerCalibrationSet>(handle_, engine, path);
  }
};

class ListArea : public Area {
 public:
  using Area::Area;

  void Set(std::int32_t list_id, const ListRef& list, bool append = false,
           std::int32_t list_field = -1) const {
    Call<vlListSet>(handle_, list_id, list, append, list_field);
  }
  void Get(std::int32_t list_id, const ListRef& list) const { Call<vlListGet>(handle_, list_id, list); }
  void Load(std::int32_t list_id) const { Call<vlListLoad>(handle_, list_id); }
  void Store(std::int32_t list_id) const { Call<vlListStore>(handle_, list_id); }
  void Delete(std::int32_t list_id, bool flag) const { Call<vlListDelete>(handle_, list_id, flag); }
  std::vector<std::int32_t> GetStoredListIDs() const {
    return FetchValues<vlListGetStoredListIDs, std::int32_t>(handle_);
  }
  void Execute(std::int32_t list_id) const { Call<vlListExecute>(handle_, list_id); }
  void AbortExecution() const { Call<vlListAbortExecution>(handle_); }
  void ResetExecution() const { Call<vlListResetExecution>(handle_); }
  bool IsExecutionInProgress() const { return Fetch<vlListIsExecutionInProgress>(handle_); }
  ListStatus GetListStatus(std::int32_t list_id) const {
    return Fetch<vlListGetListStatus, ListStatus>(handle_, list_id);
  }
  std::int32_t GetListCaret(std::int32_t list_id) const {
    return Fetch<vlListGetListCaret>(handle_, list_id);
  }
  void SetExecutionLimit(std::int32_t limit) const { Call<vlListSetExecutionLimit>(handle_, limit); }
  std::int32_t GetExecutionLimit() const { return Fetch<vlListGetExecutionLimit>(handle_); }
  ListExecutionStats GetLastExecutionStats() const { return Fetch<vlListGetLastExecutionStats>(handle_); }

  // Nothing when none came in time, or the wait was interrupted.
  std::optional<std::int32_t> WaitForProgress(Milliseconds timeout = ConnectionTimeout) const {
    return Wait<vlListWaitForProgress>(timeout);
  }
  std::optional<std::int32_t> WaitForListDone(Milliseconds timeout = ConnectionTimeout) const {
    return Wait<vlListWaitForListDone>(timeout);
  }
  std::optional<std::int32_t> WaitForListIdle(Milliseconds timeout = ConnectionTimeout) const {
    return Wait<vlListWaitForListIdle>(timeout);
  }
  void InterruptWaitForProgress() const { Call<vlListInterruptWaitForProgress>(handle_); }
  void InterruptWaitForListDone() const { Call<vlListInterruptWaitForListDone>(handle_); }
  void InterruptWaitForListIdle() const { Call<vlListInterruptWaitForListIdle>(handle_); }

  // Unregistered when the registration that they return ends.
  [[nodiscard]] Registration RegisterProgressCallback(ListEventCallback callback) const {
    return detail::CallbackTable<vlListRegisterProgressCallback, vlListUnRegisterProgressCallback,
                                 ListEventCallback>::Add(handle_, std::move(callback));
  }
  [[nodiscard]] Registration RegisterListDoneCallback(ListEventCallback callback) const {
    return detail::CallbackTable<vlListRegisterListDoneCallback, vlListUnRegisterListDoneCallback,
                                 ListEventCallback>::Add(handle_, std::move(callback));
  }
  [[nodiscard]] Registration RegisterListIdleCallback(ListEventCallback callback) const {
    return detail::CallbackTable<vlListRegisterListIdleCallback, vlListUnRegisterListIdleCallback,
                                 ListEventCallback>::Add(handle_, std::move(callback));
  }
  [[nodiscard]] Registration RegisterErrorEventCallback(ErrorEventCallback callback) const {
    return detail::CallbackTable<vlListRegisterErrorEventCallback, vlListUnRegisterErrorEventCallback,
                                 ErrorEventCallback>::Add(handle_, std::move(callback));
  }
  void ClearPendingEvents() const { Call<vlListClearPendingEvents>(handle_); }

 private:
  template <auto Function>
  std::optional<std::int32_t> Wait(Milliseconds timeout) const {
    std::int32_t value = 0;
    return Call<Function>(handle_, &value, timeout) == 0 ? std::optional(value) : std::nullopt;
  }
};

class MotfArea : public ConfigurationArea<vlMotfInitConfig, vlMotfGetConfig, vlMotfSetConfig,
                                          vlMotfLoadConfig, vlMotfStoreConfig, vlMotfToStringConfig> {
 public:
  using ConfigurationArea::ConfigurationArea;

  static void ConfigSetDirectionFromAngle(MotfConfig& config, double angle) {
    Call<vlMotfConfigSetDirectionFromAngle>(&config, angle);
  }
  void ResetState() const { Call<vlMotfResetState>(handle_); }
  std::int32_t GetPendingParts() const { return Fetch<vlMotfGetPendingParts>(handle_); }
  double GetFactor1xSpeed() const { return Fetch<vlGetFactor1xSpeed>(handle_); }
  void SetFactor1xSpeed(double factor) const { Call<vlSetFactor1xSpeed>(handle_, factor); }
};

class MotfQuadratureDecoderArea
    : public ConfigurationArea<vlMotfQuadratureDecoderInitConfig, vlMotfQuadratureDecoderGetConfig,
                               vlMotfQuadratureDecoderSetConfig, vlMotfQuadratureDecoderLoadConfig,
                               vlMotfQuadratureDecoderStoreConfig, vlMotfQuadratureDecoderToStringConfig> {
 public:
  using ConfigurationArea::ConfigurationArea;

  void ResetEncoderPosition(std::int32_t module) const {
    Call<vlMotfQuadratureDecoderResetEncoderPosition>(handle_, module);
  }
  std::int32_t ReadEncoderPosition(std::int32_t module) const {
    return Fetch<vlMotfQuadratureDecoderReadEncoderPosition>(handle_, module);
  }
};

class PowerCorrectionArea : public Area {
 public:
  using Area::Area;

  void Create(const OpticalParameters& parameters) const {
    Call<vlPowerCorrectionCreate>(handle_, parameters);
  }
  void Set(const Text& path) const { Call<vlPowerCorrectionSet>(handle_, path); }
  void SetWithProgress(const Text& path, const FileProgressCallback& progress) const {
    detail::Transfer<vlPowerCorrectionSetWithProgress>(progress, handle_, path);
  }
  void Get(const Text& path) const { Call<vlPowerCorrectionGet>(handle_, path); }
  void GetWithProgress(const Text& path, const FileProgressCallback& progress) const {
    detail::Transfer<vlPowerCorrectionGetWithProgress>(progress, handle_, path);
  }
  void Load() const { Call<vlPowerCorrectionLoad>(handle_); }
  void Store() const { Call<vlPowerCorrectionStore>(handle_); }
  void ChangeValue(double x, double y, double z, double value) const {
    Call<vlPowerCorrectionChangeValue>(handle_, x, y, z, value);
  }
  OpticalParameters GetOpticalParameters() const {
    return Fetch<vlPowerCorrectionGetOpticalParameters>(handle_);
  }
};

class ProcessArea : public Area {
 public:
  using Area::Area;

  static ProcessVariables InitVariables() { return Fetch<vlProcessInitVariables>(); }
  ProcessVariables GetVariables() const { return Fetch<vlProcessGetVariables>(handle_); }
  void SetVariables(const ProcessVariables& variables) const {
    Call<vlProcessSetVariables>(handle_, variables);
  }
  void LoadVariables() const { Call<vlProcessLoadVariables>(handle_); }
  void StoreVariables() const { Call<vlProcessStoreVariables>(handle_); }
  static std::string ToStringVariables(const ProcessVariables& variables) {
    return FetchText<vlProcessToStringVariables>(variables);
  }
  double GetSpeedScale() const { return Fetch<vlProcessGetSpeedScale>(handle_); }
  void SetSpeedScale(double scale) const { Call<vlProcessSetSpeedScale>(handle_, scale); }
  Transform3D GetTransformation() const { return Fetch<vlProcessGetTransformation>(handle_); }
  void SetTransformation(const Transform3D& transformation) const {
    Call<vlProcessSetTransformation>(handle_, transformation);
  }
  static void WobbleSetCircle(WobbleSettings& wobble, double amplitude, double frequency) {
    Call<vlProcessWobbleSetCircle>(&wobble, amplitude, frequency);
  }
  static void WobbleSetEight(WobbleSettings& wobble, double amplitude_x, double amplitude_y,
                             double frequency) {
    Call<vlProcessWobbleSetEight>(&wobble, amplitude_x, amplitude_y, frequency);
  }
};

class ScannerArea
    : public ConfigurationArea<vlScannerInitConfig, vlScannerGetConfig, vlScannerSetConfig,
                               vlScannerLoadConfig, vlScannerStoreConfig, vlScannerToStringConfig> {
 public:
  using ConfigurationArea::ConfigurationArea;

  static void ConfigSetHeadFormat(ScannerConfig& config, ScanHeadFormat format) {
    Call<vlScannerConfigSetHeadFormat>(&config, format);
  }
  Point3D GetNominalPosition() const {
    Point3D position{};
    Call<vlScannerGetNominalPosition>(handle_, &position.X, &position.Y, &position.Z);
    return position;
  }
  ScannerPositions ReadPositions() const { return Fetch<vlScannerReadPositions>(handle_); }
  ScannerPositions ReadLastPositions() const { return Fetch<vlScannerReadLastPositions>(handle_); }
  Point3D GetHeadBias(std::uint32_t head) const { return Fetch<vlScannerGetHeadBias>(handle_, head); }
  void SetHeadBias(std::uint32_t head, Axes axes, Span<double> values) const {
    Call<vlScannerSetHeadBias>(handle_, head, axes, values.data(), values.size());
  }

  static std::int32_t HeadFormatGetHeadCount(ScanHeadFormat format) {
    return Fetch<vlScannerHeadFormatGetHeadCount>(format);
  }
  static std::int32_t HeadFormatGetAxisCount(ScanHeadFormat format) {
    return Fetch<vlScannerHeadFormatGetAxisCount>(format);
  }
  static std::int32_t HeadFormatGetIndexOfAxis(ScanHeadFormat format, Axis axis) {
    return Fetch<vlScannerHeadFormatGetIndexOfAxis>(format, axis);
  }
  static Axis HeadFormatGetAxisAtIndex(ScanHeadFormat format, std::int32_t index) {
    return Fetch<vlScannerHeadFormatGetAxisAtIndex, Axis>(format, index);
  }
  static std::int32_t HeadFormatGetDimensions(ScanHeadFormat format) {
    return Fetch<vlScannerHeadFormatGetDimensions>(format);
  }
  static Axes HeadFormatGetAxes(ScanHeadFormat format) {
    return Fetch<vlScannerHeadFormatGetAxes, Axes>(format);
  }
  static bool HeadFormatHasOpticalZoom(ScanHeadFormat format) {
    return Fetch<vlScannerHeadFormatHasOpticalZoom>(format);
  }
  static bool HeadFormatHasAuxiliary(ScanHeadFormat format) {
    return Fetch<vlScannerHeadFormatHasAuxiliary>(format);
  }
  static bool HeadFormatIsExtended(ScanHeadFormat format) {
    return Fetch<vlScannerHeadFormatIsExtended>(format);
  }
};

// Messages to a head. An answer has room for so many elements; it is fetched once, as the head has got the message then.
class ScannerCommunicationArea : public Area {
 public:
  using Area::Area;

  void TransmitVeltro(std::uint32_t head, Axis axis, Span<std::uint8_t> message,
                      UnsignedMilliseconds timeout) const {
    Call<vlScannerCommunicationTransmitVeltro>(handle_, head, axis, message.data(), message.size(), timeout);
  }
  std::vector<std::uint8_t> TransceiveVeltro(std::uint32_t head, Axis axis, Span<std::uint8_t> message,
                                             UnsignedMilliseconds timeout,
                                             std::uint32_t capacity = 4096) const {
    std::vector<std::uint8_t> answer(capacity);
    std::uint32_t count = 0;
    Call<vlScannerCommunicationTransceiveVeltro>(handle_, head, axis, message.data(), message.size(),
                                                 answer.data(), capacity, &count, timeout);
    answer.resize(count);
    return answer;
  }
  void TransmitEnhanced(std::uint32_t head, Axes axes, Span<std::uint32_t> commands,
                        UnsignedMilliseconds timeout) const {
    Call<vlScannerCommunicationTransmitEnhanced>(handle_, head, axes, commands.data(), commands.size(),
                                                 timeout);
  }
  std::vector<std::uint32_t> ReceiveEnhanced(std::uint32_t head, Axes axes, UnsignedMilliseconds timeout,
                                             std::uint32_t capacity = 4096) const {
    std::vector<std::uint32_t> answer(capacity);
    std::uint32_t count = 0;
    Call<vlScannerCommunicationReceiveEnhanced>(handle_, head, axes, answer.data(), capacity, &count,
                                                timeout);
    answer.resize(count);
    return answer;
  }
  std::vector<std::uint32_t> TransceiveEnhanced(std::uint32_t head, Axes axes, Span<std::uint32_t> commands,
                                                UnsignedMilliseconds timeout,
                                                std::uint32_t capacity = 4096) const {
    std::vector<std::uint32_t> answer(capacity);
    std::uint32_t count = 0;
    Call<vlScannerCommunicationTransceiveEnhanced>(handle_, head, axes, commands.data(), commands.size(),
                                                   answer.data(), capacity, &count, timeout);
    answer.resize(count);
    return answer;
  }
};

class SerialPortArea
    : public ConfigurationArea<vlSerialPortInitConfig, vlSerialPortGetConfig, vlSerialPortSetConfig,
                               vlSerialPortLoadConfig, vlSerialPortStoreConfig, vlSerialPortToStringConfig> {
 public:
  using ConfigurationArea::ConfigurationArea;

  void Write(std::int32_t port, Span<std::uint8_t> bytes) const {
    Call<vlSerialPortWrite>(handle_, port, bytes.data(), bytes.size());
  }
  // Nothing when none came in time.
  std::optional<std::vector<std::uint8_t>> Read(std::int32_t port, std::uint32_t capacity,
                                                Milliseconds timeout = ConnectionTimeout) const {
    std::vector<std::uint8_t> bytes(capacity);
    std::uint32_t count = 0;
    if (Call<vlSerialPortRead>(handle_, port, bytes.data(), capacity, &count, timeout) != 0) {
      return std::nullopt;
    }
    bytes.resize(count);
    return bytes;
  }
  void Flush(std::int32_t port) const { Call<vlSerialPortFlush>(handle_, port); }
};

class SfioArea : public Area {
 public:
  using Area::Area;

  std::uint32_t ReadRegister(SfRegister register_number) const {
    return Fetch<vlSfioReadRegister>(handle_, register_number);
  }
  void WriteRegister(SfRegister register_number, std::uint32_t value) const {
    Call<vlSfioWriteRegister>(handle_, register_number, value);
  }
};

class SpiArea : public ConfigurationArea<vlSpiInitConfig, vlSpiGetConfig, vlSpiSetConfig, vlSpiLoadConfig,
                                         vlSpiStoreConfig, vlSpiToStringConfig> {
 public:
  using ConfigurationArea::ConfigurationArea;

  std::vector<std::uint8_t> Transfer(std::int32_t module, Span<std::uint8_t> sent) const {
    std::vector<std::uint8_t> received(sent.size());
    Call<vlSpiTransfer>(handle_, module, sent.data(), sent.size(), received.data());
    return received;
  }
};

class SystemArea : public ConfigurationArea<vlSystemInitConfig, vlSystemGetConfig, vlSystemSetConfig,
                                            vlSystemLoadConfig, vlSystemStoreConfig, vlSystemToStringConfig> {
 public:
  using ConfigurationArea::ConfigurationArea;

  void ResetToDefaults() const { Call<vlSystemResetToDefaults>(handle_); }
  std::string GetFirmwareVersion() const { return FetchText<vlSystemGetFirmwareVersion>(handle_); }
  std::string GetFirmwareProductVersion() const {
    return FetchText<vlSystemGetFirmwareProductVersion>(handle_);
  }
  std::string GetFPGAVersion() const { return FetchText<vlSystemGetFPGAVersion>(handle_); }
  std::string GetOSVersion() const { return FetchText<vlSystemGetOSVersion>(handle_); }
  std::string GetCardSerialNumber() const { return FetchText<vlSystemGetCardSerialNumber>(handle_); }
  std::uint32_t GetConnectionLimit() const { return Fetch<vlSystemGetConnectionLimit>(handle_); }
  OperatingState GetOperatingState() const {
    return Fetch<vlSystemGetOperatingState, OperatingState>(handle_);
  }
  void ResetOperatingState() const { Call<vlSystemResetOperatingState>(handle_); }
  // In the card's time zone: since 1970 began there.
  std::chrono::seconds GetTime() const { return Fetch<vlSystemGetTime, std::chrono::seconds>(handle_); }
  SystemTime GetUniversalTime() const {
    return SystemTime(Fetch<vlSystemGetUniversalTime, std::chrono::seconds>(handle_));
  }
  void SetSystemTime(SystemTime time) const {
    Call<vlSystemSetSystemTime>(handle_, static_cast<std::uint64_t>(time.time_since_epoch().count()));
  }
  std::vector<std::string> GetSupportedTimeZones() const {
    std::uint32_t count = 0;
    for (std::vector<std::uint32_t> names(8000);; names.resize(names.size() * 4)) {
      const auto room = static_cast<std::uint32_t>(names.size());
      if (vlSystemGetSupportedTimeZones(handle_, names.data(), room, &count) >= 0) {
        return Split(reinterpret_cast<const char*>(names.data()), count);
      }
      detail::ThrowUnlessRoomIsWanted(4 * names.size());
    }
  }
};

class VariableArea : public Area {
 public:
  using Area::Area;

  void SetBoolean(const Text& name, bool value) const { Call<vlVariableSetBoolean>(handle_, name, value); }
  bool GetBoolean(const Text& name) const { return Fetch<vlVariableGetBoolean>(handle_, name); }
  void SetInteger(const Text& name, std::int32_t value) const {
    Call<vlVariableSetInteger>(handle_, name, value);
  }
  std::int32_t GetInteger(const Text& name) const { return Fetch<vlVariableGetInteger>(handle_, name); }
  void SetMarkCounter(const Text& name, const MarkCounter& counter) const {
    Call<vlVariableSetMarkCounter>(handle_, name, counter);
  }
  MarkCounter GetMarkCounter(const Text& name) const {
    return Fetch<vlVariableGetMarkCounter>(handle_, name);
  }
  void ResetMarkCounter(const Text& name) const { Call<vlVariableResetMarkCounter>(handle_, name); }
  void SetMarkTimeFormat(const Text& format) const { Call<vlVariableSetMarkTimeFormat>(handle_, format); }
  std::string GetMarkTimeFormat() const { return FetchText<vlVariableGetMarkTimeFormat>(handle_); }
  std::vector<CardVariable> GetAll() const { return FetchValues<vlVariableGetAll, CardVariable>(handle_); }
};

}  // namespace kelvo

#endif
