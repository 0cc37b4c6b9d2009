// Serves the site over HTTP, all connections and streams in one thread.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "base/Wake.h"
#include "card/Card.h"
#include "common/IPAddress.h"
#include "server/Socket.h"
#include "web/Site.h"

struct MHD_Daemon;

namespace VELTRO::KELVO::VirtualCard {

struct WebSettings {
  std::string Address = "127.0.0.1";
  int Port = 0;
  std::vector<std::string> Hosts = {};  // by which it may be asked, besides those of loopback and its address
};

// The card outlives it. Nobody waits for a client: each has a buffer of a fixed size, and a stream that is not read is at
// a place in the ring of events that the others move on from.
class WebServer {
 public:
  static constexpr unsigned MostConnections = 48;
  static constexpr std::size_t MostStreams = 24;

  // Listens and serves from here on. Throws as Listen and RandomText do, or std::runtime_error.
  WebServer(Card& card, const WebSettings& settings);
  // Tells those who look that the card ends.
  ~WebServer();
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  // The page's address.
  std::string GetUrl() const { return "http://" + place_ + "/"; }

  struct Stream;
  struct Exchange;
  struct Callbacks;

 private:
  using Steady = std::chrono::steady_clock;

  void Work();
  int WaitTime() const;
  void Look();
  void WakeStreams();
  void End();

  Card& card_;
  Descriptor listener_;
  const std::string place_;
  Site site_;
  Wake wake_;
  std::atomic<bool> stopping_{false};

  // The thread's own.
  std::set<Stream*> streams_;
  bool isEnding_ = false;
  Steady::time_point nextLook_ = {};
  Steady::time_point nextSign_ = {};
  unsigned looks_ = 0;

  struct DaemonEnd {
    void operator()(MHD_Daemon* daemon) const;
  };
  std::unique_ptr<MHD_Daemon, DaemonEnd> daemon_;
  std::thread thread_;
};

}  // namespace VELTRO::KELVO::VirtualCard
