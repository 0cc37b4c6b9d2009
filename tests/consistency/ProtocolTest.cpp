// docs/protocol.md, the library and the virtual card speak of the same methods, records and numbers.
#include <regex>

#include "client/CardInfo.h"
#include "int/Filler.h"
#include "kelvo/KelvoClientAPI.h"
#include "lists/Command.h"
#include "methods/MethodTable.h"
#include "peripherals/AdapterBoardConfig.h"
#include "peripherals/GpioConfig.h"
#include "peripherals/SerialPortConfig.h"
#include "peripherals/SpiConfig.h"
#include "rpc/Body.h"
#include "rpc/Packet.h"
#include "services/FileAPIVL.h"
#include "support/TemporaryDirectory.h"

namespace VELTRO::KELVO::Test {
namespace {

using namespace ClientLib;

// The names in backticks in a cell of a table.
std::vector<std::string> NamesIn(const std::string& cell) {
  static const std::regex name("`(\\w+)`");
  std::vector<std::string> names;
  for (std::sregex_iterator at(cell.begin(), cell.end(), name), end; at != end; ++at)
    names.push_back((*at)[1]);
  return names;
}

// The rows of the page's tables that have this head, each as its cells.
std::vector<std::vector<std::string>> RowsUnder(const std::string& head) {
  std::istringstream page(ContentOf(PROJECT_FOLDER "/docs/protocol.md"));
  std::vector<std::vector<std::string>> rows;
  bool isInside = false;
  for (std::string line; std::getline(page, line);) {
    if (line.starts_with("|---")) continue;
    if (isInside && line.starts_with("|")) {
      std::istringstream cells(line.substr(1));
      rows.emplace_back();
      for (std::string cell; std::getline(cells, cell, '|');) {
        const std::size_t begin = cell.find_first_not_of(' ');
        const std::size_t end = cell.find_last_not_of(' ') + 1;
        rows.back().push_back(end == 0 ? "" : cell.substr(begin, end - begin));
      }
    }
    isInside = line == head || (isInside && line.starts_with("|"));
  }
  return rows;
}

TEST(Protocol, MethodsOfThePageAreThoseOfTheTable) {
  std::map<std::string, std::string> page, table;
  for (const auto& row : RowsUnder("| method | arguments | result |")) {
    for (const std::string& name : NamesIn(row.at(0))) {
      EXPECT_TRUE(page.emplace(name, row.at(1) + " -> " + row.at(2)).second) << name << " stands there twice";
    }
  }
  for (const RemoteMethod& method : RemoteMethods) {
    table[std::string(method.Name)] = std::string(method.Arguments) + " -> " + std::string(method.Result) +
                                      (method.IsExtension ? ", extension" : "");
  }
  EXPECT_EQ(page, table);
}

// That they have no other methods, and the same types, is checked while they compile.
TEST(Protocol, MethodsOfTheTableAreCalledByTheLibraryAndAnsweredByTheVirtualCard) {
  std::string sources;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(PROJECT_FOLDER "/src")) {
    if (entry.is_regular_file() && entry.path().filename() != "RemoteMethods.h") {
      sources += ContentOf(entry.path());
    }
  }
  for (const RemoteMethod& method : RemoteMethods) {
    EXPECT_NO_THROW(VirtualCard::FindMethod(method.Name)) << method.Name;
    const std::string name(method.Name);
    const std::string record = std::regex_replace(name, std::regex("^(Get|Set|Load|Store)"), "");
    EXPECT_TRUE(sources.find('"' + name + '"') != std::string::npos ||
                sources.find("Name = \"" + record + "\";") != std::string::npos)
        << name;
  }
}

using Fields = std::vector<std::string>;

template <class... Records>
std::map<std::string, std::pair<std::string, Fields>> FieldsOf(std::pair<const char*, Records>... records) {
  std::map<std::string, std::pair<std::string, Fields>> all;
  const auto add = [&](const char* name, const auto& record) {
    auto& told = all[name];
    told.first = std::to_string(record.GetConfigVersion());
    record.ForEachField(record, [&](const char* field, const auto&) { told.second.push_back(field); });
  };
  (add(records.first, records.second), ...);
  return all;
}

TEST(Protocol, RecordsOfThePageHaveTheVersionsAndFieldsOfTheLibrary) {
  std::map<std::string, std::pair<std::string, Fields>> page;
  const auto rows = RowsUnder("| record | version | fields |");
  std::set<std::string> records;
  for (const auto& row : rows) records.insert(NamesIn(row.at(0)).at(0));
  for (const auto& row : rows) {
    Fields fields = NamesIn(row.at(2));
    std::erase_if(fields, [&](const std::string& name) { return records.contains(name); });
    page[NamesIn(row.at(0)).at(0)] = {row.at(1), fields};
  }
#define NAMED(Record) std::pair(#Record, Record())
  EXPECT_EQ(page,
            FieldsOf(NAMED(LaserConfig), NAMED(ScannerConfig), NAMED(ScanHeadConfig), NAMED(SystemConfig),
                     NAMED(ScannerMonitoringConfig), NAMED(ProcessVariables), NAMED(SkyWritingSettings),
                     NAMED(WobbleSettings), NAMED(MotfConfig), NAMED(MotfSource),
                     NAMED(QuadratureDecoderConfig), NAMED(QuadratureDecoderModule), NAMED(EventConfig),
                     NAMED(OpticalParameters), NAMED(GpioConfig), NAMED(SerialPortConfig), NAMED(PortConfig),
                     NAMED(SpiConfig), NAMED(SpiModule), NAMED(AdapterBoardConfig)));
}

TEST(Protocol, NumbersOfThePageAreThoseOfTheLibrary) {
  std::map<std::string, std::string> page, library;
  for (const auto& row : RowsUnder("| number | value | what |")) page[NamesIn(row.at(0)).at(0)] = row.at(1);
#define NUMBER(Scope, name) library[#name] = std::to_string(Scope::name)
  NUMBER(CardInfo, DefaultPort);
  NUMBER(Packet, FullHeaderLen);
  NUMBER(Packet, PacketStart);
  NUMBER(ClientLib, MaxPacketSize);
  NUMBER(FileAPIVL, ChunkBytes);
  NUMBER(Body, UsualDepth);
  NUMBER(Body, MostValues);
  EXPECT_EQ(page, library);
  EXPECT_EQ(CardInfo::DefaultPort, KELVO_DEFAULT_PORT);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
