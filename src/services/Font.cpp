#include "services/Font.h"

#include <span>

namespace VELTRO::KELVO::ClientLib {

namespace {

// A surrogate, which is no character, becomes the replacement character.
void AppendUtf8(std::string& text, std::uint16_t character) {
  const unsigned code = (character & 0xF800U) == 0xD800U ? 0xFFFDU : character;
  if (code < 0x80) {
    text += static_cast<char>(code);
    return;
  }
  if (code < 0x800) {
    text += static_cast<char>(0xC0U | code >> 6);
  } else {
    text += static_cast<char>(0xE0U | code >> 12);
    text += static_cast<char>(0x80U | (code >> 6 & 0x3FU));
  }
  text += static_cast<char>(0x80U | (code & 0x3FU));
}

}  // namespace

std::string Font::ToString() const {
  std::string text = "CharContainer=";
  for (const auto& [character, glyph] : CharContainer) {
    const std::string list = glyph.ToString();
    text += '[';
    AppendUtf8(text, character);
    text += "]{ ";
    text.append(list, 2, list.size() - 4);  // its commands, without the list's brackets
    text += " }";
  }
  return text;
}

void Font::msgpack_unpack(const msgpack::object& object) {
  if (object.type != msgpack::type::ARRAY || object.via.array.size != 2) throw msgpack::type_error();
  const msgpack::object& glyphs = object.via.array.ptr[1];
  if (glyphs.type != msgpack::type::MAP) throw msgpack::type_error();
  Font received(object.via.array.ptr[0].as<std::int32_t>());
  for (const auto& [character, commands] : std::span(glyphs.via.map.ptr, glyphs.via.map.size)) {
    const auto [glyph, isNew] = received.CharContainer.try_emplace(character.as<std::uint16_t>());
    if (!isNew || commands.type != msgpack::type::ARRAY) throw msgpack::type_error();
    glyph->second.UnpackCommands({commands.via.array.ptr, commands.via.array.size});
  }
  *this = std::move(received);
}

void Font::TakeFrom(Body::Reader& reader) {
  if (reader.TakeArray() != 2) throw msgpack::type_error();
  *this = Font(reader.Take().as<std::int32_t>());
  for (std::uint32_t left = reader.TakeMap(); left > 0; --left) {
    const auto [glyph, isNew] = CharContainer.try_emplace(reader.Take().as<std::uint16_t>());
    if (!isNew) throw msgpack::type_error();
    glyph->second.TakeCommands(reader, reader.TakeArray());
  }
}

}  // namespace VELTRO::KELVO::ClientLib
