// The virtual card's pins: what is on them, who changes it, and who waits for it.
#include <cmath>
#include <functional>
#include <list>
#include <thread>

#include "int/CardClient.h"
#include "peripherals/GpioAPI.h"
#include "support/FakeCard.h"
#include "support/Process.h"

namespace VELTRO::KELVO::Test {
namespace {

using UInt = std::uint32_t;

UInt Read(Client& client, int port) {
  return client.Call<UInt>("ReadGpioPort", port);
}

void Write(Client& client, int port, int action, UInt pins) {
  client.Call("WriteGpioPort", port, action, pins);
}

constexpr int WholePort = 0, SetPins = 1, ClearPins = 2, TogglePins = 3;

GpioConfig WithPolarity(std::vector<int> activeLow) {
  GpioConfig config;
  for (const int port : activeLow) {
    config.Ports[static_cast<std::size_t>(port)].PinPolarity = Polarity::ActiveLow;
  }
  return config;
}

TEST(VirtualCardPins, AreWrittenReadAndWired) {
  CardProcess card({"--speed", "max", "--input", "0=0xF0", "--input", "9=7", "--wire", "1.3=2.0", "--wire",
                    "1.3=2.5", "--wire", "0.4=4.0"});
  Client client(card);
  // Action, pins; what ports 1 and 2 then have.
  const std::tuple<int, UInt, UInt, UInt> writes[] = {{WholePort, 0x0C, 0x0C, 0x21},
                                                      {SetPins, 0x80000001, 0x8000000D, 0x21},
                                                      {ClearPins, 9, 0x80000004, 0},
                                                      {TogglePins, 0x18, 0x8000001C, 0x21},
                                                      {WholePort, 0, 0, 0}};
  for (const auto& [action, pins, one, two] : writes) {
    Write(client, 1, action, pins);
    EXPECT_EQ(std::pair(Read(client, 1), Read(client, 2)), std::pair(one, two)) << action;
  }
  EXPECT_EQ(std::pair(Read(client, 0), Read(client, 4)), std::pair(0xF0U, 0U)) << "an input drove a wire";
  EXPECT_EQ(client.Refusal("ReadGpioPort", 8), "There is no port 8.");
  EXPECT_EQ(client.Refusal("WriteGpioPort", -1, 0, 1U), "There is no port -1.");
  EXPECT_EQ(client.Refusal("WriteGpioPort", 0, 0, 1U), "Port 0 is an input.");
  EXPECT_EQ(client.Refusal("WriteGpioPort", 1, 4, 1U), "There is no action 4.");
  EXPECT_EQ(client.Refusal("WaitForGpioChange", 8, 1U, 1U, 1U), "There is no port 8.");
  // Lists do the same, also to ports that have inputs only.
  EXPECT_EQ(client.Run("PPT U32:3 U32:0 U32:5 PPT U32:3 U32:3 U32:4 BRC 2 U32:15 3 true true U32:1 PI 1 "
                       "BRC 2 U32:7 9 true true U32:7 PI 2 PI 3"),
            (Events{"progress 3", "done 7", "idle 7"}));
  for (const auto& [values, text] : {std::pair<Text, Text>{"U32:0 U32:0 U32:0", "Port 0 is an input."},
                                     {"U32:8 U32:0 U32:0", "There is no port 8."},
                                     {"U32:1 U32:4 U32:0", "There is no action 4."}}) {
    EXPECT_EQ(client.Run("PPT " + values).front(), "error List 7, command 0 (PPT): " + text);
  }
}

TEST(VirtualCardPins, AreActiveAtTheLevelOfTheirPolarity) {
  CardProcess card({"--speed", "max", "--wire", "1.3=2.0"});
  Client client(card);
  client.Call("SetGpioConfig", WithPolarity({0, 1, 3}));
  card.Say("input 0 0xFFFFFFF0");
  while (Read(client, 0) != 0xF) std::this_thread::yield();
  EXPECT_EQ(client.Run("BRC 2 U32:3 0 true true U32:3 PI 1 PI 2").front(), "progress 2");
  EXPECT_EQ(std::pair(Read(client, 1), Read(client, 2)), std::pair(0U, 1U)) << "what is not active is high";
  Write(client, 1, SetPins, 8);
  EXPECT_EQ(std::pair(Read(client, 1), Read(client, 2)), std::pair(8U, 0U));
  client.Call("SetGpioConfig", WithPolarity({2}));
  EXPECT_EQ(std::pair(Read(client, 1), Read(client, 2)), std::pair(8U, ~1U)) << "both ends invert at once";
  // A wire with other directions does nothing, and a group of settings takes effect at its end.
  GpioConfig turned;
  turned.Ports[1].Direction = IODirection::Input;
  client.Call("SetGpioConfig", turned);
  EXPECT_EQ(Read(client, 2), 0U) << "what was written drives the wire of an input";
  turned.Ports[2].Direction = IODirection::Output;
  client.Call("BeginUpdate");
  client.Call("SetGpioConfig", turned);
  EXPECT_EQ(client.Refusal("WriteGpioPort", 2, 0, 1U), "Port 2 is an input.");
  client.Call("EndUpdate");
  Write(client, 2, WholePort, 4);
  EXPECT_EQ(std::pair(Read(client, 1), Read(client, 2)), std::pair(0U, 4U));
  client.Call("ResetToDefaults");
  EXPECT_EQ(Read(client, 2), 1U) << "it is an input again, with a wire";
}

TEST(VirtualCardPins, GoBackAfterAPulse) {
  const CardProcess card;
  Client client(card);
  constexpr double Long = 4e6;  // microseconds, so that even a busy machine looks at the pins in the pulse
  const auto pulse = [&](UInt pins, double us) { client.Call("PulseGpioPins", 1, pins, us); };
  const auto lasts = [&](UInt while_, UInt then) {
    UInt now = while_;
    while (now == while_) now = client.Call<UInt>("WaitForGpioChange", 1, ~0U, while_, 5000U);
    EXPECT_EQ(now, then);
  };
  Write(client, 1, WholePort, 1);
  const Stopwatch watch;
  pulse(3, Long);
  EXPECT_EQ(Read(client, 1), 2U);
  lasts(2, 1);
  const double milliseconds = watch.Milliseconds();
  EXPECT_TRUE(milliseconds > 3999 && milliseconds < 30000) << milliseconds;
  pulse(3, Long);
  Write(client, 1, ClearPins, 2);
  EXPECT_EQ(Read(client, 1), 0U);
  lasts(0, 1);
  pulse(1, 60e6), pulse(3, Long);  // a pin that is in a pulse stays as it is
  EXPECT_EQ(Read(client, 1), 2U);
  lasts(2, 1);
  for (const double duration : {0.0, -1.0, 60e6 + 1, std::nan(""), HUGE_VAL}) {
    EXPECT_EQ(client.Refusal("PulseGpioPins", 1, 1U, duration),
              "The duration of a pulse must be more than 0 and at most 60 s.");
  }
  EXPECT_EQ(client.Refusal("PulseGpioPins", 0, 1U, 1.0), "Port 0 is an input.");
  for (std::size_t i = 0; i < 1023; ++i) pulse(2, 60e6);
  EXPECT_EQ(client.Refusal("PulseGpioPins", 1, 4U, 60e6), "Too much is waited for.");
  EXPECT_EQ(Read(client, 1) & 4, 0U) << "a pulse that was refused began";
}

TEST(VirtualCardPins, EndAWaitOfAListAtOnce) {
  const CardProcess card({"--wire", "1.3=2.0"});
  Client client(card);
  double best = 1000;
  for (int tries = 0; tries < 200 && best >= 5; ++tries) {
    Write(client, 1, ClearPins, 8);
    client.Run("PI 1 WI U32:1 2 true true U32:1 -1 PI 2 SUS", "progress 1");
    usleep(2000);
    const Stopwatch watch;
    Write(client, 1, SetPins, 8);
    client.EventsUpTo("progress 2");
    best = std::min(best, watch.Milliseconds());
    client.Lists.AbortExecution();
    client.EventsUpTo("idle");
  }
  EXPECT_LT(best, 5);
  // And what a list does is there at its time, not when it is computed.
  Write(client, 1, WholePort, 0);
  const Stopwatch watch;
  client.Run("PI 1 SL 300000.0 PPT U32:1 U32:0 U32:8 SL 300000.0", "progress 1");
  EXPECT_EQ(client.Call<UInt>("WaitForGpioChange", 2, 1U, 0U, 5000U), 1U);
  EXPECT_GE(watch.Milliseconds(), 299);
}

// A request for a wait on pin 0 of port 0.
Text WaitRequest(UInt id, UInt known, UInt milliseconds) {
  return FrameOf(0x00, id, "WaitForGpioChange", std::make_tuple(0, 1U, known, milliseconds));
}

TEST(VirtualCardPins, AreWaitedForByManyAtOnceWhileOtherCallsGoOn) {
  constexpr UInt Waits = 1024;
  CardProcess card({"--speed", "max"});
  Client client(card);
  const Text refusal =
      FrameOf(0x81, 9, std::make_tuple(Text("Too much is waited for."), "", msgpack::type::nil_t()));
  std::list<Peer> peers;
  std::list<std::size_t> sizes;  // of all that they get
  for (int i = 0; i < 10; ++i) {
    Peer& peer = peers.emplace_back(Connect(card));
    const UInt count = i == 0 ? Waits : 100;
    for (UInt id = 0; id < count; ++id) peer.Send(WaitRequest(id + 1000, 0, 3600000));
    peer.Send(WaitRequest(9, 1, 3600000));  // it has changed, or there is no room for one more
    const std::size_t first = i == 0 ? refusal.size() : Response(9, 0U).size();
    EXPECT_TRUE(peer.Fill(first));
    sizes.push_back(first + count * Response(1000, 1U).size());
  }
  EXPECT_EQ(client.Run("PI 1").back(), "idle 7") << "runs and other calls go on";
  peers.pop_back();  // what it waits for goes with it
  const Stopwatch watch;
  EXPECT_EQ(client.Call<UInt>("WaitForGpioChange", 0, 1U, 0U, 100U), 0U);
  EXPECT_GE(watch.Milliseconds(), 99);
  const Stopwatch answering;
  card.Say("input 0 1");
  for (Peer& peer : peers) {
    EXPECT_TRUE(peer.Fill(sizes.front()));
    sizes.pop_front();
  }
  EXPECT_LT(answering.Milliseconds(), 20000);
  // Some still wait when the card ends.
  for (UInt id = 0; id < 100; ++id) peers.front().Send(WaitRequest(id, 1, 3600000));
  EXPECT_EQ(Read(client, 0), 1U);
  EXPECT_EQ(card.End(SIGTERM), 0);
}

TEST(VirtualCardPins, AreKeptAndCheckedWithTheirConfiguration) {
  const TemporaryDirectory state;
  GpioConfig config = WithPolarity({5});
  config.Ports[3].Direction = IODirection::Input;
  config.Ports[3].PortName = Text(31, 'n'), config.Ports[3].PinNames = {"door", "", ""};
  config.Ports[4].PinNames = std::vector<Text>(32);
  config.Ports[7].DebounceTime = 0.5, config.Ports[7].Voltage = IOVoltage::Volt3_3;
  {
    CardProcess card({"--state", state.Path});
    Client client(card);
    client.Call("SetGpioConfig", config);
    client.Call("StoreGpioConfig");
    const std::pair<std::function<void(GpioConfig&)>, Text> faults[] = {
        {[](auto& c) { c.Ports.pop_back(); }, "The card has 8 ports of pins."},
        {[](auto& c) { c.Ports[2].DebounceTime = -1; },
         "Port 2: The debounce time must be finite and not negative."},
        {[](auto& c) { c.Ports[2].DebounceTime = HUGE_VAL; },
         "Port 2: The debounce time must be finite and not negative."},
        {[](auto& c) { c.Ports[4].PinNames.emplace_back(); }, "Port 4: It has 32 pins."},
        {[](auto& c) { c.Ports[4].PinNames[9] = "door"; }, "Two pins are called 'door'."},
        {[](auto& c) { c.Ports[3].PortName += "X"; },
         "The name '" + Text(31, 'n') + "...' has more than 31 bytes."},
        {[](auto& c) { c.Ports[3].PinNames[0] = Text(32, 'p'); },
         "The name '" + Text(31, 'p') + "...' has more than 31 bytes."},
    };
    for (const auto& [spoil, text] : faults) {
      GpioConfig spoiled = config;
      spoil(spoiled);
      EXPECT_EQ(client.Refusal("SetGpioConfig", spoiled), text);
    }
  }
  const CardProcess card({"--state", state.Path});
  Client client(card);
  EXPECT_EQ(client.Call<GpioConfig>("GetGpioConfig").ToString(), config.ToString());
  EXPECT_EQ(client.Refusal("WriteGpioPort", 3, 0, 1U), "Port 3 is an input.");
  EXPECT_EQ(Read(client, 5), 0U);
}

TEST(VirtualCardPins, RefusesWiresThatAreNone) {
  for (const Text wire : {"1.3", "1.3=8.0", "1.32=2.0", "-1.3=2.0", "1.3=2.0x", "1.3=1.3", "1=2", ""}) {
    CardProcess card({"--wire=" + wire});
    EXPECT_NE(card.GetFirstLine().find("--wire"), Text::npos) << wire << ": " << card.GetFirstLine();
    EXPECT_EQ(card.End(0), 2) << wire;
  }
  CardProcess card({"--wire", "1.3=2.0", "--wire", "3.1=2.0"});
  EXPECT_EQ(card.GetFirstLine(), "--wire: two wires lead to the input of '3.1=2.0'\n");
  EXPECT_EQ(card.End(0), 2);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
