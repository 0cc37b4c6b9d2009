// Fonts to the byte, and in text.
#include "Helpers.h"
#include "services/FontAPI.h"

namespace VELTRO::KELVO::Test {
namespace {

TEST(Font, TravelsAsItsIdAndItsGlyphsAndReadsAsTheCharactersWithTheirCommands) {
  Font font(300);
  font.CharContainer[0x20AC].AppendLaserOn();
  font.CharContainer['A'].AppendProgress(7);
  font.CharContainer['A'].AppendLaserOff();
  font.CharContainer[' '] = font.CharContainer[0xD800] = font.CharContainer[0xE9] = CommandList();
  const std::string bytes =
      "92 CD 01 2C 85 20 90 41 92 92 01 C4 09 01 00 00 05 22 07 00 00 00 92 12 C4 00 CC E9 90 "
      "CD 20 AC 91 92 11 C4 00 CD D8 00 90";
  const std::string text =
      "CharContainer=[ ]{  }[A]{ { PI, I32[ 7 ] }, { LOF } }[\u00E9]{  }[\u20AC]{ { LON } }[\uFFFD]{  }";
  CallRecorder caller;
  FontAPI(caller).Set(font);
  EXPECT_EQ(Hex(caller.Calls.at(0)), "91 " + bytes);
  EXPECT_EQ(to_string(Unpacked<Font>(Bytes(bytes))), text);
  for (const char* row :
       {"C0", "91 01", "93 01 80 C0", "92 A1 31 80", "92 CE 80 00 00 00 80", "92 01 90", "92 01 81 FF 90",
        "92 01 81 CE 00 01 00 00 90", "92 01 81 A1 41 90", "92 01 82 41 90 41 90", "92 01 81 41 C0",
        "92 01 81 41 80", "92 01 81 41 91 FF", "92 01 81 41 91 92 01 A0", "92 01 81 41 91 93 01 C4 00 C0"}) {
    EXPECT_THROW(font = Unpacked<Font>(Bytes(row)), msgpack::type_error) << row;
  }
  EXPECT_EQ(std::to_string(font.Id) + font.ToString(), "300" + text);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
