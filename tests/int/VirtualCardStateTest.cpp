// What the virtual card keeps: its configuration, and its state directory, what may lie in it and who may use it.
#include <cinttypes>

#include "capi/FlatRecord.h"
#include "config/ProcessAPI.h"
#include "config/RecordText.h"
#include "int/CardClient.h"
#include "int/Filler.h"
#include "services/Font.h"

namespace VELTRO::KELVO::Test {
namespace {

namespace fs = std::filesystem;

TEST(VirtualCardState, IsOfPlainFilesThatAreWhole) {
  const TemporaryDirectory outside;
  const Text secret = outside.Path + "/secret", damaged = "What is stored is damaged.";
  std::ofstream(secret) << "secret";
  const Text noFile = "'NAME' is no plain file.";
  struct Row {
    const char* What;
    Text Reason;  // for which it is not read
    std::function<void(const Text&)> Put;
    Text Store = "no failure";  // what storing over it gives
  };
  const auto content = [](Text bytes) { return [bytes](const Text& at) { std::ofstream(at) << bytes; }; };
  const Row rows[] = {
      {"pipe", noFile, [](const Text& at) { EXPECT_EQ(mkfifo(at.c_str(), 0666), 0); }},
      {"link", noFile, [&](const Text& at) { fs::create_symlink(secret, at); }},
      {"dangling link", noFile, [&](const Text& at) { fs::create_symlink(outside.Path + "/new", at); }},
      {"second name", noFile, [&](const Text& at) { fs::create_hard_link(secret, at); }},
      {"directory", noFile, [](const Text& at) { fs::create_directory(at); },
       "Cannot write 'NAME': Is a directory."},
      {"large file", "Cannot read 'NAME': File too large.",
       [](const Text& at) { std::ofstream{at}, fs::resize_file(at, 1LL << 40); }},
      {"empty file", damaged, content("")},
      {"nesting", damaged, content(Text(1 << 20, '\x91'))},
      {"claim", damaged, content("\xDD\xFF\xFF\xFF\xFF")},
      {"trailing bytes", damaged, content("\x91\x01\x01")},
  };
  for (const auto& [what, reason, put, store] : rows) {
    SCOPED_TRACE(what);
    const TemporaryDirectory state;
    const Text corrections = state.Path + "/files/CORRFILES/";
    fs::create_directories(corrections);
    for (const Text name : {"LaserConfig", "HeadCorrections", "PowerCalibration1"}) {
      put(state.Path + "/" + name);
      put(state.Path + "/" + name + ".tmp");
    }
    put(corrections + "powerCorrection.kc7");
    const auto named = [](Text text, const Text& name) {
      const std::size_t place = text.find("NAME");
      return place == Text::npos ? text : text.replace(place, 4, name);
    };
    LaserConfig config;
    config.FpsStart = 7;
    {
      CardProcess card({"--state", state.Path});
      for (const Text& line :
           {"Taking the defaults for the stored LaserConfig: " + named(reason, "LaserConfig"),
            "Selecting no head corrections: " + named(reason, "HeadCorrections")})
        EXPECT_THAT(card.GetWarnings(), HasSubstr(line + "\n"));
      Client c(card);
      EXPECT_EQ(c.Refusal("LoadPowerCalibrationByEngine", 1), named(reason, "PowerCalibration1"));
      c.Call("SetLaserConfig", config);
      c.Call("CreatePowerCorrection", OpticalParameters());
      c.Call("CreatePowerCalibrationByEngine", 1);
      EXPECT_EQ(c.Refusal("StoreLaserConfig"), named(store, "LaserConfig"));
      EXPECT_EQ(c.Refusal("StorePowerCalibrationByEngine", 1), named(store, "PowerCalibration1"));
      EXPECT_EQ(c.Refusal("StorePowerCorrection"), named(store, "powerCorrection.kc7"));
      c.Disconnect();
      EXPECT_EQ(card.End(SIGTERM), 0);
    }
    EXPECT_EQ(ContentOf(secret), "secret");
    EXPECT_FALSE(fs::exists(outside.Path + "/new"));
    if (store != "no failure") continue;
    const CardProcess card({"--state", state.Path});
    Client c(card);
    EXPECT_EQ(c.Call<LaserConfig>("GetLaserConfig").FpsStart, 7);
    EXPECT_EQ(c.Call<OpticalParameters>("GetOpticalParametersPowerCorrection").XLayers, 0);
  }
}

TEST(VirtualCardState, IsOneCardsWhichClearsWhatAKilledOneLeft) {
  const TemporaryDirectory place;
  const Text state = place.Path + "/state", link = place.Path + "/link", leftover = "/.kelvo-1-0.part",
             corrections = state + "/files/CORRFILES";
  fs::create_directory_symlink("state", link);
  fs::create_directory(state);
  CardProcess card({"--state", link});
  for (const Text& directory : {state, corrections}) std::ofstream(directory + leftover) << "half";
  Client c(card);
  EXPECT_EQ(c.Refusal("FileOpen", 1, leftover.substr(1), 2), "The file name is not allowed.");
  EXPECT_TRUE(c.Call<std::vector<Text>>("GetFiles", 1).empty());
  CardProcess second({"--state", state});
  EXPECT_EQ(second.GetFirstLine(), "Cannot use '" + state + "': another card uses it.\n");
  EXPECT_EQ(second.End(0), 1);
  EXPECT_TRUE(fs::exists(state + leftover)) << "it was not the second card's";
  card.End(SIGKILL);
  const CardProcess next({"--state", state});
  EXPECT_EQ(next.GetWarnings(), "");
  for (const Text& directory : {state, corrections})
    EXPECT_FALSE(fs::exists(directory + leftover)) << directory;
}

TEST(VirtualCardState, StaysAsItWasWhenTheDiskIsFull) {
  const TemporaryDirectory state;
  const CardProcess card({"--state", state.Path});
  Client c(card);
  std::vector<std::pair<Text, Text>> before;
  const std::pair<Text, Text> stored[] = {{"LaserConfig", "StoreLaserConfig"},
                                          {"files/CORRFILES/powerCorrection.kc7", "StorePowerCorrection"}};
  c.Call("CreatePowerCorrection", OpticalParameters());
  for (const auto& [file, method] : stored)
    c.Call(method.c_str()), before.emplace_back(file, ContentOf(state.Path + "/" + file));
  LaserConfig config;
  config.FpsStart = 7;
  c.Call("SetLaserConfig", config);
  c.Call("ChangePowerCorrectionValue", Point3D{{1, 2, 3}}, 0.5);
  const rlimit limit{16, 16};
  EXPECT_EQ(prlimit(card.GetId(), RLIMIT_FSIZE, &limit, nullptr), 0);
  for (const auto& [file, method] : stored)
    EXPECT_EQ(c.Refusal(method.c_str()),
              "Cannot write '" + fs::path(file).filename().string() + "': File too large.");
  for (const auto& [file, bytes] : before) {
    EXPECT_GT(bytes.size(), 16U);
    EXPECT_EQ(ContentOf(state.Path + "/" + file), bytes) << file;
  }
  for (const auto& entry : fs::recursive_directory_iterator(state.Path))
    EXPECT_NE(entry.path().extension(), ".part") << entry.path();
}

// What a file of a list or font ends with: the 64-bit FNV-1a of what is ahead of it.
Text Sealed(const Text& bytes) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
  char digits[17];
  std::snprintf(digits, sizeof digits, "%016" PRIx64, hash);
  return bytes + digits;
}

// Lists of every kind, and a font of two glyphs.
struct Stored {
  CommandList Small = List("JA 1.5,-2.5 NO DLP F64[1.0;2.0] PI -7"), Large;
  CommandList Literal{std::vector{Command(5), Command(INT32_MIN, Unsigned("abc"))}};
  ClientLib::Font Font{3};
  const TemporaryDirectory State;
  Text At(const Text& name) const { return State.Path + "/" + name; }

  Stored() {
    for (int i = 0; i < 200000; ++i) Large.AppendJumpAbs(Point2D{{i / 3., -1. * i}});
    Font.CharContainer[u'A'] = Small, Font.CharContainer[0xFFFF];
  }
  // The lists as 7, 8 and -3, and the font, on a card that is killed then.
  void Store() {
    CardProcess card({"--state", State.Path});
    Client c(card);
    c.Lists.Set(7, Small, false, 12);
    c.Lists.Set(-3, Large, false, -1);
    c.Lists.Set(8, Literal, false, -5);
    c.Call("SetFont", Font);
    for (const int id : {7, 8, -3}) c.Call("StoreList", id);
    c.Call("StoreFont", 3);
    card.End(SIGKILL);
  }
};

TEST(StoredLists, OutliveTheCardAndSoDoFonts) {
  Stored stored;
  stored.Store();
  EXPECT_EQ(Hex(ContentOf(stored.At("List-8"))),
            Hex(Sealed(Bytes("93 FB 92 05 C4 00 92 D2 80 00 00 00 C4 03 61 62 63"))));
  const CardProcess card({"--state", stored.State.Path});
  Client c(card);
  EXPECT_EQ(card.GetWarnings(), "");
  EXPECT_EQ(c.Lists.GetStoredListIDs(), (std::vector<std::int32_t>{-3, 7, 8}));
  EXPECT_EQ(c.Lists.GetListStatus(7), 0) << "it is stored only";
  stored.Small.SetListField(12);
  stored.Literal.SetListField(-5);
  for (const auto& [id, list] : {std::pair{7, &stored.Small}, {-3, &stored.Large}, {8, &stored.Literal}}) {
    c.Lists.Load(id);
    EXPECT_TRUE(Packed(c.Lists.Get(id)) == Packed(*list)) << id;
  }
  c.Call("LoadFont", 3);
  EXPECT_EQ(Hex(Packed(c.Call<Font>("GetFont", 3))), Hex(Packed(stored.Font)));
}

TEST(StoredLists, AreOnTheDiskUntilTheyAreDeletedThere) {
  Stored stored;
  LoneClient c({"--state", stored.State.Path});
  for (const int id : {7, 24}) c.Lists.Set(id, stored.Small, false, -1), c.Call("StoreList", id);
  c.Call("DeleteList", 7, false);
  c.Call("DeleteList", 24, true);
  EXPECT_TRUE(fs::exists(stored.At("List-7")));
  EXPECT_FALSE(fs::exists(stored.At("List-24")));
  EXPECT_EQ(c.Refusal("LoadList", 24), "There is no stored list 24 on the card.");
  c.Call("SetFont", stored.Font);
  c.Call("StoreFont", 3);
  c.Call("DeleteFont", 3);
  c.Call("LoadFont", 3);
}

TEST(StoredLists, AreNotTakenBeyondTheMemory) {
  Stored stored;
  stored.Store();
  const CardProcess card({"--state", stored.State.Path, "--memory", "2097152"});
  EXPECT_EQ(card.GetWarnings(), "Not taking the stored List--3: The card's memory is full.\n");
}

TEST(StoredLists, AreNotTakenWhenTheyAreDamagedAndCanBeStoredAnew) {
  Stored stored;
  Text whole = Sealed(Packed(stored.Small)), flipped = whole;
  flipped[9] ^= 1;
  const std::pair<Text, Text> bad[] = {
      {"Font-4", Sealed(Bytes("92 04 81 41 91 C0"))},
      {"Font-5", Sealed(Text(1 << 20, '\x91'))},
      {"List-20", flipped},
      {"List-21", whole.substr(0, 60)},
      {"List-22", ""},
      {"List-40", Sealed(Bytes("DD FF FF FF FF"))},
      {"List-41", Sealed(Text(1 << 20, '\x91'))},
      {"List-42", Sealed(Bytes("92 FF C0"))},
      {"List-43", Sealed(Bytes("92 FF 92 05 C0"))},
      {"List-44", Sealed(Bytes("91 FF C0"))},
      {"List-45", Sealed(Bytes("91 C0"))},
      {"List-46", Sealed(Bytes("92 FF 92 CE FF FF FF FF C4 00"))},
      {"List-47", Sealed(Bytes("92 FF 91 92 05 C4 00"))},
  };
  Text warnings;
  for (const auto& [name, content] : bad) {
    std::ofstream(stored.At(name)) << content;
    warnings += "Not taking the stored " + name + ": What is stored is damaged.\n";
  }
  for (const char* other : {"List-007", "List-", "List-7.tmp", "List-2147483648"})
    std::ofstream(stored.At(other)) << "a note";
  const CardProcess card({"--state", stored.State.Path});
  EXPECT_EQ(card.GetWarnings(), warnings);
  Client c(card);
  EXPECT_EQ(c.Lists.GetStoredListIDs(), std::vector<std::int32_t>{});
  for (const int id : {20, 40})
    EXPECT_EQ(c.Refusal("LoadList", id), "There is no stored list " + std::to_string(id) + " on the card.");
  EXPECT_EQ(c.Refusal("LoadFont", 4), "There is no stored font 4 on the card.");
  c.Lists.Set(20, stored.Small, false, -1);
  c.Call("StoreList", 20);
  EXPECT_EQ(Hex(ContentOf(stored.At("List-20"))), Hex(whole));
}

TEST(VirtualCardState, TakesNothingThatItCouldNotKeep) {
  constexpr std::size_t MiB = 1 << 20;
  const TemporaryDirectory state;
  LoneClient c({"--state", state.Path});
  const std::vector<std::uint32_t> words(65537);
  EventConfig events;
  for (int i = 0; i < 400000; ++i) events.EventSettings[1].Exclusions.insert(i);
  EXPECT_EQ(c.Refusal("SetEventConfig", events), "The record is too large.");
  EXPECT_EQ(c.Refusal("SetPowerCalibrationByEngine", words, 0), "The power calibration has too many values.");
  EXPECT_EQ(c.Refusal("TransmitEnhancedCommand", 0, 1, words, 1U), "There are too many commands.");
  const Text correction = state.Path + "/files/CORRFILES/head0Correction.kc7";
  std::ofstream{correction};
  fs::resize_file(correction, 128 * MiB + 1);
  EXPECT_EQ(c.Refusal("GetHeadCorrectionHash", 0, 0), "The file 'head0Correction.kc7' is too large.");
  OpticalParameters optics;
  optics.Hash.resize(16 * MiB - 40 - Packed(optics).size());
  c.Call("CreatePowerCorrection", optics);
  EXPECT_EQ(c.Refusal("StorePowerCorrection"), "no failure");
  c.Call("ChangePowerCorrectionValue", Point3D{{1, 2, 3}}, 0.5);
  EXPECT_EQ(c.Refusal("StorePowerCorrection"), "The power correction is too large.");
  EXPECT_EQ(c.Refusal("GetPowerCorrection"), "The power correction is too large.");
}

TEST(VirtualCardState, HasRoomForSoManyVariablesOnly) {
  LoneClient c({"--speed", "max"});
  CommandList variables;
  for (std::uint32_t i = 0; i < 65536; ++i) variables.Append(static_cast<std::int32_t>(*CodeOf("IVS")), i, 1);
  c.Lists.Set(1, variables, false, -1);
  c.Lists.Execute(1);
  EXPECT_EQ(c.EventsUpTo("idle"), (Events{"done 1", "idle 1"}));
  EXPECT_EQ(c.Run("IVS U32:65535 2 IC U32:0 BVS U32:65536 true SIS U32:65536 IC U32:65536"),
            (Events{"error List 7, command 4 (IC): There are too many variables.", "idle 7"}));
}

TEST(VirtualCardState, HasRoomForSoManyListsOnly) {
  const TemporaryDirectory state;
  const Text first = state.Path + "/List-1";
  std::ofstream{first};
  fs::resize_file(first, 256 << 20);  // damaged, and it takes all the room there is
  LoneClient c({"--state", state.Path});
  CommandList list = List("NO");
  for (const int id : {1, 2}) c.Lists.Set(id, list, false, -1);
  EXPECT_EQ(c.Refusal("StoreList", 2), "Cannot write 'List-2': Disk quota exceeded.");
  EXPECT_EQ(c.Lists.GetStoredListIDs(), (std::vector<std::int32_t>{1, 2}));
  c.Lists.Delete(2, false);
  EXPECT_EQ(c.Refusal("LoadList", 2), "There is no stored list 2 on the card.");
  c.Lists.Set(2, list, false, -1);
  for (const int id : {1, 2}) EXPECT_EQ(c.Refusal("StoreList", id), "no failure");
  EXPECT_LT(fs::file_size(first), 100U);
}

enum class Way { Set, Store, Load, Fetch };

// Sets a record of which every field has a value of its own, or also stores it and then sets the defaults; loads what
// is stored, or only fetches what the card has. What the record has on the wire.
template <class R, class F>
std::string Pass(Way way, std::int32_t card, std::int32_t (*setter)(std::int32_t, const F*),
                 std::int32_t (*storer)(std::int32_t), std::int32_t (*loader)(std::int32_t),
                 std::int32_t (*getter)(std::int32_t, F*)) {
  const R filled = Filled<R>();
  F flat{}, defaults{};
  Flat::FromRecord(filled, flat), Flat::FromRecord(R(), defaults);
  const bool isSet = way == Way::Set || way == Way::Store;
  const bool isDone = (!isSet || setter(card, &flat) == 0) && (way != Way::Store || storer(card) == 0) &&
                      (way != Way::Store || setter(card, &defaults) == 0) &&
                      (way != Way::Load || loader(card) == 0) && (isSet || getter(card, &flat) == 0);
  EXPECT_TRUE(isDone) << testing::internal::GetTypeName<R>() << LastError();
  return Hex(Packed(isSet ? filled : Flat::Taken<R>(&flat)));
}

std::vector<std::string> PassAll(Way way, std::int32_t card) {
#define PASS(Record, area, what)                                                                        \
  Pass<Record, vl##Record>(way, card, vl##area##Set##what, vl##area##Store##what, vl##area##Load##what, \
                           vl##area##Get##what)
  return {
      PASS(LaserConfig, Laser, Config),
      PASS(ScannerConfig, Scanner, Config),
      PASS(ProcessVariables, Process, Variables),
      PASS(SystemConfig, System, Config),
      PASS(MotfConfig, Motf, Config),
      PASS(QuadratureDecoderConfig, MotfQuadratureDecoder, Config),
      PASS(EventConfig, Event, Config),
  };
#undef PASS
}

TEST(VirtualCardConfiguration, IsLoadedAsItWasStoredAndTheSameAfterARestart) {
  const TemporaryDirectory directory;
  const auto store = [&] {
    const CardConnection card({"--state", directory.Path});
    auto stored = PassAll(Way::Store, card);
    EXPECT_NE(PassAll(Way::Fetch, card), stored);
    EXPECT_EQ(PassAll(Way::Load, card), stored);
    return stored;
  };
  const auto stored = store();
  EXPECT_EQ(PassAll(Way::Fetch, CardConnection({"--state", directory.Path})), stored);
}

TEST(VirtualCardConfiguration, TakesOrDropsAGroupOfSettingsAsAWhole) {
  const CardConnection card;
  const auto before = PassAll(Way::Fetch, card);
  for (const bool keep : {false, true}) {
    EXPECT_OK(vlConfigurationBeginUpdate(card));
    const auto set = PassAll(Way::Set, card);
    EXPECT_EQ(PassAll(Way::Fetch, card), before);
    EXPECT_OK(keep ? vlConfigurationEndUpdate(card) : vlConfigurationAbortUpdate(card));
    EXPECT_EQ(PassAll(Way::Fetch, card), keep ? set : before);
  }
}

TEST(VirtualCardConfiguration, HasTheProcessVariablesUnderTheirOwnName) {
  LoneClient client;
  ProcessAPI api(client);
  ProcessVariables variables;
  variables.MarkDelay = 7;
  api.SetVariables(variables), api.StoreVariables(), api.SetVariables({}), api.LoadVariables();
  EXPECT_EQ(api.GetVariables().ToString(), variables.ToString());
}

// With speeds of 0.01 and 0.001, and delays that tell themselves apart.
TEST(VirtualCardConfiguration, IsWhatARunBeginsWith) {
  ProcessVariables laser, polygon, sky;
  laser.JumpSpeed = polygon.JumpSpeed = sky.JumpSpeed = 0.01;
  laser.MarkSpeed = polygon.MarkSpeed = sky.MarkSpeed = 0.001;
  laser.LaserOnDelay = -40, laser.LaserOffDelay = 90;
  polygon.JumpDelay = 200, polygon.PolyDelay = 7, polygon.MarkDelay = 30;
  sky.SkyWriting.Mode = SkyWritingMode::ForceAtStartFinish;
  sky.SkyWriting.ExtensionTime = 1, sky.SkyWriting.AccelerationDelay = 20,
  sky.SkyWriting.DecelerationDelay = 500;
  const CardProcess process({"--speed", "max"});
  Client client(process);
  for (const auto& [variables, microseconds] :
       {std::pair{laser, 40 + 90}, {polygon, 200 + 7 + 30}, {sky, 21 + 501}}) {
    client.Call("SetVariables", variables);
    client.Run("JR 1,0 MR 1,0 MR 1,0");
    EXPECT_NEAR(client.Lists.GetLastExecutionStats().ExecutionTime, 100 + 2000 + microseconds, 1e-6);
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
