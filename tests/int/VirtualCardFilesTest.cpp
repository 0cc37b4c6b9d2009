// The virtual card's files as clients have them open, and what it refuses.
#include <sys/stat.h>

#include <filesystem>
#include <thread>

#include "int/CardClient.h"
#include "services/OpticalParameters.h"

namespace VELTRO::KELVO::Test {
namespace {

namespace fs = std::filesystem;

using Bytes8 = std::vector<std::uint8_t>;

constexpr int Corr = 1, CreateNew = 1, Create = 2, Open = 3, OpenOrCreate = 4, Truncate = 5, Append = 6;

TEST(VirtualCardFiles, AreOpenedReadAndWrittenAsTheirModesSay) {
  const TemporaryDirectory state;
  for (const bool onDisk : {false, true}) {
    const CardProcess card(onDisk ? std::vector<Text>{"--state", state.Path} : std::vector<Text>{});
    Client c(card), other(card);
    const auto open = [&](int mode, const Text& name = "f") { return c.Call<std::int32_t>("FileOpen", Corr, name, mode); };
    const auto text = [&](int handle) { return c.Call<Text>("FileReadText", handle, 99); };
    const auto write = [&](int handle, const Text& bytes) { c.Call("FileWrite", handle, Bytes8(bytes.begin(), bytes.end()), static_cast<int>(bytes.size())); };
    EXPECT_EQ(c.Refusal("FileOpen", Corr, Text("f"), Open), "There is no file 'f'.");
    EXPECT_EQ(c.Refusal("FileOpen", Corr, Text("f"), Truncate), "There is no file 'f'.");
    EXPECT_EQ(c.Refusal("FileOpen", Corr, Text("f"), 7), "FileMode::_from_integral: invalid argument");
    int f = open(CreateNew);
    EXPECT_EQ(c.Call<int>("GetFileHandle", Corr, Text("f")), f);
    EXPECT_EQ(other.Call<int>("GetFileHandle", Corr, Text("f")), -1);
    for (const char* method : {"FileOpen", "FileDelete"}) {
      EXPECT_EQ(Text(method) == "FileOpen" ? other.Refusal(method, Corr, Text("f"), Open) : other.Refusal(method, Corr, Text("f")), "The file 'f' is open.");
    }
    EXPECT_EQ(other.Refusal("FileGetSize", f), "There is no open file " + std::to_string(f) + ".");
    write(f, "one\ntwo"), c.Call("FileWriteTextLine", f, Text("!")), c.Call("FileWriteText", f, Text("end"));
    EXPECT_EQ(c.Refusal("FileWrite", f, Bytes8(3), 4), "The count is not that of the bytes.");
    EXPECT_EQ(c.Refusal("FileWrite", f, Bytes8(3), -1), "The count is not that of the bytes.");
    EXPECT_TRUE(c.Call<std::int64_t>("FileGetSize", f) == 12 && text(f).empty()) << "it is at its end";
    c.Call("FileClose", f);
    EXPECT_EQ(c.Refusal("FileClose", f), "There is no open file " + std::to_string(f) + ".");
    EXPECT_EQ(c.Refusal("FileOpen", Corr, Text("f"), CreateNew), "There is a file 'f' already.");
    f = open(Open);
    const int again = open(Open), others = other.Call<int>("FileOpen", Corr, Text("f"), Open);
    EXPECT_TRUE(again != f && others != f && others != again);
    EXPECT_EQ(c.Refusal("FileOpen", Corr, Text("f"), Append), "The file 'f' is open.");
    EXPECT_EQ(c.Refusal("FileWrite", f, Bytes8(1), 1), "'f' is open for reading only.");
    EXPECT_EQ(c.Refusal("FileRead", f, -1), "The count is negative.");
    for (const char* line : {"one", "two!", "end", "", ""}) EXPECT_EQ(c.Call<Text>("FileReadTextLine", f), line);
    EXPECT_TRUE(c.Call<Bytes8>("FileRead", f, 5).empty() && c.Call<Bytes8>("FileRead", again, 0).empty());
    EXPECT_EQ(c.Call<Bytes8>("FileRead", again, 2147483647).size(), 12U);
    c.Call("FileClose", f), c.Call("FileClose", again), other.Call("FileClose", others);
    f = open(Append), write(f, "+");
    EXPECT_EQ(c.Refusal("FileRead", f, 1), "'f' is open for appending only.");
    c.Call("FileClose", f), f = open(OpenOrCreate), write(f, "ONE");
    EXPECT_EQ(text(f), "\ntwo!\nend+");
    c.Call("FileClose", f), f = open(Truncate), write(f, Text(1000000, 'x')), c.Call("FileClose", f), f = open(Open);
    EXPECT_EQ(c.Refusal("FileReadTextLine", f), "A line of 'f' is too long.");
    EXPECT_EQ(c.Call<Bytes8>("FileRead", f, 1000000).size(), 921600U);
    for (int i = 1; i < 64; ++i) open(Create, "n" + std::to_string(i));
    EXPECT_EQ(c.Refusal("FileOpen", Corr, Text("x"), Create), "Too many files are open.");
    c.Disconnect();  // its files are closed with it
    while (other.Refusal("FileDelete", Corr, Text("n63")) == "The file 'n63' is open.") std::this_thread::yield();
    EXPECT_EQ(other.Call<std::vector<Text>>("GetFiles", Corr).size(), 63U);
  }
}

TEST(VirtualCardFiles, KeepNobodyWaitingWithWhatTheyAreFullOf) {
  const CardProcess card;
  Client c(card);
  const int f = c.Call<int>("FileOpen", Corr, Text("head0Correction.kc7"), Create);
  Text keys = "{";
  for (int i = 0; keys.size() < (1 << 20) - 20; ++i) keys += "\"" + std::to_string(i) + "\":0,";
  keys += "\"end\":0}";
  for (std::size_t at = 0; at < keys.size(); at += 900000) {
    const Text piece = keys.substr(at, 900000);
    c.Call("FileWrite", f, Bytes8(piece.begin(), piece.end()), static_cast<int>(piece.size()));
  }
  c.Call("FileClose", f);
  const Stopwatch watch;
  EXPECT_EQ(c.Call<OpticalParameters>("GetOpticalParametersHeadCorrection", 0, 0).XLayers, 1) << "they are none";
  EXPECT_LT(watch.Milliseconds(), 5000);
}

TEST(VirtualCardFiles, AreNowhereButInTheirFolder) {
  const TemporaryDirectory state, outside;
  std::ofstream(outside.Path + "/secret") << "secret";
  const Text folder = state.Path + "/files/CORRFILES/";
  fs::create_directories(folder + "folder");
  fs::create_symlink(outside.Path + "/secret", folder + "link"), fs::create_symlink(outside.Path + "/new", folder + "dangling");
  fs::create_hard_link(outside.Path + "/secret", folder + "hard"), fs::create_directory_symlink(outside.Path, state.Path + "/files/BINFILES");
  EXPECT_EQ(mkfifo((folder + "pipe").c_str(), 0666), 0);
  {
    CardProcess refused({"--state", state.Path});
    EXPECT_NE(refused.GetFirstLine().find("Cannot use '" + state.Path + "/files/BINFILES': "), Text::npos) << refused.GetFirstLine();
    EXPECT_EQ(refused.End(0), 1);
  }
  fs::remove(state.Path + "/files/BINFILES");
  const CardProcess card({"--state", state.Path});
  Client c(card);
  const Text notAllowed = "The file name is not allowed.";
  const std::pair<Text, Text> names[] = {
      {"", notAllowed}, {".", notAllowed}, {"..", notAllowed}, {"../secret", notAllowed}, {"a/b", notAllowed}, {"a\\b", notAllowed}, {"/etc/passwd", notAllowed}, {"a..b", notAllowed}, {"a\n", notAllowed},
      {Text("a\0b", 3), notAllowed}, {"\x7F", notAllowed}, {Text(256, 'x'), notAllowed}, {"link", "'link' is no plain file."}, {"dangling", "'dangling' is no plain file."},
      {"hard", "'hard' is no plain file."}, {"pipe", "'pipe' is no plain file."}, {"folder", "'folder' is no plain file."},
  };
  for (const auto& [name, refusal] : names) {
    for (const int mode : {Create, Open, Truncate, Append}) EXPECT_EQ(c.Refusal("FileOpen", Corr, name, mode), refusal) << name << " " << mode;
    EXPECT_EQ(c.Refusal("FileDelete", Corr, name), refusal == notAllowed ? refusal : "There is no file '" + name + "'.") << name;
    if (refusal == notAllowed) {
      EXPECT_EQ(c.Refusal("FileExists", Corr, name), refusal);
    } else {
      EXPECT_FALSE(c.Call<bool>("FileExists", Corr, name)) << name;
    }
  }
  const Text longest(255, 'x');
  EXPECT_GE(c.Call<int>("FileOpen", Corr, longest, Create), 0);
  EXPECT_EQ(c.Call<std::vector<Text>>("GetFiles", Corr), std::vector<Text>{longest});
  EXPECT_EQ(c.Refusal("SetHeadCorrection", 0, 0), "There is no file '_tmpHeadCorrection0.kc7'.");
  Text content;
  std::getline(std::ifstream(outside.Path + "/secret"), content);
  EXPECT_EQ(content, "secret");
  EXPECT_FALSE(fs::exists(outside.Path + "/new"));
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
