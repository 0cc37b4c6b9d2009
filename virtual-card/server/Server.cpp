#include "server/Server.h"

#include <poll.h>

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

#include "Log.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::IPAddress;
using ClientLib::MutexLock;

namespace {

// How long the server takes no connections when it has run out of descriptors or threads.
constexpr int ExhaustedMs = 100;

}  // namespace

Server::Server(const IPAddress& address, int port, const SessionSettings& settings)
    : settings_(settings), listener_(Listen(address, port)) {}

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

bool Server::WaitForWork(bool mayAccept) {
  std::vector<pollfd> entries{{wake_.Get(), POLLIN, 0}, {mayAccept ? listener_.Get() : -1, POLLIN, 0}};
  const std::size_t before = entries.size();
  std::vector<Session*> sending;
  {
    const MutexLock lock(mutex_);
    for (const auto& session : sessions_) {
      if (!session->HasOutput()) continue;
      sending.push_back(session.get());
      entries.push_back({session->GetSocket(), POLLOUT, 0});
    }
  }
  poll(entries.data(), entries.size(), mayAccept ? -1 : ExhaustedMs);
  for (std::size_t i = 0; i < sending.size(); ++i) {
    if (entries[before + i].revents != 0) sending[i]->Flush();
  }
  return !mayAccept || entries[1].revents != 0;
}

bool Server::AcceptAll(Card& card) {
  for (;;) {
    std::string peer;
    bool exhausted = false;
    Descriptor socket = Accept(listener_, peer, exhausted);
    if (!socket.IsOpen()) return !exhausted;
    try {
      Add(std::make_unique<Session>(std::move(socket), peer, card, wake_, settings_));
    } catch (const std::exception& error) {  // no thread or no memory for it
      LogLine(peer + " refused: " + error.what());
      return false;
    }
  }
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

void Server::RemoveFinished() {
  std::vector<std::unique_ptr<Session>> finished;
  const MutexLock lock(mutex_);
  const auto begin = std::partition(sessions_.begin(), sessions_.end(),
                                    [](const auto& session) { return !session->IsFinished(); });
  finished.assign(std::make_move_iterator(begin), std::make_move_iterator(sessions_.end()));
  sessions_.erase(begin, sessions_.end());
}

}  // namespace VELTRO::KELVO::VirtualCard
