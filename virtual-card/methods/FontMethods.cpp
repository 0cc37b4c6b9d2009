#include "card/ListMemory.h"
#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::Font;

std::span<const Method> FontMethods() {
  static constexpr Method Rows[] = {
      {"SetFont", [](Card& card, Font font) { card.Fonts.Set(std::move(font)); }},
      {"GetFont",
       [](CardClient& client, std::int32_t id) {
         const Simulation::FontSnapshot font = client.Owner.Fonts.Find(id);
         client.Work.Take(MemoryOf(*font));
         return *font;
       }},
      {"DeleteFont", [](Card& card, std::int32_t id) { card.Fonts.Delete(id); }},
      {"LoadFont", [](Card& card, std::int32_t id) { card.Fonts.Load(id); }},
      {"StoreFont", [](Card& card, std::int32_t id) { card.Fonts.Store(id); }},
      {"SetFontActive", [](Card& card, std::int32_t id) { card.Fonts.SetActive(id); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
