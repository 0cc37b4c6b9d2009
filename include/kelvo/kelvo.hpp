// The client library in C++17: header only, over the C functions of kelvo.h, whose conventions and comments hold here, too.
//
//     kelvo::Card card("127.0.0.1");
//     kelvo::List list(card);
//     list.AppendMarkAbs2D(10, -10);        // vlListAppendMarkAbs2D(list, 10, -10)
//     card.List().Set(1, list);             // vlListSet(card, 1, list, false, -1)
//     card.Laser().ArmLaser(true);          // vlLaserArmLaser(card, 1)
//
//  - Names follow from the C ones. What fails throws kelvo::Error with the text of the last error.
//  - Card, List and Font own what they name and release it; they can be moved. CardRef, ListRef and FontRef name what
//    somebody else owns, as a program does that has handles from C; handle() gives the handle back. Functions take
//    references, and owners are references.
//  - Outputs are returned. A wait returns nothing when its time is over. Texts come and go as any text, arrays as any array
//    (Text, Span in KelvoCall.hpp), times as a number or as std::chrono has them, structs are those of C.
//  - Callbacks are std::function; what registers one returns a Registration, which unregisters it at its end.
#ifndef KELVO_HPP
#define KELVO_HPP

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "kelvo/KelvoAreas.hpp"
#include "kelvo/KelvoCall.hpp"
#include "kelvo/KelvoCallbacks.hpp"
#include "kelvo/KelvoEnumerations.hpp"
#include "kelvo/KelvoLists.hpp"

namespace kelvo {

// A connection by its handle, which somebody else ends.
class CardRef : public detail::Handled<std::int32_t> {
 public:
  using Handled::Handled;

  bool IsConnected() const { return Fetch<vlIsConnected>(handle_); }
  std::chrono::milliseconds GetTimeout() const {
    return Fetch<vlGetTimeout, std::chrono::milliseconds>(handle_);
  }
  void SetTimeout(UnsignedMilliseconds timeout) const { Call<vlSetTimeout>(handle_, timeout); }
  void EnableCommandLogging(const Text& path, std::int32_t max_value_length = -1) const {
    Call<vlEnableCommandLogging>(handle_, path, max_value_length);
  }
  void DisableCommandLogging() const { Call<vlDisableCommandLogging>(handle_); }
  void EnableRecording(const Text& path) const { Call<vlEnableRecording>(handle_, path); }
  void DisableRecording() const { Call<vlDisableRecording>(handle_); }
  // The answer has so much room; the card is asked once, as it carries out the call then.
  std::string CallJson(const Text& method, const Text& arguments, std::uint32_t size = 1 << 20) const {
    std::string buffer(size, '\0');
    std::uint32_t length = 0;
    Call<vlCallJson>(handle_, method, arguments, buffer.data(), size, &length);
    buffer.resize(length);
    return buffer;
  }

  AdapterBoardArea AdapterBoard() const { return AdapterBoardArea(handle_); }
  ConfigurationUpdateArea Configuration() const { return ConfigurationUpdateArea(handle_); }
  EventArea Event() const { return EventArea(handle_); }
  FileArea File() const { return FileArea(handle_); }
  FontArea Font() const { return FontArea(handle_); }
  GpioArea Gpio() const { return GpioArea(handle_); }
  HeadCorrectionArea HeadCorrection() const { return HeadCorrectionArea(handle_); }
  InternalArea Internal() const { return InternalArea(handle_); }
  LaserArea Laser() const { return LaserArea(handle_); }
  ListArea List() const { return ListArea(handle_); }
  MotfArea Motf() const { return MotfArea(handle_); }
  MotfQuadratureDecoderArea MotfQuadratureDecoder() const { return MotfQuadratureDecoderArea(handle_); }
  PowerCorrectionArea PowerCorrection() const { return PowerCorrectionArea(handle_); }
  ProcessArea Process() const { return ProcessArea(handle_); }
  ScannerArea Scanner() const { return ScannerArea(handle_); }
  ScannerCommunicationArea ScannerCommunication() const { return ScannerCommunicationArea(handle_); }
  SerialPortArea SerialPort() const { return SerialPortArea(handle_); }
  SfioArea Sfio() const { return SfioArea(handle_); }
  SpiArea Spi() const { return SpiArea(handle_); }
  SystemArea System() const { return SystemArea(handle_); }
  VariableArea Variable() const { return VariableArea(handle_); }
};

// A connection that ends with the object; inside a callback, where none can be ended (kelvo.h, 7), it stays.
class Card : public detail::Owner<CardRef, vlDisconnect> {
 public:
  explicit Card(const Text& host, std::int32_t port = KELVO_DEFAULT_PORT)
      : Owner(Call<vlConnect>(host, port)) {}
  explicit Card(const CardInfo& card) : Owner(Call<vlConnectByCardInfo>(card)) {}
  // Takes over a connection that a C function has made.
  static Card Adopt(std::int32_t handle) { return Card(handle); }

  // Ends it now, and says what fails.
  void Disconnect() {
    Call<vlDisconnect>(handle_);
    GiveUp();
  }

 private:
  explicit Card(std::int32_t handle) : Owner(handle) {}
};

inline List::List(const CardRef& card) : Owner(Call<vlListAllocate>(card)) {}
inline List::List(const CardRef& card, const Text& text)
    : Owner(Call<vlListAllocateFromString>(card, text)) {}
inline Font::Font(const CardRef& card, std::int32_t font_id) : Owner(Call<vlFontAllocate>(card, font_id)) {}

namespace detail {
// How many cards pings of these numbers can find: each is listed once.
inline std::size_t MostCards(std::int32_t first_serial, std::int32_t last_serial) {
  const std::int64_t range = std::int64_t{last_serial} - first_serial + 1;
  return static_cast<std::size_t>(std::clamp(range, std::int64_t{1}, std::int64_t{1} << 16));
}
}  // namespace detail

// What needs no connection, and belongs to no area.
inline std::vector<CardInfo> Discover() {
  std::vector<CardInfo> cards(4096);
  const auto capacity = static_cast<std::uint32_t>(cards.size());
  std::uint32_t count = 0;
  detail::Calls::Call<vlDiscover>(cards.data(), capacity, &count);
  cards.resize(count);
  return cards;
}
inline std::vector<CardInfo> DiscoverByPinging(std::int32_t first_serial, std::int32_t last_serial) {
  std::vector<CardInfo> cards(detail::MostCards(first_serial, last_serial));
  const auto capacity = static_cast<std::uint32_t>(cards.size());
  std::uint32_t count = 0;
  detail::Calls::Call<vlDiscoverByPinging>(first_serial, last_serial, cards.data(), capacity, &count);
  cards.resize(count);
  return cards;
}
inline std::vector<CardInfo> DiscoverByPingingCustomized(std::int32_t first_serial, std::int32_t last_serial,
                                                         std::int32_t sweeps, Milliseconds timeout,
                                                         std::int32_t max_parallel) {
  std::vector<CardInfo> cards(detail::MostCards(first_serial, last_serial));
  const auto capacity = static_cast<std::uint32_t>(cards.size());
  std::uint32_t count = 0;
  detail::Calls::Call<vlDiscoverByPingingCustomized>(first_serial, last_serial, cards.data(), capacity,
                                                     &count, sweeps, timeout, max_parallel);
  cards.resize(count);
  return cards;
}
inline std::string PredictIPAddressFromSerialNumber(const Text& serial_number, Installation installation,
                                                    bool ipv6) {
  std::array<char, 41> buffer{};
  detail::Calls::Call<vlPredictIPAddressFromSerialNumber>(serial_number, installation, ipv6, buffer.data(),
                                                          std::uint32_t{40});
  return buffer.data();
}
inline std::uint32_t OpticalParametersGetHashCode(const OpticalParameters& parameters) {
  return detail::Calls::Fetch<vlOpticalParametersGetHashCode>(parameters);
}
inline bool OpticalParametersEqualLayers(const OpticalParameters& parameters,
                                         const OpticalParameters& other) {
  return detail::Calls::Fetch<vlOpticalParametersEqualLayers>(parameters, other);
}
inline std::string OpticalParametersToJson(const OpticalParameters& parameters) {
  return detail::Calls::FetchText<vlOpticalParametersToJson>(parameters);
}
inline OpticalParameters OpticalParametersFromJson(const Text& json) {
  return detail::Calls::Fetch<vlOpticalParametersFromJson>(json);
}

}  // namespace kelvo

#endif
