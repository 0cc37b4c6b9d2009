#include "lists/CommandCodes.h"

#include "lists/FixedTable.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

static_assert(CommandCode::MARK_3D_REL == (CommandBase::MARK_CMD | CommandBase::_3D | CommandBase::_REL));
static_assert(CommandCode::MARK_GENERAL_ELLIPSE ==
              (CommandBase::START_OF_MARK_ELLIPSE_COMMANDS | 0x30 | CommandBase::_3D));
static_assert(CommandCode::STOP_MOTF_3D == (CommandBase::MOTF_JUMP_CMD | CommandBase::_3D));
static_assert(CommandCode::MAGNIFICATION_REL == (0x50 | CommandBase::_REL));

#define KELVO_ONE(mnemonic, name, code) +1
constexpr std::size_t Count = 0 KELVO_COMMANDS(KELVO_ONE, KELVO_ONE) KELVO_COMMANDS_2(KELVO_ONE);
#undef KELVO_ONE

using CodesByName = FixedTable<std::int32_t, Count>;
using NamesByCode = FixedTable<std::string_view, Count>;

#define KELVO_BY_NAME(mnemonic, name, code) {NameKey(#mnemonic), code},
#define KELVO_BY_CODE(mnemonic, name, code) {std::uint32_t{code}, #mnemonic},
constexpr CodesByName Codes({{KELVO_COMMANDS(KELVO_BY_NAME, KELVO_BY_NAME) KELVO_COMMANDS_2(KELVO_BY_NAME)}});
constexpr NamesByCode Names({{KELVO_COMMANDS(KELVO_BY_CODE, KELVO_BY_CODE) KELVO_COMMANDS_2(KELVO_BY_CODE)}});
#undef KELVO_BY_NAME
#undef KELVO_BY_CODE

}  // namespace

std::optional<std::string_view> MnemonicOf(std::int32_t code) {
  const std::string_view* found = Names.Find(static_cast<std::uint32_t>(code));
  return found == nullptr ? std::nullopt : std::optional(*found);
}

const std::int32_t* FindCode(std::string_view mnemonic) {
  return Codes.Find(NameKey(mnemonic));
}

}  // namespace VELTRO::KELVO::ClientLib
