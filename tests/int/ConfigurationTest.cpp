// The whole configuration of a virtual card, set through the flat interface and read from the card after it.
#include "capi/FlatRecord.h"
#include "config/LaserConfig.h"
#include "config/MotfConfig.h"
#include "config/ProcessVariables.h"
#include "config/QuadratureDecoderConfig.h"
#include "config/ScannerConfig.h"
#include "config/SystemConfig.h"
#include "int/CardProcess.h"
#include "int/Helpers.h"
#include "kelvo/kelvo.h"
#include "services/EventConfig.h"

namespace VELTRO::KELVO::Test {
namespace {

// Gives every field that it comes to another value than its default and, as far as there are so many, than the
// fields before it.
class Filler {
 public:
  template <class T>
  void Fill(T& field) {
    if constexpr (std::is_same_v<T, bool>) {
      field = !field;
    } else if constexpr (std::is_arithmetic_v<T>) {
      field = static_cast<T>(++count_ * (std::is_floating_point_v<T> ? 1.0625 : 1));
    } else if constexpr (IsReflectiveEnum<T>) {
      field = field == T::_values()[0] ? T::_values()[1] : T::_values()[0];
    } else if constexpr (std::is_same_v<T, std::string>) {
      field = "Asia/Kolkata";  // the card takes no other texts than names of time zones
    } else if constexpr (HasFields<T>) {
      T::ForEachField(field, [this](const char*, auto& part) { this->Fill(part); });
    } else if constexpr (std::is_same_v<T, Transform3D>) {
      for (std::size_t i = 0; i < 12; ++i) Fill(field[i]);
    } else if constexpr (requires { field.Coordinates; }) {
      Fill(field.Coordinates);
    } else if constexpr (requires { field.try_emplace(0); }) {
      for (const int number : {-7, 3}) Fill(field[number]);
    } else if constexpr (requires { field.insert(0); }) {
      field.insert({-1, 5, ++count_});
    } else {
      if constexpr (requires { field.emplace_back(Blank<typename T::value_type>()); }) {
        field.emplace_back(Blank<typename T::value_type>());
      }
      for (auto& element : field) Fill(element);
    }
  }

 private:
  int count_ = 0;
};

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
    EXPECT_EQ(setter(card, &flat) + storer(card), 0) << LastError();
  } else {
    EXPECT_EQ(getter(card, &flat), 0) << LastError();
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
