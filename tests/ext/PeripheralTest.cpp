// Peripheral input and output: what the card is asked, and what becomes of its answers.
#include <cstring>
#include <thread>

#include "ext/AskedCard.h"

namespace VELTRO::KELVO::Test {
namespace {

using namespace std::string_literals;

TEST(Peripherals, PinsAreAskedFor) {
  AskedCard card;
  const std::int32_t c = card.Handle;
  std::uint32_t pins = 0;
  bool active = false;
  const auto* const wait = "WaitForGpioChange[2,12,4,0]";
  const AskingCall calls[] = {
      {ASK(vlGpioReadPort(c, vlIOPort_PortC, &pins), pins), "ReadGpioPort[2]", "0 4294967295",
       "\xCE\xFF\xFF\xFF\xFF"},
      {ASK(vlGpioReadPort(c, 8, &pins)), "", "IOPort::_from_integral: invalid argument"},
      {ASK(vlGpioWritePort(c, vlIOPort_PortB, vlPinAction_Toggle, 0x80000001)),
       "WriteGpioPort[1,3,2147483649]"},
      {ASK(vlGpioWritePort(c, 1, 4, 1)), "", "PinAction::_from_integral: invalid argument"},
      {ASK(vlGpioReadPin(c, 3, 5, &active), active), "ReadGpioPort[3]", "0 1", "\x20"},
      {ASK(vlGpioReadPin(c, 3, 5, &active), active), "ReadGpioPort[3]", "0 0", "\xCC\xDF"},
      {ASK(vlGpioReadPin(c, 3, 32, &active)), "", "Pin must be between 0 and 31."},
      {ASK(vlGpioWritePin(c, 3, 31, true)), "WriteGpioPort[3,1,2147483648]"},
      {ASK(vlGpioWritePin(c, 3, 0, false)), "WriteGpioPort[3,2,1]"},
      {ASK(vlGpioWritePin(c, 3, -1, true)), "", "Pin must be between 0 and 31."},
      {ASK(vlGpioPulsePins(c, 5, 6, 250.5)), "PulseGpioPins[5,6,250.5]"},
      {ASK(vlGpioWaitForChange(c, 2, 12, 4, 0, &pins), pins), wait, "0 8", "\x08"},
      {ASK(vlGpioWaitForChange(c, 2, 12, 4, 0, &pins), pins), wait, "1 7", "\x07"},
      {ASK(vlGpioWaitForChange(c, 2, 12, 4, 0, &pins), pins), wait, "std::bad_cast 7", "\xC3"},
  };
  ExpectAsked(card, calls);
}

TEST(Peripherals, VariablesAreAskedForByTheirNames) {
  AskedCard card;
  const std::int32_t c = card.Handle;
  bool flag = false;
  std::int32_t i = 0;
  std::uint32_t n = 0;
  char text[5] = "";
  const vlMarkCounter given{3, -2, -10, 10};
  vlMarkCounter counter{};
  vlCardVariable all[2] = {};
  const auto *const list = "GetCardVariables[]", *const ask = "GetMarkCounter[\"a\"]";
  const std::string one = "\x94\7\2\xFB\xA1q", other = "\x94\x08\0\1\xA0"s;
  const AskingCall calls[] = {
      {ASK(vlVariableSetBoolean(c, "a", true)), "SetBooleanVariable[\"a\",true]"},
      {ASK(vlVariableGetBoolean(c, "a", &flag), flag), "GetBooleanVariable[\"a\"]", "0 1", "\xC3"},
      {ASK(vlVariableSetInteger(c, "a", -7)), "SetIntegerVariable[\"a\",-7]"},
      {ASK(vlVariableGetInteger(c, "a", &i), i), "GetIntegerVariable[\"a\"]", "0 -7", "\xF9"},
      {ASK(vlVariableSetMarkCounter(c, "a", &given)), "SetMarkCounter[\"a\",[3,-2,-10,10]]"},
      {ASK(vlVariableGetMarkCounter(c, "a", &counter), counter.Start, counter.Step, counter.Minimum,
           counter.Maximum),
       ask, "0 1 2 3 4", "\x94\1\2\3\4"},
      {ASK(vlVariableGetMarkCounter(c, "a", &counter), counter.Start), ask, "std::bad_cast 1", "\x93\5\2\3"},
      {ASK(vlVariableResetMarkCounter(c, "a")), "ResetMarkCounter[\"a\"]"},
      {ASK(vlVariableSetMarkTimeFormat(c, "%H")), "SetMarkTimeFormat[\"%H\"]"},
      {ASK(vlVariableGetMarkTimeFormat(c, text, 5, &n), n, text), "GetMarkTimeFormat[]", "0 2 %H", "\xA2%H"},
      {ASK(vlVariableGetMarkTimeFormat(c, text, 3, &n)), "GetMarkTimeFormat[]", "Buffer is too small.",
       "\xA2%H"},
      {ASK(vlVariableGetAll(c, all, 2, &n), n, all[0].Id, all[0].Kind, all[0].Value, all[0].VariableName,
           all[1].Id),
       list, "0 2 7 2 -5 q 8", "\x92" + one + other},
      {ASK(vlVariableGetAll(c, all, 1, &n), n, all[0].Id), list, "Buffer is too small. 2 7",
       "\x92" + other + one},
      {ASK(vlVariableGetAll(c, nullptr, 0, &n), n), list, "0 0", "\x90"},
      {ASK(vlVariableGetAll(c, all, 1, &n), all[0].Id), list, "Error converting CardVariable to C. 7",
       "\x91\x94\x09\0\1\xDA\1\0"s + std::string(256, 'x')},
      {ASK(vlVariableGetAll(c, all, 1, &n), all[0].Id), list,
       "VariableKind::_from_integral: invalid argument 7", "\x91\x94\x09\3\1\xA0"},
  };
  ExpectAsked(card, calls);
}

TEST(Peripherals, BytesAndRegistersAreAskedFor) {
  AskedCard card;
  const std::int32_t c = card.Handle;
  std::uint32_t n = 0;
  std::uint8_t two[2] = {1, 2};
  const auto *const read = "ReadSerialPort[1,2,0]", *const transfer = "TransferSpi[1,\"BIN(size:2)\"]";
  const AskingCall calls[] = {
      {ASK(vlSerialPortWrite(c, 1, two, 2)), "WriteSerialPort[1,\"BIN(size:2)\"]"},
      {ASK(vlSerialPortWrite(c, 1, nullptr, 0)), "WriteSerialPort[1,\"BIN(size:0)\"]"},
      {ASK(vlSerialPortRead(c, 1, two, 2, &n, 0), n, two[0]), read, "0 1 a", "\xC4\1\x61"},
      {ASK(vlSerialPortRead(c, 1, two, 2, &n, 0), n), read, "1 0", "\xC4\0"s},
      {ASK(vlSerialPortRead(c, 1, two, 2, &n, 0), n, two[0]), read,
       "The card sent more than it was asked for. 0 a", "\xC4\3\7\7\7"},
      {ASK(vlSerialPortRead(c, 1, two, 0, &n, 0)), "", "The buffer has no room."},
      {ASK(vlSerialPortFlush(c, 1)), "FlushSerialPort[1]"},
      {ASK(vlSpiTransfer(c, 1, two, 2, two), two[0], two[1]), transfer, "0 b c", "\xC4\2\x62\x63"},
      {ASK(vlSpiTransfer(c, 1, two, 2, two), two[0]), transfer, "The card sent another number of bytes. b",
       "\xC4\1\x09"},
      {ASK(vlSfioReadRegister(c, vlSfRegister_Input, &n), n), "ReadSfRegister[2]", "0 9", "\x09"},
      {ASK(vlSfioReadRegister(c, 4, &n)), "", "SfRegister::_from_integral: invalid argument"},
      {ASK(vlSfioWriteRegister(c, vlSfRegister_Output, 5)), "WriteSfRegister[3,5]"},
  };
  ExpectAsked(card, calls);
  card.Answer = "\xC4\2\6\7";
  ASSERT_OK(vlSpiTransfer(c, 0, two, 2, two));
  EXPECT_EQ(card.Arguments, "\x92\0\xC4\2\x62\x63"s) << "the bytes that it had";
}

TEST(Peripherals, DiagnosticsAreAskedFor) {
  AskedCard card;
  const std::int32_t c = card.Handle;
  std::uint32_t n = 0;
  char text[5] = "";
  vlMeasurement m{};
  vlSelfTestResult r{};
  vlAdapterBoardIdentity board{};
  const AskingCall calls[] = {
      {ASK(vlInternalGetMeasurements(c, &m, 1, &n), n, m.Quantity, m.Value, m.Unit), "GetMeasurements[]",
       "0 1 T 7 C", "\x91\x93\xA1T\7\xA1\x43"},
      {ASK(vlInternalGetMeasurements(c, &m, 1, &n), n), "GetMeasurements[]", "Buffer is too small. 2",
       "\x92\x93\xA1T\7\xA1\x43\x93\xA1T\7\xA1\x43"},
      {ASK(vlInternalGetLog(c, text, 5, &n), n, text), "GetCardLog[]", "0 2 ab", "\xA2\x61\x62"},
      {ASK(vlInternalRunSelfTest(c, &r, 1, &n), n, r.Subject, r.Passed, r.Finding), "RunSelfTest[]",
       "0 1 S 1 F", "\x91\x93\xA1S\xC3\xA1\x46"},
      {ASK(vlInternalRunSelfTest(c, &r, 1, &n)), "RunSelfTest[]", "std::bad_cast", "\x91\x93\xA1S\1\xA1\x46"},
      {ASK(vlAdapterBoardGetIdentity(c, &board), board.Type, board.SerialNumber, board.Revision),
       "GetAdapterBoardIdentity[]", "0 x y z", "\x93\xA1x\xA1y\xA1z"},
  };
  ExpectAsked(card, calls);
}

// By the plain structs: what each field becomes on the wire.
TEST(Peripherals, SettingsTravelInTheirPlaces) {
  AskedCard card;
  const std::int32_t c = card.Handle;
  vlGpioConfig gpio{};
  gpio.ConfigVersion = 1;
  gpio.Ports.Count = 1;
  vlGpioPort& port = gpio.Ports.Items[0];
  port.Direction = vlIODirection_Output, port.Voltage = vlIOVoltage_Volt12, port.DebounceTime = 2.5;
  std::strcpy(port.PortName, "p");
  port.PinNames.Count = 2;
  std::strcpy(port.PinNames.Items[1], "door");
  vlGpioConfig endless = gpio, crowded = gpio, none = gpio;
  std::memset(endless.Ports.Items[0].PinNames.Items[0], 'x', KELVO_GPIO_NAME_CAPACITY);
  crowded.Ports.Items[0].PinNames.Count = 33;
  none.Ports.Items[0].Voltage = 4;
  const vlAdapterBoardConfig board{4, vlIOVoltage_Volt5, vlIOVoltage_Volt12, vlIOVoltage_Volt24, true};
  const auto* const get = "GetGpioConfig[]";
  const auto ports = [](int count) {
    return "\x92\1"s + static_cast<char>(0x90 + count) +
           std::string(static_cast<std::size_t>(6 * count), '\0');
  };
  std::int32_t where[2] = {};
  vlGpioConfig got{};
  const AskingCall calls[] = {
      {ASK(vlGpioSetConfig(c, &gpio)), "SetGpioConfig[[1,[[1,2,0,2.5,\"p\",[\"\",\"door\"]]]]]"},
      {ASK(vlGpioSetConfig(c, &endless)), "", "Error converting GpioConfig from C."},
      {ASK(vlGpioSetConfig(c, &crowded)), "", "Error converting GpioConfig from C."},
      {ASK(vlGpioSetConfig(c, &none)), "", "IOVoltage::_from_integral: invalid argument"},
      {ASK(vlGpioGetConfig(c, &got), got.Ports.Count, got.Ports.Items[0].PinPolarity,
           got.Ports.Items[0].PinNames.Items[1]),
       get, "0 1 1 b", "\x92\1\x91\x96\0\0\1\0\xA1p\x92\xA0\xA1\x62"s},
      {ASK(vlGpioGetConfig(c, &got), got.Ports.Count), get, "std::bad_cast 1", ports(1)},
      {ASK(vlAdapterBoardSetConfig(c, &board)), "SetAdapterBoardConfig[[4,1,2,3,true]]"},
      {ASK(vlGpioLoadConfig(c)), "LoadGpioConfig[]"},
      {ASK(vlGpioStoreConfig(c)), "StoreGpioConfig[]"},
      {ASK(vlSerialPortLoadConfig(c)), "LoadSerialPortConfig[]"},
      {ASK(vlSerialPortStoreConfig(c)), "StoreSerialPortConfig[]"},
      {ASK(vlSpiLoadConfig(c)), "LoadSpiConfig[]"},
      {ASK(vlSpiStoreConfig(c)), "StoreSpiConfig[]"},
      {ASK(vlAdapterBoardLoadConfig(c)), "LoadAdapterBoardConfig[]"},
      {ASK(vlAdapterBoardStoreConfig(c)), "StoreAdapterBoardConfig[]"},
      {ASK(vlGpioConfigFindPin(&gpio, "door", where, where + 1), where[0], where[1]), "", "0 0 1"},
      {ASK(vlGpioConfigFindPin(&gpio, "", where, where + 1)), "", "There is no pin ''."},
      {ASK(vlGpioConfigFindPin(&gpio, "Door", where, where + 1)), "", "There is no pin 'Door'."},
      {ASK(vlGpioConfigFindPin(&crowded, "door", where, where + 1)), "",
       "Error converting GpioConfig from C."},
  };
  ExpectAsked(card, calls);
}

// The answer to the question whether there is a method: a result, or an error with this text.
std::string Support(const std::string& answer, const char* method) {
  FakeCard card(FakeCard::Answering([&](const Request& request) {
    return answer.size() == 1 ? Frame(0x01, Packed(request.Id) + answer) : ErrorResponse(request.Id, answer);
  }));
  const Connection connection(card.Port());
  std::int32_t support = -1;
  return Told(vlInternalGetMethodSupport(connection, method, &support), support);
}

TEST(Peripherals, TellsWhetherTheCardHasAMethod) {
  const struct {
    const char *answer, *method, *told;
  } rows[] = {
      {"\xC3", "ReadGpioPort", "0 1"},
      {"\xC2", "ReadGpioPort", "0 0"},
      {"Unknown method 'IsMethodSupported'.", "ReadGpioPort", "0 0"},
      {"call of UNKNOWN METHOD", "GetCardLog", "0 0"},
      {"Unknown method 'IsMethodSupported'.", "SetList", "0 2"},
      {"Unknown method 'IsMethodSupported'.", "Dance", "0 2"},
      {"Out of memory", "ReadGpioPort", "0 2"},
  };
  for (const auto& [answer, method, told] : rows) EXPECT_EQ(Support(answer, method), told) << answer;
}

// A question is never longer than half of the connection's time-out, so its answer is in time.
TEST(Peripherals, LongWaitsAskAgain) {
  constexpr std::uint32_t Timeout = 4000;
  std::vector<std::uint32_t> asked;
  FakeCard card(FakeCard::Answering([&](const Request& request) {
    const auto arguments = request.Arguments->as<std::vector<std::uint32_t>>();
    asked.push_back(arguments[3]);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // soon, and in no flood
    return Frame(0x01, Packed(request.Id) + (asked.size() < 3 ? "\0"s : "\1"s));
  }));
  const Connection connection(card.Port());
  std::uint32_t pins = 0;
  ASSERT_OK(vlSetTimeout(connection, Timeout));
  EXPECT_OK(vlGpioWaitForChange(connection, 0, 1, 0, 60000, &pins));
  EXPECT_EQ(pins, 1U);
  EXPECT_EQ(asked, (std::vector<std::uint32_t>{Timeout / 2, Timeout / 2, Timeout / 2}));
  asked = {9, 9, 9};
  EXPECT_EQ(vlGpioWaitForChange(connection, 0, 1, 1, -1, &pins), 1) << "the connection's time-out";
  EXPECT_GE(asked.size(), 5U);
  EXPECT_LE(*std::ranges::max_element(asked), Timeout / 2);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
