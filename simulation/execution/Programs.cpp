#include "execution/Programs.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace VELTRO::KELVO::Simulation {

std::shared_ptr<const Program> Programs::FindList(std::int32_t id) {
  const auto found = prepared_.find(id);
  auto changed = lists_.FindChanged(id, found == prepared_.end() ? 0 : found->second.Version);
  return changed ? PrepareList(id, std::move(*changed)) : found->second.Commands;
}

std::shared_ptr<const Program> Programs::PrepareList(std::int32_t id, ListSnapshot list) {
  auto program = std::make_shared<const Program>("List " + std::to_string(id), std::move(list.Commands), id,
                                                 std::move(list.Hold));
  prepared_[id] = {list.Version, program};
  return program;
}

std::shared_ptr<const Program> Programs::FindGlyph(const FontSnapshot& font, std::int32_t character) {
  PreparedFont& prepared = fonts_[font->Id];
  if (prepared.Font != font) prepared = {font, {}};
  std::shared_ptr<const Program>& program = prepared.Glyphs[character];
  if (program) return program;
  const std::string fontName = "Font " + std::to_string(font->Id);
  const auto code = static_cast<std::uint16_t>(character);
  const auto glyph = code == character ? font->CharContainer.find(code) : font->CharContainer.end();
  if (glyph == font->CharContainer.end()) {
    throw std::runtime_error(fontName + " has no character " + std::to_string(character) + ".");
  }
  program =
      std::make_shared<const Program>(fontName + ", character " + std::to_string(character), glyph->second);
  return program;
}

}  // namespace VELTRO::KELVO::Simulation
