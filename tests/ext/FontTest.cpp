// Fonts through the flat functions, on a virtual card in another process.
#include "int/CardProcess.h"
#include "support/Process.h"

namespace VELTRO::KELVO::Test {
namespace {

// The result of a call, or the text of its failure without what stands around a card's.
std::string Outcome(std::int64_t result) {
  const std::string error = LastError();
  const std::size_t begin = error.find('\n') + 1;
  return error.empty() ? std::to_string(result) : error.substr(begin, error.find('\n', begin) - begin);
}

TEST(Fonts, AreBuiltSentAndFetched) {
  const CardProcess card;
  const Connection c(card.GetPort()), other(card.GetPort());
  const std::int64_t list = vlListAllocate(other), font = vlFontAllocate(c, 3);
  std::uint16_t codes[3] = {};
  std::uint32_t count = 99;
  const char* const taken = "Char already occupied.";
  const char* const missing = "Character does not exist.";
  const char* const notLoaded = "There is no font 3 on the card.";
  // They are called in this order. A glyph is a copy: the list grows after each.
  // clang-format off
  const std::pair<std::string, std::string> steps[] = {
      {Outcome(vlFontAddChar(font, 'B', list)), "0"}, {Outcome(vlListAppendLaserOn(list)), "0"},
      {Outcome(vlFontAddChar(font, 0xFFFF, list)), "0"}, {Outcome(vlListAppendLaserOff(list)), "0"},
      {Outcome(vlFontAddChar(font, 'A', list)), "0"}, {Outcome(vlFontAddChar(font, 'B', list)), taken},
      {Outcome(vlFontAddChar(font, 'C', font)), "List does not exist."},
      {Outcome(vlFontGetChar(font, 'C')), missing}, {Outcome(vlFontRemoveChar(font, 'C')), missing},
      {Outcome(vlFontChars(font, codes, 2, &count)), "Buffer is too small."}, {std::to_string(count), "99"},
      {Outcome(vlFontGet(c, 3)), notLoaded}, {Outcome(vlFontSetActive(c, 3)), notLoaded},
      {Outcome(vlFontLoad(c, 3)), "There is no stored font 3 on the card."}, {Outcome(vlFontSet(c, font)), "0"},
      {Outcome(vlFontSetActive(c, 3)), "0"}, {Outcome(vlFontStore(c, 3)), "0"}, {Outcome(vlFontDelete(c, 3)), "0"},
      {Outcome(vlFontDelete(c, 3)), notLoaded}, {Outcome(vlFontStore(c, 3)), notLoaded},
      {Outcome(vlFontLoad(c, 3)), "0"},
  };
  // clang-format on
  for (const auto& [outcome, expected] : steps) EXPECT_EQ(outcome, expected) << &outcome - &steps[0].first;
  for (const std::int64_t each : {font, vlFontGet(c, 3)}) {
    EXPECT_EQ(Outcome(vlFontChars(each, codes, 3, &count)), "0");
    EXPECT_EQ(std::vector(codes, codes + count), (std::vector<std::uint16_t>{'A', 'B', 0xFFFF}));
    for (std::uint32_t i = 0; i < 3; ++i) {
      const std::int64_t glyph = vlFontGetChar(each, codes[i]);
      EXPECT_EQ(glyph >> 32, c);
      EXPECT_EQ(vlListCommandCount(glyph), (i + 2) % 3) << i;
    }
    EXPECT_EQ(vlFontRemoveChar(each, 'B') | vlFontCharsLen(each, &count), 0);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(vlFontClear(each) | vlFontCharsLen(each, &count), 0);
    EXPECT_EQ(count, 0U);
  }
}

TEST(Fonts, MayBeReleasedWhileOthersAddCharacters) {
  const CardProcess card;
  const Connection c(card.GetPort());
  const std::int64_t list = vlListAllocate(c);
  for (int round = 0; round < 50; ++round) {
    const std::int64_t font = vlFontAllocate(c, 1);
    Together(3, [&](std::uint32_t i) {
      std::uint32_t count = 0;
      std::uint16_t code = 0;
      while (i == 0 && (vlFontAddChar(font, code++, list) == 0 || vlFontClear(font) == 0)) continue;
      while (i == 1 && vlFontSet(c, font) == 0) continue;
      while (i == 2 && count < 100) vlFontCharsLen(font, &count);
      EXPECT_EQ(Outcome(i == 2 ? vlFontReleaseHandle(font) : -1), i == 2 ? "0" : "Font does not exist.");
    });
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
