#include "lists/LabelList.h"

#include <algorithm>
#include <stdexcept>

#include "lists/CommandCodes.h"
#include "lists/CommandValueReader.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

bool RefersToPosition(std::int32_t code) {
  switch (code) {
    case CommandCode2::BRANCH_ABS:
    case CommandCode2::BRANCH_ABS_COND:
    case CommandCode2::BRANCH_ABS_COND_FLAG:
    case CommandCode2::CASE_GOTO_ABS:
    case CommandCode2::DEFAULT_GOTO_ABS:
      return true;
    default:
      return false;
  }
}

std::string Place(std::int32_t code, std::int32_t index) {
  return "'" + std::to_string(code) + "' at " + std::to_string(index);
}

void SetPosition(PackedCommands& commands, std::size_t index, std::int32_t position) {
  Command::CommandValueReader present(commands.At(index).Payload);
  if (present.AsInt32() == position) return;  // left alone, a block that is shared needs no copy
  Command::CommandValueReader reader;
  reader.SetNonConstPayload(commands.WritablePayload(index));
  reader.ReplaceInt32(position);
}

}  // namespace

void LabelList::AddDeclaration(std::string_view name, std::int32_t position) {
  LabelPositionInfo& label = labels_[std::string(name)];
  if (label.Position) throw std::runtime_error("Label '" + std::string(name) + "' is already defined.");
  label.Position = position;
}

void LabelList::AddReference(std::string_view name, std::int32_t index) {
  labels_[std::string(name)].References.push_back(index);
}

void LabelList::RemoveReference(std::string_view name, std::int32_t index) {
  const auto found = labels_.find(name);
  if (found == labels_.end()) return;
  auto& references = found->second.References;
  const auto reference = std::ranges::find(references, index);
  if (reference != references.end()) references.erase(reference);
  if (references.empty() && !found->second.Position) labels_.erase(found);
}

void LabelList::Resolve(PackedCommands& commands) const {
  for (const auto& [name, label] : labels_) {
    for (const std::int32_t index : label.References) {
      const std::int32_t code = commands.At(static_cast<std::size_t>(index)).Code;
      if (!label.Position) {
        throw std::runtime_error("Label '" + name + "' not defined (referenced from " + Place(code, index) +
                                 ").");
      }
      if (!RefersToPosition(code)) {
        throw std::runtime_error("Label '" + name + "' apparently referenced from invalid " +
                                 Place(code, index));
      }
      SetPosition(commands, static_cast<std::size_t>(index), *label.Position);
    }
  }
}

}  // namespace VELTRO::KELVO::ClientLib
