// Files and corrections through the flat functions: on a virtual card in another process, and on cards that misbehave.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <random>
#include <sstream>
#include <tuple>

#include "int/CardProcess.h"
#include "support/FakeCard.h"
#include "support/Process.h"

namespace VELTRO::KELVO::Test {
namespace {

namespace fs = std::filesystem;

struct Folder : TemporaryDirectory {
  std::string operator/(const std::string& name) const { return Path + "/" + name; }
  // Its files and what is in them; "name=content ".
  std::string Content() const {
    std::string text;
    for (const auto& entry : fs::directory_iterator(Path))
      text += entry.path().filename().string() + "=" + Read(entry.path()) + " ";
    return text;
  }
  static std::string Read(const fs::path& path) {
    return {std::istreambuf_iterator<char>(std::ifstream(path, std::ios::binary).rdbuf()), {}};
  }
  static void Write(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
  }
};

std::string Noise(std::size_t size) {
  std::string bytes(size, '\0');
  std::mt19937 random(static_cast<unsigned>(size));
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

// The result of a call, or the text of its failure without what stands around a card's.
std::string Outcome(std::int64_t result) {
  const std::string error = LastError();
  const std::size_t begin = error.find("----\n") == std::string::npos ? 0 : error.find('\n') + 1;
  return error.empty() ? std::to_string(result) : error.substr(begin, error.find('\n', begin) - begin);
}

// The outcome and, behind it, what the call has written: it is looked at after the call.
template <class... Values>
std::string Told(std::int64_t result, const Values&... values) {
  std::ostringstream text;
  text << Outcome(result);
  ((text << " " << values), ...);
  return text.str();
}

// A card with one file that keeps what it is asked and does one thing wrong.
struct FileCard {
  std::string Content, Wrong{};  // the method whose answer is Answer in place of the right one
  std::function<std::string(const Request&)> Answer{};
  std::atomic<int> Cut = -1;  // the request at which the connection ends
  std::mutex Mutex{};
  std::string Calls{};
  // The methods as they came since the last time, or after `count` characters of them.
  std::string TakeCalls(std::size_t count = 0) {
    for (;; std::this_thread::yield()) {
      const std::lock_guard lock(Mutex);
      if (Calls.size() >= count) return std::exchange(Calls, "");
    }
  }
  FakeCard Card{[this](Peer& peer) {
    int number = 0;
    std::size_t position = 0;
    if (!peer.Handshake()) return;
    for (Request r; peer.Next(r);) {
      {
        const std::lock_guard lock(Mutex);
        Calls += r.Method + " ";
      }
      if (number++ == Cut) return;
      if (r.Method == Wrong) {
        peer.Send(Answer(r));
      } else if (r.Method == "GetFileHandle") {
        peer.Send(Response(r.Id, -1));
      } else if (r.Method == "FileOpen") {
        peer.Send(Response(r.Id, 5)), position = 0;
      } else if (r.Method == "FileGetSize") {
        peer.Send(Response(r.Id, Content.size()));
      } else if (r.Method == "FileRead") {
        const auto count = std::get<1>(r.Arguments->as<std::tuple<int, std::size_t>>());
        const std::string piece = Content.substr(position, count);
        position += piece.size();
        peer.Send(Response(r.Id, std::vector<unsigned char>(piece.begin(), piece.end())));
      } else if (r.Method.ends_with("Exists")) {
        peer.Send(Response(r.Id, true));
      } else {
        peer.Send(Response(r.Id, msgpack::type::nil_t()));
      }
    }
  }};
};

// As many a line as fit.
// clang-format off
TEST(Files, ComeBackAsTheyWereSent) {
  const CardProcess card;
  const Connection c(card.GetPort());
  const Folder folder;
  struct Progress { std::uint64_t calls = 0, moved = 0, whole = 0; };
  constexpr vlFileProgressCallback Count = [](void* user, std::uint64_t moved, std::uint64_t whole) {
    Progress& progress = *static_cast<Progress*>(user);
    const bool isNext = moved == std::min<std::uint64_t>(progress.moved + 8192, whole);
    progress = {progress.calls + 1, moved, whole};
    return isNext;
  };
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{8191}, std::size_t{8192}, std::size_t{8193}, std::size_t{64} << 20}) {
    const std::string bytes = Noise(size);
    Folder::Write(folder / "sent", bytes);
    Progress sent, received;
    EXPECT_EQ(Outcome(vlFilePut(c, vlDirectorySelector_JOBFILES, "file", (folder / "sent").c_str(), Count, &sent)), "0") << size;
    EXPECT_EQ(Outcome(vlFileGet(c, vlDirectorySelector_JOBFILES, "file", (folder / "back").c_str(), Count, &received)), "0") << size;
    EXPECT_TRUE(Folder::Read(folder / "back") == bytes) << size;
    for (const Progress& p : {sent, received}) EXPECT_TRUE(p.calls == (size + 8191) / 8192 && p.moved == size && p.whole == size) << size;
  }
  EXPECT_EQ(ResidentBytes() < (std::size_t{200} << 20) || Sanitized, true) << "of which the test takes two times 64 MiB";
  Folder::Write(folder / "small", "x");
  char names[8] = "";
  std::uint32_t length = 0, count = 0;
  bool exists = false;
  const std::pair<std::string, std::string> steps[] = {
      {Outcome(vlFilePut(c, vlDirectorySelector_JOBFILES, "b", (folder / "small").c_str(), nullptr, nullptr)), "0"}, {Outcome(vlFileGetFiles(c, vlDirectorySelector_JOBFILES, names, 6, &length, &count)), "Buffer is too small."},
      {Outcome(vlFileGetFiles(c, vlDirectorySelector_JOBFILES, nullptr, 0, &length, &count)), "0"}, {Outcome(vlFileGetFiles(c, vlDirectorySelector_JOBFILES, names, length, &length, &count)), "0"},
      {std::string(names, length) + std::to_string(count), std::string("b\0file\0", 7) + "2"}, {Outcome(vlFileDelete(c, vlDirectorySelector_JOBFILES, "b")), "0"}, {Outcome(vlFileDelete(c, vlDirectorySelector_JOBFILES, "b")), "There is no file 'b'."},
      {Told(vlFileExists(c, vlDirectorySelector_JOBFILES, "b", &exists), exists), "0 0"}, {Told(vlFileExists(c, vlDirectorySelector_JOBFILES, "file", &exists), exists), "0 1"},
      {Outcome(vlFileGet(c, vlDirectorySelector_JOBFILES, "b", (folder / "new").c_str(), nullptr, nullptr)), "There is no file 'b'."}, {Outcome(vlFileGet(c, 9, "b", "/", nullptr, nullptr)), "DirectorySelector::_from_integral: invalid argument"},
      {std::to_string(fs::exists(folder / "new")), "0"},
  };
  for (const auto& [outcome, expected] : steps) EXPECT_EQ(outcome, expected) << &outcome - &steps[0].first;
}

TEST(Files, EndInATextAndCloseTheCardsFileWhateverGoesWrong) {
  const auto answer = [](auto value) { return [=](const Request& r) { return Response(r.Id, value); }; };
  const auto bytes = [&](std::size_t count) { return answer(std::vector<unsigned char>(count, 'x')); };
  const auto refused = [](const Request& r) { return ErrorResponse(r.Id, "Refused."); };
  const auto silence = [](const Request&) { return std::string(); };
  constexpr vlFileProgressCallback Cancel = [](void* left, std::uint64_t, std::uint64_t) { return --*static_cast<int*>(left) > 0; };
  const std::string up = "GetFileHandle FileOpen ", down = "FileOpen FileGetSize ", end = "FileClose ", full = Device("full"), null = Device("null");
  struct Row {
    bool isUpload;
    const char* wrong;
    std::function<std::string(const Request&)> answer;
    std::string error, calls;
    std::size_t size = 20000;
    int chunks = 99;  // after which the callback ends it
    const char* local = nullptr;
  };
  const Row rows[] = {
      {true, "", silence, "0", up + "FileWrite FileWrite FileWrite " + end}, {true, "", silence, "0", up + end, 0}, {true, "", silence, "0", up + "FileWrite FileWrite " + end, 8193},
      {true, "GetFileHandle", answer(0), "0", "GetFileHandle FileClose FileOpen FileWrite " + end, 8192}, {true, "GetFileHandle", refused, "Refused.", "GetFileHandle "},
      {true, "FileOpen", refused, "Refused.", up}, {true, "FileWrite", refused, "Refused.", up + "FileWrite " + end}, {true, "", silence, "The transfer was cancelled.", up + "FileWrite FileWrite " + end, 20000, 2},
      {true, "FileWrite", silence, "Response was not received in the given timespan.", up + "FileWrite " + end}, {true, "FileClose", refused, "0", up + "FileWrite " + end, 5},
      {true, "", silence, "Error in stream", up + end, 5, 99, "/proc/self/mem"}, {true, "", silence, "Unable to open the local file!", "", 5, 99, "/tmp"},
      {true, "", silence, "Unable to open the local file!", "", 5, 99, "/no/such"},
      {false, "", silence, "0", down + "FileRead FileRead FileRead " + end}, {false, "", silence, "0", down + end, 0}, {false, "FileRead", bytes(3), "0", down + "FileRead FileRead FileRead " + end, 9},
      {false, "FileRead", bytes(0), "The card's file ended early.", down + "FileRead " + end}, {false, "FileRead", bytes(8193), "The card sent more than it was asked for.", down + "FileRead " + end},
      {false, "FileRead", answer(std::vector<int>{1}), "std::bad_cast", down + "FileRead " + end}, {false, "FileRead", silence, "Response was not received in the given timespan.", down + "FileRead " + end},
      {false, "FileGetSize", answer(-1), "std::bad_cast", down + end}, {false, "FileGetSize", refused, "Refused.", down + end}, {false, "FileOpen", answer("x"), "std::bad_cast", "FileOpen "},
      {false, "", silence, "The transfer was cancelled.", down + "FileRead FileRead FileRead " + end, 20000, 3}, {false, "", silence, "Error in stream", down + "FileRead " + end, 5, 99, full.c_str()},
      {false, "", silence, "0", down + "FileRead " + end, 5, 99, null.c_str()}, {false, "", silence, "Unable to open the local file!", "", 5, 99, "/tmp"},
      {false, "", silence, "Unable to open the local file!", "", 5, 99, "/tmp/no/such"}, {false, "", silence, "Unable to open the local file!", "", 5, 99, "/no/"}, {false, "", silence, "Unable to open the local file!", "", 5, 99, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    const Folder folder;
    FileCard card{std::string(row.size, 'x'), row.wrong, row.answer};
    const std::string local = row.local ? row.local : folder / "local", before = row.isUpload ? card.Content : "before";
    Folder::Write(folder / "local", before);
    fs::permissions(folder / "local", fs::perms(0640));
    {
      const Connection c(card.Card.Port());
      EXPECT_EQ(vlSetTimeout(c, row.answer(Request()).empty() && *row.wrong ? 700 : 5000), 0);
      const std::size_t descriptors = OpenDescriptors();
      int chunks = row.chunks;
      const Stopwatch watch;
      EXPECT_EQ(Outcome((row.isUpload ? vlFilePut : vlFileGet)(c, vlDirectorySelector_CORRFILES, "file", local.c_str(), Cancel, &chunks)), row.error);
      EXPECT_LT(watch.Milliseconds(), 1390) << "it waited twice";
      EXPECT_EQ(OpenDescriptors(), descriptors);
    }
    const bool isReplaced = !row.isUpload && row.error == "0" && !row.local;
    EXPECT_EQ(folder.Content(), "local=" + (isReplaced ? card.Content : before) + " ");
    EXPECT_EQ(fs::status(folder / "local").permissions(), fs::perms(0640));
    EXPECT_EQ(card.TakeCalls(row.calls.size()), row.calls) << "a close that nobody waits for is on its way";
  }
}

TEST(Files, AreNotWaitedForWithoutEnd) {
  struct Row { std::size_t size, answer; int pause, work; const char* outcome; };  // bytes; milliseconds of the card for an answer, and of the callback
  const Row rows[] = {
      {20000, 1, 40, 0, "The card sends the file too slowly."}, {8192 + 20, 1000, 150, 0, "The card sends the file too slowly."}, {8192 + 20, 8192, 300, 0, "0"},
      {20000, 4096, 150, 0, "0"}, {5000, 50, 0, 0, "0"}, {20, 5, 0, 400, "0"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    const Folder folder;
    std::size_t left = row.size;
    FileCard card{std::string(row.size, 'x'), "FileRead", [&](const Request& r) {
      std::this_thread::sleep_for(std::chrono::milliseconds(row.pause));
      const std::size_t count = std::min({row.answer, left, std::size_t{std::get<1>(r.Arguments->as<std::tuple<int, unsigned>>())}});
      left -= count;
      return Response(r.Id, std::vector<unsigned char>(count, 'x'));
    }};
    const Connection c(card.Card.Port());
    constexpr std::uint32_t Timeout = 1000;
    EXPECT_EQ(vlSetTimeout(c, Timeout), 0);
    int work = row.work;
    constexpr vlFileProgressCallback Work = [](void* milliseconds, std::uint64_t, std::uint64_t) {
      std::this_thread::sleep_for(std::chrono::milliseconds(*static_cast<int*>(milliseconds)));
      return true;
    };
    const Stopwatch watch;
    EXPECT_EQ(Outcome(vlFileGet(c, 1, "file", (folder / "local").c_str(), Work, &work)), row.outcome);
    EXPECT_LT(watch.Milliseconds(), 3 * Timeout);
    EXPECT_EQ(folder.Content().empty(), std::string(row.outcome) != "0");
  }
}

TEST(Files, AreNotFetchedBeyondTheRoomOnTheDisk) {
  const Folder folder;
  FileCard card{"", "FileGetSize", [](const Request& r) { return Response(r.Id, std::uint64_t{1} << 62); }};
  const Connection c(card.Card.Port());
  EXPECT_EQ(Outcome(vlFileGet(c, 1, "file", (folder / "local").c_str(), nullptr, nullptr)), "The local disk has no room for the file.");
  EXPECT_EQ(card.TakeCalls(), "FileOpen FileGetSize FileClose ");
  EXPECT_EQ(folder.Content(), "");
  EXPECT_EQ(Outcome(vlFileGet(c, 1, "file", Device("null").c_str(), nullptr, nullptr)), "The card's file ended early.");
}

TEST(Files, SurviveTheEndOfTheConnectionAnywhere) {
  const Folder folder;
  const std::string content = Noise(5 * 8192 + 100);
  FileCard card{content};
  for (const bool isUpload : {true, false}) {
    const auto transfer = [&](std::int32_t c) { return (isUpload ? vlFilePut : vlFileGet)(c, vlDirectorySelector_CORRFILES, "file", (folder / "local").c_str(), nullptr, nullptr); };
    const int calls = 2 + 6;
    for (int cut = 0; cut < calls; ++cut) {
      Folder::Write(folder / "local", "before");
      if (isUpload) Folder::Write(folder / "local", content);
      card.Cut = cut;
      const Connection broken(card.Card.Port());
      const std::size_t descriptors = OpenDescriptors();
      const Stopwatch watch;
      EXPECT_EQ(transfer(broken), -1) << cut;
      EXPECT_EQ(LastError(), "ConnectionAborted") << cut;
      EXPECT_LT(watch.Milliseconds(), 2000) << cut;
      EXPECT_LE(OpenDescriptors(), descriptors) << cut;
      EXPECT_EQ(folder.Content(), isUpload ? "local=" + content + " " : "local=before ") << cut;
      card.Cut = -1;
      const Connection sound(card.Card.Port());
      EXPECT_EQ(Outcome(transfer(sound)), "0") << cut;
      EXPECT_TRUE(Folder::Read(folder / "local") == content) << cut;
    }
  }
}

TEST(Corrections, HaveTheirSizeLimitsToTheByte) {
  const Folder folder;
  const std::string path = folder / "sparse", none = folder / "none";
  FileCard card{"", "FileOpen", [](const Request& r) { return ErrorResponse(r.Id, "Refused."); }};
  const Connection c(card.Card.Port());
  const auto head = [c = std::int32_t{c}](const char* file) { return vlHeadCorrectionSet(c, 1, 3, file); };
  const auto power = [c = std::int32_t{c}](const char* file) { return vlPowerCorrectionSet(c, file); };
  const std::tuple<std::function<std::int32_t(const char*)>, off_t, bool> rows[] = {
      {head, 134217728, true}, {head, 134217729, false}, {power, 34900811784, true}, {power, 34900811785, false}};
  for (const auto& [set, size, isAccepted] : rows) {
    Folder::Write(path, "");
    ASSERT_EQ(truncate(path.c_str(), size), 0);
    EXPECT_EQ(Outcome(set(path.c_str())), isAccepted ? "Refused." : "Unexpected filesize") << size;
    EXPECT_EQ(card.TakeCalls(), isAccepted ? "GetFileHandle FileOpen " : "") << size;
    EXPECT_EQ(Outcome(set(none.c_str())), "Unexpected filesize");
  }
}

TEST(Corrections, TellHowFarTheyAreAndCanBeStopped) {
  const Folder folder;
  const std::string path = folder / "local", exists = "HeadCorrectionExists ", power = "GetPowerCorrection FileExists ";
  const std::string up = "GetFileHandle FileOpen FileWrite ", down = "FileOpen FileGetSize FileRead ";
  FileCard card{std::string(20000, 'x'), "", {}};
  const Connection c(card.Card.Port());
  using Told = std::vector<std::uint64_t>;
  constexpr vlFileProgressCallback Tell = [](void* user, std::uint64_t moved, std::uint64_t whole) {
    Told& told = *static_cast<Told*>(user);
    told.insert(told.end(), {moved, whole});
    return told[0] != 0 || told.size() < 3;
  };
  const std::tuple<std::function<std::int32_t(Told&)>, std::string, const char*> rows[] = {
      {[&](Told& t) { return vlHeadCorrectionSetWithProgress(c, 1, 3, path.c_str(), Tell, &t); }, up, "SetHeadCorrection "},
      {[&](Told& t) { return vlHeadCorrectionGetWithProgress(c, 1, 3, path.c_str(), Tell, &t); }, exists + down, ""},
      {[&](Told& t) { return vlPowerCorrectionSetWithProgress(c, path.c_str(), Tell, &t); }, up, "SetPowerCorrection "},
      {[&](Told& t) { return vlPowerCorrectionGetWithProgress(c, path.c_str(), Tell, &t); }, power + down, ""},
  };
  for (const auto& [transfer, calls, end] : rows) {
    const std::string again = calls.ends_with("FileWrite ") ? "FileWrite " : "FileRead ";
    Folder::Write(path, card.Content);
    Told whole{1}, stopped{0};  // the first number says whether to go on
    EXPECT_EQ(Outcome(transfer(whole)), "0") << calls;
    EXPECT_EQ(whole, (Told{1, 8192, 20000, 16384, 20000, 20000, 20000})) << calls;
    EXPECT_EQ(card.TakeCalls(), calls + again + again + "FileClose " + end);
    EXPECT_EQ(Outcome(transfer(stopped)), "The transfer was cancelled.") << calls;
    EXPECT_EQ(stopped, (Told{0, 8192, 20000})) << calls;
    EXPECT_EQ(card.TakeCalls(), calls + "FileClose ");
  }
}

TEST(Corrections, AreKeptByTheVirtualCard) {
  const Folder folder;
  const auto at = [&](const char* name) { return folder / name; };
  vlOpticalParameters p{}, q{};
  char json[4000] = "", hash[20] = "";
  std::uint32_t length = 0;
  std::int32_t slot = 0;
  bool exists = false;
  EXPECT_EQ(vlHeadCorrectionInitOpticalParameters(&p), 0);
  p.XLayers = 4, p.HeadFormat = vlScanHeadFormat_VL3_Dual3D, p.InputOffset.M = 0.5;
  EXPECT_EQ(Outcome(vlOpticalParametersToJson(&p, json, 4000, &length)), "0");
  EXPECT_EQ(Outcome(vlOpticalParametersToJson(&p, json, length + 1, &length)), "Buffer is too small.");
  Folder::Write(at("json"), json), Folder::Write(at("other"), "abc");
  for (int round = 0; round < 2; ++round) {  // in the second one the card has been started anew
    const CardProcess card({"--state", at("state")});
    const Connection c(card.GetPort());
    const auto put = [&](const char* name, const char* file) { return Outcome(vlFilePut(c, vlDirectorySelector_CORRFILES, name, at(file).c_str(), nullptr, nullptr)); };
    const std::pair<std::string, std::string> heads[] = {
        {Told(vlHeadCorrectionGetSelectedCorrection(c, 1, &slot), slot), round == 0 ? "0 -1" : "0 3"},
        {Outcome(vlHeadCorrectionSet(c, 1, 3, at("json").c_str())), "0"}, {Outcome(vlHeadCorrectionSet(c, 0, 7, at("other").c_str())), "0"},
        {Outcome(vlHeadCorrectionSet(c, 2, 0, at("other").c_str())), "There is no head correction slot 2, 0."}, {Told(vlFileExists(c, vlDirectorySelector_CORRFILES, "head7Correction.kc7", &exists), exists), "0 1"},
        {Outcome(vlHeadCorrectionGet(c, 0, 7, at("back").c_str())), "0"}, {Folder::Read(at("back")), "abc"}, {Outcome(vlHeadCorrectionGet(c, 0, 6, at("none").c_str())), "The requested head correction does not exist on the card."},
        {Told(vlHeadCorrectionGetHash(c, 0, 7, hash, 18, &length), hash), "0 e71fa2190541574b"}, {Outcome(vlHeadCorrectionGetHash(c, 0, 7, hash, 17, &length)), "Buffer is too small."},
        {Told(vlHeadCorrectionGetOpticalParameters(c, 0, 7, &q), q.XLayers, q.FieldSize.X, q.Hash), "0 1 65536 e71fa2190541574b"}, {Told(vlHeadCorrectionGetOpticalParameters(c, 1, 3, &q), q.XLayers, q.InputOffset.M), "0 4 0.5"},
        {Outcome(vlHeadCorrectionSelectCorrection(c, 1, 2)), "There is no head correction 1, 2."}, {Outcome(vlHeadCorrectionSelectCorrection(c, 1, 3)), "0"}, {Outcome(vlHeadCorrectionSelectCorrection(c, 0, 7)), "0"},
        {Outcome(vlHeadCorrectionStore(c)), "0"}, {Outcome(vlHeadCorrectionDelete(c, 0, 7)), "0"}, {Outcome(vlHeadCorrectionDelete(c, 0, 7)), "There is no head correction 0, 7."},
        {Outcome(vlHeadCorrectionLoad(c)), "0"}, {Told(vlHeadCorrectionGetSelectedCorrection(c, 0, &slot), slot), "0 -1"}, {Told(vlHeadCorrectionGetSelectedCorrection(c, 1, &slot), slot), "0 3"},
        {Told(vlHeadCorrectionExists(c, 1, 3, &exists), exists), "0 1"}, {Outcome(vlOpticalParametersFromJson(json, &q)), "0"},
    };
    for (const auto& [outcome, expected] : heads) EXPECT_EQ(outcome, expected) << &outcome - &heads[0].first << " " << round;
    EXPECT_EQ(Outcome(vlPowerCorrectionGet(c, at("first").c_str())), round == 0 ? "No power correction exists on the card." : "0");
    const std::string bad = "'_tmpPowerCorrection.kc7' is no power correction.";
    const std::pair<std::string, std::string> power[] = {
        {Outcome(vlPowerCorrectionCreate(c, &p)), "0"}, {Outcome(vlPowerCorrectionChangeValue(c, 1, 2, 3, 0.5)), "0"}, {Outcome(vlPowerCorrectionStore(c)), "0"},
        {Outcome(vlPowerCorrectionChangeValue(c, 1, 2, 3, 0.25)), "0"}, {Outcome(vlPowerCorrectionGet(c, at("table").c_str())), "0"}, {Outcome(vlPowerCorrectionLoad(c)), "0"},
        {Outcome(vlPowerCorrectionGet(c, at("stored").c_str())), "0"}, {std::to_string(Folder::Read(at("stored")) == Folder::Read(at("table"))), "0"}, {Outcome(vlPowerCorrectionSet(c, at("table").c_str())), "0"},
        {Told(vlFileExists(c, vlDirectorySelector_CORRFILES, "_tmpPowerCorrection.kc7", &exists), exists), "0 0"}, {Outcome(vlPowerCorrectionGet(c, at("again").c_str())), "0"},
        {std::to_string(Folder::Read(at("again")) == Folder::Read(at("table"))), "1"}, {Outcome(vlPowerCorrectionSet(c, at("other").c_str())), bad}, {put("_tmpPowerCorrection.kc7", "json"), "0"},
        {Told(vlPowerCorrectionGetOpticalParameters(c, &q), q.XLayers), "0 4"}, {Outcome(vlPowerCorrectionChangeValue(c, 1, 2, 3, 1 / 0.)), "The power correction has no finite place and value there."},
    };
    for (const auto& [outcome, expected] : power) EXPECT_EQ(outcome, expected) << &outcome - &power[0].first << " " << round;
  }
}
// clang-format on

}  // namespace
}  // namespace VELTRO::KELVO::Test
