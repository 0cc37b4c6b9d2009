// A font: a numbered set of glyphs. A glyph is the commands that draw one character.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "lists/CommandList.h"
#include "rpc/MsgPack.h"

namespace VELTRO::KELVO::ClientLib {

struct Font {
  static constexpr std::string_view WireName = "font";

  Font() = default;
  explicit Font(int id) : Id(id) {}

  std::int32_t Id = 0;
  std::map<std::uint16_t, CommandList> CharContainer;  // by character code

  // Characters stand in it as UTF-8.
  std::string ToString() const;

  // On the wire: an array of two, the id and a map from character code to glyph, an array of commands.
  void msgpack_pack(auto& packer) const;
  // Throws msgpack::type_error for any other shape, a character that comes twice included; the font is as it
  // was then.
  void msgpack_unpack(const msgpack::object& object);
  // The same, however large the font is. What it was before is lost if that throws.
  void TakeFrom(Body::Reader& reader);
};

inline std::string to_string(const Font& font) {
  return font.ToString();
}

void Font::msgpack_pack(auto& packer) const {
  packer.pack_array(2).pack(Id);
  packer.pack_map(static_cast<std::uint32_t>(CharContainer.size()));
  for (const auto& [character, glyph] : CharContainer) {
    packer.pack(character);
    glyph.PackCommands(packer);
  }
}

}  // namespace VELTRO::KELVO::ClientLib
