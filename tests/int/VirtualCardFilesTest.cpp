// The virtual card's files as clients have them open, what it refuses, and the oddities of handles of files.
#include "int/CardClient.h"
#include "services/FileHandle.h"
#include "services/OpticalParameters.h"

namespace VELTRO::KELVO::Test {
namespace {

namespace fs = std::filesystem;

using Bytes8 = std::vector<std::uint8_t>;

constexpr int Corr = 1, CreateNew = 1, Create = 2, Open = 3, OpenOrCreate = 4, Truncate = 5, Append = 6;

// A client with words for what it does to the files of corrections; "f" is the usual one.
struct FileClient : Client {
  using Client::Client;
  int OpenAs(int mode, const Text& name = "f") { return Call<int>("FileOpen", Corr, name, mode); }
  Text RefusalToOpen(int mode, const Text& name = "f") { return Refusal("FileOpen", Corr, name, mode); }
  void Write(int f, const Text& bytes) {
    Call("FileWrite", f, Bytes8(bytes.begin(), bytes.end()), static_cast<int>(bytes.size()));
  }
  std::size_t Read(int f, int count) { return Call<Bytes8>("FileRead", f, count).size(); }
  Text ReadText(int f) { return Call<Text>("FileReadText", f, 99); }
  Text ReadLine(int f) { return Call<Text>("FileReadTextLine", f); }
  void Close(int f) { Call("FileClose", f); }
  // Writes all of "f".
  void Put(const Text& bytes) {
    const int f = OpenAs(Create);
    Write(f, bytes);
    Close(f);
  }
};

// With files in memory, and with files on the disk.
class VirtualCardFiles : public testing::TestWithParam<bool> {
  const TemporaryDirectory state_;

 protected:
  const CardProcess card{GetParam() ? std::vector<Text>{"--state", state_.Path} : std::vector<Text>{}};
  FileClient c{card}, other{card};
};
INSTANTIATE_TEST_SUITE_P(OnDisk, VirtualCardFiles, testing::Bool());

TEST_P(VirtualCardFiles, AreOpenedAsTheirModesSay) {
  EXPECT_EQ(c.RefusalToOpen(Open), "There is no file 'f'.");
  EXPECT_EQ(c.RefusalToOpen(Truncate), "There is no file 'f'.");
  EXPECT_EQ(c.RefusalToOpen(7), "FileMode::_from_integral: invalid argument");
  c.Close(c.OpenAs(CreateNew));
  EXPECT_EQ(c.RefusalToOpen(CreateNew), "There is a file 'f' already.");
  c.Put("one");
  int f = c.OpenAs(Append);
  c.Write(f, "+");
  EXPECT_EQ(c.Refusal("FileRead", f, 1), "'f' is open for appending only.");
  c.Close(f);
  f = c.OpenAs(OpenOrCreate);
  c.Write(f, "ON");
  EXPECT_EQ(c.ReadText(f), "e+") << "behind what is written";
  c.Close(f);
  f = c.OpenAs(Open);
  EXPECT_EQ(c.Refusal("FileWrite", f, Bytes8(1), 1), "'f' is open for reading only.");
  EXPECT_EQ(c.ReadText(f), "ONe+");
  c.Close(f);
  c.Close(c.OpenAs(Truncate));
  EXPECT_EQ(c.ReadText(c.OpenAs(Open)), "");
}

TEST_P(VirtualCardFiles, AreListedFoundAndDeleted) {
  for (const Text name : {"f", "b"}) c.Close(c.OpenAs(Create, name));
  EXPECT_EQ(c.Call<std::vector<Text>>("GetFiles", Corr), (std::vector<Text>{"b", "f"}));
  for (const bool isThere : {true, false}) {
    EXPECT_EQ(c.Call<bool>("FileExists", Corr, Text("b")), isThere);
    EXPECT_EQ(c.Refusal("FileDelete", Corr, Text("b")), isThere ? "no failure" : "There is no file 'b'.");
  }
}

TEST_P(VirtualCardFiles, AreOfTheClientThatHasThemOpen) {
  const int f = c.OpenAs(CreateNew);
  const Text none = "There is no open file " + std::to_string(f) + ".";
  EXPECT_EQ(c.Call<int>("GetFileHandle", Corr, Text("f")), f);
  EXPECT_EQ(other.Call<int>("GetFileHandle", Corr, Text("f")), -1);
  EXPECT_EQ(other.RefusalToOpen(Open), "The file 'f' is open.");
  EXPECT_EQ(other.Refusal("FileDelete", Corr, Text("f")), "The file 'f' is open.");
  EXPECT_EQ(other.Refusal("FileGetSize", f), none);
  c.Close(f);
  EXPECT_EQ(c.Refusal("FileClose", f), none);
  const int first = c.OpenAs(Open), again = c.OpenAs(Open), others = other.OpenAs(Open);
  EXPECT_TRUE(again != first && others != first && others != again) << "many may read";
  EXPECT_EQ(c.RefusalToOpen(Append), "The file 'f' is open.");
}

TEST_P(VirtualCardFiles, AreReadInLinesTextsAndBytes) {
  int f = c.OpenAs(CreateNew);
  c.Write(f, "one\ntwo");
  c.Call("FileWriteTextLine", f, Text("!"));
  c.Call("FileWriteText", f, Text("end"));
  EXPECT_EQ(c.Call<std::int64_t>("FileGetSize", f), 12);
  EXPECT_EQ(c.ReadText(f), "") << "it is at its end";
  for (const int count : {4, -1}) {
    EXPECT_EQ(c.Refusal("FileWrite", f, Bytes8(3), count), "The count is not that of the bytes.");
  }
  c.Close(f);
  f = c.OpenAs(Open);
  EXPECT_EQ(c.Refusal("FileRead", f, -1), "The count is negative.");
  for (const char* line : {"one", "two!", "end", "", ""}) EXPECT_EQ(c.ReadLine(f), line);
  EXPECT_EQ(c.Read(f, 5), 0U);
  const int again = c.OpenAs(Open);
  EXPECT_EQ(c.Read(again, 0), 0U);
  EXPECT_EQ(c.Read(again, 2147483647), 12U);
}

TEST_P(VirtualCardFiles, AreReadInPiecesThatFitAFrame) {
  c.Put(Text(1000000, 'x'));
  const int f = c.OpenAs(Open);
  EXPECT_EQ(c.Refusal("FileReadTextLine", f), "A line of 'f' is too long.");
  EXPECT_EQ(c.Read(f, 1000000), 921600U);
}

TEST_P(VirtualCardFiles, AreClosedWithTheirConnection) {
  for (int i = 1; i <= 64; ++i) c.OpenAs(Create, "n" + std::to_string(i));
  EXPECT_EQ(c.RefusalToOpen(Create, "x"), "Too many files are open.");
  c.Disconnect();
  while (other.Refusal("FileDelete", Corr, Text("n63")) == "The file 'n63' is open.")
    std::this_thread::yield();
  EXPECT_EQ(other.Call<std::vector<Text>>("GetFiles", Corr).size(), 63U);
}

TEST(VirtualCardFolders, KeepNobodyWaitingWithWhatTheyAreFullOf) {
  const CardProcess card;
  FileClient c(card);
  const int f = c.OpenAs(Create, "head0Correction.kc7");
  Text keys = "{";
  for (int i = 0; keys.size() < (1 << 20) - 20; ++i) keys += "\"" + std::to_string(i) + "\":0,";
  keys += "\"end\":0}";
  for (std::size_t at = 0; at < keys.size(); at += 900000) c.Write(f, keys.substr(at, 900000));
  c.Close(f);
  const AtMost promptly(Sanitized ? 15000 : 5000);
  EXPECT_EQ(c.Call<OpticalParameters>("GetOpticalParametersHeadCorrection", 0, 0).XLayers, 1)
      << "they are none";
}

// The state of a card with things among its files that are none, and that lead out of it.
struct OddState {
  TemporaryDirectory State, Outside;
  const Text Corrections = State.Path + "/files/CORRFILES/";

  OddState() {
    std::ofstream(Outside.Path + "/secret") << "secret";
    fs::create_directories(Corrections + "folder");
    fs::create_symlink(Outside.Path + "/secret", Corrections + "link");
    fs::create_symlink(Outside.Path + "/new", Corrections + "dangling");
    fs::create_hard_link(Outside.Path + "/secret", Corrections + "hard");
    EXPECT_EQ(mkfifo((Corrections + "pipe").c_str(), 0666), 0);
  }
  ~OddState() {
    Text content;
    std::getline(std::ifstream(Outside.Path + "/secret"), content);
    EXPECT_EQ(content, "secret");
    EXPECT_FALSE(fs::exists(Outside.Path + "/new"));
  }
};

TEST(VirtualCardFolders, AreNoLinks) {
  const OddState odd;
  fs::create_directory_symlink(odd.Outside.Path, odd.State.Path + "/files/BINFILES");
  CardProcess refused({"--state", odd.State.Path});
  EXPECT_THAT(refused.GetFirstLine(), StartsWith("Cannot use '" + odd.State.Path + "/files/BINFILES': "));
  EXPECT_EQ(refused.End(0), 1);
}

TEST(VirtualCardFolders, AreNotLeftByNamesThatAreNone) {
  const OddState odd;
  const CardProcess card({"--state", odd.State.Path});
  FileClient c(card);
  const Text notAllowed = "The file name is not allowed.", longest(255, 'x');
  for (const Text& name :
       {Text(), Text("."), Text(".."), Text("../secret"), Text("a/b"), Text("a\\b"), Text("/etc/passwd"),
        Text("a..b"), Text("a\n"), Text("a\0b", 3), Text("\x7F"), longest + "x"}) {
    for (const int mode : {Create, Open, Truncate, Append})
      EXPECT_EQ(c.RefusalToOpen(mode, name), notAllowed) << name << mode;
    EXPECT_EQ(c.Refusal("FileDelete", Corr, name), notAllowed) << name;
    EXPECT_EQ(c.Refusal("FileExists", Corr, name), notAllowed) << name;
  }
  EXPECT_GE(c.OpenAs(Create, longest), 0);
  EXPECT_EQ(c.Call<std::vector<Text>>("GetFiles", Corr), std::vector<Text>{longest});
}

TEST(VirtualCardFolders, AreNotLeftByWhatIsNoPlainFile) {
  const OddState odd;
  const CardProcess card({"--state", odd.State.Path});
  FileClient c(card);
  for (const Text name : {"link", "dangling", "hard", "pipe", "folder"}) {
    for (const int mode : {Create, Open, Truncate, Append})
      EXPECT_EQ(c.RefusalToOpen(mode, name), "'" + name + "' is no plain file.") << mode;
    EXPECT_EQ(c.Refusal("FileDelete", Corr, name), "There is no file '" + name + "'.");
    EXPECT_FALSE(c.Call<bool>("FileExists", Corr, name)) << name;
  }
  EXPECT_EQ(c.Call<std::vector<Text>>("GetFiles", Corr), std::vector<Text>{});
  EXPECT_EQ(c.Refusal("SetHeadCorrection", 0, 0), "There is no file '_tmpHeadCorrection0.kc7'.");
}

TEST(FileHandles, SendAsMuchAsTheyMay) {
  const std::vector<std::uint8_t> bytes(3 * 921600, 7);
  const std::tuple<int, const char*, std::size_t, std::string> rows[] = {
      // count, failure, calls and the last one's end
      {0, "no failure", 1, "C4 00 00"},
      {1, "no failure", 1, "C4 01 07 01"},
      {921600, "no failure", 1, "07 CE 00 0E 10 00"},
      {2 * 921600, "no failure", 2, "93 05 C4 00 CE 00 0E 10 00"},
      {921601, "cannot create std::vector larger than max_size()", 1, "07 CE 00 0E 10 00"},
      {3 * 921600, "cannot create std::vector larger than max_size()", 2, "93 05 C4 00 CE 00 0E 10 00"},
  };
  for (const auto& [count, failure, calls, end] : rows) {
    CallRecorder caller;
    EXPECT_EQ(Failure([&, count = count] { FileHandle(caller, 5).Write(bytes.data(), count); }), failure);
    ASSERT_EQ(caller.Calls.size(), calls + 1) << "one closes the file";
    EXPECT_TRUE(
        Hex(caller.Calls[calls - 1].substr(std::max<std::size_t>(caller.Calls[calls - 1].size(), 20) - 20))
            .ends_with(end))
        << count;
    EXPECT_EQ(Hex(caller.Calls.back()), "91 05");
  }
}

// Notes which answers are waited for; a silent card gives none.
struct WaitRecorder : CallRecorder {
  explicit WaitRecorder(bool silent) : IsSilent(silent) {}
  void Perform(RemoteCall& call) override {
    Waits += call.IsAwaited() ? "awaited " : "told ";
    if (IsSilent) throw std::runtime_error("Response was not received in the given timespan.");
    CallRecorder::Perform(call);
  }
  const bool IsSilent;
  std::string Waits;
};

TEST(FileHandles, WaitForTheirCloseUnlessTheCardHasLeftACallUnanswered) {
  for (const bool silent : {false, true}) {
    WaitRecorder caller(silent);
    Failure([&] { FileHandle(caller, 5).WriteTextLine("a"); });
    EXPECT_EQ(caller.Waits, silent ? "awaited told " : "awaited awaited ");
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
