// Lists, their labels, and fonts: how they are numbered, filled, taken from text and released.
#include "ext/AskedCard.h"
#include "int/CardProcess.h"
#include "support/FailingMemory.h"

namespace VELTRO::KELVO::Test {
namespace {

TEST(Lists, AreNumberedAndNeverNumberedAgain) {
  const FakeConnection connection;
  const std::int64_t first = vlListAllocate(connection);
  EXPECT_EQ(first >> 32, connection);
  EXPECT_OK(vlListReleaseHandle(first));
  const std::int64_t second = vlListAllocate(connection);
  EXPECT_EQ(second, first + 1);
  EXPECT_OK(vlListDeleteHandle(second));
  EXPECT_EQ(vlListDeleteHandle(second), -1);
  EXPECT_OK(vlListReleaseHandle(second));
}

TEST(Lists, MayBeReleasedWhileOthersAppend) {
  const FakeConnection connection;
  for (int round = 0; round < 50; ++round) {
    const std::int64_t list = vlListAllocate(connection);
    Together(3, [&](std::uint32_t i) {
      // Bounded, as the third may be kept from running for long.
      while (i < 2 && (vlListCommandCount(list) > 100000 || vlListAppendMarkAbs2D(list, 1, 2) == 0)) continue;
      while (i == 2 && vlListCommandCount(list) < 1000) std::this_thread::yield();
      EXPECT_EQ(Outcome(i == 2 ? vlListReleaseHandle(list) : -1), i == 2 ? "0" : "List does not exist.");
    });
  }
}

TEST(Lists, AreForgottenByWhoeverUsedThemLast) {
  FakeCard card(FakeCard::Obliging());
  const std::int32_t connection = vlConnect("127.0.0.1", card.Port());
  const std::int64_t released = vlListAllocate(connection);
  EXPECT_OK(vlListAppendMarkAbs2D(released, 1, 2));
  EXPECT_OK(vlListReleaseHandle(released));
  EXPECT_FAILS(vlListAppendMarkAbs2D(released, 1, 2), "List does not exist.");
  const std::int64_t left = vlListAllocate(connection);
  EXPECT_OK(vlListAppendMarkAbs2D(left, 1, 2));
  EXPECT_OK(vlDisconnect(connection));
  EXPECT_FAILS(vlListAppendMarkAbs2D(left, 1, 2), "There is no connection corresponding to this handle.");
}

TEST(Lists, AreAppendedToByManyThreads) {
  constexpr std::uint32_t Marks = 20000;
  const FakeConnection connection;
  std::vector<std::int64_t> own(16);
  for (std::int64_t& list : own) list = vlListAllocate(connection);
  const std::int64_t common = vlListAllocate(connection);
  Together(16, [&](std::uint32_t thread) {
    for (std::uint32_t i = 0; i < Marks; ++i) {
      vlListAppendMarkAbs2D(own[thread], thread, i);
      if (thread % 4 == 0) vlListAppendMarkAbs2D(common, thread, thread);
    }
  });
  const auto mark = [](std::uint32_t x, std::uint32_t y) {
    return "{ MA, P2D[ X=" + std::to_string(x) + " Y=" + std::to_string(y) + " ] }";
  };
  for (std::uint32_t thread = 0; thread < own.size(); ++thread) {
    std::string expected;
    for (std::uint32_t i = 0; i < Marks; ++i) expected.append(i == 0 ? "[ " : ", ").append(mark(thread, i));
    EXPECT_EQ(TextOf(own[thread]), expected + " ]");
  }
  std::string left = TextOf(common);
  for (std::uint32_t thread = 0; thread < own.size(); thread += 4) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = left.find(mark(thread, thread), at)) != std::string::npos; ++at) ++count;
    EXPECT_EQ(count, Marks);
  }
  EXPECT_EQ(vlListCommandCount(common), 4 * Marks);
}

TEST(Labels, StandForPositionsOnceAListIsSet) {
  AskedCard card;
  const std::int64_t list = vlListAllocate(card);
  const auto set = [&] { return Outcome(vlListSet(card, 1, list, false, -1)); };
  EXPECT_OK(vlListAppendBranchToLabel(list, "end"));
  EXPECT_OK(vlListAppendCaseToLabelValue(list, "begin", 7));
  EXPECT_EQ(set(), "Label 'begin' not defined (referenced from '1048945' at 1).");
  EXPECT_OK(vlListAppendLabel(list, "begin"));
  EXPECT_OK(vlListAppendLaserOff(list));
  EXPECT_FAILS(vlListAppendLabel(list, "begin"), "Label 'begin' is already defined.");
  EXPECT_EQ(set(), "Label 'end' not defined (referenced from '1048849' at 0).");
  EXPECT_OK(vlListAppendLabel(list, "end"));
  EXPECT_EQ(set(), "0");
  const std::string branch("\xCE\0\x10\1\x11\xC4\x09\1\0\0\5\x22\3\0\0\0", 16);  // BA, I32[ 3 ]
  EXPECT_THAT(card.Arguments, HasSubstr(branch));
  EXPECT_EQ(TextOf(list), "[ { BA, I32[ 3 ] }, { CASGA, I32[ 2 ], I32[ 7 ] }, { LOF } ]")
      << "the list itself";
}

TEST(Labels, DoNotComeAlongWhenAListIsAppended) {
  AskedCard card;
  const std::int64_t list = vlListAllocate(card), copy = vlListAllocate(card);
  EXPECT_OK(vlListAppendProgress(list, 7));
  EXPECT_OK(vlListAppendLabel(list, "end"));
  EXPECT_OK(vlListAppendList(copy, list));
  EXPECT_OK(vlListAppendLabel(copy, "end"));
  EXPECT_OK(vlListAppendList(copy, copy)) << "itself";
  EXPECT_EQ(TextOf(copy), "[ { PI, I32[ 7 ] }, { PI, I32[ 7 ] } ]");
}

TEST(Lists, AreNotMadeFromTextThatIsNone) {
  const FakeConnection connection;
  const std::int64_t first = vlListAllocateFromString(connection, "[{LOF}]");
  for (const char* text : {"", "[ { MA, P2D[ X=1 ] } ]", "[ { MA, P2D[ X=1 Y=2 ] } x ]"}) {
    EXPECT_FAILS(vlListAllocateFromString(connection, text), "Illegal list content!");
  }
  std::string large = "{NO,ByteArr[";
  for (int i = 0; i < 921600; ++i) large += "1 ";
  EXPECT_FAILS(vlListAllocateFromString(connection, (large + "]}").c_str()),
               "Command exceeds the maximum allowed command size of 921600 . Please split into several "
               "commands.");
  {
    const FailingMemory once(0, 1);
    EXPECT_EQ(vlListAllocateFromString(connection, "{LOF}"), -1);
  }
  EXPECT_EQ(LastError(), "std::bad_alloc");
  EXPECT_EQ(vlListAllocate(connection), first + 1) << "something half-made has taken a number";
}

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
