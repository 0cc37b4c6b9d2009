#include <algorithm>
#include <span>
#include <string>
#include <string_view>

#include "execution/CommandTable.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::CommandCode;
using ClientLib::CommandCode2;

namespace {

using SerialBytes = SerialPorts::Bytes;

// Acts on the world outside when the run is there in real time, too.
template <class F>
void ActOutside(Run& run, F act) {
  run.Time.CatchUp();
  if (!run.Time.IsAborted()) act();
}

// The array of a command, and behind it the end of a line if it is one.
SerialBytes BytesOf(Run& run, const Array<std::uint8_t>& array, bool isLine) {
  SerialBytes bytes(array.GetCount());
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = array[i];
  if (isLine) {
    const std::string_view end = run.Around.Serial.GetLineEnd(0);
    bytes.insert(bytes.end(), end.begin(), end.end());
  }
  return bytes;
}

template <bool isLine>
void Transmit(Run& run, const Array<std::uint8_t>& array) {
  const SerialBytes bytes = BytesOf(run, array, isLine);
  ActOutside(run, [&] { run.Around.Serial.Write(0, bytes); });
}

// As a part of a text: what is no printable character in hexadecimal, and not too much of it.
std::string Quoted(std::span<const std::uint8_t> bytes) {
  constexpr std::size_t MostQuotedBytes = 100;
  constexpr const char* HexDigits = "0123456789ABCDEF";
  std::string text = "'";
  for (const std::uint8_t byte : bytes.first(std::min(bytes.size(), MostQuotedBytes))) {
    if (byte >= 0x20 && byte < 0x7F) {
      text += static_cast<char>(byte);
    } else {
      text.append("\\x").append({HexDigits[byte >> 4], HexDigits[byte & 15]});
    }
  }
  return text + (bytes.size() > MostQuotedBytes ? "...'" : "'");
}

// What had been received before is no response.
template <bool isLine>
void Verify(Run& run, const Array<std::uint8_t>& request, const Array<std::uint8_t>& response) {
  SerialPorts& serial = run.Around.Serial;
  const SerialBytes sent = BytesOf(run, request, isLine), wanted = BytesOf(run, response, isLine);
  run.Galvos.EndMarks();
  ActOutside(run, [&] {
    serial.Flush(0);
    serial.Write(0, sent);
  });
  SerialBytes answer;
  const auto isThere = [&] {
    const SerialBytes more = serial.Read(0, wanted.size() - answer.size());
    answer.insert(answer.end(), more.begin(), more.end());
    return answer.size() == wanted.size();
  };
  run.Time.WaitForOutside(serial.GetResponseTimeout(0) * 1e3, isThere);
  if (run.Time.IsAborted()) return;
  if (answer.size() < wanted.size()) throw std::runtime_error("The serial port did not answer in time.");
  if (answer != wanted) {
    throw std::runtime_error("The serial port answered " + Quoted(answer) + " instead of " + Quoted(wanted) +
                             ".");
  }
}

}  // namespace

std::span<const CommandRow> PeripheralCommands() {
  using Bytes = Array<std::uint8_t>;
  static constexpr CommandRow Rows[] = {
      {CommandCode::PERIPHERAL_PORT,
       [](Run& run, std::uint32_t port, std::uint32_t action, std::uint32_t value) {
         ActOutside(run, [&] {
           run.Around.Ports.Write(static_cast<std::int32_t>(port), static_cast<std::int32_t>(action), value);
         });
       }},
      // The virtual modules are connected with nothing.
      {CommandCode::PERIPHERAL_SPI,
       [](Run& run, std::int32_t module, std::uint32_t) { run.Around.CheckSpiModule(module); }},
      {CommandCode2::SERIAL_PORT_TRANSMIT, [](Run& run, Bytes bytes) { Transmit<false>(run, bytes); }},
      {CommandCode2::SERIAL_PORT_TRANSMIT_LINE, [](Run& run, Bytes bytes) { Transmit<true>(run, bytes); }},
      {CommandCode2::SERIAL_PORT_VERIFY_RESPONSE,
       [](Run& run, Bytes request, Bytes response) { Verify<false>(run, request, response); }},
      {CommandCode2::SERIAL_PORT_VERIFY_RESPONSE_LINE,
       [](Run& run, Bytes request, Bytes response) { Verify<true>(run, request, response); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Simulation
