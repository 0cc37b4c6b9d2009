#include "kelvo/KelvoFontAPI.h"

#include <stdexcept>
#include <utility>

#include "capi/CallersArray.h"
#include "capi/Frame.h"

using namespace VELTRO::KELVO::ClientLib;

namespace {

const CommandList& GlyphOf(const Font& font, std::uint16_t character) {
  const auto found = font.CharContainer.find(character);
  if (found == font.CharContainer.end()) throw std::runtime_error("Character does not exist.");
  return found->second;
}

// The commands of a list of any connection, with their branches to labels resolved.
CommandList CommandsOf(std::int64_t list) {
  CommandList snapshot = CopyList(list);
  snapshot.ResolveBranchesAndLabels();
  CommandList commands;  // neither labels nor open loops
  commands.Append(snapshot);
  return commands;
}

}  // namespace

int64_t vlFontAllocate(int32_t handle, int32_t font_id) {
  return OnConnection(
      handle, [&](ConnectionContext& connection) { return connection.Fonts.Allocate(Font(font_id)); });
}

int32_t vlFontReleaseHandle(int64_t font) {
  return OnConnection(FontTable::ConnectionOf(font),
                      [&](ConnectionContext& connection) { connection.Fonts.Delete(font); });
}

int32_t vlFontAddChar(int64_t font, uint16_t character, int64_t list) {
  return OnConnection(FontTable::ConnectionOf(font), [&](ConnectionContext& connection) {
    const auto entry = connection.Fonts.Get(font);
    // Copied before the font is locked: nobody ever holds the locks of two objects.
    CommandList glyph = CommandsOf(list);
    entry->Use([&](Font& target) {
      if (!target.CharContainer.try_emplace(character, std::move(glyph)).second) {
        throw std::runtime_error("Char already occupied.");
      }
    });
  });
}

int64_t vlFontGetChar(int64_t font, uint16_t character) {
  return OnConnection(FontTable::ConnectionOf(font), [&](ConnectionContext& connection) {
    return connection.Lists.Allocate(
        connection.Fonts.Get(font)->Use([&](const Font& source) { return GlyphOf(source, character); }));
  });
}

int32_t vlFontRemoveChar(int64_t font, uint16_t character) {
  return OnFont(font, [&](Font& target) {
    GlyphOf(target, character);
    target.CharContainer.erase(character);
  });
}

int32_t vlFontClear(int64_t font) {
  return OnFont(font, [](Font& target) { target.CharContainer.clear(); });
}

int32_t vlFontChars(int64_t font, uint16_t* characters, uint32_t capacity, uint32_t* count) {
  return OnFont(font, [&](const Font& source) {
    CallersArray array(characters, "characters", capacity, count);
    array.Fill(source.CharContainer, "Buffer is too small.",
               [](const auto& glyph, uint16_t& character) { character = glyph.first; });
  });
}

int32_t vlFontCharsLen(int64_t font, uint32_t* count) {
  return OnFont(font, [&](const Font& source) {
    *NotNull(count, "count") = static_cast<uint32_t>(source.CharContainer.size());
  });
}

int32_t vlFontSet(int32_t handle, int64_t font) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    // A snapshot, which shares the glyphs' memory: no lock is held while the card is waited for.
    const Font snapshot = connection.Fonts.Get(font)->Use([](const Font& source) { return source; });
    connection.GetFontAPI().Set(snapshot);
  });
}

int64_t vlFontGet(int32_t handle, int32_t font_id) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    return connection.Fonts.Allocate(connection.GetFontAPI().Get(font_id));
  });
}

int32_t vlFontSetActive(int32_t handle, int32_t font_id) {
  return OnConnection(handle,
                      [&](ConnectionContext& connection) { connection.GetFontAPI().SetActive(font_id); });
}

int32_t vlFontDelete(int32_t handle, int32_t font_id) {
  return OnConnection(handle,
                      [&](ConnectionContext& connection) { connection.GetFontAPI().Delete(font_id); });
}

int32_t vlFontLoad(int32_t handle, int32_t font_id) {
  return OnConnection(handle, [&](ConnectionContext& connection) { connection.GetFontAPI().Load(font_id); });
}

int32_t vlFontStore(int32_t handle, int32_t font_id) {
  return OnConnection(handle, [&](ConnectionContext& connection) { connection.GetFontAPI().Store(font_id); });
}
