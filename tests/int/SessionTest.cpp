// Recorded sessions: frames as lines and back, the file, what is no such file.
#include "Helpers.h"
#include "rpc/JsonForm.h"
#include "session/FrameSplitter.h"
#include "session/LineMaker.h"
#include "session/LineReader.h"
#include "session/SessionReader.h"
#include "session/SessionWriter.h"
#include "support/FailingMemory.h"
#include "support/TemporaryDirectory.h"

namespace VELTRO::KELVO::Test {
namespace {

using namespace Recording;
using std::chrono::microseconds;

constexpr const char* Head =
    "{\"kelvoSession\":1,\"started\":\"2026-01-02T03:04:05.000006Z\",\"by\":\"a test\"}\n";

std::string LineOf(LineMaker& maker, FrameWay way, const std::string& frame) {
  std::string text = "|";
  maker.AppendFrame(text, {microseconds(1000002), 3, way, {}}, Unsigned(frame));
  return text;
}

TEST(SessionLine, OfAFrameReadsBackAsWhatItWas) {
  const msgpack::type::nil_t nil;
  LineMaker maker(true);
  const std::string nested = std::string(100, '\x91') + "\xC0";
  const struct {
    FrameWay Way;
    std::string Frame;
    std::string Told;     // the line behind its way
    std::string Content;  // as it is read back
  } frames[] = {
      {FrameWay::ToCard, FrameOf(0, 7, "Move", std::make_tuple(1.5, -2, "\"\xC3\xA4\"")),
       R"("request","id":7,"method":"Move","arguments":[1.5,-2,"\"ä\""]})", R"([1.5,-2,"\"ä\""])"},
      {FrameWay::FromCard, Response(7, std::vector<char>{1, 2}),
       R"("response","id":7,"method":"Move","result":{"base64":"AQI="}})", R"({"base64":"AQI="})"},
      {FrameWay::FromCard, Response(7, 5), R"("response","id":7,"result":5})", "5"},  // nobody asks any more
      {FrameWay::FromCard, ErrorResponse(8, "no"), R"("error","id":8,"error":["no",null,null]})",
       R"(["no",null,null])"},
      {FrameWay::ToCard, FrameOf(0, 9, "Echo", std::make_tuple(1)),
       R"("request","id":9,"method":"Echo","arguments":[1]})", "[1]"},
      {FrameWay::FromCard, Response(9, std::make_tuple(1)),
       R"("response","id":9,"method":"Echo","result":[1]})", "[1]"},
      {FrameWay::FromCard, FrameOf(2, std::make_tuple(3, 4)), R"("notification","values":[3,4]})", "[3,4]"},
      {FrameWay::FromCard, FrameOf(0x82, std::make_tuple("gone", nil, nil)),
       R"("error notification","error":["gone",null,null]})", R"(["gone",null,null])"},
      // What would not come back as it was: an object behind the last, one that is missing, arguments that are none, a
      // kind that is none, a length that is another's, and what is nested more deeply than a line may be.
      {FrameWay::FromCard, FrameOf(1, 7, 5, 6), R"("raw","raw":{"base64":"lAEDAAAABwUG"}})", "null"},
      {FrameWay::FromCard, FrameOf(1, 7), R"("raw","raw":{"base64":"lAEBAAAABw=="}})", "null"},
      {FrameWay::ToCard, FrameOf(0, 7, "M", 1), R"("raw","raw":{"base64":"lAAEAAAAB6FNAQ=="}})", "null"},
      {FrameWay::ToCard, FrameOf(3, 7), R"("raw","raw":{"base64":"lAMBAAAABw=="}})", "null"},
      {FrameWay::ToCard, FrameOf(2, 7) + "\1", R"("raw","raw":{"base64":"lAIBAAAABwE="}})", "null"},
      {FrameWay::FromCard, Frame(2, nested), R"("raw","raw":{"base64":")", "null"},
  };
  // What comes again is told as it was the first time.
  for (std::size_t i = 0; i < 4 * std::size(frames); ++i) {
    const auto& [way, frame, told, content] = frames[i % std::size(frames)];
    const std::string text = LineOf(maker, way, frame);
    const std::string begin = std::string("|{\"time\":1.000002,\"connection\":3,\"way\":\"") +
                              (way == FrameWay::ToCard ? "to" : "from") + " card\",\"kind\":";
    EXPECT_THAT(text, AllOf(StartsWith(begin + told), EndsWith("}\n")));
    const Line line = ReadLine(std::string_view(text).substr(1, text.size() - 2));
    EXPECT_EQ(line.Head.Time.count(), 1000002);
    EXPECT_EQ(line.Head.Connection, 3U);
    EXPECT_EQ(line.Head.Way, way);
    EXPECT_EQ(JsonForm::TextOf(line.Content), content);
    EXPECT_THAT(told,
                StartsWith('"' + std::string(KindWords[static_cast<std::size_t>(line.Head.Kind)]) + '"'));
    if (line.Head.Kind == LineKind::Raw) {
      EXPECT_EQ(Hex(line.Raw), Hex(frame));
    }
  }
}

TEST(SessionLine, OfAnAnswerKnowsTheMethodHoweverManyCallsCameMeanwhile) {
  LineMaker maker(true);
  LineOf(maker, FrameWay::ToCard, FrameOf(0, 1, "WaitForIdle", std::make_tuple()));
  for (std::uint32_t id = 2; id < 5000; ++id) {
    LineOf(maker, FrameWay::ToCard, FrameOf(0, id, "GetTime", std::make_tuple()));
    LineOf(maker, FrameWay::FromCard, Response(id, true));
  }
  EXPECT_THAT(LineOf(maker, FrameWay::FromCard, Response(1, true)), HasSubstr(R"("method":"WaitForIdle")"));
}

TEST(SessionLine, LongValuesStayPackedAndWholeNumbersOfBytesComeBack) {
  LineMaker maker(true);
  for (std::size_t size : {32764U, 32765U, 32766U, 100000U}) {
    const std::string bytes = std::string(size - 5, 'x') + "\xFF\x80\x7F\x3Fz";
    const std::string text = LineOf(maker, FrameWay::FromCard, Response(1, bytes));
    EXPECT_EQ(text.find("\"packed\":") != std::string::npos, size > 32765) << size;
    EXPECT_EQ(ReadLine(std::string_view(text).substr(1)).Content.as<std::string>(), bytes);
  }
}

TEST(SessionLine, ContentOfFilesCanBeLeftOut) {
  LineMaker maker(false);
  const std::string secret = "secret";
  const std::string large(100000, 's');
  using Arguments = std::tuple<int, std::string, int>;
  const std::tuple<FrameWay, std::string, std::string> frames[] = {
      {FrameWay::ToCard, FrameOf(0, 1, "FileWrite", Arguments(4, secret, 6)),
       R"("method":"FileWrite","leftOut":6,"arguments":[4,null,6]})"},
      {FrameWay::ToCard, FrameOf(0, 2, "FileWriteText", Arguments(4, large, 6)),
       R"("method":"FileWriteText","leftOut":100000,"arguments":[4,null,6]})"},
      {FrameWay::ToCard, FrameOf(0, 3, "FileRead", std::make_tuple(4, 6)), R"("arguments":[4,6]})"},
      {FrameWay::FromCard, Response(3, secret), R"("method":"FileRead","leftOut":6,"result":null})"},
      {FrameWay::FromCard, Response(1, true), R"("method":"FileWrite","result":true})"},
      {FrameWay::FromCard, Response(9, secret),
       R"("id":9,"leftOut":6,"result":null})"},  // might be of a file
      {FrameWay::ToCard, FrameOf(0, 5, "Other", std::make_tuple(4, "told")), R"("arguments":[4,"told"]})"},
      {FrameWay::FromCard, Response(5, "told"), R"("result":"told"})"},
      {FrameWay::ToCard, "garbage", R"("kind":"raw","leftOut":7})"},
  };
  for (int round = 0; round < 4; ++round) {
    for (const auto& [way, frame, end] : frames) EXPECT_THAT(LineOf(maker, way, frame), EndsWith(end + "\n"));
  }
}

// What reading a file of this content ends with: how many lines were read, and the failure.
std::string Read(const std::string& content) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path + "/s";
  std::ofstream(path, std::ios::binary) << content;
  int count = 0;
  std::string failure = Failure([&] {
    SessionReader reader(path);
    while (reader.Next()) ++count;
  });
  for (std::size_t at = 0; (at = failure.find(path)) != std::string::npos;)
    failure.replace(at, path.size(), "FILE");
  return std::to_string(count) + " " + failure;
}

// Who carries the bytes on goes on without memory for a frame.
TEST(FrameSplitter, RecordsAsBytesWhatItCannotKeep) {
  struct Sizes : FrameSink {
    Sizes() { Seen.reserve(8); }
    void TakeFrame(std::uint32_t, FrameWay, const FramePieces& frame,
                   const std::shared_ptr<const void>&) override {
      Seen.emplace_back("frame", frame[0].size());
    }
    void TakeOther(std::uint32_t, FrameWay, LineKind kind, std::span<const unsigned char> bytes) override {
      Seen.emplace_back(kind == LineKind::Raw ? "raw" : "other", bytes.size());
    }
    std::vector<std::pair<std::string_view, std::size_t>> Seen;
  } sizes;
  FrameSplitter splitter(sizes, 1, FrameWay::ToCard);
  const std::string frame = FrameOf(0, 1, "M", std::string(50, 'x'));
  const auto bytes = Unsigned(frame);
  splitter.Take(bytes.first(8));
  {
    const FailingMemory none;
    splitter.Take(bytes.subspan(8, 32));
    splitter.Take(bytes.subspan(40));
  }
  splitter.Take(bytes.first(8));
  splitter.Take(bytes.subspan(8));
  using testing::Pair;
  EXPECT_THAT(sizes.Seen, testing::ElementsAre(Pair("raw", 8), Pair("raw", 32),
                                               Pair("raw", frame.size() - 40), Pair("frame", frame.size())));
}

TEST(SessionReader, TellsWhatIsWrong) {
  const std::string line =
      R"({"time":0.5,"connection":1,"way":"to card","kind":"request","id":5,"method":"M","arguments":[1]})"
      "\n";
  const std::string head = Head;
  const auto with = [&](std::string_view from, std::string_view to) {
    return head + std::string(line).replace(line.find(from), from.size(), to);
  };
  const std::string missing = " is missing or not of its kind.";
  const std::tuple<std::string, std::string> files[] = {
      {head, "0 no failure"},
      {head + line + line, "2 no failure"},
      {head + line + line.substr(0, line.size() - 1),
       "1 FILE:3: The recording ends in the middle of a line."},
      {head + line + "{", "1 FILE:3: The recording ends in the middle of a line."},
      {head.substr(0, 20), "0 FILE:1: The recording ends in the middle of a line."},
      {"{\"kelvoSession\":2,\"what\":[]}\n" + line,
       "0 'FILE' is a session of version 2; this program reads version 1."},
      {"", "0 'FILE' is no recorded session."},
      {line, "0 'FILE' is no recorded session."},
      {"\x7F"
       "ELF\n",
       "0 'FILE' is no recorded session."},
      {head + "\n", "0 FILE:2: It is no JSON object."},
      {head + "[]\n", "0 FILE:2: It is no JSON object."},
      {head + "{},{}\n", "0 FILE:2: It is no JSON object."},
      {head + std::string(100000, '[') + "\n", "0 FILE:2: It is no JSON object."},
      {head + "{}\n", "0 FILE:2: 'time'" + missing},
      {with("0.5", "-1"), "0 FILE:2: 'time'" + missing},
      {with("0.5", "1e300"), "0 FILE:2: 'time'" + missing},
      {with(":5", ":4294967296"), "0 FILE:2: 'id'" + missing},
      {with(":5", ":5,\"id\":6"), "0 FILE:2: An object has the key 'id' twice."},
      {with("\"method\":\"M\",", ""), "0 FILE:2: 'method'" + missing},
      {with("[1]", "1"), "0 FILE:2: 'arguments'" + missing},
      {with("\"arguments\"", "\"result\""), "0 FILE:2: 'arguments'" + missing},
      {with("to card", "up"), "0 FILE:2: 'way' is 'up', which this version does not know."},
      {with("request", "wish"), "0 FILE:2: 'kind' is 'wish', which this version does not know."},
      {with("\"arguments\":[1]", "\"packed\":[1]"), "0 FILE:2: 'packed'" + missing},
      {with("\"arguments\":[1]", "\"packed\":{\"base64\":\"kQEB\"}"),
       "0 FILE:2: 'packed' holds more than one value."},
      {with("\"arguments\":[1]", "\"packed\":{\"base64\":\"kQE=\"}"), "1 no failure"},
      {with("[1]", "[{\"base64\":\"?\"}]"), "0 FILE:2: A text in base64 is none."},
  };
  for (const auto& [content, expected] : files) EXPECT_EQ(Read(content), expected) << content.substr(0, 300);
}

TEST(SessionWriter, KeepsEveryFrameInTheOrderOfItsTime) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path + "/s";
  constexpr std::uint32_t Threads = 4;
  constexpr std::uint32_t Frames = 2000;
  const std::string large(300000, 'l');  // so that there is more than may wait
  SessionWriter writer(path, {"a test", "1.2", "34", true});
  Together(Threads, [&](std::uint32_t thread) {
    for (std::uint32_t i = 0; i < Frames; ++i) {
      const std::string frame = FrameOf(0, i, "M", std::make_tuple(i % 100 == 0 ? large : "s"));
      // In pieces, as requests are sent.
      const auto bytes = Unsigned(frame);
      writer.TakeFrame(thread, FrameWay::ToCard, {bytes.first(9), bytes.subspan(9, 1), bytes.subspan(10)});
    }
    writer.TakeOther(thread, FrameWay::ToCard, LineKind::Ended);
  });
  writer.Finish();
  writer.TakeFrame(0, FrameWay::ToCard, {});  // too late
  writer.Finish();
  SessionReader reader(path);
  EXPECT_EQ(reader.GetHead().By + reader.GetHead().Firmware + reader.GetHead().SerialNumber, "a test1.234");
  std::uint32_t next[Threads] = {};
  microseconds latest{};
  while (const auto line = reader.Next()) {
    EXPECT_GE(line->Head.Time, latest);
    latest = line->Head.Time;
    std::uint32_t& expected = next[line->Head.Connection];
    if (expected == Frames) {
      EXPECT_EQ(line->Head.Kind, LineKind::Ended);
    } else {
      ASSERT_EQ(line->Id, expected);
    }
    ++expected;
  }
  EXPECT_THAT(next, testing::Each(Frames + 1));
}

TEST(SessionWriter, SaysWhatItCouldNotWrite) {
  const SessionHead head{"a test", "", "", true};
  EXPECT_FAILURE(SessionWriter("/no/such/folder/s", head),
                 "Unable to open recording '/no/such/folder/s': No such file or directory");
  EXPECT_FAILURE(SessionWriter(Device("full"), head),
                 "Unable to write recording '" + Device("full") + "': No space left on device");
  // A pipe whose reader goes away, and one that is not read: neither holds anything up for good.
  const TemporaryDirectory directory;
  const std::string pipe = directory.Path + "/p";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const bool isRead : {false, true}) {
    Descriptor end(open(pipe.c_str(), O_RDONLY | O_NONBLOCK));
    SessionWriter writer(pipe, head);
    if (!isRead) end.Close();
    const std::string frame = Response(1, std::string(1 << 20, 'x'));
    for (int i = 0; i < 40; ++i) writer.TakeFrame(1, FrameWay::FromCard, {Unsigned(frame)});
    EXPECT_FAILURE(writer.Finish(), "Unable to write recording '" + pipe + "': " +
                                        (isRead ? "Resource temporarily unavailable" : "Broken pipe"));
  }
  // What is shared and not copied has its bounds, too: 64 MiB that wait, and as much of which lines are made.
  const Descriptor end(open(pipe.c_str(), O_RDONLY | O_NONBLOCK));
  SessionWriter writer(pipe, head);
  const auto shared = std::make_shared<const std::string>(8 << 20, 'x');
  const std::span<const unsigned char> none;
  long most = 0;
  for (int i = 0; i < 30; ++i) {
    writer.TakeFrame(1, FrameWay::ToCard, {none, Unsigned(*shared), none}, shared);
    most = std::max(most, shared.use_count());
  }
  EXPECT_LE(most, 1 + 2 * 64 / 8);
}

// Whoever reads, or the disk, is so slow that frames have to be left out: that is told in the recording and at its end.
TEST(SessionWriter, TellsWhatItLeftOut) {
  const TemporaryDirectory directory;
  const std::string pipe = directory.Path + "/p";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const auto shared = std::make_shared<const std::string>(8 << 20, 'x');
  const std::string small = Response(1, 2);
  const std::span<const unsigned char> none;
  std::string told;
  unsigned long inRecording = 0;
  // A reader that a busy machine holds up for a second ends the recording; then once more.
  for (int attempt = 0; attempt < 10 && told.find(" missing ") == std::string::npos; ++attempt) {
    Descriptor end(open(pipe.c_str(), O_RDONLY | O_NONBLOCK));
    SessionWriter writer(pipe, {"a test", "", "", true});
    std::atomic<bool> hurries{false};
    inRecording = 0;
    std::thread reader([&] {
      constexpr std::string_view Missing = "\"kind\":\"missing\",\"frames\":";
      std::string bytes(1 << 16, '\0'), line;
      for (ssize_t count = 1; count != 0;) {
        if (!hurries) std::this_thread::sleep_for(std::chrono::milliseconds(20));
        count = read(end.Get(), bytes.data(), bytes.size());
        for (std::string_view rest(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
             !rest.empty();) {
          const std::size_t lineEnd = std::min(rest.find('\n'), rest.size());
          if (line.size() < 200) line += rest.substr(0, lineEnd);
          rest.remove_prefix(lineEnd);
          if (rest.empty()) break;
          rest.remove_prefix(1);
          const std::size_t place = line.find(Missing);
          if (place != std::string::npos) inRecording += std::stoul(line.substr(place + Missing.size()));
          line.clear();
        }
      }
    });
    for (int i = 0; i < 20; ++i)
      writer.TakeFrame(1, FrameWay::ToCard, {none, Unsigned(*shared), none}, shared);
    hurries = true;
    // Sooner or later there is room again.
    for (int i = 0; i < 30; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      writer.TakeFrame(1, FrameWay::FromCard, {Unsigned(small)});
    }
    told = Failure([&] { writer.Finish(); });
    reader.join();
  }
  EXPECT_THAT(told, testing::MatchesRegex("[0-9]+ frames are missing in recording '" + pipe + "'\\."));
  EXPECT_EQ(inRecording, std::strtoul(told.c_str(), nullptr, 10)) << "each is told once";
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
