// The whole configuration of a virtual card, set through the flat interface and read from the card after it.
#include "capi/FlatRecord.h"
#include "config/ProcessAPI.h"
#include "int/CardClient.h"
#include "int/Filler.h"

namespace VELTRO::KELVO::Test {
namespace {

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
  const CardProcess process;
  Client client(process);
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
