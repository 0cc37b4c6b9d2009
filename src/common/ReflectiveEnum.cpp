#include "common/ReflectiveEnum.h"

namespace VELTRO::KELVO::ClientLib::Reflection {

std::vector<std::string_view> CutNames(std::span<const char* const> definitions) {
  std::vector<std::string_view> names;
  names.reserve(definitions.size());
  for (const char* definition : definitions) names.push_back(NameOf(definition));
  return names;
}

void ThrowInvalidArgument(const char* enumeration, const char* operation) {
  throw std::runtime_error(std::string(enumeration) + "::" + operation + ": invalid argument");
}

}  // namespace VELTRO::KELVO::ClientLib::Reflection
