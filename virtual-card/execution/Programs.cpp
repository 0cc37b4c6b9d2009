#include "execution/Programs.h"

#include <utility>

namespace VELTRO::KELVO::VirtualCard {

std::shared_ptr<const Program> Programs::FindList(std::int32_t id) {
  const auto found = prepared_.find(id);
  auto changed = lists_.FindChanged(id, found == prepared_.end() ? 0 : found->second.Version);
  return changed ? PrepareList(id, std::move(*changed)) : found->second.Commands;
}

std::shared_ptr<const Program> Programs::PrepareList(std::int32_t id, ListSnapshot list) {
  auto program = std::make_shared<const Program>("List " + std::to_string(id), std::move(list.Commands), id);
  prepared_[id] = {list.Version, program};
  return program;
}

}  // namespace VELTRO::KELVO::VirtualCard
