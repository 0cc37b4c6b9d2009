// The enumerations of the public headers are those of the library, with the same names and values.
#include <regex>

#include "client/CardAddresses.h"
#include "common/KelvoAPIEnums.h"
#include "config/ScanHeadFormat.h"
#include "lists/ListStatus.h"
#include "peripherals/PeripheralEnums.h"
#include "rpc/RpcEvents.h"
#include "services/FileEnums.h"
#include "support/Usual.h"

namespace VELTRO::KELVO::Test {
namespace {

using namespace ClientLib;
using Constants = std::map<std::string, std::int64_t>;
using Enumerations = std::map<std::string, Constants>;

template <class... Enums>
Enumerations ConstantsOf() {
  Enumerations all;
  const auto add = [&]<class Enum>(std::type_identity<Enum>) {
    for (std::size_t i = 0; i < Enum::_values().size(); ++i) {
      all[Enum::_name()][std::string(Enum::_names()[i])] = Enum::_values()[i]._to_integral();
    }
  };
  (add(std::type_identity<Enums>()), ...);
  return all;
}

// Those that callers meet, and those that they do not.
Enumerations Met() {
  return ConstantsOf<Axes, Axis, DirectorySelector, FileMode, IODirection, IOPort, IOVoltage, MethodSupport,
                     PinAction, SerialPortHandshake, SerialPortLineEnd, SerialPortParity, SerialPortStopBits,
                     SfRegister, VariableKind, Installation, LaserSignal, LaserStatus, ListStatus,
                     MotfDistanceMode, MotfOperatingMode, MotfSourceType, OperatingState, Polarity,
                     PowerTarget, RpcEventType, ScanHeadFormat, SHFlags, SkyWritingMode>();
}
const std::set<std::string> Internal = {
    "CommandCode",       "CommandCode2",     "CommandCodeAcronym",     "CommandCodeAcronym2",
    "CommandValueFlags", "CommandValueType", "CommandValueTypeAcronym"};

// Calls `take` with every match of the expression in the headers under a folder of the project.
int ForEachMatch(const char* folder, const char* expression,
                 const std::function<void(const std::smatch&)>& take) {
  int count = 0;
  const std::regex sought(expression);
  for (const auto& file :
       std::filesystem::recursive_directory_iterator(PROJECT_FOLDER + std::string(folder))) {
    if (file.path().extension() != ".h") continue;
    std::stringstream text;
    text << std::ifstream(file.path()).rdbuf();
    const std::string whole = text.str();
    for (std::sregex_iterator match(whole.begin(), whole.end(), sought), end; match != end;
         ++match, ++count) {
      take(*match);
    }
  }
  return count;
}

TEST(Enumerations, OfThePublicHeadersAreThoseOfTheLibrary) {
  Enumerations declared;
  const std::regex line("  vl([A-Za-z]+)_(\\w+) = (-?\\w+), +/\\* .+ \\*/");
  const auto read = [&](const std::smatch& enumeration) {
    std::istringstream body(enumeration[2]);
    std::smatch constant;
    for (std::string text; std::getline(body, text);) {
      ASSERT_TRUE(std::regex_match(text, constant, line) && constant[1] == enumeration[1])
          << "no constant of vl" << enumeration[1] << " with a number and a comment: " << text;
      declared[enumeration[1]][constant[2]] = std::stoll(constant[3], nullptr, 0);
    }
  };
  const int readOnes = ForEachMatch("/include", "typedef enum vl(\\w+) \\{\n([^}]*)\\} vl\\1;", read);
  EXPECT_EQ(readOnes, ForEachMatch("/include", "\\benum\\b", [](const auto&) {}));
  const Enumerations met = Met();
  for (const auto& [name, constants] : met) EXPECT_EQ(declared[name], constants) << name;
  for (const auto& [name, constants] : declared) EXPECT_TRUE(met.contains(name)) << name;
}

TEST(Enumerations, OfTheLibraryAreInThePublicHeadersOrInternal) {
  std::set<std::string> declared, known = Internal;
  for (const auto& [name, constants] : Met()) EXPECT_TRUE(known.insert(name).second) << name;
  ForEachMatch("/src", "\nKELVO_(ENUM|FLAGS)\\((\\w+)",
               [&](const std::smatch& match) { declared.insert(match[2]); });
  EXPECT_EQ(declared, known);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
