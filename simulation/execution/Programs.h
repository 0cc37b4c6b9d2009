// What a run has prepared so far: a list or glyph that it comes to again and again is prepared once.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>

#include "execution/Program.h"
#include "surroundings/FontSource.h"
#include "surroundings/ListSource.h"

namespace VELTRO::KELVO::Simulation {

class Programs {
 public:
  explicit Programs(ListSource& lists) : lists_(lists) {}

  // The list as it is on the card now. Throws as ListSource and Program do.
  std::shared_ptr<const Program> FindList(std::int32_t id);
  // Takes over this state of it.
  std::shared_ptr<const Program> PrepareList(std::int32_t id, ListSnapshot list);
  // Throws std::runtime_error "Font ID has no character CODE.", or as Program does.
  std::shared_ptr<const Program> FindGlyph(const FontSnapshot& font, std::int32_t character);

 private:
  struct Prepared {
    std::uint64_t Version = 0;
    std::shared_ptr<const Program> Commands;
  };

  struct PreparedFont {
    FontSnapshot Font;
    std::unordered_map<std::int32_t, std::shared_ptr<const Program>> Glyphs;
  };

  ListSource& lists_;
  std::unordered_map<std::int32_t, Prepared> prepared_;
  std::unordered_map<std::int32_t, PreparedFont> fonts_;
};

}  // namespace VELTRO::KELVO::Simulation
