// A card that is a recording: takes connections and answers each as the recorded one was answered.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "common/IPAddress.h"
#include "replay/ReplaySession.h"

namespace VELTRO::KELVO::VirtualCard {

class ReplayServer {
 public:
  // Listens from here on; the recording lives longer. Throws as Listen does.
  ReplayServer(const ClientLib::IPAddress& address, int port, const RecordedCalls& recording,
               const ReplaySettings& settings, std::size_t mostConnections);
  ~ReplayServer();
  ReplayServer(const ReplayServer&) = delete;
  ReplayServer& operator=(const ReplayServer&) = delete;

  // Serves in a thread of the server's own. Once.
  void Start();
  std::string GetPlace() const { return PlaceOf(listener_); }
  int GetPort() const { return PortOf(listener_); }

 private:
  void Work();
  void Take(Descriptor socket, const std::string& peer);

  const RecordedCalls& recording_;
  const ReplaySettings settings_;
  const std::size_t mostConnections_;
  const Descriptor listener_;
  Wake wake_;
  std::atomic<bool> isStopping_{false};
  std::size_t taken_ = 0;                                 // connections of the recording
  std::vector<std::unique_ptr<ReplaySession>> sessions_;  // the thread's own
  std::thread thread_;
};

}  // namespace VELTRO::KELVO::VirtualCard
