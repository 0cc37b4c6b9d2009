#include "capi/APIContext.h"

#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace VELTRO::KELVO::ClientLib {

namespace {

constexpr int MostCandidates = 0x10001;

}  // namespace

APIContext& APIContext::getInstance() {
  // Never destroyed: a receive thread that a callback keeps may outlive every static object. What the end of
  // the process owes the cards is done by EndAtExit.
  static APIContext* const instance = [] {
    auto* const created = new APIContext;
    std::atexit(&APIContext::EndAtExit);
    return created;
  }();
  return *instance;
}

void APIContext::EndAtExit() {
  APIContext& self = getInstance();
  if (!self.IsOwn()) return;
  std::unordered_map<int, std::shared_ptr<ConnectionContext>> contexts;
  {
    const MutexLock lock(self.mutex_);
    contexts = self.contexts_;
  }
  for (const auto& [handle, context] : contexts) {
    if (context->Process == getpid() && context->Client.Abandon()) self.Remove(handle);
  }
}

int APIContext::CreateNew() {
  const MutexLock lock(mutex_);
  process_ = getpid();
  for (int tries = 0; tries < MostCandidates; ++tries) {
    lastHandle_ = lastHandle_ == mostHandle_ ? 1 : lastHandle_ + 1;
    if (contexts_.contains(lastHandle_)) continue;
    if (!contexts_.emplace(lastHandle_, std::make_shared<ConnectionContext>(lastHandle_)).second) {
      throw std::runtime_error("Handle already occupied.");
    }
    return lastHandle_;
  }
  throw std::runtime_error(
      "Maximum number of handles created. Disconnect has to be called to remove previous connections.");
}

std::shared_ptr<ConnectionContext> APIContext::Find(int handle) {
  const MutexLock lock(mutex_);
  const auto found = contexts_.find(handle);
  return found == contexts_.end() ? nullptr : found->second;
}

std::shared_ptr<ConnectionContext> APIContext::Share(int handle) {
  if (handle < 0) throw std::runtime_error("Illegal handle.");
  auto context = Find(handle);
  if (!context) throw std::runtime_error("There is no connection corresponding to this handle.");
  return context;
}

std::shared_ptr<ConnectionContext> APIContext::ShareOwn(int handle) {
  constexpr const char* NotOwn = "The connection belongs to another process.";
  if (handle >= 0 && process_ != 0 && !IsOwn()) throw std::runtime_error(NotOwn);
  auto context = Share(handle);
  if (context->Process != getpid()) throw std::runtime_error(NotOwn);
  return context;
}

void APIContext::Remove(int handle) {
  std::shared_ptr<ConnectionContext> removed;
  {
    const MutexLock lock(mutex_);
    const auto found = contexts_.find(handle);
    if (found == contexts_.end()) return;
    removed = std::move(found->second);
    contexts_.erase(found);
  }
  removed->EndHandles();
}

}  // namespace VELTRO::KELVO::ClientLib
