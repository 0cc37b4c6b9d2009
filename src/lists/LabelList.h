// The labels of a list: where each was declared, and the commands that refer to it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "lists/PackedCommands.h"

namespace VELTRO::KELVO::ClientLib {

struct LabelPositionInfo {
  std::optional<std::int32_t> Position;  // present once declared
  std::vector<std::int32_t> References;
};

class LabelList {
 public:
  // Throws std::runtime_error "Label 'NAME' is already defined.".
  void AddDeclaration(std::string_view name, std::int32_t position);
  void AddReference(std::string_view name, std::int32_t index);
  // Takes back one reference; one that is not there is ignored.
  void RemoveReference(std::string_view name, std::int32_t index);

  // Puts every label's position into the commands that refer to it, as their first value. Throws
  // std::runtime_error "Label 'NAME' not defined (referenced from 'CODE' at INDEX)." or "Label 'NAME'
  // apparently referenced from invalid 'CODE' at INDEX"; what was put in before stays.
  void Resolve(PackedCommands& commands) const;

  void Clear() { labels_.clear(); }

 private:
  std::map<std::string, LabelPositionInfo, std::less<>> labels_;
};

}  // namespace VELTRO::KELVO::ClientLib
