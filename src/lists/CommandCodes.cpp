#include "lists/CommandCodes.h"

#include <string>
#include <unordered_map>

namespace VELTRO::KELVO::ClientLib {

namespace {

static_assert(CommandCode::MARK_3D_REL == (CommandBase::MARK_CMD | CommandBase::_3D | CommandBase::_REL));
static_assert(CommandCode::MARK_GENERAL_ELLIPSE ==
              (CommandBase::START_OF_MARK_ELLIPSE_COMMANDS | 0x30 | CommandBase::_3D));
static_assert(CommandCode::STOP_MOTF_3D == (CommandBase::MOTF_JUMP_CMD | CommandBase::_3D));
static_assert(CommandCode::MAGNIFICATION_REL == (0x50 | CommandBase::_REL));

template <class Map, class Enum>
void AddMnemonics(Map& map, auto add) {
  const auto names = Enum::_names();
  const auto values = Enum::_values();
  for (std::size_t i = 0; i < names.size(); ++i) add(map, names[i], values[i]._to_integral());
}

// Never destroyed, like the enumerations' own tables.
template <class Map>
const Map& MakeMap(auto add) {
  auto& map = *new Map;
  AddMnemonics<Map, CommandCodeAcronym>(map, add);
  AddMnemonics<Map, CommandCodeAcronym2>(map, add);
  return map;
}

}  // namespace

std::optional<std::string_view> MnemonicOf(std::int32_t code) {
  using Map = std::unordered_map<std::int32_t, std::string_view>;
  static const Map& map = MakeMap<Map>(
      [](Map& all, std::string_view mnemonic, std::int32_t value) { all.emplace(value, mnemonic); });
  const auto found = map.find(code);
  return found == map.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::int32_t> CodeOf(std::string_view mnemonic) {
  using Map = std::unordered_map<std::string_view, std::int32_t>;
  static const Map& map =
      MakeMap<Map>([](Map& all, std::string_view name, std::int32_t value) { all.emplace(name, value); });
  const auto found = map.find(mnemonic);
  return found == map.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace VELTRO::KELVO::ClientLib
