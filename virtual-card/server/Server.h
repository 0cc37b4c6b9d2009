// Takes connections and tells all of them what the card has to say.
#pragma once

#include <poll.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/Wake.h"
#include "card/Card.h"
#include "card/Notifier.h"
#include "common/IPAddress.h"
#include "common/Mutex.h"
#include "server/Session.h"
#include "server/Socket.h"

namespace VELTRO::KELVO::VirtualCard {

struct ServerSettings {
  std::size_t MostConnections = 0;
  std::size_t MostOutputBytes =
      0;  // that clients leave unread, all together, besides what each session has of its own
  SessionSettings Sessions;
};

class Server : public Notifier {
 public:
  // Listens from here on. Throws as Listen does.
  Server(const ClientLib::IPAddress& address, int port, const ServerSettings& settings);
  ~Server() override { Stop(); }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // Serves the card, which outlives the server's Stop, in a thread of the server's own. Once.
  void Start(Card& card);
  // Ends every connection. The card must not be running a list any more, or a call may wait for its end.
  void Stop();

  // Where it listens.
  std::string GetPlace() const { return PlaceOf(listener_); }
  int GetPort() const { return PortOf(listener_); }

  void Notify(std::span<const unsigned char> frame) override;

 private:
  void Work(Card& card);
  // Waits until there is something to do; returns whether connections may be waiting.
  bool WaitForWork(bool mayAccept) noexcept;
  // Returns whether there are descriptors left for more.
  bool AcceptAll(Card& card) noexcept;
  void Add(std::unique_ptr<Session> session);
  bool IsFull();
  void RemoveFinished() noexcept;
  std::unique_ptr<Session> TakeFinished();

  const ServerSettings settings_;
  const Descriptor listener_;
  Wake wake_;
  SessionMemory memory_;
  std::uint64_t connections_ = 0;  // since the start
  std::atomic<bool> stopping_{false};

  // The server's thread has these; they have room for all sessions from the start, so that serving takes no memory.
  std::vector<pollfd> entries_;
  std::vector<Session*> sending_;

  // Sessions are added and removed by the server's thread only.
  ClientLib::Mutex mutex_;
  std::vector<std::unique_ptr<Session>> sessions_ KELVO_GUARDED_BY(mutex_);

  std::thread thread_;
};

}  // namespace VELTRO::KELVO::VirtualCard
