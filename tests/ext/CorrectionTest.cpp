// Corrections of heads and of power and power calibrations: their files, and what a card does with them.
#include "ext/AskedCard.h"
#include "ext/FileCard.h"
#include "int/CardProcess.h"
#include "support/TemporaryDirectory.h"

namespace VELTRO::KELVO::Test {
namespace {

TEST(Corrections, HaveTheirSizeLimitsToTheByte) {
  const Folder folder;
  const std::string path = folder / "sparse", none = folder / "none";
  FileCard card{"", "FileOpen", Refused};
  const Connection c(card.Card.Port());
  const auto head = [&](const std::string& file) { return vlHeadCorrectionSet(c, 1, 3, file.c_str()); };
  const auto power = [&](const std::string& file) { return vlPowerCorrectionSet(c, file.c_str()); };
  const std::tuple<std::function<std::int32_t(const std::string&)>, off_t, bool> rows[] = {
      {head, 134217728, true},
      {head, 134217729, false},
      {power, 34900811784, true},
      {power, 34900811785, false}};
  for (const auto& [set, size, isAccepted] : rows) {
    Folder::Write(path, "");
    ASSERT_EQ(truncate(path.c_str(), size), 0);
    EXPECT_EQ(Outcome(set(path)), isAccepted ? "Refused." : "Unexpected filesize") << size;
    EXPECT_EQ(card.TakeCalls(), isAccepted ? "GetHandle Open " : "") << size;
    EXPECT_FAILS(set(none), "Unexpected filesize");
  }
}

TEST(Corrections, TellHowFarTheyAreAndCanBeStopped) {
  const Folder folder;
  const std::string path = folder / "local";
  const char* const local = path.c_str();
  FileCard card{std::string(20000, 'x'), "", {}};
  const Connection c(card.Card.Port());
  using Numbers = std::vector<std::uint64_t>;
  constexpr vlFileProgressCallback Tell = [](void* user, std::uint64_t moved, std::uint64_t whole) {
    Numbers& numbers = *static_cast<Numbers*>(user);
    numbers.insert(numbers.end(), {moved, whole});
    return numbers[0] != 0 || numbers.size() < 3;
  };
  // A transfer, and the calls at its beginning, for each piece, and at its end.
  const std::tuple<std::function<std::int32_t(Numbers&)>, std::string, std::string, std::string> rows[] = {
      {[&](Numbers& n) { return vlHeadCorrectionSetWithProgress(c, 1, 3, local, Tell, &n); },
       "GetHandle Open ", "Write ", "SetHeadCorrection "},
      {[&](Numbers& n) { return vlHeadCorrectionGetWithProgress(c, 1, 3, local, Tell, &n); },
       "HeadCorrectionExists Open GetSize ", "Read ", ""},
      {[&](Numbers& n) { return vlPowerCorrectionSetWithProgress(c, local, Tell, &n); }, "GetHandle Open ",
       "Write ", "SetPowerCorrection "},
      {[&](Numbers& n) { return vlPowerCorrectionGetWithProgress(c, local, Tell, &n); },
       "GetPowerCorrection Exists Open GetSize ", "Read ", ""},
  };
  for (const auto& [transfer, begin, piece, end] : rows) {
    SCOPED_TRACE(begin + piece + end);
    Folder::Write(path, card.Content);
    Numbers whole{1}, stopped{0};  // the first number says whether to go on
    EXPECT_OK(transfer(whole));
    EXPECT_EQ(whole, (Numbers{1, 8192, 20000, 16384, 20000, 20000, 20000}));
    EXPECT_EQ(card.TakeCalls(), begin + piece + piece + piece + "Close " + end);
    EXPECT_FAILS(transfer(stopped), "The transfer was cancelled.");
    EXPECT_EQ(stopped, (Numbers{0, 8192, 20000}));
    EXPECT_EQ(card.TakeCalls(), begin + piece + "Close ");
  }
}

// Optical parameters that are those of no default, in a file of a folder.
vlOpticalParameters WriteParameters(const std::string& path) {
  vlOpticalParameters p{};
  char json[4000] = "";
  std::uint32_t length = 0;
  EXPECT_OK(vlHeadCorrectionInitOpticalParameters(&p));
  p.XLayers = 4, p.HeadFormat = vlScanHeadFormat_VL3_Dual3D, p.InputOffset.M = 0.5;
  EXPECT_OK(vlOpticalParametersToJson(&p, json, sizeof json, &length));
  EXPECT_FAILS(vlOpticalParametersToJson(&p, json, length + 1, &length), "Buffer is too small.");
  Folder::Write(path, json);
  return p;
}

TEST(HeadCorrections, AreKeptByTheVirtualCard) {
  const Folder folder;
  const std::string json = folder / "json", other = folder / "other", back = folder / "back",
                    none = folder / "none";
  WriteParameters(json);
  Folder::Write(other, "abc");
  vlOpticalParameters q{};
  char hash[20] = "";
  std::uint32_t length = 0;
  std::int32_t slot = 0;
  bool exists = false;
  for (const bool isStartedAnew : {false, true}) {
    SCOPED_TRACE(isStartedAnew);
    const CardConnection c({"--state", folder / "state"});
    EXPECT_EQ(Told(vlHeadCorrectionGetSelectedCorrection(c, 1, &slot), slot), isStartedAnew ? "0 3" : "0 -1");
    EXPECT_OK(vlHeadCorrectionSet(c, 1, 3, json.c_str()));
    EXPECT_OK(vlHeadCorrectionSet(c, 0, 7, other.c_str()));
    EXPECT_EQ(Outcome(vlHeadCorrectionSet(c, 2, 0, other.c_str())), "There is no head correction slot 2, 0.");
    EXPECT_EQ(Told(vlFileExists(c, vlDirectorySelector_CORRFILES, "head7Correction.kc7", &exists), exists),
              "0 1");
    EXPECT_OK(vlHeadCorrectionGet(c, 0, 7, back.c_str()));
    EXPECT_EQ(ContentOf(back), "abc");
    EXPECT_FAILS(vlHeadCorrectionGet(c, 0, 6, none.c_str()),
                 "The requested head correction does not exist on the card.");
    EXPECT_EQ(Told(vlHeadCorrectionGetHash(c, 0, 7, hash, 18, &length), hash), "0 e71fa2190541574b");
    EXPECT_FAILS(vlHeadCorrectionGetHash(c, 0, 7, hash, 17, &length), "Buffer is too small.");
    EXPECT_EQ(Told(vlHeadCorrectionGetOpticalParameters(c, 0, 7, &q), q.XLayers, q.FieldSize.X, q.Hash),
              "0 1 65536 e71fa2190541574b");
    EXPECT_EQ(Told(vlHeadCorrectionGetOpticalParameters(c, 1, 3, &q), q.XLayers, q.InputOffset.M), "0 4 0.5");
    EXPECT_EQ(Outcome(vlHeadCorrectionSelectCorrection(c, 1, 2)), "There is no head correction 1, 2.");
    EXPECT_OK(vlHeadCorrectionSelectCorrection(c, 1, 3));
    EXPECT_OK(vlHeadCorrectionSelectCorrection(c, 0, 7));
    EXPECT_OK(vlHeadCorrectionStore(c));
    EXPECT_OK(vlHeadCorrectionDelete(c, 0, 7));
    EXPECT_EQ(Outcome(vlHeadCorrectionDelete(c, 0, 7)), "There is no head correction 0, 7.");
    EXPECT_OK(vlHeadCorrectionLoad(c));
    EXPECT_EQ(Told(vlHeadCorrectionGetSelectedCorrection(c, 0, &slot), slot), "0 -1");
    EXPECT_EQ(Told(vlHeadCorrectionGetSelectedCorrection(c, 1, &slot), slot), "0 3");
    EXPECT_EQ(Told(vlHeadCorrectionExists(c, 1, 3, &exists), exists), "0 1");
    EXPECT_EQ(Told(vlOpticalParametersFromJson(ContentOf(json).c_str(), &q), q.XLayers), "0 4");
  }
}

TEST(PowerCorrections, AreKeptByTheVirtualCard) {
  const Folder folder;
  const std::string json = folder / "json", other = folder / "other", table = folder / "table",
                    again = folder / "again";
  const vlOpticalParameters p = WriteParameters(json);
  Folder::Write(other, "abc");
  vlOpticalParameters q{};
  bool exists = false;
  for (const bool isStartedAnew : {false, true}) {
    SCOPED_TRACE(isStartedAnew);
    const CardConnection c({"--state", folder / "state"});
    EXPECT_EQ(Outcome(vlPowerCorrectionGet(c, again.c_str())),
              isStartedAnew ? "0" : "No power correction exists on the card.");
    EXPECT_OK(vlPowerCorrectionCreate(c, &p));
    EXPECT_OK(vlPowerCorrectionChangeValue(c, 1, 2, 3, 0.5));
    EXPECT_OK(vlPowerCorrectionStore(c));
    EXPECT_OK(vlPowerCorrectionChangeValue(c, 1, 2, 3, 0.25));
    EXPECT_OK(vlPowerCorrectionGet(c, table.c_str()));
    EXPECT_OK(vlPowerCorrectionLoad(c));
    EXPECT_OK(vlPowerCorrectionGet(c, again.c_str()));
    EXPECT_NE(ContentOf(again), ContentOf(table)) << "the change was not stored";
    EXPECT_OK(vlPowerCorrectionSet(c, table.c_str()));
    EXPECT_EQ(
        Told(vlFileExists(c, vlDirectorySelector_CORRFILES, "_tmpPowerCorrection.kc7", &exists), exists),
        "0 0");
    EXPECT_OK(vlPowerCorrectionGet(c, again.c_str()));
    EXPECT_EQ(ContentOf(again), ContentOf(table));
    EXPECT_EQ(Outcome(vlPowerCorrectionSet(c, other.c_str())),
              "'_tmpPowerCorrection.kc7' is no power correction.");
    EXPECT_OK(vlFilePut(c, vlDirectorySelector_CORRFILES, "_tmpPowerCorrection.kc7", json.c_str(), nullptr,
                        nullptr));
    EXPECT_EQ(Told(vlPowerCorrectionGetOpticalParameters(c, &q), q.XLayers), "0 4");
    EXPECT_EQ(Outcome(vlPowerCorrectionChangeValue(c, 1, 2, 3, 1 / 0.)),
              "The power correction has no finite place and value there.");
  }
}

TEST(CalibrationFiles, AreTakenInTheirFormatOnly) {
  AskedCard card;
  const TemporaryDirectory directory;
  const std::string path = directory.Path + "/table";
  // A file, and the values that are sent; null when it is refused.
  const std::pair<const char*, const char*> files[] = {
      {"10;20\n30", "[10,20,30]"},
      {"1\r\n 2 ;\t3\r\n\r\n;;4\n", "[1,2,3,4]"},
      {"", "[]"},
      {"4294967295", "[4294967295]"},
      {"4294967296\n", nullptr},
      {"1\n-1\n", nullptr},
      {"1;1.5", nullptr},
      {"1 2", nullptr},
      {"0x1", nullptr},
  };
  for (const auto& [content, values] : files) {
    std::ofstream(path) << content;
    card.Asked = "";
    EXPECT_EQ(Outcome(vlLaserPowerCalibrationSet(card.Handle, 1, path.c_str())),
              values ? "0" : "Illegal format!")
        << content;
    EXPECT_EQ(card.Asked, values ? std::string("SetPowerCalibrationByEngine[") + values + ",1]" : "");
  }
}

TEST(CalibrationFiles, HoldAMillionValues) {
  AskedCard card;
  const TemporaryDirectory directory;
  const std::string path = directory.Path + "/table";
  const std::vector<std::uint32_t> many(1000000, 4294967295);
  card.Answer = Packed(many);
  EXPECT_OK(vlLaserPowerCalibrationGet(card.Handle, 1, path.c_str()));
  EXPECT_OK(vlLaserPowerCalibrationSet(card.Handle, 1, path.c_str()));
  EXPECT_TRUE(card.Arguments == Packed(std::make_tuple(many, 1)));
}

TEST(CalibrationFiles, StayUntilTheNextIsThere) {
  AskedCard card;
  const TemporaryDirectory directory;
  const std::string folder = directory.Path, table = folder + "/table", link = folder + "/link";
  const std::string none = folder + "/no/file", full = Device("full"), get = "GetPowerCalibrationByEngine[1]";
  std::filesystem::create_symlink("new", link);
  // The path, the card's answer, what it is asked, the outcome, the file that is looked at, its content.
  const std::array<std::string, 6> rows[] = {
      {table, "\xC0", get, "std::bad_cast", table, "before"},
      {table, "\x92\x08\x09", get, "0", table, "8\n9\n"},
      {table, "\x90", get, "0", table, ""},
      {link, "\x91\x07", get, "0", folder + "/new", "7\n"},
      {full, "\x91\x07", get, "Cannot write '" + full + "'.", table, "before"},
      {Device("null"), "\x91\x07", get, "0", table, "before"},
      {none, "\x90", "", "Cannot open '" + none + "': No such file or directory.", table, "before"},
      {folder, "\x90", "", "Cannot open '" + folder + "': Is a directory.", table, "before"},
  };
  for (const auto& [path, answer, asked, outcome, written, content] : rows) {
    std::ofstream(table) << "before";
    card.Asked = "";
    card.Answer = answer;
    EXPECT_EQ(Outcome(vlLaserPowerCalibrationGet(card.Handle, 1, path.c_str())), outcome) << path;
    EXPECT_EQ(card.Asked, asked) << path;
    EXPECT_EQ(ContentOf(written), content) << path;
  }
  const std::filesystem::directory_iterator entries(folder);
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 3) << "table, link, new";
}

TEST(CalibrationFiles, AreNotReadWithoutEnd) {
  AskedCard card;
  const TemporaryDirectory directory;
  const std::string table = directory.Path + "/table";
  std::ofstream file(table);
  for (int i = 0; i < 1048577; ++i) file << "1;";
  file.close();
  for (const std::string& endless : {std::string("/dev/zero"), std::string("/dev/full"), table}) {
    EXPECT_FAILS(vlLaserPowerCalibrationSet(card.Handle, 1, endless.c_str()),
                 "'" + endless + "' is too long for a power calibration.");
  }
  EXPECT_EQ(card.Asked, "");
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
