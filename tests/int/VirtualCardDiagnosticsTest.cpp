// What the virtual card tells of itself, and what is next to its pins: SPI, special functions, the adapter board.
#include <sys/resource.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <map>

#include "base/RecentLines.h"
#include "config/RecordText.h"
#include "int/CardClient.h"
#include "peripherals/AdapterBoardConfig.h"
#include "peripherals/Diagnostics.h"
#include "peripherals/SpiConfig.h"
#include "support/Process.h"

namespace VELTRO::KELVO::Test {
namespace {

using SpiBytes = std::vector<std::uint8_t>;
using UInt = std::uint32_t;

std::map<Text, double> Measured(Client& client) {
  std::map<Text, double> values;
  for (const Measurement& m : client.Call<std::vector<Measurement>>("GetMeasurements")) {
    values[m.Quantity + (m.Unit.empty() ? "" : " in " + m.Unit)] = m.Value;
  }
  return values;
}

TEST(VirtualCardDiagnostics, CountWhatTheCardDoes) {
  const CardProcess card({"--speed", "max"});
  Client client(card);
  client.Run("NO");
  auto before = Measured(client);
  {
    const Client other(card);  // which makes calls of its own
    EXPECT_EQ(Measured(client)["Connections"] - before["Connections"], 1);
  }
  while (Measured(client)["Connections"] != 1) usleep(1000);
  before = Measured(client);
  client.Run("PI 1 NO LOS 3 1 NO LOE 1");  // 4 times the loop's end and start, and a done and an idle
  client.Run("JS 0.0");
  client.Refusal("Fly");
  auto after = Measured(client);
  // Each run begins with the process variables, which are commands, too.
  const double starting = (after["List commands"] - before["List commands"] - 9 - 1) / 2;
  EXPECT_TRUE(starting > 30 && starting < 50 && starting == std::floor(starting)) << starting;
  const std::pair<Text, double> differences[] = {
      {"Runs", 2},        {"Aborted runs", 0},  {"Failed calls", 1},         {"Calls", 6},
      {"Connections", 0}, {"Notifications", 5}, {"Card temperature in C", 0}};
  for (const auto& [quantity, difference] : differences) {
    EXPECT_EQ(after[quantity] - before[quantity], difference) << quantity;
  }
  EXPECT_EQ(after["Card temperature in C"], 42);
  EXPECT_GT(after["Uptime in s"], before["Uptime in s"]);
  EXPECT_LT(after["Uptime in s"], 200);
  EXPECT_EQ(after.size(), 9U);
  client.Run("PI 1 SUS", "progress");
  client.Lists.AbortExecution();
  EXPECT_EQ(Measured(client)["Aborted runs"], 1);
}

TEST(VirtualCardDiagnostics, KeepTheLatestLinesOfTheLog) {
  CardProcess card;
  Client client(card);
  EXPECT_EQ(client.Call<Text>("GetCardLog"), "");
  card.Say("fly\x01");
  const Text line = card.ReadLine();
  EXPECT_NE(line.find("not 'fly?'."), Text::npos);
  EXPECT_EQ(client.Call<Text>("GetCardLog"), line);
  VirtualCard::RecentLines lines;
  VirtualCard::Line next;
  Text all;
  for (int i = 0; i < 20000; ++i) {
    const Text text = "line " + std::to_string(i);
    next.Assign({text});
    lines.Add(next);
    all += text + "\n";
    if (i % 7000 != 0 && i != 19999) continue;
    const Text kept = lines.Get();
    EXPECT_EQ(kept, all.substr(all.size() - kept.size()));
    EXPECT_TRUE(kept.starts_with("line "));
    EXPECT_TRUE(kept.size() == all.size() || kept.size() > 65500) << kept.size();
    EXPECT_LE(kept.size(), 65536U);
  }
}

std::vector<Text> SelfTest(Client& client) {
  std::vector<Text> texts;
  for (const SelfTestResult& result : client.Call<std::vector<SelfTestResult>>("RunSelfTest")) {
    texts.push_back(result.Subject + (result.Passed ? " is good: " : " is bad: ") + result.Finding);
  }
  return texts;
}

TEST(VirtualCardDiagnostics, TestTheCard) {
  const TemporaryDirectory state;
  std::ofstream(state.Path + "/SpiConfig") << "damaged";
  {
    const CardProcess card;
    Client client(card);
    EXPECT_EQ(SelfTest(client),
              (std::vector<Text>{"Configuration is good: All that is stored could be read.",
                                 "Memory is good: 100 % is free.", "State directory is good: There is none.",
                                 "Serial port 0 is good: It receives what it sends."}));
  }
  const CardProcess card({"--state", state.Path, "--memory", "0"});
  Client client(card);
  EXPECT_EQ(SelfTest(client)[2], "State directory is good: It can be written to.");
  const rlimit limit{4, 4};
  EXPECT_EQ(prlimit(card.GetId(), RLIMIT_FSIZE, &limit, nullptr), 0);
  auto results = SelfTest(client);
  results.pop_back();
  EXPECT_EQ(results, (std::vector<Text>{"Configuration is bad: Not all that is stored could be read.",
                                        "Memory is bad: 0 % is free.",
                                        "State directory is bad: Cannot write 'SelfTest': File too large."}));
  EXPECT_FALSE(std::filesystem::exists(state.Path + "/SelfTest"));
  for (const auto& [method, isThere] :
       {std::pair<Text, bool>{"RunSelfTest", true}, {"Fly", false}, {"", false}}) {
    EXPECT_EQ(client.Call<bool>("IsMethodSupported", method), isThere) << method;
  }
}

TEST(VirtualCardModules, GiveBackWhatTheyAreGiven) {
  CardProcess card({"--speed", "max", "--serial", "77"});
  Client client(card);
  const SpiBytes bytes{1, 0, 255};
  EXPECT_EQ(client.Call<SpiBytes>("TransferSpi", 1, bytes), bytes);
  EXPECT_EQ(client.Refusal("TransferSpi", 1, SpiBytes(65536)), "no failure");
  EXPECT_EQ(client.Refusal("TransferSpi", 1, SpiBytes(65537)), "A transfer has 65536 bytes at most.");
  for (const int module : {2, -1}) {
    const Text text = "There is no SPI module " + std::to_string(module) + ".";
    EXPECT_EQ(client.Refusal("TransferSpi", module, bytes), text);
    EXPECT_EQ(client.Run("PSP " + std::to_string(module) + " U32:1").front(),
              "error List 7, command 0 (PSP): " + text);
  }
  EXPECT_EQ(client.Run("PSP 1 U32:1").front(), "done 7");
  const auto registers = [&] {
    std::vector<UInt> values;
    for (int i = 0; i < 4; ++i) values.push_back(client.Call<UInt>("ReadSfRegister", i));
    return values;
  };
  EXPECT_EQ(registers(), (std::vector<UInt>{0, 0, 0, 0}));
  client.Call("WriteSfRegister", 1, 0x80000001U), client.Call("WriteSfRegister", 3, 7U);
  client.Run("PI 1 SUS", "progress");
  EXPECT_EQ(registers(), (std::vector<UInt>{1, 0x80000001U, 7, 7}));
  for (const int which : {0, 2}) {
    EXPECT_EQ(client.Refusal("WriteSfRegister", which, 1U),
              "Register " + std::to_string(which) + " can only be read.");
  }
  EXPECT_EQ(client.Refusal("ReadSfRegister", 4), "There is no register 4.");
  EXPECT_EQ(client.Refusal("WriteSfRegister", -1, 1U), "There is no register -1.");
  const auto board = client.Call<AdapterBoardIdentity>("GetAdapterBoardIdentity");
  EXPECT_EQ(board.Type + ", " + board.SerialNumber + ", " + board.Revision, "Virtual adapter board, 77-A, 1");
}

TEST(VirtualCardModules, AreKeptAndCheckedWithTheirConfiguration) {
  const TemporaryDirectory state;
  SpiConfig spi;
  spi.Modules.resize(8);
  spi.Modules[7].Mode = 3, spi.Modules[7].WordLength = 32, spi.Modules[7].ClockFrequency = 0.25;
  AdapterBoardConfig board;
  board.InputVoltage = IOVoltage::Volt5, board.EnableTermination = true;
  {
    const CardProcess card({"--state", state.Path});
    Client client(card);
    client.Call("SetSpiConfig", spi), client.Call("StoreSpiConfig");
    client.Call("SetAdapterBoardConfig", board), client.Call("StoreAdapterBoardConfig");
    const std::pair<std::function<void(SpiConfig&)>, Text> faults[] = {
        {[](auto& c) { c.Modules.clear(); }, "The card has 1 to 8 SPI modules."},
        {[](auto& c) { c.Modules.resize(9); }, "The card has 1 to 8 SPI modules."},
        {[](auto& c) { c.Modules[1].Mode = 4; }, "SPI module 1: The mode must be 0 to 3."},
        {[](auto& c) { c.Modules[1].Mode = -1; }, "SPI module 1: The mode must be 0 to 3."},
        {[](auto& c) { c.Modules[2].ClockFrequency = 0; },
         "SPI module 2: The clock frequency must be positive and finite."},
        {[](auto& c) { c.Modules[2].ClockFrequency = HUGE_VAL; },
         "SPI module 2: The clock frequency must be positive and finite."},
        {[](auto& c) { c.Modules[0].WordLength = 3; }, "SPI module 0: The word length must be 4 to 32."},
        {[](auto& c) { c.Modules[0].WordLength = 33; }, "SPI module 0: The word length must be 4 to 32."},
    };
    for (const auto& [spoil, text] : faults) {
      SpiConfig spoiled = spi;
      spoil(spoiled);
      EXPECT_EQ(client.Refusal("SetSpiConfig", spoiled), text);
    }
  }
  const CardProcess card({"--state", state.Path});
  Client client(card);
  EXPECT_EQ(client.Call<SpiConfig>("GetSpiConfig").ToString(), spi.ToString());
  EXPECT_EQ(client.Call<AdapterBoardConfig>("GetAdapterBoardConfig").ToString(), board.ToString());
  EXPECT_EQ(client.Refusal("TransferSpi", 7, SpiBytes{1}), "no failure");
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
