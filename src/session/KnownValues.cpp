#include "session/KnownValues.h"

#include <functional>

namespace VELTRO::KELVO::ClientLib::Recording {

bool KnownValues::Append(std::string& text, std::string_view name, std::string_view method,
                         std::span<const char> value) {
  place_ = nullptr;
  if (value.size() > MostBytes) return false;
  const std::string_view bytes(value.data(), value.size());
  const std::size_t hash = std::hash<std::string_view>()(method) ^ std::hash<std::string_view>()(bytes);
  place_ = &places_[hash % Places];
  comesAgain_ = place_->LatestHash == hash;
  place_->LatestHash = hash;
  if (!comesAgain_ || place_->Name != name || place_->Method != method || place_->Value != bytes)
    return false;
  text.append(place_->Text);
  return true;
}

void KnownValues::Keep(std::string_view name, std::string_view method, std::span<const char> value,
                       std::string_view text) {
  if (place_ == nullptr || !comesAgain_) return;
  place_->Name = std::string_view();  // so that an allocation that fails leaves nothing half
  place_->Method = method;
  place_->Value.assign(value.data(), value.size());
  place_->Text = text;
  place_->Name = name;
}

}  // namespace VELTRO::KELVO::ClientLib::Recording
