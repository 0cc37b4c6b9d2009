// Power calibrations in local files.
#include "ext/AskedCard.h"
#include "support/TemporaryDirectory.h"

namespace VELTRO::KELVO::Test {
namespace {

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
  struct Row {
    std::string path, answer, asked, outcome, written, content;
  };
  const Row rows[] = {
      {table, "\xC0", get, "std::bad_cast", table, "before"},
      {table, "\x92\x08\x09", get, "0", table, "8\n9\n"},
      {table, "\x90", get, "0", table, ""},
      {link, "\x91\x07", get, "0", folder + "/new", "7\n"},
      {full, "\x91\x07", get, "Cannot write '" + full + "'.", table, "before"},
      {Device("null"), "\x91\x07", get, "0", table, "before"},
      {none, "\x90", "", "Cannot open '" + none + "': No such file or directory.", table, "before"},
      {folder, "\x90", "", "Cannot open '" + folder + "': Is a directory.", table, "before"},
  };
  for (const Row& row : rows) {
    std::ofstream(table) << "before";
    card.Asked = "";
    card.Answer = row.answer;
    EXPECT_EQ(Outcome(vlLaserPowerCalibrationGet(card.Handle, 1, row.path.c_str())), row.outcome) << row.path;
    EXPECT_EQ(card.Asked, row.asked) << row.path;
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(std::ifstream(row.written).rdbuf()), {}),
              row.content)
        << row.path;
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
