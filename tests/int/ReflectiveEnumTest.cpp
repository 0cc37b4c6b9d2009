// Enumerations that know their names.
#include "common/ReflectiveEnum.h"

#include "Helpers.h"

namespace VELTRO::KELVO::ClientLib::Testing {
namespace {

// clang-format off
KELVO_ENUM(Sample, std::int32_t, Zero, One, Five = 5, Six, Minus = -3, Shifted = 1 << 4, Same = Five, Tight=0x20,
           Sum = Five + Shifted, Lowest = -2147483647 - 1, )
#define KELVO_TEN(letter)                                                                                    \
  letter##0, letter##1, letter##2, letter##3, letter##4, letter##5, letter##6, letter##7, letter##8, letter##9
KELVO_ENUM(Long, std::uint8_t, KELVO_TEN(A), KELVO_TEN(B), KELVO_TEN(C), KELVO_TEN(D), KELVO_TEN(E), KELVO_TEN(F),
           KELVO_TEN(G), KELVO_TEN(H), KELVO_TEN(I), KELVO_TEN(J), KELVO_TEN(K), KELVO_TEN(L), KELVO_TEN(M))
// clang-format on

TEST(ReflectiveEnum, KnowsNamesAndValuesInOrder) {
  const struct {
    const char* Name;
    std::int32_t Value;
  } rows[] = {{"Zero", 0},     {"One", 1},  {"Five", 5},   {"Six", 6},  {"Minus", -3},
              {"Shifted", 16}, {"Same", 5}, {"Tight", 32}, {"Sum", 21}, {"Lowest", INT32_MIN}};
  ASSERT_EQ(Sample::_names().size(), std::size(rows));
  ASSERT_EQ(Sample::_values().size(), std::size(rows));
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(Sample::_names()[i], rows[i].Name);
    EXPECT_EQ(Sample::_values()[i]._to_integral(), rows[i].Value);
    EXPECT_EQ(Sample::_from_string(rows[i].Name)._to_integral(), rows[i].Value);
  }
  EXPECT_STREQ(Sample::_name(), "Sample");
}

TEST(ReflectiveEnum, ConvertsFromNumbersItKnows) {
  static_assert(Sample::_from_integral(-3) == Sample::Minus);
  EXPECT_EQ(Sample::_from_integral(5)._to_string(), "Five");  // the first of two
  EXPECT_EQ(Sample::_from_integral(INT32_MIN)._to_string(), "Lowest");
  for (const std::int64_t number : {std::int64_t{2}, std::int64_t{-1}, std::int64_t{INT32_MAX},
                                    std::int64_t{1} << 32, (std::int64_t{1} << 32) + 5}) {
    EXPECT_EQ(Failure([&] { Sample::_from_integral(number); }), "Sample::_from_integral: invalid argument")
        << number;
  }
  EXPECT_EQ(Sample(static_cast<Sample::_enumerated>(77))._to_string(), "77");
}

TEST(ReflectiveEnum, ConvertsFromNamesItKnows) {
  for (const char* name : {"", "five", "Five ", "Fiv", "Five = 5", "Zero,"}) {
    EXPECT_EQ(Failure([&] { Sample::_from_string(name); }), "Sample::_from_string: invalid argument") << name;
    EXPECT_FALSE(Sample::_from_string_nothrow(name).has_value());
  }
}

TEST(ReflectiveEnum, TakesLongDeclarations) {
  ASSERT_EQ(Long::_values().size(), 130U);
  for (std::size_t i = 0; i < 130; ++i) {
    EXPECT_EQ(Long::_values()[i]._to_integral(), i);
    EXPECT_EQ(Long::_names()[i], std::string(1, static_cast<char>('A' + i / 10)) + std::to_string(i % 10));
  }
  EXPECT_FALSE(Long::_is_valid(130));
}

}  // namespace
}  // namespace VELTRO::KELVO::ClientLib::Testing
