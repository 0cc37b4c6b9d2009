#include "faults/Faults.h"

#include <stdexcept>
#include <utility>

#include "base/Log.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;

bool Faults::Item::Befalls() {
  if (++Calls < What->From || Befell >= What->Count) return false;
  // Not by std::bernoulli_distribution: the draws are to be the same with every standard library.
  constexpr double Draws = 0x1p53;
  if (What->Chance < 1 && static_cast<double>(Random() >> 11) >= What->Chance * Draws) return false;
  ++Befell;
  return true;
}

void Faults::Set(std::string_view text) {
  constexpr std::string_view Off = ":off";
  if (text == "off") return Clear();
  if (!text.ends_with(Off) || text.find(':') != text.size() - Off.size()) {
    Fault fault = ParseFault(text);
    const MutexLock lock(mutex_);
    return Add(std::move(fault));
  }
  text.remove_suffix(Off.size());
  CheckFaultTarget(text);
  const MutexLock lock(mutex_);
  items_.remove_if([text](const Item& item) { return item.What->Target == text; });
  areThere_ = !items_.empty();
}

// Each draws by itself, so that calls of other methods, or on other connections, do not change what befalls it.
void Faults::Add(Fault fault) {
  if (items_.size() >= Most) {
    throw std::invalid_argument("There are at most " + std::to_string(Most) + " faults at once.");
  }
  if (fault.Chance < 1 && !std::exchange(isSeedTold_, true)) {
    LogLine({"The seed of faults by chance is ", std::to_string(seed_), "."});
  }
  items_.push_front({std::make_shared<const Fault>(std::move(fault)), std::mt19937_64(seed_ + number_++)});
  areThere_ = true;
}

void Faults::Clear() {
  const MutexLock lock(mutex_);
  items_.clear();
  areThere_ = false;
}

std::vector<Faults::Entry> Faults::List() {
  const MutexLock lock(mutex_);
  std::vector<Entry> entries;
  for (const Item& item : items_) entries.push_back({item.What->Text, item.Calls, item.Befell});
  return entries;
}

std::shared_ptr<const Fault> Faults::OfRequest(std::string_view method, std::uint64_t connection) {
  return Choose(method, Fault::AllRequests, connection);
}

std::shared_ptr<const Fault> Faults::OfNotification(std::string_view kind, std::uint64_t connection) {
  return Choose(kind, Fault::AllNotifications, connection);
}

std::shared_ptr<const Fault> Faults::Choose(std::string_view target, std::string_view all,
                                            std::uint64_t connection) {
  const MutexLock lock(mutex_);
  std::shared_ptr<const Fault> chosen;
  for (Item& item : items_) {
    const Fault& fault = *item.What;
    if (fault.Target != target && fault.Target != all) continue;
    if (fault.Connection != 0 && fault.Connection != connection) continue;
    if (chosen == nullptr) {
      if (item.Befalls()) chosen = item.What;
    } else {
      ++item.Calls;  // `from` counts the calls, whatever befell them
    }
  }
  return chosen;
}

}  // namespace VELTRO::KELVO::VirtualCard
