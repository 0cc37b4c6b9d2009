// The virtual card's serial ports: as a loop-back, and with a terminal whose other side is the test's.
#include <poll.h>
#include <termios.h>

#include <functional>
#include <future>

#include "int/CardClient.h"
#include "peripherals/Diagnostics.h"
#include "peripherals/SerialPortAPI.h"
#include "support/Process.h"

namespace VELTRO::KELVO::Test {
namespace {

using SerialBytes = std::vector<std::uint8_t>;
using UInt = std::uint32_t;

SerialBytes Sent(const Text& text) {
  return {text.begin(), text.end()};
}

Text Read(Client& client, int port, UInt most = 100000, UInt milliseconds = 0) {
  const auto bytes = client.Call<SerialBytes>("ReadSerialPort", port, most, milliseconds);
  return {bytes.begin(), bytes.end()};
}

void Write(Client& client, int port, const Text& text) {
  client.Call("WriteSerialPort", port, Sent(text));
}

// The other side of a terminal.
class OtherSide {
 public:
  explicit OtherSide(int terminal) : terminal_(terminal) {}
  static OtherSide Open(const Text& path) {
    return OtherSide(open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  }

  int Get() const { return terminal_.Get(); }
  void Say(const Text& text) const {
    EXPECT_EQ(write(terminal_.Get(), text.data(), text.size()), std::ssize(text));
  }
  // As soon as so many bytes are there, or after some seconds.
  Text Hear(std::size_t count) const {
    Text heard;
    char bytes[4096];
    pollfd entry{terminal_.Get(), POLLIN, 0};
    while (heard.size() < count && poll(&entry, 1, 20000) > 0) {
      const ssize_t more = read(terminal_.Get(), bytes, std::min(sizeof bytes, count - heard.size()));
      if (more <= 0) break;
      heard.append(bytes, static_cast<std::size_t>(more));
    }
    return heard;
  }

 private:
  Descriptor terminal_;
};

OtherSide PseudoTerminalOf(CardProcess& card) {
  Text line = card.ReadLine();
  EXPECT_TRUE(line.starts_with("Serial port 0: /dev/pts/")) << line;
  line.pop_back();
  return OtherSide::Open(line.substr(15));
}

void SetPorts(Client& client, std::size_t count, UInt responseTimeout,
              SerialPortLineEnd end = SerialPortLineEnd::CrLf) {
  SerialPortConfig config;
  config.Ports.resize(count);
  config.Ports[0].ResponseTimeout = responseTimeout, config.Ports[0].LineEnd = end;
  client.Call("SetSerialPortConfig", config);
}

Events RunOf(Client& client, const std::function<void(CommandList&)>& fill, const Text& last = "idle") {
  CommandList list;
  fill(list);
  client.Lists.Set(7, list, false, -1);
  client.Lists.Execute(7);
  return client.EventsUpTo(last);
}

TEST(VirtualCardSerialPort, ReceivesWhatItSendsWithoutATerminal) {
  const CardProcess card({"--speed", "max"});
  Client client(card);
  SetPorts(client, 2, 1000);
  Write(client, 0, "abc"), Write(client, 1, Text("\0\xFF", 2)), Write(client, 0, "de");
  EXPECT_EQ(Read(client, 0, 4), "abcd");
  EXPECT_EQ(Read(client, 0), "e");
  EXPECT_EQ(Read(client, 1), Text("\0\xFF", 2));
  EXPECT_EQ(Read(client, 0), "");
  const Stopwatch watch;
  EXPECT_EQ(Read(client, 0, 1, 100), "");
  EXPECT_GE(watch.Milliseconds(), 99);
  Client other(card);
  auto reading = std::async(std::launch::async, [&] { return Read(other, 0, 100, 15000); });
  usleep(20000);  // in which it has begun to wait
  Write(client, 0, "late");
  EXPECT_EQ(reading.get(), "late");
  Text much;
  for (int i = 0; i < 20000; ++i) much += std::to_string(i % 10000);
  Write(client, 0, much.substr(0, 20000)), Write(client, 0, much.substr(20000));
  EXPECT_EQ(Read(client, 0), much.substr(much.size() - 65536)) << "not the latest";
  Write(client, 0, "x"), client.Call("FlushSerialPort", 0);
  EXPECT_EQ(Read(client, 0), "");
  for (const int port : {2, -1}) {
    const Text text = "There is no serial port " + std::to_string(port) + ".";
    EXPECT_EQ(client.Refusal("WriteSerialPort", port, Sent("x")), text);
    EXPECT_EQ(client.Refusal("ReadSerialPort", port, UInt{1}, UInt{1}), text);
    EXPECT_EQ(client.Refusal("FlushSerialPort", port), text);
  }
  Write(client, 1, "x"), SetPorts(client, 1, 1000), SetPorts(client, 2, 1000);
  EXPECT_EQ(Read(client, 1), "") << "the port has been away";
}

TEST(VirtualCardSerialPort, IsSentToAndAskedByLists) {
  const CardProcess card({"--speed", "max"});
  Client client(card);
  SetPorts(client, 1, 50, SerialPortLineEnd::Lf);
  const Text late = "error List 7, command 0 (SVR): The serial port did not answer in time.";
  const std::tuple<std::function<void(CommandList&)>, Text, Text> cases[] = {
      {[](auto& list) { list.AppendSerialPortTransmitString("a"), list.AppendSerialPortTransmitLine("b"); },
       "done 7", "ab\n"},
      // What was there before is no answer, and what is more than the answer stays.
      {[](auto& list) {
         list.AppendSerialPortTransmitString("old");
         list.AppendSerialPortVerifyResponseString("ping!", "ping");
         list.AppendSerialPortVerifyResponseLine("ping", "ping");
         list.AppendSerialPortVerifyResponseString("rest", "");
       },
       "done 7", "rest"},
      {[](auto& list) { list.AppendSerialPortVerifyResponseString("ping", "pong"); },
       "error List 7, command 0 (SVR): The serial port answered 'ping' instead of 'pong'.", ""},
      {[](auto& list) { list.AppendSerialPortVerifyResponseLine("\xFF", "x"); },
       R"(error List 7, command 0 (SVRL): The serial port answered '\xFF\x0A' instead of 'x\x0A'.)", ""},
      {[](auto& list) { list.AppendSerialPortVerifyResponseString("ping", "ping!"); }, late, ""},
      {[](auto& list) { list.AppendSerialPortVerifyResponseString(Text(101, 'a'), Text(101, 'b')); },
       "error List 7, command 0 (SVR): The serial port answered '" + Text(100, 'a') + "...' instead of '" +
           Text(100, 'b') + "...'.",
       ""},
  };
  for (const auto& [fill, event, received] : cases) {
    EXPECT_EQ(RunOf(client, fill).front(), event);
    EXPECT_EQ(Read(client, 0), received);
  }
  for (const auto& [end, line] :
       {std::pair{SerialPortLineEnd::CrLf, "\r\n"}, {SerialPortLineEnd::Cr, "\r"}}) {
    SetPorts(client, 1, 50, end);
    RunOf(client, [](auto& list) { list.AppendSerialPortTransmitLine(""); });
    EXPECT_EQ(Read(client, 0), line);
  }
}

TEST(VirtualCardSerialPort, TalksToWhoeverOpensItsPseudoTerminal) {
  CardProcess card({"--speed", "max", "--serial-port", "pty"});
  const OtherSide terminal = PseudoTerminalOf(card);
  Client client(card);
  SetPorts(client, 1, 15000);
  Write(client, 0, Text("a\r\n\0\x03\x11", 6));
  EXPECT_EQ(terminal.Hear(6), Text("a\r\n\0\x03\x11", 6)) << "bytes are changed on their way";
  terminal.Say(Text("b\r\n\0\x03", 5));
  Text heard;
  while (heard.size() < 5) heard += Read(client, 0, 3, 1000);
  EXPECT_EQ(heard, Text("b\r\n\0\x03", 5));
  // A device that answers after a while, which the list waits for also at full speed.
  auto device = std::async(std::launch::async, [&] {
    const Text request = terminal.Hear(4);
    usleep(3000000);
    terminal.Say("O"), terminal.Say("K\r\nmore");
    return request;
  });
  EXPECT_EQ(RunOf(client, [](auto& list) { list.AppendSerialPortVerifyResponseLine("GO", "OK"); }).front(),
            "done 7");
  EXPECT_EQ(device.get(), "GO\r\n");
  // On a busy machine the run comes to its waiting seconds later than the device to its own.
  EXPECT_GE(client.Lists.GetLastExecutionStats().ExecutionTime, 20000);
  // One that does not, and a run that is aborted meanwhile.
  SetPorts(client, 1, 3600000);
  RunOf(
      client,
      [](auto& list) {
        list.AppendProgress(1);
        list.AppendSerialPortVerifyResponseLine("GO", "OK");
      },
      "progress");
  EXPECT_EQ(terminal.Hear(4), "GO\r\n");
  const Stopwatch watch;
  client.Lists.AbortExecution();
  EXPECT_LT(watch.Milliseconds(), 10000);
  EXPECT_EQ(client.EventsUpTo("idle"), Events{"idle 7"});
}

TEST(VirtualCardSerialPort, HoldsNobodyUpWhenNobodyReads) {
  CardProcess card({"--serial-port", "pty"});
  const OtherSide terminal = PseudoTerminalOf(card);
  Client client(card);
  Text much;
  for (int i = 0; much.size() < 600000; ++i) much += std::to_string(i);
  Write(client, 0, much);
  EXPECT_EQ(client.Refusal("WriteSerialPort", 0, Sent(much)), "Serial port 0 does not take more.");
  EXPECT_EQ(terminal.Hear(much.size()), much);
  Write(client, 0, "again");
  EXPECT_EQ(terminal.Hear(5), "again");
}

TEST(VirtualCardSerialPort, SetsTheTerminalAndOutlivesItsOtherSide) {
  OtherSide terminal(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  grantpt(terminal.Get()), unlockpt(terminal.Get());
  const Text path = ptsname(terminal.Get());
  CardProcess card({"--serial-port", path});
  Client client(card);
  SerialPortConfig config;
  config.Ports[0].BaudRate = 9600, config.Ports[0].StopBits = SerialPortStopBits::Two;
  config.Ports[0].Handshake = SerialPortHandshake::XOnXOff;
  client.Call("SetSerialPortConfig", config);
  termios settings{};
  EXPECT_EQ(tcgetattr(terminal.Get(), &settings), 0);
  EXPECT_EQ(cfgetospeed(&settings), static_cast<speed_t>(B9600));
  EXPECT_NE(settings.c_cflag & CSTOPB, 0U);
  EXPECT_NE(settings.c_iflag & IXON, 0U);
  client.Call("ResetToDefaults");
  tcgetattr(terminal.Get(), &settings);
  EXPECT_EQ(cfgetospeed(&settings), static_cast<speed_t>(B115200));
  EXPECT_EQ(settings.c_iflag & IXON, 0U);
  const auto tested = [&] {
    const auto results = client.Call<std::vector<SelfTestResult>>("RunSelfTest");
    return Text(results.back().Passed ? "" : "failed: ") + results.back().Finding;
  };
  EXPECT_EQ(tested(), "It is connected with '" + path + "'.");
  terminal.Say("x");
  EXPECT_EQ(Read(client, 0, 1, 15000), "x");
  config.Ports[0].BaudRate = 12345;
  client.Call("SetSerialPortConfig", config);
  EXPECT_EQ(card.ReadLine(), "Serial port 0: '" + path + "' does not take all of the port's settings.\n");
  terminal = OtherSide(-1);
  EXPECT_EQ(card.ReadLine(), "Serial port 0: the other side of '" + path + "' has gone.\n");
  while (client.Refusal("WriteSerialPort", 0, Sent("x")) != "Serial port 0 is not connected any more.") {
    usleep(1000);
  }
  EXPECT_EQ(tested(), "failed: The other side of '" + path + "' has gone.");
  EXPECT_EQ(Read(client, 0), "");
}

TEST(VirtualCardSerialPort, SaysWhatItCannotOpenAndWhatItCannotBe) {
  const std::pair<Text, Text> faults[] = {
      {"/no/such", "Cannot open '/no/such': No such file or directory.\n"},
      {"/dev/null", "Cannot open '/dev/null': Inappropriate ioctl for device.\n"}};
  for (const auto& [path, text] : faults) {
    CardProcess card({"--serial-port", path});
    EXPECT_EQ(card.GetFirstLine(), text);
    EXPECT_EQ(card.End(0), 1);
  }
  const CardProcess card;
  Client client(card);
  const std::pair<std::function<void(SerialPortConfig&)>, Text> cases[] = {
      {[](auto& c) { c.Ports.clear(); }, "The card has 1 to 4 serial ports."},
      {[](auto& c) { c.Ports.resize(5); }, "The card has 1 to 4 serial ports."},
      {[](auto& c) { c.Ports[0].BaudRate = 299; }, "Serial port 0: The baud rate must be 300 to 4000000."},
      {[](auto& c) { c.Ports[1].BaudRate = 4000001; },
       "Serial port 1: The baud rate must be 300 to 4000000."},
      {[](auto& c) { c.Ports[0].DataBits = 4; }, "Serial port 0: The number of data bits must be 5 to 8."},
      {[](auto& c) { c.Ports[0].DataBits = 9; }, "Serial port 0: The number of data bits must be 5 to 8."},
      {[](auto& c) { c.Ports.resize(4), c.Ports[3].DataBits = 5, c.Ports[2].BaudRate = 300; }, "no failure"},
  };
  for (const auto& [spoil, text] : cases) {
    SerialPortConfig config;
    config.Ports.resize(2);
    spoil(config);
    EXPECT_EQ(client.Refusal("SetSerialPortConfig", config), text);
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
