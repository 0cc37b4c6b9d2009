#include "web/EventRing.h"

#include <charconv>

namespace VELTRO::KELVO::VirtualCard {

void EventRing::Add(std::string_view name, std::string_view data) {
  std::string text = "id: " + IdOf(next_);
  text.append("\nevent: ").append(name).append("\ndata: ").append(data).append("\n\n");
  bytes_ += text.size();
  events_.push_back(std::move(text));
  ++next_;
  while (bytes_ > MostBytes) {
    bytes_ -= events_.front().size();
    events_.pop_front();
  }
}

std::uint64_t EventRing::PlaceBehind(std::string_view id) const {
  if (!id.starts_with(epoch_ + "-")) return Lost;
  id.remove_prefix(epoch_.size() + 1);
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(id.data(), id.data() + id.size(), number);
  if (error != std::errc() || end != id.data() + id.size() || number >= next_) return Lost;
  return number + 1;
}

std::string EventRing::Read(std::uint64_t& place, std::size_t enough) const {
  const std::uint64_t first = next_ - events_.size();
  if (place < first) {
    place = next_;
    return "id: " + GetLatestId() + "\nevent: anew\ndata: {}\n\n";
  }
  std::string text;
  while (place < next_ && text.size() < enough) text += events_[static_cast<std::size_t>(place++ - first)];
  return text;
}

}  // namespace VELTRO::KELVO::VirtualCard
