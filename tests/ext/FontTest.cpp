// Fonts through the flat functions, on a virtual card in another process.
#include "int/CardProcess.h"

namespace VELTRO::KELVO::Test {
namespace {

TEST(Fonts, AreBuiltOfCopiesOfLists) {
  const CardProcess card;
  const Connection c(card.GetPort()), other(card.GetPort());
  const std::int64_t list = vlListAllocate(other), font = vlFontAllocate(c, 3);
  std::uint16_t codes[3] = {};
  std::uint32_t count = 99;
  EXPECT_OK(vlFontAddChar(font, 'B', list));
  EXPECT_OK(vlListAppendLaserOn(list));  // the list grows after each glyph that is made of it
  EXPECT_OK(vlFontAddChar(font, 0xFFFF, list));
  EXPECT_OK(vlListAppendLaserOff(list));
  EXPECT_OK(vlFontAddChar(font, 'A', list));
  EXPECT_FAILS(vlFontAddChar(font, 'B', list), "Char already occupied.");
  EXPECT_FAILS(vlFontAddChar(font, 'C', font), "List does not exist.");
  EXPECT_FAILS(vlFontGetChar(font, 'C'), "Character does not exist.");
  EXPECT_FAILS(vlFontRemoveChar(font, 'C'), "Character does not exist.");
  EXPECT_EQ(Told(vlFontChars(font, codes, 2, &count), count), "Buffer is too small. 99");
  EXPECT_OK(vlFontSet(c, font));
  for (const std::int64_t each : {font, vlFontGet(c, 3)}) {
    EXPECT_EQ(Told(vlFontChars(each, codes, 3, &count), count, codes[0], codes[1], codes[2]),
              "0 3 65 66 65535");
    for (std::uint32_t i = 0; i < 3; ++i) {
      const std::int64_t glyph = vlFontGetChar(each, codes[i]);
      EXPECT_EQ(glyph >> 32, c);
      EXPECT_EQ(vlListCommandCount(glyph), (i + 2) % 3) << i;
    }
    EXPECT_OK(vlFontRemoveChar(each, 'B'));
    EXPECT_EQ(Told(vlFontCharsLen(each, &count), count), "0 2");
    EXPECT_OK(vlFontClear(each));
    EXPECT_EQ(Told(vlFontCharsLen(each, &count), count), "0 0");
  }
}

TEST(Fonts, AreLoadedStoredAndDeletedByTheCard) {
  const CardConnection c;
  const std::int64_t font = vlFontAllocate(c, 3);
  const char* const notLoaded = "There is no font 3 on the card.";
  EXPECT_EQ(Outcome(vlFontGet(c, 3)), notLoaded);
  EXPECT_EQ(Outcome(vlFontSetActive(c, 3)), notLoaded);
  EXPECT_EQ(Outcome(vlFontLoad(c, 3)), "There is no stored font 3 on the card.");
  EXPECT_OK(vlFontSet(c, font));
  EXPECT_OK(vlFontSetActive(c, 3));
  EXPECT_OK(vlFontStore(c, 3));
  EXPECT_OK(vlFontDelete(c, 3));
  EXPECT_EQ(Outcome(vlFontDelete(c, 3)), notLoaded);
  EXPECT_EQ(Outcome(vlFontStore(c, 3)), notLoaded);
  EXPECT_OK(vlFontLoad(c, 3));
  EXPECT_OK(vlFontSetActive(c, 3));
}

TEST(Fonts, MayBeReleasedWhileOthersAddCharacters) {
  const CardConnection c;
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
