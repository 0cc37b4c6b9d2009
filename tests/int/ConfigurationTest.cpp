// The whole configuration of a virtual card, set through the flat interface and read from the card after it.
#include "capi/FlatRecord.h"
#include "config/LaserConfig.h"
#include "config/MotfConfig.h"
#include "config/ProcessVariables.h"
#include "config/QuadratureDecoderConfig.h"
#include "config/ScannerConfig.h"
#include "config/SystemConfig.h"
#include "int/CardProcess.h"
#include "int/Filler.h"
#include "int/Helpers.h"
#include "kelvo/kelvo.h"
#include "services/EventConfig.h"

namespace VELTRO::KELVO::Test {
namespace {

// Sets and stores a record of which every field has a value of its own, or fetches the card's. What it has on the
// wire.
template <class R, class F>
std::string Pass(bool store, std::int32_t card, std::int32_t (*setter)(std::int32_t, const F*),
                 std::int32_t (*storer)(std::int32_t), std::int32_t (*getter)(std::int32_t, F*)) {
  R record;
  F flat{};
  if (store) {
    Filler().Fill(record);
    Flat::FromRecord(record, flat);
    EXPECT_OK(setter(card, &flat));
    EXPECT_OK(storer(card));
  } else {
    EXPECT_OK(getter(card, &flat));
    record = Flat::Taken<R>(&flat);
  }
  return Hex(Packed(record));
}

TEST(VirtualCardConfiguration, IsTheSameAfterARestart) {
  const TemporaryDirectory directory;
  const auto pass = [&](bool store) {
    const CardProcess process({"--state", directory.Path});
    Connection card(process.GetPort());
#define PASS(Record, area, what) \
  Pass<Record, vl##Record>(store, card, vl##area##Set##what, vl##area##Store##what, vl##area##Get##what)
    return std::vector{
        PASS(LaserConfig, Laser, Config),
        PASS(ScannerConfig, Scanner, Config),
        PASS(ProcessVariables, Process, Variables),
        PASS(SystemConfig, System, Config),
        PASS(MotfConfig, Motf, Config),
        PASS(QuadratureDecoderConfig, MotfQuadratureDecoder, Config),
        PASS(EventConfig, Event, Config),
    };
#undef PASS
  };
  const auto stored = pass(true);
  EXPECT_EQ(pass(false), stored);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
