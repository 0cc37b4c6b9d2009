#include "base/Activity.h"

#include <new>
#include <utility>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;

namespace {

void KeepLatest(std::deque<std::string>& texts, std::string_view text, std::size_t most) {
  texts.emplace_back(text.substr(0, Activity::MostTextBytes));
  if (text.size() > Activity::MostTextBytes) texts.back() += "...";
  if (texts.size() > most) texts.pop_front();
}

}  // namespace

Activity::Presence::Presence(Activity& activity, std::string peer) : activity_(activity) {
  const MutexLock lock(activity_.mutex_);
  number_ = ++activity_.latest_;
  activity_.clients_.emplace(number_, Client{std::move(peer)});
}

Activity::Presence::~Presence() {
  const MutexLock lock(activity_.mutex_);
  activity_.clients_.erase(number_);
}

void Activity::Presence::AddCall(std::string_view text) noexcept {
  const MutexLock lock(activity_.mutex_);
  try {
    Client& client = activity_.clients_[number_];
    ++client.Calls;
    KeepLatest(client.Latest, text, MostCalls);
  } catch (const std::bad_alloc&) {  // it is merely not seen
    return;
  }
}

void Activity::AddNotification(std::string_view text) noexcept {
  const MutexLock lock(mutex_);
  try {
    ++notifications_.Count;
    KeepLatest(notifications_.Latest, text, MostNotifications);
  } catch (const std::bad_alloc&) {
    return;
  }
}

std::vector<Activity::Client> Activity::GetClients(std::size_t most) {
  std::vector<Client> clients;
  const MutexLock lock(mutex_);
  for (const auto& [number, client] : clients_) {
    if (clients.size() == most) break;
    clients.push_back(client);
  }
  return clients;
}

Activity::Notifications Activity::GetNotifications() {
  const MutexLock lock(mutex_);
  return notifications_;
}

}  // namespace VELTRO::KELVO::VirtualCard
