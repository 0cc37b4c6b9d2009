// Lists and fonts of the application in C++: what owns them, and references to what somebody else owns.
#ifndef KELVO_LISTS_HPP
#define KELVO_LISTS_HPP

#include <cstdint>
#include <string>
#include <vector>

#include "kelvo/KelvoCall.hpp"
#include "kelvo/KelvoListCommands.hpp"

namespace kelvo {

class CardRef;

// A list by its handle, which somebody else releases.
class ListRef : public ListCommands {
 public:
  using ListCommands::ListCommands;

  void Clear() const { Call<vlListClear>(handle_); }
  std::int32_t CommandCount() const { return Call<vlListCommandCount>(handle_); }
  std::int64_t StringLen() const { return Call<vlListStringLen>(handle_); }
  std::string ToString() const {
    return FetchTextOf<vlListToString>(static_cast<std::size_t>(StringLen()) + 2, handle_);
  }
  void AppendList(const ListRef& other) const { Call<vlListAppendList>(handle_, other); }
  void AppendCommandFromString(const Text& text) const { Call<vlListAppendCommandFromString>(handle_, text); }
};

// A list that is released with the object.
class List : public detail::Owner<ListRef, vlListReleaseHandle> {
 public:
  // An empty list, and one from its text.
  explicit List(const CardRef& card);
  List(const CardRef& card, const Text& text);
  // Takes over a list that a C function has made.
  static List Adopt(std::int64_t handle) { return List(handle); }

  // Releases it now; fails when that has been done by others already.
  void DeleteHandle() { Call<vlListDeleteHandle>(GiveUp()); }

 private:
  using Owner::Owner;
  explicit List(std::int64_t handle) : Owner(handle) {}
};

// A font by its handle, which somebody else releases.
class FontRef : public detail::Handled<std::int64_t> {
 public:
  using Handled::Handled;

  void AddChar(std::uint16_t character, const ListRef& list) const {
    Call<vlFontAddChar>(handle_, character, list);
  }
  List GetChar(std::uint16_t character) const { return List::Adopt(Call<vlFontGetChar>(handle_, character)); }
  void RemoveChar(std::uint16_t character) const { Call<vlFontRemoveChar>(handle_, character); }
  void Clear() const { Call<vlFontClear>(handle_); }
  std::vector<std::uint16_t> Chars() const { return FetchValues<vlFontChars, std::uint16_t>(handle_); }
  std::uint32_t CharsLen() const { return Fetch<vlFontCharsLen>(handle_); }
};

// A font that is released with the object.
class Font : public detail::Owner<FontRef, vlFontReleaseHandle> {
 public:
  // A font without glyphs, which will have that id on the card.
  Font(const CardRef& card, std::int32_t font_id);
  // Takes over a font that a C function has made.
  static Font Adopt(std::int64_t handle) { return Font(handle); }

 private:
  explicit Font(std::int64_t handle) : Owner(handle) {}
};

}  // namespace kelvo

#endif
