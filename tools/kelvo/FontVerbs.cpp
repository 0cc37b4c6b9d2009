// font: the fonts on the card.
#include <kelvo/kelvo.h>

#include <nlohmann/json.hpp>

#include "Files.h"
#include "FontFile.h"
#include "Session.h"
#include "Verb.h"

namespace VELTRO::KELVO::Tool {

namespace {

// A card does not tell which fonts it has, so these are asked for.
constexpr std::int32_t UsualFonts = 32;
constexpr std::uint32_t MostCharacters = 65536;

// A font of the library that goes with the object.
class LocalFont {
 public:
  LocalFont(Session& session, std::int64_t handle) : Handle(session.Check(handle)) {}
  ~LocalFont() { vlFontReleaseHandle(Handle); }
  LocalFont(const LocalFont&) = delete;
  LocalFont& operator=(const LocalFont&) = delete;

  const std::int64_t Handle;
};

std::vector<std::uint16_t> CharactersOf(Session& session, const LocalFont& font) {
  std::vector<std::uint16_t> codes(MostCharacters);
  std::uint32_t count = 0;
  session.Check(vlFontChars(font.Handle, codes.data(), MostCharacters, &count));
  codes.resize(count);
  return codes;
}

ExitCode PutFont(Session& session, const Arguments& given) {
  const std::string& path = given.Text("FILE");
  const std::int32_t id = given.Int32("FONT");
  const FontTexts texts = ReadFontFile(path);
  const LocalFont font(session, vlFontAllocate(session.Card(), id));
  for (const auto& [code, text] : texts) {
    const std::int64_t list = vlListAllocateFromString(session.Card(), text.c_str());
    if (list < 0) throw Refused("'" + path + "', character '" + CharacterName(code) + "': " + LastError());
    const std::int32_t added = vlFontAddChar(font.Handle, code, list);
    session.Check(added);
    vlListReleaseHandle(list);
  }
  session.Check(vlFontSet(session.Card(), font.Handle));
  session.Out.Remark("Font " + std::to_string(id) + ": " + std::to_string(texts.size()) +
                     " characters from '" + Clean(path) + "'.");
  return ExitCode::Done;
}

ExitCode GetFont(Session& session, const Arguments& given) {
  const LocalFont font(session, vlFontGet(session.Card(), given.Int32("FONT")));
  FontTexts texts;
  for (const std::uint16_t code : CharactersOf(session, font)) {
    const std::int64_t list = session.Check(vlFontGetChar(font.Handle, code));
    std::string text(static_cast<std::size_t>(session.Check(vlListStringLen(list))) + 2, '\0');
    std::uint32_t length = 0;
    session.Check(vlListToString(list, text.data(), static_cast<std::uint32_t>(text.size()), &length));
    text.resize(length);
    texts[code] = std::move(text);
    vlListReleaseHandle(list);
  }
  const Json json = FontJson(texts);
  if (given.Has("-o")) {
    WriteFile(given.Text("-o"), json.dump(2) + "\n");
  } else {
    session.Out.Print(json);
  }
  return ExitCode::Done;
}

// Neighbours together.
std::string Ranges(const std::vector<std::uint16_t>& codes) {
  std::string text;
  for (std::size_t i = 0; i < codes.size(); ++i) {
    const std::size_t first = i;
    while (i + 1 < codes.size() && codes[i + 1] == codes[i] + 1) ++i;
    if (!text.empty()) text += ' ';
    char range[32];
    std::snprintf(range, sizeof range, i == first ? "U+%04X" : "U+%04X-U+%04X",
                  static_cast<unsigned>(codes[first]), static_cast<unsigned>(codes[i]));
    text += range;
  }
  return text;
}

ExitCode ShowFonts(Session& session, const Arguments& given) {
  std::vector<std::int32_t> ids;
  for (const std::string& text : given.All("FONT"))
    ids.push_back(static_cast<std::int32_t>(ParseWhole("FONT", text, INT32_MIN, INT32_MAX)));
  for (std::int32_t id = 0; given.All("FONT").empty() && id < UsualFonts; ++id) ids.push_back(id);
  Json list = Json::array();
  std::vector<std::vector<std::string>> rows;
  for (const std::int32_t id : ids) {
    const std::int64_t handle = vlFontGet(session.Card(), id);
    // Which of the usual ones there are is what is asked.
    if (given.All("FONT").empty() && !session.IsDone(handle)) continue;
    const LocalFont font(session, handle);
    const auto codes = CharactersOf(session, font);
    Json names = Json::array();
    for (const std::uint16_t code : codes) names.push_back(CharacterName(code));
    list.push_back({{"font", id}, {"characters", names}});
    rows.push_back({std::to_string(id), std::to_string(codes.size()), Ranges(codes)});
  }
  if (session.Out.AsJson) {
    session.Out.Print(list);
  } else if (!rows.empty()) {
    session.Out.Table({"FONT", "COUNT", "CHARACTERS"}, rows);
  }
  return ExitCode::Done;
}

template <std::int32_t (*Action)(std::int32_t, std::int32_t)>
ExitCode OnFont(Session& session, const Arguments& given) {
  session.Check(Action(session.Card(), given.Int32("FONT")));
  return ExitCode::Done;
}

constexpr Parameter FontId{"FONT", "", "The font's number on the card"};

}  // namespace

std::span<const Verb> FontVerbs() {
  static const Verb Rows[] = {
      {"font put",
       "Send a font",
       {FontId, {"FILE", "", "What 'font get' wrote; - for standard input"}},
       &PutFont},
      {"font get", "Fetch a font as JSON", {FontId, {"-o", "FILE", "Write into this file"}}, &GetFont},
      {"font activate",
       "Make a font the one in which lists mark text unless they select another",
       {FontId},
       &OnFont<vlFontSetActive>},
      {"font ls",
       "Show fonts and their characters",
       {{"FONT", "", "Their numbers on the card; without any those from 0 to 31 that it has",
         Parameter::Any}},
       &ShowFonts},
      {"font rm", "Delete a font on the card", {FontId}, &OnFont<vlFontDelete>},
      {"font load", "Make the card load a stored font", {FontId}, &OnFont<vlFontLoad>},
      {"font store", "Make the card store a font", {FontId}, &OnFont<vlFontStore>},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Tool
