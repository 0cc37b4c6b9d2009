#include "server/Server.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "base/Log.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::IPAddress;
using ClientLib::MutexLock;

namespace {

// How long the server takes no connections when it has run out of descriptors or threads.
constexpr int ExhaustedMs = 100;

// For poll.
int Timeout(bool mayAccept, HeldFrame::TimePoint due) {
  const int longest = mayAccept ? -1 : ExhaustedMs;
  if (due == HeldFrame::Never) return longest;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - std::chrono::steady_clock::now());
  const int time = static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 3600000));
  return mayAccept ? time : std::min(time, longest);
}

}  // namespace

Server::Server(const IPAddress& address, int port, const ServerSettings& settings)
    : settings_(settings), listener_(Listen(address, port)), memory_(settings.MostOutputBytes) {
  entries_.reserve(settings.MostConnections + 2);
  sending_.reserve(settings.MostConnections);
  const MutexLock lock(mutex_);
  sessions_.reserve(settings.MostConnections);
}

void Server::Start(Card& card) {
  thread_ = std::thread([this, &card] { Work(card); });
}

void Server::Stop() {
  stopping_ = true;
  wake_.Signal();
  if (thread_.joinable()) thread_.join();
}

void Server::Notify(std::span<const unsigned char> frame) {
  const MutexLock lock(mutex_);
  for (const auto& session : sessions_) session->Notify(frame);
}

void Server::Work(Card& card) {
  bool mayAccept = true;
  while (!stopping_) {
    const bool waiting = WaitForWork(mayAccept);
    wake_.Clear();
    RemoveFinished();
    mayAccept = !waiting || AcceptAll(card);
  }
  std::vector<std::unique_ptr<Session>> all;
  {
    const MutexLock lock(mutex_);
    all.swap(sessions_);
  }
  for (const auto& session : all) session->Shutdown();
}

bool Server::WaitForWork(bool mayAccept) noexcept {
  entries_.assign({{wake_.Get(), POLLIN, 0}, {mayAccept ? listener_.Get() : -1, POLLIN, 0}});
  sending_.clear();
  const std::size_t before = entries_.size();
  auto due = HeldFrame::Never;
  {
    const MutexLock lock(mutex_);
    for (const auto& session : sessions_) {
      const Session::Output output = session->GetOutput();
      if (!output.IsThere && output.Due == HeldFrame::Never) continue;
      sending_.push_back(session.get());
      entries_.push_back({output.IsThere ? session->GetSocket() : -1, POLLOUT, 0});
      due = std::min(due, output.Due);
    }
  }
  poll(entries_.data(), entries_.size(), Timeout(mayAccept, due));
  const bool isDue = due <= std::chrono::steady_clock::now();
  for (std::size_t i = 0; i < sending_.size(); ++i) {
    if (isDue || entries_[before + i].revents != 0) sending_[i]->Flush();
  }
  return !mayAccept || entries_[1].revents != 0;
}

bool Server::AcceptAll(Card& card) noexcept {
  for (;;) {
    std::string peer;
    try {
      bool exhausted = false;
      Descriptor socket = Accept(listener_, peer, exhausted);
      if (!socket.IsOpen()) return !exhausted;
      if (IsFull()) {
        LogLine({peer, " refused: all connections are taken"});
      } else {
        Add(std::make_unique<Session>(std::move(socket), SessionPeer{peer, ++connections_}, card, wake_,
                                      memory_, settings_.Sessions));
      }
    } catch (const std::exception& error) {  // no thread or no memory for it
      LogLine({peer, " refused: ", error.what()});
      return false;
    }
  }
}

bool Server::IsFull() {
  const MutexLock lock(mutex_);
  return sessions_.size() >= settings_.MostConnections;
}

void Server::Add(std::unique_ptr<Session> session) {
  const MutexLock lock(mutex_);
  sessions_.push_back(std::move(session));
  try {
    sessions_.back()->Start();
  } catch (...) {
    sessions_.pop_back();
    throw;
  }
}

void Server::RemoveFinished() noexcept {
  while (TakeFinished()) {
  }
}

std::unique_ptr<Session> Server::TakeFinished() {
  const MutexLock lock(mutex_);
  const auto found =
      std::ranges::find_if(sessions_, [](const auto& session) { return session->IsFinished(); });
  if (found == sessions_.end()) return nullptr;
  std::swap(*found, sessions_.back());
  auto finished = std::move(sessions_.back());
  sessions_.pop_back();
  return finished;
}

}  // namespace VELTRO::KELVO::VirtualCard
