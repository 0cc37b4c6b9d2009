#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "execution/CommandTable.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::CommandCode;
using ClientLib::CommandCode2;

namespace {

constexpr std::int32_t MostDigits = 100;

FontSnapshot ActiveFont(Run& run) {
  auto font = run.Font ? run.Around.Fonts.Find(*run.Font) : run.Around.Fonts.GetActive();
  if (!font) throw std::runtime_error("No font is active.");
  return font;
}

void SelectFont(Run& run, std::int32_t id) {
  run.Around.Fonts.Find(id);
  run.Font = id;
}

void MarkCharacter(Run& run, std::int32_t character) {
  run.Calls.Enter(run.Prepared.FindGlyph(ActiveFont(run), character));
}

// All of it or nothing: a glyph that is not there fails the command.
void MarkText(Run& run, std::string_view text) {
  const auto font = ActiveFont(run);
  std::vector<std::shared_ptr<const Program>> glyphs;
  std::transform(text.rbegin(), text.rend(), std::back_inserter(glyphs), [&](char character) {
    return run.Prepared.FindGlyph(font, static_cast<unsigned char>(character));
  });
  auto first = std::move(glyphs.back());
  glyphs.pop_back();
  run.Calls.Enter(std::move(first), std::move(glyphs));
}

void MarkTime(Run& run) {
  MarkText(run, TimeText(run.Around.TimeFormat.Get(), run.Around.GetLocalTime()));
}

void MarkCounter(Run& run, std::int32_t nameBits, std::int32_t digits) {
  if (digits < 0 || digits > MostDigits) {
    throw std::runtime_error("The number of digits must be 0 to " + std::to_string(MostDigits) + ".");
  }
  const std::int64_t value = run.Around.Variables.GetInteger(static_cast<std::uint32_t>(nameBits));
  std::string text = std::to_string(value < 0 ? -value : value);
  const auto wanted = static_cast<std::size_t>(digits);
  if (text.size() < wanted) text.insert(0, wanted - text.size(), '0');
  MarkText(run, value < 0 ? "-" + text : text);
}

}  // namespace

std::span<const CommandRow> FontCommands() {
  static constexpr CommandRow Rows[] = {
      {CommandCode::SELECT_FONT, [](Run& run, std::int32_t id) { SelectFont(run, id); }},
      {CommandCode2::MARK_CHAR, [](Run& run, std::int32_t character) { MarkCharacter(run, character); }},
      {CommandCode2::MARK_TIME, [](Run& run) { MarkTime(run); }},
      {CommandCode2::MARK_COUNTER,
       [](Run& run, std::int32_t name, std::int32_t digits) { MarkCounter(run, name, digits); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Simulation
