// What stands between an application and its card, and what is made of captured packets.
#include "CapturedSession.h"
#include "CardRelays.h"
#include "session/SessionReader.h"
#include "session/SessionWriter.h"
#include "support/FakeCard.h"
#include "tool/ToolShell.h"

namespace VELTRO::KELVO::Test {
namespace {

using namespace Tool;
using ClientLib::Descriptor;
using ClientLib::FrameWay;
using ClientLib::IPAddress;
using namespace ClientLib::Recording;

std::string FrameText(const std::string& method, std::uint32_t id = 1) {
  return FrameOf(0, id, method, std::vector<int>());
}

// The lines of a recording in short: "1 > request M", "1 < raw 3", "1 > missing 5".
std::vector<std::string> ShortLines(const std::string& path) {
  std::vector<std::string> lines;
  SessionReader reader(path);
  while (const auto line = reader.Next()) {
    const LineKind kind = line->Head.Kind;
    std::string text = std::to_string(line->Head.Connection) + (kind == LineKind::Opened             ? ""
                                                                : line->Head.Way == FrameWay::ToCard ? " >"
                                                                                                     : " <");
    text.append(" ").append(KindWords[static_cast<std::size_t>(kind)]);
    if (!line->Method.empty()) text += " " + line->Method;
    if (kind == LineKind::Raw) text += " " + std::to_string(line->Raw.size());
    if (kind == LineKind::Missing) text += " " + std::to_string(line->MissingBytes);
    lines.push_back(text);
  }
  return lines;
}

// A recorder in front of a card.
class Recorder {
 public:
  explicit Recorder(int cardPort)
      : writer_(Path(), {"a test", "", "", true}),
        relays_(std::in_place, ListenOn({Loopback(), 0}), Place{Loopback(), cardPort}, writer_),
        port_(relays_->GetPort()),
        thread_([this] {
          while (!isOver_) static_cast<void>(relays_->Serve(10));
        }) {}
  ~Recorder() { Finish(); }
  int Port() const { return port_; }
  std::string Path() const { return directory_.Path + "/s"; }
  std::vector<std::string> Lines() {
    Finish();
    return ShortLines(Path());
  }

 private:
  static IPAddress Loopback() { return IPAddress::Resolve("127.0.0.1"); }
  void Finish() {
    isOver_ = true;
    if (thread_.joinable()) thread_.join();
    relays_.reset();
    writer_.Finish();
  }

  const TemporaryDirectory directory_;
  SessionWriter writer_;
  std::optional<CardRelays> relays_;
  const int port_;
  std::atomic<bool> isOver_{false};
  std::thread thread_;
};

// What comes until the other side ends, and how it ends.
std::string AllOf(int socket) {
  std::string all;
  char bytes[65536];
  ssize_t count = 0;
  while ((count = recv(socket, bytes, sizeof bytes, 0)) > 0)
    all.append(bytes, static_cast<std::size_t>(count));
  return all + (count == 0 ? "|end" : "|" + std::generic_category().message(errno));
}

void SendAll(int socket, const std::string& bytes) {
  EXPECT_EQ(send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL), std::ssize(bytes));
}

TEST(Recorder, PassesOnWhatBothSidesDo) {
  // The card answers what has come when its client has ended, and then ends itself.
  std::atomic<bool> isAsked{false}, isReset{false};
  const std::string large(3 << 20, 'l');
  const FakeCard card([&](Peer& peer) {
    Request request;
    if (!peer.Next(request)) return;
    if (request.Method == "Reset") return peer.Reset();
    if (request.Method == "Wait") {
      isAsked = true;
      peer.WaitForEnd();
      isReset = true;
    } else {
      EXPECT_FALSE(peer.Fill(1));
      peer.Send(Response(request.Id, large) + "\x94garbage");
    }
  });
  Recorder recorder(card.Port());
  const Descriptor half(Connect(recorder.Port()));
  SendAll(half.Get(), FrameText("Half").substr(0, 8));
  std::this_thread::sleep_for(std::chrono::milliseconds(20));  // so that the frame comes in two parts
  SendAll(half.Get(), FrameText("Half").substr(8));
  shutdown(half.Get(), SHUT_WR);
  EXPECT_EQ(AllOf(half.Get()), Response(1, large) + "\x94garbage|end");
  const Descriptor reset(Connect(recorder.Port()));
  SendAll(reset.Get(), FrameText("Reset"));
  EXPECT_EQ(AllOf(reset.Get()), "|Connection reset by peer");
  {
    Peer client(Connect(recorder.Port()));
    client.Send(FrameText("Wait"));
    for (const Stopwatch watch; !isAsked && watch.Milliseconds() < 30000;) usleep(1000);
    client.Reset();
  }
  for (const Stopwatch watch; !isReset && watch.Milliseconds() < 30000;) usleep(1000);
  EXPECT_TRUE(isReset);
  EXPECT_THAT(
      recorder.Lines(),
      testing::ElementsAre("1 opened", "1 > request Half", "1 > ended", "1 < response Half", "1 < raw 8",
                           "1 < ended", "2 opened", "2 > request Reset", "3 opened", "3 > request Wait"));
  // Without a card the application is turned away.
  Recorder lonely(1);
  const Descriptor away(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_in place{
      AF_INET, htons(static_cast<std::uint16_t>(lonely.Port())), {htonl(INADDR_LOOPBACK)}, {}};
  // It may be turned away before its connect returns.
  const bool isConnected = connect(away.Get(), reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0;
  EXPECT_EQ(isConnected ? AllOf(away.Get()) : "|" + std::generic_category().message(errno),
            "|Connection reset by peer");
}

// ---- Captures

// A TCP packet between the application and the card, on Ethernet.
struct Segment {
  bool IsToCard;
  std::uint32_t Sequence, Acknowledged;
  std::string Flags;  // of S, A, F, R
  std::string Bytes = {};
  std::size_t Cut = 0;  // so many of these the capture did not keep
};

std::string Big(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = bytes; i-- > 0;) text += i < 8 ? static_cast<char>(value >> 8 * i & 0xFF) : '\0';
  return text;
}

std::string PacketOf(const Segment& segment, bool is6) {
  unsigned flags = 0;
  for (const char flag : segment.Flags) flags |= 1U << std::string("FSR.A").find(flag);
  const std::uint64_t ports[] = {50000, 49374};
  std::string tcp = Big(ports[segment.IsToCard ? 0 : 1], 2) + Big(ports[segment.IsToCard ? 1 : 0], 2) +
                    Big(segment.Sequence, 4) + Big(segment.Acknowledged, 4) + Big(0x60, 1) + Big(flags, 1) +
                    Big(0, 6) + Big(0x02040400, 4) + segment.Bytes;
  const std::string from = segment.IsToCard ? "a" : "c", to = segment.IsToCard ? "c" : "a";
  std::string packet = Big(0, 12);
  if (is6) {
    packet += Big(0x86DD, 2) + Big(0x6, 1).replace(0, 1, "\x60") + Big(0, 3) + Big(tcp.size() + 8, 2) +
              Big(0, 2) + std::string(16, from[0]) + std::string(16, to[0]) + Big(6, 1) + Big(0, 7);
  } else {
    packet += Big(0x8100, 2) + Big(7, 2) + Big(0x0800, 2) + "\x45" + Big(0, 1) + Big(20 + tcp.size(), 2) +
              Big(0, 4) + Big(64, 1) + Big(6, 1) + Big(0, 2) + std::string(4, from[0]) +
              std::string(4, to[0]);
  }
  packet += tcp;
  return packet.substr(0, packet.size() - segment.Cut);
}

std::string CaptureOf(const std::vector<Segment>& segments, bool is6) {
  std::string file = Big(0xA1B2C3D4, 4) + Big(0x00020004, 4) + Big(0, 8) + Big(65535, 4) + Big(1, 4);
  std::uint32_t time = 0;
  for (const Segment& segment : segments) {
    const std::string packet = PacketOf(segment, is6);
    file += Big(1767225600, 4) + Big(time += 1000, 4) + Big(packet.size(), 4) +
            Big(packet.size() + segment.Cut, 4) + packet;
  }
  return file;
}

TEST(Import, PutsSegmentsTogetherAndTellsWhatIsMissing) {
  const std::string ask = FrameText("Ask"), answer = Response(1, 7), more = FrameText("More", 2);
  const auto size = static_cast<std::uint32_t>(ask.size()),
             answerSize = static_cast<std::uint32_t>(answer.size());
  constexpr std::uint32_t A = 0xFFFFFFFA;  // the application's numbers wrap
  const Segment syn{true, A - 1, 0, "S"}, synAck{false, 99, A, "SA"}, whole{true, A, 100, "A", ask},
      answered{false, 100, A + size, "A", answer}, next{true, A + size, 100 + answerSize, "A", more};
  const std::string opened = "1 opened,", asked = "1 > request Ask,", told = "1 < response Ask,";
  const struct {
    const char* What;
    std::vector<Segment> Segments;
    std::string Lines, Says = {};
    int Code = 0;
  } rows[] = {
      {"in order, and ended",
       {syn,
        syn,
        synAck,
        {true, A, 100, "A"},
        whole,
        answered,
        {false, 100 + answerSize, A + size, "FA"},
        {true, A + size, 101 + answerSize, "FA"},
        {false, 101 + answerSize, A + size + 1, "A"}},
       opened + asked + told + "1 < ended,1 > ended,"},
      {"in pieces, out of order, twice and overlapping",
       {syn,
        {true, A + 10, 100, "A", ask.substr(10)},
        {true, A, 100, "A", ask.substr(0, 4)},
        {true, A, 100, "A", ask.substr(0, 12)},
        {true, A + 2, 100, "A", ask.substr(2)},
        synAck,
        answered,
        answered},
       opened + asked + told,
       "3 segments came more than once."},
      {"one byte that keeps it alive is no repetition",
       {syn, synAck, whole, {true, A + size - 1, 100, "A", "x"}, answered},
       opened + asked + told},
      {"an acknowledgement overtakes",
       {syn, synAck, {false, 100, A + size, "A"}, whole, answered},
       opened + asked + told},
      {"lost in the middle",
       {syn, synAck, {true, A, 100, "A", ask.substr(0, 4)}, answered, next},
       opened + "1 < response,1 > raw 4,1 > missing " + std::to_string(size - 4) + ",1 > request More,",
       std::to_string(size - 4) + " bytes are missing in the capture, in 1 place.",
       4},
      {"lost at the end",
       {syn, synAck, {false, 100, A + size, "A"}, {false, 100, A + size, "A"}},
       opened + "1 > missing " + std::to_string(size) + ",",
       "bytes are missing",
       4},
      {"cut by the capture",
       {syn, synAck, {true, A, 100, "A", ask, 3}, {true, A + size, 100, "A", more}},
       opened + "1 > raw " + std::to_string(size - 3) + ",1 > missing 3,1 > request More,",
       "3 bytes are missing in the capture, in 1 place.",
       4},
      {"begun in the middle of a frame",
       {{true, 5, 7, "A", "ask" + more},
        {true, 5 + 3 + static_cast<std::uint32_t>(more.size()), 7, "A", ask}},
       opened + "1 > raw " + std::to_string(3 + more.size()) + "," + asked},
      {"reset, and the port used again",
       {syn, synAck, whole, {false, 100, A + size, "RA"}, {true, 5000, 0, "S"}, {true, 5001, 1, "A", ask}},
       opened + asked + "1 > ended,1 < ended,2 opened,2 > request Ask,"},
      {"of something else", {}, "", "The capture has no connection to port 49374.", 1},
  };
  const ToolShell shell;
  for (const bool is6 : {false, true}) {
    for (const auto& [what, segments, lines, says, code] : rows) {
      SCOPED_TRACE(what);
      const TemporaryDirectory directory;
      const std::string capture = directory.Path + "/c", path = directory.Path + "/s";
      std::ofstream(capture, std::ios::binary) << CaptureOf(segments, is6);
      const auto [exitCode, output, error] = shell.Run("kelvo session import " + capture + " -o " + path);
      EXPECT_EQ(exitCode, code) << error;
      EXPECT_THAT(error, HasSubstr(says));
      EXPECT_EQ(error.find("more than once") != std::string::npos,
                says.find("more than once") != std::string::npos)
          << error;
      std::string found;
      if (code != 1) {
        for (const std::string& line : ShortLines(path)) found += line + ",";
      }
      EXPECT_EQ(found, lines);
    }
  }
}

TEST(Import, RefusesWhatIsNoCapture) {
  const ToolShell shell;
  const Row rows[] = {
      {"kelvo session import none -o s", 1, "Cannot read the capture 'none': "},
      {"echo x >c; kelvo session import c -o s", 1, "Cannot read the capture 'c': "},
      {"kelvo session import c", 2, "-o is needed."},
      {"test ! -e s", 0},
      {"kelvo record -o s", 2, "--listen and -o are needed."},
      {"KELVO_CARD= kelvo record --listen 0 -o s", 2, "This verb takes one card"},
      {"kelvo record --listen 0 -o /no/such/folder/s", 1, "Unable to open recording"},
      {"kelvo record --listen x -o s", 2, "--listen takes a whole number from 0"},
      {"kelvo session show none", 1, "Unable to open recording 'none': No such file or directory"},
      {"echo x >s; kelvo session show s", 1, "'s' is no recorded session."},
  };
  ExpectAll(shell, rows);
}

TEST(SessionShow, TellsCallsAndHowLongTheyTook) {
  const ToolShell shell;
  const std::string head =
      R"({"kelvoSession":1,"started":"2026","by":"me","firmware":"1","serialNumber":"\u001b7"})";
  const auto line = [](const std::string& time, const std::string& rest) {
    return R"({"time":)" + time + R"(,"connection":1,"way":)" + rest + "}\n";
  };
  std::string session = head + "\n";
  for (int i = 0; i < 9; ++i) {
    const std::string id = std::to_string(i), begin = std::to_string(i) + ".";
    session +=
        line(begin + "0", R"("to card","kind":"request","id":)" + id + R"(,"method":"Do","arguments":[1])");
    session += line(begin + (i == 0  ? "002"
                             : i < 8 ? "003"
                                     : "1"),
                    R"("from card","kind":")" + std::string(i == 7 ? "error" : "response") + R"(","id":)" +
                        id + R"(,"method":"Do",")" + (i == 7 ? "error" : "result") + R"(":["no"])");
  }
  session += line("9.0", R"("to card","kind":"request","id":9,"method":"Do","arguments":[")" +
                             std::string(500, 'x') + R"("])");
  session += line("9.1", R"("from card","kind":"raw","raw":{"base64":"AQI="})") + "{\"time\"";
  shell.Run("cat >s <<'+'\n" + session + "\n+\ntruncate -s -1 s");
  const std::string cut = "; test $? = 4";
  const Row rows[] = {
      {"kelvo session show s" + cut, 0, "Recorded 2026 by me, card 7, firmware 1.\n"},
      {"kelvo session show s" + cut, 0,
       "    0.000000   1 > Do [1]\n    0.002000   1 < Do = [\"no\"]  (2.000 ms)\n"},
      {"kelvo session show s" + cut, 0, "    7.003000   1 < Do failed: [\"no\"]  (3.000 ms)\n"},
      {"kelvo session show s" + cut, 0, "xxx... (384 more)\n    9.100000   1 < 2 bytes that are no frame\n"},
      {"kelvo session show s 2>&1" + cut, 0, "s:22: The recording ends in the middle of a line.\n"},
      {"kelvo session show --stats s" + cut, 0,
       "Do: 10 calls, 1 failed, 1 not answered; least 2.000 ms, median 3.000 ms, 99 % within 3.000 ms, most "
       "100.000 ms\n"
       "  <     2.048 ms       1  ######\n"
       "  <     4.096 ms       7  ########################################\n"
       "  <     8.192 ms       0  \n"},
      {"kelvo session show --stats s" + cut, 0, "  <   131.072 ms       1  ######\n"},
  };
  ExpectAll(shell, rows);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
