// Command codes and their mnemonics as enumerations.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "common/ReflectiveEnum.h"
#include "lists/CommandTable.h"

namespace VELTRO::KELVO::ClientLib {

#define KELVO_NAMED(mnemonic, name, code) name = code,
#define KELVO_MNEMONIC(mnemonic, name, code) mnemonic = code,
#define KELVO_NOT_HERE(mnemonic, name, code)
#define KELVO_ONLY_NAMED(mnemonic, name, code) name = code,

// Motion, laser, parameter and peripheral commands.
KELVO_ENUM(CommandCode, std::int32_t, KELVO_COMMANDS(KELVO_NAMED, KELVO_NOT_HERE))

// Flow-control, serial-port and internal commands.
KELVO_ENUM(CommandCode2, std::int32_t,
           KELVO_COMMANDS(KELVO_NOT_HERE, KELVO_ONLY_NAMED) KELVO_COMMANDS_2(KELVO_NAMED))

KELVO_ENUM(CommandCodeAcronym, std::int32_t, KELVO_COMMANDS(KELVO_MNEMONIC, KELVO_MNEMONIC))

KELVO_ENUM(CommandCodeAcronym2, std::int32_t, KELVO_COMMANDS_2(KELVO_MNEMONIC))

#undef KELVO_NAMED
#undef KELVO_MNEMONIC
#undef KELVO_NOT_HERE
#undef KELVO_ONLY_NAMED

// What codes are composed of: the base of a group of commands, and the bits that vary it.
namespace CommandBase {
enum : std::int32_t {
  _REL = 0x2,  // relative coordinates
  _3D = 0x4,   // three coordinates
  JUMP_CMD = 0x110,
  MOTF_JUMP_CMD = 0x180,
  MARK_CMD = 0x210,
  MARK_ARC = 0x310,
  START_OF_MARK_ELLIPSE_COMMANDS = 0x400,
  MARK_ELLIPSE = 0x410,
  MARK_ELLIPTIC_CURVE = 0x420,
  MARK_BEZIER = 0x490,
  MARK_BEZIER_CUBIC = 0x4A0,
  MARK_BMP = 0x510,
  MARK_PAS = 0x610,
  MARK_JAS = 0x710,
  START_OF_VECTOR_COMMANDS = 0x100,
  START_OF_PV_COMMANDS = START_OF_VECTOR_COMMANDS + 0x700,
  INTERNAL_ADD_POSITIONS_CMD = 0x810,
  PROCVAR_CMD = 0x1010,
  LASER_CMD = 0x1110,
  FONT_CMD = 0x1210,
  MOTF_CMD = 0x1310,
  SIGNAL_CMD = 0x1410,
  PERIPHERAL_CMD = 0x1510,
  SERIAL_PORT_CMD = 0x1610,
  INTERNAL_ADD_MICROVECTORS_CMD = 0x10010,
  FLOW_CTRL_CMD = 0x100010,
};
}  // namespace CommandBase

// The mnemonic of a code, or nothing for a code that has none.
std::optional<std::string_view> MnemonicOf(std::int32_t code);
// The code of a mnemonic, or nothing: the ordinary ones are looked up first.
const std::int32_t* FindCode(std::string_view mnemonic);
inline std::optional<std::int32_t> CodeOf(std::string_view mnemonic) {
  const std::int32_t* found = FindCode(mnemonic);
  return found == nullptr ? std::nullopt : std::optional(*found);
}

}  // namespace VELTRO::KELVO::ClientLib
